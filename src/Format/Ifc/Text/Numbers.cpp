// SPDX-License-Identifier: Apache-2.0
// Reals from text. Short ones, most coordinates of a model, are read here with exact arithmetic; longer ones, and every
// form with an exponent, by fast_float. Both give the nearest double.
#include "Format/Ifc/IfcNumbers.h"

#include <array>
#include <cfloat>
#include <cstddef>

#include <fast_float/fast_float.h>

namespace oxa::ifc {

namespace {

constexpr std::array<double, 10> g_powersOfTen = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};

// An optional "-", digits and a point, of this many characters without the sign, and no more than that.
//
// Most coordinates of a model are such: "0.", "-2500.", "1.25". Digits and power of ten are exact as doubles,
// so one division gives the nearest double, provided that it is made in double precision and rounds to
// nearest, as every process does that does not ask for something else. Longer numbers gain nothing: to go
// through them here first and fail is lost time (tried with 2 to 19 digits).
constexpr std::ptrdiff_t g_shortLength = 10;
static_assert(g_shortLength == g_powersOfTen.size(), "all but the point may be decimals");

constexpr bool g_boDoublePrecision = FLT_EVAL_METHOD == 0;

inline const char* pAddDigits(const char* p, const char* last, std::uint64_t& digits) noexcept {
    for (; p != last && static_cast<unsigned char>(*p - '0') < 10; ++p)
        digits = digits * 10 + static_cast<unsigned char>(*p - '0');
    return p;
}

bool boReadShort(const char* first, const char* last, double& value) noexcept {
    const bool boNegative = first != last && *first == '-';
    const char* const pDigits = first + boNegative;
    if (last - pDigits > g_shortLength) return false;
    std::uint64_t digits = 0;
    const char* p = pAddDigits(pDigits, last, digits);
    bool boAnyDigit = p != pDigits;
    std::size_t iDecimals = 0;
    if (p != last && *p == '.') {
        const char* const pDecimals = ++p;
        p = pAddDigits(p, last, digits);
        iDecimals = static_cast<std::size_t>(p - pDecimals);
        boAnyDigit = boAnyDigit || iDecimals != 0;
    }
    if (p != last || !boAnyDigit) return false;
    const double magnitude = static_cast<double>(digits) / g_powersOfTen[iDecimals];
    value = boNegative ? -magnitude : magnitude;
    return true;
}

}   // namespace

std::optional<double> toDouble(const char* first, const char* last) noexcept {
    double value = 0;
    if (g_boDoublePrecision && boReadShort(first, last, value)) return value;
    constexpr fast_float::parse_options options{fast_float::chars_format::general, '.'};
    const auto [pEnd, error] = fast_float::from_chars_advanced(first, last, value, options);
    if (error != std::errc() || pEnd != last) return std::nullopt;
    return value;
}

}   // namespace oxa::ifc
