// "oxaifc check": the records of a read, as JSON and as text.

#include <algorithm>

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
        {"a mandatory attribute",
         sData("#1=IFCMATERIAL($,$,$);\n"),
         {{"error", "null", 8, "#1=IFCMATERIAL($,$,$);"}}},
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
    const Json value = run.json();
    ASSERT_TRUE(value.is_array()) << run.sOut;
    ASSERT_EQ(value.size(), row.records.size()) << run.sOut;
    for (std::size_t i = 0; i < value.size(); ++i) {
        EXPECT_EQ(keys(value[i]),
                  (std::vector<std::string>{"severity", "category", "message", "line", "text"}));
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
    const ProgramRun run = runProgram({"check", "-", "--json"}, sExchangeFile("IFC4", sData));
    EXPECT_EQ(run.sOut,
              runProgram({"check", "-", "--json", "--single-threaded"}, sExchangeFile("IFC4", sData)).sOut);
    const Json value = run.json();
    ASSERT_EQ(value.size(), 6000U);
    for (std::size_t i = 0; i < value.size(); ++i) ASSERT_EQ(value[i]["line"], 8 + i / 2);
}

TEST(CheckVerb, NumberUsedTwiceIsAnIdentifierRecord) {
    const ProgramRun run =
        runProgram({"check", "-", "--json", "--single-threaded"},
                   sExchangeFile("IFC4", "#7=IFCMATERIAL('a',$,$);\n#7=IFCMATERIAL('b',$,$);\n"));
    EXPECT_EQ(run.iCode, 1);
    const Json value = run.json();
    const auto itRecord = std::find_if(value.begin(), value.end(),
                                       [](const Json& record) { return record["category"] == "identifier"; });
    ASSERT_NE(itRecord, value.end()) << run.sOut;
    EXPECT_EQ((*itRecord)["line"], 9);
    EXPECT_EQ((*itRecord)["text"], "#7=IFCMATERIAL('b',$,$);");
    EXPECT_NE((*itRecord)["message"].get<std::string>().find("#7"), std::string::npos);
}

TEST(CheckVerb, TextTellsLineEntityAndCounts) {
    const ProgramRun run = runProgram(
        {"check", "-", "--single-threaded"},
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

// A statement with a long string and a fault.
std::string sLongFile() {
    return sExchangeFile("IFC4", "#1=IFCMATERIAL($,'" + std::string(5000, 'x') + "',$);\n");
}

TEST(CheckVerb, LongSourceTextIsShortOnATerminalOnly) {
    const std::string sFull(5000, 'x');
    const ProgramRun file = runProgram({"check", "-"}, sLongFile());
    EXPECT_NE(file.sOut.find(sFull), std::string::npos);
    const ProgramRun json = runProgram({"check", "-", "--json"}, sLongFile(), OutputKind::Terminal);
    EXPECT_EQ(json.json()[0]["text"], "#1=IFCMATERIAL($,'" + sFull + "',$);");
    const ProgramRun terminal = runProgram({"check", "-"}, sLongFile(), OutputKind::Terminal);
    EXPECT_EQ(terminal.iCode, 1);
    EXPECT_NE(terminal.sOut.find("\n    #1=IFCMATERIAL($,'xxx"), std::string::npos) << terminal.sOut;
    EXPECT_NE(terminal.sOut.find("xxx... (5,023 bytes)"), std::string::npos) << terminal.sOut;
    EXPECT_LT(terminal.sOut.size(), 600U);
}

TEST(CheckVerb, TextOfTheFileCannotSteerATerminal) {
    const ProgramRun run =
        runProgram({"check", "-"}, sExchangeFile("IFC4", "#1=IFCMATERIAL($,'a\x1b[2Jb\nc\xc2\x9b"
                                                         "2Jd',$);\n"));
    EXPECT_EQ(run.sOut.find('\x1b'), std::string::npos);
    EXPECT_EQ(run.sOut.find("\xc2\x9b"), std::string::npos);
    EXPECT_NE(run.sOut.find("\n    #1=IFCMATERIAL($,'a?[2Jb c?2Jd',$);\n"), std::string::npos) << run.sOut;
}

TEST(CheckVerb, BytesOutsideUtf8StayValidJson) {
    const ProgramRun run =
        runProgram({"check", "-", "--json"}, sExchangeFile("IFC4", "#1=IFCMATERIAL($,'\xe4\xff',$);\n"));
    const Json value = run.json();
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
