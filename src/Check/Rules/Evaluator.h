// SPDX-License-Identifier: Apache-2.0
// Evaluator: runs the code of rules over the instances of one model.
//
// For      RuleCheck, one evaluator a thread.
// Limits   steps, memory and stack of one evaluation: what goes past one of them ends it with a fault.
// Results  a value; or a fault: what the rule's text does that EXPRESS does not allow, or that went past a limit.
//          Values lead into the evaluator's memory and are good until the next evaluation.
// Threads  one evaluator a thread; model, program and ModelIndex are shared and only read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Check/Rules/Code.h"
#include "Check/Rules/ModelIndex.h"
#include "Check/Rules/Value.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Export.h"

namespace oxa::check::rules {

struct Limits {
    std::uint64_t iSteps = 20'000'000;              // loop turns, calls, items looked at
    std::size_t iMemory = std::size_t{256} << 20;   // bytes of values made
    std::size_t iStack = std::size_t{1} << 20;      // bytes
};

// Variables of one running block, and what SELF is there.
struct Frame {
    Value* pSlots = nullptr;
    Frame* pOuter = nullptr;   // of the block that the running one was declared in
    Value self;
    Value result;
    std::uint16_t iLevel = 0;
};

class OXA_CHECK_API Evaluator {
public:
    Evaluator(const Program& program, ModelIndex& index, const Limits& limits = {});

    // Runs an expression with SELF. Memory of the evaluation before is forgotten.
    [[nodiscard]] Value evaluate(const Routine& code, const Value& self);
    // The same for the parts of a condition, in the frame of that evaluation: no memory is forgotten.
    [[nodiscard]] Value evaluateNode(const Node& node, const Routine& code, const Value& self);
    // Runs the statements of a global rule; its conditions are evaluated by evaluateInFrame then.
    [[nodiscard]] bool boRunGlobal(const GlobalRule& rule);
    [[nodiscard]] Value evaluateInFrame(const Node& node);
    // Runs a function with arguments, for tests and derived attributes alike.
    [[nodiscard]] Value call(const Routine& routine, std::vector<Value> arguments);
    void vReset();
    // Values of derived attributes that were remembered are evaluated anew.
    void vForget() noexcept { ++m_iEpoch; }
    // Of all evaluations so far.
    [[nodiscard]] std::uint64_t iStepsTaken() const noexcept { return m_iTaken + m_limits.iSteps - m_iSteps; }

    [[nodiscard]] bool boFailed() const noexcept { return !m_sFault.empty(); }
    [[nodiscard]] const std::string& sFault() const noexcept { return m_sFault; }

    // For the handlers.
    [[nodiscard]] Value run(const Node& node) { return node.pRun(*this, node); }
    Value fail(std::string sWhy);
    // Counts work; false, with a fault, where there was too much of it.
    bool boStep(std::uint64_t iCount = 1) {
        if (m_iSteps >= iCount) {
            m_iSteps -= iCount;
            return !boFailed();
        }
        return boStepFailed();
    }
    template <class T>
    [[nodiscard]] T* pMake(std::size_t iCount = 1) {
        T* pResult = m_arena.pMake<T>(iCount);
        if (!pResult) fail("it needs too much memory");
        // What fills memory takes its time.
        const std::size_t iSteps = pResult ? sizeof(T) * iCount / g_iBytesOfStep : 0;
        return iSteps == 0 || boStep(iSteps) ? pResult : nullptr;
    }
    // With room for so many items; null with a fault.
    [[nodiscard]] Aggregate* pMakeAggregate(AggregateKind kind, std::size_t iCapacity);
    bool boAppend(Aggregate& aggregate, const Value& item);
    [[nodiscard]] Value textOf(std::string_view text);

    [[nodiscard]] Frame& frame() noexcept { return *m_pFrame; }
    [[nodiscard]] Value& slot(std::uint32_t iSlot, std::uint16_t iHops) noexcept {
        Frame* pFrame = m_pFrame;
        for (; iHops; --iHops) pFrame = pFrame->pOuter;
        return pFrame->pSlots[iSlot];
    }
    [[nodiscard]] const Program& program() const noexcept { return m_program; }
    [[nodiscard]] ModelIndex& index() noexcept { return m_index; }

    // Runs a routine's expression or body in a frame of its own.
    [[nodiscard]] Value runRoutine(const Routine& routine, const Value& self, Value* pArguments, std::size_t iArguments,
                                   std::vector<Value>* pHandedBack);
    Flow runSteps(const std::vector<const Step*>& steps);
    // The value of a derived attribute, which is remembered where it is plain.
    [[nodiscard]] Value derived(std::uint32_t iDerived, const Value& self);
    // What a value becomes in a variable of the type.
    [[nodiscard]] Value coerced(const Value& value, const TypeCode* pType);

    // The items of a chain of entities as a row, made on first use: an index into a chain costs its length.
    struct Row {
        ifc::Entity* const* pEntities = nullptr;
        std::size_t iCount = 0;
    };
    [[nodiscard]] Row rowOf(const ifc::EntityList* pList);

private:
    bool boStepFailed();
    [[nodiscard]] bool boStackLeft() noexcept;
    [[nodiscard]] bool boEnter(const Routine& routine, Frame& frame, Value* pArguments, std::size_t iArguments);

    struct Remembered {
        const ifc::Entity* pEntity = nullptr;
        std::uint32_t iDerived = 0;
        std::uint32_t iEpoch = 0;
        Value value;
    };
    static constexpr std::size_t g_iRemembered = 4096;
    static constexpr std::size_t g_iRows = 64;
    static constexpr std::size_t g_iBytesOfStep = 256;

    const Program& m_program;
    ModelIndex& m_index;
    Limits m_limits;
    Arena m_arena;
    std::uint64_t m_iSteps;       // that are left
    std::uint64_t m_iTaken = 0;   // by evaluations before
    std::uint32_t m_iEpoch = 1;
    const char* m_pStackBase = nullptr;
    Frame* m_pFrame = nullptr;
    Frame m_globalFrame;
    std::string m_sFault;
    std::vector<Remembered> m_remembered;
    std::vector<std::pair<const ifc::EntityList*, Row>> m_rows;   // forgotten with the arena
};

}   // namespace oxa::check::rules
