// SPDX-License-Identifier: Apache-2.0
// "oxaifc diff" by element: what changed of a wall, told at the wall, whatever entities that is kept in.

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"
#include "tools/verbs/DiffModels.h"

namespace oxa::test {
namespace {

// Two storeys with walls and a door: types, sets that are shared, materials, a classification, a group.
Statements house() {
    Statements all = baseModel();
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
    std::vector<std::pair<int, std::string>> edits;   // a new text for a number, an empty one takes it away
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

TEST(DiffVerbElements, TellsByElement) {
    for (const ElementRow& row : elementRows()) {
        SCOPED_TRACE(row.pRule);
        Statements after = house();
        for (const auto& [iNumber, sText] : row.edits)
            if (sText.empty())
                after.erase(iNumber);
            else
                after[iNumber] = sText;
        const ProgramRun run = diffModels(sModelFile(house()), sModelFile(after), {});
        EXPECT_EQ(run.iCode, 1);
        const std::size_t iLast = run.sOut.rfind('\n', run.sOut.size() - 2) + 1;
        EXPECT_EQ(run.sOut.substr(0, iLast), row.sLines);
        // Nothing is told by entity alone that the other form does not tell too, and nothing is lost.
        EXPECT_EQ(diffModels(sModelFile(house()), sModelFile(after), {"--entities"}).iCode, 1);
    }
    EXPECT_EQ(diffModels(sModelFile(house()), sModelFile(house()), {}).sOut, "no difference\n");
}

TEST(DiffVerbElements, EqualChangesOfManyAreOneLine) {
    const auto walls = [](int iCount, const char* pTag) {
        Statements all;
        for (int i = 1; i <= iCount; ++i)
            all[i] = "IFCWALL('2cp60asVrO3R4Q9Igc" + std::to_string(1000 + i) + "',$,'W" + std::to_string(i) +
                     "',$,$,$,$," + pTag + ",$)";
        return sModelFile(all);
    };
    EXPECT_EQ(diffModels(walls(3, "'a'"), walls(3, "'b'"), {}).sOut,
              "IfcWall 'W1'  Tag: a -> b\nIfcWall 'W2'  Tag: a -> b\nIfcWall 'W3'  Tag: a -> b\n"
              "0 removed, 0 added, 3 changed\n");
    EXPECT_EQ(diffModels(walls(4, "'a'"), walls(4, "'b'"), {}).sOut,
              "IfcWall (4)  Tag: a -> b\n0 removed, 0 added, 4 changed\n");
    EXPECT_EQ(diffModels(walls(4, "$"), walls(30, "$"), {}).sOut,
              "added    IfcWall (26)\n0 removed, 26 added, 0 changed\n");
    const std::string sAll = diffModels(walls(4, "'a'"), walls(4, "'b'"), {"--all"}).sOut;
    EXPECT_EQ(std::count(sAll.begin(), sAll.end(), '\n'), 5);
}

TEST(DiffVerbElements, OnlyTellsOfWhatIsSelectedInEither) {
    Statements after = house();
    after[32] = "IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F90'),$)";
    after[22] = "IFCWALL('3X5rmEjoXQ$f8Sn8KSdx0i',$,'Wall X',$,$,$,$,$,$)";
    after[99] = "IFCMATERIAL('Elm',$,$)";
    const auto only = [&](const char* pQuery) {
        return diffModels(sModelFile(house()), sModelFile(after), {"--only", pQuery});
    };
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

TEST(DiffVerbElements, TableHasARowForEachChange) {
    Statements after = house();
    after[20] = "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'=1+1, \"x\"',$,$,#40,#50,'tag',$)";
    after[22] = "";
    after.erase(22);
    after.erase(5);
    after[101] = "IFCRELDEFINESBYTYPE('0aaaaaaaaaaaaaaaaaaaa6',$,$,$,(#20),#100)";
    after[99] = "IFCMATERIAL('Elm',$,$)";
    EXPECT_EQ(
        diffModels(sModelFile(house()), sModelFile(after), {"--csv"}).sOut,
        "change,class,GlobalId,name,storey,what,old,new,oldId,newId,details\r\n"
        "removed,IfcWall,3X5rmEjoXQ$f8Sn8KSdx0i,Wall C,KG,,,,22,,\r\n"
        "changed,IfcWall,1CCJ9i1$jSdgYVC2yzHPtC,\"'=1+1, \"\"x\"\"\",EG,Name,Wall A,\"'=1+1, \"\"x\"\"\",20,20,\r\n"
        "added,IFCMATERIAL,,\"IFCMATERIAL('Elm',$,$)\",,,,,,99,\r\n");
}

TEST(DiffVerbElements, JsonHasTheElements) {
    Statements after = house();
    after[52] = "IFCEXTRUDEDAREASOLID(#53,$,#54,2600.)";
    const Json value = diffModels(sModelFile(house()), sModelFile(after)).json();
    EXPECT_EQ(value["elements"],
              Json::parse(
                  "[{\"change\":\"changed\",\"id\":20,\"type\":\"IfcWall\",\"globalId\":\"1CCJ9i1$jSdgYVC2yzHPtC\","
                  "\"name\":\"Wall A\",\"storey\":\"EG\",\"oldId\":20,\"changes\":[{\"what\":\"geometry\",\"old\":null,"
                  "\"new\":null,\"values\":[{\"attribute\":\"Representation.Representations[1].Items.Depth\","
                  "\"old\":\"2500.\",\"new\":\"2600.\"}]}]}]"));
    EXPECT_FALSE(
        diffModels(sModelFile(house()), sModelFile(after), {"--json", "--entities"}).json().contains("elements"));
}

TEST(DiffVerbElements, PageIsOneFileWithARowForEachChange) {
    Statements after = house();
    after[20] = "IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'<script>',$,$,#40,#50,'tag',$)";
    const TestFolder folder;
    const std::string sPath = (folder.path() / "page.html").string();
    const ProgramRun run = diffModels(sModelFile(house()), sModelFile(after), {"--html", sPath});
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
    EXPECT_EQ(diffModels(sModelFile(house()), sModelFile(after), {"--html", "-"}).sOut.find("<!DOCTYPE html>"), 0U);
    const std::string sIn = folder.sFile("in.ifc", sModelFile(house()));
    EXPECT_EQ(runProgram({"diff", sIn, sIn, "--html", sIn}).sError, "oxaifc: " + sIn + ": is a file that is read\n");
    EXPECT_EQ(sContent(sIn), sModelFile(house()));
}

}   // namespace
}   // namespace oxa::test
