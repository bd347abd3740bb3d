// SPDX-License-Identifier: Apache-2.0
// A model brought to another schema, and what had no place there.

#include "Convert/SchemaMove.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "StatementModel.h"
#include "provider/SchemaLoader.h"

namespace oxa::convert {
namespace {

using test::sStatements;
using test::StatementModel;

std::vector<std::string> lines(const std::vector<SchemaMove::Row>& rows) {
    std::vector<std::string> lines;
    for (const SchemaMove::Row& row : rows)
        lines.push_back(row.sType + '.' + row.sAttribute + ' ' + std::to_string(row.iCount));
    return lines;
}

struct MoveRow {
    const char* pRule;
    const char* pFrom;
    const char* pTo;
    std::string sBefore;
    std::string sAfter;
    std::vector<std::string> removed, became, lost, missing;
};

TEST(SchemaMove, MovesByNameAndTellsTheRest) {
    using Texts = std::vector<std::string>;
    // clang-format off
    const MoveRow rows[] = {
        {"what both have", "IFC4", "IFC4X3_ADD2", "#1=IFCCARTESIANPOINT((0.,1.));\n",
         "#1=IFCCARTESIANPOINT((0.,1.));\n",
         {}, {}, {}, {}},
        {"an attribute more there", "IFC2X3", "IFC4", "#1=IFCMATERIAL('Oak');\n", "#1=IFCMATERIAL('Oak',$,$);\n",
         {}, {}, {}, {}},
        {"an attribute less there", "IFC4", "IFC2X3", "#1=IFCMATERIAL('Oak','d',$);\n", "#1=IFCMATERIAL('Oak');\n", {},
         {}, Texts{"IFCMATERIAL.Description 1"}, {}},
        {"no such type, no supertype", "IFC4", "IFC2X3",
         "#1=IFCCARTESIANPOINTLIST2D(((1.,2.),(3.,4.)));\n#2=IFCCARTESIANPOINT((1.,2.));\n",
         "#2=IFCCARTESIANPOINT((1.,2.));\n", Texts{"IFCCARTESIANPOINTLIST2D. 1"}, {}, {}, {}},
        {"the same schema", "IFC4", "IFC4", "#1=IFCMATERIAL('Oak','d',$);\n", "#1=IFCMATERIAL('Oak','d',$);\n", {}, {},
         {}, {}},
    };
    // clang-format on
    for (const MoveRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        StatementModel model(row.sBefore, row.pFrom);
        const SchemaMove move = moveToSchema(model.file, *ifc::SchemaLoader::pBuiltIn(row.pTo));
        EXPECT_EQ(sStatements(model.data()), row.sAfter);
        EXPECT_EQ(model.file.header().sSchemaNameGet(), row.pTo);
        EXPECT_EQ(lines(move.removed), row.removed);
        EXPECT_EQ(lines(move.became), row.became);
        EXPECT_EQ(lines(move.lost), row.lost);
        EXPECT_EQ(lines(move.missing), row.missing);
        EXPECT_EQ(move.boLossless(), row.removed.empty() && row.became.empty() && row.lost.empty());
    }
}

TEST(SchemaMove, NearestSupertypeTakesTheEntity) {
    StatementModel model("#1=IFCBEAMSTANDARDCASE('1CCJ9i1$jSdgYVC2yzHPtC',$,'B',$,$,$,$,$,.BEAM.);\n");
    const SchemaMove move = moveToSchema(model.file, *ifc::SchemaLoader::pBuiltIn("IFC4X3_ADD2"));
    EXPECT_EQ(lines(move.became), std::vector<std::string>{"IFCBEAMSTANDARDCASE.IFCBEAM 1"});
    EXPECT_EQ(sStatements(model.data()), "#1=IFCBEAM('1CCJ9i1$jSdgYVC2yzHPtC',$,'B',$,$,$,$,$,.BEAM.);\n");
    EXPECT_FALSE(move.boLossless());
}

TEST(SchemaMove, EntitiesStayWhereTheyAre) {
    StatementModel model("#1=IFCPOLYLINE((#2,#3));\n#2=IFCCARTESIANPOINT((1.,1.));\n#3=IFCCARTESIANPOINT((2.,1.));\n");
    const ifc::Entity* const pLine = &model.entity(1);
    (void)moveToSchema(model.file, *ifc::SchemaLoader::pBuiltIn("IFC2X3"));
    EXPECT_EQ(&model.entity(1), pLine);
    EXPECT_EQ(model.data().pSchema(), ifc::SchemaLoader::pBuiltIn("IFC2X3"));
}

TEST(SchemaMove, ModelWithoutASchemaStaysAsItIs) {
    ifc::File file;
    EXPECT_TRUE(moveToSchema(file, *ifc::SchemaLoader::pBuiltIn("IFC4")).boLossless());
    EXPECT_EQ(file.data().pSchema(), nullptr);
}

}   // namespace
}   // namespace oxa::convert
