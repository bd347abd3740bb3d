// SPDX-License-Identifier: Apache-2.0
// Parsing on several threads: every statement once, whatever their count, and the model of a single-threaded read.
#include "Format/Ifc/IfcLineReadThreadPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <set>
#include <thread>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/SmallModel.h"
#include "platform/Localization.h"
#include "system/System.h"

namespace oxa::ifc::io {
namespace {

// A file whose statements come straight from the test.
struct PoolRead {
    File file;
    ReadError errors;
    StepReadInfoDataCommon common{errors};
    std::optional<IfcLineReadThreadPool> pool;

    explicit PoolRead(bool boOneWorker = false, const def::SchemaPset& schema = smallSchema()) {
        file.vSchemaSet(schema);
        common.vUpdateSchemaCache(schema);
        pool.emplace(common, file, boOneWorker);
    }
    const Data& data() const { return file.data(); }
    // The statement of a number; empty for a slot that nothing defined.
    std::string sStatement(std::uint32_t iId) {
        const Entity& entity = common.slotGet(file.data(), iId).entity;
        std::string sLine = entity.sWriteLine(data());
        return sLine.empty() ? sLine : sLine.substr(sLine.find('='));
    }
};

std::string sPoint(std::size_t iId) { return '#' + std::to_string(iId) + "=IFCPOINT((" + std::to_string(iId) + ".));"; }

TEST(LineReadThreadPool, ReadsEveryStatementOnce) {
    for (const bool boOneWorker : {false, true}) {
        for (const std::size_t iCount : {0U, 1U, 2U, 199U, 200U, 201U, 399U, 400U, 401U, 1000U, 2345U}) {
            SCOPED_TRACE(std::to_string(iCount) + " statements" + (boOneWorker ? ", one worker" : ""));
            PoolRead read(boOneWorker);
            for (std::size_t i = 1; i <= iCount; ++i) read.pool->addLineToQueue(sPoint(i), static_cast<unsigned>(i));
            read.pool.reset();
            EXPECT_EQ(read.data().entities().size(), iCount);
            EXPECT_EQ(std::set<Entity*>(read.data().entities().begin(), read.data().entities().end()).size(), iCount);
            for (std::uint32_t i = 1; i <= iCount; ++i)
                ASSERT_EQ(read.sStatement(i), "=IFCPOINT((" + std::to_string(i) + ".));");
            EXPECT_TRUE(read.errors.records().empty());
        }
    }
}

TEST(LineReadThreadPool, ParsesFewerThanABatchAtTheEndAlone) {
    PoolRead read;
    for (std::size_t i = 1; i <= 199; ++i) read.pool->addLineToQueue(sPoint(i), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));   // five looks of an idle worker
    EXPECT_TRUE(read.data().entities().empty());
    read.pool.reset();
    EXPECT_EQ(read.data().entities().size(), 199U);
}

TEST(LineReadThreadPool, StartsItsThreadsWithTheFirstStatement) {
    std::thread([] {}).join();   // a race detector starts a thread of its own beside the first one
    const std::size_t iBefore = test::iThreadsNow();
    if (iBefore == 0) GTEST_SKIP() << "the system does not count threads";
    for (const bool boOneWorker : {false, true}) {
        SCOPED_TRACE(boOneWorker);
        PoolRead read(boOneWorker);
        EXPECT_EQ(test::iThreadsNow(), iBefore);
        read.pool->addLineToQueue(sPoint(1), 1);
        const std::size_t iWorkers = boOneWorker ? 1 : IfcLineReadThreadPool::iWorkerCount();
        EXPECT_EQ(test::iThreadsNow(), iBefore + iWorkers);
        read.pool->addLineToQueue(sPoint(2), 2);
        EXPECT_EQ(test::iThreadsNow(), iBefore + iWorkers);
        read.pool.reset();
        EXPECT_EQ(test::iThreadsNow(), iBefore);
    }
}

TEST(LineReadThreadPool, HasWorkersForHalfTheMachine) {
    // By halves of the machine, from none on: two threads more are one worker more once the half is above four.
    constexpr std::array<std::size_t, 33> workersOfHalf = {2,  2,  2,  2,  2,  3,  4,  5,  6,  7,  8,
                                                           9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19,
                                                           20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30};
    for (unsigned iHardware = 0; iHardware <= 64; ++iHardware) {
        SCOPED_TRACE(iHardware);
        EXPECT_EQ(IfcLineReadThreadPool::iWorkersOf(iHardware), workersOfHalf.at(iHardware / 2));
    }
    EXPECT_EQ(IfcLineReadThreadPool::iWorkerCount(),
              IfcLineReadThreadPool::iWorkersOf(std::thread::hardware_concurrency()));
}

TEST(LineReadThreadPool, CopiesTheStatement) {
    PoolRead read;
    std::string line = sPoint(1);
    read.pool->addLineToQueue(line, 1);
    EXPECT_EQ(line, sPoint(1));
    line.assign(line.size(), '?');
    read.pool.reset();
    EXPECT_EQ(read.sStatement(1), "=IFCPOINT((1.));");
}

TEST(LineReadThreadPool, ReusesBatchesWithoutMixingTheirTexts) {
    PoolRead read(true);
    // Long and short statements in the places of each other, pauses so that batches come back.
    for (std::uint32_t i = 1; i <= 5000; ++i) {
        const std::string sItem = std::to_string(i) + ".";
        std::string sItems = sItem;
        for (std::uint32_t k = 0; k < i * 7 % 23; ++k) sItems += ',' + sItem;
        if (i == 1234) sItems += std::string(100'000, ' ') + ",0.";   // too large to be kept
        read.pool->addLineToQueue('#' + std::to_string(i) + "=IFCPOINT((" + sItems + "));", i);
        if (i % 500 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
    read.pool.reset();
    EXPECT_EQ(std::set<Entity*>(read.data().entities().begin(), read.data().entities().end()).size(), 5000U);
    ASSERT_EQ(read.data().entities().size(), 5000U);
    for (std::uint32_t i = 1; i <= 5000; ++i) {
        if (i == 1234) continue;
        const std::string sItem = std::to_string(i) + ".";
        std::string sExpected = "=IFCPOINT((" + sItem;
        for (std::uint32_t k = 0; k < i * 7 % 23; ++k) sExpected += ',' + sItem;
        ASSERT_EQ(read.sStatement(i), sExpected + "));");
    }
}

// What a fatal statement leaves undone is the scanner's business: all that is queued is parsed and finalised.
TEST(LineReadThreadPool, ParsesOnAfterAFatalFault) {
    PoolRead read;
    constexpr std::size_t g_iCount = 1500;
    for (std::size_t i = 1; i <= g_iCount; ++i)
        read.pool->addLineToQueue(i % 300 == 1 ? "#x=IFCPOINT((1.));" : sPoint(i), static_cast<unsigned>(i));
    read.pool.reset();
    EXPECT_TRUE(read.errors.boFatal());
    EXPECT_EQ(read.data().entities().size(), g_iCount - 5);
    std::multiset<std::string> expected;
    for (const char* sLine : {"1", "301", "601", "901", "1201"})
        expected.insert("1|0|" + localize("Ifc", "Error_ExpectedLeftParenthesis") + "|#x=IFCPOINT((1.));|" + sLine);
    EXPECT_EQ(recordTexts(read.errors), expected);
}

TEST(LineReadThreadPool, PairsResultsWithTheirStatements) {
    PoolRead read;
    // Unknown types make no entity; every third element repeats the GUID of the one before, which only the
    // collector can tell, and it must name the right statement.
    std::multiset<std::string> expected;
    for (std::uint32_t i = 1; i <= 1000; ++i) {
        const std::uint32_t iGuid = i % 3 == 0 ? 0 : i;
        const std::string sLine = '#' + std::to_string(i) + (i % 5 == 0 ? "=IFCNONE(" : "=IFCELEMENT('") +
                                  (iGuid ? sGuidOf(iGuid) : "0000000000000000000000") + "',$,$,$);";
        read.pool->addLineToQueue(sLine, i);
        const auto expect = [&](const char* sKey) {
            expected.insert("0|2|" + localize("Ifc", sKey) + '|' + sLine + '|' + std::to_string(i));
        };
        if (i % 5 == 0)
            expect("Error_UnknownEntityType");
        else if (iGuid == 0)
            expect("Error_UnexpectedNullGuid");
    }
    read.pool.reset();
    EXPECT_EQ(read.data().entities().size(), 800U);
    EXPECT_EQ(recordTexts(read.errors), expected);
}

// Batches take from some microseconds to some hundred, so that they finish out of turn.
TEST(LineReadThreadPool, EntersInTheOrderOfTheFile) {
    for (const bool boOneWorker : {false, true}) {
        PoolRead read(boOneWorker);
        constexpr std::uint32_t g_iCount = 60'000;   // all batches come back several times
        for (std::uint32_t i = g_iCount; i > 0; --i) {
            std::string sItems = "1.";
            if (i / 200 % 3 == 0)
                for (int k = 0; k < 30; ++k) sItems += ",2.5";
            read.pool->addLineToQueue('#' + std::to_string(i) + "=IFCPOINT((" + sItems + "));", 1);
        }
        read.pool.reset();
        const auto& entities = read.data().entities();
        ASSERT_EQ(entities.size(), g_iCount);
        for (std::uint32_t i = 0; i < g_iCount; ++i)
            ASSERT_EQ(entities[i], &read.common.slotGet(read.file.data(), g_iCount - i).entity)
                << boOneWorker << ' ' << i;
    }
}

TEST(LineReadThreadPool, OfEqualGuidsTheFirstInTheFileIsKept) {
    PoolRead read;
    std::multiset<std::string> expected;
    for (std::uint32_t i = 1; i <= 6000; ++i) {
        const std::string sLine = '#' + std::to_string(i) + "=IFCELEMENT('" + sGuidOf(i % 1500) + "',$,$,$);";
        read.pool->addLineToQueue(sLine, i);
        if (i > 1500)
            expected.insert("0|2|" + localize("Ifc", "Error_DuplicateGuids") + '|' + sLine + '|' + std::to_string(i));
    }
    read.pool.reset();
    EXPECT_EQ(recordTexts(read.errors), expected);
    for (std::uint32_t i = 1; i <= 1500; ++i)
        ASSERT_EQ(read.data().guidEntityMap().pFind(IfcGuid::fromIfcGuid(sGuidOf(i % 1500)).value()),
                  &read.common.slotGet(read.file.data(), i).entity);
}

TEST(LineReadThreadPool, KeepsTheOrderWithinABatch) {
    PoolRead read;
    for (std::uint32_t i = 1; i <= 100; ++i)
        read.pool->addLineToQueue('#' + std::to_string(i) + "=IFCELEMENT('" + sGuidOf(i % 10) + "',$,$,$);", i);
    read.pool.reset();
    ASSERT_EQ(read.data().guidEntityMap().size(), 10U);
    for (std::uint32_t i = 1; i <= 10; ++i)
        EXPECT_EQ(read.data().guidEntityMap().pFind(IfcGuid::fromIfcGuid(sGuidOf(i % 10)).value()),
                  &read.common.slotGet(read.file.data(), i).entity);
    EXPECT_EQ(read.errors.records().size(), 90U);
}

// Such a file is faulty. Which statement wins is open, but the entity is one of them, untorn.
TEST(LineReadThreadPool, SurvivesOneNumberInManyBatches) {
    PoolRead read;
    constexpr std::uint32_t g_iNumbers = 40;
    constexpr std::uint32_t g_iCount = 6000;
    for (std::uint32_t i = 0; i < g_iCount; ++i) {
        const std::string sNumber = '#' + std::to_string(1 + i % g_iNumbers);
        read.pool->addLineToQueue(
            i % 7 ? sNumber + "=IFCPOINT((1.,2.));" : sNumber + "=IFCELEMENT('" + sGuidOf(i) + "','e',#1,.RED.);", i);
    }
    read.pool.reset();
    EXPECT_EQ(read.data().entities().size(), g_iCount);
    EXPECT_FALSE(read.errors.boFatal());
    const std::string sReused = localize("Ifc", "Error_EntityIdReused");
    const std::string sReusedStart = sReused.substr(0, sReused.find("%1"));
    EXPECT_EQ(std::ranges::count_if(read.errors.records(),
                                    [&](const ErrorRecord& record) {
                                        return record.category == Errors::Identifier &&
                                               record.description.starts_with(sReusedStart);
                                    }),
              g_iCount - g_iNumbers);
    for (std::uint32_t i = 1; i <= g_iNumbers; ++i) {
        const std::string sText = read.sStatement(i);
        EXPECT_TRUE(sText == "=IFCPOINT((1.,2.));" ||
                    (sText.starts_with("=IFCELEMENT('") && sText.find("','e',#") != std::string::npos &&
                     sText.ends_with(",.RED.);")))
            << sText;
    }
}

// Reading an IFCBAD throws: its attribute has no kind. Nothing but a faulty schema does that.
const def::SchemaPset& throwingSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = [] {
        static const def::schema::DataTypeBase g_illegal(static_cast<def::schema::DataKind>(99));
        auto pMade = pSchemaOf("ENTITY IfcPoint; Coordinates : LIST OF REAL; END_ENTITY;"
                               "ENTITY IfcBad; Name : STRING; Value : REAL; Other : REAL; END_ENTITY;");
        auto* pType = const_cast<def::schema::Entity*>(pMade->pEntityFromName(def::schema::ObjectName("IFCBAD")));
        pType->ownAttributes[1].types = {&g_illegal};
        return pMade;
    }();
    return *pSchema;
}

// Which statements throw, and what is lost for it: the batch of 200 in which each stands, and no other.
struct LossRow {
    const char* sRule;
    std::uint32_t iCount;
    std::vector<std::uint32_t> bad;
    std::size_t iLost;
    unsigned iFirstLine;
};

TEST(LineReadThreadPool, LosesTheBatchOfAnExceptionAndGoesOn) {
    const auto every = [](std::uint32_t iStep, std::uint32_t iEnd) {
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t i = iStep; i <= iEnd; i += iStep) numbers.push_back(i);
        return numbers;
    };
    const LossRow rows[] = {
        {"nothing thrown, nothing lost", 600, {}, 0, 0},
        {"in the middle", 600, {301}, 200, 1201},
        {"twice in one batch is one loss", 600, {201, 400}, 200, 1201},
        {"the first and the last of a batch", 600, {200, 401}, 400, 1001},
        {"the rest that is no whole batch", 450, {450}, 50, 1401},
        {"alone in the file", 1, {1}, 1, 1001},
        {"more often than there are workers", 20'000, every(1000, 20'000), 4000, 1801},
        {"in each batch", 10'000, every(200, 10'000), 10'000, 1001},
    };
    for (const LossRow& row : rows) {
        for (const bool boOneWorker : {false, true}) {
            SCOPED_TRACE(std::string(row.sRule) + (boOneWorker ? ", one worker" : ""));
            testing::internal::CaptureStderr();
            PoolRead read(boOneWorker, throwingSchema());
            const std::set<std::uint32_t> bad(row.bad.begin(), row.bad.end());
            // Statement i ends on line 1000 + i.
            for (std::uint32_t i = 1; i <= row.iCount; ++i)
                read.pool->addLineToQueue(bad.contains(i) ? '#' + std::to_string(i) + "=IFCBAD('a',1.,2.);" : sPoint(i),
                                          1000 + i);
            read.pool.reset();
            const std::string sWritten = testing::internal::GetCapturedStderr();
            std::set<std::uint32_t> lostBatches;
            for (const std::uint32_t i : bad) lostBatches.insert((i - 1) / 200);
            EXPECT_EQ(read.errors.lostStatements().iCount, row.iLost);
            EXPECT_EQ(read.errors.lostStatements().iFirstLine, row.iFirstLine);
            std::set<const Entity*> expected;
            for (std::uint32_t i = 1; i <= row.iCount; ++i)
                if (!lostBatches.contains((i - 1) / 200)) {
                    ASSERT_EQ(read.sStatement(i), "=IFCPOINT((" + std::to_string(i) + ".));");
                    expected.insert(&read.common.slotGet(read.file.data(), i).entity);
                }
            const auto& entities = read.data().entities();
            EXPECT_EQ(entities.size(), row.iCount - row.iLost);
            EXPECT_EQ(std::set<const Entity*>(entities.begin(), entities.end()), expected);
            EXPECT_TRUE(read.errors.records().empty());
            EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(sWritten, '\n')), lostBatches.size()) << sWritten;
            EXPECT_TRUE(lostBatches.empty() || sWritten.starts_with("Assert in ThreadedLoop(")) << sWritten;
        }
    }
}

// Who refers to a statement that was not read to its end finds what was read, and nothing that the file does not have.
TEST(LineReadThreadPool, AnExceptionLeavesNoFalseValues) {
    testing::internal::CaptureStderr();
    PoolRead read(false, throwingSchema());
    read.pool->addLineToQueue("#7=IFCBAD('a',1.,2.);", 1);
    read.pool.reset();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(read.sStatement(7), "=IFCBAD('a',,$);");
    EXPECT_EQ(read.errors.lostStatements().iCount, 1U);
    EXPECT_TRUE(read.data().entities().empty());
}

// A batch is parsed whole and entered then: of a number used twice in it, both entries find the later statement.
struct ReuseRow {
    const char* sRule;
    std::vector<std::string> statements;   // each on a line of its own, from 1
    std::vector<std::string> reports;      // "line key", sorted
    std::vector<std::size_t> known;        // of the GlobalIds 1 to 3
};

TEST(LineReadThreadPool, EntersWhatASlotHoldsWhenItsBatchIsParsed) {
    const auto sElement = [](const char* sId, std::size_t iGuid) {
        return '#' + std::string(sId) + "=IFCELEMENT(" + (iGuid ? '\'' + sGuidOf(iGuid) + '\'' : "$") + ",$,$,$);";
    };
    const std::string sPoint1 = "#1=IFCPOINT((1.));";
    // clang-format off
    const ReuseRow rows[] = {
        {"another GUID", {sElement("1", 1), sElement("1", 2)}, {"2 Error_DuplicateGuids", "2 Error_EntityIdReused"}, {2}},
        {"the same GUID", {sElement("1", 1), sElement("1", 1)}, {"2 Error_DuplicateGuids", "2 Error_EntityIdReused"}, {1}},
        {"no rooted type any more", {sElement("1", 1), sPoint1}, {"2 Error_EntityIdReused"}, {}},
        {"a rooted type only now", {sPoint1, sElement("1", 2)}, {"2 Error_DuplicateGuids", "2 Error_EntityIdReused"}, {2}},
        {"no GUID any more", {sElement("1", 1), sElement("1", 0)},
         {"1 Error_UnexpectedNullGuid", "2 Error_EntityIdReused", "2 Error_InvalidNullAttribute",
          "2 Error_UnexpectedNullGuid"}, {}},
        {"a GUID only now", {sElement("1", 0), sElement("1", 2)},
         {"1 Error_InvalidNullAttribute", "2 Error_DuplicateGuids", "2 Error_EntityIdReused"}, {2}},
        {"three times", {sElement("1", 1), sElement("1", 2), sElement("1", 3)},
         {"2 Error_DuplicateGuids", "2 Error_EntityIdReused", "3 Error_DuplicateGuids", "3 Error_EntityIdReused"}, {3}},
        {"others stand between", {sElement("2", 3), sElement("1", 1), sPoint(7), sElement("1", 2)},
         {"4 Error_DuplicateGuids", "4 Error_EntityIdReused"}, {2, 3}},
        {"an unknown type is no reuse", {sElement("1", 1), "#1=IFCNO();"}, {"2 Error_UnknownEntityType"}, {1}},
    };
    // clang-format on
    for (const ReuseRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        PoolRead read;
        for (std::size_t i = 0; i < row.statements.size(); ++i)
            read.pool->addLineToQueue(row.statements[i], static_cast<unsigned>(i + 1));
        read.pool.reset();
        std::vector<std::string> reports;
        for (const ErrorRecord& record : read.errors.records()) {
            reports.push_back(std::to_string(record.lineNumber) + ' ' + record.key.value_or({}));
            EXPECT_EQ(record.lineString, row.statements[record.lineNumber - 1]);
        }
        std::ranges::sort(reports);
        EXPECT_EQ(reports, row.reports);
        std::vector<std::size_t> known;
        for (std::size_t i = 1; i <= 3; ++i)
            if (read.data().guidEntityMap().pFind(*IfcGuid::fromIfcGuid(sGuidOf(i)))) known.push_back(i);
        EXPECT_EQ(known, row.known);
    }
}

// An attribute without a type is the schema's fault, and asserted. On a worker, only an attached debugger hears of it.
TEST(LineReadThreadPool, KeepsAssertionsOfWorkersFromTheUser) {
    const char* const sLine = "#1=IFCFAULTY(1.,2.,3.);";
    const AssertLog log;
    const auto pSchemaHere = pSchemaWithSecondOf({});
    StatementReader here(*pSchemaHere);
    ASSERT_NE(here.pRead(sLine), nullptr);
    EXPECT_EQ(log.texts(), std::vector<std::string>{"Schema error. Attribute not found."});

    const auto pSchema = pSchemaWithSecondOf({});
    PoolRead read(false, *pSchema);
    read.pool->addLineToQueue(sLine, 1);
    read.pool.reset();
    EXPECT_EQ(read.data().entities().size(), 1U);
    EXPECT_EQ(log.texts().size(), 1U);
}

// Nor of one on the scanner's thread while it parses, as it does when it is far ahead of the workers.
TEST(LineReadThreadPool, KeepsAssertionsOfAHelpingScannerFromTheUser) {
    constexpr std::uint32_t g_iCount = 20'000;
    const auto sElement = [](std::uint32_t i) {
        return '#' + std::to_string(i) + "=IFCELEMENT('" + sGuidOf(i) + "','\xFF',$,$);";
    };
    const AssertLog log;
    StatementReader here(smallSchema());
    here.pRead(sElement(1));
    ASSERT_EQ(log.texts().size(), 1U) << "no text of a STEP file";

    PoolRead read;
    for (std::uint32_t i = 1; i <= g_iCount; ++i) read.pool->addLineToQueue(sElement(i), i);
    read.pool.reset();
    EXPECT_EQ(read.data().entities().size(), g_iCount);
    EXPECT_EQ(log.texts().size(), 1U);
}

// One worker takes one statement after the other, and nobody else does.
TEST(LineReadThreadPool, OneWorkerKeepsTheOrderOfTheFile) {
    constexpr std::uint32_t g_iCount = 20'000;
    PoolRead read(true);
    for (std::uint32_t i = 1; i <= g_iCount; ++i) read.pool->addLineToQueue(sPoint(i), i);
    read.pool.reset();
    const auto& entities = read.data().entities();
    ASSERT_EQ(entities.size(), g_iCount);
    for (std::uint32_t i = 1; i <= g_iCount; ++i)
        ASSERT_EQ(entities[i - 1], &read.common.slotGet(read.file.data(), i).entity) << i;
}

}   // namespace
}   // namespace oxa::ifc::io
