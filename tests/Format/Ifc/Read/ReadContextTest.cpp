// SPDX-License-Identifier: Apache-2.0
// The entity table: each number its place, whoever asks first.
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/ReadThread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/OnThreads.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

using testing::Each;
using testing::ElementsAre;

class EntityTable : public testing::Test {
protected:
    Data data;
    io::ReadError errors;
    ReadInfoCommon info{errors};
};

TEST_F(EntityTable, GivesEachNumberItsPlace) {
    EntitySlot* pChunk0 = info.pChunkGet(data, 0);
    EXPECT_EQ(&info.slotGet(data, 0), pChunk0);
    EXPECT_EQ(&info.slotGet(data, 32767), pChunk0 + 32767);
    EXPECT_EQ(&info.slotGet(data, 32768), info.pChunkGet(data, 1));
    EXPECT_EQ(&info.slotGet(data, 32'768'000), info.pChunkGet(data, 1000));
    EXPECT_EQ(&info.slotGet(data, 0xFFFFFFFFU), info.pChunkGet(data, 131071) + 32767);
    EXPECT_EQ(&info.slotGet(data, 0x1'0000'0000), info.pChunkGet(data, 131072));
    EXPECT_EQ(&info.slotGet(data, 0x1'0000'0001), info.pChunkGet(data, 131072) + 1) << "found again";
    EXPECT_EQ(data.pool().iBytesReserved(), 5 * ReadInfoCommon::g_iChunkBytes);
    EXPECT_EQ(sZeroed(info.pChunkGet(data, 1), ReadInfoCommon::g_iChunkBytes), "zeroed");
}

// Behind a chunk that is in use all over, the next one is a piece of a segment.
TEST_F(EntityTable, DenseNumbersShareSegments) {
    static_cast<void>(data.pool().pAllocate(4 * ReadInfoCommon::g_iChunkBytes));
    const std::size_t iBefore = data.pool().iBytesReserved();
    for (std::uint32_t iId = 0; iId < 3 * 32768; iId += 100) info.slotGet(data, iId).vReferencedSet();
    EXPECT_EQ(data.pool().iBytesReserved() - iBefore, 3 * ReadInfoCommon::g_iChunkBytes);
    EXPECT_EQ(info.pChunkGet(data, 1) + 32768, info.pChunkGet(data, 2));
    EXPECT_FALSE(info.slotGet(data, 70'001).boReferenced());
    EXPECT_TRUE(info.slotGet(data, 70'000).boReferenced());
}

// Statements name what comes some chunks later, before the chunks between them are full.
TEST_F(EntityTable, NumbersAheadOfAFullChunkShareSegments) {
    static_cast<void>(data.pool().pAllocate(4 * ReadInfoCommon::g_iChunkBytes));
    for (std::uint32_t iId = 0; iId < 32768; iId += 100) info.slotGet(data, iId).vReferencedSet();
    struct Row {
        std::size_t iChunk;
        std::size_t iReserved;   // chunks
    };
    for (const Row& row : {Row{4, 2}, Row{3, 0}, Row{2, 2}, Row{1, 0}, Row{5, 1}, Row{999, 1}, Row{4, 0}}) {
        const std::size_t iBefore = data.pool().iBytesReserved();
        info.slotGet(data, row.iChunk * 32768 + 7).vReferencedSet();
        EXPECT_EQ(data.pool().iBytesReserved() - iBefore, row.iReserved * ReadInfoCommon::g_iChunkBytes)
            << "chunk " << row.iChunk;
    }
}

// Where it is known how much is to come, instances are expected to have numbers without gaps.
TEST_F(EntityTable, ExpectedNumbersShareSegments) {
    struct Row {
        std::size_t iExpected;   // chunks
        std::size_t iChunk;
        std::size_t iReserved;   // chunks
    };
    for (const Row& row : {Row{0, 9, 1}, Row{3, 1, 2}, Row{3, 0, 0}, Row{3, 3, 1}, Row{3, 2, 2}, Row{3, 4, 1},
                           Row{6, 5, 0}, Row{6, 6, 1}}) {
        data.pool().vExpect(row.iExpected * ReadInfoCommon::g_iChunkBytes);
        const std::size_t iBefore = data.pool().iBytesReserved();
        info.slotGet(data, row.iChunk * 32768 + 7).vReferencedSet();
        EXPECT_EQ(data.pool().iBytesReserved() - iBefore, row.iReserved * ReadInfoCommon::g_iChunkBytes)
            << "chunk " << row.iChunk;
    }
}

// What goes back to the system is what nothing stands in: at the end of a chunk, in its middle, at its begin.
TEST_F(EntityTable, TrimKeepsWhatIsUsed) {
    const auto* pType = SchemaLoader::pBuiltIn("IFC4")->pEntityFromName(def::schema::ObjectName("IFCDIRECTION"));
    data.pool().vExpect(2 * ReadInfoCommon::g_iChunkBytes);
    const std::vector<std::size_t> ids{5, 127, 2'500, 2'600, 10'000, 32'768 + 20'000, 32'768 + 32'767, 100'000};
    for (const std::size_t iId : ids) {
        EntitySlot& slot = info.slotGet(data, iId);
        slot.vReferencedSet();
        slot.entity.vSchemaEntitySet(data, *pType, true);
    }
    info.vTrim();
    std::vector<std::size_t> defined;
    info.vForEachSlot([&](std::size_t iId, EntitySlot& slot) {
        if (slot.boReferenced() && slot.entity.pSchemaEntity() == pType) defined.push_back(iId);
    });
    EXPECT_EQ(defined, ids);
    for (const std::size_t iId : {std::size_t{6}, std::size_t{5'000}, std::size_t{32'768}, std::size_t{32'767}})
        EXPECT_EQ(sZeroed(&info.slotGet(data, iId), sizeof(EntitySlot)), "zeroed") << iId;
}

TEST_F(EntityTable, VisitsTouchedPagesInOrder) {
    for (const std::size_t iId : {40'000'000ULL, 5ULL, 70'000ULL, 32'768'000ULL, 0xFFFF'FFFFULL,
                                  0x7FFF'FFFF'FFFF'FFFFULL, 0x1'0000'0000ULL, 32'767'999ULL})
        info.slotGet(data, iId).vReferencedSet();
    std::vector<std::size_t> referenced;
    std::size_t iVisited = 0;
    info.vForEachSlot([&](std::size_t iId, EntitySlot& slot) {
        ++iVisited;
        if (slot.boReferenced()) referenced.push_back(iId);
    });
    EXPECT_THAT(referenced, ElementsAre(5, 70'000, 32'767'999, 32'768'000, 40'000'000, 0xFFFF'FFFFULL, 0x1'0000'0000ULL,
                                        0x7FFF'FFFF'FFFF'FFFFUL));
    EXPECT_EQ(iVisited, 8 * 128U);
}

// Whoever has a chunk may use all of it without a word.
TEST_F(EntityTable, VisitsAllOfAChunkThatSomebodyAskedFor) {
    const auto* pType = SchemaLoader::pBuiltIn("IFC4")->pEntityFromName(def::schema::ObjectName("IFCDIRECTION"));
    for (const std::size_t iChunk : {std::size_t{1}, std::size_t{1001}}) {
        EntitySlot& slot = info.pChunkGet(data, iChunk)[30'000];
        slot.vReferencedSet();
        slot.entity.vSchemaEntitySet(data, *pType, true);
    }
    info.vTrim();
    std::vector<std::size_t> defined;
    std::size_t iVisited = 0;
    info.vForEachSlot([&](std::size_t iId, EntitySlot& slot) {
        ++iVisited;
        if (slot.boReferenced() && slot.entity.pSchemaEntity()) defined.push_back(iId);
    });
    EXPECT_THAT(defined, ElementsAre(32'768 + 30'000, 1001 * 32'768 + 30'000));
    EXPECT_EQ(iVisited, 2 * ReadInfoCommon::g_iSlotsPerChunk);
    EXPECT_TRUE(data.boFinished(info, true));
    EXPECT_EQ(data.pEntityFromId(62'768), &info.slotGet(data, 62'768).entity);
}

TEST_F(EntityTable, ThreadsThatRaceForAChunkGetTheSame) {
    // Many chunks in a row: threads that met at one meet again at the next.
    constexpr std::size_t g_iChunks = 200;
    for (const std::size_t iFirst : {std::size_t{5}, std::size_t{1005}}) {
        const std::size_t iBefore = data.pool().iBytesReserved();
        std::vector<std::vector<EntitySlot*>> got(8);
        vOnThreads(8, [&](std::size_t i) {
            for (std::size_t k = 0; k < g_iChunks; ++k) got[i].push_back(info.pChunkGet(data, iFirst + k));
        });
        EXPECT_THAT(got, Each(got[0]));
        EXPECT_EQ(data.pool().iBytesReserved() - iBefore, g_iChunks * ReadInfoCommon::g_iChunkBytes);
    }
}

TEST_F(EntityTable, ThreadsMarkSlotsTogether) {
    vOnThreads(8, [&](std::size_t i) {
        for (std::uint32_t iId = 0; iId < 100'000; ++iId)
            if (iId % 8 <= i) info.slotGet(data, iId).vReferencedSet();
    });
    std::size_t iReferenced = 0;
    info.vForEachSlot([&](std::size_t, EntitySlot& slot) { iReferenced += slot.boReferenced(); });
    EXPECT_EQ(iReferenced, 100'000U);
}

TEST_F(EntityTable, ASlotIsHeldByOneAtATime) {
    EntitySlot& slot = info.slotGet(data, 1);
    int iCount = 0;   // unguarded but for the lock
    vOnThreads(8, [&](std::size_t) {
        for (int i = 0; i < 2000; ++i) {
            const EntitySlotLock lock(slot);
            ++iCount;
        }
    });
    EXPECT_EQ(iCount, 16000);
}

// What a thread remembers of types never answers for another keyword, nor for another schema.
TEST(StepReadThread, FindsTheTypesThatTheSchemaHas) {
    Pool pool;
    StepReadThread thread(pool);
    const def::SchemaPset* schemas[] = {SchemaLoader::pSchemaGet({}, "IFC4"), SchemaLoader::pSchemaGet({}, "IFC2X3")};
    for (int iRound = 0; iRound < 2; ++iRound)
        for (const def::SchemaPset* pSchema : schemas)
            for (const def::SchemaPset* pNames : schemas)
                for (const def::schema::Schema::Record& record : pNames->objects)
                    ASSERT_EQ(thread.pEntityFromKeyword(*pSchema, record.key),
                              pSchema->pEntityFromName(def::schema::ObjectName(record.key)))
                        << record.key << " in " << pSchema->sName;
    // The same keyword of one schema right after the other.
    for (const def::schema::Schema::Record& record : schemas[0]->objects)
        for (const def::SchemaPset* pSchema : schemas)
            ASSERT_EQ(thread.pEntityFromKeyword(*pSchema, record.key),
                      pSchema->pEntityFromName(def::schema::ObjectName(record.key)))
                << record.key << " in " << pSchema->sName;
    for (const char* sKeyword : {"", "X", "IFCWAL", "IFCWALLL", "IfcWall", "IFCLABEL", " IFCWALL"})
        EXPECT_EQ(thread.pEntityFromKeyword(*schemas[0], sKeyword), nullptr) << sKeyword;
}

// The type that followed the last one is expected again, and taken where all of its name stands there, with "(" behind it.
TEST(StepReadThread, ExpectsTheTypeThatFollowed) {
    Pool pool;
    StepReadThread thread(pool);
    const def::SchemaPset& ifc4 = *SchemaLoader::pSchemaGet({}, "IFC4");
    const auto sExpected = [&](const def::SchemaPset& schema, std::string_view text) {
        const def::schema::Entity* pType = thread.pEntityExpected(schema, text.data(), text.data() + text.size());
        return pType ? pType->sName : std::string();
    };
    const auto vMeet = [&](const char* sKeyword) {
        const def::schema::Entity* pType = thread.pEntityFromKeyword(ifc4, sKeyword);
        ASSERT_NE(pType, nullptr);
        thread.vEntityMet(*pType);
    };
    EXPECT_EQ(sExpected(ifc4, "IFCWALL("), "") << "nothing was met";
    for (const char* sKeyword : {"IFCWALL", "IFCSLAB", "IFCWALL"}) vMeet(sKeyword);
    for (const std::string_view text :
         {"", "I", "IFCSLA", "IFCSLAB", "IFCSLABX(", "IFCWALL(", "IFCSLAC(", "ifcslab(", "(IFCSLAB("})
        EXPECT_EQ(sExpected(ifc4, text), "") << text;
    EXPECT_EQ(sExpected(*SchemaLoader::pSchemaGet({}, "IFC2X3"), "IFCSLAB("), "") << "another schema";
    EXPECT_EQ(sExpected(ifc4, "IFCSLAB("), "IfcSlab") << "behind a wall";
    EXPECT_EQ(sExpected(ifc4, "IFCSLAB("), "") << "behind a slab";
    EXPECT_EQ(sExpected(ifc4, "IFCWALL(#1);"), "IfcWall");
}

// Where a statement names a number, its place is that of the table; that it was named is told when the thread ends.
TEST_F(EntityTable, WhatAThreadNamesIsKeptBesideIt) {
    const auto pThread = std::make_unique<StepReadThread>(data.pool());
    const std::vector<std::uint32_t> near{0, 63, 64, 32'767, 32'768, 32'767'999};
    for (const std::uint32_t iId : near)
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(pThread->pNamed(info, data, iId), &info.pChunkGet(data, iId / 32768)[iId % 32768].entity) << iId;
            EXPECT_FALSE(info.slotGet(data, iId).boReferenced()) << iId;
        }
    for (const std::uint32_t iId : {32'768'000U, 4'294'967'291U})
        EXPECT_EQ(pThread->pNamed(info, data, iId), nullptr) << iId << ": its slot has to say so";

    details::NumberSet all;
    EXPECT_TRUE(all.boAdd(64));
    EXPECT_TRUE(all.boAdd(5));
    pThread->vNamedInto(all);
    std::vector<std::uint32_t> named;
    for (std::uint32_t iChunk = 0; iChunk < 1000; ++iChunk)
        for (std::uint32_t i = 0; all.pChunk(iChunk) && i < 32768; ++i)
            if ((*all.pChunk(iChunk))[i / 64] >> i % 64 & 1U) named.push_back(iChunk * 32768 + i);
    EXPECT_THAT(named, ElementsAre(0, 5, 63, 64, 32'767, 32'768, 32'767'999));
}

// Pages that only a thread has named are visited like those that were touched.
TEST_F(EntityTable, VisitsThePagesThatAreNoted) {
    static_cast<void>(info.slotGet(data, 300));
    ReadInfoCommon::Chunk& chunk = *info.chunks().at(0).second;
    std::array<std::uint64_t, ReadInfoCommon::g_iSlotsPerChunk / 64> named{};
    named[1000 / 64] = 1;
    named[32'767 / 64] = std::uint64_t{1} << 63;
    chunk.vNote(named);
    std::vector<std::size_t> pages;
    info.vForEachSlot([&](std::size_t iId, EntitySlot&) {
        if (iId % 128 == 0) pages.push_back(iId / 128);
    });
    EXPECT_THAT(pages, ElementsAre(2, 7, 255));
}

// What it remembers of one search never answers for another, in whatever order they come.
TEST(StepReadInfoData, FindsTheNextParenthesis) {
    io::ReadError errors;
    StepReadInfoDataCommon common(errors);
    const std::string_view line = "a(bc(d)e";
    for (std::size_t iFirst = 0; iFirst <= line.size(); ++iFirst)
        for (std::size_t iSecond = 0; iSecond <= line.size(); ++iSecond) {
            StepReadInfoData info(line, 1, common);
            EXPECT_EQ(info.iParenthesisFind(iFirst), line.find('(', iFirst)) << iFirst;
            EXPECT_EQ(info.iParenthesisFind(iSecond), line.find('(', iSecond)) << iSecond << " after " << iFirst;
        }
}

}   // namespace
}   // namespace oxa::ifc
