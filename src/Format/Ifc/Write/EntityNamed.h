// SPDX-License-Identifier: Apache-2.0
// EntityNamed: the entities that the statement of an instance leads to, without the statement.
//
// For      a write that has to know all of them beforehand: it is the walk of a write without its text.
// Visits   exactly what Entity::vWrite asks numbers for, in that order: references attribute by attribute, those in
//          selects and in lists of lists too, then who refers to the instance.
#pragma once

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::ifc {

template <class Visit>
void vForEachNamedInList(const AttributeListValueBase& list, const def::schema::Attribute& attribute, Visit&& visit);

// Calls visit(const Entity&) for each entity that the text of a cell names.
template <class Visit>
void vForEachNamed(const AttributeBase& cell, CellClass eClass, const def::schema::Attribute& attribute,
                   Visit&& visit) {
    if (!cell.boHasValue()) return;
    switch (eClass) {
    case CellClass::Entity:
        if (const Entity* pEntity = static_cast<const AttributeEntity&>(cell).m_value) visit(*pEntity);
        return;
    case CellClass::Select: {
        const auto& select = static_cast<const AttributeSelect&>(cell);
        const AttributeBase* pValue = select.m_pValue;
        const def::schema::Type* pType = select.m_pType;
        if (!pValue) return;
        if (select.m_eType.load() == AttributeType::Entity)
            return vForEachNamed(*pValue, CellClass::Entity, attribute, visit);
        if (pType) vForEachNamed(*pValue, AttributeBase::cellClass(pType, attribute), attribute, visit);
        return;
    }
    case CellClass::List:
        return vForEachNamedInList(static_cast<const AttributeListValueBase&>(cell), attribute, visit);
    default: return;
    }
}

template <class Visit>
void vForEachNamedInList(const AttributeListValueBase& list, const def::schema::Attribute& attribute, Visit&& visit) {
    const auto vItems = [&]<class T>(const Array<T>* pArray, CellClass eClass) {
        if (!pArray) return;
        for (const T& item : *pArray) vForEachNamed(item, eClass, attribute, visit);
    };
    switch (list.m_eItemType.load()) {
    case AttributeType::Entity:
        if (const EntityList* pHead = list.pEntities())
            for (const Entity* pEntity : *pHead)
                if (pEntity) visit(*pEntity);
        return;
    case AttributeType::Select: return vItems(list.pArray<AttributeSelect>(), CellClass::Select);
    case AttributeType::List: return vItems(list.pArray<AttributeList>(), CellClass::List);
    default: return;
    }
}

template <class Visit>
void Entity::vForEachNamedEntity(Visit&& visit) const {
    if (!m_pSchemaEntity) return;
    if (m_pAttributes)
        for (const DataSizeEntity::Cell& cell : getDataSize(*m_pSchemaEntity).cells)
            vForEachNamed(
                *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(m_pAttributes) + cell.iOffset),
                cell.eClass, *cell.pAttribute, visit);
    if (!m_ppAttributesInverse) return;
    for (std::size_t i = 0, n = m_pSchemaEntity->allInverseAttributes().size(); i < n; ++i)
        if (const EntityList* pReferrers = pInverseEntries()[i])
            for (const Entity* pReferrer : *pReferrers)
                if (pReferrer) visit(*pReferrer);
}

}   // namespace oxa::ifc
