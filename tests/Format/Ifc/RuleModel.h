// SPDX-License-Identifier: Apache-2.0
// RuleModel: a small schema, files of it, and what came of reading them as text.
//
// For      the tests that write down the rules of reading, one row a rule, for the caller's thread and for workers.
// Reports  "Error Value 6 Error_UnknownEntityType | #1=IFCNONE();": severity, category, line, key with its argument in
//          parentheses where its text has a place for one, source text.
// Model    the statements of all instances, in ascending order of their bytes, as they would be written.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "ModelText.h"
#include "SmallModel.h"
#include "StatementReader.h"
#include "platform/Localization.h"

namespace oxa::ifc {

using Texts = std::vector<std::string>;

inline const def::SchemaPset& ruleSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;
        TYPE IfcLabel = STRING; END_TYPE;
        ENTITY IfcRoot ABSTRACT SUPERTYPE OF (ONEOF (IfcProject, IfcWall));
            GlobalId : IfcGloballyUniqueId; Name : OPTIONAL IfcLabel; END_ENTITY;
        ENTITY IfcProject SUBTYPE OF (IfcRoot); END_ENTITY;
        ENTITY IfcWall SUBTYPE OF (IfcRoot); Part : OPTIONAL IfcItem; END_ENTITY;
        ENTITY IfcItem; Text : OPTIONAL IfcLabel; Count : OPTIONAL INTEGER; Next : OPTIONAL IfcItem;
            Others : OPTIONAL LIST OF IfcItem;
            INVERSE Before : SET OF IfcItem FOR Next; Members : SET OF IfcItem FOR Others; END_ENTITY;
        )");
    return *pSchema;
}

// What stands in front of the DATA section, whose first byte is on line 6, and behind it.
inline const std::string g_sHead = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('R'));\nENDSEC;\nDATA;\n";
inline const std::string g_sTail = "ENDSEC;\nEND-ISO-10303-21;\n";
inline std::string sRuleFile(std::string_view data) { return g_sHead + std::string(data) + g_sTail; }

inline std::string sReport(const Errors::ErrorRecord& record) {
    static constexpr const char* g_categories[] = {"Syntax", "Header", "Value",      "Null",  "Reference",
                                                   "Model",  "6",      "Identifier", "Schema"};
    const std::string sKey = record.key.value_or("?");
    std::string sArgument;
    if (localize("Ifc", sKey).find("%1") != std::string::npos)
        sArgument.append(1, '(').append(record.argument()).append(1, ')');
    return std::string(record.severity == Errors::Fatal ? "Fatal " : "Error ") + g_categories[record.category] + ' ' +
           std::to_string(record.lineNumber) + ' ' + sKey + sArgument + " | " + record.lineString.value_or("(no text)");
}

inline Texts reports(const Errors& errors) {
    Texts texts;
    for (const Errors::ErrorRecord& record : errors.records()) texts.push_back(sReport(record));
    return texts;
}

inline Texts statements(const Data& data) {
    Texts texts;
    for (const Entity* pEntity : data.entities()) texts.push_back(pEntity->sWriteLine(data));
    std::ranges::sort(texts);
    return texts;
}

}   // namespace oxa::ifc
