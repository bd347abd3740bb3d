// SPDX-License-Identifier: Apache-2.0
/// @file
/// SchemaCache: a value that is built once, on first use, and read without a lock from then on.
///
/// For      the caches of schema::Entity.
/// Threads  any number at once: who comes while another builds waits for it; the state is set with release order after
///          the value is complete. A build may ask other caches; who does so keeps to one order (subtype before
///          supertype).
#pragma once

#include <atomic>
#include <thread>
#include <utility>

namespace oxa::ifc::def::schema {

/// A value, empty until somebody asks for it. Belongs to one object of a schema and is neither copied nor moved.
template <class Value>
class SchemaCache {
public:
    SchemaCache() = default;
    SchemaCache(const SchemaCache&) = delete;
    SchemaCache& operator=(const SchemaCache&) = delete;

    /// The value; "build" makes it if nobody has yet. An exception of "build" leaves the cache unbuilt.
    template <class Build>
    const Value& get(Build&& build) const {
        if (!boReady()) vBuild(std::forward<Build>(build));
        return m_value;
    }

    /// Whether the value has been built.
    [[nodiscard]] bool boReady() const noexcept { return m_iState.load(std::memory_order_acquire) == g_iReady; }
    [[nodiscard]] const Value& value() const noexcept { return m_value; }   ///< empty unless boReady()

private:
    // A schema has thousands of caches, and most are never asked for: no mutex for each.
    static constexpr int g_iEmpty = 0;
    static constexpr int g_iBuilding = 1;   // m_value is the builder's alone
    static constexpr int g_iReady = 2;

    template <class Build>
    void vBuild(Build&& build) const {
        for (int iState = g_iEmpty; !m_iState.compare_exchange_strong(iState, g_iBuilding, std::memory_order_acquire);
             iState = g_iEmpty) {
            if (iState == g_iReady) return;
            std::this_thread::yield();   // a build takes microseconds
        }
        try {
            m_value = build();
        } catch (...) {
            m_iState.store(g_iEmpty, std::memory_order_release);
            throw;
        }
        m_iState.store(g_iReady, std::memory_order_release);
    }

    mutable Value m_value{};
    mutable std::atomic<int> m_iState{g_iEmpty};
};

}   // namespace oxa::ifc::def::schema
