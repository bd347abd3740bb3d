// SPDX-License-Identifier: Apache-2.0
// ModelGraph: what refers to what in a model, as positions in one list of entities, apart from the ends by which
// relationships and other followers hang on their members.
//
// For      excerpts and merges, which go over a model several times and decide what comes along.
// Cost     one pass over the model; a number a reference.
// Life     good as long as the model stays as it is.
// Threads  any number at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Model/Model.h"
#include "Model/RelationTable.h"

namespace oxa::convert {

// What an attribute that names entities means for them and for its own instance.
enum class Role : std::uint8_t {
    Needs,     // what it names is needed
    Follows,   // of a follower: one that is kept takes the instance along
    Joins,     // an end of a relationship, which is kept when all its ends are
    May,       // an end that can be without
};

// The roles of a type's attributes. A follower's other attributes, and what a relationship has beside its ends, are
// needed.
[[nodiscard]] std::vector<Role> rolesOf(const ifc::def::schema::Entity& type, const detail::RelationTable& table);

struct ModelGraph {
    using Index = std::uint32_t;
    static constexpr Index g_iNone = 0xffffffff;

    // An attribute by which a relationship or another follower hangs on others.
    struct End {
        Index iOwner;
        unsigned iCell;
        Role eRole;
        bool boList;
        bool boWhole;                // all that it names is in the model
        std::size_t iFirst, iLast;   // in endTargets
    };

    explicit ModelGraph(Model& model);

    [[nodiscard]] ifc::Data& data() const { return model.core().dataBase(); }
    // g_iNone for what is not in the model.
    [[nodiscard]] Index iOf(const ifc::Entity* pEntity) const {
        const auto found = indices.find(pEntity);
        return found == indices.end() ? g_iNone : found->second;
    }

    Model& model;
    detail::RelationTable table;
    std::vector<ifc::Entity*> entities;
    std::unordered_map<const ifc::Entity*, Index> indices;
    std::vector<std::size_t> firstTarget;   // of each entity in targets; one more at the end
    std::vector<Index> targets;             // what it needs
    std::vector<std::size_t> firstEnd;      // of each entity in ends; one more at the end
    std::vector<End> ends;
    std::vector<Index> endTargets;
    std::vector<std::size_t> firstUse;   // of each entity in uses; one more at the end
    std::vector<std::size_t> uses;       // ends that name it

private:
    void vReferencesGather();
    void vCellGather(Index i, unsigned iCell, const ifc::AttributeBase& cell, ifc::CellClass eClass, Role eRole);
    void vUsesGather();
};

}   // namespace oxa::convert
