// SPDX-License-Identifier: Apache-2.0
// Pattern: a regular expression of a user.
//
// For      selectors, and what checks texts by expressions. The time of a match grows with the length of the text alone,
//          whatever the expression (RE2), and an expression that needs more memory than it may take is refused.
// Threads  a finished one is read-only.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"

namespace re2 {
class RE2;
}   // namespace re2

namespace oxa::detail {

class OXA_MODEL_API Pattern {
public:
    static constexpr std::int64_t g_iMostBytes = 1 << 20;

    explicit Pattern(std::string_view text, std::int64_t iMostBytes = g_iMostBytes);
    ~Pattern();
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    /// What is wrong with the expression; empty for a good one.
    [[nodiscard]] const std::string& error() const noexcept;
    /// Whether it is refused for its memory alone.
    [[nodiscard]] bool boTooLarge() const noexcept;
    /// As it was written.
    [[nodiscard]] const std::string& text() const noexcept;
    /// Whether all of the text matches.
    [[nodiscard]] bool boMatches(std::string_view text) const;

private:
    std::unique_ptr<const re2::RE2> m_pRegex;
};

}   // namespace oxa::detail
