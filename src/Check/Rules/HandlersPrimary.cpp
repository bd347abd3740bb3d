// SPDX-License-Identifier: Apache-2.0
// Primaries: names, what stands behind a dot or in brackets, aggregates, QUERY, constructors and calls.
#include <algorithm>

#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "Check/Rules/Handlers.h"

namespace oxa::check::rules::run {

namespace {

// The place that an index means; -1 outside.
long long iPlaceOf(Evaluator& evaluator, const Value& aggregate, const Value& index) {
    if (index.kind != Kind::Integer) return -1;
    const long long iPlace = index.iInteger - iFirstIndex(aggregate);
    if (iPlace < 0) return -1;
    // The first item of a chain is at hand without its count.
    if (iPlace == 0 && aggregate.kind == Kind::Items && aggregate.pItems->m_eItemType == ifc::AttributeType::Entity)
        return aggregate.pItems->pEntities() ? 0 : -1;
    return iPlace < static_cast<long long>(iItems(evaluator, aggregate)) ? iPlace : -1;
}

Value bitsOf(Evaluator& evaluator, const Value& binary, std::size_t iFirst, std::size_t iLast) {
    if (iLast >= binary.iCount) return {};
    const std::size_t iCount = iLast - iFirst + 1;
    auto* pBytes = evaluator.pMake<unsigned char>((iCount + 7) / 8);
    if (!pBytes) return {};
    for (std::size_t i = 0; i < iCount; ++i) {
        const std::size_t iBit = iFirst + i;
        if ((binary.pBytes[iBit / 8] >> (7 - iBit % 8)) & 1)
            pBytes[i / 8] = static_cast<unsigned char>(pBytes[i / 8] | (0x80U >> (i % 8)));
    }
    Value result;
    result.kind = Kind::Binary;
    result.pBytes = pBytes;
    result.iCount = static_cast<std::uint32_t>(iCount);
    return result;
}

// Characters or bits, from 1.
Value partOf(Evaluator& evaluator, const Value& base, long long iFirst, long long iLast) {
    if (iFirst < 1 || iLast < iFirst || !boStepText(evaluator, base)) return {};
    const auto iBegin = static_cast<std::size_t>(iFirst - 1);
    const auto iEnd = static_cast<std::size_t>(iLast - 1);
    if (base.kind == Kind::Binary) return bitsOf(evaluator, base, iBegin, iEnd);
    if (iEnd >= iCharacters(base.text())) return {};
    return valueOf(charactersOf(base.text(), iBegin, iEnd));
}

// Calls found(item) for the items of the source for which the condition is TRUE.
template <class Found>
bool boQuery(Evaluator& evaluator, const Node& node, const Value& source, Found&& found) {
    // Its own, for a query inside of a query may have the same variable.
    const Value outer = evaluator.slot(node.iPlace, 0);
    vForEachItem(evaluator, source, [&](const Value& item) {
        evaluator.slot(node.iPlace, 0) = item;
        const Value result = evaluator.run(*node.pSecond);
        if (result.kind != Kind::Logical && !result.boNull()) evaluator.fail("the condition of QUERY is no logical");
        if (result.kind == Kind::Logical && result.eLogical == Logical::True) found(item);
        return !evaluator.boFailed();
    });
    evaluator.slot(node.iPlace, 0) = outer;
    return !evaluator.boFailed();
}

bool boQueried(Evaluator& evaluator, const Value& source) {
    if (source.boAggregate()) return true;
    if (!source.boNull()) evaluator.fail("QUERY over what is no aggregate");
    return false;
}

}   // namespace

Value constant(Evaluator&, const Node& node) { return node.value; }

Value self(Evaluator& evaluator, const Node&) { return evaluator.frame().self; }

Value variable(Evaluator& evaluator, const Node& node) { return evaluator.slot(node.iPlace, node.iHops); }

Value routineValue(Evaluator& evaluator, const Node& node) {
    return evaluator.runRoutine(*node.pRoutine, Value(), nullptr, 0, nullptr);
}

Value ownAttribute(Evaluator& evaluator, const Node& node) {
    return attributeOf(evaluator, evaluator.frame().self, node.iPlace);
}

Value attribute(Evaluator& evaluator, const Node& node) {
    return attributeOf(evaluator, evaluator.run(*node.pFirst), node.iPlace);
}

Value group(Evaluator& evaluator, const Node& node) {
    const Value base = evaluator.run(*node.pFirst);
    return boIsOf(base, *node.pEntity) ? base : Value();
}

Value groupAttribute(Evaluator& evaluator, const Node& node) {
    const Value base = evaluator.run(*node.pFirst);
    return boIsOf(base, *node.pEntity) ? attributeOf(evaluator, base, node.iPlace) : Value();
}

Value index(Evaluator& evaluator, const Node& node) {
    const Value base = evaluator.run(*node.pFirst);
    if (base.boNull()) return {};
    const Value place = evaluator.run(*node.pSecond);
    if (place.boNull()) return {};
    if (place.kind != Kind::Integer) return evaluator.fail("an index is no integer");
    if (base.kind == Kind::String || base.kind == Kind::Binary)
        return partOf(evaluator, base, place.iInteger, place.iInteger);
    if (!base.boAggregate()) return evaluator.fail("an index behind what is no aggregate");
    const long long iPlace = iPlaceOf(evaluator, base, place);
    return iPlace < 0 ? Value() : itemAt(evaluator, base, static_cast<std::size_t>(iPlace));
}

Value indexRange(Evaluator& evaluator, const Node& node) {
    const Value base = evaluator.run(*node.pFirst);
    const Value first = evaluator.run(*node.pSecond);
    const Value last = evaluator.run(*node.pThird);
    if (base.boNull() || first.boNull() || last.boNull()) return {};
    if (first.kind != Kind::Integer || last.kind != Kind::Integer) return evaluator.fail("an index is no integer");
    if (base.kind == Kind::String || base.kind == Kind::Binary)
        return partOf(evaluator, base, first.iInteger, last.iInteger);
    return evaluator.fail("a range of indexes behind what is neither STRING nor BINARY");
}

Value aggregate(Evaluator& evaluator, const Node& node) {
    Aggregate* pResult = evaluator.pMakeAggregate(AggregateKind::Literal, node.operands.size());
    if (!pResult) return {};
    for (const Node* pOperand : node.operands) {
        long long iTimes = 1;
        const Node* pItem = pOperand;
        if (pOperand->pRun == &repeated) {
            pItem = pOperand->pFirst;
            const Value times = evaluator.run(*pOperand->pSecond);
            if (times.kind != Kind::Integer) return {};
            iTimes = times.iInteger;
        }
        const Value item = shared(evaluator.run(*pItem));
        for (; iTimes > 0; --iTimes)
            if (!evaluator.boStep() || !evaluator.boAppend(*pResult, item)) return {};
    }
    return valueOf(pResult);
}

Value repeated(Evaluator& evaluator, const Node&) { return evaluator.fail("a repetition outside of an aggregate"); }

Value query(Evaluator& evaluator, const Node& node) {
    const Value source = evaluator.run(*node.pFirst);
    if (!boQueried(evaluator, source)) return {};
    Aggregate* pResult = evaluator.pMakeAggregate(aggregateKind(source), 0);
    if (!pResult) return {};
    const auto vFound = [&](const Value& item) { evaluator.boAppend(*pResult, item); };
    return boQuery(evaluator, node, source, vFound) ? valueOf(pResult) : Value();
}

Value queryCount(Evaluator& evaluator, const Node& node) {
    const Value source = evaluator.run(*node.pFirst);
    if (!boQueried(evaluator, source)) return {};
    long long iCount = 0;
    return boQuery(evaluator, node, source, [&](const Value&) { ++iCount; }) ? valueOf(iCount) : Value();
}

// The own attributes of the type get the arguments; those of supertypes come by "||".
Value construct(Evaluator& evaluator, const Node& node) {
    const schema::Entity& type = *node.pEntity;
    const std::size_t iAll = type.allAttributes().size();
    auto* pInstance = evaluator.pMake<Instance>();
    if (!pInstance) return {};
    pInstance->pType = &type;
    pInstance->iCount = static_cast<std::uint32_t>(iAll);
    pInstance->pValues = evaluator.pMake<Value>(iAll ? iAll : 1);
    if (!pInstance->pValues) return {};
    const std::size_t iFirst = iAll - node.operands.size();
    for (std::size_t i = 0; i < node.operands.size(); ++i)
        pInstance->pValues[iFirst + i] = shared(evaluator.run(*node.operands[i]));
    return evaluator.boFailed() ? Value() : valueOf(pInstance);
}

Value callFunction(Evaluator& evaluator, const Node& node) {
    constexpr std::size_t g_iUsual = 8;
    Value few[g_iUsual];
    std::vector<Value> many;
    Value* pArguments = few;
    if (node.operands.size() > g_iUsual) {
        many.resize(node.operands.size());
        pArguments = many.data();
    }
    for (std::size_t i = 0; i < node.operands.size(); ++i) pArguments[i] = shared(evaluator.run(*node.operands[i]));
    if (evaluator.boFailed()) return {};
    return evaluator.runRoutine(*node.pRoutine, Value(), pArguments, node.operands.size(), nullptr);
}

namespace {

// One part of a complex instance joined with one of its supertypes or subtypes; null where they are unrelated.
Instance* pJoined(Evaluator& evaluator, const Instance& a, const Instance& b) {
    const bool boBelow = schema::boIsSubtype(b.pType, a.pType);
    if (!boBelow && !schema::boIsSubtype(a.pType, b.pType)) return nullptr;
    const Instance& lower = boBelow ? b : a;
    const Instance& upper = boBelow ? a : b;
    auto* pResult = evaluator.pMake<Instance>();
    if (!pResult) return nullptr;
    *pResult = lower;
    pResult->pNext = nullptr;
    pResult->boShared = false;
    pResult->pValues = evaluator.pMake<Value>(std::max<std::uint32_t>(lower.iCount, 1));
    if (!pResult->pValues) return nullptr;
    std::copy_n(lower.pValues, lower.iCount, pResult->pValues);
    // The supertypes' attributes stand first.
    for (std::uint32_t i = 0; i < upper.iCount; ++i)
        if (pResult->pValues[i].boNull()) pResult->pValues[i] = upper.pValues[i];
    return pResult;
}

// An instance of the model as one that can be put together.
const Instance* pAsInstance(Evaluator& evaluator, const Value& value) {
    if (value.kind == Kind::Instance) return value.pInstance;
    const schema::Entity& type = *value.pEntity->pSchemaEntity();
    auto* pResult = evaluator.pMake<Instance>();
    if (!pResult) return nullptr;
    pResult->pType = &type;
    pResult->iCount = static_cast<std::uint32_t>(type.allAttributes().size());
    pResult->pValues = evaluator.pMake<Value>(std::max<std::uint32_t>(pResult->iCount, 1));
    if (!pResult->pValues) return nullptr;
    for (std::uint32_t i = 0; i < pResult->iCount; ++i) pResult->pValues[i] = explicitAt(evaluator, value, i);
    return pResult;
}

}   // namespace

Value compose(Evaluator& evaluator, const Node& node) {
    const Value left = evaluator.run(*node.pFirst);
    const Value right = evaluator.run(*node.pSecond);
    if (left.boNull() || right.boNull()) return {};
    if (!pEntityTypeOf(left) || !pEntityTypeOf(right)) return evaluator.fail("\"||\" between what is no instance");
    const Instance* pLeft = pAsInstance(evaluator, left);
    const Instance* pRight = pLeft ? pAsInstance(evaluator, right) : nullptr;
    if (!pRight) return {};
    if (Instance* pResult = pJoined(evaluator, *pLeft, *pRight)) {
        pResult->pNext = pLeft->pNext ? pLeft->pNext : pRight->pNext;
        return valueOf(pResult);
    }
    if (evaluator.boFailed()) return {};
    // Unrelated types: both are parts of one instance.
    auto* pHead = evaluator.pMake<Instance>();
    auto* pTail = evaluator.pMake<Instance>();
    if (!pHead || !pTail) return {};
    *pHead = *pRight;
    *pTail = *pLeft;
    pHead->pNext = pTail;
    return valueOf(pHead);
}

}   // namespace oxa::check::rules::run
