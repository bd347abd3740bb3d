// SPDX-License-Identifier: Apache-2.0
// SmallModel: a schema with everything that a walk over a model meets, and files of it.
//
// For      the tests of whole reads and writes.
#pragma once

#include <sstream>
#include <string>
#include <string_view>

#include "ModelText.h"
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
    return IfcGuid::toIfcGuid(Guid{0x10203040U,
                                   static_cast<std::uint16_t>(iNumber >> 16),
                                   static_cast<std::uint16_t>(iNumber),
                                   {1, 2, 3, 4, 5, 6, 7, 8}});
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

}   // namespace oxa::ifc
