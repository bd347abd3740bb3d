// SPDX-License-Identifier: Apache-2.0
#include "Model/PropertyReader.h"

#include <algorithm>
#include <string>
#include <unordered_set>

#include "Model/Names.h"

namespace oxa::detail {

using ifc::Entity;

std::string_view PropertyReader::setName(const Entity& set) const {
    const char* pName = m_table.pText(set, Slot::RootName);
    return pName ? std::string_view(pName) : std::string_view(set.schemaEntity().sName);
}

std::string_view PropertyReader::propertyName(const Entity& property) const {
    const char* pName = m_table.pText(property, Slot::PropertyName);
    if (!pName) pName = m_table.pText(property, Slot::QuantityName);
    return pName ? std::string_view(pName) : std::string_view();
}

// A name with a point in it is a name first, and a way into a complex property then: of the first that fits, so that
// the cost does not grow with the ways through a file.
Entity* PropertyReader::pPartOf(const Entity& complex, std::string_view name) const {
    const Entity* pAt = &complex;
    while (pAt) {
        Entity* pExact = nullptr;
        Entity* pNext = nullptr;
        std::size_t iNext = 0;
        for (const Slot eSlot : {Slot::ComplexProperties, Slot::ComplexQuantities})
            m_table.forEachNamed(*pAt, eSlot, [&](Entity& part) {
                const std::string_view partName = propertyName(part);
                if (!pExact && partName == name) pExact = &part;
                if (pNext || !name.starts_with(partName) || !name.substr(partName.size()).starts_with('.')) return;
                pNext = &part;
                iNext = partName.size() + 1;
            });
        if (pExact) return pExact;
        name.remove_prefix(std::min(iNext, name.size()));
        pAt = pNext;
    }
    return nullptr;
}

FoundProperty PropertyReader::findIn(Entity& set, std::string_view name) const {
    FoundProperty exact;
    FoundProperty part;
    const bool boPath = name.find('.') != std::string_view::npos;
    for (const Slot eSlot : {Slot::SetProperties, Slot::SetQuantities})
        m_table.forEachNamed(set, eSlot, [&](Entity& property) {
            if (exact.pSet) return;
            const std::string_view propertyHere = propertyName(property);
            if (propertyHere == name) exact = {&set, &property, 0, Source::Instance};
            if (!boPath || part.pSet || !name.starts_with(propertyHere)) return;
            const std::string_view rest = name.substr(propertyHere.size());
            Entity* pPart = rest.starts_with('.') ? pPartOf(property, rest.substr(1)) : nullptr;
            if (pPart) part = {&set, pPart, 0, Source::Instance};
        });
    if (exact.pSet || part.pSet) return exact.pSet ? exact : part;
    if (!boPredefined(set)) return {};
    const std::size_t iIndex = iAttributeFind(set.schemaEntity(), name);
    if (iIndex == g_iNoName || iIndex < g_iRootAttributes) return {};
    return {&set, nullptr, static_cast<unsigned>(iIndex), Source::Instance};
}

FoundProperty PropertyReader::find(const Entity& entity, std::string_view set, std::string_view name) const {
    FoundProperty found;
    const Entity* pFirst = nullptr;   // the relationship that "found" is from
    m_table.forEachRelationship(entity, Relation::Sets, Side::Part, [&](const Entity& relationship) {
        m_table.forEachOn(relationship, Relation::Sets, Side::Whole, [&](Entity& here) {
            if (setName(here) != set || pFirst == &relationship) return;
            const FoundProperty one = findIn(here, name);
            if (!one) return;
            if (pFirst && m_walk.state().iNumberOf(*pFirst) < m_walk.state().iNumberOf(relationship)) return;
            found = one;
            pFirst = &relationship;
        });
    });
    const auto vHandedOn = [&](const Entity& type) {
        m_table.forEachNamed(type, Slot::TypeSets, [&](Entity& here) {
            if (!found && setName(here) == set) found = findIn(here, name);
        });
    };
    if (found) return found;
    vHandedOn(entity);
    if (found) return found;
    if (const Entity* pType = m_walk.pType(entity)) vHandedOn(*pType);
    found.eSource = Source::Type;
    return found;
}

Value PropertyReader::valueAt(Entity& entity, Slot eSlot) const {
    const RelationTable::Place place = m_table.place(entity, eSlot);
    return place.pCell ? m_walk.state().valueOf(entity, place.iIndex) : Value();
}

Value PropertyReader::value(const FoundProperty& found) const {
    if (!found.pProperty) return m_walk.state().valueOf(*found.pSet, found.iAttribute);
    Entity& property = *found.pProperty;
    // The value of a quantity is the first attribute behind the unit, whatever its class calls it.
    if (const auto unit = m_table.place(property, Slot::QuantityUnit); unit.pCell)
        return m_walk.state().valueOf(property, unit.iIndex + 1);
    for (const Slot eSlot : {Slot::SingleValue, Slot::SetPoint, Slot::EnumeratedValues, Slot::ListValues,
                             Slot::DefinedValues, Slot::PropertyReference})
        if (m_table.place(property, eSlot).pCell) return valueAt(property, eSlot);
    return {};
}

namespace {

struct KindRow {
    Class eClass;
    PropertyKind eKind;
};
constexpr KindRow g_kinds[] = {
    {Class::SingleValue, PropertyKind::Single},         {Class::BoundedValue, PropertyKind::Bounded},
    {Class::EnumeratedValue, PropertyKind::Enumerated}, {Class::ListValue, PropertyKind::List},
    {Class::TableValue, PropertyKind::Table},           {Class::ReferenceValue, PropertyKind::Reference},
    {Class::ComplexProperty, PropertyKind::Complex},    {Class::ComplexQuantity, PropertyKind::Complex},
    {Class::SimpleQuantity, PropertyKind::Quantity},
};

}   // namespace

Property PropertyReader::propertyOf(const FoundProperty& found, std::vector<const Entity*>& seen) const {
    Property result;
    result.source = found.eSource;
    result.value = value(found);
    if (!found.pProperty) {
        result.name = found.pSet->schemaEntity().allAttributes()[found.iAttribute]->sName;
        result.kind = PropertyKind::Attribute;
        result.element = m_walk.state().elementOf(found.pSet);
        return result;
    }
    Entity& property = *found.pProperty;
    result.name = propertyName(property);
    result.element = m_walk.state().elementOf(&property);
    for (const KindRow& row : g_kinds)
        if (m_table.boIs(property, row.eClass)) result.kind = row.eKind;
    for (const Slot eUnit : {Slot::SingleUnit, Slot::BoundedUnit, Slot::ListUnit, Slot::QuantityUnit})
        m_table.forEachNamed(property, eUnit, [&](Entity& unit) { result.unit = m_walk.state().elementOf(&unit); });
    result.lower = valueAt(property, Slot::LowerBound);
    result.upper = valueAt(property, Slot::UpperBound);
    result.defining = valueAt(property, Slot::DefiningValues);
    if (result.kind == PropertyKind::Complex) vPartsAdd(result, property, seen);
    return result;
}

// A complex property is opened once a set: a file may have one in itself, or many ways to one.
void PropertyReader::vPartsAdd(Property& complex, Entity& entity, std::vector<const Entity*>& seen) const {
    if (std::ranges::find(seen, &entity) != seen.end() || seen.size() > RelationWalk::g_iMostSteps) return;
    seen.push_back(&entity);
    for (const Slot eSlot : {Slot::ComplexProperties, Slot::ComplexQuantities})
        m_table.forEachNamed(entity, eSlot, [&](Entity& part) {
            complex.properties.push_back(propertyOf({nullptr, &part, 0, complex.source}, seen));
        });
}

Property PropertyReader::property(const FoundProperty& found) const {
    std::vector<const Entity*> seen;
    return propertyOf(found, seen);
}

void PropertyReader::vSetAdd(Entity& set, Source eSource, std::vector<PropertySet>& sets) const {
    const std::string_view name = setName(set);
    auto at = std::ranges::find(sets, name, &PropertySet::name);
    if (at == sets.end())
        at = sets.insert(at, PropertySet{std::string(name), eSource, m_walk.state().elementOf(&set), {}});
    std::vector<const Entity*> seen;
    std::unordered_set<std::string> names;
    for (const Property& one : at->properties) names.insert(one.name);
    forEachIn(set, [&](std::string_view propertyHere, FoundProperty found) {
        if (!names.emplace(propertyHere).second) return;
        found.eSource = eSource;
        Property one = propertyOf(found, seen);
        if (one.kind != PropertyKind::Attribute || !one.value.isNull()) at->properties.push_back(std::move(one));
    });
}

std::vector<PropertySet> PropertyReader::sets(const Entity& entity, bool boQuantities) const {
    std::vector<PropertySet> found;
    const auto vAdd = [&](const std::vector<Entity*>& sets, Source eSource) {
        for (Entity* pSet : sets)
            if (m_table.boIs(*pSet, Class::QuantitySet) == boQuantities) vSetAdd(*pSet, eSource, found);
    };
    vAdd(m_walk.ownSets(entity), Source::Instance);
    if (const Entity* pType = m_walk.pType(entity)) vAdd(m_walk.ownSets(*pType), Source::Type);
    return found;
}

}   // namespace oxa::detail

namespace oxa {

using detail::ModelState;
using detail::PropertyReader;
using detail::RelationWalk;

std::vector<PropertySet> psets(const Element& element) {
    const RelationWalk walk(ModelState::of(element));
    return PropertyReader(walk).sets(ModelState::entityOf(element), false);
}

std::vector<PropertySet> quantities(const Element& element) {
    const RelationWalk walk(ModelState::of(element));
    return PropertyReader(walk).sets(ModelState::entityOf(element), true);
}

std::optional<Property> property(const Element& element, std::string_view set, std::string_view name) {
    const RelationWalk walk(ModelState::of(element));
    const PropertyReader reader(walk);
    const detail::FoundProperty found = reader.find(ModelState::entityOf(element), set, name);
    return found ? std::optional(reader.property(found)) : std::nullopt;
}

}   // namespace oxa
