// SPDX-License-Identifier: Apache-2.0
// SqliteHandles: databases and statements of SQLite that close by themselves; names as SQL has them.
//
// For      the sources of this folder. No public header includes SQLite.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>
#include <string_view>

#include "Tables/Batch.h"

namespace oxa::tables::detail {

struct SqliteClose {
    void operator()(sqlite3* pBase) const noexcept { sqlite3_close_v2(pBase); }
    void operator()(sqlite3_stmt* pStatement) const noexcept { sqlite3_finalize(pStatement); }
};
using SqliteBase = std::unique_ptr<sqlite3, SqliteClose>;
using SqliteStatement = std::unique_ptr<sqlite3_stmt, SqliteClose>;

// In quotes, which any name may stand in.
[[nodiscard]] inline std::string sSqlName(std::string_view name) {
    std::string sQuoted = "\"";
    for (const char c : name) sQuoted.append(c == '"' ? 2 : 1, c);
    return sQuoted + "\"";
}

[[nodiscard]] inline const char* pSqlType(const Column& column) {
    if (column.lists) return "TEXT";
    switch (column.type) {
    case Type::Boolean:
    case Type::Integer: return "INTEGER";
    case Type::Number: return "REAL";
    case Type::Text:
    case Type::Json: break;
    }
    return "TEXT";
}

// CREATE TABLE ... of a table.
[[nodiscard]] inline std::string sSqlOf(const std::string& sName, const std::vector<Column>& columns) {
    std::string sSql = "CREATE TABLE " + sSqlName(sName) + " (";
    for (const Column& column : columns) {
        if (&column != columns.data()) sSql += ", ";
        sSql += sSqlName(column.name) + " " + pSqlType(column) + (column.nullable ? "" : " NOT NULL");
    }
    return sSql + ")";
}

}   // namespace oxa::tables::detail
