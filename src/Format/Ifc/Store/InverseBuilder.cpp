// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Store/InverseBuilder.h"

#include "Format/Ifc/Cells/CellWalk.h"
#include "platform/Assert.h"
#include "platform/Compiler.h"

namespace oxa::ifc {

void InverseBuilder::vAdd(Entity& entity) {
    try {
        vAnnounce(entity);
    } catch (...) {
        vFlush();   // what is queued belongs to instances before the fault
        throw;
    }
}

// The attributes that feed inverse lists are noted in the layout of the type, so an instance that feeds none is done
// with the first tests, and of the others only those attributes are visited.
void InverseBuilder::vAnnounce(Entity& entity) {
    const def::schema::Entity& schema = entity.schemaEntity();
    if (!schema.boHasInverse || schema.inverseTargets().empty()) return;
    const DataSizeEntity& size = Entity::getDataSize(schema);
    for (const DataSizeEntity::Feed& feed : size.feeds) {
        if (feed.iCell == DataSizeEntity::Feed::g_iNone || !entity.m_pAttributes) {
            Assert::vTell("Format/Ifc/IfcFileEntity", "oxa::ifc::Entity::vAttributeInverseInit",
                          "Not able to find attribute");
            continue;
        }
        if (feed.iPosition == DataSizeEntity::Feed::g_iNone) continue;   // no type has such a list
        const DataSizeEntity::Cell& place = size.cells[feed.iCell];
        const auto& cell =
            *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(entity.m_pAttributes) + place.iOffset);
        vForEachEntity(cell, place.eClass, [&](Entity* pTarget) { vReference({pTarget, &entity, &feed}); });
    }
}

void InverseBuilder::vFlush() {
    while (m_references.iCount) vTargetLook();
    while (m_entries.iCount) vNodeEnter();
}

void InverseBuilder::vReference(const Reference& reference) {
    if (!reference.pTarget) return;
    platform::vFetchToRead(reference.pTarget);
    if (m_references.boFull()) vTargetLook();
    m_references.vPush(reference);
}

// One list of inverse attributes serves targets of many types: the owner's type sorts them.
void InverseBuilder::vTargetLook() {
    const Reference reference = m_references.pop();
    if (!reference.pTarget->boIsCompatible(reference.pFeed->pOwner)) return;
    Unaligned<EntityList*>* pHead = reference.pTarget->pInverseEntries() + reference.pFeed->iPosition;
    platform::vFetchToWrite(pHead);
    if (m_entries.boFull()) vNodeEnter();
    m_entries.vPush({pHead, reference.pSource});
}

// The memory first: when there is none, the entry stays in its queue.
void InverseBuilder::vNodeEnter() {
    void* pBytes = m_pArena ? m_pArena->pAllocate(sizeof(EntityList)) : m_pool.pAllocate(sizeof(EntityList));
    const Entry entry = m_entries.pop();
    auto* pNode = static_cast<EntityList*>(pBytes);
    pNode->value = entry.pSource;
    pNode->next = entry.pHead->load();
    *entry.pHead = pNode;
}

}   // namespace oxa::ifc
