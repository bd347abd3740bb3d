// Numbers: from the text of a token to its value.
//
// For      the parsers of attribute cells, the string codec, the ifcXML import.
// Grammar  wider than ISO 10303-21, clause 6.4 (INTEGER, REAL): ".5" and "1E3" are numbers too. What may
//          never stand there is a leading "+", a blank, or anything behind the number: "1.5mm" is none.
// Threads  any number at once. Nothing is allocated; the process locale has no say.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>

#include "platform/Export.h"

namespace oxa::ifc {

namespace details {

// The integer at the front of [first, last), in base "base": an optional "-", then at least one digit.
// returns  the first byte behind it; or nullptr, with "value" untouched, when there is no digit or the number
//          needs more than 32 bits.
[[nodiscard]] inline char const* pReadInteger(char const* first, char const* last, int base,
                                              std::int32_t& value) noexcept {
    const auto [pEnd, error] = std::from_chars(first, last, value, base);
    return error == std::errc() ? pEnd : nullptr;
}

}   // namespace details

// The whole range as a signed 32-bit integer in base 10; empty where it is none or does not fit.
[[nodiscard]] inline std::optional<int> toInt(char const* first, char const* last) noexcept {
    std::int32_t value = 0;
    if (details::pReadInteger(first, last, 10, value) != last || first == last) return std::nullopt;
    return value;
}

// The whole range as the nearest double; "inf" and "nan" in any case are numbers. Empty where it is none or
// lies beyond the range of a double: "1E999".
[[nodiscard]] OXA_IFC_API std::optional<double> toDouble(char const* first, char const* last) noexcept;

}   // namespace oxa::ifc
