// SPDX-License-Identifier: Apache-2.0
// ENTITY declarations: heads, explicit and redeclared attributes, chains of type objects, ordinals.
#include "ExpressTestSupport.h"

namespace {

using namespace oxa::test;

TEST(ExpressEntity, ReadsEveryFormOfHead) {
    struct Row {
        const char* sHead;
        bool boAbstract;
        const char* sParent;
    };
    const Row rows[] = {
        {"", false, ""},
        {"ABSTRACT", true, ""},
        {"ABSTRACT SUPERTYPE", true, ""},
        {"ABSTRACT SUPERTYPE OF (ONEOF (X, Y))", true, ""},
        {"SUPERTYPE OF (ONEOF (X, Y) ANDOR (Z))", false, ""},
        {"SUBTYPE OF (Base)", false, "Base"},
        {"SUBTYPE OF (BASE)", false, "Base"},
        {"ABSTRACT SUPERTYPE OF (ONEOF\n\t(X\n\t,Y)) SUBTYPE OF (Base)", true, "Base"},
        {"abstract supertype subtype of (base)", true, "Base"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sHead);
        const Loaded loaded(std::string("ENTITY Base; END_ENTITY; ENTITY E ") + row.sHead + "; END_ENTITY;");
        const Entity& entity = loaded.entity("E");
        EXPECT_EQ(entity.boAbstract, row.boAbstract);
        EXPECT_EQ(entity.pParent ? entity.pParent->sName : "", row.sParent);
    }
}

TEST(ExpressEntity, AttributesAreTheStepParametersInOrder) {
    struct Row {
        const char* name;
        const char* sBody;
        const char* sAttributes;   // all of E, which derives from Base
    };
    const Row rows[] = {
        {"none", "", "P Q"},
        {"one", "A : REAL;", "P Q A"},
        {"several names before one colon", "B, A : REAL; C : REAL;", "P Q B A C"},
        {"redeclared with a narrower type", "SELF\\Base.P : Narrow; A : REAL;", "P Q A"},
        {"redeclared and renamed", "SELF\\Base.P RENAMED R : Narrow;", "P Q"},
        {"redeclared among others", "A, SELF\\Base.P, B : REAL;", "P Q A B"},
        {"derived", "A : REAL; DERIVE D : REAL := 2 * A; F : LIST [1:?] OF UNIQUE REAL := [A];", "P Q A"},
        {"redeclared as derived: written as an asterisk", "DERIVE SELF\\Base.Q : REAL := 1.;", "P Q"},
        {"before UNIQUE and WHERE", "A : REAL; UNIQUE UR1 : A, P; UR2 : SELF\\Base.Q; WHERE W : A > 0; A < 1;",
         "P Q A"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Loaded loaded(std::string("TYPE Narrow = REAL; END_TYPE; ENTITY Base; P : REAL; Q : REAL;"
                                        "END_ENTITY; ENTITY E SUBTYPE OF (Base); ") +
                            row.sBody + " END_ENTITY;");
        EXPECT_EQ(sNames(loaded.entity("E").allAttributes()), row.sAttributes);
    }
}

TEST(ExpressEntity, AnAttributeKnowsOwnerNameHashAndOptionality) {
    const Loaded loaded("ENTITY E; GlobalId : STRING; A, B : OPTIONAL REAL; END_ENTITY;");
    const auto& attributes = loaded.entity("E").ownAttributes;
    ASSERT_EQ(attributes.size(), 3U);
    for (const Attribute& attribute : attributes) {
        EXPECT_EQ(attribute.pOwner, &loaded.entity("E"));
        EXPECT_EQ(attribute.uNameHash, NameHash(attribute.sName));
        EXPECT_EQ(attribute.pXml, nullptr);
    }
    EXPECT_EQ(attributes[0].sName, "GlobalId");
    EXPECT_FALSE(attributes[0].boOptional);
    EXPECT_TRUE(attributes[1].boOptional);
    EXPECT_TRUE(attributes[2].boOptional);
}

// The chain as "text of [0] | text of [1] | ...".
std::string sChain(const Attribute& attribute) {
    std::string sText;
    for (const ObjectBase* pObject : attribute.types) sText += (sText.empty() ? "" : " | ") + sTypeText(pObject);
    return sText;
}

TEST(ExpressEntity, TheChainOfTypesHasOneElementForEachLevel) {
    struct Row {
        const char* sType;
        const char* sChain;
        const char* sTypeName;
    };
    const Row rows[] = {
        {"REAL", "REAL", "REAL"},
        {"STRING(22) FIXED", "STRING(22) FIXED", "STRING"},
        {"BINARY", "BINARY", "BINARY"},
        {"label", "Label", "Label"},
        {"E", "E", "E"},
        {"Choice", "Choice", "Choice"},
        {"LIST [1:?] OF Label", "LIST [1:?] OF Label | Label", "Label"},
        {"SET OF E", "SET OF E | E", "E"},
        {"LIST OF LIST OF REAL", "LIST OF LIST OF REAL | LIST OF REAL | REAL", "REAL"},
        {"Angle", "Angle | INTEGER", "Angle"},
        {"AngleAgain", "AngleAgain | INTEGER", "AngleAgain"},
        {"Matrix", "Matrix | LIST OF Label | Label", "Matrix"},
        {"SET OF Angle", "SET OF Angle | Angle | INTEGER", "Angle"},
        {"LIST OF Choice", "LIST OF Choice | Choice", "Choice"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sType);
        const Loaded loaded(std::string("TYPE Label = STRING; END_TYPE; TYPE Angle = LIST [3:4] OF INTEGER; END_TYPE;"
                                        "TYPE AngleAgain = Angle; END_TYPE;"
                                        "TYPE Matrix = ARRAY [1:2] OF LIST OF Label; END_TYPE;"
                                        "TYPE Choice = SELECT (Label, Angle); END_TYPE;"
                                        "ENTITY E; A : ") +
                            row.sType + "; END_ENTITY;");
        const Attribute& attribute = loaded.attribute("E", "A");
        EXPECT_EQ(sChain(attribute), row.sChain);
        EXPECT_EQ(attribute.sTypeName, row.sTypeName);
    }
}

TEST(ExpressEntity, OrdinalsAreDepthFirstAsDeclared) {
    struct Row {
        const char* sEntity;
        unsigned iOrdinal;
        unsigned iLast;
        const char* sSubtypes;
    };
    const Row rows[] = {
        {"R2", 1, 1, ""},    {"R1", 2, 7, "B A"}, {"B", 3, 3, ""},  {"A", 4, 7, "A2 A1"},
        {"A2", 5, 6, "A21"}, {"A21", 6, 6, ""},   {"A1", 7, 7, ""}, {"R0", 8, 8, ""},
    };
    const Loaded loaded(
        "ENTITY A21 SUBTYPE OF (A2); END_ENTITY; ENTITY R2; END_ENTITY; ENTITY B SUBTYPE OF (R1); END_ENTITY;"
        "ENTITY A SUBTYPE OF (R1); END_ENTITY; ENTITY R1; END_ENTITY; ENTITY A2 SUBTYPE OF (A); END_ENTITY;"
        "ENTITY A1 SUBTYPE OF (A); END_ENTITY; ENTITY R0; END_ENTITY;");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sEntity);
        const Entity& entity = loaded.entity(row.sEntity);
        EXPECT_EQ(entity.iTypeOrdinal, row.iOrdinal);
        EXPECT_EQ(entity.iTypeOrdinalLast, row.iLast);
        EXPECT_EQ(sNames(entity.subtypes), row.sSubtypes);
    }
}

// What an entity says of the attributes of its supertypes.
TEST(ExpressEntity, RedeclaresAndAsksForUniqueValues) {
    const Loaded loaded("ENTITY A; X : REAL; Y : REAL; END_ENTITY;\n"
                        "ENTITY B SUBTYPE OF (A); SELF\\A.X : INTEGER; Z : REAL;\n"
                        " DERIVE SELF\\A.Y : REAL := Z; W : REAL := 1.0;\n"
                        " UNIQUE UR1 : X, Z; UR2 : W; END_ENTITY;");
    const Entity& entity = loaded.entity("B");
    ASSERT_EQ(entity.redeclared.size(), 2U);
    EXPECT_EQ(entity.redeclared[0].pAttribute, &loaded.attribute("A", "X"));
    EXPECT_FALSE(entity.redeclared[0].boDerived);
    EXPECT_EQ(sTypeText(entity.redeclared[0].pType), "INTEGER");
    EXPECT_EQ(entity.redeclared[1].pAttribute, &loaded.attribute("A", "Y"));
    EXPECT_TRUE(entity.redeclared[1].boDerived);
    EXPECT_EQ(entity.redeclared[1].pType, nullptr);
    EXPECT_EQ(entity.allAttributes().size(), 3U) << "X, Y and Z; a redeclaration is no parameter of its own";

    ASSERT_EQ(entity.uniqueRules.size(), 2U);
    EXPECT_EQ(entity.uniqueRules[0].sLabel, "UR1");
    const std::vector<const Attribute*> both{&loaded.attribute("A", "X"), &loaded.attribute("B", "Z")};
    EXPECT_EQ(entity.uniqueRules[0].attributes, both);
    EXPECT_EQ(entity.uniqueRules[1].names, std::vector<std::string>{"W"});
    EXPECT_TRUE(entity.uniqueRules[1].attributes.empty()) << "W is derived, and stands in no statement";
    EXPECT_TRUE(loaded.entity("A").uniqueRules.empty());
}

}   // namespace
