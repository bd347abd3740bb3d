// SPDX-License-Identifier: Apache-2.0
// vRender: a template text of inja, and the files that it includes, rendered so that it can fail and nothing
// worse.
//
// For      Errors::writeReport. inja itself is in the source alone, for it is slow to compile.
// Limits   docs/robustness.md has them. How long a template runs and how much it writes is its own affair.
// Threads  any number at once.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace oxa::ifc::report {

using Callback = std::function<nlohmann::json(std::vector<const nlohmann::json*>& arguments)>;

// Names of files in "text" are relative to "sFolder", which ends in "/", and inside a file to the folder of
// that. A template calls "localize" by this name, with any number of arguments. What is wrong with the text,
// with a file or with the data throws a std::exception; what was rendered up to then is in "out".
void vRender(std::string_view text, const std::string& sFolder, const Callback& localize, const nlohmann::json& data,
             std::ostream& out);

}   // namespace oxa::ifc::report
