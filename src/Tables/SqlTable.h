// SPDX-License-Identifier: Apache-2.0
// SqlTable: one table of all models as a virtual table of SQLite.
//
// For      Sql.
// Threads  one.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Tables/Rows.h"
#include "Tables/SqliteHandles.h"

namespace oxa::tables::detail {

// The rows of one model, with what is looked up in them.
class SqlSteps {
public:
    SqlSteps(Context& context, Definition definition) : m_context(context), m_definition(std::move(definition)) {}

    [[nodiscard]] const Table& table() const noexcept { return m_definition.table; }
    [[nodiscard]] const std::string& sFile() const noexcept { return m_context.file().file; }
    [[nodiscard]] RowMaker& rows();

    // Steps from the first whose instance has that number or a higher one.
    [[nodiscard]] std::size_t iStepFrom(std::int64_t iNumber);
    // Steps in which a row has a text from "first" to "last" in that column, or beyond where one is null; ascending.
    [[nodiscard]] std::vector<std::size_t> stepsOfText(std::size_t iColumn, const std::string* pFirst,
                                                       const std::string* pLast);

private:
    using TextIndex = std::map<std::string, std::vector<std::uint32_t>, std::less<>>;
    [[nodiscard]] const TextIndex& index(std::size_t iColumn);

    Context& m_context;
    Definition m_definition;
    std::unique_ptr<RowMaker> m_pRows;   // made when it is first asked for
    std::map<std::size_t, TextIndex> m_indexes;
};

// What a table is in all models: its columns are those of the first model, then what others have beside them.
class SqlTable {
public:
    SqlTable(const std::vector<std::unique_ptr<Context>>& contexts, std::string_view name);

    struct Part {
        SqlSteps steps;
        std::vector<int> columns;   // of the whole in this model; -1 where it has none
    };
    [[nodiscard]] const Table& table() const noexcept { return m_table; }
    [[nodiscard]] Lookup lookup(std::size_t iColumn) const noexcept { return m_lookups[iColumn]; }
    [[nodiscard]] std::vector<std::unique_ptr<Part>>& parts() noexcept { return m_parts; }

private:
    Table m_table;
    std::vector<Lookup> m_lookups;
    std::vector<std::unique_ptr<Part>> m_parts;   // a model each that has the table
};

// What CREATE VIRTUAL TABLE finds its table by.
using SqlTables = std::map<std::string, std::unique_ptr<SqlTable>, std::less<>>;
// Makes the module known; "tables" has to outlive the base.
[[nodiscard]] int iModuleRegister(sqlite3* pBase, const char* pName, SqlTables& tables);

}   // namespace oxa::tables::detail
