// SPDX-License-Identifier: Apache-2.0
// The page: which of the records it draws, and everything as HTML. A page with all records of a faulty file could be
// larger than a browser takes, so the rows are limited, fairly among the groups.
#include "oxaifc/report/ReportPage.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/HeaderRows.h"
#include "oxaifc/report/Records.h"
#include "platform/String.h"

namespace oxa::tool {

namespace {

using ifc::Errors;

// Groups have names whose order is theirs.
std::string sGroupName(std::size_t iGroup) { return fmt::format("{:09}", iGroup); }

struct PageGroup {
    std::string sTitle;   // as HTML
    bool boFatal = false;
    bool boOneText = false;   // all records say the same
    std::size_t iShown = 0;
};

// The groups of all records, and which of the records are drawn.
class RowChoice {
public:
    explicit RowChoice(const std::vector<RecordGroup>& groups) : m_pageGroups(groups.size()) {
        std::unordered_map<std::string_view, std::size_t> messages;
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const std::string sTitle = groups[i].sTitle();
            m_pageGroups[i].sTitle = sHtml(sTitle);
            m_pageGroups[i].boOneText = sTitle == groups[i].records.front()->description;
            for (const ifc::ErrorRecord* pRecord : groups[i].records) {
                const auto iMessage = messages.try_emplace(pRecord->description, messages.size()).first->second;
                m_rows.push_back({pRecord, i, iMessage});
                m_pageGroups[i].boFatal = m_pageGroups[i].boFatal || pRecord->severity == Errors::Fatal;
            }
        }
        m_shownOfMessage.resize(messages.size());
        // What gives a file up is never left out for what does not; after it comes a little of every group, then
        // more of those that are told often.
        for (Row& row : m_rows)
            if (row.pRecord->severity == Errors::Fatal) vShow(row, g_iMostRows, g_iMostRows);
        for (Row& row : m_rows) vShow(row, g_iLeastRowsOfGroup, g_iMostRows / 2);
        for (Row& row : m_rows) vShow(row, g_iMostRowsOfMessage, g_iMostRows);
        for (Row& row : m_rows) vShow(row, g_iMostRows, g_iMostRows);
    }

    [[nodiscard]] const std::vector<PageGroup>& groups() const noexcept { return m_pageGroups; }
    [[nodiscard]] std::size_t iShown() const noexcept { return m_iShown; }
    // Of which no record is drawn.
    [[nodiscard]] std::size_t iHiddenMessages() const {
        return static_cast<std::size_t>(std::count(m_shownOfMessage.begin(), m_shownOfMessage.end(), 0U));
    }

    // Those that are drawn. The text of each is the name of its group, by which the template puts groups in order;
    // its source text is what stands in its row.
    [[nodiscard]] std::unique_ptr<Errors> pErrors() const {
        auto pErrors = std::make_unique<Errors>();
        for (const Row& row : m_rows) {
            if (!row.boShown) continue;
            const ifc::ErrorRecord& record = *row.pRecord;
            std::string sRow = "<code>" + sHtml(sourceText(record)) + "</code>";
            if (!m_pageGroups[row.iGroup].boOneText)
                sRow += "<span class=\"message\">" + sHtml(record.description) + "</span>";
            // A text that is no key is its own message.
            pErrors->add(nullptr, record.severity, record.category, sGroupName(row.iGroup), std::move(sRow),
                         record.lineNumber);
        }
        return pErrors;
    }

private:
    struct Row {
        const ifc::ErrorRecord* pRecord;
        std::size_t iGroup;
        std::size_t iMessage;
        bool boShown = false;
    };

    void vShow(Row& row, std::size_t iMostOfGroup, std::size_t iMost) {
        PageGroup& group = m_pageGroups[row.iGroup];
        std::size_t& iShownOfMessage = m_shownOfMessage[row.iMessage];
        if (row.boShown || m_iShown >= iMost || group.iShown >= iMostOfGroup || iShownOfMessage >= g_iMostRowsOfMessage)
            return;
        row.boShown = true;
        ++iShownOfMessage;
        ++group.iShown;
        ++m_iShown;
    }

    std::vector<PageGroup> m_pageGroups;
    std::vector<Row> m_rows;
    std::vector<std::size_t> m_shownOfMessage;
    std::size_t m_iShown = 0;
};

// "3 errors, 1 fatal error: not read to the end".
std::string sVerdict(const Model& model, const RecordCounts& counts) {
    std::string sText;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        std::size_t iAll = 0;
        for (const std::size_t iCount : counts[i]) iAll += iCount;
        if (!iAll) continue;
        sText.append(sText.empty() ? "" : ", ");
        sText.append(sCounted(iAll, i == Errors::Fatal ? "fatal error" : "error"));
    }
    const std::string sLost = model.sLost();
    if (!sLost.empty()) return sText.append(sText.empty() ? "" : ", ").append(sLost);
    if (!sText.empty()) return model.boOk() ? sText : sText + ": not read to the end";
    sText = model.sNoErrors();
    sText.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sText.front())));
    return sText;
}

std::vector<std::pair<std::string, std::string>> facts(const Model& model) {
    std::vector<std::pair<std::string, std::string>> result{{"Path", model.sName()},
                                                            {"Size", sCounted(model.iBytes(), "byte")},
                                                            {"Schema", model.sSchemaName()},
                                                            {"Entities", sGrouped(model.data().entities().size())}};
    if (!model.pHeader()) return result;
    for (const HeaderRow& row : headerRows(*model.pHeader()))
        if (!row.boGroup && row.sLabel != "Schema") result.emplace_back(row.sLabel, row.sText);
    return result;
}

// Those that have a text.
Json factRows(const std::vector<std::pair<std::string, std::string>>& facts) {
    Json result = Json::array();
    for (const auto& [sLabel, sText] : facts)
        if (!sText.empty()) result.push_back({{"label", sHtml(sLabel)}, {"value", sHtml(sText)}});
    return result;
}

Json countRows(const RecordCounts& counts) {
    Json rows = Json::array();
    for (std::size_t i = counts.size(); i-- > 0;)
        for (std::size_t j = 0; j < counts[i].size(); ++j)
            if (counts[i][j])
                rows.push_back({{"name", fmt::format("{}: {}", g_severities[i], g_categories[j])},
                                {"count", sGrouped(counts[i][j])}});
    return rows;
}

// What the template says of each group, by its name.
void vGroupsAdd(Json& page, const std::vector<RecordGroup>& groups, const RowChoice& choice, const std::string& sAll) {
    page["severities"] = page["titles"] = page["totals"] = page["more"] = page["following"] = Json::object();
    std::size_t iRecords = 0;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const RecordGroup& group = groups[i];
        const PageGroup& pageGroup = choice.groups()[i];
        const std::string sName = sGroupName(i);
        iRecords += group.records.size() + group.following.size();
        if (!pageGroup.iShown) continue;
        page["severities"][sName] = g_severities[pageGroup.boFatal ? Errors::Fatal : Errors::Error];
        page["titles"][sName] = pageGroup.sTitle;
        page["totals"][sName] = sCounted(group.records.size(), "time");
        if (group.records.size() > pageGroup.iShown)
            page["more"][sName] = fmt::format("{} more not listed", sGrouped(group.records.size() - pageGroup.iShown));
        if (!group.following.empty())
            page["following"][sName] = fmt::format("and {} to what was skipped for that",
                                                   sCounted(group.following.size(), "missing reference"));
    }
    page["iRecords"] = iRecords;
    page["iHidden"] = iRecords - choice.iShown();
    const std::size_t iHiddenMessages = choice.iHiddenMessages();
    const std::string sHiddenMessages =
        iHiddenMessages ? fmt::format(", {} not at all", sCounted(iHiddenMessages, "message")) : "";
    page["hidden"] = fmt::format("{} of {} are listed{}. {} prints all of them.", sGrouped(choice.iShown()),
                                 sCounted(iRecords, "error"), sHiddenMessages, sAll);
}

}   // namespace

std::string sHtml(std::string_view text) {
    std::string sResult;
    for (const char c : sShortened(str::Converter::to_utf8(text), g_iMostTextBytes)) {
        switch (c) {
        case '&': sResult += "&amp;"; break;
        case '<': sResult += "&lt;"; break;
        case '>': sResult += "&gt;"; break;
        case '"': sResult += "&quot;"; break;
        case '\'': sResult += "&#39;"; break;
        default: sResult += c;
        }
    }
    return sResult;
}

ReportContent reportContent(const Model& model) {
    const bool boFine = model.errors().empty() && model.boOk() && model.sLost().empty();
    ReportContent content;
    content.sName = model.sName();
    content.pRecords = &model.errors();
    content.sVerdict = sVerdict(model, recordCounts(model.errors()));
    content.state = boFine ? "ok" : model.boOk() ? "error" : "fatal";
    content.facts = facts(model);
    return content;
}

ReportPage reportPage(const ReportContent& content) {
    const std::vector<RecordGroup> groups = recordGroups(*content.pRecords);
    const RowChoice choice(groups);
    Json page = {{"verdict", content.sVerdict},      {"state", content.state},
                 {"facts", factRows(content.facts)}, {"partsTitle", sHtml(content.sParts)},
                 {"parts", factRows(content.parts)}, {"heading", sHtml(content.sHeading)},
                 {"places", content.boPlaces},       {"counts", countRows(recordCounts(*content.pRecords))},
                 {"program", "oxaifc " OXA_VERSION}};
    vGroupsAdd(page, groups, choice, content.sAll);
    // As a value of the template's language, which takes JSON in plain ASCII as it is.
    return {choice.pErrors(), fmt::format("{{% set page = {} %}}{}", page.dump(-1, ' ', true), sReportPageText())};
}

}   // namespace oxa::tool
