// SPDX-License-Identifier: Apache-2.0
// One list of rows stands behind lines, table and page: a row a change of an element or of an entity that no element
// tells.
#include "oxaifc/report/DiffText.h"

#include <map>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "oxaifc/report/ReportPage.h"
#include "oxaifc/report/Table.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostSingle = 3;   // elements with an equal change that are told one by one

struct Row {
    const char* pChange;   // "removed", "added", "changed"
    compare::ElementName element;
    std::string sWhat;   // empty of a whole element
    std::optional<std::string> sOld;
    std::optional<std::string> sNew;
    std::vector<compare::Difference> details;
    std::size_t iOldNumber;
    bool boEntity;   // told by no element
};

void vNamesAdd(std::vector<Row>& rows, const char* pChange, const std::vector<compare::ElementName>& elements) {
    for (const compare::ElementName& element : elements)
        rows.push_back({pChange, element, {}, {}, {}, {}, element.iNumber, false});
}

void vEntitiesAdd(std::vector<Row>& rows, const char* pChange, const std::vector<compare::Element>& entities) {
    for (const compare::Element& entity : entities)
        rows.push_back({pChange,
                        {entity.iNumber, entity.sType, entity.sGlobalId, entity.sText, {}},
                        {},
                        {},
                        {},
                        {},
                        entity.iNumber,
                        true});
}

std::vector<Row> rowsOf(const compare::ElementResult& diff) {
    std::vector<Row> rows;
    vNamesAdd(rows, "removed", diff.removed);
    vNamesAdd(rows, "added", diff.added);
    for (const compare::ElementChange& change : diff.changed)
        for (const compare::ElementDifference& one : change.differences)
            rows.push_back(
                {"changed", change.after, one.sWhat, one.sOld, one.sNew, one.details, change.before.iNumber, false});
    vEntitiesAdd(rows, "removed", diff.others.removed);
    vEntitiesAdd(rows, "added", diff.others.added);
    for (const compare::Change& change : diff.others.changed)
        for (const compare::Difference& one : change.differences)
            rows.push_back({"changed",
                            {change.after.iNumber, change.after.sType, change.after.sGlobalId, change.after.sText, {}},
                            one.sAttribute,
                            one.sOld,
                            one.sNew,
                            {},
                            change.before.iNumber,
                            true});
    return rows;
}

std::string sQuoted(const compare::ElementName& element) {
    return element.sName.empty() ? element.sGlobalId : '\'' + sPrintable(element.sName) + '\'';
}

// "#12 IFCWALL 1hOS... 'South'", or its content.
std::string sEntity(const compare::Element& entity) {
    if (entity.sGlobalId.empty()) return fmt::format("#{} {}", entity.iNumber, sPrintable(entity.sText));
    return fmt::format("#{} {} {}{}{}", entity.iNumber, entity.sType, entity.sGlobalId, entity.sText.empty() ? "" : " ",
                       sPrintable(entity.sText));
}

std::string sOr(const std::optional<std::string>& sText, const char* pNone) {
    return sText ? sPrintable(*sText) : pNone;
}

// "Name: a -> b"; "geometry changed" where only the details say more.
std::string sChange(const Row& row) {
    if (!row.sOld && !row.sNew) return sPrintable(row.sWhat) + " changed";
    return fmt::format("{}: {} -> {}", sPrintable(row.sWhat), sOr(row.sOld, "(none)"), sOr(row.sNew, "(none)"));
}

void vDetails(const std::vector<compare::Difference>& details, Output& output) {
    for (const compare::Difference& one : details)
        output.vPrint("    {}: {} -> {}{}\n", one.sAttribute, sOr(one.sOld, "(no such attribute)"),
                      sOr(one.sNew, "(no such attribute)"), one.boMore ? "\n    and more of this attribute" : "");
}

Tint tint(std::string_view change) {
    return change == "removed" ? Tint::Red : change == "added" ? Tint::Green : Tint::Yellow;
}

// What rows that are one line have in common.
std::string sKey(const Row& row) {
    return fmt::format("{}\n{}\n{}", row.pChange, row.element.sClass,
                       row.sWhat.empty() ? row.element.sStorey : sChange(row));
}

void vElementLine(const Row& row, const std::string& sWho, bool boAlone, Output& output) {
    if (row.sWhat.empty()) {
        output.vPrint("{}{}  {} {}{}\n", output.sTinted(tint(row.pChange), row.pChange),
                      row.pChange == std::string_view("added") ? "  " : "", row.element.sClass, sWho,
                      row.element.sStorey.empty() ? "" : "  storey: " + sPrintable(row.element.sStorey));
        return;
    }
    output.vPrint("{} {}  {}\n", row.element.sClass, sWho, sChange(row));
    if (boAlone) vDetails(row.details, output);
}

void vElementLines(const std::vector<Row>& rows, bool boAll, Output& output) {
    std::map<std::string, std::size_t> counts;
    for (const Row& row : rows)
        if (!row.boEntity) ++counts[sKey(row)];
    for (const Row& row : rows) {
        if (row.boEntity) continue;
        std::size_t& iCount = counts[sKey(row)];
        if (iCount == 0) continue;   // told with the first of them
        if (boAll || iCount <= g_iMostSingle) {
            vElementLine(row, sQuoted(row.element), true, output);
        } else {
            vElementLine(row, fmt::format("({})", sGrouped(iCount)), false, output);
            iCount = 0;
        }
    }
}

void vSchemaLine(const compare::Result& diff, Output& output) {
    if (diff.sSchemaOld != diff.sSchemaNew)
        output.vPrint("schema   {} -> {}\n", sPrintable(diff.sSchemaOld), sPrintable(diff.sSchemaNew));
}

void vEntities(const compare::Result& diff, Output& output) {
    for (const compare::Element& entity : diff.removed)
        output.vPrint("{}  {}\n", output.sTinted(Tint::Red, "removed"), sEntity(entity));
    for (const compare::Element& entity : diff.added)
        output.vPrint("{}    {}\n", output.sTinted(Tint::Green, "added"), sEntity(entity));
    for (const compare::Change& change : diff.changed) {
        output.vPrint("{}  {}\n", output.sTinted(Tint::Yellow, "changed"), sEntity(change.after));
        for (const compare::Difference& value : change.differences)
            output.vPrint("         {}: {} -> {}{}\n", value.sAttribute, sOr(value.sOld, "(no such attribute)"),
                          sOr(value.sNew, "(no such attribute)"),
                          value.boMore ? "\n         and more of this attribute" : "");
    }
}

std::string sCounts(std::size_t iRemoved, std::size_t iAdded, std::size_t iChanged, const Output* pOutput = nullptr) {
    const std::pair<std::size_t, const char*> counts[] = {
        {iRemoved, "removed"}, {iAdded, "added"}, {iChanged, "changed"}};
    std::string sText;
    for (const auto& [iCount, pWord] : counts)
        sText += fmt::format("{}{} {}", sText.empty() ? "" : ", ", sGrouped(iCount),
                             pOutput && iCount ? pOutput->sTinted(tint(pWord), pWord) : pWord);
    return sText;
}

std::string sSummary(const compare::ElementResult& diff, const Output* pOutput = nullptr) {
    const std::size_t iOthers = diff.others.removed.size() + diff.others.added.size() + diff.others.changed.size();
    std::string sText = sCounts(diff.removed.size(), diff.added.size(), diff.changed.size(), pOutput);
    if (iOthers)
        sText += fmt::format("; {} that no element tells", iOthers == 1 ? "1 entity" : sGrouped(iOthers) + " entities");
    return sText;
}

bool boNothing(const compare::ElementResult& diff) {
    return diff.others.boEqual() && diff.removed.empty() && diff.added.empty() && diff.changed.empty();
}

Json entityJson(const compare::Element& entity) {
    Json value{{"number", entity.iNumber}, {"type", entity.sType}};
    if (entity.sGlobalId.empty()) {
        value["content"] = entity.sText;
    } else {
        value["globalId"] = entity.sGlobalId;
        if (!entity.sText.empty()) value["name"] = entity.sText;
    }
    return value;
}

Json listJson(const std::vector<compare::Element>& entities) {
    Json list = Json::array();
    for (const compare::Element& entity : entities) list.push_back(entityJson(entity));
    return list;
}

Json optionalJson(const std::optional<std::string>& sText) { return sText ? Json(*sText) : Json(); }

Json valuesJson(const std::vector<compare::Difference>& differences) {
    Json values = Json::array();
    for (const compare::Difference& value : differences) {
        Json row{{"attribute", value.sAttribute}, {"old", optionalJson(value.sOld)}, {"new", optionalJson(value.sNew)}};
        if (value.boMore) row["more"] = true;
        values.push_back(std::move(row));
    }
    return values;
}

Json changesJson(const std::vector<compare::Change>& changes) {
    Json list = Json::array();
    for (const compare::Change& change : changes) {
        Json entity = entityJson(change.after);
        entity["oldNumber"] = change.before.iNumber;
        entity["values"] = valuesJson(change.differences);
        list.push_back(std::move(entity));
    }
    return list;
}

Json elementJson(const char* pChange, const compare::ElementName& element) {
    const auto nameJson = [](const std::string& sName) { return sName.empty() ? Json() : Json(sName); };
    return {{"change", pChange},
            {"id", element.iNumber},
            {"type", element.sClass},
            {"globalId", element.sGlobalId},
            {"name", nameJson(element.sName)},
            {"storey", nameJson(element.sStorey)}};
}

Json elementsJson(const compare::ElementResult& diff) {
    Json list = Json::array();
    for (const compare::ElementName& element : diff.removed) list.push_back(elementJson("removed", element));
    for (const compare::ElementName& element : diff.added) list.push_back(elementJson("added", element));
    for (const compare::ElementChange& change : diff.changed) {
        Json element = elementJson("changed", change.after);
        element["oldId"] = change.before.iNumber;
        Json changes = Json::array();
        for (const compare::ElementDifference& one : change.differences) {
            Json row{{"what", one.sWhat}, {"old", optionalJson(one.sOld)}, {"new", optionalJson(one.sNew)}};
            if (!one.details.empty()) row["values"] = valuesJson(one.details);
            changes.push_back(std::move(row));
        }
        element["changes"] = std::move(changes);
        list.push_back(std::move(element));
    }
    return list;
}

void vReplace(std::string& sText, std::string_view mark, std::string_view by) {
    const std::size_t iMark = sText.find(mark);
    if (iMark != std::string::npos) sText.replace(iMark, mark.size(), by);
}

std::string sPageRow(const Row& row) {
    std::string sDetails;
    for (const compare::Difference& one : row.details)
        sDetails += fmt::format("<br><code>{}: {} &rarr; {}</code>", sHtml(one.sAttribute),
                                sHtml(one.sOld.value_or("(none)")), sHtml(one.sNew.value_or("(none)")));
    return fmt::format(
        "<tr class=\"{}\"><td>{}</td><td>{}</td><td>{}</td><td>{}</td><td>{}{}</td><td>{}</td><td>{}</td>"
        "<td><code>{}</code></td></tr>\n",
        row.pChange, row.pChange, sHtml(row.element.sClass), sHtml(row.element.sName), sHtml(row.element.sStorey),
        sHtml(row.sWhat), sDetails, sHtml(row.sOld.value_or("")), sHtml(row.sNew.value_or("")),
        sHtml(row.element.sGlobalId));
}

}   // namespace

void vDiffLines(const compare::ElementResult& diff, bool boAll, Output& output) {
    vSchemaLine(diff.others, output);
    vElementLines(rowsOf(diff), boAll, output);
    vEntities(diff.others, output);
    output.vPrint("{}\n", boNothing(diff) ? "no difference" : sSummary(diff, &output));
}

void vEntityLines(const compare::Result& diff, Output& output) {
    vSchemaLine(diff, output);
    vEntities(diff, output);
    output.vPrint("{}\n", diff.boEqual() ? "no difference"
                                         : sCounts(diff.removed.size(), diff.added.size(), diff.changed.size()));
}

void vDiffTable(const compare::ElementResult& diff, Output& output) {
    Table table({.eForm = TableForm::Csv},
                {"change", "class", "GlobalId", "name", "storey", "what", "old", "new", "oldId", "newId", "details"},
                [&output](std::string_view text) { output.vPrint("{}", text); });
    const auto cell = [](const std::string& sText) { return sText.empty() ? Cell() : Cell(sText); };
    for (const Row& row : rowsOf(diff)) {
        std::string sDetails;
        for (const compare::Difference& one : row.details)
            sDetails += fmt::format("{}{}: {} -> {}", sDetails.empty() ? "" : "; ", one.sAttribute,
                                    one.sOld.value_or("(none)"), one.sNew.value_or("(none)"));
        const auto iNumber = [](std::size_t i) { return Cell(static_cast<std::int64_t>(i)); };
        const std::string_view change = row.pChange;
        table.vRow({std::string(change), cell(row.element.sClass), cell(row.element.sGlobalId), cell(row.element.sName),
                    cell(row.element.sStorey), cell(row.sWhat), row.sOld ? Cell(*row.sOld) : Cell(),
                    row.sNew ? Cell(*row.sNew) : Cell(), change == "added" ? Cell() : iNumber(row.iOldNumber),
                    change == "removed" ? Cell() : iNumber(row.element.iNumber), cell(sDetails)});
    }
    table.vFinish();
}

Json diffJson(const compare::Result& diff, const compare::ElementResult* pElements) {
    Json json{{"equal", diff.boEqual()}, {"schema", {{"old", diff.sSchemaOld}, {"new", diff.sSchemaNew}}}};
    if (pElements) {
        json["equal"] = boNothing(*pElements);
        json["elements"] = elementsJson(*pElements);
    }
    json["removed"] = listJson(diff.removed);
    json["added"] = listJson(diff.added);
    json["changed"] = changesJson(diff.changed);
    return json;
}

std::string sDiffPage(const compare::ElementResult& diff, const std::string& sOld, const std::string& sNew) {
    std::string sRows;
    for (const Row& row : rowsOf(diff)) sRows += sPageRow(row);
    std::string sPage = sDiffPageText();
    const std::string sTitle = sHtml(sOld) + " &rarr; " + sHtml(sNew);
    vReplace(sPage, "<!--title-->", sTitle);
    vReplace(sPage, "<!--heading-->", sTitle);
    vReplace(sPage, "<!--verdict-->", boNothing(diff) ? "no difference" : sSummary(diff));
    vReplace(sPage, "<!--program-->", "oxaifc " OXA_VERSION);
    vReplace(sPage, "<!--rows-->", sRows);
    return sPage;
}

}   // namespace oxa::tool
