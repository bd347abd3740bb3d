// SPDX-License-Identifier: Apache-2.0
// VerbIds: "oxaifc ids": does a model hold the information that a file of requirements (IDS) asks for; and is that file
// valid itself.

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Check/Ids.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/formats/FileOpen.h"
#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Progress.h"
#include "oxaifc/report/IdsText.h"
#include "oxaifc/report/Report.h"
#include "oxaifc/verbs/Several.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostFaults = 100;   // of the requirements, beside an answer, without --all

struct IdsOptions : ModelOptions {
    std::string sRequirements;
    std::vector<std::string> paths;
    std::string sOtherSchemas;   // empty: checked where no specification is for the model's schema
    bool boJson = false;
    bool boAll = false;
    ReportOptions report;
};

// The file of requirements, and how messages call it.
struct NamedRequirements {
    std::string sName;
    ids::Requirements requirements;
};

NamedRequirements requirementsOf(const IdsOptions& options) {
    const std::unique_ptr<Input> pInput = pFileOpen(options.sRequirements, options.unpack.limits());
    if (boBeginsAsHtml(pInput->firstBytes()))
        throw Failure(fmt::format("{}: is a page of the web (HTML)", pInput->sName()));
    if (boHasStepKeyword(pInput->firstBytes().substr(0, 4096)))
        throw Failure(fmt::format("{}: is a STEP file; the file of requirements (.ids) comes first", pInput->sName()));
    ids::Requirements requirements = ids::Requirements::open(pInput->stream());
    pInput->iFinish();
    return {pInput->sName(), std::move(requirements)};
}

bool boAnyValid(const ids::Requirements& requirements) {
    return std::ranges::any_of(requirements.specifications(), &ids::Specification::valid);
}

// What is wrong with the requirements stands beside the answer about models, a line each.
void vFaultsTell(const NamedRequirements& wanted, bool boAll) {
    const std::vector<ids::Fault>& faults = wanted.requirements.faults();
    const std::size_t iTold = boAll ? faults.size() : std::min(faults.size(), g_iMostFaults);
    for (const ids::Fault& fault : std::span(faults).first(iTold))
        vTell(fmt::format("{}: {}{}", wanted.sName, fault.weight == ids::FaultWeight::Note ? "note: " : "",
                          sIdsFault(fault)));
    if (iTold < faults.size())
        vTell(fmt::format("{}: and {} more (--all)", wanted.sName, sGrouped(faults.size() - iTold)));
    if (!wanted.requirements.valid()) vTell(fmt::format("{}: {}", wanted.sName, sIdsValidity(wanted.requirements)));
}

ids::Result resultOf(const oxa::Model& model, const std::string& sName, const IdsOptions& options,
                     const ids::Requirements& requirements) {
    ids::Options how;
    how.threads = options.boSingleThreaded ? 1 : 0;
    if (options.sOtherSchemas == "skip") how.otherSchemas = ids::OtherSchemas::Skip;
    if (options.sOtherSchemas == "check") how.otherSchemas = ids::OtherSchemas::Check;
    oxa::Progress now;
    Progress progress([&](unsigned) {
        return fmt::format("checking {}: {} %", sPrintable(sName),
                           now.done * 100 / std::max<std::uint64_t>(now.total.value_or(1), 1));
    });
    if (const auto show = progress.function())
        how.progress = [&now, show](const oxa::Progress& where) {
            now = where;
            show(0);
        };
    return ids::check(model, requirements, how);
}

int iCheckOne(const IdsOptions& options, const NamedRequirements& wanted, Json& files, Output& output) {
    std::optional<Report> report;
    if (options.report.boWanted()) report.emplace(options.report, options.sPath);
    ElementModel model(options);
    model.file().vWholeCheck("held to requirements");
    const std::string& sName = model.file().sName();
    const ids::Result result = resultOf(model.model(), sName, options, wanted.requirements);
    const std::size_t iReadErrors = model.file().errors().size();
    const IdsCheck check{wanted.requirements, wanted.sName, result, sName, iReadErrors};
    if (report) {
        ifc::Errors errors;
        report->vWrite(idsContent(check, errors));
    }
    if (options.boJson) {
        vIdsRecords(check, options.boAll, [&](Json record) {
            if (options.paths.size() > 1) record["file"] = options.sPath;
            if (output.boWanted()) output.vJsonItem(record);
        });
        files.push_back(idsFileJson(options.sPath, check));
    } else if (!options.report.boToOutput()) {
        if (!report && options.paths.size() > 1)
            output.vPrint("{}\n", output.sTinted(Tint::Bold, sPrintable(sName) + ":"));
        if (!report) vIdsLines(check, options.boAll, output);
        output.vPrint("{}: {}\n", sPrintable(sName), output.sTinted(Tint::Bold, sPrintable(sIdsVerdict(result))));
    }
    return result.verdict == ids::Verdict::Passed ? model.iExitCode() : g_iExitErrors;
}

// Without a model: the faults are the answer.
void vRequirementsWrite(const NamedRequirements& wanted, Output& output) {
    for (const ids::Fault& fault : wanted.requirements.faults()) {
        const bool boNote = fault.weight == ids::FaultWeight::Note;
        output.vPrint("{}{} {}\n", output.sTinted(boNote ? Tint::Yellow : Tint::Red, boNote ? "note" : "error"),
                      fault.line ? "" : ":", sPrintable(sIdsFault(fault)));
    }
    output.vPrint("{}: {}\n", sPrintable(wanted.sName), output.sTinted(Tint::Bold, sIdsValidity(wanted.requirements)));
}

void vCallCheck(const IdsOptions& options) {
    if (options.sRequirements == "-" && std::ranges::find(options.paths, "-") != options.paths.end())
        throw Failure("ids: REQUIREMENTS and FILE can't both be standard input");
    if (!options.report.boWanted()) return;
    if (options.paths.size() != 1) throw Failure("ids: a report is about one FILE");
    if (options.boJson && options.report.boToOutput())
        throw Failure("ids: --json and a report can't both go to standard output; name a file: --html OUT");
    if (boSameFile(options.sRequirements, options.report.sOut))
        throw Failure(fmt::format("{}: is the file of requirements; name another", options.report.sOut));
}

int iIds(IdsOptions& options, Output& output) {
    vCallCheck(options);
    const NamedRequirements wanted = requirementsOf(options);
    const bool boAlone = options.paths.empty();
    const int iCode = wanted.requirements.valid() ? g_iExitFine : g_iExitFailure;
    if (!boAlone) vFaultsTell(wanted, options.boAll);
    if (!boAlone && !boAnyValid(wanted.requirements)) return g_iExitFailure;
    Json files = Json::array();
    if (options.boJson) {
        output.vPrint("{{\"requirements\":{},\n\"records\":",
                      sJson(idsRequirementsJson(options.sRequirements, wanted.requirements)));
        output.vJsonBegin();
    } else if (boAlone) {
        vRequirementsWrite(wanted, output);
    }
    const int iWorst = iForEachFile(options.paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        return iCheckOne(options, wanted, files, output);
    });
    if (options.boJson) {
        output.vJsonEnd();
        output.vPrint(",\"files\":{}}}\n", sJson(files));
    }
    return std::max(iCode, iWorst);
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<IdsOptions>();
    command.option("REQUIREMENTS", pOptions->sRequirements, "the IDS file to hold models to; - for standard input")
        .required()
        .value("");
    pOptions->vDeclareSeveral(command, pOptions->paths);
    command.declared("FILE").required(false);
    command.flag("--json", pOptions->boJson,
                 "print a JSON object: the requirements, the first 100 records of each that is not met, the files");
    command.flag(
        "--all", pOptions->boAll,
        "tell all instances that do not meet a requirement, and all faults of REQUIREMENTS, not the first of them");
    command
        .option("--html", pOptions->report.sOut,
                "write a page about the result to this file instead of the list; - for standard output")
        .value("OUT");
    command
        .option("--other-schemas", pOptions->sOtherSchemas,
                "specifications that do not name the schema of the model: skip them, or check them; without this "
                "they are checked where none names it")
        .oneOf({"skip", "check"})
        .value("X");
    command.vFooter(
        "Without a FILE it says whether REQUIREMENTS is a valid IDS 1.0. Specifications with a fault are not "
        "checked, the others are. Exit code: 0 all is met, 1 something is not or a FILE has errors, 2 "
        "unreadable, wrong usage, or REQUIREMENTS is not valid.");
    return [pOptions](Output& output) { return iIds(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbIds{"ids", "Whether models hold the information that a file of requirements (IDS) asks for",
                            declare};

}   // namespace oxa::tool
