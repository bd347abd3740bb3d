// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/Evaluator.h"

#include <algorithm>

#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "platform/Compiler.h"
#include "platform/System.h"

namespace oxa::check::rules {

namespace {

// Threads have less stack on some systems than on others: at most half of it is for rules.
Limits limitsHere(Limits limits) {
    if (const std::size_t iThread = platform::iThreadStack()) limits.iStack = std::min(limits.iStack, iThread / 2);
    return limits;
}

}   // namespace

Evaluator::Evaluator(const Program& program, ModelIndex& index, const Limits& limits)
    : m_program(program),
      m_index(index),
      m_limits(limitsHere(limits)),
      m_arena(limits.iMemory),
      m_iSteps(limits.iSteps),
      m_remembered(g_iRemembered) {}

void Evaluator::vReset() {
    m_arena.vReset();
    m_rows.clear();
    m_sFault.clear();
    m_iTaken += m_limits.iSteps - m_iSteps;
    m_iSteps = m_limits.iSteps;
    m_pFrame = nullptr;
    m_pStackBase = nullptr;
}

Value Evaluator::fail(std::string sWhy) {
    if (m_sFault.empty()) m_sFault = std::move(sWhy);
    return {};
}

bool Evaluator::boStepFailed() {
    m_iSteps = 0;
    fail("it takes too many steps");
    return false;
}

// Whether there is stack for one more call.
bool Evaluator::boStackLeft() noexcept {
    const char* const pHere = platform::pStackNow();
    if (!m_pStackBase) m_pStackBase = pHere;
    const auto iUsed = m_pStackBase > pHere ? m_pStackBase - pHere : pHere - m_pStackBase;
    return static_cast<std::size_t>(iUsed) < m_limits.iStack;
}

Value Evaluator::textOf(std::string_view text) {
    char* pText = pMake<char>(text.size() + 1);
    if (!pText) return {};
    std::copy(text.begin(), text.end(), pText);
    return valueOf(std::string_view(pText, text.size()));
}

Aggregate* Evaluator::pMakeAggregate(AggregateKind kind, std::size_t iCapacity) {
    auto* pResult = pMake<Aggregate>();
    if (!pResult) return nullptr;
    pResult->kind = kind;
    if (!iCapacity) return pResult;
    if (iCapacity > m_limits.iMemory) {
        fail("it needs too much memory");
        return nullptr;
    }
    pResult->pItems = pMake<Value>(iCapacity);
    pResult->iCapacity = static_cast<std::uint32_t>(iCapacity);
    return pResult->pItems ? pResult : nullptr;
}

bool Evaluator::boAppend(Aggregate& aggregate, const Value& item) {
    if (aggregate.iCount == aggregate.iCapacity) {
        const std::uint32_t iCapacity = std::max<std::uint32_t>(4, aggregate.iCapacity * 2);
        auto* pItems = pMake<Value>(iCapacity);
        if (!pItems) return false;
        std::copy_n(aggregate.pItems, aggregate.iCount, pItems);
        aggregate.pItems = pItems;
        aggregate.iCapacity = iCapacity;
    }
    aggregate.pItems[aggregate.iCount++] = item;
    return true;
}

Evaluator::Row Evaluator::rowOf(const ifc::EntityList* pList) {
    if (!pList) return {};
    for (const auto& [pKnown, row] : m_rows)
        if (pKnown == pList) return row;
    std::size_t iCount = 0;
    for (const ifc::EntityList::Node* pNode = pList; pNode; pNode = pNode->next) ++iCount;
    auto* pEntities = pMake<ifc::Entity*>(iCount);
    if (!pEntities || !boStep(iCount / 16)) return {};
    Row row{pEntities, iCount};
    for (ifc::Entity* pEntity : *pList) *pEntities++ = pEntity;
    if (m_rows.size() == g_iRows) m_rows.erase(m_rows.begin());
    m_rows.emplace_back(pList, row);
    return row;
}

// Sets a frame up: arguments, then "?" for all other variables.
bool Evaluator::boEnter(const Routine& routine, Frame& frame, Value* pArguments, std::size_t iArguments) {
    if (!routine.sFault.empty()) {
        fail(routine.sFault);
        return false;
    }
    if (!boStackLeft()) {
        fail("functions call each other too deeply");
        return false;
    }
    if (!boStep()) return false;
    if (routine.iSlots && !(frame.pSlots = pMake<Value>(routine.iSlots))) return false;
    std::copy_n(pArguments, iArguments, frame.pSlots);
    frame.iLevel = routine.iLevel;
    // The frame of the block that the routine is declared in: out of all that were declared in as many blocks or more.
    Frame* pOuter = m_pFrame;
    while (pOuter && pOuter->iLevel >= routine.iLevel) pOuter = pOuter->pOuter;
    frame.pOuter = pOuter;
    return true;
}

Value Evaluator::runRoutine(const Routine& routine, const Value& self, Value* pArguments, std::size_t iArguments,
                            std::vector<Value>* pHandedBack) {
    Frame frame;
    frame.self = self;
    if (!boEnter(routine, frame, pArguments, iArguments)) return {};
    Frame* const pCaller = m_pFrame;
    m_pFrame = &frame;
    for (std::size_t i = 0; i < iArguments; ++i)
        frame.pSlots[i] = coerced(frame.pSlots[i], routine.parameters[i].pType);
    for (std::size_t i = 0; i < routine.locals.size() && !boFailed(); ++i) {
        const Routine::Variable& local = routine.locals[i];
        if (local.pValue) frame.pSlots[routine.parameters.size() + i] = coerced(run(*local.pValue), local.pType);
    }
    Value result;
    if (routine.pExpression) {
        result = run(*routine.pExpression);
    } else {
        runSteps(routine.body);
        result = coerced(frame.result, routine.pResult);
    }
    if (pHandedBack) pHandedBack->assign(frame.pSlots, frame.pSlots + iArguments);
    m_pFrame = pCaller;
    return boFailed() ? Value() : result;
}

Flow Evaluator::runSteps(const std::vector<const Step*>& steps) {
    for (const Step* pStep : steps) {
        const Flow flow = pStep->pRun(*this, *pStep);
        if (boFailed()) return Flow::Return;
        if (flow != Flow::Next) return flow;
    }
    return Flow::Next;
}

Value Evaluator::evaluate(const Routine& code, const Value& self) {
    vReset();
    return runRoutine(code, self, nullptr, 0, nullptr);
}

Value Evaluator::evaluateNode(const Node& node, const Routine& code, const Value& self) {
    Frame frame;
    frame.self = self;
    if (!boEnter(code, frame, nullptr, 0)) return {};
    m_pFrame = &frame;
    const Value result = run(node);
    m_pFrame = nullptr;
    return boFailed() ? Value() : result;
}

bool Evaluator::boRunGlobal(const GlobalRule& rule) {
    vReset();
    std::vector<Value> arguments;
    for (const schema::Entity* pEntity : rule.populations) {
        const std::vector<ifc::Entity*> population = m_index.population(*pEntity);
        Aggregate* pSet = pMakeAggregate(AggregateKind::Set, population.size());
        if (!pSet) return false;
        for (ifc::Entity* pInstance : population)
            if (!boAppend(*pSet, valueOf(pInstance))) return false;
        arguments.push_back(valueOf(pSet));
    }
    m_globalFrame = Frame();
    if (!boEnter(rule.code, m_globalFrame, arguments.data(), arguments.size())) return false;
    m_pFrame = &m_globalFrame;
    for (std::size_t i = 0; i < rule.code.locals.size(); ++i) {
        const Routine::Variable& local = rule.code.locals[i];
        if (local.pValue) m_globalFrame.pSlots[arguments.size() + i] = coerced(run(*local.pValue), local.pType);
    }
    runSteps(rule.code.body);
    return !boFailed();
}

Value Evaluator::evaluateInFrame(const Node& node) {
    m_pFrame = &m_globalFrame;
    const Value result = run(node);
    return boFailed() ? Value() : result;
}

Value Evaluator::call(const Routine& routine, std::vector<Value> arguments) {
    return runRoutine(routine, Value(), arguments.data(), arguments.size(), nullptr);
}

Value Evaluator::derived(std::uint32_t iDerived, const Value& self) {
    Remembered* pPlace = nullptr;
    if (self.kind == Kind::Entity) {
        const auto uMix = (reinterpret_cast<std::uintptr_t>(self.pEntity) / 8 + iDerived * 977U);
        pPlace = &m_remembered[uMix % g_iRemembered];
        if (pPlace->pEntity == self.pEntity && pPlace->iDerived == iDerived && pPlace->iEpoch == m_iEpoch)
            return pPlace->value;
    }
    const Value result = runRoutine(m_program.derived[iDerived].code, self, nullptr, 0, nullptr);
    const bool boPlain =
        result.kind == Kind::Null || result.kind == Kind::Logical || result.boNumber() || result.kind == Kind::Entity;
    // What leads into the memory of this evaluation is not good for the next one.
    if (pPlace && boPlain && !boFailed()) *pPlace = {self.pEntity, iDerived, m_iEpoch, result};
    return result;
}

Value Evaluator::coerced(const Value& value, const TypeCode* pType) {
    if (!pType || value.kind != Kind::Aggregate) return value;
    Aggregate& old = *value.pAggregate;
    if (pType->kind == AggregateKind::Literal) return value;
    Bounds bounds{pType->kind == AggregateKind::Array ? 1 : 0, -1, false};
    if (pType->pLow) {
        const Value low = run(*pType->pLow);
        const Value high = run(*pType->pHigh);
        bounds = {low.kind == Kind::Integer ? low.iInteger : 0, high.kind == Kind::Integer ? high.iInteger : -1, true};
    }
    const bool boKind = old.kind == pType->kind;
    if (boKind && (!bounds.boDeclared || (bounds.iLow == old.iLow && bounds.iHigh == old.iBound))) return value;
    Aggregate* pNew = pMakeAggregate(pType->kind, pType->kind == AggregateKind::Set ? 0 : old.iCount);
    if (!pNew) return {};
    pNew->iLow = bounds.iLow;
    pNew->iBound = bounds.iHigh;
    for (std::uint32_t i = 0; i < old.iCount; ++i) {
        const Value item = coerced(old.pItems[i], pType->pElement);
        if (!boStep() || !(pNew->kind == AggregateKind::Set ? boInsert(*this, *pNew, item) : boAppend(*pNew, item)))
            return {};
    }
    return valueOf(pNew);
}

}   // namespace oxa::check::rules
