// SPDX-License-Identifier: Apache-2.0
// StrictCheck: "oxaifc check --strict": is a file valid, by which levels not, and where.
//
// For      the verb "check", which has the options.
// Errors   Failure, for levels that there are not, a file that is no STEP file, and what the system can't read or write.
// Threads  one.
#pragma once

#include <string>
#include <vector>

#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/Report.h"

namespace oxa::tool {

// What of the options of the verb counts. Nothing is owned.
struct StrictOptions {
    const ModelOptions& model;
    const std::vector<std::string>& paths;
    const std::string& sLevels;   // levels with a comma between; "true" for all
    const ReportOptions& report;
    const std::string& sSarif;   // OUT; empty for none
    bool boJson;
    bool boAll;
};

// The exit code: fine where all files are valid by the levels that were asked for, and that was decided.
[[nodiscard]] int iStrictCheck(const StrictOptions& options, Output& output);

}   // namespace oxa::tool
