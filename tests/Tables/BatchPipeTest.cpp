// SPDX-License-Identifier: Apache-2.0
// Batches from a thread of their own: all of them in their order, few at a time, and both sides' ends.
#include "Tables/BatchPipe.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>

namespace oxa::tables::detail {
namespace {

using namespace std::chrono_literals;
using Load = BatchPipe::Load;

Load loadOf(std::size_t iTable, std::int64_t iValue, std::unique_ptr<Batch> pBatch = nullptr) {
    if (!pBatch) pBatch = std::make_unique<Batch>(std::vector<Column>{{"value", Type::Integer, 0, false, ""}});
    pBatch->clear();
    pBatch->columns().front().addInteger(iValue);
    return {iTable, std::move(pBatch)};
}

std::string sText(const Load& load) {
    return std::to_string(load.iTable) + ':' + std::to_string(load.pBatch->columns().front().integer(0)) + ' ';
}

TEST(BatchPipe, LoadsComeInTheirOrder) {
    constexpr int iLoads = 500;
    BatchPipe pipe([](BatchPipe& made) {
        for (int i = 0; i < iLoads; ++i) EXPECT_TRUE(made.boPut(loadOf(static_cast<std::size_t>(i / 100), i)));
    });
    std::string sTaken, sExpected;
    for (Load load; pipe.boTake(load);) sTaken += sText(load);
    for (int i = 0; i < iLoads; ++i) sExpected += std::to_string(i / 100) + ':' + std::to_string(i) + ' ';
    EXPECT_EQ(sTaken, sExpected);
    Load none;
    EXPECT_FALSE(pipe.boTake(none)) << "nor any further";
}

TEST(BatchPipe, NothingMadeIsNothingTaken) {
    BatchPipe pipe([](BatchPipe&) {});
    Load load;
    EXPECT_FALSE(pipe.boTake(load));
    EXPECT_EQ(load.pBatch, nullptr);
}

// A batch that its taker has given back is made anew, by the table that it belongs to.
TEST(BatchPipe, WhatWasTakenIsUsedAgain) {
    BatchPipe pipe([&](BatchPipe& made) {
        for (const std::size_t iTable : {1U, 1U, 2U}) EXPECT_TRUE(made.boPut(loadOf(iTable, 7)));
    });
    Load load;
    ASSERT_TRUE(pipe.boTake(load));
    const Batch* const pFirst = load.pBatch.get();
    EXPECT_EQ(pipe.pUsed(1), nullptr) << "its taker still has it";
    ASSERT_TRUE(pipe.boTake(load));
    EXPECT_EQ(pipe.pUsed(1).get(), pFirst);
    EXPECT_EQ(pipe.pUsed(1), nullptr);
    ASSERT_TRUE(pipe.boTake(load));
    EXPECT_EQ(load.iTable, 2U);
    EXPECT_EQ(pipe.pUsed(2), nullptr);
    EXPECT_EQ(pipe.pUsed(1), nullptr) << "what is of another table was let go";
}

TEST(BatchPipe, TwoWaitAtMost) {
    std::atomic<int> iPut{0};
    BatchPipe pipe([&](BatchPipe& made) {
        for (; iPut < 6; ++iPut) EXPECT_TRUE(made.boPut(loadOf(0, iPut)));
    });
    Load load;
    for (int iTaken = 0; iTaken < 4; ++iTaken) {
        while (iPut < iTaken + 2) std::this_thread::yield();
        std::this_thread::sleep_for(5ms);   // for one too many
        EXPECT_EQ(iPut, iTaken + 2);
        EXPECT_TRUE(pipe.boTake(load));
        EXPECT_EQ(sText(load), "0:" + std::to_string(iTaken) + ' ');
    }
    EXPECT_TRUE(pipe.boTake(load));
    EXPECT_TRUE(pipe.boTake(load));
    EXPECT_FALSE(pipe.boTake(load));
}

TEST(BatchPipe, WhatTheMakerThrowsComesBehindTheLast) {
    for (const int iLoads : {0, 1, 2, 5}) {
        SCOPED_TRACE(iLoads);
        BatchPipe pipe([&](BatchPipe& made) {
            for (int i = 0; i < iLoads; ++i) EXPECT_TRUE(made.boPut(loadOf(0, i)));
            throw std::domain_error("no more");
        });
        Load load;
        for (int i = 0; i < iLoads; ++i) {
            EXPECT_TRUE(pipe.boTake(load));
            EXPECT_EQ(sText(load), "0:" + std::to_string(i) + ' ');
        }
        EXPECT_THROW(static_cast<void>(pipe.boTake(load)), std::domain_error);
        EXPECT_FALSE(pipe.boTake(load)) << "it is told once";
    }
}

// Who goes in the middle, by an exception mostly, neither waits for the rest nor has it made.
TEST(BatchPipe, ATakerThatGoesEndsTheMaker) {
    for (const int iTakes : {0, 1, 3}) {
        for (const bool boFull : {true, false}) {
            SCOPED_TRACE(std::to_string(iTakes) + (boFull ? ", the maker waits" : ", the maker is at work"));
            int iPut = 0;
            std::atomic<int> iBegun{0};
            std::atomic<bool> boGone{false};
            std::thread later;
            {
                BatchPipe pipe([&](BatchPipe& made) {
                    for (; iPut < 1000; ++iPut) {
                        if (++iBegun == iTakes + 2 && !boFull)
                            while (!boGone) std::this_thread::yield();
                        if (!made.boPut(loadOf(0, iPut))) return;
                    }
                });
                Load load;
                for (int i = 0; i < iTakes; ++i) EXPECT_TRUE(pipe.boTake(load));
                while (iBegun < iTakes + (boFull ? 3 : 2)) std::this_thread::yield();
                std::this_thread::sleep_for(5ms);   // until it waits
                later = std::thread([&] {
                    std::this_thread::sleep_for(5ms);
                    boGone = true;
                });
            }
            later.join();
            EXPECT_LE(iPut, iTakes + 2);
            EXPECT_GE(iPut, iTakes + 1);
        }
    }
}

}   // namespace
}   // namespace oxa::tables::detail
