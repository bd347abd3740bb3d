// SPDX-License-Identifier: Apache-2.0
// BuiltInSchemas: the published schemas that the library carries.
//
// For      SchemaLoader.
// Owner    a graph, once decoded, stays for the life of the process.
// Threads  any number at once; a schema is decoded by the first that asks, while the others wait.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "schema/Schema.h"

namespace oxa::ifc::def::express {

// An embedded fact table, in pieces of whole lines that every compiler takes as literals. BuiltInTables.cpp, which the build
// makes of the files of schemas/, defines g_builtInTables.
struct BuiltInTable {
    std::string_view name;
    std::span<const std::string_view> pieces;
};
extern const std::span<const BuiltInTable> g_builtInTables;

// By its own name or by an alias, in any case. Null when there is none of that name.
[[nodiscard]] SchemaPset* pBuiltInSchema(std::string_view name);
// The schemas' own names.
[[nodiscard]] std::vector<std::string_view> builtInSchemaNames();

}   // namespace oxa::ifc::def::express
