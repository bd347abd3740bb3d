// SPDX-License-Identifier: Apache-2.0
// Names in any case of letters, each in its scope; and which words are names.
#include "provider/NameTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "provider/ExpressLexer.h"

namespace oxa::test {

namespace {

using oxa::ifc::def::express::boIsName;
using oxa::ifc::def::express::NameTable;

TEST(NameTable, FindsANameInAnyCaseOfItsScope) {
    const int scopes[2] = {};
    NameTable<int> table;
    EXPECT_EQ(table.pFind("IfcWall"), nullptr) << "an empty one";
    struct Added {
        const char* sName;
        const void* pScope;
        bool boNew;
    };
    const Added added[] = {
        {"IfcWall", nullptr, true},
        {"IFCWALL", nullptr, false},
        {"IfcWalls", nullptr, true},
        {"IfcWall", &scopes[0], true},
        {"ifcWALL", &scopes[0], false},
        {"A", nullptr, true},
        {"a_1", nullptr, true},
        {"Abcdefgh", nullptr, true},
        {"", nullptr, true},
        {"AbcdefghAbcdefghI", &scopes[1], true},
    };
    for (int i = 0; i < static_cast<int>(std::size(added)); ++i)
        EXPECT_EQ(table.boAdd(added[i].sName, i, added[i].pScope), added[i].boNew) << i;

    struct Row {
        const char* sAsked;
        const void* pScope;
        int iFound;   // -1: none
    };
    const Row rows[] = {
        {"ifcwall", nullptr, 0},
        {"IfcWall", &scopes[0], 3},
        {"IfcWall", &scopes[1], -1},
        {"IFCWALLS", nullptr, 2},
        {"IfcWal", nullptr, -1},
        {"a", nullptr, 5},
        {"b", nullptr, -1},
        {"A_1", nullptr, 6},
        {"ABCDEFGH", nullptr, 7},
        {"ABCDEFGI", nullptr, -1},
        {"", nullptr, 8},
        {"A", &scopes[0], -1},
        {"abcdefghabcdefghi", &scopes[1], 9},
        {"abcdefghabcdefghj", &scopes[1], -1},
        {"@", nullptr, -1},
        {"A\x7f"
         "1",
         nullptr, -1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sAsked);
        const int* pFound = table.pFind(row.sAsked, row.pScope);
        EXPECT_EQ(pFound ? *pFound : -1, row.iFound);
    }
}

TEST(NameTable, GrowsWithItsNames) {
    constexpr std::size_t iNames = 3000;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < iNames; ++i) names.push_back("Name" + std::to_string(i));
    for (const std::size_t iRoom : {std::size_t{0}, std::size_t{100}, iNames}) {
        NameTable<std::size_t> table;
        if (iRoom) table.vReserve(iRoom);
        for (std::size_t i = 0; i < iNames; ++i) ASSERT_TRUE(table.boAdd(names[i], i));
        for (std::size_t i = 0; i < iNames; ++i) ASSERT_EQ(*table.pFind(names[i]), i);
    }
}

TEST(ExpressLexer, TellsNamesFromKeywords) {
    struct Row {
        const char* sText;
        bool boName;
    };
    const Row rows[] = {
        {"IfcWall", true},
        {"a", true},
        {"x_1", true},
        {"Reals", true},
        {"Lis", true},
        {"REAL", false},
        {"Real", false},
        {"with", false},
        {"end_TYPE", false},
        {"Z", true},
        {"", false},
        {"1a", false},
        {"_a", false},
        {"LIST OF A", false},
        {"A ", false},
        {"STRING(2)", false},
        {"A\n", false},
        {"SUBTYPE_CONSTRAINT", false},
        {"END_SUBTYPE_CONSTRAINT", false},
    };
    for (const Row& row : rows) EXPECT_EQ(boIsName(row.sText), row.boName) << row.sText;
}

}   // namespace

}   // namespace oxa::test
