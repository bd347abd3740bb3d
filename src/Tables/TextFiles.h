// SPDX-License-Identifier: Apache-2.0
/// @file
/// TextFiles: tables as CSV or as JSON lines, a file a table in a folder, or one table in a stream.
///
/// CSV      RFC 4180 with a line of names; UTF-8; lines end in CR LF. No value is an empty field, an empty text `""`. A
///          text that begins with = + - @, a tab or a CR and is no number gets a ' in front, so that no spreadsheet takes it for a
///          formula. Lists are JSON.
/// JSON     lines: an object a row, with the columns for keys; lists are arrays, no value is null. What is no number in
///          JSON, as infinity, is a text.
/// Files    element.csv, property.csv and so on. Each is replaced as a whole or not at all, and all of them when finish()
///          is called: without it nothing has changed.
/// Errors   FileError for what can't be written; ValueError for a table that comes twice with other columns.
/// Threads  one at a time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "Tables/Tables.h"
#include "platform/Export.h"

namespace oxa::tables {

/// How rows stand in a text.
enum class TextForm : std::uint8_t { Csv, JsonLines };

/// Tables as texts.
class OXA_TABLES_API TextFiles final : public TableSink {
public:
    /// Into a folder, which is made where it is not there.
    TextFiles(const std::filesystem::path& folder, TextForm form);
    /// One table into a stream; ValueError for a second one.
    TextFiles(std::ostream& out, TextForm form);
    ~TextFiles() override;
    TextFiles(const TextFiles&) = delete;
    TextFiles& operator=(const TextFiles&) = delete;

    void begin(const Table& table) override;
    void rows(const Batch& batch) override;
    /// Puts the files in their places. Once, as the last call.
    void finish();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Whether a spreadsheet may take the text for a formula.
[[nodiscard]] OXA_TABLES_API bool looksLikeFormula(std::string_view text) noexcept;
/// Appends a field to a line of CSV (RFC 4180), or with a tab for separator of TSV: in quotes where it needs them.
OXA_TABLES_API void appendField(std::string& line, std::string_view text, char separator);

}   // namespace oxa::tables
