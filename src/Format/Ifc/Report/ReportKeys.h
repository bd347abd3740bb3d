// SPDX-License-Identifier: Apache-2.0
// ReportKeys: the table of all reports.
//
// For      Errors, which takes severity and category of a report from it where its raiser names none.
// Threads  constant.
#pragma once

#include <span>
#include <string_view>

#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcReportKey.h"

namespace oxa::ifc::report {

struct KeyRow {
    ReportKey eKey;
    std::string_view key;
    Errors::Severity eSeverity;   // usual ones; raisers that differ say so
    Errors::Category eCategory;
    std::string_view english;
    std::string_view german;
};

// One row for each enumerator, in their order, which is that of the keys.
[[nodiscard]] std::span<const KeyRow> keyRows() noexcept;
[[nodiscard]] const KeyRow& keyRow(ReportKey eKey);

}   // namespace oxa::ifc::report
