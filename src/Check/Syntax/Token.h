// SPDX-License-Identifier: Apache-2.0
// Token: what the bytes of an exchange structure are made of (ISO 10303-21, Tokens).
//
// For      Lexer, which makes them, ExchangeStructure and the sinks of its statements.
// Threads  plain values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace oxa::check {

enum class TokenKind : std::uint8_t {
    End,            // of the file
    Keyword,        // also a user-defined one, with its "!"
    SectionWord,    // ISO-10303-21 and END-ISO-10303-21, the two words with signs in them
    InstanceName,   // #12; of edition 3 also #ABC
    ValueName,      // of edition 3: @12, @ABC
    Integer,
    Real,
    String,
    Enumeration,
    Binary,
    Resource,   // of edition 3: <...>
    Omitted,    // $
    Derived,    // *
    Open,
    Close,
    Comma,
    Semicolon,
    Equals,
    OpenTag,    // of edition 3: {
    CloseTag,   // of edition 3: }
    Colon,      // of edition 3
    Fault,      // no token; it is told
};

struct Place {
    std::uint64_t iLine = 1;
    std::uint64_t iColumn = 1;   // in bytes
};

// A token longer than this is handed on by its first bytes and a hash.
inline constexpr std::size_t g_iMaxTokenText = 64u << 10;

struct Token {
    TokenKind kind = TokenKind::End;
    bool boCut = false;   // "text" is the beginning alone
    Place place{};
    std::string_view text{};     // as written, quotes and dots included; good until the next token
    std::uint64_t iNumber = 0;   // of an InstanceName; see InstanceTable::iNumber
    std::uint64_t iLength = 0;   // of a String its characters, of a Binary its bits
    std::uint64_t iHash = 0;     // of all bytes, where boCut
};

}   // namespace oxa::check
