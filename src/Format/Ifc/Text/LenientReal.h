// SPDX-License-Identifier: Apache-2.0
// LenientReal: the real number at the start of a text, as C's strtod takes it in the "C" locale.
//
// For      ifcXML, whose documents are read leniently. STEP files have a grammar of their own: IfcNumbers.h.
// Why      strtod itself follows the locale that the process has chosen, and each system has another way around that;
//          some know neither hexadecimal digits nor "inf" and "nan".
// Threads  any number at once; no state.
#pragma once

#include <cstddef>
#include <string_view>

namespace oxa::ifc {

struct LenientReal {
    double value = 0;
    std::size_t iLength = 0;   // of what was taken, blanks before it included; 0 where there is no number
};

// Blanks, a sign, and decimal digits with an exponent, "0x" and hexadecimal ones, "inf" or "nan" in any case. What is
// beyond the largest is infinite, what is below the smallest is zero.
[[nodiscard]] LenientReal lenientReal(std::string_view text) noexcept;

}   // namespace oxa::ifc
