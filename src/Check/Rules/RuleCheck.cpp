// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/RuleCheck.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <span>
#include <thread>
#include <unordered_set>
#include <utility>

#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "Check/Rules/Explain.h"
#include "Check/Rules/Handlers.h"
#include "Core/Utilities/Threads/OnAllThreads.h"

namespace oxa::check::rules {

namespace {

constexpr std::size_t g_iShare = 1024;   // instances that a thread takes at once

// What has to be done for each instance of one type.
struct TypePlan {
    struct Cell {
        const schema::Attribute* pAttribute = nullptr;
        std::uint32_t iOffset = 0;
        ifc::CellClass eClass = ifc::CellClass::Unresolved;
    };
    const std::vector<std::uint32_t>* pRules = nullptr;
    std::vector<Cell> cells;   // whose values may be of a type with rules
};

class Plans {
public:
    explicit Plans(const Program& program) : m_program(program), m_plans(program.entityRules.size()) {}

    void vMake(const schema::Entity& type) {
        if (m_plans[type.iTypeOrdinal].pRules) return;
        TypePlan& plan = m_plans[type.iTypeOrdinal];
        plan.pRules = &m_program.entityRules[type.iTypeOrdinal];
        for (const ifc::DataSizeEntity::Cell& cell : ifc::Entity::getDataSize(type).cells)
            if (cell.pAttribute && boRuled(cell.pAttribute->pType()))
                plan.cells.push_back({cell.pAttribute, cell.iOffset, cell.eClass});
    }
    [[nodiscard]] const TypePlan& plan(const schema::Entity& type) const { return m_plans[type.iTypeOrdinal]; }

    // Whether a value of the type, or one inside of it, may be of a defined type with rules.
    [[nodiscard]] bool boRuled(const schema::ObjectBase* pObject) {
        if (!pObject || schema::pAsEntity(pObject)) return false;
        const auto [pKnown, boNew] = m_ruled.emplace(pObject, false);   // false for what leads back to itself
        if (!boNew) return pKnown->second;
        const schema::Type* pType = schema::pAsType(pObject);
        const schema::DataTypeBase* pData = schema::pDataTypeOf(pObject);
        bool boFound = pType && m_program.typeRules.contains(pType);
        if (const auto* pSelect = dynamic_cast<const schema::DataTypeSelect*>(pData)) {
            for (const schema::ObjectBase* pMember : pSelect->members) boFound = boFound || boRuled(pMember);
        } else if (pData && schema::boIsAggregate(pData->kind)) {
            boFound = boFound || boRuled(pData->pElementGet());
        }
        return m_ruled[pObject] = boFound;
    }

private:
    const Program& m_program;
    std::vector<TypePlan> m_plans;   // by ordinal
    std::unordered_map<const schema::ObjectBase*, bool> m_ruled;
};

// What one thread works with.
class Worker {
public:
    Worker(const Program& program, ModelIndex& index, const Plans& plans, const Limits& limits)
        : m_program(program),
          m_plans(plans),
          m_evaluator(program, index, limits),
          m_counts(program.rules.size()),
          m_unknownIn(program.rules.size()) {}

    // What a share of the model takes and finds depends on nothing that was remembered before it.
    void vBeginShare() {
        m_evaluator.vForget();
        m_iStepsBefore = m_evaluator.iStepsTaken();
        ++m_iShare;
        m_unknown.clear();
    }
    [[nodiscard]] std::uint64_t iStepsOfShare() const { return m_evaluator.iStepsTaken() - m_iStepsBefore; }
    // Rules that were UNKNOWN for an instance of the share.
    [[nodiscard]] std::vector<std::uint32_t> takeUnknown() { return std::exchange(m_unknown, {}); }

    // What was found of the instance before gets its reasons.
    void vExplain(ifc::Entity& entity, std::span<RuleFinding> known) {
        m_known = known;
        std::vector<RuleFinding> none;
        vCheck(entity, none);
        m_known = {};
    }

    void vCheck(ifc::Entity& entity, std::vector<RuleFinding>& findings) {
        const schema::Entity* pType = entity.pSchemaEntity();
        if (!pType) return;
        const TypePlan& plan = m_plans.plan(*pType);
        const auto* pBytes = static_cast<const std::byte*>(entity.unsafeAttributesRaw());
        for (const TypePlan::Cell& cell : plan.cells) {
            if (!pBytes) break;
            m_evaluator.vReset();
            const Value value =
                valueOfCell(m_evaluator, *reinterpret_cast<const ifc::AttributeBase*>(pBytes + cell.iOffset),
                            cell.eClass, cell.pAttribute->pType());
            vCheckValue(value, {.pEntity = &entity, .pAttribute = cell.pAttribute}, findings);
        }
        for (const std::uint32_t iRule : *plan.pRules)
            vCheckRule(iRule, valueOf(&entity), {.iRule = iRule, .pEntity = &entity}, findings);
    }

    void vCheckGlobal(const GlobalRule& rule, std::vector<RuleFinding>& findings) {
        const bool boRan = m_evaluator.boRunGlobal(rule);
        for (const std::uint32_t iRule : rule.rules) {
            RuleFinding finding{.iRule = iRule};
            const Node& condition = *m_program.rules[iRule].code.pExpression;
            const auto evaluate = [this](const Node& node) { return m_evaluator.evaluateInFrame(node); };
            const Value result = boRan ? evaluate(condition) : Value();
            vTake(result, condition, evaluate, std::move(finding), findings);
        }
    }

    void vLeaveOut(std::uint32_t iRule) { ++m_counts[iRule].iFailed; }

    // One attribute after the other; where one has no value there is nothing to compare.
    void vCheckUnique(std::uint32_t iRule, const std::vector<ifc::Entity*>& population,
                      std::vector<RuleFinding>& findings);

    [[nodiscard]] const std::vector<RuleCount>& counts() const noexcept { return m_counts; }

private:
    void vCheckValue(const Value& value, const RuleFinding& where, std::vector<RuleFinding>& findings) {
        if (value.boNull() || pEntityTypeOf(value)) return;
        if (const schema::Type* pType = schema::pAsType(value.pType)) {
            const auto pRules = m_program.typeRules.find(pType);
            if (pRules != m_program.typeRules.end())
                for (const std::uint32_t iRule : pRules->second) {
                    RuleFinding finding = where;
                    finding.iRule = iRule;
                    vCheckRule(iRule, value, std::move(finding), findings);
                }
        }
        if (value.kind != Kind::Items || value.pItems->m_eItemType == ifc::AttributeType::Entity) return;
        const std::size_t iCount = iItems(m_evaluator, value);
        for (std::size_t i = 0; i < iCount; ++i) {
            m_evaluator.vReset();
            const Value item = itemAt(m_evaluator, value, i);
            // Plain items are of one type: one without rules is enough to know.
            if (!item.boAggregate() && item.kind != Kind::Null && !schema::pAsType(item.pType) && !pEntityTypeOf(item))
                return;
            vCheckValue(item, where, findings);
        }
    }

    void vCheckRule(std::uint32_t iRule, const Value& self, RuleFinding finding, std::vector<RuleFinding>& findings) {
        const Routine& code = m_program.rules[iRule].code;
        const Value result = m_evaluator.evaluate(code, self);
        if (!m_evaluator.boFailed() && result.kind == Kind::Logical && result.eLogical == Logical::True) {
            ++m_counts[iRule].iEvaluated;
            return;
        }
        const auto evaluate = [&](const Node& node) { return m_evaluator.evaluateNode(node, code, self); };
        vTake(result, *code.pExpression, evaluate, std::move(finding), findings);
    }

    template <class Evaluate>
    void vTake(const Value& result, const Node& condition, const Evaluate& evaluate, RuleFinding finding,
               std::vector<RuleFinding>& findings) {
        RuleCount& count = m_counts[finding.iRule];
        if (!m_evaluator.boFailed() && !result.boNull() && result.kind != Kind::Logical)
            m_evaluator.fail("the condition is no logical");
        if (m_evaluator.boFailed()) {
            ++count.iFailed;
            finding.sort = RuleFinding::Sort::NotEvaluated;
            return vTell(std::move(finding), findings, [this] { return m_evaluator.sFault(); });
        }
        ++count.iEvaluated;
        if (result.boNull() || result.eLogical == Logical::Unknown) {
            ++count.iUnknown;
            if (std::exchange(m_unknownIn[finding.iRule], m_iShare) != m_iShare) m_unknown.push_back(finding.iRule);
            return;
        }
        if (result.eLogical == Logical::True) return;
        const schema::Attribute* const pAttribute = finding.pAttribute;
        vTell(std::move(finding), findings, [&] {
            const std::string sWhy = sReason(m_evaluator, condition, evaluate);
            if (!pAttribute) return sWhy;
            const Value value = evaluate(*m_pSelf);
            return pAttribute->sName + " = " + sValueText(m_evaluator, value) + (sWhy.empty() ? "" : "; " + sWhy);
        });
    }

    // Reasons of instances are made when it is known which of them are told.
    template <class Reason>
    void vTell(RuleFinding finding, std::vector<RuleFinding>& findings, const Reason& sWhy) {
        if (!finding.pEntity) finding.sReason = sWhy();
        if (m_known.empty()) return findings.push_back(std::move(finding));
        if (m_known.front().boTold) m_known.front().sReason = sWhy();
        m_known = m_known.subspan(1);
    }

    static const Node* pSelfNode() {
        static const Node node = [] {
            Node result;
            result.pRun = run::self;
            return result;
        }();
        return &node;
    }

    const Program& m_program;
    const Plans& m_plans;
    Evaluator m_evaluator;
    std::vector<RuleCount> m_counts;
    std::vector<std::uint32_t> m_unknown;     // rules of the share
    std::vector<std::uint32_t> m_unknownIn;   // by rule: the last share with it in m_unknown
    std::uint32_t m_iShare = 0;
    std::uint64_t m_iStepsBefore = 0;
    std::span<RuleFinding> m_known;   // of the instance in hand, those that are still to come
    const Node* m_pSelf = pSelfNode();
};

void Worker::vCheckUnique(std::uint32_t iRule, const std::vector<ifc::Entity*>& population,
                          std::vector<RuleFinding>& findings) {
    const Rule& rule = m_program.rules[iRule];
    std::unordered_multimap<std::uint64_t, ifc::Entity*> seen;
    std::vector<Value> values(rule.attributes.size());
    const auto boEvaluate = [&](ifc::Entity* pEntity, std::vector<Value>& result) {
        for (std::size_t i = 0; i < rule.attributes.size(); ++i)
            result[i] = m_evaluator.evaluateNode(*rule.attributes[i], rule.code, valueOf(pEntity));
        return std::none_of(result.begin(), result.end(), [](const Value& value) { return value.boNull(); });
    };
    for (ifc::Entity* pEntity : population) {
        m_evaluator.vReset();
        ++m_counts[iRule].iEvaluated;
        if (!boEvaluate(pEntity, values)) {
            if (m_evaluator.boFailed()) {
                --m_counts[iRule].iEvaluated;
                ++m_counts[iRule].iFailed;
                findings.push_back({.sort = RuleFinding::Sort::NotEvaluated,
                                    .iRule = iRule,
                                    .pEntity = pEntity,
                                    .sReason = m_evaluator.sFault()});
            }
            continue;
        }
        std::uint64_t uKey = 0;
        for (const Value& value : values) uKey = uKey * 31 + uHash(value);
        const auto [first, last] = seen.equal_range(uKey);
        ifc::Entity* pTwin = nullptr;
        for (auto p = first; p != last && !pTwin; ++p) {
            std::vector<Value> others(values.size());
            bool boSame = boEvaluate(p->second, others);
            for (std::size_t i = 0; i < values.size() && boSame; ++i)
                boSame = same(m_evaluator, values[i], others[i]) == Logical::True;
            if (boSame) pTwin = p->second;
        }
        if (!pTwin) {
            seen.emplace(uKey, pEntity);
            continue;
        }
        std::string sReason = rule.sText + " = ";
        for (const Value& value : values)
            sReason += (&value == values.data() ? "" : ", ") + sValueText(m_evaluator, value);
        sReason += ", as " + sValueText(m_evaluator, valueOf(pTwin));
        findings.push_back({.iRule = iRule, .pEntity = pEntity, .sReason = std::move(sReason)});
    }
}

}   // namespace

// Shares of the instances go to whoever has time; what each share found keeps its place.
class RuleRun::Work {
public:
    Work(const Program& program, const ifc::Data& data, RuleOptions options)
        : m_program(program),
          m_options(std::move(options)),
          m_index(data),
          m_entities(data.entities()),
          m_plans(program),
          m_iBudget(m_options.iStepsOfModel + m_options.iStepsOfInstance * m_entities.size()) {
        for (const ifc::Entity* pEntity : m_entities)
            if (pEntity->pSchemaEntity()) m_plans.vMake(*pEntity->pSchemaEntity());
        m_shares.resize((m_entities.size() + g_iShare - 1) / g_iShare);
        for (unsigned i = 0; i < iThreadCount(); ++i)
            m_workers.emplace_back(program, m_index, m_plans, m_options.limits);
    }

    RuleResult check() {
        vOnAllThreads([this](Worker& worker, bool boTells) { vWork(worker, boTells); });
        RuleResult result;
        const std::size_t iWhole = iWithinBudget(result.iSteps);
        std::size_t iFindings = 0;
        for (std::size_t i = 0; i < iWhole; ++i) iFindings += m_shares[i].findings.size();
        result.findings.reserve(iFindings);
        for (std::size_t i = 0; i < iWhole; ++i)
            for (RuleFinding& finding : std::exchange(m_shares[i].findings, {}))
                result.findings.push_back(std::move(finding));
        const bool boAll = iWhole == m_shares.size();
        if (boAll && !boStop()) vCheckWhole(result);
        result.boStopped = boStop();
        result.counts.resize(m_program.rules.size());
        for (const Worker& worker : m_workers) vAddCounts(worker.counts(), result.counts);
        if (!result.boStopped && !boAll) vLeaveOut(iWhole, result);
        m_shares.clear();
        return result;
    }

    void vReasons(std::vector<RuleFinding>& findings) {
        // Findings of one instance stand together, those of the model as a whole have their reasons.
        std::vector<std::span<RuleFinding>> runs;
        for (std::size_t i = 0, iEnd = 0; i < findings.size(); i = iEnd) {
            bool boTold = false;
            for (; iEnd < findings.size() && findings[iEnd].pEntity == findings[i].pEntity &&
                   boOfInstance(findings[iEnd]);
                 ++iEnd)
                boTold = boTold || findings[iEnd].boTold;
            if (boTold) runs.emplace_back(&findings[i], iEnd - i);
            iEnd = std::max(iEnd, i + 1);
        }
        m_iNext = 0;
        vOnAllThreads([&](Worker& worker, bool) {
            for (std::size_t i = m_iNext++; i < runs.size() && !boStop(); i = m_iNext++)
                worker.vExplain(*runs[i].front().pEntity, runs[i]);
        });
    }

private:
    struct Share {
        std::vector<RuleFinding> findings;
        std::vector<std::uint32_t> unknown;
        std::uint64_t iSteps = 0;
        bool boDone = false;
    };

    [[nodiscard]] bool boStop() const { return m_boFault || m_options.stop.stop_requested(); }

    [[nodiscard]] bool boOfInstance(const RuleFinding& finding) const {
        const Rule::Sort sort = m_program.rules[finding.iRule].sort;
        return sort == Rule::Sort::Entity || sort == Rule::Sort::Type;
    }

    [[nodiscard]] unsigned iThreadCount() const {
        // A number that has to be dealt changes the model.
        const bool boNumbered = m_entities.empty() || boKept();
        const unsigned iWanted = m_options.iThreads ? m_options.iThreads : std::thread::hardware_concurrency();
        return boNumbered ? std::max(1U, std::min(iWanted, static_cast<unsigned>(m_shares.size()))) : 1U;
    }
    [[nodiscard]] bool boKept() const {
        const ifc::Data& data = m_index.data();
        return data.pEntityFromId(data.iIdFromEntity(*m_entities.front())) != nullptr;
    }

    template <class Function>
    void vOnAllThreads(const Function& function) {
        util::vOnAllThreads(
            m_workers.size() - 1, [&](std::size_t i) { function(m_workers[i], i == 0); }, [this] { m_boFault = true; });
    }

    void vWork(Worker& worker, bool boTells) {
        for (std::size_t iShare = m_iNext++; iShare < m_shares.size() && m_iTaken <= m_iBudget && !boStop();
             iShare = m_iNext++) {
            const std::size_t iEnd = std::min(m_entities.size(), (iShare + 1) * g_iShare);
            Share& share = m_shares[iShare];
            worker.vBeginShare();
            for (std::size_t i = iShare * g_iShare; i < iEnd && worker.iStepsOfShare() <= m_iBudget && !boStop(); ++i)
                worker.vCheck(*m_entities[i], share.findings);
            share.unknown = worker.takeUnknown();
            share.iSteps = worker.iStepsOfShare();
            share.boDone = true;
            m_iTaken += share.iSteps;
            if (boTells && m_options.progress) m_options.progress(iEnd, m_entities.size());
        }
    }

    // How many shares cost no more than the budget, and what all of them cost. Shares are taken in order, so those in
    // front of the one that goes past the budget are done, whoever did them.
    [[nodiscard]] std::size_t iWithinBudget(std::uint64_t& iSteps) const {
        std::size_t iWhole = 0;
        for (; iWhole < m_shares.size() && m_shares[iWhole].boDone; ++iWhole) {
            iSteps += m_shares[iWhole].iSteps;
            if (iSteps > m_iBudget) return iWhole;
        }
        return iWhole;
    }

    static void vAddCounts(const std::vector<RuleCount>& from, std::vector<RuleCount>& to) {
        for (std::size_t i = 0; i < to.size(); ++i) {
            to[i].iEvaluated += from[i].iEvaluated;
            to[i].iUnknown += from[i].iUnknown;
            to[i].iFailed += from[i].iFailed;
        }
    }

    // Counts without the shares that are left out, whose rules count as not evaluated.
    void vLeaveOut(std::size_t iWhole, RuleResult& result) const {
        result.iLeftOut = m_entities.size() - std::min(m_entities.size(), iWhole * g_iShare);
        result.boWholeLeftOut = true;
        for (RuleCount& count : result.counts) count.iUnknown = count.iFailed = 0;
        for (std::size_t i = 0; i < iWhole; ++i)
            for (const std::uint32_t iRule : m_shares[i].unknown) ++result.counts[iRule].iUnknown;
        for (const RuleFinding& finding : result.findings)
            if (finding.sort == RuleFinding::Sort::NotEvaluated) ++result.counts[finding.iRule].iFailed;
        std::unordered_set<const schema::Entity*> types;
        for (std::size_t i = iWhole * g_iShare; i < m_entities.size(); ++i)
            if (const schema::Entity* pType = m_entities[i]->pSchemaEntity(); pType && types.insert(pType).second)
                for (const std::uint32_t iRule : *m_plans.plan(*pType).pRules) ++result.counts[iRule].iFailed;
        for (std::size_t i = 0; i < result.counts.size(); ++i)
            if (m_program.rules[i].sort != Rule::Sort::Entity) ++result.counts[i].iFailed;
    }

    // What concerns the model as a whole, on the caller's thread, with what is left of the budget.
    void vCheckWhole(RuleResult& result) {
        Worker& worker = m_workers[0];
        worker.vBeginShare();
        const auto boEnough = [&] { return !boStop() && result.iSteps + worker.iStepsOfShare() <= m_iBudget; };
        for (std::uint32_t iRule = 0; iRule < m_program.rules.size() && m_options.boUnique; ++iRule) {
            const Rule& rule = m_program.rules[iRule];
            const schema::Entity* pOwner = rule.sort == Rule::Sort::Unique ? schema::pAsEntity(rule.pOwner) : nullptr;
            if (pOwner && boEnough())
                worker.vCheckUnique(iRule, m_index.population(*pOwner), result.findings);
            else if (pOwner)
                worker.vLeaveOut(iRule);
        }
        for (const GlobalRule& rule : m_program.globals) {
            if (boEnough())
                worker.vCheckGlobal(rule, result.findings);
            else
                for (const std::uint32_t iRule : rule.rules) worker.vLeaveOut(iRule);
        }
        result.boWholeLeftOut = !boEnough();
        result.iSteps += worker.iStepsOfShare();
    }

    const Program& m_program;
    const RuleOptions m_options;
    ModelIndex m_index;
    const std::vector<ifc::Entity*>& m_entities;
    Plans m_plans;
    std::vector<Share> m_shares;
    std::atomic<std::size_t> m_iNext{0};
    const std::uint64_t m_iBudget;            // steps
    std::atomic<std::uint64_t> m_iTaken{0};   // of shares that are done
    std::atomic<bool> m_boFault{false};       // a thread threw: the others are to end
    std::deque<Worker> m_workers;
};

RuleRun::RuleRun(const Program& program, const ifc::Data& data, const RuleOptions& options)
    : m_pWork(std::make_unique<Work>(program, data, options)) {}

RuleRun::~RuleRun() = default;

RuleResult RuleRun::check() { return m_pWork->check(); }

void RuleRun::vReasons(std::vector<RuleFinding>& findings) { m_pWork->vReasons(findings); }

RuleResult checkRules(const Program& program, const ifc::Data& data, const RuleOptions& options) {
    RuleRun run(program, data, options);
    RuleResult result = run.check();
    run.vReasons(result.findings);
    return result;
}

}   // namespace oxa::check::rules
