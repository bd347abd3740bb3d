// VerbCheck: "oxaifc check": every record of the error list of a read, as a list or as a report.

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/Failure.h"
#include "oxaifc/Model.h"
#include "oxaifc/Output.h"
#include "oxaifc/Records.h"
#include "oxaifc/Report.h"
#include "oxaifc/Several.h"
#include "oxaifc/Verb.h"

namespace oxa::tool {

namespace {

using ifc::Errors;

constexpr std::size_t g_iShortText = 300;   // bytes of a source text on a terminal

struct CheckOptions : ModelOptions {
    std::vector<std::string> paths;
    bool boJson = false;
    ReportOptions report;

    [[nodiscard]] bool boSeveral() const noexcept { return paths.size() > 1; }
};

// "IFCWALL #12": the number and the keyword of the statement, or what the entity itself tells of them.
std::string sEntity(const ifc::ErrorRecord& record, const Model& model) {
    constexpr std::string_view digits = "0123456789";
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    const std::string_view text = sourceText(record);
    if (text.starts_with('#')) {
        const std::size_t iNumberEnd = std::min(text.find_first_not_of(digits, 1), text.size());
        std::string sNumber(text.substr(0, iNumberEnd));
        if (iNumberEnd >= text.size() || text[iNumberEnd] != '=') return sNumber;
        const std::string_view rest = text.substr(iNumberEnd + 1);
        return std::string(rest.substr(0, rest.find_first_not_of(letters))) + " " + sNumber;
    }
    if (!record.entity || !record.entity->pSchemaEntity()) return {};
    const auto number = model.data().entityIdMap(false).find(record.entity);
    return record.entity->pSchemaEntity()->sNameUpper +
           (number ? " #" + std::to_string(*number) : std::string());
}

Json recordJson(const ifc::ErrorRecord& record) {
    return {{"severity", severityWord(record)},
            {"category", categoryWord(record)},
            {"message", record.description},
            {"line", record.lineNumber},
            {"text", sourceText(record)}};
}

void vRecordWrite(const ifc::ErrorRecord& record, const Model& model, Output& output) {
    const std::string sOf = sEntity(record, model);
    const std::string_view text = sourceText(record);
    output.vPrint("{}", output.sTinted(Tint::Red, severityWord(record)));
    if (record.lineNumber) output.vPrint(" line {}", record.lineNumber);
    if (!sOf.empty()) output.vPrint(" {}", sPrintable(sOf));
    output.vPrint(": {}\n", sPrintable(record.description));
    if (text.empty()) return;
    output.vPrint("    {}\n", output.boTerminal() ? sShortened(text, g_iShortText) : sPrintable(text));
}

// "3 errors: 2 value, 1 reference", a line a severity; "no errors" where there is none.
void vCountsWrite(const Model& model, Output& output) {
    const RecordCounts counts = recordCounts(model.errors());
    for (std::size_t i = 0; i < counts.size(); ++i) {
        std::size_t iAll = 0;
        std::string sParts;
        for (std::size_t j = 0; j < counts[i].size(); ++j) {
            if (!counts[i][j]) continue;
            iAll += counts[i][j];
            sParts +=
                fmt::format("{}{} {}", sParts.empty() ? "" : ", ", sGrouped(counts[i][j]), g_categories[j]);
        }
        const std::string_view noun = i == Errors::Fatal ? "fatal error" : "error";
        if (iAll) output.vPrint("{}: {}: {}\n", sPrintable(model.sName()), sCounted(iAll, noun), sParts);
    }
    if (model.errors().empty())
        output.vPrint("{}: {}\n", sPrintable(model.sName()),
                      model.boXml()  ? "read; what the import of ifcXML passes over, it does not tell"
                      : model.boOk() ? "no errors"
                                     : "not read to the end");
}

void vRecordsWrite(const CheckOptions& options, const Model& model, Output& output) {
    if (options.boSeveral() && !options.boJson && !model.errors().empty())
        output.vPrint("{}\n", output.sTinted(Tint::Bold, sPrintable(model.sName()) + ":"));
    for (const ifc::ErrorRecord* pRecord : recordsByLine(model.errors())) {
        if (!output.boWanted()) break;
        if (options.boJson) {
            Json record = recordJson(*pRecord);
            if (options.boSeveral()) record["file"] = options.sPath;
            output.vJsonItem(record);
        } else {
            vRecordWrite(*pRecord, model, output);
        }
    }
}

int iCheckOne(const CheckOptions& options, Output& output) {
    const bool boReport = options.report.boWanted();
    if (options.boJson && options.report.boToOutput())
        throw Failure("check: --json and a report can't both go to standard output; name a file: --html OUT");
    if (options.sPath == "-" && options.report.sTemplate == "-")
        throw Failure("check: FILE and --template can't both be standard input");
    std::optional<Report> report;
    if (boReport) report.emplace(options.report, options.sPath);
    const Model model(options, true);
    if (report) report->vWrite(model);
    // A report has the records; where it went to a file, the counts are the answer.
    if (options.boJson || !boReport) vRecordsWrite(options, model, output);
    if (!options.boJson && !options.report.boToOutput()) vCountsWrite(model, output);
    return model.iExitCode();
}

int iCheck(CheckOptions& options, Output& output) {
    if (options.boSeveral() && options.report.boWanted()) throw Failure("check: a report is about one FILE");
    if (options.boJson) output.vJsonBegin();
    const int iCode = iForEachFile(options.paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        return iCheckOne(options, output);
    });
    if (options.boJson) output.vJsonEnd();
    return iCode;
}

}   // namespace

VerbRun verbCheck(CLI::App& command) {
    const auto pOptions = std::make_shared<CheckOptions>();
    pOptions->vDeclareSeveral(command, pOptions->paths);
    command.add_flag("--json", pOptions->boJson,
                     "print a JSON array with one object a record; of several files each names its own");
    command
        .add_option("--html", pOptions->report.sOut,
                    "write a page about the errors to this file instead of the list; - for standard output")
        ->type_name("OUT");
    command
        .add_option(
            "--template", pOptions->report.sTemplate,
            "instead of that page what this inja template makes of the errors, on standard output without "
            "--html; files that it includes are looked for from the working folder on")
        ->type_name("X");
    return [pOptions](Output& output) { return iCheck(*pOptions, output); };
}

}   // namespace oxa::tool
