// SPDX-License-Identifier: Apache-2.0
#include "platform/XmlBase64.h"

#include <gtest/gtest.h>

#include <random>

namespace oxa::xml::utilities {
namespace {

using namespace std::string_view_literals;
using Bytes = std::vector<unsigned char>;

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

TEST(XmlBase64, EncodesAndDecodes) {
    const struct {
        std::string_view bytes;
        const char* sText;
    } rows[] = {
        // RFC 4648, clause 10
        {""sv, ""},
        {"f"sv, "Zg=="},
        {"fo"sv, "Zm8="},
        {"foo"sv, "Zm9v"},
        {"foob"sv, "Zm9vYg=="},
        {"fooba"sv, "Zm9vYmE="},
        {"foobar"sv, "Zm9vYmFy"},
        // every byte is a byte, and the last two of the alphabet
        {"\0"sv, "AA=="},
        {"\0\0\0"sv, "AAAA"},
        {"\xFF\xFF\xFF"sv, "////"},
        {"\xFB\xEF\xBE"sv, "++++"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sText);
        const Bytes bytes = bytesOf(row.bytes);
        EXPECT_EQ(Base64::encode(bytes.data(), bytes.size()), row.sText);
        EXPECT_EQ(Base64::decode(row.sText), bytes);
    }
}

TEST(XmlBase64, DecodesWhatADocumentMayMakeOfIt) {
    const struct {
        const char* sRule;
        const char* sText;
        std::string_view bytes;   // none: refused
    } rows[] = {
        {"white space around it", "\n\t Zm9v \r\n", "foo"sv},
        {"white space inside", "Z m\n9v\r\nYmFy", "foobar"sv},
        {"white space before the padding", "Zg =\n=", "f"sv},
        {"white space alone", " \n", ""sv},
        {"a foreign character", "Zm9*", ""sv},
        {"the alphabet of file names", "-_-_", ""sv},
        {"a character beyond ASCII", "Zm9\xC3", ""sv},
        {"no padding", "Zg", ""sv},
        {"half the padding", "Zg=", ""sv},
        {"cut", "Zm9vY", ""sv},
        {"padding alone", "====", ""sv},
        {"three of it", "Z===", ""sv},
        {"three of it behind a whole group", "Zm9vZ===", ""sv},
        {"padding in the middle", "Zg==Zm9v", ""sv},
        {"padding in the middle of a group", "Zg=v", ""sv},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(Base64::decode(row.sText), bytesOf(row.bytes));
    }
}

TEST(XmlBase64, AnyBytesComeBack) {
    std::mt19937 random(7);
    for (std::size_t size = 0; size < 300; ++size) {
        Bytes bytes(size);
        for (unsigned char& c : bytes) c = static_cast<unsigned char>(random());
        const std::string sText = Base64::encode(bytes.data(), bytes.size());
        EXPECT_EQ(sText.size(), (size + 2) / 3 * 4);
        EXPECT_EQ(Base64::decode(sText), bytes) << size;
    }
}

}   // namespace
}   // namespace oxa::xml::utilities
