// SPDX-License-Identifier: Apache-2.0
// What keeps the container right when callers make and remove entities: list, GUID map, look-up by GUID.
#include <algorithm>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Assert.h"

namespace oxa::ifc {

namespace {

constexpr def::schema::AttributeName g_globalId("GlobalId");

// Null where the attribute is missing, undefined or null.
Guid guidOf(const Entity& entity) {
    Guid guid;
    return entity.boValueGet(g_globalId, guid) ? guid : Guid{};
}

// In whatever schema its type is.
bool boRooted(const Entity& entity) {
    constexpr def::schema::ObjectName g_root("IFCROOT");
    for (const def::schema::Entity* pType = entity.pSchemaEntity(); pType; pType = pType->pParent)
        if (def::schema::ObjectName(*pType) == g_root) return true;
    return false;
}

}   // namespace

// Entities that callers made come into the map at the first look-up after they were made, when their GlobalId mostly
// has been set; those still without one are tried again at the next.
void Data::vGuidUpdate() const {
    std::vector<Entity*> stillPending;
    for (Entity* pEntity : m_pendingGuid) {
        const Guid guid = guidOf(*pEntity);
        if (guid.boIsNull())
            stillPending.push_back(pEntity);
        else if (!m_guidEntityMap.boInsert(guid, pEntity))
            Assert::vTell("Format/Ifc/IfcFileDataSimple", "oxa::ifc::Data::vGuidUpdate",
                          "Guid already exist in m_guidEntityMap");
    }
    m_pendingGuid = std::move(stillPending);
}

Entity* Data::pEntityFromGuid(const Guid& guid) const {
    if (!m_pendingGuid.empty()) vGuidUpdate();
    return m_guidEntityMap.pFind(guid);
}

// The map is changed last, and has room for the new entry by then: a lack of memory leaves entity and map in agreement.
bool Data::boGuidSet(Entity& entity, const Guid& guid) {
    if (guid.boIsNull() || !boRooted(entity)) return false;
    if (const Entity* pOwner = pEntityFromGuid(guid)) return pOwner == &entity;
    m_guidEntityMap.vReserveOne();
    const Guid old = guidOf(entity);
    if (!entity.boValueSet(g_globalId, guid, *this)) return false;
    std::erase(m_pendingGuid, &entity);
    if (m_guidEntityMap.pFind(old) == &entity) m_guidEntityMap.boErase(old);
    m_guidEntityMap.boInsert(guid, &entity);
    return true;
}

// Takes the entity out of the container's lists only: what refers to it keeps doing so, unlike with entitiesRemove.
bool Data::boEntityDelete(Entity* pEntity) {
    if (!pEntity) return false;
    const std::uint16_t iOrdinal = pEntity->schemaEntity().iTypeOrdinal;
    if (!m_pSchema) return false;
    vSortEntities();
    // By the entity's own type: that need not be one of the present schema.
    const auto ordinal = [](const Entity* pOther) { return pOther->schemaEntity().iTypeOrdinal; };
    const auto last = std::ranges::upper_bound(m_entities, iOrdinal, {}, ordinal);
    const auto place = std::find(std::ranges::lower_bound(m_entities, iOrdinal, {}, ordinal), last, pEntity);
    if (place == last) return false;
    m_entities.erase(place);
    if (boRooted(*pEntity)) {
        if (!m_pendingGuid.empty()) vGuidUpdate();
        if (const Guid guid = guidOf(*pEntity); !guid.boIsNull()) m_guidEntityMap.boErase(guid);
    }
    if (pEntity == pProject()) m_pProject.store(nullptr, std::memory_order_relaxed);
    return true;
}

void Data::deleteIncompleteEntities() {
    std::erase_if(m_entities, [](const Entity* pEntity) { return !pEntity->pSchemaEntity(); });
}

}   // namespace oxa::ifc
