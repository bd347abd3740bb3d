// SPDX-License-Identifier: Apache-2.0
// Table: rows of typed values as lines for people, as CSV or TSV for spreadsheets, or as JSON.
//
// For      verbs that answer in rows.
// Text     columns side by side, numbers to the right; with a width, as of a terminal, the widest are cut for it ("…").
//          Its first 100,000 rows are kept to the end, as those that tell how wide columns are; what comes behind them, and
//          rows of the other forms, are not.
// CSV      RFC 4180. A text that begins with = + - or @ gets a ' in front, so that no spreadsheet takes it for a formula.
//          TSV is the same with tabs, and lines end in LF.
// JSON     an object a row with the columns for keys: of JsonArray in an array, of JsonLines one a line. No value is null;
//          the second column of a name gets _2 behind it.
// Threads  one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Columns.h"

namespace oxa::tool {

enum class TableForm : std::uint8_t { Text, Csv, Tsv, JsonArray, JsonLines };

struct TableOptions {
    TableForm eForm = TableForm::Text;
    bool boBom = false;       // a byte order mark in front of CSV and TSV
    std::size_t iWidth = 0;   // of lines of text; 0: as wide as they are
};

class Table {
public:
    // Text goes to "sink" as it comes.
    Table(const TableOptions& options, std::vector<std::string> columns, std::function<void(std::string_view)> sink);

    // One cell a column.
    void vRow(const std::vector<Cell>& cells);
    // What is left: without it a table is cut short.
    void vFinish();

private:
    void vBegin();
    void vSeparated(const std::vector<Cell>& cells);
    void vObject(const std::vector<Cell>& cells);
    void vLines();
    [[nodiscard]] std::vector<std::size_t> widths() const;

    TableOptions m_options;
    std::vector<std::string> m_columns;
    std::function<void(std::string_view)> m_sink;
    struct TextCell {
        std::string sText;
        std::size_t iWidth;
        bool boNumber;
    };
    [[nodiscard]] static TextCell textCell(const Cell& cell);
    [[nodiscard]] static std::string sCut(const TextCell& cell, std::size_t iWidth);
    std::vector<std::vector<TextCell>> m_rows;   // of text alone
    std::vector<std::size_t> m_widths;           // once the first lines are out
    bool m_boFirst = true;
};

}   // namespace oxa::tool
