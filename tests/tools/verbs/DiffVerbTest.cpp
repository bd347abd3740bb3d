// SPDX-License-Identifier: Apache-2.0
// "oxaifc diff": every change made to a model is told, and nothing else.

#include <algorithm>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

// A model as its statements by number, so that a test changes one.
using Statements = std::map<int, std::string>;

Statements base() {
    return {
        {1, "IFCPROJECT('0TdSR4dSbLuwdbL5HLUvM0',$,'Project',$,$,$,$,(#10,#11),#12)"},
        {10, "IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-05,#41,$)"},
        {11, "IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',2,1.E-05,#41,$)"},
        {12, "IFCUNITASSIGNMENT((#13,#14))"},
        {13, "IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.)"},
        {14, "IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.)"},
        {20, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'Wall A',$,$,#40,#50,'tag',$)"},
        {21, "IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'Wall B',$,$,#45,$,$,.SOLIDWALL.)"},
        {22, "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall C',$,$,$,$,$,$)"},
        {30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#20,#21),#31)"},
        {31, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'Pset_WallCommon',$,(#32,#33))"},
        {32, "IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F30'),$)"},
        {33, "IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(115.),$)"},
        {40, "IFCLOCALPLACEMENT($,#41)"},
        {41, "IFCAXIS2PLACEMENT3D(#42,$,$)"},
        {42, "IFCCARTESIANPOINT((0.,0.,0.))"},
        {45, "IFCLOCALPLACEMENT(#40,#46)"},
        {46, "IFCAXIS2PLACEMENT3D(#47,$,$)"},
        {47, "IFCCARTESIANPOINT((5.,0.,0.))"},
        {50, "IFCPRODUCTDEFINITIONSHAPE($,$,(#51))"},
        {51, "IFCSHAPEREPRESENTATION(#10,'Body','SweptSolid',(#52))"},
        {52, "IFCEXTRUDEDAREASOLID(#53,$,#54,2500.)"},
        {53, "IFCRECTANGLEPROFILEDEF(.AREA.,'P',$,3000.,115.)"},
        {54, "IFCDIRECTION((0.,0.,1.))"},
        {60, "IFCSTYLEDITEM(#52,(#61),'style')"},
        {61, "IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.)))"},
        {70, "IFCMATERIAL('Oak',$,$)"},
        {71, "IFCMATERIAL('Oak',$,$)"},
        {72, "IFCPOLYLINE((#73,#74))"},
        {73, "IFCCARTESIANPOINT((1.,1.))"},
        {74, "IFCCARTESIANPOINT((2.,1.))"},
    };
}

std::string sFile(const Statements& statements, std::string_view schema = "IFC4") {
    std::string sData;
    for (const auto& [iNumber, sText] : statements) sData += '#' + std::to_string(iNumber) + '=' + sText + ";\n";
    return sExchangeFile(schema, sData);
}

ProgramRun diff(const std::string& sOld, const std::string& sNew,
                const std::vector<std::string>& options = {"--json"}) {
    const TestFolder folder;
    std::vector<std::string> words{"diff", folder.sFile("a.ifc", sOld), folder.sFile("b.ifc", sNew)};
    words.insert(words.end(), options.begin(), options.end());
    return runProgram(words);
}

// What was told, a line each: "- #20 Wall A", "+ ...", "~ #20 Name: 'a' -> 'b'".
// boErrors: the files have errors, which are told elsewhere.
std::vector<std::string> told(const ProgramRun& run, bool boErrors = false) {
    std::vector<std::string> lines;
    const Json value = run.json();
    if (!value.is_object()) return {"no JSON: " + run.sOut + run.sError};
    const auto text = [](const Json& entity) {
        return entity.contains("content") ? entity["content"].get<std::string>()
                                          : entity["type"].get<std::string>() + entity.value("name", std::string());
    };
    const auto vList = [&](const char* pKey, const std::string& sSign) {
        for (const Json& entity : value[pKey])
            lines.push_back(sSign + " #" + std::to_string(entity["number"].get<int>()) + ' ' + text(entity));
    };
    vList("removed", "-");
    vList("added", "+");
    for (const Json& entity : value["changed"])
        for (const Json& row : entity["values"]) {
            const auto side = [&row](const char* pKey) {
                return row[pKey].is_null() ? std::string("none") : row[pKey].get<std::string>();
            };
            lines.push_back("~ #" + std::to_string(entity["number"].get<int>()) + ' ' +
                            row["attribute"].get<std::string>() + ": " + side("old") + " -> " + side("new") +
                            (row.contains("more") ? " and more" : ""));
        }
    EXPECT_EQ(value["equal"].get<bool>(), lines.empty());
    EXPECT_EQ(run.iCode, lines.empty() ? 0 : 1);
    EXPECT_EQ(run.sError.empty(), !boErrors) << run.sError;
    return lines;
}

// What is done to the statements: a new text for a number, an empty one takes it away.
struct ChangeRow {
    const char* pRule;
    std::vector<std::pair<int, std::string>> edits;
    std::vector<std::string> told;   // in any order
};
std::vector<ChangeRow> changeRows() {
    return {
        {"nothing", {}, {}},
        {"a name",
         {{20, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'It''s',$,$,#40,#50,'tag',$)"}},
         {"~ #20 Name: 'Wall A' -> 'It''s'"}},
        {"a value that comes",
         {{22, "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall C','d',$,$,$,$,$)"}},
         {"~ #22 Description: $ -> 'd'"}},
        {"two attributes",
         {{21, "IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'Wall X',$,$,#45,$,$,.SHEAR.)"}},
         {"~ #21 Name: 'Wall B' -> 'Wall X'", "~ #21 PredefinedType: .SOLIDWALL. -> .SHEAR."}},
        {"a type",
         {{22, "IFCWALLSTANDARDCASE('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall C',$,$,$,$,$,$)"}},
         {"~ #22 type: IFCWALL -> IFCWALLSTANDARDCASE"}},
        {"a type with other attributes",
         {{22, "IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall C',$,$,$,$,$,2.,$,$,$,$)"}},
         {"~ #22 type: IFCWALL -> IFCDOOR", "~ #22 OverallHeight: none -> 2."}},
        {"a GlobalId",
         {{22, "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0j',$,'Wall C',$,$,$,$,$,$)"}},
         {"- #22 IFCWALL'Wall C'", "+ #22 IFCWALL'Wall C'"}},
        {"a wall that goes", {{22, ""}}, {"- #22 IFCWALL'Wall C'"}},
        {"a wall that comes", {{99, "IFCWALL('0GBXQqFNTSPQ9PR7g3FFqm',$,$,$,$,#40,$,$,$)"}}, {"+ #99 IFCWALL"}},
        {"a member of a set that comes",
         {{30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#20,#22,#21),#31)"}},
         {"~ #30 RelatedObjects: () -> (IFCWALL 3X5rmEjoXQ$f8Sn8KSdx0i)"}},
        {"a member of a set for another",
         {{30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#21,#22),#31)"}},
         {"~ #30 RelatedObjects[]: IFCWALL 1CCJ9i1$jSdgYVC2yzHPtC -> IFCWALL 3X5rmEjoXQ$f8Sn8KSdx0i"}},
        {"the order of a set",
         {{30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#21,#20),#31)"},
          {12, "IFCUNITASSIGNMENT((#14,#13))"}},
         {}},
        {"a property",
         {{32, "IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F90'),$)"}},
         {"~ #31 HasProperties[].NominalValue: IFCLABEL('F30') -> IFCLABEL('F90')"}},
        {"the type of a select's value",
         {{32, "IFCPROPERTYSINGLEVALUE('FireRating',$,IFCTEXT('F30'),$)"}},
         {"~ #31 HasProperties[].NominalValue: IFCLABEL('F30') -> IFCTEXT('F30')"}},
        {"a property for one of another type",
         {{32, "IFCPROPERTYENUMERATEDVALUE('FireRating',$,$,$)"}},
         {"~ #31 HasProperties[]: IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F30'),$) -> "
          "IFCPROPERTYENUMERATEDVALUE('FireRating',$,$,$)"}},
        {"a unit", {{13, "IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)"}}, {"~ #1 UnitsInContext.Units[].Prefix: .MILLI. -> $"}},
        {"derived and undefined",
         {{14, "IFCSIUNIT(*,.AREAUNIT.,*,.SQUARE_METRE.)"}},
         {"~ #1 UnitsInContext.Units[].Prefix: $ -> *"}},
        {"a point that several use",
         {{47, "IFCCARTESIANPOINT((5.,0.,0.5))"}},
         {"~ #21 ObjectPlacement.RelativePlacement.Location.Coordinates: (5.,0.,0.) -> (5.,0.,0.5)"}},
        {"a shape, and not its style again",
         {{52, "IFCEXTRUDEDAREASOLID(#53,$,#54,2600.)"}},
         {"~ #20 Representation.Representations[1].Items.Depth: 2500. -> 2600."}},
        {"a style",
         {{60, "IFCSTYLEDITEM(#52,(#61),'other')"}},
         {"- #60 "
          "IFCSTYLEDITEM(IFCEXTRUDEDAREASOLID(IFCRECTANGLEPROFILEDEF(.AREA.,'P',$,3000.,115.),$,IFCDIRECTION("
          "(0.,"
          "0.,1.)),2500.),(IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.)))),'style')",
          "+ #60 "
          "IFCSTYLEDITEM(IFCEXTRUDEDAREASOLID(IFCRECTANGLEPROFILEDEF(.AREA.,'P',$,3000.,115.),$,IFCDIRECTION("
          "(0.,"
          "0.,1.)),2500.),(IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.)))),'other')"}},
        {"one of two equal ones", {{71, ""}}, {"- #71 IFCMATERIAL('Oak',$,$)"}},
        {"a third equal one", {{75, "IFCMATERIAL('Oak',$,$)"}}, {"+ #75 IFCMATERIAL('Oak',$,$)"}},
        {"a part of what stands apart",
         {{74, "IFCCARTESIANPOINT((2.,3.))"}},
         {"- #72 IFCPOLYLINE((IFCCARTESIANPOINT((1.,1.)),IFCCARTESIANPOINT((2.,1.))))",
          "+ #72 IFCPOLYLINE((IFCCARTESIANPOINT((1.,1.)),IFCCARTESIANPOINT((2.,3.))))"}},
        {"the order of a list",
         {{72, "IFCPOLYLINE((#74,#73))"}},
         {"- #72 IFCPOLYLINE((IFCCARTESIANPOINT((1.,1.)),IFCCARTESIANPOINT((2.,1.))))",
          "+ #72 IFCPOLYLINE((IFCCARTESIANPOINT((2.,1.)),IFCCARTESIANPOINT((1.,1.))))"}},
        {"copies in the place of what is shared",
         {{11, "IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',2,1.E-05,#80,$)"},
          {80, "IFCAXIS2PLACEMENT3D(#81,$,$)"},
          {81, "IFCCARTESIANPOINT((0.,0.,0.))"}},
         {}},
        {"minus zero", {{42, "IFCCARTESIANPOINT((0.,-0.,0.))"}}, {}},
        {"the same real number", {{33, "IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(1.15E2),$)"}}, {}},
        {"the last digit",
         {{33, "IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(115.00000000000001),$)"}},
         {"~ #31 HasProperties[].NominalValue: IFCLENGTHMEASURE(115.) -> "
          "IFCLENGTHMEASURE(115.00000000000001)"}},
    };
}

TEST(DiffVerb, TellsWhatChangedAndNothingElse) {
    for (const ChangeRow& row : changeRows()) {
        SCOPED_TRACE(row.pRule);
        Statements statements = base();
        for (const auto& [iNumber, sText] : row.edits)
            if (sText.empty())
                statements.erase(iNumber);
            else
                statements[iNumber] = sText;
        const auto all = told(diff(sFile(base()), sFile(statements)));
        EXPECT_EQ(std::multiset<std::string>(all.begin(), all.end()),
                  std::multiset<std::string>(row.told.begin(), row.told.end()));
        // The way back tells the same with the sides exchanged.
        EXPECT_EQ(told(diff(sFile(statements), sFile(base()))).size(), all.size());
    }
}

TEST(DiffVerb, SharedPointIsToldWhereverItLeads) {
    Statements statements = base();
    statements[42] = "IFCCARTESIANPOINT((1.,0.,0.))";
    const std::string sChange = ".Location.Coordinates: (0.,0.,0.) -> (1.,0.,0.)";
    const auto all = told(diff(sFile(base()), sFile(statements)));
    EXPECT_EQ(std::multiset<std::string>(all.begin(), all.end()),
              (std::multiset<std::string>{
                  "~ #1 RepresentationContexts[].WorldCoordinateSystem" + sChange,
                  "~ #20 ObjectPlacement.RelativePlacement" + sChange,
                  "~ #20 Representation.Representations[1].ContextOfItems.WorldCoordinateSystem" + sChange,
                  "~ #21 ObjectPlacement.PlacementRelTo.RelativePlacement" + sChange,
              }));
}

TEST(DiffVerb, NumbersAndOrderDontCount) {
    Statements renumbered;
    for (const auto& [iNumber, sText] : base()) {
        const std::regex reference("#([0-9]+)");
        std::string& sNew = renumbered[1000 - iNumber];
        auto itRest = sText.begin();
        for (std::sregex_iterator it(sText.begin(), sText.end(), reference), itEnd; it != itEnd; ++it) {
            sNew.append(itRest, sText.begin() + it->position())
                .append("#" + std::to_string(1000 - std::stoi((*it)[1])));
            itRest = sText.begin() + it->position() + it->length();
        }
        sNew.append(itRest, sText.end());
    }
    for (const char* pThreads : {"--json", "--single-threaded"}) {
        const ProgramRun run = diff(sFile(base()), sFile(renumbered), {"--json", pThreads});
        EXPECT_EQ(told(run), std::vector<std::string>{});
    }
}

TEST(DiffVerb, RenumberedCopyOfASampleIsEqual) {
    for (const char* pName : {"house-ifc4.ifc", "house-ifc2x3.ifc"}) {
        SCOPED_TRACE(pName);
        const TestFolder folder;
        const std::string sCopy = (folder.path() / "copy.ifc").string();
        ASSERT_EQ(runProgram({"convert", "--all", "--renumber", sExample(pName), sCopy}).iCode, 0);
        const ProgramRun run = runProgram({"diff", sExample(pName), sCopy});
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, "no difference\n");
        EXPECT_EQ(runProgram({"diff", sCopy, "-"}, sContent(sExample(pName))).iCode, 0);
    }
}

// The lines of a sample, one a statement, without the others.
std::vector<std::string> sampleLines() {
    const ProgramRun run =
        runProgram({"convert", "--all", "--renumber", "--single-threaded", sExample("house-ifc4.ifc"), "-"});
    std::vector<std::string> lines;
    std::istringstream text(run.sOut);
    for (std::string sLine; std::getline(text, sLine);) lines.push_back(sLine);
    return lines;
}
std::string joined(const std::vector<std::string>& lines) {
    std::string sText;
    for (const std::string& sLine : lines) sText += sLine + '\n';
    return sText;
}

TEST(DiffVerb, EveryRenamedEntityOfASampleIsTold) {
    const std::vector<std::string> lines = sampleLines();
    const std::regex rooted("#([0-9]+)=(IFC[A-Z0-9]+)\\('([0-9A-Za-z_$]{22})',([^,]*),(\\$|'[^']*'),.*");
    std::mt19937 random(7);
    for (int iRound = 0; iRound < 4; ++iRound) {
        std::vector<std::string> changed = lines;
        std::map<std::string, std::string> renamed;   // GlobalId and old name
        for (std::string& sLine : changed) {
            std::smatch match;
            if (!std::regex_match(sLine, match, rooted) || random() % 4) continue;
            renamed[match[3]] = match[5];
            sLine.replace(static_cast<std::size_t>(match.position(5)), static_cast<std::size_t>(match.length(5)),
                          "'New'");
        }
        ASSERT_GT(renamed.size(), 5U);
        std::shuffle(changed.begin() + 7, changed.end() - 2, random);
        const Json value = diff(joined(lines), joined(changed)).json();
        EXPECT_TRUE(value["removed"].empty() && value["added"].empty());
        std::map<std::string, std::string> told;
        for (const Json& entity : value["changed"]) {
            ASSERT_EQ(entity["values"].size(), 1U) << entity;
            const Json& row = entity["values"][0];
            EXPECT_EQ(row["attribute"], "Name");
            EXPECT_EQ(row["new"], "'New'");
            told[entity["globalId"]] = row["old"].get<std::string>();
        }
        // The file writes letters beyond ASCII another way than the program tells them.
        ASSERT_EQ(told.size(), renamed.size());
        for (const auto& [sGuid, sName] : renamed) {
            ASSERT_TRUE(told.contains(sGuid));
            if (sName.find('\\') == std::string::npos) {
                EXPECT_EQ(told[sGuid], sName);
            }
        }
    }
}

TEST(DiffVerb, EveryMovedPointOfASampleIsTold) {
    const std::vector<std::string> lines = sampleLines();
    std::size_t iPoints = 0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::size_t iPoint = lines[i].find("IFCCARTESIANPOINT((");
        if (iPoint == std::string::npos || ++iPoints % 5) continue;
        SCOPED_TRACE(lines[i]);
        std::vector<std::string> changed = lines;
        const std::size_t iFirst = iPoint + 19;
        changed[i].replace(iFirst, changed[i].find_first_of(",)", iFirst) - iFirst, "123456.");
        const Json value = diff(joined(lines), joined(changed)).json();
        EXPECT_TRUE(value["removed"].empty() && value["added"].empty());
        EXPECT_FALSE(value["changed"].empty());
        for (const Json& entity : value["changed"])
            for (const Json& row : entity["values"]) {
                EXPECT_TRUE(row["attribute"].get<std::string>().ends_with(".Coordinates")) << row;
                EXPECT_TRUE(row["new"].get<std::string>().starts_with("(123456.,")) << row;
            }
    }
    EXPECT_GT(iPoints, 30U);
}

TEST(DiffVerb, SameGlobalIdTwice) {
    const auto sWall = [](const char* pName) {
        return std::string("IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'") + pName + "',$,$,$,$,$,$)";
    };
    const std::string sDoor = "IFCDOOR('1CCJ9i1$jSdgYVC2yzHPtC',$,'D',$,$,$,$,$,$,$,$,$,$)";
    const struct {
        const char* pRule;
        Statements before;
        Statements after;
        std::vector<std::string> told;
    } rows[] = {
        {"equal in another order", {{1, sWall("a")}, {2, sWall("b")}}, {{1, sWall("b")}, {2, sWall("a")}}, {}},
        {"one goes", {{1, sWall("a")}, {2, sWall("b")}}, {{1, sWall("b")}}, {"- #1 IFCWALL'a'"}},
        {"one comes", {{1, sWall("a")}}, {{1, sWall("b")}, {2, sWall("a")}}, {"+ #1 IFCWALL'b'"}},
        {"one changes",
         {{1, sWall("a")}, {2, sWall("b")}},
         {{1, sWall("b")}, {2, sWall("c")}},
         {"~ #2 Name: 'a' -> 'c'"}},
        {"types first", {{1, sWall("a")}, {2, sDoor}}, {{1, sDoor}, {2, sWall("c")}}, {"~ #2 Name: 'a' -> 'c'"}},
        {"three for two",
         {{1, sWall("a")}, {2, sWall("a")}, {3, sWall("a")}},
         {{1, sWall("a")}, {2, sWall("a")}},
         {"- #3 IFCWALL'a'"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        EXPECT_EQ(told(diff(sFile(row.before), sFile(row.after)), true), row.told);
    }
    Statements many;
    for (int i = 1; i <= 20000; ++i) many[i] = sWall(std::to_string(i).c_str());
    Statements more = many;
    more[7] = sWall("seven");
    EXPECT_EQ(told(diff(sFile(many), sFile(more)), true), std::vector<std::string>{"~ #7 Name: '7' -> 'seven'"});
}

TEST(DiffVerb, CyclesEnd) {
    const auto sComplex = [](const char* pName, int iNext) {
        return std::string("IFCCOMPLEXPROPERTY('") + pName + "',$,'u',(#" + std::to_string(iNext) + "))";
    };
    const Statements two{{1, sComplex("a", 2)}, {2, sComplex("b", 1)}};
    const Statements turned{{5, sComplex("b", 9)}, {9, sComplex("a", 5)}};
    const Statements twice{{1, sComplex("a", 2)}, {2, sComplex("b", 3)}, {3, sComplex("a", 4)}, {4, sComplex("b", 1)}};
    const Statements other{{1, sComplex("a", 2)}, {2, sComplex("c", 1)}};
    const Statements self{{1, sComplex("a", 1)}};
    EXPECT_EQ(told(diff(sFile(two), sFile(two))), std::vector<std::string>{});
    EXPECT_EQ(told(diff(sFile(two), sFile(turned))), std::vector<std::string>{});
    EXPECT_EQ(told(diff(sFile(two), sFile(other))).size(), 4U) << "each of them goes and comes";
    EXPECT_EQ(told(diff(sFile(two), sFile(self))).size(), 3U);
    EXPECT_EQ(told(diff(sFile(two), sFile(twice))).size(), 2U) << "of each content there is one more";

    const auto withSet = [](Statements statements, int iProperty) {
        statements[20] = "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#" + std::to_string(iProperty) + "))";
        return sFile(statements);
    };
    EXPECT_EQ(told(diff(withSet(two, 1), withSet(turned, 9))), std::vector<std::string>{});
    EXPECT_EQ(told(diff(withSet(two, 1), withSet(twice, 3))), std::vector<std::string>{}) << "once or twice round";
    EXPECT_EQ(told(diff(withSet(two, 1), withSet(other, 1))),
              std::vector<std::string>{"~ #20 HasProperties.HasProperties.Name: 'b' -> 'c'"});
}

TEST(DiffVerb, LongWaysEnd) {
    constexpr int g_iLong = 50000;
    const auto chain = [&](const char* pLast) {
        Statements statements{{g_iLong, std::string("IFCPROPERTYSINGLEVALUE('") + pLast + "',$,$,$)"},
                              {g_iLong + 1, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#1))"}};
        for (int i = 1; i < g_iLong; ++i)
            statements[i] = "IFCCOMPLEXPROPERTY('p',$,'u',(#" + std::to_string(i + 1) + "))";
        return sFile(statements);
    };
    EXPECT_EQ(told(diff(chain("a"), chain("a"))), std::vector<std::string>{});
    const std::vector<std::string> all = told(diff(chain("a"), chain("b")));
    ASSERT_EQ(all.size(), 1U);
    EXPECT_TRUE(all[0].starts_with("~ #50001 HasProperties.HasProperties.")) << all[0];
}

// Sixty references on the way are still told one by one.
TEST(DiffVerb, WaysOfSixtyReferencesAreTold) {
    const auto chain = [](const char* pLast) {
        Statements statements{{99, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,$,#1,$,$,$)"},
                              {98, "IFCAXIS2PLACEMENT3D(#97,$,$)"},
                              {97, std::string("IFCCARTESIANPOINT((") + pLast + ",0.))"}};
        for (int i = 1; i < 60; ++i) statements[i] = "IFCLOCALPLACEMENT(#" + std::to_string(i + 1) + ",$)";
        statements[60] = "IFCLOCALPLACEMENT($,#98)";
        return sFile(statements);
    };
    std::string sPath = "ObjectPlacement";
    for (int i = 1; i < 60; ++i) sPath += ".PlacementRelTo";
    EXPECT_EQ(
        told(diff(chain("1."), chain("2.")), true),
        std::vector<std::string>{"~ #99 " + sPath + ".RelativePlacement.Location.Coordinates: (1.,0.) -> (2.,0.)"});
}

TEST(DiffVerb, ListsStandInTheOrderOfNumbers) {
    const auto wall = [](int i, const char* pName) {
        const std::string sNumber = std::to_string(1000 + i);
        return "IFCWALL('2cp60asVrO3R4Q9Igc" + sNumber + "',$," + pName + ",$,$,$,$,$,$)";
    };
    Statements before, after;
    for (int i = 1; i <= 60; ++i) before[i] = wall(i, "'removed'");
    for (int i = 61; i <= 120; ++i) before[i] = wall(i, "'old'"), after[i] = wall(i, "'new'");
    for (int i = 121; i <= 180; ++i) after[i] = wall(i, "'added'");
    const Json value = diff(sFile(before), sFile(after)).json();
    int iNumber = 0;
    for (const char* pList : {"removed", "changed", "added"})
        for (const Json& entity : value[pList]) EXPECT_EQ(entity["number"], ++iNumber) << pList;
    EXPECT_EQ(iNumber, 180);
}

// Of equal ones those with the lowest numbers are taken for the same, wherever they stand in the file.
TEST(DiffVerb, SurplusIsThatOfTheHighestNumbers) {
    const std::string sThree =
        sExchangeFile("IFC4", "#9=IFCMATERIAL('a',$,$);\n#3=IFCMATERIAL('a',$,$);\n#7=IFCMATERIAL('a',$,$);\n");
    const std::string sOne = sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n");
    EXPECT_EQ(told(diff(sThree, sOne)),
              (std::vector<std::string>{"- #7 IFCMATERIAL('a',$,$)", "- #9 IFCMATERIAL('a',$,$)"}));
    EXPECT_EQ(told(diff(sOne, sThree)),
              (std::vector<std::string>{"+ #7 IFCMATERIAL('a',$,$)", "+ #9 IFCMATERIAL('a',$,$)"}));
}

// What refers to a changed shape is told with that; what refers to something else than before is told itself.
TEST(DiffVerb, ReferrersAreToldWhereTheyThemselvesChanged) {
    Statements before = base();
    before[62] = "IFCPRESENTATIONLAYERASSIGNMENT('L',$,(#51,#54),$)";
    before[63] = "IFCSTYLEDITEM(#42,(#61),'p')";
    const auto aboutBoth = [](const std::vector<std::string>& all) {
        return std::count_if(all.begin(), all.end(),
                             [](const std::string& sLine) { return sLine.find(" #6") != std::string::npos; });
    };
    Statements shape = before;
    shape[52] = "IFCEXTRUDEDAREASOLID(#53,$,#54,2600.)";
    const std::vector<std::string> one = told(diff(sFile(before), sFile(shape)));
    EXPECT_EQ(one, std::vector<std::string>{"~ #20 Representation.Representations[1].Items.Depth: 2500. -> 2600."});
    Statements other = before;
    other[63] = "IFCSTYLEDITEM(#47,(#61),'p')";
    EXPECT_EQ(told(diff(sFile(before), sFile(other))).size(), 2U);
    Statements added = before;
    added[22] = "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall C',$,$,#81,$,$,$)";
    added[81] = "IFCLOCALPLACEMENT($,#82)";
    added[82] = "IFCAXIS2PLACEMENT3D(#83,$,$)";
    added[83] = "IFCCARTESIANPOINT((9.,9.,9.))";
    added[63] = "IFCSTYLEDITEM(#83,(#61),'p')";
    EXPECT_EQ(aboutBoth(told(diff(sFile(before), sFile(added)))), 2);
}

TEST(DiffVerb, OneAttributeHasAHundredDifferencesAtMost) {
    Statements before{{9000, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,())"}};
    Statements after = before;
    std::string sItems;
    for (int i = 1; i <= 300; ++i) {
        sItems += (i > 1 ? ",#" : "#") + std::to_string(i);
        before[i] = "IFCPROPERTYSINGLEVALUE('" + std::to_string(i) + "',$,IFCLABEL('a'),$)";
        after[i] = "IFCPROPERTYSINGLEVALUE('" + std::to_string(i) + "',$,IFCLABEL('b'),$)";
    }
    before[9000] = "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P','old',(" + sItems + "))";
    after[9000] = "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P','new',(" + sItems + "))";
    const std::vector<std::string> all = told(diff(sFile(before), sFile(after)));
    ASSERT_EQ(all.size(), 101U);
    EXPECT_EQ(all[0], "~ #9000 Description: 'old' -> 'new'");
    EXPECT_EQ(all[1], "~ #9000 HasProperties[].NominalValue: IFCLABEL('a') -> IFCLABEL('b')");
    EXPECT_TRUE(all[100].ends_with(" and more"));
}

TEST(DiffVerb, LongTextsAreCutAroundTheDifference) {
    const std::string sLong(3000, 'x');
    const auto sWall = [](const std::string& sName) {
        return sFile({{1, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'" + sName + "',$,$,$,$,$,$)"}});
    };
    const ProgramRun json = diff(sWall(sLong + "old" + sLong), sWall(sLong + "new" + sLong));
    EXPECT_EQ(told(json),
              std::vector<std::string>{"~ #1 Name: ..." + std::string(500, 'x') + "old" + std::string(497, 'x') +
                                       "... -> ..." + std::string(500, 'x') + "new" + std::string(497, 'x') + "..."});
    const ProgramRun text = diff(sWall(sLong + "old" + sLong), sWall(sLong), {"--entities"});
    EXPECT_NE(text.sOut.find("Name: ..." + std::string(50, 'x') + "old" + std::string(47, 'x') + "... -> ..." +
                             std::string(50, 'x') + "'\n"),
              std::string::npos)
        << text.sOut;
}

TEST(DiffVerb, TextsOfAHundredBytesStayWhole) {
    const auto sNames = [](const std::string& sOld, const std::string& sNew) {
        const auto sWall = [](const std::string& sName) {
            return sFile({{1, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'" + sName + "',$,$,$,$,$,$)"}});
        };
        const std::string sOut = diff(sWall(sOld), sWall(sNew), {"--entities"}).sOut;
        const std::size_t iName = std::min(sOut.find("Name: "), sOut.size());
        return sOut.substr(iName, sOut.find('\n', iName) - iName);
    };
    const std::string sMost(97, 'x');   // and two quotes, and the letter that differs
    EXPECT_EQ(sNames(sMost + 'a', sMost + 'b'), "Name: '" + sMost + "a' -> '" + sMost + "b'");
    EXPECT_EQ(sNames(sMost + "xa", sMost + "xb"),
              "Name: ..." + std::string(50, 'x') + "a' -> ..." + std::string(50, 'x') + "b'");
    // No half characters at either end.
    const auto sUmlauts = [](int iCount) {
        std::string sText;
        while (iCount--) sText += "\xc3\xbc";
        return sText;
    };
    const std::string sOther = "\xc3\xa4";
    EXPECT_EQ(sNames(sUmlauts(200), sUmlauts(100) + sOther + sUmlauts(99)),
              "Name: ..." + sUmlauts(50) + "... -> ..." + sUmlauts(25) + sOther + sUmlauts(24) + "...");
    EXPECT_EQ(sNames(sUmlauts(101), sOther + sUmlauts(100)),
              "Name: '" + sUmlauts(50) + "... -> '" + sOther + sUmlauts(49) + "...");
}

TEST(DiffVerb, ValuesAreToldAsInAFile) {
    const auto sValues = [](const char* pOld, const char* pNew) {
        const auto sOf = [](const std::string& sValue) {
            return sFile({{1, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#2))"},
                          {2, "IFCPROPERTYSINGLEVALUE('a',$," + sValue + ",$)"}});
        };
        return told(diff(sOf(pOld), sOf(pNew)));
    };
    const std::string sWhere = "~ #1 HasProperties.NominalValue: ";
    EXPECT_EQ(sValues("IFCLOGICAL(.U.)", "IFCLOGICAL(.T.)"),
              std::vector<std::string>{sWhere + "IFCLOGICAL(.U.) -> IFCLOGICAL(.T.)"});
    EXPECT_EQ(sValues("IFCREAL(1.E-20)", "IFCREAL(2.5E30)"),
              std::vector<std::string>{sWhere + "IFCREAL(1.E-20) -> IFCREAL(2.5E+30)"});
    EXPECT_EQ(sValues("IFCLABEL('it''s')", "$"), std::vector<std::string>{sWhere + "IFCLABEL('it''s') -> $"});
}

TEST(DiffVerb, TextForPeople) {
    Statements after = base();
    after.erase(22);
    after[99] = "IFCMATERIAL('Elm',$,$)";
    after[21] = "IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'Wall \\X2\\00DC\\X0\\',$,$,#45,$,$,.SOLIDWALL.)";
    EXPECT_EQ(diff(sFile(base()), sFile(after), {"--entities"}).sOut,
              "removed  #22 IFCWALL 3X5rmEjoXQ$f8Sn8KSdx0i 'Wall C'\n"
              "added    #99 IFCMATERIAL('Elm',$,$)\n"
              "changed  #21 IFCWALL 2cp60asVrO3R4Q9IgcHKIk 'Wall \u00DC'\n"
              "         Name: 'Wall B' -> 'Wall \u00DC'\n"
              "1 removed, 1 added, 1 changed\n");
    EXPECT_EQ(diff(sFile(base()), sFile(base()), {}).sOut, "no difference\n");
}

TEST(DiffVerb, SchemasAreCompared) {
    const Statements both{{1, "IFCMATERIAL('Oak',$,$)"}};
    const ProgramRun run = diff(sFile(both), sFile({{1, "IFCMATERIAL('Oak')"}}, "IFC2X3"), {});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, "schema   IFC4 -> IFC2X3\n0 removed, 0 added, 0 changed\n");
    const Json value = diff(sFile(both), sFile({{1, "IFCMATERIAL('Oak')"}}, "IFC2X3")).json();
    EXPECT_EQ(value["schema"], (Json{{"old", "IFC4"}, {"new", "IFC2X3"}}));
    EXPECT_EQ(value["equal"], false);
}

TEST(DiffVerb, GlobalIdThatCouldNotBeReadIsNone) {
    const std::string sBad = sFile({{1, "IFCWALL('bad',$,'a',$,$,$,$,$,$)"}});
    const ProgramRun run = diff(sBad, sBad, {});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "no difference\n");
}

TEST(DiffVerb, ReferencesToNothingAreAlike) {
    const std::string sOld = sFile({{1, "IFCPOLYLINE((#98))"}});
    const ProgramRun same = diff(sOld, sFile({{1, "IFCPOLYLINE((#99))"}}));
    EXPECT_EQ(same.iCode, 0);
    EXPECT_EQ(same.json()["equal"], true);
    EXPECT_NE(same.sError.find("a.ifc: 1 error while reading; what could not be read is not compared\n"),
              std::string::npos)
        << same.sError;
    const ProgramRun other = diff(sOld, sFile({{1, "IFCPOLYLINE((#2))"}, {2, "IFCCARTESIANPOINT((0.))"}}));
    EXPECT_EQ(other.iCode, 1);
    EXPECT_EQ(other.json()["removed"][0]["content"], "IFCPOLYLINE(((an entity that is not in the file)))");
}

TEST(DiffVerb, WhatCannotBeCompared) {
    const TestFolder folder;
    const std::string sGood = folder.sFile("good.ifc", sFile(base()));
    const std::string sNoSchema = folder.sFile("schema.ifc", sExchangeFile("IFC99", ""));
    const struct {
        const char* pRule;
        std::vector<std::string> words;
        std::string sError;   // its beginning
    } rows[] = {
        {"no A", {(folder.path() / "missing.ifc").string(), sGood}, "oxaifc: "},
        {"no B", {sGood, (folder.path() / "missing.ifc").string()}, "oxaifc: "},
        {"an unknown schema", {sGood, sNoSchema}, "oxaifc: " + sNoSchema + ": not read to the end: "},
        {"one file", {sGood}, "oxaifc: diff: "},
        {"standard input twice", {"-", "-"}, "oxaifc: diff: A and B can't both be standard input\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        std::vector<std::string> words{"diff"};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const ProgramRun run = runProgram(words, "ISO-10303-21;");
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_TRUE(run.sError.starts_with(row.sError)) << run.sError;
    }
    EXPECT_NE(runProgram({"diff", "--help"}).sOut.find("Exit code: 0 equal, 1 different, 2 unreadable or wrong usage"),
              std::string::npos);
}

// Two storeys with walls and a door: types, sets that are shared, materials, a classification, a group.
Statements house() {
    Statements all = base();
    all[2] = "IFCBUILDINGSTOREY('0aaaaaaaaaaaaaaaaaaaa1',$,'EG',$,$,$,$,$,.ELEMENT.,0.)";
    all[3] = "IFCBUILDINGSTOREY('0aaaaaaaaaaaaaaaaaaaa2',$,'KG',$,$,$,$,$,.ELEMENT.,-3.)";
    all[4] = "IFCRELCONTAINEDINSPATIALSTRUCTURE('0aaaaaaaaaaaaaaaaaaaa3',$,$,$,(#20,#21),#2)";
    all[5] = "IFCRELCONTAINEDINSPATIALSTRUCTURE('0aaaaaaaaaaaaaaaaaaaa4',$,$,$,(#22),#3)";
    all[100] = "IFCWALLTYPE('0aaaaaaaaaaaaaaaaaaaa5',$,'T1',$,$,(#102),$,$,$,.SOLIDWALL.)";
    all[101] = "IFCRELDEFINESBYTYPE('0aaaaaaaaaaaaaaaaaaaa6',$,$,$,(#20,#22),#100)";
    all[102] = "IFCPROPERTYSET('0aaaaaaaaaaaaaaaaaaaa7',$,'OfType',$,(#103))";
    all[103] = "IFCPROPERTYSINGLEVALUE('Colour',$,IFCLABEL('red'),$)";
    all[104] = "IFCWALLTYPE('0aaaaaaaaaaaaaaaaaaaa8',$,'T2',$,$,$,$,$,$,.SOLIDWALL.)";
    all[110] = "IFCRELASSOCIATESMATERIAL('0aaaaaaaaaaaaaaaaaaaa9',$,$,$,(#20),#111)";
    all[111] = "IFCMATERIALLAYERSET((#112),'Set',$)";
    all[112] = "IFCMATERIALLAYER(#113,115.,$,$,$,$,$)";
    all[113] = "IFCMATERIAL('Brick',$,$)";
    all[120] = "IFCRELASSOCIATESCLASSIFICATION('0aaaaaaaaaaaaaaaaaaaaA',$,$,$,(#20),#121)";
    all[121] = "IFCCLASSIFICATIONREFERENCE($,'21.1','Walls',$,$,$)";
    all[130] = "IFCGROUP('0aaaaaaaaaaaaaaaaaaaaB',$,'Fire',$,$)";
    all[131] = "IFCRELASSIGNSTOGROUP('0aaaaaaaaaaaaaaaaaaaaC',$,$,$,(#20),$,#130)";
    all[140] = "IFCRELDEFINESBYPROPERTIES('0aaaaaaaaaaaaaaaaaaaaD',$,$,$,(#20),#141)";
    all[141] = "IFCELEMENTQUANTITY('0aaaaaaaaaaaaaaaaaaaaE',$,'Qto',$,$,(#142))";
    all[142] = "IFCQUANTITYLENGTH('Length',$,$,3000.,$)";
    return all;
}

struct ElementRow {
    const char* pRule;
    std::vector<std::pair<int, std::string>> edits;   // as those of ChangeRow
    std::string sLines;                               // without the last, which counts
};
std::vector<ElementRow> elementRows() {
    return {
        {"a property of two walls",
         {{32, "IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F90'),$)"}},
         "IfcWall 'Wall A'  Pset_WallCommon.FireRating: F30 -> F90\n"
         "IfcWall 'Wall B'  Pset_WallCommon.FireRating: F30 -> F90\n"},
        {"a property that comes, and one that goes",
         {{31, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'Pset_WallCommon',$,(#32,#99))"},
          {30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#20,#21),#31)"},
          {99, "IFCPROPERTYSINGLEVALUE('New',$,IFCBOOLEAN(.T.),$)"}},
         "IfcWall 'Wall A'  Pset_WallCommon.Width: 115 -> (none)\n"
         "IfcWall 'Wall A'  Pset_WallCommon.New: (none) -> true\n"
         "IfcWall 'Wall B'  Pset_WallCommon.Width: 115 -> (none)\n"
         "IfcWall 'Wall B'  Pset_WallCommon.New: (none) -> true\n"
         "added    #33 IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(115.),$)\n"},
        {"what is no value of a property",
         {{32, "IFCPROPERTYSINGLEVALUE('FireRating','d',IFCLABEL('F30'),$)"}},
         "IfcWall 'Wall A'  Pset_WallCommon.FireRating: IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F30'),$) -> "
         "IFCPROPERTYSINGLEVALUE('FireRating','d',IFCLABEL('F30'),$)\n"
         "IfcWall 'Wall B'  Pset_WallCommon.FireRating: IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F30'),$) -> "
         "IFCPROPERTYSINGLEVALUE('FireRating','d',IFCLABEL('F30'),$)\n"},
        {"a property of a type and of what has it",
         {{103, "IFCPROPERTYSINGLEVALUE('Colour',$,IFCLABEL('blue'),$)"}},
         "IfcWall 'Wall A'  OfType.Colour: red -> blue\nIfcWall 'Wall C'  OfType.Colour: red -> blue\n"
         "IfcWallType 'T1'  OfType.Colour: red -> blue\n"},
        {"a quantity",
         {{142, "IFCQUANTITYLENGTH('Length',$,$,3100.,$)"}},
         "IfcWall 'Wall A'  Qto.Length: 3000 -> 3100\n"},
        {"a wall that leaves a set",
         {{30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#20),#31)"}},
         "IfcWall 'Wall B'  Pset_WallCommon.FireRating: F30 -> (none)\n"
         "IfcWall 'Wall B'  Pset_WallCommon.Width: 115 -> (none)\n"},
        {"the storey",
         {{4, "IFCRELCONTAINEDINSPATIALSTRUCTURE('0aaaaaaaaaaaaaaaaaaaa3',$,$,$,(#21),#2)"},
          {5, "IFCRELCONTAINEDINSPATIALSTRUCTURE('0aaaaaaaaaaaaaaaaaaaa4',$,$,$,(#20,#22),#3)"}},
         "IfcWall 'Wall A'  storey: EG -> KG\n"},
        {"the type",
         {{101, "IFCRELDEFINESBYTYPE('0aaaaaaaaaaaaaaaaaaaa6',$,$,$,(#20),#100)"},
          {105, "IFCRELDEFINESBYTYPE('0aaaaaaaaaaaaaaaaaaaaF',$,$,$,(#22),#104)"}},
         "IfcWall 'Wall C'  type: T1 -> T2\nIfcWall 'Wall C'  OfType.Colour: red -> (none)\n"},
        {"the material",
         {{112, "IFCMATERIALLAYER(#113,240.,$,$,$,$,$)"}},
         "IfcWall 'Wall A'  material: Brick 115 -> Brick 240\n"},
        {"what of a material no text shows",
         {{113, "IFCMATERIAL('Brick','red',$)"}},
         "IfcWall 'Wall A'  material changed\n"
         "    RelatingMaterial.MaterialLayers[1].Material.Description: $ -> 'red'\n"},
        {"the classification",
         {{121, "IFCCLASSIFICATIONREFERENCE($,'21.2','Walls',$,$,$)"}},
         "IfcWall 'Wall A'  classification: 21.1 Walls -> 21.2 Walls\n"},
        {"the group",
         {{131, "IFCRELASSIGNSTOGROUP('0aaaaaaaaaaaaaaaaaaaaC',$,$,$,(#21),$,#130)"}},
         "IfcWall 'Wall A'  group: Fire -> (none)\nIfcWall 'Wall B'  group: (none) -> Fire\n"},
        {"attributes and the class",
         {{22, "IFCWALLSTANDARDCASE('3X5rmEjoXQ$f8Sn8KSdx0i',$,'New','d',$,$,$,$,$)"}},
         "IfcWallStandardCase 'New'  class: IfcWall -> IfcWallStandardCase\n"
         "IfcWallStandardCase 'New'  Name: Wall C -> New\nIfcWallStandardCase 'New'  Description: (none) -> d\n"},
        {"placement and geometry",
         {{47, "IFCCARTESIANPOINT((5.,0.,0.5))"}, {52, "IFCEXTRUDEDAREASOLID(#53,$,#54,2600.)"}},
         "IfcWall 'Wall A'  geometry changed\n    Representation.Representations[1].Items.Depth: 2500. -> 2600.\n"
         "IfcWall 'Wall B'  placement changed\n"
         "    ObjectPlacement.RelativePlacement.Location.Coordinates: (5.,0.,0.) -> (5.,0.,0.5)\n"},
        {"a wall that goes with what it had",
         {{22, ""}, {5, ""}, {101, "IFCRELDEFINESBYTYPE('0aaaaaaaaaaaaaaaaaaaa6',$,$,$,(#20),#100)"}},
         "removed  IfcWall 'Wall C'  storey: KG\n"},
        {"a door that comes",
         {{99, "IFCDOOR('0GBXQqFNTSPQ9PR7g3FFqm',$,$,$,$,$,$,$,$,$,$,$,$)"}},
         "added    IfcDoor 0GBXQqFNTSPQ9PR7g3FFqm\n"},
        {"what belongs to no element",
         {{70, "IFCMATERIAL('Elm',$,$)"}},
         "removed  #71 IFCMATERIAL('Oak',$,$)\nadded    #70 IFCMATERIAL('Elm',$,$)\n"},
        {"a relationship's own words",
         {{30, "IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,'n',$,(#20,#21),#31)"}},
         "changed  #30 IFCRELDEFINESBYPROPERTIES 0e_8SiFPnIEh3pPRu4cB6E 'n'\n         Name: $ -> 'n'\n"},
        {"a relationship that says the same twice",
         {{106, "IFCRELDEFINESBYTYPE('0aaaaaaaaaaaaaaaaaaaaF',$,$,$,(#20),#100)"}},
         "added    #106 IFCRELDEFINESBYTYPE 0aaaaaaaaaaaaaaaaaaaaF\n"},
    };
}

TEST(DiffVerb, TellsByElement) {
    for (const ElementRow& row : elementRows()) {
        SCOPED_TRACE(row.pRule);
        Statements after = house();
        for (const auto& [iNumber, sText] : row.edits)
            if (sText.empty())
                after.erase(iNumber);
            else
                after[iNumber] = sText;
        const ProgramRun run = diff(sFile(house()), sFile(after), {});
        EXPECT_EQ(run.iCode, 1);
        const std::size_t iLast = run.sOut.rfind('\n', run.sOut.size() - 2) + 1;
        EXPECT_EQ(run.sOut.substr(0, iLast), row.sLines);
        // Nothing is told by entity alone that the other form does not tell too, and nothing is lost.
        EXPECT_EQ(diff(sFile(house()), sFile(after), {"--entities"}).iCode, 1);
    }
    EXPECT_EQ(diff(sFile(house()), sFile(house()), {}).sOut, "no difference\n");
}

TEST(DiffVerb, EqualChangesOfManyAreOneLine) {
    const auto walls = [](int iCount, const char* pTag) {
        Statements all;
        for (int i = 1; i <= iCount; ++i)
            all[i] = "IFCWALL('2cp60asVrO3R4Q9Igc" + std::to_string(1000 + i) + "',$,'W" + std::to_string(i) +
                     "',$,$,$,$," + pTag + ",$)";
        return sFile(all);
    };
    EXPECT_EQ(diff(walls(3, "'a'"), walls(3, "'b'"), {}).sOut,
              "IfcWall 'W1'  Tag: a -> b\nIfcWall 'W2'  Tag: a -> b\nIfcWall 'W3'  Tag: a -> b\n"
              "0 removed, 0 added, 3 changed\n");
    EXPECT_EQ(diff(walls(4, "'a'"), walls(4, "'b'"), {}).sOut,
              "IfcWall (4)  Tag: a -> b\n0 removed, 0 added, 4 changed\n");
    EXPECT_EQ(diff(walls(4, "$"), walls(30, "$"), {}).sOut, "added    IfcWall (26)\n0 removed, 26 added, 0 changed\n");
    const std::string sAll = diff(walls(4, "'a'"), walls(4, "'b'"), {"--all"}).sOut;
    EXPECT_EQ(std::count(sAll.begin(), sAll.end(), '\n'), 5);
}

TEST(DiffVerb, OnlyTellsOfWhatIsSelectedInEither) {
    Statements after = house();
    after[32] = "IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F90'),$)";
    after[22] = "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall X',$,$,$,$,$,$)";
    after[99] = "IFCMATERIAL('Elm',$,$)";
    const auto only = [&](const char* pQuery) { return diff(sFile(house()), sFile(after), {"--only", pQuery}); };
    EXPECT_EQ(only("Name=Wall A").sOut,
              "IfcWall 'Wall A'  Pset_WallCommon.FireRating: F30 -> F90\n0 removed, 0 added, 1 changed\n");
    EXPECT_EQ(only("Name=Wall C").sOut, only("Name=Wall X").sOut);
    EXPECT_EQ(only("Name=Wall X").iCode, 1);
    EXPECT_EQ(only("IfcBuildingStorey").sOut, "no difference\n");
    EXPECT_EQ(only("IfcBuildingStorey").iCode, 0);
    const std::pair<const char*, const char*> faults[] = {
        {"IfcWal", "oxaifc: diff: --only, column 1: IFC4 has no entity type IfcWal; did you mean"},
        {"IfcWall,", "oxaifc: diff: --only, column 9: a name is expected\n"},
    };
    for (const auto& [pQuery, pError] : faults) {
        EXPECT_EQ(only(pQuery).iCode, 2);
        EXPECT_EQ(only(pQuery).sError.find(pError), 0U) << only(pQuery).sError;
    }
}

TEST(DiffVerb, TableHasARowForEachChange) {
    Statements after = house();
    after[20] = "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'=1+1, \"x\"',$,$,#40,#50,'tag',$)";
    after[22] = "";
    after.erase(22);
    after.erase(5);
    after[101] = "IFCRELDEFINESBYTYPE('0aaaaaaaaaaaaaaaaaaaa6',$,$,$,(#20),#100)";
    after[99] = "IFCMATERIAL('Elm',$,$)";
    EXPECT_EQ(
        diff(sFile(house()), sFile(after), {"--csv"}).sOut,
        "change,class,GlobalId,name,storey,what,old,new,oldId,newId,details\r\n"
        "removed,IfcWall,3X5rmEjoXQ$f8Sn8KSdx0i,Wall C,KG,,,,22,,\r\n"
        "changed,IfcWall,1CCJ9i1$jSdgYVC2yzHPtC,\"'=1+1, \"\"x\"\"\",EG,Name,Wall A,\"'=1+1, \"\"x\"\"\",20,20,\r\n"
        "added,IFCMATERIAL,,\"IFCMATERIAL('Elm',$,$)\",,,,,,99,\r\n");
}

TEST(DiffVerb, JsonHasTheElements) {
    Statements after = house();
    after[52] = "IFCEXTRUDEDAREASOLID(#53,$,#54,2600.)";
    const Json value = diff(sFile(house()), sFile(after)).json();
    EXPECT_EQ(value["elements"],
              Json::parse(
                  "[{\"change\":\"changed\",\"id\":20,\"type\":\"IfcWall\",\"globalId\":\"1CCJ9i1$jSdgYVC2yzHPtC\","
                  "\"name\":\"Wall A\",\"storey\":\"EG\",\"oldId\":20,\"changes\":[{\"what\":\"geometry\",\"old\":null,"
                  "\"new\":null,\"values\":[{\"attribute\":\"Representation.Representations[1].Items.Depth\","
                  "\"old\":\"2500.\",\"new\":\"2600.\"}]}]}]"));
    EXPECT_FALSE(diff(sFile(house()), sFile(after), {"--json", "--entities"}).json().contains("elements"));
}

TEST(DiffVerb, PageIsOneFileWithARowForEachChange) {
    Statements after = house();
    after[20] = "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'<script>',$,$,#40,#50,'tag',$)";
    const TestFolder folder;
    const std::string sPath = (folder.path() / "page.html").string();
    const ProgramRun run = diff(sFile(house()), sFile(after), {"--html", sPath});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, "IfcWall '<script>'  Name: Wall A -> <script>\n0 removed, 0 added, 1 changed\n");
    const std::string sPage = sContent(sPath);
    EXPECT_NE(sPage.find("<tr class=\"changed\"><td>changed</td><td>IfcWall</td><td>&lt;script&gt;</td><td>EG</td>"
                         "<td>Name</td><td>Wall A</td><td>&lt;script&gt;</td><td><code>1CCJ9i1$jSdgYVC2yzHPtC</code>"),
              std::string::npos)
        << sPage;
    EXPECT_NE(sPage.find("<p class=\"verdict\" id=\"verdict\">0 removed, 0 added, 1 changed</p>"), std::string::npos);
    EXPECT_EQ(sPage.find("<!--"), std::string::npos) << "a mark that nothing took the place of";
    EXPECT_EQ(sPage.find("http://"), std::string::npos);
    EXPECT_EQ(sPage.find("https://"), std::string::npos);
    EXPECT_EQ(diff(sFile(house()), sFile(after), {"--html", "-"}).sOut.find("<!DOCTYPE html>"), 0U);
    const std::string sIn = folder.sFile("in.ifc", sFile(house()));
    EXPECT_EQ(runProgram({"diff", sIn, sIn, "--html", sIn}).sError, "oxaifc: " + sIn + ": is a file that is read\n");
    EXPECT_EQ(sContent(sIn), sFile(house()));
}

}   // namespace
}   // namespace oxa::test
