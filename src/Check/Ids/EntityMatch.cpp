// SPDX-License-Identifier: Apache-2.0
// The facets of classes: what an instance is, and what it is a part of.
#include <algorithm>
#include <array>

#include "Check/Ids/ClassMatch.h"
#include "Check/Ids/FacetMatch.h"
#include "Check/Ids/Texts.h"
#include "Check/Ids/ValueMatch.h"

namespace oxa::ids::detail {

namespace {

class EntityMatch final : public FacetMatch {
public:
    EntityMatch(const ModelView& view, const FacetProgram& facet) : m_view(view), m_match(view, facet) {}

    [[nodiscard]] bool boMaySelect(const schema::Entity& type) const override { return m_match.boMay(type); }
    [[nodiscard]] bool boSelects(Entity& entity) override { return m_match.boMatches(entity); }
    [[nodiscard]] bool boMeets(Entity& entity, Finding& finding) override {
        if (!m_match.boClass(entity)) {
            const std::string& sClass = entity.schemaEntity().sName;
            finding = {FailureKind::Class, "it is " + sClass, sClass};
            return false;
        }
        if (m_match.boPredefinedType(entity)) return true;
        FoundList found;
        for (const std::string& sName : m_view.predefinedTypes(entity)) found.vAdd(sName);
        finding = {FailureKind::PredefinedType,
                   found.text().empty() ? "it has no predefined type" : "its predefined type is " + found.text(),
                   found.text()};
        return false;
    }

private:
    const ModelView& m_view;
    ClassMatch m_match;
};

struct RelationRow {
    std::string_view sName;   // as the facet has it
    std::vector<Relation> relations;
};
const std::vector<RelationRow>& relationRows() {
    static const std::vector<RelationRow> rows{
        {"IFCRELAGGREGATES", {Relation::Aggregate}},
        {"IFCRELASSIGNSTOGROUP", {Relation::Group}},
        {"IFCRELCONTAINEDINSPATIALSTRUCTURE", {Relation::Content}},
        {"IFCRELNESTS", {Relation::Nest}},
        {"IFCRELVOIDSELEMENT IFCRELFILLSELEMENT", {Relation::Void, Relation::Filling}},
        {"",
         {Relation::Aggregate, Relation::Group, Relation::Content, Relation::Nest, Relation::Void, Relation::Filling}},
    };
    return rows;
}
const std::vector<Relation>& relationsOf(const Facet& facet) {
    const auto& rows = relationRows();
    const auto found = std::ranges::find(rows, facet.relation, &RelationRow::sName);
    return found == rows.end() ? rows.back().relations : found->relations;
}

class PartOfMatch final : public FacetMatch {
public:
    PartOfMatch(const ModelView& view, const FacetProgram& facet, std::shared_ptr<const Parts> pParts)
        : m_view(view),
          m_facet(*facet.pFacet),
          m_pParts(std::move(pParts)) {}

    [[nodiscard]] bool boMaySelect(const schema::Entity& type) const override {
        return std::ranges::any_of(relationsOf(m_facet), [&](Relation eRelation) {
            return m_view.table().boTells(type, eRelation, Side::Part);
        });
    }
    [[nodiscard]] bool boSelects(Entity& entity) override { return m_pParts->contains(&entity); }
    [[nodiscard]] bool boMeets(Entity& entity, Finding& finding) override {
        const bool boPart = m_pParts->contains(&entity);
        const bool boProhibited = m_facet.cardinality == Cardinality::Prohibited;
        if (boPart != boProhibited) return true;
        const std::string sWholes = wholes(entity);
        finding = {boProhibited      ? FailureKind::Prohibited
                   : sWholes.empty() ? FailureKind::Missing
                                     : FailureKind::Whole,
                   sWholes.empty() ? "it is part of nothing" : "it is part of " + sWholes, sWholes};
        return false;
    }

private:
    static constexpr std::size_t g_iMostShown = 20;

    // Those above, the nearest first, as many as are shown.
    [[nodiscard]] std::string wholes(const Entity& entity) {
        std::vector<const Entity*> seen{&entity};
        FoundList found;
        for (std::size_t i = 0; i < seen.size() && seen.size() <= g_iMostShown; ++i)
            for (const Entity* pWhole : Wholes(i == 0 ? wholesOf(entity) : known(*seen[i]))) {
                if (std::ranges::find(seen, pWhole) != seen.end()) continue;
                seen.push_back(pWhole);
                found.vAdd(pWhole->schemaEntity().sName + " #" + std::to_string(m_view.state().iNumberOf(*pWhole)));
            }
        return found.text();
    }
    // One step up.
    using Wholes = std::vector<const Entity*>;
    [[nodiscard]] Wholes wholesOf(const Entity& entity) const {
        Wholes found;
        for (const Relation eRelation : relationsOf(m_facet))
            for (const Entity* pWhole : m_view.walk().others(entity, eRelation, Side::Part))
                if (found.size() < g_iMostShown) found.push_back(pWhole);
        return found;
    }
    // The same of what many are part of.
    [[nodiscard]] const Wholes& known(const Entity& whole) {
        const auto [it, boNew] = m_wholes.try_emplace(&whole);
        if (boNew) it->second = wholesOf(whole);
        return it->second;
    }

    const ModelView& m_view;
    const Facet& m_facet;
    std::shared_ptr<const Parts> m_pParts;
    std::unordered_map<const Entity*, Wholes> m_wholes;
};

}   // namespace

FacetMatch::~FacetMatch() = default;

std::shared_ptr<const Parts> partsOf(const ModelView& view, const FacetProgram& facet) {
    if (facet.pFacet->kind != FacetKind::PartOf) return nullptr;
    auto pParts = std::make_shared<Parts>();
    const ClassMatch match(view, facet);
    const std::vector<Relation>& relations = relationsOf(*facet.pFacet);
    std::vector<Entity*> open;
    const auto vDown = [&](const Entity& whole) {
        for (const Relation eRelation : relations)
            view.table().forEachRelationship(whole, eRelation, Side::Whole, [&](const Entity& relationship) {
                view.table().forEachOn(relationship, eRelation, Side::Part, [&](Entity& part) {
                    if (pParts->insert(&part).second) open.push_back(&part);
                });
            });
    };
    for (const schema::Entity* pType : match.types())
        for (Entity* pWhole : view.state().all(*pType, false)) {
            if (!match.boMatches(*pWhole)) continue;
            vDown(*pWhole);
            while (!open.empty()) {
                const Entity* pNext = open.back();
                open.pop_back();
                vDown(*pNext);
            }
        }
    return pParts;
}

std::unique_ptr<FacetMatch> entityMatch(const ModelView& view, const FacetProgram& facet) {
    return std::make_unique<EntityMatch>(view, facet);
}

std::unique_ptr<FacetMatch> partOfMatch(const ModelView& view, const FacetProgram& facet,
                                        const std::shared_ptr<const Parts>& parts) {
    return std::make_unique<PartOfMatch>(view, facet, parts);
}

std::unique_ptr<FacetMatch> facetMatch(const ModelView& view, const FacetProgram& facet,
                                       const std::shared_ptr<const Parts>& parts) {
    switch (facet.pFacet->kind) {
    case FacetKind::Entity: return entityMatch(view, facet);
    case FacetKind::PartOf: return partOfMatch(view, facet, parts);
    case FacetKind::Classification: return classificationMatch(view, facet);
    case FacetKind::Attribute: return attributeMatch(view, facet);
    case FacetKind::Property: return propertyMatch(view, facet);
    case FacetKind::Material: return materialMatch(view, facet);
    }
    return nullptr;
}

}   // namespace oxa::ids::detail
