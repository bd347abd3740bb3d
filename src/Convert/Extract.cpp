// SPDX-License-Identifier: Apache-2.0
// A part of a model as a model of its own, in two passes: first a copy without values for each entity, in the order of
// their numbers, then the values, whose references are mapped from source to copy. So references may go in any
// direction.
#include "Convert/Extract.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "Convert/References.h"
#include "Format/Ifc/IfcFileEntity.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;

namespace {

// From an entity of the source to its copy.
using Copies = std::unordered_map<const ifc::Entity*, ifc::Entity*>;

// The values of one entity; the count of what did not arrive.
std::size_t iValuesCopy(const ifc::Entity& source, ifc::Entity& copy, const Copies& copies, ifc::Data& data) {
    std::size_t iLost = 0;
    const auto mapEntity = [&](ifc::Entity* pEntity) -> ifc::Entity* {
        if (!pEntity) return nullptr;
        const auto it = copies.find(pEntity);
        if (it != copies.end()) return it->second;
        ++iLost;
        return nullptr;
    };
    const std::size_t iCount = source.pSchemaEntity()->allAttributes().size();
    for (unsigned i = 0; i < iCount; ++i) {
        const auto [pAttribute, pFrom] = source.pAttributeFromIndex(i);
        if (!pAttribute || pAttribute->types.empty()) continue;
        ifc::AttributeBase& to = *copy.pAttributeFromIndex(i).second;
        const std::size_t iBefore = iLost;
        if (!pFrom->copyTo(to, *pAttribute, *pAttribute, data, mapEntity, {}) && iLost == iBefore) ++iLost;
    }
    return iLost;
}

}   // namespace

// Breadth first, over references in both directions: a relationship belongs to its members and names them. The list of
// what was found is the queue.
std::vector<const ifc::Entity*> reached(const ifc::Entity& root) {
    std::vector<const ifc::Entity*> found;
    std::unordered_set<const ifc::Entity*> seen;
    const auto vMeet = [&](const ifc::Entity* pEntity) {
        if (pEntity && pEntity->pSchemaEntity() && seen.insert(pEntity).second) found.push_back(pEntity);
    };
    References<decltype(vMeet)> references{vMeet};
    vMeet(&root);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const ifc::Entity& entity = *found[i];
        entity.boForEachAttribute([&](const schema::Attribute& attribute, const ifc::AttributeBase& cell) {
            const schema::ObjectBase* const pType = attribute.pType();
            ifc::visitCell(cell, ifc::AttributeBase::cellClass(pType, attribute), references);
            return false;
        });
        entity.boForEachInverseAttribute([&](const schema::AttributeInverse&, const ifc::EntityList& referrers) {
            for (const ifc::Entity* pReferrer : referrers) vMeet(pReferrer);
            return false;
        });
    }
    return found;
}

Extracted extract(const ifc::Data& from, const ifc::Entity& root, ifc::FileBase& target) {
    ifc::Data& data = target.dataBase();
    if (!data.pSchema() && from.pSchema()) target.vSchemaSet(*from.pSchema());
    if (!from.pSchema() || data.pSchema() != from.pSchema()) return {};

    std::vector<const ifc::Entity*> sources = reached(root);
    std::sort(sources.begin(), sources.end(), [&from](const ifc::Entity* pA, const ifc::Entity* pB) {
        return from.iIdFromEntity(*pA) < from.iIdFromEntity(*pB);
    });
    Extracted result;
    Copies copies;
    for (const ifc::Entity* pSource : sources) {
        result.copies.push_back(data.pEntityCreate(pSource->pSchemaEntity()));
        copies.emplace(pSource, result.copies.back());
        (void)data.iIdFromEntity(*result.copies.back());   // deals the number
    }
    // From here on every copy has its place and its number, and references can go in any direction.
    for (std::size_t i = 0; i < sources.size(); ++i)
        result.iLost += iValuesCopy(*sources[i], *result.copies[i], copies, data);
    for (ifc::Entity* pCopy : result.copies) pCopy->vAttributeInverseInit(data);
    return result;
}

}   // namespace oxa::convert
