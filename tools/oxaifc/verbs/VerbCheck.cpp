// SPDX-License-Identifier: Apache-2.0
// VerbCheck: "oxaifc check": the error list of a read by its groups, as text, as JSON or as a report; with --strict whether
// the file is valid (StrictCheck.h).

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/RecordJson.h"
#include "oxaifc/report/Records.h"
#include "oxaifc/report/Report.h"
#include "oxaifc/report/ReportPage.h"
#include "oxaifc/verbs/Several.h"
#include "oxaifc/verbs/StrictCheck.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

using ifc::Errors;

constexpr std::size_t g_iShortText = 300;        // bytes of a source text on a terminal
constexpr std::size_t g_iLongText = 64u << 10;   // elsewhere
constexpr std::size_t g_iRecordsOfGroup = 10;    // that are told, without --all
constexpr std::size_t g_iRecordsOfJson = 100;    // the same

struct CheckVerbOptions : ModelOptions {
    std::vector<std::string> paths;
    bool boJson = false;
    bool boAll = false;
    ReportOptions report;
    std::string sStrict;   // the levels; empty without --strict
    std::string sSarif;    // OUT; empty without

    [[nodiscard]] bool boSeveral() const noexcept { return paths.size() > 1; }
};

// "IFCWALL #12": the number and the keyword of the statement, or what the entity itself tells of them.
std::string sEntity(const ifc::ErrorRecord& record, const Model& model) {
    constexpr std::string_view digits = "0123456789";
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    const std::string_view text = sourceText(record);
    if (text.starts_with('#')) {
        const std::size_t iDigits = text.starts_with("#-") ? 2 : 1;
        const std::size_t iNumberEnd = std::min(text.find_first_not_of(digits, iDigits), text.size());
        std::string sNumber(text.substr(0, iNumberEnd));
        if (iNumberEnd >= text.size() || text[iNumberEnd] != '=') return sNumber;
        const std::string_view rest = text.substr(iNumberEnd + 1);
        return std::string(rest.substr(0, rest.find_first_not_of(letters))) + " " + sNumber;
    }
    if (!record.entity || !record.entity->pSchemaEntity()) return {};
    const auto number = model.data().entityIdMap(false).find(record.entity);
    return record.entity->pSchemaEntity()->sNameUpper + (number ? " #" + std::to_string(*number) : std::string());
}

Json groupJson(const RecordGroup& group) {
    const ifc::ErrorRecord& first = *group.records.front();
    return {{"key", group.key},
            {"severity", severityWord(first)},
            {"category", categoryWord(first)},
            {"message", group.sTitle()},
            {"count", group.records.size()},
            {"firstLine", first.lineNumber},
            {"following", group.following.size()}};
}

void vRecordWrite(const ifc::ErrorRecord& record, const Model& model, bool boAll, Output& output) {
    const std::string sOf = sEntity(record, model);
    const std::string_view text = sourceText(record);
    output.vPrint("{}", output.sTinted(Tint::Red, severityWord(record)));
    if (record.lineNumber) output.vPrint(" line {}", record.lineNumber);
    if (!sOf.empty()) output.vPrint(" {}", sPrintable(sOf));
    output.vPrint(": {}\n", sPrintable(record.description));
    if (text.empty()) return;
    const std::size_t iMost = output.boTerminal() ? g_iShortText : boAll ? text.size() : g_iLongText;
    output.vPrint("    {}\n", sShortened(text, iMost));
}

// "3 errors: 2 value, 1 reference", a line a severity; "read without loss" where there is none.
void vCountsWrite(const Model& model, Output& output) {
    const RecordCounts counts = recordCounts(model.errors());
    for (std::size_t i = 0; i < counts.size(); ++i) {
        std::size_t iAll = 0;
        std::string sParts;
        for (std::size_t j = 0; j < counts[i].size(); ++j) {
            if (!counts[i][j]) continue;
            iAll += counts[i][j];
            sParts += fmt::format("{}{} {}", sParts.empty() ? "" : ", ", sGrouped(counts[i][j]), g_categories[j]);
        }
        const std::string_view noun = i == Errors::Fatal ? "fatal error" : "error";
        if (iAll) output.vPrint("{}: {}: {}\n", sPrintable(model.sName()), sCounted(iAll, noun), sParts);
    }
    const std::string sLost = model.sLost();
    if (!sLost.empty()) output.vPrint("{}: {}\n", sPrintable(model.sName()), sLost);
    if (!model.errors().empty() || (!sLost.empty() && model.boOk())) return;
    output.vPrint("{}: {}\n", sPrintable(model.sName()), model.sNoErrors());
}

// Most frequent groups first, the first records of each; with --all every record, each group followed by what
// follows from it.
void vTextWrite(const CheckVerbOptions& options, const Model& model, Output& output) {
    if (options.boSeveral() && !model.errors().empty())
        output.vPrint("{}\n", output.sTinted(Tint::Bold, sPrintable(model.sName()) + ":"));
    const std::size_t iMost = options.boAll ? model.errors().size() : g_iRecordsOfGroup;
    for (const RecordGroup& group : recordGroups(model.errors())) {
        const std::size_t iTold = std::min(group.records.size(), iMost);
        for (std::size_t i = 0; i < iTold && output.boWanted(); ++i)
            vRecordWrite(*group.records[i], model, options.boAll, output);
        if (options.boAll) {
            for (std::size_t i = 0; i < group.following.size() && output.boWanted(); ++i)
                vRecordWrite(*group.following[i], model, true, output);
            continue;
        }
        if (iTold < group.records.size())
            output.vPrint("and {} more (--all)\n", sGrouped(group.records.size() - iTold));
        if (!group.following.empty())
            output.vPrint("and {} to what was skipped for that (--all)\n",
                          sCounted(group.following.size(), "missing reference"));
    }
}

// Of each group the first records, of those that follow from it none; without --all.
std::vector<const ifc::ErrorRecord*> jsonRecords(const std::vector<RecordGroup>& groups) {
    std::vector<const ifc::ErrorRecord*> told;
    for (const RecordGroup& group : groups)
        told.insert(told.end(), group.records.begin(),
                    group.records.begin() +
                        static_cast<std::ptrdiff_t>(std::min(group.records.size(), g_iRecordsOfJson)));
    return told;
}

// Of all files. The records are written one by one, and before the rest: of many files not all are kept.
struct JsonRest {
    Json groups = Json::array();
    Json files = Json::array();
};

// Its records in the order of the file; with several files each tells its own.
void vJsonWrite(const CheckVerbOptions& options, const Model& model, JsonRest& rest, Output& output) {
    const auto withFile = [&options](Json value) {
        if (options.boSeveral()) value["file"] = options.sPath;
        return value;
    };
    const std::vector<RecordGroup> groups = recordGroups(model.errors());
    for (const RecordGroup& group : groups) rest.groups.push_back(withFile(groupJson(group)));
    const auto lost = model.lostStatements();
    rest.files.push_back({{"file", options.sPath},
                          {"ok", model.boOk()},
                          {"errors", model.errors().size()},
                          {"lostStatements", lost.iCount},
                          {"firstLostLine", lost.iFirstLine}});
    const auto records = options.boAll ? recordsByLine(model.errors()) : recordsByLine(jsonRecords(groups));
    const std::size_t iMostText = options.boAll ? std::numeric_limits<std::size_t>::max() : g_iLongText;
    for (const ifc::ErrorRecord* pRecord : records) {
        if (!output.boWanted()) break;
        output.vJsonItem(withFile(recordJson(*pRecord, model, iMostText)));
    }
}

int iCheckOne(const CheckVerbOptions& options, JsonRest& rest, Output& output) {
    const bool boReport = options.report.boWanted();
    if (options.boJson && options.report.boToOutput())
        throw Failure("check: --json and a report can't both go to standard output; name a file: --html OUT");
    if (options.sPath == "-" && options.report.sTemplate == "-")
        throw Failure("check: FILE and --template can't both be standard input");
    std::optional<Report> report;
    if (boReport) report.emplace(options.report, options.sPath);
    const Model model(options, true);
    if (report) report->vWrite(reportContent(model));
    // A report has the records; where it went to a file, the counts are the output.
    if (options.boJson)
        vJsonWrite(options, model, rest, output);
    else if (!boReport)
        vTextWrite(options, model, output);
    if (!options.boJson && !options.report.boToOutput()) vCountsWrite(model, output);
    return model.iExitCode();
}

int iCheck(CheckVerbOptions& options, Output& output) {
    if (options.boSeveral() && options.report.boWanted()) throw Failure("check: a report is about one FILE");
    if (!options.sStrict.empty())
        return iStrictCheck(
            {options, options.paths, options.sStrict, options.report, options.sSarif, options.boJson, options.boAll},
            output);
    if (!options.sSarif.empty()) throw Failure("check: --sarif goes with --strict");
    JsonRest rest;
    if (options.boJson) {
        output.vPrint("{{\"records\":");
        output.vJsonBegin();
    }
    const int iCode = iForEachFile(options.paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        return iCheckOne(options, rest, output);
    });
    if (options.boJson) {
        output.vJsonEnd();
        output.vPrint(",\"groups\":{},\n\"files\":{}}}\n", sJson(rest.groups), sJson(rest.files));
    }
    return iCode;
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<CheckVerbOptions>();
    pOptions->vDeclareSeveral(command, pOptions->paths);
    command.flag("--json", pOptions->boJson,
                 "print a JSON object: the first 100 records of each group of errors, the groups, the files");
    command.flag("--all", pOptions->boAll, "tell all errors, not the first of each group; for text and --json");
    command
        .option("--html", pOptions->report.sOut,
                "write a page about the errors to this file instead of the list; - for standard output")
        .value("OUT");
    command
        .option("--template", pOptions->report.sTemplate,
                "instead of that page what this inja template makes of the errors, on standard output without "
                "--html; files that it includes are looked for from the working folder on")
        .value("X");
    command
        .flag("--strict", pOptions->sStrict,
              "say whether the file is valid instead of whether it can be read: by all levels, or by those named "
              "behind a \"=\": syntax, header, schema, rules")
        .value("LEVELS");
    command.option("--sarif", pOptions->sSarif, "with --strict: write what fails to this file as SARIF 2.1.0 as well")
        .value("OUT");
    return [pOptions](Output& output) { return iCheck(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbCheck{"check", "Every error of a file, with line and source text; as a page, too", declare};

}   // namespace oxa::tool
