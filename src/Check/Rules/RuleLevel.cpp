// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/RuleLevel.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "Check/Rules/RuleCheck.h"
#include "Format/Ifc/IfcFileError.h"
#include "Model/Error.h"

namespace oxa::check {

namespace {

using rules::Program;
using rules::Rule;
using rules::RuleFinding;
using rules::RuleResult;

std::string sCounted(std::size_t iCount, const char* sOne, const char* sMany) {
    return std::to_string(iCount) + ' ' + (iCount == 1 ? sOne : sMany);
}

// A finding that is to be told, with where it stands.
struct Placed {
    std::uint64_t iLine = 0;
    std::uint64_t iId = 0;
    RuleFinding* pFinding = nullptr;
};

std::vector<Placed> placed(std::vector<RuleFinding>& findings, const ifc::Data& data, InstanceTable& instances) {
    std::vector<Placed> result;
    result.reserve(findings.size());
    for (RuleFinding& finding : findings) {
        if (!finding.boTold) continue;
        Placed& place = result.emplace_back();
        place.pFinding = &finding;
        if (!finding.pEntity) continue;
        place.iId = data.iIdFromEntity(*finding.pEntity);
        if (const Instance* pInstance = instances.pFind(place.iId)) place.iLine = pInstance->iLine;
    }
    // Those of the model as a whole last; stable, for several of one instance.
    std::stable_sort(result.begin(), result.end(), [](const Placed& a, const Placed& b) {
        return std::tuple(a.iLine == 0, a.iLine, a.iId) < std::tuple(b.iLine == 0, b.iLine, b.iId);
    });
    return result;
}

Failure failureOf(const Program& program, const Placed& place) {
    const RuleFinding& finding = *place.pFinding;
    const Rule& rule = program.rules[finding.iRule];
    const bool boViolated = finding.sort == RuleFinding::Sort::Violated;
    Failure failure;
    failure.level = CheckLevel::Rules;
    failure.weight = boViolated ? CheckWeight::Failure : CheckWeight::Note;
    failure.key = boViolated ? "Rules_Violated" : "Rules_NotEvaluated";
    failure.rule = rule.sName;
    failure.message = boViolated ? "the rule does not hold" : "the rule could not be evaluated";
    failure.expected = rule.sText;
    failure.line = place.iLine;
    failure.id = place.iId;
    if (finding.pAttribute) failure.attribute = finding.pAttribute->sName;
    if (finding.pEntity) failure.type = finding.pEntity->pSchemaEntity()->sName;
    return failure;
}

// Of a million failures few are told: only these get their reasons.
void vCollect(rules::RuleRun& run, const Program& program, std::vector<RuleFinding>& findings, const ifc::Data& data,
              InstanceTable& instances, Collector& collector) {
    const std::vector<Placed> places = placed(findings, data, instances);
    for (const Placed& place : places) place.pFinding->boTold = collector.boCount(failureOf(program, place));
    run.vReasons(findings);
    for (const Placed& place : places) {
        if (!place.pFinding->boTold) continue;
        Failure failure = failureOf(program, place);
        failure.found = place.pFinding->sReason;
        collector.vPlace(failure);
    }
}

CheckRuleCounts countsOf(const Program& program, const RuleResult& result) {
    CheckRuleCounts counts;
    counts.schema = program.graph.sName;
    for (std::size_t i = 0; i < program.rules.size(); ++i) {
        const Rule& rule = program.rules[i];
        if (rule.sort == Rule::Sort::Unique) continue;   // the schema level's
        ++counts.known;
        const bool boFaulty = !rule.code.sFault.empty() || (rule.pGlobal && !rule.pGlobal->sFault.empty());
        ++(boFaulty || result.counts[i].iFailed ? counts.notEvaluated : counts.evaluated);
        counts.indeterminate += result.counts[i].iUnknown ? 1U : 0U;
    }
    return counts;
}

}   // namespace

RuleLevel::RuleLevel(const ifc::def::SchemaPset& schema, const CheckOptions& options)
    : m_schema(schema),
      m_options(options),
      m_program(rules::programOf(schema)) {}

void RuleLevel::vRead(std::istream& bytes) {
    ifc::io::ReadError errors;
    ifc::ReadOptions how;
    how.schemaFromName = [this](const std::string&) { return const_cast<ifc::def::SchemaPset*>(&m_schema); };
    how.boKeepIds = true;
    how.boSingleThreaded = m_options.threads == 1;
    m_boWhole = m_file.boRead(bytes, errors, how);
    if (!m_boWhole) {
        m_sLost = "the model could not be read to its end";
        return;
    }
    m_losses.emplace(*m_program.pProgram, m_file.data(), errors);
    if (m_losses->iCount())
        m_sLost = sCounted(m_losses->iCount(), "fault of the file left", "faults of the file left") +
                  " the model without what the rules look at";
}

RuleLevelResult RuleLevel::evaluate(std::uint64_t iBytes, InstanceTable& instances, Collector& collector) {
    RuleLevelResult level;
    level.sAgainst = m_program.pProgram ? m_sLost : m_program.sAgainst;
    if (!m_program.pProgram) return level;
    const Program& program = *m_program.pProgram;
    const ifc::Data& data = m_file.data();
    if (m_options.stop.stop_requested()) throw Stopped("the check was stopped");
    if (!m_boWhole) {
        // Of a part that ends anywhere rules would say what is not so.
        RuleResult none;
        none.counts.resize(program.rules.size(), {.iFailed = 1});
        level.counts = countsOf(program, none);
        return level;
    }
    rules::RuleOptions how;
    how.iThreads = m_options.threads;
    how.boUnique = false;
    how.iStepsOfModel = m_options.ruleSteps + std::min(iBytes, ~std::uint64_t{0} - m_options.ruleSteps);
    how.limits.iSteps = std::min(how.limits.iSteps, m_options.ruleSteps);
    how.stop = m_options.stop;
    if (m_options.progress)
        how.progress = [&](std::size_t iDone, std::size_t iAll) {
            m_options.progress({iBytes + iBytes * iDone / std::max<std::size_t>(iAll, 1), 2 * iBytes});
        };
    rules::RuleRun run(program, data, how);
    RuleResult result = run.check();
    // They stay where they are: the reasons of an instance are found by the order of its findings.
    for (RuleFinding& finding : result.findings)
        finding.boTold = !m_losses->boLost(finding.pEntity, finding.pAttribute);
    if (!result.boStopped) vCollect(run, program, result.findings, data, instances, collector);
    if (m_options.stop.stop_requested()) throw Stopped("the check was stopped");
    level.counts = countsOf(program, result);
    if (!level.counts.notEvaluated) return level;
    level.sAgainst += (level.sAgainst.empty() ? "" : "; ") + sCounted(level.counts.notEvaluated, "rule", "rules") +
                      " could not be evaluated";
    if (result.iLeftOut)
        level.sAgainst += ": they took too many steps, and " + std::to_string(result.iLeftOut) + " of " +
                          sCounted(data.entities().size(), "instance was", "instances were") + " not looked at";
    else if (result.boWholeLeftOut)
        level.sAgainst += ": they took too many steps";
    return level;
}

}   // namespace oxa::check
