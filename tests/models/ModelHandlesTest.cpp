// SPDX-License-Identifier: Apache-2.0
// Real files through the short way in: what is set to what it is, changes nothing; what is removed leaves no trace.
#include <gtest/gtest.h>

#include <sstream>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/ModelText.h"
#include "Model/Model.h"
#include "models/ModelFiles.h"

namespace oxa::ifc::models {
namespace {

constexpr std::uintmax_t g_iLargest = 1500000;   // bytes; values are set one by one

class ModelHandles : public testing::TestWithParam<std::string> {};

std::string sSaved(Model& model) {
    std::ostringstream out;
    model.save(out);
    return out.str();
}

// The inverse lists, as they are and as they are once they are built anew.
void vExpectInverseListsFit(Model& model) {
    Data& data = model.core().dataBase();
    const ModelText before = modelText(data);
    for (Entity* pEntity : data.entities()) pEntity->attributeInverseClear();
    for (Entity* pEntity : data.entities()) pEntity->vAttributeInverseInit(data);
    EXPECT_TRUE(modelText(data) == before);
}

// Files hold what the schema does not allow; that can't be set. How many values that were.
std::size_t iSetAll(Model& model) {
    std::size_t iRefused = 0;
    for (const oxa::Element element : model.all())
        for (const oxa::Attribute& attribute : element.attributes()) {
            if (attribute.value.isNull()) continue;
            try {
                model.set(element, attribute.name, attribute.value);
            } catch (const ValueError&) {
                ++iRefused;
            }
        }
    return iRefused;
}

bool boSkipped(const std::string& sName) {
    return sName.empty() || std::filesystem::file_size(folder() / sName) > g_iLargest;
}

}   // namespace

TEST_P(ModelHandles, SetToWhatTheyAre) {
    if (boSkipped(GetParam())) GTEST_SKIP() << "no models, or a large one";
    std::optional<Model> model;
    try {
        model.emplace(Model::open(folder() / GetParam()));
    } catch (const FileError& error) {
        GTEST_SKIP() << error.what();
    }
    const std::string sBefore = sSaved(*model);
    const std::size_t iRefused = iSetAll(*model);
    EXPECT_TRUE(sSaved(*model) == sBefore);
    EXPECT_LT(iRefused, model->size() / 10 + 10);
    RecordProperty("refused", static_cast<int>(iRefused));
    vExpectInverseListsFit(*model);
}

TEST_P(ModelHandles, RemovedLeaveNoTrace) {
    if (boSkipped(GetParam())) GTEST_SKIP() << "no models, or a large one";
    std::optional<Model> model;
    try {
        model.emplace(Model::open(folder() / GetParam()));
    } catch (const FileError& error) {
        GTEST_SKIP() << error.what();
    }
    const Elements products = model->all("IfcProduct");
    const Removed removed = model->remove(products);
    EXPECT_GE(removed.count, products.size());
    for (const oxa::Element product : products) EXPECT_FALSE(product);
    vExpectInverseListsFit(*model);
    Model again = Model::fromBuffer(sSaved(*model));
    EXPECT_EQ(again.size(), model->size());
    EXPECT_TRUE(again.all("IfcProduct").empty());
}

INSTANTIATE_TEST_SUITE_P(Files, ModelHandles, testing::ValuesIn(namesOrNone()), sTestName);

}   // namespace oxa::ifc::models
