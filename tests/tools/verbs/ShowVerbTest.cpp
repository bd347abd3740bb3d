// SPDX-License-Identifier: Apache-2.0
// "oxaifc show": what it tells of entities, and how they are named.

#include <algorithm>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

constexpr const char* g_pWallGuid = "3qt5KnRY9OSu4BNT4B7kwi";

// A wall in a storey; the numbers neither in order nor without gaps.
std::string sWallFile() {
    return sExchangeFile("IFC4", "#70=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,'B\\X\\FCro',$,$,$,$,$,.SOLIDWALL.);\n"
                                 "#5=IFCRELCONTAINEDINSPATIALSTRUCTURE('3Q2KuEDczSmQAFmYKnklVN',$,$,$,(#70,#71),#6);\n"
                                 "#6=IFCBUILDINGSTOREY('1XxWclp6bOHAdQixVqmAPd',$,$,$,$,$,$,$,.ELEMENT.,0.);\n"
                                 "#71=IFCSLAB('0qltlX545U7f6hmhHOJBDu',$,$,$,$,$,$,$,$);\n"
                                 "#8=IFCRELAGGREGATES('00MPTWCfrN7ReR2sdMzhiQ',$,$,$,#70,(#71));\n"
                                 "#9=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('it''s'),$);\n");
}

struct SelectRow {
    const char* pRule;
    std::vector<std::string> what;
    std::vector<int> ids;
};
const SelectRow g_selections[] = {
    {"a number", {"#70"}, {70}},
    {"a number with zeros", {"#0070"}, {70}},
    {"a number without its sign", {"70"}, {70}},
    {"the same with zeros", {"0070"}, {70}},
    {"a GlobalId", {g_pWallGuid}, {70}},
    {"a GlobalId as it is shown", {"F4DC5531-6E22-5873-810B-5DD10B1EEEAC"}, {70}},
    {"in small letters and braces", {"{f4dc5531-6e22-5873-810b-5dd10b1eeeac}"}, {70}},
    {"without strokes", {"F4DC55316E225873810B5DD10B1EEEAC"}, {70}},
    {"a type", {"IfcWall"}, {70}},
    {"a type in any case", {"ifcWALL"}, {70}},
    {"a type, not its subtypes", {"IfcBuildingElement"}, {}},
    {"a type and its subtypes, by number", {"IfcElement", "--subtypes"}, {70, 71}},
    {"every rooted entity", {"ifcroot", "--subtypes"}, {5, 6, 8, 70, 71}},
    {"a type of which there is none", {"IfcDoor", "--subtypes"}, {}},
};

TEST(ShowVerb, WhatSelectsEntities) {
    for (const SelectRow& row : g_selections) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"show", "-", "--json"};
        words.insert(words.end(), row.what.begin(), row.what.end());
        const ProgramRun run = runProgram(words, sWallFile());
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError.empty(), !row.ids.empty()) << run.sError;
        const Json value = run.json();
        ASSERT_TRUE(value.is_array()) << run.sOut;
        std::vector<int> ids;
        for (const Json& entity : value) ids.push_back(entity["id"]);
        EXPECT_EQ(ids, row.ids);
    }
}

TEST(ShowVerb, JsonTellsAttributesAndReferrers) {
    const ProgramRun run = runProgram({"show", "-", "#70", "--json"}, sWallFile());
    const Json expected = Json::parse(R"([{
        "id": 70,
        "type": "IfcWall",
        "attributes": {"GlobalId": "3qt5KnRY9OSu4BNT4B7kwi", "OwnerHistory": null, "Name": "B\u00fcro",
                       "Description": null, "ObjectType": null, "ObjectPlacement": null, "Representation": null,
                       "Tag": null, "PredefinedType": "SOLIDWALL"},
        "inverses": {"IsDecomposedBy": [{"ref": 8}], "ContainedInStructure": [{"ref": 5}]},
        "statement": "#70=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,'B\\X\\FCro',$,$,$,$,$,.SOLIDWALL.);"
    }])");
    const Json value = run.json();
    ASSERT_TRUE(value.is_array() && value.size() == 1U) << run.sOut;
    for (const char* pKey : {"id", "type", "attributes", "statement"}) EXPECT_EQ(value[0][pKey], expected[0][pKey]);
    for (const char* pKey : {"IsDecomposedBy", "ContainedInStructure"})
        EXPECT_EQ(value[0]["inverses"][pKey], expected[0]["inverses"][pKey]);
    EXPECT_EQ(value[0]["inverses"].size(), 2U);
}

TEST(ShowVerb, TextHasALineForEachFact) {
    EXPECT_EQ(runProgram({"show", "-", "#9"}, sWallFile()).sOut,
              "#9=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('it''s'),$);\n"
              "  Name : IfcIdentifier = 'a'\n"
              "  Description : IfcText = $\n"
              "  NominalValue : IfcValue = IFCLABEL('it's')\n"
              "  Unit : IfcUnit = $\n");
    const ProgramRun wall = runProgram({"show", "-", g_pWallGuid}, sWallFile());
    for (const char* pLine : {"\n  Name : IfcLabel = 'Büro'\n", "\n  ContainedInStructure <- #5\n"})
        EXPECT_NE(wall.sOut.find(pLine), std::string::npos) << wall.sOut;
    EXPECT_EQ(runProgram({"show", "-", "ifcdoor"}, sWallFile()).sOut,
              "standard input: no ifcdoor; --subtypes shows those of its subtypes too\n");
}

TEST(ShowVerb, TypeWithoutInstancesNamesThoseOfItsSubtypes) {
    EXPECT_EQ(runProgram({"show", "-", "IfcBuildingElement"}, sWallFile()).sOut,
              "standard input: no IfcBuildingElement, but 1 IfcSlab, 1 IfcWall; --subtypes shows those too\n");
    EXPECT_EQ(runProgram({"show", "-", "IfcDoor", "--subtypes"}, sWallFile()).sOut, "standard input: no IfcDoor\n");
}

struct ShowFailRow {
    const char* pWhat;
    const char* pError;
};
const ShowFailRow g_showFailures[] = {
    {"#7", "standard input: there is no #7"},
    {"#99999999999999999999", "standard input: there is no #99999999999999999999"},
    {"#", "# is no number of an entity, as #12 is"},
    {"#7x", "#7x is no number of an entity, as #12 is"},
    {"0000000000000000000001", "standard input: there is no GlobalId 0000000000000000000001"},
    {"IfcWal", "IfcWal is no number as #12, no GlobalId and no entity of IFC4; did you mean IfcWall, IfcWallType, "
               "IfcWallStandardCase, IfcWallElementedCase?"},
    {"IfcLabel", "IfcLabel is no number as #12, no GlobalId and no entity of IFC4"},
    {"7", "standard input: there is no #7"},
    {"99999999999999999999", "standard input: there is no #99999999999999999999"},
    {"7x", "7x is no number as #12, no GlobalId and no entity of IFC4"},
    {"F4DC5531-6E22-5873-810B-5DD10B1EEEAD",
     "standard input: there is no GlobalId F4DC5531-6E22-5873-810B-5DD10B1EEEAD"},
    {"F4DC5531-6E22-5873-810B-5DD10B1EEEA", "F4DC5531-6E22-5873-810B-5DD10B1EEEA is no number as #12, no GlobalId"},
    {"F4DC55316-E22-5873-810B-5DD10B1EEEAC", "F4DC55316-E22-5873-810B-5DD10B1EEEAC is no number as #12, no GlobalId"},
    {"F4DC5531-6E22-5873-810B5DD10B1EEEAC", "F4DC5531-6E22-5873-810B5DD10B1EEEAC is no number as #12, no GlobalId"},
    {"F4DC55316E225873810B5DD10B1EEEACA", "F4DC55316E225873810B5DD10B1EEEACA is no number as #12, no GlobalId"},
    {"G4DC55316E225873810B5DD10B1EEEAC", "G4DC55316E225873810B5DD10B1EEEAC is no number as #12, no GlobalId"},
};

TEST(ShowVerb, UnknownWhatIsOneLine) {
    for (const ShowFailRow& row : g_showFailures) {
        SCOPED_TRACE(row.pWhat);
        const ProgramRun run = runProgram({"show", "-", row.pWhat}, sWallFile());
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_TRUE(run.sError.starts_with(std::string("oxaifc: ") + row.pError)) << run.sError;
        EXPECT_EQ(run.sError.find('\n'), run.sError.size() - 1);
    }
}

TEST(ShowVerb, ErrorsOfTheFileGiveOne) {
    const ProgramRun run =
        runProgram({"show", "-", "#1"}, sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n#2=IFCTEAPOT();\n"));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_TRUE(run.sOut.starts_with("#1=IFCMATERIAL('a',$,$);\n")) << run.sOut;
}

TEST(ShowVerb, SimpleFormKeepsItsNumbers) {
    const ProgramRun run =
        runProgram({"show", "-", "#9", "--json"},
                   "Ifc file simple;\nIFC4;\n7;\n#7=IFCPOLYLINE((#9,#9));\n#9=IFCCARTESIANPOINT((1.,2.));\n");
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.json()[0]["statement"], "#9=IFCCARTESIANPOINT((1.,2.));");
}

}   // namespace
}   // namespace oxa::test
