// SPDX-License-Identifier: Apache-2.0
// The functions of a report template that inja's own can't be trusted with: the same results wherever those
// have one, and an exception where they end the process or read memory that is not theirs.
//
// For      IfcReportTemplate, which puts them in the place of inja's.
// Threads  any number at once.
#pragma once

#include <cstddef>
#include <vector>

#include <nlohmann/json.hpp>

namespace oxa::ifc::report {

using Json = nlohmann::json;
using Arguments = std::vector<const Json*>;
using Function = Json (*)(Arguments& args);

// How deep anything may nest in a template or in a variable of one.
inline constexpr std::size_t g_iMostNested = 100;
// Items of one range().
inline constexpr Json::number_integer_t g_iMostInRange = 4'000'000;

Json sum(Arguments& args);
Json difference(Arguments& args);
Json product(Arguments& args);
Json power(Arguments& args);
Json remainder(Arguments& args);
Json divisible(Arguments& args);
Json rounded(Arguments& args);
Json capitalized(Arguments& args);
Json range(Arguments& args);
// An item of a list or an object.
Json first(Arguments& args);
Json last(Arguments& args);
Json largest(Arguments& args);
Json smallest(Arguments& args);

// Checks of one argument, which goes on as it is.
Json found(Arguments& args);     // throws nothing itself: a variable that is missing has thrown before
Json upwards(Arguments& args);   // the levels of super(): 1 or more
Json shallow(Arguments& args);   // its lists and objects nest no deeper than g_iMostNested

}   // namespace oxa::ifc::report
