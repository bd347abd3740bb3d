// SPDX-License-Identifier: Apache-2.0
#include "Tables/Sqlite.h"

#include <cerrno>
#include <map>
#include <system_error>

#include "Model/Error.h"
#include "Tables/SameColumns.h"
#include "Tables/SqliteHandles.h"
#include "platform/Path.h"
#include "platform/ReplacedFile.h"

namespace oxa::tables {

namespace fs = std::filesystem;
using detail::SqliteBase;
using detail::SqliteStatement;
using detail::sSqlName;

namespace {

[[noreturn]] void vFail(const fs::path& path, const std::string& sWhy) {
    throw FileError(str::sOfPath(path) + ": can't be written: " + sWhy);
}

// A base that somebody writes to can't be taken from under him; nor one with a journal beside it, which would be played
// into the new one.
void vUnusedCheck(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) == 0) return;
    {
        sqlite3* pOpen = nullptr;
        const int iOpened = sqlite3_open_v2(str::sOfPath(path).c_str(), &pOpen, SQLITE_OPEN_READWRITE, nullptr);
        const SqliteBase pBase(pOpen);
        if (iOpened == SQLITE_OK && sqlite3_exec(pOpen, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) == SQLITE_BUSY)
            vFail(path, "the database is locked by another program");
    }
    for (const char* pEnd : {"-wal", "-journal"}) {
        fs::path beside = path;
        beside += pEnd;
        if (fs::exists(beside, error)) vFail(path, "the database is in use: " + str::sOfPath(beside) + " is there");
    }
}

}   // namespace

struct SqliteFile::State {
    explicit State(const fs::path& wanted) : path(wanted) {
        vUnusedCheck(path);
        try {
            pFile = std::make_unique<stream::ReplacedFile>(path);
        } catch (const std::system_error& error) {
            vFail(path, error.code().message());
        }
        const fs::path& written = pFile->temporaryPath();
        if (written.empty()) vFail(path, "is no regular file");
        sqlite3* pOpen = nullptr;
        const int iOpened = sqlite3_open_v2(str::sOfPath(written).c_str(), &pOpen,
                                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
        pBase.reset(pOpen);
        if (iOpened != SQLITE_OK) vFail(path, pOpen ? sqlite3_errmsg(pOpen) : "no memory");
        // What is not finished is thrown away, so that nothing of it need be undone.
        vRun("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA locking_mode=EXCLUSIVE; PRAGMA page_size=8192;"
             "PRAGMA cache_size=-32768; BEGIN");
    }

    void vCheck(int iResult) const {
        if (iResult == SQLITE_OK || iResult == SQLITE_DONE) return;
        // What the system says is clearer than "disk I/O error".
        const int iCode = iResult & 0xff;
        int iError = iCode == SQLITE_FULL ? ENOSPC : 0;
        if (iCode == SQLITE_IOERR) sqlite3_file_control(pBase.get(), "main", SQLITE_FCNTL_LAST_ERRNO, &iError);
        vFail(path, iError ? std::generic_category().message(iError) : sqlite3_errmsg(pBase.get()));
    }
    void vRun(const std::string& sSql) const {
        vCheck(sqlite3_exec(pBase.get(), sSql.c_str(), nullptr, nullptr, nullptr));
    }

    void vInsertPrepare(const Table& table) {
        std::string sSql = "INSERT INTO " + sSqlName(table.name) + " VALUES (";
        for (std::size_t i = 0; i < table.columns.size(); ++i) sSql += i > 0 ? ",?" : "?";
        sSql += ")";
        sqlite3_stmt* pStatement = nullptr;
        vCheck(sqlite3_prepare_v2(pBase.get(), sSql.c_str(), -1, &pStatement, nullptr));
        pInsert.reset(pStatement);
    }

    // The texts stay where they are until the row is in.
    void vBind(int iAt, const ColumnData& column, std::size_t iRow) const {
        sqlite3_stmt* const pStatement = pInsert.get();
        if (column.null(iRow)) {
            vCheck(sqlite3_bind_null(pStatement, iAt));
            return;
        }
        if (column.lists()) {
            const std::string sJson = column.toText(iRow);
            return vCheck(
                sqlite3_bind_text64(pStatement, iAt, sJson.data(), sJson.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
        }
        switch (column.type()) {
        case Type::Boolean: return vCheck(sqlite3_bind_int(pStatement, iAt, column.boolean(iRow) ? 1 : 0));
        case Type::Integer: return vCheck(sqlite3_bind_int64(pStatement, iAt, column.integer(iRow)));
        case Type::Number: return vCheck(sqlite3_bind_double(pStatement, iAt, column.number(iRow)));
        case Type::Text:
        case Type::Json: break;
        }
        const std::string_view text = column.text(iRow);
        vCheck(sqlite3_bind_text64(pStatement, iAt, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8));
    }

    fs::path path;
    std::unique_ptr<stream::ReplacedFile> pFile;
    SqliteBase pBase;   // closed before its file goes
    SqliteStatement pInsert;
    SameColumns seen;
    std::vector<std::string> indexes;   // statements
};

SqliteFile::SqliteFile(const fs::path& path) : m_state(std::make_unique<State>(path)) {}
SqliteFile::~SqliteFile() = default;

void SqliteFile::begin(const Table& table) {
    if (m_state->seen.boAdd(table)) {
        m_state->vRun(detail::sSqlOf(table.name, table.columns));
        for (const Column& column : table.columns)
            for (const char* pIndexed : {"id", "element_id", "from_id", "to_id"})
                if (column.name == pIndexed)
                    m_state->indexes.push_back("CREATE INDEX " + sSqlName(table.name + "_" + column.name) + " ON " +
                                               sSqlName(table.name) + "(" + sSqlName(column.name) + ")");
    }
    m_state->vInsertPrepare(table);
}

void SqliteFile::rows(const Batch& batch) {
    const auto& columns = batch.columns();
    for (std::size_t iRow = 0; iRow < batch.rows(); ++iRow) {
        for (std::size_t i = 0; i < columns.size(); ++i) m_state->vBind(static_cast<int>(i) + 1, columns[i], iRow);
        m_state->vCheck(sqlite3_step(m_state->pInsert.get()));
        m_state->vCheck(sqlite3_reset(m_state->pInsert.get()));
    }
}

void SqliteFile::finish() {
    m_state->pInsert.reset();
    for (const std::string& sIndex : m_state->indexes) m_state->vRun(sIndex);
    m_state->vRun("COMMIT");
    // With a statement left open the base would live on.
    if (sqlite3_close(m_state->pBase.release()) != SQLITE_OK) vFail(m_state->path, "the database does not close");
    try {
        m_state->pFile->vFinish();
    } catch (const std::system_error& error) {
        vFail(m_state->path, error.code().message());
    }
}

}   // namespace oxa::tables
