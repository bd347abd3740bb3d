// SPDX-License-Identifier: Apache-2.0
// "oxaifc ids": what it says of models and of files of requirements, in each form.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

// Two walls with a set of properties, one without; a door; what has ifcXML take them all.
const std::string g_sHouse =
    sExchangeFile("IFC4", "#1=IFCWALL('2O2Fr$t4X7Zf8NOew3FLOH',$,'South',$,$,$,$,$,$);\n"
                          "#2=IFCWALL('2O2Fr$t4X7Zf8NOew3FLOI',$,'N\\X2\\00F6\\X0\\rd',$,$,$,$,$,$);\n"
                          "#3=IFCWALL('2O2Fr$t4X7Zf8NOew3FLOJ',$,$,$,$,$,$,$,$);\n"
                          "#4=IFCDOOR('2O2Fr$t4X7Zf8NOew3FLOK',$,'D1',$,$,$,$,$,2.1,0.9,$,$,$);\n"
                          "#5=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 90'),$);\n"
                          "#6=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FLOL',$,'Pset_WallCommon',$,(#5));\n"
                          "#7=IFCRELDEFINESBYPROPERTIES('2O2Fr$t4X7Zf8NOew3FLOM',$,$,$,(#1),#6);\n"
                          "#8=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);\n"
                          "#9=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FLON',$,'Pset_WallCommon',$,(#8));\n"
                          "#10=IFCRELDEFINESBYPROPERTIES('2O2Fr$t4X7Zf8NOew3FLOO',$,$,$,(#2),#9);\n"
                          "#11=IFCPROJECT('2O2Fr$t4X7Zf8NOew3FLOP',$,'P',$,$,$,$,$,$);\n"
                          "#12=IFCRELAGGREGATES('2O2Fr$t4X7Zf8NOew3FLOQ',$,$,$,#11,(#1,#2,#3,#4));\n");

std::string sValue(const char* pName, const std::string& sText) {
    return '<' + std::string(pName) + "><simpleValue>" + sText + "</simpleValue></" + pName + '>';
}

struct Wanted {
    std::string sName;
    std::string sClass;
    std::string sRequirement;   // empty for none
    std::string sSchemas = "IFC4";
    std::string sOccurs = "minOccurs=\"0\" maxOccurs=\"unbounded\"";
    std::string sInstructions{};
};

// Five lines of head, then six of each specification: the class stands in its third one, the requirement in its fifth.
std::string sRequirements(const std::vector<Wanted>& all) {
    std::string sText = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<ids xmlns=\"http://standards.buildingsmart.org/IDS\" "
                        "xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\n"
                        "<info><title>Client</title><version>1.2</version><author>a@b.org</author></info>\n"
                        "<specifications>\n\n";
    for (const Wanted& one : all) {
        sText += "<specification name=\"" + one.sName + "\" ifcVersion=\"" + one.sSchemas + '"';
        if (!one.sInstructions.empty()) sText += " instructions=\"" + one.sInstructions + '"';
        sText += ">\n<applicability " + one.sOccurs + ">\n<entity>" + sValue("name", one.sClass) +
                 "</entity>\n</applicability>\n";
        sText += one.sRequirement.empty() ? "\n" : "<requirements>" + one.sRequirement + "</requirements>\n";
        sText += "</specification>\n";
    }
    return sText + "</specifications>\n</ids>\n";
}

const std::string g_sNone = "minOccurs=\"0\" maxOccurs=\"0\"";
const std::string g_sNamed = "<attribute>" + sValue("name", "Name") + "</attribute>";
const std::string g_sFire = "<property dataType=\"IFCLABEL\" instructions=\"See the fire plan.\">" +
                            sValue("propertySet", "Pset_WallCommon") + sValue("baseName", "FireRating") +
                            sValue("value", "F 90") + "</property>";
const Wanted g_fire{"Fire", "IFCWALL", g_sFire};
const Wanted g_doors{"Doors", "IFCDOOR", g_sNamed};
const Wanted g_old{"Old doors", "IFCDOOR", g_sNamed, "IFC2X3"};
const Wanted g_teapots{"Teapots", "IFCTEAPOT", g_sNamed};

struct IdsRow {
    const char* sRule;
    std::vector<Wanted> wanted;
    std::vector<std::string> words;   // behind the file of requirements
    int iCode;
    std::string sOut;     // R is the name of that file
    std::string sError;   // likewise
};
// clang-format off
const IdsRow g_rows[] = {
    {"all is met", {g_doors}, {"-"}, 0,
     "passed: Doors: 1 applicable, 1 passed\n"
     "standard input: meets the requirements: 1 specification passed\n", ""},
    {"what is not met, by requirement and instance",
     {{"Fire", "IFCWALL", g_sNamed + g_sFire, "IFC4", g_fire.sOccurs, "For the fire brigade."}, g_doors}, {"-"}, 1,
     "failed: Fire: 3 applicable, 1 passed\n"
     "    (For the fire brigade.)\n"
     "    Attribute Name shall have a value: 1 failed\n"
     "        IfcWall #3 2O2Fr$t4X7Zf8NOew3FLOJ: Name has no value\n"
     "    Property Pset_WallCommon.FireRating of type IfcLabel shall be F 90: 2 failed\n"
     "        (See the fire plan.)\n"
     "        IfcWall #2 2O2Fr$t4X7Zf8NOew3FLOI 'N\xc3\xb6rd': Pset_WallCommon.FireRating is 'F 30'\n"
     "        IfcWall #3 2O2Fr$t4X7Zf8NOew3FLOJ: there is no property set Pset_WallCommon\n"
     "passed: Doors: 1 applicable, 1 passed\n"
     "standard input: does not meet the requirements: 1 specification passed, 1 failed\n", ""},
    {"there has to be one", {{"Slabs", "IFCSLAB", g_sNamed, "IFC4", "minOccurs=\"1\" maxOccurs=\"unbounded\""}}, {"-"}, 1,
     "failed: Slabs: 0 applicable, 0 passed; no instance is applicable, and one at least is required\n"
     "standard input: does not meet the requirements: 1 specification failed\n", ""},
    {"there must be none", {{"No walls", "IFCWALL", "", "IFC4", "minOccurs=\"0\" maxOccurs=\"0\""}}, {"-"}, 1,
     "failed: No walls: 3 applicable, 0 passed\n"
     "    not allowed: IfcWall: 3 found\n"
     "        IfcWall #1 2O2Fr$t4X7Zf8NOew3FLOH 'South'\n"
     "        IfcWall #2 2O2Fr$t4X7Zf8NOew3FLOI 'N\xc3\xb6rd'\n"
     "        IfcWall #3 2O2Fr$t4X7Zf8NOew3FLOJ\n"
     "standard input: does not meet the requirements: 1 specification failed\n", ""},
    {"one for another schema", {g_doors, g_old}, {"-"}, 0,
     "passed: Doors: 1 applicable, 1 passed\n"
     "not for this schema: Old doors: it is for IFC2X3\n"
     "standard input: meets the requirements: 1 specification passed, 1 not for this schema (IFC4)\n", ""},
    {"all for another schema", {g_old}, {"-"}, 0,
     "passed: Old doors: 1 applicable, 1 passed; it is for IFC2X3\n"
     "standard input: meets the requirements: 1 specification passed\n", ""},
    {"which are left out", {g_old}, {"--other-schemas", "skip", "-"}, 1,
     "not for this schema: Old doors: it is for IFC2X3\n"
     "standard input: could not be decided: 1 specification not for this schema (IFC4)\n", ""},
    {"or not, in any case", {g_doors, g_old}, {"--other-schemas", "check", "-"}, 0,
     "passed: Doors: 1 applicable, 1 passed\n"
     "passed: Old doors: 1 applicable, 1 passed; it is for IFC2X3\n"
     "standard input: meets the requirements: 2 specifications passed\n", ""},
    {"a fault in one", {g_doors, g_teapots}, {"-"}, 2,
     "passed: Doors: 1 applicable, 1 passed\n"
     "not checked: Teapots: the requirements have a fault there, line 12\n"
     "standard input: could not be decided: 1 specification passed, 1 not checked\n",
     "oxaifc: R: line 14, column 9: IFCTEAPOT is no class of IFC4\n"
     "oxaifc: R: not valid: 1 fault\n"},
    {"a fault in all", {g_teapots}, {"-"}, 2, "",
     "oxaifc: R: line 8, column 9: IFCTEAPOT is no class of IFC4\n"
     "oxaifc: R: not valid: 1 fault\n"},
    {"the requirements alone", {g_doors, g_old}, {}, 0, "R: valid: 2 specifications\n", ""},
    {"their faults", {g_doors, g_teapots}, {}, 2,
     "error line 14, column 9: IFCTEAPOT is no class of IFC4\n"
     "R: not valid: 1 fault\n", ""},
};
// clang-format on

std::string sIdsReplaced(std::string sText, const std::string& sOld, const std::string& sNew) {
    for (std::size_t i = sText.find(sOld); i != std::string::npos; i = sText.find(sOld, i + sNew.size()))
        sText.replace(i, sOld.size(), sNew);
    return sText;
}

TEST(IdsVerb, SaysWhatIsMet) {
    const TestFolder folder;
    for (const IdsRow& row : g_rows) {
        SCOPED_TRACE(row.sRule);
        const std::string sPath = folder.sFile("R", sRequirements(row.wanted));
        std::vector<std::string> words{"ids", sPath};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runProgram(words, g_sHouse);
        EXPECT_EQ(sIdsReplaced(run.sOut, sPath, "R"), row.sOut);
        EXPECT_EQ(sIdsReplaced(run.sError, sPath, "R"), row.sError);
        EXPECT_EQ(run.iCode, row.iCode);
    }
}

TEST(IdsVerb, TellsTenInstancesOfARequirementAndAllWhenAsked) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({{"Slabs", "IFCSLAB", g_sNamed}}));
    std::string sData;
    for (int i = 11; i <= 130; ++i) {
        const std::string sNumber = std::to_string(i);
        sData += '#' + sNumber + "=IFCSLAB('2O2Fr$t4X7Zf8NOew3F" + std::string(3 - sNumber.size(), '0') + sNumber +
                 "',$,$,$,$,$,$,$,$);\n";
    }
    const std::string sModel = sExchangeFile("IFC4", sData);
    const std::string sSome = runProgram({"ids", sPath, "-"}, sModel).sOut;
    EXPECT_EQ(std::count(sSome.begin(), sSome.end(), '\n'), 14) << sSome;
    EXPECT_NE(sSome.find("        IfcSlab #20 2O2Fr$t4X7Zf8NOew3F020: "), std::string::npos) << sSome;
    EXPECT_NE(sSome.find("        and 110 more (--all)\n"), std::string::npos) << sSome;
    const std::string sAll = runProgram({"ids", sPath, "-", "--all"}, sModel).sOut;
    EXPECT_EQ(std::count(sAll.begin(), sAll.end(), '\n'), 123);
    EXPECT_EQ(runProgram({"ids", sPath, "-", "--json"}, sModel).json()["records"].size(), 100U);
    EXPECT_EQ(runProgram({"ids", sPath, "-", "--json", "--all"}, sModel).json()["records"].size(), 120U);
}

TEST(IdsVerb, TellsAHundredFaultsBesideAnAnswerAndAllWhenAsked) {
    const TestFolder folder;
    std::vector<Wanted> wanted(102, g_teapots);
    wanted.front() = g_doors;
    const std::string sPath = folder.sFile("R", sRequirements(wanted));
    const auto iLines = [](const std::string& sText) { return std::count(sText.begin(), sText.end(), '\n'); };
    const ProgramRun some = runProgram({"ids", sPath, "-"}, g_sHouse);
    EXPECT_EQ(some.iCode, 2);
    EXPECT_EQ(iLines(some.sError), 102);
    EXPECT_TRUE(some.sError.ends_with("oxaifc: " + sPath + ": and 1 more (--all)\noxaifc: " + sPath +
                                      ": not valid: 101 faults\n"))
        << some.sError;
    EXPECT_EQ(iLines(runProgram({"ids", sPath, "-", "--all"}, g_sHouse).sError), 102);
    EXPECT_EQ(iLines(runProgram({"ids", sPath}).sOut), 102);
}

TEST(IdsVerb, LongTextsAreCutInLines) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({{"Doors", "IFCDOOR", "", "IFC4", g_sNone}}));
    const std::string sName(1000, 'x');
    const std::string sHouse = sIdsReplaced(g_sHouse, "'D1'", '\'' + sName + '\'');
    EXPECT_NE(runProgram({"ids", sPath, "-"}, sHouse).sOut.find(sName.substr(700) + "... (1,000 bytes)'\n"),
              std::string::npos);
    EXPECT_EQ(runProgram({"ids", "--json", sPath, "-"}, sHouse).json()["records"][0]["name"], sName);
}

TEST(IdsVerb, GivesRecordsAsJson) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({g_doors, g_fire}));
    const ProgramRun run = runProgram({"ids", "--json", sPath, "-"}, g_sHouse);
    EXPECT_EQ(run.iCode, 1);
    const Json json = run.json();
    ASSERT_EQ(json["records"].size(), 2U) << run.sOut;
    const Json expected = {{"key", "Ids_Value"},
                           {"severity", "error"},
                           {"category", "requirement"},
                           {"message", "Pset_WallCommon.FireRating is 'F 30'"},
                           {"line", 0},
                           {"entity", 2},
                           {"type", "IfcWall"},
                           {"attribute", "FireRating"},
                           {"text", "F 30"},
                           {"globalId", "2O2Fr$t4X7Zf8NOew3FLOI"},
                           {"name", "N\xc3\xb6rd"},
                           {"specification", 1},
                           {"requirement", 0}};
    EXPECT_EQ(json["records"][0], expected);
    EXPECT_EQ(json["records"][1]["key"], "Ids_Missing");
    EXPECT_EQ(json["records"][1]["name"], nullptr);
    EXPECT_EQ(json["requirements"]["title"], "Client");
    EXPECT_EQ(json["requirements"]["specifications"][1]["requirements"][0]["instructions"], "See the fire plan.");
    const Json file = {{"file", "-"},
                       {"schema", "IFC4"},
                       {"verdict", "failed"},
                       {"errors", 0},
                       {"specifications",
                        {{{"name", "Doors"},
                          {"status", "passed"},
                          {"reason", "the one applicable instance passes"},
                          {"otherSchema", false},
                          {"applicable", 1},
                          {"passed", 1},
                          {"failed", 0},
                          {"requirements", {{{"passed", 1}, {"failed", 0}}}}},
                         {{"name", "Fire"},
                          {"status", "failed"},
                          {"reason", "2 of 3 instances fail"},
                          {"otherSchema", false},
                          {"applicable", 3},
                          {"passed", 1},
                          {"failed", 2},
                          {"requirements", {{{"passed", 1}, {"failed", 2}}}}}}}};
    EXPECT_EQ(json["files"], Json::array({file}));
}

TEST(IdsVerb, TellsFaultsAsJson) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({g_doors, g_teapots}));
    const ProgramRun run = runProgram({"ids", "--json", sPath});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "");
    const Json expected = {{"key", "Ids_UnknownClass"},
                           {"severity", "error"},
                           {"category", "requirement"},
                           {"message", "IFCTEAPOT is no class of IFC4"},
                           {"line", 14},
                           {"column", 9},
                           {"text", "IFCTEAPOT"},
                           {"path", "/ids/specifications/specification[2]/applicability/entity/name"},
                           {"specification", 1}};
    const Json requirements = run.json()["requirements"];
    EXPECT_EQ(requirements["faults"], Json::array({expected}));
    EXPECT_EQ(requirements["valid"], false);
    EXPECT_EQ(requirements["specifications"].size(), 2U);
    EXPECT_EQ(run.json()["files"], Json::array());
}

TEST(IdsVerb, GivesAPage) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({g_doors, g_fire}));
    const ProgramRun run = runProgram({"ids", sPath, "-", "--html", "-"}, g_sHouse);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sError, "");
    for (const char* pPart :
         {"<p class=\"verdict error\" id=\"verdict\">Does not meet the requirements: 1 specification "
          "passed, 1 failed</p>",
          "<dt>Title</dt><dd>Client</dd>", "<h2>Specifications</h2>",
          "<dt>Doors</dt><dd>passed: 1 applicable, 1 passed</dd>",
          "<dt>Fire</dt><dd>failed: 3 applicable, 1 passed</dd>",
          "<b>Fire: Property Pset_WallCommon.FireRating of type IfcLabel shall be F 90 "
          "(See the fire plan.)</b> <span class=\"count\">2 times</span>",
          "<li data-severity=\"error\" class=\"alone\"><code>IfcWall #2 2O2Fr$t4X7Zf8NOew3FLOI "
          "&#39;N\xc3\xb6rd&#39;: "})
        EXPECT_NE(run.sOut.find(pPart), std::string::npos) << pPart << run.sOut.substr(run.sOut.find("<body>"));
    EXPECT_EQ(run.sOut.find("no line"), std::string::npos);
    const std::string sPage = (folder.path() / "page.html").string();
    EXPECT_EQ(runProgram({"ids", sPath, "-", "--html", sPage}, g_sHouse).sOut,
              "standard input: does not meet the requirements: 1 specification passed, 1 failed\n");
    EXPECT_TRUE(std::filesystem::exists(sPage));
    EXPECT_EQ(runProgram({"ids", sPath, "-", "--html", sPath}, g_sHouse).sError,
              "oxaifc: " + sPath + ": is the file of requirements; name another\n");
}

TEST(IdsVerb, ReadsWhateverModelsAreIn) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({g_fire}));
    const std::string sHouse = folder.sFile("a.ifc", g_sHouse);
    const std::string sExpected = runProgram({"ids", sPath, sHouse}).sOut;
    for (const char* pName : {"a.ifcxml", "a.ifczip", "a.ifc.gz"}) {
        const std::string sOther = (folder.path() / pName).string();
        ASSERT_EQ(runProgram({"convert", sHouse, sOther}).iCode, 0);
        const ProgramRun run = runProgram({"ids", sPath, sOther});
        EXPECT_EQ(run.iCode, 1);
        EXPECT_EQ(run.sError, "");
        EXPECT_EQ(sIdsReplaced(run.sOut, sOther, sHouse), sExpected) << pName;
    }
    EXPECT_EQ(runProgram({"ids", "-", sHouse}, sRequirements({g_fire})).sOut, sExpected);
}

TEST(IdsVerb, TellsEachOfSeveralModels) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({g_doors}));
    const std::string sGood = folder.sFile("good.ifc", g_sHouse);
    const std::string sBad = folder.sFile("bad.ifc", sIdsReplaced(g_sHouse, "'D1'", "$"));
    const std::string sNone = (folder.path() / "none.ifc").string();
    const ProgramRun run = runProgram({"ids", sPath, sGood, sNone, sBad});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: " + sNone + ": there is no such file\n");
    EXPECT_TRUE(run.sOut.starts_with(sGood + ":\npassed: Doors: 1 applicable, 1 passed\n" + sGood +
                                     ": meets the requirements: 1 specification passed\n" + sBad + ":\nfailed: "))
        << run.sOut;
    const Json json = runProgram({"ids", "--json", sPath, sGood, sBad}).json();
    EXPECT_EQ(json["files"].size(), 2U);
    ASSERT_EQ(json["records"].size(), 1U);
    EXPECT_EQ(json["records"][0]["file"], sBad);
}

TEST(IdsVerb, AModelWithErrorsIsNoCleanAnswer) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R", sRequirements({g_doors}));
    const ProgramRun run = runProgram({"ids", sPath, "-"}, sIdsReplaced(g_sHouse, "#10=", "#11=IFCTEAPOT();\n#10="));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_TRUE(run.sOut.ends_with("standard input: meets the requirements: 1 specification passed\n")) << run.sOut;
    EXPECT_EQ(run.sError, "oxaifc: standard input: 1 error while reading; oxaifc check tells it\n");
    const ProgramRun cut = runProgram({"ids", sPath, "-"}, g_sHouse.substr(0, g_sHouse.find("#10=")));
    EXPECT_EQ(cut.iCode, 2);
    EXPECT_EQ(cut.sOut, "");
    EXPECT_NE(cut.sError.find("standard input: not read to the end: "), std::string::npos) << cut.sError;
}

TEST(IdsVerb, TakesTheRequirementsFirst) {
    const TestFolder folder;
    const std::string sPath = folder.sFile("R.ids", sRequirements({g_doors}));
    const std::string sHouse = folder.sFile("a.ifc", g_sHouse);
    const ProgramRun run = runProgram({"ids", sHouse, sPath});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: " + sHouse + ": is a STEP file; the file of requirements (.ids) comes first\n");
}

// The cases that buildingSMART publishes beside the standard say in their names what comes of them; all of them are the
// library's test.
TEST(IdsVerb, PublishedCasesEndAsTheirNamesSay) {
    const std::filesystem::path cases = OXA_SOURCE_DIR "/../shared/ids/testcases";
    if (!std::filesystem::is_directory(cases)) GTEST_SKIP() << "no published cases";
    std::map<std::string, std::filesystem::path> chosen;   // one of each folder and end
    for (const auto& entry : std::filesystem::recursive_directory_iterator(cases)) {
        if (entry.path().extension() != ".ids") continue;
        const std::string sName = entry.path().filename().string();
        std::filesystem::path& path =
            chosen[entry.path().parent_path().filename().string() + ' ' + sName.substr(0, sName.find('-'))];
        if (path.empty() || entry.path() < path) path = entry.path();
    }
    for (const auto& [sKind, path] : chosen) {
        const int iCode = sKind.ends_with(" pass") ? 0 : sKind.ends_with(" fail") ? 1 : 2;
        std::filesystem::path model = path;
        const ProgramRun run = runProgram({"ids", path.string(), model.replace_extension(".ifc").string()});
        EXPECT_EQ(run.iCode, iCode) << path << '\n' << run.sOut << run.sError;
    }
    EXPECT_GT(chosen.size(), 20U);
}

}   // namespace
}   // namespace oxa::test
