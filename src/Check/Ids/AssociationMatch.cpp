// SPDX-License-Identifier: Apache-2.0
// The facets of what is associated with an instance or its type: materials and classifications.
#include <algorithm>
#include <array>
#include <iterator>

#include "Check/Ids/FacetMatch.h"
#include "Check/Ids/ValueMatch.h"

namespace oxa::ids::detail {

namespace {

class MaterialMatch final : public FacetMatch {
public:
    MaterialMatch(const ModelView& view, const FacetProgram& facet) : m_view(view), m_facet(facet) {}

    [[nodiscard]] bool boMaySelect(const schema::Entity& type) const override {
        return m_view.table().boTells(type, Relation::Material, Side::Part);
    }
    [[nodiscard]] bool boSelects(Entity& entity) override {
        return std::ranges::any_of(definitions(entity), [&](const Entity* pOne) { return looked(*pOne, 0).boMatches; });
    }
    [[nodiscard]] bool boMeets(Entity& entity, Finding& finding) override {
        const std::vector<Entity*> all = definitions(entity);
        const bool boMatches = std::ranges::any_of(all, [&](const Entity* pOne) { return looked(*pOne, 0).boMatches; });
        const Cardinality cardinality = m_facet.pFacet->cardinality;
        if (cardinality == Cardinality::Optional && all.empty()) return true;
        if (boMatches != (cardinality == Cardinality::Prohibited)) return true;
        FoundList quoted;
        FoundList plain;
        for (const Entity* pOne : all) {
            const Looked& seen = looked(*pOne, 0);
            if (seen.plain.text().empty()) continue;
            quoted.vAdd(seen.quoted.text());
            plain.vAdd(seen.plain.text());
        }
        finding = {boMatches     ? FailureKind::Prohibited
                   : all.empty() ? FailureKind::Missing
                                 : FailureKind::Value,
                   all.empty()             ? "it has no material"
                   : quoted.text().empty() ? "its material has no name"
                                           : "its material is " + quoted.text(),
                   plain.text()};
        return false;
    }

private:
    // What a definition, or a part of it, has names for.
    struct Looked {
        bool boMatches = false;
        FoundList quoted;
        FoundList plain;
    };

    [[nodiscard]] std::vector<Entity*> definitions(const Entity& entity) const {
        bool boOfType = false;
        return m_view.walk().materials(entity, boOfType);
    }

    // From a usage to its set, to what it consists of, to materials; a file with references to what they must not refer
    // to may lead further.
    static constexpr std::size_t g_iSteps = 4;
    const Looked& looked(const Entity& definition, std::size_t iStep) {
        if (const auto known = m_looked[iStep].find(&definition); known != m_looked[iStep].end()) return known->second;
        Looked seen;
        seen.boMatches = m_facet.value.boAny();
        for (const Slot eName : {Slot::MaterialName, Slot::MaterialCategory, Slot::LayerSetName, Slot::LayerName,
                                 Slot::LayerCategory, Slot::ProfileSetName, Slot::ProfileName, Slot::ProfileCategory,
                                 Slot::ConstituentSetName, Slot::ConstituentName, Slot::ConstituentCategory}) {
            const char* pName = m_view.table().pText(definition, eName);
            if (!pName || !*pName) continue;
            seen.boMatches = seen.boMatches || m_facet.value.boText(pName);
            seen.quoted.vAdd(inQuotes(pName));
            seen.plain.vAdd(pName);
        }
        for (const Slot eNext :
             {Slot::UsedLayerSet, Slot::UsedProfileSet, Slot::Layers, Slot::Profiles, Slot::Constituents,
              Slot::LayerMaterial, Slot::ProfileMaterial, Slot::ConstituentMaterial, Slot::ListedMaterials}) {
            if (iStep + 1 == g_iSteps) break;
            m_view.table().forEachNamed(definition, eNext, [&](const Entity& next) {
                const Looked& below = looked(next, iStep + 1);
                seen.boMatches = seen.boMatches || below.boMatches;
                if (below.plain.text().empty()) return;
                seen.quoted.vAdd(below.quoted.text());
                seen.plain.vAdd(below.plain.text());
            });
        }
        return m_looked[iStep][&definition] = std::move(seen);
    }

    const ModelView& m_view;
    const FacetProgram& m_facet;
    std::array<std::unordered_map<const Entity*, Looked>, g_iSteps> m_looked;   // by the step that led there
};

class ClassificationMatch final : public FacetMatch {
public:
    ClassificationMatch(const ModelView& view, const FacetProgram& facet) : m_view(view), m_facet(facet) {}

    [[nodiscard]] bool boMaySelect(const schema::Entity& type) const override {
        return m_view.table().boTells(type, Relation::Classification, Side::Part) ||
               ModelView::boHasType(m_view.references(), type);
    }
    [[nodiscard]] bool boSelects(Entity& entity) override {
        vGather(entity);
        return std::ranges::any_of(m_found, [](const Place* pOne) { return pOne->boMatches(); });
    }
    [[nodiscard]] bool boMeets(Entity& entity, Finding& finding) override {
        vGather(entity);
        const bool boMatches = std::ranges::any_of(m_found, [](const Place* pOne) { return pOne->boMatches(); });
        const bool boInSystem = std::ranges::any_of(m_found, [](const Place* pOne) { return pOne->boSystem; });
        const Cardinality cardinality = m_facet.pFacet->cardinality;
        if (cardinality == Cardinality::Optional && !boInSystem) return true;
        if (boMatches != (cardinality == Cardinality::Prohibited)) return true;
        FoundList found;
        for (const Place* pOne : m_found) found.vAdd(pOne->text());
        finding = {boMatches         ? FailureKind::Prohibited
                   : m_found.empty() ? FailureKind::Missing
                   : boInSystem      ? FailureKind::Value
                                     : FailureKind::System,
                   m_found.empty() ? "it has no classification" : "it is classified as " + found.text(), found.text()};
        return false;
    }

private:
    // A reference, or a classification on its own.
    struct Place {
        std::string sCode;     // its own
        std::string sSystem;   // empty where the file does not say
        bool boSystem = false;
        bool boValue = false;   // its code, or one above

        [[nodiscard]] bool boMatches() const noexcept { return boSystem && boValue; }
        [[nodiscard]] std::string text() const {
            const std::string sIn = sSystem.empty() ? "no system" : shown(sSystem);
            return (sCode.empty() ? std::string("nothing") : inQuotes(sCode)) + " in " + sIn;
        }
    };

    // Those of the instance; of its type those in systems that the instance itself is not classified in.
    void vGather(Entity& entity) {
        m_found.clear();
        const auto vAdd = [&](const std::vector<Entity*>& references) {
            for (const Entity* pOne : references) m_found.push_back(&place(*pOne));
        };
        vAdd(m_view.walk().others(entity, Relation::Classification, Side::Part));
        vAdd(ModelView::of(m_view.references(), entity));
        const std::size_t iOwn = m_found.size();
        const Entity* pType = m_view.walk().pType(entity);
        if (!pType) return;
        vAdd(m_view.walk().others(*pType, Relation::Classification, Side::Part));
        const auto own = m_found.begin() + static_cast<std::ptrdiff_t>(iOwn);
        const auto boHidden = [&](const Place* pOne) {
            return std::any_of(m_found.begin(), own, [&](const Place* p) { return p->sSystem == pOne->sSystem; });
        };
        std::vector<const Place*> rest;
        std::copy_if(own, m_found.end(), std::back_inserter(rest), [&](const Place* pOne) { return !boHidden(pOne); });
        m_found.erase(own, m_found.end());
        m_found.insert(m_found.end(), rest.begin(), rest.end());
    }

    // A code says as well what all above it say. A file may make a circle of what stands above what.
    const Place& place(const Entity& reference) {
        const auto [it, boNew] = m_places.try_emplace(&reference);
        Place& found = it->second;
        if (!boNew) return found;
        found.boValue = m_facet.value.boAny();
        if (!m_view.table().boIs(reference, Class::Classification))
            found.sCode = m_view.walk().classificationCode(reference);
        const Entity* pAt = &reference;
        for (int iStep = 0; pAt && iStep < oxa::detail::RelationWalk::g_iMostSteps; ++iStep, pAt = pAbove(*pAt)) {
            if (m_view.table().boIs(*pAt, Class::Classification)) {
                if (const char* pName = m_view.table().pText(*pAt, Slot::ClassificationName)) found.sSystem = pName;
                found.boSystem = !found.sSystem.empty() && m_facet.system.boText(found.sSystem);
            } else if (!found.boValue) {
                const std::string sCode = m_view.walk().classificationCode(*pAt);
                found.boValue = !sCode.empty() && m_facet.value.boText(sCode);
            }
        }
        return found;
    }
    [[nodiscard]] const Entity* pAbove(const Entity& reference) const {
        const Entity* pFound = nullptr;
        if (m_view.table().boIs(reference, Class::Reference))
            m_view.table().forEachNamed(reference, Slot::ReferencedSource, [&](const Entity& one) { pFound = &one; });
        return pFound;
    }

    const ModelView& m_view;
    const FacetProgram& m_facet;
    std::unordered_map<const Entity*, Place> m_places;   // an address in it stays
    std::vector<const Place*> m_found;                   // of the instance that is looked at
};

}   // namespace

std::unique_ptr<FacetMatch> materialMatch(const ModelView& view, const FacetProgram& facet) {
    return std::make_unique<MaterialMatch>(view, facet);
}

std::unique_ptr<FacetMatch> classificationMatch(const ModelView& view, const FacetProgram& facet) {
    return std::make_unique<ClassificationMatch>(view, facet);
}

}   // namespace oxa::ids::detail
