// SPDX-License-Identifier: Apache-2.0
#include "Convert/MergeKeys.h"

namespace oxa::convert {

using ifc::CellClass;

const MergeKeys::TypeRow& MergeKeys::ofType(const ifc::def::schema::Entity& type) {
    const auto [place, boNew] = m_types.try_emplace(&type);
    TypeRow& row = place->second;
    if (!boNew) return row;
    const std::vector<Role> roles = rolesOf(type, m_table);
    const auto& cells = ifc::Entity::getDataSize(type).cells;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const bool boUnites = roles[i] == Role::May || (roles[i] != Role::Needs && cells[i].eClass == CellClass::List);
        row.counts.push_back(!boUnites && cells[i].eClass < CellClass::Unresolved);
        row.boUnites = row.boUnites || boUnites;
    }
    return row;
}

MergeKeys::Hash MergeKeys::key(const ifc::Entity& entity) {
    const TypeRow& row = ofType(*entity.pSchemaEntity());
    const bool boRooted = pGuid(entity) != nullptr;
    if (!boRooted && !row.boUnites) return m_content.content(&entity);
    Hash hash;
    hash.vAdd(std::string_view(entity.pSchemaEntity()->sNameUpper));
    const auto& cells = ifc::Entity::getDataSize(*entity.pSchemaEntity()).cells;
    for (unsigned i = 0; i < cells.size(); ++i)
        if (row.counts[i] && cells[i].eClass != CellClass::Guid)
            hash.vAdd(m_content.value(*entity.pAttributeFromIndex(i).second, *cells[i].pAttribute, true));
    return hash;
}

}   // namespace oxa::convert
