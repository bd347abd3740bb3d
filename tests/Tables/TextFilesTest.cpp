// SPDX-License-Identifier: Apache-2.0
// Tables as CSV and JSON lines: fields, files that are replaced as a whole or not at all.

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "Model/HouseText.h"
#include "Tables/TextFiles.h"

namespace oxa::test {
namespace {

namespace fs = std::filesystem;
using tables::TextFiles;
using tables::TextForm;

const std::vector<std::string> g_storey{"storey"};

std::string sText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// A folder of its own for a test.
struct Folder {
    fs::path path = fs::path(testing::TempDir()) /
                    (std::string("tables-") + testing::UnitTest::GetInstance()->current_test_info()->name());
    Folder() { fs::remove_all(path); }
    ~Folder() { fs::remove_all(path); }
};

TEST(TextFiles, HostileTextsStay) {
    const Model model = modelOf("IFC4", "#1=IFCMATERIAL('=1+1',$,'');\n"
                                        "#2=IFCMATERIAL('a,\"b\"\\X\\0Ac\\X\\0Dd','-1.5','-x');\n"
                                        "#3=IFCMATERIAL('\\X2\\5BB6\\X0\\',$,$);\n");
    const std::vector<std::string> names{"IfcMaterial"};
    std::ostringstream csv;
    TextFiles csvSink(csv, TextForm::Csv);
    tables::write(model, {.file = "m", .path = {}}, csvSink, names);
    EXPECT_EQ(csv.str(), "file,id,type,Name,Description,Category\r\n"
                         "m,1,IfcMaterial,'=1+1,,\"\"\r\n"
                         "m,2,IfcMaterial,\"a,\"\"b\"\"\nc\rd\",-1.5,'-x\r\n"
                         "m,3,IfcMaterial,\xe5\xae\xb6,,\r\n");
    std::ostringstream json;
    TextFiles jsonSink(json, TextForm::JsonLines);
    tables::write(model, {.file = "m", .path = {}}, jsonSink, names);
    EXPECT_EQ(json.str(),
              "{\"file\":\"m\",\"id\":1,\"type\":\"IfcMaterial\",\"Name\":\"=1+1\",\"Description\":null,\"Category\":"
              "\"\"}\n"
              "{\"file\":\"m\",\"id\":2,\"type\":\"IfcMaterial\",\"Name\":\"a,\\\"b\\\"\\nc\\rd\",\"Description\":"
              "\"-1.5\",\"Category\":\"-x\"}\n"
              "{\"file\":\"m\",\"id\":3,\"type\":\"IfcMaterial\",\"Name\":\"\xe5\xae\xb6\",\"Description\":null,"
              "\"Category\":null}\n");
}

TEST(TextFiles, AFileATable) {
    const Folder folder;
    const Model model = house("IFC4");
    {
        TextFiles files(folder.path, TextForm::Csv);
        tables::write(model, {.file = "a", .path = {}}, files);
        tables::write(model, {.file = "b", .path = {}}, files);
        EXPECT_FALSE(fs::exists(folder.path / "storey.csv"));
        files.finish();
    }
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path)) names.insert(entry.path().filename().string());
    EXPECT_EQ(names,
              (std::set<std::string>{"file.csv", "element.csv", "property.csv", "quantity.csv", "material.csv",
                                     "classification.csv", "relation.csv", "storey.csv", "unit.csv", "error.csv"}));
    EXPECT_EQ(sText(folder.path / "storey.csv"), "file,id,guid,name,long_name,elevation,building_id\r\n"
                                                 "a,4,0000000000000000000004,EG,,0,3\r\n"
                                                 "a,5,0000000000000000000005,OG,,3,3\r\n"
                                                 "b,4,0000000000000000000004,EG,,0,3\r\n"
                                                 "b,5,0000000000000000000005,OG,,3,3\r\n");
}

TEST(TextFiles, WithoutAnEndNothingChanges) {
    const Folder folder;
    const Model model = house("IFC4");
    {
        TextFiles files(folder.path, TextForm::JsonLines);
        tables::write(model, {.file = "m", .path = {}}, files, g_storey);
    }
    EXPECT_FALSE(fs::exists(folder.path));
    fs::create_directory(folder.path);
    std::ofstream(folder.path / "storey.ndjson") << "old";
    {
        TextFiles files(folder.path, TextForm::JsonLines);
        tables::write(model, {.file = "m", .path = {}}, files, g_storey);
    }
    EXPECT_EQ(sText(folder.path / "storey.ndjson"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path), fs::directory_iterator()), 1);
}

TEST(TextFiles, RefusesWhatCantBe) {
    const Folder folder;
    const Model model = house("IFC4");
    std::ofstream(folder.path) << "a file";
    EXPECT_EQ(sThrown([&] { TextFiles(folder.path, TextForm::Csv); }),
              "FileError: " + folder.path.string() + ": is no folder");
    EXPECT_EQ(sThrown([&] { TextFiles(folder.path / "a" / "b", TextForm::Csv); }).substr(0, 11), "FileError: ");
    std::ostringstream text;
    TextFiles one(text, TextForm::Csv);
    EXPECT_EQ(sThrown([&] { tables::write(model, {}, one); }), "ValueError: a stream takes one table");
    TextFiles other(text, TextForm::Csv);
    const std::vector<std::string> walls{"IfcWall"};
    tables::write(model, {}, other, walls);
    EXPECT_EQ(sThrown([&] { tables::write(house("IFC2X3"), {}, other, walls); }),
              "ValueError: the table IfcWall has other columns in this schema than in that of an earlier file");
}

}   // namespace
}   // namespace oxa::test
