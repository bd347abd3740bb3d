// SPDX-License-Identifier: Apache-2.0
// "oxaifc completion" and "oxaifc help --man": what they say is what help says, and shells take it.

#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

std::vector<std::string> lines(const std::string& sText) {
    std::vector<std::string> result;
    std::istringstream stream(sText);
    for (std::string sLine; std::getline(stream, sLine);) result.push_back(sLine);
    return result;
}

std::vector<std::string> verbs() {
    std::vector<std::string> result;
    const std::string sHelp = runProgram({"--help"}).sOut;
    for (const std::string& sLine : lines(sHelp.substr(sHelp.find("\nVerbs:\n"))))
        if (sLine.starts_with("  ") && sLine.size() > 2 && sLine[2] != ' ')
            result.push_back(sLine.substr(2, sLine.find(' ', 2) - 2));
    return result;
}

// The options that the help of a verb tells: "--lang", "-c".
std::set<std::string> options(const std::string& sVerb) {
    std::set<std::string> result;
    const std::regex option("^  (-[-a-z]+)(,(--[-a-z]+))?");
    for (const std::string& sLine : lines(runProgram({sVerb, "--help"}).sOut)) {
        std::smatch found;
        if (!std::regex_search(sLine, found, option)) continue;
        result.insert(found[1]);
        if (found[3].matched) result.insert(found[3]);
    }
    return result;
}

// What bash offers behind these words, the last of which is not complete.
std::string sOffered(const std::vector<std::string>& words) {
    std::string sList;
    for (const std::string& sWord : words) sList += " '" + sWord + "'";
    const std::string sScript = runProgram({"completion", "bash"}).sOut + "COMP_WORDS=(" + sList +
                                ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) +
                                "\n_oxaifc\necho \"${COMPREPLY[*]}\"\n";
    const ProgramRun run = runProgramAt("/bin/bash", {"-c", sScript});
    return run.iCode == 0 && run.sError.empty() ? run.sOut : run.sError;
}

TEST(CompletionVerb, BashOffersWhatHelpTells) {
    if (!boHasShells() || !std::filesystem::exists("/bin/bash")) GTEST_SKIP() << "no bash";
    const struct {
        const char* pRule;
        std::vector<std::string> words;
        const char* pOffered;
    } rows[] = {
        {"a verb", {"oxaifc", "ch"}, "check\n"},
        {"help is one", {"oxaifc", "he"}, "help header\n"},
        {"options of the program", {"oxaifc", "--v"}, "--version\n"},
        {"the verb that help is about", {"oxaifc", "help", "pro"}, "props\n"},
        {"an option", {"oxaifc", "list", "a.ifc", "--gr"}, "--group-by\n"},
        {"its values", {"oxaifc", "check", "--lang", ""}, "en de\n"},
        {"of another verb", {"oxaifc", "list", "a.ifc", "-f", "t"}, "table tsv\n"},
        {"the same by the long name", {"oxaifc", "list", "a.ifc", "--format", "c"}, "csv\n"},
        {"a schema", {"oxaifc", "schema", "IFC2X3"}, "IFC2X3\n"},
        {"a schema of an option", {"oxaifc", "convert", "--schema", "IFC4X3_ADD"}, "IFC4X3_ADD1 IFC4X3_ADD2\n"},
        {"a shell", {"oxaifc", "completion", "f"}, "fish\n"},
        {"files are bash's own affair", {"oxaifc", "check", "a"}, "\n"},
        {"behind an option too", {"oxaifc", "check", "--html", "a"}, "\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        EXPECT_EQ(sOffered(row.words), row.pOffered);
    }
    for (const std::string& sVerb : verbs()) {
        std::string sAll = sOffered({"oxaifc", sVerb, "-"});
        std::istringstream words(sAll);
        EXPECT_EQ(std::set<std::string>(std::istream_iterator<std::string>(words), {}), options(sVerb)) << sVerb;
    }
}

TEST(CompletionVerb, EveryShellHasEveryOption) {
    const struct {
        const char* pShell;
        const char* pBefore;   // a verb's name
        const char* pLong;     // before the name of an option
    } rows[] = {{"bash", "'", "--"}, {"zsh", "'", "--"}, {"fish", "-a ", "-l "}};
    for (const auto& row : rows) {
        const ProgramRun run = runProgram({"completion", row.pShell});
        EXPECT_EQ(run.iCode, 0);
        for (const std::string& sVerb : verbs()) {
            EXPECT_NE(run.sOut.find(sVerb), std::string::npos) << sVerb;
            for (const std::string& sOption : options(sVerb)) {
                const std::string sName = sOption.substr(sOption.find_first_not_of('-'));
                const std::string sMark = (sOption.starts_with("--") ? std::string(row.pLong)
                                           : row.pLong[1] == 'l'     ? std::string("-s ")
                                                                     : std::string("-")) +
                                          sName;
                EXPECT_NE(run.sOut.find(sMark), std::string::npos) << row.pShell << ' ' << sVerb << ' ' << sMark;
            }
        }
    }
}

// Where a shell is there, it finds no fault in the text.
TEST(CompletionVerb, ShellsParseIt) {
    if (!boHasShells()) GTEST_SKIP() << "no shells";
    for (const char* pShell : {"bash", "zsh", "fish"})
        for (const char* pFolder : {"/bin/", "/usr/bin/"}) {
            if (!std::filesystem::exists(std::string(pFolder) + pShell)) continue;
            const TestFolder folder;
            const std::string sFile = folder.sFile("completion", runProgram({"completion", pShell}).sOut);
            const ProgramRun run = runProgramAt(std::string(pFolder) + pShell, {"-n", sFile});
            EXPECT_EQ(run.iCode, 0) << run.sError;
            EXPECT_EQ(run.sError, "");
        }
}

TEST(CompletionVerb, OtherShellsAreRefused) {
    const ProgramRun run = runProgram({"completion", "csh"});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: completion: SHELL: csh not in {bash,zsh,fish}\n");
}

TEST(ManPage, HasEveryVerbAndOption) {
    const ProgramRun run = runProgram({"help", "--man"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_TRUE(run.sOut.starts_with(".TH OXAIFC 1 \"\" \"oxaifc ")) << run.sOut.substr(0, 80);
    for (const std::string& sVerb : verbs()) {
        const std::size_t iBegin = run.sOut.find(".SS \\fB" + sVerb + "\\fR\n");
        ASSERT_NE(iBegin, std::string::npos) << sVerb;
        const std::string sSection = run.sOut.substr(iBegin, run.sOut.find("\n.S", iBegin) - iBegin);
        for (const std::string& sOption : options(sVerb)) {
            const std::string sRoff = std::regex_replace(sOption, std::regex("-"), "\\-");
            EXPECT_NE(sSection.find("\\fB" + sRoff + "\\fR"), std::string::npos) << sVerb << ' ' << sOption;
        }
    }
}

// Nothing but these begins a request; a point of a text would end a line's sense.
TEST(ManPage, RequestsAreThoseOfMan) {
    const std::set<std::string> known{".TH", ".SH", ".SS", ".TP", ".PP", ".B"};
    for (const std::string& sLine : lines(runProgram({"help", "--man"}).sOut)) {
        EXPECT_FALSE(sLine.starts_with('\'')) << sLine;
        EXPECT_TRUE(!sLine.starts_with('.') || known.contains(sLine.substr(0, sLine.find(' ')))) << sLine;
    }
}

}   // namespace
}   // namespace oxa::test
