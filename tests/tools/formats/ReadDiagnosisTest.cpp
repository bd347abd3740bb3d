// SPDX-License-Identifier: Apache-2.0
// What is told of an exchange structure without an end: where a text or a comment was opened, the last whole instance.

#include <optional>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

// In sExchangeFile the data begin on line 8, at this byte.
const std::size_t g_iData = sExchangeFile("IFC4", "").find("ENDSEC;\nEND-ISO");

std::string sLast(const char* pNumber, std::size_t iEnd) {
    return std::string("; the last whole instance is #") + pNumber + ", which ends at byte " +
           std::to_string(g_iData + iEnd);
}
const std::string g_none = "; there is no whole instance before that";

struct FaultRow {
    const char* pRule;
    std::string sData;
    bool boCut;   // the file ends with these data
    std::string sMessage;
    unsigned iLine;
    std::string sText;
};

std::vector<FaultRow> faultRows() {
    const std::string sFirst = "#1=IFCCARTESIANPOINT((0.));\n";   // 28 bytes
    const auto sOpenText = [](unsigned iLine, const std::string& sBefore) {
        return "The text that begins in line " + std::to_string(iLine) + " with a single quote has no end" + sBefore +
               ".";
    };
    const auto sOpenComment = [](unsigned iLine, const std::string& sBefore) {
        return "The comment that begins in line " + std::to_string(iLine) + " has no end" + sBefore + ".";
    };
    const auto sCut = [](unsigned iLine, const std::string& sBefore) {
        return "The file is cut off in line " + std::to_string(iLine) + sBefore + ".";
    };
    return {
        {"an open text, the only one", sFirst + "#2=IFCMATERIAL('a,$,$);\n#3=IFCDIRECTION((1.));\n", false,
         sOpenText(9, sLast("1", 27)), 9, "#2=IFCMATERIAL('a,$,$);"},
        {"the first of an odd number of quotes",
         sFirst + "#2=IFCMATERIAL('a,$,$);\n# 3 = IFCMATERIAL('b',$,$);\n#4=IFCMATERIAL('c','d',$);\n", false,
         sOpenText(9, sLast("1", 27)), 9, "#2=IFCMATERIAL('a,$,$);"},
        {"one that uncovers an equals sign", sFirst + "#2=IFCMATERIAL('a,$,$);\n#3=IFCMATERIAL('b=c',$,$);\n", false,
         sOpenText(9, sLast("1", 27)), 9, "#2=IFCMATERIAL('a,$,$);"},
        {"one that uncovers a backslash", sFirst + "#2=IFCMATERIAL('a,$,$);\n#3=IFCMATERIAL('\\X\\FC',$,$);\n", false,
         sOpenText(9, sLast("1", 27)), 9, "#2=IFCMATERIAL('a,$,$);"},
        {"an open text over two lines, with a doubled quote", sFirst + "#2=IFCMATERIAL('a\n''b", true,
         sOpenText(9, sLast("1", 27)), 9, "#2=IFCMATERIAL('a\n''b"},
        {"a quote behind a shift is none", sFirst + "#2=IFCMATERIAL('\\S\\'',$,$);\n", true,
         sCut(10, sLast("2", 28 + 27)), 10, ""},
        {"nor in an escape of four digits", sFirst + "#2=IFCMATERIAL('\\X2\\000'\\X0\\',$,$);\n", true,
         sCut(10, sLast("2", 28 + 35)), 10, ""},
        {"nor in an escape of eight digits", sFirst + "#2=IFCMATERIAL('\\X4\\0000000'\\X0\\',$,$);\n", true,
         sCut(10, sLast("2", 28 + 39)), 10, ""},
        {"a text at once", "#1=IFCMATERIAL('a", true, sOpenText(8, g_none), 8, "#1=IFCMATERIAL('a"},
        {"an open comment", sFirst + "/* a\n#2=IFCDIRECTION((1.));\n", false, sOpenComment(9, sLast("1", 27)), 9, ""},
        {"a comment that seems to end at once", sFirst + "\n/*/\n", false, sOpenComment(10, sLast("1", 27)), 10, ""},
        {"an open comment behind a whole one", sFirst + "/* a *//* b\n", false, sOpenComment(9, sLast("1", 27)), 9, ""},
        {"an open comment within a statement", sFirst + "#2=/*\n\n", true, sOpenComment(9, sLast("1", 27)), 9, "#2="},
        {"a quote in a comment is none", sFirst + "/*'*/ #2=IFCDIR", true, sCut(9, sLast("1", 27)), 9, "#2=IFCDIR"},
        {"a comment in a text is none", sFirst + "#2=IFCMATERIAL('/*", true, sOpenText(9, sLast("1", 27)), 9,
         "#2=IFCMATERIAL('/*"},
        {"cut within a statement", sFirst + "#2=IFCDIRECTION((1", true, sCut(9, sLast("1", 27)), 9,
         "#2=IFCDIRECTION((1"},
        {"cut behind one", sFirst, true, sCut(9, sLast("1", 27)), 9, ""},
        {"cut behind a stroke", sFirst + "#2=/", true, sCut(9, sLast("1", 27)), 9, "#2=/"},
        {"cut before the first", "#1=", true, sCut(8, g_none), 8, "#1="},
        {"a backslash", sFirst + "#2=IFCDIRECTION(\\);\n", false,
         "A backslash stands outside of a text in line 9; reading was stopped there" + sLast("1", 27) + ".", 9,
         "#2=IFCDIRECTION(\\"},
        {"the same, and two ends", sFirst + "END-ISO-10303-21;\nEND-ISO-10303-21;\n", true,
         "The end of the data section, ENDSEC, is missing in front of line 9" + sLast("1", 27) + ".", 9, ""},
        {"the keyword of the end is missing", sFirst + "END-ISO-10303-21;\n", true,
         "The end of the data section, ENDSEC, is missing in front of line 9" + sLast("1", 27) + ".", 9, ""},
    };
}

std::string sFile(const FaultRow& row) {
    const std::string sAll = sExchangeFile("IFC4", row.sData);
    return row.boCut ? sAll.substr(0, g_iData + row.sData.size()) : sAll;
}

TEST(ReadDiagnosis, FaultThatEndsAReadIsToldWithItsPlace) {
    for (const FaultRow& row : faultRows())
        for (const char* pThreads : {"--single-threaded", "--"}) {
            SCOPED_TRACE(row.pRule);
            const ProgramRun run = runProgram({"check", "--json", pThreads, "-"}, sFile(row));
            EXPECT_EQ(run.iCode, 1);
            const Json value = run.json()["records"];
            ASSERT_GE(value.size(), 1U) << run.sOut;
            const Json& last = value.back();   // what the values are worth is told before
            EXPECT_EQ(last["message"], row.sMessage);
            EXPECT_EQ(last["line"], row.iLine);
            EXPECT_EQ(last["text"], row.sText);
            EXPECT_EQ(last["severity"], "fatal");
            EXPECT_EQ(last["category"], "syntax");
            for (std::size_t i = 0; i + 1 < value.size(); ++i) EXPECT_EQ(value[i]["category"], "value");
        }
}

TEST(ReadDiagnosis, LinesOfOneHundredThousandInstancesAreCounted) {
    std::string sData;
    for (int i = 1; i <= 100000; ++i) sData += "#" + std::to_string(i) + "=IFCMATERIAL('\\X2\\00FC\\X0\\ ''',$,$);\r\n";
    const FaultRow row{"", sData + "#100001=IFCMATERIAL('a,$,$);\r\n", false, "", 0, ""};
    const Json value = runProgram({"check", "-", "--json"}, sFile(row)).json()["records"];
    ASSERT_EQ(value.size(), 1U);
    EXPECT_EQ(value[0]["line"], 100008);
    EXPECT_NE(value[0]["message"].get<std::string>().find(sLast("100000", sData.size() - 2)), std::string::npos)
        << value;
}

// With errors before it, the read itself says nothing of an end that is missing.
TEST(ReadDiagnosis, EndThatIsMissingIsToldBesideOtherErrors) {
    const FaultRow row{"", "#1=IFCTEAPOT();\n#2=IFCDIRECTION((1", true, "", 0, ""};
    const Json value = runProgram({"check", "-", "--json"}, sFile(row)).json()["records"];
    ASSERT_EQ(value.size(), 2U);
    EXPECT_EQ(value[0]["category"], "value");
    EXPECT_EQ(value[1]["message"], "The file is cut off in line 9" + sLast("1", 15) + ".");
    const ProgramRun convert = runProgram({"convert", "-", "-"}, sFile(row));
    EXPECT_EQ(convert.iCode, 2);
    EXPECT_EQ(convert.sError, "oxaifc: standard input: not read to the end: The file is cut off in line 9" +
                                  sLast("1", 15) + ".; standard output is not written\n");
}

TEST(ReadDiagnosis, FaultsThatTheReadTellsStay) {
    const Json second =
        runProgram({"check", "-", "--json"}, sExchangeFile("IFC4", "#1=IFCDIRECTION((1.))\n#2=IFCDIRECTION((1.));\n"))
            .json()["records"];
    ASSERT_EQ(second.size(), 1U);
    EXPECT_EQ(second[0]["line"], 9);
    EXPECT_NE(second[0]["message"].get<std::string>().find("second \"=\""), std::string::npos) << second;
    const Json unknown = runProgram({"check", "-", "--json"}, sExchangeFile("IFC99", "")).json()["records"];
    ASSERT_EQ(unknown.size(), 1U);
    EXPECT_EQ(unknown[0]["message"], "The schema \"IFC99\" is not known; reading was stopped.");
}

TEST(ReadDiagnosis, SpeaksTheLanguageOfTheUser) {
    const FaultRow row{"", "#1=IFCDIRECTION((1.));\n#2=", true, "", 0, ""};
    EXPECT_EQ(runProgram({"check", "-", "--json", "--lang", "de"}, sFile(row)).json()["records"][0]["message"],
              "Die Datei bricht in Zeile 9 ab; die letzte vollst\xc3\xa4ndige Instanz ist #1, sie endet bei Byte " +
                  std::to_string(g_iData + 22) + ".");
}

// A pipe can't be read twice: it is read as ever, and what its first bytes say is told. Nothing where there is no such.
std::optional<ProgramRun> runWithPipe(const std::string& sText) {
    const TestFolder folder;
    const std::filesystem::path pipe = folder.path() / "pipe";
    ProgramRun run;
    if (!boWithPipe(pipe, sText, [&] { run = runProgram({"check", "--json", pipe.string()}); })) return std::nullopt;
    return run;
}

TEST(ReadDiagnosis, PipeIsReadOnce) {
    std::string sData;
    for (int i = 1; i <= 20000; ++i) sData += "#" + std::to_string(i) + "=IFCDIRECTION((1.));\n";
    const auto fine = runWithPipe(sExchangeFile("IFC4", sData));
    if (!fine) GTEST_SKIP() << "a pipe has no name among files here";
    EXPECT_EQ(fine->iCode, 0);
    EXPECT_EQ(fine->json()["records"], Json::array());
    const auto cut = runWithPipe(sFile({"", "#1=IFCDIR", true, "", 0, ""}));
    EXPECT_EQ(cut->iCode, 1);
    EXPECT_EQ(cut->json()["records"][0]["message"],
              "This is no complete IFC file: the end of its data section, ENDSEC, was not found.");
    const auto letter = runWithPipe("Dear Sir or Madam,\n");
    EXPECT_EQ(letter->iCode, 1);
    EXPECT_EQ(letter->json()["records"][0]["message"],
              "The file begins with \"Dear Sir or Madam,\", not with ISO-10303-21;.");
}

}   // namespace
}   // namespace oxa::test
