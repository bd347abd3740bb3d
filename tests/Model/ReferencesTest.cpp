// SPDX-License-Identifier: Apache-2.0
// What elements name and who names them, by any attribute; attributes by their place.
#include <cstdint>
#include <string>
#include <vector>

#include "Model/ModelText.h"
#include "Model/References.h"

namespace oxa::test {

namespace {

constexpr const char* g_pStatements =
    "#1=IFCCARTESIANPOINT((0.,0.));\n"
    "#2=IFCCARTESIANPOINT((1.,0.));\n"
    "#3=IFCPOLYLINE((#1,#2,#1));\n"
    "#4=IFCSTYLEDITEM(#3,(),$);\n"
    "#6=IFCMATERIAL('M',$,$);\n"
    "#7=IFCRELASSOCIATESMATERIAL('0YvctVUKr0kugbFTf53O9L',$,$,$,(#9),#6);\n"
    "#8=IFCPROPERTYREFERENCEVALUE('R',$,$,#6);\n"
    "#9=IFCWALL('1YvctVUKr0kugbFTf53O9L',$,'W',$,$,#99,$,$,$);\n"
    "#10=IFCBSPLINESURFACEWITHKNOTS(1,1,((#1,#2),(#2,#1)),.UNSPECIFIED.,.F.,.F.,.F.,(2,2),(2,2),(0.,1.),(0.,1.),"
    ".UNSPECIFIED.);\n";

}   // namespace

TEST(References, GoThroughListsRowsAndSelects) {
    Model model = modelOf("IFC4", g_pStatements);
    const struct {
        std::uint64_t iId;
        const char* pNamed;
        const char* pUsers;
    } rows[] = {
        {1, "", "#3 #10"}, {2, "", "#3 #10"}, {3, "#1 #2", "#4"}, {4, "#3", ""},     {6, "", "#7 #8"},
        {7, "#9 #6", ""},  {8, "#6", ""},     {9, "", "#7"},      {10, "#1 #2", ""},
    };
    const Referrers table(model);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.iId);
        const Element element = model.byId(row.iId);
        EXPECT_EQ(sIds(references(element)), row.pNamed);
        EXPECT_EQ(sIds(referrers(model, element)), row.pUsers);
        EXPECT_EQ(sIds(table.of(element)), row.pUsers);
    }
}

TEST(References, TellOfWhatIsThere) {
    Model model = modelOf("IFC4", g_pStatements);
    const Referrers table(model);
    const Element material = model.byId(6), reference = model.byId(8);
    static_cast<void>(model.remove(reference));
    EXPECT_EQ(sIds(table.of(material)), "#7");   // who is gone is left out
    EXPECT_EQ(sIds(referrers(model, material)), "#7");
    const Model other = modelOf("IFC4", g_pStatements);
    EXPECT_EQ(sThrown([&] { static_cast<void>(references(reference)); }),
              "HandleError: IfcPropertyReferenceValue #8 was removed");
    EXPECT_EQ(sThrown([&] { static_cast<void>(table.of(other.byId(6))); }).substr(0, 12), "HandleError:");
    EXPECT_EQ(sThrown([&] { static_cast<void>(referrers(model, other.byId(6))); }).substr(0, 12), "HandleError:");
}

TEST(Element, HasItsAttributesByPlace) {
    const Model model = modelOf("IFC4", g_pStatements);
    const Element wall = model.byId(9);
    ASSERT_EQ(wall.size(), wall.attributes().size());
    for (std::size_t i = 0; i < wall.size(); ++i)
        EXPECT_EQ(wall.at(i).toString(), wall.attributes()[i].value.toString()) << i;
    EXPECT_EQ(wall.at(2).text(), "W");
    EXPECT_EQ(sThrown([&] { static_cast<void>(wall.at(9)); }), "NameError: IfcWall has no attribute 9, it has 9");
    EXPECT_EQ(sThrown([&] { static_cast<void>(Element().size()); }).substr(0, 12), "HandleError:");
}

TEST(Model, RemovesASpan) {
    Model model = modelOf("IFC4", g_pStatements);
    const std::vector<Element> elements{model.byId(4), model.byId(8), model.byId(4)};
    EXPECT_EQ(model.remove(std::span<const Element>(elements)).count, 2U);
    EXPECT_EQ(model.remove(std::span<const Element>()).count, 0U);
}

}   // namespace oxa::test
