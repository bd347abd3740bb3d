// SPDX-License-Identifier: Apache-2.0
// Decimals by fast_float, which gives the nearest double; hexadecimal digits, which nobody writes, in a few lines.
#include "Format/Ifc/Text/LenientReal.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <system_error>

#include <fast_float/fast_float.h>

namespace oxa::ifc {

namespace {

int iHexValue(char c) noexcept {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

// The double nearest to iDigits * 2^iExponent, to the even one of two; boMore when something lies behind the digits.
double nearest(std::uint64_t iDigits, bool boMore, long long iExponent) noexcept {
    using Limits = std::numeric_limits<double>;
    constexpr long long g_iSmallest = Limits::min_exponent - Limits::digits;   // of the last bit of any double
    const auto iSurplus = static_cast<long long>(std::bit_width(iDigits)) - Limits::digits;
    const long long iDropped = std::max(iSurplus, g_iSmallest - iExponent);
    if (iDropped > 64) return 0;
    if (iDropped > 0) {
        const std::uint64_t iHalf = std::uint64_t{1} << (iDropped - 1);
        const std::uint64_t iRest = iDigits & (iHalf | (iHalf - 1));
        iDigits = iDropped == 64 ? 0 : iDigits >> iDropped;
        if (iRest > iHalf || (iRest == iHalf && (boMore || (iDigits & 1)))) ++iDigits;
        iExponent += iDropped;
    }
    constexpr long long g_iFar = 5000;
    return std::ldexp(static_cast<double>(iDigits), static_cast<int>(std::clamp(iExponent, -g_iFar, g_iFar)));
}

// Of "p" and a decimal number; nothing where no digit follows. What does not fit is as far as can be told.
std::size_t iBinaryExponent(std::string_view text, long long& iExponent) noexcept {
    if (text.empty() || (text.front() != 'p' && text.front() != 'P')) return 0;
    std::size_t iSign = 1;
    if (text.size() > 1 && (text[1] == '+' || text[1] == '-')) ++iSign;
    std::size_t iEnd = iSign;
    long long iValue = 0;
    for (; iEnd < text.size() && text[iEnd] >= '0' && text[iEnd] <= '9'; ++iEnd)
        iValue = std::min(iValue * 10 + (text[iEnd] - '0'), 1'000'000'000'000'000LL);
    if (iEnd == iSign) return 0;
    iExponent = text[1] == '-' ? -iValue : iValue;
    return iEnd;
}

// Behind "0x"; nothing where no digit follows.
LenientReal hexadecimal(std::string_view text) noexcept {
    constexpr std::uint64_t g_iFull = std::uint64_t{1} << 60;   // one digit more would not fit
    std::uint64_t iDigits = 0;
    long long iExponent = 0;
    bool boPoint = false, boDigit = false, boMore = false;
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        if (text[i] == '.' && !boPoint) {
            boPoint = true;
            continue;
        }
        const int iDigit = iHexValue(text[i]);
        if (iDigit < 0) break;
        boDigit = true;
        if (iDigits < g_iFull) {
            iDigits = iDigits << 4 | static_cast<unsigned>(iDigit);
            iExponent -= boPoint ? 4 : 0;
        } else {
            boMore = boMore || iDigit != 0;
            iExponent += boPoint ? 0 : 4;
        }
    }
    if (!boDigit) return {};
    long long iScale = 0;
    const std::size_t iScaleLength = iBinaryExponent(text.substr(i), iScale);
    return {iDigits ? nearest(iDigits, boMore, iExponent + iScale) : 0, i + iScaleLength};
}

LenientReal unsignedReal(std::string_view text) noexcept {
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X'))
        if (const LenientReal real = hexadecimal(text.substr(2)); real.iLength) return {real.value, real.iLength + 2};
    if (text.empty() || text.front() == '-' || text.front() == '+') return {};
    double value = 0;
    const char* const pEnd = text.data() + text.size();
    const auto [pBehind, error] = fast_float::from_chars(text.data(), pEnd, value);
    if (error == std::errc::invalid_argument) return {};
    return {value, static_cast<std::size_t>(pBehind - text.data())};
}

}   // namespace

LenientReal lenientReal(std::string_view text) noexcept {
    const std::size_t iStart = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const bool boSign = iStart < text.size() && (text[iStart] == '-' || text[iStart] == '+');
    const std::size_t iBefore = iStart + boSign;
    const LenientReal real = unsignedReal(text.substr(iBefore));
    if (!real.iLength) return {};
    return {boSign && text[iStart] == '-' ? -real.value : real.value, real.iLength + iBefore};
}

}   // namespace oxa::ifc
