// SPDX-License-Identifier: Apache-2.0
// "oxaifc check --strict --sarif": the log has the shape of SARIF 2.1.0 (OASIS), says of each failure where and why, and
// leaves nothing open that looks valid. Beside it the page of the same failures.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

std::string sFile(const std::string& sStatements, const std::string& sSchema = "IFC4") {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('ViewDefinition [ReferenceView]'),'2;1');\n"
           "FILE_NAME('','2024-08-30T12:34:53',(''),(''),'','A - B - 1','');\nFILE_SCHEMA(('" +
           sSchema + "'));\nENDSEC;\nDATA;\n" + sStatements + "\nENDSEC;\nEND-ISO-10303-21;\n";
}

// What a property of the log may be, by the published shape: the names that an object has, and how often.
class Shape {
public:
    explicit Shape(const Json& log) {
        vObject(log, "log", {"version", "runs"}, {"$schema"});
        vIs(log.value("version", "") == "2.1.0", "version");
        for (const Json& run : log["runs"]) vRun(run);
    }
    std::string sFaults;   // empty for a log of the shape

private:
    void vIs(bool boRight, const std::string& sWhat) {
        if (!boRight) sFaults += sWhat + '\n';
    }
    // An object with all of "needed", some of "allowed" and no others.
    void vObject(const Json& object, const std::string& sName, const std::set<std::string>& needed,
                 const std::set<std::string>& allowed = {}) {
        vIs(object.is_object(), sName + " is no object");
        for (const std::string& sKey : needed) vIs(object.contains(sKey), sName + " without " + sKey);
        for (const auto& [sKey, value] : object.items())
            vIs(needed.contains(sKey) || allowed.contains(sKey), sName + " with " + sKey);
    }
    void vMessage(const Json& message, const std::string& sName) {
        vObject(message, sName, {"text"});
        vIs(message["text"].is_string() && !message["text"].get<std::string>().empty(), sName + " says nothing");
    }
    void vLevel(const Json& level) {
        vIs(level == "none" || level == "note" || level == "warning" || level == "error", "level");
    }
    void vLocations(const Json& locations) {
        for (const Json& location : locations) {
            vObject(location, "location", {"physicalLocation"});
            const Json& physical = location["physicalLocation"];
            vObject(physical, "physicalLocation", {"artifactLocation"}, {"region"});
            vObject(physical["artifactLocation"], "artifactLocation", {"uri"});
            const std::string sUri = physical["artifactLocation"]["uri"];
            vIs(!sUri.empty() && sUri.find_first_of(" \"<>\\^`{|}") == std::string::npos, "no reference: " + sUri);
            if (!physical.contains("region")) continue;
            vObject(physical["region"], "region", {"startLine"});
            const Json& line = physical["region"]["startLine"];
            vIs(line.is_number_unsigned() && line.get<std::size_t>() >= 1, "startLine");
        }
    }
    void vRun(const Json& run) {
        vObject(run, "run", {"tool"}, {"results", "invocations", "properties"});
        vObject(run["tool"], "tool", {"driver"});
        vObject(run["tool"]["driver"], "driver", {"name"}, {"version", "rules"});
        std::set<std::string> ids;
        for (const Json& rule : run["tool"]["driver"]["rules"]) {
            vObject(rule, "rule", {"id"}, {"shortDescription"});
            vMessage(rule["shortDescription"], "shortDescription");
            vIs(ids.insert(rule["id"]).second, "a rule twice");
        }
        for (const Json& result : run["results"]) {
            vObject(result, "result", {"message"}, {"ruleId", "level", "locations", "properties"});
            const std::string sRule = result["ruleId"];
            vIs(ids.contains(sRule.substr(0, sRule.find('/'))), "no such rule: " + sRule);
            vLevel(result["level"]);
            vMessage(result["message"], "message");
            vLocations(result["locations"]);
        }
        for (const Json& invocation : run["invocations"]) {
            vObject(invocation, "invocation", {"executionSuccessful"}, {"toolExecutionNotifications"});
            vIs(invocation["executionSuccessful"].is_boolean(), "executionSuccessful");
            for (const Json& notification : invocation["toolExecutionNotifications"]) {
                vObject(notification, "notification", {"message"}, {"level", "locations"});
                vLevel(notification["level"]);
                vMessage(notification["message"], "message");
                vLocations(notification["locations"]);
            }
        }
    }
};

struct SarifRow {
    const char* sRule;
    const char* sOption;
    std::string sInput;
    int iCode;
    std::vector<std::string> results;         // "level ruleId line: text"
    std::vector<std::string> notifications;   // "level: text"
};
const SarifRow g_sarifRows[] = {
    {"a valid file", "--strict", sFile("#1=IFCPERSON('a',$,$,$,$,$,$,$);"), 0, {}, {}},
    {"of the whole file, without a line",
     "--strict=header",
     "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('ViewDefinition [A]'),'2;1');\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n"
     "ENDSEC;\nEND-ISO-10303-21;\n",
     1,
     {"error Header_Order 4: FILE_SCHEMA: the header entity stands out of order; expected FILE_DESCRIPTION, FILE_NAME, "
      "FILE_SCHEMA, then the others",
      "error Header_Missing 0: a header entity is missing; expected FILE_NAME"},
     {}},
    {"a note",
     "--strict=header",
     sFile("", "IFC4X1"),
     0,
     {"note Header_SchemaStatus 5: FILE_SCHEMA.schema_identifiers: a schema that is no standard, or was replaced; "
      "expected "
      "IFC2X3, IFC4 or IFC4X3_ADD2, found IFC4X1"},
     {}},
    {"a rule by its name",
     "--strict=rules",
     sFile("#1=IFCPERSON($,$,$,$,$,$,$,$);"),
     1,
     {"error Rules_Violated/IfcPerson.IdentifiablePerson 8: IfcPerson: the rule does not hold; expected "
      "EXISTS(Identification) OR EXISTS(FamilyName) OR EXISTS(GivenName), found EXISTS(Identification) = FALSE; "
      "EXISTS(FamilyName) = FALSE; EXISTS(GivenName) = FALSE"},
     {}},
    {"quotes and bytes that are no text",
     "--strict=schema",
     sFile("#1=IFCPERSON(\"0\",$,'\xff',$,$,$,$,1);"),
     1,
     {"error Schema_ValueType 8: IfcPerson.Identification: the value is of another type; expected IfcIdentifier of at "
      "most "
      "255 characters, found \"0\"",
      "error Schema_ValueType 8: IfcPerson.Addresses: the value is of another type; expected LIST [1:?] OF IfcAddress, "
      "found 1"},
     {}},
    {"a level that is open is no result",
     "--strict=schema,rules",
     sFile("", "IFC99"),
     1,
     {},
     {"error: schema: not decided: the schema IFC99 is not known",
      "error: rules: not decided: the schema IFC99 is not known"}},
};

Json sarifOf(const std::vector<std::string>& words, const std::string& sInput, int iCode) {
    const ProgramRun run = runProgram(words, sInput);
    EXPECT_EQ(run.iCode, iCode) << run.sError;
    const Json log = Json::parse(run.sOut, nullptr, false);
    EXPECT_FALSE(log.is_discarded()) << run.sOut;
    return log;
}

TEST(Sarif, HasItsShapeAndSaysWhereAndWhy) {
    for (const SarifRow& row : g_sarifRows) {
        SCOPED_TRACE(row.sRule);
        const Json log = sarifOf({"check", row.sOption, "--sarif", "-", "-"}, row.sInput, row.iCode);
        EXPECT_EQ(Shape(log).sFaults, "");
        const Json& run = log["runs"][0];
        std::vector<std::string> results;
        for (const Json& result : run["results"]) {
            const Json& place = result["locations"][0]["physicalLocation"];
            const std::size_t iLine = place.contains("region") ? place["region"]["startLine"].get<std::size_t>() : 0;
            results.push_back(result["level"].get<std::string>() + ' ' + result["ruleId"].get<std::string>() + ' ' +
                              std::to_string(iLine) + ": " + result["message"]["text"].get<std::string>());
        }
        EXPECT_EQ(results, row.results);
        std::vector<std::string> notifications;
        for (const Json& notification : run["invocations"][0]["toolExecutionNotifications"])
            notifications.push_back(notification["level"].get<std::string>() + ": " +
                                    notification["message"]["text"].get<std::string>());
        EXPECT_EQ(notifications, row.notifications);
        EXPECT_EQ(run["invocations"][0]["executionSuccessful"], row.notifications.empty());
    }
}

TEST(Sarif, HasTheVerdictOfEachFile) {
    const TestFolder folder;
    const std::string sGood = folder.sFile("good.ifc", sFile("#1=IFCPERSON('a',$,$,$,$,$,$,$);"));
    const std::string sBad = folder.sFile("a b.ifc", sFile("#1=IFCPERSON($,$,$,$,$,$,$,$);"));
    const std::string sNone = (folder.path() / "none.ifc").string();
    const std::string sOut = (folder.path() / "out.sarif").string();
    EXPECT_EQ(runProgram({"check", "--strict", "--sarif", sOut, sGood, sBad, sNone}).iCode, 2);
    std::ifstream in(sOut);
    const Json log = Json::parse(std::string(std::istreambuf_iterator<char>(in), {}), nullptr, false);
    EXPECT_EQ(Shape(log).sFaults, "");
    const Json& run = log["runs"][0];
    ASSERT_EQ(run["properties"]["files"].size(), 2U);
    EXPECT_EQ(run["properties"]["files"][0]["verdict"], "valid");
    EXPECT_EQ(run["properties"]["files"][1]["verdict"], "notValid");
    EXPECT_EQ(run["properties"]["files"][1]["rules"][0]["notEvaluated"], 0);
    ASSERT_EQ(run["results"].size(), 1U);
    EXPECT_TRUE(
        run["results"][0]["locations"][0]["physicalLocation"]["artifactLocation"]["uri"].get<std::string>().ends_with(
            "/a%20b.ifc"));
    // The third one could not be read.
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    ASSERT_EQ(run["invocations"][0]["toolExecutionNotifications"].size(), 1U);
}

// The rule, its text, which has all signs of marks in it, the values, the line, and what became of the rules.
TEST(StrictPage, HasTheRulesAndNoMarksOfTheirTexts) {
    const ProgramRun run =
        runProgram({"check", "--strict=rules", "--html", "-", "-"},
                   sFile("#1=IFCPERSON($,$,$,$,$,$,$,$);\n#2=IFCCARTESIANPOINTLIST2D(((0.,0.)));\n"
                         "#3=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((1,2)),IFCLINEINDEX((1,2))),.F.);"));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_TRUE(run.sOut.starts_with("<!DOCTYPE html>\n"));
    EXPECT_TRUE(run.sOut.ends_with("</html>\n"));
    for (const char* pPart :
         {"Not valid (looked at: rules)", "IfcPerson: the rule does not hold; expected EXISTS(Identification) OR",
          "[IfcPerson.IdentifiablePerson]", "line 8", "EXISTS(FamilyName) = FALSE", "[IfcIndexedPolyCurve.Consecutive]",
          "679 rules known, 679 evaluated, 0 indeterminate, 0 not evaluated"})
        EXPECT_NE(run.sOut.find(pPart), std::string::npos) << pPart;
    // Behind each "<" of the page's own part there is a mark.
    const std::string sBody = run.sOut.substr(run.sOut.find("<body"), run.sOut.find("<script", run.sOut.find("<body")) -
                                                                          run.sOut.find("<body"));
    for (std::size_t i = sBody.find('<'); i != std::string::npos; i = sBody.find('<', i + 1))
        ASSERT_TRUE(std::isalpha(static_cast<unsigned char>(sBody[i + 1])) || sBody[i + 1] == '/' ||
                    sBody[i + 1] == '!')
            << sBody.substr(i, 40);
}

}   // namespace
}   // namespace oxa::test
