// SPDX-License-Identifier: Apache-2.0
// The steps of docs/adding.md for a format and for a verb give a program that does what the document says: Toy.cmake
// follows them and builds oxaifc-toy, which is run here.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

ProgramRun runToy(const std::vector<std::string>& words, std::string_view standardInput = {}) {
    return runProgramAt(OXAIFC_TOY, words, standardInput);
}

// A call of a block ```console, "$ oxaifc WORDS", and the lines that it prints.
struct Call {
    std::string sWords;
    std::string sOut;
};

std::vector<Call> callsOfDocument() {
    std::vector<Call> calls;
    std::ifstream document(OXA_SOURCE_DIR "/docs/adding.md");
    bool boConsole = false;
    for (std::string sLine; std::getline(document, sLine);) {
        if (sLine.starts_with("```"))
            boConsole = sLine == "```console";
        else if (boConsole && sLine.starts_with("$ oxaifc "))
            calls.push_back({sLine.substr(9), {}});
        else if (boConsole)
            calls.back().sOut += sLine + '\n';
    }
    return calls;
}

std::vector<std::string> wordsOf(const std::string& sText) {
    std::istringstream in(sText);
    std::vector<std::string> words;
    for (std::string sWord; in >> sWord;) words.push_back(sWord);
    return words;
}

TEST(Adding, ProgramDoesWhatTheDocumentShows) {
    const TestFolder folder;
    std::filesystem::copy(sExample("house-ifc4.ifc"), folder.path() / "house.ifc");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());   // the names of the document are relative
    const std::vector<Call> calls = callsOfDocument();
    EXPECT_EQ(calls.size(), 4U);
    for (const Call& call : calls) {
        SCOPED_TRACE(call.sWords);
        const ProgramRun run = runToy(wordsOf(call.sWords));
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, call.sOut);
        EXPECT_EQ(run.sError, "");
    }
    EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"again.ifc", "house.ifc", "house.toy"}));
    EXPECT_EQ(statements(sContent("again.ifc")), statements(sContent("house.toy")));
    EXPECT_EQ(statements(sContent("again.ifc")).size(), 399U);
    std::filesystem::current_path(before);
}

// All other verbs stay as they are.
TEST(Adding, HelpTellsTheVerbBehindTheOthers) {
    std::string sHelp = runProgram({"help"}).sOut;
    const std::string sLast = "  completion                  What a shell needs to complete the words of a call\n";
    const std::size_t iLast = sHelp.find(sLast);
    ASSERT_NE(iLast, std::string::npos) << sHelp;
    sHelp.insert(iLast + sLast.size(),
                 "  toy                         The types of a file, with the count of their entities\n");
    EXPECT_EQ(runToy({"help"}).sOut, sHelp);
    EXPECT_NE(runToy({"help", "toy"}).sOut.find("Usage: oxaifc toy [OPTIONS] FILE\n"), std::string::npos);
}

// The last point is one that nothing refers to: the form holds every entity.
constexpr const char* g_pPoints = "#3=IFCCARTESIANPOINT((0.,1.));\n#4=IFCCARTESIANPOINT((2.,3.));\n"
                                  "#7=IFCPOLYLINE((#3,#4));\n#9=IFCCARTESIANPOINT((4.,5.));\n";

struct FormatRow {
    const char* sRule;
    std::vector<std::string> words;
    std::string sInput;
    int iCode;
    std::string sOut;
    std::string sError;
};

TEST(Adding, FormatIsReadAndWrittenByEveryVerb) {
    const std::string sToy = std::string("toy IFC4\n") + g_pPoints;
    const std::string sFaulty = "toy IFC4\n#1=IFCCARTESIANPOINT((0.,1.));\n#2=IFCTEAPOT();\n";
    const FormatRow rows[] = {
        {"written",
         {"set", "-", "#3", "Coordinates", "(0.,1.)", "-", "--format", "toy"},
         sExchangeFile("IFC4", g_pPoints),
         0,
         sToy,
         ""},
        {"told by its first bytes", {"set", "-", "#3", "Coordinates", "(0.,1.)", "-"}, sToy, 0, sToy, ""},
        {"a part of it",
         {"extract", "-", "#7", "-", "--format", "toy"},
         sToy,
         0,
         "toy IFC4\n#3=IFCCARTESIANPOINT((0.,1.));\n#4=IFCCARTESIANPOINT((2.,3.));\n#7=IFCPOLYLINE((#3,#4));\n",
         ""},
        {"asked by the verb", {"toy", "-"}, sToy, 0, "    3  IfcCartesianPoint\n    1  IfcPolyline\n", ""},
        {"with an error", {"toy", "-"}, sFaulty, 1, "    1  IfcCartesianPoint\n", ""},
        {"no schema of that name",
         {"toy", "-"},
         "toy IFC5\n",
         2,
         "",
         "oxaifc: standard input: there is no schema IFC5\n"},
        {"a name of another form",
         {"convert", "-", "house.csv"},
         sToy,
         2,
         "",
         "oxaifc: can't write house.csv: .csv is the end of no form that is written; there are: .ifc, .stp, .step, "
         ".p21, .ifczip "
         "(STEP), .ifcxml, .xml (ifcXML), .toy (toy); --format step writes that under any name\n"},
    };
    for (const FormatRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        const ProgramRun run = runToy(row.words, row.sInput);
        EXPECT_EQ(run.iCode, row.iCode);
        EXPECT_EQ(run.sOut, row.sOut);
        EXPECT_EQ(run.sError, row.sError);
    }
}

// The program without the steps knows neither.
TEST(Adding, StepsAreWhatMakesTheDifference) {
    EXPECT_EQ(runProgram({"toy", "-"}).iCode, 2);
    EXPECT_EQ(runProgram({"convert", "-", "-", "--format", "toy"}, sExchangeFile("IFC4", g_pPoints)).iCode, 2);
}

}   // namespace
}   // namespace oxa::test
