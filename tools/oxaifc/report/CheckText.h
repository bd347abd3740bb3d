// SPDX-License-Identifier: Apache-2.0
// CheckText: what a check found, in words, in JSON and as records of a page.
//
// For      StrictCheck and Sarif.
// Threads  one.
#pragma once

#include <string>

#include "Check/Check.h"
#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/ReportPage.h"

namespace oxa::tool {

// "IfcWall.Name: the attribute is not optional; expected IfcLabel": what all failures of a group have in common.
[[nodiscard]] std::string sCheckTitle(const CheckGroup& group);
// What says that it is wrong, behind a title: " [IfcRoot.UR1]"; empty where the title names it.
[[nodiscard]] std::string sCheckRule(const CheckGroup& group);
// The title of one failure, with what stands there.
[[nodiscard]] std::string sCheckMessage(const CheckRecord& record);
// "valid", "not valid" or "could not be decided", with the levels where not all were asked for.
[[nodiscard]] std::string sCheckVerdict(const CheckResult& result);
// What became of a level that was asked for: "valid", "2 failures, 1 note", "not decided: ...".
[[nodiscard]] std::string sCheckLevel(const CheckLevelSummary& summary);
// "683 rules known, 680 evaluated, 2 indeterminate, 3 not evaluated".
[[nodiscard]] std::string sCheckRules(const CheckRuleCounts& counts);

[[nodiscard]] Json checkRecordJson(const CheckRecord& record);
[[nodiscard]] Json checkGroupJson(const CheckGroup& group);
// Of a file: its verdict, its levels, the counts of its rules.
[[nodiscard]] Json checkFileJson(const std::string& sPath, const CheckResult& result);

// For a page or a template. Notes are left out: a page is about what fails. The records go to "errors", which has to live
// as long as what is given back.
[[nodiscard]] ReportContent checkContent(const std::string& sName, const CheckResult& result, ifc::Errors& errors);

}   // namespace oxa::tool
