// SPDX-License-Identifier: Apache-2.0
// Open addressing with linear probing; what the order of the entries is good for says GuidMap.h.
#include "Format/Ifc/Store/GuidMap.h"

#include <cstddef>
#include <cstring>
#include <span>
#include <type_traits>

#include "platform/Compiler.h"

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
    while (table()[iPlace].pEntity && table()[iPlace].guid != guid) iPlace = iNext(iPlace);
    return iPlace;
}

Entity* GuidMap::pFind(const Guid& guid) const noexcept {
    return !m_pTable ? nullptr : table()[iPlaceOf(guid)].pEntity;
}

void GuidMap::vFetch(const Guid& guid) const noexcept {
    // What says whether the place is taken: of an entry on two cache lines the one that is looked at first, and of a free
    // one all that is.
    if (m_pTable) platform::vFetchToRead(&table()[iHome(guid)].pEntity);
}

bool GuidMap::boInsert(const Guid& guid, Entity* pEntity) {
    vReserveOne();
    Entry& entry = table()[iPlaceOf(guid)];
    if (entry.pEntity) return false;
    entry = {guid, pEntity};
    ++m_iSize;
    return true;
}

// The new table is there before the old one goes, so a lack of memory leaves the map as it was.
void GuidMap::vGrow() {
    static_assert(std::is_trivially_copyable_v<Entry> && alignof(Entry) <= alignof(std::max_align_t));
    const unsigned iBits = m_iBits ? m_iBits + 1 : g_iFirstBits;
    memory::ZeroedBytes pOld = memory::zeroedTable(sizeof(Entry) << iBits);
    const std::span<const Entry> old(table(), iPlaces());
    m_pTable.swap(pOld);
    m_iBits = iBits;
    for (const Entry& entry : old)
        if (entry.pEntity) table()[iPlaceOf(entry.guid)] = entry;
}

// Erasing without tombstones. A free place ends a search, so the hole may not stay where an entry behind it needs the
// run to be unbroken. Each entry behind the hole, up to the next free place, is moved into it unless that would bring
// it in front of its own home; distances are taken modulo the size of the table, for runs that wrap around. The hole
// moves along, and where the run ends nothing depends on it any more.
bool GuidMap::boErase(const Guid& guid) noexcept {
    if (!m_pTable) return false;
    std::size_t iFree = iPlaceOf(guid);
    if (!table()[iFree].pEntity) return false;
    const std::size_t iMask = iPlaces() - 1;
    for (std::size_t i = iNext(iFree); table()[i].pEntity; i = iNext(i)) {
        if (((i - iHome(table()[i].guid)) & iMask) < ((i - iFree) & iMask)) continue;
        table()[iFree] = table()[i];
        iFree = i;
    }
    table()[iFree].pEntity = nullptr;
    --m_iSize;
    return true;
}

}   // namespace oxa::ifc
