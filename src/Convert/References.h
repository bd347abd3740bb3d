// SPDX-License-Identifier: Apache-2.0
// References: the entities that a cell names, itself, in selects, in lists and in rows.
//
// For      the sources of this folder, which walk over models and change what is named.
// Threads  any number on a model that stays as it is.
#pragma once

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::convert {

// Calls vMeet(Entity*) for every entity that a cell names, null for a reference that could not be read.
template <class Meet>
struct References {
    Meet& vMeet;

    void operator()(const ifc::AttributeBase&) {}
    void operator()(const ifc::AttributeEntity& cell) {
        if (cell.boHasValue()) vMeet(cell.m_value);
    }
    void operator()(const ifc::AttributeSelect& cell) {
        if (cell.boHasValue()) ifc::visitSelected(cell, *this);
    }
    void operator()(const ifc::AttributeList& cell) {
        if (cell.boHasValue()) ifc::visitItems(cell, *this);
    }
    void operator()(const ifc::EntityList* pEntities) {
        if (!pEntities) return;
        for (ifc::Entity* pEntity : *pEntities) vMeet(pEntity);
    }
    void operator()(const ifc::Array<ifc::AttributeSelect>* pItems) { vEach(pItems); }
    void operator()(const ifc::Array<ifc::AttributeList>* pRows) { vEach(pRows); }
    void operator()(ifc::AnyItems) {}

private:
    template <class Items>
    void vEach(const Items* pItems) {
        if (!pItems) return;
        for (const auto& item : *pItems) (*this)(item);
    }
};

// Calls meet(Entity*) for what one attribute of an instance names.
template <class Meet>
void vForEachNamed(const ifc::AttributeBase& cell, ifc::CellClass eClass, Meet&& meet) {
    References<std::remove_reference_t<Meet>> references{meet};
    ifc::visitCell(cell, eClass, references);
}

}   // namespace oxa::convert
