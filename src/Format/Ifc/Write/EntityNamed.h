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

template <class Visit>
void Entity::vForEachNamedEntity(Visit&& visit) const {
    if (!m_pSchemaEntity) return;
    if (m_pAttributes)
        for (const DataSizeEntity::Cell& cell : getDataSize(*m_pSchemaEntity).cells)
            vForEachEntity<Rows::Walked>(
                *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(m_pAttributes) + cell.iOffset),
                cell.eClass, [&visit](const Entity* pEntity) {
                    if (pEntity) visit(*pEntity);
                });
    if (!m_ppAttributesInverse) return;
    for (std::size_t i = 0, n = m_pSchemaEntity->allInverseAttributes().size(); i < n; ++i)
        if (const EntityList* pReferrers = pInverseEntries()[i])
            for (const Entity* pReferrer : *pReferrers)
                if (pReferrer) visit(*pReferrer);
}

}   // namespace oxa::ifc
