// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/Text/RealRead.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include <fast_float/fast_float.h>
#include <gtest/gtest.h>

namespace oxa::ifc {
namespace {

// The text in a buffer of its exact size: a sanitizer sees every byte read outside.
class Exact {
public:
    explicit Exact(std::string_view text) : m_pText(new char[text.size()]), m_iLength(text.size()) {
        text.copy(m_pText.get(), m_iLength);
    }
    const char* first() const { return m_pText.get(); }
    const char* last() const { return m_pText.get() + m_iLength; }

private:
    std::unique_ptr<char[]> m_pText;
    std::size_t m_iLength;
};

std::optional<int> toInt(std::string_view text) {
    const Exact exact(text);
    return ifc::toInt(exact.first(), exact.last());
}

std::optional<double> toDouble(std::string_view text) {
    const Exact exact(text);
    return ifc::toDouble(exact.first(), exact.last());
}

struct IntRow {
    const char* sRule;
    std::string_view text;
    std::optional<int> value;
};
const IntRow g_intRows[] = {
    {"digits", "12", 12},
    {"a minus sign", "-12", -12},
    {"zero", "0", 0},
    {"minus zero", "-0", 0},
    {"leading zeros", "0000000000012", 12},
    {"the largest", "2147483647", 2147483647},
    {"the smallest", "-2147483648", std::numeric_limits<int>::min()},
    {"one too large", "2147483648", std::nullopt},
    {"one too small", "-2147483649", std::nullopt},
    {"far too large", "99999999999999999999999999", std::nullopt},
    {"no plus sign", "+12", std::nullopt},
    {"no point", "12.0", std::nullopt},
    {"no blank in front", " 12", std::nullopt},
    {"no blank behind", "12 ", std::nullopt},
    {"no letter", "1a", std::nullopt},
    {"not empty", "", std::nullopt},
    {"not the sign alone", "-", std::nullopt},
    {"not two signs", "--1", std::nullopt},
    {"no NUL behind", std::string_view("1\0", 2), std::nullopt},
};

TEST(ToInt, TakesTheWholeRangeOrNothing) {
    for (const IntRow& row : g_intRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(toInt(row.text), row.value);
    }
    EXPECT_EQ(ifc::toInt(nullptr, nullptr), std::nullopt);
}

struct PrefixRow {
    std::string_view text;
    std::ptrdiff_t iRead;   // -1: fails
    std::int32_t value;
};
const PrefixRow g_hexRows[] = {
    {"00E9", 4, 0xE9},
    {"e9", 2, 0xE9},
    {"00\\X", 2, 0},
    {"-1", 2, -1},
    {"7FFFFFFF", 8, 0x7FFFFFFF},
    {"80000000", -1, 0},
    {"-80000000", 9, std::numeric_limits<std::int32_t>::min()},
    {"G0", -1, 0},
    {"", -1, 0},
    {"+1", -1, 0},
    {"0x12", 1, 0},
};

TEST(ReadInteger, TakesTheDigitsInFront) {
    for (const PrefixRow& row : g_hexRows) {
        SCOPED_TRACE(row.text);
        const Exact exact(row.text);
        std::int32_t value = 4711;
        const char* const pEnd = details::pReadInteger(exact.first(), exact.last(), 16, value);
        if (row.iRead < 0) {
            EXPECT_EQ(pEnd, nullptr);
            EXPECT_EQ(value, 4711);
        } else {
            EXPECT_EQ(pEnd, exact.first() + row.iRead);
            EXPECT_EQ(value, row.value);
        }
    }
}

struct ExactRealRow {
    const char* sRule;
    std::string_view text;
    std::optional<double> value;
};
constexpr double g_infinity = std::numeric_limits<double>::infinity();
const ExactRealRow g_exactRealRows[] = {
    {"digits around the point", "1.5", 1.5},
    {"none needed behind it", "1.", 1.0},
    {"none needed before it", ".5", 0.5},
    {"no point needed", "12", 12.0},
    {"exponent without point", "1E3", 1000.0},
    {"exponent behind the point", "1.E3", 1000.0},
    {"small e, two signs", "-2.5e-3", -2.5e-3},
    {"negative exponent", "1.5E-3", 1.5e-3},
    {"exponent with plus", "1.5E+3", 1500.0},
    {"ten characters", "123456.789", 123456.789},
    {"ten digits", "9999999999", 9999999999.0},
    {"nine decimals", ".123456789", 0.123456789},
    {"eleven characters", "123456.7891", 123456.7891},
    {"nearest double", "0.1", 0.1},
    {"seventeen digits", "0.30000000000000004", 0.30000000000000004},
    {"halfway goes to even", "9007199254740993", 9007199254740992.0},
    {"the largest", "1.7976931348623157E308", std::numeric_limits<double>::max()},
    {"the smallest", "4.9406564584124654E-324", std::numeric_limits<double>::denorm_min()},
    {"zero with any exponent", "0E999", 0.0},
    {"infinity", "inf", g_infinity},
    {"infinity in full", "-INFINITY", -g_infinity},
    {"beyond the range", "1E999", std::nullopt},
    {"beyond the range, negative", "-1E999", std::nullopt},
    {"below the range", "1E-999", std::nullopt},
    {"a unit behind", "1.5mm", std::nullopt},
    {"no plus sign", "+1.5", std::nullopt},
    {"no comma", "1,5", std::nullopt},
    {"no blank in front", " 1.5", std::nullopt},
    {"no blank behind", "1.5 ", std::nullopt},
    {"one point only", "1.5.", std::nullopt},
    {"one sign only", "--1.5", std::nullopt},
    {"not empty", "", std::nullopt},
    {"not the sign alone", "-", std::nullopt},
    {"not the point alone", ".", std::nullopt},
    {"not sign and point alone", "-.", std::nullopt},
    {"no empty exponent", "1.5E", std::nullopt},
    {"no exponent alone", "E5", std::nullopt},
    {"no hexadecimal", "0x10", std::nullopt},
    {"no Fortran exponent", "1.5D3", std::nullopt},
    {"no NUL behind", std::string_view("1.5\0", 4), std::nullopt},
    {"the byte behind \"9\" is no digit", "123456789:", std::nullopt},
    {"nor is the byte before \"0\"", "1/2", std::nullopt},
};

TEST(ToDouble, TakesTheWholeRangeOrNothing) {
    for (const ExactRealRow& row : g_exactRealRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(toDouble(row.text), row.value);
    }
    EXPECT_EQ(ifc::toDouble(nullptr, nullptr), std::nullopt);
}

TEST(ToDouble, KeepsTheSignOfZero) {
    for (const std::string_view text : {"-0", "-0.", "-.0", "-0.000000000000", "-0E5"}) {
        SCOPED_TRACE(text);
        const auto value = toDouble(text);
        ASSERT_TRUE(value);
        EXPECT_EQ(*value, 0.0);
        EXPECT_TRUE(std::signbit(*value));
    }
}

TEST(ToDouble, ReadsNotANumber) {
    for (const std::string_view text : {"nan", "NaN", "-nan", "nan(1)"}) {
        SCOPED_TRACE(text);
        const auto value = toDouble(text);
        ASSERT_TRUE(value);
        EXPECT_TRUE(std::isnan(*value));
    }
}

std::optional<double> toDoubleReference(std::string_view text) {
    double value = 0;
    const auto [pEnd, error] =
        fast_float::from_chars_advanced(text.data(), text.data() + text.size(), value,
                                        fast_float::parse_options{fast_float::chars_format::general, '.'});
    if (error != std::errc() || pEnd != text.data() + text.size()) return std::nullopt;
    return value;
}

// Texts that are numbers, nearly numbers, or random bytes of the kind that numbers are made of.
std::string sNumberLike(std::mt19937_64& random) {
    const auto iBelow = [&random](unsigned n) { return static_cast<std::size_t>(random() % n); };
    std::string text;
    if (iBelow(4) == 0) {
        constexpr std::string_view bytes = "0123456789.-+eE, ";
        for (std::size_t n = iBelow(14); n-- > 0;) text += bytes[iBelow(bytes.size())];
        return text;
    }
    const auto vDigits = [&](std::size_t n) {
        while (n-- > 0) text += static_cast<char>('0' + iBelow(10));
    };
    if (iBelow(3) == 0) text += '-';
    vDigits(iBelow(8));
    if (iBelow(8) != 0) text += '.';
    vDigits(iBelow(8));
    if (iBelow(6) == 0) {
        text += iBelow(2) ? 'E' : 'e';
        if (iBelow(2)) text += '-';
        vDigits(1 + iBelow(3));
    }
    return text;
}

TEST(ToDouble, AgreesBitByBitWithTheGeneralAlgorithm) {
    std::mt19937_64 random(20240229);
    std::size_t iNumbers = 0;
    for (int i = 0; i < 1'000'000; ++i) {
        const std::string text = sNumberLike(random);
        const auto expected = toDoubleReference(text);
        const auto value = ifc::toDouble(text.data(), text.data() + text.size());
        ASSERT_EQ(value.has_value(), expected.has_value()) << text;
        if (!value) continue;
        ++iNumbers;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*value), std::bit_cast<std::uint64_t>(*expected)) << text;
    }
    EXPECT_GT(iNumbers, 500'000u);
}

struct DigitsRow {
    const char* sText;   // 8 bytes
    unsigned iCount;
    std::uint32_t uValue;
};

// clang-format off
const DigitsRow g_digitsRows[] = {
    {"=1234567", 0, 0},   {"1=234567", 1, 1},         {"12/34567", 2, 12},         {"123:4567", 3, 123},
    {"0012=345", 4, 12},  {"98765(12", 5, 98765},     {"999999),", 6, 999999},     {"1234567\xFF", 7, 1234567},
    {"-1234567", 0, 0},   {"12345678", 8, 12345678},  {"99999999", 8, 99999999},   {"00000000", 8, 0},
    {"7\xB0\xB1\xB2\xFF\xFF\xFF\xFF", 1, 7},
};
// clang-format on

TEST(DigitsOf8, AreThoseAtTheFront) {
    for (const DigitsRow& row : g_digitsRows) {
        const Exact exact({row.sText, 8});
        const details::Digits digits = details::digitsOf8(exact.first());
        EXPECT_EQ(digits.iCount, row.iCount) << row.sText;
        EXPECT_EQ(digits.uValue, row.uValue) << row.sText;
    }
}

// Any byte behind any count of digits ends them, whatever follows.
TEST(DigitsOf8, EndAtTheFirstOtherByte) {
    for (unsigned iCount = 0; iCount < 8; ++iCount)
        for (int iByte = 0; iByte < 256; ++iByte) {
            if (iByte >= '0' && iByte <= '9') continue;
            std::string text = std::string("13579135").substr(0, iCount) + static_cast<char>(iByte);
            text.resize(8, iByte % 2 ? '\xFF' : '9');
            const details::Digits digits = details::digitsOf8(Exact(text).first());
            ASSERT_EQ(digits.iCount, iCount) << iByte;
            ASSERT_EQ(digits.uValue, iCount ? static_cast<std::uint32_t>(std::stoul(text.substr(0, iCount))) : 0U)
                << iByte;
        }
}

// Behind other text, as in a statement, which then is read as a whole word.
std::optional<double> toDoubleBehind(std::string_view front, std::string_view text) {
    const Exact exact(std::string(front) + std::string(text));
    double value = 0;
    if (!details::boReadReal(exact.first(), exact.first() + front.size(), exact.last(), value)) return std::nullopt;
    return value;
}

void vExpectAsReference(const std::string& text) {
    const auto expected = toDoubleReference(text);
    for (const std::string_view front : {"", "(", "1.5,", "1234567", "#1=IFCX(999.999,"}) {
        const auto value = toDoubleBehind(front, text);
        ASSERT_EQ(value.has_value(), expected.has_value()) << front << text;
        if (value) {
            ASSERT_EQ(std::bit_cast<std::uint64_t>(*value), std::bit_cast<std::uint64_t>(*expected)) << front << text;
        }
    }
}

// All numbers of digits in front of the point and behind it, up to where 64 bits end and beyond, each with all that may
// stand around them.
TEST(BoReadReal, AgreesAtAllLengths) {
    const std::string digits[] = {"9999999999999999999999999", "0000000000000000000000000", "1234567890123456789012345",
                                  "9007199254740993000000000", "0000000000000000000000001"};
    const char* const ends[] = {"",      "E5",    "e-5",    "E+22",   "E-22", "E23",    "E-23", "E308",
                                "E-320", "E9999", "E-9999", "E99999", "E",    "E+",     "E-",   "E5x",
                                "x",     ".",     "-",      "E5E5",   "E1.",  "E00005", " ",    "\x80"};
    for (const std::string& sDigits : digits)
        for (std::size_t iWhole = 0; iWhole <= 21; ++iWhole)
            for (std::size_t iFraction = 0; iFraction + iWhole <= 23; ++iFraction)
                for (const char* const sSign : {"", "-"}) {
                    const std::string sWhole = sSign + sDigits.substr(0, iWhole);
                    const std::string sFraction = sDigits.substr(iWhole, iFraction);
                    vExpectAsReference(sWhole + sFraction);
                    for (const char* const sEnd : ends) vExpectAsReference(sWhole + "." + sFraction + sEnd);
                }
}

// Any byte in any place of a number of each length.
TEST(BoReadReal, AForeignByteIsSeenAtEachPlace) {
    for (std::size_t iLength = 1; iLength <= 26; ++iLength)
        for (std::size_t iPlace = 0; iPlace < iLength; ++iPlace)
            for (int iByte = 0; iByte < 256; ++iByte) {
                std::string text = std::string("3.14159265358979323846264338").substr(0, iLength);
                text[iPlace] = static_cast<char>(iByte);
                vExpectAsReference(text);
            }
}

TEST(BoReadReal, AgreesForRandomNumbers) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 50'000; ++i) {
        std::string text = sNumberLike(random);
        if (const std::size_t iPoint = text.find('.'); iPoint != std::string::npos)
            for (std::size_t n = random() % 16; n-- > 0;)
                text.insert(iPoint + 1, 1, static_cast<char>('0' + random() % 10));
        vExpectAsReference(text);
    }
}

}   // namespace
}   // namespace oxa::ifc
