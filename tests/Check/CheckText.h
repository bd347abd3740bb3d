// SPDX-License-Identifier: Apache-2.0
// CheckText: texts checked, and what is wrong with them as one line.
#pragma once

#include <initializer_list>
#include <sstream>
#include <string>

#include "Check/Check.h"

namespace oxa {

inline CheckResult checked(const std::string& sText, std::initializer_list<CheckLevel> levels) {
    CheckOptions options;
    options.levels = {};
    for (const CheckLevel level : levels) options.levels[static_cast<std::size_t>(level)] = true;
    std::istringstream stream(sText);
    return checkStream(stream, options);
}

// "8:21 Syntax_Unexpected ','; a parameter" for each record, in the order of the file, " | " between; notes are left out.
inline std::string sFailures(const CheckResult& result, bool boNotes = false) {
    std::string sAll;
    for (const CheckRecord& record : result.records()) {
        if ((record.group->weight == CheckWeight::Note) != boNotes) continue;
        if (!sAll.empty()) sAll += " | ";
        sAll +=
            std::to_string(record.place->line) + ':' + std::to_string(record.place->column) + ' ' + record.group->key;
        if (!record.group->attribute.empty()) sAll += ' ' + record.group->attribute;
        sAll += " '" + record.place->found + "'; " + record.group->expected;
    }
    return sAll;
}

// A file with these fields of FILE_NAME and so on, and these statements from line 6 on.
struct FileText {
    std::string sDescription = "('ViewDefinition [CoordinationView]'),'2;1'";
    std::string sName = "'','2024-08-30T12:34:53',(''),(''),'','A - B - 1',''";
    std::string sSchema = "('IFC4')";

    [[nodiscard]] std::string text(const std::string& sStatements) const {
        return "ISO-10303-21;\nHEADER;FILE_DESCRIPTION(" + sDescription + ");\nFILE_NAME(" + sName +
               ");\nFILE_SCHEMA(" + sSchema + ");ENDSEC;\nDATA;\n" + sStatements + "\nENDSEC;\nEND-ISO-10303-21;\n";
    }
};

}   // namespace oxa
