// SPDX-License-Identifier: Apache-2.0
// Collector: failures as they are found, grouped.
//
// For      every level: one vAdd a failure. A group is made on first use; equal failures add a place to it.
// Memory   places up to a limit; those behind it are counted. Names that a file makes up are held in groups up to
//          g_iMaxGroups; from there on groups are told by their key alone.
// Threads  one collector a thread; vMerge puts those of several together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Check/Check.h"

namespace oxa::check {

inline constexpr std::size_t g_iMaxGroups = 20'000;

// One failure, as its finder has it. All views are copied.
struct Failure {
    CheckLevel level = CheckLevel::Syntax;
    CheckWeight weight = CheckWeight::Failure;
    std::string_view key;
    std::string_view rule{};
    std::string_view type{};
    std::string_view attribute{};
    std::string_view message{};
    std::string_view expected{};
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    std::uint64_t id = 0;
    std::string_view found{};
};

class Collector {
public:
    explicit Collector(std::size_t iMostPlaces) : m_iMostPlaces(iMostPlaces) {}

    void vAdd(const Failure& failure);
    // Takes over what another one, of a later part of the file or of another thread, has found.
    void vMerge(Collector&& other);
    // Failures of a level, notes aside.
    [[nodiscard]] std::uint64_t iFailures(CheckLevel level) const noexcept;
    [[nodiscard]] std::uint64_t iNotes(CheckLevel level) const noexcept;

    // Ends the collecting: sorts, and moves everything to "result": groups, counts of levels.
    void vFinish(CheckResult& result);

private:
    CheckGroup& groupOf(const Failure& failure);
    void vCount(const CheckGroup& group, std::uint64_t iCount) noexcept;

    std::size_t m_iMostPlaces;
    std::size_t m_iPlaces = 0;
    std::uint64_t m_iLeftOut = 0;
    std::vector<CheckGroup> m_groups;
    std::unordered_map<std::string, std::size_t> m_groupOf;   // by all that equal failures have in common
    std::array<std::uint64_t, checkLevelCount> m_failures{};
    std::array<std::uint64_t, checkLevelCount> m_notes{};
    std::string m_sKey;   // kept for its memory
};

}   // namespace oxa::check
