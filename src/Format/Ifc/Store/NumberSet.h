// SPDX-License-Identifier: Apache-2.0
// NumberSet: instance numbers that have been met, a bit each.
//
// For      a count of statements, which looks for a number that stands twice; the threads of a read, each of which keeps the
//          numbers that statements name.
// Shape    chunks of 4 KiB, made when one of their numbers comes: the numbers of a file mostly lie close together. Where
//          they do not, there is no place for more once there are too many chunks.
// Threads  one each; boMerge joins what two have.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace oxa::ifc::details {

class NumberSet {
public:
    static constexpr std::size_t g_iNumbers = 32768;   // of a chunk
    using Chunk = std::array<std::uint64_t, g_iNumbers / 64>;

    // False where the number is there already, or where there is no place for it.
    [[nodiscard]] bool boAdd(std::uint32_t iNumber) {
        Chunk* const pChunk = pMade(iNumber / g_iNumbers);
        if (!pChunk) return false;
        std::uint64_t& uBits = (*pChunk)[iNumber % g_iNumbers / 64];
        const std::uint64_t uBit = std::uint64_t{1} << iNumber % 64;
        const bool boNew = !(uBits & uBit);
        uBits |= uBit;
        return boNew;
    }
    // Of the numbers from g_iNumbers * iChunk on, bit n % 64 of word n / 64 for the n-th; made when there is none, and then
    // null where there is no place for it. Good until the set is merged or ends.
    [[nodiscard]] Chunk* pMade(std::size_t iChunk) {
        if ((iChunk >= m_chunks.size() || !m_chunks[iChunk]) && !boMake(iChunk)) return nullptr;
        return m_chunks[iChunk].get();
    }
    // The same; null where there is none.
    [[nodiscard]] const Chunk* pChunk(std::size_t iChunk) const noexcept {
        return iChunk < m_chunks.size() ? m_chunks[iChunk].get() : nullptr;
    }

    // Takes the numbers of the other one over. False where both have one.
    [[nodiscard]] bool boMerge(NumberSet& other) noexcept {
        if (other.m_chunks.size() > m_chunks.size()) m_chunks.swap(other.m_chunks);
        std::uint64_t uTwice = 0;
        for (std::size_t i = 0; i < other.m_chunks.size(); ++i) {
            if (!other.m_chunks[i]) continue;
            if (!m_chunks[i]) {
                m_chunks[i] = std::move(other.m_chunks[i]);
                continue;
            }
            for (std::size_t k = 0; k < m_chunks[i]->size(); ++k) {
                uTwice |= (*m_chunks[i])[k] & (*other.m_chunks[i])[k];
                (*m_chunks[i])[k] |= (*other.m_chunks[i])[k];
            }
        }
        return !uTwice;
    }

private:
    static constexpr std::size_t g_iMostChunks = 16384;   // 64 MiB, half a billion numbers side by side

    bool boMake(std::size_t iChunk) {
        if (m_iMade == g_iMostChunks) return false;
        if (iChunk >= m_chunks.size()) m_chunks.resize(iChunk + 1);
        m_chunks[iChunk] = std::make_unique<Chunk>();
        ++m_iMade;
        return true;
    }

    std::vector<std::unique_ptr<Chunk>> m_chunks;
    std::size_t m_iMade = 0;
};

}   // namespace oxa::ifc::details
