// SPDX-License-Identifier: Apache-2.0
// SameColumns: that a table has the same columns in every model that a sink takes.
//
// For      sinks. The fixed tables always have; that of a class has what the schema of the model says.
// Threads  one.
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "Model/Error.h"
#include "Tables/Tables.h"

namespace oxa::tables {

class SameColumns {
public:
    // True for a table that comes for the first time; ValueError where it came with other columns.
    bool boAdd(const Table& table) {
        const auto [it, boNew] = m_columns.try_emplace(table.name, table.columns);
        const auto boSame = [](const Column& a, const Column& b) {
            return a.name == b.name && a.type == b.type && a.lists == b.lists;
        };
        if (!std::ranges::equal(it->second, table.columns, boSame))
            throw ValueError("the table " + table.name +
                             " has other columns in this schema than in that of an earlier file");
        return boNew;
    }
    [[nodiscard]] std::size_t iCount() const noexcept { return m_columns.size(); }

private:
    std::map<std::string, std::vector<Column>> m_columns;
};

}   // namespace oxa::tables
