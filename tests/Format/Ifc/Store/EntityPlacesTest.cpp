// SPDX-License-Identifier: Apache-2.0
// Places by address: each address keeps the place that it got first, however many come.
#include "Format/Ifc/Store/EntityPlaces.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_map>

namespace oxa::ifc {
namespace {

// Only addresses are used.
const Entity* pEntityAt(std::uintptr_t uAddress) { return reinterpret_cast<const Entity*>(uAddress); }

TEST(EntityPlaces, GivesPlacesInTheOrderOfArrival) {
    EntityPlaces places;
    EXPECT_EQ(places.iFind(pEntityAt(64)), EntityPlaces::g_iNone);
    struct Row {
        std::uintptr_t uAddress;
        std::uint32_t iPlace;
        bool boNew;
    };
    for (const Row& row :
         {Row{64, 0, true}, Row{32, 1, true}, Row{64, 0, false}, Row{0, 2, true}, Row{0, 2, false}, Row{33, 3, true}})
        EXPECT_EQ(places.enter(pEntityAt(row.uAddress)), std::pair(row.iPlace, row.boNew)) << row.uAddress;
    EXPECT_EQ(places.size(), 4U);
    EXPECT_EQ(places.pAt(1), pEntityAt(32));
    EXPECT_EQ(places.iFind(pEntityAt(33)), 3U);
    EXPECT_EQ(places.iFind(pEntityAt(34)), EntityPlaces::g_iNone);
}

// As a table of the standard library has them, for addresses that fall together in many ways.
TEST(EntityPlaces, FindsAllThatCame) {
    struct Row {
        std::string sName;
        std::uintptr_t uStep;
        bool boRoom;   // for all of them from the start
    };
    for (const Row& row :
         {Row{"slots of a chunk", 32, false}, Row{"single instances", 24, false}, Row{"bytes", 1, false},
          Row{"one of a group", 256, true}, Row{"one of a page", 4096, false}, Row{"one of a chunk", 1U << 20, true},
          Row{"far from each other", std::uintptr_t{1} << 30, true}}) {
        SCOPED_TRACE(row.sName);
        constexpr std::size_t g_iCount = 10'000;
        EntityPlaces places;
        if (row.boRoom) places.vReserve(g_iCount);
        std::unordered_map<const Entity*, std::uint32_t> expected;
        for (std::size_t i = 0; i < g_iCount; ++i) {
            const Entity* pEntity = pEntityAt((i * 7919 % g_iCount + 1) * row.uStep);
            const auto [entry, boNew] = expected.try_emplace(pEntity, static_cast<std::uint32_t>(expected.size()));
            ASSERT_EQ(places.enter(pEntity), std::pair(entry->second, boNew));
        }
        EXPECT_EQ(places.size(), expected.size());
        for (const auto& [pEntity, iPlace] : expected) {
            ASSERT_EQ(places.iFind(pEntity), iPlace);
            ASSERT_EQ(places.pAt(iPlace), pEntity);
            ASSERT_EQ(places.iFind(pEntityAt(reinterpret_cast<std::uintptr_t>(pEntity) + 1)) == EntityPlaces::g_iNone,
                      row.uStep > 1 || reinterpret_cast<std::uintptr_t>(pEntity) == g_iCount);
        }
    }
}

}   // namespace
}   // namespace oxa::ifc
