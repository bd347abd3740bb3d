// SPDX-License-Identifier: Apache-2.0
// The levels one after another: the statements of the file once through scanner, header and schema, then the rules.
#include "Check/Check.h"

#include <fstream>
#include <string>

#include "Check/Collector.h"
#include "Check/Header/HeaderLevel.h"
#include "Check/Syntax/ExchangeStructure.h"
#include "Model/Error.h"

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

}   // namespace

CheckResult checkStream(std::istream& bytes, const CheckOptions& options) {
    CheckResult result;
    check::Collector collector(options.mostPlaces);
    check::InstanceTable instances;
    check::HeaderLevel header(options, collector);
    check::ExchangeStructure structure(bytes, options, collector, instances);
    structure.vReadHeader(header);
    header.vHeaderEnd();
    check::NoSink none;
    structure.vReadData(none);
    result.statements = structure.iStatements();
    result.bytes = structure.iBytes();
    collector.vFinish(result);
    vConclude(result, options, CheckLevel::Syntax, {});
    vConclude(result, options, CheckLevel::Header, {});
    vConclude(result, options, CheckLevel::Schema, "statements were not held to the schema");
    vConclude(result, options, CheckLevel::Rules, "the schema's rules were not evaluated");
    return result;
}

CheckResult checkFile(const std::filesystem::path& file, const CheckOptions& options) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw FileError(file.string() + ": cannot be read");
    return checkStream(stream, options);
}

}   // namespace oxa
