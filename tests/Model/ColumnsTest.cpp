// SPDX-License-Identifier: Apache-2.0
// Columns of a small house in three schema families, by kind of value; groups with counts and sums.
#include <string>
#include <vector>

#include "Model/Columns.h"
#include "Model/HouseText.h"

namespace oxa::test {

namespace {

// Kind and value: "i10", "n2.5", "bfalse", "'text'", "-".
std::string sCell(const Cell& cell) {
    constexpr const char* kinds[] = {"-", "b", "i", "n", "'"};
    return kinds[cell.index()] + toText(cell) + (cell.index() == 4 ? "'" : "");
}

std::string sRow(const std::vector<Cell>& cells) {
    std::string sText;
    for (const Cell& cell : cells) sText += (sText.empty() ? "" : " ") + sCell(cell);
    return sText;
}

std::string sGroups(const std::vector<Group>& groups) {
    std::string sText;
    for (const Group& group : groups) {
        sText += sRow(group.keys) + ": " + std::to_string(group.count);
        for (const Sum& sum : group.sums) sText += " " + toText(Cell(sum.value)) + " of " + std::to_string(sum.count);
        sText += "\n";
    }
    return sText;
}

}   // namespace

TEST(Columns, TellValuesByKind) {
    const struct {
        const char* pColumn;
        const char* pSouth;   // #10
        const char* pNorth;   // #11
        const char* pDoor;    // #13
        const char* pLoose;   // #16
    } rows[] = {
        {"id", "i10", "i11", "i13", "i16"},
        {"GlobalId", "'0000000000000000000010'", "'0000000000000000000011'", "'0000000000000000000013'",
         "'0000000000000000000016'"},
        {"name", "'South'", "'North'", "'D1'", "'Loose'"},
        {"OverallWidth", "-", "-", "n885", "-"},
        {"type", "'WT'", "'WT'", "-", "-"},
        {"type.Name", "'WT'", "'WT'", "-", "-"},
        {"type.PredefinedType", "'STANDARD'", "'STANDARD'", "-", "-"},
        {"storey.Name", "'EG'", "'OG'", "'EG'", "-"},
        {"storey.Elevation", "n0", "n3", "n0", "-"},
        {"building.Name", "'House'", "'House'", "'House'", "-"},
        {"container.Name", "'EG'", "'OG'", "'EG'", "-"},
        {"parent.Name", "'EG'", "'OG'", "'Hole'", "-"},
        {"parent", "'EG'", "'OG'", "'Hole'", "-"},
        {"location", "'EG, House'", "'OG, House'", "'EG, House'", "-"},
        {"material.Name", "'Brick, Wool'", "'Wool, Brick'", "'Wool'", "-"},
        {"material", "'Brick, Wool'", "'Wool, Brick'", "'Wool'", "-"},
        {"classification", "'Ss_25, Ss_25_10'", "'Ss_25_10'", "-", "-"},
        {"classification.Name", "'Walls, Framed walls'", "'Framed walls'", "-", "-"},
        {"group.Name", "'Shell'", "'Shell'", "-", "-"},
        {"Pset_WallCommon.FireRating", "'F 90'", "'F 30'", "-", "-"},
        {"Pset_WallCommon.LoadBearing", "bfalse", "bfalse", "-", "-"},
        {"Pset_WallCommon.ThermalTransmittance", "n0.24", "-", "-", "-"},
        {"Qto_WallBaseQuantities.NetVolume", "n2.5", "-", "-", "-"},
        {"Kinds.Enumerated", "'A, B'", "'A, B'", "-", "-"},
        {"Kinds.Bounded", "'1, 5'", "'1, 5'", "-", "-"},
        {"Kinds.Complex.Inner", "i7", "i7", "-", "-"},
        {"Kinds.Reference", "'#70'", "'#70'", "-", "-"},
        {"Kinds.Empty", "-", "-", "-", "-"},
        {"\"Pset_WallCommon\" . 'FireRating'", "'F 90'", "'F 30'", "-", "-"},
        {"'type'.Name", "-", "-", "-", "-"},
    };
    for (const char* pSchema : g_families) {
        const Model model = house(pSchema);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row.pColumn);
            Columns columns(model, {row.pColumn});
            EXPECT_EQ(columns.names(), std::vector<std::string>{row.pColumn});
            EXPECT_EQ(sRow(columns.row(model.byId(10))), row.pSouth);
            EXPECT_EQ(sRow(columns.row(model.byId(11))), row.pNorth);
            EXPECT_EQ(sRow(columns.row(model.byId(13))), row.pDoor);
            EXPECT_EQ(sRow(columns.row(model.byId(16))), row.pLoose);
        }
        Columns types(model, {"class"});
        EXPECT_EQ(sRow(types.row(model.byId(10))), "'IfcWall'");
        EXPECT_EQ(sRow(types.row(model.byId(20))), "'IfcWallType'");
        Columns several(model, {"Name", "id", "Pset_WallCommon.FireRating"});
        EXPECT_EQ(sRow(several.row(model.byId(11))), "'North' i11 'F 30'");
        EXPECT_EQ(sRow(several.row(model.byId(70))), "'Brick' i70 -");
    }
}

TEST(Columns, GroupCountAndSum) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Model model = house(pSchema);
        Columns storeys(model, {"storey.Name"});
        EXPECT_EQ(sGroups(groupBy(model.all("IfcElement"), storeys)), "'EG': 3\n'OG': 3\n-: 1\n");
        Columns materials(model, {"material.Name", "storey.Elevation"});
        Columns sums(model, {"Qto_WallBaseQuantities.NetVolume", "id", "Name"});
        EXPECT_EQ(sGroups(groupBy(model.all("IfcWall"), materials, sums)),
                  "'Brick, Wool' n0: 1 2.5 of 1 10 of 1 0 of 0\n"
                  "'Wool, Brick' n3: 1 0 of 0 11 of 1 0 of 0\n"
                  "- -: 1 0 of 0 16 of 1 0 of 0\n");
    }
}

TEST(Columns, AreOrderedByValue) {
    const Model model = Model::fromBuffer(
        fileText("IFC4", "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(10.),$);\n#2=IFCPROPERTYSINGLEVALUE('a',$,"
                         "IFCINTEGER(9),$);\n#3=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('1'),$);\n"
                         "#4=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n#5=IFCPROPERTYSINGLEVALUE('a',$,IFCINTEGER(10),$);\n"
                         "#6=IFCPROPERTYSINGLEVALUE('a',$,IFCLOGICAL(.U.),$);\n"
                         "#7=IFCPROPERTYSINGLEVALUE('a',$,IFCBOOLEAN(.T.),$);\n"));
    Columns values(model, {"NominalValue"});
    EXPECT_EQ(sGroups(groupBy(model.all(), values)), "btrue: 1\ni9: 1\nn10: 2\n'1': 1\n'unknown': 1\n-: 1\n");
}

TEST(Columns, SayWhatIsNoColumn) {
    const Model model = house("IFC4");
    const auto sColumn = [&](const char* pName) { return sThrown([&] { Columns columns(model, {pName}); }); };
    EXPECT_EQ(sColumn("OverallWith"),
              "NameError: no type of IFC4 has an attribute OverallWith; did you mean OverallWidth?");
    EXPECT_EQ(sColumn(""), "NameError: \"\" is no name of a column: column 1: a name is expected");
    EXPECT_EQ(sColumn("'a' b"), "NameError: \"'a' b\" is no name of a column: column 5: \"b\" is not expected");
    EXPECT_EQ(sColumn("/a/.b"),
              "NameError: \"/a/.b\" is no name of a column: column 1: a column has one name, no expression");
    EXPECT_EQ(sColumn("Pset."), "NameError: \"Pset.\" is no name of a column: column 6: a name is expected");
    const Model other = house("IFC4");
    Columns columns(model, {"Name"});
    EXPECT_EQ(sThrown([&] { static_cast<void>(columns.row(other.byId(10))); }),
              "HandleError: the element is of another model than the columns");
}

TEST(Columns, HintAtWhatNoElementHas) {
    const Model model = house("IFC4");
    Columns columns(model,
                    {"Name", "Pset_WallComon.FireRating", "Pset_WallCommon.FireRatin", "Pset_WallCommon.FireRating"});
    for (const Element wall : model.all("IfcWall")) static_cast<void>(columns.row(wall));
    EXPECT_EQ(columns.hints(),
              (std::vector<std::string>{"no element has a set Pset_WallComon; did you mean Pset_WallCommon?",
                                        "no set Pset_WallCommon has FireRatin; did you mean FireRating?"}));
}

}   // namespace oxa::test
