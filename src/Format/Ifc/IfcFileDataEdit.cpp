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

}   // namespace

void Data::vGuidUpdate() const {
    std::vector<Entity*> stillPending;
    for (Entity* pEntity : m_pendingGuid) {
        const Guid guid = guidOf(*pEntity);
        if (guid.boIsNull())
            stillPending.push_back(pEntity);
        else if (!m_guidEntityMap.boInsert(guid, pEntity) && Assert::isEnabled())
            Assert::addAssert("Format/Ifc/IfcFileDataSimple", "oxa::ifc::Data::vGuidUpdate",
                              "Guid already exist in m_guidEntityMap", __LINE__);
    }
    m_pendingGuid = std::move(stillPending);
}

Entity* Data::pEntityFromGuid(const Guid& guid) const {
    if (!m_pendingGuid.empty()) vGuidUpdate();
    return m_guidEntityMap.pFind(guid);
}

bool Data::boEntityDelete(Entity* pEntity) {
    if (!pEntity) return false;
    const def::schema::Entity& schema = pEntity->schemaEntity();
    const auto [first, last] = range(def::schema::ObjectName(schema), false);
    const auto place = std::find(first, last, pEntity);
    if (place == last) return false;
    m_entities.erase(place);
    if (pEntity->boIsCompatible(m_pRootSchema)) {
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
