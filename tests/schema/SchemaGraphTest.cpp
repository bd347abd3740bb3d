// SPDX-License-Identifier: Apache-2.0
// The schema graph as everyone reads it: look-ups, caches, selects, type texts. Graphs are made by hand.
#include "schema/Schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

namespace {

using namespace oxa::ifc::def::schema;
using ::testing::ElementsAre;

// A schema under construction.
struct Graph {
    Schema schema{"TEST"};

    Entity* pEntity(const char* sName, const Entity* pParent = nullptr, const std::vector<const char*>& attributes = {},
                    const std::vector<const char*>& inverses = {}) {
        Entity* pResult = schema.pAdopt(std::make_unique<Entity>(sName));
        pResult->pParent = pParent;
        for (const char* sAttribute : attributes) {
            Attribute& attribute = pResult->ownAttributes.emplace_back();
            attribute.pOwner = pResult;
            attribute.sName = sAttribute;
            attribute.uNameHash = NameHash(sAttribute);
        }
        for (const char* sInverse : inverses) {
            AttributeInverse& inverse = pResult->ownInverseAttributes.emplace_back();
            inverse.pOwner = pResult;
            inverse.sName = sInverse;
            inverse.uNameHash = NameHash(sInverse);
        }
        return pResult;
    }

    Type* pType(const char* sName, const DataTypeBase* pDataType) {
        Type* pResult = schema.pAdopt(std::make_unique<Type>(sName));
        pResult->pDataType = pDataType;
        return pResult;
    }

    template <class DataType, class... Arguments>
    DataType* pData(Arguments&&... arguments) {
        return schema.pAdopt(std::make_unique<DataType>(std::forward<Arguments>(arguments)...));
    }
};

template <class Record>
std::vector<std::string> names(const std::vector<const Record*>& list) {
    std::vector<std::string> result;
    for (const Record* pRecord : list) result.push_back(pRecord->sName);
    return result;
}

TEST(SchemaLookUp, FindsByExactKeywordAndInAnyCase) {
    Graph graph;
    const Entity* pWall = graph.pEntity("IfcWall");
    const Type* pLabel = graph.pType("IfcLabel", graph.pData<DataTypeSimple>(DataKind::String, "IfcLabel"));
    const std::string sLong(300, 'x');
    const Entity* pLong = graph.pEntity(sLong.c_str());
    graph.schema.vFinish();

    struct Row {
        const char* name;
        std::string sAsked;
        const ObjectBase* pAnyCase;
        const ObjectBase* pExact;
    };
    const Row rows[] = {
        {"keyword", "IFCWALL", pWall, pWall},
        {"the schema's own spelling", "IfcWall", pWall, nullptr},
        {"lower case", "ifclabel", pLabel, nullptr},
        {"unknown", "IFCDOOR", nullptr, nullptr},
        {"empty; no anonymous object answers to it", "", nullptr, nullptr},
        {"prefix", "IFCWAL", nullptr, nullptr},
        {"longer", "IFCWALLS", nullptr, nullptr},
        {"long", sLong, pLong, nullptr},
        {"not ASCII", "IFCW\xC3\x84LL", nullptr, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(graph.schema.pObjectFromName(row.sAsked), row.pAnyCase);
        EXPECT_EQ(graph.schema.pObjectFromName(ObjectName(row.sAsked)), row.pExact);
    }
}

TEST(SchemaLookUp, TypedFormsWantTheClass) {
    Graph graph;
    const Entity* pWall = graph.pEntity("IfcWall");
    const Type* pLabel = graph.pType("IfcLabel", nullptr);
    graph.schema.vFinish();
    EXPECT_EQ(graph.schema.pEntityFromName(ObjectName("IFCWALL")), pWall);
    EXPECT_EQ(graph.schema.pTypeFromName(ObjectName("IFCWALL")), nullptr);
    EXPECT_EQ(graph.schema.pTypeFromName(ObjectName("IFCLABEL")), pLabel);
    EXPECT_EQ(graph.schema.pEntityFromName(ObjectName("IFCLABEL")), nullptr);
    EXPECT_EQ(graph.schema.pEntityFromName(ObjectName("IFCNONE")), nullptr);
}

TEST(SchemaLookUp, KeepsNamesOfOneHashApart) {
    struct Row {
        const char* name;
        const char* sFirst;
        const char* sSecond;
        std::uint32_t uHash;
    };
    const Row rows[] = {
        {"same length", "IFCYFRRF", "IFCCRKQP", 0x7dd0428aU},
        {"other length", "IFCZNAV", "IFCXXAZTYPE", 0x4865af10U},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_EQ(NameHash(row.sFirst), row.uHash);
        ASSERT_EQ(NameHash(row.sSecond), row.uHash);

        Graph one;
        const Entity* pOnly = one.pEntity(row.sFirst);
        one.schema.vFinish();
        EXPECT_EQ(one.schema.pObjectFromName(ObjectName(row.sFirst)), pOnly);
        EXPECT_EQ(one.schema.pObjectFromName(ObjectName(row.sSecond)), nullptr);

        Graph both;
        const Entity* pFirst = both.pEntity(row.sFirst);
        const Entity* pSecond = both.pEntity(row.sSecond);
        both.schema.vFinish();
        EXPECT_EQ(both.schema.pObjectFromName(ObjectName(row.sFirst)), pFirst);
        EXPECT_EQ(both.schema.pObjectFromName(ObjectName(row.sSecond)), pSecond);
    }
}

TEST(SchemaLookUp, AnEmptyOrUnfinishedSchemaAnswersNull) {
    Graph graph;
    EXPECT_EQ(graph.schema.pObjectFromName("IfcWall"), nullptr);
    graph.schema.vFinish();
    EXPECT_EQ(graph.schema.pObjectFromName("IfcWall"), nullptr);
    EXPECT_TRUE(graph.schema.objects.empty());
}

TEST(SchemaObjects, HoldEachNamedObjectByHashLengthAndBytes) {
    Graph graph;
    for (const char* sName : {"IfcYfrrf", "IfcXxazType", "IfcCrkqp", "IfcRoot", "IfcZnav"}) graph.pEntity(sName);
    graph.pType("IfcLabel", graph.pData<DataTypeSimple>(DataKind::String, "IfcLabel"));
    graph.schema.vFinish();
    std::vector<std::string> keys;
    for (const Schema::Record& record : graph.schema.objects) {
        EXPECT_EQ(record.key, record.pObject->sNameUpper);
        keys.push_back(record.key);
    }
    // IFCLABEL, then 0x4865af10 twice, 0x7a0ef7a3, 0x7dd0428a twice.
    EXPECT_LT(NameHash("IFCLABEL"), 0x4865af10U);
    EXPECT_THAT(keys, ElementsAre("IFCLABEL", "IFCZNAV", "IFCXXAZTYPE", "IFCROOT", "IFCCRKQP", "IFCYFRRF"));
}

TEST(EntityCaches, AreEmptyForARootWithoutAttributes) {
    Graph graph;
    const Entity* pRoot = graph.pEntity("IfcRoot");
    EXPECT_TRUE(pRoot->allAttributes().empty());
    EXPECT_TRUE(pRoot->allInverseAttributes().empty());
    EXPECT_TRUE(pRoot->inverseTargets().empty());
}

TEST(EntityCaches, BeginWithTheListOfTheSupertype) {
    Graph graph;
    const Entity* pRoot = graph.pEntity("IfcRoot", nullptr, {"GlobalId", "Name"}, {"HasContext"});
    const Entity* pMiddle = graph.pEntity("IfcObject", pRoot);
    const Entity* pWall = graph.pEntity("IfcWall", pMiddle, {"Tag"}, {"FillsVoids", "Boundaries"});
    EXPECT_THAT(names(pWall->allAttributes()), ElementsAre("GlobalId", "Name", "Tag"));
    EXPECT_THAT(names(pMiddle->allAttributes()), ElementsAre("GlobalId", "Name"));
    EXPECT_EQ(pWall->allAttributes()[1], &pRoot->ownAttributes[1]);
    EXPECT_THAT(names(pWall->allInverseAttributes()), ElementsAre("HasContext", "FillsVoids", "Boundaries"));
    EXPECT_EQ(&pWall->allAttributes(), &pWall->allAttributes());
}

TEST(EntityCaches, InverseTargetsFollowTheAttributesAndWantAnInverseRelation) {
    Graph graph;
    Entity* pRel = graph.pEntity("IfcRel", nullptr, {"Relating", "Related"});
    Entity* pSub = graph.pEntity("IfcRelSub", pRel, {"More"});
    const Entity* pObject = graph.pEntity("IfcObject", nullptr, {}, {"A", "B", "C"});
    const auto& inverses = pObject->ownInverseAttributes;
    pRel->ownAttributes[1].inverses = {&inverses[2], &inverses[0]};
    pSub->ownAttributes[0].inverses = {&inverses[1]};
    pSub->boHasInverse = true;
    EXPECT_THAT(names(pSub->inverseTargets()), ElementsAre("C", "A", "B"));
    EXPECT_TRUE(pRel->inverseTargets().empty()) << "boHasInverse is false";
}

TEST(EntityCaches, ThreadsThatAskAtOnceGetTheSameLists) {
    for (int iRun = 0; iRun < 50; ++iRun) {
        Graph graph;
        const Entity* pEntity = nullptr;
        for (int i = 0; i < 20; ++i)
            pEntity = graph.pEntity(std::string(1, static_cast<char>('A' + i)).c_str(), pEntity, {"A", "B"}, {"C"});
        constexpr std::size_t iThreads = 4;
        std::array<const Entity::AttributeList*, iThreads> lists{};
        std::array<std::size_t, iThreads> counts{};
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < iThreads; ++i)
            threads.emplace_back([&, i] {
                // Half of them begin at a supertype, so that builds meet on the way up.
                if (i % 2) (void)pEntity->pParent->pParent->allAttributes();
                lists[i] = &pEntity->allAttributes();
                counts[i] = pEntity->allInverseAttributes().size() + pEntity->inverseTargets().size();
            });
        for (std::thread& thread : threads) thread.join();
        for (std::size_t i = 0; i < iThreads; ++i) {
            EXPECT_EQ(lists[i], lists[0]);
            EXPECT_EQ(counts[i], 20U);
        }
        EXPECT_EQ(lists[0]->size(), 40U);
    }
}

TEST(SchemaCacheTest, StaysUnbuiltWhenTheBuildThrows) {
    SchemaCache<int> cache;
    EXPECT_THROW((void)cache.get([]() -> int { throw 1; }), int);
    EXPECT_FALSE(cache.boReady());
    EXPECT_EQ(cache.get([] { return 7; }), 7);
    EXPECT_EQ(cache.get([] { return 8; }), 7) << "built once";
    EXPECT_TRUE(cache.boReady());
}

// Each of the threads builds until one build succeeds; that one's value is everybody's.
TEST(SchemaCacheTest, IsBuiltByOneOfManyAlsoAfterFailures) {
    for (int iRound = 0; iRound < 50; ++iRound) {
        SchemaCache<std::vector<int>> cache;
        std::atomic<int> iBuilds{0};
        std::array<const std::vector<int>*, 4> values{};
        std::vector<std::thread> threads;
        for (auto& pValue : values)
            threads.emplace_back([&] {
                while (!pValue) try {
                        pValue = &cache.get([&] {
                            if (iBuilds.fetch_add(1) < 3) throw 1;
                            return std::vector<int>(100, 7);
                        });
                    } catch (int) {}
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(iBuilds, 4);
        EXPECT_THAT(values, testing::Each(&cache.value()));
        EXPECT_EQ(cache.value(), std::vector<int>(100, 7));
    }
}

TEST(EntityLookUp, FindsAttributesOfItsOwnAndOfSupertypesWhenAsked) {
    Graph graph;
    // The two last names of the root have one hash.
    const Entity* pRoot = graph.pEntity("IfcRoot", nullptr, {"GlobalId", "IFCYFRRF", "IFCCRKQP"}, {"HasContext"});
    const Entity* pWall = graph.pEntity("IfcWall", pRoot, {"Tag"}, {"FillsVoids"});
    struct Row {
        const char* name;
        const char* sAsked;
        bool boSupertypes;
        const Attribute* pExpected;
    };
    const Row rows[] = {
        {"own", "Tag", false, &pWall->ownAttributes[0]},
        {"own, with supertypes", "Tag", true, &pWall->ownAttributes[0]},
        {"inherited", "GlobalId", true, &pRoot->ownAttributes[0]},
        {"inherited, not asked for", "GlobalId", false, nullptr},
        {"first of one hash", "IFCYFRRF", true, &pRoot->ownAttributes[1]},
        {"second of one hash", "IFCCRKQP", true, &pRoot->ownAttributes[2]},
        {"other case", "globalid", true, nullptr},
        {"an inverse attribute", "HasContext", true, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(pWall->pAttributeFromName(AttributeName(row.sAsked), row.boSupertypes), row.pExpected);
    }
    EXPECT_EQ(pWall->pAttributeInverseFromName("FillsVoids", true), &pWall->ownInverseAttributes[0]);
    EXPECT_EQ(pWall->pAttributeInverseFromName("HasContext", true), &pRoot->ownInverseAttributes[0]);
    EXPECT_EQ(pWall->pAttributeInverseFromName("HasContext", false), nullptr);
    EXPECT_EQ(pWall->pAttributeInverseFromName("Tag", true), nullptr);
}

TEST(EntityLookUp, NamesCarryTheStoredHash) {
    Graph graph;
    const Entity* pWall = graph.pEntity("IfcWall", nullptr, {"Tag"}, {"FillsVoids"});
    EXPECT_TRUE(ObjectName(*pWall) == ObjectName("IFCWALL"));
    EXPECT_TRUE(AttributeName(pWall->ownAttributes[0]) == AttributeName("Tag"));
    EXPECT_TRUE(AttributeName(pWall->ownInverseAttributes[0]) == AttributeName("FillsVoids"));
}

TEST(SubtypeTest, WalksUpward) {
    Graph graph;
    const Entity* pRoot = graph.pEntity("IfcRoot");
    const Entity* pObject = graph.pEntity("IfcObject", pRoot);
    const Entity* pWall = graph.pEntity("IfcWall", pObject);
    const Entity* pOther = graph.pEntity("IfcPoint");
    EXPECT_TRUE(boIsSubtype(pWall, pWall));
    EXPECT_TRUE(boIsSubtype(pWall, pRoot));
    EXPECT_FALSE(boIsSubtype(pRoot, pWall));
    EXPECT_FALSE(boIsSubtype(pWall, pOther));
    EXPECT_FALSE(boIsSubtype(nullptr, nullptr));
    EXPECT_FALSE(boIsSubtype(nullptr, pRoot));
    EXPECT_FALSE(boIsSubtype(pWall, nullptr));
}

TEST(SelectTest, TakesMembersNestedMembersAndSubtypes) {
    Graph graph;
    const Entity* pObject = graph.pEntity("IfcObject");
    const Entity* pWall = graph.pEntity("IfcWall", pObject);
    const Entity* pPoint = graph.pEntity("IfcPoint");
    auto* pString = graph.pData<DataTypeSimple>(DataKind::String, "IfcLabel");
    const Type* pLabel = graph.pType("IfcLabel", pString);
    const Type* pOther = graph.pType("IfcText", pString);
    auto* pInner = graph.pData<DataTypeSelect>("IfcInner");
    pInner->members = {pObject};
    const Type* pInnerType = graph.pType("IfcInner", pInner);
    auto* pOuter = graph.pData<DataTypeSelect>("IfcOuter");
    pOuter->members = {pLabel, pInnerType};

    struct Row {
        const char* name;
        const ObjectBase* pObject;
        bool boInner;
        bool boOuter;
    };
    const Row rows[] = {
        {"type", pLabel, false, true},
        {"type of the same data type", pOther, false, false},
        {"entity, nested", pObject, true, true},
        {"subtype, nested", pWall, true, true},
        {"other entity", pPoint, false, false},
        {"nested select itself", pInnerType, false, true},
        {"data type behind a member", pString, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(pInner->isCompatible(*row.pObject), row.boInner);
        EXPECT_EQ(pOuter->isCompatible(*row.pObject), row.boOuter);
    }
}

TEST(SelectTest, EndsOnASelectThatContainsItself) {
    Graph graph;
    const Entity* pWall = graph.pEntity("IfcWall");
    const Entity* pPoint = graph.pEntity("IfcPoint");
    auto* pSelect = graph.pData<DataTypeSelect>("IfcLoop");
    pSelect->members = {graph.pType("IfcLoop", pSelect), pWall};
    EXPECT_TRUE(pSelect->isCompatible(*pWall));
    EXPECT_FALSE(pSelect->isCompatible(*pPoint));
}

TEST(SelectTest, AnswersAnyNumberOfThreads) {
    Graph graph;
    auto* pSelect = graph.pData<DataTypeSelect>("IfcSelect");
    const Entity* pWall = graph.pEntity("IfcWall");
    pSelect->members = {pWall};
    std::array<bool, 4> results{};
    std::vector<std::thread> threads;
    for (bool& boResult : results) threads.emplace_back([&] { boResult = pSelect->isCompatible(*pWall); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(results, testing::Each(true));
}

TEST(EnumTest, HoldsUpperCaseItemsByBytesAndInOrderOfDeclaration) {
    const DataTypeEnum dataType({"USERDEFINED", "beam", "Beam_2"}, "IfcBeamTypeEnum");
    EXPECT_THAT(dataType.declared, ElementsAre("USERDEFINED", "BEAM", "BEAM_2"));
    std::vector<std::string> items;
    for (const std::string* pItem : dataType.items) items.push_back(*pItem);
    EXPECT_THAT(items, ElementsAre("BEAM", "BEAM_2", "USERDEFINED"));
    EXPECT_EQ(*dataType.items.find(std::string_view("BEAM")), &dataType.declared[1]);
    EXPECT_EQ(dataType.items.find(std::string_view("COLUMN")), dataType.items.end());
    EXPECT_FALSE(dataType.items.contains("BEA"));
    EXPECT_FALSE(dataType.items.contains("beam"));
    EXPECT_EQ(dataType.items.size(), 3U);
    const DataTypeEnum twice({"A", "B", "a"}, "IfcTwice");
    EXPECT_EQ(twice.declared.size(), 3U);
    EXPECT_THAT(twice.items, ElementsAre(&twice.declared[0], &twice.declared[1])) << "each text once";
    EXPECT_TRUE(DataTypeEnum({}, "IfcNone").items.empty());
    EXPECT_EQ(dataType.kind, DataKind::Enumeration);
    EXPECT_EQ(dataType.pElementGet(), nullptr);
}

TEST(ObjectTest, DerivesKeywordAndHashFromItsName) {
    const Entity entity("IfcWall");
    EXPECT_EQ(entity.eClassTag, ClassTag::Entity);
    EXPECT_EQ(static_cast<std::uint32_t>(entity.eClassTag), 2U);
    EXPECT_EQ(entity.sName, "IfcWall");
    EXPECT_EQ(entity.sNameUpper, "IFCWALL");
    EXPECT_EQ(entity.uNameHash, NameHash("IFCWALL"));
    EXPECT_EQ(Type("IfcLabel").eClassTag, ClassTag::Type);
    EXPECT_EQ(static_cast<std::uint32_t>(DataTypeSimple(DataKind::Real).eClassTag), 0U);
}

TEST(ObjectTest, DataTypeOfLooksThroughATypeOnly) {
    Graph graph;
    auto* pReal = graph.pData<DataTypeSimple>(DataKind::Real);
    EXPECT_EQ(pDataTypeOf(graph.pType("IfcLengthMeasure", pReal)), pReal);
    EXPECT_EQ(pDataTypeOf(pReal), pReal);
    EXPECT_EQ(pDataTypeOf(graph.pEntity("IfcWall")), nullptr);
    EXPECT_EQ(pDataTypeOf(nullptr), nullptr);
}

TEST(TypeText, ReadsAsDeclared) {
    Graph graph;
    const Entity* pWall = graph.pEntity("IfcWall");
    auto* pString = graph.pData<DataTypeSimple>(DataKind::String, "IfcGuid");
    pString->iWidth = 22;
    pString->boFixed = true;
    auto* pBinary = graph.pData<DataTypeSimple>(DataKind::Binary);
    pBinary->iWidth = 32;
    auto* pInner = graph.pData<DataTypeAggregate>(DataKind::List);
    pInner->pElement = pWall;
    pInner->sBounds = "[2:?]";
    pInner->boUnique = true;
    auto* pOuter = graph.pData<DataTypeAggregate>(DataKind::Array);
    pOuter->pElement = pInner;
    pOuter->sBounds = "[1:3]";
    pOuter->boOptional = true;
    auto* pBag = graph.pData<DataTypeAggregate>(DataKind::Set);
    pBag->boBag = true;
    pBag->pElement = graph.pData<DataTypeSimple>(DataKind::Number);
    auto* pSet = graph.pData<DataTypeAggregate>(DataKind::Set);
    auto* pSelect = graph.pData<DataTypeSelect>();
    pSelect->members = {pWall, pWall};

    struct Row {
        const char* sText;
        const ObjectBase* pObject;
    };
    const Row rows[] = {
        {"IfcWall", pWall},
        {"IfcGuid", graph.pType("IfcGuid", pString)},
        {"STRING(22) FIXED", pString},
        {"BINARY(32)", pBinary},
        {"LOGICAL", graph.pData<DataTypeSimple>(DataKind::Logical)},
        {"ARRAY [1:3] OF OPTIONAL LIST [2:?] OF UNIQUE IfcWall", pOuter},
        {"BAG OF NUMBER", pBag},
        {"SET OF ?", pSet},
        {"ENUMERATION OF (A, B)", graph.pData<DataTypeEnum>(std::vector<std::string>{"A", "B"})},
        {"SELECT (IfcWall, IfcWall)", pSelect},
        {"?", nullptr},
    };
    for (const Row& row : rows) EXPECT_EQ(sTypeText(row.pObject), row.sText);
}

}   // namespace
