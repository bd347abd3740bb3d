// SPDX-License-Identifier: Apache-2.0
// "oxaifc diff": every change made to a model is told, and nothing else.

#include <algorithm>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"
#include "tools/verbs/DiffModels.h"

namespace oxa::test {
namespace {

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
        Statements statements = baseModel();
        for (const auto& [iNumber, sText] : row.edits)
            if (sText.empty())
                statements.erase(iNumber);
            else
                statements[iNumber] = sText;
        const auto all = told(diffModels(sModelFile(baseModel()), sModelFile(statements)));
        EXPECT_EQ(std::multiset<std::string>(all.begin(), all.end()),
                  std::multiset<std::string>(row.told.begin(), row.told.end()));
        // The way back tells the same with the sides exchanged.
        EXPECT_EQ(told(diffModels(sModelFile(statements), sModelFile(baseModel()))).size(), all.size());
    }
}

TEST(DiffVerb, SharedPointIsToldWhereverItLeads) {
    Statements statements = baseModel();
    statements[42] = "IFCCARTESIANPOINT((1.,0.,0.))";
    const std::string sChange = ".Location.Coordinates: (0.,0.,0.) -> (1.,0.,0.)";
    const auto all = told(diffModels(sModelFile(baseModel()), sModelFile(statements)));
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
    for (const auto& [iNumber, sText] : baseModel()) {
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
        const ProgramRun run = diffModels(sModelFile(baseModel()), sModelFile(renumbered), {"--json", pThreads});
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
        const Json value = diffModels(joined(lines), joined(changed)).json();
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
        const Json value = diffModels(joined(lines), joined(changed)).json();
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
        EXPECT_EQ(told(diffModels(sModelFile(row.before), sModelFile(row.after)), true), row.told);
    }
    Statements many;
    for (int i = 1; i <= 20000; ++i) many[i] = sWall(std::to_string(i).c_str());
    Statements more = many;
    more[7] = sWall("seven");
    EXPECT_EQ(told(diffModels(sModelFile(many), sModelFile(more)), true),
              std::vector<std::string>{"~ #7 Name: '7' -> 'seven'"});
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
    EXPECT_EQ(told(diffModels(sModelFile(two), sModelFile(two))), std::vector<std::string>{});
    EXPECT_EQ(told(diffModels(sModelFile(two), sModelFile(turned))), std::vector<std::string>{});
    EXPECT_EQ(told(diffModels(sModelFile(two), sModelFile(other))).size(), 4U) << "each of them goes and comes";
    EXPECT_EQ(told(diffModels(sModelFile(two), sModelFile(self))).size(), 3U);
    EXPECT_EQ(told(diffModels(sModelFile(two), sModelFile(twice))).size(), 2U) << "of each content there is one more";

    const auto withSet = [](Statements statements, int iProperty) {
        statements[20] = "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#" + std::to_string(iProperty) + "))";
        return sModelFile(statements);
    };
    EXPECT_EQ(told(diffModels(withSet(two, 1), withSet(turned, 9))), std::vector<std::string>{});
    EXPECT_EQ(told(diffModels(withSet(two, 1), withSet(twice, 3))), std::vector<std::string>{})
        << "once or twice round";
    EXPECT_EQ(told(diffModels(withSet(two, 1), withSet(other, 1))),
              std::vector<std::string>{"~ #20 HasProperties.HasProperties.Name: 'b' -> 'c'"});
}

TEST(DiffVerb, LongWaysEnd) {
    constexpr int g_iLong = 50000;
    const auto chain = [&](const char* pLast) {
        Statements statements{{g_iLong, std::string("IFCPROPERTYSINGLEVALUE('") + pLast + "',$,$,$)"},
                              {g_iLong + 1, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#1))"}};
        for (int i = 1; i < g_iLong; ++i)
            statements[i] = "IFCCOMPLEXPROPERTY('p',$,'u',(#" + std::to_string(i + 1) + "))";
        return sModelFile(statements);
    };
    EXPECT_EQ(told(diffModels(chain("a"), chain("a"))), std::vector<std::string>{});
    const std::vector<std::string> all = told(diffModels(chain("a"), chain("b")));
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
        return sModelFile(statements);
    };
    std::string sPath = "ObjectPlacement";
    for (int i = 1; i < 60; ++i) sPath += ".PlacementRelTo";
    EXPECT_EQ(
        told(diffModels(chain("1."), chain("2.")), true),
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
    const Json value = diffModels(sModelFile(before), sModelFile(after)).json();
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
    EXPECT_EQ(told(diffModels(sThree, sOne)),
              (std::vector<std::string>{"- #7 IFCMATERIAL('a',$,$)", "- #9 IFCMATERIAL('a',$,$)"}));
    EXPECT_EQ(told(diffModels(sOne, sThree)),
              (std::vector<std::string>{"+ #7 IFCMATERIAL('a',$,$)", "+ #9 IFCMATERIAL('a',$,$)"}));
}

// What refers to a changed shape is told with that; what refers to something else than before is told itself.
TEST(DiffVerb, ReferrersAreToldWhereTheyThemselvesChanged) {
    Statements before = baseModel();
    before[62] = "IFCPRESENTATIONLAYERASSIGNMENT('L',$,(#51,#54),$)";
    before[63] = "IFCSTYLEDITEM(#42,(#61),'p')";
    const auto aboutBoth = [](const std::vector<std::string>& all) {
        return std::count_if(all.begin(), all.end(),
                             [](const std::string& sLine) { return sLine.find(" #6") != std::string::npos; });
    };
    Statements shape = before;
    shape[52] = "IFCEXTRUDEDAREASOLID(#53,$,#54,2600.)";
    const std::vector<std::string> one = told(diffModels(sModelFile(before), sModelFile(shape)));
    EXPECT_EQ(one, std::vector<std::string>{"~ #20 Representation.Representations[1].Items.Depth: 2500. -> 2600."});
    Statements other = before;
    other[63] = "IFCSTYLEDITEM(#47,(#61),'p')";
    EXPECT_EQ(told(diffModels(sModelFile(before), sModelFile(other))).size(), 2U);
    Statements added = before;
    added[22] = "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall C',$,$,#81,$,$,$)";
    added[81] = "IFCLOCALPLACEMENT($,#82)";
    added[82] = "IFCAXIS2PLACEMENT3D(#83,$,$)";
    added[83] = "IFCCARTESIANPOINT((9.,9.,9.))";
    added[63] = "IFCSTYLEDITEM(#83,(#61),'p')";
    EXPECT_EQ(aboutBoth(told(diffModels(sModelFile(before), sModelFile(added)))), 2);
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
    const std::vector<std::string> all = told(diffModels(sModelFile(before), sModelFile(after)));
    ASSERT_EQ(all.size(), 101U);
    EXPECT_EQ(all[0], "~ #9000 Description: 'old' -> 'new'");
    EXPECT_EQ(all[1], "~ #9000 HasProperties[].NominalValue: IFCLABEL('a') -> IFCLABEL('b')");
    EXPECT_TRUE(all[100].ends_with(" and more"));
}

TEST(DiffVerb, LongTextsAreCutAroundTheDifference) {
    const std::string sLong(3000, 'x');
    const auto sWall = [](const std::string& sName) {
        return sModelFile({{1, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'" + sName + "',$,$,$,$,$,$)"}});
    };
    const ProgramRun json = diffModels(sWall(sLong + "old" + sLong), sWall(sLong + "new" + sLong));
    EXPECT_EQ(told(json),
              std::vector<std::string>{"~ #1 Name: ..." + std::string(500, 'x') + "old" + std::string(497, 'x') +
                                       "... -> ..." + std::string(500, 'x') + "new" + std::string(497, 'x') + "..."});
    const ProgramRun text = diffModels(sWall(sLong + "old" + sLong), sWall(sLong), {"--entities"});
    EXPECT_NE(text.sOut.find("Name: ..." + std::string(50, 'x') + "old" + std::string(47, 'x') + "... -> ..." +
                             std::string(50, 'x') + "'\n"),
              std::string::npos)
        << text.sOut;
}

TEST(DiffVerb, TextsOfAHundredBytesStayWhole) {
    const auto sNames = [](const std::string& sOld, const std::string& sNew) {
        const auto sWall = [](const std::string& sName) {
            return sModelFile({{1, "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'" + sName + "',$,$,$,$,$,$)"}});
        };
        const std::string sOut = diffModels(sWall(sOld), sWall(sNew), {"--entities"}).sOut;
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
            return sModelFile({{1, "IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#2))"},
                               {2, "IFCPROPERTYSINGLEVALUE('a',$," + sValue + ",$)"}});
        };
        return told(diffModels(sOf(pOld), sOf(pNew)));
    };
    const std::string sWhere = "~ #1 HasProperties.NominalValue: ";
    EXPECT_EQ(sValues("IFCLOGICAL(.U.)", "IFCLOGICAL(.T.)"),
              std::vector<std::string>{sWhere + "IFCLOGICAL(.U.) -> IFCLOGICAL(.T.)"});
    EXPECT_EQ(sValues("IFCREAL(1.E-20)", "IFCREAL(2.5E30)"),
              std::vector<std::string>{sWhere + "IFCREAL(1.E-20) -> IFCREAL(2.5E+30)"});
    EXPECT_EQ(sValues("IFCLABEL('it''s')", "$"), std::vector<std::string>{sWhere + "IFCLABEL('it''s') -> $"});
}

TEST(DiffVerb, TextForPeople) {
    Statements after = baseModel();
    after.erase(22);
    after[99] = "IFCMATERIAL('Elm',$,$)";
    after[21] = "IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'Wall \\X2\\00DC\\X0\\',$,$,#45,$,$,.SOLIDWALL.)";
    EXPECT_EQ(diffModels(sModelFile(baseModel()), sModelFile(after), {"--entities"}).sOut,
              "removed  #22 IFCWALL 3X5rmEjoXQ$f8Sn8KSdx0i 'Wall C'\n"
              "added    #99 IFCMATERIAL('Elm',$,$)\n"
              "changed  #21 IFCWALL 2cp60asVrO3R4Q9IgcHKIk 'Wall \u00DC'\n"
              "         Name: 'Wall B' -> 'Wall \u00DC'\n"
              "1 removed, 1 added, 1 changed\n");
    EXPECT_EQ(diffModels(sModelFile(baseModel()), sModelFile(baseModel()), {}).sOut, "no difference\n");
}

TEST(DiffVerb, SchemasAreCompared) {
    const Statements both{{1, "IFCMATERIAL('Oak',$,$)"}};
    const ProgramRun run = diffModels(sModelFile(both), sModelFile({{1, "IFCMATERIAL('Oak')"}}, "IFC2X3"), {});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, "schema   IFC4 -> IFC2X3\n0 removed, 0 added, 0 changed\n");
    const Json value = diffModels(sModelFile(both), sModelFile({{1, "IFCMATERIAL('Oak')"}}, "IFC2X3")).json();
    EXPECT_EQ(value["schema"], (Json{{"old", "IFC4"}, {"new", "IFC2X3"}}));
    EXPECT_EQ(value["equal"], false);
}

TEST(DiffVerb, GlobalIdThatCouldNotBeReadIsNone) {
    const std::string sBad = sModelFile({{1, "IFCWALL('bad',$,'a',$,$,$,$,$,$)"}});
    const ProgramRun run = diffModels(sBad, sBad, {});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "no difference\n");
}

TEST(DiffVerb, ReferencesToNothingAreAlike) {
    const std::string sOld = sModelFile({{1, "IFCPOLYLINE((#98))"}});
    const ProgramRun same = diffModels(sOld, sModelFile({{1, "IFCPOLYLINE((#99))"}}));
    EXPECT_EQ(same.iCode, 0);
    EXPECT_EQ(same.json()["equal"], true);
    EXPECT_NE(same.sError.find("a.ifc: 1 error while reading; what could not be read is not compared\n"),
              std::string::npos)
        << same.sError;
    const ProgramRun other = diffModels(sOld, sModelFile({{1, "IFCPOLYLINE((#2))"}, {2, "IFCCARTESIANPOINT((0.))"}}));
    EXPECT_EQ(other.iCode, 1);
    EXPECT_EQ(other.json()["removed"][0]["content"], "IFCPOLYLINE(((an entity that is not in the file)))");
}

TEST(DiffVerb, WhatCannotBeCompared) {
    const TestFolder folder;
    const std::string sGood = folder.sFile("good.ifc", sModelFile(baseModel()));
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

}   // namespace
}   // namespace oxa::test
