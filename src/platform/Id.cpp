// SPDX-License-Identifier: Apache-2.0
// GUIDs: random ones (RFC 4122, version 4), their text and their hash.
#include "platform/Id.h"

#include <cstdio>
#include <cstring>

#include "platform/System.h"

namespace oxa {

Guid Guid::generate() {
    unsigned char bytes[16];
    platform::vRandomFill(bytes, sizeof bytes);
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);   // the version
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);   // the variant
    Guid guid;
    guid.Data1 = static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
                 static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
    guid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    std::memcpy(guid.Data4, bytes + 8, sizeof guid.Data4);
    return guid;
}

std::string Guid::toString() const {
    char text[37];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X", Data1, Data2, Data3, Data4[0],
                  Data4[1], Data4[2], Data4[3], Data4[4], Data4[5], Data4[6], Data4[7]);
    return text;
}

// GUIDs of one file may share all but a few bits, wherever these stand. A product carries a difference upward
// only, so a shift behind it brings it down again: the low bits, which tables use, depend on all 128.
std::size_t Guid::hash() const noexcept {
    std::uint64_t halves[2];
    std::memcpy(halves, this, sizeof halves);
    std::uint64_t uHash = halves[0] ^ halves[1] * 0x9E3779B97F4A7C15U;
    uHash = (uHash ^ uHash >> 32) * 0xD6E8FEB86659FD93U;
    uHash = (uHash ^ uHash >> 32) * 0xD6E8FEB86659FD93U;
    return static_cast<std::size_t>(uHash ^ uHash >> 32);
}

}   // namespace oxa
