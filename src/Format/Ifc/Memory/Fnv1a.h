// SPDX-License-Identifier: Apache-2.0
// Fnv1a: the hash of tables whose keys are addresses or numbers: FNV-1a of 64 bits over eight bytes, low byte first.
//
// Not for  names of a schema, which have a hash of 32 bits of their own (schema/SchemaName.h).
#pragma once

#include <cstddef>
#include <cstdint>

namespace oxa::memory {

struct Fnv1a {
    std::size_t operator()(std::uint64_t uKey) const noexcept {
        std::uint64_t uHash = 0xcbf29ce484222325U;
        for (int i = 0; i < 8; ++i, uKey >>= 8) uHash = (uHash ^ (uKey & 0xff)) * 0x100000001b3U;
        return static_cast<std::size_t>(uHash);
    }
    std::size_t operator()(const void* pKey) const noexcept {
        return operator()(static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pKey)));
    }
};

}   // namespace oxa::memory
