// SPDX-License-Identifier: Apache-2.0
// ReferenceTaker: takes references out of cells.
//
// For      removal of entities, which visits each reference of a model and takes some of them away.
// Visits   a plain reference; what a select holds, nested selects and aggregates looked through; the items of lists of
//          references, of selects and of lists. Null references are not visited.
// Threads  none of its own: a cell belongs to the owner of its entity.
#pragma once

#include <cstring>
#include <type_traits>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/Memory/List.h"

namespace oxa::ifc {

// boGone(Entity*) is called once for each reference; those for which it returns true are taken out. If it never does,
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
        visitCell(cell, eClass,
                  Overloads{
                      [this](AttributeEntity& reference) {
                          if (!boGone(reference.m_value)) return;
                          reference.m_value = static_cast<Entity*>(nullptr);
                          reference.m_boUndefined = true;
                      },
                      [this](AttributeSelect& select) {
                          if (!boSelectStays(select)) vEmpty(select);
                      },
                      [this](AttributeList& list) { boListStays(list); },
                      [](const AttributeBase&) {},
                  });
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
    bool boSelectStays(AttributeSelect& first) {
        AttributeSelect* pSelect = &first;
        bool boStays = true;
        const auto pEnd = [&boStays](bool boValueStays) {
            boStays = boValueStays;
            return static_cast<AttributeSelect*>(nullptr);
        };
        while (pSelect && pSelect->boHasValue())
            pSelect = visitSelected(
                *pSelect,
                Overloads{
                    [](AttributeSelect& inner) { return &inner; },
                    [&](AttributeEntity& value) { return pEnd(!value.boHasValue() || !boGone(value.m_value)); },
                    [&](AttributeList& list) { return pEnd(!list.boHasValue() || boListStays(list)); },
                    [&](const AttributeBase&) { return pEnd(true); },
                });
        return boStays;
    }

    // False when taking out left it empty.
    bool boListStays(AttributeList& list) {
        return visitItems(
            list, Overloads{
                      [&](EntityList* pHead) {
                          if (!boListRemoveIf(pHead, [this](Entity* pEntity) { return boGone(pEntity); })) return true;
                          list.m_pItems = pHead;
                          return pHead != nullptr;
                      },
                      [this](Array<AttributeSelect>* pItems) {
                          return boItemsStay(pItems, [this](AttributeSelect& item) { return boSelectStays(item); });
                      },
                      [this](Array<AttributeList>* pItems) {
                          return boItemsStay(
                              pItems, [this](AttributeList& row) { return !row.boHasValue() || boListStays(row); });
                      },
                      [](AnyItems) { return true; },
                  });
    }

    // The cells that stay close up; what is behind them is not the list's any more.
    template <class Cell, class Stays>
    static bool boItemsStay(Array<Cell>* pArray, Stays&& boStays) {
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
