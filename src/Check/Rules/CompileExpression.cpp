// SPDX-License-Identifier: Apache-2.0
// Expressions to nodes. Questions for types on literals become comparisons, constants are made once.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <numbers>

#include "Check/Express/Printer.h"
#include "Check/Rules/Scope.h"
#include "Format/Ifc/IfcNumbers.h"

namespace oxa::check::rules {

using express::Expression;
using express::Op;
using schema::sUpper;

namespace {

struct OperatorRow {
    Op op;
    Handler pRun;
    bool boSecond;
};
constexpr OperatorRow g_operators[] = {
    {Op::Power, run::power, false},        {Op::Multiply, run::multiply, false},
    {Op::Divide, run::divide, false},      {Op::IntegerDivide, run::integerDivide, false},
    {Op::Modulo, run::modulo, false},      {Op::And, run::logicalAnd, false},
    {Op::Compose, run::compose, false},    {Op::Add, run::add, false},
    {Op::Subtract, run::subtract, false},  {Op::Or, run::logicalOr, false},
    {Op::Xor, run::logicalXor, false},     {Op::Equal, run::isEqual, false},
    {Op::NotEqual, run::isEqual, true},    {Op::Less, run::isLess, false},
    {Op::Greater, run::isGreater, false},  {Op::LessEqual, run::isGreater, true},
    {Op::GreaterEqual, run::isLess, true}, {Op::Same, run::isSame, false},
    {Op::NotSame, run::isSame, true},      {Op::In, run::isIn, false},
    {Op::Like, run::isLike, false},        {Op::Negate, run::negate, false},
    {Op::Plus, run::plus, false},          {Op::Not, run::logicalNot, false},
};

const OperatorRow& rowOf(Op op) {
    return *std::find_if(std::begin(g_operators), std::end(g_operators),
                         [op](const OperatorRow& row) { return row.op == op; });
}

bool boCallOf(const Expression& tree, std::string_view name) {
    return tree.op == Op::Call && sUpper(tree.sText) == name;
}

// A literal without its quotes.
std::string sUnquoted(std::string_view literal) {
    std::string sResult;
    for (std::size_t i = 1; i + 1 < literal.size(); ++i) {
        sResult += literal[i];
        if (literal[i] == literal.front()) ++i;   // a doubled quote
    }
    return sResult;
}

// Eight hexadecimal digits a character, as UTF-8. False for what is no such literal.
bool boDecode(std::string_view literal, std::string& sResult) {
    const std::string_view digits = literal.substr(1, literal.size() - 2);
    if (digits.size() % 8 != 0) return false;
    for (std::size_t i = 0; i < digits.size(); i += 8) {
        std::uint32_t uPoint = 0;
        const auto result = std::from_chars(digits.data() + i, digits.data() + i + 8, uPoint, 16);
        if (result.ptr != digits.data() + i + 8 || uPoint > 0x10FFFFU) return false;
        const auto vByte = [&sResult](std::uint32_t uByte) { sResult += static_cast<char>(uByte); };
        if (uPoint < 0x80U) {
            vByte(uPoint);
        } else if (uPoint < 0x800U) {
            vByte(0xC0U | (uPoint >> 6));
            vByte(0x80U | (uPoint & 0x3FU));
        } else {
            if (uPoint < 0x10000U) {
                vByte(0xE0U | (uPoint >> 12));
            } else {
                vByte(0xF0U | (uPoint >> 18));
                vByte(0x80U | ((uPoint >> 12) & 0x3FU));
            }
            vByte(0x80U | ((uPoint >> 6) & 0x3FU));
            vByte(0x80U | (uPoint & 0x3FU));
        }
    }
    return true;
}

bool boTextConstant(const Node* pNode) { return pNode->pRun == run::constant && pNode->value.kind == Kind::String; }

}   // namespace

Node& CodeMaker::newNode(const Expression& tree, Handler pRun) {
    Node& node = m_program.nodes.emplace_back();
    node.pRun = pRun;
    node.pSource = &tree;
    return node;
}

const Node* CodeMaker::pFault(const Expression& tree, std::string sWhy) {
    vFault(tree.place, std::move(sWhy));
    return &newNode(tree, run::constant);
}

const Node* CodeMaker::pExpression(const Expression& tree) {
    switch (tree.op) {
    case Op::Integer:
    case Op::Real: return pNumber(tree);
    case Op::String: return pText(tree, sUnquoted(tree.sText));
    case Op::Encoded: {
        std::string sValue;
        return boDecode(tree.sText, sValue) ? pText(tree, sValue) : pFault(tree, tree.sText + " is no text");
    }
    case Op::Binary: return pBits(tree);
    case Op::Self: return &newNode(tree, run::self);
    case Op::Name: return pName(tree);
    case Op::Attribute: return pAttribute(tree);
    case Op::Group: return pGroup(tree);
    case Op::Index: return pIndex(tree);
    case Op::Call: return pCall(tree);
    case Op::Negate:
    case Op::Plus:
    case Op::Not: return pUnary(tree);
    case Op::Interval: return pInterval(tree);
    case Op::Aggregate: return pAggregate(tree);
    case Op::Repeated: return pFault(tree, "a repetition outside of an aggregate");
    case Op::Query: return &query(tree);
    case Op::True:
    case Op::False:
    case Op::Unknown:
    case Op::Indeterminate:
    case Op::Pi:
    case Op::ConstE: return pConstant(tree);
    default: return pBinary(tree);
    }
}

const Node* CodeMaker::pConstant(const Expression& tree) {
    Node& node = newNode(tree, run::constant);
    if (tree.op == Op::True) node.value = valueOf(true);
    if (tree.op == Op::False) node.value = valueOf(false);
    if (tree.op == Op::Unknown) node.value = valueOf(Logical::Unknown);
    if (tree.op == Op::Pi) node.value = valueOf(std::numbers::pi);
    if (tree.op == Op::ConstE) node.value = valueOf(std::numbers::e);
    return &node;
}

const Node* CodeMaker::pNumber(const Expression& tree) {
    const char* const pBegin = tree.sText.data();
    const char* const pEnd = pBegin + tree.sText.size();
    Node& node = newNode(tree, run::constant);
    if (tree.op == Op::Integer) {
        long long iValue = 0;
        if (std::from_chars(pBegin, pEnd, iValue).ptr != pEnd) return pFault(tree, tree.sText + " is no integer");
        node.value = valueOf(iValue);
        return &node;
    }
    const auto real = ifc::toDouble(pBegin, pEnd);
    if (!real) return pFault(tree, tree.sText + " is no real");
    node.value = valueOf(*real);
    return &node;
}

const Node* CodeMaker::pText(const Expression& tree, std::string sValue) {
    Node& node = newNode(tree, run::constant);
    node.value = valueOf(std::string_view(m_program.texts.emplace_back(std::move(sValue))));
    return &node;
}

const Node* CodeMaker::pBits(const Expression& tree) {
    std::string sBytes((tree.sText.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < tree.sText.size(); ++i)
        if (tree.sText[i] == '1') sBytes[i / 8] = static_cast<char>(sBytes[i / 8] | (0x80 >> (i % 8)));
    const std::string& sKept = m_program.texts.emplace_back(std::move(sBytes));
    Node& node = newNode(tree, run::constant);
    node.value.kind = Kind::Binary;
    node.value.pBytes = reinterpret_cast<const unsigned char*>(sKept.data());
    node.value.iCount = static_cast<std::uint32_t>(tree.sText.size());
    return &node;
}

const Node* CodeMaker::pName(const Expression& tree) {
    const std::string sName = sUpper(tree.sText);
    if (const Symbol* pKnown = pFind(sName); pKnown && pKnown->sort != Symbol::Sort::Routine)
        return pSymbol(tree, *pKnown);
    const schema::Entity* pSelf = m_pScope->pSelf;
    if (pSelf && boHasAttribute(*pSelf, sName)) {
        Node& node = newNode(tree, run::ownAttribute);
        node.iPlace = m_program.iName(sName);
        return &node;
    }
    if (const Symbol* pKnown = pFind(sName)) return pRoutineCall(tree, *pKnown->pRoutine);
    if (m_enumerators.contains(sName)) return pEnumerator(tree, nullptr);
    return pFault(tree, "nothing has the name " + tree.sText);
}

const Node* CodeMaker::pSymbol(const Expression& tree, const Symbol& symbol) {
    if (symbol.sort == Symbol::Sort::Alias) return symbol.pNode;
    Node& node = newNode(tree, run::variable);
    if (symbol.sort == Symbol::Sort::Constant) {
        node.pRun = run::routineValue;
        node.pRoutine = symbol.pRoutine;
        return &node;
    }
    node.iPlace = symbol.iSlot;
    node.iHops = iHopsTo(symbol);
    return &node;
}

// An item by itself belongs to any enumeration that has it: comparisons go by the item's name. Its order it has from the
// only enumeration that has it, or from what it is compared with.
const Node* CodeMaker::pEnumerator(const Expression& tree, const schema::DataTypeEnum* pEnum) {
    const std::string sItem = sUpper(tree.sText);
    const auto [first, last] = m_enumerators.equal_range(sItem);
    const schema::DataTypeEnum* pOwner = pEnum ? pEnum : first->second;
    const auto pFound = pOwner->items.find(std::string_view(sItem));
    if (pFound == pOwner->items.end()) return pFault(tree, tree.sText + " is no item of " + pOwner->sName);
    Node& node = newNode(tree, run::constant);
    node.value.kind = Kind::Enumerator;
    node.value.pText = (*pFound)->c_str();
    node.value.iCount = Value::g_iToNul;
    if (pEnum || std::next(first) == last) node.value.pType = m_program.graph.pObjectFromName(pOwner->sName);
    return &node;
}

const Node* CodeMaker::pAttribute(const Expression& tree) {
    const Expression& base = *tree.operands[0];
    const std::string sName = sUpper(tree.sText);
    if (base.op == Op::Name && !pFind(sUpper(base.sText))) {
        const schema::ObjectBase* pObject = m_program.graph.pObjectFromName(base.sText);
        const auto* pEnum = dynamic_cast<const schema::DataTypeEnum*>(schema::pDataTypeOf(pObject));
        const bool boOwn = m_pScope->pSelf && boHasAttribute(*m_pScope->pSelf, sUpper(base.sText));
        if (pEnum && !boOwn) return pEnumerator(tree, pEnum);
    }
    Node& node = newNode(tree, run::attribute);
    node.iPlace = m_program.iName(sName);
    if (base.op == Op::Group) {
        node.pEntity = schema::pAsEntity(m_program.graph.pObjectFromName(base.sText));
        if (!node.pEntity) return pFault(base, base.sText + " is no entity");
        node.pRun = run::groupAttribute;
        node.pFirst = pExpression(*base.operands[0]);
    } else {
        node.pFirst = pExpression(base);
    }
    return &node;
}

const Node* CodeMaker::pGroup(const Expression& tree) {
    Node& node = newNode(tree, run::group);
    node.pEntity = schema::pAsEntity(m_program.graph.pObjectFromName(tree.sText));
    if (!node.pEntity) return pFault(tree, tree.sText + " is no entity");
    node.pFirst = pExpression(*tree.operands[0]);
    return &node;
}

const Node* CodeMaker::pIndex(const Expression& tree) {
    Node& node = newNode(tree, tree.operands.size() > 2 ? run::indexRange : run::index);
    node.pFirst = pExpression(*tree.operands[0]);
    node.pSecond = pExpression(*tree.operands[1]);
    if (tree.operands.size() > 2) node.pThird = pExpression(*tree.operands[2]);
    return &node;
}

const Node* CodeMaker::pCall(const Expression& tree) {
    const std::string sName = sUpper(tree.sText);
    if (const Symbol* pKnown = pFind(sName); pKnown && pKnown->sort == Symbol::Sort::Routine)
        return pRoutineCall(tree, *pKnown->pRoutine);
    for (const run::Builtin& builtin : run::builtins())
        if (builtin.name == sName) return pBuiltin(tree, builtin);
    if (const schema::Entity* pEntity = schema::pAsEntity(m_program.graph.pObjectFromName(tree.sText)))
        return pConstruct(tree, *pEntity);
    return pFault(tree, "no function has the name " + tree.sText);
}

const Node* CodeMaker::pBuiltin(const Expression& tree, const run::Builtin& builtin) {
    if (tree.operands.size() < builtin.iLeast || tree.operands.size() > builtin.iMost)
        return pFault(tree, tree.sText + " has " + std::to_string(tree.operands.size()) + " arguments");
    if (builtin.name == "SIZEOF") {
        const Expression& argument = *tree.operands[0];
        if (const Node* pCount = pTypeCount(tree, argument)) return pCount;
        if (argument.op == Op::Query) {
            Node& count = query(argument);
            count.pRun = run::queryCount;
            count.pSource = &tree;
            return &count;
        }
    }
    Node& node = newNode(tree, builtin.pRun);
    for (const auto& pOperand : tree.operands) node.operands.push_back(pExpression(*pOperand));
    return &node;
}

const Node* CodeMaker::pConstruct(const Expression& tree, const schema::Entity& entity) {
    const std::size_t iOwn = entity.ownAttributes.size();
    const std::size_t iAll = entity.allAttributes().size();
    if (tree.operands.size() != iOwn && tree.operands.size() != iAll)
        return pFault(tree, entity.sName + " is made of " + std::to_string(tree.operands.size()) + " values");
    Node& node = newNode(tree, run::construct);
    node.pEntity = &entity;
    for (const auto& pOperand : tree.operands) node.operands.push_back(pExpression(*pOperand));
    return &node;
}

const Node* CodeMaker::pRoutineCall(const Expression& tree, const Routine& routine) {
    if (routine.boProcedure) return pFault(tree, tree.sText + " is no function");
    if (tree.operands.size() != routine.parameters.size())
        return pFault(tree, tree.sText + " has " + std::to_string(tree.operands.size()) + " arguments instead of " +
                                std::to_string(routine.parameters.size()));
    Node& node = newNode(tree, run::callFunction);
    node.pRoutine = &routine;
    for (const auto& pOperand : tree.operands) node.operands.push_back(pExpression(*pOperand));
    return &node;
}

const Node* CodeMaker::pAggregate(const Expression& tree) {
    Node& node = newNode(tree, run::aggregate);
    bool boConstant = true;
    for (const auto& pItem : tree.operands) {
        if (pItem->op == Op::Repeated) {
            Node& repeated = newNode(*pItem, run::repeated);
            repeated.pFirst = pExpression(*pItem->operands[0]);
            repeated.pSecond = pExpression(*pItem->operands[1]);
            node.operands.push_back(&repeated);
        } else {
            node.operands.push_back(pExpression(*pItem));
        }
        boConstant = boConstant && node.operands.back()->pRun == run::constant;
    }
    if (!boConstant || node.operands.empty()) return &node;
    std::vector<Value>& items = m_program.lists.emplace_back();
    for (const Node* pItem : node.operands) items.push_back(pItem->value);
    Aggregate& aggregate = m_program.aggregates.emplace_back();
    aggregate.boShared = true;
    aggregate.iCount = aggregate.iCapacity = static_cast<std::uint32_t>(items.size());
    aggregate.pItems = items.data();
    node.pRun = run::constant;
    node.value = valueOf(&aggregate);
    return &node;
}

Node& CodeMaker::query(const Expression& tree) {
    Node& node = newNode(tree, run::query);
    node.pFirst = pExpression(*tree.operands[0]);
    const std::string sName = sUpper(tree.sText);
    Symbol variable;
    variable.iSlot = node.iPlace = m_pScope->iNewSlot();
    variable.iLevel = m_pScope->pRoutine->iLevel;
    std::optional<Symbol> hidden;
    if (const auto pOld = m_pScope->symbols.find(sName); pOld != m_pScope->symbols.end()) hidden = pOld->second;
    m_pScope->symbols[sName] = variable;
    node.pSecond = pExpression(*tree.operands[1]);
    if (hidden)
        m_pScope->symbols[sName] = *hidden;
    else
        m_pScope->symbols.erase(sName);
    return node;
}

const Node* CodeMaker::pInterval(const Expression& tree) {
    Node& node = newNode(tree, run::interval);
    node.pFirst = pExpression(*tree.operands[0]);
    node.pSecond = pExpression(*tree.operands[1]);
    node.pThird = pExpression(*tree.operands[2]);
    node.iPlace = (tree.eLow == Op::LessEqual ? 1U : 0U) | (tree.eHigh == Op::LessEqual ? 2U : 0U);
    return &node;
}

const Node* CodeMaker::pUnary(const Expression& tree) {
    const Node* pOperand = pExpression(*tree.operands[0]);
    Node& node = newNode(tree, rowOf(tree.op).pRun);
    node.pFirst = pOperand;
    if (tree.op != Op::Negate || pOperand->pRun != run::constant || !pOperand->value.boNumber()) return &node;
    node.pRun = run::constant;   // as -360
    node.value = pOperand->value;
    if (node.value.kind == Kind::Integer)
        node.value.iInteger = -node.value.iInteger;
    else
        node.value.fReal = -node.value.fReal;
    return &node;
}

const Node* CodeMaker::pBinary(const Expression& tree) {
    if (const Node* pQuestion = pTypeQuestion(tree)) return pQuestion;
    const OperatorRow& row = rowOf(tree.op);
    const Node* pLeft = pExpression(*tree.operands[0]);
    const Node* pRight = pExpression(*tree.operands[1]);
    if (tree.op == Op::Add && boTextConstant(pLeft) && boTextConstant(pRight))
        return pText(tree, std::string(pLeft->value.text()) + std::string(pRight->value.text()));
    Node& node = newNode(tree, row.pRun);
    node.boSecond = row.boSecond;
    node.pFirst = pLeft;
    node.pSecond = pRight;
    return &node;
}

// "'SCHEMA.NAME' IN TYPEOF(x)" and "TYPEOF(x) = TYPEOF(y)" without a set of names; null for all else.
const Node* CodeMaker::pTypeQuestion(const Expression& tree) {
    const Expression& left = *tree.operands[0];
    const Expression& right = *tree.operands[1];
    if (!boCallOf(right, "TYPEOF") || right.operands.size() != 1) return nullptr;
    if (tree.op == Op::In && left.op == Op::String) {
        Node& node = newNode(tree, run::typeTest);
        node.targets.push_back(typeTarget(sUnquoted(left.sText)));
        node.pFirst = pExpression(*right.operands[0]);
        return &node;
    }
    const bool boEqual = tree.op == Op::Equal || tree.op == Op::NotEqual;
    if (!boEqual || !boCallOf(left, "TYPEOF") || left.operands.size() != 1) return nullptr;
    Node& node = newNode(tree, run::typeEqual);
    node.boSecond = tree.op == Op::NotEqual;
    node.pFirst = pExpression(*left.operands[0]);
    node.pSecond = pExpression(*right.operands[0]);
    return &node;
}

// "SIZEOF(TYPEOF(x) * ['...', '...'])", whichever stands first; null for all else.
const Node* CodeMaker::pTypeCount(const Expression& tree, const Expression& argument) {
    if (argument.op != Op::Multiply) return nullptr;
    const bool boFirst = boCallOf(*argument.operands[0], "TYPEOF");
    const Expression& question = *argument.operands[boFirst ? 0 : 1];
    const Expression& names = *argument.operands[boFirst ? 1 : 0];
    if (!boCallOf(question, "TYPEOF") || question.operands.size() != 1 || names.op != Op::Aggregate) return nullptr;
    std::vector<std::string> distinct;   // the intersection is a SET
    for (const auto& pName : names.operands) {
        if (pName->op != Op::String) return nullptr;
        std::string sName = sUpper(sUnquoted(pName->sText));
        if (std::find(distinct.begin(), distinct.end(), sName) == distinct.end()) distinct.push_back(std::move(sName));
    }
    Node& node = newNode(tree, run::typeCount);
    for (const std::string& sName : distinct) node.targets.push_back(typeTarget(sName));
    node.pFirst = pExpression(*question.operands[0]);
    return &node;
}

// A name as TYPEOF gives it, in any case: the published texts have some that are not all in capitals.
TypeTarget CodeMaker::typeTarget(std::string_view name) const {
    static constexpr std::string_view g_bases[] = {"REAL",   "BOOLEAN", "INTEGER", "NUMBER", "STRING", "LOGICAL",
                                                   "BINARY", "ARRAY",   "BAG",     "LIST",   "SET"};
    TypeTarget target;
    const std::string sName = sUpper(name);
    const std::size_t iDot = sName.find('.');
    if (iDot == std::string::npos) {
        const auto* pBase = std::find(std::begin(g_bases), std::end(g_bases), sName);
        if (pBase != std::end(g_bases)) target.base = *pBase;
        return target;
    }
    const std::string_view schemaName = std::string_view(sName).substr(0, iDot);
    if (schemaName != sUpper(m_program.graph.sName) && schemaName != sUpper(m_program.trees.sName)) return target;
    target.pObject = m_program.graph.pObjectFromName(std::string_view(sName).substr(iDot + 1));
    target.pSelect = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(target.pObject));
    return target;
}

}   // namespace oxa::check::rules
