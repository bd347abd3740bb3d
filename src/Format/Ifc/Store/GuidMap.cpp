// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Store/GuidMap.h"

#include <cstring>

namespace oxa::ifc {

namespace {

struct Halves {
    std::uint64_t uFirst;
    std::uint64_t uSecond;
};

Halves halves(const Guid& guid) noexcept {
    Halves result;
    static_assert(sizeof result == sizeof guid);
    std::memcpy(&result, &guid, sizeof result);
    return result;
}

// Drawn once a process.
const Halves& key() noexcept {
    static const Halves result = halves(Guid::generate());
    return result;
}

// A product carries a difference of its factors upward; the shifts bring it down again in between. That one factor is
// secret keeps differences of the two halves from being chosen so that they cancel each other.
std::uint64_t uHash(const Guid& guid) noexcept {
    const Halves parts = halves(guid);
    std::uint64_t uMixed = parts.uFirst * (key().uFirst | 1U);
    uMixed = (uMixed ^ uMixed >> 32 ^ parts.uSecond ^ key().uSecond) * 0xD6E8FEB86659FD93U;
    return (uMixed ^ uMixed >> 32) * 0xD6E8FEB86659FD93U;
}

}   // namespace

std::size_t GuidMap::iHome(const Guid& guid) const noexcept {
    return static_cast<std::size_t>(uHash(guid) >> (64 - m_iBits));
}

std::size_t GuidMap::iPlaceOf(const Guid& guid) const noexcept {
    std::size_t iPlace = iHome(guid);
    while (m_table[iPlace].pEntity && m_table[iPlace].guid != guid) iPlace = iNext(iPlace);
    return iPlace;
}

Entity* GuidMap::pFind(const Guid& guid) const noexcept {
    return m_table.empty() ? nullptr : m_table[iPlaceOf(guid)].pEntity;
}

bool GuidMap::boInsert(const Guid& guid, Entity* pEntity) {
    vReserveOne();
    Entry& entry = m_table[iPlaceOf(guid)];
    if (entry.pEntity) return false;
    entry = {guid, pEntity};
    ++m_iSize;
    return true;
}

void GuidMap::vGrow() {
    const unsigned iBits = m_iBits ? m_iBits + 1 : g_iFirstBits;
    std::vector<Entry> old(std::size_t{1} << iBits);
    m_table.swap(old);
    m_iBits = iBits;
    for (const Entry& entry : old)
        if (entry.pEntity) m_table[iPlaceOf(entry.guid)] = entry;
}

bool GuidMap::boErase(const Guid& guid) noexcept {
    if (m_table.empty()) return false;
    std::size_t iFree = iPlaceOf(guid);
    if (!m_table[iFree].pEntity) return false;
    // Those behind it move up, as far as that does not bring them in front of their own place.
    const std::size_t iMask = m_table.size() - 1;
    for (std::size_t i = iNext(iFree); m_table[i].pEntity; i = iNext(i)) {
        if (((i - iHome(m_table[i].guid)) & iMask) < ((i - iFree) & iMask)) continue;
        m_table[iFree] = m_table[i];
        iFree = i;
    }
    m_table[iFree].pEntity = nullptr;
    --m_iSize;
    return true;
}

}   // namespace oxa::ifc
