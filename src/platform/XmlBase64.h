// SPDX-License-Identifier: Apache-2.0
// XmlBase64: bytes as the text that XML has for them (RFC 4648, clause 4; XML Schema, base64Binary).
//
// For      the binary values of ifcXML.
// Not for  BINARY in STEP files, which is hexadecimal.
// Threads  any number at once; no state.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"

namespace oxa::xml::utilities {

class OXA_PLATFORM_API Base64 {
public:
    // One line, padded with "=" to a multiple of four characters; empty for no bytes.
    [[nodiscard]] static std::string encode(const unsigned char* bytes, std::size_t size);

    // The bytes of a text, which may have white space between its characters, as a document may wrap it. Empty for
    // a text with a character outside of the alphabet, and for one that is cut or lacks its padding.
    [[nodiscard]] static std::vector<unsigned char> decode(std::string_view text);
};

}   // namespace oxa::xml::utilities
