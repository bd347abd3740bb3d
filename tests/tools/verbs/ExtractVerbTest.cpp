// SPDX-License-Identifier: Apache-2.0
// "oxaifc extract": elements with all that they need as files of their own, and an entity with what it reaches in the
// simple form, which the other verbs read.

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

struct ExtractFailRow {
    const char* pWhat;
    const char* pError;
};
const ExtractFailRow g_failures[] = {
    {"#8", "oxaifc: standard input: there is no #8\n"},
    {"1CCJ9i1$jSdgYVC2yzHPtD", "oxaifc: standard input: there is no GlobalId 1CCJ9i1$jSdgYVC2yzHPtD\n"},
    {"IfcDoor", "oxaifc: standard input: IfcDoor selects nothing\n"},
    {"IfcWal", "oxaifc: standard input: column 1: IFC4 has no entity type IfcWal; did you mean IfcWall, IfcWallType, "
               "IfcWallStandardCase, IfcWallElementedCase?\n"},
    {"Name=", "oxaifc: extract: WHAT, column 6: a value is expected; an empty text is \"\"\n"},
};

TEST(ExtractVerb, UnknownWhatLeavesOutAsItWas) {
    for (const ExtractFailRow& row : g_failures) {
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
    const std::string sOut = sFullDevice();
    if (sOut.empty()) GTEST_SKIP() << "no device that takes nothing";
    const ProgramRun run = runProgram({"extract", sExample("house-ifc4.ifc"), "#306", sOut});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: can't write " + sOut + ": No space left on device\n");
}

// Two storeys with a wall each, and one that stands in none. The names are hostile.
std::string sStoreys(const std::string& sFirst = "EG", const std::string& sSecond = "OG") {
    return sExchangeFile("IFC4", "#1=IFCPROJECT('0AAAAAAAAAAAAAAAAAAA01',$,$,$,$,$,$,$,$);\n"
                                 "#2=IFCBUILDING('0AAAAAAAAAAAAAAAAAAA02',$,$,$,$,$,$,$,$,$,$,$);\n"
                                 "#3=IFCBUILDINGSTOREY('0AAAAAAAAAAAAAAAAAAA03',$,'" +
                                     sFirst +
                                     "',$,$,$,$,$,$,$);\n"
                                     "#4=IFCBUILDINGSTOREY('0AAAAAAAAAAAAAAAAAAA04',$,'" +
                                     sSecond +
                                     "',$,$,$,$,$,$,$);\n"
                                     "#5=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA05',$,$,$,#1,(#2));\n"
                                     "#6=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA06',$,$,$,#2,(#3,#4));\n"
                                     "#7=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA07',$,$,$,(#10),#3);\n"
                                     "#8=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA08',$,$,$,(#11),#4);\n"
                                     "#10=IFCWALL('0AAAAAAAAAAAAAAAAAAA10',$,'A',$,$,$,$,$,$);\n"
                                     "#11=IFCWALL('0AAAAAAAAAAAAAAAAAAA11',$,'B',$,$,$,$,$,$);\n"
                                     "#12=IFCWALL('0AAAAAAAAAAAAAAAAAAA12',$,'C',$,$,$,$,$,$);\n");
}

TEST(ExtractVerb, AFileIsAWholeExchangeStructure) {
    const TestFolder folder;
    const std::string sFirst = "#1=IFCPROJECT('0AAAAAAAAAAAAAAAAAAA01',$,$,$,$,$,$,$,$);\n"
                               "#2=IFCBUILDING('0AAAAAAAAAAAAAAAAAAA02',$,$,$,$,$,$,$,$,$,$,$);\n"
                               "#3=IFCBUILDINGSTOREY('0AAAAAAAAAAAAAAAAAAA03',$,'EG',$,$,$,$,$,$,$);\n"
                               "#5=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA05',$,$,$,#1,(#2));\n"
                               "#6=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA06',$,$,$,#2,(#3));\n"
                               "#7=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA07',$,$,$,(#10),#3);\n"
                               "#10=IFCWALL('0AAAAAAAAAAAAAAAAAAA10',$,'A',$,$,$,$,$,$);\n";
    const std::string sOut = (folder.path() / "a.ifc").string();
    for (const char* pWhat : {"10", "#10", "0AAAAAAAAAAAAAAAAAAA10", "IfcWall, Name=A", "location=EG", "storey=EG", "3",
                              "IfcBuildingStorey, Name=EG"}) {
        SCOPED_TRACE(pWhat);
        for (const char* pThreads : {"--single-threaded", "--"}) {
            const ProgramRun run = runProgram({"extract", pThreads, "-", pWhat, sOut}, sStoreys());
            EXPECT_EQ(run.iCode, 0) << run.sError;
            EXPECT_EQ(run.sOut + run.sError, "");
            EXPECT_TRUE(sContent(sOut).ends_with("DATA;\n" + sFirst + "ENDSEC;\nEND-ISO-10303-21;\n"))
                << sContent(sOut);
        }
        EXPECT_EQ(runProgram({"check", sOut}).iCode, 0);
    }
    // A query needs no name to be one; what one entity reaches is still to be had.
    EXPECT_TRUE(runProgram({"extract", "-", "IfcWall, Name=A", "-"}, sStoreys())
                    .sOut.ends_with(sFirst + "ENDSEC;\nEND-ISO-10303-21;\n"));
    EXPECT_EQ(runProgram({"extract", "--alone", "-", "10", sOut}, sStoreys()).iCode, 0);
    EXPECT_EQ(statements(sContent(sOut)).size(), 10U);
    EXPECT_EQ(runProgram({"extract", "--alone", "-", "IfcWall", sOut}, sStoreys()).sError,
              "oxaifc: extract: --alone takes a number or a GlobalId for WHAT\n");
    EXPECT_EQ(runProgram({"extract", "-", "12"}, sStoreys()).sError, "oxaifc: extract: OUT is required\n");
}

TEST(ExtractVerb, ExactLeavesOutSubtypes) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "a.ifc").string();
    EXPECT_EQ(runProgram({"extract", "-", "IfcBuiltElement + IfcBuildingElement", sOut}, sStoreys()).iCode, 2);
    EXPECT_EQ(runProgram({"extract", "-", "IfcBuildingElement", sOut}, sStoreys()).iCode, 0);
    EXPECT_EQ(runProgram({"extract", "--exact", "-", "IfcBuildingElement", sOut}, sStoreys()).sError,
              "oxaifc: standard input: IfcBuildingElement selects nothing\n");
}

struct SplitRow {
    const char* pRule;
    std::string sFirst, sSecond;
    std::vector<std::string> files;
};

TEST(ExtractVerb, SplitsByStorey) {
    const SplitRow rows[] = {
        {"by their names", "EG", "OG", {"EG.ifc", "OG.ifc", "no-storey.ifc"}},
        {"equal names", "EG", "eg", {"EG.ifc", "eg-2.ifc", "no-storey.ifc"}},
        {"without a name", "", " . ", {"IfcBuildingStorey-3.ifc", "IfcBuildingStorey-4.ifc", "no-storey.ifc"}},
        {"ways out of the folder", "../x", "a/b", {"_x.ifc", "a_b.ifc", "no-storey.ifc"}},
        {"backslashes, devices", "a\\\\b:c", "con", {"_con.ifc", "a_b_c.ifc", "no-storey.ifc"}},
        {"the name of the rest", "no-storey", "OG", {"OG.ifc", "no-storey-2.ifc", "no-storey.ifc"}},
    };
    for (const SplitRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        const std::string sOut = (folder.path() / "out").string();
        const ProgramRun run =
            runProgram({"extract", "-", sOut, "--split-by", "storey"}, sStoreys(row.sFirst, row.sSecond));
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_EQ(run.sError, "");
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"out"});
        EXPECT_EQ(filesIn(folder.path() / "out"), row.files);
        for (const std::string& sName : row.files)
            EXPECT_EQ(runProgram({"check", (folder.path() / "out" / sName).string()}).iCode, 0) << sName;
    }
}

TEST(ExtractVerb, SplitTellsItsFiles) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "a.ifc").string();
    const auto path = [&](const char* pName) { return (folder.path() / pName).string(); };
    const ProgramRun run = runProgram({"extract", "-", sOut, "--split-by", "storey"}, sStoreys());
    EXPECT_EQ(run.sOut, path("a-EG.ifc") + ": 7 entities, IfcBuildingStorey #3 EG\n" + path("a-OG.ifc") +
                            ": 7 entities, IfcBuildingStorey #4 OG\n" + path("a-no-storey.ifc") +
                            ": 2 entities, 1 element in no storey\n");
    const ProgramRun walls = runProgram({"extract", "-", "IfcWall, Name!=B", sOut, "--split-by", "storey"}, sStoreys());
    EXPECT_EQ(walls.sOut, path("a-EG.ifc") + ": 7 entities, IfcBuildingStorey #3 EG\n" + path("a-no-storey.ifc") +
                              ": 2 entities, 1 element in no storey\n");
    const ProgramRun classes = runProgram({"extract", "-", sOut, "--split-by", "class"}, sStoreys());
    EXPECT_EQ(classes.sOut, path("a-IfcWall.ifc") + ": 11 entities, IfcWall\n");
}

TEST(ExtractVerb, WrongSplitsAreOneLine) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("a-EG.ifc", sStoreys());
    const std::string sOut = (folder.path() / "a.ifc").string();
    struct Row {
        std::vector<std::string> words;
        std::string sError;
    };
    const Row rows[] = {
        {{"extract", sIn, "-", "--split-by", "storey"},
         "extract: --split-by writes several files, so OUT can't be standard output"},
        {{"extract", sIn, sOut, "--split-by", "storey"}, sIn + ": is the file that is read"},
        {{"extract", sIn, sOut, "--split-by", "type"}, sIn + ": has nothing to be split by type"},
        {{"extract", sIn, sOut, "--split-by", "storey", "--alone"},
         "extract: --alone and --split-by exclude each other"},
        {{"extract", sIn, (folder.path() / "no" / "out").string(), "--split-by", "storey"},
         "can't make the folder " + (folder.path() / "no" / "out").string() + ": there is none to put it in"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sError);
        const ProgramRun run = runProgram(row.words);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, "oxaifc: " + row.sError + "\n");
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"a-EG.ifc"});
        EXPECT_EQ(sContent(sIn), sStoreys());
    }
}

}   // namespace
}   // namespace oxa::test
