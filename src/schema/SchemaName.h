// SPDX-License-Identifier: Apache-2.0
/// @file
/// SchemaName: names as look-up keys, each a text with its 32-bit hash.
///
/// For      everyone who asks a schema for an object or an entity for an attribute.
/// Not for  owning text: a name is a view, good for as long as the text behind it.
/// Threads  plain values, any number of threads.
#pragma once

#include <compare>
#include <cstdint>
#include <string_view>

namespace oxa::ifc::def::schema {

struct Attribute;
struct AttributeInverse;
struct Entity;

/// 32-bit FNV-1a with one peculiarity: each byte is sign-extended to 32 bits before it is mixed in, so a
/// byte above 0x7F hashes differently from the textbook form. The empty name hashes to 0x811c9dc5.
[[nodiscard]] constexpr std::uint32_t NameHash(std::string_view name) noexcept {
    std::uint32_t uHash = 0x811c9dc5U;
    for (const char c : name) {
        uHash ^= static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(c)));
        uHash *= 16777619U;
    }
    return uHash;
}

/// What ObjectName and AttributeName share. Ordered by hash first, then length, then bytes.
struct HashedName {
    /// The text, which is not owned.
    std::string_view name;
    /// NameHash(name).
    std::uint32_t hash;

    /// With a hash that the caller has at hand; it must be that of the text.
    constexpr HashedName(std::string_view text, std::uint32_t uHash) noexcept : name(text), hash(uHash) {}

    [[nodiscard]] friend constexpr bool operator==(const HashedName& a, const HashedName& b) noexcept {
        return a.hash == b.hash && a.name == b.name;
    }
    [[nodiscard]] friend constexpr std::strong_ordering operator<=>(const HashedName& a, const HashedName& b) noexcept {
        if (const auto order = a.hash <=> b.hash; order != 0) return order;
        if (const auto order = a.name.size() <=> b.name.size(); order != 0) return order;
        return a.name.compare(b.name) <=> 0;
    }
};

/// A STEP keyword in upper case, as in IFCWALL.
struct ObjectName : HashedName {
    /// With a hash that the caller has at hand.
    using HashedName::HashedName;
    /// Computes the hash of the text, which is not turned into upper case.
    constexpr explicit ObjectName(std::string_view text) noexcept : HashedName(text, NameHash(text)) {}
    explicit ObjectName(const Entity& entity) noexcept;   ///< a view on sNameUpper, with its stored hash
};

/// An attribute's name exactly as the schema spells it, as in GlobalId.
struct AttributeName : HashedName {
    /// With a hash that the caller has at hand.
    using HashedName::HashedName;
    /// Computes the hash of the text.
    constexpr explicit AttributeName(std::string_view text) noexcept : HashedName(text, NameHash(text)) {}

    ///@{
    /// A view on the attribute's sName, with its stored hash.
    explicit AttributeName(const Attribute& attribute) noexcept;
    explicit AttributeName(const AttributeInverse& attribute) noexcept;
    ///@}
};

}   // namespace oxa::ifc::def::schema
