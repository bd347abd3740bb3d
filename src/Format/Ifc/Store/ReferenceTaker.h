// SPDX-License-Identifier: Apache-2.0
// ReferenceTaker: takes references out of cells.
//
// For      removal of entities, which looks at each reference of a model and takes some of them away.
// Visits   a plain reference; what a select holds, nested selects and aggregates looked through; the items of lists of
//          references, of selects and of lists. Null references are not visited.
// Threads  none of its own: a cell belongs to the owner of its entity.
#pragma once

#include <cstring>
#include <type_traits>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/Memory/List.h"

namespace oxa::ifc {

// boGone(Entity*) is asked for each reference once; what it answers true for is taken out. With one that never does,
// nothing is written.
template <class Gone>
class ReferenceTaker {
public:
    explicit ReferenceTaker(Gone& boGone) noexcept : m_boGone(boGone) {}

    // True when something was taken out. A reference or a select that lost its value is undefined; a list that lost its
    // last item is empty.
    bool boCell(AttributeBase& cell, CellClass eClass) {
        if (!cell.boHasValue()) return false;
        m_boTaken = false;
        switch (eClass) {
        case CellClass::Entity: {
            auto& reference = static_cast<AttributeEntity&>(cell);
            if (boGone(reference.m_value)) {
                reference.m_value = static_cast<Entity*>(nullptr);
                reference.m_boUndefined = true;
            }
            break;
        }
        case CellClass::Select: {
            auto& select = static_cast<AttributeSelect&>(cell);
            if (!boSelectStays(select)) vEmpty(select);
            break;
        }
        case CellClass::List: boListStays(static_cast<AttributeList&>(cell)); break;
        default: break;
        }
        return m_boTaken;
    }

private:
    bool boGone(Entity* pEntity) {
        if (!pEntity || !m_boGone(pEntity)) return false;
        m_boTaken = true;
        return true;
    }

    static void vEmpty(AttributeSelect& select) noexcept {
        select.m_pValue = static_cast<AttributeBase*>(nullptr);
        select.m_eType = AttributeType::Unknown;
        select.m_pType = static_cast<const def::schema::Type*>(nullptr);
        select.m_boUndefined = true;
    }

    // False when it held what was taken out, and nothing else.
    bool boSelectStays(const AttributeSelect& first) {
        for (const AttributeSelect* pSelect = &first; pSelect->boHasValue();) {
            AttributeBase* pValue = pSelect->m_pValue;
            if (!pValue || !pValue->boHasValue()) return true;
            if (pSelect->m_eType.load() == AttributeType::Entity)
                return !boGone(static_cast<AttributeEntity*>(pValue)->m_value);
            const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pSelect->m_pType.load());
            if (!pDataType) return true;
            if (def::schema::boIsAggregate(pDataType->kind)) return boListStays(*static_cast<AttributeList*>(pValue));
            if (pDataType->kind != def::schema::DataKind::Select) return true;
            pSelect = static_cast<const AttributeSelect*>(pValue);
        }
        return true;
    }

    // False when taking out left it empty.
    bool boListStays(AttributeList& list) {
        switch (list.m_eItemType.load()) {
        case AttributeType::Entity: {
            EntityList* pHead = list.pEntities();
            if (!boListRemoveIf(pHead, [this](Entity* pEntity) { return boGone(pEntity); })) return true;
            list.m_pItems = pHead;
            return pHead != nullptr;
        }
        case AttributeType::Select:
            return boItemsStay<AttributeSelect>(list,
                                                [this](const AttributeSelect& item) { return boSelectStays(item); });
        case AttributeType::List:
            return boItemsStay<AttributeList>(
                list, [this](AttributeList& row) { return !row.boHasValue() || boListStays(row); });
        default: return true;
        }
    }

    // The cells that stay close up; what is behind them is not the list's any more.
    template <class Cell, class Stays>
    static bool boItemsStay(const AttributeList& list, Stays&& boStays) {
        Array<Cell>* pArray = list.pArray<Cell>();
        if (!pArray) return true;
        std::size_t iLeft = 0;
        for (std::size_t i = 0; i < pArray->size(); ++i) {
            if (!boStays((*pArray)[i])) continue;
            if (iLeft != i) std::memcpy(static_cast<void*>(&(*pArray)[iLeft]), &(*pArray)[i], sizeof(Cell));
            ++iLeft;
        }
        if (iLeft == pArray->size()) return true;
        pArray->vCountSet(iLeft);
        return iLeft > 0;
    }

    Gone& m_boGone;
    bool m_boTaken = false;
};

}   // namespace oxa::ifc
