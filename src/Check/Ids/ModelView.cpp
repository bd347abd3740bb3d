// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/ModelView.h"

#include <algorithm>
#include <array>

#include "Check/Ids/SchemaNames.h"

namespace oxa::ids::detail {

namespace {

// Where a class has the name of a user's own type.
constexpr std::array<std::string_view, 4> g_userTypes{"ElementType", "ProcessType", "ResourceType", "ObjectType"};
constexpr std::string_view g_userDefined = "USERDEFINED";
constexpr std::string_view g_notDefined = "NOTDEFINED";

}   // namespace

ModelView::ModelView(const Model& model)
    : m_state(oxa::detail::ModelState::of(model)),
      m_walk(m_state),
      m_properties(m_walk),
      m_units(model),
      m_typed(typedOccurrences(m_state.schema())) {
    for (const schema::Schema::Record& record : schema().objects) {
        const schema::Entity* pType = schema::pAsEntity(record.pObject);
        if (!pType) continue;
        m_iOrdinals = std::max<std::size_t>(m_iOrdinals, pType->iTypeOrdinal + std::size_t{1});
        m_places.resize(m_iOrdinals);
        const auto& attributes = pType->allAttributes();
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            if (attributes[i]->sName == g_predefinedType)
                m_places[pType->iTypeOrdinal].iPredefinedType = static_cast<int>(i);
            if (std::ranges::find(g_userTypes, attributes[i]->sName) != g_userTypes.end())
                m_places[pType->iTypeOrdinal].iUserType = static_cast<int>(i);
        }
    }
    const auto vOf = [&](Class eClass, std::initializer_list<Slot> owners, Others& others, const auto& visit) {
        const schema::Entity* pClass = table().pClass(eClass);
        if (!pClass) return;
        for (Entity* pEntity : m_state.all(*pClass, true))
            for (const Slot eOwner : owners)
                table().forEachNamed(*pEntity, eOwner, [&](Entity& owner) {
                    others.types.resize(m_iOrdinals);
                    others.types[owner.schemaEntity().iTypeOrdinal] = true;
                    visit(*pEntity, others.found[&owner]);
                });
    };
    vOf(Class::ReferenceOf, {Slot::ReferredObjects}, m_references, [&](Entity& relation, std::vector<Entity*>& found) {
        table().forEachNamed(relation, Slot::GivenReference, [&](Entity& reference) {
            if (table().boIs(reference, Class::Reference) || table().boIs(reference, Class::Notation))
                found.push_back(&reference);
        });
    });
    vOf(Class::ExtendedProperties, {Slot::ExtendedMaterial, Slot::ExtendedProfile}, m_extended,
        [](Entity& set, std::vector<Entity*>& found) { found.push_back(&set); });
}

Value ModelView::valueAt(Entity& entity, Slot eSlot) const {
    const RelationTable::Place place = table().place(entity, eSlot);
    return place.pCell ? m_state.valueOf(entity, place.iIndex) : Value();
}

const std::vector<Entity*>& ModelView::of(const Others& others, const Entity& entity) {
    static const std::vector<Entity*> none;
    const auto found = others.found.find(&entity);
    return found == others.found.end() ? none : found->second;
}

void ModelView::vPredefinedTypesAdd(Entity& entity, std::vector<std::string>& names) const {
    const Places places = m_places[entity.schemaEntity().iTypeOrdinal];
    const auto text = [&](int iPlace) {
        const Value value = iPlace < 0 ? Value() : m_state.valueOf(entity, static_cast<std::size_t>(iPlace));
        const Kind eKind = value.kind();
        return eKind == Kind::Text || eKind == Kind::Enumerator ? value.text().value_or("") : std::string();
    };
    const std::string sType = text(places.iPredefinedType);
    if (!sType.empty()) names.push_back(sType);
    if (sType != g_userDefined && places.iPredefinedType >= 0) return;
    if (std::string sOwn = text(places.iUserType); !sOwn.empty()) names.push_back(std::move(sOwn));
}

std::vector<std::string> ModelView::predefinedTypes(Entity& entity) const {
    std::vector<std::string> names;
    if (Entity* pType = m_walk.pType(entity)) vPredefinedTypesAdd(*pType, names);
    if (names.empty() || names.front() == g_notDefined) vPredefinedTypesAdd(entity, names);
    return names;
}

}   // namespace oxa::ids::detail
