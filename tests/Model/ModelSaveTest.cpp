// SPDX-License-Identifier: Apache-2.0
// Models saved: the text, the file that is replaced, and what is told.
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Model/Archive.h"
#include "Model/ModelText.h"
#include "system/System.h"

namespace oxa::test {

namespace fs = std::filesystem;

namespace {

// A folder of its own, empty, for the time of a test.
class Folder {
public:
    Folder() : m_path(fs::path(testing::TempDir()) / ("oxa-" + Model("IFC4").create("IfcWall").guid())) {
        fs::create_directory(m_path);
    }
    ~Folder() { fs::remove_all(m_path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] fs::path operator/(const char* pName) const { return m_path / pName; }
    // The names in it.
    [[nodiscard]] std::string sNames() const {
        std::string sText;
        for (const auto& entry : fs::directory_iterator(m_path)) sText += entry.path().filename().string() + " ";
        return sText;
    }

private:
    fs::path m_path;
};

std::string sFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string sSaved(Model& model, const SaveOptions& options = {}) {
    std::ostringstream out;
    model.save(out, options);
    return out.str();
}

std::string sPacked(const std::string& sText) {
    std::ostringstream out;
    Packer packer(out, Packing::Gzip, "a");
    packer.stream() << sText;
    packer.finish();
    return out.str();
}

// The data lines of a text.
std::string sData(const std::string& sText) {
    const std::size_t iBegin = sText.find("DATA;\n") + 6;
    return sText.substr(iBegin, sText.find("ENDSEC;", iBegin) - iBegin);
}

constexpr char g_sPoints[] = "#20=IFCCARTESIANPOINT((1.,2.));\n"
                             "#7=IFCVERTEXPOINT(#20);\n"
                             "#9=IFCCARTESIANPOINT((3.,4.));\n";

}   // namespace

TEST(ModelSave, WritesAllByNumberNewOnesAbove) {
    Model model = modelOf("IFC4", g_sPoints);
    const Element point = model.create("IfcCartesianPoint", {{"Coordinates", {5.0, 6.0}}});
    model.set(model.byId(7), "VertexGeometry", point);
    model.remove(model.byId(9));
    const std::string sExpected = "#7=IFCVERTEXPOINT(#21);\n#20=IFCCARTESIANPOINT((1.,2.));\n"
                                  "#21=IFCCARTESIANPOINT((5.,6.));\n";
    const std::string sText = sSaved(model);
    EXPECT_EQ(sData(sText), sExpected) << "without a project too, and nothing of what was removed";
    EXPECT_EQ(sSaved(model, {.threads = 1}), sText);
    Model again = Model::fromBuffer(sText);
    EXPECT_TRUE(again.whole());
    EXPECT_EQ(sSaved(again), sText);
}

TEST(ModelSave, AddsNoNumberThatAFileHas) {
    const std::string sPath = OXA_SOURCE_DIR "/examples/house-ifc2x3.ifc";
    Model model = Model::open(sPath);
    const std::size_t iSize = model.size();
    for (int i = 0; i < 100; ++i) model.create("IfcDirection", {{"DirectionRatios", {1.0, 0.0}}});
    const Model again = Model::fromBuffer(sSaved(model));
    EXPECT_TRUE(again.whole());
    EXPECT_EQ(again.size(), iSize + 100);
}

TEST(ModelSave, ReplacesAFileAsAWhole) {
    const Folder folder;
    Model model = modelOf("IFC4", g_sPoints);
    const fs::path path = folder / "a.ifc";
    model.save(path);
    EXPECT_EQ(sFile(path), sSaved(model));
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    model.set(model.byId(20), "Coordinates", {7.0, 8.0});
    const bool boLinked = test::boLink(path, folder / "link.ifc");
    model.save(boLinked ? folder / "link.ifc" : path);
    EXPECT_EQ(fs::is_symlink(folder / "link.ifc"), boLinked) << "a link stays one";
    EXPECT_EQ(sFile(path), sSaved(model));
    if (test::boHasRights()) {
        EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    }
    Model opened = Model::open(path);
    opened.save(path);
    EXPECT_EQ(sFile(path), sSaved(model)) << "a model may be saved to where it came from";
    fs::remove(folder / "link.ifc");
    EXPECT_EQ(folder.sNames(), "a.ifc ");
}

TEST(ModelSave, LeavesTheFileAsItWas) {
    const Folder folder;
    Model model = modelOf("IFC4X3_ADD2", g_sPoints);
    const fs::path path = folder / "a.ifc";
    std::ofstream(path) << "old";
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(sThrown([&] { model.save(path, {.stop = stop.get_token()}); }), "Stopped: the write was stopped");
    EXPECT_EQ(sThrown([&] { model.save(path, {.format = Format::IfcXml}); }),
              "FileError: ifcXML is written for IFC4 only, and the model is of IFC4X3_ADD2");
    Model ifc4 = modelOf("IFC4", g_sPoints);
    EXPECT_EQ(sThrown([&] { ifc4.save(path, {.format = Format::IfcXml}); }),
              "FileError: ifcXML starts from a project, and the model has none");
    Model dangling = modelOf("IFC4", "#1=IFCPROJECT('0000000000000000000001',#9,$,$,$,$,$,$,$);\n");
    EXPECT_EQ(sThrown([&] { dangling.save(path, {.format = Format::IfcXml}); }),
              "FileError: ifcXML has no place for a reference to an instance that the model does not define");
    std::stop_source later;
    const SaveOptions stopping{.stop = later.get_token(), .progress = [&](const Progress&) { later.request_stop(); }};
    EXPECT_EQ(sThrown([&] { model.save(path, stopping); }), "Stopped: the write was stopped");
    EXPECT_EQ(sThrown([&] { model.save("/no/such/a.ifc"); }),
              "FileError: /no/such/a.ifc: can't be written: No such file or directory");
    EXPECT_EQ(sThrown([&] { model.save(folder / "a.csv"); }),
              "FileError: " + (folder / "a.csv").string() +
                  ": the end of the name says no form that is written (.ifc, .stp, .step, .p21, .spf, .ifczip, "
                  ".ifcxml, .xml, or .gz behind one of them); "
                  "SaveOptions::format does");
    EXPECT_EQ(folder.sNames(), "a.ifc ");
    EXPECT_EQ(sFile(path), "old");
}

TEST(ModelSave, WritesTheFormThatTheNameSays) {
    const Folder folder;
    Model model = Model::open(OXA_SOURCE_DIR "/examples/house-ifc4.ifc");
    model.save(folder / "a.IFCXML");
    EXPECT_EQ(sFile(folder / "a.IFCXML").substr(0, 5), "<?xml");
    Model xml = Model::open(folder / "a.IFCXML");
    EXPECT_EQ(xml.byGuid(model.all("IfcWall").front().guid()).id(), model.all("IfcWall").front().id());
    model.save(folder / "a.txt", {.format = Format::Simple});
    Model simple = Model::open(folder / "a.txt");
    EXPECT_EQ(simple.size(), model.size());
    EXPECT_EQ(sData(sSaved(simple)), sData(sSaved(model)));
}

TEST(ModelSave, KeepsTheRootOfTheSimpleForm) {
    Model model =
        Model::fromBuffer("Ifc file simple;\nIFC4;\n2;\n#1=IFCCARTESIANPOINT((1.,2.));\n#2=IFCVERTEXPOINT(#1);\n");
    EXPECT_EQ(sSaved(model, {.format = Format::Simple}),
              "Ifc file simple;\nIFC4;\n2;\n#1=IFCCARTESIANPOINT((1.,2.));\n#2=IFCVERTEXPOINT(#1);\n");
    model.remove(model.byId(2));
    EXPECT_EQ(sSaved(model, {.format = Format::Simple}),
              "Ifc file simple;\nIFC4;\n*;\n#1=IFCCARTESIANPOINT((1.,2.));\n");
}

TEST(ModelSave, TellsWhatTheSchemaMisses) {
    Model model("IFC4");
    model.create("IfcVertexPoint");
    const Element point = model.create("IfcCartesianPoint");
    std::ostringstream out;
    std::string sText;
    for (const Record& record : model.save(out))
        sText += "#" + std::to_string(record.id.value_or(0)) + " " + record.key + " " + record.message + "\n";
    EXPECT_EQ(sText, "#1 Error_InvalidNullAttribute The mandatory attribute VertexGeometry has no value.\n"
                     "#2 Error_InvalidNullAttribute The mandatory attribute Coordinates has no value.\n");
    EXPECT_EQ(sData(out.str()), "#1=IFCVERTEXPOINT($);\n#2=IFCCARTESIANPOINT($);\n");
    EXPECT_EQ(point.id(), 2U);
}

TEST(ModelOpen, IsStoppedAndToldHowFarItIs) {
    std::string sStatements;
    for (int i = 1; i <= 60000; ++i) sStatements += "#" + std::to_string(i) + "=IFCDIRECTION((0.,1.));\n";
    const std::string sText = fileText("IFC4", sStatements);
    std::uint64_t iLast = 0;
    std::size_t iCalls = 0;
    const auto progress = [&](const Progress& told) {
        EXPECT_EQ(told.total, sText.size());
        EXPECT_GE(told.done, iLast);
        iLast = told.done;
        ++iCalls;
    };
    EXPECT_EQ(Model::fromBuffer(sText, {.progress = progress}).size(), 60000U);
    EXPECT_EQ(iLast, sText.size());
    EXPECT_GE(iCalls, 2U);
    std::stop_source stop;
    const OpenOptions stopping{.stop = stop.get_token(), .progress = [&](const Progress&) { stop.request_stop(); }};
    EXPECT_EQ(sThrown([&] { static_cast<void>(Model::fromBuffer(sText, stopping)); }),
              "Stopped: buffer: the read was stopped");
}

// Whatever stands between the reader and the bytes, and on any number of threads.
TEST(ModelOpen, PassesTheCallersExceptionsOn) {
    Model model = Model::open(OXA_SOURCE_DIR "/examples/house-ifc4.ifc");
    model.set(model.all("IfcProject").front(), "Description", std::string(300'000, 'x'));
    for (const Format format : {Format::Step, Format::IfcXml, Format::Simple}) {
        const std::string sText = sSaved(model, {.format = format});
        for (const std::string& sBytes : {sText, sPacked(sText)})
            for (const unsigned iThreads : {1U, 2U})
                for (const bool boAtOnce : {true, false}) {
                    SCOPED_TRACE(sText.substr(0, 20) + (boAtOnce ? ", at once" : ""));
                    const OpenOptions options{.threads = iThreads, .progress = [&](const Progress& told) {
                                                  if (boAtOnce || told.done > 100'000) throw std::range_error("enough");
                                              }};
                    EXPECT_THROW(static_cast<void>(Model::fromBuffer(sBytes, options)), std::range_error);
                }
    }
}

TEST(ModelSave, PassesTheCallersExceptionsOn) {
    const Folder folder;
    Model model = Model::open(OXA_SOURCE_DIR "/examples/house-ifc4.ifc");
    for (const char* pName : {"a.ifc", "a.ifcxml", "a.ifczip", "a.ifc.gz", "a.ifcxml.gz"})
        for (const unsigned iThreads : {1U, 2U}) {
            SCOPED_TRACE(pName);
            const fs::path path = folder / pName;
            std::ofstream(path) << "old";
            const SaveOptions options{.threads = iThreads,
                                      .progress = [](const Progress&) { throw std::range_error("enough"); }};
            EXPECT_THROW(model.save(path, options), std::range_error);
            EXPECT_EQ(sFile(path), "old");
            fs::remove(path);
            EXPECT_EQ(folder.sNames(), "");
        }
}

// What could not be read would be gone.
TEST(ModelSave, KeepsAFileThatIsNotWholeInTheModel) {
    const Folder folder;
    const fs::path path = folder / "a.ifc";
    const fs::path link = folder / "b.ifc";
    const std::string sFaulty = fileText("IFC4", "#1=IFCCARTESIANPOINT((1.,2.));\n#2=IFCTEAPOT();\n");
    std::ofstream(path, std::ios::binary) << sFaulty;
    std::vector<fs::path> names{path, path.parent_path() / "." / "a.ifc"};
    if (test::boLink(path, link)) names.push_back(link);
    Model model = Model::open(path);
    EXPECT_FALSE(model.whole());
    for (const fs::path& name : names) {
        EXPECT_EQ(
            sThrown([&] { model.save(name); }),
            "FileError: " + name.string() +
                ": is the file that the model was read from, and not all of it is in the model: the rest would be "
                "lost; SaveOptions::replaceIncomplete saves nevertheless");
        EXPECT_EQ(sFile(path), sFaulty);
    }
    model.save(folder / "c.ifc");
    model.save(path, {.replaceIncomplete = true});
    EXPECT_EQ(sData(sFile(path)), "#1=IFCCARTESIANPOINT((1.,2.));\n");
    Model whole = Model::open(path);
    EXPECT_TRUE(whole.whole());
    whole.save(path);
}

}   // namespace oxa::test
