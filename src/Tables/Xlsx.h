// SPDX-License-Identifier: Apache-2.0
/// @file
/// Xlsx: tables as a workbook of a spreadsheet, a sheet a table.
///
/// Cells    numbers, truth values and texts; no text is taken for a formula. A number that the form does not have
///          (infinity), and an integer that a spreadsheet would round, is a text; lists are JSON.
/// Limits   of the form: a sheet has 1,048,576 rows with that of names, a cell 32,767 characters. A table that is longer
///          is refused; a text that is longer is cut, and notes() tells it.
/// File     replaced as a whole or not at all, when finish() is called: without it nothing has changed.
/// Errors   FileError for what can't be written or is too long; ValueError for a table that comes twice with other
///          columns.
/// Threads  one at a time.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Tables/Tables.h"
#include "platform/Export.h"

namespace oxa::tables {

/// A workbook on its way.
class OXA_TABLES_API XlsxFile final : public TableSink {
public:
    /// A new one, in place of what has that name.
    explicit XlsxFile(const std::filesystem::path& path);
    ~XlsxFile() override;
    XlsxFile(const XlsxFile&) = delete;
    XlsxFile& operator=(const XlsxFile&) = delete;

    void begin(const Table& table) override;
    void rows(const Batch& batch) override;
    /// Puts the file in its place. Once, as the last call.
    void finish();

    /// What had no place in the form: a line for each column with texts that were cut.
    [[nodiscard]] std::vector<std::string> notes() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}   // namespace oxa::tables
