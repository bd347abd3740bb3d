// SPDX-License-Identifier: Apache-2.0
// Threads that look at one model at the same time, and those with a model each.
#include <sstream>
#include <string>
#include <vector>

#include "Format/Ifc/OnThreads.h"
#include "Model/ModelText.h"

namespace oxa::test {

namespace {

using ifc::vOnThreads;

// All that a model says.
std::string sAll(const Model& model) {
    std::string sText;
    for (const Element element : model.all()) {
        sText += std::to_string(element.id()) + std::string(element.type()) + element.guid();
        for (const Attribute& attribute : element.attributes()) sText += attribute.value.toString();
    }
    for (const Element wall : model.all("IfcWall")) sText += sIds(wall.inverse("IsDefinedBy"));
    return sText + std::to_string(model.errors().size()) + std::to_string(model.size());
}

}   // namespace

TEST(ModelThreads, LookAtOneModel) {
    Model model = Model::open(OXA_SOURCE_DIR "/examples/house-ifc4.ifc");
    for (int i = 0; i < 3; ++i) model.create("IfcWall", {{"Name", "new"}});   // what is sorted late is sorted by one
    const std::string sExpected = sAll(Model::open(OXA_SOURCE_DIR "/examples/house-ifc4.ifc"));
    std::vector<std::string> texts(4);
    vOnThreads(texts.size(), [&](std::size_t i) { texts[i] = sAll(model); });
    for (const std::string& sText : texts) EXPECT_EQ(sText, texts[0]);
    EXPECT_GT(texts[0].size(), sExpected.size());
}

// The first look at a model that was changed puts its list in order, whatever is asked.
TEST(ModelThreads, TheFirstLookIsOfAnyKind) {
    for (int iRound = 0; iRound < 10; ++iRound) {
        Model model = Model::open(OXA_SOURCE_DIR "/examples/house-ifc4.ifc");
        const std::size_t iBefore = model.size();
        const std::size_t iWalls = model.all("IfcWall").size();
        for (int i = 0; i < 3; ++i) model.create("IfcWall", {{"Name", "new"}});
        std::vector<std::size_t> counts(6);
        vOnThreads(counts.size(), [&](std::size_t i) {
            counts[i] = i % 3 == 0 ? model.size() : i % 3 == 1 ? model.all().size() : model.all("IfcWall").size();
        });
        for (std::size_t i = 0; i < counts.size(); ++i) EXPECT_EQ(counts[i], (i % 3 == 2 ? iWalls : iBefore) + 3) << i;
    }
}

TEST(ModelThreads, ReadIfcXmlEach) {
    Model model = Model::open(OXA_SOURCE_DIR "/examples/house-ifc4.ifc");
    std::ostringstream out;
    model.save(out, {.format = Format::IfcXml});
    const std::string sExpected = sAll(Model::fromBuffer(out.str()));
    EXPECT_GT(sExpected.size(), 1000U);
    vOnThreads(4, [&](std::size_t) { EXPECT_EQ(sAll(Model::fromBuffer(out.str())), sExpected); });
}

TEST(ModelThreads, HaveModelsOfTheirOwn) {
    const Model model = Model::open(OXA_SOURCE_DIR "/examples/house-ifc2x3.ifc", {.threads = 1});
    const std::string sExpected = sAll(model);
    vOnThreads(4, [&](std::size_t) {
        for (int i = 0; i < 3; ++i) {
            Model other = Model::open(OXA_SOURCE_DIR "/examples/house-ifc2x3.ifc");
            EXPECT_EQ(sAll(other), sExpected);
            const Element wall = other.all("IfcWall").front();
            other = Model("IFC4");
            EXPECT_FALSE(wall);
        }
    });
}

}   // namespace oxa::test
