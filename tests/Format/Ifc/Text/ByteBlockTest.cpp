// SPDX-License-Identifier: Apache-2.0
// Sixteen bytes at once, against the same byte by byte.
#include "Format/Ifc/Text/ByteBlock.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <utility>

namespace oxa::ifc {
namespace {

using Bytes = std::array<char, 16>;

// One bit a byte, by a rule for one.
template <class Rule>
unsigned uBits(const Bytes& bytes, Rule&& boMeant) {
    unsigned uMask = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        uMask |= static_cast<unsigned>(boMeant(static_cast<unsigned char>(bytes[i]))) << i;
    return uMask;
}

template <class Block>
void vExpectBlock(const Bytes& bytes) {
    const Block block(bytes.data());
    EXPECT_EQ(block.uHighBits(), uBits(bytes, [](unsigned char c) { return c >= 0x80; }));
    EXPECT_EQ(block.among('\'').uHighBits(), uBits(bytes, [](unsigned char c) { return c == '\''; }));
    EXPECT_EQ(block.among('\\', '\xff', '\0').uHighBits(),
              uBits(bytes, [](unsigned char c) { return c == '\\' || c == 0xff || c == 0; }));
    EXPECT_EQ((block | block.among('a', 'z')).uHighBits(),
              uBits(bytes, [](unsigned char c) { return c >= 0x80 || c == 'a' || c == 'z'; }));
    EXPECT_EQ(block.between('\'', ',').uHighBits(), uBits(bytes, [](unsigned char c) { return c >= 39 && c <= 44; }));
    EXPECT_EQ(block.between('\0', '\x7f').uHighBits(), uBits(bytes, [](unsigned char c) { return c < 0x80; }));
    EXPECT_EQ(block.between('A', 'A').uHighBits(), uBits(bytes, [](unsigned char c) { return c == 'A'; }));
}

TEST(ByteBlock, MarksEachByteAtEachPlace) {
    for (std::size_t iPlace = 0; iPlace < 16; ++iPlace)
        for (int iByte = 0; iByte < 256; ++iByte) {
            SCOPED_TRACE(std::to_string(iByte) + " at " + std::to_string(iPlace));
            Bytes bytes;
            bytes.fill('x');
            bytes[iPlace] = static_cast<char>(iByte);
            vExpectBlock<details::ByteBlock>(bytes);
            vExpectBlock<details::PlainByteBlock>(bytes);
        }
}

TEST(ByteBlock, MarksManyAtOnce) {
    std::mt19937 random(1);
    for (int i = 0; i < 2000; ++i) {
        Bytes bytes;
        for (char& c : bytes) c = i % 2 ? static_cast<char>(random()) : "'(),-z\\\xff"[random() % 8];
        vExpectBlock<details::ByteBlock>(bytes);
        vExpectBlock<details::PlainByteBlock>(bytes);
    }
}

}   // namespace
}   // namespace oxa::ifc
