// SPDX-License-Identifier: Apache-2.0
// DiffModels: a small model as its statements, and what "oxaifc diff" tells of two of them.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ProgramRun.h"

namespace oxa::test {

// A model as its statements by number, so that a test changes one.
using Statements = std::map<int, std::string>;

// Three walls, with properties, placement and shape.
[[nodiscard]] Statements baseModel();
[[nodiscard]] std::string sModelFile(const Statements& statements, std::string_view schema = "IFC4");
// The two as files, compared by the program with these options.
[[nodiscard]] ProgramRun diffModels(const std::string& sOld, const std::string& sNew,
                                    const std::vector<std::string>& options = {"--json"});

}   // namespace oxa::test
