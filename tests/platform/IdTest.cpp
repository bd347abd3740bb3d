// SPDX-License-Identifier: Apache-2.0
#include "platform/Id.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <unordered_set>
#include <vector>

namespace oxa {
namespace {

const Guid g_example{0x0123ABCD, 0x45EF, 0x0007, {0x89, 0x00, 0x0A, 0xBC, 0xDE, 0xF0, 0x12, 0x34}};

TEST(Guid, IsNullUntilSet) {
    EXPECT_TRUE(Guid{}.boIsNull());
    EXPECT_EQ(Guid{}.toString(), "00000000-0000-0000-0000-000000000000");
}

TEST(Guid, IsWrittenInUpperCaseWithLeadingZeros) {
    EXPECT_EQ(g_example.toString(), "0123ABCD-45EF-0007-8900-0ABCDEF01234");
}

TEST(Guid, ComparesEveryField) {
    struct Row {
        const char* sRule;
        Guid other;
    };
    Row rows[] = {{"Data1", g_example},
                  {"Data2", g_example},
                  {"Data3", g_example},
                  {"Data4, first", g_example},
                  {"Data4, last", g_example}};
    ++rows[0].other.Data1;
    ++rows[1].other.Data2;
    ++rows[2].other.Data3;
    ++rows[3].other.Data4[0];
    ++rows[4].other.Data4[7];
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_NE(row.other, g_example);
        EXPECT_GT(row.other, g_example);
        EXPECT_NE(row.other.hash(), g_example.hash());
        EXPECT_FALSE(row.other.boIsNull());
    }
    const Guid copy = g_example;
    EXPECT_EQ(copy, g_example);
    EXPECT_EQ(copy.hash(), g_example.hash());
    EXPECT_EQ(std::hash<Guid>{}(copy), g_example.hash());
}

TEST(Guid, ComparesFieldsInOrder) {
    EXPECT_LT((Guid{1, 9, 9, {}}), (Guid{2, 0, 0, {}}));
    EXPECT_LT((Guid{1, 1, 9, {}}), (Guid{1, 2, 0, {}}));
    EXPECT_LT((Guid{0, 0, 0, {1, 9}}), (Guid{0, 0, 0, {2, 0}}));
}

// RFC 4122, 4.4: version and variant have fixed bits, the rest is random.
TEST(Guid, GeneratedOnesAreRandomVersion4) {
    std::unordered_set<Guid> all;
    std::array<std::uint8_t, sizeof(Guid)> setBits{}, clearBits{};   // in any of them
    for (int i = 0; i < 1000; ++i) {
        const Guid guid = Guid::generate();
        ASSERT_EQ(guid.Data3 >> 12, 4);
        ASSERT_EQ(guid.Data4[0] >> 6, 2);
        all.insert(guid);
        std::array<std::uint8_t, sizeof(Guid)> bytes;
        std::memcpy(bytes.data(), &guid, sizeof guid);
        for (std::size_t iByte = 0; iByte < bytes.size(); ++iByte) {
            setBits[iByte] = static_cast<std::uint8_t>(setBits[iByte] | bytes[iByte]);
            clearBits[iByte] = static_cast<std::uint8_t>(clearBits[iByte] | ~bytes[iByte]);
        }
    }
    EXPECT_EQ(all.size(), 1000U);
    // Each bit takes both values, but for the six that are fixed.
    Guid fixedSet, fixedClear;
    std::memcpy(&fixedSet, setBits.data(), sizeof fixedSet);
    std::memcpy(&fixedClear, clearBits.data(), sizeof fixedClear);
    EXPECT_EQ(fixedSet.toString(), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
    EXPECT_EQ(fixedClear.toString(), "FFFFFFFF-FFFF-BFFF-7FFF-FFFFFFFFFFFF");
}

TEST(Guid, GenerateReplacesTheValue) {
    Guid guid = g_example;
    guid.vGenerate();
    EXPECT_NE(guid, g_example);
    EXPECT_FALSE(guid.boIsNull());
}

// GUIDs that count up in any two neighbouring bytes must not pile up in a hash table.
TEST(Guid, HashSpreadsGuidsThatCountUp) {
    constexpr unsigned g_iGuids = 4096;
    for (const std::size_t iBuckets : {256U, 257U})
        for (std::size_t iByte = 0; iByte < sizeof(Guid) - 1; ++iByte) {
            SCOPED_TRACE(testing::Message() << "byte " << iByte << ", " << iBuckets << " buckets");
            std::vector<unsigned> fill(iBuckets, 0);
            for (unsigned i = 0; i < g_iGuids; ++i) {
                Guid guid = g_example;
                const std::uint8_t bytes[] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(i >> 8)};
                std::memcpy(reinterpret_cast<std::byte*>(&guid) + iByte, bytes, sizeof bytes);
                ++fill[guid.hash() % iBuckets];
            }
            // 16 are expected in each; chance alone does not reach three times that.
            EXPECT_LT(*std::ranges::max_element(fill), 48U);
        }
}

}   // namespace
}   // namespace oxa
