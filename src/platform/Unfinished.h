// SPDX-License-Identifier: Apache-2.0
/// @file
/// Unfinished: files and folders that are on their way, so that a process that is ended from outside leaves none behind.
///
/// For      whoever makes what only counts when it is whole, as ReplacedFile does; and for the handler of a signal.
/// Threads  any number at once. removeUnfinished() may be called from the handler of a signal: it takes no lock and no
///          memory.
#pragma once

#include <atomic>
#include <filesystem>

#include "platform/Export.h"

namespace oxa::stream {

/// A path that is noted as long as this lives.
class OXA_PLATFORM_API Unfinished {
public:
    /// None.
    Unfinished() noexcept = default;
    /// From here on the path is removed when removeUnfinished() is called: a file, or a folder that holds nothing else.
    explicit Unfinished(const std::filesystem::path& path);
    /// Forgets the path, and removes nothing.
    ~Unfinished() { vForget(); }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    /// Notes this path in place of an earlier one.
    void vNote(const std::filesystem::path& path);
    /// The path is finished, or removed already.
    void vForget() noexcept;

private:
    struct Slot;
    friend OXA_PLATFORM_API void removeUnfinished() noexcept;
    static std::atomic<Slot*>& all() noexcept;

    Slot* m_pSlot = nullptr;
    const std::filesystem::path::value_type* m_pPath = nullptr;   // as the slot has it
};

/// Removes what is noted, for a process that ends now: what belongs to the paths goes on writing into nothing.
OXA_PLATFORM_API void removeUnfinished() noexcept;

}   // namespace oxa::stream
