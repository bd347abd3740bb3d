// SPDX-License-Identifier: Apache-2.0
// PropertyReader: property sets, quantity sets and what is in them.
//
// For      psets(), quantities() and property(), columns and selectors.
// Fast     pFind looks at names as they lie in the model and allocates nothing.
// Threads  any number at once on a model that nobody changes.
#pragma once

#include <string_view>
#include <vector>

#include "Model/RelationWalk.h"
#include "Model/Relations.h"

namespace oxa::detail {

// A property or quantity of an element; for a set that the schema defines, its attribute.
struct FoundProperty {
    ifc::Entity* pSet = nullptr;
    ifc::Entity* pProperty = nullptr;   // null: the attribute of the set
    unsigned iAttribute = 0;
    Source eSource = Source::Instance;

    [[nodiscard]] explicit operator bool() const noexcept { return pSet != nullptr; }
};

class OXA_MODEL_API PropertyReader {
public:
    explicit PropertyReader(const RelationWalk& walk) : m_walk(walk), m_table(walk.table()) {}

    /// Of a set its class where it has no name, of a property an empty text.
    [[nodiscard]] std::string_view setName(const ifc::Entity& set) const;
    [[nodiscard]] std::string_view propertyName(const ifc::Entity& property) const;

    /// As property() in Relations.h finds it.
    [[nodiscard]] FoundProperty find(const ifc::Entity& entity, std::string_view set, std::string_view name) const;
    /// Calls visit(FoundProperty) for each whose names match; of the type those that the element does not hide.
    template <class SetMatch, class NameMatch, class Visit>
    void forEachMatch(const ifc::Entity& entity, const SetMatch& setMatch, const NameMatch& nameMatch,
                      Visit&& visit) const;
    /// Calls visit(std::string_view name, FoundProperty) for each in a set.
    template <class Visit>
    void forEachIn(ifc::Entity& set, Visit&& visit) const;

    /// What Property::value says.
    [[nodiscard]] Value value(const FoundProperty& found) const;
    [[nodiscard]] Property property(const FoundProperty& found) const;
    [[nodiscard]] std::vector<PropertySet> sets(const ifc::Entity& entity, bool boQuantities) const;

private:
    [[nodiscard]] bool boPredefined(const ifc::Entity& set) const {
        return m_table.boIs(set, Class::SetDefinition) && !m_table.boIs(set, Class::PropertySet) &&
               !m_table.boIs(set, Class::QuantitySet);
    }
    [[nodiscard]] FoundProperty findIn(ifc::Entity& set, std::string_view name) const;
    [[nodiscard]] ifc::Entity* pPartOf(const ifc::Entity& complex, std::string_view name) const;
    [[nodiscard]] Value valueAt(ifc::Entity& entity, Slot eSlot) const;
    void vSetAdd(ifc::Entity& set, Source eSource, std::vector<PropertySet>& sets) const;
    void vPartsAdd(Property& complex, ifc::Entity& entity, std::vector<const ifc::Entity*>& seen) const;
    [[nodiscard]] Property propertyOf(const FoundProperty& found, std::vector<const ifc::Entity*>& seen) const;

    const RelationWalk& m_walk;
    const RelationTable& m_table;
};

// The attributes that every set has by being rooted.
inline constexpr unsigned g_iRootAttributes = 4;

template <class Visit>
void PropertyReader::forEachIn(ifc::Entity& set, Visit&& visit) const {
    for (const Slot eSlot : {Slot::SetProperties, Slot::SetQuantities})
        m_table.forEachNamed(set, eSlot, [&](ifc::Entity& property) {
            visit(propertyName(property), FoundProperty{&set, &property, 0, Source::Instance});
        });
    if (!boPredefined(set)) return;
    const auto& attributes = set.schemaEntity().allAttributes();
    for (unsigned i = g_iRootAttributes; i < attributes.size(); ++i)
        visit(std::string_view(attributes[i]->sName), FoundProperty{&set, nullptr, i, Source::Instance});
}

template <class SetMatch, class NameMatch, class Visit>
void PropertyReader::forEachMatch(const ifc::Entity& entity, const SetMatch& setMatch, const NameMatch& nameMatch,
                                  Visit&& visit) const {
    const std::vector<ifc::Entity*> own = m_walk.ownSets(entity);
    const auto vSets = [&](const std::vector<ifc::Entity*>& sets, Source eSource) {
        for (ifc::Entity* pSet : sets) {
            const std::string_view set = setName(*pSet);
            if (!setMatch(set)) continue;
            forEachIn(*pSet, [&](std::string_view name, FoundProperty found) {
                if (!nameMatch(name) || (eSource == Source::Type && find(entity, set, name).eSource != eSource)) return;
                found.eSource = eSource;
                visit(found);
            });
        }
    };
    vSets(own, Source::Instance);
    if (const ifc::Entity* pType = m_walk.pType(entity)) vSets(m_walk.ownSets(*pType), Source::Type);
}

}   // namespace oxa::detail
