// SPDX-License-Identifier: Apache-2.0
// CellWalk: every entity that a cell refers to, without a std::function on the way.
//
// For      building inverse relations, which looks at each reference of a model once.
// Visits   a plain reference; what a select holds, nested selects looked through; the items of lists of references
//          and of selects. A list of lists is not walked: it raises an assertion.
#pragma once

#include "Format/Ifc/IfcFileAttribute.h"
#include "platform/Assert.h"

namespace oxa::ifc {

// An aggregate that can't be walked, told to the caller's developer.
inline void vListWalkRefuse(const char* sFunction, const char* sText) {
    Assert::vTell("Format/Ifc/IfcFileAttribute", sFunction, sText);
}

// Calls visit(Entity*) for each item of a list, null items included.
template <class Visit>
void vForEachEntityOfList(const AttributeListValueBase& list, Visit&& visit);

// Calls visit(Entity*) for what a select cell holds.
template <class Visit>
void vForEachEntityOfSelect(const AttributeSelect& select, Visit&& visit) {
    for (const AttributeSelect* pSelect = &select; pSelect && pSelect->boHasValue();) {
        const AttributeBase* pValue = pSelect->m_pValue;
        if (!pValue || !pValue->boHasValue()) return;
        if (pSelect->m_eType.load() == AttributeType::Entity)
            return visit(static_cast<const AttributeEntity*>(pValue)->m_value.load());
        const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pSelect->m_pType.load());
        if (!pDataType) return;
        if (def::schema::boIsAggregate(pDataType->kind))
            return vForEachEntityOfList(*static_cast<const AttributeListValueBase*>(pValue), visit);
        if (pDataType->kind != def::schema::DataKind::Select) return;
        pSelect = static_cast<const AttributeSelect*>(pValue);
    }
}

template <class Visit>
void vForEachEntityOfList(const AttributeListValueBase& list, Visit&& visit) {
    switch (list.m_eItemType.load()) {
    case AttributeType::Entity:
        if (const EntityList* pHead = list.pEntities())
            for (Entity* pEntity : *pHead) visit(pEntity);
        return;
    case AttributeType::Select:
        if (const auto* pArray = list.pArray<AttributeSelect>())
            for (const AttributeSelect& item : *pArray) vForEachEntityOfSelect(item, visit);
        return;
    case AttributeType::Real:
    case AttributeType::Integer:
    case AttributeType::String:
    case AttributeType::Binary: return;
    case AttributeType::List:
        return vListWalkRefuse("ListOfList::ListAdd<Entity *,0>::operator ()",
                               "ListOfList::ListAdd not implemented for this datatype");
    default:
        return vListWalkRefuse("oxa::ifc::AttributeListValueBase::boForEach",
                               "boForEach not implemented for this item type");
    }
}

template <class Visit>
void vForEachEntity(const AttributeBase& cell, CellClass eClass, Visit&& visit) {
    if (!cell.boHasValue()) return;
    switch (eClass) {
    case CellClass::Entity: return visit(static_cast<const AttributeEntity&>(cell).m_value.load());
    case CellClass::Select: return vForEachEntityOfSelect(static_cast<const AttributeSelect&>(cell), visit);
    case CellClass::List: return vForEachEntityOfList(static_cast<const AttributeListValueBase&>(cell), visit);
    default: return;
    }
}

}   // namespace oxa::ifc
