// SPDX-License-Identifier: Apache-2.0
// Parts of a model that are whole exchange structures.

#include "Convert/Excerpt.h"

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "HouseModel.h"
#include "Model/Selector.h"

namespace oxa::convert {
namespace {

using test::elementModel;
using test::g_pHouse;
using test::sStatements;
using Numbers = std::set<int>;

Elements select(const Model& model, const char* pQuery) { return Selector(pQuery).select(model).elements; }

Numbers numbersIn(const std::string& sText) {
    Numbers numbers;
    std::istringstream lines(sText);
    for (std::string sLine; std::getline(lines, sLine);) numbers.insert(std::stoi(sLine.substr(1)));
    return numbers;
}

// What the excerpt writes; nothing of it may name what is not in it.
std::string sShown(Model& model, const Excerpts& excerpts, const Excerpt& excerpt) {
    const ShownExcerpt shown = excerpts.show(excerpt);
    const std::string sText = sStatements(model.core().dataBase());
    std::ostringstream saved;
    static_cast<void>(model.save(saved, {.threads = 1}));
    EXPECT_NE(saved.str().find("DATA;\n" + sText + "ENDSEC;"), std::string::npos) << saved.str();
    const Numbers numbers = numbersIn(sText);
    EXPECT_EQ(numbers.size(), excerpt.size());
    for (std::size_t i = sText.find('#'); i != std::string::npos; i = sText.find('#', i + 1))
        EXPECT_TRUE(numbers.contains(std::stoi(sText.substr(i + 1)))) << sText.substr(i, 10);
    return sText;
}

// The line of a number; empty where there is none.
std::string sLine(const std::string& sText, int iNumber) {
    const std::string sBegin = "#" + std::to_string(iNumber) + "=";
    std::istringstream lines(sText);
    for (std::string sOne; std::getline(lines, sOne);)
        if (sOne.starts_with(sBegin)) return sOne;
    return {};
}

// Project, units and contexts.
const Numbers g_frame{1, 2, 3, 4, 5, 6, 7};
Numbers with(Numbers numbers) {
    numbers.insert(g_frame.begin(), g_frame.end());
    return numbers;
}

struct ExcerptRow {
    const char* pRule;
    const char* pQuery;
    Numbers kept;
};

TEST(Excerpt, HasWhatIsNeededAndWhatIsAbove) {
    // clang-format off
    const ExcerptRow rows[] = {
        {"a storey with what it contains, without the other", "IfcBuildingStorey, Name=EG",
         with({10, 11, 12, 14, 15, 16, 17, 20, 21, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43,
               60, 61, 62, 63, 64, 65, 66, 67, 68, 70})},
        {"a wall with its opening and the door in that", "Name=W1",
         with({10, 11, 12, 14, 15, 16, 17, 20, 21, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43,
               60, 61, 62, 63, 64, 65, 66, 67, 68, 70})},
        {"a door without its wall, whose placement stays", "IfcDoor",
         with({10, 11, 12, 14, 15, 16, 17, 20, 21, 32, 35, 36, 67, 68})},
        {"both walls with what connects them", "IfcWall",
         with({10, 11, 12, 13, 14, 15, 16, 17, 18, 20, 21, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43,
               50, 51, 52, 53, 60, 61, 62, 63, 64, 65, 66, 67, 68, 69, 70})},
        {"a group with its members", "IfcGroup",
         with({10, 11, 12, 13, 14, 15, 16, 17, 18, 20, 21, 32, 35, 36, 50, 51, 52, 53, 60, 61, 62, 63, 64, 65, 66,
               67, 68, 70})},
        {"a type without its walls", "IfcWallType", with({64, 65, 66})},
        {"an element in no storey", "IfcFurniture", with({80})},
        {"something outside of the tree", "#81", with({81})},
    };
    // clang-format on
    for (const char* pSchema : {"IFC4", "IFC4X3_ADD2"}) {
        Model model = elementModel(g_pHouse, pSchema);
        const std::string sWhole = sStatements(model.core().dataBase());
        ASSERT_TRUE(model.whole());
        const Excerpts excerpts(model);
        for (const ExcerptRow& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row.pRule);
            const Excerpt excerpt = excerpts.of(select(model, row.pQuery));
            EXPECT_EQ(numbersIn(sShown(model, excerpts, excerpt)), row.kept);
            EXPECT_EQ(sStatements(model.core().dataBase()), sWhole);   // as before
        }
    }
}

TEST(Excerpt, RelationshipsAreCut) {
    Model model = elementModel(g_pHouse);
    const Excerpts excerpts(model);
    const std::string sText = sShown(model, excerpts, excerpts.of(select(model, "IfcBuildingStorey, Name=EG")));
    EXPECT_EQ(sLine(sText, 16), "#16=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA16',$,$,$,#11,(#12));");
    EXPECT_EQ(sLine(sText, 17), "#17=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA17',$,$,$,(#30,#32),#12);");
    EXPECT_EQ(sLine(sText, 60), "#60=IFCRELDEFINESBYPROPERTIES('0AAAAAAAAAAAAAAAAAAA60',$,$,$,(#30),#61);");
    EXPECT_EQ(sLine(sText, 63), "#63=IFCRELDEFINESBYTYPE('0AAAAAAAAAAAAAAAAAAA63',$,$,$,(#30),#64);");
    EXPECT_EQ(sLine(sText, 67), "#67=IFCRELASSIGNSTOGROUP('0AAAAAAAAAAAAAAAAAAA67',$,$,$,(#32),$,#68);");
    EXPECT_EQ(sLine(sText, 69), "");
    EXPECT_EQ(sLine(sText, 70), "#70=IFCPRESENTATIONLAYERASSIGNMENT('L',$,(#38),$);");
}

TEST(Excerpt, TheWallAboveADoorKeepsItsOpenings) {
    std::string sText = g_pHouse;
    // The door stands in no storey by itself.
    sText.replace(sText.find("(#30,#32),#12"), 13, "(#30),#12");
    Model model = elementModel(sText);
    const Excerpts excerpts(model);
    const Numbers kept = numbersIn(sShown(model, excerpts, excerpts.of(select(model, "IfcDoor"))));
    for (const int iNumber : {12, 17, 30, 31, 32, 33, 34}) EXPECT_TRUE(kept.contains(iNumber)) << iNumber;
    EXPECT_FALSE(kept.contains(50));
}

TEST(Excerpt, TheRestHasWhatNoOtherHas) {
    Model model = elementModel(g_pHouse);
    const Excerpts excerpts(model);
    std::vector<Excerpt> parts;
    parts.push_back(excerpts.of(select(model, "IfcBuildingStorey, Name=EG")));
    parts.push_back(excerpts.of(select(model, "IfcBuildingStorey, Name=OG")));
    const std::string sText = sShown(model, excerpts, excerpts.rest(parts));
    const Numbers rest = numbersIn(sText);
    for (const int iNumber : {80, 81, 69, 30, 50}) EXPECT_TRUE(rest.contains(iNumber)) << iNumber;
    parts.push_back(excerpts.rest(parts));
    EXPECT_EQ(excerpts.rest(parts).size(), 0U);
    EXPECT_EQ(excerpts.rest(std::vector<Excerpt>{excerpts.rest({})}).size(), 0U);
    EXPECT_EQ(excerpts.rest({}).size(), model.size());
}

TEST(Excerpt, ElementOfAnotherModelIsAMistake) {
    Model model = elementModel(g_pHouse);
    const Model other = elementModel(g_pHouse);
    const Excerpts excerpts(model);
    EXPECT_THROW(static_cast<void>(excerpts.of(select(other, "IfcWall"))), HandleError);
    EXPECT_EQ(excerpts.of(Elements()).size(), g_frame.size());
}

// An optional end that is not kept has no value; the two boundaries of one wall face name each other.
TEST(Excerpt, OptionalEndsAreLeftOut) {
    Model model = elementModel(
        std::string(g_pHouse) +
        "#90=IFCSPACE('0AAAAAAAAAAAAAAAAAAA90',$,'S1',$,$,$,$,$,$,$,$);\n"
        "#91=IFCSPACE('0AAAAAAAAAAAAAAAAAAA91',$,'S2',$,$,$,$,$,$,$,$);\n"
        "#92=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA92',$,$,$,#12,(#90));\n"
        "#93=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA93',$,$,$,#13,(#91));\n"
        "#94=IFCRELSPACEBOUNDARY2NDLEVEL('0AAAAAAAAAAAAAAAAAAA94',$,$,$,#90,#30,$,.PHYSICAL.,.INTERNAL.,$,#95);\n"
        "#95=IFCRELSPACEBOUNDARY2NDLEVEL('0AAAAAAAAAAAAAAAAAAA95',$,$,$,#91,#50,$,.PHYSICAL.,.INTERNAL.,$,#94);\n");
    const Excerpts excerpts(model);
    std::vector<Excerpt> parts;
    parts.push_back(excerpts.of(select(model, "IfcBuildingStorey, Name=EG")));
    EXPECT_EQ(sLine(sShown(model, excerpts, parts[0]), 94),
              "#94=IFCRELSPACEBOUNDARY2NDLEVEL('0AAAAAAAAAAAAAAAAAAA94',$,$,$,#90,#30,$,.PHYSICAL.,.INTERNAL.,$,$);");
    parts.push_back(excerpts.of(select(model, "IfcBuildingStorey, Name=OG")));
    const std::string sRest = sShown(model, excerpts, excerpts.rest(parts));
    EXPECT_EQ(sLine(sRest, 94),
              "#94=IFCRELSPACEBOUNDARY2NDLEVEL('0AAAAAAAAAAAAAAAAAAA94',$,$,$,#90,#30,$,.PHYSICAL.,.INTERNAL.,$,#95);");
}

}   // namespace
}   // namespace oxa::convert
