// SPDX-License-Identifier: Apache-2.0
// Inverse relations: who refers to an instance, kept in its inverse block.
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Store/InverseBuilder.h"
#include "Format/Ifc/Store/InverseChanges.h"

namespace oxa::ifc {

using def::schema::AttributeInverse;
using def::schema::AttributeName;

EntityList**& Entity::unsafeAttributesInverseRaw() noexcept {
    InverseChanges::vTell();
    return m_ppAttributesInverse;
}

void Entity::vAttributeInverseInit(Data& data) {
    InverseChanges::vTell();
    InverseBuilder builder(data.pool());
    builder.vAdd(*this);
    builder.vFlush();
}

Entity::InverseEntry* Entity::pInverseEntry(const AttributeName& name) const {
    const int iIndex = inverseIndexFromName(name);
    return iIndex < 0 ? nullptr : pInverseEntries() + iIndex;
}

Entity::InverseEntry* Entity::pInverseEntryToSet(const AttributeName& name) const {
    InverseChanges::vTell();
    return pInverseEntry(name);
}

void Entity::vEntityInverseAdd(Data& data, Entity* pEntity, const AttributeName& name) {
    InverseEntry* pEntry = pInverseEntryToSet(name);
    if (!pEntry) return;
    EntityList* pHead = *pEntry;
    vListAppend(pHead, pEntity, [&data](std::size_t iBytes) { return data.pool().pAllocate(iBytes); });
    *pEntry = pHead;
}

void Entity::vEntityInverseSet(Data& data, Entity* pEntity, const AttributeName& name) {
    InverseEntry* pEntry = pInverseEntryToSet(name);
    if (!pEntry) return;
    EntityList* pHead = *pEntry;
    if (!pHead) pHead = static_cast<EntityList*>(data.pool().pAllocate(sizeof(EntityList)));
    pHead->value = pEntity;
    pHead->next = nullptr;   // the tail stays as it was
    *pEntry = pHead;
}

void Entity::vEntitiesInverseSet(Data& data, const std::vector<Entity*>& entities, const AttributeName& name) {
    InverseEntry* pEntry = pInverseEntryToSet(name);
    if (!pEntry) return;
    EntityList* pHead = *pEntry;
    vListAssign(pHead, entities.begin(), entities.end(),
                [&data](std::size_t iBytes) { return data.pool().pAllocate(iBytes); });
    *pEntry = pHead;
}

// Leads to nothing that was not there.
bool Entity::boEntityInverseRemove(Data& /*data*/, Entity* pEntity, const AttributeName& name) {
    InverseEntry* pEntry = pInverseEntry(name);
    if (!pEntry) return false;
    EntityList* pHead = *pEntry;
    const bool boRemoved = boListRemove(pHead, pEntity);
    *pEntry = pHead;
    return boRemoved;
}

std::vector<Entity*> Entity::entitiesInverseFromIndex(unsigned iIndex) {
    std::vector<Entity*> entities;
    if (!m_ppAttributesInverse || iIndex >= schemaEntity().allInverseAttributes().size()) return entities;
    if (const EntityList* pHead = pInverseEntries()[iIndex])
        for (Entity* pEntity : *pHead) entities.push_back(pEntity);
    return entities;
}

std::vector<const Entity*> Entity::entitiesInverseFromIndex(unsigned iIndex) const {
    const std::vector<Entity*> entities = const_cast<Entity*>(this)->entitiesInverseFromIndex(iIndex);
    return {entities.begin(), entities.end()};
}

// Heads only: the nodes stay behind in the pool.
void Entity::attributeInverseClear() {
    const def::schema::Entity& schema = schemaEntity();
    if (!schema.boHasInverse || !m_ppAttributesInverse) return;
    for (std::size_t i = 0; i < schema.allInverseAttributes().size(); ++i) pInverseEntries()[i] = nullptr;
}

bool Entity::boForEachInverseAttribute(std::function<bool(const AttributeInverse&, const EntityList&)> fn) const {
    if (!m_ppAttributesInverse) return false;
    const auto& inverses = schemaEntity().allInverseAttributes();
    for (std::size_t i = 0; i < inverses.size(); ++i)
        if (const EntityList* pHead = pInverseEntries()[i]; pHead && fn(*inverses[i], *pHead)) return true;
    return false;
}

}   // namespace oxa::ifc
