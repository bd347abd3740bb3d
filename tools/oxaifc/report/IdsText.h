// SPDX-License-Identifier: Apache-2.0
// IdsText: what a check of requirements (IDS) found, in words, in JSON and as records of a page.
//
// For      the verb "ids".
// Threads  one.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "Check/Ids.h"
#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/ReportPage.h"

namespace oxa::tool {

// What was checked, and what that gave. Nothing is owned.
struct IdsCheck {
    const ids::Requirements& requirements;
    const std::string& sRequirements;   // how messages call the file of them
    const ids::Result& result;
    const std::string& sModel;   // the same of the model
    std::size_t iReadErrors;     // that its read met
};

// "line 12, column 5: IFCWAL is no class of IFC4".
[[nodiscard]] std::string sIdsFault(const ids::Fault& fault);
// "valid: 3 specifications", "not valid: 2 faults, 1 note".
[[nodiscard]] std::string sIdsValidity(const ids::Requirements& requirements);
// "meets the requirements: 2 specifications passed, 1 not for this schema (IFC4)".
[[nodiscard]] std::string sIdsVerdict(const ids::Result& result);

// A line a specification; below it the requirements that instances do not meet, each with the first of these, or with
// all of them.
void vIdsLines(const IdsCheck& check, bool boAll, Output& output);

// The file of requirements: what it says of itself, its faults and its specifications.
[[nodiscard]] Json idsRequirementsJson(const std::string& sPath, const ids::Requirements& requirements);
// What came of each specification for one model.
[[nodiscard]] Json idsFileJson(const std::string& sPath, const IdsCheck& check);
// A record for each requirement that an instance does not meet: of each requirement the first hundred, or all.
void vIdsRecords(const IdsCheck& check, bool boAll, const std::function<void(const Json& record)>& record);

// For a page. The records go to "errors", which has to live as long as what is given back.
[[nodiscard]] ReportContent idsContent(const IdsCheck& check, ifc::Errors& errors);

}   // namespace oxa::tool
