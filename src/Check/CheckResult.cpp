// SPDX-License-Identifier: Apache-2.0
// What a result says as a whole, and its records one by one.
#include <algorithm>
#include <tuple>

#include "Check/Check.h"

namespace oxa {

std::string_view checkLevelName(CheckLevel level) noexcept {
    switch (level) {
    case CheckLevel::Syntax: return "syntax";
    case CheckLevel::Header: return "header";
    case CheckLevel::Schema: return "schema";
    case CheckLevel::Rules: return "rules";
    }
    return {};
}

CheckVerdict CheckResult::verdict() const noexcept {
    using State = CheckLevelSummary::State;
    if (std::any_of(levels.begin(), levels.end(), [](const auto& summary) { return summary.failures > 0; }))
        return CheckVerdict::NotValid;
    const bool boDone = std::none_of(levels.begin(), levels.end(),
                                     [](const auto& summary) { return summary.state == State::NotPossible; });
    const bool boAll =
        std::all_of(rules.begin(), rules.end(), [](const CheckRuleCounts& counts) { return counts.notEvaluated == 0; });
    return boDone && (boAll || level(CheckLevel::Rules).state == State::NotAsked) ? CheckVerdict::Valid
                                                                                  : CheckVerdict::Undecided;
}

std::vector<CheckRecord> CheckResult::records() const {
    std::vector<CheckRecord> all;
    for (const CheckGroup& group : groups)
        for (const CheckPlace& place : group.places) all.push_back({&group, &place});
    // Stable: groups stand in an order, and what is equal here follows it.
    std::stable_sort(all.begin(), all.end(), [](const CheckRecord& a, const CheckRecord& b) {
        const auto order = [](const CheckRecord& record) {
            return std::tuple(record.place->line == 0, record.place->line, record.place->column, record.place->id);
        };
        return order(a) < order(b);
    });
    return all;
}

}   // namespace oxa
