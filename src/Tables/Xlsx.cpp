// SPDX-License-Identifier: Apache-2.0
// Sheets by libxlsxwriter, which keeps one row of each in memory and the rest in temporary files.
#include "Tables/Xlsx.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <new>
#include <system_error>
#include <utility>

#include "Model/Error.h"
#include "Tables/SameColumns.h"
#include "platform/Path.h"
#include "platform/ReplacedFile.h"

namespace oxa::tables {

namespace fs = std::filesystem;

namespace {

constexpr lxw_row_t g_iMostRows = LXW_ROW_MAX;   // with that of names
constexpr std::size_t g_iMostCharacters = 32767;
constexpr std::size_t g_iMostSheetName = LXW_SHEETNAME_MAX;
constexpr std::int64_t g_iExact = std::int64_t{1} << 53;   // beyond it a spreadsheet rounds integers

// The first characters of a text, in UTF-16 as the form counts them.
std::size_t iFirstBytes(std::string_view text, std::size_t iCharacters) {
    std::size_t iCount = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto uByte = static_cast<unsigned char>(text[i]);
        if ((uByte & 0xc0U) == 0x80U) continue;
        iCount += uByte >= 0xf0U ? 2 : 1;
        if (iCount > iCharacters) return i;
    }
    return text.size();
}

}   // namespace

struct XlsxFile::State {
    explicit State(const fs::path& wanted) : path(wanted) {
        try {
            pFile = std::make_unique<stream::ReplacedFile>(path);
        } catch (const std::system_error& error) {
            vFail(error.code().message());
        }
        if (pFile->temporaryPath().empty()) vFail("is no regular file");
        sWritten = str::sOfPath(pFile->temporaryPath());
        lxw_workbook_options options{};
        options.constant_memory = LXW_TRUE;
        pBook = workbook_new_opt(sWritten.c_str(), &options);
        if (!pBook) throw std::bad_alloc();
        pNames = workbook_add_format(pBook);
        format_set_bold(pNames);
    }
    ~State() { lxw_workbook_free(pBook); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    [[noreturn]] void vFail(const std::string& sWhy) const {
        throw FileError(str::sOfPath(path) + ": can't be written: " + sWhy);
    }
    void vCheck(lxw_error eError) const {
        if (eError != LXW_NO_ERROR) vFail(lxw_strerror(eError));
    }

    struct Sheet {
        lxw_worksheet* pSheet = nullptr;
        lxw_row_t iRow = 0;
        std::vector<std::string> names;           // of the columns
        std::map<std::size_t, std::size_t> cut;   // how many texts of a column
    };

    // Names of sheets are short, and differ in more than the case of letters.
    [[nodiscard]] std::string sSheetName(const std::string& sTable) const {
        std::string sName = sTable.substr(0, g_iMostSheetName);
        for (int i = 2; workbook_get_worksheet_by_name(pBook, sName.c_str()); ++i) {
            const std::string sNumber = std::to_string(i);
            sName = sTable.substr(0, g_iMostSheetName - sNumber.size()) + sNumber;
        }
        return sName;
    }

    void vTextWrite(std::string text, std::size_t iColumn) {
        if (const std::size_t iEnd = iFirstBytes(text, g_iMostCharacters); iEnd < text.size()) {
            text.resize(iEnd);
            ++pAt->cut[iColumn];
        }
        std::replace(text.begin(), text.end(), '\0', ' ');   // which ends a text there
        vCheck(worksheet_write_string(pAt->pSheet, pAt->iRow, static_cast<lxw_col_t>(iColumn), text.c_str(), nullptr));
    }

    void vCellWrite(const ColumnData& column, std::size_t iRow, std::size_t iColumn) {
        if (column.null(iRow)) return;
        const auto iAt = static_cast<lxw_col_t>(iColumn);
        const auto vNumber = [&](double value) {
            vCheck(worksheet_write_number(pAt->pSheet, pAt->iRow, iAt, value, nullptr));
        };
        if (!column.lists()) {
            switch (column.type()) {
            case Type::Boolean:
                return vCheck(worksheet_write_boolean(pAt->pSheet, pAt->iRow, iAt, column.boolean(iRow), nullptr));
            case Type::Integer:
                if (column.integer(iRow) >= -g_iExact && column.integer(iRow) <= g_iExact)
                    return vNumber(static_cast<double>(column.integer(iRow)));
                break;
            case Type::Number:
                if (std::isfinite(column.number(iRow))) return vNumber(column.number(iRow));
                break;
            case Type::Text:
            case Type::Json: break;
            }
        }
        vTextWrite(column.toText(iRow), iColumn);
    }

    fs::path path;
    std::unique_ptr<stream::ReplacedFile> pFile;
    std::string sWritten;
    lxw_workbook* pBook = nullptr;
    lxw_format* pNames = nullptr;
    SameColumns seen;
    std::map<std::string, Sheet> sheets;   // by the name of the table
    Sheet* pAt = nullptr;
};

XlsxFile::XlsxFile(const fs::path& path) : m_state(std::make_unique<State>(path)) {}
XlsxFile::~XlsxFile() = default;

void XlsxFile::begin(const Table& table) {
    const bool boNew = m_state->seen.boAdd(table);
    State::Sheet& sheet = m_state->sheets[table.name];
    m_state->pAt = &sheet;
    if (!boNew) return;
    sheet.pSheet = workbook_add_worksheet(m_state->pBook, m_state->sSheetName(table.name).c_str());
    if (!sheet.pSheet) m_state->vFail("there is no memory for the sheet " + table.name);
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        sheet.names.push_back(table.columns[i].name);
        m_state->vCheck(worksheet_write_string(sheet.pSheet, 0, static_cast<lxw_col_t>(i), sheet.names.back().c_str(),
                                               m_state->pNames));
    }
    worksheet_freeze_panes(sheet.pSheet, 1, 0);
    sheet.iRow = 1;
}

void XlsxFile::rows(const Batch& batch) {
    const auto& columns = batch.columns();
    for (std::size_t iRow = 0; iRow < batch.rows(); ++iRow, ++m_state->pAt->iRow) {
        if (m_state->pAt->iRow >= g_iMostRows)
            m_state->vFail("a table has more than 1,048,575 rows, which a sheet has no place for; write a database or "
                           "CSV, or fewer tables");
        for (std::size_t i = 0; i < columns.size(); ++i) m_state->vCellWrite(columns[i], iRow, i);
    }
}

void XlsxFile::finish() {
    const lxw_error eError = workbook_close(std::exchange(m_state->pBook, nullptr));   // frees it too
    m_state->vCheck(eError);
    try {
        m_state->pFile->vFinish();
    } catch (const std::system_error& error) {
        m_state->vFail(error.code().message());
    }
}

std::vector<std::string> XlsxFile::notes() const {
    std::vector<std::string> lines;
    for (const auto& [sTable, sheet] : m_state->sheets)
        for (const auto& [iColumn, iCount] : sheet.cut)
            lines.push_back(sTable + "." + sheet.names[iColumn] + ": " + std::to_string(iCount) +
                            (iCount == 1 ? " text is" : " texts are") + " cut to 32,767 characters");
    return lines;
}

}   // namespace oxa::tables
