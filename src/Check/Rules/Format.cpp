// SPDX-License-Identifier: Apache-2.0
// FORMAT (ISO 10303-11, 15.8): a number as text, by a symbolic description as "+7.2F", or by a picture as "###,###.##".
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "Check/Rules/Handlers.h"

namespace oxa::check::rules::run {

namespace {

constexpr int g_iMostDigits = 100;

// [sign] [0] width [.decimals] type
struct Description {
    bool boSign = false;
    bool boZeros = false;
    int iWidth = 0;
    int iDecimals = 0;
    char cType = 'F';
};

bool boReadDescription(std::string_view text, Description& result) {
    if (text.empty()) return false;
    const char cType = static_cast<char>(text.back() & ~0x20);
    if (cType != 'I' && cType != 'F' && cType != 'E') return false;
    result.cType = cType;
    text.remove_suffix(1);
    if (text.starts_with('+')) {
        result.boSign = true;
        text.remove_prefix(1);
    }
    result.boZeros = text.starts_with('0');
    const char* const pEnd = text.data() + text.size();
    const auto width = std::from_chars(text.data(), pEnd, result.iWidth);
    if (width.ec != std::errc() || result.iWidth > g_iMostDigits) return false;
    if (width.ptr == pEnd) return true;
    if (*width.ptr != '.') return false;
    const auto decimals = std::from_chars(width.ptr + 1, pEnd, result.iDecimals);
    return decimals.ec == std::errc() && decimals.ptr == pEnd && result.iDecimals <= g_iMostDigits;
}

Value described(Evaluator& evaluator, double fValue, const Description& how) {
    std::array<char, 512> buffer{};
    std::string sPicture = "%";
    if (how.boSign) sPicture += '+';
    if (how.boZeros) sPicture += '0';
    sPicture += "*.*";
    const bool boWhole = how.cType == 'I';
    sPicture += how.cType == 'E' ? 'E' : 'f';
    const int iCount = std::snprintf(buffer.data(), buffer.size(), sPicture.c_str(), how.iWidth,
                                     boWhole ? 0 : how.iDecimals, boWhole ? std::round(fValue) : fValue);
    if (iCount < 0 || static_cast<std::size_t>(iCount) >= buffer.size()) return {};
    return evaluator.textOf({buffer.data(), static_cast<std::size_t>(iCount)});
}

// "#": a digit, "." or ",": the point, or what groups digits; whichever stands last is the point. "+", "-": the sign;
// "(" ")": around a negative number.
Value pictured(Evaluator& evaluator, double fValue, std::string_view picture) {
    const std::size_t iPoint = picture.find_last_of(".,");
    const bool boPoint = iPoint != std::string_view::npos && picture.find_first_of(".,") == iPoint
                             ? picture[iPoint] == '.'
                             : iPoint != std::string_view::npos;
    int iDecimals = 0;
    int iDigits = 0;
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (picture[i] != '#') continue;
        ++(boPoint && i > iPoint ? iDecimals : iDigits);
    }
    if (iDigits + iDecimals == 0 || iDigits + iDecimals > g_iMostDigits) return {};
    std::array<char, 512> buffer{};
    const int iCount = std::snprintf(buffer.data(), buffer.size(), "%.*f", iDecimals, std::abs(fValue));
    if (iCount < 0 || static_cast<std::size_t>(iCount) >= buffer.size()) return {};
    std::string sDigits(buffer.data(), static_cast<std::size_t>(iCount));
    if (iDecimals) sDigits.erase(sDigits.size() - static_cast<std::size_t>(iDecimals) - 1, 1);
    const auto iWanted = static_cast<std::size_t>(iDigits + iDecimals);
    if (sDigits.size() > iWanted) return evaluator.textOf(std::string(picture.size(), '*'));
    sDigits.insert(0, iWanted - sDigits.size(), ' ');
    std::string sResult;
    std::size_t iNext = 0;
    for (const char c : picture) {
        if (c == '#')
            sResult += sDigits[iNext++];
        else if (c == '+')
            sResult += fValue < 0 ? '-' : '+';
        else if (c == '-')
            sResult += fValue < 0 ? '-' : ' ';
        else if (c == '(' || c == ')')
            sResult += fValue < 0 ? c : ' ';
        else
            // What groups digits stands between digits only.
            sResult += (c == ',' || c == '.') && (iNext == 0 || sDigits[iNext - 1] == ' ') ? ' ' : c;
    }
    return evaluator.textOf(sResult);
}

}   // namespace

Value formatted(Evaluator& evaluator, const Value& number, std::string_view format) {
    const double fValue = number.fNumber();
    Description description;
    if (format.empty()) description = {false, false, 7, 0, 'I'};
    if (format.empty() && number.kind == Kind::Real) description = {false, false, 10, 1, 'E'};
    if (format.empty() || boReadDescription(format, description)) return described(evaluator, fValue, description);
    return pictured(evaluator, fValue, format);
}

}   // namespace oxa::check::rules::run
