// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/RuleLevel.h"

#include "Check/Rules/BuiltInRules.h"
#include "Check/Rules/ReadLosses.h"
#include "Check/Rules/RuleCheck.h"
#include "Format/Ifc/IfcFile.h"
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

// Whether the file was read to its end.
bool boRead(ifc::File& file, std::istream& bytes, const ifc::def::SchemaPset& schema, const CheckOptions& options,
            ifc::io::ReadError& errors) {
    ifc::ReadOptions how;
    how.schemaFromName = [&schema](const std::string&) { return const_cast<ifc::def::SchemaPset*>(&schema); };
    how.boKeepIds = true;
    how.boSingleThreaded = options.threads == 1;
    return file.boRead(bytes, errors, how);
}

void vCollect(const Program& program, const RuleFinding& finding, ifc::File& file, InstanceTable& instances,
              Collector& collector) {
    const Rule& rule = program.rules[finding.iRule];
    const bool boViolated = finding.sort == RuleFinding::Sort::Violated;
    Failure failure;
    failure.level = CheckLevel::Rules;
    failure.weight = boViolated ? CheckWeight::Failure : CheckWeight::Note;
    failure.key = boViolated ? "Rules_Violated" : "Rules_NotEvaluated";
    failure.rule = rule.sName;
    failure.message = boViolated ? "the rule does not hold" : "the rule could not be evaluated";
    failure.expected = rule.sText;
    failure.found = finding.sReason;
    if (finding.pAttribute) failure.attribute = finding.pAttribute->sName;
    if (finding.pEntity) {
        failure.type = finding.pEntity->pSchemaEntity()->sName;
        failure.id = file.data().iIdFromEntity(*finding.pEntity);
        if (const Instance* pInstance = instances.pFind(failure.id)) failure.line = pInstance->iLine;
    }
    collector.vAdd(failure);
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

RuleLevelResult ruleLevel(std::istream& bytes, const ifc::def::SchemaPset& schema, const CheckOptions& options,
                          InstanceTable& instances, Collector& collector) {
    RuleLevelResult level;
    const rules::SchemaProgram program = rules::programOf(schema);
    if (!program.pProgram) {
        level.sAgainst = program.sAgainst;
        return level;
    }
    ifc::File file;
    ifc::io::ReadError errors;
    if (!boRead(file, bytes, schema, options, errors)) level.sAgainst = "the model could not be read to its end";
    const rules::ReadLosses losses(*program.pProgram, file.data(), errors);
    if (losses.iCount() && level.sAgainst.empty())
        level.sAgainst = sCounted(losses.iCount(), "fault of the file left", "faults of the file left") +
                         " the model without what the rules look at";
    if (options.stop.stop_requested()) throw Stopped("the check was stopped");
    rules::RuleOptions how;
    how.iThreads = options.threads;
    how.boUnique = false;
    how.stop = options.stop;
    const RuleResult result = rules::checkRules(*program.pProgram, file.data(), how);
    if (result.boStopped) throw Stopped("the check was stopped");
    for (const RuleFinding& finding : result.findings)
        if (!losses.boLost(finding.pEntity, finding.pAttribute))
            vCollect(*program.pProgram, finding, file, instances, collector);
    level.counts = countsOf(*program.pProgram, result);
    if (level.counts.notEvaluated && level.sAgainst.empty())
        level.sAgainst = sCounted(level.counts.notEvaluated, "rule", "rules") + " could not be evaluated";
    return level;
}

}   // namespace oxa::check
