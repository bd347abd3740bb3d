// SPDX-License-Identifier: Apache-2.0
// What the program says of files that only seem to be read whole, and of those that are not.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {

namespace {

const std::string g_sProject = "#1=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',$,$,$,$,$,$,$,$);\n";   // line 8
const std::string g_sMaterial = "#2=IFCMATERIAL('a',$,$);\n";

// Text that the rules of reading pass over without an error.
struct PassedOver {
    const char* sRule;
    std::string sFile;
    std::size_t iPlaces;
    unsigned iLine;
};
std::vector<PassedOver> passedOver() {
    const auto data = [](const std::string& sData) { return sExchangeFile("IFC4", g_sProject + sData); };
    const auto sLonger = [&data](const std::string& sField) {
        std::string sText = data("");
        return sText.insert(sText.find(sField) + sField.size(), ",'surplus'");
    };
    return {
        {"no closing parenthesis", data("#2=IFCMATERIAL('a',$,$;\n"), 1, 9},
        {"no number", data(g_sMaterial + "garbage here;\n"), 1, 10},
        {"several, the first counts", data("IFCMATERIAL('b',$,$);\n" + g_sMaterial + "&SCOPE;\nENDSCOPE;\n"), 3, 9},
        {"text behind a parameter list", data("#2=IFCMATERIAL('a',$,$),#1;\n"), 1, 9},
        {"a field that FILE_NAME has not", sLonger("'z'"), 1, 4},
        {"a second section of data", data("ENDSEC;\nDATA;\n" + g_sMaterial), 1, 10},
        {"a second file", data("") + data(""), 1, 11},
    };
}
std::string sTold(const PassedOver& row) {
    return (row.iPlaces == 1 ? "1 place was" : std::to_string(row.iPlaces) + " places were") +
           " passed over (the first at line " + std::to_string(row.iLine) +
           "): what is read are the fields of the header and the statements #12=KEYWORD(...); of the first DATA "
           "section";
}

TEST(RuleProgram, CheckCallsNoFileWholeThatWasPassedOverInPart) {
    const TestFolder folder;
    for (const PassedOver& row : passedOver()) {
        SCOPED_TRACE(row.sRule);
        const std::string sPath = folder.sFile("a.ifc", row.sFile);
        for (const auto& words : {std::vector<std::string>{"check", sPath},
                                  std::vector<std::string>{"check", sPath, "--single-threaded"}}) {
            const ProgramRun run = runProgram(words);
            EXPECT_EQ(run.iCode, 1);
            EXPECT_EQ(run.sOut, sPath + ": " + sTold(row) + "\n");
            EXPECT_EQ(run.sError, "oxaifc: " + sPath + ": " + sTold(row) + "\n");
        }
        const ProgramRun json = runProgram({"check", "--json", sPath});
        const Json file = {{"file", sPath},
                           {"ok", true},
                           {"errors", 0},
                           {"lostStatements", row.iPlaces},
                           {"firstLostLine", row.iLine}};
        EXPECT_EQ(json.json()["files"][0], file);
    }
}

TEST(RuleProgram, InfoCallsNoFileWholeThatWasPassedOverInPart) {
    for (const PassedOver& row : passedOver()) {
        SCOPED_TRACE(row.sRule);
        const ProgramRun run = runProgram({"info", "-"}, row.sFile);
        EXPECT_EQ(run.iCode, 1);
        EXPECT_NE(run.sOut.find("read                  to the end; " + sTold(row) + "\n"), std::string::npos)
            << run.sOut;
        EXPECT_EQ(runProgram({"info", "-", "--json"}, row.sFile).json()["lostStatements"], row.iPlaces);
    }
}

// It is the same in each read, and told.
TEST(RuleProgram, DiffComparesTheRestOfWhatWasPassedOverInPart) {
    const TestFolder folder;
    for (const PassedOver& row : passedOver()) {
        SCOPED_TRACE(row.sRule);
        const std::string sPath = folder.sFile("a.ifc", row.sFile);
        const ProgramRun run = runProgram({"diff", sPath, sPath});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, "no difference\n");
        EXPECT_EQ(run.sError.find("oxaifc: " + sPath + ": " + sTold(row) + "\n"), 0U) << run.sError;
    }
}

TEST(RuleProgram, FileThatWasPassedOverInPartIsNotReplaced) {
    const TestFolder folder;
    for (const PassedOver& row : passedOver()) {
        SCOPED_TRACE(row.sRule);
        const std::string sIn = folder.sFile("a.ifc", row.sFile);
        const std::string sOut = (folder.path() / "b.ifc").string();
        const std::string sSaid = "oxaifc: " + sIn + ": " + sTold(row);
        for (const auto& words : {std::vector<std::string>{"convert", "--all", sIn, sIn},
                                  std::vector<std::string>{"set", sIn, "1", "Name", "x", sIn}}) {
            const ProgramRun run = runProgram(words);
            EXPECT_EQ(run.iCode, 2);
            EXPECT_EQ(run.sError, sSaid + "\n" + sSaid + ", so name another OUT\n");
            EXPECT_EQ(sContent(sIn), row.sFile);
        }
        const ProgramRun other = runProgram({"convert", "--all", sIn, sOut});
        EXPECT_EQ(other.iCode, 1);
        EXPECT_EQ(other.sError, sSaid + "\n");
        EXPECT_TRUE(statements(sContent(sOut)).contains(g_sProject.substr(0, g_sProject.size() - 1)));
    }
}

// A file is itself under any name, as standard input too.
TEST(RuleProgram, FileWithErrorsIsNotReplacedByWhatStandardInputSays) {
    if (!boHasShells()) GTEST_SKIP() << "no shells";
    const TestFolder folder;
    const std::string sText = sExchangeFile("IFC4", g_sProject + "#2=IFCNOTHING();\n");
    const std::string sPath = folder.sFile("a.ifc", sText);
    const std::string sOther = folder.sFile("b.ifc", "old");
    const std::string sSaid =
        "oxaifc: standard input: has 1 error; what could not be read would be lost, so name another OUT\n";
    const auto run = [&](const std::string& sInput, const std::string& sOut) {
        return runProgramAt("/bin/sh", {"-c", sInput, OXAIFC_PROGRAM, sPath, sOut});
    };
    const ProgramRun same = run("\"$0\" convert - \"$2\" < \"$1\"", sPath);
    EXPECT_EQ(same.iCode, 2);
    EXPECT_EQ(same.sError, sSaid);
    EXPECT_EQ(sContent(sPath), sText);
    for (const char* sInput : {"\"$0\" convert - \"$2\" < \"$1\"", "cat \"$1\" | \"$0\" convert - \"$2\""}) {
        folder.sFile("b.ifc", "old");
        EXPECT_EQ(run(sInput, sOther).iCode, 1);
        EXPECT_EQ(statements(sContent(sOther)).size(), 1U);
    }
}

TEST(RuleProgram, TemplateIsNotReplacedByItsReport) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("a.ifc", sExchangeFile("IFC4", g_sProject));
    const std::string sTemplate = folder.sFile("t.txt", "{{ filename }}");
    const ProgramRun run = runProgram({"check", sPath, "--template", sTemplate, "--html", sTemplate});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: " + sTemplate + ": is the template; name another\n");
    EXPECT_EQ(sContent(sTemplate), "{{ filename }}");
}

// What stands around a file is no part of it, nor are blanks.
TEST(RuleProgram, WholeFileIsCalledWhole) {
    const TestFolder folder;
    const std::string sWhole = sExchangeFile("IFC4", g_sProject);
    const struct {
        const char* sRule;
        std::string sFile;
    } rows[] = {
        {"as it is", sWhole},
        {"a letter around it", "Dear A.,\nsee below;\n" + sWhole + "Yours, B.;\n#3=IFCMATERIAL('a',$,$);\n"},
        {"empty statements, tabs and comments",
         sExchangeFile("IFC4", ";\t;\n/* garbage; */" + g_sProject + "#2=IFCMATERIAL('a',$,$)\t;\n")},
        {"no end behind the data", sWhole.substr(0, sWhole.find("END-ISO"))},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const std::string sPath = folder.sFile("a.ifc", row.sFile);
        const ProgramRun run = runProgram({"check", sPath});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, sPath + ": read without loss\n");
        EXPECT_EQ(run.sError, "");
    }
}

// An open quote turns all that follows inside out; the line told is that where it began, also in a header.
TEST(RuleProgram, OpenQuoteIsToldByItsLine) {
    const std::string sWhole = sExchangeFile("IFC4", g_sProject + g_sMaterial);
    const std::string sNone = "there is no whole instance before that";
    const std::string sFirst =
        "the last whole instance is #1, which ends at byte " + std::to_string(sWhole.find(g_sMaterial) - 1);
    const struct {
        const char* sRule;
        const char* sText;
        const char* sBecomes;
        unsigned iLine;
        std::string sBefore;
    } rows[] = {
        {"of FILE_DESCRIPTION", "('d')", "('d)", 3, sNone},
        {"of FILE_NAME", "'z')", "'z)", 4, sNone},
        {"of FILE_SCHEMA", "'IFC4'", "'IFC4", 5, sNone},
        {"of an instance", "IFCMATERIAL('a'", "IFCMATERIAL('a", 9, sFirst},
        {"an apostrophe", "IFCMATERIAL('a'", "IFCMATERIAL('O'Neill'", 9, sFirst},
    };
    const TestFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        std::string sFile = sWhole;
        sFile.replace(sFile.find(row.sText), std::string(row.sText).size(), row.sBecomes);
        const ProgramRun run = runProgram({"check", "--json", folder.sFile("a.ifc", sFile)});
        EXPECT_EQ(run.iCode, 1);
        const Json record = run.json()["records"][0];
        EXPECT_EQ(record["line"], row.iLine);
        EXPECT_EQ(record["message"], "The text that begins in line " + std::to_string(row.iLine) +
                                         " with a single quote has no end; " + row.sBefore + ".");
    }
}

}   // namespace

}   // namespace oxa::test
