// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Read/BlockScan.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "platform/Compiler.h"

namespace oxa::ifc::io {

namespace {

constexpr std::chrono::milliseconds g_newsRhythm(20);     // a scanner that is woken often costs more than it tells
constexpr std::uint64_t g_iBehindBlock = 1024;            // bytes: longer than most statements
constexpr std::uint64_t g_iMostBehindBlock = 64 * 1024;   // of what is only supposed
constexpr unsigned g_iProofLooks = 2000;                  // for a proof, before a sleep: as long as a block is scanned

}   // namespace

BlockOrder::BlockOrder(const BlockPlace& first, std::size_t iBlocks) noexcept
    : m_iFirst(first.iPlace),
      m_iBlocks(iBlocks) {
    m_news.place = first;
}

std::optional<std::size_t> BlockOrder::take() {
    const std::lock_guard lock(m_mutex);
    if (m_news.boEnded || m_iTaken == m_iBlocks) return std::nullopt;
    ++m_iScanned;
    return m_iTaken++;
}

// Mostly the blocks before are scanned by then: they were taken before, and to scan takes a fraction of the time that
// parsing does.
std::optional<BlockPlace> BlockOrder::waitFor(std::size_t iBlock) {
    for (unsigned i = 0; i < g_iProofLooks && m_iKnown.load(std::memory_order_relaxed) < iBlock; ++i)
        platform::vRelax();
    std::unique_lock lock(m_mutex);
    m_proven.wait(lock, [&] { return m_iProven == iBlock || m_news.boEnded; });
    if (!m_news.boEnded) return m_news.place;
    if (--m_iScanned == 0) m_forScanner.notify_one();
    return std::nullopt;
}

void BlockOrder::vProve(const BlockPlace& next, bool boEnd, const std::vector<std::uint32_t>& told) {
    const std::lock_guard lock(m_mutex);
    m_news.told.insert(m_news.told.end(), told.begin(), told.end());
    --m_iScanned;
    // Whoever has ended it meanwhile counts on its end.
    if (!m_news.boEnded) m_news.place = next;
    m_news.boEnded = m_news.boEnded || boEnd || ++m_iProven == m_iBlocks;
    m_iKnown.store(m_news.boEnded ? m_iBlocks : m_iProven, std::memory_order_relaxed);
    m_proven.notify_all();
    if (boEnded()) m_forScanner.notify_one();
}

void BlockOrder::vEnd() {
    const std::lock_guard lock(m_mutex);
    m_news.boEnded = true;
    m_iKnown.store(m_iBlocks, std::memory_order_relaxed);
    m_proven.notify_all();
    m_forScanner.notify_one();
}

// Under the lock. It has not ended for the scanner while others read from its stream.
bool BlockOrder::boEnded() const noexcept { return m_news.boEnded && m_iScanned == 0; }

BlockOrder::News BlockOrder::news(bool boWait) {
    std::unique_lock lock(m_mutex);
    if (boWait) m_forScanner.wait_for(lock, g_newsRhythm, [this] { return boEnded(); });
    return {m_news.place, boEnded(), std::exchange(m_news.told, {})};
}

void BlockBytes::vMove(std::uint64_t iPlace, std::uint64_t iBlockEnd, bool boSupposed) noexcept {
    m_iPlace = iPlace;
    m_iBlockEnd = iBlockEnd;
    m_boSupposed = boSupposed;
}

std::streamsize BlockBytes::xsgetn(char* pTo, std::streamsize iWanted) {
    auto iBytes = static_cast<std::uint64_t>(iWanted);
    if (m_iPlace < m_iBlockEnd)
        iBytes = std::min(iBytes, m_iBlockEnd - m_iPlace);
    else if (m_iPlace == m_iBlockEnd)
        iBytes = std::min(iBytes, g_iBehindBlock);
    if (m_boSupposed && m_iPlace > m_iBlockEnd + g_iMostBehindBlock) return 0;
    const std::size_t iRead = m_bytes.iReadAt(m_iBase + m_iPlace, pTo, static_cast<std::size_t>(iBytes));
    m_iPlace += iRead;
    return static_cast<std::streamsize>(iRead);
}

BlockFinder::BlockFinder(stream::SharedBytes& bytes, std::uint64_t iBase, ReadError& error, BatchMaker batchMake)
    : BlockStream{{bytes, iBase}},
      StatementFinder(m_bytesStream, error),
      m_batchMake(std::move(batchMake)) {}

void BlockFinder::vReport(ReportKey) { m_boDoubt = true; }

void BlockFinder::vMove(std::uint64_t iPlace, std::uint64_t iBlockEnd, bool boSupposed) {
    if (!m_pBatch) m_pBatch = m_batchMake();
    m_pText = &m_pBatch->m_text;
    m_bytes.vMove(iPlace, iBlockEnd, boSupposed);
    m_bytesStream.clear();
    vBegin(iPlace);
    m_iLine = 0;
    m_boDoubt = false;
}

// To the first ";" behind which an instance seems to begin, within a buffer. A string that holds such a text is rare, and
// costs a second scan.
bool BlockFinder::boSuppose() {
    if (!boRefill()) return false;
    const char* const pEnd = m_pBuffer + m_iValid;
    const char* p = m_pBuffer;
    while ((p = static_cast<const char*>(std::memchr(p, ';', static_cast<std::size_t>(pEnd - p))))) {
        const char* pNext = ++p;
        while (details::boScanBlank(*pNext)) ++pNext;   // the padding behind the buffer is none, nor anything below
        if (*pNext != '#' || pNext[1] < '0' || pNext[1] > '9') continue;
        vSkipTo(static_cast<unsigned>(p - m_pBuffer));
        return true;
    }
    return false;
}

std::optional<BlockFinder::Found> BlockFinder::suppose(std::uint64_t iBlockBegin, std::uint64_t iBlockEnd) noexcept
    try {
    vMove(iBlockBegin - 1, iBlockEnd, true);   // a ";" that ends the block before
    if (!boSuppose()) return std::nullopt;
    return found(iBlockEnd);
} catch (...) {
    return std::nullopt;
}

BlockFinder::Found BlockFinder::scan(std::uint64_t iBegin, std::uint64_t iBlockEnd) noexcept try {
    vMove(iBegin, iBlockEnd, false);
    return found(iBlockEnd);
} catch (...) {
    return {.iBegin = iBegin, .iEnd = iBegin};
}

// Without memory what has been found counts, and the scanner, which goes on behind it, meets the same. It has a caller
// who can be told.
BlockFinder::Found BlockFinder::found(std::uint64_t iBlockEnd) noexcept {
    Found found{.iBegin = iPlace(), .iEnd = iPlace()};
    BatchPtr* pLast = &found.pBatches;
    const auto vKeep = [&] {
        *pLast = std::move(m_pBatch);
        pLast = &(*pLast)->m_pNext;
        ++found.iBatches;
    };
    try {
        while (found.iEnd < iBlockEnd) {
            if (m_pBatch->m_lines.size() == g_iBatchLines) {
                BatchPtr pNext = m_batchMake();
                vKeep();
                m_pBatch = std::move(pNext);
                m_pText = &m_pBatch->m_text;
            }
            if (!boFind() || m_boDoubt || !m_boHasNumberSign) break;
            m_pBatch->m_lines.push_back({m_pText->keep(), m_iLine, iPosInStream()});
            vNext();
            found.iEnd = iPlace();
            found.iLines = m_iLine;
        }
        found.boWhole = found.iEnd >= iBlockEnd;
    } catch (...) {
        found.boWhole = false;
    }
    m_pText->vClear();
    if (!m_pBatch->m_lines.empty()) vKeep();
    return found;
}

}   // namespace oxa::ifc::io
