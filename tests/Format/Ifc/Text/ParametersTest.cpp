// SPDX-License-Identifier: Apache-2.0
// Cutting a parameter list at its commas.
#include "Format/Ifc/Text/Parameters.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace oxa::ifc {
namespace {

// The items of a text at the end of a buffer of exactly its size and that of what stands in front.
std::vector<std::string> itemsOf(const std::string& sText, std::size_t iInFront = 0) {
    std::vector<char> exact(iInFront, ',');
    exact.insert(exact.end(), sText.begin(), sText.end());
    std::vector<std::string> items;
    details::vForEachItem(exact.data(), exact.data() + iInFront, exact.data() + exact.size(),
                          [&](const char* first, const char* last) { items.emplace_back(first, last); });
    return items;
}

struct CutRow {
    const char* sText;
    std::vector<std::string> items;
};

const CutRow g_cutRows[] = {
    {"", {}},
    {"a", {"a"}},
    {"a,b", {"a", "b"}},
    {"a,b,", {"a", "b"}},
    {",", {""}},
    {",,", {"", ""}},
    {"a,,b", {"a", "", "b"}},
    {"'a,b',(1,2),3", {"'a,b'", "(1,2)", "3"}},
    {"'it''s',2", {"'it''s'", "2"}},
    {"'a)',2", {"'a)'", "2"}},
    {"(1,2,3", {"(1,2,3"}},
    {"1),2,(3,4", {"1),2,(3", "4"}},   // a stray parenthesis hides commas until the depth is 0 again
    {"'a,b", {"'a,b"}},
    {"*,+1,-2,\"0,1\"", {"*", "+1", "-2", "\"0", "1\""}},
};

TEST(Parameters, AreCutAtTopLevelCommas) {
    for (const CutRow& row : g_cutRows) {
        SCOPED_TRACE(row.sText);
        // At each place relative to a vector, and behind a long item.
        for (std::size_t iBefore = 0; iBefore < 40; ++iBefore) {
            const std::string sText = std::string(iBefore, 'x') + (iBefore ? "," : "") + row.sText;
            std::vector<std::string> expected = row.items;
            if (iBefore) expected.insert(expected.begin(), std::string(iBefore, 'x'));
            for (const std::size_t iInFront : {0U, 7U, 16U, 40U}) ASSERT_EQ(itemsOf(sText, iInFront), expected);
        }
    }
}

// The rule, byte by byte.
std::vector<std::string> plainItemsOf(const std::string& sText) {
    std::vector<std::string> items;
    std::string sItem;
    bool boString = false;
    int iDepth = 0;
    for (const char c : sText) {
        if (c == '\'') boString = !boString;
        if (!boString) iDepth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (c == ',' && !boString && iDepth == 0) {
            items.push_back(std::exchange(sItem, {}));
        } else {
            sItem += c;
        }
    }
    if (!sItem.empty()) items.push_back(sItem);
    return items;
}

TEST(Parameters, AreCutAsByteByByte) {
    static const std::string g_bytes = "',()a*+&-";
    std::mt19937 random(1);
    for (int i = 0; i < 20'000; ++i) {
        std::string sText(random() % 90, 'x');
        const std::size_t iSpecial = random() % 12 + 1;   // one byte in so many
        for (char& c : sText)
            if (random() % iSpecial == 0) c = g_bytes[random() % g_bytes.size()];
        ASSERT_EQ(itemsOf(sText, random() % 20), plainItemsOf(sText)) << sText;
    }
}

struct SpanRow {
    char cHigh;
    const char* (*pFind)(const char*, const char*, const char*) noexcept;
};

const SpanRow g_spanRows[] = {
    {',', details::pFindFromQuoteTo<','>},
    {')', details::pFindFromQuoteTo<')'>},
    {',', details::pFindFromQuoteTo<',', details::PlainByteBlock>},
    {')', details::pFindFromQuoteTo<')', details::PlainByteBlock>},
};

// Each byte value at each place of a buffer of exactly the size, with and without bytes in front that would be found:
// only those of the span are.
TEST(Parameters, TheSpanIsExact) {
    for (const SpanRow& row : g_spanRows)
        for (const std::size_t iInFront : {0U, 5U, 20U})
            for (std::size_t iSize = 1; iSize <= 40; ++iSize)
                for (std::size_t iPlace = 0; iPlace < iSize; ++iPlace) {
                    std::vector<char> text(iInFront, '\'');
                    text.resize(iInFront + iSize, '\x80');
                    const char* const pFirst = text.data() + iInFront;
                    for (int iByte = 0; iByte < 256; ++iByte) {
                        text[iInFront + iPlace] = static_cast<char>(iByte);
                        const bool boInside = iByte >= '\'' && iByte <= row.cHigh;
                        ASSERT_EQ(row.pFind(text.data(), pFirst, pFirst + iSize) - pFirst,
                                  static_cast<std::ptrdiff_t>(boInside ? iPlace : iSize))
                            << iByte << " at " << iPlace << " of " << iSize << ", " << iInFront << " in front";
                    }
                }
}

}   // namespace
}   // namespace oxa::ifc
