// SPDX-License-Identifier: Apache-2.0
// RuleLevel: the level "rules" of a check: the model is read, the rules of its schema are evaluated, failures collected.
//
// For      Check.cpp, which reads the model beside the levels that need none, or behind them.
// Memory   the model, and what is wrong.
// Threads  as CheckOptions::threads says; vRead on any one thread, all else on the check's.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "Check/Check.h"
#include "Check/Collector.h"
#include "Check/Rules/BuiltInRules.h"
#include "Check/Rules/ReadLosses.h"
#include "Check/Syntax/InstanceTable.h"
#include "Format/Ifc/IfcFile.h"

namespace oxa::check {

struct RuleLevelResult {
    std::string sAgainst;   // why not all could be evaluated; empty where all was
    CheckRuleCounts counts;
};

class RuleLevel {
public:
    // Both have to outlive this.
    RuleLevel(const ifc::def::SchemaPset& schema, const CheckOptions& options);

    // Whether there are rules that can be evaluated: without any no model is needed.
    [[nodiscard]] bool boPossible() const noexcept { return m_program.pProgram != nullptr; }
    // From the file's beginning.
    void vRead(std::istream& bytes);
    // "instances" has the lines of instances by their numbers. Throws Stopped.
    [[nodiscard]] RuleLevelResult evaluate(std::uint64_t iBytes, InstanceTable& instances, Collector& collector);

private:
    const ifc::def::SchemaPset& m_schema;
    const CheckOptions& m_options;
    rules::SchemaProgram m_program;
    ifc::File m_file;
    std::optional<rules::ReadLosses> m_losses;
    bool m_boWhole = true;   // the model was read to its end
    std::string m_sLost;     // what the model lacks of the file; empty where it lacks nothing
};

}   // namespace oxa::check
