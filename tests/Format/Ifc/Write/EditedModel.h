// SPDX-License-Identifier: Apache-2.0
// EditedModel: a file that is read, changed by commands and written, and its statements in short.
//
// For      the tests that write down what is written of a changed model, one row a change.
// Short    number, label, and values up to the last one; "=" behind the label of a tie. "1a #2;7g= #1" is
//          "#1=IFCNODE('a',#2,$,$,$,$);" and "#7=IFCTIE('g',#1,$);".
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <map>
#include <new>
#include <sstream>

#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io::edited {

using def::schema::AttributeName;
using def::schema::ObjectName;
using types::IfcSelectBase;

// Each of the ways in which one instance may lead to another.
inline const def::SchemaPset& editSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcInner = SELECT (IfcLabel, IfcNode); END_TYPE;
        TYPE IfcAny = SELECT (IfcLabel, IfcInner, IfcNode); END_TYPE;
        ENTITY IfcNode; Label : IfcLabel; Next : OPTIONAL IfcNode; Others : OPTIONAL LIST OF IfcNode;
            Rows : OPTIONAL LIST OF LIST OF IfcNode; Any : OPTIONAL IfcAny; Values : OPTIONAL LIST OF IfcAny;
            INVERSE Ties : SET OF IfcTie FOR From; END_ENTITY;
        ENTITY IfcTie; Label : IfcLabel; From : OPTIONAL IfcNode; To : OPTIONAL IfcNode; END_ENTITY;
        )");
    return *pSchema;
}

inline Lines longOf(const std::string& sShort) {
    Lines lines;
    std::istringstream in(sShort);
    for (std::string sStatement; std::getline(in, sStatement, ';');) {
        std::istringstream parts(sStatement);
        long long iNumber = 0;
        std::string sLabel;
        if (!(parts >> iNumber >> sLabel)) continue;
        const bool boTie = sLabel.ends_with('=');
        if (boTie) sLabel.pop_back();
        std::string& sLine = lines.emplace_back('#' + std::to_string(iNumber));
        sLine += (boTie ? "=IFCTIE('" : "=IFCNODE('") + sLabel + '\'';
        for (int i = boTie ? 2 : 5; i > 0; --i) {
            std::string sValue = "$";
            parts >> sValue;
            sLine += ',' + (sValue.empty() ? "$" : sValue);
        }
        sLine += ");";
    }
    return lines;
}

// A tie alone leads to f, an inverse list alone to g, and nothing to i.
inline const std::string g_sBase = "1a #2; 2b $ (#1,#3); 3c $ $ ((#1,#2),(#4)); 4d $ $ $ #3 (IFCLABEL('l'),#2);"
                                   "5e $ $ $ IFCINNER(#4) (IFCINNER(#1)); 6f; 7g= #1; 8h= #6 #6; 9i";
inline const std::string g_sOther = "7x #8; 8y; 9z= #7";

inline std::string sJoined(const Lines& lines) {
    std::string sText;
    for (const std::string& sLine : lines) sText.append(sLine).push_back('\n');
    return sText;
}
inline Lines sorted(Lines lines) {
    std::ranges::sort(lines);
    return lines;
}
// Of a statement, or of a reference; one below 0 is one of 32 bits.
inline std::uint32_t iNumberOf(const std::string& sLine) {
    return static_cast<std::uint32_t>(std::stoll(sLine.substr(1)));
}
inline std::string sLabelOf(const std::string& sLine) {
    const std::size_t i = sLine.find("('") + 2;
    return sLine.substr(i, sLine.find('\'', i) - i);
}
inline Lines labelsOf(const Lines& lines) {
    Lines labels;
    for (const std::string& sLine : lines) labels.push_back(sLabelOf(sLine));
    return labels;
}
// Labels in place of numbers, "#?" for one that no statement has; sorted.
inline Lines canonical(const Lines& lines) {
    std::map<std::uint32_t, std::string> labels;
    for (const std::string& sLine : lines) labels.emplace(iNumberOf(sLine), sLabelOf(sLine));
    Lines texts;
    for (const std::string& sLine : lines) {
        std::string& sText = texts.emplace_back();
        for (std::size_t i = 0; i < sLine.size(); ++i) {
            sText += sLine[i];
            if (sLine[i] != '#') continue;
            const auto found = labels.find(iNumberOf(sLine.substr(i)));
            sText += found == labels.end() ? "?" : found->second;
            i = sLine.find_first_not_of("0123456789", i + 1) - 1;
        }
    }
    return sorted(texts);
}

// A file that is read, changed and written, and another model that it may name. What is done to it is a text: commands
// with ";" between them, each a word and what it is about, which mostly are labels.
class Model {
public:
    Model() {
        m_file.vSchemaSet(editSchema());
        EXPECT_TRUE(boReadInto(m_other, g_sOther));
    }

    // One thread, unless several are asked for; a part is one without an end.
    bool boRead(const std::string& sShort, bool boSingleThreaded = true, bool boPart = false) {
        return boReadInto(m_file, sShort, boSingleThreaded, boPart);
    }
    void vDo(const std::string& sCommands) {
        std::istringstream in(sCommands);
        for (std::string sCommand; std::getline(in, sCommand, ';');) {
            std::istringstream parts(sCommand);
            std::string sName;
            std::vector<std::string> labels;
            parts >> sName;
            for (std::string sLabel; parts >> sLabel;) labels.push_back(sLabel);
            if (!sName.empty()) g_commands.at(sName)(*this, labels);
        }
    }
    [[nodiscard]] Data& data() { return m_file.data(); }
    [[nodiscard]] const FileHeader& header() const { return m_file.header(); }
    [[nodiscard]] Entity* operator[](const std::string& sLabel) const { return m_byLabel.at(sLabel); }
    template <class Cell>
    [[nodiscard]] Cell& cell(const std::string& sLabel, unsigned iIndex) const {
        return static_cast<Cell&>(*(*this)[sLabel]->pAttributeFromIndex(iIndex).second);
    }

    bool m_boKeepIds = true;

private:
    using Words = std::vector<std::string>;
    static const std::map<std::string, void (*)(Model&, const Words&)> g_commands;

    bool boReadInto(File& file, const std::string& sShort, bool boSingleThreaded = true, bool boPart = false) {
        std::string sText = sFileOf(sJoined(longOf(sShort)));
        if (boPart) sText.replace(sText.find("ENDSEC;\nEND-ISO"), std::string::npos, "#99=IFCNODE(");
        std::istringstream in(sText);
        ReadError errors;
        const bool boRead = file.boRead(in, schemaIs(editSchema()), errors, m_boKeepIds, {}, boSingleThreaded);
        for (Entity* pEntity : file.data().entities()) {
            std::string sLabel;
            EXPECT_TRUE(pEntity->boValueGet(AttributeName("Label"), sLabel));
            m_byLabel.emplace(sLabel, pEntity);
        }
        return boRead;
    }
    const def::schema::Entity& nodeType() { return *data().pEntitySchemaFromName(ObjectName("IFCNODE")); }
    void vLabel(const std::string& sLabel, Entity* pEntity) {
        EXPECT_TRUE(pEntity->boValueSet(AttributeName("Label"), sLabel, data()));
        m_byLabel[sLabel] = pEntity;
    }
    template <class Item = Entity*>
    std::vector<Item> all(const Words& labels, std::size_t iFirst) const {
        std::vector<Item> found;
        for (; iFirst < labels.size(); ++iFirst) found.push_back(Item((*this)[labels[iFirst]]));
        return found;
    }
    template <class T>
    void vSet(const std::string& sLabel, const char* sAttribute, const T& value) {
        EXPECT_TRUE((*this)[sLabel]->boValueSet(AttributeName(sAttribute), value, data()));
    }
    template <class T>
    void vListSet(const std::string& sLabel, const char* sAttribute, const std::vector<T>& values) {
        EXPECT_TRUE((*this)[sLabel]->boListValueSet(AttributeName(sAttribute), values, data()));
    }
    template <class T>
    void vPush(const std::string& sLabel, const char* sAttribute, const T& value) {
        EXPECT_TRUE((*this)[sLabel]->boListValuePushBack(AttributeName(sAttribute), value, data()));
    }

    // New ones: in the list; in no list, where its memory is the model's, or on its own.
    void vCreate(const Words& w) { vLabel(w[0], data().pEntityCreate(ObjectName(w.size() > 1 ? w[1] : "IFCNODE"))); }
    void vUnlisted(const Words& w) {
        void* pBytes = data().pool().pAllocateAligned(sizeof(Entity));
        const def::schema::Entity* pType = data().pEntitySchemaFromName(ObjectName(w.size() > 1 ? w[1] : "IFCNODE"));
        vLabel(w[0], ::new (pBytes) Entity(data(), *pType));
    }
    void vOwn(const Words& w) { vLabel(w[0], &m_own.emplace_back(data(), nodeType())); }
    void vCell(const Words& w) {
        cell<AttributeEntity>(w[0], 1).m_value = (*this)[w[1]];
        cell<AttributeEntity>(w[0], 1).vDefined();
    }
    // A tie of another model names an instance, and tells it so.
    void vAnnounce(const Words& w) {
        EXPECT_TRUE((*this)[w[0]]->boValueSet<const Entity*>(AttributeName("From"), (*this)[w[1]], m_other.data()));
        (*this)[w[0]]->vAttributeInverseInit(m_other.data());
    }
    void vDelete(const Words& w) {
        for (Entity* pEntity : all(w, 0)) EXPECT_TRUE(data().boEntityDelete(pEntity));
    }
    void vAdd(const Words& w) {
        for (Entity* pEntity : all(w, 0)) data().entityAdd(pEntity);
    }
    void vDrop(const Words& w) {   // as one without a type, which is then given back
        (*this)[w[0]]->unsafeSetSchemaEntity(nullptr);
        data().deleteIncompleteEntities();
        (*this)[w[0]]->unsafeSetSchemaEntity(&nodeType());
    }
    void vFill(const Words& w) {   // what the first names, and nothing defines
        Entity* pHole = nullptr;
        EXPECT_TRUE((*this)[w[0]]->boValueGet(AttributeName("Next"), pHole));
        pHole->vSchemaEntitySet(data(), nodeType(), true);
        vLabel(w[1], pHole);
    }
    void vFresh(const Words& w) {
        (*this)[w[0]]->vSchemaEntitySet(data(), nodeType(), true);
        vLabel(w[1], (*this)[w[0]]);
    }
    void vWrite() { EXPECT_TRUE(dataOf(data(), {.eOrder = WriteOrder::Number}).boResult); }
    void vMove() {
        Data moved = std::move(data());
        data() = std::move(moved);
    }

    File m_other;
    File m_file;
    std::list<Entity> m_own;
    std::map<std::string, Entity*> m_byLabel;
};

using Named = const Entity*;
inline const AttributeName g_others("Others");
inline const AttributeName g_ties("Ties");

inline const std::map<std::string, void (*)(Model&, const Model::Words&)> Model::g_commands = {
    {"create", [](Model& m, const Words& w) { m.vCreate(w); }},
    {"unlisted", [](Model& m, const Words& w) { m.vUnlisted(w); }},
    {"own", [](Model& m, const Words& w) { m.vOwn(w); }},
    // an attribute of the first, with the others in its value
    {"next", [](Model& m, const Words& w) { m.vSet<Named>(w[0], "Next", m[w[1]]); }},
    {"to", [](Model& m, const Words& w) { m.vSet<Named>(w[0], "To", m[w[1]]); }},
    {"others", [](Model& m, const Words& w) { m.vListSet(w[0], "Others", m.all<Named>(w, 1)); }},
    {"others+", [](Model& m, const Words& w) { m.vPush<Named>(w[0], "Others", m[w[1]]); }},
    {"others++", [](Model& m, const Words& w) { EXPECT_TRUE(m[w[0]]->boValuePushBack(g_others, m[w[1]], m.data())); }},
    {"others-", [](Model& m, const Words& w) { EXPECT_TRUE(m[w[0]]->boValueRemove(g_others, m[w[1]], m.data())); }},
    {"row", [](Model& m, const Words& w) { m.vListSet<std::vector<Named>>(w[0], "Rows", {m.all<Named>(w, 1)}); }},
    {"row+", [](Model& m, const Words& w) { m.vPush(w[0], "Rows", m.all(w, 1)); }},
    {"any", [](Model& m, const Words& w) { m.vSet(w[0], "Any", IfcSelectBase(m[w[1]])); }},
    {"values", [](Model& m, const Words& w) { m.vListSet(w[0], "Values", m.all<IfcSelectBase>(w, 1)); }},
    {"values+", [](Model& m, const Words& w) { m.vPush(w[0], "Values", IfcSelectBase(m[w[1]])); }},
    // the first reference of the first, past its setter
    {"cell", [](Model& m, const Words& w) { m.vCell(w); }},
    {"undefine", [](Model& m, const Words& w) { EXPECT_TRUE(m[w[0]]->boUndefinedSet(AttributeName(w[1]), true)); }},
    {"derive", [](Model& m, const Words& w) { EXPECT_TRUE(m[w[0]]->boDerivedSet(AttributeName(w[1]), true)); }},
    {"derive-", [](Model& m, const Words& w) { EXPECT_TRUE(m[w[0]]->boDerivedSet(AttributeName(w[1]), false)); }},
    // the inverse list of the first
    {"tie+", [](Model& m, const Words& w) { m[w[0]]->vEntityInverseAdd(m.data(), m[w[1]], g_ties); }},
    {"tie", [](Model& m, const Words& w) { m[w[0]]->vEntityInverseSet(m.data(), m[w[1]], g_ties); }},
    {"ties", [](Model& m, const Words& w) { m[w[0]]->vEntitiesInverseSet(m.data(), m.all(w, 1), g_ties); }},
    {"tie-", [](Model& m, const Words& w) { EXPECT_TRUE(m[w[0]]->boEntityInverseRemove(m.data(), m[w[1]], g_ties)); }},
    {"untie", [](Model& m, const Words& w) { m[w[0]]->attributeInverseClear(); }},
    {"tell", [](Model& m, const Words& w) { m[w[0]]->vAttributeInverseInit(m.data()); }},
    // the same, told of the other model
    {"nextOther",
     [](Model& m,
        const Words& w) { EXPECT_TRUE(m[w[0]]->boValueSet<Named>(AttributeName("Next"), m[w[1]], m.m_other.data())); }},
    {"tieOther", [](Model& m, const Words& w) { m[w[0]]->vEntityInverseAdd(m.m_other.data(), m[w[1]], g_ties); }},
    {"announce", [](Model& m, const Words& w) { m.vAnnounce(w); }},
    // the list, and instances as a whole
    {"delete", [](Model& m, const Words& w) { m.vDelete(w); }},
    {"add", [](Model& m, const Words& w) { m.vAdd(w); }},
    {"remove", [](Model& m, const Words& w) { EXPECT_EQ(m.data().entitiesRemove(m.all(w, 0)).removed, m.all(w, 0)); }},
    {"drop", [](Model& m, const Words& w) { m.vDrop(w); }},
    {"fill", [](Model& m, const Words& w) { m.vFill(w); }},
    {"fresh", [](Model& m, const Words& w) { m.vFresh(w); }},
    {"takeValues", [](Model& m, const Words& w) { m[w[0]]->unsafeAttributesRaw() = m[w[1]]->unsafeAttributesRaw(); }},
    {"takeTies",
     [](Model& m, const Words& w) { m[w[0]]->unsafeAttributesInverseRaw() = m[w[1]]->unsafeAttributesInverseRaw(); }},
    // the model as a whole
    {"read", [](Model& m, const Words&) { EXPECT_TRUE(m.boRead("1j #2; 2k")); }},
    {"readPart", [](Model& m, const Words&) { EXPECT_FALSE(m.boRead("1j #2", true, true)); }},
    {"write", [](Model& m, const Words&) { m.vWrite(); }},
    {"number", [](Model& m, const Words& w) { EXPECT_EQ(std::to_string(m.data().iIdFromEntity(*m[w[0]])), w[1]); }},
    {"anew", [](Model& m, const Words&) { static_cast<void>(m.data().entityIdMap(true)); }},
    {"above", [](Model& m, const Words& w) { EXPECT_EQ(m.data().boNumbersAbove(), w.empty()); }},
    {"move", [](Model& m, const Words&) { m.vMove(); }},
};

}   // namespace oxa::ifc::io::edited
