// SPDX-License-Identifier: Apache-2.0
// Base64 as xs:base64Binary has it: white space may stand anywhere, and a text that is not valid decodes to no bytes.
#include "platform/XmlBase64.h"

#include <modp_b64.h>

#include <algorithm>
#include <iterator>

namespace oxa::xml::utilities {

namespace {

constexpr std::string_view g_sXmlBlanks = " \t\r\n";

}   // namespace

std::string Base64::encode(const unsigned char* bytes, std::size_t size) {
    if (size == 0) return {};
    std::string text(modp_b64_encode_len(size), '\0');
    text.resize(modp_b64_encode(text.data(), reinterpret_cast<const char*>(bytes), size));
    return text;
}

std::vector<unsigned char> Base64::decode(std::string_view text) {
    std::string packed;
    packed.reserve(text.size());
    std::copy_if(text.begin(), text.end(), std::back_inserter(packed),
                 [](char c) { return g_sXmlBlanks.find(c) == std::string_view::npos; });
    // The library takes more padding than a text can have, and counts on a whole last group.
    if (packed.empty() || packed.size() % 4 != 0 || packed.ends_with("===")) return {};

    std::vector<unsigned char> bytes(modp_b64_decode_len(packed.size()));
    const std::size_t size = modp_b64_decode(reinterpret_cast<char*>(bytes.data()), packed.data(), packed.size());
    bytes.resize(size == static_cast<std::size_t>(-1) ? 0 : size);
    return bytes;
}

}   // namespace oxa::xml::utilities
