// SPDX-License-Identifier: Apache-2.0
/// @file
/// EntityIdMap: from an entity to its instance number, and back.
///
/// For      Data and the writers. A read with kept numbers seeds it; otherwise numbers are dealt on demand.
/// Shape    entities of a read stand in the chunks of its entity table, where the address gives the number: a
///          seeded chunk costs one bit a slot. Everything else is found by a hash of the address.
/// Threads  look-ups run in parallel, a new number takes the lock alone. Seeding is for one thread.
#pragma once

#include <bit>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/Export.h"
#include "platform/SharedMutex.h"

namespace oxa::ifc {

class Entity;
class SeenNumbers;
struct EntitySlot;

/// The instance numbers of a model. It owns no entity.
class OXA_IFC_API EntityIdMap {
    struct SeededChunk;
    struct Dealt;

public:
    /// Where a caller's last entity was found: the next one mostly stands near it. Lives no longer than the map, and
    /// belongs to one thread.
    class Near {
        friend class EntityIdMap;
        const SeededChunk* m_pChunk = nullptr;
    };

    /// Empty, with room for that many entries beside seeded ones.
    explicit EntityIdMap(std::size_t iExpected);
    ~EntityIdMap();
    EntityIdMap(const EntityIdMap&) = delete;
    EntityIdMap& operator=(const EntityIdMap&) = delete;

    /// The number and whether it is new. A new one is the count of entries with it, so 1 in an empty map; it is not
    /// checked against numbers that a file brought, which are not dense: such a map can hold a number twice.
    [[nodiscard]] std::pair<std::size_t, bool> get(const Entity* pEntity);
    /// A number with where it comes from.
    struct Number {
        std::size_t iId;   ///< from 1
        bool boNew;        ///< it was dealt by this very call
        bool boSeeded;     ///< it came with a file and has 32 bits: no other seeded entity has it
        /// Of a dealt one its place among them in the order in which they were dealt, from 0; else g_iNotDealt.
        std::uint32_t iDealt = g_iNotDealt;
    };
    static constexpr std::uint32_t g_iNotDealt = 0xFFFFFFFF;   ///< the number came with a file
    /// As get, with where the number comes from.
    [[nodiscard]] Number number(const Entity* pEntity, Near& nearby) {
        const std::size_t iId = iBeside(pEntity, nearby);
        return iId == g_iNoneBeside ? numberFar(pEntity, nearby) : Number{iId, false, true};
    }
    /// As number, for as long as no other thread deals numbers: one that is there is found without the lock.
    [[nodiscard]] Number settled(const Entity* pEntity, Near& nearby) {
        const std::size_t iId = iBeside(pEntity, nearby);
        return iId == g_iNoneBeside ? settledFar(pEntity, nearby) : Number{iId, false, true};
    }
    /// The same; empty for an entity that has no number. Deals none.
    [[nodiscard]] std::optional<Number> known(const Entity* pEntity, Near& nearby) const {
        const std::size_t iId = iBeside(pEntity, nearby);
        return iId == g_iNoneBeside ? knownFar(pEntity, nearby) : Number{iId, false, true};
    }
    /// The number of an entity that stands beside the last one and came with a file; g_iNoneBeside for any other, as for
    /// null: nothing but a short look, for whoever then asks one of those above.
    [[nodiscard]] static std::size_t iBeside(const Entity* pEntity, const Near& nearby) noexcept {
        if (!nearby.m_pChunk) return g_iNoneBeside;
        const std::size_t iSlot = nearby.m_pChunk->iSlotOf(pEntity);
        return iSlot < g_iSlots ? nearby.m_pChunk->iFirstId + iSlot : g_iNoneBeside;
    }
    static constexpr std::size_t g_iNoneBeside = static_cast<std::size_t>(-1);   ///< no number
    /// The number; empty for an entity that has none. Deals none.
    [[nodiscard]] std::optional<std::size_t> find(const Entity* pEntity) const;
    /// The entity that was seeded with that number; null when there is none.
    [[nodiscard]] const Entity* pSeededFromId(std::size_t iId) const;
    /// A bit a slot of a chunk of an entity table.
    using Defined = std::bitset<32768>;
    /// Enters the defined slots of a chunk under their numbers; that of its first slot, defined or not, is iFirstId, a
    /// multiple of their count.
    void vSeed(const EntitySlot* pFirst, std::size_t iFirstId, const Defined& defined);
    /// Entries, seeded and dealt ones together.
    [[nodiscard]] std::size_t size() const;
    /// Seeded entries.
    [[nodiscard]] std::size_t iSeeded() const noexcept { return m_iSeeded; }

    /// From here on numbers are dealt above the highest that any entity has, in place of the rule at get. One thread.
    void vDealAbove();
    /// The highest number of any entity; 0 where there is none.
    [[nodiscard]] std::size_t iHighest() const;
    /// The entities that were seeded with the numbers that "seen" has, ascending. It has no other numbers.
    [[nodiscard]] std::vector<const Entity*> seededOf(const SeenNumbers& seen) const;
    /// The entities whose numbers were dealt at the places that "seen" has, with their numbers, ascending. It has no other
    /// places.
    [[nodiscard]] std::vector<std::pair<std::size_t, const Entity*>> dealtOf(const SeenNumbers& seen) const;

private:
    static constexpr std::size_t g_iSlots = Defined().size();
    static constexpr std::size_t g_iSlotBytes = 32;

    // The slots of one chunk of a table, by address; numbers run from iFirstId.
    //
    // The slots of a chunk stand 32 bytes apart, so (address - first) / 32 is the slot and with it the number: no entry
    // for each instance is needed, only one bit that says whether the slot is defined. The subtraction is unsigned: an
    // address in front of the chunk becomes a huge number and fails the same test as one behind it. A million numbers
    // so take 128 KiB where a hash table would take some tens of MB.
    struct SeededChunk {
        const EntitySlot* pFirst;
        std::size_t iFirstId;
        Defined defined;

        // g_iSlots for an entity that is none of them.
        [[nodiscard]] std::size_t iSlotOf(const Entity* pEntity) const noexcept {
            const auto iBytes = reinterpret_cast<std::uintptr_t>(pEntity) - reinterpret_cast<std::uintptr_t>(pFirst);
            // Turned right by the bits within a slot, which come to the top: an address between two slots is far off, too.
            static_assert(std::has_single_bit(g_iSlotBytes));
            const std::size_t iSlot = std::rotr(iBytes, std::countr_zero(g_iSlotBytes));
            return iSlot < g_iSlots && defined[iSlot] ? iSlot : g_iSlots;
        }
    };

    [[nodiscard]] const SeededChunk* pSeededChunk(const Entity* pEntity) const noexcept;
    [[nodiscard]] Number dealtNew(const Entity* pEntity);
    [[nodiscard]] Number settledFar(const Entity* pEntity, Near& nearby);
    [[nodiscard]] std::optional<Number> seededFar(const Entity* pEntity, Near& nearby) const noexcept;
    [[nodiscard]] Number numberFar(const Entity* pEntity, Near& nearby);
    [[nodiscard]] std::optional<Number> knownFar(const Entity* pEntity, Near& nearby) const;

    std::map<const EntitySlot*, SeededChunk, std::less<>> m_byAddress;   // by pFirst; new ones come in any order
    std::unordered_map<std::size_t, SeededChunk*> m_byNumber;            // by iFirstId
    std::size_t m_iSeeded = 0;
    std::size_t m_iAbove = 0;          // what dealt numbers are above the count of entries
    std::unique_ptr<Dealt> m_pDealt;   // the rest; guarded by m_lock
    mutable platform::SharedMutex m_lock;
};

}   // namespace oxa::ifc
