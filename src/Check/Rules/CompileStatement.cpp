// SPDX-License-Identifier: Apache-2.0
// Statements and types to code.
#include "Check/Rules/Scope.h"

namespace oxa::check::rules {

using express::Expression;
using express::Op;
using express::Statement;
using express::StatementKind;
using express::TypeForm;
using schema::sUpper;

void CodeMaker::vFault(express::Place place, std::string sWhy) {
    std::string& sFault = m_pScope->pRoutine->sFault;
    if (sFault.empty())
        sFault = (m_pScope->pRoutine->sName.empty() ? "" : m_pScope->pRoutine->sName + ": ") + std::move(sWhy) +
                 ", line " + std::to_string(place.iLine);
}

std::vector<const Step*> CodeMaker::steps(const express::Body& body) {
    std::vector<const Step*> result;
    for (const express::StatementPtr& pStatement : body) result.push_back(pStep(*pStatement));
    return result;
}

const Step* CodeMaker::pStep(const Statement& tree) {
    Step& step = m_program.steps.emplace_back();
    switch (tree.kind) {
    case StatementKind::Alias: vAlias(tree, step); break;
    case StatementKind::Assign: vAssignment(tree, step); break;
    case StatementKind::Case: vCase(tree, step); break;
    case StatementKind::Compound:
        step.pRun = run::compound;
        step.body = steps(tree.body);
        break;
    case StatementKind::Escape: step.pRun = run::escape; break;
    case StatementKind::If:
        step.pRun = run::ifThen;
        step.pFirst = pExpression(*tree.pFirst);
        step.body = steps(tree.body);
        step.alternative = steps(tree.alternative);
        break;
    case StatementKind::Null: step.pRun = run::null; break;
    case StatementKind::Call: vProcedure(tree, step); break;
    case StatementKind::Repeat: vRepeat(tree, step); break;
    case StatementKind::Return:
        step.pRun = run::returnValue;
        if (tree.pFirst) step.pFirst = pExpression(*tree.pFirst);
        break;
    case StatementKind::Skip: step.pRun = run::skip; break;
    }
    return &step;
}

// The variable and the way into it that an expression means; none, with a fault where nothing can be assigned there.
std::optional<Target> CodeMaker::target(const Expression& tree) {
    std::optional<Target> result;
    switch (tree.op) {
    case Op::Name: {
        const Symbol* pSymbol = pFind(sUpper(tree.sText));
        if (pSymbol && pSymbol->sort == Symbol::Sort::Alias) return pSymbol->target;
        if (!pSymbol || pSymbol->sort != Symbol::Sort::Variable) return result;
        result.emplace();
        result->iSlot = pSymbol->iSlot;
        result->iHops = iHopsTo(*pSymbol);
        result->pType = pSymbol->pType;
        return result;
    }
    case Op::Attribute:
    case Op::Group:
    case Op::Index: break;
    default: return result;
    }
    result = target(*tree.operands[0]);
    if (!result) return result;
    Target::Part& part = result->parts.emplace_back();
    if (tree.op == Op::Attribute) part.iName = m_program.iName(sUpper(tree.sText));
    if (tree.op == Op::Group) {
        part.pGroup = schema::pAsEntity(m_program.graph.pObjectFromName(tree.sText));
        if (!part.pGroup) vFault(tree.place, tree.sText + " is no entity");
    }
    if (tree.op == Op::Index) {
        part.pIndex = pExpression(*tree.operands[1]);
        if (tree.operands.size() > 2) vFault(tree.place, "a range of indexes is assigned to");
    }
    return result;
}

void CodeMaker::vAssignment(const Statement& tree, Step& step) {
    step.pRun = run::assign;
    std::optional<Target> place = target(*tree.pFirst);
    if (!place) return vFault(tree.place, "what stands before \":=\" is no variable");
    step.target = std::move(*place);
    // "v := v + e" adds in place.
    const Expression& value = *tree.pSecond;
    const bool boAdds = value.op == Op::Add && tree.pFirst->op == Op::Name && value.operands[0]->op == Op::Name &&
                        sUpper(value.operands[0]->sText) == sUpper(tree.pFirst->sText) && step.target.parts.empty();
    if (!boAdds) {
        step.pFirst = pExpression(value);
        return;
    }
    step.pRun = run::appendTo;
    step.pFirst = pExpression(*value.operands[1]);
    step.pSecond = pExpression(value);
}

// An alias is its target, with the indexes as they are where the statement begins.
void CodeMaker::vAlias(const Statement& tree, Step& step) {
    step.pRun = run::compound;
    std::optional<Target> place = target(*tree.pFirst);
    if (!place) return vFault(tree.place, "ALIAS for what is no variable");
    Symbol alias;
    alias.sort = Symbol::Sort::Alias;
    Node& base = newNode(*tree.pFirst, run::variable);
    base.iPlace = place->iSlot;
    base.iHops = place->iHops;
    alias.pNode = &base;
    for (Target::Part& part : place->parts) {
        Node& node = newNode(*tree.pFirst, run::attribute);
        node.pFirst = alias.pNode;
        node.iPlace = part.iName;
        node.pEntity = part.pGroup;
        if (part.pGroup) node.pRun = run::group;
        if (part.pIndex) {
            Step& keep = m_program.steps.emplace_back();
            keep.pRun = run::assign;
            keep.pFirst = part.pIndex;
            keep.target.iSlot = m_pScope->iNewSlot();
            step.body.push_back(&keep);
            Node& kept = newNode(*tree.pFirst, run::variable);
            kept.iPlace = keep.target.iSlot;
            part.pIndex = node.pSecond = &kept;
            node.pRun = run::index;
        }
        alias.pNode = &node;
    }
    alias.target = std::move(*place);
    const auto hidden = m_pScope->symbols.extract(sUpper(tree.sText));
    m_pScope->symbols.emplace(sUpper(tree.sText), std::move(alias));
    for (const Step* pInner : steps(tree.body)) step.body.push_back(pInner);
    m_pScope->symbols.erase(sUpper(tree.sText));
    if (hidden) m_pScope->symbols.emplace(hidden.key(), hidden.mapped());
}

void CodeMaker::vCase(const Statement& tree, Step& step) {
    step.pRun = run::caseOf;
    step.pFirst = pExpression(*tree.pFirst);
    for (const express::CaseAction& action : tree.cases) {
        CaseCode code;
        for (const express::ExpressionPtr& pLabel : action.labels) code.labels.push_back(pExpression(*pLabel));
        code.pStep = pStep(*action.pAction);
        step.cases.push_back(std::move(code));
    }
    step.alternative = steps(tree.alternative);
}

// INSERT and REMOVE are built in; all other procedures are the schema's.
void CodeMaker::vProcedure(const Statement& tree, Step& step) {
    step.pRun = run::null;
    const Expression& call = *tree.pFirst;
    const std::string sName = sUpper(call.sText);
    const Symbol* pKnown = pFind(sName);
    const bool boInsert = sName == "INSERT" && call.operands.size() == 3;
    const bool boRemove = sName == "REMOVE" && call.operands.size() == 2;
    if (!pKnown && (boInsert || boRemove)) {
        std::optional<Target> place = target(*call.operands[0]);
        if (!place) return vFault(tree.place, "the list of " + sName + " is no variable");
        step.target = std::move(*place);
        step.pRun = boInsert ? run::insertItem : run::removeItem;
        step.pFirst = pExpression(*call.operands[1]);
        if (boInsert) step.pSecond = pExpression(*call.operands[2]);
        return;
    }
    if (!pKnown || pKnown->sort != Symbol::Sort::Routine || !pKnown->pRoutine->boProcedure)
        return vFault(tree.place, "no procedure has the name " + call.sText);
    const Routine& routine = *pKnown->pRoutine;
    if (call.operands.size() != routine.parameters.size())
        return vFault(tree.place, call.sText + " has " + std::to_string(call.operands.size()) + " arguments");
    step.pRun = run::callProcedure;
    Node& node = newNode(call, run::callFunction);
    node.pRoutine = &routine;
    for (std::size_t i = 0; i < call.operands.size(); ++i) {
        node.operands.push_back(pExpression(*call.operands[i]));
        std::optional<Target> place;
        if (routine.parameters[i].boVar && !(place = target(*call.operands[i])))
            vFault(tree.place, "a VAR parameter gets what is no variable");
        step.targets.push_back(place ? std::move(*place) : Target());
    }
    step.pFirst = &node;
}

void CodeMaker::vRepeat(const Statement& tree, Step& step) {
    step.pRun = run::repeat;
    step.boCounts = !tree.sText.empty();
    const auto hidden = m_pScope->symbols.extract(sUpper(tree.sText));
    if (step.boCounts) {
        step.pFirst = pExpression(*tree.pFirst);
        step.pSecond = pExpression(*tree.pSecond);
        if (tree.pThird) step.pThird = pExpression(*tree.pThird);
        Symbol variable;
        variable.iSlot = step.iSlot = m_pScope->iNewSlot();
        variable.iLevel = m_pScope->pRoutine->iLevel;
        m_pScope->symbols.emplace(sUpper(tree.sText), variable);
    }
    if (tree.pWhile) step.pWhile = pExpression(*tree.pWhile);
    step.body = steps(tree.body);
    if (tree.pUntil) step.pUntil = pExpression(*tree.pUntil);
    if (step.boCounts) m_pScope->symbols.erase(sUpper(tree.sText));
    if (hidden) m_pScope->symbols.emplace(hidden.key(), hidden.mapped());
}

// Only what changes a value that is stored: kind and bounds of aggregates.
const TypeCode* CodeMaker::pTypeCode(const express::TypeTree& tree) {
    AggregateKind kind = AggregateKind::Literal;
    switch (tree.form) {
    case TypeForm::Array: kind = AggregateKind::Array; break;
    case TypeForm::Bag: kind = AggregateKind::Bag; break;
    case TypeForm::List: kind = AggregateKind::List; break;
    case TypeForm::Set: kind = AggregateKind::Set; break;
    case TypeForm::Named: {
        const schema::DataTypeBase* pData = schema::pDataTypeOf(m_program.graph.pObjectFromName(tree.sName));
        if (!pData || !schema::boIsAggregate(pData->kind)) return nullptr;
        kind = pData->kind == schema::DataKind::Array  ? AggregateKind::Array
               : pData->kind == schema::DataKind::List ? AggregateKind::List
                                                       : AggregateKind::Set;
        break;
    }
    case TypeForm::Generic:
    case TypeForm::GenericEntity:
    case TypeForm::Aggregate:
    case TypeForm::Binary:
    case TypeForm::Boolean:
    case TypeForm::Integer:
    case TypeForm::Logical:
    case TypeForm::Number:
    case TypeForm::Real:
    case TypeForm::String: return nullptr;
    }
    TypeCode& code = m_program.types.emplace_back();
    code.kind = kind;
    if (tree.pLow && tree.pElement) {
        code.pLow = pExpression(*tree.pLow);
        code.pHigh = pExpression(*tree.pHigh);
    }
    if (tree.pElement) code.pElement = pTypeCode(*tree.pElement);
    return &code;
}

}   // namespace oxa::check::rules
