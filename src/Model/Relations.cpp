// SPDX-License-Identifier: Apache-2.0
#include "Model/Relations.h"

#include <algorithm>

#include "Model/RelationWalk.h"

namespace oxa {

using detail::Class;
using detail::ModelState;
using detail::Relation;
using detail::RelationWalk;
using detail::Side;
using detail::Slot;
using ifc::Entity;

namespace {

// An element, as the walk wants it.
struct Asked {
    explicit Asked(const Element& element) : walk(ModelState::of(element)), entity(ModelState::entityOf(element)) {}

    [[nodiscard]] Element elementOf(Entity* pEntity) const { return walk.state().elementOf(pEntity); }
    [[nodiscard]] Elements elementsOf(std::vector<Entity*> found) const {
        return walk.state().elementsOf(std::move(found));
    }

    RelationWalk walk;
    Entity& entity;
};

std::string sText(const char* pText) { return pText ? pText : ""; }

}   // namespace

namespace {

Elements all(const Model& model, Class eClass) {
    ModelState& state = ModelState::of(model);
    const auto* pClass = state.relations().pClass(eClass);
    return pClass ? state.elementsOf(state.all(*pClass, true)) : Elements();
}

}   // namespace

Elements objects(const Model& model) { return all(model, Class::ObjectDefinition); }
Elements projects(const Model& model) { return all(model, Class::Project); }
Elements spatialElements(const Model& model) { return all(model, Class::SpatialElement); }
Elements physicalElements(const Model& model) { return all(model, Class::PhysicalElement); }

bool isSpatial(const Element& element) {
    const Asked asked(element);
    return asked.walk.table().boIs(asked.entity, Class::SpatialElement);
}

Element type(const Element& element) {
    const Asked asked(element);
    return asked.elementOf(asked.walk.pType(asked.entity));
}

Element parent(const Element& element) {
    const Asked asked(element);
    return asked.elementOf(asked.walk.pParent(asked.entity));
}

Element container(const Element& element) {
    const Asked asked(element);
    return asked.elementOf(asked.walk.pAbove(asked.entity, Class::SpatialElement));
}

Element storey(const Element& element) {
    const Asked asked(element);
    return asked.elementOf(asked.walk.pAbove(asked.entity, Class::Storey));
}

Element building(const Element& element) {
    const Asked asked(element);
    return asked.elementOf(asked.walk.pAbove(asked.entity, Class::Building));
}

Elements parts(const Element& element) {
    const Asked asked(element);
    std::vector<Entity*> found;
    for (const Relation eRelation : {Relation::Aggregate, Relation::Nest, Relation::Void, Relation::Filling,
                                     Relation::Projection, Relation::Surface, Relation::Port})
        asked.walk.vOthersAdd(asked.entity, eRelation, Side::Whole, found);
    return asked.elementsOf(std::move(found));
}

Elements contents(const Element& element) {
    const Asked asked(element);
    return asked.elementsOf(asked.walk.others(asked.entity, Relation::Content, Side::Whole));
}

Elements groups(const Element& element) {
    const Asked asked(element);
    return asked.elementsOf(asked.walk.others(asked.entity, Relation::Group, Side::Part));
}

namespace {

// What the entry of a material says, from the definition that an element is associated with down to the material.
class MaterialEntries {
public:
    MaterialEntries(const Asked& asked, Source eSource) : m_asked(asked), m_eSource(eSource) {}

    void vAdd(Entity& definition) {
        const auto& table = m_asked.walk.table();
        if (table.boIs(definition, Class::Material)) return vEntryAdd({}, &definition);
        if (table.boIs(definition, Class::MaterialList)) {
            table.forEachNamed(definition, Slot::ListedMaterials, [&](Entity& material) {
                Material entry;
                entry.set = m_asked.elementOf(&definition);
                vEntryAdd(std::move(entry), &material);
            });
            return;
        }
        for (const Slot eUsed : {Slot::UsedLayerSet, Slot::UsedProfileSet})
            table.forEachNamed(definition, eUsed, [&](Entity& set) { vSetAdd(set); });
        vSetAdd(definition);
        vItemAdd({}, definition);
    }

    std::vector<Material> entries;

private:
    void vSetAdd(Entity& set) {
        struct Row {
            Slot eItems;
            Slot eName;
        };
        constexpr Row rows[] = {{Slot::Layers, Slot::LayerSetName},
                                {Slot::Profiles, Slot::ProfileSetName},
                                {Slot::Constituents, Slot::ConstituentSetName}};
        const auto& table = m_asked.walk.table();
        for (const Row& row : rows)
            table.forEachNamed(set, row.eItems, [&](Entity& item) {
                Material entry;
                entry.set = m_asked.elementOf(&set);
                entry.setName = sText(table.pText(set, row.eName));
                vItemAdd(std::move(entry), item);
            });
    }

    void vItemAdd(Material entry, Entity& item) {
        struct Row {
            Class eClass;
            Slot eMaterial;
            Slot eName;
        };
        constexpr Row rows[] = {{Class::Layer, Slot::LayerMaterial, Slot::LayerName},
                                {Class::Profile, Slot::ProfileMaterial, Slot::ProfileName},
                                {Class::Constituent, Slot::ConstituentMaterial, Slot::ConstituentName}};
        const auto& table = m_asked.walk.table();
        for (const Row& row : rows) {
            if (!table.boIs(item, row.eClass)) continue;
            Entity* pMaterial = nullptr;
            table.forEachNamed(item, row.eMaterial, [&](Entity& material) { pMaterial = &material; });
            entry.of = m_asked.elementOf(&item);
            entry.part = sText(table.pText(item, row.eName));
            entry.thickness = number(item, Slot::LayerThickness);
            entry.fraction = number(item, Slot::ConstituentFraction);
            return vEntryAdd(std::move(entry), pMaterial);
        }
    }

    void vEntryAdd(Material entry, Entity* pMaterial) {
        entry.element = m_asked.elementOf(pMaterial);
        if (pMaterial) entry.name = sText(m_asked.walk.table().pText(*pMaterial, Slot::MaterialName));
        entry.source = m_eSource;
        entries.push_back(std::move(entry));
    }

    [[nodiscard]] std::optional<double> number(Entity& item, Slot eSlot) const {
        const auto place = m_asked.walk.table().place(item, eSlot);
        return place.pCell ? m_asked.walk.state().valueOf(item, place.iIndex).number() : std::nullopt;
    }

    const Asked& m_asked;
    Source m_eSource;
};

}   // namespace

std::vector<Material> materials(const Element& element) {
    const Asked asked(element);
    bool boOfType = false;
    const std::vector<Entity*> definitions = asked.walk.materials(asked.entity, boOfType);
    MaterialEntries found(asked, boOfType ? Source::Type : Source::Instance);
    for (Entity* pDefinition : definitions) found.vAdd(*pDefinition);
    return std::move(found.entries);
}

std::vector<Classification> classifications(const Element& element) {
    const Asked asked(element);
    const auto& table = asked.walk.table();
    const std::vector<Entity*> own = asked.walk.others(asked.entity, Relation::Classification, Side::Part);
    std::vector<Classification> found;
    for (Entity* pReference : asked.walk.classifications(asked.entity)) {
        const Entity* pSystem = asked.walk.pSystem(*pReference);
        Classification one;
        one.element = asked.elementOf(pReference);
        if (pSystem) one.system = sText(table.pText(*pSystem, Slot::ClassificationName));
        one.code = asked.walk.classificationCode(*pReference);
        one.name = sText(table.pText(*pReference, Slot::ReferenceName));
        one.source = std::ranges::find(own, pReference) == own.end() ? Source::Type : Source::Instance;
        found.push_back(std::move(one));
    }
    return found;
}

namespace {

struct RoleRow {
    Relation eRelation;
    Role role;
};
constexpr RoleRow g_roles[] = {
    {Relation::Type, Role::TypeOf},         {Relation::Sets, Role::SetsOf},
    {Relation::Content, Role::PlaceOf},     {Relation::Aggregate, Role::PlaceOf},
    {Relation::Nest, Role::PlaceOf},        {Relation::Void, Role::PlaceOf},
    {Relation::Filling, Role::PlaceOf},     {Relation::Projection, Role::PlaceOf},
    {Relation::Surface, Role::PlaceOf},     {Relation::Port, Role::PlaceOf},
    {Relation::Material, Role::MaterialOf}, {Relation::Classification, Role::ClassificationOf},
    {Relation::Group, Role::GroupOf},
};

const RoleRow* pRoleRow(const Asked& asked) {
    const auto found = std::ranges::find_if(g_roles, [&asked](const RoleRow& row) {
        const auto* pClass = asked.walk.table().pRelationship(row.eRelation);
        return pClass && asked.entity.boIsCompatible(pClass);
    });
    return found == std::end(g_roles) ? nullptr : &*found;
}

}   // namespace

Role role(const Element& element) {
    const Asked asked(element);
    if (asked.walk.table().boIs(asked.entity, Class::ObjectDefinition)) return Role::Object;
    if (asked.walk.table().boIs(asked.entity, Class::SetDefinition)) return Role::Set;
    const RoleRow* pRow = pRoleRow(asked);
    return pRow ? pRow->role : Role::Other;
}

Elements concerned(const Element& element) {
    const Asked asked(element);
    const auto& walk = asked.walk;
    std::vector<Entity*> found;
    const auto vElementsOf = [&](const Entity& type) { walk.vOthersAdd(type, Relation::Type, Side::Whole, found); };
    if (const RoleRow* pRow = pRoleRow(asked)) {
        walk.table().forEachOn(asked.entity, pRow->eRelation, Side::Part,
                               [&found](Entity& one) { found.push_back(&one); });
        if (pRow->role == Role::SetsOf || pRow->role == Role::MaterialOf || pRow->role == Role::ClassificationOf) {
            const std::vector<Entity*> types = found;   // some of them, which hand on what they have
            for (const Entity* pType : types) vElementsOf(*pType);
        }
    } else {
        walk.vOthersAdd(asked.entity, Relation::Sets, Side::Whole, found);
        for (Entity* pType : walk.relationships(asked.entity, Relation::TypeSets, Side::Whole)) {
            found.push_back(pType);
            vElementsOf(*pType);
        }
        if (walk.table().boIs(asked.entity, Class::TypeObject)) vElementsOf(asked.entity);
    }
    walk.state().vSortByNumber(found);
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return asked.elementsOf(std::move(found));
}

}   // namespace oxa
