// SPDX-License-Identifier: Apache-2.0
// The search for the bytes that mean something to the scanner.
#include "Format/Ifc/Read/ScanMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

namespace oxa::ifc {
namespace {

using Map = details::ScanMap<512>;

struct SearchRow {
    const char* sName;
    unsigned (Map::*pFind)(unsigned) const noexcept;
    std::string_view bytes;   // those that it finds
};

const SearchRow g_searchRows[] = {
    {"statement", &Map::iFindStatement, ";'/=\\\n\r "},
    {"string", &Map::iFindString, "'\\\n"},
};

// A buffer of exactly the size and the padding that may be looked at, which is full of hits: none counts.
std::vector<char> paddedText(std::size_t iSize, char cFill) {
    std::vector<char> text(iSize + 64, '\'');
    std::fill_n(text.begin(), iSize, cFill);
    return text;
}

TEST(ScanMap, EachByteIsFoundWhereItStands) {
    const auto pMap = std::make_unique<Map>();
    for (const SearchRow& row : g_searchRows)
        for (const unsigned iSize : {1U, 15U, 16U, 17U, 63U, 64U, 65U, 127U, 128U, 130U, 512U})
            for (unsigned iPlace = 0; iPlace<iSize; iPlace += iSize> 130 ? 37 : 1) {
                std::vector<char> text = paddedText(iSize, 'a');
                for (int iByte = 0; iByte < 256; ++iByte) {
                    const char c = static_cast<char>(iByte);
                    text[iPlace] = c;
                    pMap->vBuild(text.data(), iSize);
                    const bool boFound = row.bytes.find(c) != std::string_view::npos;
                    ASSERT_EQ(((*pMap).*row.pFind)(0), boFound ? iPlace : iSize)
                        << row.sName << ": " << iByte << " at " << iPlace << " of " << iSize;
                    ASSERT_EQ(((*pMap).*row.pFind)(iPlace + 1), iSize) << row.sName << " behind it";
                }
            }
}

TEST(ScanMap, TheFirstOfManyIsFound) {
    const auto pMap = std::make_unique<Map>();
    for (const SearchRow& row : g_searchRows)
        for (unsigned iFirst = 0; iFirst <= 200; ++iFirst) {
            std::vector<char> text = paddedText(300, 'a');
            std::fill(text.begin() + iFirst, text.end(), '\n');
            pMap->vBuild(text.data(), 300);
            for (unsigned iStart = 0; iStart <= iFirst; ++iStart)
                ASSERT_EQ(((*pMap).*row.pFind)(iStart), iFirst) << row.sName << " from " << iStart;
        }
}

TEST(ScanMap, NothingIsFoundInNothing) {
    const auto pMap = std::make_unique<Map>();
    for (const SearchRow& row : g_searchRows) EXPECT_EQ(((*pMap).*row.pFind)(0), 0U) << row.sName << " before a build";
    const std::vector<char> text = paddedText(0, 'a');
    pMap->vBuild(text.data(), 0);
    for (const SearchRow& row : g_searchRows) EXPECT_EQ(((*pMap).*row.pFind)(0), 0U) << row.sName;
}

// Bit i of a word is the class of byte i, however the word was made.
TEST(ScanWord, IsTheTableOfClasses) {
    constexpr std::string_view g_bytes = ";'/=\\\n\r #a\t\x80\xFF";
    std::mt19937 random(1);
    for (int i = 0; i < 5000; ++i) {
        std::vector<char> text(64);
        for (char& c : text) c = i % 2 ? g_bytes[random() % g_bytes.size()] : static_cast<char>(random());
        const details::ScanWord word = details::scanWord(text.data());
        const details::ScanWord plain = details::scanWord<details::PlainByteBlock>(text.data());
        ASSERT_EQ(word.uStatement, plain.uStatement);
        ASSERT_EQ(word.uString, plain.uString);
        for (unsigned iByte = 0; iByte < 64; ++iByte) {
            const unsigned uClass = details::g_scanClass[static_cast<unsigned char>(text[iByte])];
            ASSERT_EQ(word.uStatement >> iByte & 1U, uClass / details::Statement & 1U);
            ASSERT_EQ(word.uString >> iByte & 1U, uClass / details::String & 1U);
        }
    }
}

TEST(ScanClass, BlanksAreThree) {
    for (int iByte = 0; iByte < 256; ++iByte)
        EXPECT_EQ(details::boScanBlank(static_cast<char>(iByte)), iByte == ' ' || iByte == '\n' || iByte == '\r')
            << iByte;
}

TEST(ScanClass, FindsTheNumberSignToo) {
    constexpr std::string_view g_found = ";'/=\\\n\r #";
    for (int iByte = 0; iByte < 256; ++iByte) {
        const char text[] = {'a', 'b', static_cast<char>(iByte)};
        const bool boFound = g_found.find(static_cast<char>(iByte)) != std::string_view::npos;
        EXPECT_EQ(details::pFindClass(text, text + 3, details::Number) - text, boFound ? 2 : 3) << iByte;
    }
}

}   // namespace
}   // namespace oxa::ifc
