// SPDX-License-Identifier: Apache-2.0
// "oxaifc merge": several files as one, and what it says of those that don't go together.

#include <gtest/gtest.h>

#include "platform/Path.h"
#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

std::string sWall(const char* pGuid, const char* pName, const char* pSchema = "IFC4") {
    return sExchangeFile(pSchema, std::string("#1=IFCWALL('") + pGuid + "',$,'" + pName + "',$,$,$,$,$" +
                                      (pSchema == std::string("IFC4") ? ",$);\n" : ");\n"));
}

TEST(MergeVerb, StoreysOfAHouseAreTheHouseAgain) {
    const TestFolder folder;
    const std::string sHouse = sExample("house-ifc4.ifc");
    const std::string sParts = (folder.path() / "parts").string();
    const std::string sOut = (folder.path() / "house.ifc").string();
    ASSERT_EQ(runProgram({"extract", sHouse, sParts, "--split-by", "storey"}).iCode, 0);
    std::vector<std::string> words{"merge"};
    for (const std::string& sName : filesIn(sParts))
        words.push_back(str::sOfPath(folder.path() / "parts" / str::pathOf(sName)));
    ASSERT_GT(words.size(), 2U);
    words.push_back(sOut);
    const ProgramRun run = runProgram(words);
    EXPECT_EQ(run.iCode, 0) << run.sError;
    EXPECT_EQ(run.sOut + run.sError, "");
    EXPECT_EQ(runProgram({"check", sOut}).iCode, 0);
    EXPECT_EQ(runProgram({"diff", sHouse, sOut}).sOut, "no difference\n");
}

TEST(MergeVerb, TellsWhatDoesNotGoTogether) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sWall("0AAAAAAAAAAAAAAAAAAA01", "A"));
    const std::string sB = folder.sFile("b.ifc", sWall("0AAAAAAAAAAAAAAAAAAA01", "B"));
    const std::string sC = folder.sFile("c.ifc", sWall("0AAAAAAAAAAAAAAAAAAA02", "C"));
    const std::string sOld = folder.sFile("old.ifc", sWall("0AAAAAAAAAAAAAAAAAAA03", "D", "IFC2X3"));
    const std::string sOut = (folder.path() / "out.ifc").string();
    const std::string sConflict = "1 entity of " + sB +
                                  " with the GlobalId of another one that says something else: IfcWall "
                                  "0AAAAAAAAAAAAAAAAAAA01 (#1, #1)";
    struct Row {
        std::vector<std::string> words;
        int iCode;
        std::string sError;
        std::size_t iStatements;
    };
    const Row rows[] = {
        {{"merge", sA, sC, sOut}, 0, "", 2},
        {{"merge", sA, sC, sA, sOut}, 0, "", 2},
        {{"merge", sA, sB, sOut}, 2, "oxaifc: " + sConflict + "; --same keep-first leaves them out\n", 0},
        {{"merge", sA, sB, sC, sOut, "--same", "keep-first"}, 0, "oxaifc: left out, " + sConflict + "\n", 2},
        {{"merge", sA, sOld, sOut},
         2,
         "oxaifc: " + sA + " is IFC4, and " + sOld +
             " is IFC2X3; oxaifc convert --schema IFC4 moves the second to the schema of the first\n",
         0},
        {{"merge", sA, sOut}, 2, "oxaifc: merge: takes two files at least, and OUT behind them\n", 0},
        {{"merge", sA, sC, sOut, "--join", "x"}, 2, "oxaifc: merge: --join: x not in {guid,name,none}\n", 0},
        {{"merge", "-", "-", sOut}, 2, "oxaifc: merge: one file at most can be standard input\n", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sError);
        std::filesystem::remove(sOut);
        const ProgramRun run = runProgram(row.words);
        EXPECT_EQ(run.iCode, row.iCode);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, row.sError);
        EXPECT_EQ(std::filesystem::exists(sOut), row.iStatements > 0);
        if (row.iStatements) {
            EXPECT_EQ(statements(sContent(sOut)).size(), row.iStatements);
        }
    }
}

}   // namespace
}   // namespace oxa::test
