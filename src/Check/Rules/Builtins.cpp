// SPDX-License-Identifier: Apache-2.0
// Built-in functions (ISO 10303-11, 15), a row each. What is asked of "?" is "?" where the row's function does not say more.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "Check/Rules/Handlers.h"
#include "Format/Ifc/IfcNumbers.h"

namespace oxa::check::rules::run {

namespace {

Value argument(Evaluator& evaluator, const Node& node, std::size_t i) { return evaluator.run(*node.operands[i]); }

// A function of one number.
template <double (*function)(double)>
Value ofNumber(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull()) return {};
    return value.boNumber() ? ofReal(function(value.fNumber())) : evaluator.fail("its argument is no number");
}

Value absolute(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull()) return {};
    if (value.kind == Kind::Real) return valueOf(std::abs(value.fReal));
    if (value.kind == Kind::Integer) return valueOf(value.iInteger < 0 ? -value.iInteger : value.iInteger);
    return evaluator.fail("the argument of ABS is no number");
}

Value arcTangent(Evaluator& evaluator, const Node& node) {
    const Value y = argument(evaluator, node, 0);
    const Value x = argument(evaluator, node, 1);
    if (y.boNull() || x.boNull()) return {};
    if (!y.boNumber() || !x.boNumber()) return evaluator.fail("an argument of ATAN is no number");
    if (y.fNumber() == 0.0 && x.fNumber() == 0.0) return {};
    return ofReal(x.fNumber() == 0.0 ? std::copysign(std::acos(-1.0) / 2, y.fNumber())
                                     : std::atan(y.fNumber() / x.fNumber()));
}

Value bitLength(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull()) return {};
    return value.kind == Kind::Binary ? valueOf(static_cast<long long>(value.iCount))
                                      : evaluator.fail("the argument of BLENGTH is no binary");
}

Value exists(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    return evaluator.boFailed() ? Value() : valueOf(!value.boNull());
}

Value format(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    const Value picture = argument(evaluator, node, 1);
    if (value.boNull() || picture.boNull()) return {};
    if (!value.boNumber() || picture.kind != Kind::String) return evaluator.fail("FORMAT takes a number and a string");
    return formatted(evaluator, value, picture.text());
}

// Indexes and bounds of an aggregate, as the rows of the table name them.
enum class Edge { LowBound, HighBound, LowIndex, HighIndex };

template <Edge edge>
Value edgeOf(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull()) return {};
    if (!value.boAggregate()) return evaluator.fail("its argument is no aggregate");
    const Bounds bounds = boundsOf(value);
    const long long iFirst = iFirstIndex(value);
    const long long iLast = iFirst + static_cast<long long>(iItems(evaluator, value)) - 1;
    const bool boArray = aggregateKind(value) == AggregateKind::Array;
    switch (edge) {
    case Edge::LowBound: return valueOf(bounds.boDeclared || boArray ? bounds.iLow : 0LL);
    case Edge::HighBound:
        if (boArray) return valueOf(iLast);
        return bounds.iHigh >= 0 ? valueOf(bounds.iHigh) : Value();
    case Edge::LowIndex: return valueOf(iFirst);
    case Edge::HighIndex: return valueOf(iLast);
    }
    return {};
}

Value length(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull() || !boStepText(evaluator, value)) return {};
    return value.kind == Kind::String ? valueOf(static_cast<long long>(iCharacters(value.text())))
                                      : evaluator.fail("the argument of LENGTH is no string");
}

Value nvl(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    return value.boNull() && !evaluator.boFailed() ? argument(evaluator, node, 1) : value;
}

Value odd(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull()) return {};
    return value.kind == Kind::Integer ? valueOf(value.iInteger % 2 != 0)
                                       : evaluator.fail("the argument of ODD is no integer");
}

Value sizeOf(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull()) return {};
    return value.boAggregate() ? valueOf(static_cast<long long>(iItems(evaluator, value)))
                               : evaluator.fail("the argument of SIZEOF is no aggregate");
}

// A text that is a literal of EXPRESS, with a sign or without.
Value numberOf(Evaluator& evaluator, const Node& node) {
    const Value value = argument(evaluator, node, 0);
    if (value.boNull()) return {};
    if (value.kind != Kind::String) return evaluator.fail("the argument of VALUE is no string");
    std::string_view text = value.text();
    if (text.starts_with('+')) text.remove_prefix(1);
    const char* const pEnd = text.data() + text.size();
    long long iValue = 0;
    const auto whole = std::from_chars(text.data(), pEnd, iValue);
    if (!text.empty() && whole.ec == std::errc() && whole.ptr == pEnd) return valueOf(iValue);
    const auto real = ifc::toDouble(text.data(), pEnd);
    return real ? ofReal(*real) : Value();
}

Value valueIn(Evaluator& evaluator, const Node& node) {
    const Value aggregate = argument(evaluator, node, 0);
    const Value item = argument(evaluator, node, 1);
    if (aggregate.boNull() || item.boNull()) return valueOf(Logical::Unknown);
    if (!aggregate.boAggregate()) return evaluator.fail("the first argument of VALUE_IN is no aggregate");
    Logical eResult = Logical::False;
    vForEachItem(evaluator, aggregate, [&](const Value& candidate) {
        eResult = std::max(eResult, equal(evaluator, candidate, item));
        return eResult != Logical::True;
    });
    return evaluator.boFailed() ? Value() : valueOf(eResult);
}

// Items that are told by hash are compared with few others; instances and aggregates with all of their kind.
Value valueUnique(Evaluator& evaluator, const Node& node) {
    const Value aggregate = argument(evaluator, node, 0);
    if (aggregate.boNull()) return valueOf(Logical::Unknown);
    if (!aggregate.boAggregate()) return evaluator.fail("the argument of VALUE_UNIQUE is no aggregate");
    Aggregate* pPlain = evaluator.pMakeAggregate(AggregateKind::Set, 0);
    if (!pPlain) return {};
    std::vector<Value> others;
    Logical eResult = Logical::True;
    vForEachItem(evaluator, aggregate, [&](const Value& item) {
        if (item.boNull()) {
            eResult = std::min(eResult, Logical::Unknown);
            return true;
        }
        if (!item.boAggregate() && !pEntityTypeOf(item)) {
            const std::uint32_t iBefore = pPlain->iCount;
            if (!boInsert(evaluator, *pPlain, item)) return false;
            if (pPlain->iCount == iBefore) eResult = Logical::False;
            return eResult != Logical::False;
        }
        for (const Value& other : others) {
            const Logical eEqual = equal(evaluator, item, other);
            if (eEqual == Logical::Unknown) eResult = std::min(eResult, eEqual);
            if (eEqual == Logical::True) eResult = Logical::False;
            if (!evaluator.boStep() || eResult == Logical::False) return false;
        }
        others.push_back(item);
        return true;
    });
    return evaluator.boFailed() ? Value() : valueOf(eResult);
}

double fSine(double f) { return std::sin(f); }
double fCosine(double f) { return std::cos(f); }
double fTangent(double f) { return std::tan(f); }
double fArcSine(double f) { return std::asin(f); }
double fArcCosine(double f) { return std::acos(f); }
double fExponential(double f) { return std::exp(f); }
double fRoot(double f) { return std::sqrt(f); }
double fLog(double f) { return std::log(f); }
double fLog2(double f) { return std::log2(f); }
double fLog10(double f) { return std::log10(f); }

constexpr Builtin g_builtins[] = {
    {"ABS", 1, 1, absolute},
    {"ACOS", 1, 1, ofNumber<fArcCosine>},
    {"ASIN", 1, 1, ofNumber<fArcSine>},
    {"ATAN", 2, 2, arcTangent},
    {"BLENGTH", 1, 1, bitLength},
    {"COS", 1, 1, ofNumber<fCosine>},
    {"EXISTS", 1, 1, exists},
    {"EXP", 1, 1, ofNumber<fExponential>},
    {"FORMAT", 2, 2, format},
    {"HIBOUND", 1, 1, edgeOf<Edge::HighBound>},
    {"HIINDEX", 1, 1, edgeOf<Edge::HighIndex>},
    {"LENGTH", 1, 1, length},
    {"LOBOUND", 1, 1, edgeOf<Edge::LowBound>},
    {"LOG", 1, 1, ofNumber<fLog>},
    {"LOG10", 1, 1, ofNumber<fLog10>},
    {"LOG2", 1, 1, ofNumber<fLog2>},
    {"LOINDEX", 1, 1, edgeOf<Edge::LowIndex>},
    {"NVL", 2, 2, nvl},
    {"ODD", 1, 1, odd},
    {"ROLESOF", 1, 1, rolesOf},
    {"SIN", 1, 1, ofNumber<fSine>},
    {"SIZEOF", 1, 1, sizeOf},
    {"SQRT", 1, 1, ofNumber<fRoot>},
    {"TAN", 1, 1, ofNumber<fTangent>},
    {"TYPEOF", 1, 1, typeOf},
    {"USEDIN", 2, 2, usedIn},
    {"VALUE", 1, 1, numberOf},
    {"VALUE_IN", 2, 2, valueIn},
    {"VALUE_UNIQUE", 1, 1, valueUnique},
};

}   // namespace

std::span<const Builtin> builtins() noexcept { return g_builtins; }

}   // namespace oxa::check::rules::run
