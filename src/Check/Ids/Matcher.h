// SPDX-License-Identifier: Apache-2.0
// Matcher: a condition made ready, asked of values.
//
// Numbers  equal within a millionth of the wanted one and a millionth more; ranges that include their bounds are wider by as
//          much, those that do not are narrower. Whole numbers are compared as such.
// Cost     a look at the value, a hash of it among many texts, a pass over it for a pattern.
// Threads  any number at once.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Check/Ids.h"
#include "Check/Ids/Forms.h"
#include "Model/Pattern.h"

namespace oxa {
enum class LogicalValue : std::int32_t;
}   // namespace oxa

namespace oxa::ids::detail {

// Patterns by their texts, each compiled once.
class Patterns {
public:
    /// Memory of all of them together, and of all that were tried.
    static constexpr std::int64_t g_iMostBytes = std::int64_t{1} << 30;
    static constexpr std::int64_t g_iMostTried = g_iMostBytes * 4;
    /// Of one, as it is written.
    static constexpr std::size_t g_iMostLength = 50'000;

    struct Answer {
        std::shared_ptr<const oxa::detail::Pattern> pPattern;   // null where there is a fault
        std::string sFault;
        std::string sNote;
    };
    [[nodiscard]] const Answer& compile(const std::string& sText);

private:
    std::map<std::string, Answer> m_answers;
    std::int64_t m_iBytes = 0;
    std::int64_t m_iTried = 0;
};

class Matcher {
public:
    /// Of no condition: anything matches.
    Matcher() = default;
    /// Patterns that can't be compiled match nothing.
    Matcher(const Condition& condition, Patterns& patterns);

    [[nodiscard]] bool boAny() const noexcept { return m_pCondition == nullptr; }
    [[nodiscard]] const Condition* pCondition() const noexcept { return m_pCondition; }

    [[nodiscard]] bool boText(std::string_view text) const;
    [[nodiscard]] bool boNumber(double value) const;
    [[nodiscard]] bool boInteger(std::int64_t iValue) const;
    [[nodiscard]] bool boBoolean(bool boValue) const;
    [[nodiscard]] bool boLogical(LogicalValue value) const;

private:
    struct Bound {
        std::optional<std::string> sText;
        std::optional<double> number;
        bool boInclusive = true;
        bool boLower = true;
    };
    [[nodiscard]] bool boLength(std::string_view text) const;
    [[nodiscard]] bool boBounds(std::string_view text) const;
    [[nodiscard]] bool boPatterns(std::string_view text) const;
    [[nodiscard]] bool boPlainOnly() const noexcept { return m_patterns.empty() && !m_boLengths; }

    const Condition* m_pCondition = nullptr;
    Base m_eBase = Base::String;
    bool m_boListed = false;   // one of some values
    // Of truth values which are among them: false, true, unknown.
    std::array<bool, 2> m_booleans{};
    std::array<bool, 3> m_logicals{};
    bool m_boLengths = false;
    struct Hash {
        using is_transparent = void;
        [[nodiscard]] std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>()(text);
        }
    };
    std::unordered_set<std::string, Hash, std::equal_to<>> m_texts;
    std::vector<double> m_numbers;          // ascending
    std::vector<std::int64_t> m_integers;   // ascending
    std::vector<Bound> m_bounds;
    std::vector<std::shared_ptr<const oxa::detail::Pattern>> m_patterns;   // null: one that can't be compiled
};

/// How far a number may be from a wanted one.
[[nodiscard]] double tolerance(double wanted) noexcept;

}   // namespace oxa::ids::detail
