// SPDX-License-Identifier: Apache-2.0
// What verbs print with --json is held to docs/oxaifc.schema.json, on the samples and on files with faults.

#include <gtest/gtest.h>

#include <sstream>

#include "tools/JsonSchema.h"
#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

const JsonSchema& schema() {
    static const JsonSchema one(Json::parse(sContent(OXA_DOCS "/oxaifc.schema.json")));
    return one;
}

std::string sFaulty() {
    return sExchangeFile("IFC4", "#1=IFCWALL('0000000000000000000001',$,5,$,$,#9,$,$,.NONE.);\n#2=IFCTEAPOT();\n"
                                 "#3=IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(1.E308),#2);\n"
                                 "#4=IFCPROPERTYBOUNDEDVALUE('b',$,IFCREAL(2.),IFCREAL(1.),$,$);\n"
                                 "#5=IFCCARTESIANPOINTLIST3D(((1.,2.,3.),(4.,5.,1.E400)));\n");
}

// What a call prints, held to a definition of the schema.
Json answerOf(std::vector<std::string> words, const std::string& sDefinition) {
    SCOPED_TRACE(testing::PrintToString(words));
    words.emplace_back("--json");
    const ProgramRun run = runProgram(words);
    Json value = run.json();
    if (value.is_discarded())
        ADD_FAILURE() << run.sOut << run.sError;
    else
        EXPECT_EQ(schema().sFault(value, sDefinition), "");
    return value;
}

TEST(JsonForm, EveryVerbKeepsToTheSchema) {
    const TestFolder folder;
    const std::string sBad = folder.sFile("faulty.ifc", sFaulty());
    const std::string sSimple = folder.sFile("a.txt", "Ifc file simple;\nIFC4;\n7;\n#7=IFCCARTESIANPOINT((1.,2.));\n");
    for (const char* pSample : {"house-ifc4.ifc", "house-ifc2x3.ifc"}) {
        const std::string sHouse = sExample(pSample);
        const Json doors = runProgram({"list", sHouse, "IfcDoor", "-c", "id", "-f", "json"}).json();
        ASSERT_FALSE(doors.empty());
        const std::vector<std::string> calls[] = {
            {"info", sHouse},
            {"info", sHouse, sBad},
            {"info", sHouse, sBad, "--full"},
            {"info", sSimple},
            {"check", sHouse},
            {"check", sBad},
            {"check", sBad, sHouse, "--all"},
            {"show", sHouse, "IfcRoot", "--subtypes"},
            {"show", sHouse, "IfcSIUnit"},
            {"show", sHouse, "IfcProperty", "--subtypes"},
            {"show", sHouse, "IfcRepresentationItem", "--subtypes"},
            {"show", sBad, "#1"},
            {"show", sBad, "IfcProperty", "--subtypes"},
            {"props", sHouse, doors[0]["id"].dump()},
            {"props", sBad, "1"},
            {"tree", sHouse},
            {"tree", sHouse, "--counts"},
            {"tree", sBad, "--outside"},
            {"tree", sBad, "--outside", "--counts"},
            {"diff", sHouse, sExample("house-ifc4.ifc")},
            {"diff", sHouse, sBad},
            {"header", sHouse},
            {"schema", "IFC4"},
            {"schema", "IFC4", "IfcWall"},
            {"schema", "IFC4", "IfcLabel"},
            {"schema", "IFC4", "IfcWallTypeEnum"},
            {"schema", "IFC4", "IfcValue"},
            {"schema", "IFC4", "--all"},
        };
        for (const std::vector<std::string>& words : calls) answerOf(words, words.front());
        const ProgramRun list =
            runProgram({"list", sHouse, "-c", "id,Name,Qto_WallBaseQuantities.GrossVolume,storey.Name", "-f", "json"});
        EXPECT_EQ(schema().sFault(list.json(), "list"), "");
    }
}

TEST(JsonForm, RequirementsKeepToTheirs) {
    const TestFolder folder;
    const std::string sText =
        "<ids xmlns=\"http://standards.buildingsmart.org/IDS\"><info><title>T</title></info><specifications>"
        "<specification name=\"S\" ifcVersion=\"IFC4 IFC2X3\"><applicability minOccurs=\"0\" maxOccurs=\"unbounded\">"
        "<entity><name><simpleValue>IFCWALL</simpleValue></name></entity></applicability><requirements>"
        "<attribute><name><simpleValue>Description</simpleValue></name></attribute>"
        "</requirements></specification></specifications></ids>";
    const std::string sGood = folder.sFile("good.ids", sText);
    const std::string sFault =
        folder.sFile("fault.ids", std::string(sText).replace(sText.find("IFCWALL"), 7, "IFCWAL"));
    const std::string sBad = folder.sFile("faulty.ifc", sFaulty());
    const std::vector<std::string> calls[] = {
        {"ids", sGood},
        {"ids", sFault},
        {"ids", sGood, sExample("house-ifc4.ifc")},
        {"ids", sGood, sBad, sExample("house-ifc2x3.ifc"), "--all"},
    };
    for (const std::vector<std::string>& words : calls) {
        SCOPED_TRACE(testing::PrintToString(words));
        const Json value = answerOf(words, "ids");
        ASSERT_FALSE(value.is_discarded());
        EXPECT_EQ(value["records"].empty(), value["files"].empty());
    }
}

TEST(JsonForm, StrictChecksKeepToTheirs) {
    const TestFolder folder;
    const std::string sBad = folder.sFile("faulty.ifc", sFaulty());
    const std::vector<std::string> calls[] = {
        {"check", "--strict", sBad},
        {"check", "--strict", "--all", sBad, sExample("house-ifc4.ifc")},
        {"check", "--strict=syntax", sExample("house-ifc2x3.ifc")},
    };
    for (const std::vector<std::string>& words : calls) answerOf(words, "checkStrict");
}

// A verb with --json that the schema does not know.
TEST(JsonForm, TheSchemaHasEveryVerb) {
    const std::string sHelp = runProgram({"--help"}).sOut;
    std::istringstream lines(sHelp.substr(sHelp.find("\nVerbs:\n")));
    for (std::string sLine; std::getline(lines, sLine);) {
        if (!sLine.starts_with("  ") || sLine.size() < 3 || sLine[2] == ' ') continue;
        const std::string sVerb = sLine.substr(2, sLine.find(' ', 2) - 2);
        if (runProgram({sVerb, "--help"}).sOut.find("--json") == std::string::npos) continue;
        EXPECT_TRUE(schema().definitions().contains(sVerb)) << sVerb;
    }
}

TEST(JsonForm, RecordsSayWhatTheyAreAbout) {
    const Json records = runProgram({"check", "-", "--json"}, sFaulty()).json()["records"];
    const auto about = [&records](const char* pKey) {
        for (const Json& record : records)
            if (record["key"] == pKey)
                return Json{record["line"], record["entity"], record["type"], record["attribute"]}.dump();
        return records.dump();
    };
    EXPECT_EQ(about("Error_ExpectedValidStringValueFor"), R"([8,1,"IfcWall","Name"])");
    EXPECT_EQ(about("Error_UnknownEntityType"), R"([9,2,"IFCTEAPOT",null])");
    EXPECT_EQ(about("Error_MissingEntityWithId"), R"([0,9,null,null])");
}

// The test's own instrument: it finds what is wrong.
TEST(JsonForm, TheValidatorTellsFaults) {
    const struct {
        const char* pDefinition;
        const char* pValue;
        const char* pFault;
    } rows[] = {
        {"reference", R"({"ref":1})", ""},
        {"reference", R"({"ref":-1})", "/ref: is less than 0"},
        {"reference", R"({"ref":1.5})", "/ref: is no \"integer\""},
        {"reference", R"({})", ": has no ref"},
        {"reference", R"({"ref":1,"x":2})", "/x: is not among the members"},
        {"reference", "[]", ": is no \"object\""},
        {"attributes", R"({"a":{"type":"T","value":[1,{"ref":2},{"derived":true},null]}})", ""},
        {"attributes", R"({"a":{"derived":false}})", "/a: fits none of 5 forms; the last: /a: is no \"array\""},
        {"list", R"([{"a":1},{"b":[]}])", "/1/b: is no [\"null\",\"boolean\",\"number\",\"string\"]"},
        {"node", R"({"id":1,"type":"T","name":null,"elements":[],"children":[{"id":2}]})", "/children/0: has no type"},
    };
    for (const auto& row : rows) EXPECT_EQ(schema().sFault(Json::parse(row.pValue), row.pDefinition), row.pFault);
    const JsonSchema other(Json::parse(R"({"$defs":{"a":{"pattern":"x"}}})"));
    EXPECT_EQ(other.sFault(1, "a"), ": the schema has the keyword pattern, which is not known here");
}

}   // namespace
}   // namespace oxa::test
