// SPDX-License-Identifier: Apache-2.0
// RuleLevel: the level "rules" of a check: the model is read, the rules of its schema are evaluated, failures collected.
//
// For      Check.cpp, behind the levels that need no model.
// Memory   the model, and what is wrong.
// Threads  as CheckOptions::threads says.
#pragma once

#include <iosfwd>
#include <string>

#include "Check/Check.h"
#include "Check/Collector.h"
#include "Check/Syntax/InstanceTable.h"

namespace oxa::check {

struct RuleLevelResult {
    std::string sAgainst;   // why not all could be evaluated; empty where all was
    CheckRuleCounts counts;
};

// "bytes" stands at the file's beginning. "instances" has the lines of instances by their numbers.
// Throws Stopped.
[[nodiscard]] RuleLevelResult ruleLevel(std::istream& bytes, const ifc::def::SchemaPset& schema,
                                        const CheckOptions& options, InstanceTable& instances, Collector& collector);

}   // namespace oxa::check
