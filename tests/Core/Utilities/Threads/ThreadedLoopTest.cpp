// SPDX-License-Identifier: Apache-2.0
#include "Core/Utilities/Threads/ThreadedLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "platform/Assert.h"

namespace oxa::util {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int g_iNever = 3'600'000;   // an interval that no test waits for
constexpr auto g_soon = 60s;          // far more than anything here takes; a loop that hangs fails instead

template <class Condition>
bool boComesTrue(Condition&& condition) {
    for (const auto end = Clock::now() + g_soon; Clock::now() < end; std::this_thread::sleep_for(1ms))
        if (condition()) return true;
    return false;
}

// Counts its calls; answers true as long as there is more to come.
struct Counter {
    std::atomic<int> m_iCalls{0};
    std::function<bool()> function() {
        return [this] { return ++m_iCalls, true; };
    }
};

struct RhythmRow {
    const char* sRule;
    ThreadedLoop::Options options;
    bool boAtStart;
    bool boAtStop;
};
const RhythmRow g_rhythmRows[] = {
    {"not enabled: 0", {0, false}, false, false},       {"not enabled: 1", {1, false}, false, false},
    {"not enabled: 2", {2, false}, false, false},       {"0: at the start", {0, true}, true, false},
    {"1: at the stop", {1, true}, false, true},         {"2: at both", {2, true}, true, true},
    {"any other: at neither", {3, true}, false, false},
};

TEST(ThreadedLoop, CallsOutsideOfItsRhythmAsTold) {
    for (const RhythmRow& row : g_rhythmRows) {
        SCOPED_TRACE(row.sRule);
        Counter counter;
        std::atomic<bool> boFirst{false};
        ThreadedLoop loop;
        loop.perform([&boFirst] { boFirst = true; }, counter.function(), g_iNever, row.options);
        ASSERT_TRUE(boComesTrue([&] { return boFirst && counter.m_iCalls >= row.boAtStart; }));
        // A call too many would come within the next moments.
        std::this_thread::sleep_for(5ms);
        EXPECT_EQ(counter.m_iCalls, row.boAtStart ? 1 : 0);
        loop.vStop();
        EXPECT_EQ(counter.m_iCalls, row.boAtStart + row.boAtStop);
    }
}

TEST(ThreadedLoop, CallsAgainAndAgainUntilStopped) {
    for (const int iInterval : {-1, 0, 1, 10}) {
        SCOPED_TRACE(iInterval);
        Counter counter;
        ThreadedLoop loop;
        loop.perform({}, counter.function(), iInterval, {});
        EXPECT_TRUE(boComesTrue([&] { return counter.m_iCalls >= 5; }));
        EXPECT_TRUE(loop.boRunning());
        loop.vStop();
        EXPECT_FALSE(loop.boRunning());
        const int iCalls = counter.m_iCalls;
        std::this_thread::sleep_for(15ms);
        EXPECT_EQ(counter.m_iCalls, iCalls) << "called after the stop";
    }
}

TEST(ThreadedLoop, WaitsForItsIntervalBetweenTwoCalls) {
    constexpr auto g_interval = 20ms;
    std::vector<Clock::time_point> calls;
    std::atomic<std::size_t> iCalls{0};
    ThreadedLoop loop;
    const auto start = Clock::now();
    loop.perform({},
                 [&] {
                     calls.push_back(Clock::now());
                     return ++iCalls, true;
                 },
                 g_interval.count(), {});
    ASSERT_TRUE(boComesTrue([&] { return iCalls >= 4; }));
    loop.vStop();
    EXPECT_GE(calls.front() - start, g_interval);
    for (std::size_t i = 1; i < calls.size(); ++i) EXPECT_GE(calls[i] - calls[i - 1], g_interval) << "call " << i;
}

TEST(ThreadedLoop, IsWokenByTheStop) {
    for (const bool boByDestructor : {false, true}) {
        SCOPED_TRACE(boByDestructor);
        Counter counter;
        auto pLoop = std::make_unique<ThreadedLoop>();
        pLoop->perform({}, counter.function(), g_iNever, {2, true});
        ASSERT_TRUE(boComesTrue([&] { return counter.m_iCalls == 1; }));
        const auto start = Clock::now();
        if (!boByDestructor) pLoop->vStop();
        pLoop.reset();
        EXPECT_LT(Clock::now() - start, g_soon);
        EXPECT_EQ(counter.m_iCalls, 2);
    }
}

TEST(ThreadedLoop, RunsTheFirstFunctionOnceOnItsOwnThread) {
    std::vector<std::string> order;
    std::thread::id first;
    std::thread::id loopId;
    std::atomic<int> iCalls{0};
    ThreadedLoop loop;
    loop.perform(
        [&] {
            order.emplace_back("first");
            first = std::this_thread::get_id();
        },
        [&] {
            order.emplace_back("call");
            loopId = std::this_thread::get_id();
            return ++iCalls < 3;
        },
        0, {0, true});
    ASSERT_TRUE(boComesTrue([&] { return iCalls == 4; }));
    loop.vStop();
    EXPECT_EQ(order, (std::vector<std::string>{"first", "call", "call", "call", "call"}));
    EXPECT_EQ(first, loopId);
    EXPECT_NE(first, std::this_thread::get_id());
}

// What the calls answer, and how many come before the loop ends by itself.
struct AnswerRow {
    const char* sRule;
    ThreadedLoop::Options options;
    std::vector<bool> answers;   // false ever after
    int iCalls;
};
const AnswerRow g_answerRows[] = {
    {"false at the start ends it without a second look", {0, true}, {}, 1},
    {"and without the call at the stop", {2, true}, {}, 1},
    {"false in the rhythm is asked for once more", {1, false}, {}, 2},
    {"two times false end it", {0, true}, {true, true}, 4},
    {"true at the second look goes on", {0, false}, {false, true}, 4},
    {"each time anew", {0, false}, {false, true, false, true, true, false, true}, 9},
};

TEST(ThreadedLoop, EndsByItselfWhenThereIsNothingMoreToCome) {
    for (const AnswerRow& row : g_answerRows) {
        SCOPED_TRACE(row.sRule);
        std::atomic<int> iCalls{0};
        ThreadedLoop loop;
        const auto function = [&] {
            const auto iCall = static_cast<std::size_t>(iCalls++);
            return iCall < row.answers.size() && row.answers[iCall];
        };
        loop.perform({}, function, 0, row.options);
        ASSERT_TRUE(boComesTrue([&] { return iCalls == row.iCalls && !loop.boRunning(); }));
        loop.vStop();
        EXPECT_EQ(iCalls, row.iCalls) << "a loop that ended makes no call at the stop";
    }
}

// Work that is queued before the flag falls is done, however close the two are: the second look finds it.
TEST(ThreadedLoop, LosesNoWorkThatComesBeforeTheEnd) {
    for (int iRound = 0; iRound < 300; ++iRound) {
        std::atomic<int> iQueued{0};
        std::atomic<bool> boActive{true};
        ThreadedLoop loop;
        const auto function = [&] {
            iQueued = 0;   // does all there is,
            std::this_thread::yield();
            return boActive.load();   // and looks at the flag later
        };
        loop.perform({}, function, 0, {0, false});
        iQueued = 1;
        boActive = false;
        ASSERT_TRUE(boComesTrue([&] { return iQueued == 0; })) << "round " << iRound;
        ASSERT_TRUE(boComesTrue([&] { return !loop.boRunning(); })) << "round " << iRound;
    }
}

struct TextFault : std::runtime_error {
    using runtime_error::runtime_error;
};
// The functions are objects, so that their type's name is known.
struct ThrowsText {
    std::atomic<int>* piCalls;
    bool operator()() const {
        if (++*piCalls == 2) throw TextFault("no more paper");
        return true;
    }
};
struct ThrowsNumber {
    std::atomic<int>* piCalls;
    bool operator()() const {
        if (++*piCalls == 2) throw 42;
        return true;
    }
};

template <class Function>
std::string sWrittenBy() {
    std::atomic<int> iCalls{0};
    testing::internal::CaptureStderr();
    {
        ThreadedLoop loop;
        loop.perform({}, Function{&iCalls}, 0, {});
        EXPECT_TRUE(boComesTrue([&] { return iCalls >= 5; })) << "the second look says go on";
        EXPECT_TRUE(boComesTrue([&] { return loop.boRunning(); }));
    }
    return testing::internal::GetCapturedStderr();
}

TEST(ThreadedLoop, WritesWhatIsThrownAndGoesOn) {
    EXPECT_EQ(sWrittenBy<ThrowsText>(),
              "Assert in ThreadedLoop(" + std::string(typeid(ThrowsText).name()) + "): no more paper\n");
    EXPECT_EQ(sWrittenBy<ThrowsNumber>(), "Assert in ThreadedLoop(" + std::string(typeid(ThrowsNumber).name()) + ")\n");
}

TEST(ThreadedLoop, TakesAnExceptionForFalse) {
    std::atomic<int> iCalls{0};
    testing::internal::CaptureStderr();
    {
        ThreadedLoop loop;
        loop.perform({},
                     [&]() -> bool {
                         ++iCalls;
                         throw 1;
                     },
                     0, {2, true});
        ASSERT_TRUE(boComesTrue([&] { return iCalls == 1 && !loop.boRunning(); }));
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_EQ(iCalls, 1);
    testing::internal::GetCapturedStderr();
}

TEST(ThreadedLoop, AssertsAFunction) {
    const bool boEnabledBefore = Assert::isEnabled();
    for (const bool boEnabled : {true, false}) {
        SCOPED_TRACE(boEnabled);
        std::vector<std::string> texts;
        Assert::setEnabled(boEnabled);
        Assert::setHandler([&texts](const AssertInfo& info) {
            texts.push_back(std::string(info.function) + '|' + std::string(info.text));
        });
        std::atomic<bool> boFirst{false};
        {
            ThreadedLoop loop;
            loop.perform([&boFirst] { boFirst = true; }, {}, 0, {2, true});
            EXPECT_FALSE(loop.boRunning());
        }
        EXPECT_FALSE(boFirst) << "nothing starts";
        EXPECT_EQ(texts, boEnabled ? std::vector<std::string>{"oxa::util::ThreadedLoop::perform|"
                                                              "Assert: Function is empty"}
                                   : std::vector<std::string>{});
    }
    Assert::setHandler({});
    Assert::setEnabled(boEnabledBefore);
}

TEST(ThreadedLoop, StopsTheFormerWorkBeforeItStartsTheNext) {
    Counter former;
    Counter next;
    ThreadedLoop loop;
    loop.perform({}, former.function(), g_iNever, {2, true});
    ASSERT_TRUE(boComesTrue([&] { return former.m_iCalls == 1; }));
    loop.perform({}, next.function(), g_iNever, {0, true});
    EXPECT_EQ(former.m_iCalls, 2);
    EXPECT_TRUE(boComesTrue([&] { return next.m_iCalls == 1; }));
    loop.vStop();
    EXPECT_EQ(former.m_iCalls, 2);
}

TEST(ThreadedLoop, MayBeStoppedWithoutEverHavingRun) {
    ThreadedLoop loop;
    loop.vStop();
    loop.vStop();
    EXPECT_FALSE(loop.boRunning());
}

}   // namespace
}   // namespace oxa::util
