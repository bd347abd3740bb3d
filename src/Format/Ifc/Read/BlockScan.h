// SPDX-License-Identifier: Apache-2.0
// A scan in blocks: each thread finds the statements of blocks of its own, and parses them where they are in its cache.
//
//   block      |  begins anywhere in the text        |  the next one, on another thread
//   statement  ...;|#7=A(...);   #8=B(...);   #9=C(..|.);#10=D(...);
//                   ^ supposed first statement          ^ the end of the last one, which lies in the next block
//
// Proof    what a byte means depends on all before it: it may be part of a string or a comment. So a block's first
//          statement is supposed to begin behind the first ";" that "#" and a digit follow, and is proven in the order of the
//          file: where the last statement of the block before, which is proven, has its end. Where that is elsewhere, the
//          block is scanned again from there. Nothing is parsed, and nobody is told anything, before the proof.
// Doubt    a block holds entity statements and nothing else. At the first that is none (ENDSEC mostly), or that has no
//          certain end, the scan in blocks ends, and the scanner goes on in its own way from the begin of that statement: so
//          all that can be said of a statement is said by one piece of code, in the order of the file.
// For      the pool of line workers, inside this folder.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <mutex>
#include <optional>
#include <streambuf>
#include <vector>

#include "Format/Ifc/Read/BatchQueue.h"
#include "Format/Ifc/Read/StatementFinder.h"
#include "platform/SharedBytes.h"

namespace oxa::ifc::io {

// A place between two statements, and what the scan has counted up to there.
struct BlockPlace {
    std::uint64_t iPlace = 0;      // behind a ";", as StreamReadBuffer counts
    std::uint32_t iLine = 1;       // line feeds before it, from 1
    std::uint32_t iProgress = 0;   // entity statements since the scanner last told of one; it tells of every g_iStep-th
    std::size_t iBatches = 0;      // of statements, so far

    static constexpr std::uint32_t g_iStep = 1000;
};

// What two threads have to know of a scan in blocks: who scans which, and where the proven ones end. Any number of threads
// may call at once, each with a block that it has taken.
class BlockOrder {
public:
    // The first byte of block i is at g_iBlockBytes * i behind "first"; there are iBlocks.
    BlockOrder(const BlockPlace& first, std::size_t iBlocks) noexcept;

    // As many as the buffer of a finder takes in full pieces, with the byte before them.
    static constexpr std::size_t g_iBlockBytes = 8 * stream::StreamReadBuffer::g_iBufferSize - 1;

    [[nodiscard]] std::uint64_t iBeginOf(std::size_t iBlock) const noexcept {
        return m_iFirst + iBlock * g_iBlockBytes;
    }
    // The next block, which the caller will wait for and prove; nothing when all are taken or the scan has ended.
    [[nodiscard]] std::optional<std::size_t> take();
    // Waits until the blocks before are proven: where the first statement of this one begins. Nothing where the scan has
    // ended before.
    [[nodiscard]] std::optional<BlockPlace> waitFor(std::size_t iBlock);
    // The caller's block, for which it has waited, is proven: where the first statement behind it begins. With boEnd the scan
    // ends there. "told" are the positions of which the scanner tells, in their order. Throws std::bad_alloc, and is then
    // not done.
    void vProve(const BlockPlace& next, bool boEnd, const std::vector<std::uint32_t>& told);
    // Ends the scan where it is proven. Who waits for a block gets nothing.
    void vEnd();

    // What the scanner hears of it.
    struct News {
        BlockPlace place;                  // up to here all is proven
        bool boEnded = false;              // and nothing will come behind it, nor does anybody read on
        std::vector<std::uint32_t> told;   // since the last news
    };
    // At once, or, with boWait, after a while or when the scan has ended.
    [[nodiscard]] News news(bool boWait);

private:
    std::uint64_t m_iFirst;
    std::size_t m_iBlocks;
    std::mutex m_mutex;                     // guards what follows
    News m_news;                            // place: where m_iProven begins
    std::size_t m_iTaken = 0;               // blocks so far
    std::size_t m_iProven = 0;              // of them, in their order
    std::size_t m_iScanned = 0;             // taken, and not proven or given up
    std::atomic<std::size_t> m_iKnown{0};   // as m_iProven, and m_iBlocks at the end: a look without the lock
    std::condition_variable m_proven;
    std::condition_variable m_forScanner;

    [[nodiscard]] bool boEnded() const noexcept;
};

// The bytes of a stream that one finder reads: as many as the block has, and then in small pieces, since what is left of
// its last statement is short. What is only supposed ends some way behind the block, as if the stream did: where a quote in
// a comment was taken for the begin of a string, all that follows would be read for each block.
class BlockBytes : public std::streambuf {
public:
    // Places of the finder begin at iBase of the bytes.
    BlockBytes(stream::SharedBytes& bytes, std::uint64_t iBase) noexcept : m_bytes(bytes), m_iBase(iBase) {}
    void vMove(std::uint64_t iPlace, std::uint64_t iBlockEnd, bool boSupposed) noexcept;

protected:
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override;

private:
    stream::SharedBytes& m_bytes;
    std::uint64_t m_iBase;
    std::uint64_t m_iPlace = 0;
    std::uint64_t m_iBlockEnd = 0;
    bool m_boSupposed = false;
};

// A finder's bytes as the stream that it needs from the start.
struct BlockStream {
    BlockBytes m_bytes;
    std::istream m_bytesStream{&m_bytes};
};

// Scans blocks, one after the other, on one thread.
class BlockFinder final : private BlockStream, public StatementFinder {
public:
    // An empty batch.
    using BatchMaker = std::function<BatchPtr()>;

    // All must outlive the finder.
    BlockFinder(stream::SharedBytes& bytes, std::uint64_t iBase, ReadError& error, BatchMaker batchMake);

    // The statements that begin in a block, as a chain of batches, of which none is empty. Lines count from 0.
    struct Found {
        BatchPtr pBatches{};
        std::size_t iBatches = 0;
        std::uint64_t iBegin = 0;   // the place where the first of them begins
        std::uint64_t iEnd = 0;     // behind the last one
        std::uint32_t iLines = 0;   // line feeds between the two
        bool boWhole = false;       // false: what follows is for the scanner
    };
    // From where the first one is supposed to begin; nothing where none is in sight, or without memory. Good only where it
    // did begin there, and if it is whole.
    [[nodiscard]] std::optional<Found> suppose(std::uint64_t iBlockBegin, std::uint64_t iBlockEnd) noexcept;
    // From where it does begin.
    [[nodiscard]] Found scan(std::uint64_t iBegin, std::uint64_t iBlockEnd) noexcept;

    // The batch that waits for statements; null where there is none.
    [[nodiscard]] BatchPtr pRelease() noexcept { return std::move(m_pBatch); }

private:
    void vMove(std::uint64_t iPlace, std::uint64_t iBlockEnd, bool boSupposed);
    [[nodiscard]] bool boSuppose();
    [[nodiscard]] Found found(std::uint64_t iBlockEnd) noexcept;
    void vReport(ReportKey eKey) override;

    BatchMaker m_batchMake;
    BatchPtr m_pBatch;   // being filled
    bool m_boDoubt = false;
};

}   // namespace oxa::ifc::io
