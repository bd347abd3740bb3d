// SPDX-License-Identifier: Apache-2.0
// Sheets by libxlsxwriter, which keeps one row of each in memory and the rest in temporary files. It does not look whether
// those take what it writes, so that is done here.
#include "Tables/Xlsx.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <map>
#include <new>
#include <system_error>
#include <utility>

#include "Model/Error.h"
#include "Tables/SameColumns.h"
#include "platform/Id.h"
#include "platform/Path.h"
#include "platform/ReplacedFile.h"
#include "platform/Unfinished.h"

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

bool boHex(std::string_view text) {
    return std::ranges::all_of(text, [](unsigned char c) { return std::isxdigit(c) != 0; });
}

// A character that XML has not is written as _xFFFE_ (ISO/IEC 29500-1, ST_Xstring), so a text that looks so gets its first
// character written likewise. The library does so for control characters, apart from the one that ends its texts.
std::string sEscaped(std::string_view text) {
    std::string sText;
    sText.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view rest = text.substr(i);
        if (rest.front() == '\0')
            sText += "_x0000_";
        else if (rest.size() >= 7 && rest.starts_with("_x") && rest[6] == '_' && boHex(rest.substr(2, 4)))
            sText += "_x005F_";
        else if (rest.starts_with("\xEF\xBF\xBE") || rest.starts_with("\xEF\xBF\xBF")) {
            sText += rest[2] == '\xBE' ? "_xFFFE_" : "_xFFFF_";
            i += 2;
        } else
            sText += rest.front();
    }
    return sText;
}

// Characters, as the library counts them.
std::size_t iCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, [](unsigned char c) { return (c & 0xc0U) != 0x80U; }));
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
        sTemporary = str::sOfPath(pFile->temporaryPath());
        lxw_workbook_options options{};
        options.constant_memory = LXW_TRUE;
        pBook = workbook_new_opt(sTemporary.c_str(), &options);
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
    [[noreturn]] void vFail(int iError) const { vFail(std::generic_category().message(iError)); }

    // That the rows are all in their temporary files, and that there is room for the largest of them once more: the library
    // puts each sheet together in a further one.
    void vTemporaryCheck() const {
        const fs::path folder = fs::temp_directory_path();
        const auto vFull = [&](int iError) {
            vFail("temporary files in " + str::sOfPath(folder) + ": " + std::generic_category().message(iError));
        };
        std::int64_t iMost = 0;
        for (const auto& [sTable, sheet] : sheets) {
            std::FILE* const pRows = sheet.pSheet->optimize_tmpfile;
            if (!pRows) continue;
            errno = 0;
            if (std::fflush(pRows) != 0 || std::ferror(pRows)) vFull(errno ? errno : ENOSPC);
            iMost = std::max<std::int64_t>(iMost, std::ftell(pRows));
        }
        const fs::path trial = folder / ("oxaifc-" + Guid::generate().toString() + ".tmp");
        const stream::Unfinished unfinished(trial);
        std::FILE* const pTrial = stream::pOpenFile(trial, "wbx");
        int iError = pTrial ? 0 : errno;
        const std::vector<char> bytes(64 * 1024);   // more than the frame of a sheet takes
        for (std::int64_t i = 0; !iError && i <= iMost; i += static_cast<std::int64_t>(bytes.size()))
            if (std::fwrite(bytes.data(), 1, bytes.size(), pTrial) != bytes.size()) iError = errno;
        if (pTrial && std::fclose(pTrial) != 0 && !iError) iError = errno;
        std::error_code error;
        fs::remove(trial, error);
        if (iError) vFull(iError);
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

    void vTextWrite(std::string_view text, std::size_t iColumn) {
        std::string_view shown = text.substr(0, iFirstBytes(text, g_iMostCharacters));
        std::string sWritten = sEscaped(shown);
        // What is written in seven characters counts as seven.
        for (std::size_t iMost = g_iMostCharacters; iCharacters(sWritten) > g_iMostCharacters;) {
            iMost -= std::min(iMost, iCharacters(sWritten) - g_iMostCharacters);
            shown = shown.substr(0, iFirstBytes(shown, iMost));
            sWritten = sEscaped(shown);
        }
        if (shown.size() < text.size()) ++pAt->cut[iColumn];
        vCheck(
            worksheet_write_string(pAt->pSheet, pAt->iRow, static_cast<lxw_col_t>(iColumn), sWritten.c_str(), nullptr));
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
    std::string sTemporary;
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
    m_state->vTemporaryCheck();
    errno = 0;
    const lxw_error eError = workbook_close(std::exchange(m_state->pBook, nullptr));   // frees it too
    if (eError != LXW_NO_ERROR && errno != 0) m_state->vFail(errno);
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
