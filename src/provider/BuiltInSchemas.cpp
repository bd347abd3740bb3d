// SPDX-License-Identifier: Apache-2.0
// Schemas from the tables that the library carries as text. Each is decoded when it is first asked for, and kept.
#include "provider/BuiltInSchemas.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "provider/FactTable.h"
#include "provider/GraphBuilder.h"
#include "provider/XmlMapping.h"
#include "schema/SchemaCache.h"

namespace oxa::ifc::def::express {

namespace {

// A table may rest on another one, which may rest on a third, and so on this far.
constexpr std::size_t g_iMaxBases = 4;

// Other spellings of the same schema that files are known to carry.
struct Alias {
    std::string_view alias;
    std::string_view name;
};
constexpr Alias g_aliases[] = {
    {"IFC2X3_FINAL", "IFC2X3"}, {"IFC2X3_TC1", "IFC2X3"},  {"IFC4_ADD1", "IFC4"},
    {"IFC4_ADD2", "IFC4"},      {"IFC4_ADD2_TC1", "IFC4"}, {"IFC4X1_FINAL", "IFC4X1"},
};

const BuiltInTable* pTable(std::string_view name) {
    const auto pRow = std::find_if(g_builtInTables.begin(), g_builtInTables.end(),
                                   [&](const BuiltInTable& table) { return table.name == name; });
    return pRow == g_builtInTables.end() ? nullptr : &*pRow;
}

// The graph; null when the table is at fault, which the tests rule out for every table.
std::unique_ptr<SchemaPset> pDecode(const BuiltInTable& table) {
    std::vector<const BuiltInTable*> tables;   // the bases last
    for (const BuiltInTable* pNext = &table; pNext;) {
        if (tables.size() > g_iMaxBases) return nullptr;
        tables.push_back(pNext);
        const std::string_view base = sFactTableBase(pNext->pieces.front());
        pNext = base.empty() ? nullptr : pTable(base);
        if (!base.empty() && !pNext) return nullptr;
    }
    std::vector<SchemaMessage> messages;
    SchemaDeclaration declaration;
    for (auto pNext = tables.rbegin(); pNext != tables.rend(); ++pNext)
        if (!boReadFactTable((*pNext)->pieces, declaration, messages)) return nullptr;
    std::unique_ptr<SchemaPset> pSchema = GraphBuilder(declaration, messages).pBuild();
    return pSchema && boXmlMappingAttach(*pSchema) ? std::move(pSchema) : nullptr;
}

}   // namespace

SchemaPset* pBuiltInSchema(std::string_view name) {
    // Never destroyed: threads that outlive main may still read a schema.
    using Slot = schema::SchemaCache<std::unique_ptr<SchemaPset>>;
    static const std::span<Slot> slots(new Slot[g_builtInTables.size()], g_builtInTables.size());

    const std::string sName = schema::sUpper(name);
    const auto* pAlias = std::find_if(std::begin(g_aliases), std::end(g_aliases),
                                      [&](const Alias& alias) { return alias.alias == sName; });
    const BuiltInTable* pRow = pTable(pAlias == std::end(g_aliases) ? std::string_view(sName) : pAlias->name);
    if (!pRow) return nullptr;
    const auto iRow = static_cast<std::size_t>(pRow - g_builtInTables.data());
    return slots[iRow].get([pRow] { return pDecode(*pRow); }).get();
}

std::vector<std::string_view> builtInSchemaNames() {
    std::vector<std::string_view> names;
    for (const BuiltInTable& table : g_builtInTables) names.push_back(table.name);
    return names;
}

}   // namespace oxa::ifc::def::express
