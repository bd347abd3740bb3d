// SPDX-License-Identifier: Apache-2.0
// The built-in schemas by name, and the loader's hook.
#include <gmock/gmock.h>

#include <array>
#include <thread>

#include "ExpressTestSupport.h"
#include "SchemaList.h"

namespace {

using namespace oxa::test;
using oxa::ifc::SchemaLoader;
using oxa::ifc::def::SchemaPset;

TEST(BuiltInSchemas, AreThoseOfTheList) {
    std::vector<std::string> listed;
    for (const SchemaRow& row : schemaList()) listed.push_back(row.sName);
    EXPECT_EQ(listed.size(), 12U);
    EXPECT_THAT(SchemaLoader::builtInNames(), testing::ElementsAreArray(listed));
    for (const std::string_view name : SchemaLoader::builtInNames()) {
        const SchemaPset* pSchema = SchemaLoader::pBuiltIn(name);
        ASSERT_NE(pSchema, nullptr) << name;
        EXPECT_EQ(pSchema->sName, name);
    }
}

TEST(BuiltInSchemas, AnswerToOtherSpellings) {
    struct Row {
        const char* sAsked;
        const char* sSchema;   // null for unknown
    };
    const Row rows[] = {
        {"IFC2X3", "IFC2X3"},
        {"ifc2x3", "IFC2X3"},
        {"IFC2x3", "IFC2X3"},
        {"IFC2X3_TC1", "IFC2X3"},
        {"IFC2x3_Final", "IFC2X3"},
        {"IFC4", "IFC4"},
        {"IFC4_ADD1", "IFC4"},
        {"IFC4_ADD2", "IFC4"},
        {"ifc4_add2_tc1", "IFC4"},
        {"IFC4X1_FINAL", "IFC4X1"},
        {"Ifc4x3_Rc2", "IFC4X3_RC2"},
        {"IFC4X3", "IFC4X3"},
        {"IFC4X3_ADD2", "IFC4X3_ADD2"},
        {"", nullptr},
        {"IFC", nullptr},
        {"IFC2X_FINAL", nullptr},
        {"IFC2X2_FINAL", nullptr},
        {"IFC2X2", nullptr},
        {"IFC99", nullptr},
        {"IFC4 ", nullptr},
        {"UNSPECIFIEDSCHEMA", nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sAsked);
        const SchemaPset* pSchema = SchemaLoader::pBuiltIn(row.sAsked);
        ASSERT_EQ(pSchema != nullptr, row.sSchema != nullptr);
        if (pSchema) {
            EXPECT_EQ(pSchema->sName, row.sSchema);
        }
    }
}

TEST(BuiltInSchemas, AreDecodedOnceForAllThreads) {
    std::vector<std::thread> threads;
    std::array<std::array<SchemaPset*, 3>, 4> results{};
    for (auto& result : results)
        threads.emplace_back([&result] {
            // Tables that rest on each other, so that threads meet in different slots.
            result = {SchemaLoader::pBuiltIn("IFC4X3_RC3"), SchemaLoader::pBuiltIn("IFC4X3_RC4"),
                      SchemaLoader::pBuiltIn("IFC4")};
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(results, testing::Each(results[0]));
    EXPECT_THAT(results[0], testing::Each(testing::NotNull()));
}

TEST(SchemaLoaderHook, ServesTheCallersFunctionAndElseTheBuiltIn) {
    SchemaPset own("OWN");
    std::string sAsked;
    const auto fromName = [&](const std::string& sName) {
        sAsked = sName;
        return sName == "IFC4" ? &own : nullptr;
    };
    EXPECT_EQ(SchemaLoader::pSchemaGet(fromName, "IFC4"), &own);
    EXPECT_EQ(sAsked, "IFC4");
    EXPECT_EQ(SchemaLoader::pSchemaGet(fromName, "IFC2X3"), nullptr) << "the function has the last word";
    EXPECT_EQ(sAsked, "IFC2X3");
    EXPECT_EQ(SchemaLoader::pSchemaGet(nullptr, "IFC2X3"), SchemaLoader::pBuiltIn("IFC2X3"));
    EXPECT_EQ(SchemaLoader::pSchemaGet({}, "IFC99"), nullptr);
}

// A few facts of each generation that everything else rests on.
TEST(BuiltInSchemas, HoldWellKnownFacts) {
    const SchemaPset& ifc4 = *SchemaLoader::pBuiltIn("IFC4");
    const Entity& wall = *ifc4.pEntityFromName(ObjectName("IFCWALL"));
    EXPECT_EQ(sNames(wall.allAttributes()), "GlobalId OwnerHistory Name Description ObjectType "
                                            "ObjectPlacement Representation Tag PredefinedType");
    EXPECT_EQ(wall.allAttributes()[0]->types.at(0)->sNameUpper, "IFCGLOBALLYUNIQUEID");
    EXPECT_TRUE(wall.boHasInverse);
    const Entity& root = *ifc4.pEntityFromName(ObjectName("IFCROOT"));
    EXPECT_TRUE(root.boAbstract);
    EXPECT_LT(root.iTypeOrdinal, wall.iTypeOrdinal);
    EXPECT_GE(root.iTypeOrdinalLast, wall.iTypeOrdinalLast);
    EXPECT_FALSE(ifc4.pEntityFromName(ObjectName("IFCAPPLICATION"))->boHasInverse);

    const auto* pTypes = &wall.pAttributeFromName(AttributeName("PredefinedType"), true)->types;
    const auto* pEnum = dynamic_cast<const DataTypeEnum*>(pDataTypeOf(pTypes->at(0)));
    ASSERT_NE(pEnum, nullptr);
    EXPECT_TRUE(pEnum->items.contains(std::string_view("SOLIDWALL")));

    const auto& actor =
        dynamic_cast<const DataTypeSelect&>(*ifc4.pTypeFromName(ObjectName("IFCACTORSELECT"))->pDataType);
    EXPECT_TRUE(actor.boAllEntities);
    const auto& value = dynamic_cast<const DataTypeSelect&>(*ifc4.pTypeFromName(ObjectName("IFCVALUE"))->pDataType);
    EXPECT_FALSE(value.boAllEntities);
    EXPECT_TRUE(value.isCompatible(*ifc4.pTypeFromName(ObjectName("IFCLABEL"))));
    EXPECT_FALSE(value.isCompatible(wall));

    const Entity& surface = *ifc4.pEntityFromName(ObjectName("IFCBSPLINESURFACE"));
    const Attribute& points = *surface.pAttributeFromName(AttributeName("ControlPointsList"), false);
    ASSERT_EQ(points.types.size(), 3U);
    EXPECT_EQ(points.types[2], ifc4.pEntityFromName(ObjectName("IFCCARTESIANPOINT")));
    EXPECT_EQ(points.sTypeName, "IfcCartesianPoint");

    const SchemaPset& ifc2x3 = *SchemaLoader::pBuiltIn("IFC2X3");
    const Attribute& latitude =
        *ifc2x3.pEntityFromName(ObjectName("IFCSITE"))->pAttributeFromName(AttributeName("RefLatitude"), false);
    ASSERT_EQ(latitude.types.size(), 2U);
    EXPECT_EQ(latitude.types[0], ifc2x3.pTypeFromName(ObjectName("IFCCOMPOUNDPLANEANGLEMEASURE")));
    EXPECT_EQ(sTypeText(latitude.types[1]), "INTEGER");
    EXPECT_EQ(ifc2x3.pObjectFromName("IfcAlignment"), nullptr);
    EXPECT_NE(SchemaLoader::pBuiltIn("IFC4X1")->pObjectFromName("IfcAlignment"), nullptr);
}

}   // namespace
