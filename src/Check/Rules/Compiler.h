// SPDX-License-Identifier: Apache-2.0
// Compiler: trees of rules to a program for one schema graph. Names become places, here and never again.
//
// For      whoever runs rules.
// Faults   a rule or a function whose text means nothing to this schema stays in the program with the reason: the rule
//          can't be evaluated. Nothing else suffers.
// Bounded  a text with so many types, names and rules that tables of them would not fit gives no program.
// Threads  one compiler a thread; the program is read-only from then on.
#pragma once

#include <memory>

#include "Check/Express/Tree.h"
#include "Check/Rules/Code.h"
#include "platform/Export.h"

namespace oxa::check::rules {

// "graph" must outlive the program. Takes the trees over. Null for what would be too large.
[[nodiscard]] OXA_CHECK_API std::unique_ptr<const Program> pCompile(const schema::Schema& graph,
                                                                    express::SchemaRules trees);

}   // namespace oxa::check::rules
