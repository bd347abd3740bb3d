// SPDX-License-Identifier: Apache-2.0
// "oxaifc tree": the spatial structure, and what stands in it.

#include <gtest/gtest.h>

#include <utility>

#include "tools/ProgramRun.h"
#include "tools/verbs/ProjectParts.h"

namespace oxa::test {
namespace {

// The same statements in IFC2X3 and IFC4; the last storey is below nothing.
std::string sTreeFile(std::string_view schema) {
    return sExchangeFile(
        schema, std::string(g_projectParts) +
                    "#1=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',#90,'P',$,$,$,$,(#95),#98);\n"
                    "#2=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',#90,'House',$,$,$,$,$,.ELEMENT.,$,$,$);\n"
                    "#3=IFCBUILDINGSTOREY('1XxWclp6bOHAdQixVqmAPd',#90,'EG',$,$,$,$,$,.ELEMENT.,0.);\n"
                    "#4=IFCSPACE('2cp60asVrO3R4Q9IgcHKIk',#90,'Room',$,$,$,$,$,.ELEMENT.,.INTERNAL.,$);\n"
                    "#5=IFCBUILDINGSTOREY('3X5rmEjoXQ$f8Sn8KSdx0i',#90,$,$,$,$,$,$,.ELEMENT.,3.);\n"
                    "#6=IFCRELAGGREGATES('3nNn8jl1HPHQax1GFvA9Cn',#90,$,$,#1,(#2));\n"
                    "#7=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',#90,$,$,#2,(#3));\n"
                    "#8=IFCRELAGGREGATES('2B9GpOvIXSZvKXLVEsl2pe',#90,$,$,#3,(#4));\n"
                    "#9=IFCRELCONTAINEDINSPATIALSTRUCTURE('3Q2KuEDczSmQAFmYKnklVN',#90,$,$,(#10,#11,#12),#3);\n"
                    "#10=IFCSLAB('0qltlX545U7f6hmhHOJBDu',#90,'S',$,$,$,$,$,$);\n"
                    "#11=IFCDOOR('28ORztRAzL4xGwAknWjIBd',#90,'D1',$,$,$,$,$,2.,1.);\n"
                    "#12=IFCDOOR('3b01k1tpLOY8zJzkIrixtC',#90,$,$,$,$,$,$,2.,1.);\n");
}

struct TreeTextRow {
    std::vector<std::string> words;
    const char* pOut;
};
const TreeTextRow g_texts[] = {
    {{},
     "#1 IfcProject P\n"
     "  #2 IfcBuilding House\n"
     "    #3 IfcBuildingStorey EG\n"
     "      #10 IfcSlab S\n"
     "      #11 IfcDoor D1\n"
     "      #12 IfcDoor\n"
     "      #4 IfcSpace Room\n"
     "#5 IfcBuildingStorey\n"},
    {{"--counts"},
     "#1 IfcProject P\n"
     "  #2 IfcBuilding House\n"
     "    #3 IfcBuildingStorey EG\n"
     "      2 IfcDoor\n"
     "      1 IfcSlab\n"
     "      #4 IfcSpace Room\n"
     "#5 IfcBuildingStorey\n"},
};

TEST(TreeVerb, Text) {
    for (const char* pSchema : {"IFC2X3", "IFC4", "IFC4X3_ADD2"})
        for (const TreeTextRow& row : g_texts) {
            std::vector<std::string> words{"tree", "-"};
            words.insert(words.end(), row.words.begin(), row.words.end());
            const ProgramRun run = runProgram(words, sTreeFile(pSchema));
            EXPECT_EQ(run.iCode, 0);
            EXPECT_EQ(run.sOut, row.pOut);
            EXPECT_EQ(run.sError, "");
        }
}

TEST(TreeVerb, Json) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"tree", "-", "--json"},
         R"([{"id":10,"type":"IfcSlab","name":"S"},{"id":11,"type":"IfcDoor","name":"D1"},)"
         R"({"id":12,"type":"IfcDoor","name":null}])"},
        {{"tree", "-", "--json", "--counts"}, R"({"IfcDoor":2,"IfcSlab":1})"},
    };
    for (const auto& [words, pElements] : rows) {
        const bool boCounts = words.size() == 4;
        const std::string sNone = boCounts ? "{}" : "[]";
        const std::string sRoom =
            R"({"id":4,"type":"IfcSpace","name":"Room","elements":)" + sNone + R"(,"children":[]})";
        const std::string sStorey = R"({"id":3,"type":"IfcBuildingStorey","name":"EG","elements":)" +
                                    std::string(pElements) + R"(,"children":[)" + sRoom + "]}";
        const std::string sHouse =
            R"({"id":2,"type":"IfcBuilding","name":"House","elements":)" + sNone + R"(,"children":[)" + sStorey + "]}";
        const std::string sAll = R"([{"id":1,"type":"IfcProject","name":"P","elements":)" + sNone + R"(,"children":[)" +
                                 sHouse + R"(]},{"id":5,"type":"IfcBuildingStorey","name":null,"elements":)" + sNone +
                                 R"(,"children":[]}])";
        const ProgramRun run = runProgram(words, sTreeFile("IFC4"));
        EXPECT_EQ(run.json(), Json::parse(sAll)) << run.sOut;
    }
}

// A wall of its own, a door in nothing that fills nothing, and a window in a wall that stands in a storey.
TEST(TreeVerb, ElementsOutsideAreTold) {
    const std::string sFile = sTreeFile("IFC4");
    const std::string sMore = "#20=IFCWALL('2QWI79ePzLcPoq72xK$sRF',#90,'W',$,$,$,$,$,$);\n"
                              "#21=IFCDOOR('0eJbDTRADPtPogG4_sR1YD',#90,$,$,$,$,$,$,2.,1.,$,$,$);\n"
                              "#22=IFCELEMENTASSEMBLY('0LCUVxNqjTy8Rgrnt1cats',#90,$,$,$,$,$,$,$,$);\n"
                              "#23=IFCRELAGGREGATES('0GBXQqFNTSPQ9PR7g3FFqm',#90,$,$,#10,(#22));\n";
    std::string sText = sFile;
    sText.insert(sText.find("ENDSEC;\nEND-"), sMore);
    const ProgramRun tree = runProgram({"tree", "-", "--counts"}, sText);
    EXPECT_EQ(tree.sOut, g_texts[1].pOut);
    EXPECT_EQ(tree.sError, "oxaifc: 2 elements stand in no spatial element; --outside lists them\n");
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{}, "#20 IfcWall W\n#21 IfcDoor\n"},
        {{"--counts"}, "1 IfcDoor\n1 IfcWall\n"},
    };
    for (const auto& [words, pOut] : rows) {
        std::vector<std::string> call{"tree", "-", "--outside"};
        call.insert(call.end(), words.begin(), words.end());
        const ProgramRun run = runProgram(call, sText);
        EXPECT_EQ(run.sOut, pOut);
        EXPECT_EQ(run.sError, "");
    }
    EXPECT_EQ(runProgram({"tree", "-", "--outside", "--json"}, sText).json(),
              Json::parse(R"([{"id":20,"type":"IfcWall","name":"W"},{"id":21,"type":"IfcDoor","name":null}])"));
    EXPECT_EQ(runProgram({"tree", "-", "--outside", "--json", "--counts"}, sText).json(),
              Json::parse(R"({"IfcDoor":1,"IfcWall":1})"));
}

TEST(TreeVerb, CircleAndDepthEnd) {
    const ProgramRun circle = runProgram(
        {"tree", "-"}, sExchangeFile("IFC4", "#1=IFCSPACE('0YvctVUKr0kugbFTf53O9L',$,$,$,$,$,$,$,$,$,$);\n"
                                             "#2=IFCSPACE('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,$,$,$);\n"
                                             "#3=IFCRELAGGREGATES('3nNn8jl1HPHQax1GFvA9Cn',$,$,$,#1,(#2));\n"
                                             "#4=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',$,$,$,#2,(#1));\n"));
    EXPECT_EQ(circle.iCode, 0);
    EXPECT_EQ(circle.sOut, "#1 IfcSpace\n  #2 IfcSpace\n");
    std::string sDeep;
    for (int i = 1; i <= 102; ++i) {
        sDeep += "#" + std::to_string(i) + "=IFCSPACE($,$,$,$,$,$,$,$,$,$,$);\n";
        sDeep += "#" + std::to_string(i + 1000) + "=IFCRELAGGREGATES($,$,$,$,#" + std::to_string(i) + ",(#" +
                 std::to_string(i + 1) + "));\n";
    }
    const ProgramRun deep = runProgram({"tree", "-", "--counts"}, sExchangeFile("IFC4", sDeep));
    EXPECT_NE(deep.sOut.find(std::string(198, ' ') + "#100 IfcSpace\n"), std::string::npos) << deep.sOut;
    EXPECT_NE(deep.sError.find("oxaifc: 1 part deeper than 100 levels left out\n"), std::string::npos) << deep.sError;
}

TEST(TreeVerb, House) {
    const ProgramRun run = runProgram({"tree", sExample("house-ifc4.ifc"), "--counts"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sOut, "#301 IfcProject Haus am Hügel\n"
                        "  #306 IfcSite Grundstück 12/3\n"
                        "    #309 IfcBuilding Οικία Α\n"
                        "      #313 IfcBuildingStorey Kellergeschoß\n"
                        "        1 IfcSlab\n"
                        "        4 IfcWall\n"
                        "      #315 IfcBuildingStorey Erdgeschoss 一階\n"
                        "        2 IfcDoor\n"
                        "        1 IfcSlab\n"
                        "        5 IfcWall\n"
                        "        2 IfcWindow\n"
                        "        #1110 IfcSpace 101\n"
                        "        #1120 IfcSpace 102\n"
                        "      #319 IfcBuildingStorey Dachgeschoss 🏠\n"
                        "        1 IfcRoof\n"
                        "        1 IfcSlab\n"
                        "        2 IfcWall\n"
                        "        1 IfcWindow\n");
}

}   // namespace
}   // namespace oxa::test
