// SPDX-License-Identifier: Apache-2.0
/// @file
/// String: between UTF-8 and UTF-32, checks, and texts for display.
///
/// For      the string codec, the writer's checks, messages that quote a file, ifcXML's real numbers.
/// Threads  any number at once; no state.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/Utilities.h"

/// UTF-8 and UTF-32, and values as texts.
namespace oxa::str {

/// A byte or code point sequence that is no text.
class OXA_PLATFORM_API exception : public oxa::exception {
public:
    using oxa::exception::exception;
    ~exception() override;
};

namespace details {

// From UTF-8 to UTF-32 and back. "length" counts the elements of "text", which need no end mark; 0 is one of them like
// any other. Each appends to "out"; throws str::exception on an invalid sequence (surrogates, overlong forms, truncated
// sequences, code points beyond U+10FFFF), with "out" as it was.
OXA_PLATFORM_API void vUtfConvertImpl(std::u32string& out, const char* text, std::size_t length);
OXA_PLATFORM_API void vUtfConvertImpl(std::string& out, const char32_t* text, std::size_t length);

}   // namespace details

/// Whether all of it is UTF-8: no surrogates, overlong forms, or code points beyond U+10FFFF. The empty text is.
[[nodiscard]] OXA_PLATFORM_API bool boIsValidUtf8(std::string_view text) noexcept;

/// Texts of other encodings.
class OXA_PLATFORM_API Converter {
public:
    /// Displayable UTF-8 from any bytes: what is valid UTF-8 stays, every other byte is taken as Latin-1.
    [[nodiscard]] static std::string to_utf8(std::string_view raw);
};

/// Values as texts.
class OXA_PLATFORM_API Manip {
public:
    /// The shortest text that reads back as the same double, with "." whatever the locale: "0.1", "1e+22",
    /// "-0". A value that is no number gives "inf", "-inf" or "nan".
    [[nodiscard]] static std::string valueFormatDefault(double value);
    /// The same behind a text.
    static void vValueFormatDefaultAppend(std::string& sText, double value);
};

}   // namespace oxa::str
