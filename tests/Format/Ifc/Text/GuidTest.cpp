// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcGuid.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#if __has_include(<rapidcheck/gtest.h>)
#include <rapidcheck/gtest.h>
#define OXA_PROPERTIES
#endif

namespace oxa::ifc {
namespace {

Guid guidOf(std::uint32_t one, std::uint16_t two, std::uint16_t three, const std::array<std::uint8_t, 8>& tail) {
    Guid guid{};
    guid.Data1 = one;
    guid.Data2 = two;
    guid.Data3 = three;
    for (std::size_t i = 0; i < tail.size(); ++i) guid.Data4[i] = tail[i];
    return guid;
}

struct GuidRow {
    const char* sRule;
    Guid guid;
    std::string_view text;
};
const GuidRow g_guidRows[] = {
    {"the null GUID", guidOf(0, 0, 0, {}), "0000000000000000000000"},
    {"all bits", guidOf(~0u, 0xFFFF, 0xFFFF, {255, 255, 255, 255, 255, 255, 255, 255}), "3$$$$$$$$$$$$$$$$$$$$$"},
    {"the highest byte of Data1", guidOf(0xFF000000, 0, 0, {}), "3$00000000000000000000"},
    {"the rest of Data1", guidOf(0x00FFFFFF, 0, 0, {}), "00$$$$0000000000000000"},
    {"Data2 in front of half of Data3", guidOf(0, 0xFFFF, 0, {}), "000000$$y0000000000000"},
    {"Data3 in two groups", guidOf(0, 0, 0xFFFF, {}), "000000003$$m0000000000"},
    {"the first two bytes of Data4", guidOf(0, 0, 0, {0xFF, 0xFF}), "00000000000F$$00000000"},
    {"the middle of Data4", guidOf(0, 0, 0, {0, 0, 0xFF, 0xFF, 0xFF}), "00000000000000$$$$0000"},
    {"the end of Data4", guidOf(0, 0, 0, {0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF}), "000000000000000000$$$$"},
    {"the last digit", guidOf(0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0x3E}), "000000000000000000000_"},
    {"all bytes different", guidOf(0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}),
     "004I8pH5LcTuYPghlCtUx$"},
    // The example of RFC 4122, and the name space for DNS names in it.
    {"f81d4fae-7dec-11d0-a765-00a0c91e6bf6",
     guidOf(0xF81D4FAE, 0x7DEC, 0x11D0, {0xA7, 0x65, 0x00, 0xA0, 0xC9, 0x1E, 0x6B, 0xF6}), "3u7K_kVUmHqATb0A397cls"},
    {"6ba7b810-9dad-11d1-80b4-00c04fd430c8",
     guidOf(0x6BA7B810, 0x9DAD, 0x11D1, {0x80, 0xB4, 0x00, 0xC0, 0x4F, 0xD4, 0x30, 0xC8}), "1hfxWGdQqHqO2q0C1Fr338"},
};

TEST(IfcGuid, GroupsStandWhereTheyBelong) {
    for (const GuidRow& row : g_guidRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(IfcGuid::toIfcGuid(row.guid), row.text);
        const auto guid = IfcGuid::fromIfcGuid(row.text);
        ASSERT_TRUE(guid);
        EXPECT_TRUE(*guid == row.guid);
    }
}

// The text in a buffer of its exact size: a sanitizer sees every byte read outside.
std::unique_ptr<char[]> pExact(std::string_view text) {
    std::unique_ptr<char[]> pText(new char[text.size()]);
    text.copy(pText.get(), text.size());
    return pText;
}

TEST(IfcGuid, WritesExactly23Bytes) {
    const auto pText = std::make_unique<char[]>(IfcGuid::Length + 1);
    std::memset(pText.get(), '#', IfcGuid::Length + 1);
    EXPECT_TRUE(IfcGuid::boIfcStringFromGuid(pText.get(), guidOf(0, 0, 0, {1})));
    EXPECT_STREQ(pText.get(), "0000000000004000000000");
    EXPECT_EQ(pText[IfcGuid::Length], '\0');
}

TEST(IfcGuid, ForeignCharacterIsRefusedAtEachPosition) {
    for (const char c : {' ', '-', '+', '/', '=', '@', '[', '`', '{', '#', '%', '\x7F', '\x80', '\xFF'})
        for (std::size_t i = 0; i < IfcGuid::Length; ++i) {
            SCOPED_TRACE(std::string(1, c) + " at " + std::to_string(i));
            std::string text = "1hfxWGdQqHqO2q0C1Fr338";
            text[i] = c;
            const Guid before = guidOf(1, 2, 3, {4});
            Guid guid = before;
            EXPECT_FALSE(IfcGuid::boIfcStringToGuid(guid, pExact(text).get()));
            EXPECT_TRUE(guid == before);
            EXPECT_FALSE(IfcGuid::fromIfcGuid(text));
        }
}

// Each byte at each place: a digit changes the text that is written, NUL ends its group, and all else is refused.
TEST(IfcGuid, EachByteCountsAtEachPosition) {
    constexpr std::string_view alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
    for (std::size_t i = 0; i < IfcGuid::Length; ++i)
        for (int iByte = 0; iByte < 256; ++iByte) {
            SCOPED_TRACE(std::to_string(iByte) + " at " + std::to_string(i));
            std::string text = "1hfxWGdQqHqO2q0C1Fr338";
            text[i] = static_cast<char>(iByte);
            const auto guid = IfcGuid::fromIfcGuid({pExact(text).get(), text.size()});
            const std::size_t iDigit = alphabet.find(text[i]);
            ASSERT_EQ(guid.has_value(), iDigit != std::string_view::npos || iByte == 0);
            if (!guid || iByte == 0) continue;
            if (i == 0) text[0] = alphabet[iDigit % 4];   // of which two bits fit
            ASSERT_EQ(IfcGuid::toIfcGuid(*guid), text);
        }
}

struct DecodeRow {
    const char* sRule;
    std::string_view text;
    bool boAccepted;
    std::string_view sCanonical;   // what the GUID is written as
};
const DecodeRow g_decodeRows[] = {
    {"21 characters are too few", "1hfxWGdQqHqO2q0C1Fr33", false, ""},
    {"nothing", "", false, ""},
    {"the 23rd is ignored", "1hfxWGdQqHqO2q0C1Fr3384", true, "1hfxWGdQqHqO2q0C1Fr338"},
    {"even a foreign one", "1hfxWGdQqHqO2q0C1Fr338-", true, "1hfxWGdQqHqO2q0C1Fr338"},
    // "z" is 61 and "zz" 3965, of which 0x7D fit: "1z".
    {"a first digit above 3 loses bits", "zzfxWGdQqHqO2q0C1Fr338", true, "1zfxWGdQqHqO2q0C1Fr338"},
    {"a 4 in front is a 0", "4hfxWGdQqHqO2q0C1Fr338", true, "0hfxWGdQqHqO2q0C1Fr338"},
    {"case counts", "1HFXWGDQQHQO2Q0C1FR338", true, "1HFXWGDQQHQO2Q0C1FR338"},
    {"NUL ends its group", {"1hf\0--dQqHqO2q0C1Fr338", 22}, true, "1h000fdQqHqO2q0C1Fr338"},
    {"NUL in front of a group empties it", {"1hfxWG\0---qO2q0C1Fr338", 22}, true, "1hfxWG0000qO2q0C1Fr338"},
    {"NUL in the first group", {"3\0fxWGdQqHqO2q0C1Fr338", 22}, true, "03fxWGdQqHqO2q0C1Fr338"},
    {"NUL is no licence for other groups", {"1hf\0WG-QqHqO2q0C1Fr338", 22}, false, ""},
};

TEST(IfcGuid, DecodesByGroups) {
    for (const DecodeRow& row : g_decodeRows) {
        SCOPED_TRACE(row.sRule);
        const auto pText = pExact(row.text);
        const auto guid = IfcGuid::fromIfcGuid({pText.get(), row.text.size()});
        ASSERT_EQ(guid.has_value(), row.boAccepted);
        EXPECT_EQ(guid ? IfcGuid::toIfcGuid(*guid) : "", row.sCanonical);
    }
}

#ifdef OXA_PROPERTIES
RC_GTEST_PROP(IfcGuid, DecodingInvertsEncoding,
              (std::uint32_t one, std::uint16_t two, std::uint16_t three, const std::array<std::uint8_t, 8>& tail)) {
    const Guid guid = guidOf(one, two, three, tail);
    const std::string text = IfcGuid::toIfcGuid(guid);
    RC_ASSERT(text.size() == IfcGuid::Length);
    RC_ASSERT(text[0] <= '3');
    const auto back = IfcGuid::fromIfcGuid(text);
    RC_ASSERT(back.has_value());
    RC_ASSERT(*back == guid);
}

RC_GTEST_PROP(IfcGuid, RandomBytesAreDecodedOrRefused, (const std::string& bytes)) {
    const auto pText = pExact(bytes);
    const auto guid = IfcGuid::fromIfcGuid({pText.get(), bytes.size()});
    RC_ASSERT(!guid || bytes.size() >= IfcGuid::Length);
}
#endif

}   // namespace
}   // namespace oxa::ifc
