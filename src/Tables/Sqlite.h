// SPDX-License-Identifier: Apache-2.0
/// @file
/// Sqlite: tables as a database of SQLite.
///
/// Types    INTEGER (a truth value is 0 or 1), REAL, TEXT; lists are JSON. Columns that always have a value are NOT NULL.
///          NaN, which SQLite has not, is no value.
/// Indexes  of the columns id, element_id, from_id and to_id.
/// File     replaced as a whole or not at all, when finish() is called: without it nothing has changed. What others have
///          open, or what waits for their recovery, is refused.
/// Errors   FileError for what can't be written; ValueError for a table that comes twice with other columns.
/// Threads  one at a time.
#pragma once

#include <filesystem>
#include <memory>

#include "Tables/Tables.h"
#include "platform/Export.h"

namespace oxa::tables {

/// A database on its way.
class OXA_TABLES_API SqliteFile final : public TableSink {
public:
    /// A new one, in place of what has that name.
    explicit SqliteFile(const std::filesystem::path& path);
    ~SqliteFile() override;
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    void begin(const Table& table) override;
    void rows(const Batch& batch) override;
    /// Makes the indexes and puts the file in its place. Once, as the last call.
    void finish();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}   // namespace oxa::tables
