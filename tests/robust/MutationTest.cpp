// SPDX-License-Identifier: Apache-2.0
// 20,000 changed files from a fixed seed: each is read, and written where it could be read; of some, the threaded read
// is held against the single-threaded one.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <random>
#include <sstream>

#include "../Format/Ifc/AssertLog.h"
#include "../Format/Ifc/ModelText.h"
#include "Fixtures.h"

namespace oxa::ifc {
namespace {

// Small changes: bytes that mean something to a reader, words of the format, and pieces doubled, moved, taken out.
class Mutator {
public:
    explicit Mutator(unsigned iSeed) : m_random(iSeed) {}

    std::string sChanged(std::string sText) {
        for (std::size_t i = 1 + iBelow(5); i; --i) vChange(sText);
        return sText;
    }
    std::size_t iBelow(std::size_t iLimit) { return m_random() % std::max<std::size_t>(iLimit, 1); }

private:
    void vChange(std::string& sText) {
        using namespace std::string_view_literals;
        static constexpr auto g_bytes = "\0'(),;=#/*\\\n\r \t\x80\xff$.\"X0S-19EF_"sv;
        static constexpr std::array g_words{"/*",        "*/",          "\\X2\\",
                                            "\\X4\\",    "\\X0\\",      "\\S\\",
                                            "\\X\\",     "''",          "ENDSEC;",
                                            "DATA;",     "#1=",         "IFC",
                                            "((",        "))",          "$,$,$,",
                                            "*,",        "1.E999",      ".T.",
                                            "\"3F\"",    "#4294967295", "E308.",
                                            "HEADER;",   ");",          "END-ISO-10303-21;",
                                            "IFCLABEL(", "IFCWALL(",    "99999999999999999999"};
        const std::size_t iPlace = iBelow(sText.size());
        switch (iBelow(7)) {
        case 0: sText.erase(iPlace, 1 + iBelow(4)); break;
        case 1: sText.erase(iPlace, iBelow(200)); break;
        case 2: sText.insert(iPlace, 1, g_bytes[iBelow(g_bytes.size())]); break;
        case 3: sText.insert(iPlace, g_words[iBelow(g_words.size())]); break;
        case 4: sText.insert(iPlace, sText.substr(iBelow(sText.size()), iBelow(80))); break;
        case 5: sText.replace(iPlace, iBelow(40), sText.substr(iBelow(sText.size()), iBelow(40))); break;
        default: sText.replace(iPlace, 1, 1, g_bytes[iBelow(g_bytes.size())]);
        }
        if (sText.empty()) sText = ";";
    }

    std::mt19937 m_random;
};

void vWrite(const File& file) {
    std::ostringstream out;
    io::WriteError errors;
    file.data().boWrite(out, errors, true);
    file.boWrite(out, errors, {}, true);
}

void vExpectThreadedTheSame(const std::string& sText, const ReadFileModel& single) {
    const ReadFileModel threaded(sText, false, {});
    ASSERT_EQ(threaded.boRead, single.boRead);
    const auto expected = comparableRecords(single.errors);
    const auto found = comparableRecords(threaded.errors);
    // Which of two statements of one number wins is open, and the threaded read may have come to the second one alone.
    if (boHasKey(single.errors, "Error_EntityIdReused") || boHasKey(threaded.errors, "Error_EntityIdReused")) return;
    if (single.errors.boFatal()) {
        // The scanner may be ahead of the worker that finds the fault: nothing less, but more may have been read.
        EXPECT_TRUE(threaded.errors.boFatal());
        EXPECT_TRUE(std::ranges::includes(found, expected))
            << "threaded: " << testing::PrintToString(found) << "\nsingle: " << testing::PrintToString(expected);
        return;
    }
    EXPECT_EQ(found, expected);
    if (single.boRead) {   // a read without a proper end settles no numbers
        EXPECT_EQ(comparableModel(threaded), comparableModel(single));
    }
}

// Most changes go to the smaller files, which read so much faster.
std::size_t iChangesOf(const Fixture& fixture) {
    std::size_t iSmall = 0;
    for (const Fixture& other : stepFixtures()) iSmall += other.sText.size() < 10000 ? 1 : 0;
    const std::size_t iLarge = stepFixtures().size() - iSmall;
    constexpr std::size_t g_iAll = 20000;
    constexpr std::size_t g_iEachLarge = 1000;
    return fixture.sText.size() < 10000 ? (g_iAll - iLarge * g_iEachLarge) / iSmall + 1 : g_iEachLarge;
}

class Mutation : public testing::TestWithParam<Fixture> {};

TEST_P(Mutation, IsReadOrReported) {
    const AssertLog log;
    const Fixture& fixture = GetParam();
    Mutator mutator(static_cast<unsigned>(fixture.sText.size()));
    const std::size_t iChanges = iChangesOf(fixture);
    std::size_t iRead = 0;
    for (std::size_t i = 0; i < iChanges; ++i) {
        const std::string sText = mutator.sChanged(fixture.sText);
        const ReadFileModel model(sText, true, {});
        ASSERT_TRUE(model.boRead || !model.errors.records().empty()) << sText;
        if (i % 4 == 0) vExpectThreadedTheSame(sText, model);
        if (HasFailure()) FAIL() << "change " << i << " of " << fixture.sName << ":\n" << sText;
        iRead += model.boRead ? 1 : 0;
        if (model.boRead) vWrite(model.file);   // deals numbers to what the file names and does not define
    }
    EXPECT_GT(iRead, 0U);
}

INSTANTIATE_TEST_SUITE_P(OfEachFixture, Mutation, testing::ValuesIn(stepFixtures()), [](const auto& test) {
    std::string sName = test.param.sName;
    std::erase_if(sName, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
    return sName;
});

}   // namespace
}   // namespace oxa::ifc
