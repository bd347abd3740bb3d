// SPDX-License-Identifier: Apache-2.0
#include "platform/Utilities.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "system/System.h"

namespace oxa {
namespace {

static_assert(std::is_base_of_v<std::exception, exception>);

TEST(Exception, KeepsItsText) {
    const std::string sText = "returning nullptr";
    try {
        throw exception(sText);
    } catch (const std::exception& fault) {
        EXPECT_STREQ(fault.what(), "returning nullptr");
        return;
    }
    FAIL() << "not caught as std::exception";
}

TEST(Debugger, BreakIsHarmlessWithoutADebugger) {
    Debugger::vBreak();   // SIGTRAP would end the program here
    SUCCEED();
}

TEST(Debugger, LeavesNoFileOpen) {
    const std::size_t iBefore = test::iOpenFiles();
    Debugger::vBreak();
    EXPECT_EQ(test::iOpenFiles(), iBefore);
}

}   // namespace
}   // namespace oxa
