// SPDX-License-Identifier: Apache-2.0
// "oxaifc convert", and what it has in common with all verbs that write a file.

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* g_pConvertProject = "#10=IFCPROJECT('0TdSR4dSbLuwdbL5HLUvM0',$,$,$,$,$,$,$,$);\n";

// A project, a site that it reaches over a relation, and three entities on their own.
std::string sConvertProjectFile() {
    return sExchangeFile("IFC4", std::string(g_pConvertProject) +
                                     "#7=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,#10,(#300));\n"
                                     "#300=IFCSITE('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                                     "#4=IFCMATERIAL('a',$,$);\n"
                                     "#9=IFCMATERIAL('b',$,$);\n"
                                     "#3=IFCCARTESIANPOINT((0.,1.5));\n");
}

// A statement whose fault the read tells in other words than the write.
std::string sNoGuid(int iNumber) {
    return "#" + std::to_string(iNumber) + "=IFCSITE('0000000000000000000000',$,$,$,$,$,$,$,$,$,$,$,$,$);\n";
}

std::multiset<std::string> without(std::multiset<std::string> all, const std::vector<std::string>& some) {
    for (const std::string& sLine : some) all.erase(sLine);
    return all;
}

TEST(ConvertVerb, KeepsNumbersAndStatements) {
    for (const char* pName : {"house-ifc4.ifc", "house-ifc2x3.ifc"})
        for (const char* pThreads : {"--single-threaded", "--"}) {
            SCOPED_TRACE(std::string(pName) + " " + pThreads);
            // The samples have line ends within statements: what the program writes is compared with its own text.
            const ProgramRun first = runProgram({"convert", "--all", sExample(pName), "-"});
            EXPECT_EQ(first.iCode, 0);
            const ProgramRun second = runProgram({"convert", pThreads, "-", "-"}, first.sOut);
            EXPECT_EQ(second.iCode, 0);
            EXPECT_EQ(second.sError, "");
            EXPECT_EQ(statements(second.sOut), statements(first.sOut));
            const ProgramRun shown = runProgram({"show", sExample(pName), "IFCSITE", "--json"});
            EXPECT_TRUE(statements(second.sOut).contains(shown.json()[0]["statement"].get<std::string>()));
        }
}

TEST(ConvertVerb, FrameAndHeaderAreThoseOfTheFile) {
    const ProgramRun run = runProgram({"convert", "-", "-"}, sExchangeFile("IFC4", g_pConvertProject));
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, sExchangeFile("IFC4", g_pConvertProject));
}

TEST(ConvertVerb, TellsWhatTheProjectDoesNotReach) {
    const std::multiset<std::string> all = statements(sConvertProjectFile());
    const std::multiset<std::string> reached =
        without(all, {"#4=IFCMATERIAL('a',$,$);", "#9=IFCMATERIAL('b',$,$);", "#3=IFCCARTESIANPOINT((0.,1.5));"});
    for (const char* pThreads : {"--single-threaded", "--"}) {
        const ProgramRun run = runProgram({"convert", pThreads, "-", "-"}, sConvertProjectFile());
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(statements(run.sOut), reached);
        EXPECT_EQ(run.sError, "left out, not connected with the project: 3 entities (--all writes them)\n"
                              "           2  IFCMATERIAL\n"
                              "           1  IFCCARTESIANPOINT\n");
    }
    const ProgramRun run = runProgram({"convert", "-", "-", "--all"}, sConvertProjectFile());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sError, "");
    EXPECT_EQ(statements(run.sOut), all);
}

TEST(ConvertVerb, RenumberDealsNumbersFromOne) {
    const ProgramRun run = runProgram({"convert", "--renumber", "--single-threaded", "-", "-"}, sConvertProjectFile());
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(statements(run.sOut),
              (std::multiset<std::string>{"#1=IFCPROJECT('0TdSR4dSbLuwdbL5HLUvM0',$,$,$,$,$,$,$,$);",
                                          "#2=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,#1,(#3));",
                                          "#3=IFCSITE('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$,$,$,$,$,$);"}));
    EXPECT_TRUE(run.sError.starts_with("left out, not connected with the project: 3 entities")) << run.sError;
}

// The data of a file, and what convert does with them. Nothing written: no "#" line.
struct ConvertRow {
    const char* pRule;
    std::string sFile;
    std::vector<std::string> options;
    int iCode;
    std::multiset<std::string> written;
    const char* pError;   // the beginning of standard error
};
std::vector<ConvertRow> convertRows() {
    const std::string sSimple = "Ifc file simple;\nIFC4;\n7;\n#7=IFCPOLYLINE((#9));\n#9=IFCCARTESIANPOINT((1.,2.));\n";
    const std::multiset<std::string> simple = statements(sSimple);
    return {
        {"no project",
         sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n"),
         {},
         2,
         {},
         "oxaifc: standard input: has no IFCPROJECT to start from; --all writes every entity\n"},
        {"no project, everything",
         sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n"),
         {"--all"},
         0,
         {"#1=IFCMATERIAL('a',$,$);"},
         ""},
        {"no entity at all", sExchangeFile("IFC4", ""), {"--all"}, 0, {}, ""},
        {"the simple form without a project",
         sSimple,
         {},
         2,
         {},
         "oxaifc: standard input: has no IFCPROJECT to start from; --all writes every entity\n"},
        {"the simple form, everything", sSimple, {"--all"}, 0, simple, ""},
        {"the simple form of a project",
         std::string("Ifc file simple;\nIFC4;\n*;\n") + g_pConvertProject,
         {},
         0,
         statements(g_pConvertProject),
         ""},
        {"an error in the file",
         sExchangeFile("IFC4", std::string(g_pConvertProject) + "#2=IFCTEAPOT();\n"),
         {},
         1,
         statements(g_pConvertProject),
         "oxaifc: standard input: 1 error while reading; oxaifc check tells them\n"},
        {"an error of the write",
         sExchangeFile("IFC4", sNoGuid(12)),
         {"--all"},
         1,
         statements(sNoGuid(12)),
         "oxaifc: standard input: 1 error while reading; oxaifc check tells them\n"
         "oxaifc: standard output: #12 IfcSite: A GlobalId of 22 characters was expected for GlobalId.\n"},
        {"an error of the write that the read told",
         sExchangeFile("IFC4", "#1=IFCMATERIAL($,$,$);\n"),
         {"--all"},
         1,
         {"#1=IFCMATERIAL($,$,$);"},
         "oxaifc: standard input: 1 error while reading; oxaifc check tells them\n"},
        {"the same with a new number",
         sExchangeFile("IFC4", "#7=IFCMATERIAL($,$,$);\n"),
         {"--all", "--renumber"},
         1,
         {"#1=IFCMATERIAL($,$,$);"},
         "oxaifc: standard input: 1 error while reading; oxaifc check tells them\n"},
        {"an unknown schema",
         sExchangeFile("IFC99", g_pConvertProject),
         {},
         2,
         {},
         "oxaifc: standard input: not read to the end: "},
        {"no file of that kind",
         "Dear Sir or Madam,\n",
         {"--all"},
         2,
         {},
         "oxaifc: standard input: not read to the end: "},
    };
}

TEST(ConvertVerb, WritesWhatCouldBeReadOrSaysWhyNot) {
    for (const ConvertRow& row : convertRows())
        for (const char* pThreads : {"--single-threaded", ""}) {
            SCOPED_TRACE(std::string(row.pRule) + pThreads);
            std::vector<std::string> words{"convert", "-", "-"};
            words.insert(words.end(), row.options.begin(), row.options.end());
            if (*pThreads) words.emplace_back(pThreads);
            const ProgramRun run = runProgram(words, row.sFile);
            EXPECT_EQ(run.iCode, row.iCode);
            EXPECT_EQ(statements(run.sOut), row.written);
            EXPECT_EQ(run.sOut.empty(), row.iCode == 2) << run.sOut;
            if (*row.pError)
                EXPECT_TRUE(run.sError.starts_with(row.pError)) << run.sError;
            else
                EXPECT_EQ(run.sError, "");
            // All lines but one that ends in the text of a record are told whole.
            if (std::string_view(row.pError).ends_with('\n')) {
                EXPECT_EQ(run.sError, row.pError);
            }
        }
}

TEST(ConvertVerb, WriteErrorsAreToldTenAtMost) {
    for (const int iCount : {9, 10, 11, 25}) {
        std::string sData;
        std::string sExpected =
            "oxaifc: standard input: " + std::to_string(iCount) + " errors while reading; oxaifc check tells them\n";
        for (int i = 1; i <= iCount; ++i) {
            sData = sNoGuid(i) + sData;
            if (i <= 10)
                sExpected += "oxaifc: standard output: #" + std::to_string(i) +
                             " IfcSite: A GlobalId of 22 characters was expected for GlobalId.\n";
        }
        if (iCount > 10)
            sExpected += "oxaifc: standard output: " +
                         (iCount == 11 ? std::string("1 error") : std::to_string(iCount - 10) + " errors") + " more\n";
        const ProgramRun run = runProgram({"convert", "--all", "-", "-"}, sExchangeFile("IFC4", sData));
        EXPECT_EQ(run.iCode, 1);
        EXPECT_EQ(run.sError, sExpected);
    }
}

TEST(ConvertVerb, ReferenceToNothingNeverBecomesOneToSomething) {
    const std::string sKept = "#1=IFCPOLYLINE((#99));\n#4=IFCMATERIAL('a',$,$);\n#5=IFCMATERIAL('b',$,$);\n";
    for (const char* pOption : {"--all", "--renumber"}) {
        const ProgramRun run =
            runProgram({"convert", "--all", pOption, "--single-threaded", "-", "-"}, sExchangeFile("IFC4", sKept));
        if (run.iCode == 2) continue;   // said so and wrote nothing
        SCOPED_TRACE(run.sOut);
        EXPECT_EQ(run.iCode, 1);
        for (const char* pNumber : {"1", "2", "3", "4", "5"}) {
            const std::string sNumber = pNumber;
            const bool boDefined = run.sOut.find("#" + sNumber + "=") != std::string::npos;
            EXPECT_FALSE(boDefined && run.sOut.find("((#" + sNumber + "))") != std::string::npos);
        }
    }
}

// What an OUT is before, and what is said when it can't be written.
struct TargetRow {
    const char* pRule;
    const char* pOut;     // in the test's folder; an absolute one stays
    const char* pError;   // null: what the system says of a name below a file
};
const TargetRow g_badTargets[] = {
    {"a folder that is missing", "missing/a.ifc", "there is no such folder"},
    {"a folder", "sub", "Is a directory"},
    {"a file for a folder", "in.ifc/a.ifc", nullptr},
};

TEST(ConvertVerb, OutThatCannotBeWrittenIsOneLineAndNoFile) {
    for (const TargetRow& row : g_badTargets) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        fs::create_directory(folder.path() / "sub");
        const std::string sIn = folder.sFile("in.ifc", sConvertProjectFile());
        const std::string sOut = (folder.path() / row.pOut).string();
        const ProgramRun run = runProgram({"convert", "--all", sIn, sOut});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError,
                  "oxaifc: can't write " + sOut + ": " + (row.pError ? row.pError : sNoFolderTold()) + "\n");
        EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"in.ifc", "sub"}));
        EXPECT_TRUE(filesIn(folder.path() / "sub").empty());
    }
}

TEST(ConvertVerb, FullDiskIsOneLine) {
    const std::string sOut = sFullDevice();
    if (sOut.empty()) GTEST_SKIP() << "no device that takes nothing";
    const ProgramRun run = runProgram({"convert", "--all", "-", sOut}, sConvertProjectFile());
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: can't write " + sOut + ": No space left on device\n");
    EXPECT_TRUE(fs::is_character_file(sOut)) << "a device is not replaced";
}

TEST(ConvertVerb, WriteThatFailsHalfwayKeepsTheOldFile) {
#ifdef OXA_COVERAGE
    GTEST_SKIP() << "this build's counts meet the limit too";
#endif
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sContent(sExample("house-ifc4.ifc")));
    ProgramRun run;
    {
        const FileLimit limit(10000);   // less than half of what is to be written
        if (!limit.boHolds()) GTEST_SKIP() << "the system limits no file";
        run = runProgram({"convert", sIn, sIn});
    }
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: can't write " + sIn + ": File too large\n");
    EXPECT_EQ(sContent(sIn), sContent(sExample("house-ifc4.ifc")));
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"in.ifc"});
}

TEST(ConvertVerb, FolderWithoutPermissionKeepsTheOldFile) {
    if (!boHasRights()) GTEST_SKIP() << "the system has other rights";
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sConvertProjectFile());
    fs::permissions(folder.path(), fs::perms::owner_read | fs::perms::owner_exec);
    const ProgramRun run = runProgram({"convert", "--all", sIn, sIn});
    const bool boAllowed = run.iCode == 0;
    fs::permissions(folder.path(), fs::perms::owner_all);
    if (boAllowed) GTEST_SKIP() << "this user may write everywhere";
    EXPECT_EQ(run.sError, "oxaifc: can't write " + sIn + ": Permission denied\n");
    EXPECT_EQ(sContent(sIn), sConvertProjectFile());
}

TEST(ConvertVerb, WriteProtectedFileIsNotReplaced) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sConvertProjectFile());
    fs::permissions(sIn, fs::perms::owner_read);
    const ProgramRun run = runProgram({"convert", "--all", "--renumber", sIn, sIn});
    if (run.iCode == 0) GTEST_SKIP() << "this user may write everything";
    EXPECT_EQ(run.sError, "oxaifc: can't write " + sIn + ": Permission denied\n");
    EXPECT_EQ(sContent(sIn), sConvertProjectFile());
}

TEST(ConvertVerb, OutMayBeIn) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sConvertProjectFile());
    if (!boLink("in.ifc", folder.path() / "link.ifc")) GTEST_SKIP() << "no links here";
    for (const char* pOut : {"in.ifc", "link.ifc"}) {
        const ProgramRun run = runProgram({"convert", "--all", sIn, (folder.path() / pOut).string()});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(statements(sContent(sIn)), statements(sConvertProjectFile()));
        EXPECT_TRUE(fs::is_symlink(folder.path() / "link.ifc"));
        EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"in.ifc", "link.ifc"}));
    }
}

TEST(ConvertVerb, InWithErrorsIsNotReplacedByItself) {
    const TestFolder folder;
    const std::string sFile = sExchangeFile("IFC4", std::string(g_pConvertProject) + "#2=IFCTEAPOT();\n");
    const std::string sIn = folder.sFile("in.ifc", sFile);
    if (!boLink("in.ifc", folder.path() / "link.ifc")) GTEST_SKIP() << "no links here";
    for (const char* pOut : {"in.ifc", "link.ifc"}) {
        const ProgramRun run = runProgram({"convert", sIn, (folder.path() / pOut).string()});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError,
                  "oxaifc: " + sIn + ": has 1 error; what could not be read would be lost, so name another OUT\n");
        EXPECT_EQ(sContent(sIn), sFile);
    }
}

TEST(ConvertVerb, UnreadableInLeavesOutAsItWas) {
    const TestFolder folder;
    const std::string sOut = folder.sFile("out.ifc", "old");
    const ProgramRun run = runProgram({"convert", (folder.path() / "missing.ifc").string(), sOut});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(runProgram({"convert", "-", sOut}, sExchangeFile("IFC99", "")).iCode, 2);
    EXPECT_EQ(sContent(sOut), "old");
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"out.ifc"});
}

TEST(ConvertVerb, PermissionsOfTheOldFileStay) {
    if (!boHasRights()) GTEST_SKIP() << "the system has other rights";
    for (const fs::perms mode : {fs::perms(0600), fs::perms(0664), fs::perms(0640)}) {
        const TestFolder folder;
        const std::string sOut = folder.sFile("out.ifc", "old");
        fs::permissions(sOut, mode);
        EXPECT_EQ(runProgram({"convert", sExample("house-ifc4.ifc"), sOut}).iCode, 0);
        EXPECT_EQ(fs::status(sOut).permissions(), mode);
        EXPECT_EQ(statements(sContent(sOut)).size(), 399U);
    }
}

TEST(ConvertVerb, NewFileHasTheUsualPermissions) {
    if (!boHasRights()) GTEST_SKIP() << "the system has other rights";
    const TestFolder folder;
    {
        const WithoutRights rights(027);
        const std::string sOut = (folder.path() / "out.ifc").string();
        EXPECT_EQ(runProgram({"convert", sExample("house-ifc4.ifc"), sOut}).iCode, 0);
    }
    EXPECT_EQ(fs::status(folder.path() / "out.ifc").permissions(), fs::perms(0640));
}

TEST(ConvertVerb, ReaderWhoGoesAwayIsNoFailure) {
    std::string sData = g_pConvertProject;
    for (int i = 11; i < 20000; ++i) sData += "#" + std::to_string(i) + "=IFCMATERIAL('abcdefghijkl',$,$);\n";
    const ProgramRun run =
        runProgram({"convert", "--all", "-", "-"}, sExchangeFile("IFC4", sData), OutputKind::ClosedPipe);
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sError, "");
}

TEST(ConvertVerb, HelpTellsTheExitCodes) {
    for (const char* pVerb : {"convert", "extract", "set"}) {
        const ProgramRun run = runProgram({pVerb, "--help"});
        EXPECT_NE(run.sOut.find("Exit code: 0 fine, 1 the read or the write had errors"), std::string::npos)
            << run.sOut;
    }
}

}   // namespace
}   // namespace oxa::test
