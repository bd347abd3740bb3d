// SPDX-License-Identifier: Apache-2.0
// XmlModel: a schema with every form that ifcXML has, its mapping records, and models of it to and from documents.
//
// For      the tests of the ifcXML export and import.
// Modes    a MappedSchema is made anew for each row: "IfcThing.Next=1" gives an attribute its mode, "-" in place of the
//          number leaves it out of documents, "IfcProject.Links=2" is an inverse attribute's.
// Texts    documents are shown without declaration, root tag and white space between tags: vBody gives the elements.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/BaseTypes.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/ReadResult.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "provider/SchemaLoader.h"
#include "schema/XmlSchema.h"

namespace oxa::ifc {

class MappedSchema {
public:
    explicit MappedSchema(const std::vector<std::string>& modes = {}, const char* sName = "IFC4") {
        std::vector<SchemaMessage> messages;
        m_pSchema = SchemaLoader::pSchemaFromExpress(
            std::string("SCHEMA ") + sName + ";\n" + g_sBaseTypes + g_sText + "\nEND_SCHEMA;\n", messages);
        if (!m_pSchema) throw std::runtime_error(messages.front().sText);
        for (const std::string& sMode : modes) vModeSet(sMode);
    }
    void vDefaultsSet(std::uint32_t iModeValue, std::uint32_t iModeEntity) {
        m_defaults = {iModeValue, iModeEntity};
        m_pSchema->pXmlDefaults = &m_defaults;
    }
    [[nodiscard]] def::SchemaPset& schema() const { return *m_pSchema; }
    [[nodiscard]] SchemaFromName function() const {
        return [this](const std::string& sName) { return sName == m_pSchema->sName ? m_pSchema.get() : nullptr; };
    }

private:
    // The records hang on the schema after it was built, as a provider hangs them on it before.
    void vModeSet(const std::string& sMode) {
        const std::size_t iDot = sMode.find('.');
        const std::size_t iEqual = sMode.find('=');
        const std::string sAttribute = sMode.substr(iDot + 1, iEqual - iDot - 1);
        auto* pEntity = const_cast<def::schema::Entity*>(
            def::schema::pAsEntity(m_pSchema->pObjectFromName(std::string_view(sMode).substr(0, iDot))));
        ASSERT_NE(pEntity, nullptr) << sMode;
        const bool boExported = sMode[iEqual + 1] != '-';
        const std::uint32_t mode = boExported ? static_cast<std::uint32_t>(std::stoul(sMode.substr(iEqual + 1))) : 2;
        for (def::schema::Attribute& attribute : pEntity->ownAttributes)
            if (attribute.sName == sAttribute) {
                attribute.pXml = &m_records.emplace_back(def::xmlschema::Attribute{mode, false, boExported});
                return;
            }
        for (def::schema::AttributeInverse& inverse : pEntity->ownInverseAttributes)
            if (inverse.sName == sAttribute) {
                inverse.pXmlInverse = &m_inverseModes.emplace_back(mode);
                return;
            }
        FAIL() << sMode;
    }

    static constexpr const char* g_sText = R"(
        TYPE IfcColour = ENUMERATION OF (RED, GREEN); END_TYPE;
        TYPE IfcReals = LIST OF REAL; END_TYPE;
        TYPE IfcInner = SELECT (IfcLabel, IfcPoint); END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcLengthMeasure, IfcNumeric, IfcCount, IfcFlag, IfcAnswer, IfcBlob,
            IfcColour, IfcReals, IfcGloballyUniqueId, IfcInner, IfcThing);
        END_TYPE;
        TYPE IfcThingSelect = SELECT (IfcThing, IfcPoint); END_TYPE;

        ENTITY IfcRoot ABSTRACT SUPERTYPE; GlobalId : IfcGloballyUniqueId; Name : OPTIONAL IfcLabel; END_ENTITY;
        ENTITY IfcProject SUBTYPE OF (IfcRoot); Holds : OPTIONAL IfcEverything; Chain : OPTIONAL IfcThing;
            INVERSE Links : SET OF IfcRelLink FOR Relating; END_ENTITY;
        ENTITY IfcElement SUBTYPE OF (IfcRoot); Place : OPTIONAL IfcPoint;
            INVERSE LinkedBy : SET OF IfcRelLink FOR Related; TaggedBy : SET OF IfcRelTag FOR Tagged; END_ENTITY;
        ENTITY IfcWall SUBTYPE OF (IfcElement); Height : OPTIONAL IfcLengthMeasure; END_ENTITY;
        ENTITY IfcRelLink SUBTYPE OF (IfcRoot); Relating : OPTIONAL IfcProject; Related : OPTIONAL SET OF IfcElement;
            END_ENTITY;
        ENTITY IfcRelTag; Tagged : OPTIONAL IfcTagged; Label : OPTIONAL IfcLabel; END_ENTITY;
        TYPE IfcTagged = SELECT (IfcElement, IfcThing); END_TYPE;
        ENTITY IfcPoint; Coordinates : OPTIONAL LIST OF IfcLengthMeasure; END_ENTITY;
        ENTITY IfcThing; Label : OPTIONAL IfcLabel; Next : OPTIONAL IfcThing; END_ENTITY;
        ENTITY IfcSpecial SUBTYPE OF (IfcThing); END_ENTITY;
        ENTITY IfcTwice SUBTYPE OF (IfcThing); Label : OPTIONAL IfcLengthMeasure; END_ENTITY;
        ENTITY Ifelse; END_ENTITY;
        ENTITY IfcEverything;
            Bo : OPTIONAL IfcFlag; Re : OPTIONAL IfcLengthMeasure; Pl : OPTIONAL REAL; Nu : OPTIONAL IfcNumeric;
            In : OPTIONAL IfcCount; Lo : OPTIONAL IfcAnswer; St : OPTIONAL IfcLabel; Gu : OPTIONAL IfcGloballyUniqueId;
            Bi : OPTIONAL IfcBlob; En : OPTIONAL IfcColour; Se : OPTIONAL IfcValue; Th : OPTIONAL IfcThing;
            Pt : OPTIONAL IfcPoint;
            Lengths : OPTIONAL LIST OF IfcLengthMeasure; Reals : OPTIONAL LIST OF REAL;
            Numbers : OPTIONAL SET OF NUMBER; Integers : OPTIONAL ARRAY [0:9] OF INTEGER;
            Texts : OPTIONAL LIST OF IfcLabel; Blobs : OPTIONAL LIST OF BINARY; Selects : OPTIONAL LIST OF IfcValue;
            Things : OPTIONAL SET OF IfcThing; Points : OPTIONAL SET OF IfcPoint;
            ThingSelects : OPTIONAL LIST OF IfcThingSelect; RealRows : OPTIONAL LIST OF LIST OF REAL;
            ThingRows : OPTIONAL LIST OF LIST OF IfcThing;
        END_ENTITY;
        )";

    std::unique_ptr<def::SchemaPset> m_pSchema;
    std::deque<def::xmlschema::Attribute> m_records;
    std::deque<std::uint32_t> m_inverseModes;
    def::xmlschema::Defaults m_defaults;
};

// The statements of a model of the schema, read.
inline std::string sFileOf(const std::string& sStatements, const char* sSchema = "IFC4") {
    return std::string("ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('") + sSchema + "'));\nENDSEC;\nDATA;\n" + sStatements +
           "\nENDSEC;\nEND-ISO-10303-21;\n";
}

struct StepModel : ReadResult {
    StepModel(const MappedSchema& schema, const std::string& sStatements)
        : ReadResult(sFileOf(sStatements), schema.function()) {
        EXPECT_TRUE(boRead);
    }
};

// What stands between the root's tags, without white space between elements; the whole for an empty root.
inline std::string sBody(const std::string& sDocument) {
    std::string sBody;
    for (std::size_t i = 0; i < sDocument.size(); ++i) {
        if (sDocument[i] == '\n') {
            i = std::min(sDocument.find_first_not_of(' ', i + 1), sDocument.size()) - 1;
            continue;
        }
        sBody += sDocument[i];
    }
    const std::size_t iRoot = sBody.find("<ifcXML");
    const std::size_t iStart = sBody.find('>', iRoot) + 1;
    const std::size_t iEnd = sBody.rfind("</ifcXML>");
    return iEnd == std::string::npos ? sBody : sBody.substr(iStart, iEnd - iStart);
}

inline std::string sSaved(const xml::ExportCommon& xmlExport) {
    std::ostringstream out;
    EXPECT_TRUE(xmlExport.boSave(out));
    return out.str();
}

// Header and data of a file as a document.
inline std::string sExported(const File& file) {
    xml::Export xmlExport;
    EXPECT_TRUE(xmlExport.boExportHeader(file.header()));
    EXPECT_TRUE(xmlExport.boExportData(file.data(), {}));
    return sSaved(xmlExport);
}

// A document around elements.
inline std::string sDocumentOf(const std::string& sElements) {
    return "<?xml version=\"1.0\"?><ifcXML xmlns=\"http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2\" "
           "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">" +
           sElements + "</ifcXML>";
}

// A document, imported.
struct ImportedModel {
    File file;
    bool boLoaded = false;
    bool boHeader = false;
    bool boData = false;

    ImportedModel(const MappedSchema& schema, const std::string& sDocument) {
        std::istringstream in(sDocument);
        xml::Import xmlImport;
        boLoaded = xmlImport.boLoad(in);
        boHeader = xmlImport.boImportHeader(file, schema.function());
        boData = xmlImport.boImportData(file.data());
    }
    [[nodiscard]] Entity* pEntity(std::size_t iId) const { return file.data().pEntityFromId(iId); }
    // The statements in order of their numbers, as a STEP file has them, joined by a blank.
    [[nodiscard]] std::string sStatements() const {
        std::multimap<std::size_t, std::string> byId;
        for (const Entity* pEntity : file.data().entities())
            byId.emplace(file.data().iIdFromEntity(*pEntity), pEntity->sWriteLine(file.data()));
        std::string sAll;
        for (const auto& [iId, sLine] : byId) sAll.append(sAll.empty() ? "" : " ").append(sLine);
        return sAll;
    }
};

// One attribute's value as the text of a STEP file.
inline std::string sValueText(const Entity& entity, std::string_view name, const Data& data) {
    const int iIndex = entity.indexFromName(def::schema::AttributeName(name));
    if (iIndex < 0) return "no such attribute";
    const auto [pAttribute, pCell] = entity.pAttributeFromIndex(static_cast<unsigned>(iIndex));
    return pCell->sWriteLine(*pAttribute, data, false);
}

}   // namespace oxa::ifc
