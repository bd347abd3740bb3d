// SPDX-License-Identifier: Apache-2.0
// NameTable: what is declared, by its name in any case of letters.
//
// For      GraphBuilder. Names are compared by their texts: no key is made for a look-up.
// Owner    names are views, whose texts outlive the table.
// Limits   open addressing, at most half full; a name takes its row and two slots to four.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace oxa::ifc::def::express {

template <class Value>
class NameTable {
public:
    // Room for that many names; the table takes more.
    void vReserve(std::size_t iCount) {
        m_rows.reserve(iCount);
        vSlots(iCount);
    }

    // False when the scope has the name, which keeps its value. A scope is any address; names of different scopes
    // have nothing to do with each other.
    bool boAdd(std::string_view name, Value value, const void* pScope = nullptr) {
        if (m_rows.size() * 2 >= m_slots.size()) vSlots(m_rows.size() + 1);
        const std::uint32_t uHash = hash(name, pScope);
        Slot& slot = m_slots[iSlot(name, pScope, uHash)];
        if (slot.iNext != 0) return false;
        m_rows.push_back({name, pScope, std::move(value)});
        slot = {uHash, static_cast<std::uint32_t>(m_rows.size())};
        return true;
    }

    // Null when the scope has no such name. Good until a name is added.
    [[nodiscard]] const Value* pFind(std::string_view name, const void* pScope = nullptr) const {
        if (m_rows.empty()) return nullptr;
        const Slot& slot = m_slots[iSlot(name, pScope, hash(name, pScope))];
        return slot.iNext == 0 ? nullptr : &m_rows[slot.iNext - 1].value;
    }

private:
    struct Row {
        std::string_view name;
        const void* pScope;
        Value value;
    };
    struct Slot {
        std::uint32_t uHash = 0;
        std::uint32_t iNext = 0;   // the number of the row that follows; 0: free
    };

    // Eight bytes of the text, the bit set in all that tells upper case from lower case; the last ones once more where
    // the text is no multiple of eight.
    static std::uint32_t hash(std::string_view name, const void* pScope) noexcept {
        constexpr std::uint64_t uCase = 0x2020202020202020U;
        constexpr std::uint64_t uFactor = 0x9E3779B97F4A7C15U;
        std::uint64_t uHash = name.size() ^ std::bit_cast<std::uintptr_t>(pScope);
        const auto vMix = [&uHash](std::uint64_t uBytes) {
            uHash = (uHash ^ (uBytes | uCase)) * uFactor;
            uHash ^= uHash >> 32;
        };
        const auto uBytesAt = [&name](std::size_t iAt, std::size_t iCount) {
            std::uint64_t uBytes = 0;
            std::memcpy(&uBytes, name.data() + iAt, iCount);
            return uBytes;
        };
        for (std::size_t i = 0; i + sizeof uHash <= name.size(); i += sizeof uHash) vMix(uBytesAt(i, sizeof uHash));
        if (name.size() < sizeof uHash) {
            vMix(uBytesAt(0, name.size()));
        } else if (name.size() % sizeof uHash != 0) {
            vMix(uBytesAt(name.size() - sizeof uHash, sizeof uHash));
        }
        return static_cast<std::uint32_t>(uHash);
    }

    // Texts mostly spell a name in one way.
    static bool boEqual(std::string_view a, std::string_view b) noexcept {
        const auto cUpper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
        return a == b || std::equal(a.begin(), a.end(), b.begin(), b.end(),
                                    [cUpper](char x, char y) { return cUpper(x) == cUpper(y); });
    }

    // That of the name, or the free one where it belongs.
    [[nodiscard]] std::size_t iSlot(std::string_view name, const void* pScope, std::uint32_t uHash) const noexcept {
        const std::size_t iMask = m_slots.size() - 1;
        for (std::size_t i = uHash & iMask;; i = (i + 1) & iMask) {
            const Slot& slot = m_slots[i];
            if (slot.iNext == 0) return i;
            if (slot.uHash != uHash) continue;
            const Row& row = m_rows[slot.iNext - 1];
            if (row.pScope == pScope && boEqual(row.name, name)) return i;
        }
    }

    // Slots for that many names and the names that there are.
    void vSlots(std::size_t iCount) {
        std::vector<Slot> slots(std::bit_ceil(std::max(iCount, m_rows.size()) * 2 + 2));
        const std::size_t iMask = slots.size() - 1;
        for (const Slot& slot : m_slots) {
            if (slot.iNext == 0) continue;
            std::size_t i = slot.uHash & iMask;
            while (slots[i].iNext != 0) i = (i + 1) & iMask;
            slots[i] = slot;
        }
        m_slots = std::move(slots);
    }

    std::vector<Row> m_rows;
    std::vector<Slot> m_slots;   // a power of two of them, or none
};

}   // namespace oxa::ifc::def::express
