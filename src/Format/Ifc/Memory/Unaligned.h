// SPDX-License-Identifier: Apache-2.0
/// @file
/// Unaligned: a field that may stand at any byte address.
///
/// For      the fields of cells, arrays and list nodes, which are packed into pool memory without padding.
/// Why      a plain double at an odd address is undefined behaviour, whatever the processor makes of it.
///          load() and set() are one plain move each after optimisation.
#pragma once

#include <cstring>
#include <type_traits>

namespace oxa::ifc {

/// The bytes of a plain value. Its alignment is 1, and it is read and written as a copy.
template <class Value>
class Unaligned {
    static_assert(std::is_trivially_copyable_v<Value>);

public:
    Unaligned() = default;

    ///@{
    /// Stores the value.
    Unaligned(Value value) noexcept { set(value); }
    Unaligned& operator=(Value value) noexcept {
        set(value);
        return *this;
    }
    ///@}

    ///@{
    /// A copy of the value.
    operator Value() const noexcept { return load(); }

    [[nodiscard]] Value load() const noexcept {
        Value value;
        std::memcpy(&value, m_bytes, sizeof value);
        return value;
    }
    ///@}

    /// Stores the value.
    void set(Value value) noexcept { std::memcpy(m_bytes, &value, sizeof value); }

private:
    unsigned char m_bytes[sizeof(Value)];
};

}   // namespace oxa::ifc
