// SPDX-License-Identifier: Apache-2.0
// Sheet: rows of typed values as a workbook of a spreadsheet with one sheet.
//
// For      verbs that answer in rows, beside Table: a workbook is a file and no text that goes by.
// Cells    a column of whole numbers, of numbers or of truth values is one to the spreadsheet; any other is text.
// Memory   the rows, until the end.
// Errors   Failure, for a file that can't be written and a table that is longer than the form allows.
// Threads  one.
#pragma once

#include <string>
#include <vector>

#include "Model/Columns.h"
#include "Tables/Xlsx.h"

namespace oxa::tool {

// Ends a workbook, and tells on standard error what had no place in it. FileError for a disk that is full, and so on.
void vFinish(tables::XlsxFile& file);

class Sheet {
public:
    // "name" is that of the sheet.
    Sheet(std::string sPath, std::string sName, std::vector<std::string> columns);

    // One cell a column.
    void vRow(const std::vector<Cell>& cells) { m_rows.push_back(cells); }
    // Puts the file in its place, and tells on standard error what had none in it.
    void vFinish();

private:
    std::string m_sPath;
    std::string m_sName;
    std::vector<std::string> m_columns;
    std::vector<std::vector<Cell>> m_rows;
};

}   // namespace oxa::tool
