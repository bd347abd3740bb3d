// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcLineReadThreadPool: parses entity statements on several threads while the scanner goes on reading.
///
/// - Order: statements are parsed in any order and enter the model in that of the file.
/// - Behind: Read/LinePool.cpp, which says how the threads share the work.
/// - Threads: all calls on the scanner's thread.
/// - Errors: what boReadLine throws loses the batch, what finalizeEntity throws the rest of it. The thread goes on with
///   the next one; the exception goes to the standard error stream and the loss to Errors::lostStatements().
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcReadOptions.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "platform/Export.h"

namespace oxa::stream {
class SharedBytes;
}   // namespace oxa::stream

namespace oxa::ifc::io {

class StatementBuffer;
struct BlockPlace;

/// The threads of one read. Made, fed and destroyed by the thread that scans the file.
class OXA_IFC_API IfcLineReadThreadPool {
public:
    /// No thread starts before the first statement. Both arguments must outlive the pool.
    IfcLineReadThreadPool(StepReadInfoDataCommon& info, FileBase& file, bool boOneWorker);
    /// Drains and joins: the one way to wait for the work. Every statement is parsed and finalised afterwards.
    ~IfcLineReadThreadPool();
    IfcLineReadThreadPool(const IfcLineReadThreadPool&) = delete;
    IfcLineReadThreadPool& operator=(const IfcLineReadThreadPool&) = delete;

    /// Copies the statement. Throws std::system_error when the first one finds no thread to be had, and std::bad_alloc
    /// without memory; the statement is lost then, and no other.
    void addLineToQueue(std::string_view line, unsigned iLine);

    /// The same without a copy, for a scanner that assembles its statements here: the buffer that the next one goes to,
    /// good until the next call of any. Throws std::bad_alloc.
    [[nodiscard]] StatementBuffer& buffer();
    /// Takes the statement in hand of buffer(), and gives the buffer for the next one. Throws as addLineToQueue.
    StatementBuffer& statementTake(unsigned iLine);

    /// Reads what follows "begin" in blocks that the workers take from "bytes" themselves, as far as there are entity
    /// statements and nothing else, and calls "progress" as the scanner does. iBase is the place in "bytes" from which
    /// "begin" counts. Where the scanner goes on; nothing where this is not worth while or a statement was taken before.
    /// Throws std::system_error when there is no thread to be had, and what "progress" and "bytes" throw here: the read
    /// has no proper end then.
    [[nodiscard]] std::optional<BlockPlace> blocksRead(stream::SharedBytes& bytes, std::uint64_t iBase,
                                                       const BlockPlace& begin, const ReadProgress& progress);

    /// The workers of this machine. Counted once a process.
    [[nodiscard]] static std::size_t iWorkerCount() noexcept;
    /// Half the hardware threads, less two where that half is above three, else two; 0 threads: not known.
    [[nodiscard]] static std::size_t iWorkersOf(unsigned iHardwareThreads) noexcept;

private:
    class Work;
    std::unique_ptr<Work> m_pWork;
};

}   // namespace oxa::ifc::io
