// SPDX-License-Identifier: Apache-2.0
// BuiltInRules: the rules of a schema: of a published one from the table that the library carries, of any other from the
// text that it was read from.
//
// For      the level "rules".
// Owner    programs of built-in schemas stay for the life of the process.
// Threads  any number at once; a table is decoded by the first that asks, while the others wait.
#pragma once

#include <memory>
#include <span>
#include <string>

#include "Check/Rules/Code.h"
#include "platform/Export.h"
#include "provider/BuiltInSchemas.h"
#include "schema/Schema.h"

namespace oxa::check::rules {

// The tables of rules, in pieces. BuiltInRuleTables.cpp, which the build makes of the files of schemas/, defines it.
extern OXA_CHECK_API const std::span<const ifc::def::express::BuiltInTable> g_builtInRules;

// The rules of a built-in schema as trees, where its table has a base those of the base with what differs.
[[nodiscard]] OXA_CHECK_API bool boReadTable(std::string_view schema, express::SchemaRules& rules,
                                             std::string& sAgainst);

struct SchemaProgram {
    const Program* pProgram = nullptr;       // null where there are no rules to be had
    std::unique_ptr<const Program> pOwned;   // the same, unless it is a built-in schema's
    std::string sAgainst;                    // why there are none
};

[[nodiscard]] OXA_CHECK_API SchemaProgram programOf(const ifc::def::SchemaPset& schema);

}   // namespace oxa::check::rules
