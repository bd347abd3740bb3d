// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/RuleCheck.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <thread>

#include "Check/Rules/Access.h"
#include "Check/Rules/Compare.h"
#include "Check/Rules/Explain.h"
#include "Check/Rules/Handlers.h"

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
          m_counts(program.rules.size()) {}

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
            vCheckValue(value, {RuleFinding::Sort::Violated, 0, &entity, cell.pAttribute, {}}, findings);
        }
        for (const std::uint32_t iRule : *plan.pRules)
            vCheckRule(iRule, valueOf(&entity), {RuleFinding::Sort::Violated, iRule, &entity, nullptr, {}}, findings);
    }

    void vCheckGlobal(const GlobalRule& rule, std::vector<RuleFinding>& findings) {
        const bool boRan = m_evaluator.boRunGlobal(rule);
        for (const std::uint32_t iRule : rule.rules) {
            RuleFinding finding{RuleFinding::Sort::Violated, iRule, nullptr, nullptr, {}};
            const Node& condition = *m_program.rules[iRule].code.pExpression;
            const auto evaluate = [this](const Node& node) { return m_evaluator.evaluateInFrame(node); };
            const Value result = boRan ? evaluate(condition) : Value();
            vTake(result, condition, evaluate, std::move(finding), findings);
        }
    }

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
            finding.sReason = m_evaluator.sFault();
            findings.push_back(std::move(finding));
            return;
        }
        ++count.iEvaluated;
        if (result.boNull() || result.eLogical == Logical::Unknown) {
            ++count.iUnknown;
            return;
        }
        if (result.eLogical == Logical::True) return;
        finding.sReason = sReason(m_evaluator, condition, evaluate);
        if (finding.pAttribute) {
            const Value value = evaluate(*m_pSelf);
            finding.sReason = finding.pAttribute->sName + " = " + sValueText(m_evaluator, value) +
                              (finding.sReason.empty() ? "" : "; " + finding.sReason);
        }
        findings.push_back(std::move(finding));
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
                findings.push_back({RuleFinding::Sort::NotEvaluated, iRule, pEntity, nullptr, m_evaluator.sFault()});
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
        findings.push_back({RuleFinding::Sort::Violated, iRule, pEntity, nullptr, std::move(sReason)});
    }
}

// Shares of the instances go to whoever has time; what each share found keeps its place.
class Run {
public:
    Run(const Program& program, const ifc::Data& data, const RuleOptions& options)
        : m_program(program),
          m_options(options),
          m_index(data),
          m_entities(data.entities()),
          m_plans(program) {
        for (const ifc::Entity* pEntity : m_entities)
            if (pEntity->pSchemaEntity()) m_plans.vMake(*pEntity->pSchemaEntity());
        m_shares.resize((m_entities.size() + g_iShare - 1) / g_iShare);
    }

    RuleResult run() {
        const unsigned iThreads = iThreadCount();
        for (unsigned i = 0; i < iThreads; ++i) m_workers.emplace_back(m_program, m_index, m_plans, m_options.limits);
        std::vector<std::thread> threads;
        for (unsigned i = 1; i < iThreads; ++i) threads.emplace_back([this, i] { vWork(m_workers[i], false); });
        vWork(m_workers[0], true);
        for (std::thread& thread : threads) thread.join();
        RuleResult result;
        for (std::vector<RuleFinding>& share : m_shares)
            std::move(share.begin(), share.end(), std::back_inserter(result.findings));
        if (!boStop()) vCheckWhole(result.findings);
        result.boStopped = boStop();
        result.counts.resize(m_program.rules.size());
        for (const Worker& worker : m_workers)
            for (std::size_t i = 0; i < result.counts.size(); ++i) {
                result.counts[i].iEvaluated += worker.counts()[i].iEvaluated;
                result.counts[i].iUnknown += worker.counts()[i].iUnknown;
                result.counts[i].iFailed += worker.counts()[i].iFailed;
            }
        return result;
    }

private:
    [[nodiscard]] bool boStop() const { return m_options.stop.stop_requested(); }

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

    // What concerns the model as a whole, on the caller's thread.
    void vCheckWhole(std::vector<RuleFinding>& findings) {
        for (std::uint32_t iRule = 0; iRule < m_program.rules.size() && m_options.boUnique; ++iRule) {
            const Rule& rule = m_program.rules[iRule];
            const schema::Entity* pOwner = rule.sort == Rule::Sort::Unique ? schema::pAsEntity(rule.pOwner) : nullptr;
            if (pOwner) m_workers[0].vCheckUnique(iRule, m_index.population(*pOwner), findings);
        }
        for (const GlobalRule& rule : m_program.globals) m_workers[0].vCheckGlobal(rule, findings);
    }

    void vWork(Worker& worker, bool boTells) {
        for (std::size_t iShare = m_iNext++; iShare < m_shares.size() && !boStop(); iShare = m_iNext++) {
            const std::size_t iEnd = std::min(m_entities.size(), (iShare + 1) * g_iShare);
            for (std::size_t i = iShare * g_iShare; i < iEnd; ++i) worker.vCheck(*m_entities[i], m_shares[iShare]);
            if (boTells && m_options.progress) m_options.progress(iEnd, m_entities.size());
        }
    }

    const Program& m_program;
    const RuleOptions& m_options;
    ModelIndex m_index;
    const std::vector<ifc::Entity*>& m_entities;
    Plans m_plans;
    std::vector<std::vector<RuleFinding>> m_shares;
    std::atomic<std::size_t> m_iNext{0};
    std::deque<Worker> m_workers;
};

}   // namespace

RuleResult checkRules(const Program& program, const ifc::Data& data, const RuleOptions& options) {
    return Run(program, data, options).run();
}

}   // namespace oxa::check::rules
