// SPDX-License-Identifier: Apache-2.0
// Id: the GUID of 128 bits.
//
// For      the identity of rooted entities, as it is kept in memory.
// Not for  the 22 characters that stand in files: they are IfcGuid's.
// Threads  a plain value; generate() from any number of threads.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <type_traits>

#include "platform/Export.h"

namespace oxa {

// Fields as a Windows GUID names them, each in the byte order of the machine. All zero is the null one.
struct Guid {
    std::uint32_t Data1 = 0;
    std::uint16_t Data2 = 0;
    std::uint16_t Data3 = 0;
    std::uint8_t Data4[8] = {};

    [[nodiscard]] friend bool operator==(const Guid&, const Guid&) noexcept = default;
    [[nodiscard]] friend auto operator<=>(const Guid&, const Guid&) noexcept = default;

    [[nodiscard]] bool boIsNull() const noexcept { return *this == Guid{}; }
    // A random one (RFC 4122, version 4).
    [[nodiscard]] OXA_PLATFORM_API static Guid generate();
    void vGenerate() { *this = generate(); }
    // Upper case, 8-4-4-4-12 digits, no braces.
    [[nodiscard]] OXA_PLATFORM_API std::string toString() const;
    // For hash tables in memory: differs between machines.
    [[nodiscard]] OXA_PLATFORM_API std::size_t hash() const noexcept;
};
static_assert(sizeof(Guid) == 16 && std::is_trivially_copyable_v<Guid>);

}   // namespace oxa

template <>
struct std::hash<oxa::Guid> {
    std::size_t operator()(const oxa::Guid& guid) const noexcept { return guid.hash(); }
};
