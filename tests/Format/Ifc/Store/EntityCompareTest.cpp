// SPDX-License-Identifier: Apache-2.0
// Comparison of instances, along all their references, however many there are and wherever they lead.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/OnThreads.h"
#include "Format/Ifc/StatementReader.h"

namespace oxa::ifc {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;

// #5 and #6 have the same content, #7 has another; nobody defines #99.
class EntityReader : public StatementReader {
public:
    EntityReader() {
        for (const char* sThing : {"#5=IFCTHING('a');", "#6=IFCTHING('a');", "#7=IFCTHING('b');"}) pRead(sThing);
    }
};

TEST(CompareEntity, AllAttributesOfOneType) {
    const struct {
        const char* sLeft;
        const char* sRight;
        bool boEqual;
    } rows[] = {
        {"IFCTHING('a')", "IFCTHING('a')", true},
        {"IFCTHING('a')", "IFCTHING('b')", false},
        {"IFCTHING($)", "IFCTHING($)", true},
        {"IFCREAL(1.)", "IFCNUMBER(1.)", false},
        {"IFCFLAGPAIR(.T.,1.)", "IFCFLAGPAIR(.T.,1.)", true},
        {"IFCFLAGPAIR(.T.,1.)", "IFCFLAGPAIR(.T.,2.)", false},
        {"IFCFLAGPAIR(.T.,1.)", "IFCFLAGPAIR(.F.,1.)", false},
        {"IFCNOTHING()", "IFCNOTHING()", false},
        {"IFCREFERENCE(#5)", "IFCREFERENCE(#6)", true},
        {"IFCREFERENCE(#5)", "IFCREFERENCE(#7)", false},
        {"IFCTABLE(((1.)))", "IFCTABLE(((1.)))", false},
        {"IFCSELECT(#5)", "IFCSELECT(#5)", false},
        {"IFCEVERYKIND(1.,.T.,2,3.,'a','0TdSR4dSbLuwdbL5HLUvM0',.U.,\"0AB\",.RED.,IFCLABEL('a'),(1.),(2.),(3.),#5)",
         "IFCEVERYKIND(1.,.T.,2,3.,'a','0TdSR4dSbLuwdbL5HLUvM0',.U.,\"0AB\",.RED.,IFCLABEL('a'),(1.),(2.),(3.),#6)",
         true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.sLeft) + " and " + row.sRight);
        EntityReader reader;
        const Entity* pLeft = reader.pRead(std::string("#20=") + row.sLeft + ';');
        const Entity* pRight = reader.pRead(std::string("#21=") + row.sRight + ';');
        EXPECT_EQ(pLeft->boIsEqual(*pRight), row.boEqual);
        EXPECT_EQ(pRight->boIsEqual(*pLeft), row.boEqual);
    }
}

TEST(CompareEntity, UnequalToItself) {
    EntityReader reader;
    for (const char* sStatement :
         {"#20=IFCNOTHING();", "#21=IFCTABLE(((1.)));", "#22=IFCSELECT(#5);", "#23=IFCREFERENCESET((#99));"}) {
        SCOPED_TRACE(sStatement);
        const Entity* pEntity = reader.pRead(sStatement);
        EXPECT_FALSE(pEntity->boIsEqual(*pEntity));
    }
    const Entity empty;
    EXPECT_FALSE(empty.boIsEqual(empty)) << "no type";
    const Entity* pReference = reader.pRead("#24=IFCREFERENCE(#99);");
    EXPECT_TRUE(pReference->boIsEqual(*pReference)) << "a reference to the same place needs no content there";
}

TEST(CompareEntity, BothNeedABlockAndItsLayout) {
    // A graph of its own, whose layouts nobody has built.
    const auto pSchema = pSchemaOf("ENTITY IfcThing; Flag : BOOLEAN; END_ENTITY;");
    const auto* pType = pSchema->pEntityFromName(ObjectName("IFCTHING"));
    AttributeBoolean left;
    AttributeBoolean right;
    Entity a;
    Entity b;
    a.unsafeSetSchemaEntity(pType);
    b.unsafeSetSchemaEntity(pType);
    EXPECT_FALSE(a.boIsEqual(b)) << "no block";
    a.unsafeAttributesRaw() = &left;
    EXPECT_FALSE(a.boIsEqual(b));
    EXPECT_FALSE(b.boIsEqual(a));
    b.unsafeAttributesRaw() = &right;
    EXPECT_FALSE(a.boIsEqual(b)) << "no layout";
    (void)Entity::getDataSize(*pType);
    EXPECT_TRUE(a.boIsEqual(b));
    right.m_value = 1;
    EXPECT_FALSE(a.boIsEqual(b));
}

TEST(CompareEntity, AttributeWithoutATypeIsUnequal) {
    for (const auto& types : {std::vector<const def::schema::ObjectBase*>{}, {nullptr}}) {
        SCOPED_TRACE(types.size());
        const auto pSchema = pSchemaWithSecondOf(types);
        const AssertLog log;
        Data data;
        data.vSchemaSet(pSchema.get());
        const Entity* pEntity = data.pEntityCreate(ObjectName("IFCFAULTY"));
        EXPECT_FALSE(pEntity->boIsEqual(*pEntity));
    }
}

TEST(CompareEntity, AttributeOfAnotherKindCountsAsEqual) {
    static const def::schema::DataTypeBase g_strange(static_cast<def::schema::DataKind>(12));
    const auto pSchema = pSchemaWithSecondOf({&g_strange});
    const AssertLog log;
    const auto* pType = pSchema->pEntityFromName(ObjectName("IFCFAULTY"));
    std::array<std::byte, 2 * sizeof(AttributeReal)> left{};
    std::array<std::byte, 2 * sizeof(AttributeReal)> right{};
    ASSERT_EQ(Entity::getDataSize(*pType).iSize, left.size()) << "no bytes for it";
    Entity a;
    Entity b;
    a.unsafeSetSchemaEntity(pType);
    b.unsafeSetSchemaEntity(pType);
    a.unsafeAttributesRaw() = left.data();
    b.unsafeAttributesRaw() = right.data();
    EXPECT_TRUE(a.boIsEqual(b));
    reinterpret_cast<AttributeReal*>(right.data() + sizeof(AttributeReal))->m_value = 1.0;
    EXPECT_FALSE(a.boIsEqual(b)) << "the attribute behind it counts";
}

TEST(CompareEntity, InverseListsDontCount) {
    const auto pSchema = pSchemaOf(R"(
        ENTITY IfcThing; Name : STRING; INVERSE Users : SET OF IfcUser FOR Uses; END_ENTITY;
        ENTITY IfcUser; Uses : IfcThing; END_ENTITY;)");
    StatementReader reader(*pSchema);
    const Entity* pUsed = reader.pRead("#1=IFCTHING('a');");
    const Entity* pUnused = reader.pRead("#2=IFCTHING('a');");
    Entity* pUser = reader.pRead("#3=IFCUSER(#1);");
    pUser->vAttributeInverseInit(reader.data);
    ASSERT_EQ(pUsed->entitiesInverseFromIndex(0).size(), 1U);
    EXPECT_TRUE(pUsed->boIsEqual(*pUnused));
}

// -------------------------------------------------------------------------------------------------- long and round

const def::SchemaPset& linkSchema() {
    static const auto pSchema = pSchemaOf(R"(
        ENTITY IfcLink; Index : INTEGER; Next : OPTIONAL IfcLink; Others : OPTIONAL LIST OF IfcLink; END_ENTITY;)");
    return *pSchema;
}

class Links {
public:
    Links() { m_data.vSchemaSet(&linkSchema()); }

    // iCount links, numbered from 0 within iPeriod, each with the next; the last with the first if so wished.
    std::vector<Entity*> chain(std::size_t iCount, std::size_t iPeriod, bool boRound) {
        std::vector<Entity*> links;
        for (std::size_t i = 0; i < iCount; ++i) {
            links.push_back(m_data.pEntityCreate(linkSchema().pEntityFromName(ObjectName("IFCLINK"))));
            vIndexSet(*links.back(), static_cast<long long>(i % iPeriod));
            if (i) vNext(*links[i - 1], links[i]);
        }
        if (boRound) vNext(*links.back(), links.front());
        return links;
    }
    static void vIndexSet(const Entity& link, long long iIndex) {
        auto& cell = static_cast<AttributeInteger&>(*link.pAttributeFromIndex(0).second);
        cell.m_value = iIndex;
        cell.vDefined();
    }
    static void vNext(const Entity& link, Entity* pNext) {
        auto& cell = static_cast<AttributeEntity&>(*link.pAttributeFromIndex(1).second);
        cell.m_value = pNext;
        cell.vDefined();
    }
    void vOthers(Entity& link, const std::vector<Entity*>& others) {
        EXPECT_TRUE(link.boListValueSet(AttributeName("Others"), others, m_data));
    }

private:
    Data m_data;
};

TEST(CompareEntity, ChainOfAMillionReferences) {
    constexpr std::size_t g_iLinks = 1'000'000;
    Links links;
    const std::vector<Entity*> left = links.chain(g_iLinks, g_iLinks, false);
    const std::vector<Entity*> right = links.chain(g_iLinks, g_iLinks, false);
    EXPECT_TRUE(left.front()->boIsEqual(*right.front()));
    Links::vIndexSet(*right.back(), -1);
    EXPECT_FALSE(left.front()->boIsEqual(*right.front())) << "the last of them counts";
}

TEST(CompareEntity, CyclesEnd) {
    const struct {
        const char* sRule;
        std::size_t iLeft;
        std::size_t iRight;
        std::size_t iPeriod;
        bool boEqual;
    } rows[] = {
        {"one that refers to itself", 1, 1, 1, true},    {"one round and two", 1, 2, 1, true},
        {"rounds of different length", 12, 18, 6, true}, {"rounds of other content", 12, 18, 12, false},
        {"a long round", 20000, 20000, 20000, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        Links links;
        const std::vector<Entity*> left = links.chain(row.iLeft, row.iPeriod, true);
        const std::vector<Entity*> right = links.chain(row.iRight, row.iPeriod, true);
        EXPECT_EQ(left.front()->boIsEqual(*right.front()), row.boEqual);
        EXPECT_TRUE(left.front()->boIsEqual(*left.front()));
        Links::vIndexSet(*right.back(), -1);
        EXPECT_FALSE(left.front()->boIsEqual(*right.front())) << "a difference within the round";
    }
}

// Every link names all links of the next row: 2 to the 60 ways lead to the last row.
TEST(CompareEntity, ManyWaysToOneInstanceAreOneComparison) {
    Links links;
    std::vector<Entity*> tops;
    std::vector<Entity*> bottoms;
    for (int i = 0; i < 2; ++i) {
        std::vector<Entity*> row = links.chain(2, 2, false);
        bottoms.push_back(row[1]);
        for (int k = 0; k < 60; ++k) {
            std::vector<Entity*> above = links.chain(2, 2, false);
            for (Entity* pLink : above) links.vOthers(*pLink, row);
            row = above;
        }
        tops.push_back(row[0]);
    }
    EXPECT_TRUE(tops[0]->boIsEqual(*tops[1]));
    Links::vIndexSet(*bottoms[1], 7);
    EXPECT_FALSE(tops[0]->boIsEqual(*tops[1]));
}

TEST(CompareEntity, AnyNumberOfThreads) {
    Links links;
    const std::vector<Entity*> left = links.chain(500, 500, true);
    const std::vector<Entity*> right = links.chain(500, 500, true);
    std::array<bool, 4> results{};
    vOnThreads(results.size(), [&](std::size_t i) { results[i] = left[i]->boIsEqual(*right[i]); });
    EXPECT_EQ(results, (std::array<bool, 4>{true, true, true, true}));
}

}   // namespace
}   // namespace oxa::ifc
