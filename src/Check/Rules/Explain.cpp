// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/Explain.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "Check/Express/Printer.h"
#include "Check/Rules/Access.h"
#include "Check/Rules/Handlers.h"

namespace oxa::check::rules {

namespace {

constexpr std::size_t g_iMostText = 60;   // bytes of a text
constexpr std::size_t g_iMostItems = 6;
constexpr std::size_t g_iMostParts = 8;
constexpr std::size_t g_iMostLevels = 3;   // of aggregates in aggregates

std::string sReal(double fValue) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), fValue);
    std::string sResult(buffer.data(), result.ptr);
    const std::size_t iExponent = sResult.find('e');
    if (sResult.find('.') == std::string::npos) sResult.insert(std::min(iExponent, sResult.size()), ".");
    std::replace(sResult.begin(), sResult.end(), 'e', 'E');
    return sResult;
}

// Cut in front of a character, not inside of one.
std::string sQuoted(std::string_view text) {
    std::string sResult = "'";
    std::size_t iEnd = std::min(text.size(), g_iMostText);
    while (iEnd < text.size() && iEnd > 0 && (static_cast<unsigned char>(text[iEnd]) & 0xC0U) == 0x80U) --iEnd;
    sResult += text.substr(0, iEnd);
    return sResult + (iEnd < text.size() ? "...'" : "'");
}

std::string sText(Evaluator& evaluator, const Value& value, std::size_t iLevel);

// With its values in the order of the attributes.
std::string sInstance(Evaluator& evaluator, const Instance& instance, std::size_t iLevel) {
    std::string sResult = instance.pType->sName + '(';
    if (iLevel == g_iMostLevels) return sResult + "...)";
    for (std::uint32_t i = 0; i < instance.iCount; ++i)
        sResult += (i ? ", " : "") + sText(evaluator, instance.pValues[i], iLevel + 1);
    return sResult + ')';
}

std::string sText(Evaluator& evaluator, const Value& value, std::size_t iLevel) {
    switch (value.kind) {
    case Kind::Null: return "?";
    case Kind::Logical:
        return value.eLogical == Logical::True ? "TRUE" : value.eLogical == Logical::False ? "FALSE" : "UNKNOWN";
    case Kind::Integer: return std::to_string(value.iInteger);
    case Kind::Real: return sReal(value.fReal);
    case Kind::String: return sQuoted(value.text());
    case Kind::Binary: return "a binary of " + std::to_string(value.iCount) + " bits";
    case Kind::Enumerator: return value.pText;
    case Kind::Entity:
        return '#' + std::to_string(evaluator.index().data().iIdFromEntity(*value.pEntity)) + '=' +
               value.pEntity->pSchemaEntity()->sName;
    case Kind::Instance: return sInstance(evaluator, *value.pInstance, iLevel);
    case Kind::Items:
    case Kind::Aggregate: break;
    }
    const std::size_t iCount = iItems(evaluator, value);
    if (iLevel == g_iMostLevels) return std::to_string(iCount) + " items";
    std::string sResult = "[";
    for (std::size_t i = 0; i < std::min(iCount, g_iMostItems); ++i)
        sResult += (i ? ", " : "") + sText(evaluator, itemAt(evaluator, value, i), iLevel + 1);
    if (iCount > g_iMostItems) sResult += ", ... " + std::to_string(iCount) + " items";
    return sResult + ']';
}

class Explanation {
public:
    Explanation(Evaluator& evaluator, const std::function<Value(const Node&)>& evaluate)
        : m_evaluator(evaluator),
          m_evaluate(evaluate) {}

    // Goes down to what made the node have the value that it has.
    void vExplain(const Node& node) {
        const bool boLogic = node.pRun == run::logicalAnd || node.pRun == run::logicalOr;
        if (node.pRun == run::logicalNot) return vExplain(*node.pFirst);
        if (boLogic || node.pRun == run::logicalXor) {
            const Value value = m_evaluate(node);
            for (const Node* pPart : {node.pFirst, node.pSecond})
                // Of "a AND b" that is FALSE only what is FALSE counts, of "a OR b" that is TRUE what is TRUE.
                if (!boLogic || boLike(m_evaluate(*pPart), value)) vExplain(*pPart);
            return;
        }
        if (node.pRun == run::isEqual || node.pRun == run::isSame || node.pRun == run::isLess ||
            node.pRun == run::isGreater || node.pRun == run::isIn || node.pRun == run::isLike ||
            node.pRun == run::typeEqual || node.pRun == run::interval) {
            for (const Node* pPart : {node.pFirst, node.pSecond, node.pThird})
                if (pPart) vPart(pPart->pRun == run::typeCount ? *pPart->pFirst : *pPart);
            return;
        }
        // Of a question for types the value that is asked says more than the answer, and of a function its arguments do,
        // where they say anything.
        const std::size_t iParts = m_iParts;
        if (node.pRun == run::typeTest || node.pRun == run::typeCount) vPart(*node.pFirst);
        if (node.pRun == run::callFunction)
            for (const Node* pArgument : node.operands) vPart(*pArgument);
        if (m_iParts > iParts) return;
        vPart(node);
    }

    std::string sResult;

private:
    static bool boLike(const Value& a, const Value& b) {
        return a.kind == Kind::Logical && b.kind == Kind::Logical && a.eLogical == b.eLogical;
    }

    // "text = value", once, of what is no constant. SELF is what the record is about.
    void vPart(const Node& node) {
        if (node.pRun == run::constant || node.pRun == run::self || !node.pSource || m_iParts == g_iMostParts) return;
        const Value value = m_evaluate(node);
        if (m_evaluator.boFailed()) return;
        // Without the parentheses around it.
        const std::string sSource = express::sText(*node.pSource);
        const std::size_t iOuter = node.pSource->iParentheses;
        std::string sPart = sSource.substr(iOuter, sSource.size() - 2 * iOuter);
        sPart += " = " + sText(m_evaluator, value, 0);
        if (sResult.find(sPart) != std::string::npos) return;
        sResult += (sResult.empty() ? "" : "; ") + sPart;
        ++m_iParts;
    }

    Evaluator& m_evaluator;
    const std::function<Value(const Node&)>& m_evaluate;
    std::size_t m_iParts = 0;
};

}   // namespace

std::string sReason(Evaluator& evaluator, const Node& condition, const std::function<Value(const Node&)>& evaluate) {
    Explanation explanation(evaluator, evaluate);
    explanation.vExplain(condition);
    return std::move(explanation.sResult);
}

std::string sValueText(Evaluator& evaluator, const Value& value) { return sText(evaluator, value, 0); }

}   // namespace oxa::check::rules
