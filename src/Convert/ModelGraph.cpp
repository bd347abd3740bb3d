// SPDX-License-Identifier: Apache-2.0
#include "Convert/ModelGraph.h"

#include "Convert/References.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;
using detail::Class;
using detail::RelationTable;
using ifc::Entity;

std::vector<Role> rolesOf(const schema::Entity& type, const RelationTable& table) {
    const auto boIs = [](const schema::Entity* pType, const schema::Entity* pWanted) {
        return schema::boIsSubtype(pType, pWanted);
    };
    const auto& attributes = type.allAttributes();
    std::vector<Role> roles(attributes.size(), Role::Needs);
    bool boFollower = false;
    for (const RelationTable::Resolved& follower : table.followers())
        if (boIs(&type, follower.pClass)) {
            roles[follower.iIndex] = Role::Follows;
            boFollower = true;
        }
    if (boFollower || !boIs(&type, table.pClass(Class::Relationship))) return roles;
    for (std::size_t i = 0; i < roles.size(); ++i) {
        const schema::ObjectBase* pTarget = attributes[i]->pType();
        const schema::DataTypeBase* pAggregate = schema::pDataTypeOf(pTarget);
        if (pAggregate && schema::boIsAggregate(pAggregate->kind)) pTarget = pAggregate->pElementGet();
        const schema::Entity* pEntity = schema::pAsEntity(pTarget);
        const bool boInverse = !attributes[i]->inverses.empty();
        if (!boInverse && !boIs(pEntity, table.pClass(Class::Root))) continue;
        const bool boMay =
            attributes[i]->boOptional && (!boInverse || boIs(pEntity, table.pClass(Class::Relationship)));
        roles[i] = boMay ? Role::May : Role::Joins;
    }
    return roles;
}

ModelGraph::ModelGraph(Model& given) : model(given), table(*given.core().dataBase().pSchema()) {
    for (Entity* pEntity : data().entities())
        if (pEntity->pSchemaEntity() && indices.emplace(pEntity, static_cast<Index>(entities.size())).second)
            entities.push_back(pEntity);
    vReferencesGather();
    vUsesGather();
}

void ModelGraph::vReferencesGather() {
    std::unordered_map<const schema::Entity*, std::vector<Role>> roles;
    for (Index i = 0; i < entities.size(); ++i) {
        firstTarget.push_back(targets.size());
        firstEnd.push_back(ends.size());
        const schema::Entity& type = *entities[i]->pSchemaEntity();
        auto found = roles.find(&type);
        if (found == roles.end()) found = roles.emplace(&type, rolesOf(type, table)).first;
        const auto& cells = Entity::getDataSize(type).cells;
        for (unsigned iCell = 0; iCell < cells.size(); ++iCell) {
            const auto pCell = entities[i]->pAttributeFromIndex(iCell).second;
            if (pCell) vCellGather(i, iCell, *pCell, cells[iCell].eClass, found->second[iCell]);
        }
    }
    firstTarget.push_back(targets.size());
    firstEnd.push_back(ends.size());
}

void ModelGraph::vCellGather(Index i, unsigned iCell, const ifc::AttributeBase& cell, ifc::CellClass eClass,
                             Role eRole) {
    std::vector<Index>& found = eRole == Role::Needs ? targets : endTargets;
    const std::size_t iFirst = found.size();
    std::size_t iNamed = 0;
    vForEachNamed(cell, eClass, [&](const Entity* pEntity) {
        ++iNamed;
        if (const Index iTarget = iOf(pEntity); iTarget != g_iNone) found.push_back(iTarget);
    });
    if (eRole != Role::Needs && iNamed)
        ends.push_back(
            {i, iCell, eRole, eClass == ifc::CellClass::List, found.size() - iFirst == iNamed, iFirst, found.size()});
}

void ModelGraph::vUsesGather() {
    firstUse.assign(entities.size() + 1, 0);
    for (const Index iTarget : endTargets) ++firstUse[iTarget + 1];
    for (std::size_t i = 1; i < firstUse.size(); ++i) firstUse[i] += firstUse[i - 1];
    uses.resize(endTargets.size());
    std::vector<std::size_t> next(firstUse.begin(), firstUse.end() - 1);
    for (std::size_t iEnd = 0; iEnd < ends.size(); ++iEnd)
        for (std::size_t k = ends[iEnd].iFirst; k < ends[iEnd].iLast; ++k) uses[next[endTargets[k]]++] = iEnd;
}

}   // namespace oxa::convert
