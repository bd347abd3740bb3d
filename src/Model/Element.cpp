// SPDX-License-Identifier: Apache-2.0
#include "Model/Element.h"

#include <algorithm>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcGuid.h"
#include "Model/Error.h"
#include "Model/ModelState.h"
#include "Model/Names.h"

namespace oxa {

using detail::ModelState;

Element::operator bool() const noexcept { return ModelState::boThere(*this); }

std::string_view Element::type() const { return ModelState::entityOf(*this).schemaEntity().sName; }

std::uint64_t Element::id() const { return ModelState::of(*this).iNumberOf(*m_pEntity); }

std::string Element::guid() const {
    const ifc::Entity& entity = ModelState::entityOf(*this);
    for (const auto& cell : ifc::Entity::getDataSize(entity.schemaEntity()).cells) {
        if (cell.eClass != ifc::CellClass::Guid) continue;
        return (*this)[cell.pAttribute->sName].text().value_or("");
    }
    return {};
}

bool Element::is(std::string_view type) const {
    return ModelState::entityOf(*this).boIsCompatible(&detail::typeFromName(ModelState::of(*this).schema(), type));
}

bool Element::has(std::string_view name) const {
    const auto& type = ModelState::entityOf(*this).schemaEntity();
    return detail::iAttributeFind(type, name) != detail::g_iNoName ||
           detail::iInverseFind(type, name) != detail::g_iNoName;
}

std::string_view Element::schema() const { return ModelState::of(*this).schema().sName; }

Value Element::operator[](std::string_view name) const {
    const ifc::Entity& entity = ModelState::entityOf(*this);
    const auto iIndex = static_cast<unsigned>(detail::iAttribute(entity.schemaEntity(), name));
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(iIndex);
    return {*this, *pAttribute, *pCell};
}

std::vector<Attribute> Element::attributes() const {
    const ifc::Entity& entity = ModelState::entityOf(*this);
    std::vector<Attribute> attributes;
    entity.boForEachAttribute([&](const ifc::def::schema::Attribute& attribute, const ifc::AttributeBase& cell) {
        attributes.push_back({attribute.sName, Value(*this, attribute, cell), attribute.boOptional});
        return false;
    });
    return attributes;
}

std::size_t Element::size() const { return ModelState::entityOf(*this).schemaEntity().allAttributes().size(); }

Value Element::at(std::size_t index) const {
    const ifc::Entity& entity = ModelState::entityOf(*this);
    const std::size_t iCount = entity.schemaEntity().allAttributes().size();
    if (index >= iCount)
        throw NameError(entity.schemaEntity().sName + " has no attribute " + std::to_string(index) + ", it has " +
                        std::to_string(iCount));
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(static_cast<unsigned>(index));
    return {*this, *pAttribute, *pCell};
}

Elements Element::inverse(std::string_view name) const {
    ModelState& state = ModelState::of(*this);
    const std::size_t iIndex = detail::iInverse(m_pEntity->schemaEntity(), name);
    std::vector<ifc::Entity*> entities = m_pEntity->entitiesInverseFromIndex(static_cast<unsigned>(iIndex));
    state.vSortByNumber(entities);
    entities.erase(std::unique(entities.begin(), entities.end()), entities.end());   // who refers twice
    return state.elementsOf(std::move(entities));
}

std::optional<std::string> Element::text(std::string_view name) const { return (*this)[name].text(); }
std::optional<double> Element::number(std::string_view name) const { return (*this)[name].number(); }
std::optional<std::int64_t> Element::integer(std::string_view name) const { return (*this)[name].integer(); }
std::optional<bool> Element::boolean(std::string_view name) const { return (*this)[name].boolean(); }
std::optional<LogicalValue> Element::logical(std::string_view name) const { return (*this)[name].logical(); }
Element Element::element(std::string_view name) const { return (*this)[name].element(); }
Elements Element::elements(std::string_view name) const { return (*this)[name].elements(); }

ifc::Entity& Element::core() const { return ModelState::entityOf(*this); }

}   // namespace oxa
