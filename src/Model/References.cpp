// SPDX-License-Identifier: Apache-2.0
#include "Model/References.h"

#include <algorithm>
#include <functional>
#include <unordered_set>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Model/Model.h"
#include "Model/ModelState.h"

namespace oxa {

using detail::ModelState;
using ifc::Entity;

namespace {

// Calls vMeet(Entity&) for every entity that a cell names.
template <class Meet>
struct Named {
    Meet& vMeet;

    void operator()(const ifc::AttributeBase&) {}
    void operator()(const ifc::AttributeEntity& cell) {
        if (cell.boHasValue()) vOne(cell.m_value);
    }
    // Selects in selects are gone through one after the other: a file decides how deep they are.
    void operator()(const ifc::AttributeSelect& cell) {
        const ifc::AttributeSelect* pSelect = &cell;
        while (pSelect && pSelect->boHasValue()) {
            const ifc::AttributeSelect* const pInner = ifc::pSelectInside(*pSelect);
            if (!pInner) ifc::visitSelected(*pSelect, *this);
            pSelect = pInner;
        }
    }
    void operator()(const ifc::AttributeList& cell) {
        if (cell.boHasValue()) ifc::visitItems(cell, *this);
    }
    void operator()(const ifc::EntityList* pEntities) {
        if (!pEntities) return;
        for (Entity* pEntity : *pEntities) vOne(pEntity);
    }
    void operator()(const ifc::Array<ifc::AttributeSelect>* pItems) { vEach(pItems); }
    void operator()(const ifc::Array<ifc::AttributeList>* pRows) { vEach(pRows); }
    void operator()(ifc::AnyItems) {}

private:
    void vOne(Entity* pEntity) {
        if (pEntity && pEntity->pSchemaEntity()) vMeet(*pEntity);   // else the file does not define it
    }
    template <class Items>
    void vEach(const Items* pItems) {
        if (!pItems) return;
        for (const auto& item : *pItems) (*this)(item);
    }
};

bool boMayName(ifc::CellClass eClass) {
    return eClass == ifc::CellClass::Entity || eClass == ifc::CellClass::Select || eClass == ifc::CellClass::List;
}

template <class Meet>
void vForEachNamed(const Entity& entity, Meet&& vMeet) {
    Named<std::remove_reference_t<Meet>> named{vMeet};
    const auto& cells = Entity::getDataSize(entity.schemaEntity()).cells;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (!boMayName(cells[i].eClass)) continue;
        const ifc::AttributeBase* const pCell = entity.pAttributeFromIndex(static_cast<unsigned>(i)).second;
        if (pCell) ifc::visitCell(*pCell, cells[i].eClass, named);
    }
}

Elements ordered(ModelState& state, std::vector<Entity*> entities) {
    state.vSortByNumber(entities);
    entities.erase(std::unique(entities.begin(), entities.end()), entities.end());   // who refers twice
    return state.elementsOf(std::move(entities));
}

constexpr auto g_before = [](const auto& a, const auto& b) {
    return a.first == b.first ? std::less<>()(a.second, b.second) : std::less<>()(a.first, b.first);
};

}   // namespace

Elements references(const Element& element) {
    ModelState& state = ModelState::of(element);
    std::vector<Entity*> entities;
    std::unordered_set<const Entity*> seen;
    vForEachNamed(ModelState::entityOf(element), [&](Entity& named) {
        if (seen.insert(&named).second) entities.push_back(&named);
    });
    return state.elementsOf(std::move(entities));
}

Elements referrers(const Model& model, const Element& element) {
    ModelState& state = ModelState::of(model);
    const Entity& wanted = state.entityHere(element);
    std::vector<Entity*> entities;
    for (Entity* pEntity : state.all())
        vForEachNamed(*pEntity, [&](const Entity& named) {
            if (&named == &wanted && (entities.empty() || entities.back() != pEntity)) entities.push_back(pEntity);
        });
    return state.elementsOf(std::move(entities));
}

Referrers::Referrers(const Model& model) : m_pModel(&model) {
    for (Entity* pEntity : ModelState::of(model).all())
        vForEachNamed(*pEntity, [&](const Entity& named) { m_pairs.emplace_back(&named, pEntity); });
    std::ranges::sort(m_pairs, g_before);
}

Elements Referrers::of(const Element& element) const {
    ModelState& state = ModelState::of(*m_pModel);
    const Entity& wanted = state.entityHere(element);
    std::vector<Entity*> entities;
    auto pair = std::ranges::lower_bound(m_pairs, &wanted, std::less<>(), [](const auto& one) { return one.first; });
    for (; pair != m_pairs.end() && pair->first == &wanted; ++pair)
        if (pair->second->pSchemaEntity()) entities.push_back(pair->second);
    return ordered(state, std::move(entities));
}

}   // namespace oxa
