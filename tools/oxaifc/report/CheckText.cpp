// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/report/CheckText.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "oxaifc/report/TypedJson.h"

namespace oxa::tool {

namespace {

using State = CheckLevelSummary::State;

ifc::Errors::Category categoryOf(CheckLevel level) noexcept {
    switch (level) {
    case CheckLevel::Syntax: return ifc::Errors::Syntax;
    case CheckLevel::Header: return ifc::Errors::Header;
    case CheckLevel::Schema: return ifc::Errors::Schema;
    case CheckLevel::Rules: return ifc::Errors::Model;
    }
    return ifc::Errors::Syntax;
}

std::string_view verdictKey(CheckVerdict verdict) noexcept {
    switch (verdict) {
    case CheckVerdict::Valid: return "valid";
    case CheckVerdict::NotValid: return "notValid";
    case CheckVerdict::Undecided: return "undecided";
    }
    return {};
}

// "IfcWall.Name", "IfcWall"; empty where it is about neither.
std::string sSubject(const CheckGroup& group) {
    if (group.type.empty()) return group.attribute;
    return group.attribute.empty() ? group.type : group.type + '.' + group.attribute;
}

}   // namespace

std::string sCheckTitle(const CheckGroup& group) {
    std::string sText = sSubject(group);
    if (!sText.empty()) sText += ": ";
    sText += group.message;
    if (!group.expected.empty()) sText += "; expected " + group.expected;
    return sText;
}

std::string sCheckRule(const CheckGroup& group) {
    return group.rule.empty() || group.rule == group.type ? std::string() : " [" + group.rule + ']';
}

std::string sCheckMessage(const CheckRecord& record) {
    return record.place->found.empty() ? sCheckTitle(*record.group)
                                       : sCheckTitle(*record.group) + ", found " + record.place->found;
}

std::string sCheckVerdict(const CheckResult& result) {
    std::string sText;
    switch (result.verdict()) {
    case CheckVerdict::Valid: sText = "valid"; break;
    case CheckVerdict::NotValid: sText = "not valid"; break;
    case CheckVerdict::Undecided: sText = "could not be decided"; break;
    }
    std::string sAsked;
    bool boAll = true;
    for (std::size_t i = 0; i < checkLevelCount; ++i) {
        boAll = boAll && result.levels[i].state != State::NotAsked;
        if (result.levels[i].state == State::NotAsked) continue;
        sAsked.append(sAsked.empty() ? "" : ", ").append(checkLevelName(static_cast<CheckLevel>(i)));
    }
    return boAll ? sText : sText + " (looked at: " + sAsked + ')';
}

std::string sCheckLevel(const CheckLevelSummary& summary) {
    std::string sText;
    if (summary.failures) sText = sCounted(summary.failures, "failure");
    if (summary.state == State::NotPossible)
        sText.append(sText.empty() ? "" : "; ").append("not decided: " + summary.reason);
    if (sText.empty()) sText = "valid";
    if (summary.notes) sText += ", " + sCounted(summary.notes, "note");
    return sText;
}

std::string sCheckRules(const CheckRuleCounts& counts) {
    return fmt::format("{} known, {} evaluated, {} indeterminate, {} not evaluated", sCounted(counts.known, "rule"),
                       sGrouped(counts.evaluated), sGrouped(counts.indeterminate), sGrouped(counts.notEvaluated));
}

Json checkRecordJson(const CheckRecord& record) {
    const CheckGroup& group = *record.group;
    const CheckPlace& place = *record.place;
    return {{"key", group.key},
            {"severity", group.weight == CheckWeight::Note ? "note" : "error"},
            {"category", checkLevelName(group.level)},
            {"level", checkLevelName(group.level)},
            {"rule", group.rule},
            {"message", group.message},
            {"expected", group.expected},
            {"line", place.line},
            {"column", place.column},
            {"entity", place.id ? Json(place.id) : Json(nullptr)},
            {"type", textJson(group.type)},
            {"attribute", textJson(group.attribute)},
            {"text", place.found}};
}

Json checkGroupJson(const CheckGroup& group) {
    return {{"key", group.key},
            {"severity", group.weight == CheckWeight::Note ? "note" : "error"},
            {"category", checkLevelName(group.level)},
            {"level", checkLevelName(group.level)},
            {"rule", group.rule},
            {"type", textJson(group.type)},
            {"attribute", textJson(group.attribute)},
            {"message", group.message},
            {"expected", group.expected},
            {"count", group.count},
            {"firstLine", group.places.empty() ? 0 : group.places.front().line}};
}

Json checkFileJson(const std::string& sPath, const CheckResult& result) {
    std::uint64_t iErrors = 0;
    std::uint64_t iNotes = 0;
    Json levels = Json::object();
    for (std::size_t i = 0; i < checkLevelCount; ++i) {
        const CheckLevelSummary& summary = result.levels[i];
        if (summary.state == State::NotAsked) continue;
        iErrors += summary.failures;
        iNotes += summary.notes;
        levels[std::string(checkLevelName(static_cast<CheckLevel>(i)))] = {{"done", summary.state == State::Done},
                                                                           {"reason", summary.reason},
                                                                           {"errors", summary.failures},
                                                                           {"notes", summary.notes}};
    }
    Json rules = Json::array();
    for (const CheckRuleCounts& counts : result.rules)
        rules.push_back({{"schema", counts.schema},
                         {"known", counts.known},
                         {"evaluated", counts.evaluated},
                         {"indeterminate", counts.indeterminate},
                         {"notEvaluated", counts.notEvaluated}});
    return {{"file", sPath},
            {"verdict", verdictKey(result.verdict())},
            {"errors", iErrors},
            {"notes", iNotes},
            {"statements", result.statements},
            {"notListed", result.placesLeftOut},
            {"levels", levels},
            {"rules", rules}};
}

ReportContent checkContent(const std::string& sName, const CheckResult& result, ifc::Errors& errors) {
    for (const CheckRecord& record : result.records()) {
        if (record.group->weight == CheckWeight::Note) continue;
        const CheckPlace& place = *record.place;
        std::string sText = place.id ? '#' + std::to_string(place.id) : std::string();
        if (!place.found.empty()) sText.append(sText.empty() ? "" : "  ").append(place.found);
        // A text that is no key is its own message, and one group.
        errors.add(nullptr, ifc::Errors::Error, categoryOf(record.group->level),
                   sCheckTitle(*record.group) + sCheckRule(*record.group), std::move(sText),
                   static_cast<unsigned>(place.line));
    }
    std::string sVerdict = sCheckVerdict(result);
    sVerdict.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sVerdict.front())));
    ReportContent content{
        sName,
        &errors.records(),
        sVerdict,
        result.verdict() == CheckVerdict::Valid ? "ok" : "error",
        {{"Path", sName}, {"Size", sCounted(result.bytes, "byte")}, {"Statements", sGrouped(result.statements)}}};
    for (std::size_t i = 0; i < checkLevelCount; ++i) {
        if (result.levels[i].state == State::NotAsked) continue;
        std::string sLabel(checkLevelName(static_cast<CheckLevel>(i)));
        sLabel.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sLabel.front())));
        content.facts.emplace_back(sLabel, sCheckLevel(result.levels[i]));
    }
    for (const CheckRuleCounts& counts : result.rules)
        content.facts.emplace_back("Rules of " + counts.schema, sCheckRules(counts));
    return content;
}

}   // namespace oxa::tool
