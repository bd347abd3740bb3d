// SPDX-License-Identifier: Apache-2.0
// RealRead: a real number from the text of a statement, of which more can be read than the number.
//
// For      the cells that read reals; toDouble of IfcNumbers.h for a text that stands alone.
// Rule     that of toDouble, and the same doubles.
// Speed    up to eight characters are looked at as one word, longer ones eight digits at once: no loop over digits, whose
//          count a processor can't foresee.
// Threads  any number at once.
#pragma once

namespace oxa::ifc::details {

// True, with the nearest double, when all of [first, last) is a number of the range of doubles. Bytes from pReadable on,
// at or in front of first, can be read.
[[nodiscard]] bool boReadReal(const char* pReadable, const char* first, const char* last, double& value) noexcept;

}   // namespace oxa::ifc::details
