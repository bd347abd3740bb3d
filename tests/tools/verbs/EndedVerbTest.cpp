// SPDX-License-Identifier: Apache-2.0
// What "oxaifc table" and "oxaifc sql" leave where they are ended: by Ctrl-C and other signals, a full disk, a locked base.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "system/System.h"
#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

namespace fs = std::filesystem;

struct EndedRun : ProgramEnd {
    std::string sError;
};

// Runs the program, and asks it to end as soon as boReady says so.
EndedRun runProgramUntil(const std::vector<std::string>& words, const std::function<bool()>& boReady,
                         EndRequest eRequest) {
    const TestFolder folder;
    const fs::path in = folder.sFile("in", "");
    const ProgramStart start{OXAIFC_PROGRAM, words, in, folder.path() / "out", folder.path() / "error"};
    const ProgramEnd end = endWhen(start, boReady, eRequest);
    return {end, sContent(start.error)};
}

const std::string& sMaterials() {
    static const std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL('Oak',$,$);\n#2=IFCMATERIAL('Elm',$,$);\n");
    return sFile;
}

struct EndedOutRow {
    const char* pOut;
    std::vector<std::string> behind;
    const char* pFullDisk;   // what is told of one; %: the folder of the test
};
const EndedOutRow g_outs[] = {{"out.sqlite", {}, "%/out.sqlite: can't be written: File too large"},
                              {"out.xlsx", {}, "%/out.xlsx: can't be written: temporary files in %: File too large"},
                              {"out.csv", {"--only", "property"}, "can't write %/out.csv: File too large"},
                              {"out", {}, "%/out/element.csv: can't be written: File too large"},
                              {"out", {"-f", "ndjson"}, "%/out/element.ndjson: can't be written: File too large"}};

std::vector<std::string> words(const std::vector<std::string>& paths, const EndedOutRow& row) {
    std::vector<std::string> all{"table"};
    all.insert(all.end(), paths.begin(), paths.end());
    all.insert(all.end(), row.behind.begin(), row.behind.end());
    return all;
}

// The second file is a pipe that nobody writes to: the program waits with what it has made of the first.
TEST(EndedVerb, TableCtrlCLeavesNothingBehind) {
    for (const EndedOutRow& row : g_outs)
        for (const bool boOld : {false, true}) {
            SCOPED_TRACE(std::string(row.pOut) + (boOld ? ", which is there" : ""));
            const bool boFolder = fs::path(row.pOut).extension().empty();
            if (boOld && boFolder) continue;
            const TestFolder folder;
            const std::string sA = folder.sFile("a.ifc", sMaterials());
            const std::string sB = (folder.path() / "b.ifc").string();
            if (!boCanAsk(EndRequest::Interrupt) || !boSilentPipe(sB))
                GTEST_SKIP() << "this system has no pipes among files, or no Ctrl-C for one program";
            const std::string sOut = (folder.path() / row.pOut).string();
            if (boOld) folder.sFile(row.pOut, "old");
            const std::vector<std::string> before = filesIn(folder.path());
            const auto boReady = [&] {
                return boFolder ? fs::exists(sOut) && filesIn(sOut).size() == 10   // as many as tables
                                : filesIn(folder.path()).size() > before.size();
            };
            const EndedRun run = runProgramUntil(words({sA, sB, sOut}, row), boReady, EndRequest::Interrupt);
            EXPECT_EQ(run.eEndedBy, EndRequest::Interrupt);
            EXPECT_EQ(run.sError, "oxaifc: interrupted\n");
            EXPECT_EQ(filesIn(folder.path()), before);
            if (boOld) {
                EXPECT_EQ(sContent(sOut), "old");
            }
        }
}

// By a limit of file sizes, which is met as a full disk is.
TEST(EndedVerb, TableAFullDiskLeavesNothingBehind) {
#ifdef OXA_COVERAGE
    GTEST_SKIP() << "this build's counts meet the limit too";
#endif
    for (const EndedOutRow& row : g_outs) {
        SCOPED_TRACE(row.pOut);
        const TestFolder folder;
        const std::string sOut = (folder.path() / row.pOut).string();
        const Variable temporary("TMPDIR", folder.path().string().c_str());
        ProgramRun run;
        {
            const FileLimit limit(2000);   // of what the test writes, too
            if (!limit.boHolds()) GTEST_SKIP() << "this system limits no file's size";
            run = runProgram(words({sExample("house-ifc4.ifc"), sOut}, row));
        }
        std::string sExpected = row.pFullDisk;
        for (std::size_t i = 0; (i = sExpected.find('%')) != std::string::npos;)
            sExpected.replace(i, 1, folder.path().string());
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, "oxaifc: " + sExpected + "\n");
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>());
    }
}

TEST(EndedVerb, TableALockedBaseIsLeft) {
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sMaterials());
    const std::string sOut = (folder.path() / "out.db").string();
    ASSERT_EQ(runProgram({"table", sA, sOut}).iCode, 0);
    const std::string sBefore = sContent(sOut);
    {
        const BytesLock lock(sOut, 0x40000000, 512);   // as SQLite locks what it writes to: from the byte at 2^30 on
        ASSERT_TRUE(lock.boHolds());
        const ProgramRun run = runProgram({"table", sA, sOut});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, "oxaifc: " + sOut + ": can't be written: the database is locked by another program\n");
    }
    EXPECT_EQ(sContent(sOut), sBefore);
    EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"a.ifc", "out.db"}));
}

TEST(EndedVerb, SqlCtrlCAtThePrompt) {
    if (!boCanBe(OutputKind::Terminal)) GTEST_SKIP() << "this system has no terminals for programs";
    if (std::system("python3 -c 'import pty' > /dev/null 2>&1") != 0) GTEST_SKIP() << "there is no python3";
    const TestFolder folder;
    const std::string sFile = folder.sFile("a.ifc", sMaterials());
    const ProgramRun run = runProgramAt(
        "/usr/bin/env", {"python3", OXA_SOURCE_DIR "/tests/tools/verbs/sql_prompt.py", OXAIFC_PROGRAM, sFile});
    EXPECT_EQ(run.sOut, "checked\n") << run.sError;
}

const char* const g_pEndless = "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT x FROM c";

// Once rows stand in the new file, whose name nobody knows.
bool boWritten(const fs::path& folder) {
    return std::ranges::any_of(fs::directory_iterator(folder), [](const auto& entry) {
        return entry.path().extension() == ".tmp" && entry.file_size() > 0;
    });
}

TEST(EndedVerb, SqlCtrlCEndsAStatement) {
    if (!boCanAsk(EndRequest::Interrupt)) GTEST_SKIP() << "this system has no Ctrl-C for one program";
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sMaterials());
    for (const char* pOut : {"out.csv", "out.json"}) {
        SCOPED_TRACE(pOut);
        const std::string sOut = folder.sFile(pOut, "old");
        const EndedRun run = runProgramUntil(
            {"sql", sA, g_pEndless, "-o", sOut}, [&] { return boWritten(folder.path()); }, EndRequest::Interrupt);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, "oxaifc: sql: interrupted\n");
        EXPECT_EQ(sContent(sOut), "old");
        fs::remove(sOut);
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"a.ifc"});
    }
}

TEST(EndedVerb, SqlTheSystemEndsAStatement) {
    if (!boCanAsk(EndRequest::Terminate)) GTEST_SKIP() << "this system can't ask one program to end from here";
    const TestFolder folder;
    const std::string sA = folder.sFile("a.ifc", sMaterials());
    const std::string sOut = (folder.path() / "out.csv").string();
    const EndedRun ended = runProgramUntil(
        {"sql", sA, g_pEndless, "-o", sOut}, [&] { return boWritten(folder.path()); }, EndRequest::Terminate);
    EXPECT_EQ(ended.eEndedBy, EndRequest::Terminate);
    EXPECT_EQ(ended.sError, "");
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"a.ifc"});
}

TEST(EndedVerb, SqlAFullDiskLeavesNothingBehind) {
#ifdef OXA_COVERAGE
    GTEST_SKIP() << "this build's counts meet the limit too";
#endif
    const TestFolder folder;
    const std::string sOut = (folder.path() / "out.csv").string();
    ProgramRun run;
    {
        const FileLimit limit(20000);   // of what the test writes, too
        if (!limit.boHolds()) GTEST_SKIP() << "this system limits no file's size";
        run = runProgram({"sql", sExample("house-ifc4.ifc"), g_pEndless, "-o", sOut});
    }
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: can't write " + sOut + ": File too large\n");
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>());
}

}   // namespace
}   // namespace oxa::test
