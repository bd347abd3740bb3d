// SPDX-License-Identifier: Apache-2.0
// RuleRun: the program, asked of the house of RuleHouse.h.
//
// For      the tests of list, props and tree by their rules.
// Threads  one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "RuleHouse.h"
#include "tools/ProgramRun.h"

namespace oxa::test {

// The house on standard input; "words" begin with the verb.
inline ProgramRun runOn(std::string_view schema, std::vector<std::string> words) {
    words.insert(words.begin() + 1, "-");
    return runProgram(words, sRuleHouse(schema));
}

inline bool boOneLine(const std::string& text) { return !text.empty() && text.find('\n') == text.size() - 1; }

// The numbers of rows, in their order.
inline std::string sIds(const Json& rows) {
    std::string sText;
    for (const Json& row : rows) sText.append(sText.empty() ? "" : " ").append(row["id"].dump());
    return sText;
}

// All objects and types of the house.
inline constexpr const char* g_pRuleObjects = "9 20 21 22 23 24 29 30 31 32 33 34 40 41 42 43 45 50 60 62 140 142 144";

}   // namespace oxa::test
