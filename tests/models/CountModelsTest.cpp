// SPDX-License-Identifier: Apache-2.0
// Real files of many exporters: the count of their statements is that of a read, and most of them leave no doubt.
#include <gtest/gtest.h>

#include <random>

#include "CountCheck.h"
#include "models/ModelFiles.h"

namespace oxa::ifc::models {
namespace {

TEST(CountModels, CountedAsRead) {
    if (names().empty()) GTEST_SKIP() << "no models in " << folder();
    std::size_t iCounted = 0, iSeen = 0;
    std::string sDoubts;
    for (const std::string& sName : names()) {
        SCOPED_TRACE(sName);
        if (std::filesystem::file_size(folder() / sName) > 3'000'000) continue;   // reading takes its time
        ++iSeen;
        const io::FileCount count = countAsRead(folder() / sName, sContent(sName));
        iCounted += count.doubt.empty();
        if (!count.doubt.empty()) sDoubts += sName + ": " + std::string(count.doubt) + '\n';
    }
    EXPECT_GT(iCounted, iSeen / 2) << sDoubts;
}

// A byte of each changed at random places, in files that are small.
TEST(CountModels, ChangedBytesAreCountedAsReadOrLeft) {
    if (names().empty()) GTEST_SKIP() << "no models in " << folder();
    const std::string_view bytes = "';#=()/*\\ \n\t0XS";
    std::mt19937 random(11);
    const CountedText text;
    for (const std::string& sName : names()) {
        const std::string sWhole = sContent(sName);
        if (sWhole.size() > 20'000) continue;
        for (int i = 0; i < 5; ++i) {
            std::string sText = sWhole;
            sText[random() % sText.size()] = bytes[random() % bytes.size()];
            text.vWrite(sText);
            countAsRead(text.path(), sText, {.boSingleThreaded = true});
            ASSERT_FALSE(HasFailure()) << sName << ", change " << i;
        }
    }
}

}   // namespace
}   // namespace oxa::ifc::models
