// SPDX-License-Identifier: Apache-2.0
// "oxaifc check --strict": what it says of valid and of faulty files, in each form.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

std::string sStrictFile(const std::string& sStatements, const std::string& sSchema = "IFC4") {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('ViewDefinition [ReferenceView]'),'2;1');\n"
           "FILE_NAME('','2024-08-30T12:34:53',(''),(''),'','A - B - 1','');\nFILE_SCHEMA(('" +
           sSchema + "'));\nENDSEC;\nDATA;\n" + sStatements + "\nENDSEC;\nEND-ISO-10303-21;\n";
}
const std::string g_sValid = sStrictFile("#1=IFCPERSON('a',$,$,$,$,$,$,$);");
const std::string g_sFaulty =
    sStrictFile("#1=IFCPERSON('a',$,$,$,$,$,$);\n#2=IFCWALL('2CbOYFeCHBku9$oytmyQ2e',$,$,$,$,#9,$,$,$);\n"
                "#3=IFCWALL('2CbOYFeCHBku9$oytmyQ2e',$,$,$,$,#9,$,$,1);");

struct StrictRow {
    const char* sRule;
    const char* sOption;
    std::string sInput;
    int iCode;
    const char* sOut;
};
const StrictRow g_strictRows[] = {
    {"a valid file, by the levels that were asked for", "--strict=syntax,header,schema", g_sValid, 0,
     "standard input: syntax: valid\nstandard input: header: valid\nstandard input: schema: valid\n"
     "standard input: valid (looked at: syntax, header, schema)\n"},
    {"one level", "--strict=syntax", g_sFaulty, 0,
     "standard input: syntax: valid\nstandard input: valid (looked at: syntax)\n"},
    {"what fails, in groups", "--strict=schema", g_sFaulty, 1,
     "schema error 2 times: IfcWall.ObjectPlacement: the reference leads to no instance; expected IfcObjectPlacement "
     "[IfcProduct.ObjectPlacement]\n"
     "    line 9, column 45, #2: #9\n"
     "    line 10, column 45, #3: #9\n"
     "schema error: IfcPerson: the statement has another number of parameters; expected 8\n"
     "    line 8, column 29, #1: 7\n"
     "schema error: IfcWall.GlobalId: another instance has the same values; expected values of its own [IfcRoot.UR1]\n"
     "    line 10, column 1, #3: as #2\n"
     "schema error: IfcWall.PredefinedType: the value is of another type; expected IfcWallTypeEnum "
     "[IfcWall.PredefinedType]\n"
     "    line 10, column 52, #3: 1\n"
     "standard input: schema: 5 failures\nstandard input: not valid (looked at: schema)\n"},
    {"a schema that is not known leaves it open", "--strict=schema", sStrictFile("", "IFC99"), 1,
     "standard input: schema: not decided: the schema IFC99 is not known\n"
     "standard input: could not be decided (looked at: schema)\n"},
    {"a note is told, and the file valid", "--strict=header", sStrictFile("", "IFC4X1"), 0,
     "header note: FILE_SCHEMA.schema_identifiers: a schema that is no standard, or was replaced; expected IFC2X3, "
     "IFC4 "
     "or IFC4X3_ADD2 [IFC header rules]\n"
     "    line 5, column 14: IFC4X1\n"
     "standard input: header: valid, 1 note\nstandard input: valid (looked at: header)\n"},
};

TEST(StrictVerb, SaysWhatFailsAndTheVerdict) {
    for (const StrictRow& row : g_strictRows) {
        SCOPED_TRACE(row.sRule);
        const ProgramRun run = runProgram({"check", row.sOption, "-"}, row.sInput);
        EXPECT_EQ(run.sOut, row.sOut);
        EXPECT_EQ(run.iCode, row.iCode);
        EXPECT_EQ(run.sError, "");
    }
}

TEST(StrictVerb, CallsNothingValidWhileALevelIsOpen) {
    const ProgramRun run = runProgram({"check", "--strict", "-"}, g_sValid);
    const bool boValid = run.sOut.ends_with("standard input: valid\n");
    EXPECT_EQ(run.iCode, boValid ? 0 : 1);
    EXPECT_EQ(boValid, run.sOut.find("not decided") == std::string::npos &&
                           run.sOut.find(" 0 not evaluated") != std::string::npos)
        << run.sOut;
}

TEST(StrictVerb, TellsTenPlacesOfAGroupAndAllWhenAsked) {
    std::string sStatements;
    for (int i = 1; i <= 25; ++i) sStatements += '#' + std::to_string(i) + "=IFCPERSON(1,$,$,$,$,$,$,$);\n";
    const std::string sSome = runProgram({"check", "--strict=schema", "-"}, sStrictFile(sStatements)).sOut;
    EXPECT_NE(sSome.find("schema error 25 times: IfcPerson.Identification"), std::string::npos) << sSome;
    EXPECT_NE(sSome.find("    line 17, column 15, #10: 1\n    and 15 more (--all)\n"), std::string::npos) << sSome;
    const std::string sAll = runProgram({"check", "--strict=schema", "--all", "-"}, sStrictFile(sStatements)).sOut;
    EXPECT_NE(sAll.find("    line 32, column 15, #25: 1\n"), std::string::npos) << sAll;
}

TEST(StrictVerb, GivesRecordsAsJson) {
    const ProgramRun run = runProgram({"check", "--strict=schema", "--json", "-"}, g_sFaulty);
    EXPECT_EQ(run.iCode, 1);
    const Json json = run.json();
    ASSERT_EQ(json["records"].size(), 5U) << run.sOut;
    const Json expected = {{"key", "Schema_ParameterCount"},
                           {"severity", "error"},
                           {"category", "schema"},
                           {"level", "schema"},
                           {"rule", "IfcPerson"},
                           {"message", "the statement has another number of parameters"},
                           {"expected", "8"},
                           {"line", 8},
                           {"column", 29},
                           {"entity", 1},
                           {"type", "IfcPerson"},
                           {"attribute", nullptr},
                           {"text", "7"}};
    EXPECT_EQ(json["records"][0], expected);
    EXPECT_EQ(json["groups"].size(), 4U);
    EXPECT_EQ(json["files"][0]["verdict"], "notValid");
    EXPECT_EQ(json["files"][0]["levels"]["schema"]["errors"], 5);
}

TEST(StrictVerb, GivesSarif) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("a b.ifc", g_sFaulty);
    const std::string sOut = (folder.path() / "out.sarif").string();
    const ProgramRun run = runProgram({"check", "--strict=schema", "--sarif", sOut, sPath});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_NE(run.sOut.find("schema error"), std::string::npos) << "beside the text";
    std::ifstream in(sOut);
    const Json json = Json::parse(std::string(std::istreambuf_iterator<char>(in), {}), nullptr, false);
    EXPECT_EQ(json["version"], "2.1.0");
    const Json& results = json["runs"][0]["results"];
    ASSERT_EQ(results.size(), 5U);
    EXPECT_EQ(results[0]["ruleId"], "Schema_ParameterCount");
    EXPECT_EQ(results[0]["level"], "error");
    EXPECT_EQ(results[0]["message"]["text"],
              "IfcPerson: the statement has another number of parameters; expected 8, found 7");
    const Json& location = results[0]["locations"][0]["physicalLocation"];
    EXPECT_EQ(location["region"]["startLine"], 8);
    EXPECT_TRUE(location["artifactLocation"]["uri"].get<std::string>().ends_with("a%20b.ifc"));
    EXPECT_EQ(json["runs"][0]["tool"]["driver"]["name"], "oxaifc");
    EXPECT_EQ(json["runs"][0]["tool"]["driver"]["rules"].size(), 4U) << "each key once";
}

TEST(StrictVerb, GivesAPage) {
    const ProgramRun run = runProgram({"check", "--strict=schema", "--html", "-", "-"}, g_sFaulty);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_NE(run.sOut.find("Not valid (looked at: schema)"), std::string::npos);
    EXPECT_NE(run.sOut.find("IfcWall.GlobalId: another instance has the same values"), std::string::npos);
}

TEST(StrictVerb, TellsEachOfSeveralFiles) {
    const TestFolder folder;
    const std::string sGood = folder.sFile("good.ifc", g_sValid);
    const std::string sBad = folder.sFile("bad.ifc", g_sFaulty);
    const ProgramRun run = runProgram({"check", "--strict=schema", sGood, sBad});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_NE(run.sOut.find(sGood + ": valid (looked at: schema)\n"), std::string::npos) << run.sOut;
    EXPECT_NE(run.sOut.find(sBad + ": not valid (looked at: schema)\n"), std::string::npos) << run.sOut;
    const Json json = runProgram({"check", "--strict=schema", "--json", sGood, sBad}).json();
    EXPECT_EQ(json["files"].size(), 2U);
    EXPECT_EQ(json["records"][0]["file"], sBad);
}

struct StrictWrongRow {
    std::vector<std::string> words;
    const char* sError;
};
const StrictWrongRow g_strictWrong[] = {
    {{"check", "--strict=all", "-"},
     "check: --strict: there is no level all; there are: syntax, header, schema, rules"},
    {{"check", "--strict=syntax,", "-"},
     "check: --strict: there is no level without a name; there are: syntax, header, schema, rules"},
    {{"check", "--sarif", "x", "-"}, "check: --sarif goes with --strict"},
    {{"check", "--strict", "--json", "--sarif", "-", "-"},
     "check: of --json, a report and --sarif only one can go to standard output; name a file"},
};

TEST(StrictVerb, TellsWrongCalls) {
    for (const StrictWrongRow& row : g_strictWrong) {
        const ProgramRun run = runProgram(row.words, g_sValid);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sError, std::string("oxaifc: ") + row.sError + "\n");
    }
}

TEST(StrictVerb, IsForStepFiles) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("a.ifcxml", "<?xml version=\"1.0\"?><ifcXML/>");
    const ProgramRun run = runProgram({"check", "--strict", sPath});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: " + sPath + ": is an ifcXML document; --strict is for STEP files\n");
}

}   // namespace
}   // namespace oxa::test
