// SPDX-License-Identifier: Apache-2.0
// "oxaifc list": what a query selects, and what is said of one that is none; the same questions to the same house in
// IFC2X3, IFC4 and IFC4X3.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/verbs/RuleRun.h"

namespace oxa::test {
namespace {

// ---- terms ----------------------------------------------------------------------------------------------------------

struct QueryRow {
    const char* pRule;
    std::string query;
    const char* pIds;
};

const char* const g_pElements = "30 31 32 33 34 40 41 42 43 45 50";

// clang-format off
const QueryRow g_queries[] = {
    {"a class with its subtypes", "IfcWall", "30 31 32 33 34"},
    {"in small letters", "ifcwall", "30 31 32 33 34"},
    {"in capital letters", "IFCWALL", "30 31 32 33 34"},
    {"a subtype alone", "IfcWallStandardCase", "31"},
    {"an abstract class", "IfcElement", g_pElements},
    {"a number", "#40", "40"},
    {"a number that there is not", "#4000", ""},
    {"a GlobalId", sRuleGuid(40), "40"},
    {"a GlobalId that there is not", sRuleGuid(4000), ""},
    {"not a class: of all objects and types", "!IfcElement", "9 20 21 22 23 24 29 60 62 140 142 144"},
    {"not a class", "IfcElement, !IfcWall", "40 41 42 43 45 50"},
    {"not a subtype", "IfcWall, !IfcWallStandardCase", "30 32 33 34"},
    {"not a number", "IfcWall,!#30", "31 32 33 34"},
    {"not a GlobalId", "IfcWall, !" + sRuleGuid(30), "31 32 33 34"},
    {"not and not", "IfcElement, !IfcWall, !IfcDoor", "43 45 50"},
    {"two classes in one group are both at once", "IfcWall, IfcDoor", ""},
    {"two groups add", "IfcWall + IfcDoor", "30 31 32 33 34 40 41 42"},
    {"without blanks", "IfcWall+IfcDoor", "30 31 32 33 34 40 41 42"},
    {"by number, whatever stands first", "IfcDoor + IfcWall", "30 31 32 33 34 40 41 42"},
    {"each once", "IfcWall + IfcWallStandardCase + #31", "30 31 32 33 34"},
    {"a comma narrows within its group", "IfcWall, Name=W1 + IfcDoor, OverallWidth>1", "30 42"},
    {"not, in the second group alone", "#30 + IfcDoor, !#41", "30 40 42"},

    {"an attribute", "Name=W1", "30"},
    {"an attribute in any case", "nAME=W1", "30"},
    {"a value goes by case", "Name=w1", ""},
    {"in double quotes", "Name=\"W1\"", "30"},
    {"in single quotes", "Name='W1'", "30"},
    {"a blank inside", "Name=Haus A", "21"},
    {"quotes keep comma, plus and quotes", "Name=\"Wand+T\u00fcr \\\"a,b\\\"\"", "33"},
    {"the other quotes", "Name='Wand+T\u00fcr \"a,b\"'", "33"},
    {"a quote in quotes", "IfcDoor, Tag='d\\' 1'", "40"},
    {"letters beyond ASCII", "Name=K\u00fcche", "24"},
    {"no value", "IfcWall, Name=NULL", "34"},
    {"some value", "IfcWall, Name!=NULL", "30 31 32 33"},
    {"not no value", "IfcWall, !Name=NULL", "30 31 32 33"},
    {"not equal, those without a value too", "IfcWall, Name!=W1", "31 32 33 34"},
    {"not the term", "IfcWall, !Name=W1", "31 32 33 34"},
    {"not not equal", "IfcWall, !Name!=W1", "30"},
    {"an expression", "IfcWall, Name=/W[12]/", "30 31"},
    {"which all of the text matches", "IfcWall, Name=/W/", ""},
    {"with anything around", "IfcWall, Name=/.*and.*/", "33"},
    {"of a letter beyond ASCII", "Name=/K.che/", "24"},
    {"with such a letter", "IfcWall, Name=/.*T\u00fcr.*/", "33"},
    {"with any case", "IfcWall, Name=/(?i)w1/", "30"},
    {"alternatives", "IfcWall, Name=/W1|W3/", "30 32"},
    {"comma and plus in an expression", "IfcWall, Name=/[^,]+,b\"/", "33"},
    {"not an expression", "IfcWall, Name!=/W./", "33 34"},
    {"holds", "IfcWall, Name*=W", "30 31 32 33"},
    {"holds what is in the middle", "Name*=\"+T\u00fc\"", "33"},
    {"does not hold, or has none", "IfcWall, Name!*=W", "34"},
    {"holds not", "IfcWall, !Name*=W", "34"},
    {"a text greater", "IfcWall, Name>W1", "31 32 33"},
    {"a text not less", "IfcWall, Name>=W2", "31 32 33"},
    {"a text less", "IfcWall, Name<W2", "30"},
    {"a text not greater", "IfcWall, Name<=W2", "30 31"},
    {"the class", "class=IfcWall", "30 32 33 34"},
    {"the class by an expression", "class=/IfcWall(StandardCase)?/", "30 31 32 33 34"},
    {"the number", "id=40", "40"},
    {"numbers below", "id<31", "9 20 21 22 23 24 29 30"},
    {"an enumerator", "IfcElementAssembly, PredefinedType=NOTDEFINED", "45"},

    {"a number equal", "IfcDoor, OverallWidth=0.9", "40"},
    {"with more digits", "IfcDoor, OverallWidth=0.900", "40"},
    {"with an exponent", "IfcDoor, OverallWidth=9e-1", "40"},
    {"by nine digits", "IfcDoor, OverallWidth=0.90000000001", "40"},
    {"not by seven", "IfcDoor, OverallWidth=0.9000001", ""},
    {"not equal", "IfcDoor, OverallWidth!=0.9", "41 42"},
    {"greater", "IfcDoor, OverallWidth>0.9", "42"},
    {"not less", "IfcDoor, OverallWidth>=0.9", "40 42"},
    {"less", "IfcDoor, OverallWidth<1.01", "40"},
    {"not greater", "IfcDoor, OverallWidth<=1.01", "40 42"},
    {"by value and not by digits", "IfcDoor, OverallWidth<10", "40 42"},
    {"a negative number", "IfcBuildingStorey, Elevation<-1", "29"},
    {"zero", "IfcBuildingStorey, Elevation=0", "22"},
    {"no number", "IfcDoor, OverallWidth=NULL", "41"},
    {"some number", "IfcDoor, OverallWidth!=NULL", "40 42"},
    {"some number, among elements that have no such attribute", "IfcElement, OverallWidth!=NULL", "40 42"},

    {"a property", "IfcWall, Pset_WallCommon.FireRating=F 90", "30 31"},
    {"a property in quotes", "IfcWall, Pset_WallCommon.FireRating=\"F 90\"", "30 31"},
    {"of the type", "IfcWall, Pset_WallCommon.FireRating=F 60", "33"},
    {"of type objects as well", "Pset_WallCommon.FireRating=F 60", "33 60"},
    {"which lack it", "IfcWall, Pset_WallCommon.FireRating=NULL", "34"},
    {"which have it", "IfcWall, Pset_WallCommon.FireRating!=NULL", "30 31 32 33"},
    {"not this value", "IfcWall, Pset_WallCommon.FireRating!=F 90", "32 33 34"},
    {"holds", "IfcElement, Pset_WallCommon.FireRating*=0", "30 31 32 33"},
    {"true", "IfcWall, Pset_WallCommon.IsExternal=TRUE", "30 31"},
    {"false", "IfcWall, Pset_WallCommon.LoadBearing=FALSE", "30 31"},
    {"true beside what the type says", "IfcWall, Pset_WallCommon.LoadBearing=TRUE", "33"},
    {"not true", "IfcWall, Pset_WallCommon.LoadBearing!=TRUE", "30 31 32 34"},
    {"neither true nor false", "IfcWall, Pset_WallCommon.LoadBearing=NULL", "32 34"},
    {"a property without a value lacks one", "IfcDoor, Pset_DoorCommon.SecurityRating=NULL", "40 41 42"},
    {"a measure", "IfcWall, Pset_WallCommon.ThermalTransmittance<0.3", "30 31"},
    {"a quantity greater", "IfcWall, Qto_WallBaseQuantities.NetVolume>2.5", "31"},
    {"a quantity not less", "IfcWall, Qto_WallBaseQuantities.NetVolume>=2.5", "30 31"},
    {"a quantity less", "IfcWall, Qto_WallBaseQuantities.NetVolume<2", "32"},
    {"no quantity", "IfcWall, Qto_WallBaseQuantities.NetVolume=NULL", "33 34"},
    {"an expression for the set", "IfcElement, /Pset_.*Common/.FireRating!=NULL", "30 31 32 33 40"},
    {"two expressions", "IfcElement, /Pset_.*Common/.FireRating=/[FT] 30/", "32 40"},
    {"an expression for the property", "IfcWall, Pset_WallCommon./Fire.*/=F 90", "30 31"},
    {"expressions for both", "IfcElement, /.*Common/./.*Rating/=F 30", "32"},
    {"names in quotes", "\"My set\".'a.b'=7", "32"},
    {"one of several values is enough", "\"My set\".Enum=OLD", "32"},
    {"of a list", "\"My set\".List=2.5", "32"},
    {"a part of a complex property", "\"My set\".\"Cx.Part\"=inner", "32"},

    {"a type by name", "type=WT", "33"},
    {"a type of doors", "type=DT", "40 41"},
    {"a type by GlobalId", "type=" + sRuleGuid(60), "33"},
    {"a type by an expression", "type=/.T/", "33 40 41"},
    {"no type", "IfcDoor, type=NULL", "42"},
    {"some type", "IfcElement, type!=NULL", "33 40 41"},
    {"an attribute of the type", "type.Tag=WT-1", "33"},
    {"storey, over wholes and openings", "IfcElement, storey=EG", "30 31 40 42 43 45 50"},
    {"another storey", "IfcElement, storey=OG", "32 33 41"},
    {"a storey by GlobalId", "IfcElement, storey=" + sRuleGuid(23), "32 33 41"},
    {"no storey", "IfcElement, storey=NULL", "34"},
    {"not this storey", "IfcElement, storey!=EG", "32 33 34 41"},
    {"an attribute of the storey", "IfcElement, storey.Elevation>0", "32 33 41"},
    {"the building", "IfcElement, building=Haus A", "30 31 32 33 40 41 42 43 45 50"},
    {"the nearest container", "IfcElement, container=K\u00fcche", "43"},
    {"the container of wholes and walls", "IfcElement, container=EG", "30 31 40 42 45 50"},
    {"anywhere in a storey", "IfcElement, location=EG", "30 31 40 42 43 45 50"},
    {"in quotes", "IfcElement, location=\"EG\"", "30 31 40 42 43 45 50"},
    {"anywhere on the site", "IfcDoor, location=Grund", "40 41 42"},
    {"by GlobalId", "IfcDoor, location=" + sRuleGuid(20), "40 41 42"},
    {"spaces too", "IfcSpace, location=EG", "24"},
    {"storeys in a building", "IfcBuildingStorey, location=Haus A", "22 23 29"},
    {"nowhere", "IfcElement, location=NULL", "34"},
    {"not in this storey", "IfcElement, location!=EG", "32 33 34 41"},
    {"part of a whole", "parent=Tor", "42"},
    {"in a wall", "parent=W1", "40 50"},
    {"below the project", "IfcElement, parent=Haus", "30 31 32 33 40 41 42 43 45 50"},
    {"in a group", "group=Brand 1", "30 40"},
    {"in a zone", "group=Zone", "24"},
    {"in one of two groups", "group=Sys", "40"},
    {"in no group", "IfcDoor, group=NULL", "41 42"},
    {"not in this group", "IfcDoor, group!=Sys", "41 42"},
    {"a material of a layer", "IfcElement, material=Ziegel", "30 31"},
    {"of the second layer", "IfcElement, material=D\u00e4mmung", "30 31"},
    {"the name of a set of layers", "IfcElement, material=Au\u00dfenwand", "30 31"},
    {"a single material", "IfcElement, material=Beton", "32"},
    {"of a list, and of a type", "IfcElement, material=Holz", "33 40"},
    {"a material that holds", "IfcElement, material*=mm", "30 31"},
    {"a material by an expression", "IfcElement, material=/B.*|G.*/", "32 40"},
    {"no material", "IfcWall, material=NULL", "34"},
    {"not this material", "IfcWall, material!=Ziegel", "32 33 34"},
    {"a classification by its code", "IfcElement, classification=331", "30 31"},
    {"by its name", "IfcElement, classification=Tragende Wand", "30 31"},
    {"by its system", "IfcElement, classification=\"DIN 276\"", "30 31 33 40"},
    {"of the type", "IfcElement, classification=330", "33"},
    {"by an expression", "IfcElement, classification=/33./", "30 31 33"},
    {"no classification", "IfcWall, classification=NULL", "32 34"},
};
// clang-format on

class RuleQuery : public testing::TestWithParam<const char*> {};

TEST_P(RuleQuery, ATermSelects) {
    for (const QueryRow& row : g_queries) {
        SCOPED_TRACE(std::string(row.pRule) + ": " + row.query);
        const ProgramRun run = runOn(GetParam(), {"list", row.query, "-c", "id", "-f", "json"});
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_EQ(sIds(run.json()), row.pIds);
    }
}

TEST_P(RuleQuery, ExactLeavesSubtypesOut) {
    const struct {
        const char* pQuery;
        const char* pIds;
    } rows[] = {
        {"IfcWall", "30 32 33 34"},
        {"IfcWallStandardCase", "31"},
        {"IfcElement", ""},
        {"IfcWall + IfcDoor", "30 32 33 34 40 41 42"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pQuery);
        EXPECT_EQ(sIds(runOn(GetParam(), {"list", row.pQuery, "--exact", "-c", "id", "-f", "json"}).json()), row.pIds);
    }
}

TEST_P(RuleQuery, WithoutAQueryAllObjectsAndTypes) {
    const Json rows = runOn(GetParam(), {"list", "-f", "json"}).json();
    EXPECT_EQ(sIds(rows), g_pRuleObjects);
    EXPECT_EQ(rows[7], Json::parse(R"({"id":30,"class":"IfcWall","GlobalId":"1House_of_rules$__0030","Name":"W1"})"));
}

// ---- queries that are none ------------------------------------------------------------------------------------------

std::string sRepeated(std::string_view text, int iTimes) {
    std::string sText;
    for (int i = 0; i < iTimes; ++i) sText += text;
    return sText;
}

struct RuleQueryWrongRow {
    const char* pRule;
    std::string query;
    std::vector<const char*> told;   // what the line holds
};

// clang-format off
const RuleQueryWrongRow g_ruleQueryWrong[] = {
    {"a comma alone", ",", {"column 1"}},
    {"a comma too many", "IfcWall,", {"column 9"}},
    {"a comma in front", ",IfcWall", {"column 1"}},
    {"two commas", "IfcWall,,IfcDoor", {"column 9"}},
    {"a plus alone", "+", {"column 1"}},
    {"a plus too many", "IfcWall+", {"column 9"}},
    {"two plus", "IfcWall++IfcDoor", {"column 9"}},
    {"not, and no more", "!", {"column 2"}},
    {"blanks alone", "  ", {"column 3"}},
    {"no name", "=W1", {"column 1"}},
    {"no value", "Name=", {"column 6"}},
    {"an open quote", "IfcWall, Name=\"W1", {"column 15", "quote"}},
    {"another open quote", "Name='W1", {"column 6", "quote"}},
    {"a quote that the backslash takes", "Name=\"W1\\\"", {"column 6", "quote"}},
    {"text behind a quote", "Name=\"W1\"x", {"column 10"}},
    {"columns are counted in letters", "Name=\u00fc\u00fc, Name='x", {"column 15", "quote"}},
    {"an open expression", "Name=/W", {"column 6", "/"}},
    {"an open expression for a set", "/Pset", {"column 1", "/"}},
    {"no expression", "Name=/W(/", {"column 6", "W("}},
    {"a set that is no expression", "IfcWall, /W[/.X=1", {"column 10", "W["}},
    {"a look back, which takes more than linear time", "Name=/(a)\\1/", {"column 6"}},
    {"too large an expression", "Name=/((x{1000}){1000}){1000}/", {"column 6"}},
    {"a set without a property", "Pset_WallCommon.=1", {"column 17"}},
    {"a property without a set", ".FireRating=1", {"column 1"}},
    {"a property that is compared with nothing", "Pset_WallCommon.FireRating", {"column 1"}},
    {"two classes without a comma", "IfcWall IfcDoor", {"column 1", "IfcWall IfcDoor"}},
    {"parentheses, which there are none of", "(IfcWall)", {"column 1"}},
    {"an expression that is greater", "OverallWidth>/0.9/", {"column 14"}},
    {"no number", "#", {"column 1"}},
    {"a number with letters", "#3x", {"column"}},
    {"a GlobalId too short", "1House_of_rules$__003", {"column 1"}},
    {"long", "Name=" + std::string(120'000, 'x'), {"column", "100000"}},
    {"many terms", "#1" + sRepeated(",#1", 25'000), {"column", "1000"}},
    {"many groups", "#1" + sRepeated("+#1", 25'000), {"column", "1000"}},
    {"many expressions", "Name=/x/" + sRepeated(",Name=/x/", 200), {"column", "100"}},
    {"not, very often", std::string(90'000, '!') + "IfcWall", {"column 2"}},
    {"parentheses, very deep", std::string(90'000, '('), {"column 1"}},
    {"quotes", std::string(99'999, '"'), {"column 1"}},
    {"backslashes in an open quote", "Name=\"" + std::string(90'000, '\\'), {"column"}},

    {"no class", "IfcWal", {"IfcWal", "IfcWall", "did you mean"}},
    {"no class behind a not", "IfcElement, !IfcWal", {"IfcWall", "did you mean"}},
    {"no class in a second group", "IfcWall + IfcDor", {"IfcDoor", "did you mean"}},
    {"a type of values", "IfcLabel", {"IfcLabel"}},
    {"no attribute", "OveralWidth>1", {"OveralWidth", "OverallWidth", "did you mean"}},
    {"no attribute of a storey", "storey.Elevatin>0", {"Elevatin", "Elevation", "did you mean"}},
};
// clang-format on

TEST_P(RuleQuery, WhatIsNoQueryIsToldInOneLine) {
    for (const RuleQueryWrongRow& row : g_ruleQueryWrong) {
        SCOPED_TRACE(row.pRule);
        if (!boTakesWord(row.query)) continue;
        const ProgramRun run = runOn(GetParam(), {"list", row.query, "-f", "json"});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_TRUE(boOneLine(run.sError)) << run.sError;
        EXPECT_LT(run.sError.size(), 400U);
        EXPECT_TRUE(run.sError.starts_with("oxaifc: ")) << run.sError;
        for (const char* pTold : row.told) EXPECT_NE(run.sError.find(pTold), std::string::npos) << run.sError;
    }
}

TEST(RuleQueryBounds, AtTheBoundsItIsAnswered) {
    const struct {
        const char* pRule;
        std::string query;
        const char* pIds;
    } rows[] = {
        {"a thousand terms", "#30" + sRepeated("+#30", 999), "30"},
        {"a thousand terms in one group", "#30" + sRepeated(",!#31", 999), "30"},
        {"a hundred expressions", "Name=/W1/" + sRepeated(",Name=/W./", 99), "30"},
        {"a value of nearly 100000 bytes", "Name=" + std::string(99'000, 'x'), ""},
        {"many parts of a name", sRepeated("a.", 40'000) + "b=1", ""},
        {"an expression that others take years for", "Name=/(W*)*(W*)*(W*)*(W*)*(.*)*x/", ""},
        {"nested parentheses", "Name=/" + std::string(900, '(') + "W1" + std::string(900, ')') + "/", "30"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        if (!boTakesWord(row.query)) continue;
        const ProgramRun run = runOn("IFC4", {"list", row.query, "-c", "id", "-f", "json"});
        EXPECT_EQ(run.iCode, 0) << run.sError.substr(0, 200);
        EXPECT_EQ(sIds(run.json()), row.pIds);
    }
}

struct HintRow {
    const char* pRule;
    std::vector<std::string> words;
    std::vector<const char*> told;
};
const HintRow g_hints[] = {
    {"a set in a query", {"IfcWall, Pset_WalCommon.FireRating=NULL"}, {"Pset_WalCommon", "Pset_WallCommon"}},
    {"a property in a query", {"IfcWall, Pset_WallCommon.FireRatng=NULL"}, {"FireRatng", "FireRating"}},
    {"a quantity in a query", {"Qto_WallBaseQuantities.NetVolum>1"}, {"NetVolum", "NetVolume"}},
    {"a set in a column", {"IfcWall", "-c", "Name,Pset_WalCommon.FireRating"}, {"Pset_WalCommon", "Pset_WallCommon"}},
    {"a property in a column", {"IfcWall", "-c", "Pset_WallCommon.FireRatng"}, {"FireRatng", "FireRating"}},
    {"a set in a sum", {"IfcWall", "--sum", "Qto_WallBaseQuantitis.NetVolume"}, {"Qto_WallBaseQuantities"}},
    {"a set in a key", {"IfcWall", "--count", "--group-by", "Pset_WalCommon.FireRating"}, {"Pset_WallCommon"}},
};

TEST_P(RuleQuery, ASetOrPropertyThatNoElementHasIsHintedAt) {
    for (const HintRow& row : g_hints) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"list"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runOn(GetParam(), words);
        EXPECT_EQ(run.iCode, 0);
        EXPECT_TRUE(boOneLine(run.sError)) << run.sError;
        for (const char* pTold : row.told) EXPECT_NE(run.sError.find(pTold), std::string::npos) << run.sError;
    }
    EXPECT_EQ(
        runOn(GetParam(), {"list", "IfcDoor, Pset_DoorCommon.FireRating=NULL", "-c", "Pset_DoorCommon.SecurityRating"})
            .sError,
        "")
        << "where an element has it, there is nothing to hint at";
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleQuery, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });

}   // namespace
}   // namespace oxa::test
