// SPDX-License-Identifier: Apache-2.0
// INVERSE attributes and the relations that follow from them.
#include "ExpressTestSupport.h"

namespace {

using namespace oxa::test;

const char* const g_sRelations =
    "ENTITY Root; Id : STRING; END_ENTITY;\n"
    "ENTITY Object SUBTYPE OF (Root);\n"
    " INVERSE\n"
    "  Uses : SET [0:?] OF Rel FOR related;\n"
    "  Owner : RelSub FOR Relating;\n"
    "  Bagged : BAG OF RelSub FOR Rel.Related;\n"
    " UNIQUE UR1 : Uses; WHERE W1 : SIZEOF(Uses) > 0;\n"
    "END_ENTITY;\n"
    "ENTITY Wall SUBTYPE OF (Object); INVERSE SELF\\Object.Uses : SET OF RelSub FOR Related; END_ENTITY;\n"
    "ENTITY Rel SUBTYPE OF (Root); Relating : Object; Related : SET OF Object; END_ENTITY;\n"
    "ENTITY RelSub SUBTYPE OF (Rel); More : REAL; END_ENTITY;\n"
    "ENTITY Point; X : REAL; END_ENTITY;\n";

TEST(ExpressInverse, KnowsTheForwardAttribute) {
    struct Row {
        const char* sName;
        const char* sForEntity;
        const char* sForAttribute;   // in the spelling of its declaration
        bool boAggregate;
        const char* sBounds;
    };
    const Row rows[] = {
        {"Uses", "Rel", "Related", true, "[0:?]"},
        {"Owner", "RelSub", "Relating", false, ""},
        {"Bagged", "RelSub", "Related", true, ""},
    };
    const Loaded loaded(g_sRelations);
    const Entity& object = loaded.entity("Object");
    ASSERT_EQ(object.ownInverseAttributes.size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(rows[i].sName);
        const AttributeInverse& inverse = object.ownInverseAttributes[i];
        EXPECT_EQ(inverse.pOwner, &object);
        EXPECT_EQ(inverse.sName, rows[i].sName);
        EXPECT_EQ(inverse.uNameHash, NameHash(rows[i].sName));
        EXPECT_EQ(inverse.pForEntity, &loaded.entity(rows[i].sForEntity));
        EXPECT_EQ(inverse.sForAttribute, rows[i].sForAttribute);
        EXPECT_EQ(inverse.pForAttribute, &loaded.attribute("Rel", rows[i].sForAttribute));
        EXPECT_EQ(inverse.boAggregate, rows[i].boAggregate);
        EXPECT_EQ(inverse.sBounds, rows[i].sBounds);
        EXPECT_EQ(inverse.pXmlInverse, nullptr);
    }
}

TEST(ExpressInverse, AForwardAttributeListsItsInverses) {
    const Loaded loaded(g_sRelations);
    EXPECT_EQ(sNames(loaded.attribute("Rel", "Relating").inverses), "Owner");
    EXPECT_EQ(sNames(loaded.attribute("Rel", "Related").inverses), "Uses Bagged");
    EXPECT_EQ(sNames(loaded.attribute("RelSub", "More").inverses), "");
    EXPECT_EQ(sNames(loaded.entity("RelSub").inverseTargets()), "Owner Uses Bagged");
    EXPECT_EQ(sNames(loaded.entity("Object").inverseTargets()), "");
}

TEST(ExpressInverse, BothSidesAndTheirSubtypesHaveARelation) {
    struct Row {
        const char* sEntity;
        bool boHasInverse;
        const char* sAllInverses;
    };
    const Row rows[] = {
        {"Root", false, ""},
        {"Object", true, "Uses Owner Bagged"},
        {"Wall", true, "Uses Owner Bagged"},   // redeclaring adds none
        {"Rel", true, ""},
        {"RelSub", true, ""},
        {"Point", false, ""},
    };
    const Loaded loaded(g_sRelations);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sEntity);
        EXPECT_EQ(loaded.entity(row.sEntity).boHasInverse, row.boHasInverse);
        EXPECT_EQ(sNames(loaded.entity(row.sEntity).allInverseAttributes()), row.sAllInverses);
    }
}

}   // namespace
