// SPDX-License-Identifier: Apache-2.0
// "oxaifc list": what a column tells, groups, and the forms of output, for the house in IFC2X3, IFC4 and IFC4X3.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/WrittenFile.h"
#include "tools/verbs/RuleRun.h"

namespace oxa::test {
namespace {

using Plain = nlohmann::json;   // keys in any order

class RuleList : public testing::TestWithParam<const char*> {};

// ---- columns --------------------------------------------------------------------------------------------------------

struct CellRow {
    const char* pElement;
    const char* pColumn;
    const char* pValue;   // JSON
};

// clang-format off
const CellRow g_cells[] = {
    {"#30", "class", R"("IfcWall")"},
    {"#31", "class", R"("IfcWallStandardCase")"},
    {"#30", "id", "30"},
    {"#30", "GlobalId", R"("1House_of_rules$__0030")"},
    {"#30", "Name", R"("W1")"},
    {"#30", "nAmE", R"("W1")"},
    {"#34", "Name", "null"},
    {"#33", "Name", R"("Wand+T\u00fcr \"a,b\"")"},
    {"#32", "Description", R"("one\ntwo")"},
    {"#40", "OverallWidth", "0.9"},
    {"#41", "OverallWidth", "null"},
    {"#30", "OverallWidth", "null"},
    {"#29", "Elevation", "-2.6"},
    {"#45", "PredefinedType", R"("NOTDEFINED")"},
    {"#30", "type.Name", "null"},
    {"#33", "type.Name", R"("WT")"},
    {"#33", "type.Tag", R"("WT-1")"},
    {"#33", "type.GlobalId", R"("1House_of_rules$__0060")"},
    {"#30", "storey.Name", R"("EG")"},
    {"#40", "storey.Name", R"("EG")"},
    {"#42", "storey.Name", R"("EG")"},
    {"#43", "storey.Name", R"("EG")"},
    {"#50", "storey.Name", R"("EG")"},
    {"#41", "storey.Name", R"("OG")"},
    {"#34", "storey.Name", "null"},
    {"#32", "storey.Elevation", "3.0"},
    {"#43", "building.Name", R"("Haus A")"},
    {"#34", "building.Name", "null"},
    {"#43", "container.Name", R"("K\u00fcche")"},
    {"#40", "container.Name", R"("EG")"},
    {"#30", "material.Name", R"("Ziegel, D\u00e4mmung")"},
    {"#32", "material.Name", R"("Beton")"},
    {"#33", "material.Name", R"("Holz")"},
    {"#40", "material.Name", R"("Holz, Glas")"},
    {"#34", "material.Name", "null"},
    {"#30", "classification", R"("331")"},
    {"#33", "classification", R"("330")"},
    {"#34", "classification", "null"},
    {"#30", "group.Name", R"("Brand 1")"},
    {"#40", "group.Name", R"("Brand 1, Sys")"},
    {"#42", "parent.Name", R"("Tor")"},
    {"#30", "Pset_WallCommon.FireRating", R"("F 90")"},
    {"#30", "Pset_WallCommon.IsExternal", "true"},
    {"#30", "Pset_WallCommon.LoadBearing", "false"},
    {"#30", "Pset_WallCommon.ThermalTransmittance", "0.24"},
    {"#33", "Pset_WallCommon.FireRating", R"("F 60")"},
    {"#33", "Pset_WallCommon.LoadBearing", "true"},
    {"#34", "Pset_WallCommon.FireRating", "null"},
    {"#60", "Pset_WallCommon.FireRating", R"("F 60")"},
    {"#40", "Pset_DoorCommon.SecurityRating", "null"},
    {"#32", "\"My set\".'a.b'", "7"},
    {"#32", "\"My set\".Enum", R"("NEW, OLD")"},
    {"#32", "\"My set\".List", R"("1.5, 2.5")"},
    {"#32", "\"My set\".Cx.Part", R"("inner")"},
    {"#31", "Qto_WallBaseQuantities.NetVolume", "3.75"},
    {"#31", "Qto_WallBaseQuantities.Length", "null"},
};
// clang-format on

TEST_P(RuleList, AColumnTells) {
    for (const CellRow& row : g_cells) {
        SCOPED_TRACE(std::string(row.pElement) + " " + row.pColumn);
        const ProgramRun run = runOn(GetParam(), {"list", row.pElement, "-c", row.pColumn, "-f", "json"});
        EXPECT_EQ(run.iCode, 0) << run.sError;
        const Json expected = Json::array({{{row.pColumn, Json::parse(row.pValue)}}});
        EXPECT_EQ(run.json(), expected);
    }
}

TEST_P(RuleList, ColumnsStandAsTheyWereWritten) {
    const Json expected =
        Json::array({{{"Pset_DoorCommon.FireRating", "T 30"}, {"GlobalId", sRuleGuid(40)}, {"OverallWidth", 0.9}},
                     {{"Pset_DoorCommon.FireRating", nullptr}, {"GlobalId", sRuleGuid(41)}, {"OverallWidth", nullptr}},
                     {{"Pset_DoorCommon.FireRating", nullptr}, {"GlobalId", sRuleGuid(42)}, {"OverallWidth", 1.01}}});
    for (const std::vector<std::string>& columns :
         {std::vector<std::string>{"-c", "Pset_DoorCommon.FireRating,GlobalId,OverallWidth"},
          {"--columns", "Pset_DoorCommon.FireRating,GlobalId,OverallWidth"}}) {
        std::vector<std::string> words{"list", "IfcDoor", "-f", "json"};
        words.insert(words.end(), columns.begin(), columns.end());
        EXPECT_EQ(runOn(GetParam(), words).json(), expected);
    }
}

TEST_P(RuleList, AColumnThatThereIsNoneOfIsAnError) {
    const struct {
        const char* pColumns;
        const char* pTold;
    } rows[] = {
        {"Nam", "Name"},   {"Name,OveralWidth", "OverallWidth"}, {"storey.Elevatin", "Elevation"}, {"\"x", "quote"},
        {"Name,", "name"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pColumns);
        for (const char* pOption : {"-c", "--group-by", "--sum"}) {
            const ProgramRun run = runOn(GetParam(), {"list", "IfcDoor", pOption, row.pColumns});
            EXPECT_EQ(run.iCode, 2);
            EXPECT_EQ(run.sOut, "");
            EXPECT_TRUE(boOneLine(run.sError)) << run.sError;
            EXPECT_NE(run.sError.find(row.pTold), std::string::npos) << run.sError;
        }
    }
}

// ---- groups ---------------------------------------------------------------------------------------------------------

struct GroupRow {
    const char* pRule;
    std::vector<std::string> words;
    const char* pRows;   // JSON
};
const GroupRow g_groups[] = {
    {"counted",
     {"IfcElement", "--group-by", "storey.Name", "--count"},
     R"J([{"storey.Name":"EG","count":7},{"storey.Name":"OG","count":3},{"storey.Name":null,"count":1}])J"},
    {"summed; no number is no sum; ascending, no value last",
     {"IfcWall", "--group-by", "material.Name", "--sum", "Qto_WallBaseQuantities.NetVolume"},
     R"J([{"material.Name":"Beton","sum(Qto_WallBaseQuantities.NetVolume)":1.25},
         {"material.Name":"Holz","sum(Qto_WallBaseQuantities.NetVolume)":null},
         {"material.Name":"Ziegel, D\u00e4mmung","sum(Qto_WallBaseQuantities.NetVolume)":6.25},
         {"material.Name":null,"sum(Qto_WallBaseQuantities.NetVolume)":null}])J"},
    {"by numbers, in their order",
     {"IfcBuildingStorey", "--group-by", "Elevation", "--count"},
     R"J([{"Elevation":-2.6,"count":1},{"Elevation":0.0,"count":1},{"Elevation":3.0,"count":1}])J"},
    {"by truth",
     {"IfcWall", "--group-by", "Pset_WallCommon.LoadBearing", "--count"},
     R"J([{"Pset_WallCommon.LoadBearing":false,"count":2},{"Pset_WallCommon.LoadBearing":true,"count":1},
         {"Pset_WallCommon.LoadBearing":null,"count":2}])J"},
    {"two keys",
     {"IfcWall+IfcDoor", "--group-by", "class,storey.Name", "--count"},
     R"J([{"class":"IfcDoor","storey.Name":"EG","count":2},{"class":"IfcDoor","storey.Name":"OG","count":1},
         {"class":"IfcWall","storey.Name":"EG","count":1},{"class":"IfcWall","storey.Name":"OG","count":2},
         {"class":"IfcWall","storey.Name":null,"count":1},
         {"class":"IfcWallStandardCase","storey.Name":"EG","count":1}])J"},
    {"two sums and a count",
     {"IfcDoor", "--group-by", "storey.Name", "--count", "--sum", "OverallHeight,id"},
     R"J([{"storey.Name":"EG","count":2,"sum(OverallHeight)":4.11,"sum(id)":82},
         {"storey.Name":"OG","count":1,"sum(OverallHeight)":null,"sum(id)":41}])J"},
    {"without a key: all of them", {"IfcWall", "--count"}, R"J([{"count":5}])J"},
    {"none of them", {"IfcSlab", "--count"}, R"J([{"count":0}])J"},
    {"no sum of none", {"IfcSlab", "--sum", "Elevation"}, R"J([{"sum(Elevation)":null}])J"},
    {"no group of none", {"IfcSlab", "--group-by", "Name", "--count"}, "[]"},
    {"texts are no numbers", {"IfcWall", "--sum", "Tag"}, R"J([{"sum(Tag)":null}])J"},
};

TEST_P(RuleList, GroupsAreCountedAndSummed) {
    for (const GroupRow& row : g_groups) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"list", "-f", "json"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runOn(GetParam(), words);
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_EQ(Plain::parse(run.sOut, nullptr, false), Plain::parse(row.pRows)) << run.sOut;
    }
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleList, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });

// ---- forms of output ------------------------------------------------------------------------------------------------

struct RuleListFormRow {
    const char* pRule;
    std::vector<std::string> words;
    std::string_view out;
};

// clang-format off
const RuleListFormRow g_ruleListForms[] = {
    {"CSV: lines end in CR and LF; a value with comma, quote or line end is quoted; ' before = + - @",
     {"IfcWall", "-c", "id,Name,Tag,Description", "-f", "csv"},
     "id,Name,Tag,Description\r\n"
     "30,W1,T-1,\r\n"
     "31,W2,'-2,\r\n"
     "32,W3,'=3,\"one\ntwo\"\r\n"
     "33,\"Wand+T\u00fcr \"\"a,b\"\"\",'@4,\r\n"
     "34,,'+5,\r\n"},
    {"CSV: a number is no text", {"IfcBuildingStorey", "-c", "Name,Elevation", "-f", "csv"},
     "Name,Elevation\r\nEG,0\r\nOG,3\r\nKG,-2.6\r\n"},
    {"CSV: truth", {"#30", "-c", "Pset_WallCommon.IsExternal,Pset_WallCommon.LoadBearing", "-f", "csv"},
     "Pset_WallCommon.IsExternal,Pset_WallCommon.LoadBearing\r\ntrue,false\r\n"},
    {"CSV: a byte order mark", {"#30", "-c", "Name", "-f", "csv", "--bom"}, "\xEF\xBB\xBFName\r\nW1\r\n"},
    {"CSV: names of columns are quoted too", {"#32", "-c", "\"My set\".'a.b'", "-f", "csv"},
     "\"\"\"My set\"\".'a.b'\"\r\n7\r\n"},
    {"CSV: no rows", {"IfcSlab", "-c", "id,Name", "-f", "csv"}, "id,Name\r\n"},
    {"CSV: groups", {"IfcElement", "--group-by", "storey.Name", "--count", "-f", "csv"},
     "storey.Name,count\r\nEG,7\r\nOG,3\r\n,1\r\n"},
    {"TSV: lines end in LF; a value with a tab is quoted", {"IfcDoor", "-c", "id,Tag", "-f", "tsv"},
     "id\tTag\n40\td' 1\n41\t\"a\tb\"\n42\t\n"},
    {"TSV: ' before = + - @", {"#31+#32", "-c", "Tag,Name", "-f", "tsv"}, "Tag\tName\n'-2\tW2\n'=3\tW3\n"},
    {"TSV: a byte order mark", {"#30", "-c", "Name", "-f", "tsv", "--bom"}, "\xEF\xBB\xBFName\nW1\n"},
    {"NDJSON: an object a line", {"IfcDoor", "-c", "id,OverallWidth", "-f", "ndjson"},
     "{\"id\":40,\"OverallWidth\":0.9}\n{\"id\":41,\"OverallWidth\":null}\n{\"id\":42,\"OverallWidth\":1.01}\n"},
    {"NDJSON: texts as they are", {"#32", "-c", "Tag,Description", "-f", "ndjson"},
     "{\"Tag\":\"=3\",\"Description\":\"one\\ntwo\"}\n"},
    {"NDJSON: no rows", {"IfcSlab", "-f", "ndjson"}, ""},
};
// clang-format on

TEST(RuleListForm, IsWrittenByteForByte) {
    const TestFolder folder;
    for (const RuleListFormRow& row : g_ruleListForms) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"list"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runOn("IFC4", words);
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_EQ(run.sOut, row.out);

        const std::string sOut = folder.sFile("out.txt", "old");
        words.insert(words.end(), {"-o", sOut});
        const ProgramRun toFile = runOn("IFC4", words);
        EXPECT_EQ(toFile.iCode, 0) << toFile.sError;
        EXPECT_EQ(toFile.sOut, "");
        EXPECT_EQ(sContent(sOut), row.out) << "-f wins over the end of the name";
    }
}

TEST(RuleListForm, TheEndOfTheNameSaysTheForm) {
    const TestFolder folder;
    const struct {
        const char* pName;
        const char* pForm;
    } rows[] = {{"a.csv", "csv"}, {"a.tsv", "tsv"}, {"a.json", "json"}, {"a.ndjson", "ndjson"}, {"a.txt", "table"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pName);
        const std::string sOut = (folder.path() / row.pName).string();
        EXPECT_EQ(runOn("IFC4", {"list", "IfcWall", "-o", sOut}).iCode, 0);
        EXPECT_EQ(sContent(sOut), runOn("IFC4", {"list", "IfcWall", "-f", row.pForm}).sOut);
    }
}

TEST(RuleListForm, AFailureLeavesTheFileAsItWas) {
    const TestFolder folder;
    const std::string sOld = folder.sFile("old.csv", "old");
    const std::string sOther = folder.sFile("old.ifc", "old");
    const struct {
        const char* pRule;
        std::vector<std::string> words;
    } rows[] = {
        {"a query that is none", {"list", "IfcWall,", "-o", sOld}},
        {"a class that there is not", {"list", "IfcWal", "-o", sOld}},
        {"a column that there is not", {"list", "IfcWall", "-c", "Nam", "-o", sOld}},
        {"a form that is none of a table", {"list", "IfcWall", "-o", sOther}},
        {"no such folder", {"list", "IfcWall", "-o", (folder.path() / "none" / "a.csv").string()}},
        {"a form that there is not", {"list", "IfcWall", "-f", "html", "-o", sOld}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        const ProgramRun run = runOn("IFC4", row.words);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_TRUE(boOneLine(run.sError)) << run.sError;
        EXPECT_EQ(sContent(sOld), "old");
        EXPECT_EQ(sContent(sOther), "old");
        EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"old.csv", "old.ifc"}));
    }
}

std::vector<std::string> ruleListLines(const std::string& text) {
    std::vector<std::string> found(1);
    for (const char c : text) {
        if (c == '\n')
            found.emplace_back();
        else if (c != '\r')
            found.back() += c;
    }
    if (found.back().empty()) found.pop_back();
    return found;
}

std::size_t iLetters(const std::string& text) {
    std::size_t iCount = 0;
    for (const char c : text) iCount += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    return iCount;
}

TEST(RuleListForm, ATableIsCutToATerminalAndWholeElsewhere) {
    if (!boCanBe(OutputKind::Terminal)) GTEST_SKIP() << "no terminal for a test here";
    const std::string sLong = std::string(300, 'x') + "end";
    const std::string sFile =
        sExchangeFile("IFC4", "#1=IFCWALL('" + sRuleGuid(1) + "',$,'" + sLong + "',$,$,$,$,'T',$);\n#2=IFCWALL('" +
                                  sRuleGuid(2) + "',$,'short',$,$,$,$,'U',$);\n");
    const std::vector<std::string> words{"list", "-", "IfcWall", "-c", "id,Name,Tag"};
    const ProgramRun whole = runProgram(words, sFile);
    EXPECT_NE(whole.sOut.find(sLong), std::string::npos);
    for (const std::string& sLine : ruleListLines(runProgram(words, sFile, OutputKind::Terminal).sOut))
        EXPECT_LE(iLetters(sLine), 80U) << sLine;
    for (const char* pForm : {"csv", "json"}) {
        std::vector<std::string> form = words;
        form.insert(form.end(), {"-f", pForm});
        EXPECT_NE(runProgram(form, sFile, OutputKind::Terminal).sOut.find(sLong), std::string::npos)
            << pForm << " is for programs: never cut";
    }
    const std::vector<std::string> rows = ruleListLines(whole.sOut);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].find("Name"), rows[2].find("short")) << "a column begins at one place";
}

TEST(RuleListForm, SeveralFilesHaveAColumnOfTheirNames) {
    const TestFolder folder;
    const std::string sOne = folder.sFile("one.ifc", sRuleHouse("IFC2X3"));
    const std::string sTwo = folder.sFile("two.ifc", sRuleHouse("IFC4X3"));
    const struct {
        const char* pRule;
        std::vector<std::string> words;
        Json expected;
    } rows[] = {
        {"rows",
         {"IfcDoor, storey=OG", "-c", "Name"},
         Json::array({{{"file", sOne}, {"Name", "D2"}}, {{"file", sTwo}, {"Name", "D2"}}})},
        {"no query", {"-c", "id"}, nullptr},
        {"groups",
         {"IfcElement, storey!=NULL", "--group-by", "storey.Name", "--count"},
         Json::array({{{"file", sOne}, {"storey.Name", "EG"}, {"count", 7}},
                      {{"file", sOne}, {"storey.Name", "OG"}, {"count", 3}},
                      {{"file", sTwo}, {"storey.Name", "EG"}, {"count", 7}},
                      {{"file", sTwo}, {"storey.Name", "OG"}, {"count", 3}}})},
        {"counts",
         {"IfcDoor", "--count"},
         Json::array({{{"file", sOne}, {"count", 3}}, {{"file", sTwo}, {"count", 3}}})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"list", sOne, sTwo};
        words.insert(words.end(), row.words.begin(), row.words.end());
        words.insert(words.end(), {"-f", "json"});
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 0) << run.sError;
        if (row.expected.is_null()) {
            EXPECT_EQ(sIds(run.json()), std::string(g_pRuleObjects) + " " + g_pRuleObjects);
        } else {
            EXPECT_EQ(run.json(), row.expected) << run.sOut;
        }
    }
}

TEST(RuleListForm, OneBadFileOfSeveralIsTold) {
    const TestFolder folder;
    const std::string sGood = folder.sFile("good.ifc", sRuleHouse("IFC4"));
    const std::string sNone = (folder.path() / "none.ifc").string();
    const ProgramRun run = runProgram({"list", sGood, sNone, "IfcDoor", "-c", "id", "-f", "csv"});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_TRUE(boOneLine(run.sError)) << run.sError;
    EXPECT_NE(run.sError.find(sNone), std::string::npos) << run.sError;
}

TEST(RuleListForm, ErrorsOfTheFileGiveOne) {
    const ProgramRun run =
        runProgram({"list", "-", "-c", "Name", "-f", "csv"},
                   sExchangeFile("IFC4", "#1=IFCWALL('" + sRuleGuid(1) + "',$,'W',$,$,$,$,$,$);\n#2=IFCTEAPOT();\n"));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, "Name\r\nW\r\n");
    EXPECT_NE(run.sError, "");
}

TEST(RuleListForm, NumbersComeBackFromJson) {
    const TestFolder folder;
    const char* const numbers[] = {"0.1",
                                   "1.E-05",
                                   "1.7976931348623157E308",
                                   "2.2250738585072014E-308",
                                   "0.30000000000000004",
                                   "1.E21",
                                   "123456789012345680.",
                                   "-0.1",
                                   "100."};
    for (const char* pNumber : numbers) {
        SCOPED_TRACE(pNumber);
        const std::string sFile = sExchangeFile("IFC4", "#2147483647=IFCBUILDINGSTOREY('" + sRuleGuid(1) +
                                                            "',$,$,$,$,$,$,$,$," + pNumber + ");\n");
        const double number = std::stod(pNumber);
        const Json row = runProgram({"list", "-", "-c", "id,Elevation", "-f", "json"}, sFile).json()[0];
        EXPECT_EQ(row["Elevation"].get<double>(), number);
        EXPECT_EQ(row["id"], 2147483647);
        const Json props = runProgram({"props", "-", "2147483647", "--json"}, sFile).json();
        EXPECT_EQ(props["attributes"]["Elevation"].get<double>(), number);
        EXPECT_EQ(props["id"], 2147483647);
        const std::vector<std::string> csv =
            ruleListLines(runProgram({"list", "-", "-c", "Elevation", "-f", "csv"}, sFile).sOut);
        ASSERT_EQ(csv.size(), 2U);
        EXPECT_EQ(std::stod(csv[1]), number) << csv[1];
    }
}

// A file that ends in the middle of a statement: its elements are still found by their numbers.
TEST(RuleListForm, AFileThatWasCutKeepsItsNumbers) {
    const std::string sText = sRuleHouse("IFC4");
    const std::string sCut = sText.substr(0, sText.find("#62=") + 20);
    const ProgramRun list = runProgram({"list", "-", "IfcDoor", "-c", "id,Name", "-f", "csv"}, sCut);
    EXPECT_EQ(list.iCode, 1);
    EXPECT_EQ(list.sOut, "id,Name\r\n40,D1\r\n41,D2\r\n42,D3\r\n");
    EXPECT_EQ(runProgram({"props", "-", "40", "--json"}, sCut).json()["type"], "IfcDoor");
    EXPECT_EQ(runProgram({"show", "-", "#40", "--json"}, sCut).iCode, 1);
}

}   // namespace
}   // namespace oxa::test
