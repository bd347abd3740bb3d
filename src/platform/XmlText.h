// SPDX-License-Identifier: Apache-2.0
// XmlText: what may stand in a document, and how it is written there (XML 1.0, 2.2, 2.3 and 4.1).
//
// For      Xml*.cpp alone.
// Texts    UTF-8.
// Threads  any number at once; no state.
#pragma once

#include <string>
#include <string_view>

namespace oxa::xml::details {

// Production Name.
[[nodiscard]] bool boIsName(std::string_view text) noexcept;

// Whether the text is UTF-8 of production Char, and nothing else.
[[nodiscard]] bool boIsText(std::string_view text) noexcept;
///@{
// The two halves of that: whether it has control characters that no document has, and whether it is UTF-8 as far as
// it is not ASCII.
[[nodiscard]] bool boHasControls(std::string_view text) noexcept;
[[nodiscard]] bool boIsUtf8Text(std::string_view text) noexcept;
///@}

// Puts the five references that XML itself has, and those by number, in place of what they stand for; other entities
// stay as they are written. False for what is no reference, and for one to a character that XML can't hold.
[[nodiscard]] bool boReferencesDecode(std::string& sText);

// Whether the text is of ASCII and nothing in it is escaped anywhere.
[[nodiscard]] bool boIsPlain(std::string_view text) noexcept;

// The text as it stands in a tag (boAttribute) or between two, so that parsing gives it back. U+FFFD stands for what
// a document can't hold.
void vEscape(std::string& out, std::string_view text, bool boAttribute);

}   // namespace oxa::xml::details
