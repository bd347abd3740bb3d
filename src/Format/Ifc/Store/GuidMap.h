// SPDX-License-Identifier: Apache-2.0
/// @file
/// GuidMap: from a GlobalId to the entity that has it.
///
/// For      Data; callers look at it through Data::guidEntityMap and Data::pEntityFromGuid.
/// Shape    entries of 24 bytes in one table of 2^n places, at most three quarters of them taken. An entry stands at
///          the place that the first bits of its hash name, or behind it: so all stand in the order of their hashes,
///          nearly, and a table that grows is copied from its start to its end.
/// Hash     with a key of this process, so that no file can be made whose GlobalIds all meet in one place.
/// Threads  look-ups run in parallel; changes are for one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "Format/Ifc/Memory/ZeroedBytes.h"
#include "platform/Export.h"
#include "platform/Id.h"

namespace oxa::ifc {

class Entity;

/// A hash table from GlobalIds to entities, which it does not own.
///
/// Linear probing in the order of the hashes. An entry's home is named by the first bits of its hash, so that doubling
/// the table sends the homes of place i to 2i and 2i + 1: growing is one pass from start to end over both tables, which
/// the prefetcher of the processor serves, instead of a random write for each entry.
class OXA_IFC_API GuidMap {
public:
    GuidMap() = default;

    ///@{
    /// Takes all entries over; "other" is empty then.
    GuidMap(GuidMap&& other) noexcept { vTake(other); }
    GuidMap& operator=(GuidMap&& other) noexcept {
        vTake(other);
        return *this;
    }
    ///@}

    ~GuidMap() = default;

    ///@{
    /// The number of GlobalIds.
    [[nodiscard]] std::size_t size() const noexcept { return m_iSize; }
    [[nodiscard]] bool empty() const noexcept { return m_iSize == 0; }
    ///@}

    /// The entity; null when none has that GUID.
    [[nodiscard]] Entity* pFind(const Guid& guid) const noexcept;
    /// Has the processor fetch the memory that a look-up or an insertion of that GUID will need.
    void vFetch(const Guid& guid) const noexcept;
    /// Makes sure that the next boInsert throws nothing. Throws std::bad_alloc, and is then unchanged.
    void vReserveOne() {
        if (m_iSize >= iPlaces() / 4 * 3) vGrow();
    }
    /// False when the GUID is there already: the map keeps the earlier entity. pEntity is not null. Throws
    /// std::bad_alloc, and is then unchanged.
    bool boInsert(const Guid& guid, Entity* pEntity);
    /// False when it was not there.
    bool boErase(const Guid& guid) noexcept;

private:
    struct Entry {
        Guid guid;
        Entity* pEntity = nullptr;   // null: a free place
    };
    static constexpr unsigned g_iFirstBits = 4;

    [[nodiscard]] std::size_t iHome(const Guid& guid) const noexcept;
    [[nodiscard]] Entry* table() const noexcept { return reinterpret_cast<Entry*>(m_pTable.get()); }
    [[nodiscard]] std::size_t iPlaces() const noexcept { return m_iBits ? std::size_t{1} << m_iBits : 0; }
    [[nodiscard]] std::size_t iNext(std::size_t iPlace) const noexcept { return (iPlace + 1) & (iPlaces() - 1); }
    // Its place, or the free one where it would go. There is a free one.
    [[nodiscard]] std::size_t iPlaceOf(const Guid& guid) const noexcept;
    void vGrow();
    void vTake(GuidMap& other) noexcept {
        m_pTable = std::move(other.m_pTable);
        m_iSize = std::exchange(other.m_iSize, 0);
        m_iBits = std::exchange(other.m_iBits, 0);
    }

    memory::ZeroedBytes m_pTable;   // null or 2^m_iBits entries; of zeros, an entry is a free place
    std::size_t m_iSize = 0;
    unsigned m_iBits = 0;
};

}   // namespace oxa::ifc
