// SPDX-License-Identifier: Apache-2.0
// Verbs that take several files, and what the colours of a terminal are.

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

std::string sGood() { return sExchangeFile("IFC4", "#1=IFCCARTESIANPOINT((0.,0.));\n"); }
std::string sBad() { return sExchangeFile("IFC4", "#1=IFCTEAPOT();\n"); }

struct Files {
    TestFolder folder;
    std::string sFine = folder.sFile("good.ifc", sGood());
    std::string sWrong = folder.sFile("bad.ifc", sBad());
    std::string sMissing = (folder.path() / "missing.ifc").string();
};

TEST(SeveralFiles, CheckTellsEachAndTheWorstCode) {
    const Files files;
    const ProgramRun fine = runProgram({"check", files.sFine, files.sFine});
    EXPECT_EQ(fine.iCode, 0);
    const std::string sOne = runProgram({"check", files.sFine}).sOut;
    EXPECT_EQ(fine.sOut, sOne + sOne);
    const ProgramRun both = runProgram({"check", files.sWrong, files.sFine});
    EXPECT_EQ(both.iCode, 1);
    EXPECT_EQ(both.sOut, files.sWrong + ":\n" + runProgram({"check", files.sWrong}).sOut + sOne);
    const ProgramRun all = runProgram({"check", files.sMissing, files.sWrong, files.sFine});
    EXPECT_EQ(all.iCode, 2);
    EXPECT_EQ(all.sError, "oxaifc: " + files.sMissing + ": there is no such file\n");
    EXPECT_EQ(all.sOut, both.sOut);
}

TEST(SeveralFiles, JsonOfCheckIsOneObject) {
    const Files files;
    const ProgramRun run = runProgram({"check", "--json", files.sWrong, files.sFine, files.sWrong});
    EXPECT_EQ(run.iCode, 1);
    const Json all = run.json();
    for (const char* pPart : {"records", "groups"}) {
        ASSERT_EQ(all[pPart].size(), 2U) << run.sOut;
        for (const Json& item : all[pPart]) EXPECT_EQ(item["file"], files.sWrong);
    }
    ASSERT_EQ(all["files"].size(), 3U);
    EXPECT_EQ(all["files"][0]["file"], files.sWrong);
    EXPECT_EQ(all["files"][0]["errors"], 1);
    EXPECT_EQ(all["files"][1]["file"], files.sFine);
    EXPECT_EQ(all["files"][1]["errors"], 0);
    EXPECT_FALSE(runProgram({"check", "--json", files.sWrong}).json()["records"][0].contains("file"));
}

TEST(SeveralFiles, InfoTellsEach) {
    const Files files;
    const ProgramRun text = runProgram({"info", "--full", files.sWrong, files.sFine});
    EXPECT_EQ(text.iCode, 1);
    EXPECT_TRUE(text.sOut.starts_with("file                  " + files.sWrong + "\n"));
    EXPECT_NE(text.sOut.find("\n\nfile                  " + files.sFine + "\n"), std::string::npos) << text.sOut;
    const Json value = runProgram({"info", "--full", "--json", files.sWrong, files.sMissing, files.sFine}).json();
    ASSERT_EQ(value.size(), 2U);
    EXPECT_EQ(value[0]["file"], files.sWrong);
    EXPECT_EQ(value[0]["errors"], 1);
    EXPECT_EQ(value[1]["file"], files.sFine);
    EXPECT_TRUE(runProgram({"info", "--json", files.sFine}).json().is_object());
}

struct ColourRow {
    const char* pRule;
    const char* pNoColor;
    const char* pTerm;
    OutputKind eOutput;
    bool boColours;
};

TEST(Colours, StandOnATerminalOnly) {
    const ColourRow rows[] = {
        {"a terminal", nullptr, "xterm", OutputKind::Terminal, true},
        {"a terminal of no name", nullptr, nullptr, OutputKind::Terminal, true},
        {"an empty wish", "", "xterm", OutputKind::Terminal, true},
        {"no colours wanted", "1", "xterm", OutputKind::Terminal, false},
        {"a terminal that has none", nullptr, "dumb", OutputKind::Terminal, false},
        {"a file", nullptr, "xterm", OutputKind::File, false},
    };
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n"));
    const std::string sB =
        folder.sFile("b.ifc", sExchangeFile("IFC4", "#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,'x',$,$,$,$,$,$);\n"));
    const std::string sC =
        folder.sFile("c.ifc", sExchangeFile("IFC4", "#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,'y',$,$,$,$,$,$);\n"));
    struct Tinted {
        std::vector<std::string> words;
        std::string sWord;
        const char* pCode;
    };
    const Tinted tinted[] = {
        {{"check", "-"}, "error", "31"},     {{"show", sA, "1"}, "#1=IFCMATERIAL('a',$,$);", "1"},
        {{"diff", sA, sB}, "removed", "31"}, {{"diff", sA, sB}, "added", "32"},
        {{"diff", sB, sC}, "changed", "33"},
    };
    for (const ColourRow& row : rows) {
        if (!boCanBe(row.eOutput)) continue;
        const Variable noColor("NO_COLOR", row.pNoColor);
        const Variable term("TERM", row.pTerm);
        for (const Tinted& one : tinted) {
            SCOPED_TRACE(std::string(row.pRule) + ": " + one.sWord);
            const ProgramRun run = runProgram(one.words, sBad(), row.eOutput);
            const std::string sColoured = std::string("\x1b[") + one.pCode + "m" + one.sWord + "\x1b[0m";
            EXPECT_EQ(run.sOut.find(sColoured) != std::string::npos, row.boColours) << run.sOut;
            EXPECT_EQ(run.sOut.find('\x1b') != std::string::npos, row.boColours) << run.sOut;
            EXPECT_NE(run.sOut.find(one.sWord), std::string::npos) << run.sOut;
        }
        EXPECT_EQ(runProgram({"check", "-", "--json"}, sBad(), row.eOutput).sOut.find('\x1b'), std::string::npos);
    }
}

}   // namespace
}   // namespace oxa::test
