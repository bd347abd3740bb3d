// SPDX-License-Identifier: Apache-2.0
// Reals from text. Short ones, and most that have up to 19 digits and a point, are taken apart here and computed with
// exact arithmetic; what needs more digits than that arithmetic has is computed by fast_float, and every other form is
// read by it as well. All ways give the nearest double.
#include "Format/Ifc/IfcNumbers.h"

#include <array>
#include <cfloat>
#include <cstddef>

#include <fast_float/fast_float.h>

#include "Format/Ifc/Text/RealRead.h"

namespace oxa::ifc {

namespace {

// Those that are doubles.
constexpr std::array<double, 23> g_powersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::array<std::uint32_t, 9> g_scales = {1,       10,        100,        1000,       10'000,
                                                   100'000, 1'000'000, 10'000'000, 100'000'000};

// Digits and power of ten are exact as doubles, so one multiplication or division gives the nearest double, provided
// that it is made in double precision and rounds to nearest, as every process does that does not ask for something
// else.
constexpr bool g_boDoublePrecision = FLT_EVAL_METHOD == 0;
constexpr std::uint64_t g_uExactDigits = std::uint64_t{1} << 53;
constexpr int g_iExactPower = static_cast<int>(g_powersOfTen.size()) - 1;

constexpr std::ptrdiff_t g_iWord = 8;
constexpr int g_iMostDigits = 19;   // that fit into 64 bits, whichever they are

constexpr bool boDigit(char c) noexcept { return static_cast<unsigned char>(c - '0') < 10; }

const char* pAddDigits(const char* p, const char* last, std::uint64_t& digits) noexcept {
    for (; p != last && boDigit(*p); ++p) digits = digits * 10 + static_cast<unsigned char>(*p - '0');
    return p;
}

// Digits and at most one point, of up to eight characters, byte by byte.
bool boReadPlain(const char* first, const char* last, double& value) noexcept {
    std::uint64_t digits = 0;
    const char* p = pAddDigits(first, last, digits);
    bool boAnyDigit = p != first;
    std::size_t iDecimals = 0;
    if (p != last && *p == '.') {
        const char* const pDecimals = ++p;
        p = pAddDigits(p, last, digits);
        iDecimals = static_cast<std::size_t>(p - pDecimals);
        boAnyDigit = boAnyDigit || iDecimals != 0;
    }
    if (p != last || !boAnyDigit) return false;
    value = static_cast<double>(digits) / g_powersOfTen[iDecimals];
    return true;
}

// Digits and a point, of iLength characters, two to eight, the last of which is the highest byte. What stands in front of
// them is in the bytes below.
bool boReadWord(std::uint64_t bytes, std::ptrdiff_t iLength, double& value) noexcept {
    constexpr std::uint64_t ones = 0x0101010101010101u;
    const auto iFree = static_cast<unsigned>(8 * (g_iWord - iLength));
    bytes = bytes >> iFree << iFree;
    // Of a byte that is the point the high bit; perhaps of others above the first one.
    const std::uint64_t others = bytes ^ (ones * '.');
    const std::uint64_t points = (others - ones) & ~others & (ones * 0x80);
    if (!points) return false;
    // What stands in front of the point moves up by a byte, over the point; zeros come in front.
    const auto iBit = static_cast<unsigned>(std::countr_zero(points));
    const std::uint64_t uFront = (std::uint64_t{1} << (iBit - 7)) - 1;
    bytes = (bytes & ~(uFront << 8 | 0xFF)) | (bytes & uFront) << 8;
    bytes ^= ones * '0' << (iFree + 8);
    if (((bytes + ones * 0x76) | bytes) & (ones * 0x80)) return false;
    value = details::uNumberOf(bytes) / g_powersOfTen[(63 - iBit) / 8];
    return true;
}

// An exponent behind its "E", up to last: false for one of more than four digits, which this leaves to others.
bool boReadExponent(const char* p, const char* last, int& iExponent) noexcept {
    const bool boNegative = p != last && *p == '-';
    if (p != last && (*p == '-' || *p == '+')) ++p;
    if (p == last || last - p > 4) return false;
    int iValue = 0;
    for (; p != last; ++p) {
        if (!boDigit(*p)) return false;
        iValue = iValue * 10 + (*p - '0');
    }
    iExponent += boNegative ? -iValue : iValue;
    return true;
}

// A number that is taken apart.
struct Parts {
    const char* pWhole;
    const char* pFraction;
    int iWhole;      // digits in front of the point, up to seven
    int iFraction;   // digits behind it
    std::uint64_t uDigits;
    int iExponent;   // of the last digit
};

// Up to 19 digits with a point, and perhaps an exponent, of nine characters or more. False for every other form.
bool boTakeApart(const char* first, const char* last, Parts& parts) noexcept {
    const details::Digits whole = first[1] == '.' && boDigit(*first)   // as most coordinates of a unit are
                                      ? details::Digits{1, static_cast<std::uint32_t>(*first - '0')}
                                      : details::digitsOf8(first);
    if (whole.iCount == 8 || first[whole.iCount] != '.') return false;
    const char* p = first + whole.iCount + 1;
    parts = {first, p, static_cast<int>(whole.iCount), 0, whole.uValue, 0};
    const auto vTake = [&](const details::Digits& digits) {
        parts.uDigits = parts.uDigits * g_scales[digits.iCount] + digits.uValue;
        p += digits.iCount;
    };
    bool boMore = true;
    while (boMore && last - p >= g_iWord) {
        const details::Digits digits = details::digitsOf8(p);
        vTake(digits);
        boMore = digits.iCount == 8;
    }
    // The rest is the end of the last word, with zero bytes behind it.
    if (boMore && p != last) vTake(details::digitsOf(details::uBytes8(last - g_iWord) >> 8 * (g_iWord - (last - p))));
    if (p - parts.pFraction > g_iMostDigits - parts.iWhole) return false;
    parts.iFraction = static_cast<int>(p - parts.pFraction);
    parts.iExponent = -parts.iFraction;
    if (parts.iWhole + parts.iFraction == 0) return false;
    return p == last || ((*p == 'E' || *p == 'e') && boReadExponent(p + 1, last, parts.iExponent));
}

// False where it is beyond the range of doubles.
bool boCompute(const Parts& parts, double& value) noexcept {
    if (g_boDoublePrecision && parts.uDigits <= g_uExactDigits) {
        const auto digits = static_cast<double>(parts.uDigits);
        if (parts.iExponent <= 0 && parts.iExponent >= -g_iExactPower) {
            value = digits / g_powersOfTen[static_cast<std::size_t>(-parts.iExponent)];
            return true;
        }
        if (parts.iExponent > 0 && parts.iExponent <= g_iExactPower) {
            value = digits * g_powersOfTen[static_cast<std::size_t>(parts.iExponent)];
            return true;
        }
    }
    fast_float::parsed_number_string number;
    number.exponent = parts.iExponent;
    number.mantissa = parts.uDigits;
    number.valid = true;
    number.integer = {parts.pWhole, static_cast<std::size_t>(parts.iWhole)};
    number.fraction = {parts.pFraction, static_cast<std::size_t>(parts.iFraction)};
    return fast_float::from_chars_advanced(number, value).ec == std::errc();
}

bool boReadByLibrary(const char* first, const char* last, double& value) noexcept {
    constexpr fast_float::parse_options options{fast_float::chars_format::general, '.'};
    const auto [pEnd, error] = fast_float::from_chars_advanced(first, last, value, options);
    return error == std::errc() && pEnd == last;
}

}   // namespace

bool details::boReadReal(const char* pReadable, const char* first, const char* last, double& value) noexcept {
    const bool boNegative = first != last && *first == '-';
    const char* const pNumber = first + boNegative;
    const std::ptrdiff_t iLength = last - pNumber;
    double size = 0;
    if (iLength > g_iWord) {
        Parts parts;
        if (!boTakeApart(pNumber, last, parts)) return boReadByLibrary(first, last, value);
        if (!boCompute(parts, size)) return false;
    } else if (!g_boDoublePrecision) {
        return boReadByLibrary(first, last, value);
    } else if (iLength < 2 || last - pReadable < g_iWord || !boReadWord(uBytes8(last - g_iWord), iLength, size)) {
        if (!boReadPlain(pNumber, last, size)) return boReadByLibrary(first, last, value);
    }
    value = boNegative ? -size : size;
    return true;
}

std::optional<double> toDouble(const char* first, const char* last) noexcept {
    double value = 0;
    if (!details::boReadReal(first, first, last, value)) return std::nullopt;
    return value;
}

}   // namespace oxa::ifc
