// SPDX-License-Identifier: Apache-2.0
/// @file
/// SchemaCache: a value that is built once, on first use, and read without a lock from then on.
///
/// For      the caches of schema::Entity.
/// Threads  any number at once: the ready flag is set with release order after the value is complete.
///          A build may ask other caches; who does so keeps to one order (subtype before supertype).
#pragma once

#include <atomic>
#include <mutex>
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
        if (!m_boReady.load(std::memory_order_acquire)) vBuild(std::forward<Build>(build));
        return m_value;
    }

    /// Whether the value has been built.
    [[nodiscard]] bool boReady() const noexcept { return m_boReady.load(std::memory_order_acquire); }
    [[nodiscard]] const Value& value() const noexcept { return m_value; }   ///< empty unless boReady()

private:
    template <class Build>
    void vBuild(Build&& build) const {
        const std::lock_guard lock(m_mutex);   // guards m_value until m_boReady is set
        if (m_boReady.load(std::memory_order_relaxed)) return;
        m_value = build();
        m_boReady.store(true, std::memory_order_release);
    }

    mutable Value m_value{};
    mutable std::atomic<bool> m_boReady{false};
    mutable std::mutex m_mutex;
};

}   // namespace oxa::ifc::def::schema
