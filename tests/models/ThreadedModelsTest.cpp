// SPDX-License-Identifier: Apache-2.0
// Real files, read on several threads: the model and the reports of a single-threaded read.
#include <gtest/gtest.h>

#include <vector>

#include "Format/Ifc/ModelText.h"
#include "Sanitized.h"
#include "models/ModelFiles.h"

namespace oxa::ifc::models {
namespace {

// Bytes. With a sanitizer a file takes up to thirty times as long.
constexpr std::size_t g_iLargest = test::g_boSanitized ? 300'000 : 1'000'000'000;

// The numbers of all entities in their order, each followed by those that refer to it, list by list.
std::vector<std::size_t> inOrder(const ReadFileModel& model) {
    const Data& data = model.file.data();
    std::vector<std::size_t> numbers;
    for (const Entity* pEntity : data.entities()) {
        numbers.push_back(data.iIdFromEntity(*pEntity));
        pEntity->boForEachInverseAttribute([&](const auto&, const EntityList& list) {
            for (const Entity* pReferrer : list) numbers.push_back(data.iIdFromEntity(*pReferrer));
            return false;
        });
    }
    return numbers;
}

class ThreadedModels : public testing::TestWithParam<std::string> {};

TEST_P(ThreadedModels, AreThoseOfASingleThreadedRead) {
    if (GetParam().empty()) GTEST_SKIP() << "no models: set OXAIFC_MODELS to a folder of IFC files";
    const std::string text = sContent(GetParam());
    if (text.size() > g_iLargest) GTEST_SKIP() << text.size() << " bytes";
    const ReadFileModel single(text, true, {});
    const ReadFileModel threaded(text, false, {});
    EXPECT_EQ(threaded.boRead, single.boRead);
    EXPECT_EQ(threaded.errors.boFatal(), single.errors.boFatal());
    EXPECT_EQ(threaded.file.data().entities().size(), single.file.data().entities().size());
    EXPECT_EQ(threaded.file.header().writeToString(), single.file.header().writeToString());
    // Of two statements with one number either may win, and a GUID is looked at when both have been parsed.
    if (boHasKey(single.errors, "Error_EntityIdReused")) return;
    EXPECT_EQ(comparableRecords(threaded.errors), comparableRecords(single.errors));
    EXPECT_EQ(threaded.file.data().guidEntityMap().size(), single.file.data().guidEntityMap().size());
    if (!single.boRead) return;   // without a proper end no numbers are settled
    EXPECT_TRUE(inOrder(threaded) == inOrder(single)) << "entities of a type, and inverse lists, in the same order";
    const ModelText found = comparableModel(threaded);
    const ModelText expected = comparableModel(single);
    ASSERT_EQ(found.size(), expected.size());
    int iShown = 0;
    for (auto a = found.begin(), b = expected.begin(); a != found.end() && iShown < 5; ++a, ++b) {
        if (*a == *b) continue;
        EXPECT_EQ(*a, *b);
        ++iShown;
    }
}

INSTANTIATE_TEST_SUITE_P(Files, ThreadedModels, testing::ValuesIn(namesOrNone()), sTestName);

}   // namespace
}   // namespace oxa::ifc::models
