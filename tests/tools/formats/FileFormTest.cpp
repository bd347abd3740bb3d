// SPDX-License-Identifier: Apache-2.0
// The form of a written file: by the end of its name or by --format, and never under a wrong name.

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

const std::string g_step = "ISO-10303-21;\n";
const std::string g_simple = "Ifc file simple;\n";
const std::string g_xml = "<?xml";

std::string sStepFile() {
    return sExchangeFile("IFC4", "#1=IFCPROJECT('25U8ymbNTHqR30wX1gEfmD',$,'x',$,$,$,$,$,$);\n");
}
std::string sSimpleFile() {
    return "Ifc file simple;\nIFC4;\n*;\n#1=IFCPROJECT('25U8ymbNTHqR30wX1gEfmD',$,'x',$,$,$,$,$,$);\n";
}

struct VerbWords {
    const char* pVerb;
    std::vector<std::string> between;   // the words between IN and OUT
};
const VerbWords g_convert{"convert", {}};
const VerbWords g_extract{"extract", {"1"}};
const VerbWords g_set{"set", {"1", "Name", "y"}};
const VerbWords g_header{"header", {"--set", "name=y"}};

struct FormRow {
    const char* pRule;
    const VerbWords& verb;
    bool boSimpleIn;
    const char* pOut;
    const char* pFormat;   // null: none
    const std::string& sBegin;
};
const FormRow g_forms[] = {
    {"STEP", g_convert, false, "a.ifc", nullptr, g_step},
    {"STEP by its own name", g_convert, false, "a.stp", nullptr, g_step},
    {"in full", g_convert, false, "a.step", nullptr, g_step},
    {"by its part", g_convert, false, "a.p21", nullptr, g_step},
    {"in any case", g_convert, false, "a.IFC", nullptr, g_step},
    {"the last point counts", g_convert, false, "a.csv.ifc", nullptr, g_step},
    {"no end", g_convert, false, "a", nullptr, g_step},
    {"ifcXML", g_convert, false, "a.ifcxml", nullptr, g_xml},
    {"overruled", g_convert, false, "a.csv", "step", g_step},
    {"overruled against the end", g_convert, false, "a.ifc", "ifcxml", g_xml},
    {"extracted, no end", g_extract, false, "a", nullptr, g_simple},
    {"extracted as text", g_extract, false, "a.txt", nullptr, g_simple},
    {"extracted as STEP", g_extract, false, "a.ifc", nullptr, g_step},
    {"extracted, overruled", g_extract, false, "a.ifc", "simple", g_simple},
    {"extracted, overruled against ifcXML", g_extract, false, "a.xml", "step", g_step},
    {"set keeps the form", g_set, false, "a", nullptr, g_step},
    {"set keeps the simple form", g_set, true, "a", nullptr, g_simple},
    {"set by the name", g_set, true, "a.ifc", nullptr, g_step},
    {"set to the simple form", g_set, false, "a.txt", nullptr, g_simple},
    {"set to ifcXML", g_set, false, "a.xml", nullptr, g_xml},
    {"set, overruled", g_set, true, "a.bak", "simple", g_simple},
    {"a header", g_header, false, "a.stp", nullptr, g_step},
    {"a header, no end", g_header, false, "a", nullptr, g_step},
    {"a header, overruled", g_header, false, "a.bak", "step", g_step},
};

std::vector<std::string> words(const VerbWords& verb, const std::string& sOut, const char* pFormat) {
    std::vector<std::string> all{verb.pVerb, "-"};
    all.insert(all.end(), verb.between.begin(), verb.between.end());
    all.push_back(sOut);
    if (pFormat) all.insert(all.end(), {"--format", pFormat});
    return all;
}

TEST(FileForm, NameOrFormatDecides) {
    for (const FormRow& row : g_forms) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        const std::string sOut = (folder.path() / row.pOut).string();
        const ProgramRun run =
            runProgram(words(row.verb, sOut, row.pFormat), row.boSimpleIn ? sSimpleFile() : sStepFile());
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_TRUE(sContent(sOut).starts_with(row.sBegin)) << sContent(sOut);
    }
}

struct RefuseRow {
    const char* pRule;
    const VerbWords& verb;
    const char* pOut;
    const char* pEnd;
    const char* pForms;
};
constexpr const char* g_pStepForms = ".ifc, .stp, .step, .p21, .ifczip (STEP)";
constexpr const char* g_pConvertForms = ".ifc, .stp, .step, .p21, .ifczip (STEP), .ifcxml, .xml (ifcXML)";
constexpr const char* g_pExtractForms = ".ifc, .stp, .step, .p21, .ifczip (STEP), .txt (the simple text form)";
constexpr const char* g_pSetForms =
    ".ifc, .stp, .step, .p21, .ifczip (STEP), .txt (the simple text form), .ifcxml, .xml (ifcXML)";
const RefuseRow g_refusals[] = {
    {"a table", g_convert, "a.csv", ".csv", g_pConvertForms},
    {"JSON", g_convert, "a.json", ".json", g_pConvertForms},
    {"another archive", g_convert, "a.zip", ".zip", g_pConvertForms},
    {"the last point counts", g_convert, "a.ifc.csv", ".csv", g_pConvertForms},
    {"packed", g_convert, "a.csv.gz", ".csv", g_pConvertForms},
    {"a form of another verb", g_convert, "a.txt", ".txt", g_pConvertForms},
    {"a point and nothing", g_convert, "a.", ".", g_pConvertForms},
    {"extracted", g_extract, "a.csv", ".csv", g_pExtractForms},
    {"set", g_set, "a.csv", ".csv", g_pSetForms},
    {"a header", g_header, "a.csv", ".csv", g_pStepForms},
    {"a header is no ifcXML", g_header, "a.ifcxml", ".ifcxml", g_pStepForms},
};

TEST(FileForm, OtherEndsAreRefusedAndNothingIsWritten) {
    for (const RefuseRow& row : g_refusals) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        const std::string sOut = (folder.path() / row.pOut).string();
        const ProgramRun run = runProgram(words(row.verb, sOut, nullptr), sStepFile());
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, "oxaifc: can't write " + sOut + ": " + row.pEnd +
                                  " is the end of no form that is written; there are: " + row.pForms +
                                  "; --format step writes that under any name\n");
        EXPECT_TRUE(filesIn(folder.path()).empty());
    }
}

// The point of a folder is none of the name.
TEST(FileForm, FoldersHaveNoSay) {
    const TestFolder folder;
    std::filesystem::create_directory(folder.path() / "a.csv");
    EXPECT_EQ(runProgram({"convert", "-", (folder.path() / "a.csv" / "a").string()}, sStepFile()).iCode, 0);
}

TEST(FileForm, WordsThatAVerbDoesNotKnowAreRefused) {
    EXPECT_EQ(runProgram({"convert", "-", "-", "--format", "simple"}, sStepFile()).iCode, 2);
    EXPECT_EQ(runProgram({"extract", "-", "1", "-", "--format", "ifcxml"}, sStepFile()).iCode, 2);
    EXPECT_EQ(runProgram({"header", "-", "--set", "name=y", "-", "--format", "ifcxml"}, sStepFile()).iCode, 2);
}

}   // namespace
}   // namespace oxa::test
