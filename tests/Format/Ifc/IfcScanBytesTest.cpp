// The search for the bytes that mean something to the scanner.
#include "Format/Ifc/IfcScanBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace oxa::ifc {
namespace {

struct SearchRow {
    const char* sName;
    const char* (*pFind)(const char*, const char*) noexcept;
    std::string_view bytes;   // those that it finds
};

const SearchRow g_searchRows[] = {
    {"statement", details::pFindStatement, ";'/=\\\n\r "},
    {"string", details::pFindString, "'\\\n"},
    {"statement and number sign",
     [](const char* first, const char* last) noexcept {
         return details::pFindClass(first, last, details::Number);
     },
     ";'/=\\\n\r #"},
};

// A buffer of exactly the size and the padding that a search may look at, which is full of hits: none counts.
std::vector<char> paddedText(std::size_t iSize, char cFill) {
    std::vector<char> text(iSize + 15, '\'');
    std::fill_n(text.begin(), iSize, cFill);
    return text;
}

TEST(ScanBytes, EachByteIsFoundWhereItStands) {
    for (const SearchRow& row : g_searchRows)
        for (std::size_t iSize = 1; iSize <= 50; ++iSize)
            for (std::size_t iPlace = 0; iPlace < iSize; ++iPlace) {
                std::vector<char> text = paddedText(iSize, 'a');
                for (int iByte = 0; iByte < 256; ++iByte) {
                    const char c = static_cast<char>(iByte);
                    text[iPlace] = c;
                    const bool boFound = row.bytes.find(c) != std::string_view::npos;
                    ASSERT_EQ(row.pFind(text.data(), text.data() + iSize) - text.data(),
                              static_cast<std::ptrdiff_t>(boFound ? iPlace : iSize))
                        << row.sName << ": " << iByte << " at " << iPlace << " of " << iSize;
                }
            }
}

TEST(ScanBytes, TheFirstOfManyIsFound) {
    for (const SearchRow& row : g_searchRows)
        for (std::size_t iFirst = 0; iFirst <= 40; ++iFirst)
            for (std::size_t iStart = 0; iStart <= iFirst; ++iStart) {
                std::vector<char> text = paddedText(50, 'a');
                std::fill(text.begin() + static_cast<std::ptrdiff_t>(iFirst), text.end(), '\n');
                ASSERT_EQ(row.pFind(text.data() + iStart, text.data() + 50) - text.data(),
                          static_cast<std::ptrdiff_t>(iFirst))
                    << row.sName << " from " << iStart;
            }
}

TEST(ScanBytes, NothingIsFoundInNothing) {
    const std::vector<char> text = paddedText(0, 'a');
    for (const SearchRow& row : g_searchRows) EXPECT_EQ(row.pFind(text.data(), text.data()), text.data()) << row.sName;
}

}   // namespace
}   // namespace oxa::ifc
