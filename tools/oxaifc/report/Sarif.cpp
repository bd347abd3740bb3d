// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/report/Sarif.h"

#include <filesystem>
#include <string_view>

#include <fmt/format.h>

#include "oxaifc/report/CheckText.h"
#include "platform/Path.h"

namespace oxa::tool {

std::string sUriOf(const std::string& sPath) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
    const std::filesystem::path path = str::pathOf(sPath);
    std::string sUri = path.is_absolute() ? "file://" : "";
    // A drive, of systems that have such, is no host: file:///C:/house.ifc
    if (path.is_absolute() && path.has_root_name()) sUri += "/" + str::sOfPath(path.root_name());
    const std::filesystem::path local = path.is_absolute() ? path.root_directory() / path.relative_path() : path;
    const std::u8string sGeneric = local.generic_u8string();
    for (const char c : std::string(sGeneric.begin(), sGeneric.end()))
        sUri += plain.find(c) != std::string_view::npos ? std::string(1, c)
                                                        : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return sUri;
}

Sarif::Sarif(std::ostream& stream) : m_stream(stream) {
    m_stream << R"({"$schema":"https://json.schemastore.org/sarif-2.1.0.json","version":"2.1.0","runs":[{"results":[)";
}

void Sarif::vResult(const CheckRecord& record, const std::string& sUri) {
    const CheckGroup& group = *record.group;
    const CheckPlace& place = *record.place;
    m_rules.emplace(group.key, group.message);
    Json location = {{"physicalLocation", {{"artifactLocation", {{"uri", sUri}}}}}};
    if (place.line) location["physicalLocation"]["region"]["startLine"] = place.line;
    // A rule of the schema below the key that all of them have.
    const std::string sRuleId = group.level == CheckLevel::Rules ? group.key + '/' + group.rule : group.key;
    Json properties = {{"level", checkLevelName(group.level)}, {"rule", group.rule}};
    if (place.id) properties["entity"] = place.id;
    if (place.column) properties["column"] = place.column;
    if (!group.type.empty()) properties["type"] = group.type;
    if (!group.attribute.empty()) properties["attribute"] = group.attribute;
    m_stream << (m_boFirst ? "\n" : ",\n")
             << sJson({{"ruleId", sRuleId},
                       {"level", group.weight == CheckWeight::Note ? "note" : "error"},
                       {"message", {{"text", sCheckMessage(record)}}},
                       {"locations", Json::array({location})},
                       {"properties", properties}});
    m_boFirst = false;
}

void Sarif::vNotify(const char* pLevel, const std::string& sText, const std::string& sPath) {
    const Json location = {{"physicalLocation", {{"artifactLocation", {{"uri", sUriOf(sPath)}}}}}};
    m_notifications.push_back(
        {{"level", pLevel}, {"message", {{"text", sText}}}, {"locations", Json::array({location})}});
}

void Sarif::vFile(const std::string& sPath, const CheckResult& result) {
    const std::string sUri = sUriOf(sPath);
    for (const CheckRecord& record : result.records()) vResult(record, sUri);
    for (std::size_t i = 0; i < checkLevelCount; ++i) {
        const CheckLevelSummary& summary = result.levels[i];
        if (summary.state != CheckLevelSummary::State::NotPossible) continue;
        m_boSuccessful = false;
        vNotify("error", fmt::format("{}: not decided: {}", checkLevelName(static_cast<CheckLevel>(i)), summary.reason),
                sPath);
    }
    if (result.placesLeftOut)
        vNotify("warning", fmt::format("{} are not listed", sCounted(result.placesLeftOut, "more failure")), sPath);
    m_files.push_back(checkFileJson(sPath, result));
}

void Sarif::vFault(const std::string& sPath, const std::string& sWhy) {
    m_boSuccessful = false;
    vNotify("error", sWhy, sPath);
}

void Sarif::vFinish() {
    Json rules = Json::array();
    for (const auto& [sKey, sText] : m_rules) rules.push_back({{"id", sKey}, {"shortDescription", {{"text", sText}}}});
    const Json invocation = {{"executionSuccessful", m_boSuccessful}, {"toolExecutionNotifications", m_notifications}};
    m_stream << "\n],\"invocations\":" << sJson(Json::array({invocation}))
             << ",\"properties\":" << sJson({{"files", m_files}})
             << ",\"tool\":" << sJson({{"driver", {{"name", "oxaifc"}, {"version", OXA_VERSION}, {"rules", rules}}}})
             << "}]}\n";
}

}   // namespace oxa::tool
