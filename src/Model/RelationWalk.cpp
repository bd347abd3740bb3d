// SPDX-License-Identifier: Apache-2.0
#include "Model/RelationWalk.h"

#include <algorithm>

namespace oxa::detail {

using ifc::Entity;

namespace {

constexpr Side other(Side eSide) noexcept { return eSide == Side::Whole ? Side::Part : Side::Whole; }

// A part of a whole hangs under it even where a file puts it into a storey as well; a door hangs under its storey, not
// under its opening.
constexpr Relation g_waysUp[] = {Relation::Aggregate, Relation::Nest,       Relation::Content, Relation::Void,
                                 Relation::Filling,   Relation::Projection, Relation::Surface, Relation::Port};

void vAddOnce(std::vector<Entity*>& entities, Entity& entity) {
    if (std::ranges::find(entities, &entity) == entities.end()) entities.push_back(&entity);
}

}   // namespace

std::vector<Entity*> RelationWalk::relationships(const Entity& entity, Relation eRelation, Side eSide) const {
    std::vector<Entity*> found;
    m_table.forEachRelationship(entity, eRelation, eSide,
                                [&](Entity& relationship) { found.push_back(&relationship); });
    if (found.size() < 2) return found;
    m_state.vSortByNumber(found);
    found.erase(std::unique(found.begin(), found.end()), found.end());   // who refers twice
    return found;
}

void RelationWalk::vOthersAdd(const Entity& entity, Relation eRelation, Side eSide, std::vector<Entity*>& found) const {
    for (const Entity* pRelationship : relationships(entity, eRelation, eSide))
        m_table.forEachOn(*pRelationship, eRelation, other(eSide), [&](Entity& one) { found.push_back(&one); });
}

std::vector<Entity*> RelationWalk::others(const Entity& entity, Relation eRelation, Side eSide) const {
    std::vector<Entity*> found;
    vOthersAdd(entity, eRelation, eSide, found);
    if (found.size() < 2) return found;
    std::vector<Entity*> seen = found;
    std::ranges::sort(seen);
    if (std::ranges::adjacent_find(seen) == seen.end()) return found;
    seen.clear();
    for (Entity* pEntity : found) vAddOnce(seen, *pEntity);
    return seen;
}

Entity* RelationWalk::pWhole(const Entity& entity, Relation eRelation) const {
    Entity* pFirst = nullptr;
    m_table.forEachRelationship(entity, eRelation, Side::Part, [&](Entity& relationship) {
        if (!pFirst || (pFirst != &relationship && m_state.iNumberOf(relationship) < m_state.iNumberOf(*pFirst)))
            pFirst = &relationship;
    });
    Entity* pFound = nullptr;
    if (pFirst)
        m_table.forEachOn(*pFirst, eRelation, Side::Whole, [&](Entity& whole) { pFound = pFound ? pFound : &whole; });
    return pFound;
}

Entity* RelationWalk::pParent(const Entity& entity) const {
    for (const Relation eRelation : g_waysUp)
        if (Entity* pFound = pWhole(entity, eRelation)) return pFound;
    return nullptr;
}

Entity* RelationWalk::pAbove(const Entity& entity, Class eClass) const {
    Entity* pFound = nullptr;
    forEachAbove(entity, [&](Entity& above) {
        if (m_table.boIs(above, eClass)) pFound = &above;
        return !pFound;
    });
    return pFound;
}

std::vector<Entity*> RelationWalk::ownSets(const Entity& entity) const {
    std::vector<Entity*> sets = others(entity, Relation::Sets, Side::Part);
    m_table.forEachNamed(entity, Slot::TypeSets, [&](Entity& set) { vAddOnce(sets, set); });
    return sets;
}

std::vector<Entity*> RelationWalk::materials(const Entity& entity, bool& boOfType) const {
    std::vector<Entity*> found = others(entity, Relation::Material, Side::Part);
    boOfType = false;
    if (!found.empty()) return found;
    const Entity* pOfType = pType(entity);
    boOfType = pOfType != nullptr;
    return pOfType ? others(*pOfType, Relation::Material, Side::Part) : found;
}

// What leads on, of whatever the definition is: to a set, from a set to its items, from an item to its material. That
// is three steps; a file with references to what they must not refer to may have more.
void RelationWalk::vMaterialsAdd(const Entity& definition, std::vector<Entity*>& found, int iDepth) const {
    if (m_table.boIs(definition, Class::Material)) return vAddOnce(found, const_cast<Entity&>(definition));
    if (iDepth == 3) return;
    for (const Slot eSlot :
         {Slot::UsedLayerSet, Slot::UsedProfileSet, Slot::Layers, Slot::Profiles, Slot::Constituents,
          Slot::LayerMaterial, Slot::ProfileMaterial, Slot::ConstituentMaterial, Slot::ListedMaterials})
        m_table.forEachNamed(definition, eSlot, [&](Entity& next) { vMaterialsAdd(next, found, iDepth + 1); });
}

std::vector<Entity*> RelationWalk::classifications(const Entity& entity) const {
    std::vector<Entity*> found = others(entity, Relation::Classification, Side::Part);
    if (const Entity* pOfType = pType(entity))
        for (Entity* pReference : others(*pOfType, Relation::Classification, Side::Part)) vAddOnce(found, *pReference);
    return found;
}

std::string RelationWalk::classificationCode(const Entity& reference) const {
    if (const char* pCode = m_table.pText(reference, Slot::ReferenceCode)) return pCode;
    std::string sCode;
    m_table.forEachNamed(reference, Slot::NotationFacets, [&](const Entity& facet) {
        const char* pFacet = m_table.pText(facet, Slot::FacetValue);
        if (pFacet) sCode += (sCode.empty() ? "" : ".") + std::string(pFacet);
    });
    return sCode;
}

const Entity* RelationWalk::pSystem(const Entity& reference) const {
    const Entity* pAt = &reference;
    for (int iStep = 0; pAt && iStep < g_iMostSteps; ++iStep) {
        if (m_table.boIs(*pAt, Class::Classification)) return pAt;
        const Entity* pNext = nullptr;
        m_table.forEachNamed(*pAt, Slot::ReferencedSource, [&](const Entity& source) { pNext = &source; });
        pAt = pNext;
    }
    return nullptr;
}

}   // namespace oxa::detail
