// SPDX-License-Identifier: Apache-2.0
// The text of a statement, put together from its pieces.
#include "Format/Ifc/Read/StatementBuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace oxa::ifc::io {
namespace {

TEST(StatementBuffer, HoldsItsPiecesOneBehindTheOther) {
    StatementBuffer buffer;
    std::string expected;
    EXPECT_EQ(buffer.text(), "");
    // Pieces of all lengths that are copied in blocks, and some beyond, each from a buffer of exactly what may be looked at.
    for (std::size_t iLength = 1; iLength <= 300; ++iLength) {
        std::vector<char> piece(iLength + StatementBuffer::g_iOverread, '~');
        for (std::size_t i = 0; i < iLength; ++i) piece[i] = static_cast<char>('a' + (iLength + i) % 26);
        buffer.vAppend(piece.data(), iLength);
        expected.append(piece.data(), iLength);
        ASSERT_EQ(buffer.text(), expected);
    }
    const std::string sLarge(3'000'000, 'L');
    buffer.vAppend(sLarge.data(), sLarge.size());
    EXPECT_EQ(buffer.text(), expected + sLarge);
    buffer.vDropLast();
    EXPECT_EQ(buffer.text().size(), expected.size() + sLarge.size() - 1);
    buffer.vClear();
    EXPECT_EQ(buffer.text(), "");
}

}   // namespace
}   // namespace oxa::ifc::io
