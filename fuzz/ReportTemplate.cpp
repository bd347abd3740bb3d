// SPDX-License-Identifier: Apache-2.0
// ReportTemplate: any bytes as the template of a report.

#include "Format/Ifc/IfcFileError.h"
#include "Fuzz.h"

namespace oxa::fuzz {

namespace {

// How long a template runs is its own affair, as with a program: one with a large number in it is no input.
bool boMayRunLong(std::string_view text) {
    int iDigits = 0;
    for (const char c : text) {
        iDigits = c >= '0' && c <= '9' ? iDigits + 1 : 0;
        if (iDigits > 2) return true;
    }
    return text.size() > 300 || text.find_first_of("*^") != std::string_view::npos;
}

}   // namespace

void vRun(std::string_view input) {
    if (boMayRunLong(input)) return;
    const ExactBytes text(input);
    ifc::Errors errors;
    errors.add(nullptr, ifc::ReportKey::UnknownEntityType, "IFCX", "#1=IFCX();", 7);
    errors.add(nullptr, ifc::ReportKey::InvalidFile, {}, 0);
    NullStream out;
    (void)errors.writeReport(text.text(), out, "a.ifc");
}

}   // namespace oxa::fuzz
