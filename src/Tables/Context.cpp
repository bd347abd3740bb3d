// SPDX-License-Identifier: Apache-2.0
#include "Tables/Context.h"

#include "Format/Ifc/IfcGuid.h"
#include "Model/Names.h"

namespace oxa::tables::detail {

using ifc::Entity;
using oxa::detail::Class;
using oxa::detail::ModelState;
using oxa::detail::RelationWalk;

const std::vector<int>& AttributePlaces::of(const schema::Entity& type) {
    const auto [it, boNew] = m_places.try_emplace(&type);
    if (boNew)
        for (const std::string_view name : m_names) {
            const std::size_t iPlace = oxa::detail::iAttributeFind(type, name);
            it->second.push_back(iPlace == oxa::detail::g_iNoName ? g_iNone : static_cast<int>(iPlace));
        }
    return it->second;
}

Context::Context(const oxa::Model& model, FileInfo file)
    : m_state(ModelState::of(model)),
      m_file(std::move(file)),
      m_walk(m_state),
      m_properties(m_walk),
      m_units(model) {}

std::vector<Entity*> Context::all(const schema::Entity* pType) const {
    return pType ? m_state.all(*pType, true) : std::vector<Entity*>();
}

std::vector<Entity*> Context::all(std::initializer_list<std::string_view> classes) const {
    std::vector<Entity*> found;
    for (const std::string_view name : classes) {
        const std::vector<Entity*> some = all(schema::pAsEntity(m_state.schema().pObjectFromName(name)));
        found.insert(found.end(), some.begin(), some.end());
    }
    m_state.vSortByNumber(found);
    return found;
}

Placement Context::placement(const Entity& entity) {
    Entity* pParent = m_walk.pParent(entity);
    if (!pParent) return {};
    Placement placement = above(*pParent, 0);
    placement.pParent = pParent;
    return placement;
}

// A file may make a circle of what stands above what: it is cut where one began to look.
Placement Context::above(const Entity& parent, int iStep) {
    if (iStep == RelationWalk::g_iMostSteps) return {};
    const auto [it, boNew] = m_below.try_emplace(&parent);
    if (!boNew) return it->second;
    Placement placement;
    if (Entity* pNext = m_walk.pParent(parent)) placement = above(*pNext, iStep + 1);
    if (table().boIs(parent, Class::SpatialElement)) placement.pContainer = const_cast<Entity*>(&parent);
    if (table().boIs(parent, Class::Storey)) placement.pStorey = const_cast<Entity*>(&parent);
    m_below[&parent] = placement;   // the map has grown meanwhile
    return placement;
}

const oxa::Unit* Context::pUnit(const Entity* pOwn, const schema::ObjectBase* pValueType, Entity& entity,
                                unsigned iPlace) {
    if (pOwn) {
        const auto [it, boNew] = m_ownUnits.try_emplace(pOwn);
        if (boNew) it->second = oxa::unit(m_state.elementOf(const_cast<Entity*>(pOwn)));
        if (it->second) return &*it->second;
    }
    const auto [it, boNew] = m_unitsByType.try_emplace(pValueType);
    if (boNew) {
        const Value value = m_state.valueOf(entity, iPlace);
        const std::vector<Value> items = value.kind() == Kind::List ? value.items() : std::vector<Value>();
        it->second = units().find(items.empty() ? value : items.front());
    }
    return it->second;
}

const char* pTextAt(const Entity& entity, int iPlace) {
    const CellPlace place = cellAt(entity, iPlace);
    if (!place || !place.pCell->boHasValue()) return nullptr;
    return ifc::visitCell(*place.pCell, ifc::AttributeBase::cellClass(place.pAttribute->pType()),
                          ifc::Overloads{
                              [](const ifc::AttributeString& text) -> const char* { return text.m_value; },
                              [](const ifc::AttributeEnumeration& text) -> const char* { return text.m_value; },
                              [](const ifc::AttributeBase&) -> const char* { return nullptr; },
                          });
}

std::string sGuidOf(const Entity& entity) {
    const schema::Entity* pType = entity.pSchemaEntity();
    if (!pType) return {};
    const auto& cells = Entity::getDataSize(*pType).cells;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (cells[i].eClass != ifc::CellClass::Guid) continue;
        const CellPlace place = cellAt(entity, static_cast<int>(i));
        const Guid guid = static_cast<const ifc::AttributeGuid&>(*place.pCell).m_value;
        return place.pCell->boHasValue() && !guid.boIsNull() ? ifc::IfcGuid::toIfcGuid(guid) : std::string();
    }
    return {};
}

}   // namespace oxa::tables::detail
