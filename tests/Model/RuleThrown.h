// SPDX-License-Identifier: Apache-2.0
// RuleThrown: what a piece of work threw, as text; and the house of RuleHouse.h as a model.
//
// For      the tests of the short way in by its rules.
// Threads  one.
#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "Model/Model.h"
#include "RuleHouse.h"

namespace oxa::test {

// The message of an exception of that class; else what came instead.
template <class Exception, class Work>
std::string sThrown(Work&& work) {
    try {
        work();
    } catch (const Exception& error) {
        return error.what();
    } catch (const std::exception& error) {
        return std::string("(another exception) ") + error.what();
    }
    return "(no exception)";
}

// Whether a message has all of these in it, and is one line of some sense.
inline testing::AssertionResult boTells(const std::string& message, const std::vector<const char*>& words) {
    if (message.starts_with("(") || message.size() < 10 || message.find('\n') != std::string::npos)
        return testing::AssertionFailure() << message;
    for (const char* pWord : words)
        if (message.find(pWord) == std::string::npos)
            return testing::AssertionFailure() << '"' << pWord << "\" is missing in: " << message;
    return testing::AssertionSuccess();
}

inline Model ruleHouse(std::string_view schema) { return Model::fromBuffer(sRuleHouse(schema)); }

// The numbers of elements, in their order.
inline std::string sNumbers(const Elements& elements) {
    std::string sText;
    for (const Element& element : elements) sText.append(sText.empty() ? "" : " ").append(std::to_string(element.id()));
    return sText;
}

}   // namespace oxa::test
