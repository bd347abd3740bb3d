// SPDX-License-Identifier: Apache-2.0
// Cutting a parameter list at its commas.
#include "Format/Ifc/Text/Parameters.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// The same cut by vectors and byte by byte, with what is inside of lists: "a", "(b|c)" of a list of two, "(3)" of one whose
// items are not all noted.
template <class Block>
std::vector<std::string> cutOf(const std::string& sText, std::size_t iInFront) {
    std::vector<char> exact(iInFront, ',');
    exact.insert(exact.end(), sText.begin(), sText.end());
    std::vector<std::string> items;
    details::CutItems cut;
    details::ItemCut<Block> cutting(exact.data(), exact.data() + iInFront, exact.data() + exact.size());
    for (bool boMore = true; boMore;) {
        boMore = cutting.boNext(cut);
        cut.vEach([&](const char* first, const char* last, std::size_t i) {
            const details::ItemEnds ends = cut.endsInside(i);
            if (!ends.pEnds) {
                items.emplace_back(first, last);
                return;
            }
            std::string sInside = "(";
            const char* pBegin = first + 1;
            for (std::size_t k = 0; k < std::min(ends.iCount, details::ItemEnds::g_iMost); ++k) {
                if (k) sInside += '|';
                sInside.append(pBegin, ends.pEnds[k]);
                pBegin = ends.pEnds[k] + 1;
            }
            if (!ends.boAllKnown()) sInside += "|of " + std::to_string(ends.iCount);
            items.push_back(sInside + ")");
        });
    }
    return items;
}

const CutRow g_insideRows[] = {
    {"", {}},
    {"()", {"()"}},
    {"(,)", {"()"}},   // one item, which is empty
    {"(a)", {"(a)"}},
    {"(a,)", {"(a)"}},
    {"(a,b)", {"(a|b)"}},
    {"(,b)", {"(|b)"}},
    {"(a,,b)", {"(a||b)"}},
    {"x,(a,b),y", {"x", "(a|b)", "y"}},
    {"((a,b),(c,d))", {"((a,b)|(c,d))"}},
    {"((),())", {"(()|())"}},
    {"('a,b','(')", {"('a,b'|'(')"}},
    {"('it''s',',')", {"('it''s'|',')"}},
    {"IFCX(1,2)", {"IFCX(1,2)"}},   // begins with something else
    {"(1,2)x", {"(1,2)x"}},         // ends with something else
    {"(1)(2)", {"(1)(2)"}},
    {"(1", {"(1"}},
    {"('1)", {"('1)"}},
    {"((1)", {"((1)"}},
    {"(1))", {"(1))"}},
    {")(1,2)", {")(1", "2)"}},   // the depth is 0 again behind the second one
    {"(1,2),", {"(1|2)"}},
    {"(1E+5,*)", {"(1E+5|*)"}},
    {"(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16)", {"(1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16)"}},
    {"(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,)", {"(1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16)"}},
    {"(1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17),a", {"(1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|of 17)", "a"}},
};

TEST(Parameters, ListsInsideAreCutInPassing) {
    for (const CutRow& row : g_insideRows)
        for (std::size_t iBefore = 0; iBefore < 80; ++iBefore) {   // longer than the word of marks
            const std::string sText = std::string(iBefore, 'x') + (iBefore ? "," : "") + row.sText;
            std::vector<std::string> expected = row.items;
            if (iBefore) expected.insert(expected.begin(), std::string(iBefore, 'x'));
            for (const std::size_t iInFront : {0U, 7U, 16U, 40U}) {
                SCOPED_TRACE(sText + " behind " + std::to_string(iInFront));
                ASSERT_EQ(cutOf<details::ByteBlock>(sText, iInFront), expected);
                ASSERT_EQ(cutOf<details::PlainByteBlock>(sText, iInFront), expected);
            }
        }
}

// More items than are cut at a time, lists among them.
TEST(Parameters, AnyNumberOfItems) {
    std::string sText;
    std::vector<std::string> expected;
    for (int i = 0; i < 100; ++i) {
        const std::string sNumber = std::to_string(i);
        sText += (i ? "," : "") + (i % 3 ? sNumber : "(" + sNumber + "," + sNumber + ")");
        expected.push_back(i % 3 ? sNumber : "(" + sNumber + "|" + sNumber + ")");
        ASSERT_EQ(cutOf<details::ByteBlock>(sText, 0), expected);
        ASSERT_EQ(cutOf<details::PlainByteBlock>(sText, 3), expected);
    }
}

// The rule for one list, byte by byte: the first parenthesis is closed by the last byte.
bool boOneList(const std::string& sItem) {
    bool boString = false;
    int iDepth = 0;
    for (std::size_t i = 0; i < sItem.size(); ++i) {
        if (sItem[i] == '\'') boString = !boString;
        if (!boString) iDepth += sItem[i] == '(' ? 1 : sItem[i] == ')' ? -1 : 0;
        if (iDepth == 0) return sItem[i] == ')' && i + 1 == sItem.size();
    }
    return false;
}

// What is noted of a list is what cutting its inside gives.
TEST(Parameters, WhatIsNotedIsWhatIsInside) {
    static const std::vector<std::string> g_pieces = {
        "(", ")", ",", ",", "x", "long as some are", "'x'", "'x,(y'", "(x", "x)", ")", "()", "(,", ",)", "*", "'"};
    std::mt19937 random(2);
    std::size_t iLists = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::string sText;
        for (std::size_t n = random() % 40; n-- > 0;)
            sText += g_pieces[random() % (g_pieces.size() - (random() % 8 ? 2 : 0))];
        std::vector<std::string> expected = plainItemsOf(sText);
        for (std::string& sItem : expected) {
            if (!boOneList(sItem)) continue;
            ++iLists;
            const std::vector<std::string> inside = plainItemsOf(sItem.substr(1, sItem.size() - 2));
            sItem = "(";
            for (std::size_t n = 0; n < std::min<std::size_t>(inside.size(), 16); ++n)
                sItem += (n ? "|" : "") + inside[n];
            sItem += inside.size() > 16 ? "|of " + std::to_string(inside.size()) + ")" : ")";
        }
        ASSERT_EQ(cutOf<details::ByteBlock>(sText, random() % 20), expected) << sText;
        ASSERT_EQ(cutOf<details::PlainByteBlock>(sText, random() % 20), expected) << sText;
    }
    EXPECT_GT(iLists, 1000U);
}

template <class Block>
std::size_t iFirstEnd(const std::string& sText, std::size_t iInFront) {
    const std::vector<std::string> items = cutOf<Block>(sText, iInFront);
    return items.empty() ? 0 : items.front().size();
}

// Each byte value at each place of a buffer of exactly the size, with and without bytes in front that would be found: a
// comma alone ends the first item.
TEST(Parameters, TheSpanIsExact) {
    for (const std::size_t iInFront : {0U, 20U})
        for (const std::size_t iSize : {1U, 2U, 15U, 16U, 17U, 31U, 33U, 63U, 64U, 65U, 80U})
            for (std::size_t iPlace = 0; iPlace < iSize; ++iPlace)
                for (int iByte = 0; iByte < 256; ++iByte) {
                    if (iByte == '(' || iByte == '\'' || iByte == ')') continue;
                    std::string sText(iSize, '\x80');
                    sText[iPlace] = static_cast<char>(iByte);
                    const std::size_t iEnd = iByte == ',' ? iPlace : iSize;
                    ASSERT_EQ(iFirstEnd<details::ByteBlock>(sText, iInFront), iEnd) << iByte << " at " << iPlace;
                    ASSERT_EQ(iFirstEnd<details::PlainByteBlock>(sText, iInFront), iEnd) << iByte << " at " << iPlace;
                }
}

}   // namespace
}   // namespace oxa::ifc
