// SPDX-License-Identifier: Apache-2.0
// Real files: each storey is a whole exchange structure of its own, and all of them with the rest are the model again.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Compare/Compare.h"
#include "Convert/Excerpt.h"
#include "Convert/Merge.h"
#include "Format/Ifc/IfcFile.h"
#include "Model/Model.h"
#include "Model/Relations.h"
#include "models/ModelFiles.h"

namespace oxa::ifc::models {
namespace {

constexpr std::uintmax_t g_iMostBytes = 3'000'000;   // that each is read as often as it has storeys

class SplitMerge : public testing::TestWithParam<std::string> {};

std::string sSaved(Model& model) {
    std::ostringstream out;
    static_cast<void>(model.save(out));
    return out.str();
}

// Whether what a model says comes back from a file, which it does not where it has GlobalIds that are none or real
// numbers of many digits, and whether each GlobalId is one entity's.
bool boComesBack(Model& model, Model& again) {
    std::set<std::string> guids;
    for (const Element element : model.all("IfcRoot"))
        if (!guids.insert(element.guid()).second) return false;
    return compare::differences({model.core().dataBase(), {}, {}}, {again.core().dataBase(), {}, {}}).boEqual();
}

}   // namespace

TEST_P(SplitMerge, StoreysAreWholeAndMakeTheModelAgain) {
    if (GetParam().empty()) GTEST_SKIP() << "no models";
    if (std::filesystem::file_size(folder() / GetParam()) > g_iMostBytes) GTEST_SKIP() << "large";
    Model whole("IFC4");
    try {
        whole = Model::open(folder() / GetParam());
    } catch (const FileError& error) {
        GTEST_SKIP() << error.what();
    }
    if (!whole.knows("IfcBuildingStorey") || whole.all("IfcBuildingStorey").empty()) GTEST_SKIP() << "no storey";
    Model again = Model::fromBuffer(sSaved(whole));
    const bool boExact = boComesBack(whole, again);

    const convert::Excerpts excerpts(whole);
    std::vector<convert::Excerpt> parts;
    for (const Element one : whole.all("IfcBuildingStorey"))
        if (!storey(one)) parts.push_back(excerpts.of(std::vector{one}));
    parts.push_back(excerpts.rest(parts));
    std::vector<std::string> texts;
    for (const convert::Excerpt& part : parts) {
        if (!part.size()) continue;
        const auto shown = excerpts.show(part);
        texts.push_back(sSaved(whole));
    }
    Model merged = Model::fromBuffer(texts.front());
    convert::Merger merger(merged);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        Model part = Model::fromBuffer(texts[i]);
        // No more is wrong with a part than with the whole, and nothing is missing.
        EXPECT_TRUE(part.whole() || !again.whole()) << i;
        EXPECT_LE(part.errors().size(), again.errors().size()) << i;
        const convert::Merged result = merger.add(part);
        EXPECT_TRUE(!boExact || (result.done && result.conflicts.empty())) << i;
    }
    if (!boExact) GTEST_SKIP() << "a write changes it, or a GlobalId is there twice";
    const compare::Result difference =
        compare::differences({whole.core().dataBase(), {}, {}}, {merged.core().dataBase(), {}, {}});
    EXPECT_TRUE(difference.boEqual());
    for (const auto& one : difference.removed) ADD_FAILURE() << "removed #" << one.iNumber << ' ' << one.sType;
    for (const auto& one : difference.added) ADD_FAILURE() << "added #" << one.iNumber << ' ' << one.sType;
}

INSTANTIATE_TEST_SUITE_P(Files, SplitMerge, testing::ValuesIn(namesOrNone()), sTestName);

}   // namespace oxa::ifc::models
