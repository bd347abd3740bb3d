// SPDX-License-Identifier: Apache-2.0
/// @file
/// TextScan: the bytes of one text of an exchange structure, up to the quote that closes it.
///
/// - For: whoever takes a file byte by byte, as the reader does.
/// - Not for: what the text means.
/// - Threads: one.
#pragma once

#include <utility>

namespace oxa::convert {

/// A text that is being passed over.
class TextScan {
public:
    /// Takes the byte behind those taken so far, the first one being that behind the opening quote. True for the quote
    /// that closes the text; the next byte is then the first of another. What stands in an escape closes nothing, as
    /// the byte behind "\S\" (ISO 10303-21, 6.4.3).
    bool boCloses(char c) noexcept {
        if (m_iSkip) {
            --m_iSkip;
            return false;
        }
        switch (std::exchange(m_eEscape, Escape::None)) {
        case Escape::Backslash:
            if (c == 'S') m_iSkip = 2;
            if (c == 'X') m_eEscape = Escape::X;
            return false;
        case Escape::X: m_iSkip = c == '0' || c == '\\' ? 1 : c == '2' ? 5 : c == '4' ? 9 : 0; return false;
        case Escape::None: break;
        }
        if (c == '\\') m_eEscape = Escape::Backslash;
        return c == '\'';
    }

private:
    enum class Escape { None, Backslash, X };   // what the last byte was

    Escape m_eEscape = Escape::None;
    unsigned m_iSkip = 0;   // bytes of an escape that are still to be passed over
};

}   // namespace oxa::convert
