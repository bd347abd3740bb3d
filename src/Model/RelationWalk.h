// SPDX-License-Identifier: Apache-2.0
// RelationWalk: from an instance to what it is related to, within one model.
//
// For      the functions of Relations.h, columns and selectors.
// Order    several relationships count in the order of their numbers, whatever order inverse lists have.
// Bounds   ways up end after g_iMostSteps: a file may make a circle of them.
// Threads  any number at once on a model that nobody changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Model/ModelState.h"
#include "Model/RelationTable.h"
#include "Model/Value.h"

namespace oxa::detail {

class OXA_MODEL_API RelationWalk {
public:
    static constexpr int g_iMostSteps = 1000;

    explicit RelationWalk(ModelState& state) : m_state(state), m_table(state.relations()) {}

    [[nodiscard]] ModelState& state() const noexcept { return m_state; }
    [[nodiscard]] const RelationTable& table() const noexcept { return m_table; }

    /// Relationships in which the instance stands on that side.
    [[nodiscard]] std::vector<ifc::Entity*> relationships(const ifc::Entity& entity, Relation eRelation,
                                                          Side eSide) const;
    /// What stands on the other side of them; each once.
    [[nodiscard]] std::vector<ifc::Entity*> others(const ifc::Entity& entity, Relation eRelation, Side eSide) const;
    void vOthersAdd(const ifc::Entity& entity, Relation eRelation, Side eSide, std::vector<ifc::Entity*>& found) const;
    /// The whole that the instance is a part of; null where there is none.
    [[nodiscard]] ifc::Entity* pWhole(const ifc::Entity& entity, Relation eRelation) const;

    [[nodiscard]] ifc::Entity* pType(const ifc::Entity& entity) const { return pWhole(entity, Relation::Type); }
    /// One step up; see parent() in Relations.h.
    [[nodiscard]] ifc::Entity* pParent(const ifc::Entity& entity) const;
    /// The nearest above of a class; null where there is none.
    [[nodiscard]] ifc::Entity* pAbove(const ifc::Entity& entity, Class eClass) const;
    /// Calls visit(Entity&) for each step up, the parent first, until it answers false.
    template <class Visit>
    void forEachAbove(const ifc::Entity& entity, Visit&& visit) const {
        ifc::Entity* pAt = pParent(entity);
        for (int iStep = 0; pAt && iStep < g_iMostSteps; ++iStep, pAt = pParent(*pAt))
            if (!visit(*pAt)) return;
    }

    /// Property and quantity sets of the instance itself; of a type those that it hands on.
    [[nodiscard]] std::vector<ifc::Entity*> ownSets(const ifc::Entity& entity) const;

    /// What an instance is made of and classified as; where it has none of its own, what its type says.
    [[nodiscard]] std::vector<ifc::Entity*> materials(const ifc::Entity& entity, bool& boOfType) const;
    /// The materials in it, each once, in their order.
    void vMaterialsAdd(const ifc::Entity& definition, std::vector<ifc::Entity*>& found) const {
        vMaterialsAdd(definition, found, 0);
    }
    /// Its own ones, then those of its type.
    [[nodiscard]] std::vector<ifc::Entity*> classifications(const ifc::Entity& entity) const;

    /// Of a reference to a classification, a notation or the classification itself. Empty where there is none.
    [[nodiscard]] std::string classificationCode(const ifc::Entity& reference) const;
    /// The classification system that a reference is of; null where there is none.
    [[nodiscard]] const ifc::Entity* pSystem(const ifc::Entity& reference) const;

private:
    void vMaterialsAdd(const ifc::Entity& definition, std::vector<ifc::Entity*>& found, int iDepth) const;

    ModelState& m_state;
    const RelationTable& m_table;
};

}   // namespace oxa::detail
