// SPDX-License-Identifier: Apache-2.0
// Compare: when two values are equal, and when they are the same (ISO 10303-11, 12.2).
//
// For      the relations, IN, sets, VALUE_UNIQUE and UNIQUE clauses.
// Threads  as the evaluator that is handed in.
#pragma once

#include "Check/Rules/Evaluator.h"
#include "Check/Rules/Value.h"

namespace oxa::check::rules {

// "=": instances by their attributes, however deep.
[[nodiscard]] Logical equal(Evaluator& evaluator, const Value& a, const Value& b);
// ":=:": instances by identity, all else as "=".
[[nodiscard]] Logical same(Evaluator& evaluator, const Value& a, const Value& b);
// -1, 0 or 1 where two plain values have an order; boKnown is false where they have none.
struct Order {
    int iSign = 0;
    bool boKnown = false;
};
[[nodiscard]] Order order(const Value& a, const Value& b) noexcept;

// Equal for values that are the same.
[[nodiscard]] std::uint64_t uHash(const Value& value) noexcept;

// The place of the item in an aggregate that the evaluation made, or its count. In a large SET by its hash.
[[nodiscard]] std::uint32_t iFind(Evaluator& evaluator, const Aggregate& aggregate, const Value& item);
// Appends an item to a SET unless it is there. False after a fault.
bool boInsert(Evaluator& evaluator, Aggregate& set, const Value& item);

}   // namespace oxa::check::rules
