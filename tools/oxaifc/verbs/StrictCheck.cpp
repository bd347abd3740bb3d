// SPDX-License-Identifier: Apache-2.0
// One file after another through the library; what it finds goes out as text, as JSON, as a page and as SARIF.
#include "oxaifc/verbs/StrictCheck.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "Check/Check.h"
#include "Model/Error.h"
#include "oxaifc/formats/FileOpen.h"
#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/formats/Format.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Progress.h"
#include "oxaifc/report/CheckText.h"
#include "oxaifc/report/Sarif.h"
#include "oxaifc/verbs/Several.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iPlacesOfGroup = 10;     // that are told, without --all
constexpr std::size_t g_iRecordsOfJson = 100;    // of a group, the same
constexpr std::size_t g_iMostOnPage = 200'000;   // of all groups

constexpr std::string_view g_allLevels = "true";   // what the command line gives for an option without a value

using State = CheckLevelSummary::State;

// The levels that "syntax,schema" names.
std::array<bool, checkLevelCount> levelsOf(std::string_view text) {
    std::array<bool, checkLevelCount> levels{};
    if (text == g_allLevels) {
        levels.fill(true);
        return levels;
    }
    for (;;) {
        const std::size_t iComma = std::min(text.find(','), text.size());
        const std::string_view word = text.substr(0, iComma);
        std::size_t i = 0;
        while (i < checkLevelCount && checkLevelName(static_cast<CheckLevel>(i)) != word) ++i;
        if (i == checkLevelCount)
            throw Failure(fmt::format("check: --strict: there is no level {}; there are: syntax, header, schema, rules",
                                      word.empty() ? "without a name" : sPrintable(word)));
        levels[i] = true;
        if (iComma == text.size()) return levels;
        text.remove_prefix(iComma + 1);
    }
}

// The bytes of the file, and as much again of the rules. On several threads the input is not asked how far it is.
std::string sProgress(const Input& input, const oxa::Progress& now, bool boRules) {
    const std::uint64_t iAll = now.total ? *now.total : input.iBytesExpected() * (boRules ? 2 : 1);
    return fmt::format("checking {}: {}", sPrintable(input.sName()),
                       iAll ? fmt::format("{} %", now.done * 100 / iAll) : sGrouped(now.done) + " bytes");
}

CheckResult checkedFile(const StrictOptions& options, const std::string& sPath) {
    const std::unique_ptr<Input> pInput = pFileOpen(sPath, options.model.unpack.limits());
    if (boBeginsAsHtml(pInput->firstBytes()))
        throw Failure(fmt::format("{}: is a page of the web (HTML)", pInput->sName()));
    const Format& format = formatOfInput(pInput->sInside(), pInput->firstBytes());
    if (std::string_view(format.word) != "step")
        throw Failure(fmt::format("{}: is {}; --strict is for STEP files", pInput->sName(), format.file));
    const SchemaSource schemas(options.model.schemaPaths);
    CheckOptions check;
    check.levels = levelsOf(options.sLevels);
    check.threads = options.model.boSingleThreaded ? 1 : 0;
    check.schema = schemas.function();
    if (options.report.boWanted()) check.mostPlaces = g_iMostOnPage;
    if (!options.report.boWanted() && options.sSarif.empty() && !options.boAll)
        check.mostPlacesOfGroup = options.boJson ? g_iRecordsOfJson : g_iPlacesOfGroup;
    const bool boRules = check.levels[static_cast<std::size_t>(CheckLevel::Rules)];
    oxa::Progress now;
    Progress progress([&](unsigned) { return sProgress(*pInput, now, boRules); });
    if (const auto show = progress.function())
        check.progress = [&now, show](const oxa::Progress& where) {
            now = where;
            show(0);
        };
    CheckResult result = checkStream(pInput->stream(), check);
    pInput->iFinish();
    return result;
}

// ---- Text

void vPlaceWrite(const CheckPlace& place, Output& output) {
    std::string sText = place.line ? fmt::format("line {}", place.line) : std::string("the file");
    if (place.column) sText += fmt::format(", column {}", place.column);
    if (place.id) sText += fmt::format(", #{}", place.id);
    if (!place.found.empty()) sText += fmt::format(": {}", sPrintable(place.found));
    output.vPrint("    {}\n", sText);
}

void vGroupWrite(const CheckGroup& group, bool boAll, Output& output) {
    const bool boNote = group.weight == CheckWeight::Note;
    const std::string sWord = fmt::format("{} {}", checkLevelName(group.level), boNote ? "note" : "error");
    output.vPrint("{}{}: {}\n", output.sTinted(boNote ? Tint::Yellow : Tint::Red, sWord),
                  group.count > 1 ? fmt::format(" {} times", sGrouped(group.count)) : std::string(),
                  sPrintable(sCheckTitle(group) + sCheckRule(group)));
    const std::size_t iTold = std::min(group.places.size(), boAll ? group.places.size() : g_iPlacesOfGroup);
    for (std::size_t i = 0; i < iTold && output.boWanted(); ++i) vPlaceWrite(group.places[i], output);
    if (iTold < group.count)
        output.vPrint("    and {} more{}\n", sGrouped(group.count - iTold), boAll ? "" : " (--all)");
}

// Those that are told often first, those that are only notes at the end.
void vGroupsWrite(const CheckResult& result, bool boAll, Output& output) {
    std::vector<const CheckGroup*> groups;
    for (const CheckGroup& group : result.groups) groups.push_back(&group);
    std::stable_sort(groups.begin(), groups.end(), [](const CheckGroup* pA, const CheckGroup* pB) {
        if (pA->weight != pB->weight) return pA->weight < pB->weight;
        return pA->level == pB->level ? pA->count > pB->count : pA->level < pB->level;
    });
    for (const CheckGroup* pGroup : groups)
        if (output.boWanted()) vGroupWrite(*pGroup, boAll, output);
}

void vSummaryWrite(const std::string& sName, const CheckResult& result, Output& output) {
    for (std::size_t i = 0; i < checkLevelCount; ++i) {
        if (result.levels[i].state == State::NotAsked) continue;
        output.vPrint("{}: {}: {}\n", sName, checkLevelName(static_cast<CheckLevel>(i)),
                      sPrintable(sCheckLevel(result.levels[i])));
    }
    for (const CheckRuleCounts& counts : result.rules)
        output.vPrint("{}: rules of {}: {}\n", sName, sPrintable(counts.schema), sCheckRules(counts));
    output.vPrint("{}: {}\n", sName, output.sTinted(Tint::Bold, sCheckVerdict(result)));
}

// ---- JSON

// Of all files. The records are written one by one, and before the rest.
struct JsonRest {
    Json groups = Json::array();
    Json files = Json::array();
};

void vJsonWrite(const StrictOptions& options, const std::string& sPath, const CheckResult& result, JsonRest& rest,
                Output& output) {
    const auto withFile = [&](Json value) {
        if (options.paths.size() > 1) value["file"] = sPath;
        return value;
    };
    for (const CheckGroup& group : result.groups) rest.groups.push_back(withFile(checkGroupJson(group)));
    rest.files.push_back(checkFileJson(sPath, result));
    for (const CheckRecord& record : result.records()) {
        if (!output.boWanted()) break;
        // Places of a group stand in the order of the file: those in front are the ones told.
        const auto iPlace = static_cast<std::size_t>(record.place - record.group->places.data());
        if (options.boAll || iPlace < g_iRecordsOfJson) output.vJsonItem(withFile(checkRecordJson(record)));
    }
}

int iStrictOne(const StrictOptions& options, const std::string& sPath, Sarif* pSarif, JsonRest& rest, Output& output) {
    std::optional<Report> report;
    if (options.report.boWanted()) report.emplace(options.report, sPath);
    const CheckResult result = checkedFile(options, sPath);
    const std::string sName = sPrintable(sPath == "-" ? "standard input" : sPath);
    if (report) {
        ifc::Errors errors;
        report->vWrite(checkContent(sPath, result, errors));
    }
    if (pSarif) pSarif->vFile(sPath, result);
    if (options.boJson)
        vJsonWrite(options, sPath, result, rest, output);
    else if (!report && options.sSarif != "-")
        vGroupsWrite(result, options.boAll, output);
    if (!options.boJson && !options.report.boToOutput() && options.sSarif != "-") vSummaryWrite(sName, result, output);
    return result.verdict() == CheckVerdict::Valid ? g_iExitFine : g_iExitErrors;
}

}   // namespace

int iStrictCheck(const StrictOptions& options, Output& output) {
    static_cast<void>(levelsOf(options.sLevels));
    const int iToOutput = int{options.boJson} + int{options.report.boToOutput()} + int{options.sSarif == "-"};
    if (iToOutput > 1)
        throw Failure("check: of --json, a report and --sarif only one can go to standard output; name a file");
    std::optional<Target> target;
    std::optional<Sarif> sarif;
    if (!options.sSarif.empty()) {
        target.emplace(options.sSarif);
        for (const std::string& sPath : options.paths)
            if (target->boIs(sPath))
                throw Failure(fmt::format("{}: is a file to be checked; name another", options.sSarif));
        sarif.emplace(target->stream());
    }
    JsonRest rest;
    if (options.boJson) {
        output.vPrint("{{\"records\":");
        output.vJsonBegin();
    }
    const int iCode = iForEachFile(options.paths, [&](const std::string& sPath) {
        try {
            return iStrictOne(options, sPath, sarif ? &*sarif : nullptr, rest, output);
        } catch (const std::exception& error) {
            if (sarif) sarif->vFault(sPath, error.what());
            throw;
        }
    });
    if (options.boJson) {
        output.vJsonEnd();
        output.vPrint(",\"groups\":{},\n\"files\":{}}}\n", sJson(rest.groups), sJson(rest.files));
    }
    if (sarif) sarif->vFinish();
    if (target) target->vFinish();
    return iCode;
}

}   // namespace oxa::tool
