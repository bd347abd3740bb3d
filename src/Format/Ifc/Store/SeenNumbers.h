// SPDX-License-Identifier: Apache-2.0
/// @file
/// SeenNumbers: which instance numbers a walk has met, a bit a number.
///
/// For      the writers: a model's numbers are mostly dense, and then a bit is far less than an entry of a set.
/// Shape    a tree of three levels over 32 bits, grown where numbers fall; what is never met costs nothing.
/// Threads  any number at once, without a lock: exactly one caller gets true for each number.
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace oxa::ifc {

/// A set of numbers of 32 bits that only grows.
///
/// Several threads walk one model, and each instance must be composed exactly once. A set under a lock would be asked
/// for every reference of the model. Here the question is one load, mostly of a bit that is set already, and the first
/// to set it wins by fetch_or, whose old value tells. Pages of 32,768 bits are made on first use: two threads that make
/// the same page agree by compare_exchange, and the loser deletes its own. Nothing is ever taken away while threads
/// mark, so a pointer to a page stays good, and each thread remembers its last one.
class SeenNumbers {
    struct Page;

public:
    /// Where a caller's last number was: the next one mostly is near it. Lives no longer than the numbers, and belongs
    /// to one thread.
    class Near {
        friend class SeenNumbers;
        Page* m_pPage = nullptr;
        std::uint32_t m_iPage = 0;
    };

    SeenNumbers() = default;
    SeenNumbers(const SeenNumbers&) = delete;
    SeenNumbers& operator=(const SeenNumbers&) = delete;

    /// True the first time for that number.
    bool boMark(std::uint32_t iNumber, Near& nearby) {
        std::atomic<std::uint64_t>& word = this->word(iNumber, nearby);
        const std::uint64_t uMask = std::uint64_t{1} << iNumber % 64;
        // Most numbers have been met before: a load leaves the cache line shared, where fetch_or would need it
        // exclusive.
        if (word.load(std::memory_order_relaxed) & uMask) return false;
        return !(word.fetch_or(uMask, std::memory_order_relaxed) & uMask);
    }

    /// The same while no other thread marks: without the wait for the cache that an exclusive step would be.
    bool boMarkAlone(std::uint32_t iNumber, Near& nearby) {
        std::atomic<std::uint64_t>& word = this->word(iNumber, nearby);
        const std::uint64_t uMask = std::uint64_t{1} << iNumber % 64;
        const std::uint64_t uWord = word.load(std::memory_order_relaxed);
        word.store(uWord | uMask, std::memory_order_relaxed);
        return !(uWord & uMask);
    }

    /// Whether the number is near the last one and was marked: a short look, and false where it would take a longer one.
    [[nodiscard]] static bool boMarkedBeside(std::uint32_t iNumber, const Near& nearby) noexcept {
        const std::uint32_t iBit = iNumber % g_iPageBits;
        return nearby.m_pPage && nearby.m_iPage == iNumber / g_iPageBits &&
               (nearby.m_pPage->words[iBit / 64].load(std::memory_order_relaxed) >> iBit % 64 & 1U);
    }

    /// Whether the number was marked.
    [[nodiscard]] bool boMarked(std::uint32_t iNumber) const {
        const std::uint32_t iPage = iNumber / g_iPageBits;
        const Branch<Page, g_iPages>* pFolder = m_root.pAt(iPage / g_iPages);
        const Page* pPage = pFolder ? pFolder->pAt(iPage % g_iPages) : nullptr;
        if (!pPage) return false;
        const std::uint32_t iBit = iNumber % g_iPageBits;
        return pPage->words[iBit / 64].load(std::memory_order_relaxed) >> iBit % 64 & 1U;
    }

    /// Calls visit(number) for each number that was marked, ascending. Not while others mark.
    template <class Visit>
    void vForEach(Visit&& visit) const {
        vForEachPage([&visit](const Page& page, std::uint32_t iFirst) { vForEachOfPage(page, iFirst, visit); });
    }
    /// How many those are. Not while others mark.
    [[nodiscard]] std::size_t iCount() const {
        std::size_t iCount = 0;
        vForEachPage([&iCount](const Page& page, std::uint32_t) {
            for (const auto& word : page.words)
                iCount += static_cast<std::size_t>(std::popcount(word.load(std::memory_order_relaxed)));
        });
        return iCount;
    }

private:
    static constexpr std::uint32_t g_iPageBits = 1U << 15;
    static constexpr std::uint32_t g_iPages = 1U << 9;
    static constexpr std::uint32_t g_iFolders = 1U << 8;

    struct Page {
        std::array<std::atomic<std::uint64_t>, g_iPageBits / 64> words{};
    };

    // Where the number has its bit, made on first use.
    std::atomic<std::uint64_t>& word(std::uint32_t iNumber, Near& nearby) {
        const std::uint32_t iPage = iNumber / g_iPageBits;
        if (!nearby.m_pPage || nearby.m_iPage != iPage) {
            nearby.m_pPage = &m_root.at(iPage / g_iPages).at(iPage % g_iPages);
            nearby.m_iPage = iPage;
        }
        return nearby.m_pPage->words[iNumber % g_iPageBits / 64];
    }

    // Each page with its first number, ascending.
    template <class Visit>
    void vForEachPage(Visit&& visit) const {
        for (std::uint32_t iFolder = 0; iFolder < g_iFolders; ++iFolder) {
            const Branch<Page, g_iPages>* pFolder = m_root.pAt(iFolder);
            for (std::uint32_t iPage = 0; pFolder && iPage < g_iPages; ++iPage)
                if (const Page* pPage = pFolder->pAt(iPage)) visit(*pPage, (iFolder * g_iPages + iPage) * g_iPageBits);
        }
    }
    // Those of a page, whose first number that is.
    template <class Visit>
    static void vForEachOfPage(const Page& page, std::uint32_t iFirst, Visit& visit) {
        for (std::uint32_t i = 0; i < g_iPageBits / 64; ++i)
            for (std::uint64_t uWord = page.words[i].load(std::memory_order_relaxed); uWord; uWord &= uWord - 1)
                visit(iFirst + i * 64 + static_cast<std::uint32_t>(std::countr_zero(uWord)));
    }

    // Places that are made on first use and stay; two threads that come together agree on one.
    template <class Item, std::size_t N>
    class Branch {
    public:
        Branch() = default;
        Branch(const Branch&) = delete;
        Branch& operator=(const Branch&) = delete;
        ~Branch() {
            for (std::atomic<Item*>& place : m_items) delete place.load(std::memory_order_relaxed);
        }

        Item& at(std::size_t i) {
            Item* pItem = m_items[i].load(std::memory_order_acquire);
            if (pItem) return *pItem;
            auto pFresh = std::make_unique<Item>();
            if (m_items[i].compare_exchange_strong(pItem, pFresh.get(), std::memory_order_acq_rel))
                pItem = pFresh.release();
            return *pItem;
        }
        [[nodiscard]] const Item* pAt(std::size_t i) const { return m_items[i].load(std::memory_order_acquire); }

    private:
        std::array<std::atomic<Item*>, N> m_items{};
    };

    Branch<Branch<Page, g_iPages>, g_iFolders> m_root;
};

}   // namespace oxa::ifc
