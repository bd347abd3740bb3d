// SPDX-License-Identifier: Apache-2.0
// The examples of docs/model.md, compiled and run as they stand there.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Model/ModelText.h"

namespace oxa::test {

namespace {

constexpr char g_sHouse[] = "#1=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(),#9);\n"
                            "#2=IFCBUILDINGSTOREY('0000000000000000000002',$,'EG',$,$,$,$,$,.ELEMENT.,0.);\n"
                            "#3=IFCWALL('0000000000000000000003',$,'South',$,$,$,$,$,$);\n"
                            "#4=IFCDOOR('0000000000000000000004',$,'D',$,$,#10,$,$,2.1,0.9,$,$,$);\n"
                            "#5=IFCRELCONTAINEDINSPATIALSTRUCTURE('0000000000000000000005',$,$,$,(#3,#4),#2);\n"
                            "#6=IFCPROPERTYSET('0000000000000000000006',$,'Pset_DoorCommon',$,(#7));\n"
                            "#7=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);\n"
                            "#8=IFCRELDEFINESBYPROPERTIES('0000000000000000000008',$,$,$,(#4),#6);\n"
                            "#9=IFCUNITASSIGNMENT(());\n#10=IFCLOCALPLACEMENT($,#11);\n"
                            "#11=IFCAXIS2PLACEMENT3D(#12,$,$);\n#12=IFCCARTESIANPOINT((0.,0.,0.));\n";

// The working folder is one of its own, with house.ifc in it; what goes to the two streams is kept.
class Tutorial : public testing::Test {
protected:
    void SetUp() override {
        m_folder = std::filesystem::path(testing::TempDir()) / ("oxa-" + Model("IFC4").create("IfcWall").guid());
        m_before = std::filesystem::current_path();
        std::filesystem::create_directory(m_folder);
        std::filesystem::current_path(m_folder);
        std::ofstream("house.ifc", std::ios::binary) << fileText("IFC4", g_sHouse);
        m_pOut = std::cout.rdbuf(m_out.rdbuf());
        m_pErrors = std::cerr.rdbuf(m_out.rdbuf());
    }
    void TearDown() override {
        std::cout.rdbuf(m_pOut);
        std::cerr.rdbuf(m_pErrors);
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_folder);
    }

    std::ostringstream m_out;

private:
    std::filesystem::path m_folder;
    std::filesystem::path m_before;
    std::streambuf* m_pOut = nullptr;
    std::streambuf* m_pErrors = nullptr;
};

// The lines of a text without what stands around them.
std::vector<std::string> lines(std::istream& stream) {
    std::vector<std::string> result;
    for (std::string sLine; std::getline(stream, sLine);) {
        const std::size_t iFirst = sLine.find_first_not_of(' ');
        if (iFirst != std::string::npos) result.push_back(sLine.substr(iFirst));
    }
    return result;
}

}   // namespace

TEST_F(Tutorial, OpenAndFind) {
    oxa::Model model = oxa::Model::open("house.ifc");
    for (oxa::Element wall : model.all("IfcWall"))
        std::cout << '#' << wall.id() << ' ' << wall.type() << ' ' << wall.text("Name").value_or("-") << '\n';
    EXPECT_EQ(m_out.str(), "#3 IfcWall South\n");

    model = modelOf("IFC4", "#1=IFCNOTHING();\n");
    if (!model.whole())
        for (const oxa::Record& record : model.errors())
            std::cerr << "line " << record.line << ": " << record.message << '\n';
    EXPECT_EQ(m_out.str(),
              "#3 IfcWall South\nline 8: The schema has no entity type of this name; the statement was skipped.\n");
}

TEST_F(Tutorial, ReadValues) {
    oxa::Model model = oxa::Model::open("house.ifc");
    oxa::Element door = model.byId(4);
    oxa::Element property = model.byId(7);
    std::optional<double> width = door.number("OverallWidth");   // empty: no value
    double height = door.get<double>("OverallHeight");           // no value: ValueError
    oxa::Element placement = door.element("ObjectPlacement");
    for (oxa::Element relation : door.inverse("IsDefinedBy")) std::cout << relation.type() << '\n';
    EXPECT_EQ(width, 0.9);
    EXPECT_EQ(height, 2.1);
    EXPECT_EQ(placement.id(), 10U);

    oxa::Value value = property["NominalValue"];
    std::cout << value.typeName() << " = " << value.toString() << '\n';   // IfcLabel = F 30
    EXPECT_EQ(m_out.str(), "IfcRelDefinesByProperties\nIfcLabel = F 30\n");
}

TEST_F(Tutorial, ChangeAndSave) {
    oxa::Model model = oxa::Model::open("house.ifc");
    oxa::Element door = model.byId(4);
    oxa::Element property = model.byId(7);
    oxa::Element containment = model.byId(5);
    model.set(door, "OverallWidth", 0.95);
    model.set(door, "Description", nullptr);   // no value
    model.set(property, "NominalValue", oxa::typed("IfcLabel", "F 90"));
    EXPECT_EQ(door.number("OverallWidth"), 0.95);

    oxa::Element point = model.create("IfcCartesianPoint", {{"Coordinates", {0.0, 0.0, 2.5}}});
    oxa::Element window = model.create("IfcWindow", {{"Name", "W1"}, {"OverallWidth", 1.2}});
    model.append(containment, "RelatedElements", window);
    model.remove(door);
    EXPECT_EQ(point.id(), 13U);
    EXPECT_EQ(sIds(containment.elements("RelatedElements")), "#3 #14");

    model.create("IfcVertexPoint");
    for (const oxa::Record& record : model.save("changed.ifc"))
        std::cerr << '#' << record.id.value_or(0) << ": " << record.message << '\n';
    EXPECT_EQ(m_out.str(), "#15: The mandatory attribute VertexGeometry has no value.\n");
    const oxa::Model changed = oxa::Model::open("changed.ifc");
    EXPECT_EQ(sIds(changed.all()), "#1 #2 #3 #5 #6 #7 #9 #10 #11 #12 #13 #14 #15");
    EXPECT_EQ(changed.byId(7)["NominalValue"].toString(), "F 90");
}

// Each block of the document stands above, line by line.
TEST(TutorialText, IsWhatIsCompiledHere) {
    std::ifstream source(OXA_SOURCE_DIR "/tests/Model/TutorialTest.cpp");
    std::ifstream document(OXA_SOURCE_DIR "/docs/model.md");
    const std::vector<std::string> compiled = lines(source);
    std::vector<std::string> block;
    std::size_t iBlocks = 0;
    bool boInside = false;
    for (const std::string& sLine : lines(document)) {
        if (sLine == "```cpp") {
            boInside = true;
        } else if (boInside && sLine == "```") {
            EXPECT_NE(std::search(compiled.begin(), compiled.end(), block.begin(), block.end()), compiled.end())
                << "not compiled: " << testing::PrintToString(block);
            ++iBlocks;
            block.clear();
            boInside = false;
        } else if (boInside && !sLine.starts_with("#include")) {
            block.push_back(sLine);
        }
    }
    EXPECT_EQ(iBlocks, 7U);
}

}   // namespace oxa::test
