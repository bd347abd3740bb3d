// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/BuiltInRules.h"

#include <algorithm>

#include "Check/Express/Parser.h"
#include "Check/Rules/Compiler.h"
#include "provider/SchemaLoader.h"
#include "schema/SchemaCache.h"

namespace oxa::check::rules {

namespace {

using ifc::def::express::BuiltInTable;

// Null, with the reason, for a text that is at fault.
std::unique_ptr<const Program> pRead(std::string_view text, const ifc::def::SchemaPset& schema, std::string& sAgainst) {
    std::vector<ifc::SchemaMessage> messages;
    express::SchemaRules trees;
    if (express::Parser(text, messages).boReadSchema(trees)) return pCompile(schema, std::move(trees));
    const ifc::SchemaMessage& message = messages.front();
    sAgainst = "the rules of " + schema.sName + " can't be read: line " + std::to_string(message.iLine) + ", column " +
               std::to_string(message.iColumn) + ": " + message.sText;
    return nullptr;
}

const Program* pBuiltIn(const BuiltInTable& table, const ifc::def::SchemaPset& schema, std::string& sAgainst) {
    // Never destroyed: threads that outlive main may still run a program.
    using Slot = schema::SchemaCache<std::unique_ptr<const Program>>;
    static const std::span<Slot> slots(new Slot[g_builtInRules.size()], g_builtInRules.size());
    const Slot& slot = slots[static_cast<std::size_t>(&table - g_builtInRules.data())];
    return slot
        .get([&] {
            std::string sText;
            for (const std::string_view piece : table.pieces) sText += piece;
            return pRead(sText, schema, sAgainst);
        })
        .get();
}

}   // namespace

SchemaProgram programOf(const ifc::def::SchemaPset& schema) {
    SchemaProgram result;
    if (!schema.sExpress.empty()) {
        result.pOwned = pRead(schema.sExpress, schema, result.sAgainst);
        result.pProgram = result.pOwned.get();
        return result;
    }
    const auto pTable = std::find_if(g_builtInRules.begin(), g_builtInRules.end(),
                                     [&](const BuiltInTable& table) { return table.name == schema.sName; });
    if (pTable != g_builtInRules.end() && ifc::SchemaLoader::pBuiltIn(schema.sName) == &schema)
        result.pProgram = pBuiltIn(*pTable, schema, result.sAgainst);
    if (!result.pProgram && result.sAgainst.empty())
        result.sAgainst = "the rules of " + schema.sName + " are not built in";
    return result;
}

}   // namespace oxa::check::rules
