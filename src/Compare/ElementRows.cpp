// SPDX-License-Identifier: Apache-2.0
// Relations of an element as rows of text. What is related is the same where its GlobalId is; a property is the same
// where its content is, whatever it looks like.
#include "Compare/ElementRows.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <utility>

#include "Compare/ContentText.h"
#include "Model/Relations.h"
#include "Model/Units.h"

namespace oxa::compare {

namespace {

// One relation in one model.
struct Row {
    std::string sText;       // for people; empty for none
    std::string sIdentity;   // what is compared
};

std::string sNumber(double value) {
    char text[32];
    return {text, std::to_chars(text, std::end(text), value).ptr};
}

// "EG"; the class where it has no name.
Row related(const oxa::Element& element) {
    if (!element) return {};
    const std::string sName = sElementName(element);
    return {sName.empty() ? std::string(element.type()) : sName, element.guid()};
}

std::string sJoined(const std::set<std::string>& texts) {
    std::string sText;
    for (const std::string& sOne : texts) sText.append(sText.empty() ? "" : ", ").append(sOne);
    return sText;
}

Row materialRow(const oxa::Element& element) {
    std::string sText;
    for (const Material& one : materials(element)) {
        sText.append(sText.empty() ? "" : ", ").append(one.name.empty() ? "(none)" : one.name);
        if (!one.part.empty()) sText += " (" + one.part + ')';
        if (one.thickness) sText += ' ' + sNumber(*one.thickness);
        if (one.fraction) sText += ' ' + sNumber(*one.fraction);
    }
    return {sText, sText};
}

Row classificationRow(const oxa::Element& element) {
    std::set<std::string> texts;
    for (const Classification& one : classifications(element)) {
        std::string sText = one.code;
        if (!one.name.empty()) sText += (sText.empty() ? "" : " ") + one.name;
        if (!one.system.empty()) sText += " (" + one.system + ')';
        texts.insert(std::move(sText));
    }
    const std::string sText = sJoined(texts);
    return {sText, sText};
}

Row groupRow(const oxa::Element& element) {
    std::set<std::string> names, identities;
    for (const oxa::Element group : groups(element)) {
        names.insert(related(group).sText);
        identities.insert(group.guid());
    }
    return {sJoined(names), sJoined(identities)};
}

// What stands nearer than the storey, and a whole that is no spatial element.
Row containerRow(const oxa::Element& element) {
    const oxa::Element found = container(element);
    return found == storey(element) ? Row() : related(found);
}
Row wholeRow(const oxa::Element& element) {
    const oxa::Element found = parent(element);
    return found == container(element) ? Row() : related(found);
}

struct RowKind {
    About eAbout;
    const char* pWhat;
    Row (*pRow)(const oxa::Element& element);
};
const RowKind g_rows[] = {
    {About::Type, "type", [](const oxa::Element& element) { return related(type(element)); }},
    {About::Place, "storey", [](const oxa::Element& element) { return related(storey(element)); }},
    {About::Place, "container", containerRow},
    {About::Place, "part of", wholeRow},
    {About::Material, "material", materialRow},
    {About::Classification, "classification", classificationRow},
    {About::Group, "group", groupRow},
};

std::optional<std::string> sTold(const Row& row) { return row.sText.empty() ? std::nullopt : std::optional(row.sText); }

// "1 .. 5", "(1,2) -> (A,B)", "12 mm".
std::string sValue(const Property& property) {
    std::string sText = property.value.toString();
    if (property.kind == PropertyKind::Bounded && (!property.lower.isNull() || !property.upper.isNull()))
        sText =
            property.lower.toString() + " .. " + property.upper.toString() + (sText.empty() ? "" : " (" + sText + ')');
    if (property.kind == PropertyKind::Table) sText = property.defining.toString() + " -> " + sText;
    if (const auto given = property.unit ? unit(property.unit) : std::nullopt; given && !sText.empty())
        sText += ' ' + given->symbol;
    return sText;
}

// The values of a property by their names, those of a complex one each.
using Values = std::map<std::string, std::string>;
void vValuesAdd(const Property& property, const std::string& sName, Values& values) {
    if (property.properties.empty()) values.emplace(sName, sValue(property));
    for (const Property& part : property.properties) vValuesAdd(part, sName + '.' + part.name, values);
}

struct SetRow {
    Property property;
    bool boQuantity;
};
using SetRows = std::map<std::string, SetRow>;   // by "Set.Property", the first of a name

SetRows setRows(const oxa::Element& element) {
    SetRows rows;
    for (const bool boQuantity : {false, true})
        for (const PropertySet& set : boQuantity ? quantities(element) : psets(element))
            for (const Property& one : set.properties)
                rows.try_emplace(set.name + '.' + one.name, SetRow{one, boQuantity});
    return rows;
}

class SetDiff {
public:
    SetDiff(const ComparedModel& before, const ComparedModel& after, std::vector<ElementDifference>& found)
        : m_before(before),
          m_after(after),
          m_found(found) {}

    void vCompare(const std::string& sName, const SetRow* pOld, const SetRow* pNew) {
        const About eAbout = (pNew ? pNew : pOld)->boQuantity ? About::Quantity : About::Property;
        if (pOld && pNew && boSame(pOld->property, pNew->property)) return;
        Values old, now;
        if (pOld) vValuesAdd(pOld->property, sName, old);
        if (pNew) vValuesAdd(pNew->property, sName, now);
        const std::size_t iBefore = m_found.size();
        for (const auto& [sPath, sText] : old) {
            const auto found = now.find(sPath);
            if (found == now.end())
                m_found.push_back({eAbout, sPath, sText, {}, {}});
            else if (found->second != sText)
                m_found.push_back({eAbout, sPath, sText, found->second, {}});
        }
        for (const auto& [sPath, sText] : now)
            if (!old.contains(sPath)) m_found.push_back({eAbout, sPath, {}, sText, {}});
        // What differs is none of the values: a description, the type of a value.
        if (m_found.size() == iBefore)
            m_found.push_back({eAbout, sName, sWhole(m_before, pOld->property), sWhole(m_after, pNew->property), {}});
    }

private:
    [[nodiscard]] bool boSame(const Property& old, const Property& now) const {
        if (old.kind != now.kind) return false;
        if (old.kind == PropertyKind::Attribute)
            return old.value.toString() == now.value.toString() && old.value.kind() == now.value.kind();
        return m_before.content.content(&old.element.core()) == m_after.content.content(&now.element.core());
    }
    [[nodiscard]] static std::string sWhole(const ComparedModel& model, const Property& property) {
        return sReferenceText(model.content, &property.element.core());
    }

    const ComparedModel& m_before;
    const ComparedModel& m_after;
    std::vector<ElementDifference>& m_found;
};

}   // namespace

std::string sElementName(const oxa::Element& element) {
    return element.has("Name") ? element["Name"].toString() : std::string();
}

std::vector<ElementDifference> rowDifferences(const ComparedModel& before, const oxa::Element& old,
                                              const ComparedModel& after, const oxa::Element& now) {
    std::vector<ElementDifference> found;
    for (const RowKind& kind : g_rows) {
        Row rowOld = kind.pRow(old);
        Row rowNew = kind.pRow(now);
        if (rowOld.sIdentity == rowNew.sIdentity) continue;
        if (rowOld.sText == rowNew.sText) {
            rowOld.sText += ' ' + rowOld.sIdentity;
            rowNew.sText += ' ' + rowNew.sIdentity;
        }
        found.push_back({kind.eAbout, kind.pWhat, sTold(rowOld), sTold(rowNew), {}});
    }
    const SetRows setsOld = setRows(old);
    const SetRows setsNew = setRows(now);
    SetDiff sets(before, after, found);
    for (const auto& [sName, row] : setsOld) {
        const auto other = setsNew.find(sName);
        sets.vCompare(sName, &row, other == setsNew.end() ? nullptr : &other->second);
    }
    for (const auto& [sName, row] : setsNew)
        if (!setsOld.contains(sName)) sets.vCompare(sName, nullptr, &row);
    return found;
}

}   // namespace oxa::compare
