// SPDX-License-Identifier: Apache-2.0
// StatementReader: from one statement of a STEP file to the text of its cells and of what was reported.
//
// For      the tests of the cell parsers and of the entity, whose rows are a statement and two texts.
// Cells    one text a cell, joined by " | ", the flags in front: "Real 1.5", "$ Real 0", "* Guid 0", "~" where the
//          value does not lie in the pool, "?" where the GUID flag is not that of the class. A select shows tag and
//          type, "Select 5:IFCLABEL(String 'a')", a list its item type, "List 1[1.5, 2]"; "null" is a null pointer.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "BaseTypes.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "platform/Localization.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {

// A graph for one test program, from its declarations.
inline std::unique_ptr<def::SchemaPset> pSchemaOf(std::string_view declarations) {
    std::vector<SchemaMessage> messages;
    auto pSchema =
        SchemaLoader::pSchemaFromExpress("SCHEMA CELLS;\n" + std::string(declarations) + "\nEND_SCHEMA;\n", messages);
    if (!pSchema) throw std::runtime_error(messages.empty() ? "no schema" : messages.front().sText);
    return pSchema;
}

// Every kind of type, and an entity for each whose one mandatory attribute is called Value.
inline const def::SchemaPset& cellSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(g_sBaseTypes + R"(
        TYPE IfcColour = ENUMERATION OF (RED, GREEN, A); END_TYPE;
        TYPE IfcShape = ENUMERATION OF (ROUND, SQUARE); END_TYPE;
        TYPE IfcReals = LIST OF REAL; END_TYPE;
        TYPE IfcCounts = ARRAY [0:2] OF INTEGER; END_TYPE;
        TYPE IfcThings = SET OF IfcThing; END_TYPE;
        TYPE IfcGrid = LIST OF LIST OF REAL; END_TYPE;
        TYPE IfcFlags = LIST OF BOOLEAN; END_TYPE;
        TYPE IfcValues = LIST OF IfcValue; END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcLengthMeasure, IfcNumeric, IfcCount, IfcFlag, IfcAnswer, IfcBlob,
            IfcColour, IfcReals, IfcCounts, IfcThings, IfcGrid, IfcFlags, IfcValues, IfcGloballyUniqueId, IfcThing);
        END_TYPE;
        TYPE IfcThingSelect = SELECT (IfcThing, IfcReal); END_TYPE;

        ENTITY IfcThing; Name : OPTIONAL IfcLabel; END_ENTITY;
        ENTITY IfcReal; Value : REAL; END_ENTITY;
        ENTITY IfcNumber; Value : NUMBER; END_ENTITY;
        ENTITY IfcInteger; Value : INTEGER; END_ENTITY;
        ENTITY IfcBoolean; Value : BOOLEAN; END_ENTITY;
        ENTITY IfcLogical; Value : LOGICAL; END_ENTITY;
        ENTITY IfcString; Value : STRING; END_ENTITY;
        ENTITY IfcGuid; Value : IfcGloballyUniqueId; END_ENTITY;
        ENTITY IfcBinary; Value : BINARY; END_ENTITY;
        ENTITY IfcEnumeration; Value : IfcColour; END_ENTITY;
        ENTITY IfcReference; Value : IfcThing; END_ENTITY;
        ENTITY IfcSelect; Value : IfcValue; END_ENTITY;

        ENTITY IfcRealList; Value : LIST OF REAL; END_ENTITY;
        ENTITY IfcNumberSet; Value : SET OF NUMBER; END_ENTITY;
        ENTITY IfcIntegerArray; Value : ARRAY [0:?] OF INTEGER; END_ENTITY;
        ENTITY IfcLabelList; Value : LIST OF IfcLabel; END_ENTITY;
        ENTITY IfcGuidList; Value : LIST OF IfcGloballyUniqueId; END_ENTITY;
        ENTITY IfcBinaryList; Value : LIST OF BINARY; END_ENTITY;
        ENTITY IfcSelectList; Value : LIST OF IfcValue; END_ENTITY;
        ENTITY IfcNamedList; Value : IfcReals; END_ENTITY;
        ENTITY IfcTable; Value : LIST OF LIST OF REAL; END_ENTITY;
        ENTITY IfcNamedTable; Value : LIST OF IfcReals; END_ENTITY;
        ENTITY IfcCube; Value : LIST OF LIST OF LIST OF INTEGER; END_ENTITY;
        ENTITY IfcSetList; Value : LIST OF SET OF IfcThing; END_ENTITY;
        ENTITY IfcReferenceSet; Value : SET OF IfcThing; END_ENTITY;
        ENTITY IfcThingSelectList; Value : LIST OF IfcThingSelect; END_ENTITY;
        ENTITY IfcBooleanList; Value : LIST OF BOOLEAN; END_ENTITY;
        ENTITY IfcLogicalList; Value : LIST OF LOGICAL; END_ENTITY;
        ENTITY IfcEnumerationList; Value : LIST OF IfcColour; END_ENTITY;
        ENTITY IfcArrayList; Value : LIST OF ARRAY [0:2] OF REAL; END_ENTITY;

        ENTITY IfcFlagPair; Value : BOOLEAN; Second : OPTIONAL REAL; END_ENTITY;
        ENTITY IfcSelectPair; Value : IfcValue; Second : OPTIONAL IfcValue; END_ENTITY;
        ENTITY IfcEveryKind;
            Re : OPTIONAL REAL; Bo : OPTIONAL BOOLEAN; In : OPTIONAL INTEGER; Nu : OPTIONAL NUMBER;
            St : OPTIONAL STRING; Gu : OPTIONAL IfcGloballyUniqueId; Lo : OPTIONAL LOGICAL; Bi : OPTIONAL BINARY;
            En : OPTIONAL IfcColour; Se : OPTIONAL IfcValue; Ar : OPTIONAL ARRAY [0:2] OF REAL;
            Li : OPTIONAL LIST OF REAL; Ses : OPTIONAL SET OF REAL; Th : OPTIONAL IfcThing;
        END_ENTITY;
        ENTITY IfcNothing; END_ENTITY;
        )");
    return *pSchema;
}

// A faulty schema: the second of the three attributes of IfcFaulty, which are called First, Second and Third and
// are reals, has these types instead.
inline std::unique_ptr<def::SchemaPset> pSchemaWithSecondOf(std::vector<const def::schema::ObjectBase*> types) {
    auto pSchema = pSchemaOf("ENTITY IfcFaulty; First : REAL; Second : REAL; Third : REAL; END_ENTITY;");
    const auto* pType = pSchema->pEntityFromName(def::schema::ObjectName("IFCFAULTY"));
    const_cast<def::schema::Entity*>(pType)->ownAttributes[1].types = std::move(types);
    return pSchema;
}

// One expected record, without what all records of a statement share.
struct Report {
    const char* sKey;
    std::string argument = "Value";
    Errors::Severity eSeverity = Errors::Error;
    Errors::Category eCategory = Errors::Value;
};

class StatementReader {
public:
    static constexpr std::uint32_t g_iLine = 7;

    // boArena: memory comes from a thread's share of the pool, as on a worker.
    explicit StatementReader(const def::SchemaPset& schema = cellSchema(), bool boArena = false) : m_boArena(boArena) {
        data.vSchemaSet(&schema);
    }

    // The entity of the statement; null when it made none. The text is exactly as large as it has to be, so that a
    // sanitizer sees what is read behind it.
    Entity* pRead(std::string_view statement) {
        std::string line(statement);
        line.shrink_to_fit();
        StepReadInfoData info(line, g_iLine, common, m_boArena ? &m_thread : nullptr);
        std::vector<Entity*> result;
        const bool boMade = data.boReadLine(info, result);
        EXPECT_EQ(line, statement) << "the statement comes back as it was";
        if (result.size() != 1 || boMade != (result[0] != nullptr)) throw std::runtime_error("not one result");
        return result[0];
    }

    // The place of an instance number, whether or not anything stands there.
    Entity* pEntity(std::uint32_t iId) { return &common.slotGet(data, iId).entity; }
    bool boReferenced(std::uint32_t iId) { return common.slotGet(data, iId).boReferenced(); }

    std::string sEntity(const Entity* pEntity) {
        if (!pEntity) return "null";
        for (const auto& [iChunk, pChunk] : common.chunks()) {
            const std::size_t iBytes =
                reinterpret_cast<std::uintptr_t>(pEntity) - reinterpret_cast<std::uintptr_t>(pChunk->pFirst());
            if (iBytes < ReadInfoCommon::g_iChunkBytes)
                return '#' + std::to_string(iChunk * ReadInfoCommon::g_iSlotsPerChunk + iBytes / sizeof(EntitySlot));
        }
        return "#?";
    }

    std::string sCells(const Entity& entity) {
        std::string sText;
        entity.boForEachAttribute([&](const def::schema::Attribute& attribute, const AttributeBase& cell) {
            if (!sText.empty()) sText += " | ";
            sText += sCell(cell, attribute.types.empty() ? nullptr : attribute.types.front(), attribute);
            return false;
        });
        return sText;
    }

    // The cell, seen as an attribute of type "pObject".
    std::string sCell(const AttributeBase& cell, const def::schema::ObjectBase* pObject,
                      const def::schema::Attribute& attribute);

    // Expects these records, each with the statement, its line and the entity.
    void vExpectReports(const Entity* pEntity, std::string_view statement, const std::vector<Report>& expected) {
        std::vector<std::string> texts;
        for (const Report& report : expected) {
            std::string sDescription = localize("Ifc", report.sKey);
            if (const std::size_t i = sDescription.find("%1"); i != std::string::npos)
                sDescription.replace(i, 2, report.argument);
            texts.push_back(
                sRecord({pEntity, report.eSeverity, report.eCategory, sDescription, std::string(statement), g_iLine}));
        }
        std::vector<std::string> found;
        for (const Errors::ErrorRecord& record : errors.records()) found.push_back(sRecord(record));
        EXPECT_EQ(found, texts);
        const auto boIsFatal = [](const Report& report) { return report.eSeverity == Errors::Fatal; };
        EXPECT_EQ(errors.boFatal(), std::any_of(expected.begin(), expected.end(), boIsFatal));
    }

    // What was told so far, without the statements.
    [[nodiscard]] std::vector<std::string> reports() const {
        std::vector<std::string> texts;
        for (const Errors::ErrorRecord& record : errors.records())
            texts.push_back(record.description + ", category " + std::to_string(record.category));
        return texts;
    }
    // The numbers that statements have named or defined, which a completion would miss if nothing defined them. Once.
    [[nodiscard]] std::vector<std::size_t> named() {
        details::NumberSet kept;
        m_thread.vNamedInto(kept);
        std::vector<std::size_t> numbers;
        for (const auto& [iChunk, pChunk] : common.chunks())
            for (std::size_t i = 0; i < ReadInfoCommon::g_iSlotsPerChunk; ++i) {
                const details::NumberSet::Chunk* pBits = kept.pChunk(iChunk);
                if (pChunk->pFirst()[i].boReferenced() || (pBits && (*pBits)[i / 64] >> i % 64 & 1U))
                    numbers.push_back(iChunk * ReadInfoCommon::g_iSlotsPerChunk + i);
            }
        return numbers;
    }

    Data data;
    io::ReadError errors;
    StepReadInfoDataCommon common{errors};

private:
    std::string sRecord(const Errors::ErrorRecord& record) {
        return (record.severity == Errors::Fatal ? "Fatal, category " : "Error, category ") +
               std::to_string(record.category) + ": " + record.description + " In " + sEntity(record.entity) +
               ", line " + std::to_string(record.lineNumber) + ": " + record.lineString.value_or("(no text)");
    }

    template <class Cell>
    static const Cell& as(const AttributeBase& cell) {
        return static_cast<const Cell&>(cell);
    }
    static std::string sReal(double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.17g", value);
        return text;
    }
    static std::string sQuoted(const char* pText) { return pText ? '\'' + std::string(pText) + '\'' : "null"; }
    static std::string sBinary(const AttributeBinary& cell) {
        if (!cell.m_value.load()) return cell.m_iCount == 0 ? "null" : "null with a count";
        std::string sText = "[";
        for (std::uint64_t i = 0; i < cell.m_iCount; ++i) {
            char text[4];
            std::snprintf(text, sizeof text, i ? " %02X" : "%02X", cell.m_value.load()[i]);
            sText += text;
        }
        return sText + ']';
    }
    static std::string sLogical(LogicalValue value) {
        if (value == LogicalValue::Unknown) return "unknown";
        return value == LogicalValue::True ? "true" : value == LogicalValue::False ? "false" : "neither";
    }
    template <class List, class Text>
    static std::string sItems(const List* pList, Text&& sItem) {
        if (!pList) return " null";
        std::string sText;
        for (const auto& item : *pList) sText += (sText.empty() ? "" : ", ") + sItem(item);
        return '[' + sText + ']';
    }
    std::string sSelect(const AttributeSelect& cell, const def::schema::Attribute& attribute);
    std::string sList(const AttributeList& cell, const def::schema::Attribute& attribute);

    bool m_boArena;
    StepReadThread m_thread{data.pool()};
};

inline std::string StatementReader::sCell(const AttributeBase& cell, const def::schema::ObjectBase* pObject,
                                          const def::schema::Attribute& attribute) {
    const CellClass eClass = AttributeBase::cellClass(pObject, attribute);
    std::string sFlags = std::string(cell.m_boUndefined ? "$" : "") + (cell.m_boDerived ? "*" : "") +
                         (cell.m_boPooled ? "" : "~") + (cell.m_boGuid == (eClass == CellClass::Guid) ? "" : "?");
    if (!sFlags.empty()) sFlags += ' ';
    switch (eClass) {
    case CellClass::Real: return sFlags + "Real " + sReal(as<AttributeReal>(cell).m_value);
    case CellClass::Number: return sFlags + "Number " + sReal(as<AttributeReal>(cell).m_value);
    case CellClass::Integer: return sFlags + "Integer " + std::to_string(as<AttributeInteger>(cell).m_value.load());
    case CellClass::Boolean: return sFlags + "Boolean " + std::to_string(as<AttributeBoolean>(cell).m_value);
    case CellClass::Logical: return sFlags + "Logical " + sLogical(as<AttributeLogical>(cell).m_value);
    case CellClass::String: return sFlags + "String " + sQuoted(as<AttributeString>(cell).m_value);
    case CellClass::Guid: {
        const Guid guid = as<AttributeGuid>(cell).m_value;
        return sFlags + "Guid " + (guid.boIsNull() ? "0" : IfcGuid::toIfcGuid(guid));
    }
    case CellClass::Binary: return sFlags + "Binary " + sBinary(as<AttributeBinary>(cell));
    case CellClass::Enumeration: return sFlags + "Enumeration " + sQuoted(as<AttributeEnumeration>(cell).m_value);
    case CellClass::Select: return sFlags + sSelect(as<AttributeSelect>(cell), attribute);
    case CellClass::List: return sFlags + sList(as<AttributeList>(cell), attribute);
    case CellClass::Entity: return sFlags + "Entity " + sEntity(as<AttributeEntity>(cell).m_value);
    default: return "no cell";
    }
}

inline std::string StatementReader::sSelect(const AttributeSelect& cell, const def::schema::Attribute& attribute) {
    const def::schema::Type* pType = cell.m_pType;
    const AttributeBase* pValue = cell.m_pValue;
    const auto iTag = static_cast<int>(cell.m_eType.load());
    std::string sText = "Select " + std::to_string(iTag) + ':' + (pType ? pType->sNameUpper : "");
    if (!pValue) return sText + "(null)";
    if (cell.m_eType == AttributeType::Entity)
        return sText + '(' + (pValue->m_boPooled ? "" : "~") +
               sEntity(static_cast<const AttributeEntity*>(pValue)->m_value) + ')';
    return sText + '(' + sCell(*pValue, pType, attribute) + ')';
}

inline std::string StatementReader::sList(const AttributeList& cell, const def::schema::Attribute& attribute) {
    const AttributeType eItems = cell.m_eItemType;
    const std::string sText = "List " + std::to_string(static_cast<int>(eItems));
    switch (eItems) {
    case AttributeType::Real: return sText + sItems(cell.pArray<double>(), sReal);
    case AttributeType::Integer:
        return sText + sItems(cell.pArray<long long>(), [](long long i) { return std::to_string(i); });
    case AttributeType::String: return sText + sItems(cell.pArray<char*>(), sQuoted);
    case AttributeType::Binary: {
        static const def::schema::DataTypeBase g_binary(def::schema::DataKind::Binary);
        return sText + sItems(cell.pArray<AttributeBinary>(),
                              [&](const AttributeBinary& item) { return sCell(item, &g_binary, attribute); });
    }
    case AttributeType::Select: {
        static const def::schema::DataTypeBase g_select(def::schema::DataKind::Select);
        return sText + sItems(cell.pArray<AttributeSelect>(),
                              [&](const AttributeSelect& item) { return sCell(item, &g_select, attribute); });
    }
    case AttributeType::List: {
        static const def::schema::DataTypeBase g_list(def::schema::DataKind::List);
        return sText + sItems(cell.pArray<AttributeList>(),
                              [&](const AttributeList& item) { return sCell(item, &g_list, attribute); });
    }
    case AttributeType::Entity:
        return sText + sItems(cell.pEntities(), [this](const Entity* pEntity) { return sEntity(pEntity); });
    default: return sText + (cell.m_pItems.load() ? " not null" : " null");
    }
}

// One row of a table: a statement, the cells it gives, and the records that come with them.
struct ReadRow {
    const char* sRule;
    std::string_view statement;
    std::string_view cells;
    std::vector<Report> reports = {};
};

inline void vExpectRead(const ReadRow& row) {
    for (const bool boArena : {false, true}) {
        SCOPED_TRACE(std::string(row.sRule) + ": " + std::string(row.statement) + (boArena ? ", arena" : ""));
        StatementReader reader(cellSchema(), boArena);
        const Entity* pEntity = reader.pRead(row.statement);
        ASSERT_NE(pEntity, nullptr);
        EXPECT_EQ(reader.sCells(*pEntity), row.cells);
        reader.vExpectReports(pEntity, row.statement, row.reports);
    }
}

template <std::size_t N>
void vExpectReads(const ReadRow (&rows)[N]) {
    for (const ReadRow& row : rows) vExpectRead(row);
}

}   // namespace oxa::ifc
