// SPDX-License-Identifier: Apache-2.0
/// @file
/// Sql: SELECT statements over models in memory.
///
///     oxa::tables::Sql sql;
///     sql.add(model, {.file = "house.ifc"});
///     sql.run("SELECT name, count(*) FROM element GROUP BY name", rows);
///
/// For      questions of one time; who asks often, or from other programs, writes a database (Sqlite.h).
/// How      SQLite with the tables of docs/tables.md as virtual tables: nothing is copied, cells are made when a row is
///          read. The table of a class is there when a statement names it. Equality with, and ranges of, the columns that
///          name an instance (id, element_id, from_id of reference), and texts in guid, type, name, set_name, code and key
///          are looked up, not searched for.
/// Bounds   only SELECT is allowed. A statement may be interrupted, and given a time; its length, depth and the size of
///          its values are limited.
/// Errors   SqlError with one line of text; NameError for a table or column that there is none of, with near names.
/// Threads  one at a time, apart from interrupt(). The models are only looked at.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Columns.h"
#include "Model/Error.h"
#include "Tables/Tables.h"
#include "platform/Export.h"

namespace oxa::tables {

/// A statement that is wrong, not allowed, interrupted, or out of its bounds.
class OXA_TABLES_API SqlError final : public Error {
public:
    using Error::Error;
    ~SqlError() override;
};

/// What takes the rows of a statement.
struct SqlRows {
    /// The names of the columns, before the first row of each statement that has columns.
    std::function<void(const std::vector<std::string>& columns)> begin{};
    /// A row. False ends the statement.
    std::function<bool(const std::vector<Cell>& row)> row{};
};

/// Models to be asked.
class OXA_TABLES_API Sql {
public:
    /// Without models.
    Sql();
    ~Sql();
    Sql(const Sql&) = delete;
    Sql& operator=(const Sql&) = delete;

    /// One more; it must stay, as it is, as long as this. All of them before the first statement.
    void add(const Model& model, const FileInfo& file);

    /// One statement or several with ";" between them, one after the other.
    void run(std::string_view statements, const SqlRows& rows);
    /// How long a call of run() may take; 0, as at the beginning, is without bounds.
    void setTime(std::chrono::milliseconds time) noexcept;
    /// Ends the statement that runs. From any thread, and from the handler of a signal.
    void interrupt() noexcept;

    /// The tables that have been named so far, the fixed ones first.
    [[nodiscard]] std::vector<Table> tables() const;
    /// One of the fixed ones or of a class that one of the models has. NameError for another name.
    [[nodiscard]] Table table(std::string_view name) const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// CREATE TABLE as SQLite has it, with a line for each column.
[[nodiscard]] OXA_TABLES_API std::string createStatement(const Table& table);
/// Whether a text ends in a whole statement, or holds none: whoever reads line by line goes on where it does not.
[[nodiscard]] OXA_TABLES_API bool isWholeStatement(const std::string& text);

}   // namespace oxa::tables
