// SPDX-License-Identifier: Apache-2.0
// ModelView: a model as the tests of facets look at it, with what is to be found once for all of them.
//
// Threads  any number at once, on a model that nobody changes.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "Check/Ids/Matcher.h"
#include "Check/Ids/TypedOccurrences.h"
#include "Model/Model.h"
#include "Model/PropertyReader.h"
#include "Model/RelationWalk.h"
#include "Model/Units.h"

namespace oxa::ids::detail {

namespace schema = ifc::def::schema;
using ifc::Entity;
using oxa::detail::Class;
using oxa::detail::FoundProperty;
using oxa::detail::Relation;
using oxa::detail::RelationTable;
using oxa::detail::Side;
using oxa::detail::Slot;

class ModelView {
public:
    explicit ModelView(const Model& model);

    [[nodiscard]] oxa::detail::ModelState& state() const noexcept { return m_state; }
    [[nodiscard]] const oxa::detail::RelationWalk& walk() const noexcept { return m_walk; }
    [[nodiscard]] const RelationTable& table() const noexcept { return m_walk.table(); }
    [[nodiscard]] const oxa::detail::PropertyReader& properties() const noexcept { return m_properties; }
    [[nodiscard]] const Units& units() const noexcept { return m_units; }
    [[nodiscard]] const schema::Schema& schema() const noexcept { return m_state.schema(); }
    [[nodiscard]] const std::vector<TypedOccurrence>& typed() const noexcept { return m_typed; }
    [[nodiscard]] std::size_t iOrdinals() const noexcept { return m_iOrdinals; }

    [[nodiscard]] Value valueAt(Entity& entity, Slot eSlot) const;

    // What leads to an instance and from it by no inverse list: references to a material, properties of a profile.
    struct Others {
        std::unordered_map<const Entity*, std::vector<Entity*>> found;
        std::vector<bool> types;   // of the instances, by ordinal
    };
    /// References of classifications, by what is classified.
    [[nodiscard]] const Others& references() const noexcept { return m_references; }
    /// Sets of properties, by what has them.
    [[nodiscard]] const Others& extended() const noexcept { return m_extended; }
    [[nodiscard]] static const std::vector<Entity*>& of(const Others& others, const Entity& entity);
    /// Whether instances of that type are in it.
    [[nodiscard]] static bool boHasType(const Others& others, const schema::Entity& type) {
        return type.iTypeOrdinal < others.types.size() && others.types[type.iTypeOrdinal];
    }

    /// What is said of its predefined type, by its type object where there is one: an enumerator, and of USERDEFINED the
    /// user's own name.
    [[nodiscard]] std::vector<std::string> predefinedTypes(Entity& entity) const;

private:
    void vPredefinedTypesAdd(Entity& entity, std::vector<std::string>& names) const;

    oxa::detail::ModelState& m_state;
    oxa::detail::RelationWalk m_walk;
    oxa::detail::PropertyReader m_properties;
    Units m_units;
    std::vector<TypedOccurrence> m_typed;
    std::size_t m_iOrdinals = 0;
    Others m_references;
    Others m_extended;
    struct Places {
        int iPredefinedType = -1;
        int iUserType = -1;
    };
    std::vector<Places> m_places;   // by the ordinal of a type
};

}   // namespace oxa::ids::detail
