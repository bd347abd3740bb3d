// SPDX-License-Identifier: Apache-2.0
// Explain: why a condition is FALSE: the parts of it that made it so, each with its value, as "SIZEOF(Segments) = 0".
//
// For      RuleCheck, behind the evaluation of a condition, in whose memory it works.
// Not for  what stands inside of a QUERY: its result is the part.
// Threads  as the evaluator that is handed in. Numbers of instances are asked of the model.
#pragma once

#include <functional>
#include <string>

#include "Check/Rules/Evaluator.h"
#include "platform/Export.h"

namespace oxa::check::rules {

// The parts of the condition with their values, "; " between two. Empty where none has a value of its own.
// "evaluate": gives the value of a node in the frame of the condition.
[[nodiscard]] std::string sReason(Evaluator& evaluator, const Node& condition,
                                  const std::function<Value(const Node&)>& evaluate);

// A value as a reader of the text would write it: 'text', .T., #12=IfcWall, [1, 2], ?; cut where it is long.
[[nodiscard]] OXA_CHECK_API std::string sValueText(Evaluator& evaluator, const Value& value);

}   // namespace oxa::check::rules
