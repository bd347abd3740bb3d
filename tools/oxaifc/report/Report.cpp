// SPDX-License-Identifier: Apache-2.0
// A report by a template: that of the user, or the page.
#include "oxaifc/report/Report.h"

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "oxaifc/formats/FileOpen.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/Records.h"
#include "oxaifc/report/ReportPage.h"
#include "platform/Assert.h"
#include "platform/Path.h"
#include "platform/String.h"

namespace oxa::tool {

namespace {

// All source texts together. One statement can have as many errors as bytes, each with the statement as its
// text.
constexpr std::size_t g_iMostSourceBytes = 256u << 20;
constexpr std::size_t g_iShortText = 300;

// Hears what the library has to say of a template, which it hands to the assertion service.
class TemplateFaults {
public:
    TemplateFaults()
        : m_boBefore(Assert::isEnabled()),
          m_scope(Assert::getRegisteredForCurrentThread().registerHandler(
              [this](const AssertInfo& info) { m_sLast = info.text; })) {
        Assert::setEnabled(true);
    }
    ~TemplateFaults() { Assert::setEnabled(m_boBefore); }
    TemplateFaults(const TemplateFaults&) = delete;
    TemplateFaults& operator=(const TemplateFaults&) = delete;

    // Empty where there was none.
    [[nodiscard]] std::string sLast() const {
        constexpr std::string_view prefix = "Exception thrown when rendering template file: ";
        return m_sLast.starts_with(prefix) ? m_sLast.substr(prefix.size()) : m_sLast;
    }

private:
    bool m_boBefore;
    std::string m_sLast;
    AssertFunctionOne::Scope m_scope;
};

std::string sTemplateText(const std::string& sPath) {
    if (sPath.empty()) return {};
    const std::unique_ptr<Input> pInput = pFileOpen(sPath);
    std::string sText{std::istreambuf_iterator<char>(pInput->stream()), {}};
    pInput->iFinish();
    return sText;
}

// The records in the order of the file, in UTF-8.
std::unique_ptr<ifc::Errors> templateErrors(const std::vector<ifc::ErrorRecord>& records) {
    std::size_t iBytes = 0;
    for (const ifc::ErrorRecord& record : records) iBytes += sourceText(record).size();
    auto pErrors = std::make_unique<ifc::Errors>();
    std::string_view before;
    ifc::SourceText utf8;   // of the record before: those of one statement share it
    for (const ifc::ErrorRecord* pRecord : recordsByLine(records)) {
        const std::string_view text = sourceText(*pRecord);
        if (!utf8 || text.data() != before.data()) {
            std::string sText = str::Converter::to_utf8(text);
            utf8 = iBytes > g_iMostSourceBytes ? sShortened(sText, g_iShortText) : std::move(sText);
        }
        before = text;
        // A text that is no key is its own message.
        pErrors->add(nullptr, pRecord->severity, pRecord->category, "%1", str::Converter::to_utf8(pRecord->description),
                     utf8, pRecord->lineNumber);
    }
    return pErrors;
}

}   // namespace

Report::Report(const ReportOptions& options, const std::string& sPath)
    : m_sTemplateName(options.sTemplate),
      m_sTemplate(sTemplateText(options.sTemplate)),
      m_target(options.sOut.empty() ? "-" : options.sOut) {
    if (m_target.boIs(sPath)) throw Failure(fmt::format("{}: is the file to be checked; name another", options.sOut));
    if (!options.sTemplate.empty() && m_target.boIs(options.sTemplate))
        throw Failure(fmt::format("{}: is the template; name another", options.sOut));
}

void Report::vRender(const ifc::Errors& errors, const std::string& sTemplate, const std::string& sFileName) {
    const TemplateFaults faults;
    const bool boOk = errors.writeReport(sTemplate, m_target.stream(), str::Converter::to_utf8(sFileName));
    if (!boOk) throw Failure(fmt::format("{}: {}", m_sTemplateName, sPrintable(faults.sLast())));
    if (!faults.sLast().empty())
        std::fputs(fmt::format("oxaifc: {}: {}\n", m_sTemplateName, sPrintable(faults.sLast())).c_str(), stderr);
}

void Report::vWrite(const ReportContent& content) {
    if (m_sTemplateName.empty()) {
        const ReportPage page = reportPage(content);
        m_sTemplateName = "the page";
        vRender(*page.pErrors, page.sTemplate, sHtml(str::sOfPath(str::pathOf(content.sName).filename())));
    } else {
        vRender(*templateErrors(*content.pRecords), m_sTemplate, content.sName);
    }
    m_target.vFinish();
}

}   // namespace oxa::tool
