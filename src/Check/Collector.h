// SPDX-License-Identifier: Apache-2.0
// Collector: failures as they are found, grouped.
//
// For      every level: one vAdd a failure. A group is made on first use; equal failures add a place to it.
// Memory   places up to a limit, and of each group up to another one those that stand first in the file; all others are
//          counted. Names that a file makes up are held in groups up to
//          g_iMaxGroups; from there on groups are told by their key alone.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Check/Check.h"

namespace oxa::check {

inline constexpr std::size_t g_iMaxGroups = 20'000;
inline constexpr std::size_t g_iMostFound = 80;   // bytes of the file in a failure

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
    explicit Collector(std::size_t iMostPlaces, std::size_t iMostOfGroup = std::numeric_limits<std::size_t>::max())
        : m_iMostPlaces(iMostPlaces),
          m_iMostOfGroup(iMostOfGroup) {}

    void vAdd(const Failure& failure);
    // In two steps, for whoever has many and finds out only of some what stands there: counts one, and says whether its
    // place is kept. Then vPlace has to be called with it. Failures of one group have to come in the order of the file.
    [[nodiscard]] bool boCount(const Failure& failure);
    void vPlace(const Failure& failure);
    // Failures of a level, notes aside.
    [[nodiscard]] std::uint64_t iFailures(CheckLevel level) const noexcept;
    [[nodiscard]] std::uint64_t iNotes(CheckLevel level) const noexcept;

    // Ends the collecting: sorts, and moves everything to "result": groups, counts of levels.
    void vFinish(CheckResult& result);

private:
    // A group, and how many of its places are kept or will come by vPlace.
    struct Kept {
        CheckGroup group;
        std::size_t iPlaces = 0;
    };
    Kept& groupOf(const Failure& failure);
    void vCount(const CheckGroup& group, std::uint64_t iCount) noexcept;
    [[nodiscard]] bool boRoom(Kept& kept);
    void vReplace(CheckGroup& group, const Failure& failure) const;

    std::size_t m_iMostPlaces;
    std::size_t m_iMostOfGroup;
    std::size_t m_iPlaces = 0;
    std::uint64_t m_iLeftOut = 0;
    std::vector<Kept> m_groups;
    std::unordered_map<std::string, std::size_t> m_groupOf;   // by all that equal failures have in common
    std::array<std::uint64_t, checkLevelCount> m_failures{};
    std::array<std::uint64_t, checkLevelCount> m_notes{};
    std::string m_sKey;   // kept for its memory
};

}   // namespace oxa::check
