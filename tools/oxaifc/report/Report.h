// SPDX-License-Identifier: Apache-2.0
// Report: the errors of a read as a document, by a template.
//
// For      the verb "check": its page in HTML, or whatever a template of the user makes of the errors.
// Data     what Errors::writeReport gives a template, the records in the order of the file. Bytes that are no
//          UTF-8 are taken as Latin-1, since a template takes nothing else. Source texts are cut to 300 bytes
//          where all of them together have more than 256 MiB.
// Errors   Failure, for a template that can't be read or rendered and for what the system can't write.
// Threads  one.
#pragma once

#include <memory>
#include <string>

#include "oxaifc/io/Target.h"
#include "oxaifc/report/ReportPage.h"

namespace oxa::tool {

struct ReportOptions {
    std::string sOut;        // "-" is standard output; empty for none, which a template takes for "-"
    std::string sTemplate;   // the path of the user's; empty for the page

    // False where no report is asked for.
    [[nodiscard]] bool boWanted() const noexcept { return !sOut.empty() || !sTemplate.empty(); }
    [[nodiscard]] bool boToOutput() const noexcept { return boWanted() && (sOut.empty() || sOut == "-"); }
};

class Report {
public:
    // Reads the template and opens the target. To be made before the read of sPath, so that what is wrong with
    // either is told at once.
    Report(const ReportOptions& options, const std::string& sPath);

    void vWrite(const ReportContent& content);

private:
    void vRender(const ifc::Errors& errors, const std::string& sTemplate, const std::string& sFileName);

    std::string m_sTemplateName;   // as messages call it
    std::string m_sTemplate;       // empty for the page
    Target m_target;
};

}   // namespace oxa::tool
