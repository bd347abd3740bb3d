// SPDX-License-Identifier: Apache-2.0
// Every built-in schema against the published EXPRESS text, where the texts are at hand: in the folder that
// the environment variable OXAIFC_SCHEMAS names, or beside the source tree.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "PublishedText.h"
#include "SchemaList.h"
#include "provider/FactTable.h"
#include "provider/SchemaLoader.h"

namespace {

using namespace oxa::ifc::def::schema;
using namespace oxa::test;
using oxa::ifc::SchemaLoader;

struct CountRow {
    const char* sSchema;
    std::size_t iEntities;
    std::size_t iTypes;
};
const CountRow g_counts[] = {
    {"IFC2X3", 653, 327},     {"IFC4", 776, 397},       {"IFC4X1", 801, 401},      {"IFC4X2", 816, 407},
    {"IFC4X3_RC1", 879, 438}, {"IFC4X3_RC2", 885, 442}, {"IFC4X3_RC3", 877, 440},  {"IFC4X3_RC4", 877, 440},
    {"IFC4X3", 872, 439},     {"IFC4X3_TC1", 872, 435}, {"IFC4X3_ADD1", 876, 436}, {"IFC4X3_ADD2", 876, 436},
};

// A schema of the list, and how much of everything it has.
struct Row : SchemaRow {
    std::size_t iEntities = 0;
    std::size_t iTypes = 0;
};
void PrintTo(const Row& row, std::ostream* pStream) { *pStream << row.sName; }

std::vector<Row> rows() {
    std::vector<Row> rows;
    for (const SchemaRow& schema : schemaList()) {
        Row& row = rows.emplace_back(Row{schema});
        for (const CountRow& count : g_counts)
            if (schema.sName == count.sSchema) row = {schema, count.iEntities, count.iTypes};
    }
    return rows;
}

std::filesystem::path folder() {
    const char* sFolder = std::getenv("OXAIFC_SCHEMAS");
    return sFolder ? sFolder : OXA_SOURCE_DIR "/../shared/schemas";
}

std::string sFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

class PublishedTextTest : public testing::TestWithParam<Row> {
protected:
    void SetUp() override {
        const auto path = folder() / GetParam().sText;
        if (!std::filesystem::exists(path)) GTEST_SKIP() << path << " is not at hand";
        m_sText = sFile(path);
        m_pSchema = SchemaLoader::pBuiltIn(GetParam().sName);
        ASSERT_NE(m_pSchema, nullptr);
    }

    std::string m_sText;
    const oxa::ifc::def::SchemaPset* m_pSchema = nullptr;
};

std::vector<std::string> attributesOf(const Entity& entity) {
    std::vector<std::string> result;
    for (const Attribute& attribute : entity.ownAttributes)
        result.push_back(sPlainBlanks(attribute.sName + (attribute.boOptional ? " : OPTIONAL " : " : ") +
                                      sTypeText(attribute.types.at(0))));
    return result;
}

std::vector<std::string> inversesOf(const Entity& entity) {
    std::vector<std::string> result;
    for (const AttributeInverse& inverse : entity.ownInverseAttributes) {
        const std::string sAggregate = inverse.boAggregate ? "SET " + inverse.sBounds + " OF " : "";
        result.push_back(inverse.sName + " : " + sAggregate + inverse.pForEntity->sName + " FOR " +
                         inverse.sForAttribute);
        EXPECT_EQ(inverse.pForAttribute->sName, inverse.sForAttribute);
    }
    return result;
}

TEST_P(PublishedTextTest, EveryEntityIsTheSame) {
    const PublishedText published(m_sText);
    EXPECT_EQ(published.entities.size(), GetParam().iEntities);
    std::size_t iEntities = 0;
    for (const Schema::Record& record : m_pSchema->objects) iEntities += pAsEntity(record.pObject) != nullptr;
    EXPECT_EQ(iEntities, GetParam().iEntities);
    for (const auto& [sName, expected] : published.entities) {
        SCOPED_TRACE(sName);
        const Entity* pEntity = pAsEntity(m_pSchema->pObjectFromName(sName));
        ASSERT_NE(pEntity, nullptr);
        EXPECT_EQ(pEntity->sName, sName);
        EXPECT_EQ(pEntity->pParent ? pEntity->pParent->sName : "", expected.sSupertype);
        EXPECT_EQ(pEntity->boAbstract, expected.boAbstract);
        EXPECT_EQ(attributesOf(*pEntity), expected.attributes);
        EXPECT_EQ(inversesOf(*pEntity), expected.inverses);
    }
}

TEST_P(PublishedTextTest, EveryTypeIsTheSame) {
    const PublishedText published(m_sText);
    EXPECT_EQ(published.types.size(), GetParam().iTypes);
    for (const auto& [sName, sExpected] : published.types) {
        SCOPED_TRACE(sName);
        const Type* pType = pAsType(m_pSchema->pObjectFromName(sName));
        ASSERT_NE(pType, nullptr);
        EXPECT_EQ(pType->sName, sName);
        const std::string sText = pType->pDeclared ? pType->pDeclared->sName : sTypeText(pType->pDataType);
        EXPECT_EQ(sPlainBlanks(sText), sExpected);
    }
    std::size_t iTypes = 0;
    for (const Schema::Record& record : m_pSchema->objects) iTypes += pAsType(record.pObject) != nullptr;
    EXPECT_EQ(iTypes, GetParam().iTypes);
}

TEST_P(PublishedTextTest, TheCompilerStillGivesTheTable) {
    const auto pCompiled = [](const std::string& sText) {
        std::vector<oxa::ifc::SchemaMessage> messages;
        auto pSchema = SchemaLoader::pSchemaFromExpress(sText, messages);
        EXPECT_TRUE(messages.empty());
        return pSchema;
    };
    const auto pSchema = pCompiled(m_sText);
    ASSERT_NE(pSchema, nullptr);
    std::unique_ptr<oxa::ifc::def::SchemaPset> pBase;
    if (const std::string& sBase = GetParam().sBase; !sBase.empty()) {
        const std::vector<SchemaRow> list = schemaList();
        const auto pRow = std::ranges::find(list, sBase, &SchemaRow::sName);
        ASSERT_NE(pRow, list.end());
        pBase = pCompiled(sFile(folder() / pRow->sText));
        ASSERT_NE(pBase, nullptr);
        pBase->sName = sBase;
    }
    const std::filesystem::path tables = OXA_SOURCE_DIR "/schemas";
    const std::string sTable = sFile(tables / (GetParam().sName + ".facts"));
    EXPECT_TRUE(oxa::ifc::def::express::sFactTable(*pSchema, GetParam().sName, pBase.get()) == sTable)
        << "schemas/ is older than the texts; run schemas/compile-tables";
}

// The relations that follow from the facts, computed here in the plainest way.
TEST_P(PublishedTextTest, TypeOrdinalsAndInverseRelationsHold) {
    const Schema& schema = *m_pSchema;
    std::vector<const Entity*> entities;
    for (const Schema::Record& record : schema.objects)
        if (const Entity* pEntity = pAsEntity(record.pObject)) entities.push_back(pEntity);
    for (const Entity* pEntity : entities) {
        SCOPED_TRACE(pEntity->sName);
        for (const Entity* pOther : entities) {
            const bool boInRange =
                pOther->iTypeOrdinal >= pEntity->iTypeOrdinal && pOther->iTypeOrdinal <= pEntity->iTypeOrdinalLast;
            ASSERT_EQ(boInRange, boIsSubtype(pOther, pEntity)) << pOther->sName;
        }
        EXPECT_EQ(pEntity->boHasInverse,
                  !pEntity->allInverseAttributes().empty() || !pEntity->inverseTargets().empty());
        for (const Attribute* pAttribute : pEntity->allAttributes()) {
            ASSERT_FALSE(pAttribute->types.empty());
            EXPECT_TRUE(boIsSubtype(pEntity, pAttribute->pOwner));
            for (const ObjectBase* pObject : pAttribute->types) ASSERT_NE(pObject, nullptr);
            for (const AttributeInverse* pInverse : pAttribute->inverses)
                EXPECT_EQ(pInverse->pForAttribute, pAttribute);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, PublishedTextTest, testing::ValuesIn(rows()),
                         [](const auto& row) { return std::string(row.param.sName); });

TEST(PublishedTextsRead, EveryOtherTextAtHandReadsToo) {
    if (!std::filesystem::exists(folder())) GTEST_SKIP() << folder() << " is not at hand";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder())) {
        if (entry.path().extension() != ".exp") continue;
        SCOPED_TRACE(entry.path());
        std::vector<oxa::ifc::SchemaMessage> messages;
        EXPECT_NE(SchemaLoader::pSchemaFromExpress(sFile(entry.path()), messages), nullptr);
        for (const auto& message : messages)
            ADD_FAILURE() << message.iLine << ':' << message.iColumn << ' ' << message.sText;
    }
}

}   // namespace
