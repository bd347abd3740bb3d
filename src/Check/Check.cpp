// SPDX-License-Identifier: Apache-2.0
// The levels one after another: the statements of the file once through scanner, header and schema, then the rules.
#include "Check/Check.h"

#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "Check/Collector.h"
#include "Check/Header/HeaderLevel.h"
#include "Check/Rules/RuleLevel.h"
#include "Check/Schema/SchemaLevel.h"
#include "Check/Syntax/ExchangeStructure.h"
#include "Model/Error.h"
#include "platform/Path.h"

namespace oxa {

namespace {

using State = CheckLevelSummary::State;

bool boAsked(const CheckOptions& options, CheckLevel level) { return options.levels[static_cast<std::size_t>(level)]; }

// What became of a level that was asked for: done where nothing speaks against it.
void vConclude(CheckResult& result, const CheckOptions& options, CheckLevel level, std::string sAgainst) {
    if (!boAsked(options, level)) return;
    CheckLevelSummary& summary = result.levels[static_cast<std::size_t>(level)];
    summary.state = sAgainst.empty() ? State::Done : State::NotPossible;
    summary.reason = std::move(sAgainst);
}

std::string sNoSchema(const check::HeaderLevel& header) {
    return header.sSchemaName().empty() ? "the header names no schema"
                                        : "the schema " + header.sSchemaName() + " is not known";
}

// Why not all statements were held to the schema; empty where they were.
std::string sAgainstSchema(const check::HeaderLevel& header, const std::optional<check::SchemaLevel>& schema) {
    if (!schema) return sNoSchema(header);
    const std::uint64_t iFaulty = schema->iFaulty();
    if (iFaulty == 0) return {};
    return std::to_string(iFaulty) + (iFaulty == 1 ? " statement is" : " statements are") +
           " faulty in syntax and not looked at wholly";
}

// The rules need a model: the stream is read once more from where it stood.
std::string sRules(std::istream& bytes, std::istream::pos_type begin, const check::HeaderLevel& header,
                   const CheckOptions& options, check::InstanceTable& instances, check::Collector& collector,
                   CheckResult& result) {
    if (!boAsked(options, CheckLevel::Rules)) return {};
    if (!header.pSchema()) return sNoSchema(header);
    bytes.clear();
    if (begin == std::istream::pos_type(-1) || !bytes.seekg(begin)) return "the stream can't be read a second time";
    check::RuleLevelResult rules = check::ruleLevel(bytes, *header.pSchema(), options, instances, collector);
    if (!rules.counts.schema.empty()) result.rules.push_back(std::move(rules.counts));
    return rules.sAgainst;
}

}   // namespace

CheckResult checkStream(std::istream& bytes, const CheckOptions& options) {
    CheckResult result;
    const std::istream::pos_type begin = bytes.tellg();
    check::Collector collector(options.mostPlaces);
    check::InstanceTable instances;
    check::HeaderLevel header(options, collector);
    check::ExchangeStructure structure(bytes, options, collector, instances);
    structure.vReadHeader(header);
    header.vHeaderEnd();
    // From here on it is known which schema the file names.
    std::optional<check::SchemaLevel> schema;
    if (boAsked(options, CheckLevel::Schema) && header.pSchema())
        schema.emplace(*header.pSchema(), collector, instances);
    check::NoSink none;
    structure.vReadData(schema ? static_cast<check::StatementSink&>(*schema) : none);
    if (schema) schema->vFinish();

    result.statements = structure.iStatements();
    result.bytes = structure.iBytes();
    const std::string sAgainstRules = sRules(bytes, begin, header, options, instances, collector, result);
    collector.vFinish(result);
    vConclude(result, options, CheckLevel::Syntax, {});
    vConclude(result, options, CheckLevel::Header, {});
    vConclude(result, options, CheckLevel::Schema, sAgainstSchema(header, schema));
    vConclude(result, options, CheckLevel::Rules, sAgainstRules);
    return result;
}

CheckResult checkFile(const std::filesystem::path& file, const CheckOptions& options) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw FileError(str::sOfPath(file) + ": cannot be read");
    return checkStream(stream, options);
}

}   // namespace oxa
