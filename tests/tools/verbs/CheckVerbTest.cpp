// SPDX-License-Identifier: Apache-2.0
// "oxaifc check": the records of a read, as JSON and as text.

#include <algorithm>
#include <iterator>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

struct Record {
    const char* pSeverity;
    const char* pCategory;
    int iLine;   // 0: the record has none
    const char* pText;
};
struct CheckRow {
    const char* pRule;
    std::string sFile;
    std::vector<Record> records;
};

// In sExchangeFile the data begin on line 8.
std::vector<CheckRow> checkRows() {
    const auto sData = [](const char* pData) { return sExchangeFile("IFC4", pData); };
    return {
        {"nothing wrong", sData("#1=IFCCARTESIANPOINT((0.,0.));\n"), {}},
        {"an unknown type", sData("#1=IFCTEAPOT();\n"), {{"error", "value", 8, "#1=IFCTEAPOT();"}}},
        {"a value of the wrong form",
         sData("\n#1 = IFCMATERIAL(5,$,$);\n"),
         {{"error", "value", 9, "#1=IFCMATERIAL(5,$,$);"}}},
        {"a mandatory attribute", sData("#1=IFCMATERIAL($,$,$);\n"), {{"error", "null", 8, "#1=IFCMATERIAL($,$,$);"}}},
        {"a reference to nothing", sData("#1=IFCPOLYLINE((#2));\n"), {{"error", "reference", 0, ""}}},
        {"two in a row",
         sData("#1=IFCTEAPOT();\n/* a comment\n*/\n#2=IFCCUP();\n"),
         {{"error", "value", 8, "#1=IFCTEAPOT();"}, {"error", "value", 11, "#2=IFCCUP();"}}},
        {"a statement without a number sign",
         sData("IFCPOLYLINE(#2);\n"),
         {{"fatal", "syntax", 8, "IFCPOLYLINE(#2);"}}},
        {"an unknown statement in the header",
         "ISO-10303-21;\nHEADER;\nFILE_POPULATION('a');\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nEND-ISO-10303-21;"
         "\n",
         {{"error", "header", 3, "FILE_POPULATION('a');"}}},
        {"an unknown schema", sExchangeFile("IFC99", ""), {{"fatal", "model", 6, "ENDSEC;"}}},
        {"no exchange structure", "Dear Sir or Madam,\n", {{"fatal", "syntax", 0, ""}}},
        {"a fault in the simple form",
         "Ifc file simple;\nIFC4;\n*;\n#1=IFCPOLYLINE((#2));\n",
         {{"error", "reference", 0, ""}}},
    };
}

std::vector<std::string> keys(const Json& object) {
    std::vector<std::string> result;
    for (const auto& item : object.items()) result.push_back(item.key());
    return result;
}

void vExpectRecords(const CheckRow& row, const ProgramRun& run) {
    EXPECT_EQ(run.iCode, row.records.empty() ? 0 : 1);
    EXPECT_EQ(run.sError, "");
    const Json all = run.json();
    EXPECT_EQ(keys(all), (std::vector<std::string>{"records", "groups", "files"}));
    ASSERT_EQ(all["files"].size(), 1U);
    EXPECT_EQ(keys(all["files"][0]),
              (std::vector<std::string>{"file", "ok", "errors", "lostStatements", "firstLostLine"}));
    EXPECT_EQ(all["files"][0]["errors"], row.records.size());
    EXPECT_EQ(all["files"][0]["lostStatements"], 0);
    const Json& value = all["records"];
    ASSERT_TRUE(value.is_array()) << run.sOut;
    ASSERT_EQ(value.size(), row.records.size()) << run.sOut;
    for (std::size_t i = 0; i < value.size(); ++i) {
        EXPECT_EQ(keys(value[i]), (std::vector<std::string>{"key", "severity", "category", "message", "line", "entity",
                                                            "type", "attribute", "text"}));
        EXPECT_TRUE(value[i]["key"].get<std::string>().starts_with("Error_"));
        EXPECT_EQ(value[i]["severity"], row.records[i].pSeverity);
        EXPECT_EQ(value[i]["category"], row.records[i].pCategory);
        EXPECT_EQ(value[i]["line"], row.records[i].iLine);
        EXPECT_EQ(value[i]["text"], row.records[i].pText);
        EXPECT_NE(value[i]["message"], "");
    }
}

TEST(CheckVerb, JsonHasAnObjectForEachRecord) {
    for (const CheckRow& row : checkRows()) {
        SCOPED_TRACE(row.pRule);
        vExpectRecords(row, runProgram({"check", "-", "--json"}, row.sFile));
        vExpectRecords(row, runProgram({"check", "-", "--json", "--single-threaded"}, row.sFile));
        const TestFolder folder;
        vExpectRecords(row, runProgram({"check", folder.sFile("a.ifc", row.sFile), "--json"}));
    }
}

TEST(CheckVerb, RecordsStandInTheOrderOfTheFile) {
    std::string sData;
    for (int i = 1; i <= 3000; ++i) sData += "#" + std::to_string(i) + "=IFCMATERIAL($,5,$);\n";
    const ProgramRun run = runProgram({"check", "-", "--json", "--all"}, sExchangeFile("IFC4", sData));
    EXPECT_EQ(run.sOut,
              runProgram({"check", "-", "--json", "--all", "--single-threaded"}, sExchangeFile("IFC4", sData)).sOut);
    const Json value = run.json()["records"];
    ASSERT_EQ(value.size(), 6000U);
    for (std::size_t i = 0; i < value.size(); ++i) ASSERT_EQ(value[i]["line"], 8 + i / 2);
}

TEST(CheckVerb, NumberUsedTwiceIsAnIdentifierRecord) {
    const ProgramRun run = runProgram({"check", "-", "--json", "--single-threaded"},
                                      sExchangeFile("IFC4", "#7=IFCMATERIAL('a',$,$);\n#7=IFCMATERIAL('b',$,$);\n"));
    EXPECT_EQ(run.iCode, 1);
    const Json value = run.json()["records"];
    const auto itRecord =
        std::find_if(value.begin(), value.end(), [](const Json& record) { return record["category"] == "identifier"; });
    ASSERT_NE(itRecord, value.end()) << run.sOut;
    EXPECT_EQ((*itRecord)["line"], 9);
    EXPECT_EQ((*itRecord)["text"], "#7=IFCMATERIAL('b',$,$);");
    EXPECT_NE((*itRecord)["message"].get<std::string>().find("#7"), std::string::npos);
}

TEST(CheckVerb, TextTellsLineEntityAndCounts) {
    const ProgramRun run =
        runProgram({"check", "-", "--single-threaded"},
                   sExchangeFile("IFC4", "#1=IFCMATERIAL($,$,$);\n#23=IFCTEAPOT('x');\n#4=IFCPOLYLINE((#5,#6));\n"));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sError, "");
    for (const char* pPart : {"error line 8 IFCMATERIAL #1: ", "\n    #1=IFCMATERIAL($,$,$);\n",
                              "error line 9 IFCTEAPOT #23: ", "\n    #23=IFCTEAPOT('x');\n",
                              "\nstandard input: 4 errors: 1 value, 1 null, 2 reference\n"})
        EXPECT_NE(run.sOut.find(pPart), std::string::npos) << pPart << '\n' << run.sOut;
}

TEST(CheckVerb, FatalErrorsAreCountedApart) {
    const ProgramRun run = runProgram({"check", "-"}, sExchangeFile("IFC99", ""));
    EXPECT_TRUE(run.sOut.starts_with("fatal line 6: ")) << run.sOut;
    EXPECT_TRUE(run.sOut.ends_with("\nstandard input: 1 fatal error: 1 model\n")) << run.sOut;
}

TEST(CheckVerb, NothingToTellIsReadWithoutLoss) {
    const ProgramRun run = runProgram({"check", "-"}, sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n"));
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "standard input: read without loss\n");
}

// Where each of these stands in the text, in this order.
void vExpectOrder(const std::string& sText, const std::vector<std::string>& parts) {
    std::size_t iBefore = 0;
    for (const std::string& sPart : parts) {
        const std::size_t i = sText.find(sPart, iBefore);
        ASSERT_NE(i, std::string::npos) << sPart << "\nin\n" << sText;
        iBefore = i + sPart.size();
    }
}

// 3 of null, so many unknown types, of which #2 and #-5 are referred to, and two references to nothing.
std::string sGroupedFile(int iUnknown) {
    std::string sData = "#1=IFCPOLYLINE((#2,#-5,#80077,#80078));\n#90001=IFCMATERIAL($,$,$);\n"
                        "#90002=IFCMATERIAL($,$,$);\n#90003=IFCMATERIALLAYER($,$,$,$,$,$,$);\n#-5=IFCCUP();\n";
    for (int i = 2; i <= iUnknown; ++i) sData += "#" + std::to_string(i) + "=IFCTEAPOT();\n";
    return sExchangeFile("IFC4", sData);
}

TEST(CheckVerb, GroupsStandMostFrequentFirstAndWithWhatFollows) {
    const ProgramRun run = runProgram({"check", "-"}, sGroupedFile(10));
    EXPECT_EQ(run.iCode, 1);
    vExpectOrder(run.sOut, {"error line 12 IFCCUP", "#-5=IFCCUP();", "IFCTEAPOT #2", "IFCTEAPOT #10",
                            "\nand 2 missing references to what was skipped for that (--all)\n", "line 9 IFCMATERIAL",
                            "line 10", "line 11 IFCMATERIALLAYER", "#80077 is referred", "#80078 is referred",
                            "standard input: 17 errors: 10 value, 3 null, 4 reference\n"});
    EXPECT_EQ(run.sOut.find("#2 is referred"), std::string::npos);
    EXPECT_EQ(run.sOut.find(" more (--all)"), std::string::npos);

    const ProgramRun all = runProgram({"check", "-", "--all"}, sGroupedFile(10));
    vExpectOrder(all.sOut, {"IFCCUP", "IFCTEAPOT #10", "#2 is referred", "#4294967291 is referred",
                            "line 9 IFCMATERIAL", "#80077 is referred", "17 errors"});
    EXPECT_EQ(all.sOut.find("--all"), std::string::npos);
}

// Of several faults of one number, the first has the references to it; a line without "=" has no number.
TEST(CheckVerb, ReferencesFollowTheFirstFaultOfTheirNumber) {
    const ProgramRun run = runProgram({"check", "-"}, sExchangeFile("IFC4", "#1=IFCPOLYLINE((#5));\n#5=IFCCUP();\n"
                                                                            "#5=IFCPRODUCT($,$,$,$,$,$,$);\n"));
    vExpectOrder(run.sOut, {"error line 9 IFCCUP #5: ", "    #5=IFCCUP();\nand 1 missing reference to what was skipped",
                            "error line 10 IFCPRODUCT #5: "});
    const ProgramRun cut = runProgram({"check", "-"}, sExchangeFile("IFC4", "#1=IFCPOLYLINE((#5));\n#5IFCCUP();\n"));
    vExpectOrder(cut.sOut, {"fatal line 9 #5: ", "    #5IFCCUP();\nerror: The instance #5 is referred to"});
}

// Where lines are the same the texts tell the order, on any number of threads.
TEST(CheckVerb, StatementsOfOneLineStandByTheirTexts) {
    const ProgramRun run =
        runProgram({"check", "-", "--all"}, sExchangeFile("IFC4", "#3=IFCCUP();#1=IFCTEAPOT();#2=IFCSAUCER();\n"));
    vExpectOrder(run.sOut, {"line 8 IFCTEAPOT #1", "line 8 IFCSAUCER #2", "line 8 IFCCUP #3"});
}

TEST(CheckVerb, TenOfAGroupAreTold) {
    if (!boCanBe(OutputKind::Terminal)) GTEST_SKIP() << "no terminal for a test here";
    for (const int iUnknown : {10, 11, 12345}) {
        SCOPED_TRACE(iUnknown);
        const ProgramRun run = runProgram({"check", "-"}, sGroupedFile(iUnknown));
        const std::string sMore = iUnknown == 11 ? "and 1 more (--all)" : "and 12,335 more (--all)";
        EXPECT_EQ(run.sOut.find(sMore) != std::string::npos, iUnknown > 10) << run.sOut;
        EXPECT_EQ(std::count(run.sOut.begin(), run.sOut.end(), '\n'),
                  10 * 2 + 3 * 2 + 2 + 1 + 1 + (iUnknown > 10 ? 1 : 0));
        EXPECT_EQ(runProgram({"check", "-"}, sGroupedFile(iUnknown), OutputKind::Terminal).sOut.find(sMore) !=
                      std::string::npos,
                  iUnknown > 10);
        const ProgramRun all = runProgram({"check", "-", "--all"}, sGroupedFile(iUnknown));
        EXPECT_EQ(std::count(all.sOut.begin(), all.sOut.end(), '\n'), iUnknown * 2 + 2 + 3 * 2 + 2 + 1);
    }
}

TEST(CheckVerb, JsonHasTheGroups) {
    struct Group {
        const char* pKey;
        const char* pCategory;
        int iCount;
        int iFirstLine;
        int iFollowing;
        const char* pMessage;
    };
    const Group groups[] = {
        {"Error_UnknownEntityType", "value", 101, 12, 2,
         "The schema has no entity type of this name; the statement was skipped."},
        {"Error_InvalidNullAttribute", "null", 3, 9, 0, "The mandatory attribute ... has no value."},
        {"Error_MissingEntityWithId", "reference", 2, 0, 0, "The instance #... is referred to, but not defined."},
    };
    const Json value = runProgram({"check", "-", "--json"}, sGroupedFile(101)).json();
    EXPECT_EQ(value["files"][0]["ok"], true);
    EXPECT_EQ(value["files"][0]["errors"], 108);
    ASSERT_EQ(value["groups"].size(), std::size(groups)) << value;
    for (std::size_t i = 0; i < std::size(groups); ++i) {
        const Json& group = value["groups"][i];
        EXPECT_EQ(keys(group), (std::vector<std::string>{"key", "severity", "category", "message", "count", "firstLine",
                                                         "following"}));
        EXPECT_EQ(group["key"], groups[i].pKey);
        EXPECT_EQ(group["severity"], "error");
        EXPECT_EQ(group["category"], groups[i].pCategory);
        EXPECT_EQ(group["message"], groups[i].pMessage);
        EXPECT_EQ(group["count"], groups[i].iCount);
        EXPECT_EQ(group["firstLine"], groups[i].iFirstLine);
        EXPECT_EQ(group["following"], groups[i].iFollowing);
    }
    ASSERT_EQ(value["records"].size(), 105U);   // a hundred of a group
    EXPECT_EQ(value["records"][0]["key"], "Error_InvalidNullAttribute");
    EXPECT_EQ(value["records"][0]["line"], 9);
    EXPECT_EQ(value["records"][102]["line"], 111);
    EXPECT_EQ(value["records"][104]["line"], 0);
    EXPECT_EQ(runProgram({"check", "-", "--json"}, sGroupedFile(100)).json()["records"].size(), 105U);
    EXPECT_EQ(runProgram({"check", "-", "--json", "--all"}, sGroupedFile(101)).json()["records"].size(), 108U);
}

TEST(CheckVerb, VeryLongSourceTextIsWholeWithAllOnly) {
    for (const std::size_t iLength : {65536U - 23U, 65536U - 22U}) {
        const std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL($,'" + std::string(iLength, 'x') + "',$);\n");
        const bool boLong = iLength + 23 > 65536;
        const std::string sText = "#1=IFCMATERIAL($,'" + std::string(iLength, 'x') + "',$);";
        for (const char* pAll : {"--single-threaded", "--all"}) {
            const bool boShort = boLong && std::string(pAll) != "--all";
            const Json json = runProgram({"check", "-", "--json", pAll}, sFile).json();
            EXPECT_EQ(json["records"][0]["text"] == sText, !boShort);
            const ProgramRun text = runProgram({"check", "-", pAll}, sFile);
            EXPECT_EQ(text.sOut.find("    " + sText + "\n") != std::string::npos, !boShort);
            EXPECT_EQ(text.sOut.find("... (65,537 bytes)") != std::string::npos, boShort);
        }
    }
}

// A statement with a long string and a fault.
std::string sLongFile() { return sExchangeFile("IFC4", "#1=IFCMATERIAL($,'" + std::string(5000, 'x') + "',$);\n"); }

TEST(CheckVerb, LongSourceTextIsShortOnATerminalOnly) {
    if (!boCanBe(OutputKind::Terminal)) GTEST_SKIP() << "no terminal for a test here";
    const std::string sFull(5000, 'x');
    const ProgramRun file = runProgram({"check", "-"}, sLongFile());
    EXPECT_NE(file.sOut.find(sFull), std::string::npos);
    const ProgramRun json = runProgram({"check", "-", "--json"}, sLongFile(), OutputKind::Terminal);
    EXPECT_EQ(json.json()["records"][0]["text"], "#1=IFCMATERIAL($,'" + sFull + "',$);");
    const ProgramRun terminal = runProgram({"check", "-"}, sLongFile(), OutputKind::Terminal);
    EXPECT_EQ(terminal.iCode, 1);
    EXPECT_NE(terminal.sOut.find("\n    #1=IFCMATERIAL($,'xxx"), std::string::npos) << terminal.sOut;
    EXPECT_NE(terminal.sOut.find("xxx... (5,023 bytes)"), std::string::npos) << terminal.sOut;
    EXPECT_LT(terminal.sOut.size(), 600U);
}

TEST(CheckVerb, TextOfTheFileCannotSteerATerminal) {
    const ProgramRun run = runProgram({"check", "-"}, sExchangeFile("IFC4", "#1=IFCMATERIAL($,'a\x1b[2Jb\nc\xc2\x9b"
                                                                            "2Jd',$);\n"));
    EXPECT_EQ(run.sOut.find('\x1b'), std::string::npos);
    EXPECT_EQ(run.sOut.find("\xc2\x9b"), std::string::npos);
    EXPECT_NE(run.sOut.find("\n    #1=IFCMATERIAL($,'a?[2Jb c?2Jd',$);\n"), std::string::npos) << run.sOut;
}

TEST(CheckVerb, TwoErrorsAreSeveral) {
    EXPECT_NE(runProgram({"check", "-"}, sExchangeFile("IFC4", "#4=IFCPOLYLINE((#5,#6));\n"))
                  .sOut.find("standard input: 2 errors: 2 reference\n"),
              std::string::npos);
}

TEST(CheckVerb, ShortTextEndsBetweenCharacters) {
    if (!boCanBe(OutputKind::Terminal)) GTEST_SKIP() << "no terminal for a test here";
    const auto sOf = [](const std::string& sText) {
        return runProgram({"check", "-"}, sExchangeFile("IFC4", "#1=IFCMATERIAL($,'" + sText + "',$);\n"),
                          OutputKind::Terminal)
            .sOut;
    };
    // 23 bytes stand around the text.
    const std::string sMost(277, 'x');
    EXPECT_NE(sOf(sMost).find("'" + sMost + "',$);"), std::string::npos);
    EXPECT_NE(sOf(sMost + 'x').find(")... (301 bytes)"), std::string::npos);
    std::string sUmlauts = "a";
    for (int i = 0; i < 140; ++i) sUmlauts += "\xc3\xbc";
    EXPECT_NE(sOf(sUmlauts + "\xc3\xbc").find("'" + sUmlauts + "... ("), std::string::npos);
}

TEST(CheckVerb, ControlCharactersAreShownAsOne) {
    const ProgramRun run = runProgram({"check", "-"}, sExchangeFile("IFC4", "#1=IFCMATERIAL($,'a\x7f\xc2\xa0z',$);\n"));
    EXPECT_NE(run.sOut.find("'a?\xc2\xa0z'"), std::string::npos) << run.sOut;
}

TEST(CheckVerb, BytesOutsideUtf8StayValidJson) {
    const ProgramRun run =
        runProgram({"check", "-", "--json"}, sExchangeFile("IFC4", "#1=IFCMATERIAL($,'\xe4\xff',$);\n"));
    const Json value = run.json()["records"];
    ASSERT_TRUE(value.is_array()) << run.sOut;
    ASSERT_GE(value.size(), 1U);
    EXPECT_EQ(value[0]["text"], "#1=IFCMATERIAL($,'\xef\xbf\xbd\xef\xbf\xbd',$);");
}

TEST(CheckVerb, ReaderWhoGoesAwayIsNoFailure) {
    std::string sData;
    for (int i = 1; i < 5000; ++i) sData += "#" + std::to_string(i) + "=IFCTEAPOT();\n";
    for (const char* pKind : {"--json", "--"}) {
        std::vector<std::string> words{"check", pKind, "-"};
        const ProgramRun run = runProgram(words, sExchangeFile("IFC4", sData), OutputKind::ClosedPipe);
        EXPECT_EQ(run.iCode, 1);
        EXPECT_EQ(run.sError, "");
    }
}

}   // namespace
}   // namespace oxa::test
