// SPDX-License-Identifier: Apache-2.0
// What every call of the program has in common: help, version, wrong calls, files that can't be read.

#include <algorithm>
#include <fstream>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

#include "SchemaList.h"
#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

struct VerbRow {
    const char* pVerb;
    const char* pUsage;   // the line of the help that tells how it is called
    bool boReadsModels;
    bool boJson;
    std::vector<std::string> behind;   // the arguments behind the file
};
// clang-format off
const VerbRow g_verbs[] = {
    {"info", "Usage: oxaifc info [OPTIONS] FILE...\n", true, true, {}},
    {"check", "Usage: oxaifc check [OPTIONS] FILE...\n", true, true, {}},
    {"ids", "Usage: oxaifc ids [OPTIONS] REQUIREMENTS [FILE...]\n", true, true, {}},
    {"show", "Usage: oxaifc show [OPTIONS] FILE WHAT\n", true, true, {"#1"}},
    {"list", "Usage: oxaifc list [OPTIONS] FILE... [QUERY]\n", true, false, {}},
    {"props", "Usage: oxaifc props [OPTIONS] FILE WHAT\n", true, true, {"#1"}},
    {"tree", "Usage: oxaifc tree [OPTIONS] FILE\n", true, true, {}},
    {"table", "Usage: oxaifc table [OPTIONS] FILE... [OUT]\n", true, false, {"tables-of-nothing"}},
    {"sql", "Usage: oxaifc sql [OPTIONS] FILE... [STATEMENT]\n", true, false, {"SELECT 1"}},
    {"diff", "Usage: oxaifc diff [OPTIONS] A B\n", true, true, {"b.ifc"}},
    {"convert", "Usage: oxaifc convert [OPTIONS] IN OUT\n", true, false, {"-"}},
    {"extract", "Usage: oxaifc extract [OPTIONS] IN WHAT OUT\n", true, false, {"#1", "-"}},
    {"merge", "Usage: oxaifc merge [OPTIONS] FILE... OUT\n", true, false, {"b.ifc", "-"}},
    {"set", "Usage: oxaifc set [OPTIONS] IN QUERY ASSIGNMENT... OUT\n", true, false, {"#1", "Name", "x", "-"}},
    {"header", "Usage: oxaifc header [OPTIONS] FILE [OUT]\n", false, true, {}},
    {"schema", "Usage: oxaifc schema [OPTIONS] [NAME] [ENTITY]\n", false, true, {}},
    {"completion", "Usage: oxaifc completion [OPTIONS] SHELL\n", false, false, {}},
};
// clang-format on

bool boWithoutFile(const VerbRow& verb) { return verb.pVerb == std::string_view("completion"); }

std::vector<std::string> verbsOfTable() {
    std::vector<std::string> verbs;
    for (const VerbRow& row : g_verbs) verbs.emplace_back(row.pVerb);
    return verbs;
}

// The verbs that the program declares: the first words of the lines below "Verbs:".
std::vector<std::string> verbsOfHelp(const std::string& sHelp) {
    std::vector<std::string> verbs;
    std::istringstream lines(sHelp.substr(std::min(sHelp.find("\nVerbs:\n"), sHelp.size())));
    for (std::string sLine; std::getline(lines, sLine);)
        if (sLine.starts_with("  ") && sLine.size() > 2 && sLine[2] != ' ')
            verbs.push_back(sLine.substr(2, sLine.find(' ', 2) - 2));
    return verbs;
}

// What is said of every verb here is said of each that there is.
TEST(Call, HelpNamesEveryVerb) {
    for (const char* pOption : {"--help", "-h"}) {
        const ProgramRun run = runProgram({pOption});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        EXPECT_NE(run.sOut.find("Usage: oxaifc [OPTIONS] VERB\n"), std::string::npos) << run.sOut;
        EXPECT_EQ(verbsOfHelp(run.sOut), verbsOfTable());
    }
}

TEST(Call, EveryVerbTellsItsOptions) {
    for (const VerbRow& row : g_verbs) {
        SCOPED_TRACE(row.pVerb);
        const ProgramRun run = runProgram({row.pVerb, "--help"});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        EXPECT_NE(run.sOut.find(row.pUsage), std::string::npos) << run.sOut;
        EXPECT_EQ(run.sOut.find("--json") != std::string::npos, row.boJson);
        EXPECT_EQ(run.sOut.find("--schema-file") != std::string::npos, row.boReadsModels);
        EXPECT_EQ(run.sOut.find("--single-threaded") != std::string::npos, row.boReadsModels);
        EXPECT_EQ(run.sOut.find("--unpack-all") != std::string::npos,
                  row.boReadsModels || row.pVerb == std::string_view("header"));
    }
}

TEST(Call, HelpIsAWordToo) {
    EXPECT_EQ(runProgram({"help"}).sOut, runProgram({"--help"}).sOut);
    for (const VerbRow& row : g_verbs) {
        SCOPED_TRACE(row.pVerb);
        const ProgramRun run = runProgram({"help", row.pVerb});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        EXPECT_EQ(run.sOut, runProgram({row.pVerb, "--help"}).sOut);
    }
    EXPECT_NE(runProgram({"help"}).sOut.find("oxaifc help VERB tells what a verb takes."), std::string::npos);
}

TEST(Call, LanguageIsThatOfTheErrors) {
    const std::string sFile = sExchangeFile("IFC4", "#1=IFCTEAPOT();\n");
    const std::string sEnglish = "The schema has no entity type of this name; the statement was skipped.";
    const std::string sGerman = "Das Schema kennt keinen Entit\xc3\xa4tstyp dieses Namens; die Anweisung wurde "
                                "\xc3\xbc"
                                "bergangen.";
    const auto message = [&sFile](std::vector<std::string> words) {
        words.insert(words.begin(), {"check", "-", "--json"});
        return runProgram(words, sFile).json()["records"][0]["message"];
    };
    EXPECT_EQ(message({}), sEnglish);
    EXPECT_EQ(message({"--lang", "en"}), sEnglish);
    EXPECT_EQ(message({"--lang", "de"}), sGerman);
    EXPECT_EQ(runProgram({"--lang", "de", "check", "-", "--json"}, sFile).json()["records"][0]["message"], sGerman);
    for (const VerbRow& row : g_verbs)
        EXPECT_NE(runProgram({row.pVerb, "--help"}).sOut.find("--lang"), std::string::npos) << row.pVerb;
}

TEST(Call, VersionIsToldEverywhere) {
    const ProgramRun run = runProgram({"--version"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_TRUE(run.sOut.starts_with("oxaifc ")) << run.sOut;
    EXPECT_EQ(run.sOut.find('\n'), run.sOut.size() - 1);
    for (const VerbRow& row : g_verbs) {
        SCOPED_TRACE(row.pVerb);
        const ProgramRun behind = runProgram({row.pVerb, "--version"});
        EXPECT_EQ(behind.iCode, 0);
        EXPECT_EQ(behind.sOut, run.sOut);
    }
}

struct FailRow {
    const char* pRule;
    std::vector<std::string> words;
    std::string sError;   // the one line, behind "oxaifc: "
};

// The names of the built-in schemas, in their order.
std::string sBuiltIn() {
    std::string sNames;
    for (const SchemaRow& row : schemaList()) sNames.append(sNames.empty() ? "" : ", ").append(row.sName);
    return sNames;
}

const FailRow g_wrongCalls[] = {
    {"no verb",
     {},
     "a verb is missing; there are: info, check, ids, show, list, props, tree, table, sql, diff, convert, extract, "
     "merge, "
     "set, header, "
     "schema, "
     "completion"},
    {"a verb that does not exist",
     {"frobnicate"},
     "there is no verb frobnicate; there are: info, check, ids, show, list, props, tree, table, sql, diff, convert, "
     "extract, merge, "
     "set, "
     "header, schema, completion"},
    {"a verb with a letter too few", {"chek"}, "there is no verb chek; did you mean check?"},
    {"line ends in a word stay on the line",
     {"a\nb"},
     "there is no verb a b; there are: info, check, ids, show, list, props, tree, table, sql, diff, convert, extract, "
     "merge, set, "
     "header, "
     "schema, completion"},
    {"info without a file", {"info"}, "info: FILE is required"},
    {"check without a file", {"check"}, "check: FILE is required"},
    {"ids without a file", {"ids"}, "ids: REQUIREMENTS is required"},
    {"requirements and a model of one standard input",
     {"ids", "-", "-"},
     "ids: REQUIREMENTS and FILE can't both be standard input"},
    {"a page about two", {"ids", "r.ids", "a.ifc", "b.ifc", "--html", "-"}, "ids: a report is about one FILE"},
    {"a page about none", {"ids", "r.ids", "--html", "-"}, "ids: a report is about one FILE"},
    {"a page and JSON in one",
     {"ids", "r.ids", "a.ifc", "--json", "--html", "-"},
     "ids: --json and a report can't both go to standard output; name a file: --html OUT"},
    {"two files where one is taken",
     {"show", "a.ifc", "12", "b.ifc"},
     "show: The following argument was not expected: b.ifc"},
    {"a number that the shell took for a comment",
     {"show", "a.ifc"},
     "show: WHAT is required; a shell takes # for a comment, so write 12 or '#12'"},
    {"the same with more behind it",
     {"extract", "a.ifc"},
     "extract: WHAT is required; a shell takes # for a comment, so write 12 or '#12'"},
    {"the same with a value",
     {"set", "a.ifc"},
     "set: QUERY is required; a shell takes # for a comment, so write 12 or '#12'"},
    {"help for a verb that does not exist", {"help", "chek"}, "there is no verb chek; did you mean check?"},
    {"help for two", {"help", "check", "info"}, "help: takes one VERB at most"},
    {"a language that there is not", {"check", "a.ifc", "--lang", "fr"}, "check: --lang: fr not in {en,de}"},
    {"a report of two files", {"check", "a.ifc", "b.ifc", "--html", "-"}, "check: a report is about one FILE"},
    {"an unknown option", {"check", "a.ifc", "--fast"}, "check: The following argument was not expected: --fast"},
    {"an option without its value",
     {"info", "a.ifc", "--schema-file"},
     "info: --schema-file: 1 required X.exp missing"},
    {"no schema", {"schema"}, "schema: a NAME or --file is missing; built in are: " + sBuiltIn()},
    {"a schema twice",
     {"schema", "IFC4", "IfcWall", "--file", "a.exp"},
     "schema: with --file there is no NAME, only an ENTITY or TYPE"},
    {"all and one", {"schema", "IFC4", "IfcWall", "--all"}, "schema: --all and an ENTITY or TYPE exclude each other"},
    {"a schema that does not exist", {"schema", "IFC5"}, "there is no built-in schema IFC5; did you mean IFC4?"},
    {"an entity that does not exist",
     {"schema", "IFC4", "IfcPers0n"},
     "IFC4 has no entity or type IfcPers0n; did you mean IfcPerson?"},
    {"a part of names, the nearest five",
     {"schema", "IFC4", "Wall"},
     "IFC4 has no entity or type Wall; did you mean IfcWall, IfcWallType, IfcCurtainWall, IfcWallTypeEnum, "
     "IfcCurtainWallType?"},
    {"three letters",
     {"schema", "IFC4", "Fan"},
     "IFC4 has no entity or type Fan; did you mean IfcFan, IfcFanType, IfcFanTypeEnum?"},
    {"two letters are part of too many", {"schema", "IFC4", "Fa"}, "IFC4 has no entity or type Fa"},
    {"an entity that nothing comes near", {"schema", "IFC4", "Qqqqqq"}, "IFC4 has no entity or type Qqqqqq"},
};

void vExpectFailure(const ProgramRun& run, const std::string& sError) {
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sOut, "");
    EXPECT_EQ(run.sError, "oxaifc: " + sError + "\n");
}

TEST(Call, WrongCallGivesOneLineAndTwo) {
    for (const FailRow& row : g_wrongCalls) {
        SCOPED_TRACE(row.pRule);
        vExpectFailure(runProgram(row.words), row.sError);
    }
}

struct FileRow {
    const char* pRule;
    const char* pName;    // in the test's folder
    const char* pError;   // the one line, behind the path
};
const FileRow g_unreadable[] = {
    {"missing", "missing.ifc", "there is no such file"},
    {"a folder", "", "is a folder, not a file"},
    {"without a byte", "empty.ifc", "is empty"},
    {"a ZIP archive", "house.ifczip",
     "is a ZIP archive that was cut or is damaged: the list of its files, at its end, is missing"},
    {"gzip", "house.ifc.gz", "is compressed with gzip and was cut: its end is missing"},
    {"a program", "house.elf", "is a program, not a text"},
};

TEST(Call, UnreadableFileGivesOneLineAndTwo) {
    const TestFolder folder;
    folder.sFile("empty.ifc", "");
    folder.sFile("house.ifczip", std::string_view("PK\x03\x04\x14\0\0\0", 8));
    folder.sFile("house.ifc.gz", std::string_view("\x1f\x8b\x08\0\0\0\0\0", 8));
    folder.sFile("house.elf", std::string_view("\x7f"
                                               "ELF\x02\x01\x01\0",
                                               8));
    for (const FileRow& row : g_unreadable)
        for (const VerbRow& verb : g_verbs) {
            if (boWithoutFile(verb)) continue;
            SCOPED_TRACE(std::string(row.pRule) + ", " + verb.pVerb);
            const std::string sPath = (folder.path() / row.pName).string();
            for (const char* pJson : {"--json", "--"}) {
                if (!verb.boJson && pJson == std::string_view("--json")) continue;
                std::vector<std::string> words{verb.pVerb, pJson, sPath};
                words.insert(words.end(), verb.behind.begin(), verb.behind.end());
                if (verb.pVerb == std::string_view("schema")) words = {verb.pVerb, "--json", "--file", sPath};
                vExpectFailure(runProgram(words), sPath + ": " + row.pError);
            }
        }
}

TEST(Call, FileWithoutPermissionIsUnreadable) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("secret.ifc", "ISO-10303-21;");
    std::filesystem::permissions(sPath, std::filesystem::perms::none);
    if (std::ifstream(sPath)) GTEST_SKIP() << "this user may read everything";
    vExpectFailure(runProgram({"info", sPath}), sPath + ": Permission denied");
}

TEST(Call, EmptyStandardInputIsUnreadable) {
    for (const VerbRow& verb : g_verbs) {
        if (boWithoutFile(verb)) continue;
        std::vector<std::string> words{verb.pVerb, "-"};
        words.insert(words.end(), verb.behind.begin(), verb.behind.end());
        if (verb.pVerb == std::string_view("schema")) words = {verb.pVerb, "--file", "-"};
        vExpectFailure(runProgram(words), "standard input: is empty");
    }
}

TEST(Call, FaultOfTheSystemIsToldInItsWords) {
    const std::string sFile = sUnreadableFile();
    if (sFile.empty()) GTEST_SKIP() << "no file that can't be read at its begin";
    for (const char* pVerb : {"info", "check", "header"})
        vExpectFailure(runProgram({pVerb, sFile}), sFile + ": Input/output error");
}

TEST(Call, OutputThatCannotBeWrittenIsOneLine) {
    if (!boCanBe(OutputKind::FullDisk)) GTEST_SKIP() << "no device that takes nothing";
    const std::string sHouse = sExample("house-ifc4.ifc");
    const std::pair<std::vector<std::string>, const char*> calls[] = {
        {{"info", sHouse}, "oxaifc: can't write the output: No space left on device\n"},
        {{"schema", "IFC4", "--all"}, "oxaifc: can't write the output: No space left on device\n"},
        {{"convert", sHouse, "-"}, "oxaifc: can't write standard output: No space left on device\n"},
    };
    for (const auto& [words, pError] : calls) {
        SCOPED_TRACE(words.front());
        const ProgramRun run = runProgram(words, {}, OutputKind::FullDisk);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, pError);
    }
}

TEST(Call, ReaderWhoGoesAwayIsNoFailure) {
    const std::vector<std::string> calls[] = {
        {"schema", "IFC4", "--all", "--json"},
        {"info", sExample("house-ifc4.ifc"), "--json"},
        {"--help"},
    };
    for (const auto& words : calls) {
        SCOPED_TRACE(words.front());
        const ProgramRun run = runProgram(words, {}, OutputKind::ClosedPipe);
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
    }
}

}   // namespace
}   // namespace oxa::test
