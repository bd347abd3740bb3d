// SPDX-License-Identifier: Apache-2.0
#include "platform/Assert.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace oxa {
namespace {

// Puts the service back as it was found.
class AssertService : public testing::Test {
protected:
    void TearDown() override {
        Assert::setHandler({});
        Assert::setEnabled(m_boEnabledBefore);
    }

    static AssertHandler appendTo(std::vector<std::string>& log, std::string sName) {
        return [&log, sName = std::move(sName)](const AssertInfo& info) {
            log.push_back(sName + " " + std::string(info.text));
        };
    }
    static void vAssert(std::string_view text) { Assert::addAssert("unit", "Class::vCall", text, 7); }

    const bool m_boEnabledBefore = Assert::isEnabled();
    std::vector<std::string> m_log;
};

using Lines = std::vector<std::string>;

const bool g_boEnabledAtStart = Assert::isEnabled();   // before any test

TEST_F(AssertService, IsOnInDebugBuildsAlone) {
#if defined(NDEBUG)
    EXPECT_FALSE(g_boEnabledAtStart);
#else
    EXPECT_TRUE(g_boEnabledAtStart);
#endif
}

TEST_F(AssertService, IsSwitched) {
    Assert::setEnabled(true);
    EXPECT_TRUE(Assert::isEnabled());
    Assert::setEnabled(false);
    EXPECT_FALSE(Assert::isEnabled());
}

TEST_F(AssertService, HandsOnWhatItWasGiven) {
    std::string sAll;
    Assert::setHandler([&sAll](const AssertInfo& info) {
        sAll = std::string(info.source) + '|' + std::string(info.function) + '|' + std::string(info.text) + '|' +
               std::to_string(info.iLine);
    });
    Assert::addAssert("Format/Ifc/IfcFileEntity", "Entity::boValueSet", "out of range", 81);
    EXPECT_EQ(sAll, "Format/Ifc/IfcFileEntity|Entity::boValueSet|out of range|81");
}

TEST_F(AssertService, TellsWithTheLineOfTheCallWhileOn) {
    std::string sAll;
    Assert::setHandler([&sAll](const AssertInfo& info) {
        sAll += std::string(info.source) + '|' + std::string(info.function) + '|' + std::string(info.text) + '|' +
                std::to_string(info.iLine) + '\n';
    });
    Assert::setEnabled(false);
    Assert::vTell("unit", "Class::vCall", "not heard");
    EXPECT_EQ(sAll, "");
    Assert::setEnabled(true);
    const int iLine = __LINE__ + 1;
    Assert::vTell("unit", "Class::vCall", "heard");
    Assert::vTell("unit", "Class::vCall", "of another line", 81);
    EXPECT_EQ(sAll, "unit|Class::vCall|heard|" + std::to_string(iLine) + "\nunit|Class::vCall|of another line|81\n");
}

TEST_F(AssertService, WritesOneLineWithoutAHandler) {
    struct Row {
        const char* sRule;
        std::string text;
        const char* sLine;
    };
    const Row rows[] = {
        {"the text as it is", "no schema", "Assert in Class::vCall (unit, line 7): no schema\n"},
        {"no text", "", "Assert in Class::vCall (unit, line 7): \n"},
        {"the last of the controls, the first that is none", "a\x1F!", "Assert in Class::vCall (unit, line 7): a !\n"},
        {"no further line", "a\r\nb", "Assert in Class::vCall (unit, line 7): a  b\n"},
        {"no terminal control", "\x1B[2J\x7F", "Assert in Class::vCall (unit, line 7):  [2J \n"},
        {"UTF-8 stays", "T\u00FCr", "Assert in Class::vCall (unit, line 7): T\u00FCr\n"},
        {"no end at a zero byte", std::string("a\0b", 3), "Assert in Class::vCall (unit, line 7): a b\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        testing::internal::CaptureStderr();
        vAssert(row.text);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), row.sLine);
    }
}

TEST_F(AssertService, AHandlerStandsInPlaceOfTheLine) {
    Assert::setHandler(appendTo(m_log, "global"));
    testing::internal::CaptureStderr();
    vAssert("1");
    {
        const auto own = Assert::getRegisteredForCurrentThread().registerHandler(appendTo(m_log, "own"));
        vAssert("2");
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(m_log, (Lines{"global 1", "own 2"}));
}

TEST_F(AssertService, AnEmptyHandlerRestoresTheDefault) {
    Assert::setHandler(appendTo(m_log, "global"));
    Assert::setHandler({});
    testing::internal::CaptureStderr();
    vAssert("x");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Assert in Class::vCall (unit, line 7): x\n");
    EXPECT_EQ(m_log, Lines{});
}

TEST_F(AssertService, TheThreadsHandlerGoesFirstUntilItsScopeEnds) {
    Assert::setHandler(appendTo(m_log, "global"));
    vAssert("1");
    {
        const auto outer = Assert::getRegisteredForCurrentThread().registerHandler(appendTo(m_log, "outer"));
        vAssert("2");
        {
            const auto inner = Assert::getRegisteredForCurrentThread().registerHandler(appendTo(m_log, "inner"));
            vAssert("3");
        }
        vAssert("4");
        {
            const auto none = Assert::getRegisteredForCurrentThread().registerHandler({});
            vAssert("5");
        }
        vAssert("6");
    }
    vAssert("7");
    EXPECT_EQ(m_log, (Lines{"global 1", "outer 2", "inner 3", "outer 4", "global 5", "outer 6", "global 7"}));
}

TEST_F(AssertService, TheScopeEndsWithAnException) {
    try {
        const auto scope = Assert::getRegisteredForCurrentThread().registerHandler(
            [](const AssertInfo& info) { throw std::runtime_error(std::string(info.text)); });
        vAssert("passes through");
        FAIL() << "the handler's exception was lost";
    } catch (const std::runtime_error& fault) {
        EXPECT_STREQ(fault.what(), "passes through");
    }
    EXPECT_FALSE(Assert::getRegisteredForCurrentThread().handler());
}

TEST_F(AssertService, AHandlerMayPutAnotherInItsPlace) {
    Assert::setHandler([this](const AssertInfo& info) {
        const std::string sOwn = "first";
        Assert::setHandler(appendTo(m_log, "second"));
        m_log.push_back(sOwn + " " + std::string(info.text));
    });
    vAssert("1");
    vAssert("2");
    EXPECT_EQ(m_log, (Lines{"first 1", "second 2"}));
}

// What a handler owns is destroyed when the handler is replaced, and must not find the service locked.
TEST_F(AssertService, WhatAFormerHandlerOwnsMayAssert) {
    struct AssertsAtItsEnd {
        ~AssertsAtItsEnd() { vAssert("end"); }
    };
    Assert::setHandler([pOwned = std::make_shared<AssertsAtItsEnd>()](const AssertInfo&) {});
    Assert::setHandler(appendTo(m_log, "new"));
    EXPECT_EQ(m_log, Lines{"new end"});
}

TEST_F(AssertService, AThreadsHandlerHearsOfNoOtherThread) {
    std::atomic<int> iGlobal{0};
    Assert::setHandler([&iGlobal](const AssertInfo&) { iGlobal.fetch_add(1, std::memory_order_relaxed); });
    constexpr int g_iThreads = 4, g_iAsserts = 200;
    std::vector<int> heard(g_iThreads, 0);   // each written by its own thread alone
    {
        std::vector<std::jthread> threads;
        for (int& iHeard : heard)
            threads.emplace_back([&iHeard] {
                const auto scope =
                    Assert::getRegisteredForCurrentThread().registerHandler([&iHeard](const AssertInfo&) { ++iHeard; });
                for (int i = 0; i < g_iAsserts; ++i) vAssert("own");
            });
        for (int i = 0; i < g_iAsserts; ++i) vAssert("of this thread, which has none");
    }
    EXPECT_EQ(heard, std::vector<int>(g_iThreads, g_iAsserts));
    EXPECT_EQ(iGlobal.load(), g_iAsserts);
}

// Each assertion reaches exactly one of the handlers that stood there in turn.
TEST_F(AssertService, HandlerAndSwitchChangeWhileOthersAssert) {
    std::atomic<int> iFirst{0}, iSecond{0};
    const auto count = [](std::atomic<int>& iCount) {
        return [&iCount](const AssertInfo&) { iCount.fetch_add(1, std::memory_order_relaxed); };
    };
    Assert::setHandler(count(iFirst));
    constexpr int g_iThreads = 3, g_iAsserts = 500;
    {
        std::vector<std::jthread> threads;
        for (int iThread = 0; iThread < g_iThreads; ++iThread)
            threads.emplace_back([] {
                for (int i = 0; i < g_iAsserts; ++i) {
                    static_cast<void>(Assert::isEnabled());
                    vAssert("any");
                }
            });
        for (int i = 0; i < g_iAsserts; ++i) {
            Assert::setHandler(i % 2 ? count(iFirst) : count(iSecond));
            Assert::setEnabled(i % 2 != 0);
        }
    }
    EXPECT_EQ(iFirst.load() + iSecond.load(), g_iThreads * g_iAsserts);
}

}   // namespace
}   // namespace oxa
