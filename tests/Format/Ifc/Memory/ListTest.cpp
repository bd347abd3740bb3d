// SPDX-License-Identifier: Apache-2.0
// Lists in pool memory: rows of items, and chains.
#include "Format/Ifc/Memory/List.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

#include "Format/Ifc/Memory/SimplePool.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(Array, ABlockHasRoomForOneItemAtLeast) {
    EXPECT_EQ(Array<double>::iBlockSize(0), 16U);
    EXPECT_EQ(Array<double>::iBlockSize(1), 16U);
    EXPECT_EQ(Array<double>::iBlockSize(3), 32U);
    EXPECT_EQ(Array<std::int32_t>::iBlockSize(3), 20U);
    EXPECT_EQ(Array<char>::iBlockSize(3), 11U);
}

TEST(Array, StandsAtAnyAddress) {
    for (std::size_t iBefore = 0; iBefore < 8; ++iBefore) {
        SCOPED_TRACE(iBefore);
        std::vector<char> bytes(iBefore + Array<double>::iBlockSize(3));
        auto* pArray = Array<double>::pFromBytes(bytes.data() + iBefore, 3);
        EXPECT_THAT(std::vector<double>(pArray->begin(), pArray->end()), ElementsAre(0., 0., 0.));
        (*pArray)[0] = 1.5;
        (*pArray)[2] = -2.5;
        EXPECT_THAT(std::vector<double>(pArray->begin(), pArray->end()), ElementsAre(1.5, 0., -2.5));
        pArray->vCountSet(1);
        EXPECT_THAT(std::vector<double>(pArray->begin(), pArray->end()), ElementsAre(1.5));
        pArray->vCountSet(0);
        EXPECT_TRUE(pArray->empty());
    }
}

class ListTest : public testing::Test {
protected:
    using Head = ForwardListHead<int>;
    std::vector<int> items() const {
        std::vector<int> found;
        if (!pHead) return found;
        for (const int iItem : *pHead) found.push_back(iItem);
        return found;
    }
    void vAppend(int iItem) { vListAppend(pHead, iItem, allocate); }

    Pool pool;
    std::function<void*(std::size_t)> allocate = [this](std::size_t iBytes) { return pool.pAllocate(iBytes); };
    Head* pHead = nullptr;
};

TEST_F(ListTest, AppendsBehindTheTrueEnd) {
    vAppend(1);
    EXPECT_EQ(pHead->tail.load(), nullptr);   // unknown as long as there is only the head
    vAppend(2);
    vAppend(3);
    EXPECT_THAT(items(), ElementsAre(1, 2, 3));
    pHead->tail = nullptr;
    vAppend(4);
    EXPECT_THAT(items(), ElementsAre(1, 2, 3, 4));
    pHead->tail = pHead;   // a hint that lies behind
    vAppend(5);
    EXPECT_THAT(items(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(ListTest, AssignsReusingNodes) {
    const std::vector<int> three{1, 2, 3};
    const std::vector<int> one{9};
    vListAssign(pHead, three.begin(), three.end(), allocate);
    const Head* pBefore = pHead;
    vListAssign(pHead, one.begin(), one.end(), allocate);
    EXPECT_EQ(pHead, pBefore);
    EXPECT_EQ(pHead->tail.load(), pHead);
    EXPECT_THAT(items(), ElementsAre(9));
    vListAssign(pHead, three.begin(), three.end(), allocate);
    EXPECT_THAT(items(), ElementsAreArray(three));
    vListAssign(pHead, three.end(), three.end(), allocate);
    EXPECT_EQ(pHead, nullptr);
}

TEST_F(ListTest, RemovesTheFirstOfAKind) {
    struct Row {
        std::vector<int> before;
        int iRemoved;
        bool boFound;
        std::vector<int> after;
    };
    for (const Row& row : {Row{{}, 1, false, {}}, Row{{1}, 1, true, {}}, Row{{1, 2}, 1, true, {2}},
                           Row{{1, 2}, 2, true, {1}}, Row{{1, 2, 1}, 1, true, {2, 1}}, Row{{1, 2}, 3, false, {1, 2}}}) {
        pHead = nullptr;
        vListAssign(pHead, row.before.begin(), row.before.end(), allocate);
        EXPECT_EQ(boListRemove(pHead, row.iRemoved), row.boFound);
        EXPECT_EQ(items(), row.after);
        if (!pHead) continue;
        vAppend(7);   // the tail is right, or unknown
        std::vector<int> expected = row.after;
        expected.push_back(7);
        EXPECT_EQ(items(), expected);
    }
}

TEST_F(ListTest, RemovesAllThatAFunctionNames) {
    struct Row {
        std::vector<int> before;
        int iBelow;   // what is smaller goes
        std::vector<int> after;
    };
    for (const Row& row :
         {Row{{}, 9, {}}, Row{{1}, 1, {1}}, Row{{1}, 2, {}}, Row{{1, 2, 3}, 1, {1, 2, 3}}, Row{{1, 2, 3}, 2, {2, 3}},
          Row{{3, 1, 2}, 2, {3, 2}}, Row{{3, 2, 1}, 2, {3, 2}}, Row{{1, 1, 1, 5, 1, 6, 1}, 2, {5, 6}},
          Row{{1, 2, 3}, 4, {}}, Row{{1, 5}, 2, {5}}, Row{{5, 1}, 2, {5}}}) {
        for (const bool boTail : {true, false}) {
            pHead = nullptr;
            vListAssign(pHead, row.before.begin(), row.before.end(), allocate);
            if (pHead && !boTail) pHead->tail = nullptr;
            std::vector<int> asked;
            EXPECT_EQ(boListRemoveIf(pHead,
                                     [&](int iItem) {
                                         asked.push_back(iItem);
                                         return iItem < row.iBelow;
                                     }),
                      row.after.size() != row.before.size());
            EXPECT_EQ(asked, row.before) << "each is asked for once, in order";
            EXPECT_EQ(items(), row.after);
            EXPECT_EQ(pHead == nullptr, row.after.empty());
            if (!pHead) continue;
            vAppend(7);
            std::vector<int> expected = row.after;
            expected.push_back(7);
            EXPECT_EQ(items(), expected);
        }
    }
}

// Any order of operations leaves what it leaves in a vector.
TEST_F(ListTest, BehavesAsAVectorDoes) {
    std::mt19937 random(1);
    std::vector<int> expected;
    for (int i = 0; i < 20'000; ++i) {
        const int iItem = static_cast<int>(random() % 5);
        switch (random() % 8) {
        case 0: {
            expected.resize(random() % 6);
            for (int& iNew : expected) iNew = static_cast<int>(random() % 5);
            vListAssign(pHead, expected.begin(), expected.end(), allocate);
            break;
        }
        case 1:
        case 2:
        case 3: {
            const auto found = std::ranges::find(expected, iItem);
            ASSERT_EQ(boListRemove(pHead, iItem), found != expected.end());
            if (found != expected.end()) expected.erase(found);
            break;
        }
        default: vAppend(iItem); expected.push_back(iItem);
        }
        ASSERT_EQ(items(), expected) << "step " << i;
        ASSERT_EQ(pHead == nullptr, expected.empty());
    }
}

}   // namespace
}   // namespace oxa::ifc
