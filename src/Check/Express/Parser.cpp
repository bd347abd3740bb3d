// SPDX-License-Identifier: Apache-2.0
// The tokens of the parser, and expressions (ISO 10303-11, 12). Operators of one rank stand in one row of a table.
#include "Check/Express/Parser.h"

#include <span>
#include <utility>

namespace oxa::check::express {

using ifc::def::express::TokenKind;

namespace {

struct OperatorRow {
    std::string_view symbol;   // empty for a word
    Word word;
    Op op;
};

constexpr OperatorRow g_relations[] = {
    {":=:", Word::None, Op::Same},    {":<>:", Word::None, Op::NotSame}, {"=", Word::None, Op::Equal},
    {"<>", Word::None, Op::NotEqual}, {"<=", Word::None, Op::LessEqual}, {">=", Word::None, Op::GreaterEqual},
    {"<", Word::None, Op::Less},      {">", Word::None, Op::Greater},    {"", Word::In, Op::In},
    {"", Word::Like, Op::Like},
};
constexpr OperatorRow g_additions[] = {
    {"+", Word::None, Op::Add},
    {"-", Word::None, Op::Subtract},
    {"", Word::Or, Op::Or},
    {"", Word::Xor, Op::Xor},
};
constexpr OperatorRow g_products[] = {
    {"*", Word::None, Op::Multiply}, {"/", Word::None, Op::Divide}, {"", Word::Div, Op::IntegerDivide},
    {"", Word::Mod, Op::Modulo},     {"", Word::And, Op::And},      {"||", Word::None, Op::Compose},
};
constexpr OperatorRow g_powers[] = {{"**", Word::None, Op::Power}};

// From what binds least to what binds most. A relation and a power stand once, all others in any number.
struct Level {
    std::span<const OperatorRow> rows;
    bool boRepeats;
};
constexpr Level g_levels[] = {{g_relations, false}, {g_additions, true}, {g_products, true}, {g_powers, false}};
constexpr int g_iSimple = 1;   // the level of a simple expression, which holds no relation
constexpr int g_iLevels = 4;

constexpr std::pair<Word, Op> g_wordLiterals[] = {
    {Word::True, Op::True}, {Word::False, Op::False},   {Word::Unknown, Op::Unknown},
    {Word::Self, Op::Self}, {Word::ConstE, Op::ConstE}, {Word::Pi, Op::Pi},
};

}   // namespace

Parser::Parser(std::string_view text, std::vector<ifc::SchemaMessage>& messages) : m_messages(messages), m_lexer(text) {
    vNext();
}

void Parser::vNext() {
    if (m_boFault) return;
    m_token = m_lexer.next();
    m_word = m_token.kind == TokenKind::Word ? wordOf(m_token.text) : Word::None;
    if (m_token.kind == TokenKind::Fault) boFaultAt(m_token.place, std::string(m_token.text));
}

bool Parser::boAt(std::string_view symbol) const noexcept {
    return m_token.kind == TokenKind::Symbol && m_token.text == symbol;
}

bool Parser::boAtName() const noexcept { return m_token.kind == TokenKind::Word && m_word == Word::None; }

bool Parser::boTake(Word word) {
    if (!boAt(word)) return false;
    vNext();
    return true;
}

bool Parser::boTake(std::string_view symbol) {
    if (!boAt(symbol)) return false;
    vNext();
    return true;
}

bool Parser::boExpect(Word word, const char* sSpelled) { return boTake(word) || boExpected(sSpelled); }

bool Parser::boExpect(std::string_view symbol) {
    return boTake(symbol) || boExpected(("\"" + std::string(symbol) + "\"").c_str());
}

bool Parser::boReadName(std::string& sName, const char* sWhat) {
    if (!boAtName()) return boExpected(sWhat);
    sName = m_token.text;
    vNext();
    return true;
}

bool Parser::boFaultAt(Place place, std::string sText) {
    if (!m_boFault) m_messages.push_back({place.iLine, place.iColumn, std::move(sText)});
    m_boFault = true;
    m_token = {TokenKind::End, ifc::def::express::Keyword::None, {}, place};
    m_word = Word::None;
    return false;
}

bool Parser::boExpected(const char* sWhat) {
    const std::string sFound = m_token.kind == TokenKind::End ? "the end" : "\"" + std::string(m_token.text) + "\"";
    return boFaultAt(m_token.place, std::string(sWhat) + " expected instead of " + sFound);
}

// What is read next stands one level deeper. False where that is too deep.
bool Parser::boDeeper() {
    if (m_iDepth < g_iDepthLimit) return true;
    return boFaultAt(m_token.place, "nested too deeply");
}

ExpressionPtr Parser::pMake(Op op, Place place) const {
    auto pNode = std::make_unique<Expression>();
    pNode->op = op;
    pNode->place = place;
    return pNode;
}

// Hangs an operand below; false for none, which was a fault, and where the tree becomes too deep.
bool Parser::boAdd(Expression& parent, ExpressionPtr pOperand) {
    if (!pOperand) return false;
    if (pOperand->iDepth >= g_iDepthLimit) return boFaultAt(pOperand->place, "nested too deeply");
    if (parent.iDepth <= pOperand->iDepth) parent.iDepth = static_cast<unsigned short>(pOperand->iDepth + 1);
    parent.operands.push_back(std::move(pOperand));
    return true;
}

template <class... Operands>
ExpressionPtr Parser::pMakeOf(Op op, Place place, Operands... operands) {
    ExpressionPtr pNode = pMake(op, place);
    return (boAdd(*pNode, std::move(operands)) && ...) ? std::move(pNode) : nullptr;
}

ExpressionPtr Parser::pReadExpression() {
    ExpressionPtr pResult = pExpression();
    if (pResult && m_token.kind != TokenKind::End) {
        boExpected("the end");
        return nullptr;
    }
    return pResult;
}

ExpressionPtr Parser::pExpression() {
    if (!boDeeper()) return nullptr;
    ++m_iDepth;
    ExpressionPtr pResult = pBinary(0);
    --m_iDepth;
    return pResult;
}

bool Parser::boReadOperator(int iLevel, Op& op) {
    for (const OperatorRow& row : g_levels[iLevel].rows) {
        if (row.symbol.empty() ? !boTake(row.word) : !boTake(row.symbol)) continue;
        op = row.op;
        return true;
    }
    return false;
}

ExpressionPtr Parser::pBinary(int iLevel) {
    if (iLevel == g_iLevels) return pUnary();
    ExpressionPtr pLeft = pBinary(iLevel + 1);
    Op op = Op::Equal;
    for (Place place = m_token.place; pLeft && boReadOperator(iLevel, op); place = m_token.place) {
        ExpressionPtr pRight = pBinary(iLevel + 1);
        if (!pRight) return nullptr;
        pLeft = pMakeOf(op, place, std::move(pLeft), std::move(pRight));
        if (!g_levels[iLevel].boRepeats) break;
    }
    return pLeft;
}

ExpressionPtr Parser::pUnary() {
    const Place place = m_token.place;
    Op op = Op::Not;
    if (boTake("-"))
        op = Op::Negate;
    else if (boTake("+"))
        op = Op::Plus;
    else if (!boTake(Word::Not))
        return pQualified(pPrimary());
    if (!boDeeper()) return nullptr;
    ++m_iDepth;
    ExpressionPtr pOperand = pUnary();
    --m_iDepth;
    return pOperand ? pMakeOf(op, place, std::move(pOperand)) : nullptr;
}

ExpressionPtr Parser::pPrimary() {
    if (boAt("(")) return pParenthesized();
    if (boAt("[")) return pAggregate();
    if (boAt("{")) return pInterval();
    if (boAt(Word::Query)) return pQuery();
    // SET and LIST are no names, but a word that is none can't begin a primary either.
    if (boAtName()) return pNamed();
    return pLiteral();
}

// A name, and its arguments where they follow.
ExpressionPtr Parser::pNamed() {
    ExpressionPtr pNode = pMake(Op::Name, m_token.place);
    pNode->sText = m_token.text;
    vNext();
    if (!boTake("(")) return pNode;
    pNode->op = Op::Call;
    if (boTake(")")) return pNode;
    do {
        if (!boAdd(*pNode, pExpression())) return nullptr;
    } while (boTake(","));
    return boExpect(")") ? std::move(pNode) : nullptr;
}

ExpressionPtr Parser::pLiteral() {
    ExpressionPtr pNode = pMake(Op::Indeterminate, m_token.place);
    pNode->sText = m_token.text;
    for (const auto& [word, op] : g_wordLiterals) {
        if (!boTake(word)) continue;
        pNode->op = op;
        pNode->sText.clear();
        return pNode;
    }
    if (boTake("?")) {
        pNode->sText.clear();
        return pNode;
    }
    if (boTake("%")) {
        if (m_token.kind != TokenKind::Number || m_token.text.find_first_not_of("01") != std::string_view::npos) {
            boExpected("a binary literal");
            return nullptr;
        }
        pNode->op = Op::Binary;
        pNode->sText = m_token.text;
    } else if (m_token.kind == TokenKind::Number) {
        pNode->op = pNode->sText.find('.') == std::string::npos ? Op::Integer : Op::Real;
        const std::size_t iRest = pNode->sText.find_first_not_of("0123456789.+-Ee");
        if (iRest != std::string::npos || (pNode->op == Op::Integer && pNode->sText.find_first_of("Ee") != iRest)) {
            boExpected("a number");
            return nullptr;
        }
    } else if (m_token.kind == TokenKind::String) {
        pNode->op = m_token.text.front() == '"' ? Op::Encoded : Op::String;
    } else {
        boExpected("an expression");
        return nullptr;
    }
    vNext();
    return pNode;
}

ExpressionPtr Parser::pParenthesized() {
    vNext();
    ExpressionPtr pNode = pExpression();
    if (!pNode || !boExpect(")")) return nullptr;
    ++pNode->iParentheses;
    return pNode;
}

ExpressionPtr Parser::pAggregate() {
    ExpressionPtr pNode = pMake(Op::Aggregate, m_token.place);
    vNext();
    if (boTake("]")) return pNode;
    do {
        const Place place = m_token.place;
        ExpressionPtr pItem = pExpression();
        if (pItem && boTake(":")) {
            ExpressionPtr pCount = pExpression();
            pItem = pCount ? pMakeOf(Op::Repeated, place, std::move(pItem), std::move(pCount)) : nullptr;
        }
        if (!boAdd(*pNode, std::move(pItem))) return nullptr;
    } while (boTake(","));
    return boExpect("]") ? std::move(pNode) : nullptr;
}

ExpressionPtr Parser::pInterval() {
    ExpressionPtr pNode = pMake(Op::Interval, m_token.place);
    vNext();
    if (!boDeeper()) return nullptr;
    ++m_iDepth;
    for (int i = 0; i < 3; ++i) {
        if (!boAdd(*pNode, pBinary(g_iSimple))) return nullptr;
        if (i == 2) break;
        Op& op = i == 0 ? pNode->eLow : pNode->eHigh;
        op = boAt("<=") ? Op::LessEqual : Op::Less;
        if (!boTake("<=") && !boTake("<")) {
            boExpected("\"<\" or \"<=\"");
            return nullptr;
        }
    }
    --m_iDepth;
    return boExpect("}") ? std::move(pNode) : nullptr;
}

ExpressionPtr Parser::pQuery() {
    ExpressionPtr pNode = pMake(Op::Query, m_token.place);
    vNext();
    if (!boExpect("(") || !boReadName(pNode->sText, "a variable") || !boExpect("<*")) return nullptr;
    if (!boAdd(*pNode, pExpression()) || !boExpect("|") || !boAdd(*pNode, pExpression())) return nullptr;
    return boExpect(")") ? std::move(pNode) : nullptr;
}

// What stands behind a factor: ".name", "\name", "[i]", "[i:j]".
ExpressionPtr Parser::pQualified(ExpressionPtr pBase) {
    while (pBase) {
        const Place place = m_token.place;
        if (boAt("[")) {
            pBase = pIndexed(std::move(pBase));
        } else if (boAt(".") || boAt("\\")) {
            const Op op = boAt(".") ? Op::Attribute : Op::Group;
            vNext();
            pBase = pMakeOf(op, place, std::move(pBase));
            if (!pBase || !boReadName(pBase->sText, op == Op::Attribute ? "an attribute" : "an entity")) return nullptr;
        } else {
            return pBase;
        }
    }
    return nullptr;
}

ExpressionPtr Parser::pIndexed(ExpressionPtr pBase) {
    ExpressionPtr pNode = pMakeOf(Op::Index, m_token.place, std::move(pBase));
    vNext();
    if (!pNode || !boAdd(*pNode, pExpression())) return nullptr;
    if (boTake(":") && !boAdd(*pNode, pExpression())) return nullptr;
    return boExpect("]") ? std::move(pNode) : nullptr;
}

}   // namespace oxa::check::express
