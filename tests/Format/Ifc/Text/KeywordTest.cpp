// SPDX-License-Identifier: Apache-2.0
// The name of a type in a statement: where it ends, and whether it is the one that is looked for.
#include "Format/Ifc/Text/Keyword.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace oxa::ifc {
namespace {

// The offset of the first "(", looked for in a buffer of exactly that text; -1 where there is none.
template <class Block>
std::ptrdiff_t iOpening(const std::string& sText) {
    const std::vector<char> exact(sText.begin(), sText.end());
    const char* const pFound = details::pFindOpening<Block>(exact.data(), exact.data() + exact.size());
    return pFound ? pFound - exact.data() : -1;
}

TEST(Keyword, EndsAtTheFirstParenthesis) {
    // At each place relative to a vector, with as much behind it.
    for (std::size_t iBefore = 0; iBefore <= 70; ++iBefore)
        for (const std::size_t iBehind : {0U, 1U, 15U, 16U, 17U, 40U}) {
            SCOPED_TRACE(std::to_string(iBefore) + " and " + std::to_string(iBehind));
            // Bytes beside "(" in the code table, with a second one behind.
            std::string sText(iBefore, iBefore % 2 ? '\'' : ')');
            ASSERT_EQ(iOpening<details::ByteBlock>(sText), -1);
            ASSERT_EQ(iOpening<details::PlainByteBlock>(sText), -1);
            sText += '(' + std::string(iBehind, '(');
            ASSERT_EQ(iOpening<details::ByteBlock>(sText), static_cast<std::ptrdiff_t>(iBefore));
            ASSERT_EQ(iOpening<details::PlainByteBlock>(sText), static_cast<std::ptrdiff_t>(iBefore));
        }
}

TEST(Keyword, IsTheSameInEachByteOrNot) {
    for (std::size_t iLength = 0; iLength <= 40; ++iLength) {
        SCOPED_TRACE(iLength);
        std::string sName(iLength, ' ');
        for (std::size_t i = 0; i < iLength; ++i) sName[i] = static_cast<char>('A' + i % 26);
        const std::vector<char> exact(sName.begin(), sName.end());   // nothing behind it can be read
        const std::string_view name(exact.data(), exact.size());
        EXPECT_TRUE(details::boSameText(name, sName));
        EXPECT_FALSE(details::boSameText(name, sName + 'X'));
        EXPECT_EQ(details::boSameText(name.substr(0, iLength / 2), sName), iLength == 0);
        for (std::size_t i = 0; i < iLength; ++i) {
            std::string sOther = sName;
            sOther[i] = '_';
            EXPECT_FALSE(details::boSameText(name, sOther)) << i;
            EXPECT_FALSE(details::boSameText(sOther, name)) << i;
        }
    }
}

}   // namespace
}   // namespace oxa::ifc
