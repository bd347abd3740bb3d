// SPDX-License-Identifier: Apache-2.0
// The operators of aggregates (ISO 10303-11, 12.6): an aggregate with another one, or with an item.
#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "Check/Rules/Handlers.h"

namespace oxa::check::rules::run {

namespace {

// What the result is: the kind of the left operand, or of the right one where the left is an item or "[...]".
AggregateKind resultKind(const Value& left, const Value& right) {
    const AggregateKind eLeft = left.boAggregate() ? aggregateKind(left) : AggregateKind::Literal;
    const AggregateKind eRight = right.boAggregate() ? aggregateKind(right) : AggregateKind::Literal;
    return eLeft == AggregateKind::Literal ? eRight : eLeft;
}

bool boAddItem(Evaluator& evaluator, Aggregate& result, const Value& item) {
    return result.kind == AggregateKind::Set ? boInsert(evaluator, result, item) : evaluator.boAppend(result, item);
}

bool boAddAll(Evaluator& evaluator, Aggregate& result, const Value& operand) {
    if (!operand.boAggregate()) return boAddItem(evaluator, result, operand);
    vForEachItem(evaluator, operand, [&](const Value& item) { return boAddItem(evaluator, result, item); });
    return !evaluator.boFailed();
}

// The items as a SET, which is found in by hash.
Aggregate* pAsSet(Evaluator& evaluator, const Value& operand) {
    Aggregate* pResult = evaluator.pMakeAggregate(AggregateKind::Set, 0);
    return pResult && boAddAll(evaluator, *pResult, operand) ? pResult : nullptr;
}

// The items of the left operand that are, or are not, among those of the right one. Of a BAG each partner counts once.
Value kept(Evaluator& evaluator, const Value& left, const Value& right, bool boCommon) {
    Aggregate* pRight = pAsSet(evaluator, right);
    const AggregateKind kind = boCommon ? resultKind(left, right) : aggregateKind(left);
    Aggregate* pResult = pRight ? evaluator.pMakeAggregate(kind, 0) : nullptr;
    if (!pResult) return {};
    std::vector<std::uint32_t> counts(pRight->iCount);   // partners that are left
    if (right.boAggregate())
        vForEachItem(evaluator, right, [&](const Value& item) {
            const std::uint32_t iAt = iFind(evaluator, *pRight, item);
            if (iAt < counts.size()) ++counts[iAt];
            return true;
        });
    else
        counts.assign(counts.size(), 1);
    const bool boCounts = kind == AggregateKind::Bag;
    vForEachItem(evaluator, left, [&](const Value& item) {
        const std::uint32_t iAt = iFind(evaluator, *pRight, item);
        const bool boThere = iAt < counts.size() && counts[iAt] > 0;
        if (boThere && boCounts) --counts[iAt];
        return boThere != boCommon || boAddItem(evaluator, *pResult, item);
    });
    return evaluator.boFailed() ? Value() : valueOf(pResult);
}

}   // namespace

Value unionOf(Evaluator& evaluator, const Value& left, const Value& right) {
    const AggregateKind kind = resultKind(left, right);
    if (kind == AggregateKind::Array) return evaluator.fail("\"+\" with an ARRAY");
    Aggregate* pResult = evaluator.pMakeAggregate(kind, 0);
    if (!pResult || !boAddAll(evaluator, *pResult, left) || !boAddAll(evaluator, *pResult, right)) return {};
    return valueOf(pResult);
}

Value differenceOf(Evaluator& evaluator, const Value& left, const Value& right) {
    return kept(evaluator, left, right, false);
}

Value intersectionOf(Evaluator& evaluator, const Value& left, const Value& right) {
    if (!right.boAggregate()) return evaluator.fail("\"*\" of an aggregate and an item");
    return kept(evaluator, left, right, true);
}

// Whether each item of the one is among those of the other, as often in a BAG.
Value isSubset(Evaluator& evaluator, const Value& part, const Value& whole) {
    if (part.boNull() || whole.boNull()) return valueOf(Logical::Unknown);
    if (!part.boAggregate() || !whole.boAggregate()) return evaluator.fail("a subset of what is no aggregate");
    const Value rest = differenceOf(evaluator, part, whole);
    return rest.boNull() ? valueOf(Logical::Unknown) : valueOf(rest.pAggregate->iCount == 0);
}

}   // namespace oxa::check::rules::run
