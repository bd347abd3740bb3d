// SPDX-License-Identifier: Apache-2.0
// The example programs, run as their first comments say.

#include <algorithm>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

ProgramRun runExample(const std::string& sName, const std::vector<std::string>& words) {
    return runProgramAt(std::string(OXA_EXAMPLES "/") + sName, words);
}

// What a text holds that another one does not.
std::multiset<std::string> added(const std::string& sOld, const std::string& sNew) {
    std::multiset<std::string> result = statements(sNew);
    for (const std::string& sLine : statements(sOld))
        if (const auto found = result.find(sLine); found != result.end()) result.erase(found);
    return result;
}

// A GlobalId is another one each time.
std::string sWithoutGuid(std::string sLine) {
    const std::size_t iGuid = sLine.find("('");
    if (iGuid != std::string::npos && sLine.size() > iGuid + 25 && sLine[iGuid + 24] == '\'')
        sLine.erase(iGuid + 2, 22);
    return sLine;
}

TEST(ExamplePrograms, AddPropertyGivesNewEntitiesNumbersOfTheirOwn) {
    const struct {
        const char* pName;
        std::string sHistory;
        std::string sWalls;
    } rows[] = {{"house-ifc4.ifc", "#5", ""}, {"house-ifc2x3.ifc", "#5", ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pName);
        const TestFolder folder;
        const std::string sOut = (folder.path() / "out.ifc").string();
        // The statements of the sample as the library writes them.
        const std::string sOld = runProgram({"convert", sExample(row.pName), "-"}).sOut;
        const ProgramRun run = runExample("AddProperty", {sExample(row.pName), "Pset_Mine", "Colour", "red", sOut});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, "11 walls\n");
        EXPECT_EQ(run.sError, "");
        const std::string sNew = sContent(sOut);
        EXPECT_EQ(statements(sNew).size(), statements(sOld).size() + 3);
        std::size_t iHighest = 0;
        for (const std::string& sLine : statements(sOld))
            iHighest = std::max<std::size_t>(iHighest, std::stoul(sLine.substr(1)));
        std::vector<std::string> lines;
        for (const std::string& sLine : added(sOld, sNew)) lines.push_back(sWithoutGuid(sLine));
        ASSERT_EQ(lines.size(), 3U);
        std::set<std::size_t> numbers;
        for (const std::string& sLine : lines) numbers.insert(std::stoul(sLine.substr(1)));
        EXPECT_EQ(numbers, (std::set<std::size_t>{iHighest + 1, iHighest + 2, iHighest + 3}));
        const ProgramRun check = runProgram({"check", sOut});
        EXPECT_EQ(check.iCode, 0) << check.sOut;
        EXPECT_TRUE(std::ranges::any_of(lines, [](const std::string& sLine) {
            return sLine.ends_with("=IFCPROPERTYSINGLEVALUE('Colour',$,IFCLABEL('red'),$);");
        }));
        EXPECT_TRUE(std::ranges::any_of(lines, [&](const std::string& sLine) {
            return sLine.find("=IFCPROPERTYSET(''," + row.sHistory + ",'Pset_Mine',$,(#") != std::string::npos;
        })) << testing::PrintToString(lines);
    }
}

TEST(ExamplePrograms, SayHowTheyAreCalled) {
    for (const char* pName : {"AddProperty", "ChangeProperty", "CreateModel", "StoreyTree", "WallProperties",
                              "SetWallProperty", "CreateWall"}) {
        const ProgramRun run = runExample(pName, {});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_TRUE(run.sError.starts_with(std::string("usage: ") + pName + " ")) << run.sError;
    }
}

// What a listing of walls says of a property, over all of them.
std::multiset<std::string> valuesOf(const std::string& sListing, const std::string& sProperty) {
    std::multiset<std::string> found;
    std::istringstream lines(sListing);
    for (std::string sLine; std::getline(lines, sLine);)
        if (const std::size_t i = sLine.find(sProperty + " = "); i == 4)
            found.insert(sLine.substr(i + sProperty.size() + 3));
    return found;
}

TEST(ExamplePrograms, SetWallPropertySetsWhatWallPropertiesList) {
    for (const char* pName : {"house-ifc4.ifc", "house-ifc2x3.ifc"}) {
        SCOPED_TRACE(pName);
        const TestFolder folder;
        const std::string sOut = (folder.path() / "out.ifc").string();
        const std::string sBefore = runExample("WallProperties", {sExample(pName)}).sOut;
        EXPECT_EQ(std::ranges::count(sBefore, '\n') - std::ranges::count(sBefore, '='), 3 + 11)
            << sBefore;   // storeys, walls
        EXPECT_EQ(valuesOf(sBefore, "Pset_Mine.Colour").size(), 0U);
        EXPECT_EQ(runExample("SetWallProperty", {sExample(pName), "Pset_Mine", "Colour", "red", sOut}).iCode, 0);
        EXPECT_EQ(runExample("SetWallProperty", {sOut, "Pset_WallCommon", "FireRating", "F 120", sOut}).iCode, 0);
        const ProgramRun after = runExample("WallProperties", {sOut});
        EXPECT_EQ(after.iCode, 0);
        EXPECT_EQ(valuesOf(after.sOut, "Pset_Mine.Colour").count("red"), 11U);
        EXPECT_EQ(valuesOf(after.sOut, "Pset_WallCommon.FireRating").count("F 120"), 11U);
        EXPECT_EQ(valuesOf(after.sOut, "Pset_WallCommon.LoadBearing"),
                  valuesOf(sBefore, "Pset_WallCommon.LoadBearing"));
        EXPECT_EQ(runProgram({"check", sOut}).iCode, 0);
    }
    EXPECT_EQ(runExample("WallProperties", {"/no/such.ifc"}).sError,
              "/no/such.ifc: can't be opened: No such file or directory\n");
}

TEST(ExamplePrograms, CreateWallMakesAModelWithoutAnError) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "out.ifc").string();
    EXPECT_EQ(runExample("CreateWall", {sOut}).iCode, 0);
    EXPECT_EQ(statements(sContent(sOut)).size(), 21U);
    EXPECT_EQ(runProgram({"check", sOut}).iCode, 0);
    const std::string sNew = sContent(sOut);
    EXPECT_NE(sNew.find("=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 90'),$);"), std::string::npos);
    EXPECT_NE(sNew.find("=IFCRECTANGLEPROFILEDEF(.AREA.,$,$,5.,0.3);"), std::string::npos);
}

TEST(ExamplePrograms, CreateModelMakesAModelWithoutAnError) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "out.ifc").string();
    EXPECT_EQ(runExample("CreateModel", {sOut}).iCode, 0);
    EXPECT_EQ(statements(sContent(sOut)).size(), 8U);
    EXPECT_EQ(runProgram({"check", sOut}).iCode, 0);
}

TEST(ExamplePrograms, ChangePropertyChangesValuesOnly) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "out.ifc").string();
    const std::string sOld = runProgram({"convert", sExample("house-ifc4.ifc"), "-"}).sOut;
    const ProgramRun run = runExample("ChangeProperty", {sExample("house-ifc4.ifc"), "FireRating", "F 120", sOut});
    EXPECT_EQ(run.iCode, 0);
    const std::multiset<std::string> lines = added(sOld, sContent(sOut));
    EXPECT_EQ(run.sOut, std::to_string(lines.size()) + " properties changed\n");
    for (const std::string& sLine : lines)
        EXPECT_TRUE(sLine.ends_with("=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 120'),$);")) << sLine;
}

TEST(ExamplePrograms, StoreyTreeNamesTheStoreys) {
    const ProgramRun run = runExample("StoreyTree", {sExample("house-ifc4.ifc")});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_FALSE(run.sOut.empty());
}

}   // namespace
}   // namespace oxa::test
