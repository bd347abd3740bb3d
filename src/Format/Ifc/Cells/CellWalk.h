// SPDX-License-Identifier: Apache-2.0
// CellWalk: every entity that a cell refers to.
//
// For      building inverse relations, removing entities, and writes that have to know beforehand whom they lead to.
// Visits   a plain reference; what a select holds, nested selects looked through; the items of lists of references, of
//          selects and of lists. Null references are visited, too.
#pragma once

#include "Format/Ifc/IfcCellVisit.h"
#include "platform/Assert.h"

namespace oxa::ifc {

// An aggregate that can't be walked, told to the caller's developer.
inline void vListWalkRefuse(const char* sFunction, const char* sText) {
    Assert::vTell("Format/Ifc/IfcFileAttribute", sFunction, sText);
}

// What a walk does with a list of lists: it goes into the rows, or raises an assertion.
enum class Rows { Walked, Refused };

// The overloads of a walk, for cells and for the items of lists.
template <Rows eRows, class Visit>
class ReferenceWalk {
public:
    explicit ReferenceWalk(Visit& visit) noexcept : m_visit(visit) {}

    void operator()(const AttributeEntity& cell) const { m_visit(cell.m_value.load()); }
    void operator()(const AttributeSelect& cell) const {
        const AttributeSelect* pSelect = &cell;
        while (pSelect && pSelect->boHasValue())
            pSelect = visitSelected(*pSelect, Overloads{
                                                  [](const AttributeSelect& inner) { return &inner; },
                                                  [this](const AttributeEntity& value) { return pValue(value); },
                                                  [this](const AttributeList& value) { return pValue(value); },
                                                  [](const AttributeBase&) { return g_pNone; },
                                              });
    }
    void operator()(const AttributeList& cell) const { visitItems(cell, *this); }
    void operator()(const AttributeBase&) const {}

    void operator()(const EntityList* pItems) const {
        if (pItems)
            for (Entity* pEntity : *pItems) m_visit(pEntity);
    }
    void operator()(const Array<AttributeSelect>* pItems) const {
        if (pItems)
            for (const AttributeSelect& item : *pItems) (*this)(item);
    }
    void operator()(const Array<AttributeList>* pItems) const {
        if constexpr (eRows == Rows::Refused)
            vListWalkRefuse("ListOfList::ListAdd<Entity *,0>::operator ()",
                            "ListOfList::ListAdd not implemented for this datatype");
        else if (pItems)
            for (const AttributeList& row : *pItems) pValue(row);
    }
    void operator()(NoItems) const {
        if constexpr (eRows == Rows::Refused)
            vListWalkRefuse("oxa::ifc::AttributeListValueBase::boForEach",
                            "boForEach not implemented for this item type");
    }
    void operator()(const Array<double>*) const {}
    void operator()(const Array<long long>*) const {}
    void operator()(const Array<char*>*) const {}
    void operator()(const Array<AttributeBinary>*) const {}

private:
    static constexpr const AttributeSelect* g_pNone = nullptr;

    // No select is left to look into behind a value that is none.
    template <class Cell>
    const AttributeSelect* pValue(const Cell& cell) const {
        if (cell.boHasValue()) (*this)(cell);
        return g_pNone;
    }

    Visit& m_visit;
};

// Calls visit(Entity*) for each reference of a cell.
template <Rows eRows = Rows::Refused, class Visit>
void vForEachEntity(const AttributeBase& cell, CellClass eClass, Visit&& visit) {
    if (cell.boHasValue()) visitCell(cell, eClass, ReferenceWalk<eRows, std::remove_reference_t<Visit>>(visit));
}

}   // namespace oxa::ifc
