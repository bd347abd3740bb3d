// SPDX-License-Identifier: Apache-2.0
// TYPE declarations: base types, other types, enumerations, aggregates.
#include <gmock/gmock.h>

#include "ExpressTestSupport.h"

namespace {

using namespace oxa::test;

TEST(ExpressType, DeclaresADataTypeOfItsOwnKind) {
    struct Row {
        const char* sUnderlying;
        DataKind kind;
        const char* sText;   // of the data type, as displayed
    };
    const Row rows[] = {
        {"REAL", DataKind::Real, "REAL"},
        {"REAL(7)", DataKind::Real, "REAL(7)"},
        {"BOOLEAN", DataKind::Boolean, "BOOLEAN"},
        {"INTEGER", DataKind::Integer, "INTEGER"},
        {"NUMBER", DataKind::Number, "NUMBER"},
        {"STRING", DataKind::String, "STRING"},
        {"STRING(255)", DataKind::String, "STRING(255)"},
        {"STRING ( 22 ) FIXED", DataKind::String, "STRING(22) FIXED"},
        {"LOGICAL", DataKind::Logical, "LOGICAL"},
        {"BINARY", DataKind::Binary, "BINARY"},
        {"BINARY(32)", DataKind::Binary, "BINARY(32)"},
        {"string", DataKind::String, "STRING"},
        {"ARRAY [1:2] OF REAL", DataKind::Array, "ARRAY [1:2] OF REAL"},
        {"ARRAY [1:2] OF OPTIONAL UNIQUE REAL", DataKind::Array, "ARRAY [1:2] OF OPTIONAL UNIQUE REAL"},
        {"LIST OF UNIQUE INTEGER", DataKind::List, "LIST OF UNIQUE INTEGER"},
        {"LIST [ 3 : 4 ] OF INTEGER", DataKind::List, "LIST [3:4] OF INTEGER"},
        {"SET [1:?] OF LIST [0:2*(N+1)] OF BINARY", DataKind::Set, "SET [1:?] OF LIST [0:2*(N+1)] OF BINARY"},
        {"BAG [A DIV 2:B[1]] OF IfcOther", DataKind::Set, "BAG [A DIV 2:B[1]] OF IfcOther"},
        {"ENUMERATION OF (A)", DataKind::Enumeration, "ENUMERATION OF (A)"},
        {"EXTENSIBLE ENUMERATION OF (A, b)", DataKind::Enumeration, "ENUMERATION OF (A, B)"},
        {"SELECT (IfcOther)", DataKind::Select, "SELECT (IfcOther)"},
        {"EXTENSIBLE GENERIC_ENTITY SELECT (ifcother)", DataKind::Select, "SELECT (IfcOther)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sUnderlying);
        const Loaded loaded(std::string("TYPE IfcOne = ") + row.sUnderlying +
                            "; END_TYPE; TYPE IfcOther = REAL; END_TYPE;");
        const Type& type = loaded.type("IfcOne");
        ASSERT_NE(type.pDataType, nullptr);
        EXPECT_EQ(type.pDataType->kind, row.kind);
        EXPECT_EQ(type.pDataType->sName, "IfcOne") << "a data type takes the name of its declaration";
        EXPECT_EQ(type.pDeclared, nullptr);
        EXPECT_EQ(sTypeText(type.pDataType), row.sText);
    }
}

TEST(ExpressType, FollowsAChainOfTypesToItsEnd) {
    const Loaded loaded("TYPE IfcPositive = IfcLength; WHERE WR1 : SELF > 0.; END_TYPE;"
                        "TYPE IfcLength = IfcBase; END_TYPE;"
                        "TYPE IfcBase = REAL; END_TYPE;");
    const Type& base = loaded.type("IfcBase");
    EXPECT_EQ(loaded.type("IfcLength").pDataType, base.pDataType);
    EXPECT_EQ(loaded.type("IfcPositive").pDataType, base.pDataType);
    EXPECT_EQ(loaded.type("IfcPositive").pDeclared, &loaded.type("IfcLength"));
    EXPECT_EQ(loaded.type("IfcLength").pDeclared, &base);
}

TEST(ExpressType, EnumeratorsAreUpperCase) {
    const Loaded loaded("TYPE IfcE = ENUMERATION OF (Zeta ,alpha\n,NOTDEFINED); END_TYPE;");
    const auto* pEnum = dynamic_cast<const DataTypeEnum*>(loaded.type("IfcE").pDataType);
    ASSERT_NE(pEnum, nullptr);
    EXPECT_THAT(pEnum->declared, testing::ElementsAre("ZETA", "ALPHA", "NOTDEFINED"));
    EXPECT_THAT(pEnum->items, testing::ElementsAre(testing::Pointee(std::string("ALPHA")),
                                                   testing::Pointee(std::string("NOTDEFINED")),
                                                   testing::Pointee(std::string("ZETA"))));
}

TEST(ExpressType, AnExtensionHoldsTheItemsOfItsBaseFirst) {
    const Loaded loaded("TYPE C = ENUMERATION BASED_ON B WITH (D); END_TYPE;"
                        "TYPE B = EXTENSIBLE ENUMERATION BASED_ON A WITH (X, Y); END_TYPE;"
                        "TYPE A = EXTENSIBLE ENUMERATION; END_TYPE;"
                        "TYPE S = SELECT BASED_ON R WITH (B); END_TYPE;"
                        "TYPE R = EXTENSIBLE SELECT (A); END_TYPE;"
                        "TYPE Q = SELECT BASED_ON R; END_TYPE;");
    EXPECT_EQ(sTypeText(loaded.type("C").pDataType), "ENUMERATION OF (X, Y, D)");
    EXPECT_EQ(sTypeText(loaded.type("S").pDataType), "SELECT (A, B)");
    EXPECT_EQ(sTypeText(loaded.type("Q").pDataType), "SELECT (A)");
    EXPECT_TRUE(dynamic_cast<const DataTypeEnum*>(loaded.type("A").pDataType)->items.empty());
}

TEST(ExpressType, AnAggregateGivesItsElement) {
    const Loaded loaded("ENTITY E; END_ENTITY; TYPE T = REAL; END_TYPE;"
                        "TYPE L = LIST OF SET OF T; END_TYPE; TYPE M = SET OF E; END_TYPE;");
    const ObjectBase* pInner = loaded.type("L").pDataType->pElementGet();
    ASSERT_NE(pDataTypeOf(pInner), nullptr);
    EXPECT_EQ(pInner->eClassTag, ClassTag::DataType);
    EXPECT_EQ(pDataTypeOf(pInner)->kind, DataKind::Set);
    EXPECT_EQ(pDataTypeOf(pInner)->pElementGet(), &loaded.type("T"));
    EXPECT_EQ(loaded.type("M").pDataType->pElementGet(), &loaded.entity("E"));
    EXPECT_EQ(loaded.type("T").pDataType->pElementGet(), nullptr);
    const Loaded simple("TYPE R = LIST OF REAL; END_TYPE;");
    EXPECT_EQ(simple.type("R").pDataType->pElementGet()->sName, "") << "the name is the aggregate's";
}

// A width belongs to the attribute that has it, whatever base types the others have.
TEST(ExpressType, AnAttributeKeepsItsWidth) {
    const Loaded loaded("ENTITY E; A : STRING; B : STRING(22) FIXED; C : STRING(22); D : STRING; L : LIST OF STRING(5);"
                        " F : BINARY(8); G : BINARY; H : INTEGER; I : INTEGER; END_ENTITY;");
    const struct {
        const char* sAttribute;
        const char* sType;
    } rows[] = {
        {"A", "STRING"},    {"B", "STRING(22) FIXED"}, {"C", "STRING(22)"}, {"D", "STRING"}, {"L", "LIST OF STRING(5)"},
        {"F", "BINARY(8)"}, {"G", "BINARY"},           {"H", "INTEGER"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sAttribute);
        EXPECT_EQ(sTypeText(loaded.attribute("E", row.sAttribute).types[0]), row.sType);
    }
    EXPECT_EQ(loaded.attribute("E", "A").types[0], loaded.attribute("E", "D").types[0]) << "one without is shared";
    EXPECT_EQ(loaded.attribute("E", "H").types[0], loaded.attribute("E", "I").types[0]);
    EXPECT_NE(loaded.attribute("E", "A").types[0], loaded.attribute("E", "G").types[0]);
}

TEST(ExpressType, ObjectsAreTypesAndEntitiesOnly) {
    const Loaded loaded("TYPE T = LIST OF REAL; END_TYPE; ENTITY E; A : LIST OF T; END_ENTITY;");
    ASSERT_EQ(loaded.schema().objects.size(), 2U);
    EXPECT_EQ(loaded.schema().sName, "TEST");
}

}   // namespace
