// SPDX-License-Identifier: Apache-2.0
// Statements (ISO 10303-11, 13). Values are not shared between variables: who changes an item or an attribute of one
// changes no other, and never the model.
#include <algorithm>

#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "Check/Rules/Handlers.h"

namespace oxa::check::rules::run {

namespace {

// An aggregate that may be changed in place; null after a fault.
Aggregate* pOwnAggregate(Evaluator& evaluator, Value& place) {
    if (place.kind == Kind::Aggregate && !place.pAggregate->boShared) return place.pAggregate;
    if (!place.boAggregate()) {
        if (!place.boNull()) evaluator.fail("an item is assigned to what is no aggregate");
        return nullptr;
    }
    Aggregate* pCopy = evaluator.pMakeAggregate(aggregateKind(place), iItems(evaluator, place));
    if (!pCopy) return nullptr;
    const Bounds bounds = boundsOf(place);
    pCopy->iLow = bounds.iLow;
    pCopy->iBound = bounds.iHigh;
    vForEachItem(evaluator, place, [&](const Value& item) { return evaluator.boAppend(*pCopy, shared(item)); });
    place = valueOf(pCopy);
    return evaluator.boFailed() ? nullptr : pCopy;
}

// The same of an instance: one of the model becomes a copy.
Instance* pOwnInstance(Evaluator& evaluator, Value& place) {
    if (place.kind == Kind::Instance && !place.pInstance->boShared) return place.pInstance;
    const schema::Entity* pType = pEntityTypeOf(place);
    auto* pCopy = pType ? evaluator.pMake<Instance>() : nullptr;
    if (!pCopy) return nullptr;
    pCopy->pType = pType;
    pCopy->iCount = static_cast<std::uint32_t>(pType->allAttributes().size());
    pCopy->pNext = place.kind == Kind::Instance ? place.pInstance->pNext : nullptr;
    pCopy->pValues = evaluator.pMake<Value>(std::max<std::uint32_t>(pCopy->iCount, 1));
    if (!pCopy->pValues) return nullptr;
    for (std::uint32_t i = 0; i < pCopy->iCount; ++i) pCopy->pValues[i] = shared(explicitAt(evaluator, place, i));
    place = valueOf(pCopy);
    return pCopy;
}

// The item's place; a LIST grows by the one behind its last.
Value* pItemPlace(Evaluator& evaluator, Value& place, const Node& index) {
    const Value at = evaluator.run(index);
    Aggregate* pOwn = pOwnAggregate(evaluator, place);
    if (!pOwn) return nullptr;
    if (at.kind != Kind::Integer) {
        evaluator.fail("an index is no integer");
        return nullptr;
    }
    const long long iItem = at.iInteger - iFirstIndex(place);
    const bool boBehind = iItem == pOwn->iCount && pOwn->kind != AggregateKind::Array;
    if (iItem < 0 || (iItem >= pOwn->iCount && !boBehind)) {
        evaluator.fail("an item is assigned outside of its aggregate");
        return nullptr;
    }
    if (boBehind && !evaluator.boAppend(*pOwn, Value())) return nullptr;
    pOwn->pSlots = nullptr;   // its items change their places among hashes
    pOwn->iSlots = 0;
    return &pOwn->pItems[iItem];
}

Value* pAttributePlace(Evaluator& evaluator, Value& place, std::uint32_t iName) {
    Instance* pOwn = pOwnInstance(evaluator, place);
    for (; pOwn; pOwn = pOwn->pNext) {
        const Access& access = evaluator.program().access(*pOwn->pType, iName);
        if (access.way == Access::Way::Cell) return &pOwn->pValues[access.iPosition];
    }
    if (!evaluator.boFailed() && !place.boNull()) evaluator.fail("a value is assigned to no explicit attribute");
    return nullptr;
}

// The place that a target means, in values that nobody else has; null where there is none, which may be no fault.
Value* pPlace(Evaluator& evaluator, const Target& target) {
    Value* pAt = &evaluator.slot(target.iSlot, target.iHops);
    for (const Target::Part& part : target.parts) {
        if (part.pGroup) {
            if (!boIsOf(*pAt, *part.pGroup)) return nullptr;
            continue;
        }
        pAt = part.pIndex ? pItemPlace(evaluator, *pAt, *part.pIndex) : pAttributePlace(evaluator, *pAt, part.iName);
        if (!pAt) return nullptr;
    }
    return pAt;
}

void vStore(Evaluator& evaluator, const Target& target, const Value& value) {
    const Value kept = target.parts.empty() ? evaluator.coerced(value, target.pType) : value;
    if (Value* pAt = pPlace(evaluator, target)) *pAt = shared(kept);
}

// TRUE goes on; false for all else.
bool boHolds(Evaluator& evaluator, const Node& condition) {
    const Value value = evaluator.run(condition);
    if (value.kind == Kind::Logical) return value.eLogical == Logical::True;
    if (!value.boNull()) evaluator.fail("a condition is no logical");
    return false;
}

}   // namespace

Flow assign(Evaluator& evaluator, const Step& step) {
    vStore(evaluator, step.target, evaluator.run(*step.pFirst));
    return Flow::Next;
}

// "v := v + e": in place, so that a loop that gathers items costs as much as it has items.
Flow appendTo(Evaluator& evaluator, const Step& step) {
    const Value item = evaluator.run(*step.pFirst);
    Value& place = evaluator.slot(step.target.iSlot, step.target.iHops);
    const bool boGrows = place.boAggregate() && !item.boNull() && !item.boAggregate();
    if (!boGrows || aggregateKind(place) == AggregateKind::Array) {
        vStore(evaluator, step.target, evaluator.run(*step.pSecond));
        return Flow::Next;
    }
    if (Aggregate* pOwn = pOwnAggregate(evaluator, place)) {
        if (pOwn->kind == AggregateKind::Set)
            boInsert(evaluator, *pOwn, shared(item));
        else
            evaluator.boAppend(*pOwn, shared(item));
    }
    return Flow::Next;
}

Flow caseOf(Evaluator& evaluator, const Step& step) {
    const Value selector = evaluator.run(*step.pFirst);
    for (const CaseCode& action : step.cases)
        for (const Node* pLabel : action.labels)
            if (equal(evaluator, selector, evaluator.run(*pLabel)) == Logical::True)
                return action.pStep->pRun(evaluator, *action.pStep);
    return evaluator.runSteps(step.alternative);
}

Flow compound(Evaluator& evaluator, const Step& step) { return evaluator.runSteps(step.body); }

Flow escape(Evaluator&, const Step&) { return Flow::Escape; }

Flow ifThen(Evaluator& evaluator, const Step& step) {
    return evaluator.runSteps(boHolds(evaluator, *step.pFirst) ? step.body : step.alternative);
}

Flow null(Evaluator&, const Step&) { return Flow::Next; }

// What VAR parameters have become goes back to the places that were handed in.
Flow callProcedure(Evaluator& evaluator, const Step& step) {
    const Node& call = *step.pFirst;
    std::vector<Value> arguments;
    for (const Node* pArgument : call.operands) arguments.push_back(shared(evaluator.run(*pArgument)));
    std::vector<Value> after;
    if (evaluator.boFailed()) return Flow::Return;
    static_cast<void>(evaluator.runRoutine(*call.pRoutine, Value(), arguments.data(), arguments.size(), &after));
    for (std::size_t i = 0; i < step.targets.size() && !evaluator.boFailed(); ++i)
        if (call.pRoutine->parameters[i].boVar) vStore(evaluator, step.targets[i], after[i]);
    return Flow::Next;
}

// INSERT(list, item, position): behind that many items (ISO 10303-11, 16.1).
Flow insertItem(Evaluator& evaluator, const Step& step) {
    const Value item = shared(evaluator.run(*step.pFirst));
    const Value position = evaluator.run(*step.pSecond);
    Value* pAt = pPlace(evaluator, step.target);
    Aggregate* pOwn = pAt ? pOwnAggregate(evaluator, *pAt) : nullptr;
    if (!pOwn || position.kind != Kind::Integer || position.iInteger < 0 || position.iInteger > pOwn->iCount) {
        evaluator.fail("INSERT outside of a list");
        return Flow::Return;
    }
    if (!evaluator.boStep(pOwn->iCount / 16 + 1) || !evaluator.boAppend(*pOwn, item)) return Flow::Return;
    std::rotate(pOwn->pItems + position.iInteger, pOwn->pItems + pOwn->iCount - 1, pOwn->pItems + pOwn->iCount);
    return Flow::Next;
}

// REMOVE(list, position), from 1.
Flow removeItem(Evaluator& evaluator, const Step& step) {
    const Value position = evaluator.run(*step.pFirst);
    Value* pAt = pPlace(evaluator, step.target);
    Aggregate* pOwn = pAt ? pOwnAggregate(evaluator, *pAt) : nullptr;
    if (!pOwn || position.kind != Kind::Integer || position.iInteger < 1 || position.iInteger > pOwn->iCount) {
        evaluator.fail("REMOVE outside of a list");
        return Flow::Return;
    }
    if (!evaluator.boStep(pOwn->iCount / 16 + 1)) return Flow::Return;
    std::copy(pOwn->pItems + position.iInteger, pOwn->pItems + pOwn->iCount, pOwn->pItems + position.iInteger - 1);
    --pOwn->iCount;
    return Flow::Next;
}

namespace {

// The variable of a REPEAT on its way; a loop without one runs until a condition or ESCAPE ends it.
struct Counter {
    Value value, last, step;

    // False where a bound has no value, and such a loop does not run at all.
    bool boStart(Evaluator& evaluator, const Step& loop) {
        value = evaluator.run(*loop.pFirst);
        last = evaluator.run(*loop.pSecond);
        step = loop.pThird ? evaluator.run(*loop.pThird) : valueOf(1LL);
        return value.boNumber() && last.boNumber() && step.boNumber();
    }
    [[nodiscard]] bool boGoesOn() const {
        return step.fNumber() < 0 ? value.fNumber() >= last.fNumber() : value.fNumber() <= last.fNumber();
    }
    void vNext() {
        if (value.kind == Kind::Integer && step.kind == Kind::Integer)
            value.iInteger += step.iInteger;
        else
            value = valueOf(value.fNumber() + step.fNumber());
    }
};

}   // namespace

Flow repeat(Evaluator& evaluator, const Step& step) {
    Counter counter;
    if (step.boCounts && !counter.boStart(evaluator, step)) return Flow::Next;
    Flow result = Flow::Next;
    while (evaluator.boStep()) {
        if (step.boCounts) {
            if (!counter.boGoesOn()) break;
            evaluator.slot(step.iSlot, 0) = counter.value;
        }
        if (step.pWhile && !boHolds(evaluator, *step.pWhile)) break;
        const Flow flow = evaluator.runSteps(step.body);
        if (flow == Flow::Escape) break;
        if (flow == Flow::Return) {
            result = flow;
            break;
        }
        if (step.pUntil && boHolds(evaluator, *step.pUntil)) break;
        if (step.boCounts) counter.vNext();
    }
    return evaluator.boFailed() ? Flow::Return : result;
}

Flow returnValue(Evaluator& evaluator, const Step& step) {
    if (step.pFirst) {
        const Value value = evaluator.run(*step.pFirst);
        evaluator.frame().result = value;
    }
    return Flow::Return;
}

Flow skip(Evaluator&, const Step&) { return Flow::Skip; }

}   // namespace oxa::check::rules::run
