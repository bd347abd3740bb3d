// SPDX-License-Identifier: Apache-2.0
// "oxaifc props" and "oxaifc tree": their JSON, key by key, for the house in IFC2X3, IFC4 and IFC4X3.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/verbs/RuleRun.h"

namespace oxa::test {
namespace {

class RuleProps : public testing::TestWithParam<const char*> {};

struct PropsRow {
    const char* pRule;
    const char* pWhat;
    const char* pPointer;   // into the object
    const char* pValue;     // JSON; keys in the order of the file
};

// clang-format off
const PropsRow g_props[] = {
    {"the number", "30", "/id", "30"},
    {"the type", "30", "/type", R"("IfcWall")"},
    {"a text", "30", "/attributes/Name", R"("W1")"},
    {"a GlobalId as 22 characters", "30", "/attributes/GlobalId", R"("1House_of_rules$__0030")"},
    {"a reference", "30", "/attributes/OwnerHistory", R"({"ref":5})"},
    {"no value", "30", "/attributes/Description", "null"},
    {"a text with a line end", "32", "/attributes/Description", R"("one\ntwo")"},
    {"a number", "40", "/attributes/OverallWidth", "0.9"},
    {"a negative number", "29", "/attributes/Elevation", "-2.6"},
    {"an enumerator", "45", "/attributes/PredefinedType", R"("NOTDEFINED")"},
    {"derived", "6", "/attributes/Dimensions", R"({"derived":true})"},
    {"a list of numbers", "12", "/attributes/Coordinates", "[0.0,0.0,-1.5]"},
    {"a list of integers", "20", "/attributes/RefLatitude", "[49,47,33,120000]"},
    {"a list of references", "9", "/attributes/RepresentationContexts", R"([{"ref":10}])"},
    {"references in their order", "8", "/attributes/Units", R"([{"ref":6},{"ref":7}])"},
    {"a text in a select", "80", "/attributes/NominalValue", R"({"type":"IfcLabel","value":"F 90"})"},
    {"truth in a select", "81", "/attributes/NominalValue", R"({"type":"IfcBoolean","value":true})"},
    {"a measure in a select", "83", "/attributes/NominalValue", R"({"type":"IfcThermalTransmittanceMeasure","value":0.24})"},
    {"an integer in a select", "92", "/attributes/NominalValue", R"({"type":"IfcInteger","value":7})"},
    {"a select without a value", "89", "/attributes/NominalValue", "null"},
    {"a list of selects", "93", "/attributes/EnumerationValues",
     R"([{"type":"IfcLabel","value":"NEW"},{"type":"IfcLabel","value":"OLD"}])"},

    {"properties", "30", "/psets",
     R"({"Pset_WallCommon":{"FireRating":"F 90","IsExternal":true,"LoadBearing":false,"ThermalTransmittance":0.24}})"},
    {"its own first, then those of its type", "33", "/psets",
     R"({"Pset_WallCommon":{"LoadBearing":true,"FireRating":"F 60","Reference":"R-60"}})"},
    {"a property without a value", "40", "/psets", R"({"Pset_DoorCommon":{"FireRating":"T 30","SecurityRating":null}})"},
    {"of a type its own", "60", "/psets", R"({"Pset_WallCommon":{"FireRating":"F 60","Reference":"R-60"}})"},
    {"none", "34", "/psets", "{}"},
    {"several values", "32", "/psets/My set/Enum", R"(["NEW","OLD"])"},
    {"a list", "32", "/psets/My set/List", "[1.5,2.5]"},
    {"a complex one", "32", "/psets/My set/Cx", R"({"Part":"inner"})"},
    {"a bounded one", "32", "/psets/My set/Bound", R"({"lower":291.15,"upper":297.15,"value":null})"},
    {"a table", "32", "/psets/My set/Table", R"({"defining":[1.5,2.5],"defined":["x","y"]})"},
    {"neither true nor false", "32", "/psets/My set/Logic", R"("UNKNOWN")"},
    {"quantities", "30", "/quantities", R"({"Qto_WallBaseQuantities":{"Length":4.5,"NetVolume":2.5}})"},
    {"no quantities", "33", "/quantities", "{}"},
    {"the type object", "33", "/typeObject", R"({"id":60,"type":"IfcWallType","name":"WT"})"},
    {"no type object", "30", "/typeObject", "null"},
    {"the storey, over the wall", "40", "/storey", R"({"id":22,"type":"IfcBuildingStorey","name":"EG"})"},
    {"the storey, over the space", "43", "/storey", R"({"id":22,"type":"IfcBuildingStorey","name":"EG"})"},
    {"the container", "43", "/container", R"({"id":24,"type":"IfcSpace","name":"K\u00fcche"})"},
    {"no storey", "34", "/storey", "null"},
    {"no container", "34", "/container", "null"},
    {"materials, a layer each", "30", "/materials",
     R"([{"name":"Ziegel","set":"Au\u00dfenwand","thickness":0.24,"source":"instance"},
         {"name":"D\u00e4mmung","set":"Au\u00dfenwand","thickness":0.125,"source":"instance"}])"},
    {"a single material", "32", "/materials", R"([{"name":"Beton","source":"instance"}])"},
    {"of the type", "33", "/materials", R"([{"name":"Holz","source":"type"}])"},
    {"no material", "34", "/materials", "[]"},
    {"a classification", "30", "/classifications",
     R"([{"system":"DIN 276","code":"331","name":"Tragende Wand","source":"instance"}])"},
    {"a classification of the type", "33", "/classifications",
     R"([{"system":"DIN 276","code":"330","name":"Wand","source":"type"}])"},
    {"no classification", "34", "/classifications", "[]"},
};
// clang-format on

TEST_P(RuleProps, JsonTells) {
    for (const PropsRow& row : g_props) {
        SCOPED_TRACE(std::string(row.pRule) + ": " + row.pWhat + " " + row.pPointer);
        const ProgramRun run = runOn(GetParam(), {"props", row.pWhat, "--json"});
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_EQ(run.sError, "");
        const Json::json_pointer place(row.pPointer);
        const Json value = run.json();
        ASSERT_TRUE(value.is_object() && value.contains(place)) << run.sOut;
        EXPECT_EQ(value[place].dump(), Json::parse(row.pValue).dump());
    }
}

TEST_P(RuleProps, AttributesAreThoseOfTheSchemaInItsOrder) {
    const bool boOld = std::string_view(GetParam()) == "IFC2X3";
    std::vector<std::string> expected{"GlobalId",        "OwnerHistory",   "Name", "Description",   "ObjectType",
                                      "ObjectPlacement", "Representation", "Tag",  "OverallHeight", "OverallWidth"};
    if (!boOld) expected.insert(expected.end(), {"PredefinedType", "OperationType", "UserDefinedOperationType"});
    std::vector<std::string> names;
    const Json value = runOn(GetParam(), {"props", "40", "--json"}).json();
    for (const auto& [name, one] : value["attributes"].items()) names.push_back(name);
    EXPECT_EQ(names, expected);
}

TEST_P(RuleProps, AnElementIsNamedByNumberOrGlobalId) {
    const std::string sGuid = sRuleGuid(30);
    for (const std::string& sWhat : {std::string("30"), std::string("#30"), std::string("0030"), sGuid}) {
        SCOPED_TRACE(sWhat);
        EXPECT_EQ(runOn(GetParam(), {"props", sWhat, "--json"}).json()["id"], 30);
        const ProgramRun text = runOn(GetParam(), {"props", sWhat});
        EXPECT_EQ(text.iCode, 0);
        for (const char* pTold :
             {"IfcWall", "W1", "Pset_WallCommon", "FireRating", "F 90", "NetVolume", "2.5", "EG", "Ziegel", "331"})
            EXPECT_NE(text.sOut.find(pTold), std::string::npos) << pTold;
    }
}

TEST_P(RuleProps, WhatThereIsNotIsToldInOneLine) {
    const std::string what[] = {"4000",
                                "#4000",
                                sRuleGuid(4000),
                                "IfcWall",
                                "",
                                "#",
                                "3x",
                                "-30",
                                "99999999999999999999999",
                                std::string(100'000, '9'),
                                "#" + std::string(100'000, '9'),
                                std::string(100'000, 'x')};
    for (const std::string& sWhat : what) {
        SCOPED_TRACE(sWhat.substr(0, 40));
        const ProgramRun run = runOn(GetParam(), {"props", sWhat, "--json"});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_TRUE(boOneLine(run.sError)) << run.sError;
    }
}

// ---- tree -----------------------------------------------------------------------------------------------------------

class RuleTree : public testing::TestWithParam<const char*> {};

TEST_P(RuleTree, JsonHasNodesWithElementsAndChildren) {
    EXPECT_EQ(runOn(GetParam(), {"tree", "--json"}).json().dump(), Json::parse(R"J([
      {"id":9,"type":"IfcProject","name":"Haus","elements":[],"children":[
        {"id":20,"type":"IfcSite","name":"Grund","elements":[],"children":[
          {"id":21,"type":"IfcBuilding","name":"Haus A","elements":[],"children":[
            {"id":22,"type":"IfcBuildingStorey","name":"EG","elements":[
              {"id":30,"type":"IfcWall","name":"W1"},
              {"id":31,"type":"IfcWallStandardCase","name":"W2"},
              {"id":45,"type":"IfcElementAssembly","name":"Tor"}],"children":[
                {"id":24,"type":"IfcSpace","name":"K\u00fcche","elements":[
                  {"id":43,"type":"IfcFurnishingElement","name":"Tisch"}],"children":[]}]},
            {"id":23,"type":"IfcBuildingStorey","name":"OG","elements":[
              {"id":32,"type":"IfcWall","name":"W3"},
              {"id":33,"type":"IfcWall","name":"Wand+T\u00fcr \"a,b\""},
              {"id":41,"type":"IfcDoor","name":"D2"}],"children":[]},
            {"id":29,"type":"IfcBuildingStorey","name":"KG","elements":[],"children":[]}]}]}]}])J")
                                                                       .dump());
}

TEST_P(RuleTree, CountsByClass) {
    const Json tree = runOn(GetParam(), {"tree", "--counts", "--json"}).json();
    const struct {
        const char* pPlace;
        const char* pCounts;
    } rows[] = {
        {"/0/elements", "{}"},
        {"/0/children/0/children/0/children/0/elements",
         R"({"IfcElementAssembly":1,"IfcWall":1,"IfcWallStandardCase":1})"},
        {"/0/children/0/children/0/children/0/children/0/elements", R"({"IfcFurnishingElement":1})"},
        {"/0/children/0/children/0/children/1/elements", R"({"IfcDoor":1,"IfcWall":2})"},
        {"/0/children/0/children/0/children/2/elements", "{}"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(tree[Json::json_pointer(row.pPlace)], Json::parse(row.pCounts)) << row.pPlace;
}

TEST_P(RuleTree, TextIndentsEachLevel) {
    const ProgramRun run = runOn(GetParam(), {"tree"});
    EXPECT_EQ(run.iCode, 0);
    std::size_t iBehind = 0;
    for (const char* pLine : {"IfcProject Haus\n", "IfcSite Grund\n", "IfcBuilding Haus A\n", "IfcBuildingStorey EG\n",
                              "IfcWall W1\n", "IfcSpace K\u00fcche\n", "IfcFurnishingElement Tisch\n",
                              "IfcBuildingStorey OG\n", "IfcDoor D2\n", "IfcBuildingStorey KG\n"}) {
        iBehind = run.sOut.find(pLine, iBehind);
        ASSERT_NE(iBehind, std::string::npos) << pLine << run.sOut;
    }
    EXPECT_NE(runOn(GetParam(), {"tree", "--counts"}).sOut.find("2 IfcWall\n"), std::string::npos);
}

// A model whose spaces contain one another, however far, ends.
TEST(RuleTreeBounds, ARingAndADeepTreeEnd) {
    const auto sSpace = [](int i) {
        return "#" + std::to_string(i) + "=IFCSPACE('" + sRuleGuid(i) + "',$,$,$,$,$,$,$,.ELEMENT.,$,$);\n";
    };
    const auto sPart = [](int iNumber, int iWhole, int iPart) {
        return "#" + std::to_string(iNumber) + "=IFCRELAGGREGATES('" + sRuleGuid(iNumber) + "',$,$,$,#" +
               std::to_string(iWhole) + ",(#" + std::to_string(iPart) + "));\n";
    };
    const std::string sProject = "#9999=IFCPROJECT('" + sRuleGuid(9999) + "',$,$,$,$,$,$,$,$);\n";
    std::string sRing = sProject + sSpace(1) + sSpace(2) + sPart(11, 1, 2) + sPart(12, 2, 1) + sPart(13, 9999, 1);
    std::string sDeep = sProject + sPart(9998, 9999, 1) + sSpace(1);
    for (int i = 1; i < 1000; ++i) sDeep += sSpace(i + 1) + sPart(i + 1500, i, i + 1);
    for (const std::string& sData : {sRing, sDeep}) {
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"tree", "-"},
              {"tree", "-", "--json"},
              {"tree", "-", "--counts"},
              {"props", "-", "2", "--json"},
              {"list", "-", "-c", "storey.Name,building.Name,container.Name,parent.Name"},
              {"list", "-", "location=x"},
              {"list", "-", "parent=x"},
              {"list", "-", "storey=NULL"}}) {
            const ProgramRun run = runProgram(words, sExchangeFile("IFC4", sData));
            EXPECT_TRUE(run.iCode == 0 || run.iCode == 1) << words[0] << " " << run.iCode << " " << run.sError;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleProps, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });
INSTANTIATE_TEST_SUITE_P(Schemas, RuleTree, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });

}   // namespace
}   // namespace oxa::test
