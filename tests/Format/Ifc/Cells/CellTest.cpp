// SPDX-License-Identifier: Apache-2.0
// What all cells share: class and size by the schema, the default state, null and derived, the copied flags.
#include "Format/Ifc/IfcFileAttribute.h"

#include <array>
#include <cstring>

#include <gtest/gtest.h>

#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/StatementReader.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using def::schema::Attribute;
using def::schema::AttributeName;
using def::schema::DataKind;
using def::schema::ObjectBase;
using def::schema::ObjectName;

const Attribute& attributeOf(const char* sEntity, const char* sName) {
    const def::schema::Entity* pEntity = def::schema::pAsEntity(cellSchema().pObjectFromName(sEntity));
    const Attribute* pAttribute = pEntity ? pEntity->pAttributeFromName(AttributeName(sName), true) : nullptr;
    if (!pAttribute) throw std::runtime_error(sName);
    return *pAttribute;
}

struct KindRow {
    const char* sName;   // attribute of IfcEveryKind
    CellClass eClass;
    unsigned iSize;
    AttributeType eType;
    const char* sDefault;   // the cell made without a token
};
const KindRow g_kindRows[] = {
    {"Re", CellClass::Real, 16, AttributeType::Real, "Real 0"},
    {"Bo", CellClass::Boolean, 5, AttributeType::Boolean, "Boolean 0"},
    {"In", CellClass::Integer, 16, AttributeType::Integer, "Integer 0"},
    {"Nu", CellClass::Number, 16, AttributeType::Number, "Number 0"},
    {"St", CellClass::String, 16, AttributeType::String, "String null"},
    {"Gu", CellClass::Guid, 20, AttributeType::String, "Guid 0"},
    {"Lo", CellClass::Logical, 8, AttributeType::Logical, "Logical false"},
    {"Bi", CellClass::Binary, 24, AttributeType::Binary, "Binary null"},
    {"En", CellClass::Enumeration, 16, AttributeType::Enumeration, "Enumeration null"},
    {"Se", CellClass::Select, 32, AttributeType::Select, "Select 0:(null)"},
    {"Ar", CellClass::List, 16, AttributeType::Array, "List 0 null"},
    {"Li", CellClass::List, 16, AttributeType::List, "List 0 null"},
    {"Ses", CellClass::List, 16, AttributeType::Set, "List 0 null"},
    {"Th", CellClass::Entity, 16, AttributeType::Entity, "Entity null"},
};

TEST(AttributeBase, TheSchemaTellsClassSizeAndType) {
    for (const KindRow& row : g_kindRows) {
        SCOPED_TRACE(row.sName);
        const Attribute& attribute = attributeOf("IfcEveryKind", row.sName);
        const ObjectBase& object = *attribute.types.front();
        EXPECT_EQ(AttributeBase::cellClass(&object, attribute), row.eClass);
        EXPECT_EQ(AttributeBase::iAttributeSizeFromSchemaAttribute(object, attribute), row.iSize);
        EXPECT_EQ(AttributeBase::TypeFromSchemaAttribute(attribute), row.eType);
    }
}

// At an odd address, and not a byte larger than it has to be.
TEST(AttributeBase, ACellWithoutATokenHasAValueOfZero) {
    StatementReader reader;
    for (const KindRow& row : g_kindRows) {
        SCOPED_TRACE(row.sName);
        const Attribute& attribute = attributeOf("IfcEveryKind", row.sName);
        const auto pBytes = std::make_unique<char[]>(row.iSize + 1);
        auto* pCell = reinterpret_cast<AttributeBase*>(pBytes.get() + 1);
        AttributeType eType = AttributeType::Unknown;
        AttributeBase::vAttributeNew(*attribute.types.front(), attribute, pCell, nullptr, &eType);
        EXPECT_EQ(eType, row.eType);
        EXPECT_TRUE(pCell->boHasValue());
        EXPECT_EQ(reader.sCell(*pCell, attribute.types.front(), attribute), row.sDefault);
        AttributeBase::vAttributeNew(*attribute.types.front(), attribute, pCell, nullptr, nullptr);
        EXPECT_EQ(pBytes[0], 0);
    }
}

// Of a logical and an enumeration the header alone is written, of all others the value too.
TEST(AttributeBase, ACellWithoutATokenKeepsTheMemoryOfTwoClasses) {
    for (const KindRow& row : g_kindRows) {
        SCOPED_TRACE(row.sName);
        const Attribute& attribute = attributeOf("IfcEveryKind", row.sName);
        std::vector<unsigned char> bytes(row.iSize, 0x5A);
        AttributeBase::vAttributeNew(*attribute.types.front(), attribute, bytes.data(), nullptr, nullptr);
        const std::vector<unsigned char> header(bytes.begin(), bytes.begin() + 4);
        EXPECT_EQ(header, (std::vector<unsigned char>{0, 0, 1, row.eClass == CellClass::Guid}));
        const bool boKept = row.eClass == CellClass::Logical || row.eClass == CellClass::Enumeration;
        EXPECT_EQ(bytes.back(), boKept ? 0x5A : 0);
    }
}

TEST(AttributeBase, TheFlagsAreTheFirstFourBytes) {
    const auto bytes = [](const AttributeBase& cell) {
        std::array<int, 4> values{};
        for (std::size_t i = 0; i < 4; ++i) values[i] = reinterpret_cast<const char*>(&cell)[i];
        return values;
    };
    AttributeReal cell;
    EXPECT_EQ(bytes(cell), (std::array{0, 0, 1, 0}));
    cell.m_boDerived = true;
    EXPECT_EQ(bytes(cell), (std::array{1, 0, 1, 0}));
    cell.m_boUndefined = true;
    EXPECT_EQ(bytes(cell), (std::array{1, 1, 1, 0}));
    EXPECT_EQ(bytes(AttributeGuid{}), (std::array{0, 0, 1, 1}));
}

// Its own type is what makes a GUID; through a select the same type is a text.
TEST(AttributeBase, AGuidIsKnownByTheFirstTypeOfTheAttribute) {
    const Attribute& guid = attributeOf("IfcGuid", "Value");
    const Attribute& select = attributeOf("IfcSelect", "Value");
    const Attribute& list = attributeOf("IfcGuidList", "Value");
    const ObjectBase& type = *cellSchema().pTypeFromName(ObjectName("IFCGLOBALLYUNIQUEID"));
    EXPECT_EQ(AttributeBase::iAttributeSizeFromSchemaAttribute(type, guid), 20U);
    EXPECT_EQ(AttributeBase::iAttributeSizeFromSchemaAttribute(type, select), 16U);
    EXPECT_EQ(AttributeBase::cellClass(&type, select), CellClass::String);
    EXPECT_EQ(AttributeBase::cellClass(&type, list), CellClass::String);
    EXPECT_EQ(AttributeBase::TypeFromSchemaAttribute(guid), AttributeType::String);

    Attribute attribute;
    EXPECT_EQ(AttributeBase::cellClass(&type, attribute), CellClass::String) << "an attribute without a type";
    attribute.types = {nullptr};
    EXPECT_EQ(AttributeBase::cellClass(&type, attribute), CellClass::String) << "one with a null type";
    def::schema::Type other("IfcOther");
    other.uNameHash = type.uNameHash;
    attribute.types = {&other};
    EXPECT_EQ(AttributeBase::cellClass(&type, attribute), CellClass::String) << "another name with the same hash";
}

// What is thrown, as "text" in quotes for a const char*, else the text of the oxa::exception.
template <class Call>
std::string sThrown(Call&& call) {
    try {
        call();
    } catch (const char* text) {
        return '"' + std::string(text) + '"';
    } catch (const MissingType& e) {
        return e.what();
    }
    return "nothing";
}

TEST(AttributeBase, AKindOutsideTheTwelveIsAnInsideFault) {
    for (const int iKind : {12, -1}) {
        SCOPED_TRACE(iKind);
        const def::schema::DataTypeBase type(static_cast<DataKind>(iKind));
        Attribute attribute;
        attribute.types = {&type};
        char cell[32] = {};
        AttributeType eType = AttributeType::Unknown;
        EXPECT_EQ(AttributeBase::cellClass(&type, attribute), CellClass::Illegal);
        EXPECT_EQ(sThrown([&] { (void)AttributeBase::iAttributeSizeFromSchemaAttribute(type, attribute); }),
                  "\"Illegal value\"");
        EXPECT_EQ(sThrown([&] { (void)AttributeBase::TypeFromSchemaAttribute(attribute); }), "\"illegal type\"");
        EXPECT_EQ(sThrown([&] { AttributeBase::vAttributeNew(type, attribute, cell, nullptr, &eType); }),
                  "\"illegal type\"");
        EXPECT_EQ(eType, AttributeType::Unknown);
    }
}

TEST(AttributeBase, AnAttributeWithoutATypeIsAnInsideFault) {
    const def::schema::Type type("IfcUnresolved");
    Attribute attribute;
    EXPECT_EQ(AttributeBase::cellClass(nullptr, attribute), CellClass::Unresolved);
    EXPECT_EQ(sThrown([&] { (void)AttributeBase::TypeFromSchemaAttribute(attribute); }), "returning nullptr");
    attribute.types = {nullptr};
    EXPECT_EQ(sThrown([&] { (void)AttributeBase::TypeFromSchemaAttribute(attribute); }), "returning nullptr");
    attribute.types = {&type};
    EXPECT_EQ(sThrown([&] { (void)AttributeBase::iAttributeSizeFromSchemaAttribute(type, attribute); }),
              "returning nullptr");
    char cell[32] = {};
    AttributeType eType = AttributeType::Unknown;
    EXPECT_EQ(sThrown([&] { AttributeBase::vAttributeNew(type, attribute, cell, nullptr, &eType); }),
              "returning nullptr");
    EXPECT_EQ(eType, AttributeType::Unknown);
}

// What a parser asks of its token may lie behind the statement, which ends without a 0 byte.
// It has no bytes either: what stands in its place is the next cell's, or the inverse block.
TEST(AttributeBase, AnAttributeWithoutATypeLeavesTheMemoryAlone) {
    const std::array<unsigned char, 8> before{9, 9, 9, 9, 9, 9, 9, 9};
    std::array<unsigned char, 8> bytes = before;
    AttributeBase::vAttributeUndefined(CellClass::Unresolved, bytes.data());
    EXPECT_EQ(bytes, before);
    AttributeBase::vAttributeUndefined(CellClass::Logical, bytes.data());
    EXPECT_EQ(bytes, (std::array<unsigned char, 8>{0, 1, 1, 0, 9, 9, 9, 9})) << "the header, and no more";
}

TEST(AttributeBase, BehindTheStatementStandZeros) {
    StatementReader reader;
    StepReadInfoData info(".T", 1, reader.common);
    const Attribute& attribute = attributeOf("IfcBoolean", "Value");
    AttributeBase::StepReadInfoAttribute token{&info, &reader.data, nullptr, &attribute, nullptr, 0, 3, 0};
    EXPECT_EQ(token.cAt(1), 'T');
    EXPECT_EQ(token.cAt(2), '\0');
    EXPECT_EQ(token.cAt(3), '\0');
    const AttributeBoolean cell(token);
    EXPECT_EQ(cell.m_value, 1);
    ASSERT_EQ(reader.errors.records().size(), 1U) << "the second point is missing";
}

const Report g_nullReport = {"Error_InvalidNullAttribute", "Value", Errors::Error, Errors::Null};
const ReadRow g_nullRows[] = {
    {"null where it may be", "#1=IFCTHING($);", "$ String null"},
    {"derived", "#1=IFCTHING(*);", "* String null"},
    {"null of a mandatory real", "#1=IFCREAL($);", "$ Real 0", {g_nullReport}},
    {"of a number", "#1=IFCNUMBER($);", "$ Number 0", {g_nullReport}},
    {"of an integer", "#1=IFCINTEGER($);", "$ Integer 0", {g_nullReport}},
    {"of a boolean", "#1=IFCBOOLEAN($);", "$ Boolean 0", {g_nullReport}},
    {"of a logical", "#1=IFCLOGICAL($);", "$ Logical unknown", {g_nullReport}},
    {"of a text", "#1=IFCSTRING($);", "$ String null", {g_nullReport}},
    {"of a GUID", "#1=IFCGUID($);", "$ Guid 0", {g_nullReport}},
    {"of a binary", "#1=IFCBINARY($);", "$ Binary null", {g_nullReport}},
    {"of an enumeration", "#1=IFCENUMERATION($);", "$ Enumeration null", {g_nullReport}},
    {"of a reference", "#1=IFCREFERENCE($);", "$ Entity null", {g_nullReport}},
    {"of a select", "#1=IFCSELECT($);", "$ Select 0:(null)", {g_nullReport}},
    {"of a list", "#1=IFCREALLIST($);", "$ List 0 null", {g_nullReport}},
    {"derived where it is mandatory", "#1=IFCREAL(*);", "* Real 0"},
    {"a derived logical", "#1=IFCLOGICAL(*);", "* Logical unknown"},
    {"two characters are a value", "#1=IFCSTRING($$);", "String ''", {{"Error_ExpectedValidStringValueFor"}}},
    {"two stars, too", "#1=IFCINTEGER(**);", "Integer 0", {{"Error_ExpectedValidIntegerValueFor"}}},
    {"every kind undefined", "#1=IFCEVERYKIND($,$,$,$,$,$,$,$,$,$,$,$,$,$);",
     "$ Real 0 | $ Boolean 0 | $ Integer 0 | $ Number 0 | $ String null | $ Guid 0 | $ Logical unknown | "
     "$ Binary null | $ Enumeration null | $ Select 0:(null) | $ List 0 null | $ List 0 null | $ List 0 null "
     "| "
     "$ Entity null"},
};
TEST(AttributeBase, OneCharacterIsNullOrDerived) { vExpectReads(g_nullRows); }

struct Probe : AttributeBase {
    Probe(bool boDerived, bool boUndefined, bool boPooled, bool boGuid) {
        m_boDerived = boDerived;
        m_boUndefined = boUndefined;
        m_boPooled = boPooled;
        m_boGuid = boGuid;
    }
    using AttributeBase::copyBaseTo;
};

TEST(AttributeBase, CopiesTheFlagsButNotWhoOwnsTheMemory) {
    struct Row {
        const char* sRule;
        Probe source;
        bool boValue;
    };
    const Row rows[] = {
        {"a value", {false, false, true, false}, true},   {"of heap memory", {false, false, false, false}, true},
        {"a GUID", {false, false, true, true}, true},     {"derived", {true, false, true, false}, false},
        {"undefined", {false, true, false, true}, false}, {"both", {true, true, true, false}, false},
    };
    for (const Row& row : rows) {
        for (const bool boPooled : {false, true}) {
            SCOPED_TRACE(row.sRule);
            Probe target(true, true, boPooled, !row.source.m_boGuid);
            EXPECT_EQ(row.source.copyBaseTo(target), row.boValue);
            EXPECT_EQ(target.m_boDerived, row.source.m_boDerived);
            EXPECT_EQ(target.m_boUndefined, row.source.m_boUndefined);
            EXPECT_EQ(target.m_boGuid, row.source.m_boGuid);
            EXPECT_EQ(target.m_boPooled, boPooled);
        }
    }
}

}   // namespace
}   // namespace oxa::ifc
