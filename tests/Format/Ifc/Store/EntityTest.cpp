// SPDX-License-Identifier: Apache-2.0
// The instance: its packed block, its attributes by name and by position, its states.
#include "Format/Ifc/IfcFileEntity.h"

#include <thread>

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/StatementReader.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;

const def::SchemaPset& entitySchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        ENTITY IfcNothing; INVERSE Users : SET OF IfcUser FOR Nothing; END_ENTITY;
        ENTITY IfcBase; Name : STRING; Weight : OPTIONAL REAL; END_ENTITY;
        ENTITY IfcMiddle SUBTYPE OF (IfcBase); Flag : OPTIONAL BOOLEAN;
            INVERSE Users : SET OF IfcUser FOR Middle; Others : SET OF IfcUser FOR Other; END_ENTITY;
        ENTITY IfcLeaf SUBTYPE OF (IfcMiddle); Length : REAL; END_ENTITY;
        ENTITY IfcUser; Nothing : IfcNothing; Middle : OPTIONAL IfcMiddle; Other : OPTIONAL IfcMiddle; END_ENTITY;
        )");
    return *pSchema;
}

const def::schema::Entity& type(const char* sKeyword) {
    const def::schema::Entity* pEntity = entitySchema().pEntityFromName(ObjectName(sKeyword));
    return *(pEntity ? pEntity : cellSchema().pEntityFromName(ObjectName(sKeyword)));
}

const std::pair<const def::schema::Attribute*, AttributeBase*> g_noAttribute;

constexpr char g_sEveryKindUndefined[] =
    "$ Real 0 | $ Boolean 0 | $ Integer 0 | $ Number 0 | $ String null | $ Guid 0 | $ Logical false | $ "
    "Binary null | "
    "$ Enumeration null | $ Select 0:(null) | $ List 0 null | $ List 0 null | $ List 0 null | $ Entity null";

TEST(Entity, CellsArePackedInParameterOrder) {
    const DataSizeEntity& size = Entity::getDataSize(type("IFCEVERYKIND"));
    EXPECT_EQ(size.offsets, (std::vector<std::uint32_t>{0, 16, 21, 37, 53, 69, 89, 97, 121, 137, 169, 185, 201, 217}));
    EXPECT_EQ(size.iSize, 233U);
    ASSERT_EQ(size.cells.size(), size.offsets.size());
    for (std::size_t i = 0; i < size.cells.size(); ++i) {
        EXPECT_EQ(size.cells[i].iOffset, size.offsets[i]);
        EXPECT_EQ(size.cells[i].pAttribute, type("IFCEVERYKIND").allAttributes()[i]);
    }
    EXPECT_EQ(&Entity::getDataSize(type("IFCEVERYKIND")), &size);
}

TEST(Entity, ASubtypeBeginsWithTheCellsOfItsSupertype) {
    EXPECT_EQ(Entity::getDataSize(type("IFCBASE")).offsets, (std::vector<std::uint32_t>{0, 16}));
    EXPECT_EQ(Entity::getDataSize(type("IFCLEAF")).offsets, (std::vector<std::uint32_t>{0, 16, 32, 37}));
    EXPECT_EQ(Entity::getDataSize(type("IFCLEAF")).iSize, 53U);
    EXPECT_EQ(Entity::getDataSize(type("IFCNOTHING")).iSize, 0U);
}

TEST(Entity, OneLayoutWhoeverAsksFirst) {
    const auto pSchema = pSchemaOf("ENTITY IfcBase; Name : STRING; Weight : OPTIONAL REAL; END_ENTITY;");
    const def::schema::Entity& base = *pSchema->pEntityFromName(ObjectName("IFCBASE"));
    std::vector<const DataSizeEntity*> found(4);
    std::vector<std::thread> threads;
    for (const DataSizeEntity*& pSize : found)
        threads.emplace_back([&pSize, &base] { pSize = &Entity::getDataSize(base); });
    for (std::thread& thread : threads) thread.join();
    for (const DataSizeEntity* pSize : found) EXPECT_EQ(pSize, found[0]);
    EXPECT_EQ(found[0]->iSize, 32U);
}

// Behind the boolean of five bytes every cell stands at an odd place.
TEST(Entity, CellsAtOddPlacesHoldTheirValues) {
    vExpectRead({"every kind",
                 "#1=IFCEVERYKIND(1.5,.T.,-7,2.25,'text','2O2Fr$t4X7Zf8NOew3FLOH',.U.,\"0AB\",.RED.,IFCLABEL('x'),"
                 "(1.,2.),(3.5),(4.),#9);",
                 "Real 1.5 | Boolean 1 | Integer -7 | Number 2.25 | String 'text' | Guid 2O2Fr$t4X7Zf8NOew3FLOH | "
                 "Logical unknown | Binary [AB] | Enumeration 'RED' | Select 5:IFCLABEL(String 'x') | "
                 "List 1[1, 2] | List 1[3.5] | List 1[4] | Entity #9"});
}

TEST(Entity, ANewOneIsUndefinedThroughout) {
    StatementReader reader;
    const Entity entity(reader.data, type("IFCEVERYKIND"));
    EXPECT_EQ(&entity.schemaEntity(), &type("IFCEVERYKIND"));
    EXPECT_EQ(reader.sCells(entity), g_sEveryKindUndefined);
}

TEST(Entity, AnEmptyOneHasNothing) {
    Entity entity;
    const AssertLog log;
    EXPECT_EQ(entity.pSchemaEntity(), nullptr);
    EXPECT_EQ(entity.unsafeAttributesRaw(), nullptr);
    EXPECT_EQ(entity.unsafeAttributesInverseRaw(), nullptr);
    EXPECT_THROW((void)entity.schemaEntity(), oxa::exception);
    EXPECT_EQ(entity.indexFromName(AttributeName("Name")), -1);
    EXPECT_EQ(entity.inverseIndexFromName(AttributeName("Users")), -1);
    EXPECT_EQ(entity.pAttributeFromIndex(0), g_noAttribute);
    EXPECT_TRUE(entity.entitiesInverseFromIndex(0).empty());
    EXPECT_FALSE(entity.boIsCompatible(&type("IFCBASE")));
    EXPECT_FALSE(entity.boIsCompatible(nullptr));
    EXPECT_EQ(log.texts(), std::vector<std::string>{});
    entity.sanityCheck();
    EXPECT_EQ(log.texts(), std::vector<std::string>{"Missing schema entity"});
}

TEST(Entity, SanityCheckIsSilentOnAFilledOneAndWithoutAssertions) {
    StatementReader reader(entitySchema());
    const Entity filled(reader.data, type("IFCBASE"));
    const Entity empty;
    {
        const AssertLog log;
        filled.sanityCheck();
        EXPECT_TRUE(log.texts().empty());
    }
    const AssertLog log(false);
    empty.sanityCheck();
    EXPECT_TRUE(log.texts().empty());
}

struct NameRow {
    const char* sKeyword;
    const char* sName;
    int iIndex;
    int iInverse;
};
const NameRow g_nameRows[] = {
    {"IFCBASE", "Name", 0, -1},     {"IFCBASE", "Weight", 1, -1},
    {"IFCBASE", "Flag", -1, -1},   // of a subtype
    {"IFCLEAF", "Name", 0, -1},     {"IFCLEAF", "Flag", 2, -1},
    {"IFCLEAF", "Length", 3, -1},   {"IFCLEAF", "length", -1, -1},   // case counts
    {"IFCLEAF", "Lengt", -1, -1},   {"IFCLEAF", "", -1, -1},
    {"IFCLEAF", "Users", -1, 0},    {"IFCLEAF", "Others", -1, 1},
    {"IFCNOTHING", "Name", -1, -1}, {"IFCNOTHING", "Users", -1, -1},   // it has that one, but no attribute block
};
TEST(Entity, FindsAttributesByName) {
    StatementReader reader(entitySchema());
    for (const NameRow& row : g_nameRows) {
        SCOPED_TRACE(std::string(row.sKeyword) + '.' + row.sName);
        const Entity entity(reader.data, type(row.sKeyword));
        const AttributeName name(row.sName);
        EXPECT_EQ(entity.indexFromName(name), row.iIndex);
        EXPECT_EQ(entity.inverseIndexFromName(name), row.iInverse);
        const bool boKnown = row.iIndex >= 0;
        EXPECT_TRUE(entity.boIsUndefined(name));   // each new cell is, and so is an unknown name
        EXPECT_EQ(entity.boIsDerived(name), !boKnown);
        // The same hash with another text is another name.
        EXPECT_EQ(entity.indexFromName(AttributeName("Xyz", name.hash)), -1);
    }
}

TEST(Entity, FindsAttributesByPosition) {
    StatementReader reader(entitySchema());
    const Entity leaf(reader.data, type("IFCLEAF"));
    const char* names[] = {"Name", "Weight", "Flag", "Length"};
    for (unsigned i = 0; i < 4; ++i) {
        const auto [pAttribute, pCell] = leaf.pAttributeFromIndex(i);
        ASSERT_NE(pAttribute, nullptr);
        EXPECT_EQ(pAttribute->sName, names[i]);
        EXPECT_TRUE(pCell->m_boUndefined);
    }
    EXPECT_EQ(leaf.pAttributeFromIndex(4), g_noAttribute);
    EXPECT_EQ(leaf.pAttributeFromIndex(~0U), g_noAttribute);
    const Entity nothing(reader.data, type("IFCNOTHING"));
    EXPECT_EQ(nothing.pAttributeFromIndex(0), g_noAttribute);
}

struct FlagRow {
    const char* sRule;
    const char* sName;
    bool boSet;
    bool boResult;
    const char* sCells;
    std::vector<std::string> assertions = {};
};
const char g_sNotOptional[] = "oxa::ifc::Entity::vUndefinedSet: This attribute is not optional";

TEST(Entity, OnlyAnOptionalAttributeCanBeMadeUndefined) {
    const FlagRow rows[] = {
        {"optional: the value stays behind the flag", "Weight", true, true, "String 'a' | $ Real 2"},
        {"optional, back", "Weight", false, true, "String 'a' | Real 2"},
        {"mandatory", "Name", true, false, "String 'a' | Real 2", {g_sNotOptional}},
        {"mandatory, defined", "Name", false, true, "String 'a' | Real 2"},
        {"unknown", "Nobody", true, false, "String 'a' | Real 2"},
    };
    for (const FlagRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        StatementReader reader(entitySchema());
        Entity* pEntity = reader.pRead("#1=IFCBASE('a',2);");
        ASSERT_NE(pEntity, nullptr);
        const AssertLog log;
        EXPECT_EQ(pEntity->boUndefinedSet(AttributeName(row.sName), row.boSet), row.boResult);
        EXPECT_EQ(reader.sCells(*pEntity), row.sCells);
        EXPECT_EQ(log.texts(), row.assertions);
    }
}

TEST(Entity, AMandatoryAttributeCanBeDefinedAgain) {
    StatementReader reader(entitySchema());
    Entity entity(reader.data, type("IFCBASE"));
    const AssertLog silent(false);
    EXPECT_TRUE(entity.boUndefinedSet(AttributeName("Name"), false));
    EXPECT_FALSE(entity.boIsUndefined(AttributeName("Name")));
    EXPECT_FALSE(entity.boUndefinedSet(AttributeName("Name"), true));
    EXPECT_FALSE(entity.boIsUndefined(AttributeName("Name")));
    EXPECT_TRUE(silent.texts().empty());
}

TEST(Entity, AnyAttributeCanBeDerived) {
    const FlagRow rows[] = {
        {"optional", "Weight", true, true, "String 'a' | * Real 2"},
        {"mandatory", "Name", true, true, "* String 'a' | Real 2"},
        {"back", "Name", false, true, "String 'a' | Real 2"},
        {"unknown", "Nobody", true, false, "String 'a' | Real 2"},
    };
    for (const FlagRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        StatementReader reader(entitySchema());
        Entity* pEntity = reader.pRead("#1=IFCBASE('a',2);");
        ASSERT_NE(pEntity, nullptr);
        const AssertLog log;
        EXPECT_EQ(pEntity->boDerivedSet(AttributeName(row.sName), row.boSet), row.boResult);
        EXPECT_EQ(reader.sCells(*pEntity), row.sCells);
        EXPECT_EQ(pEntity->boIsDerived(AttributeName(row.sName)), row.boResult ? row.boSet : true);
        EXPECT_TRUE(log.texts().empty());
    }
}

TEST(Entity, IsCompatibleWithItsTypeAndItsSupertypes) {
    StatementReader reader(entitySchema());
    const Entity middle(reader.data, type("IFCMIDDLE"));
    EXPECT_TRUE(middle.boIsCompatible(&type("IFCMIDDLE")));
    EXPECT_TRUE(middle.boIsCompatible(&type("IFCBASE")));
    EXPECT_FALSE(middle.boIsCompatible(&type("IFCLEAF")));
    EXPECT_FALSE(middle.boIsCompatible(&type("IFCUSER")));
    EXPECT_FALSE(middle.boIsCompatible(nullptr));
    const Entity root(reader.data, type("IFCBASE"));
    EXPECT_FALSE(root.boIsCompatible(nullptr));
}

TEST(Entity, WalksItsAttributesUntilTold) {
    StatementReader reader(entitySchema());
    const auto visited = [](const Entity& entity, const std::string& sStop) {
        std::string sNames;
        const bool boStopped = entity.boForEachAttribute([&](const def::schema::Attribute& attribute, const auto&) {
            sNames += attribute.sName + ' ';
            return attribute.sName == sStop;
        });
        return sNames + (boStopped ? "stopped" : "end");
    };
    const Entity leaf(reader.data, type("IFCLEAF"));
    EXPECT_EQ(visited(leaf, ""), "Name Weight Flag Length end");
    EXPECT_EQ(visited(leaf, "Weight"), "Name Weight stopped");
    EXPECT_EQ(visited(leaf, "Length"), "Name Weight Flag Length stopped");
    EXPECT_EQ(visited(Entity(reader.data, type("IFCNOTHING")), ""), "end");
    EXPECT_EQ(visited(Entity(), ""), "end");
}

TEST(Entity, VSchemaEntitySetMakesFreshBlocks) {
    StatementReader reader(entitySchema());
    Entity* pEntity = reader.pRead("#1=IFCBASE('a',2);");
    ASSERT_NE(pEntity, nullptr);
    void* const pBefore = pEntity->unsafeAttributesRaw();
    const AttributeBase* pCell = pEntity->pAttributeFromIndex(0).second;
    pEntity->vSchemaEntitySet(reader.data, type("IFCBASE"), true);
    EXPECT_EQ(reader.sCells(*pEntity), "$ String null | $ Real 0");
    EXPECT_NE(pEntity->unsafeAttributesRaw(), pBefore);
    EXPECT_STREQ(static_cast<const AttributeString*>(pCell)->m_value.load(), "a") << "the former block stays behind";

    pEntity->vSchemaEntitySet(reader.data, type("IFCLEAF"), true);
    EXPECT_EQ(reader.sCells(*pEntity), "$ String null | $ Real 0 | $ Boolean 0 | $ Real 0");
    EXPECT_EQ(pEntity->entitiesInverseFromIndex(1), std::vector<Entity*>{});

    pEntity->vSchemaEntitySet(reader.data, type("IFCNOTHING"), true);
    EXPECT_EQ(pEntity->unsafeAttributesRaw(), nullptr);
}

TEST(Entity, VSchemaEntitySetCanLeaveTheBlocksAlone) {
    StatementReader reader(entitySchema());
    Entity* pEntity = reader.pRead("#1=IFCLEAF('a',2,.T.,3);");
    ASSERT_NE(pEntity, nullptr);
    void* const pBefore = pEntity->unsafeAttributesRaw();
    pEntity->vSchemaEntitySet(reader.data, type("IFCBASE"), false);
    EXPECT_EQ(pEntity->unsafeAttributesRaw(), pBefore);
    EXPECT_EQ(reader.sCells(*pEntity), "String 'a' | Real 2");
}

TEST(Entity, UnsafeOperationsReachTheFieldsThemselves) {
    StatementReader reader(entitySchema());
    Entity* pFrom = reader.pRead("#1=IFCBASE('a',2);");
    ASSERT_NE(pFrom, nullptr);
    Entity to;
    to.unsafeSetSchemaEntity(&type("IFCBASE"));
    to.unsafeAttributesRaw() = pFrom->unsafeAttributesRaw();
    to.unsafeAttributesInverseRaw() = pFrom->unsafeAttributesInverseRaw();
    EXPECT_EQ(reader.sCells(to), "String 'a' | Real 2");
}

// The blocks exist, the type was taken away.
TEST(Entity, BlocksWithoutATypeAreAnInsideFault) {
    StatementReader reader(entitySchema());
    Entity entity(reader.data, type("IFCLEAF"));
    entity.unsafeSetSchemaEntity(nullptr);
    const AttributeName name("Name");
    const std::function<void()> calls[] = {
        [&] { (void)entity.schemaEntity(); },
        [&] { (void)entity.indexFromName(name); },
        [&] { (void)entity.inverseIndexFromName(name); },
        [&] { (void)entity.pAttributeFromIndex(0); },
        [&] { (void)entity.boIsUndefined(name); },
        [&] { (void)entity.boDerivedSet(name, true); },
        [&] { (void)entity.boForEachAttribute([](const auto&, const auto&) { return true; }); },
        [&] { (void)entity.boForEachInverseAttribute([](const auto&, const auto&) { return true; }); },
        [&] { (void)entity.entitiesInverseFromIndex(0); },
        [&] { entity.vAttributeInverseInit(reader.data); },
        [&] { entity.attributeInverseClear(); },
    };
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        SCOPED_TRACE(i);
        try {
            calls[i]();
            ADD_FAILURE() << "nothing thrown";
        } catch (const MissingType& e) {
            EXPECT_STREQ(e.what(), "returning nullptr");
        }
    }
}

TEST(Entity, AnAttributeWithoutATypeTakesNoPlace) {
    const AssertLog log;
    const auto pSchema = pSchemaWithSecondOf({});
    const def::schema::Entity& faulty = *pSchema->pEntityFromName(ObjectName("IFCFAULTY"));
    StatementReader reader(*pSchema);
    const Entity entity(reader.data, faulty);
    EXPECT_EQ(Entity::getDataSize(faulty).offsets, (std::vector<std::uint32_t>{0, 16, 16}));
    EXPECT_EQ(Entity::getDataSize(faulty).iSize, 32U);
    EXPECT_EQ(reader.sCells(entity), "$ Real 0 | no cell | $ Real 0");
    EXPECT_EQ(log.texts(), std::vector<std::string>{"Schema error. Attribute not found."});
}

TEST(Entity, AKindOutsideTheTwelveIsAnInsideFault) {
    const AssertLog log;
    const def::schema::DataTypeBase illegal(static_cast<def::schema::DataKind>(12));
    const auto pSchema = pSchemaWithSecondOf({&illegal});
    const def::schema::Entity& faulty = *pSchema->pEntityFromName(ObjectName("IFCFAULTY"));
    StatementReader reader(*pSchema);
    Entity entity;
    const std::function<void()> calls[] = {
        [&] { const Entity made(reader.data, faulty); },
        [&] { entity.vSchemaEntitySet(reader.data, faulty, true); },
    };
    for (const auto& call : calls) {
        try {
            call();
            ADD_FAILURE() << "nothing thrown";
        } catch (const char* text) {
            EXPECT_STREQ(text, "illegal type");
        }
    }
}

}   // namespace
}   // namespace oxa::ifc
