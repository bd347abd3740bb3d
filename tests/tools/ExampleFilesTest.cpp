// SPDX-License-Identifier: Apache-2.0
// The sample files of the project: what each holds, to the last figure.

#include <fstream>
#include <iterator>
#include <utility>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

struct ExampleRow {
    const char* pName;
    const char* pSchema;
    int iEntities, iRooted, iInverses;
    std::vector<std::pair<const char*, int>> someTypes;
};
// clang-format off
const ExampleRow g_examples[] = {
    {"house-ifc4.ifc", "IFC4", 399, 95, 365,
     {{"IFCBUILDINGSTOREY", 3}, {"IFCWALL", 11}, {"IFCDOOR", 2}, {"IFCDOORTYPE", 1}, {"IFCWINDOW", 3},
      {"IFCOPENINGELEMENT", 5}, {"IFCSLAB", 5}, {"IFCROOF", 1}, {"IFCSPACE", 2}, {"IFCMAPCONVERSION", 1},
      {"IFCPROPERTYSET", 5}, {"IFCELEMENTQUANTITY", 3}, {"IFCCLASSIFICATION", 1}, {"IFCOWNERHISTORY", 1}}},
    {"house-ifc2x3.ifc", "IFC2X3", 400, 94, 330,
     {{"IFCBUILDINGSTOREY", 3}, {"IFCWALL", 2}, {"IFCWALLSTANDARDCASE", 9}, {"IFCDOOR", 2}, {"IFCDOORSTYLE", 1},
      {"IFCWINDOW", 3}, {"IFCOPENINGELEMENT", 5}, {"IFCSLAB", 5}, {"IFCROOF", 1}, {"IFCSPACE", 2},
      {"IFCPROPERTYSET", 5}, {"IFCELEMENTQUANTITY", 3}, {"IFCCLASSIFICATION", 1}, {"IFCOWNERHISTORY", 1}}},
};
// clang-format on

std::string sContent(const std::string& sPath) {
    std::ifstream file(sPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(ExampleFiles, AreWithoutAnError) {
    for (const ExampleRow& row : g_examples) {
        SCOPED_TRACE(row.pName);
        const std::string sPath = sExample(row.pName);
        const ProgramRun text = runProgram({"check", sPath});
        EXPECT_EQ(text.iCode, 0);
        EXPECT_EQ(text.sOut, sPath + ": read without loss\n");
        EXPECT_EQ(text.sError, "");
        EXPECT_EQ(runProgram({"check", sPath, "--json"}).sOut,
                  "{\"records\":[]\n,\"groups\":[],\n\"files\":[{\"file\":\"" + sPath +
                      "\",\"ok\":true,\"errors\":0,\"lostStatements\":0,\"firstLostLine\":0}]}\n");
    }
}

TEST(ExampleFiles, HoldWhatTheyShow) {
    for (const ExampleRow& row : g_examples) {
        SCOPED_TRACE(row.pName);
        const std::string sPath = sExample(row.pName);
        const Json value = runProgram({"info", sPath, "--json", "--full"}).json();
        EXPECT_EQ(value["file"], sPath);
        EXPECT_EQ(value["schema"], row.pSchema);
        EXPECT_EQ(value["header"]["name"], row.pName);
        EXPECT_EQ(value["header"]["author"], (Json{"J\u00f6rg Hofmann"}));
        EXPECT_EQ(value["header"]["organization"], (Json{"B\u00fcro f\u00fcr Baukunst"}));
        EXPECT_EQ(value["entities"], row.iEntities);
        EXPECT_EQ(value["rooted"], row.iRooted);
        EXPECT_EQ(value["inverses"], row.iInverses);
        EXPECT_EQ(value["bytes"], std::filesystem::file_size(sPath));
        for (const auto& [pType, iCount] : row.someTypes) EXPECT_EQ(value["byType"][pType], iCount) << pType;
    }
}

// The escapes of ISO 10303-21, 6.4.3, of which each sample has all.
TEST(ExampleFiles, ShowEveryEscape) {
    for (const ExampleRow& row : g_examples) {
        SCOPED_TRACE(row.pName);
        const std::string sText = sContent(sExample(row.pName));
        for (const char* pEscape : {"\\X\\", "\\X2\\", "\\X4\\", "\\X0\\", "\\S\\", "\\\\", "''", "/*"})
            EXPECT_NE(sText.find(pEscape), std::string::npos) << pEscape;
    }
}

}   // namespace
}   // namespace oxa::test
