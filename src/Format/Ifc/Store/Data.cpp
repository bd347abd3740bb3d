// SPDX-License-Identifier: Apache-2.0
// The container: its life, its schema, its list of entities and their order, their numbers.
#include "Format/Ifc/IfcFileDataSimple.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <new>
#include <utility>

#include "Format/Ifc/Store/InverseChanges.h"
#include "Format/Ifc/Store/Settle.h"
#include "platform/Assert.h"
#include "platform/Utilities.h"

namespace oxa::ifc {

using def::schema::ObjectName;

Data::Data() : m_pPool(std::make_shared<Pool>()) {}

Data::Data(Data&& other) noexcept
    : m_pSchema(other.m_pSchema),
      m_pRootSchema(other.m_pRootSchema),
      m_pPool(std::move(other.m_pPool)),
      m_pProject(other.pProject()),
      m_entities(std::move(other.m_entities)),
      m_boSorted(other.m_boSorted),
      m_guidEntityMap(std::move(other.m_guidEntityMap)),
      m_pEntityIdMap(std::move(other.m_pEntityIdMap)),
      m_pendingGuid(std::move(other.m_pendingGuid)),
      m_iInverseEntries(std::exchange(other.m_iInverseEntries, 0)),
      m_readTo(std::exchange(other.m_readTo, std::nullopt)) {}

Data& Data::operator=(Data&& other) noexcept {
    if (this == &other) return *this;
    m_pSchema = other.m_pSchema;
    m_pRootSchema = other.m_pRootSchema;
    m_entities = std::move(other.m_entities);
    m_boSorted = other.m_boSorted;
    m_guidEntityMap = std::move(other.m_guidEntityMap);
    m_pEntityIdMap = std::move(other.m_pEntityIdMap);
    m_pendingGuid = std::move(other.m_pendingGuid);
    m_iInverseEntries = std::exchange(other.m_iInverseEntries, 0);
    m_readTo = std::exchange(other.m_readTo, std::nullopt);
    m_pPool = std::move(other.m_pPool);
    m_pProject.store(other.pProject(), std::memory_order_relaxed);
    return *this;
}

Data::~Data() {
    m_pPool.reset();   // first: nothing below follows a pointer to an entity
}

void Data::vSchemaSet(const def::SchemaPset* pSchema) {
    m_pSchema = pSchema;
    m_pRootSchema = pEntitySchemaFromName(ObjectName("IFCROOT"));
}

const def::schema::Entity* Data::pEntitySchemaFromName(const ObjectName& name) const {
    return m_pSchema ? m_pSchema->pEntityFromName(name) : nullptr;
}

Entity* Data::pEntityCreate(const ObjectName& name) { return pEntityCreate(pEntitySchemaFromName(name)); }

// Aligned, unlike everything else in the pool: an Entity is accessed by plain pointers.
Entity* Data::pEntityCreate(const def::schema::Entity* pSchema) {
    if (!pSchema) return nullptr;
    if (pSchema->boAbstract) throw oxa::exception("Can't create abstract class");
    auto* pEntity = ::new (m_pPool->pAllocateAligned(sizeof(Entity))) Entity(*this, *pSchema);
    entityAdd(pEntity);
    return pEntity;
}

void Data::entityAdd(Entity* pEntity) {
    if (!pEntity) return;
    vProjectOffer(pEntity);
    m_entities.push_back(pEntity);
    m_boSorted = false;
    if (pEntity->boIsCompatible(m_pRootSchema)) m_pendingGuid.push_back(pEntity);
}

// The first entity of exactly that type becomes the project.
void Data::vProjectOffer(Entity* pEntity) {
    constexpr ObjectName g_project("IFCPROJECT");
    if (pProject()) return;
    if (ObjectName(pEntity->schemaEntity()) == g_project) m_pProject.store(pEntity, std::memory_order_relaxed);
}

const std::vector<Entity*>& Data::entities() const {
    vSortEntities();
    return m_entities;
}

// A type and its subtypes have ordinals without a gap, and entities are sorted by them, so the entities of a type are
// one contiguous part of the list, found by two binary searches.
std::pair<Data::iterator, Data::iterator> Data::range(const ObjectName& name, bool boWithSubtypes) const {
    if (!m_pSchema) return {m_entities.cend(), m_entities.cend()};
    vSortEntities();
    const def::schema::Entity* pType = pEntitySchemaFromName(name);
    if (!pType) return {m_entities.cend(), m_entities.cend()};
    const auto ordinalOf = [](const Entity* pEntity) { return pEntity->schemaEntity().iTypeOrdinal; };
    const std::uint16_t iLast = boWithSubtypes ? pType->iTypeOrdinalLast : pType->iTypeOrdinal;
    const auto first = std::ranges::lower_bound(m_entities, pType->iTypeOrdinal, {}, ordinalOf);
    const auto last = std::ranges::upper_bound(first, m_entities.end(), iLast, {}, ordinalOf);
    return {first, last};
}

void Data::vSortEntities() const {
    if (m_boSorted) return;
    vTypesSort(m_entities, 1);
    m_boSorted = true;
}

// Whether the model is as a read left it that came to its end, or has lost something since. Setters tell, and whatever else
// it may get takes memory of the pool: entities, items of lists, values of selects.
bool Data::boAsRead() const {
    return m_readTo && m_pPool && m_readTo->position == m_pPool->position() &&
           InverseChanges::boNoneSince(m_readTo->iInverses);
}

EntityIdMap& Data::entityIdMap(bool boRebuild) const {
    if (!m_pEntityIdMap || boRebuild) m_pEntityIdMap = std::make_unique<EntityIdMap>(m_entities.size());
    return *m_pEntityIdMap;
}

// False where no number of 32 bits is left above the highest.
bool Data::boNumbersAbove() const {
    EntityIdMap& numbers = entityIdMap(false);
    if (numbers.iHighest() >= std::numeric_limits<std::uint32_t>::max()) return false;
    numbers.vDealAbove();
    return true;
}

std::size_t Data::iIdFromEntity(const Entity& entity) const { return entityIdMap(false).get(&entity).first; }

Entity* Data::pEntityFromId(std::size_t iId) const {
    return m_pEntityIdMap ? const_cast<Entity*>(m_pEntityIdMap->pSeededFromId(iId)) : nullptr;
}

void Data::vDebugMessage(Data*, const char* text) {
    std::fputs(text, stderr);
    Assert::vTell("Format/Ifc/IfcFileDataSimple", "oxa::ifc::Data::vDebugMessage", text);
}

}   // namespace oxa::ifc
