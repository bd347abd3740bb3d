// SPDX-License-Identifier: Apache-2.0
#include "platform/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <memory>
#include <type_traits>

namespace oxa::str {
namespace {

using namespace std::string_view_literals;

static_assert(std::is_base_of_v<oxa::exception, exception>);

struct ValidRow {
    const char* sRule;
    std::string_view utf8;
    std::u32string_view utf32;
};
const ValidRow g_validRows[] = {
    {"nothing", ""sv, U""sv},
    {"one byte", "a~"sv, U"a~"sv},
    {"a zero is a character", "a\0b"sv, U"a\0b"sv},
    {"last of one byte", "\x7F"sv, U"\x7F"sv},
    {"first of two bytes", "\xC2\x80"sv, U"\x80"sv},
    {"last of two bytes", "\xDF\xBF"sv, U"\x7FF"sv},
    {"first of three bytes", "\xE0\xA0\x80"sv, U"\x800"sv},
    {"before the surrogates", "\xED\x9F\xBF"sv, U"\xD7FF"sv},
    {"behind the surrogates", "\xEE\x80\x80"sv, U"\xE000"sv},
    {"a noncharacter is a code point", "\xEF\xBF\xBF"sv, U"\xFFFF"sv},
    {"first of four bytes", "\xF0\x90\x80\x80"sv, U"\x10000"sv},
    {"the last code point", "\xF4\x8F\xBF\xBF"sv, U"\x10FFFF"sv},
    {"no byte order mark is taken off", "\xEF\xBB\xBFx"sv, U"\xFEFFx"sv},
};

// As texts that "display" shows: what is no UTF-8 as Latin-1.
struct InvalidRow {
    const char* sRule;
    std::string_view utf8;
    std::string_view display;
};
const InvalidRow g_invalidRows[] = {
    {"a lone continuation byte", "a\x80z"sv, "a\u0080z"sv},
    {"Latin-1", "T\xFCr"sv, "T\u00FCr"sv},
    {"two bytes, cut", "a\xC3"sv, "a\u00C3"sv},
    {"three bytes, cut", "\xE2\x82"sv, "\u00E2\u0082"sv},
    {"four bytes, cut", "\xF0\x9F\x98"sv, "\u00F0\u009F\u0098"sv},
    {"no continuation", "\xE2\x28\xA1"sv, "\u00E2(\u00A1"sv},
    {"overlong, two bytes", "\xC0\x80"sv, "\u00C0\u0080"sv},
    {"overlong, three bytes", "\xE0\x80\xAF"sv, "\u00E0\u0080\u00AF"sv},
    {"overlong, four bytes", "\xF0\x8F\xBF\xBF"sv, "\u00F0\u008F\u00BF\u00BF"sv},
    {"a high surrogate", "\xED\xA0\x80"sv, "\u00ED\u00A0\u0080"sv},
    {"a low surrogate", "\xED\xBF\xBF"sv, "\u00ED\u00BF\u00BF"sv},
    {"beyond the last code point", "\xF4\x90\x80\x80"sv, "\u00F4\u0090\u0080\u0080"sv},
    {"no lead byte", "\xFE\xFF"sv, "\u00FE\u00FF"sv},
    {"valid before and behind", "\u00E9\xE9\u20AC"sv, "\u00E9\u00E9\u20AC"sv},
};

// A copy of exactly the text's size, so that a read beyond it is found.
template <class Char>
struct Exact {
    explicit Exact(std::basic_string_view<Char> text) : iLength(text.size()), pText(new Char[iLength]) {
        std::copy(text.begin(), text.end(), pText.get());
    }
    std::size_t iLength;
    std::unique_ptr<Char[]> pText;
};

TEST(UtfConvert, AppendsWhatIsValid) {
    for (const ValidRow& row : g_validRows) {
        SCOPED_TRACE(row.sRule);
        const Exact utf8(row.utf8);
        std::u32string codePoints = U"<";
        details::vUtfConvertImpl(codePoints, utf8.pText.get(), utf8.iLength);
        EXPECT_EQ(codePoints, U"<" + std::u32string(row.utf32));
        const Exact utf32(row.utf32);
        std::string sBytes = "<";
        details::vUtfConvertImpl(sBytes, utf32.pText.get(), utf32.iLength);
        EXPECT_EQ(sBytes, "<" + std::string(row.utf8));
    }
}

TEST(UtfConvert, ThrowsOnInvalidUtf8AndLeavesTheText) {
    for (const InvalidRow& row : g_invalidRows) {
        SCOPED_TRACE(row.sRule);
        const Exact utf8(row.utf8);
        std::u32string codePoints = U"<";
        EXPECT_THROW(details::vUtfConvertImpl(codePoints, utf8.pText.get(), utf8.iLength), exception);
        EXPECT_EQ(codePoints, U"<");
    }
}

TEST(UtfConvert, ThrowsOnWhatIsNoCodePointAndLeavesTheText) {
    struct Row {
        const char* sRule;
        char32_t codePoint;
    };
    const Row rows[] = {{"first surrogate", 0xD800},
                        {"last surrogate", 0xDFFF},
                        {"beyond the last", 0x110000},
                        {"all bits", 0xFFFFFFFF}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        const char32_t text[] = {U'a', row.codePoint};
        std::string sBytes = "<";
        EXPECT_THROW(details::vUtfConvertImpl(sBytes, text, 2), exception);
        EXPECT_EQ(sBytes, "<");
    }
}

TEST(UtfConvert, SaysWhatIsWrong) {
    struct Row {
        std::string_view utf8;
        const char* sText;
    };
    const Row rows[] = {{"a\xC3", "Truncated UTF-8"}, {"\x80", "Invalid UTF-8"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sText);
        std::u32string codePoints;
        try {
            details::vUtfConvertImpl(codePoints, row.utf8.data(), row.utf8.size());
            FAIL() << "accepted";
        } catch (const exception& fault) {
            EXPECT_STREQ(fault.what(), row.sText);
        }
    }
}

TEST(UtfValid, AgreesWithTheConversion) {
    for (const ValidRow& row : g_validRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_TRUE(boIsValidUtf8(row.utf8));
    }
    for (const InvalidRow& row : g_invalidRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_FALSE(boIsValidUtf8(row.utf8));
    }
}

TEST(Converter, TakesWhatIsNoUtf8AsLatin1) {
    for (const ValidRow& row : g_validRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(Converter::to_utf8(row.utf8), row.utf8);
    }
    for (const InvalidRow& row : g_invalidRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(Converter::to_utf8(row.utf8), row.display);
    }
}

struct RealRow {
    const char* sRule;
    double value;
    const char* sText;
};
const RealRow g_realRows[] = {
    {"zero", 0.0, "0"},
    {"its sign is kept", -0.0, "-0"},
    {"no point without need", 3.0, "3"},
    {"no more digits than needed", 0.1, "0.1"},
    {"as many as needed", 0.1 + 0.2, "0.30000000000000004"},
    {"the shorter of both forms", 100000.0, "1e+05"},
    {"and the plain one where it is as short", 1234.5, "1234.5"},
    {"large", 1e22, "1e+22"},
    {"the longest", -std::numeric_limits<double>::max(), "-1.7976931348623157e+308"},
    {"the least", std::numeric_limits<double>::denorm_min(), "5e-324"},
    {"infinite", std::numeric_limits<double>::infinity(), "inf"},
    {"infinite, negative", -std::numeric_limits<double>::infinity(), "-inf"},
    {"no number", std::numeric_limits<double>::quiet_NaN(), "nan"},
};

TEST(ValueFormat, IsTheShortestThatReadsBack) {
    for (const RealRow& row : g_realRows) {
        SCOPED_TRACE(row.sRule);
        const std::string sText = Manip::valueFormatDefault(row.value);
        EXPECT_EQ(sText, row.sText);
        if (std::isnan(row.value)) continue;
        EXPECT_EQ(std::strtod(sText.c_str(), nullptr), row.value);
    }
}

struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(ValueFormat, LooksAtNoLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    EXPECT_EQ(Manip::valueFormatDefault(0.5), "0.5");
    std::locale::global(before);
}

}   // namespace
}   // namespace oxa::str
