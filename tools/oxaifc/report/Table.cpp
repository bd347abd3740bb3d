// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/report/Table.h"

#include <algorithm>
#include <numeric>
#include <set>
#include <utility>
#include <variant>

#include "Tables/TextFiles.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iGap = 2;
constexpr std::size_t g_iNarrowest = 6;
constexpr std::size_t g_iMostKept = 100000;   // rows that say how wide columns are

struct Range {
    char32_t first, last;
};
// Of East Asian width, and pictures.
constexpr Range g_wide[] = {{0x1100, 0x115f},   {0x2e80, 0xa4cf},   {0xac00, 0xd7a3},  {0xf900, 0xfaff},
                            {0xfe30, 0xfe6f},   {0xff00, 0xff60},   {0xffe0, 0xffe6},  {0x1f300, 0x1f64f},
                            {0x1f680, 0x1f6ff}, {0x1f900, 0x1faff}, {0x20000, 0x3fffd}};
// Those that stand above or below the one before.
constexpr Range g_combining[] = {{0x300, 0x36f}, {0x20d0, 0x20ff}, {0xfe00, 0xfe0f}, {0x200b, 0x200f}};

template <std::size_t iCount>
bool boIn(const Range (&ranges)[iCount], char32_t c) {
    return std::ranges::any_of(ranges, [c](const Range& range) { return range.first <= c && c <= range.last; });
}

std::size_t iColumns(char32_t c) { return boIn(g_combining, c) ? 0 : boIn(g_wide, c) ? 2 : 1; }

// The character at a place of a text in UTF-8, and the place behind it. A byte that begins none counts as one.
char32_t character(std::string_view text, std::size_t& i) {
    const auto uFirst = static_cast<unsigned char>(text[i++]);
    const int iMore = uFirst >= 0xf0 ? 3 : uFirst >= 0xe0 ? 2 : uFirst >= 0xc0 ? 1 : 0;
    char32_t c = iMore ? uFirst & (0x3fU >> iMore) : uFirst;
    for (int iDone = 0; iDone < iMore && i < text.size() && (text[i] & 0xc0) == 0x80; ++iDone)
        c = (c << 6U) | (static_cast<unsigned char>(text[i++]) & 0x3fU);
    return c;
}

std::size_t iWidthOf(std::string_view text) {
    std::size_t iWidth = 0;
    for (std::size_t i = 0; i < text.size();) iWidth += iColumns(character(text, i));
    return iWidth;
}

Json jsonOf(const Cell& cell) {
    return std::visit(
        []<class T>(const T& value) -> Json {
            if constexpr (std::is_same_v<T, std::monostate>)
                return nullptr;
            else
                return value;
        },
        cell);
}

std::string sDump(const Json& value) { return value.dump(-1, ' ', false, Json::error_handler_t::replace); }

// Of two members of one name JSON would keep the last.
void vMakeUnique(std::vector<std::string>& columns) {
    std::set<std::string> taken(columns.begin(), columns.end());
    std::set<std::string> seen;
    for (std::string& sName : columns) {
        const std::string sPlain = sName;
        for (int i = 2; !seen.insert(sName).second; ++i) {
            sName = sPlain + "_" + std::to_string(i);
            if (!taken.insert(sName).second) sName = sPlain;   // another column is called so
        }
    }
}

}   // namespace

Table::Table(const TableOptions& options, std::vector<std::string> columns, std::function<void(std::string_view)> sink)
    : m_options(options),
      m_columns(std::move(columns)),
      m_sink(std::move(sink)) {
    if (m_options.eForm == TableForm::JsonArray || m_options.eForm == TableForm::JsonLines) vMakeUnique(m_columns);
}

void Table::vBegin() {
    if (!std::exchange(m_boFirst, false)) return;
    if (m_options.boBom) m_sink("\xef\xbb\xbf");
    if (m_options.eForm == TableForm::JsonArray) m_sink("[");
    if (m_options.eForm == TableForm::Csv || m_options.eForm == TableForm::Tsv)
        vSeparated({m_columns.begin(), m_columns.end()});
}

void Table::vRow(const std::vector<Cell>& cells) {
    const bool boFirst = m_boFirst;
    vBegin();
    switch (m_options.eForm) {
    case TableForm::Text:
        std::ranges::transform(cells, std::back_inserter(m_rows.emplace_back()), textCell);
        if (m_rows.size() >= g_iMostKept || !m_widths.empty()) vLines();
        break;
    case TableForm::Csv:
    case TableForm::Tsv: vSeparated(cells); break;
    case TableForm::JsonArray: m_sink(boFirst ? "\n" : ",\n"); [[fallthrough]];
    case TableForm::JsonLines: vObject(cells); break;
    }
}

void Table::vFinish() {
    const bool boEmpty = m_boFirst;
    vBegin();
    if (m_options.eForm == TableForm::Text && (m_widths.empty() || !m_rows.empty())) vLines();
    if (m_options.eForm == TableForm::JsonArray) m_sink(boEmpty ? "]\n" : "\n]\n");
}

void Table::vSeparated(const std::vector<Cell>& cells) {
    const bool boCsv = m_options.eForm == TableForm::Csv;
    std::string sLine;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0) sLine += boCsv ? ',' : '\t';
        std::string sText = toText(cells[i]);
        if (std::holds_alternative<std::string>(cells[i]) && tables::looksLikeFormula(sText)) sText.insert(0, 1, '\'');
        tables::appendField(sLine, sText, boCsv ? ',' : '\t');
    }
    m_sink(sLine.append(boCsv ? "\r\n" : "\n"));
}

void Table::vObject(const std::vector<Cell>& cells) {
    Json row = Json::object();
    for (std::size_t i = 0; i < cells.size(); ++i) row[m_columns[i]] = jsonOf(cells[i]);
    m_sink(m_options.eForm == TableForm::JsonArray ? sDump(row) : sDump(row) + '\n');
}

Table::TextCell Table::textCell(const Cell& cell) {
    std::string sText = sPrintable(toText(cell));
    const std::size_t iWidth = iWidthOf(sText);
    return {std::move(sText), iWidth,
            std::holds_alternative<std::int64_t>(cell) || std::holds_alternative<double>(cell)};
}

std::string Table::sCut(const TextCell& cell, std::size_t iWidth) {
    if (cell.iWidth <= iWidth) return cell.sText;
    std::size_t iEnd = 0;
    for (std::size_t i = 0, iUsed = 0; i < cell.sText.size(); iEnd = i) {
        std::size_t iNext = i;
        iUsed += iColumns(character(cell.sText, iNext));
        if (iUsed + 1 > iWidth) break;
        i = iNext;
    }
    return cell.sText.substr(0, iEnd) + "\u2026";
}

// What each column needs; where that is too much, the widest give way.
std::vector<std::size_t> Table::widths() const {
    std::vector<std::size_t> widths(m_columns.size(), 0);
    for (const auto& row : m_rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].iWidth);
    if (m_options.iWidth == 0 || widths.empty()) return widths;
    std::size_t iSum = std::accumulate(widths.begin(), widths.end(), g_iGap * (widths.size() - 1));
    while (iSum > m_options.iWidth) {
        const auto widest = std::ranges::max_element(widths);
        if (*widest <= g_iNarrowest) break;
        --*widest;
        --iSum;
    }
    return widths;
}

void Table::vLines() {
    if (m_widths.empty()) {
        m_rows.insert(m_rows.begin(), std::vector<TextCell>());
        for (const std::string& sName : m_columns) m_rows.front().push_back(textCell(sName));
        m_widths = widths();
    }
    for (const auto& row : m_rows) {
        std::string sLine;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string sText = m_options.iWidth > 0 ? sCut(row[i], m_widths[i]) : row[i].sText;
            const std::string sFill(m_widths[i] - std::min(m_widths[i], iWidthOf(sText)), ' ');
            sLine += (i > 0 ? std::string(g_iGap, ' ') : "") + (row[i].boNumber ? sFill + sText : sText + sFill);
        }
        sLine.erase(sLine.find_last_not_of(' ') + 1);
        if (m_options.iWidth > 0) sLine = sCut({sLine, iWidthOf(sLine), false}, m_options.iWidth);
        m_sink(sLine += '\n');
    }
    m_rows.clear();
}

}   // namespace oxa::tool
