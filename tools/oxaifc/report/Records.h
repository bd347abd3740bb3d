// SPDX-License-Identifier: Apache-2.0
// Records: the errors of a read, as the program tells them.
//
// For      the verb "check" and its pages.
// Groups   a file with one cause may have a million errors: they are told by their key, a few of each, and
//          what follows from an error is told with it.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileError.h"

namespace oxa::tool {

// Indexed by Errors::Severity and Errors::Category.
inline constexpr std::array<std::string_view, 2> g_severities{"error", "fatal"};
inline constexpr std::array<std::string_view, 9> g_categories{"syntax", "header", "value",      "null",  "reference",
                                                              "model",  "other",  "identifier", "schema"};

[[nodiscard]] inline std::string_view severityWord(const ifc::ErrorRecord& record) {
    return g_severities.at(record.severity);
}
[[nodiscard]] inline std::string_view categoryWord(const ifc::ErrorRecord& record) {
    return g_categories.at(record.category);
}
// Good as long as the record.
[[nodiscard]] inline std::string_view sourceText(const ifc::ErrorRecord& record) {
    return record.lineString ? std::string_view(*record.lineString) : std::string_view();
}

// In the order of the file, whatever the order in which threads met them; those without a line at the end.
[[nodiscard]] std::vector<const ifc::ErrorRecord*> recordsByLine(const std::vector<ifc::ErrorRecord>& records);

[[nodiscard]] std::vector<const ifc::ErrorRecord*> recordsByLine(std::vector<const ifc::ErrorRecord*> records);

// The records of one key.
struct RecordGroup {
    std::string_view key;                           // good as long as the records
    std::vector<const ifc::ErrorRecord*> records;   // in the order of the file
    // References to instances whose statements stand in "records": those were skipped, so these lead nowhere.
    std::vector<const ifc::ErrorRecord*> following;

    // What the records say, as one text; "..." stands for what differs.
    [[nodiscard]] std::string sTitle() const;
};
// Those with the most records first, equal ones as they begin in the file. No record is in two.
[[nodiscard]] std::vector<RecordGroup> recordGroups(const std::vector<ifc::ErrorRecord>& records);

using RecordCounts = std::array<std::array<std::size_t, g_categories.size()>, g_severities.size()>;
// By severity, then by category.
[[nodiscard]] RecordCounts recordCounts(const std::vector<ifc::ErrorRecord>& records);

}   // namespace oxa::tool
