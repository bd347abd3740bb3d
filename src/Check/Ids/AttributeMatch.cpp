// SPDX-License-Identifier: Apache-2.0
// The facet of attributes: what an instance says by itself, and not what its type says.
#include <algorithm>

#include "Check/Ids/FacetMatch.h"
#include "Check/Ids/SchemaNames.h"
#include "Check/Ids/ValueMatch.h"

namespace oxa::ids::detail {

namespace {

class AttributeMatch final : public FacetMatch {
public:
    AttributeMatch(const ModelView& view, const FacetProgram& facet)
        : m_view(view),
          m_facet(facet),
          m_sWanted(shown(facet.pFacet->name->text())),
          m_values(view) {}

    [[nodiscard]] bool boMaySelect(const schema::Entity& type) const override { return !placesOf(type).empty(); }
    [[nodiscard]] bool boSelects(Entity& entity) override {
        return std::ranges::any_of(places(entity), [&](std::uint16_t iPlace) {
            const Value value = m_view.state().valueOf(entity, iPlace);
            return !ValueMatch::boEmpty(value) && m_values.boMatches(value, m_facet.value, nullptr);
        });
    }
    [[nodiscard]] bool boMeets(Entity& entity, Finding& finding) override {
        const Cardinality cardinality = m_facet.pFacet->cardinality;
        bool boAny = false;
        for (const std::uint16_t iPlace : places(entity)) {
            const Value value = m_view.state().valueOf(entity, iPlace);
            const bool boThere =
                cardinality == Cardinality::Optional ? !ValueMatch::boNull(value) : !ValueMatch::boEmpty(value);
            if (!boThere) continue;
            boAny = true;
            const bool boMatches = m_values.boMatches(value, m_facet.value, nullptr);
            if (boMatches != (cardinality == Cardinality::Prohibited)) continue;
            const std::string& sName = entity.schemaEntity().allAttributes()[iPlace]->sName;
            finding = {boMatches ? FailureKind::Prohibited : FailureKind::Value,
                       sName + " is " + m_values.text(value, nullptr), ValueMatch::plain(value)};
            return false;
        }
        if (boAny || cardinality != Cardinality::Required) return true;
        finding = {FailureKind::Missing,
                   places(entity).empty() ? entity.schemaEntity().sName + " has no attribute " + m_sWanted
                                          : m_sWanted + " has no value",
                   {}};
        return false;
    }

private:
    using Places = std::vector<std::uint16_t>;
    [[nodiscard]] const Places& placesOf(const schema::Entity& type) const {
        const auto [it, boNew] = m_places.try_emplace(&type);
        if (!boNew) return it->second;
        const auto& attributes = type.allAttributes();
        for (std::size_t i = 0; i < attributes.size(); ++i)
            if (m_facet.name.boText(attributes[i]->sName) && !boDerived(type, *attributes[i]))
                it->second.push_back(static_cast<std::uint16_t>(i));
        return it->second;
    }
    [[nodiscard]] const Places& places(const Entity& entity) const { return placesOf(entity.schemaEntity()); }

    const ModelView& m_view;
    const FacetProgram& m_facet;
    std::string m_sWanted;   // the name, for people
    ValueMatch m_values;
    mutable std::unordered_map<const schema::Entity*, Places> m_places;   // of the attributes that are meant
};

}   // namespace

std::unique_ptr<FacetMatch> attributeMatch(const ModelView& view, const FacetProgram& facet) {
    return std::make_unique<AttributeMatch>(view, facet);
}

}   // namespace oxa::ids::detail
