// SPDX-License-Identifier: Apache-2.0
// Models merged: what is one afterwards, what is refused.

#include "Convert/Merge.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Compare/Compare.h"
#include "Convert/Excerpt.h"
#include "HouseModel.h"
#include "Model/Relations.h"
#include "Model/Selector.h"

namespace oxa::convert {
namespace {

using test::elementModel;
using test::g_pHouse;
using test::sStatements;

std::string sOf(Model& model) { return sStatements(model.core().dataBase()); }

std::string sReplaced(std::string sText, const std::string& sOld, const std::string& sNew) {
    const std::size_t i = sText.find(sOld);
    EXPECT_NE(i, std::string::npos) << sOld;
    return i == std::string::npos ? sText : sText.replace(i, sOld.size(), sNew);
}

std::vector<std::string> differences(Model& a, Model& b) {
    const compare::Result result =
        compare::differences({a.core().dataBase(), "x", {}}, {b.core().dataBase(), "x", {}}, {});
    std::vector<std::string> all;
    for (const auto& one : result.removed) all.push_back("removed " + one.sType + " " + one.sText);
    for (const auto& one : result.added) all.push_back("added " + one.sType + " " + one.sText);
    for (const auto& one : result.changed)
        all.push_back("changed " + one.before.sType + " " + one.differences.front().sAttribute);
    return all;
}

// Inverse lists as a read of the same statements has them.
void vExpectInverse(Model& model) {
    std::ostringstream saved;
    static_cast<void>(model.save(saved, {.threads = 1}));
    Model again = Model::fromBuffer(saved.str(), {.threads = 1});
    ASSERT_EQ(again.size(), model.size());
    for (const Element element : again.all()) {
        const Element here = model.byId(element.id());
        ASSERT_TRUE(here) << element.id();
        EXPECT_EQ(parts(here).size(), parts(element).size()) << element.id();
        EXPECT_EQ(contents(here).size(), contents(element).size()) << element.id();
        EXPECT_EQ(psets(here).size(), psets(element).size()) << element.id();
        EXPECT_EQ(parent(here) ? parent(here).id() : 0, parent(element) ? parent(element).id() : 0);
    }
}

const std::string g_sBoundaries =
    "#90=IFCSPACE('0AAAAAAAAAAAAAAAAAAA90',$,'S1',$,$,$,$,$,$,$,$);\n"
    "#91=IFCSPACE('0AAAAAAAAAAAAAAAAAAA91',$,'S2',$,$,$,$,$,$,$,$);\n"
    "#92=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA92',$,$,$,#12,(#90));\n"
    "#93=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA93',$,$,$,#13,(#91));\n"
    "#94=IFCRELSPACEBOUNDARY2NDLEVEL('0AAAAAAAAAAAAAAAAAAA94',$,$,$,#90,#30,$,.PHYSICAL.,.INTERNAL.,$,#95);\n"
    "#95=IFCRELSPACEBOUNDARY2NDLEVEL('0AAAAAAAAAAAAAAAAAAA95',$,$,$,#91,#50,$,.PHYSICAL.,.INTERNAL.,$,#94);\n";

TEST(Merge, PartsOfAModelAreTheModelAgain) {
    for (const std::string& sText : {std::string(g_pHouse), g_pHouse + g_sBoundaries}) {
        Model whole = elementModel(sText);
        const Excerpts excerpts(whole);
        std::vector<Excerpt> parts;
        for (const Element storey : whole.all("IfcBuildingStorey")) parts.push_back(excerpts.of(std::vector{storey}));
        parts.push_back(excerpts.rest(parts));
        std::vector<std::string> texts;
        for (const Excerpt& part : parts) {
            const ShownExcerpt shown = excerpts.show(part);
            texts.push_back(sOf(whole));
        }
        // In any order.
        for (std::size_t iFirst = 0; iFirst < texts.size(); ++iFirst) {
            Model model = elementModel(texts[iFirst]);
            Merger merger(model);
            for (std::size_t i = 1; i < texts.size(); ++i) {
                Model part = elementModel(texts[(iFirst + i) % texts.size()]);
                const Merged merged = merger.add(part);
                EXPECT_TRUE(merged.done);
                EXPECT_TRUE(merged.conflicts.empty());
                EXPECT_TRUE(merged.differing.empty());
            }
            EXPECT_EQ(differences(whole, model), std::vector<std::string>());
            EXPECT_EQ(model.size(), whole.size());
            vExpectInverse(model);
        }
    }
}

TEST(Merge, AModelAndItselfAreOne) {
    Model model = elementModel(g_pHouse);
    const std::string sBefore = sOf(model);
    Model again = elementModel(g_pHouse);
    const Merged merged = Merger(model).add(again);
    EXPECT_TRUE(merged.done);
    EXPECT_EQ(merged.added, 0U);
    EXPECT_EQ(merged.joined, 5U);
    EXPECT_EQ(sOf(model), sBefore);
    EXPECT_EQ(sOf(again), sBefore);
}

const char* const g_pFirst = "#1=IFCPROJECT('0AAAAAAAAAAAAAAAAAAA01',$,'P',$,$,$,$,(#3),#2);\n"
                             "#2=IFCUNITASSIGNMENT((#5));\n"
                             "#3=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,#7,$);\n"
                             "#5=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                             "#6=IFCCARTESIANPOINT((0.,0.,0.));\n"
                             "#7=IFCAXIS2PLACEMENT3D(#6,$,$);\n"
                             "#10=IFCBUILDING('0AAAAAAAAAAAAAAAAAAA10',$,'B',$,$,$,$,$,$,$,$,$);\n"
                             "#11=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA11',$,$,$,#1,(#10));\n"
                             "#20=IFCWALL('0AAAAAAAAAAAAAAAAAAA20',$,'W1',$,$,$,$,$,$);\n"
                             "#21=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA21',$,$,$,(#20),#10);\n";
// Another project with the same building, a context of equal content under another number and one of its own.
const char* const g_pSecond = "#1=IFCPROJECT('0BAAAAAAAAAAAAAAAAAA01',$,'P',$,$,$,$,(#13,#14),#12);\n"
                              "#12=IFCUNITASSIGNMENT((#15,#16));\n"
                              "#13=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,#17,$);\n"
                              "#14=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',2,$,#17,$);\n"
                              "#15=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                              "#16=IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.);\n"
                              "#18=IFCCARTESIANPOINT((0.,0.,0.));\n"
                              "#17=IFCAXIS2PLACEMENT3D(#18,$,$);\n"
                              "#10=IFCBUILDING('0AAAAAAAAAAAAAAAAAAA10',$,'B',$,$,$,$,$,$,$,$,$);\n"
                              "#11=IFCRELAGGREGATES('0BAAAAAAAAAAAAAAAAAA11',$,$,$,#1,(#10));\n"
                              "#20=IFCWALL('0BAAAAAAAAAAAAAAAAAA20',$,'W2',$,$,$,#30,$,$);\n"
                              "#21=IFCRELCONTAINEDINSPATIALSTRUCTURE('0BAAAAAAAAAAAAAAAAAA21',$,$,$,(#20),#10);\n"
                              "#30=IFCPRODUCTDEFINITIONSHAPE($,$,(#31));\n"
                              "#31=IFCSHAPEREPRESENTATION(#13,'Body','Brep',(#32));\n"
                              "#32=IFCBLOCK(#17,1.,2.,3.);\n";

TEST(Merge, JoinsWhatIsOneByGlobalId) {
    Model model = elementModel(g_pFirst);
    Model other = elementModel(g_pSecond);
    const Merged merged = Merger(model).add(other);
    ASSERT_TRUE(merged.done);
    EXPECT_EQ(merged.joined, 2U);
    EXPECT_EQ(sOf(model), "#1=IFCPROJECT('0AAAAAAAAAAAAAAAAAAA01',$,'P',$,$,$,$,(#3,#22),#2);\n"
                          "#2=IFCUNITASSIGNMENT((#5,#23));\n"
                          "#3=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,#7,$);\n"
                          "#5=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                          "#6=IFCCARTESIANPOINT((0.,0.,0.));\n"
                          "#7=IFCAXIS2PLACEMENT3D(#6,$,$);\n"
                          "#10=IFCBUILDING('0AAAAAAAAAAAAAAAAAAA10',$,'B',$,$,$,$,$,$,$,$,$);\n"
                          "#11=IFCRELAGGREGATES('0AAAAAAAAAAAAAAAAAAA11',$,$,$,#1,(#10));\n"
                          "#20=IFCWALL('0AAAAAAAAAAAAAAAAAAA20',$,'W1',$,$,$,$,$,$);\n"
                          "#21=IFCRELCONTAINEDINSPATIALSTRUCTURE('0AAAAAAAAAAAAAAAAAAA21',$,$,$,(#20,#24),#10);\n"
                          "#22=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',2,$,#7,$);\n"
                          "#23=IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.);\n"
                          "#24=IFCWALL('0BAAAAAAAAAAAAAAAAAA20',$,'W2',$,$,$,#25,$,$);\n"
                          "#25=IFCPRODUCTDEFINITIONSHAPE($,$,(#26));\n"
                          "#26=IFCSHAPEREPRESENTATION(#3,'Body','Brep',(#27));\n"
                          "#27=IFCBLOCK(#7,1.,2.,3.);\n");
    vExpectInverse(model);
}

TEST(Merge, JoinsByName) {
    const std::string sOther = sReplaced(g_pSecond, "'0AAAAAAAAAAAAAAAAAAA10'", "'0BAAAAAAAAAAAAAAAAAA10'");
    struct Row {
        Join join;
        std::size_t iJoined;
        std::size_t iBuildings;
    };
    for (const Row& row : {Row{Join::Guid, 1, 2}, Row{Join::Name, 2, 1}, Row{Join::None, 1, 2}}) {
        Model model = elementModel(g_pFirst);
        Model other = elementModel(sOther);
        const Merged merged = Merger(model).add(other, {.join = row.join});
        EXPECT_TRUE(merged.done);
        EXPECT_EQ(merged.joined, row.iJoined);
        EXPECT_EQ(model.all("IfcBuilding").size(), row.iBuildings);
        // One relationship has the buildings of the project, and one a building what it contains.
        EXPECT_EQ(model.all("IfcRelAggregates").size(), 1U);
        EXPECT_EQ(model.all("IfcRelContainedInSpatialStructure").size(), row.iBuildings);
        EXPECT_EQ(parts(model.all("IfcProject").front()).size(), row.iBuildings);
        vExpectInverse(model);
    }
}

TEST(Merge, OtherContentUnderOneGlobalIdIsAConflict) {
    const std::string sOther = sReplaced(g_pFirst, "'W1'", "'W9'");
    Model model = elementModel(g_pFirst);
    Model other = elementModel(sOther);
    const Merged failed = Merger(model).add(other);
    EXPECT_FALSE(failed.done);
    ASSERT_EQ(failed.conflicts.size(), 1U);
    EXPECT_EQ(failed.conflicts[0].guid, "0AAAAAAAAAAAAAAAAAAA20");
    EXPECT_EQ(failed.conflicts[0].type, "IfcWall");
    EXPECT_EQ(failed.conflicts[0].first, 20U);
    EXPECT_EQ(failed.conflicts[0].second, 20U);
    EXPECT_EQ(sOf(model), g_pFirst);
    const Merged kept = Merger(model).add(other, {.same = Same::KeepFirst});
    EXPECT_TRUE(kept.done);
    EXPECT_EQ(kept.conflicts.size(), 1U);
    EXPECT_EQ(sOf(model), g_pFirst);
    // A building that differs is joined, and told.
    Model building = elementModel(sReplaced(g_pFirst, "'B'", "'C'"));
    const Merged joined = Merger(model).add(building);
    EXPECT_TRUE(joined.done);
    ASSERT_EQ(joined.differing.size(), 1U);
    EXPECT_EQ(joined.differing[0].type, "IfcBuilding");
    EXPECT_EQ(sOf(model), g_pFirst);
}

// Shapes of one content and number are one only where nothing tells them apart.
TEST(Merge, StylesStayWithTheirShapes) {
    const auto styled = [](const char* pGuid, const char* pColour) {
        return std::string("#1=IFCWALL('") + pGuid +
               "',$,$,$,$,$,#2,$,$);\n#2=IFCPRODUCTDEFINITIONSHAPE($,$,(#3));\n"
               "#3=IFCSHAPEREPRESENTATION(#9,'Body','Brep',(#4));\n#4=IFCBLOCK(#7,1.,2.,3.);\n"
               "#5=IFCSTYLEDITEM(#4,(#6),$);\n#6=IFCSURFACESTYLE('" +
               pColour +
               "',.BOTH.,());\n#7=IFCAXIS2PLACEMENT3D(#8,$,$);\n#8=IFCCARTESIANPOINT((0.,0.,0.));\n"
               "#9=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,#7,$);\n";
    };
    Model model = elementModel(styled("0AAAAAAAAAAAAAAAAAAA01", "red"));
    Model other = elementModel(styled("0AAAAAAAAAAAAAAAAAAA02", "blue"));
    EXPECT_TRUE(Merger(model).add(other).done);
    EXPECT_EQ(model.all("IfcStyledItem").size(), 2U);
    ASSERT_EQ(model.all("IfcBlock").size(), 2U);
    for (const Element block : model.all("IfcBlock")) EXPECT_EQ(block.inverse("StyledByItem").size(), 1U);
    EXPECT_EQ(model.all("IfcGeometricRepresentationContext").size(), 1U);
}

struct RefuseRow {
    const char* pRule;
    const char* pUnit;
    const char* pError;
};

TEST(Merge, OtherUnitsAndSchemasAreRefused) {
    // clang-format off
    const RefuseRow rows[] = {
        {"another prefix", "#5=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n", "LENGTHUNIT is millimetre in the first and metre in the other"},
        {"a unit of conversion", "#5=IFCCONVERSIONBASEDUNIT(#80,.LENGTHUNIT.,'FOOT',#81);\n#80=IFCDIMENSIONALEXPONENTS(1,0,0,0,0,0,0);\n#81=IFCMEASUREWITHUNIT(IFCRATIOMEASURE(0.3048),#82);\n#82=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n",
         "LENGTHUNIT is millimetre in the first and FOOT in the other"},
        {"the same by another way", "#5=IFCCONVERSIONBASEDUNIT(#80,.LENGTHUNIT.,'MM',#81);\n#80=IFCDIMENSIONALEXPONENTS(1,0,0,0,0,0,0);\n#81=IFCMEASUREWITHUNIT(IFCRATIOMEASURE(0.001),#82);\n#82=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n", ""},
    };
    // clang-format on
    for (const RefuseRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        Model model = elementModel(g_pFirst);
        Model other = elementModel(sReplaced(g_pFirst, "#5=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n", row.pUnit));
        std::string sError;
        try {
            EXPECT_TRUE(Merger(model).add(other).done);
        } catch (const MergeError& error) {
            sError = error.what();
        }
        EXPECT_EQ(sError, row.pError);
        if (!sError.empty()) {
            EXPECT_EQ(sOf(model), g_pFirst);
        }
    }
    Model model = elementModel(g_pFirst);
    Model other = elementModel("#1=IFCPERSON($,$,$,$,$,$,$,$);\n", "IFC2X3");
    EXPECT_THROW(Merger(model).add(other), MergeError);
}

}   // namespace
}   // namespace oxa::convert
