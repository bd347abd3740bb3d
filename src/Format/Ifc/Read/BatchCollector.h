// SPDX-License-Identifier: Apache-2.0
// BatchCollector: the last stage of a read on several threads: instances enter the model in the order of the file.
//
// For      the pool of line workers, inside this folder.
// Order    batches come as they finish, and are numbered. What comes too early waits here for those before it, so that a
//          model is the same for any number of threads.
// Threads  any number at once. Whoever brings a batch enters it, with those that have waited for it, unless another thread is
//          about it: that one then does it all. So list and map have one writer at a time, without a thread of its own that
//          would have to be woken, and the batch is still in a cache of who enters it.
#pragma once

#include <cstddef>
#include <mutex>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/Read/BatchQueue.h"
#include "Format/Ifc/Read/StageWatch.h"

namespace oxa::ifc::io {

class BatchCollector {
public:
    // All must outlive it. Batches go back to the stock.
    BatchCollector(StepReadInfoDataCommon& info, FileBase& file, BatchStock& stock) noexcept;
    ~BatchCollector();
    BatchCollector(const BatchCollector&) = delete;
    BatchCollector& operator=(const BatchCollector&) = delete;

    // A batch that was parsed, or lost. Each number comes once, from 0 on.
    void vAdd(BatchPtr pBatch) noexcept;
    // Of all threads. When no thread is about it.
    [[nodiscard]] const StageTime& time() const noexcept { return m_time; }

private:
    void vKeep(BatchPtr pBatch) noexcept;
    [[nodiscard]] BatchPtr pDue() noexcept;
    void vEnter(const Batch& batch, std::size_t& iNext);
    void vCollect(BatchPtr pBatch) noexcept;

    StepReadInfoDataCommon* m_pInfo;
    FileBase* m_pFile;
    BatchStock* m_pStock;
    std::mutex m_mutex;       // guards what follows, but for m_time
    BatchPtr m_pKept;         // in their order
    std::size_t m_iDue = 0;   // the number that is next
    bool m_boBusy = false;    // whether a thread is about it
    StageTime m_time;         // of that thread
};

}   // namespace oxa::ifc::io
