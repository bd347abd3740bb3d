// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Store/InverseBuilder.h"

#include "platform/Compiler.h"

namespace oxa::ifc {

void InverseBuilder::vAdd(Entity& entity) {
    try {
        vForEachReference(entity, [this](const Reference& reference) { vEnter(reference); });
    } catch (...) {
        vFlush();   // what is queued belongs to instances before the fault
        throw;
    }
}

void InverseBuilder::vFlush() {
    while (m_references.iCount) vTargetLook();
    while (m_entries.iCount) vNodeEnter();
}

void InverseBuilder::vEnter(const Reference& reference) {
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
    ++m_iEntered;
}

}   // namespace oxa::ifc
