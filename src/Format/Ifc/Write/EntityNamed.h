// SPDX-License-Identifier: Apache-2.0
// EntityNamed: the entities that the statement of an instance leads to, without the statement.
//
// For      a write that has to know all of them beforehand: it is the walk of a write without its text.
// Visits   exactly what Entity::vWrite asks numbers for, in that order: references attribute by attribute, those in
//          selects and in lists of lists too, then who refers to the instance.
#pragma once

#include "Format/Ifc/Cells/CellWalk.h"
#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::ifc {

// Whether a cell of that class can name an entity.
[[nodiscard]] constexpr bool boMayName(CellClass eClass) noexcept {
    return eClass == CellClass::Entity || eClass == CellClass::List || eClass == CellClass::Select;
}

// The inverse lists of an instance. A type without attributes gets no layout by the question: reads tell that it has none.
[[nodiscard]] inline std::size_t iInverseLists(const def::schema::Entity& type) {
    return type.pDataSize.boReady() ? type.pDataSize.value()->iInverses : type.allInverseAttributes().size();
}

template <class Visit>
void Entity::vForEachNamedEntity(Visit&& visit) const {
    if (!m_pSchemaEntity) return;
    const auto named = [&visit](const Entity* pEntity) {
        if (pEntity) visit(*pEntity);
    };
    if (m_pAttributes)
        for (const DataSizeEntity::Cell& place : getDataSize(*m_pSchemaEntity).cells) {
            if (!boMayName(place.eClass)) continue;
            const auto& cell =
                *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(m_pAttributes) + place.iOffset);
            if (place.eClass != CellClass::Entity)
                vForEachEntity<Rows::Walked>(cell, place.eClass, named);
            else if (cell.boHasValue())
                named(static_cast<const AttributeEntity&>(cell).m_value);
        }
    if (!m_ppAttributesInverse) return;
    for (std::size_t i = 0, n = iInverseLists(*m_pSchemaEntity); i < n; ++i)
        if (const EntityList* pReferrers = pInverseEntries()[i])
            for (const Entity* pReferrer : *pReferrers) named(pReferrer);
}

}   // namespace oxa::ifc
