#include "oxaifc/ReportPage.h"

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "oxaifc/HeaderRows.h"
#include "oxaifc/Output.h"
#include "oxaifc/Records.h"
#include "platform/String.h"

namespace oxa::tool {

namespace {

using ifc::Errors;
using Records = std::vector<const ifc::ErrorRecord*>;

// The records of one text.
struct Message {
    std::string sHtml;
    bool boFatal = false;
    std::size_t iRecords = 0;
    std::size_t iShown = 0;
};

// The messages of all records, and which of the records are drawn.
class RowChoice {
public:
    explicit RowChoice(const Records& records) : m_records(records), m_shown(records.size(), false) {
        // By the text of the page, which two long ones of a file may share.
        std::unordered_map<std::string, std::size_t> places;
        for (const ifc::ErrorRecord* pRecord : records) {
            const auto [it, boNew] = places.try_emplace(sHtml(pRecord->description), m_messages.size());
            if (boNew) m_messages.push_back({it->first});
            m_messageOf.push_back(it->second);
            Message& message = m_messages[it->second];
            ++message.iRecords;
            message.boFatal = message.boFatal || pRecord->severity == Errors::Fatal;
        }
        // What gives a file up is never left out for what does not; after it comes a little of many messages,
        // then more of those that are told often.
        for (std::size_t i = 0; i < records.size(); ++i)
            if (records[i]->severity == Errors::Fatal) vShow(i, g_iMostRowsOfMessage, g_iMostRows);
        for (std::size_t i = 0; i < records.size(); ++i) vShow(i, g_iLeastRowsOfMessage, g_iMostRows / 2);
        for (std::size_t i = 0; i < records.size(); ++i) vShow(i, g_iMostRowsOfMessage, g_iMostRows);
    }

    [[nodiscard]] const std::vector<Message>& messages() const noexcept { return m_messages; }
    [[nodiscard]] std::size_t iShown() const noexcept { return m_iShown; }

    // Those that are drawn, in the order of the file, under the texts of their messages.
    [[nodiscard]] std::unique_ptr<Errors> pErrors() const {
        auto pErrors = std::make_unique<Errors>();
        std::string_view before;
        ifc::SourceText html;   // of the record before: those of one statement share it
        for (std::size_t i = 0; i < m_records.size(); ++i) {
            if (!m_shown[i]) continue;
            const ifc::ErrorRecord& record = *m_records[i];
            const std::string_view text = sourceText(record);
            if (!html || text.data() != before.data()) html = sHtml(text);
            before = text;
            // A text that is no key is its own message.
            pErrors->add(nullptr, record.severity, record.category, m_messages[m_messageOf[i]].sHtml, html,
                         record.lineNumber);
        }
        return pErrors;
    }

private:
    void vShow(std::size_t i, std::size_t iMostOfMessage, std::size_t iMost) {
        Message& message = m_messages[m_messageOf[i]];
        if (m_shown[i] || m_iShown >= iMost || message.iShown >= iMostOfMessage) return;
        m_shown[i] = true;
        ++message.iShown;
        ++m_iShown;
    }

    const Records& m_records;
    std::vector<Message> m_messages;
    std::vector<std::size_t> m_messageOf;   // by record
    std::vector<bool> m_shown;              // by record
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
    if (sText.empty()) sText = "No errors";
    return model.boOk() ? sText : sText + ": not read to the end";
}

Json facts(const Model& model) {
    Json result = Json::array();
    const auto vFact = [&result](std::string_view label, std::string_view text) {
        if (!text.empty()) result.push_back({{"label", sHtml(label)}, {"value", sHtml(text)}});
    };
    vFact("Path", model.sName());
    vFact("Size", sCounted(model.iBytes(), "byte"));
    vFact("Schema", model.sSchemaName());
    vFact("Entities", sGrouped(model.data().entities().size()));
    if (!model.pHeader()) return result;
    for (const HeaderRow& row : headerRows(*model.pHeader()))
        if (!row.boGroup && row.sLabel != "Schema") vFact(row.sLabel, row.sText);
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

// What the template says of each message, by its text.
void vMessagesAdd(Json& page, const RowChoice& choice) {
    page["severities"] = page["totals"] = page["more"] = Json::object();
    std::size_t iHiddenMessages = 0;
    std::size_t iRecords = 0;
    for (const Message& message : choice.messages()) {
        iRecords += message.iRecords;
        if (!message.iShown) {
            ++iHiddenMessages;
            continue;
        }
        page["severities"][message.sHtml] = g_severities[message.boFatal ? Errors::Fatal : Errors::Error];
        page["totals"][message.sHtml] = sCounted(message.iRecords, "time");
        if (message.iRecords > message.iShown)
            page["more"][message.sHtml] =
                fmt::format("{} more not listed", sGrouped(message.iRecords - message.iShown));
    }
    page["iRecords"] = iRecords;
    page["iHidden"] = iRecords - choice.iShown();
    const std::string sHiddenMessages =
        iHiddenMessages ? fmt::format(", {} not at all", sCounted(iHiddenMessages, "message")) : "";
    page["hidden"] = fmt::format("{} of {} are listed{}. oxaifc check prints all of them.",
                                 sGrouped(choice.iShown()), sCounted(iRecords, "error"), sHiddenMessages);
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

ReportPage reportPage(const Model& model) {
    const Records records = recordsByLine(model.errors());
    const RowChoice choice(records);
    const RecordCounts counts = recordCounts(model.errors());
    const bool boFine = records.empty() && model.boOk();
    Json page = {{"verdict", sVerdict(model, counts)},
                 {"state", boFine         ? "ok"
                           : model.boOk() ? "error"
                                          : "fatal"},
                 {"facts", facts(model)},
                 {"counts", countRows(counts)},
                 {"program", "oxaifc " OXA_VERSION}};
    vMessagesAdd(page, choice);
    // As a value of the template's language, which takes JSON in plain ASCII as it is.
    return {choice.pErrors(),
            fmt::format("{{% set page = {} %}}{}", page.dump(-1, ' ', true), sReportPageText())};
}

}   // namespace oxa::tool
