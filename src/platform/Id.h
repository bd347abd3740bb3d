// SPDX-License-Identifier: Apache-2.0
/// @file
/// Id: the GUID of 128 bits.
///
/// For      the identity of rooted entities, as it is kept in memory.
/// Not for  the 22 characters that stand in files: they are IfcGuid's.
/// Threads  a plain value; generate() from any number of threads.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>

#include "platform/Export.h"

namespace oxa {

/// Fields as a Windows GUID names them, each in the byte order of the machine. All zero is the null one.
struct Guid {
    std::uint32_t Data1 = 0;      ///< the first 8 digits of the text
    std::uint16_t Data2 = 0;      ///< the next 4 digits
    std::uint16_t Data3 = 0;      ///< the next 4 digits; the first of them is the version
    std::uint8_t Data4[8] = {};   ///< the last 16 digits, two a byte

    [[nodiscard]] friend bool operator==(const Guid&, const Guid&) noexcept = default;
    [[nodiscard]] friend auto operator<=>(const Guid&, const Guid&) noexcept = default;

    /// Whether all 128 bits are zero.
    [[nodiscard]] bool boIsNull() const noexcept { return *this == Guid{}; }
    /// A random one (RFC 4122, version 4). Throws std::system_error where the system has no random bytes.
    [[nodiscard]] OXA_PLATFORM_API static Guid generate();
    /// Becomes a random one.
    void vGenerate() { *this = generate(); }
    /// Upper case, 8-4-4-4-12 digits, no braces.
    [[nodiscard]] OXA_PLATFORM_API std::string toString() const;
    /// For hash tables in memory: differs between machines.
    [[nodiscard]] OXA_PLATFORM_API std::size_t hash() const noexcept;
};
static_assert(sizeof(Guid) == 16 && std::is_trivially_copyable_v<Guid>);

}   // namespace oxa

/// For the unordered containers of the standard library.
template <>
struct std::hash<oxa::Guid> {
    /// As Guid::hash().
    std::size_t operator()(const oxa::Guid& guid) const noexcept { return guid.hash(); }
};
