// SPDX-License-Identifier: Apache-2.0
// ExpressRules: a schema in EXPRESS with its rules, and behind a line "DATA;" the instances that they are evaluated for.

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Check/Check.h"
#include "Fuzz.h"
#include "provider/SchemaLoader.h"

namespace oxa::fuzz {

namespace {

constexpr std::string_view g_data = "\nDATA;\n";

CheckResult checked(const std::string& sFile, ifc::def::SchemaPset& schema, unsigned iThreads) {
    CheckOptions options;
    options.threads = iThreads;
    options.ruleSteps = 20'000;   // nothing here needs more, and a loop ends soon
    options.schema = [&schema](const std::string&) { return &schema; };
    std::istringstream stream(sFile);
    return checkStream(stream, options);
}

// All that a result says, as one text.
std::string sText(const CheckResult& result) {
    std::string sAll;
    for (const CheckLevelSummary& level : result.levels) sAll += level.reason + '\n';
    for (const CheckRuleCounts& counts : result.rules)
        sAll += std::to_string(counts.known) + ' ' + std::to_string(counts.evaluated) + ' ' +
                std::to_string(counts.indeterminate) + ' ' + std::to_string(counts.notEvaluated) + '\n';
    for (const CheckRecord& record : result.records())
        sAll += std::to_string(record.place->line) + ' ' + record.group->rule + ' ' + record.group->expected + ' ' +
                record.place->found + '\n';
    return sAll;
}

}   // namespace

void vRun(std::string_view input) {
    const std::size_t iData = std::min(input.find(g_data), input.size());
    const ExactBytes text(input.substr(0, iData));
    std::vector<ifc::SchemaMessage> messages;
    const auto pSchema = ifc::SchemaLoader::pSchemaFromExpress(text.text(), messages);
    if (!pSchema) return;
    std::string sFile = "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');"
                        "FILE_SCHEMA(('S'));ENDSEC;DATA;\n";
    sFile += input.substr(std::min(iData + g_data.size(), input.size()));
    sFile += "\nENDSEC;END-ISO-10303-21;\n";
    const CheckResult result = checked(sFile, *pSchema, 1);
    vExpect(sText(checked(sFile, *pSchema, 2)) == sText(result), "any number of threads finds the same");
    for (const CheckRuleCounts& counts : result.rules)
        vExpect(counts.known == counts.evaluated + counts.notEvaluated, "each rule is evaluated or told not to be");
}

}   // namespace oxa::fuzz
