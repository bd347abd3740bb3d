// SPDX-License-Identifier: Apache-2.0
#include "Tables/Sql.h"

#include <algorithm>
#include <atomic>

#include "Model/Names.h"
#include "Tables/SqlTable.h"

namespace oxa::tables {

using detail::Context;
using detail::SqliteBase;
using detail::SqliteStatement;
using detail::SqlTable;
using Clock = std::chrono::steady_clock;

SqlError::~SqlError() = default;

namespace {

constexpr const char* g_pModule = "model";

// A statement that is longer, deeper or wider than people write them is refused, and values have a size.
struct LimitRow {
    int iLimit;
    int iMost;
};
constexpr LimitRow g_limits[] = {
    {SQLITE_LIMIT_LENGTH, 256 << 20},    {SQLITE_LIMIT_SQL_LENGTH, 1 << 20},        {SQLITE_LIMIT_EXPR_DEPTH, 200},
    {SQLITE_LIMIT_COMPOUND_SELECT, 100}, {SQLITE_LIMIT_FUNCTION_ARG, 100},          {SQLITE_LIMIT_ATTACHED, 0},
    {SQLITE_LIMIT_VDBE_OP, 1000000},     {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 10000}, {SQLITE_LIMIT_TRIGGER_DEPTH, 1},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
};

constexpr int g_iStepsAtOnce = 10000;   // of SQLite's machine, between two looks at the clock

bool boBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n;") == std::string_view::npos; }

// Behind a prefix of a message; empty where it does not begin so.
std::string_view behind(std::string_view message, std::string_view prefix) {
    return message.starts_with(prefix) ? message.substr(prefix.size()) : std::string_view();
}

}   // namespace

struct Sql::State {
    State() {
        sqlite3* pOpen = nullptr;
        const int iOpened = sqlite3_open_v2(":memory:", &pOpen,
                                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
        pBase.reset(pOpen);
        if (iOpened != SQLITE_OK) throw std::bad_alloc();
        for (const LimitRow& row : g_limits) sqlite3_limit(pOpen, row.iLimit, row.iMost);
        sqlite3_db_config(pOpen, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_set_authorizer(pOpen, iAuthorize, this);
        sqlite3_progress_handler(pOpen, g_iStepsAtOnce, iProgress, this);
        vCheck(detail::iModuleRegister(pOpen, g_pModule, tables));
    }

    // Tables are made here; a user's statements only read.
    static int iAuthorize(void* pState, int iAction, const char*, const char* pName, const char*, const char*) {
        if (static_cast<State*>(pState)->boInside) return SQLITE_OK;
        switch (iAction) {
        case SQLITE_SELECT:
        case SQLITE_READ:
        case SQLITE_RECURSIVE: return SQLITE_OK;
        case SQLITE_FUNCTION: return pName && std::string_view(pName) == "load_extension" ? SQLITE_DENY : SQLITE_OK;
        default: return SQLITE_DENY;
        }
    }

    static int iProgress(void* pState) {
        const State& state = *static_cast<State*>(pState);
        return state.boInterrupted.load(std::memory_order_relaxed) ||
               (state.time.count() > 0 && Clock::now() > state.end);
    }

    void vCheck(int iResult) const {
        if (iResult == SQLITE_OK || iResult == SQLITE_ROW || iResult == SQLITE_DONE) return;
        const int iCode = iResult & 0xff;
        if (iCode == SQLITE_INTERRUPT)
            throw SqlError(boInterrupted ? "interrupted" : "takes longer than " + std::to_string(time.count()) + " ms");
        if (iCode == SQLITE_AUTH) throw SqlError("only SELECT is allowed");
        if (iCode == SQLITE_NOMEM) throw std::bad_alloc();
        throw SqlError(sqlite3_errmsg(pBase.get()));
    }

    // NameError where no model has it.
    const SqlTable& tableMake(std::string_view name) {
        auto pTable = std::make_unique<SqlTable>(contexts, name);
        std::string sName = pTable->table().name;
        if (const auto found = tables.find(sName); found != tables.end()) return *found->second;
        const SqlTable& made = *tables.emplace(sName, std::move(pTable)).first->second;
        boInside = true;
        const std::string sSql =
            "CREATE VIRTUAL TABLE " + detail::sSqlName(sName) + " USING " + std::string(g_pModule) + "()";
        const int iMade = sqlite3_exec(pBase.get(), sSql.c_str(), nullptr, nullptr, nullptr);
        boInside = false;
        vCheck(iMade);
        return made;
    }

    void vFixedMake() {
        if (!tables.empty()) return;
        if (contexts.empty()) throw SqlError("there is no model");
        for (const detail::TableRow* pRow : detail::fixedTables()) tableMake(pRow->pName);
    }

    // The next statement of a text, with the tables that it names; the text is left behind it.
    SqliteStatement prepared(std::string_view& text) {
        for (;;) {
            sqlite3_stmt* pStatement = nullptr;
            const char* pRest = nullptr;
            const int iResult =
                sqlite3_prepare_v2(pBase.get(), text.data(), static_cast<int>(text.size()), &pStatement, &pRest);
            if (iResult == SQLITE_OK) {
                text.remove_prefix(static_cast<std::size_t>(pRest - text.data()));
                return SqliteStatement(pStatement);
            }
            const std::string sMessage = sqlite3_errmsg(pBase.get());
            const std::string_view table = behind(sMessage, "no such table: ");
            if (table.empty()) {
                if (const auto column = behind(sMessage, "no such column: "); !column.empty()) vNoColumn(column, text);
                vCheck(iResult);
            }
            tableMake(table.starts_with("main.") ? table.substr(5) : table);
        }
    }

    // The columns of the tables that the statement names are what may have been meant.
    [[noreturn]] void vNoColumn(std::string_view column, std::string_view statement) const {
        std::vector<std::string_view> names;
        const std::string sStatement = detail::schema::sUpper(statement);
        for (const auto& [sName, pTable] : tables) {
            if (sStatement.find(detail::schema::sUpper(sName)) == std::string::npos) continue;
            for (const Column& one : pTable->table().columns)
                if (std::ranges::find(names, one.name) == names.end()) names.emplace_back(one.name);
        }
        const std::string_view plain = column.substr(column.rfind('.') + 1);
        oxa::detail::vThrowName("there is no column " + std::string(column), plain, names);
    }

    void vRun(sqlite3_stmt* pStatement, const SqlRows& rows) const {
        const int iColumns = sqlite3_column_count(pStatement);
        std::vector<std::string> names;
        for (int i = 0; i < iColumns; ++i) {
            const char* pName = sqlite3_column_name(pStatement, i);
            names.emplace_back(pName ? pName : "");
        }
        if (rows.begin && iColumns > 0) rows.begin(names);
        std::vector<Cell> row(static_cast<std::size_t>(iColumns));
        for (;;) {
            const int iResult = sqlite3_step(pStatement);
            if (iResult != SQLITE_ROW) return vCheck(iResult);
            for (int i = 0; i < iColumns; ++i) row[static_cast<std::size_t>(i)] = cell(pStatement, i);
            if (rows.row && !rows.row(row)) return;
        }
    }

    static Cell cell(sqlite3_stmt* pStatement, int i) {
        const auto text = [&](const void* pBytes) {
            const auto iSize = static_cast<std::size_t>(sqlite3_column_bytes(pStatement, i));
            return pBytes ? std::string(static_cast<const char*>(pBytes), iSize) : std::string();
        };
        switch (sqlite3_column_type(pStatement, i)) {
        case SQLITE_INTEGER: return static_cast<std::int64_t>(sqlite3_column_int64(pStatement, i));
        case SQLITE_FLOAT: return sqlite3_column_double(pStatement, i);
        case SQLITE_TEXT: return text(sqlite3_column_text(pStatement, i));
        case SQLITE_BLOB: return text(sqlite3_column_blob(pStatement, i));
        default: return {};
        }
    }

    std::vector<std::unique_ptr<Context>> contexts;
    detail::SqlTables tables;
    SqliteBase pBase;   // closed before its tables go
    bool boInside = false;
    std::atomic<bool> boInterrupted{false};
    std::chrono::milliseconds time{0};
    Clock::time_point end{};
};

Sql::Sql() : m_state(std::make_unique<State>()) {}
Sql::~Sql() = default;

void Sql::add(const Model& model, const FileInfo& file) {
    m_state->contexts.push_back(std::make_unique<Context>(model, file));
}

void Sql::run(std::string_view statements, const SqlRows& rows) {
    m_state->vFixedMake();
    m_state->boInterrupted = false;
    m_state->end = Clock::now() + m_state->time;
    if (statements.size() > std::size_t{1} << 20U) throw SqlError("the statement is longer than a million characters");
    while (!boBlank(statements)) {
        const SqliteStatement pStatement = m_state->prepared(statements);
        if (pStatement) m_state->vRun(pStatement.get(), rows);   // null: a comment
    }
}

void Sql::setTime(std::chrono::milliseconds time) noexcept { m_state->time = time; }

void Sql::interrupt() noexcept {
    m_state->boInterrupted.store(true, std::memory_order_relaxed);
    sqlite3_interrupt(m_state->pBase.get());
}

std::vector<Table> Sql::tables() const {
    std::vector<Table> all;
    const auto vAdd = [&](std::string_view name) {
        if (const auto found = m_state->tables.find(name); found != m_state->tables.end())
            all.push_back(found->second->table());
    };
    m_state->vFixedMake();
    for (const detail::TableRow* pRow : detail::fixedTables()) vAdd(pRow->pName);
    for (const auto& [sName, pTable] : m_state->tables)
        if (std::ranges::find(all, sName, &Table::name) == all.end()) all.push_back(pTable->table());
    return all;
}

Table Sql::table(std::string_view name) const {
    m_state->vFixedMake();
    return m_state->tableMake(name).table();
}

std::string createStatement(const Table& table) {
    std::string sSql = "CREATE TABLE " + detail::sSqlName(table.name) + " (";
    for (const Column& column : table.columns) {
        sSql += &column == table.columns.data() ? "\n" : ",\n";
        sSql += "    " + detail::sSqlName(column.name) + " " + detail::pSqlType(column) +
                (column.nullable ? "" : " NOT NULL");
    }
    return sSql + "\n);\n";
}

bool isWholeStatement(const std::string& text) { return boBlank(text) || sqlite3_complete(text.c_str()) != 0; }

}   // namespace oxa::tables
