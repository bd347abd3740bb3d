// SPDX-License-Identifier: Apache-2.0
#include "Model/SetProperty.h"

#include <algorithm>
#include <map>
#include <unordered_set>
#include <vector>

#include "Model/ModelState.h"
#include "Model/PropertyReader.h"

namespace oxa {

using detail::Class;
using detail::FoundProperty;
using detail::ModelState;
using detail::PropertyReader;
using detail::Relation;
using detail::RelationTable;
using detail::RelationWalk;
using detail::Side;
using detail::Slot;
using ifc::Entity;

namespace {

constexpr std::size_t g_iLongestLabel = 255;   // of an IfcLabel, in characters

// The type that a value gets where nothing says one.
std::string_view guessedType(const NewValue& value) {
    struct Guess {
        std::string_view operator()(std::monostate) const { return {}; }
        std::string_view operator()(Derived) const { return {}; }
        std::string_view operator()(bool) const { return "IfcBoolean"; }
        std::string_view operator()(LogicalValue) const { return "IfcLogical"; }
        std::string_view operator()(std::int64_t) const { return "IfcInteger"; }
        std::string_view operator()(double) const { return "IfcReal"; }
        std::string_view operator()(const std::string& sText) const {
            const auto iLength =
                std::ranges::count_if(sText, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
            return static_cast<std::size_t>(iLength) > g_iLongestLabel ? "IfcText" : "IfcLabel";
        }
        std::string_view operator()(const Bytes&) const { return "IfcBinary"; }
        std::string_view operator()(const Element&) const { return {}; }
        std::string_view operator()(const NewValue::List&) const { return {}; }
    };
    return std::visit(Guess(), value.content());
}

// A property is no attribute that a schema could derive.
void vCheck(const NewValue& value, std::string_view set, std::string_view name) {
    if (std::holds_alternative<Derived>(value.content()))
        throw ValueError(std::string(set) + '.' + std::string(name) + " is not derived from other attributes");
}

// With a type: its own, else "sType", else a guess. Of a list each item.
NewValue typedValue(const NewValue& value, const std::string& sType) {
    if (!value.typeName().empty() || std::holds_alternative<std::monostate>(value.content())) return value;
    if (const auto* pItems = std::get_if<NewValue::List>(&value.content())) {
        NewValue::List items;
        for (const NewValue& item : *pItems) items.push_back(typedValue(item, sType));
        return items;
    }
    const std::string_view type = sType.empty() ? guessedType(value) : std::string_view(sType);
    return type.empty() ? value : typed(type, value);
}

// The elements that get the value in one call.
using Chosen = std::unordered_set<const Entity*>;

class PropertyEdit {
public:
    PropertyEdit(Model& model, const Element& element, const Chosen& chosen, std::string_view set,
                 std::string_view name)
        : m_model(model),
          m_state(ModelState::of(model)),
          m_walk(m_state),
          m_reader(m_walk),
          m_table(m_walk.table()),
          m_element(element),
          m_entity(m_state.entityHere(element)),
          m_chosen(chosen),
          m_set(set),
          m_name(name) {
        const bool boHasSets = m_table.boTells(m_entity, Relation::Sets, Side::Part) || boType();
        if (!boHasSets) throw ValueError(m_state.sNameOf(m_entity) + " is of a type that has no property sets");
        if (set.empty() || name.empty()) throw ValueError("a property needs the name of its set and a name");
    }

    Element set(const NewValue& value) {
        m_boCounted = m_state.propertyUses().boCurrent(m_state);
        const Element property = setAny(value);
        if (m_boCounted) m_state.propertyUses().vSettle(m_state);   // all changes have been told
        return property;
    }

    // Whether the element needs a relationship with a set of its own, which it may have in common with others.
    [[nodiscard]] bool boLacksSet() const {
        if (boType() || pOwnSet()) return false;
        const FoundProperty found = m_reader.find(m_entity, m_set, m_name);
        return !found || found.eSource != Source::Instance;
    }
    // The type that a value gets there; empty where only its form says one.
    [[nodiscard]] std::string sTypeThere() const {
        const FoundProperty found = m_reader.find(m_entity, m_set, m_name);
        return found ? sTypeOf(m_reader.value(found)) : std::string();
    }
    // One new set for all of them, which lack one and have the same type there.
    void vSetMakeFor(const std::vector<Element>& elements, const NewValue& value) {
        m_boCounted = m_state.propertyUses().boCurrent(m_state);
        const Element property = propertyMake(typedValue(value, sTypeThere()));
        try {
            vRelate(setMake(property), {elements.begin(), elements.end()});
        } catch (...) {
            static_cast<void>(m_model.remove(property));
            throw;
        }
        if (m_boCounted) m_state.propertyUses().vSettle(m_state);
    }

private:
    Element setAny(const NewValue& value) {
        const FoundProperty found = m_reader.find(m_entity, m_set, m_name);
        if (found && found.eSource == Source::Instance) return setFound(found, value);
        // The property is made first: what is wrong with the value is told with nothing changed.
        const NewValue asked = typedValue(value, found ? sTypeOf(m_reader.value(found)) : std::string());
        Entity* pSet = pOwnSet();
        if (pSet && !m_table.boIs(*pSet, Class::PropertySet))
            throw ValueError(m_state.sNameOf(*pSet) + " has no \"" + std::string(m_name) + "\", and takes no property");
        const Element property = propertyMake(asked);
        try {
            if (pSet)
                m_model.append(m_state.elementOf(&setOfItsOwn(*pSet)), attribute(Slot::SetProperties), property);
            else
                vSetMake(property);
        } catch (...) {
            static_cast<void>(m_model.remove(property));
            throw;
        }
        return property;
    }

    [[nodiscard]] bool boType() const { return m_table.boIs(m_entity, Class::TypeObject); }
    [[nodiscard]] std::string_view attribute(Slot eSlot) const { return m_table.attributeName(eSlot); }

    // What the items, or the one value, are typed as.
    [[nodiscard]] static std::string sTypeOf(const Value& value) {
        if (value.kind() != Kind::List || value.isTyped())
            return value.isTyped() ? std::string(value.typeName()) : std::string();
        const std::vector<Value> items = value.items();
        return items.empty() ? std::string() : sTypeOf(items.front());
    }

    // The set of that name that the element has by itself; null where there is none.
    [[nodiscard]] Entity* pOwnSet() const {
        for (Entity* pSet : m_walk.ownSets(m_entity))
            if (m_reader.setName(*pSet) == m_set) return pSet;
        return nullptr;
    }

    Element setFound(const FoundProperty& found, const NewValue& value) {
        if (!found.pProperty) return setAttribute(found, value);
        if (!boLists(*found.pSet, *found.pProperty))
            throw ValueError(m_state.sNameOf(*found.pProperty) +
                             " is a part of a complex property; Model::set sets it");
        const Slot eSlot = slotOf(*found.pProperty);
        const bool boQuantity = eSlot == Slot::QuantityUnit;
        const bool boList = eSlot == Slot::EnumeratedValues || eSlot == Slot::ListValues;
        NewValue asked = boQuantity ? value : typedValue(value, sTypeOf(m_reader.value(found)));
        const bool boOne = !std::holds_alternative<NewValue::List>(asked.content()) &&
                           !std::holds_alternative<std::monostate>(asked.content());
        if (boList && boOne) asked = NewValue::List{asked};
        const Element own = m_state.elementOf(found.pProperty);
        if (iUses(*found.pProperty) < 2 && !boShared(*found.pSet)) {
            m_model.set(own, valueName(own, eSlot), asked);
            return own;
        }
        const Element property = copyWith(*found.pProperty, valueName(own, eSlot), asked);
        vReplace(setOfItsOwn(*found.pSet), *found.pProperty, property);
        return property;
    }

    // Of a set that the schema defines.
    Element setAttribute(const FoundProperty& found, const NewValue& value) {
        const std::string_view name = found.pSet->schemaEntity().allAttributes()[found.iAttribute]->sName;
        const Element set = m_state.elementOf(found.pSet);
        if (boShared(*found.pSet)) {
            const Element copy = copyWith(*found.pSet, name, value);
            vStandInFor(*found.pSet, copy);
            return copy;
        }
        m_model.set(set, name, value);
        return set;
    }

    [[nodiscard]] bool boLists(const Entity& set, const Entity& property) const {
        bool boFound = false;
        for (const Slot eSlot : {Slot::SetProperties, Slot::SetQuantities})
            m_table.forEachNamed(set, eSlot, [&](const Entity& one) { boFound = boFound || &one == &property; });
        return boFound;
    }
    [[nodiscard]] Slot slotOf(Entity& property) const {
        for (const Slot eSlot : {Slot::SingleValue, Slot::EnumeratedValues, Slot::ListValues, Slot::QuantityUnit})
            if (m_table.place(property, eSlot).pCell) return eSlot;
        throw ValueError(m_state.sNameOf(property) + " does not hold one value, or a list of values, that can be set");
    }
    // The value of a quantity stands behind its unit.
    [[nodiscard]] std::string_view valueName(const Element& property, Slot eSlot) const {
        const Entity& entity = ModelState::entityOf(property);
        const unsigned iIndex = m_table.place(entity, eSlot).iIndex + (eSlot == Slot::QuantityUnit ? 1 : 0);
        return entity.schemaEntity().allAttributes()[iIndex]->sName;
    }

    // The same values, another GlobalId.
    Element copyOf(Entity& entity) {
        const Element original = m_state.elementOf(&entity);
        const std::vector<Attribute> attributes = original.attributes();
        std::vector<Field> fields;
        for (std::size_t i = original.guid().empty() ? 0 : 1; i < attributes.size(); ++i)
            if (!attributes[i].value.isNull()) fields.push_back({attributes[i].name, attributes[i].value});
        return m_model.create(original.type(), fields);
    }
    // And one of them another; gone where that can't be.
    Element copyWith(Entity& entity, std::string_view name, const NewValue& value) {
        const Element copy = copyOf(entity);
        try {
            m_model.set(copy, name, value);
        } catch (...) {
            static_cast<void>(m_model.remove(copy));
            throw;
        }
        return copy;
    }

    // How many sets and complex properties list a property.
    [[nodiscard]] std::size_t iUses(Entity& property) {
        std::size_t iCount = 0;
        for (const Relation eRelation :
             {Relation::ComplexProperties, Relation::ComplexQuantities, Relation::SetProperties})
            m_table.forEachRelationship(property, eRelation, Side::Part, [&](Entity&) { ++iCount; });
        if (m_table.boTells(property, Relation::SetProperties, Side::Part)) return iCount;
        m_state.propertyUses().vRefresh(m_state);
        m_boCounted = true;
        return iCount + m_state.propertyUses().iUses(property);
    }

    // Whether an element or type has the set as well that is not to have the value.
    [[nodiscard]] bool boShared(const Entity& set) const {
        const auto boOther = [this](const Entity& user) { return !m_chosen.contains(&user); };
        for (const Entity* pType : m_walk.relationships(set, Relation::TypeSets, Side::Whole))
            if (boOther(*pType)) return true;
        bool boFound = false;
        for (const Entity* pRelationship : m_walk.relationships(set, Relation::Sets, Side::Whole))
            m_table.forEachOn(*pRelationship, Relation::Sets, Side::Part,
                              [&](const Entity& user) { boFound = boFound || boOther(user); });
        return boFound;
    }
    // The set, where nobody else has it; else a copy that stands in its place.
    [[nodiscard]] Entity& setOfItsOwn(Entity& set) {
        if (!boShared(set)) return set;
        const Element copy = copyOf(set);
        for (const Slot eSlot : {Slot::SetProperties, Slot::SetQuantities})
            m_table.forEachNamed(set, eSlot, [&](const Entity& one) { m_state.propertyUses().vAdd(one); });
        vStandInFor(set, copy);
        return ModelState::entityOf(copy);
    }
    void vStandInFor(Entity& set, const Element& copy) {
        const std::vector<Entity*> types = m_walk.relationships(set, Relation::TypeSets, Side::Whole);
        if (std::ranges::find(types, &m_entity) != types.end())
            vListedReplace(m_entity, Slot::TypeSets, set, copy);
        else
            vTakeOver(m_walk.relationships(set, Relation::Sets, Side::Whole), set, copy);
    }

    // The elements leave the relationship with others, for one of their own with all that the former one defines.
    void vTakeOver(const std::vector<Entity*>& relationships, Entity& set, const Element& copy) {
        const std::string_view related = m_table.attributeName(Relation::Sets, Side::Part);
        const std::string_view defined = m_table.attributeName(Relation::Sets, Side::Whole);
        for (Entity* pRelationship : relationships) {
            const Element relationship = m_state.elementOf(pRelationship);
            NewValue::List others;
            NewValue::List chosen;
            bool boHere = false;
            for (const Element one : relationship.elements(related)) {
                boHere = boHere || one == m_element;
                (m_chosen.contains(&ModelState::entityOf(one)) ? chosen : others).emplace_back(one);
            }
            if (!boHere) continue;
            NewValue::List sets;
            for (const Element one : relationship.elements(defined))
                sets.push_back(one == m_state.elementOf(&set) ? NewValue(copy) : NewValue(one));
            const NewValue definition =
                sets.size() == 1 ? sets.front() : typed(relationship[defined].typeName(), NewValue(std::move(sets)));
            if (others.empty()) return m_model.set(relationship, defined, definition);
            m_model.set(relationship, related, others);
            vRelate(definition, chosen);
            return;
        }
    }

    void vRelate(const NewValue& definition, const NewValue::List& elements) {
        const Field fields[] = {{attribute(Slot::OwnerHistory), history()},
                                {m_table.attributeName(Relation::Sets, Side::Part), elements},
                                {m_table.attributeName(Relation::Sets, Side::Whole), definition}};
        m_model.create(m_table.pRelationship(Relation::Sets)->sName, fields);
    }

    Element setMake(const Element& property) {
        const Field fields[] = {{attribute(Slot::OwnerHistory), history()},
                                {attribute(Slot::RootName), m_set},
                                {attribute(Slot::SetProperties), NewValue::List{property}}};
        return m_model.create(m_table.pClass(Class::PropertySet)->sName, fields);
    }
    void vSetMake(const Element& property) {
        const Element set = setMake(property);
        if (boType())
            m_model.append(m_element, attribute(Slot::TypeSets), set);
        else
            vRelate(set, {m_element});
    }

    Element propertyMake(const NewValue& value) {
        const bool boList = std::holds_alternative<NewValue::List>(value.content());
        const Field fields[] = {{attribute(Slot::PropertyName), m_name},
                                {attribute(boList ? Slot::ListValues : Slot::SingleValue), value}};
        return m_model.create(m_table.pClass(boList ? Class::ListValue : Class::SingleValue)->sName, fields);
    }

    [[nodiscard]] Element history() const { return m_element.element(attribute(Slot::OwnerHistory)); }

    void vReplace(Entity& set, Entity& property, const Element& by) {
        for (const Slot eSlot : {Slot::SetProperties, Slot::SetQuantities})
            if (m_table.place(set, eSlot).pCell) vListedReplace(set, eSlot, property, by);
        m_state.propertyUses().vRemove(property);
    }
    void vListedReplace(Entity& owner, Slot eSlot, Entity& listed, const Element& by) {
        NewValue::List items;
        m_table.forEachNamed(owner, eSlot,
                             [&](Entity& one) { items.emplace_back(&one == &listed ? by : m_state.elementOf(&one)); });
        m_model.set(m_state.elementOf(&owner), attribute(eSlot), items);
    }

    Model& m_model;
    ModelState& m_state;
    RelationWalk m_walk;
    PropertyReader m_reader;
    const RelationTable& m_table;
    Element m_element;
    Entity& m_entity;
    const Chosen& m_chosen;
    std::string_view m_set;
    std::string_view m_name;
    bool m_boCounted = false;   // what properties stand in several sets is known, and is told of each change
};

}   // namespace

Element setProperty(Model& model, const Element& element, std::string_view set, std::string_view name,
                    const NewValue& value) {
    vCheck(value, set, name);
    const Chosen chosen{&ModelState::of(model).entityHere(element)};
    return PropertyEdit(model, element, chosen, set, name).set(value);
}

void setProperty(Model& model, std::span<const Element> elements, std::string_view set, std::string_view name,
                 const NewValue& value) {
    vCheck(value, set, name);
    Chosen chosen;
    std::vector<Element> each;   // once, however often it is named
    for (const Element& element : elements)
        if (chosen.insert(&ModelState::of(model).entityHere(element)).second) each.push_back(element);
    std::map<std::string, std::vector<Element>> lacking;   // by the type that the value gets there
    for (const Element& element : each) {
        PropertyEdit edit(model, element, chosen, set, name);
        if (edit.boLacksSet())
            lacking[edit.sTypeThere()].push_back(element);
        else
            edit.set(value);
    }
    for (const auto& [sType, ofType] : lacking)
        PropertyEdit(model, ofType.front(), chosen, set, name).vSetMakeFor(ofType, value);
}

}   // namespace oxa
