// SPDX-License-Identifier: Apache-2.0
// CellSetter: one instance with a cell of every class, to set, to walk and to look at.
//
// For      the tests of setters, walkers and typed access.
// Cells    as the text of StatementReader. The first cell has 5 bytes, and all others stand packed behind it.
// Asserts  AssertTrail collects "function: text" of what is raised while it lives, on its thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "StatementReader.h"
#include "platform/Assert.h"

namespace oxa::ifc {

inline const def::SchemaPset& everythingSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(g_sBaseTypes + R"(
        TYPE IfcColour = ENUMERATION OF (RED, GREEN, A); END_TYPE;
        TYPE IfcReals = LIST OF REAL; END_TYPE;
        TYPE IfcCounts = LIST OF INTEGER; END_TYPE;
        TYPE IfcRealArray = ARRAY [0:2] OF REAL; END_TYPE;
        TYPE IfcIntegerArray = ARRAY [0:2] OF INTEGER; END_TYPE;
        TYPE IfcRealSet = SET OF REAL; END_TYPE;
        TYPE IfcThings = SET OF IfcThing; END_TYPE;
        TYPE IfcInner = SELECT (IfcCount, IfcThing); END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcLengthMeasure, IfcNumeric, IfcCount, IfcFlag, IfcAnswer, IfcBlob,
            IfcColour, IfcReals, IfcCounts, IfcRealArray, IfcIntegerArray, IfcRealSet, IfcThings, IfcInner, IfcThing);
        END_TYPE;
        TYPE IfcThingSelect = SELECT (IfcThing, IfcEverything); END_TYPE;

        ENTITY IfcThing; Name : OPTIONAL IfcLabel; END_ENTITY;
        ENTITY IfcEverything;
            First : OPTIONAL BOOLEAN; Re : OPTIONAL REAL; Nu : OPTIONAL NUMBER; In : OPTIONAL INTEGER;
            Lo : OPTIONAL LOGICAL; St : OPTIONAL IfcLabel; Gu : OPTIONAL IfcGloballyUniqueId;
            Bi : OPTIONAL BINARY; En : OPTIONAL IfcColour; Se : OPTIONAL IfcValue; Th : OPTIONAL IfcThing;
            Reals : OPTIONAL LIST OF REAL; Numbers : OPTIONAL SET OF NUMBER;
            Integers : OPTIONAL ARRAY [0:9] OF INTEGER; Texts : OPTIONAL LIST OF IfcLabel;
            Blobs : OPTIONAL LIST OF BINARY; Selects : OPTIONAL LIST OF IfcValue;
            Things : OPTIONAL SET OF IfcThing; ThingSelects : OPTIONAL LIST OF IfcThingSelect;
            RealRows : OPTIONAL LIST OF LIST OF REAL; IntegerRows : OPTIONAL LIST OF LIST OF INTEGER;
            ThingRows : OPTIONAL LIST OF LIST OF IfcThing; Cube : OPTIONAL LIST OF LIST OF LIST OF REAL;
            SetRows : OPTIONAL LIST OF SET OF IfcThing; Flags : OPTIONAL LIST OF BOOLEAN;
            NamedReals : OPTIONAL IfcReals;
        END_ENTITY;
        )");
    return *pSchema;
}

class AssertTrail {
public:
    [[nodiscard]] std::vector<std::string> raised() {
        std::vector<std::string> raised;
        raised.swap(m_raised);
        return raised;
    }

private:
    struct Enabled {
        bool m_boBefore = Assert::isEnabled();
        Enabled() { Assert::setEnabled(true); }
        ~Enabled() { Assert::setEnabled(m_boBefore); }
        Enabled(const Enabled&) = delete;
        Enabled& operator=(const Enabled&) = delete;
    };

    std::vector<std::string> m_raised;
    Enabled m_enabled;
    AssertFunctionOne::Scope m_scope =
        Assert::getRegisteredForCurrentThread().registerHandler([this](const AssertInfo& info) {
            m_raised.push_back(std::string(info.function) + ": " + std::string(info.text));
            EXPECT_GT(info.iLine, 0);
        });
};

using Trail = std::vector<std::string>;

class CellSetter : public StatementReader {
public:
    CellSetter() : StatementReader(everythingSchema()) {
        entity = data.pEntityCreate(def::schema::ObjectName("IFCEVERYTHING"));
    }

    [[nodiscard]] const def::schema::Attribute& attribute(std::string_view name) const {
        return *everythingSchema()
                    .pEntityFromName(def::schema::ObjectName("IFCEVERYTHING"))
                    ->pAttributeFromName(def::schema::AttributeName(name), true);
    }
    [[nodiscard]] const def::schema::ObjectBase* pTypeOf(std::string_view name) const {
        return attribute(name).types.front();
    }
    [[nodiscard]] static const def::schema::Type* pType(std::string_view name) {
        return everythingSchema().pTypeFromName(def::schema::ObjectName(name));
    }

    template <class Cell>
    [[nodiscard]] Cell& cell(std::string_view name) const {
        const int iIndex = entity->indexFromName(def::schema::AttributeName(name));
        return static_cast<Cell&>(*entity->pAttributeFromIndex(static_cast<unsigned>(iIndex)).second);
    }
    [[nodiscard]] std::string sShow(std::string_view name) {
        const def::schema::Attribute& shown = attribute(name);
        return sCell(cell<AttributeBase>(name), shown.types.front(), shown);
    }
    // Fills one attribute from the text of a file, and leaves the others undefined.
    void vReadOne(std::string_view name, std::string_view token) {
        std::string statement = '#' + std::to_string(m_iNextId++) + "=IFCEVERYTHING(";
        const auto& all = entity->schemaEntity().allAttributes();
        for (const def::schema::Attribute* pAttribute : all)
            statement.append(pAttribute == all.front() ? "" : ",").append(pAttribute->sName == name ? token : "$");
        entity = pRead(statement + ");");
        EXPECT_EQ(errors.records().size(), 0U) << token;
    }

    Entity* entity;

private:
    unsigned m_iNextId = 100;
};

}   // namespace oxa::ifc
