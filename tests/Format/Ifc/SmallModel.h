// SmallModel: a schema with everything that a walk over a model meets, files of it, and what a model says.
//
// For      the tests that hold one read or write against another.
#pragma once

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "StatementReader.h"

namespace oxa::ifc {

inline const def::SchemaPset& smallSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcLengthMeasure = REAL; END_TYPE;
        TYPE IfcColour = ENUMERATION OF (RED, GREEN, BLUE); END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcLengthMeasure, IfcPoint); END_TYPE;
        ENTITY IfcRoot ABSTRACT SUPERTYPE OF (ONEOF (IfcProject, IfcElement, IfcRelLink));
            GlobalId : IfcGloballyUniqueId; Name : OPTIONAL IfcLabel; END_ENTITY;
        ENTITY IfcProject SUBTYPE OF (IfcRoot); Units : OPTIONAL SET OF IfcPoint;
            INVERSE Links : SET OF IfcRelLink FOR Relating; END_ENTITY;
        ENTITY IfcElement SUBTYPE OF (IfcRoot); Place : OPTIONAL IfcPoint; Colour : OPTIONAL IfcColour;
            INVERSE LinkedBy : SET OF IfcRelLink FOR Related; END_ENTITY;
        ENTITY IfcRelLink SUBTYPE OF (IfcRoot); Relating : IfcProject; Related : SET OF IfcElement; END_ENTITY;
        ENTITY IfcPoint; Coordinates : LIST OF IfcLengthMeasure; END_ENTITY;
        ENTITY IfcProperty; Name : IfcLabel; Value : OPTIONAL IfcValue; Values : LIST OF IfcValue;
            Next : OPTIONAL IfcProperty; END_ENTITY;
        )");
    return *pSchema;
}

inline SchemaFromName schemaIs(const def::SchemaPset& schema) {
    return [&schema](const std::string&) { return const_cast<def::SchemaPset*>(&schema); };
}

inline std::string sFileOf(std::string_view statements) {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
           "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('CELLS'));\nENDSEC;\nDATA;\n" +
           std::string(statements) + "ENDSEC;\nEND-ISO-10303-21;\n";
}

// A GlobalId for each number.
inline std::string sGuidOf(std::size_t iNumber) {
    return IfcGuid::toIfcGuid(Guid{0x10203040U, static_cast<std::uint16_t>(iNumber >> 16),
                                   static_cast<std::uint16_t>(iNumber), {1, 2, 3, 4, 5, 6, 7, 8}});
}

// Groups of four statements: point, property, element, and a link of the element to project #1.
inline std::string sSmallFile(std::size_t iGroups) {
    std::ostringstream out;
    out << "#1=IFCPROJECT('" << sGuidOf(0) << "','\\X\\DCbersicht',(#2));\n";
    for (std::size_t i = 0; i < iGroups; ++i) {
        const std::size_t iId = 2 + 4 * i;
        out << '#' << iId << "=IFCPOINT((" << i << ".,-0.25,1.E-" << 10 + i % 80 << "));\n"
            << '#' << iId + 1 << "=IFCPROPERTY('p;" << i << "',IFCLENGTHMEASURE(" << i << ".5),(IFCLABEL('it''s'),#"
            << iId << ")," << (i + 1 < iGroups ? '#' + std::to_string(iId + 5) : "$") << ");\n"
            << '#' << iId + 2 << "=IFCELEMENT('" << sGuidOf(2 * i + 1) << "',$,#" << iId << ",.GREEN.);\n"
            << '#' << iId + 3 << "=IFCRELLINK('" << sGuidOf(2 * i + 2) << "',$,#1,(#" << iId + 2 << "));\n";
    }
    return sFileOf(out.str());
}

// What one instance says: its statement, and who refers to it.
struct InstanceText {
    std::string sStatement;
    std::multiset<std::pair<std::string, std::size_t>> referrers;   // inverse attribute, number
    bool operator==(const InstanceText&) const = default;
};
inline void PrintTo(const InstanceText& text, std::ostream* pOut) {
    *pOut << text.sStatement;
    for (const auto& [sName, iId] : text.referrers) *pOut << ' ' << sName << " #" << iId;
}

// A model as text, by instance number. An instance that stands twice in the list is there twice.
using ModelText = std::multimap<std::size_t, InstanceText>;

inline ModelText modelText(const Data& data) {
    ModelText text;
    for (const Entity* pEntity : data.entities()) {
        InstanceText& instance = text.emplace(data.iIdFromEntity(*pEntity), InstanceText{})->second;
        pEntity->boForEachInverseAttribute([&](const def::schema::AttributeInverse& attribute,
                                               const EntityList& referrers) {
            for (const Entity* pReferrer : referrers)
                instance.referrers.emplace(attribute.sName, data.iIdFromEntity(*pReferrer));
            return false;
        });
    }
    // Ascending, so that numbers which are dealt only now, to missing instances, do not depend on the list's order.
    std::map<std::size_t, const Entity*> byNumber;
    for (const Entity* pEntity : data.entities()) byNumber.emplace(data.iIdFromEntity(*pEntity), pEntity);
    for (auto& [iId, instance] : text) instance.sStatement = byNumber.at(iId)->sWriteLine(data);
    return text;
}

// Records as sortable text, without the instance.
inline std::multiset<std::string> recordTexts(const Errors& errors) {
    std::multiset<std::string> texts;
    for (const Errors::ErrorRecord& record : errors.records())
        texts.insert(std::to_string(record.severity) + '|' + std::to_string(record.category) + '|' +
                     record.description + '|' + record.lineString.value_or("(no text)") + '|' +
                     std::to_string(record.lineNumber));
    return texts;
}

// A file, read.
struct ReadFileModel {
    File file;
    io::ReadError errors;
    bool boRead = false;

    ReadFileModel(const std::string& text, bool boSingleThreaded, const SchemaFromName& schemaFromName,
                  bool boKeepIds = true) {
        std::istringstream in(text);
        boRead = file.boRead(in, schemaFromName, errors, boKeepIds, {}, boSingleThreaded);
    }
};

}   // namespace oxa::ifc
