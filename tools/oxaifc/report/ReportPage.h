// SPDX-License-Identifier: Apache-2.0
// ReportPage: the page in HTML about the errors of one file.
//
// For      Report. The page is one file: it asks for no other and works without a server.
// Made of  ReportPage.html, a template for Errors::writeReport, which the build embeds. All texts are HTML
//          before the template sees them, so nothing of a file can become a mark of the page or the template.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/formats/Model.h"

namespace oxa::tool {

// How much is drawn of a file with very many errors, so that a browser stays quick. The figures are of all.
inline constexpr std::size_t g_iMostRows = 5000;
inline constexpr std::size_t g_iMostRowsOfMessage = 1000;
inline constexpr std::size_t g_iLeastRowsOfGroup = 20;   // before another group has more
inline constexpr std::size_t g_iMostTextBytes = 1000;    // of a message or a source text

// Text as HTML, in one line, with control characters made visible and bytes outside of UTF-8 taken as Latin-1.
[[nodiscard]] std::string sHtml(std::string_view text);

// What a page is about: records, and what is said of the file as a whole. Texts are as they are, not HTML.
struct ReportContent {
    using Rows = std::vector<std::pair<std::string, std::string>>;   // label and text

    std::string sName{};                                       // of the file
    const std::vector<ifc::ErrorRecord>* pRecords = nullptr;   // of what makes the page
    std::string sVerdict{};
    std::string_view state{};   // "ok", "error" or "fatal"
    Rows facts{};
    std::string sParts{};   // heading of the next; empty for none
    Rows parts{};
    std::string sHeading = "Messages";         // of the records
    bool boPlaces = true;                      // whether records have lines and categories that say something
    std::string sAll = "oxaifc check --all";   // what tells more records than the page
};
// That of a read. Good as long as the model.
[[nodiscard]] ReportContent reportContent(const Model& model);

struct ReportPage {
    std::unique_ptr<ifc::Errors> pErrors;   // the records that are drawn, their texts as HTML
    std::string sTemplate;
};
[[nodiscard]] ReportPage reportPage(const ReportContent& content);

// The text of ReportPage.html.
[[nodiscard]] std::string sReportPageText();

}   // namespace oxa::tool
