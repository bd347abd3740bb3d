// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Store/InverseBuilder.h"

namespace oxa::ifc {

namespace {

// Of types that feed no list.
const DataSizeEntity g_withoutFeeds;

}   // namespace

const DataSizeEntity* InverseBuilder::pLayoutAhead(const Entity& entity) noexcept {
    const def::schema::Entity* pSchema = entity.pSchemaEntity();
    if (!pSchema) return nullptr;
    if (!pSchema->boHasInverse) return &g_withoutFeeds;
    return pSchema->pDataSize.boReady() ? pSchema->pDataSize.value().get() : nullptr;
}

const DataSizeEntity& InverseBuilder::layout(const Entity& entity) {
    const def::schema::Entity& schema = entity.schemaEntity();
    if (!schema.boHasInverse || schema.inverseTargets().empty()) return g_withoutFeeds;
    return Entity::getDataSize(schema);
}

void InverseBuilder::vFetchCells(const Entity& entity, const DataSizeEntity& layout) noexcept {
    if (!entity.m_pAttributes) return;
    for (const DataSizeEntity::Feed& feed : layout.feeds)
        if (feed.iCell != DataSizeEntity::Feed::g_iNone)
            platform::vFetchToRead(&cell(entity, layout.cells[feed.iCell]));
}

void InverseBuilder::vFetchItems(const Entity& entity, const DataSizeEntity& layout) noexcept {
    if (!entity.m_pAttributes) return;
    for (const DataSizeEntity::Feed& feed : layout.feeds) {
        if (feed.iCell == DataSizeEntity::Feed::g_iNone) continue;
        const DataSizeEntity::Cell& place = layout.cells[feed.iCell];
        if (place.eClass == CellClass::List)
            platform::vFetchToRead(static_cast<const AttributeList&>(cell(entity, place)).m_pItems.load());
    }
}

template <class Find>
void InverseBuilder::vAddFrom(Find&& find) {
    try {
        find([this](const Reference& reference) { vEnter(reference); });
    } catch (...) {
        vFlush();   // what is queued belongs to instances before the fault
        throw;
    }
}

void InverseBuilder::vAdd(Entity& entity) {
    vAddFrom([&entity](auto&& visit) { vForEachFed(entity, layout(entity), visit); });
}

void InverseBuilder::vAdd(std::span<Entity* const> entities) {
    vAddFrom([entities](auto&& visit) { vForEachReference(entities, visit); });
}

void InverseBuilder::vFlush() {
    while (!m_references.boEmpty()) vTargetLook();
    while (!m_entries.boEmpty()) vNodeEnter();
}

void InverseBuilder::vEnter(const Reference& reference) {
    platform::vFetchToRead(reference.pTarget);
    if (m_references.boFull()) vTargetLook();
    m_references.vPush(reference);
}

// One list of inverse attributes serves targets of many types: the owner's type sorts them.
void InverseBuilder::vTargetLook() {
    const Reference reference = m_references.pop();
    if (!def::schema::boIsSubtype(reference.pTarget->pSchemaEntity(), reference.pFeed->pOwner)) return;
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
