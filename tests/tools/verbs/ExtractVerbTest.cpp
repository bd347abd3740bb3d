// SPDX-License-Identifier: Apache-2.0
// "oxaifc extract": an entity and what it reaches, in the simple form, which the other verbs read.

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

// Two polylines that share a point, a wall that a relation leads to, and a material on its own.
std::string sModel() {
    return sExchangeFile("IFC4", "#20=IFCPOLYLINE((#7,#5));\n"
                                 "#21=IFCPOLYLINE((#5,#6));\n"
                                 "#5=IFCCARTESIANPOINT((0.,0.));\n"
                                 "#6=IFCCARTESIANPOINT((1.,0.));\n"
                                 "#7=IFCCARTESIANPOINT((0.,1.));\n"
                                 "#30=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,'W\\X\\E4nde',$,$,$,$,$,$);\n"
                                 "#31=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,#30,(#32));\n"
                                 "#32=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$);\n"
                                 "#40=IFCMATERIAL('a',$,$);\n");
}

struct ExtractRow {
    const char* pRule;
    const char* pWhat;
    const char* pText;
};
const ExtractRow g_extracts[] = {
    {"what it refers to", "#20",
     "Ifc file simple;\nIFC4;\n20;\n#5=IFCCARTESIANPOINT((0.,0.));\n#7=IFCCARTESIANPOINT((0.,1.));\n"
     "#20=IFCPOLYLINE((#7,#5));\n"},
    {"one alone", "#40", "Ifc file simple;\nIFC4;\n40;\n#40=IFCMATERIAL('a',$,$);\n"},
    {"what refers to it, by GlobalId", "3qt5KnRY9OSu4BNT4B7kwi",
     "Ifc file simple;\nIFC4;\n30;\n#30=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,'W\\X\\E4nde',$,$,$,$,$,$);\n"
     "#31=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,#30,(#32));\n"
     "#32=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$);\n"},
};

TEST(ExtractVerb, WritesTheSimpleFormWithTheNumbersOfTheFile) {
    for (const ExtractRow& row : g_extracts) {
        SCOPED_TRACE(row.pRule);
        const ProgramRun run = runProgram({"extract", "--single-threaded", "-", row.pWhat, "-"}, sModel());
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        EXPECT_EQ(run.sOut, row.pText);
        // What was extracted is extracted from itself unchanged.
        EXPECT_EQ(runProgram({"extract", "--single-threaded", "-", row.pWhat, "-"}, run.sOut).sOut, row.pText);
        const ProgramRun threads = runProgram({"extract", "-", row.pWhat, "-"}, sModel());
        EXPECT_EQ(threads.iCode, 0);
        EXPECT_EQ(threads.sOut, row.pText);
    }
}

TEST(ExtractVerb, EveryVerbReadsWhatItWrites) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "out.txt").string();
    EXPECT_EQ(runProgram({"extract", sExample("house-ifc4.ifc"), "#306", sOut}).iCode, 0);
    const Json info = runProgram({"info", sOut, "--json"}).json();
    EXPECT_EQ(info["schema"], "IFC4");
    EXPECT_EQ(info["header"]["root"], 306);
    EXPECT_EQ(info["errors"], 0);
    EXPECT_EQ(runProgram({"check", sOut}).iCode, 0);
    EXPECT_EQ(runProgram({"show", sOut, "#306"}).sOut, runProgram({"show", sExample("house-ifc4.ifc"), "#306"}).sOut);
    const ProgramRun back = runProgram({"convert", sOut, "-"});
    EXPECT_EQ(back.iCode, 0);
    EXPECT_EQ(statements(back.sOut), statements(sContent(sOut)));
}

// The name says what is in it: ".ifc" is a STEP file, with the header of the one it came from.
TEST(ExtractVerb, WritesAStepFileUnderSuchAName) {
    const TestFolder folder;
    const std::string sText = "#20=IFCPOLYLINE((#7,#5));\n#7=IFCCARTESIANPOINT((0.,1.));\n"
                              "#5=IFCCARTESIANPOINT((0.,0.));\n";
    for (const char* pName : {"a.ifc", "a.STP", "a.step", "a.p21"}) {
        const std::string sOut = (folder.path() / pName).string();
        EXPECT_EQ(runProgram({"extract", "--single-threaded", "-", "20", sOut}, sModel()).iCode, 0);
        EXPECT_EQ(statements(sContent(sOut)), statements(sText));
        EXPECT_TRUE(sContent(sOut).starts_with("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\n"));
    }
    EXPECT_TRUE(
        runProgram({"extract", "-", "20", "-", "--format", "step"}, sModel()).sOut.starts_with("ISO-10303-21;"));
    EXPECT_TRUE(
        runProgram({"extract", "-", "20", "-", "--format", "simple"}, sModel()).sOut.starts_with("Ifc file simple;"));
}

struct FailRow {
    const char* pWhat;
    const char* pError;
};
const FailRow g_failures[] = {
    {"#8", "oxaifc: standard input: there is no #8\n"},
    {"1CCJ9i1$jSdgYVC2yzHPtD", "oxaifc: standard input: there is no GlobalId 1CCJ9i1$jSdgYVC2yzHPtD\n"},
    {"IFCWALL", "oxaifc: IFCWALL is no number as #12 and no GlobalId of 22 characters\n"},
};

TEST(ExtractVerb, UnknownWhatLeavesOutAsItWas) {
    for (const FailRow& row : g_failures) {
        SCOPED_TRACE(row.pWhat);
        const TestFolder folder;
        const std::string sOut = folder.sFile("out.ifc", "old");
        const ProgramRun run = runProgram({"extract", "-", row.pWhat, sOut}, sModel());
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, row.pError);
        EXPECT_EQ(sContent(sOut), "old");
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"out.ifc"});
    }
}

TEST(ExtractVerb, FullDiskIsOneLine) {
    const ProgramRun run = runProgram({"extract", sExample("house-ifc4.ifc"), "#306", "/dev/full"});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: can't write /dev/full: No space left on device\n");
}

}   // namespace
}   // namespace oxa::test
