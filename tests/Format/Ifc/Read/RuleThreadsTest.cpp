// SPDX-License-Identifier: Apache-2.0
// A threaded read that ends early, and the loop that calls a function on a thread of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include "Core/Utilities/Threads/ThreadedLoop.h"
#include "Format/Ifc/RuleModel.h"

namespace oxa::ifc {
namespace {

// A worker's fatal fault stops the scanner, sooner or later; what it has handed on by then is in the model, without a gap.
TEST(ThreadedReadRules, AFatalFaultLeavesWhatCameInFront) {
    for (const std::size_t iCount : {10U, 300U, 20000U}) {
        std::string sData = "#x=IFCITEM();\n";
        for (std::size_t i = 1; i <= iCount; ++i)
            sData += '#' + std::to_string(i) + "=IFCITEM('a'," + std::to_string(i) + ");\n";
        const ReadFileModel read(sRuleFile(sData), false, schemaIs(ruleSchema()));
        EXPECT_FALSE(read.boRead);
        EXPECT_EQ(reports(read.errors), Texts{"Fatal Syntax 6 Error_ExpectedLeftParenthesis | #x=IFCITEM();"});
        std::set<long long> counts;
        for (const Entity* pEntity : read.file.data().entities()) {
            long long iCountOf = 0;
            EXPECT_TRUE(pEntity->boValueGet(def::schema::AttributeName("Count"), iCountOf));
            counts.insert(iCountOf);
        }
        EXPECT_EQ(counts.size(), read.file.data().entities().size());
        if (!counts.empty()) {
            EXPECT_EQ(*counts.begin(), 1);
            EXPECT_EQ(*counts.rbegin(), static_cast<long long>(counts.size()));
        }
        if (iCount < 200) {
            EXPECT_EQ(counts.size(), iCount);
        }
    }
}

// A fault that the scanner finds stands behind all that it has handed on.
TEST(ThreadedReadRules, AFaultOfTheScannerComesBehindAllThatIsQueued) {
    for (const std::size_t iCount : {10U, 200U, 3333U}) {
        std::string sData;
        for (std::size_t i = 1; i <= iCount; ++i)
            sData += '#' + std::to_string(i) + "=IFCITEM($,$,#" + std::to_string(iCount + 1 - i) + ");\n";
        const ReadFileModel read(sRuleFile(sData + "#1 =IFCITEM()\n="), false, schemaIs(ruleSchema()));
        EXPECT_FALSE(read.boRead);
        EXPECT_EQ(reports(read.errors), Texts{"Fatal Syntax " + std::to_string(7 + iCount) +
                                              " Error_UnexpectedEqualOperator | #1=IFCITEM()"});
        EXPECT_EQ(read.file.data().entities().size(), iCount);
        for (const Entity* pEntity : read.file.data().entities())
            EXPECT_TRUE(pEntity->entitiesInverseFromIndex(0).empty());   // no completion
    }
}

// ---- The loop.

using util::ThreadedLoop;

// What the function answers at each call, and what it sees of boRunning then. Before a second look the loop no longer counts
// as running, and with true it does so again.
struct LoopRow {
    const char* sRule;
    ThreadedLoop::Options options;
    std::string sAnswers;   // "t", "f", "x": throws, "y": throws what is no std::exception
    std::string sRunning;   // "1" or "0"
};

TEST(LoopRules, SecondLooks) {
    const LoopRow rows[] = {
        {"two answers of false end it", {0, false}, "ff", "10"},
        {"work in between", {0, false}, "ftff", "1010"},
        {"answers of true", {0, false}, "tttff", "11110"},
        {"the second look throws", {0, false}, "fx", "10"},
        {"both throw", {0, false}, "xy", "10"},
        {"one throws, the next works", {0, false}, "xtff", "1010"},
        {"a fault at the start ends it at once", {0, true}, "x", "1"},
        {"any other fault too", {2, true}, "y", "1"},
        {"at the start, then the rhythm, and no call at the stop", {2, true}, "tff", "110"},
    };
    for (const LoopRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        std::string sRunning;
        testing::internal::CaptureStderr();
        {
            ThreadedLoop loop;
            std::atomic<bool> boLast{false};
            const auto boCall = [&] {
                const char cAnswer = sRunning.size() < row.sAnswers.size() ? row.sAnswers[sRunning.size()] : 'f';
                sRunning += loop.boRunning() ? '1' : '0';
                boLast = sRunning.size() >= row.sAnswers.size();
                if (cAnswer == 'x') throw std::runtime_error("the text");
                if (cAnswer == 'y') throw 5;
                return cAnswer == 't';
            };
            loop.perform({}, boCall, 1, row.options);
            for (int i = 0; i < 60'000 && (!boLast || loop.boRunning()); ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            EXPECT_FALSE(loop.boRunning());
        }
        const std::string sTold = testing::internal::GetCapturedStderr();
        EXPECT_EQ(sRunning, row.sRunning);
        const auto iThrown = std::ranges::count_if(row.sAnswers, [](char c) { return c == 'x' || c == 'y'; });
        EXPECT_EQ(std::ranges::count(sTold, '\n'), iThrown) << sTold;
        EXPECT_EQ(sTold.find("): the text\n") != std::string::npos, row.sAnswers.find('x') != std::string::npos)
            << sTold;
    }
}

}   // namespace
}   // namespace oxa::ifc
