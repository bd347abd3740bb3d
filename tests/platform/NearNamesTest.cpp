// SPDX-License-Identifier: Apache-2.0
// What comes near to a misspelt name.
#include "platform/NearNames.h"

#include <string>

#include <gtest/gtest.h>

namespace oxa::str {
namespace {

TEST(NearNames, AreFewLettersAwayOrHoldTheWord) {
    const std::vector<std::string_view> names{
        "IfcWall",        "IfcWallType", "IfcDoor",  "IfcDoorStyle", "IfcWindow", "IfcWallStandardCase",
        "IfcCurtainWall", "IfcWallTyp",  "IfcWalls", "IfcWallX"};
    const struct {
        const char* sRule;
        std::string sWanted;
        std::vector<std::string_view> near;
    } rows[] = {
        {"a letter less", "IfcDor", {"IfcDoor"}},
        {"a letter more", "IfcWindoww", {"IfcWindow"}},
        {"another letter", "IfcWindov", {"IfcWindow"}},
        {"any case", "IFCWINDOV", {"IfcWindow"}},
        {"a part, the nearest five", "Wall", {"IfcWall", "IfcWallX", "IfcWalls", "IfcWallTyp", "IfcWallType"}},
        {"two letters are part of too many", "Wa", {}},
        {"nothing near", "Qqqqqq", {}},
        {"no name", "", {}},
        {"a name of 200 bytes", "IfcWindow" + std::string(191, 'x'), {}},
        {"a longer one is not looked at", std::string(201, 'x'), {}},
    };
    for (const auto& row : rows) EXPECT_EQ(nearNames(row.sWanted, names), row.near) << row.sRule;
    const std::string sLong(200, 'x');
    EXPECT_EQ(nearNames(sLong, {sLong}).size(), 1U);
    EXPECT_EQ(nearNames(sLong + 'x', {sLong}).size(), 0U);
}

}   // namespace
}   // namespace oxa::str
