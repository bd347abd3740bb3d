// SPDX-License-Identifier: Apache-2.0
// BatchPipe: batches that are made on a thread of their own, while their taker writes those before.
//
// For      write(). Making rows and writing them take about the same time.
// Bounds   two batches wait at most.
// Errors   what the maker throws, the taker gets behind the last batch.
// Threads  the pipe belongs to the taker; make() runs on the other thread, and is at its end when the pipe is.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "Tables/Batch.h"

namespace oxa::tables::detail {

class BatchPipe {
public:
    struct Load {
        std::size_t iTable = 0;
        std::unique_ptr<Batch> pBatch{};
    };

    // std::system_error where the system has no thread; then nothing was made.
    explicit BatchPipe(std::function<void(BatchPipe& pipe)> make)
        : m_thread([this, make = std::move(make)] { vMake(make); }) {}
    ~BatchPipe() {
        {
            const std::lock_guard lock(m_mutex);
            m_boStop = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    BatchPipe(const BatchPipe&) = delete;
    BatchPipe& operator=(const BatchPipe&) = delete;

    // For the maker: a batch of this table that was taken already, with its memory, or null.
    [[nodiscard]] std::unique_ptr<Batch> pUsed(std::size_t iTable) {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_used, [iTable](const Load& load) { return load.iTable != iTable; });
        if (m_used.empty()) return nullptr;
        std::unique_ptr<Batch> pBatch = std::move(m_used.back().pBatch);
        m_used.pop_back();
        return pBatch;
    }
    // For the maker: false when nobody takes any more.
    [[nodiscard]] bool boPut(Load load) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_boStop || m_made.size() < g_iMost; });
        if (m_boStop) return false;
        m_made.push_back(std::move(load));
        lock.unlock();
        m_changed.notify_all();
        return true;
    }

    // For the taker: gives the last load back and takes the next. False behind the last.
    [[nodiscard]] bool boTake(Load& load) {
        std::unique_lock lock(m_mutex);
        if (load.pBatch) m_used.push_back(std::move(load));
        m_changed.wait(lock, [this] { return m_boEnd || !m_made.empty(); });
        if (m_made.empty()) {
            if (m_pFault) std::rethrow_exception(std::exchange(m_pFault, nullptr));
            return false;
        }
        load = std::move(m_made.front());
        m_made.pop_front();
        lock.unlock();
        m_changed.notify_all();
        return true;
    }

private:
    static constexpr std::size_t g_iMost = 2;

    void vMake(const std::function<void(BatchPipe& pipe)>& make) {
        std::exception_ptr pFault;
        try {
            make(*this);
        } catch (...) {
            pFault = std::current_exception();
        }
        {
            const std::lock_guard lock(m_mutex);
            m_pFault = pFault;
            m_boEnd = true;
        }
        m_changed.notify_all();
    }

    std::mutex m_mutex;   // of what follows
    std::condition_variable m_changed;
    std::deque<Load> m_made;
    std::vector<Load> m_used;
    std::exception_ptr m_pFault;
    bool m_boEnd = false;
    bool m_boStop = false;
    std::thread m_thread;   // the last, so that it finds all others
};

}   // namespace oxa::tables::detail
