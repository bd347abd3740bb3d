// SPDX-License-Identifier: Apache-2.0
// Operators (ISO 10303-11, 12.1 to 12.5): arithmetic, three-valued logic, comparisons.
#include <algorithm>
#include <cmath>
#include <limits>

#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "Check/Rules/Handlers.h"
#include "platform/Compiler.h"

namespace oxa::check::rules::run {

namespace {

// As an operand of logic: what has no value counts as UNKNOWN.
Logical logicalOf(Evaluator& evaluator, const Value& value) {
    if (value.kind == Kind::Logical) return value.eLogical;
    if (!value.boNull()) evaluator.fail("an operand of AND, OR, XOR or NOT is no logical");
    return Logical::Unknown;
}

Logical negated(Logical eValue) {
    return static_cast<Logical>(static_cast<int>(Logical::True) - static_cast<int>(eValue));
}

struct Operands {
    Value left, right;
    bool boNull = false;
};

Operands operandsOf(Evaluator& evaluator, const Node& node) {
    Operands result{evaluator.run(*node.pFirst), evaluator.run(*node.pSecond)};
    result.boNull = result.left.boNull() || result.right.boNull();
    return result;
}

bool boNumbers(Evaluator& evaluator, const Operands& operands) {
    if (operands.left.boNumber() && operands.right.boNumber()) return true;
    evaluator.fail("an operand of arithmetic is no number");
    return false;
}

bool boIntegers(const Operands& operands) {
    return operands.left.kind == Kind::Integer && operands.right.kind == Kind::Integer;
}

using IntegerOperation = bool (*)(long long, long long, long long&);
using RealOperation = double (*)(double, double);

// What does not fit into an integer has no value.
Value arithmetic(Evaluator& evaluator, const Operands& operands, IntegerOperation boInteger, RealOperation fReal) {
    if (operands.boNull || !boNumbers(evaluator, operands)) return {};
    if (!boIntegers(operands)) return ofReal(fReal(operands.left.fNumber(), operands.right.fNumber()));
    long long iResult = 0;
    return boInteger(operands.left.iInteger, operands.right.iInteger, iResult) ? valueOf(iResult) : Value();
}

Value joined(Evaluator& evaluator, const Value& left, const Value& right) {
    const std::string_view a = left.text();
    const std::string_view b = right.text();
    char* pText = evaluator.pMake<char>(a.size() + b.size() + 1);
    if (!pText) return {};
    std::copy(b.begin(), b.end(), std::copy(a.begin(), a.end(), pText));
    return valueOf(std::string_view(pText, a.size() + b.size()));
}

Value joinedBits(Evaluator& evaluator, const Value& left, const Value& right) {
    const std::uint32_t iCount = left.iCount + right.iCount;
    auto* pBytes = evaluator.pMake<unsigned char>(iCount / 8 + 1);
    if (!pBytes) return {};
    for (std::uint32_t i = 0; i < iCount; ++i) {
        const Value& from = i < left.iCount ? left : right;
        const std::uint32_t iBit = i < left.iCount ? i : i - left.iCount;
        if ((from.pBytes[iBit / 8] >> (7 - iBit % 8)) & 1)
            pBytes[i / 8] = static_cast<unsigned char>(pBytes[i / 8] | (0x80U >> (i % 8)));
    }
    Value result = left;
    result.pBytes = pBytes;
    result.iCount = iCount;
    result.pType = nullptr;
    return result;
}

// Both operands of DIV and MOD as integers; a real is cut.
bool boWhole(Evaluator& evaluator, const Node& node, long long& iLeft, long long& iRight) {
    const Operands operands = operandsOf(evaluator, node);
    if (operands.boNull || !boNumbers(evaluator, operands)) return false;
    const auto boTake = [](const Value& value, long long& iResult) {
        if (value.kind == Kind::Integer) {
            iResult = value.iInteger;
            return true;
        }
        if (std::abs(value.fReal) > 9e18) return false;
        iResult = static_cast<long long>(value.fReal);
        return true;
    };
    return boTake(operands.left, iLeft) && boTake(operands.right, iRight) && iRight != 0 &&
           !(iLeft == std::numeric_limits<long long>::min() && iRight == -1);
}

Value related(const Operands& operands, bool (*boHolds)(int)) {
    if (operands.boNull) return valueOf(Logical::Unknown);
    const Order result = order(operands.left, operands.right);
    return result.boKnown ? valueOf(boHolds(result.iSign)) : valueOf(Logical::Unknown);
}

// Matches a pattern of LIKE (ISO 10303-11, 12.2.5) from the given places on. Its "*" tries one place after the other;
// only the last one has to be tried again.
class Pattern {
public:
    Pattern(Evaluator& evaluator, std::string_view pattern) : m_evaluator(evaluator), m_pattern(pattern) {}

    bool boMatches(std::string_view text) const {
        std::size_t iText = 0;
        std::size_t iPattern = 0;
        std::size_t iStar = std::string_view::npos;
        std::size_t iRetry = 0;
        for (;;) {
            if (!m_evaluator.boStep()) return false;
            if (iPattern == m_pattern.size() && iText == text.size()) return true;
            if (iPattern < m_pattern.size() && m_pattern[iPattern] == '*') {
                iStar = ++iPattern;
                iRetry = iText;
                continue;
            }
            if (iPattern < m_pattern.size() && boOne(text, iText, iPattern)) continue;
            if (iStar == std::string_view::npos || iRetry >= text.size()) return false;
            iText = ++iRetry;
            iPattern = iStar;
        }
    }

private:
    // One element of the pattern against one character, or blanks; moves both places on.
    bool boOne(std::string_view text, std::size_t& iText, std::size_t& iPattern) const {
        std::size_t iAt = iPattern;
        const bool boNot = m_pattern[iAt] == '!' && iAt + 1 < m_pattern.size();
        if (boNot) ++iAt;
        const char cWanted = m_pattern[iAt];
        if (cWanted == '$') return boWord(text, iText, iPattern, iAt + 1);
        if (cWanted == '&' && !boNot) {   // all that is left
            iText = text.size();
            iPattern = iAt + 1;
            return true;
        }
        if (cWanted == '\\' && iAt + 1 < m_pattern.size()) ++iAt;
        if (iText == text.size()) return false;
        const bool boMatch = m_pattern[iAt] != cWanted ? text[iText] == m_pattern[iAt] : boClass(text[iText], cWanted);
        if (boMatch == boNot) return false;
        // A character of several bytes goes as one where the pattern does not name its bytes.
        ++iText;
        if (cWanted == '?' || cWanted == '@' || boNot)
            while (iText < text.size() && (static_cast<unsigned char>(text[iText]) & 0xC0U) == 0x80U) ++iText;
        iPattern = iAt + 1;
        return true;
    }

    // "$": a word up to a blank or the end.
    static bool boWord(std::string_view text, std::size_t& iText, std::size_t& iPattern, std::size_t iBehind) {
        if (iText == text.size() || text[iText] == ' ') return false;
        while (iText < text.size() && text[iText] != ' ') ++iText;
        iPattern = iBehind;
        return true;
    }

    static bool boClass(char c, char cWanted) {
        const bool boLetter =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80U;
        switch (cWanted) {
        case '@': return boLetter;
        case '^': return (c >= 'A' && c <= 'Z');
        case '#': return c >= '0' && c <= '9';
        case '?': return true;
        default: return c == cWanted;
        }
    }

    Evaluator& m_evaluator;
    std::string_view m_pattern;
};

}   // namespace

Value logicalNot(Evaluator& evaluator, const Node& node) {
    return valueOf(negated(logicalOf(evaluator, evaluator.run(*node.pFirst))));
}

Value logicalAnd(Evaluator& evaluator, const Node& node) {
    const Logical eLeft = logicalOf(evaluator, evaluator.run(*node.pFirst));
    if (eLeft == Logical::False) return valueOf(eLeft);
    return valueOf(std::min(eLeft, logicalOf(evaluator, evaluator.run(*node.pSecond))));
}

Value logicalOr(Evaluator& evaluator, const Node& node) {
    const Logical eLeft = logicalOf(evaluator, evaluator.run(*node.pFirst));
    if (eLeft == Logical::True) return valueOf(eLeft);
    return valueOf(std::max(eLeft, logicalOf(evaluator, evaluator.run(*node.pSecond))));
}

Value logicalXor(Evaluator& evaluator, const Node& node) {
    const Logical eLeft = logicalOf(evaluator, evaluator.run(*node.pFirst));
    const Logical eRight = logicalOf(evaluator, evaluator.run(*node.pSecond));
    if (eLeft == Logical::Unknown || eRight == Logical::Unknown) return valueOf(Logical::Unknown);
    return valueOf(eLeft != eRight);
}

Value negate(Evaluator& evaluator, const Node& node) {
    const Value operand = evaluator.run(*node.pFirst);
    if (operand.boNull()) return {};
    if (!operand.boNumber()) return evaluator.fail("an operand of arithmetic is no number");
    if (operand.kind == Kind::Real) return valueOf(-operand.fReal);
    return operand.iInteger == std::numeric_limits<long long>::min() ? Value() : valueOf(-operand.iInteger);
}

Value plus(Evaluator& evaluator, const Node& node) {
    const Value operand = evaluator.run(*node.pFirst);
    if (operand.boNull() || operand.boNumber()) return operand;
    return evaluator.fail("an operand of arithmetic is no number");
}

Value add(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (operands.boNull) return {};
    if (operands.left.boAggregate() || operands.right.boAggregate())
        return unionOf(evaluator, operands.left, operands.right);
    if (operands.left.kind == Kind::String && operands.right.kind == Kind::String)
        return joined(evaluator, operands.left, operands.right);
    if (operands.left.kind == Kind::Binary && operands.right.kind == Kind::Binary)
        return joinedBits(evaluator, operands.left, operands.right);
    return arithmetic(evaluator, operands, platform::boAdded<long long>, [](double a, double b) { return a + b; });
}

Value subtract(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (!operands.boNull && operands.left.boAggregate()) return differenceOf(evaluator, operands.left, operands.right);
    return arithmetic(evaluator, operands, platform::boSubtracted<long long>, [](double a, double b) { return a - b; });
}

Value multiply(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (!operands.boNull && operands.left.boAggregate())
        return intersectionOf(evaluator, operands.left, operands.right);
    return arithmetic(evaluator, operands, platform::boMultiplied<long long>, [](double a, double b) { return a * b; });
}

Value divide(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (operands.boNull || !boNumbers(evaluator, operands) || operands.right.fNumber() == 0.0) return {};
    return ofReal(operands.left.fNumber() / operands.right.fNumber());
}

Value integerDivide(Evaluator& evaluator, const Node& node) {
    long long iLeft = 0;
    long long iRight = 0;
    return boWhole(evaluator, node, iLeft, iRight) ? valueOf(iLeft / iRight) : Value();
}

// (a DIV b) * b + c * (a MOD b) = a, with c = -1 for a negative b (ISO 10303-11, 12.1).
Value modulo(Evaluator& evaluator, const Node& node) {
    long long iLeft = 0;
    long long iRight = 0;
    if (!boWhole(evaluator, node, iLeft, iRight)) return {};
    return valueOf(iRight < 0 ? -(iLeft % iRight) : iLeft % iRight);
}

Value power(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (operands.boNull || !boNumbers(evaluator, operands)) return {};
    if (!boIntegers(operands) || operands.right.iInteger < 0)
        return ofReal(std::pow(operands.left.fNumber(), operands.right.fNumber()));
    long long iResult = 1;
    long long iBase = operands.left.iInteger;
    for (long long i = operands.right.iInteger; i; i >>= 1) {
        if ((i & 1) && !platform::boMultiplied(iResult, iBase, iResult)) return {};
        if (i > 1 && !platform::boMultiplied(iBase, iBase, iBase)) return {};
    }
    return valueOf(iResult);
}

Value isEqual(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    const Logical eResult = equal(evaluator, operands.left, operands.right);
    return valueOf(node.boSecond ? negated(eResult) : eResult);
}

Value isSame(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    const Logical eResult = same(evaluator, operands.left, operands.right);
    return valueOf(node.boSecond ? negated(eResult) : eResult);
}

Value isLess(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (node.boSecond && operands.left.boAggregate()) return isSubset(evaluator, operands.right, operands.left);
    return related(
        operands, node.boSecond ? [](int iSign) { return iSign >= 0; } : [](int iSign) { return iSign < 0; });
}

Value isGreater(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (node.boSecond && operands.left.boAggregate()) return isSubset(evaluator, operands.left, operands.right);
    return related(
        operands, node.boSecond ? [](int iSign) { return iSign <= 0; } : [](int iSign) { return iSign > 0; });
}

Value isIn(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (operands.boNull) return valueOf(Logical::Unknown);
    if (!operands.right.boAggregate()) return evaluator.fail("IN what is no aggregate");
    if (operands.right.kind == Kind::Aggregate && operands.right.pAggregate->iSlots)
        return valueOf(iFind(evaluator, *operands.right.pAggregate, operands.left) !=
                       operands.right.pAggregate->iCount);
    Logical eResult = Logical::False;
    vForEachItem(evaluator, operands.right, [&](const Value& item) {
        eResult = std::max(eResult, same(evaluator, operands.left, item));
        return eResult != Logical::True;
    });
    return valueOf(eResult);
}

Value isLike(Evaluator& evaluator, const Node& node) {
    const Operands operands = operandsOf(evaluator, node);
    if (operands.boNull) return valueOf(Logical::Unknown);
    if (operands.left.kind != Kind::String || operands.right.kind != Kind::String)
        return evaluator.fail("an operand of LIKE is no string");
    return valueOf(Pattern(evaluator, operands.right.text()).boMatches(operands.left.text()));
}

// FALSE where one side fails, whatever the other one is.
Value interval(Evaluator& evaluator, const Node& node) {
    const Value low = evaluator.run(*node.pFirst);
    const Value item = evaluator.run(*node.pSecond);
    const Value high = evaluator.run(*node.pThird);
    const auto holds = [](const Value& a, const Value& b, bool boEqualToo) {
        const Order result = a.boNull() || b.boNull() ? Order() : order(a, b);
        if (!result.boKnown) return Logical::Unknown;
        return result.iSign < 0 || (boEqualToo && result.iSign == 0) ? Logical::True : Logical::False;
    };
    return valueOf(std::min(holds(low, item, (node.iPlace & 1U) != 0), holds(item, high, (node.iPlace & 2U) != 0)));
}

}   // namespace oxa::check::rules::run
