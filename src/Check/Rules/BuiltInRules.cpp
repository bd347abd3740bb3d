// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/BuiltInRules.h"

#include <algorithm>

#include "Check/Express/Difference.h"
#include "Check/Express/Parser.h"
#include "Check/Rules/Compiler.h"
#include "provider/SchemaLoader.h"
#include "schema/SchemaCache.h"

namespace oxa::check::rules {

namespace {

using ifc::def::express::BuiltInTable;

// False, with the reason, for a text that is at fault.
bool boParse(std::string_view text, const std::string& sSchema, express::SchemaRules& rules, std::string& sAgainst) {
    std::vector<ifc::SchemaMessage> messages;
    if (express::Parser(text, messages).boReadSchema(rules)) return true;
    const ifc::SchemaMessage& message = messages.front();
    sAgainst = "the rules of " + sSchema + " can't be read: line " + std::to_string(message.iLine) + ", column " +
               std::to_string(message.iColumn) + ": " + message.sText;
    return false;
}

const BuiltInTable* pTableOf(std::string_view name) {
    const auto pTable = std::find_if(g_builtInRules.begin(), g_builtInRules.end(),
                                     [&](const BuiltInTable& table) { return table.name == name; });
    return pTable == g_builtInRules.end() ? nullptr : &*pTable;
}

// The table of that name, for a schema that has it for a base or for itself.
bool boReadTableFor(const std::string& sSchema, std::string_view name, express::SchemaRules& rules,
                    std::string& sAgainst) {
    const BuiltInTable* pTable = pTableOf(name);
    if (!pTable) {
        sAgainst = "the rules of " + std::string(name) + " are not built in";
        return false;
    }
    std::string sText;
    for (const std::string_view piece : pTable->pieces) sText += piece;
    sText = express::sRenamed(sText, name, sSchema);
    std::string_view text = sText;
    express::RuleDifference difference = express::differenceHead(text);
    if (difference.sBase.empty()) return boParse(text, sSchema, rules, sAgainst);
    if (!boReadTableFor(sSchema, difference.sBase, rules, sAgainst) ||
        !boParse(text, sSchema, difference.rules, sAgainst))
        return false;
    express::vApply(rules, std::move(difference));
    return true;
}

const Program* pBuiltIn(const BuiltInTable& table, const ifc::def::SchemaPset& schema, std::string& sAgainst) {
    // Never destroyed: threads that outlive main may still run a program.
    using Slot = schema::SchemaCache<std::unique_ptr<const Program>>;
    static const std::span<Slot> slots(new Slot[g_builtInRules.size()], g_builtInRules.size());
    const Slot& slot = slots[static_cast<std::size_t>(&table - g_builtInRules.data())];
    return slot
        .get([&]() -> std::unique_ptr<const Program> {
            express::SchemaRules rules;
            return boReadTable(table.name, rules, sAgainst) ? pCompile(schema, std::move(rules)) : nullptr;
        })
        .get();
}

}   // namespace

bool boReadTable(std::string_view schema, express::SchemaRules& rules, std::string& sAgainst) {
    return boReadTableFor(std::string(schema), schema, rules, sAgainst);
}

SchemaProgram programOf(const ifc::def::SchemaPset& schema) {
    SchemaProgram result;
    if (!schema.sExpress.empty()) {
        express::SchemaRules rules;
        if (boParse(schema.sExpress, schema.sName, rules, result.sAgainst))
            result.pOwned = pCompile(schema, std::move(rules));
        if (!result.pOwned && result.sAgainst.empty())
            result.sAgainst = "the rules of " + schema.sName + " are too many for its types";
        result.pProgram = result.pOwned.get();
        return result;
    }
    const BuiltInTable* pTable = pTableOf(schema.sName);
    if (pTable && ifc::SchemaLoader::pBuiltIn(schema.sName) == &schema)
        result.pProgram = pBuiltIn(*pTable, schema, result.sAgainst);
    if (!result.pProgram && result.sAgainst.empty())
        result.sAgainst = "the rules of " + schema.sName + " are not built in";
    return result;
}

}   // namespace oxa::check::rules
