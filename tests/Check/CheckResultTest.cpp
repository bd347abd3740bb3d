// SPDX-License-Identifier: Apache-2.0
// Failures are grouped by what they have in common, counted beyond what is kept, and told in the order of the file.
#include <gtest/gtest.h>

#include <string>

#include "Check/Check.h"
#include "Check/Collector.h"

namespace oxa {
namespace {

using State = CheckLevelSummary::State;

check::Failure failure(CheckLevel level, std::string_view key, std::uint64_t line, std::string_view type = {}) {
    return {.level = level, .key = key, .type = type, .message = "m", .line = line, .column = 2, .found = "f"};
}

// "syntax A x2: 3 7 | schema B IfcWall x1: 5": level, key, type, count and the lines of the places.
std::string sGroups(const CheckResult& result) {
    std::string sAll;
    for (const CheckGroup& group : result.groups) {
        if (!sAll.empty()) sAll += " | ";
        sAll.append(checkLevelName(group.level)).append(" ").append(group.key);
        if (!group.type.empty()) sAll.append(" ").append(group.type);
        sAll += " x" + std::to_string(group.count) + ":";
        for (const CheckPlace& place : group.places) sAll += ' ' + std::to_string(place.line);
    }
    return sAll;
}

TEST(CheckCollector, GroupsEqualFailuresInTheOrderOfTheFile) {
    check::Collector collector(100);
    collector.vAdd(failure(CheckLevel::Schema, "B", 5, "IfcWall"));
    collector.vAdd(failure(CheckLevel::Syntax, "A", 7));
    collector.vAdd(failure(CheckLevel::Schema, "B", 1, "IfcSlab"));
    collector.vAdd(failure(CheckLevel::Syntax, "A", 3));
    collector.vAdd(failure(CheckLevel::Syntax, "W", 0));
    CheckResult result;
    collector.vFinish(result);
    EXPECT_EQ(sGroups(result), "syntax A x2: 3 7 | syntax W x1: 0 | schema B IfcSlab x1: 1 | schema B IfcWall x1: 5");
    EXPECT_EQ(result.level(CheckLevel::Syntax).failures, 3U);
    EXPECT_EQ(result.level(CheckLevel::Schema).failures, 2U);
    std::string sLines;
    for (const CheckRecord& record : result.records()) sLines += std::to_string(record.place->line) + record.group->key;
    EXPECT_EQ(sLines, "1B3A5B7A0W");
}

TEST(CheckCollector, CountsWhatItDoesNotKeep) {
    check::Collector collector(2);
    for (std::uint64_t i = 1; i <= 5; ++i) collector.vAdd(failure(CheckLevel::Syntax, "A", i));
    CheckResult result;
    collector.vFinish(result);
    EXPECT_EQ(sGroups(result), "syntax A x5: 1 2");
    EXPECT_EQ(result.placesLeftOut, 3U);
}

TEST(CheckCollector, KeepsOfAGroupTheFirstInTheFile) {
    check::Collector collector(100, 3);
    for (const std::uint64_t i : {9U, 0U, 4U, 8U, 2U, 7U, 1U, 6U}) collector.vAdd(failure(CheckLevel::Schema, "A", i));
    collector.vAdd(failure(CheckLevel::Schema, "B", 5));
    CheckResult result;
    collector.vFinish(result);
    EXPECT_EQ(sGroups(result), "schema A x8: 1 2 4 | schema B x1: 5");
    EXPECT_EQ(result.placesLeftOut, 0U) << "the groups say it";
    EXPECT_EQ(result.level(CheckLevel::Schema).failures, 9U);
}

TEST(CheckCollector, CountsBeforeItAsksForWhatStandsThere) {
    check::Collector collector(4, 2);
    std::string sKept;
    for (std::uint64_t i = 1; i <= 4; ++i)
        for (const std::string_view key : {"A", "B", "C"})
            if (collector.boCount(failure(CheckLevel::Rules, key, i))) {
                sKept.append(key) += std::to_string(i);
                collector.vPlace(failure(CheckLevel::Rules, key, i));
            }
    EXPECT_EQ(sKept, "A1B1C1A2");
    CheckResult result;
    collector.vFinish(result);
    EXPECT_EQ(sGroups(result), "rules A x4: 1 2 | rules B x4: 1 | rules C x4: 1");
    EXPECT_EQ(result.placesLeftOut, 6U);
}

TEST(CheckCollector, MadeUpNamesMakeNoEndOfGroups) {
    check::Collector collector(0);
    for (std::size_t i = 0; i < check::g_iMaxGroups + 1000; ++i)
        collector.vAdd(failure(CheckLevel::Schema, "A", 1, "T" + std::to_string(i)));
    CheckResult result;
    collector.vFinish(result);
    EXPECT_EQ(result.groups.size(), check::g_iMaxGroups + 1);
    EXPECT_EQ(result.level(CheckLevel::Schema).failures, check::g_iMaxGroups + 1000);
}

// What became of syntax and of rules, how many rules were not evaluated, failures and notes.
struct VerdictRow {
    const char* sRule;
    State rules;
    std::uint64_t iNotEvaluated;
    std::uint64_t iFailures;
    std::uint64_t iNotes;
    CheckVerdict verdict;
};
const VerdictRow g_verdicts[] = {
    {"all was done, nothing fails", State::Done, 0, 0, 0, CheckVerdict::Valid},
    {"a level that nobody asked for keeps nothing open", State::NotAsked, 0, 0, 0, CheckVerdict::Valid},
    {"so do its rules", State::NotAsked, 7, 0, 0, CheckVerdict::Valid},
    {"a level that could not be done does", State::NotPossible, 0, 0, 0, CheckVerdict::Undecided},
    {"one rule that was not evaluated does", State::Done, 1, 0, 0, CheckVerdict::Undecided},
    {"a failure decides, whatever is open", State::NotPossible, 1, 1, 0, CheckVerdict::NotValid},
    {"a note takes no validity away", State::Done, 0, 0, 1, CheckVerdict::Valid},
};

TEST(CheckVerdict, IsValidOnlyWhereAllWasDone) {
    for (const VerdictRow& row : g_verdicts) {
        SCOPED_TRACE(row.sRule);
        CheckResult result;
        result.levels[0] = {State::Done, {}, row.iFailures, row.iNotes};
        result.levels[3] = {row.rules, {}, 0, 0};
        result.rules.push_back({"IFC4", 10, 10 - row.iNotEvaluated, 0, row.iNotEvaluated});
        EXPECT_EQ(result.verdict(), row.verdict);
    }
}

}   // namespace
}   // namespace oxa
