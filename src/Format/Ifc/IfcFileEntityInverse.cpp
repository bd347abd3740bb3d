// Inverse relations: who refers to an instance, kept in its inverse block.
#include "Format/Ifc/IfcFileAttributeWalk.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Assert.h"
#include "platform/Utilities.h"

namespace oxa::ifc {

using def::schema::AttributeInverse;
using def::schema::AttributeName;

namespace {

// The position of an inverse attribute in the block of every type that has it: inverse attributes of supertypes
// come first, so a subtype does not move it.
std::size_t iPositionOf(const AttributeInverse& inverse) {
    const def::schema::Entity& owner = *inverse.pOwner;
    const std::size_t iInherited = owner.allInverseAttributes().size() - owner.ownInverseAttributes.size();
    return iInherited + static_cast<std::size_t>(&inverse - owner.ownInverseAttributes.data());
}

}   // namespace

template <class Allocate>
void Entity::vInverseBuild(Allocate&& alloc) {
    const def::schema::Entity& schema = schemaEntity();
    if (!schema.boHasInverse) return;
    for (const AttributeInverse* pInverse : schema.inverseTargets()) {
        const int iIndex = indexFromName(AttributeName(pInverse->sForAttribute));
        const auto [pAttribute, pCell] =
            iIndex < 0 ? decltype(pAttributeFromIndex(0)){} : pAttributeFromIndex(static_cast<unsigned>(iIndex));
        if (!pAttribute) {
            if (Assert::isEnabled())
                Assert::addAssert("Format/Ifc/IfcFileEntity", "oxa::ifc::Entity::vAttributeInverseInit",
                                  "Not able to find attribute", __LINE__);
            continue;
        }
        const std::size_t iPosition = iPositionOf(*pInverse);
        vForEachEntity(*pCell, *pAttribute, [&](Entity* pTarget) {
            // One list of inverse attributes serves targets of many types: the owner's type sorts them.
            if (!pTarget || !pTarget->boIsCompatible(pInverse->pOwner)) return;
            InverseEntry& entry = pTarget->pInverseEntries()[iPosition];
            auto* pNode = static_cast<EntityList*>(alloc(sizeof(EntityList)));
            pNode->value = this;
            pNode->next = entry.load();
            entry = pNode;
        });
    }
}

void Entity::vAttributeInverseInit(Data& data) {
    vInverseBuild([&data](std::size_t iBytes) { return data.pool().pAllocate(iBytes); });
}

void Entity::vAttributeInverseInit(PoolArena& arena) {
    vInverseBuild([&arena](std::size_t iBytes) { return arena.pAllocate(iBytes); });
}

Entity::InverseEntry* Entity::pInverseEntry(const AttributeName& name) const {
    const int iIndex = inverseIndexFromName(name);
    return iIndex < 0 ? nullptr : pInverseEntries() + iIndex;
}

void Entity::vEntityInverseAdd(Data& data, Entity* pEntity, const AttributeName& name) {
    InverseEntry* pEntry = pInverseEntry(name);
    if (!pEntry) return;
    EntityList* pHead = *pEntry;
    vListAppend(pHead, pEntity, [&data](std::size_t iBytes) { return data.pool().pAllocate(iBytes); });
    *pEntry = pHead;
}

void Entity::vEntityInverseSet(Data& data, Entity* pEntity, const AttributeName& name) {
    InverseEntry* pEntry = pInverseEntry(name);
    if (!pEntry) return;
    EntityList* pHead = *pEntry;
    if (!pHead) pHead = static_cast<EntityList*>(data.pool().pAllocate(sizeof(EntityList)));
    pHead->value = pEntity;
    pHead->next = nullptr;   // the tail stays as it was
    *pEntry = pHead;
}

void Entity::vEntitiesInverseSet(Data& data, const std::vector<Entity*>& entities, const AttributeName& name) {
    InverseEntry* pEntry = pInverseEntry(name);
    if (!pEntry) return;
    EntityList* pHead = *pEntry;
    vListAssign(pHead, entities.begin(), entities.end(),
                [&data](std::size_t iBytes) { return data.pool().pAllocate(iBytes); });
    *pEntry = pHead;
}

bool Entity::boEntityInverseRemove(Data&, Entity* pEntity, const AttributeName& name) {
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
