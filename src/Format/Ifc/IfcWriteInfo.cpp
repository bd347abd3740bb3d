#include "Format/Ifc/IfcWriteInfo.h"

namespace oxa::ifc {

std::size_t WriteInfoCommon::iEntityIdGet(const Entity* pEntity) {
    if (!pEntity) return 0;
    const EntityIdMap::Number number = m_pEntityIdMap->number(pEntity);
    if (boMark(pEntity, number)) m_queue.push_back(pEntity);
    return number.iId;
}

bool WriteInfoCommon::boMark(const Entity* pEntity, const EntityIdMap::Number& number) {
    if (!number.boSeeded) return m_seen.insert(pEntity).second;
    auto& pPage = m_seenSeeded[number.iId / g_iSeenPage];
    if (!pPage) pPage = std::make_unique<std::bitset<g_iSeenPage>>();
    const std::size_t iBit = number.iId % g_iSeenPage;
    if (pPage->test(iBit)) return false;
    pPage->set(iBit);
    return true;
}

std::size_t StepWriteInfoCommon::iEntityIdGet(const Entity* pEntity) {
    if (m_boSingleThreaded) return WriteInfoCommon::iEntityIdGet(pEntity);
    const std::lock_guard lock(m_mutex);
    return WriteInfoCommon::iEntityIdGet(pEntity);
}

}   // namespace oxa::ifc
