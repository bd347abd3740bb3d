// SPDX-License-Identifier: Apache-2.0
// Errors::writeReport: the records as the data of a template.

#include "Format/Ifc/IfcFileError.h"

#include <exception>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "Format/Ifc/Report/ReportTemplate.h"
#include "platform/Assert.h"
#include "platform/Localization.h"

namespace oxa::ifc {

namespace {

using Json = nlohmann::json;   // objects are ordered by key

constexpr char g_sReportSource[] = "Format/Ifc/IfcFileErrorReport";
constexpr char g_sFunction[] = "oxa::ifc::Errors::writeReport";

// The text of a key in the language of the user.
Json localized(std::vector<const Json*>& args) {
    if (args.size() == 1) return localize("Ifc", args.front()->get<std::string>());
    Assert::vTell(g_sReportSource, g_sFunction, "localize function takes 1 argument (the localize id)");
    return "";
}

std::string_view severityWord(Errors::Severity severity) {
    switch (severity) {
    case Errors::Error: return "error";
    case Errors::Fatal: return "fatal";
    }
    return "";
}

Json errorData(const ErrorRecord& record) {
    return {{"description", record.description},
            {"lineNumber", record.lineNumber},
            {"lineString", record.lineString.value_or({})},
            {"severity", severityWord(record.severity)}};
}

// What a template sees: the records of the same text under one category, categories by the bytes of their text.
Json reportData(const std::vector<ErrorRecord>& records, std::string sFileName) {
    std::map<std::string_view, Json::array_t> byText;
    for (const ErrorRecord& record : records) byText[record.description].push_back(errorData(record));
    Json data = {{"categories", Json::array()}, {"filename", std::move(sFileName)}};
    for (auto& [text, errors] : byText)
        data["categories"].push_back({{"description", text}, {"errors", std::move(errors)}});
    data["dumpJson"] = data.dump();
    return data;
}

}   // namespace

bool Errors::writeReport(std::string_view templateText, std::ostream& out, std::string fileName) const {
    try {
        report::vRender(templateText, "./", localized, reportData(m_records, std::move(fileName)), out);
        return true;
    } catch (const std::exception& error) {
        Assert::vTell(g_sReportSource, g_sFunction,
                      std::string("Exception thrown when rendering template file: ") + error.what());
        return false;
    }
}

}   // namespace oxa::ifc
