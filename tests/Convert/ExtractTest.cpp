// SPDX-License-Identifier: Apache-2.0
// A part of a model as a model of its own.

#include "Convert/Extract.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

#include "StatementModel.h"

namespace oxa::convert {
namespace {

using test::sStatements;
using test::StatementModel;

// A wall with its placement and its properties; a list of lists; an entity that nothing leads to.
constexpr const char* g_pModel = "#10=IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'A',$,$,#40,$,'tag',.SOLIDWALL.);\n"
                                 "#30=IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#10),#31);\n"
                                 "#31=IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#32));\n"
                                 "#32=IFCPROPERTYSINGLEVALUE('Fire',$,IFCLABEL('F30'),$);\n"
                                 "#40=IFCLOCALPLACEMENT($,#41);\n"
                                 "#41=IFCAXIS2PLACEMENT3D(#42,$,$);\n"
                                 "#42=IFCCARTESIANPOINT((0.,1.5,-2.));\n"
                                 "#50=IFCBSPLINESURFACEWITHKNOTS(1,1,((#42,#51),(#51,#42)),.UNSPECIFIED.,.F.,.F.,.U.,"
                                 "(2,2),(2,2),(0.,1.),(0.,1.),.UNSPECIFIED.);\n"
                                 "#51=IFCCARTESIANPOINT((3.,4.,5.));\n"
                                 "#70=IFCMATERIAL('Oak',$,$);\n"
                                 "#80=IFCPROPERTYSINGLEVALUE('p',$,IFCLABEL('x'),#81);\n"
                                 "#81=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                                 "#82=IFCUNITASSIGNMENT((#81));\n";

struct ExtractRow {
    const char* pRule;
    std::size_t iRoot;
    std::set<std::size_t> reached;
};

TEST(Extract, ReachesOverReferencesAndInverseLists) {
    // clang-format off
    const ExtractRow rows[] = {
        {"over an inverse list, and on from there", 10, {10, 30, 31, 32, 40, 41, 42}},
        {"from a property set back to the wall", 31, {10, 30, 31, 32, 40, 41, 42}},
        {"nothing leads back from a placement's point", 42, {42}},
        {"an entity on its own", 70, {70}},
        {"over a select", 80, {80, 81}},
        {"over a list of selects", 82, {81, 82}},
        {"over rows", 50, {42, 50, 51}},
    };
    // clang-format on
    StatementModel model(g_pModel);
    for (const ExtractRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        const std::vector<const ifc::Entity*> found = reached(model.entity(row.iRoot));
        ASSERT_FALSE(found.empty());
        EXPECT_EQ(found.front(), &model.entity(row.iRoot));
        std::set<std::size_t> numbers;
        for (const ifc::Entity* pEntity : found) numbers.insert(model.data().iIdFromEntity(*pEntity));
        EXPECT_EQ(numbers, row.reached);
        EXPECT_EQ(numbers.size(), found.size());
    }
}

TEST(Extract, CopiesHaveTheOrderOfTheNumbers) {
    StatementModel model(g_pModel);
    ifc::File target;
    const Extracted result = extract(model.data(), model.entity(10), target);
    EXPECT_EQ(result.iLost, 0U);
    EXPECT_EQ(result.copies.size(), 7U);
    EXPECT_EQ(target.data().entities().size(), 7U);
    EXPECT_EQ(target.data().pSchema(), model.data().pSchema());
    EXPECT_EQ(target.header().sSchemaNameGet(), "IFC4");
    EXPECT_EQ(sStatements(target.data()), "#1=IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'A',$,$,#5,$,'tag',.SOLIDWALL.);\n"
                                          "#2=IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#1),#3);\n"
                                          "#3=IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'P',$,(#4));\n"
                                          "#4=IFCPROPERTYSINGLEVALUE('Fire',$,IFCLABEL('F30'),$);\n"
                                          "#5=IFCLOCALPLACEMENT($,#6);\n"
                                          "#6=IFCAXIS2PLACEMENT3D(#7,$,$);\n"
                                          "#7=IFCCARTESIANPOINT((0.,1.5,-2.));\n");
    // The copies' own inverse lists: from the property set back to all.
    EXPECT_EQ(reached(*result.copies[2]).size(), 7U);
    Guid guid;
    ASSERT_TRUE(result.copies[0]->boValueGet(ifc::def::schema::AttributeName("GlobalId"), guid));
    EXPECT_EQ(target.data().pEntityFromGuid(guid), result.copies[0]);
}

TEST(Extract, OutlivesItsSource) {
    ifc::File target;
    {
        StatementModel model(g_pModel);
        (void)extract(model.data(), model.entity(50), target);
    }
    EXPECT_EQ(
        sStatements(target.data()),
        "#1=IFCCARTESIANPOINT((0.,1.5,-2.));\n"
        "#2=IFCBSPLINESURFACEWITHKNOTS(1,1,((#1,#3),(#3,#1)),.UNSPECIFIED.,.F.,.F.,.U.,(2,2),(2,2),(0.,1.),(0.,1.),"
        ".UNSPECIFIED.);\n"
        "#3=IFCCARTESIANPOINT((3.,4.,5.));\n");
}

TEST(Extract, TargetKeepsWhatItHas) {
    StatementModel model(g_pModel);
    StatementModel target("#1=IFCMATERIAL('Elm',$,$);\n");
    ASSERT_TRUE(target.data().boNumbersAbove());
    const Extracted result = extract(model.data(), model.entity(70), target.file);
    EXPECT_EQ(result.copies.size(), 1U);
    EXPECT_EQ(sStatements(target.data()), "#1=IFCMATERIAL('Elm',$,$);\n#2=IFCMATERIAL('Oak',$,$);\n");
}

TEST(Extract, WhatIsNotDefinedIsLost) {
    StatementModel model("#1=IFCPOLYLINE((#2,#3));\n#2=IFCCARTESIANPOINT((1.,1.));\n");
    ifc::File target;
    const Extracted result = extract(model.data(), model.entity(1), target);
    EXPECT_EQ(result.iLost, 1U);
    EXPECT_EQ(sStatements(target.data()), "#1=IFCPOLYLINE((#2));\n#2=IFCCARTESIANPOINT((1.,1.));\n");
}

TEST(Extract, TargetOfAnotherSchemaStaysAsItWas) {
    StatementModel model(g_pModel);
    StatementModel target("", "IFC2X3");
    EXPECT_TRUE(extract(model.data(), model.entity(10), target.file).copies.empty());
    EXPECT_TRUE(target.data().entities().empty());
}

}   // namespace
}   // namespace oxa::convert
