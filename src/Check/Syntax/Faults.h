// SPDX-License-Identifier: Apache-2.0
// Faults: what can be wrong with an exchange structure, a row each.
//
// For      Lexer and ExchangeStructure.
#pragma once

#include <cstdint>
#include <string_view>

namespace oxa::check {

enum class SyntaxFault : std::uint8_t {
    Begin,
    Binary,
    BlankInToken,
    Byte,
    ByteOrderMark,
    CommentNotClosed,
    Edition,
    End,
    Enumeration,
    InstanceDouble,
    InstanceName,
    Keyword,
    NestedTooDeep,
    Number,
    Resource,
    Section,
    SectionNotClosed,
    StringControl,
    StringDirective,
    StringNotClosed,
    TextBehindEnd,
    Unexpected,
    Utf8,
};

struct SyntaxFaultRow {
    SyntaxFault fault;
    std::string_view key;
    std::string_view rule;   // the production, or what the standard calls it
    std::string_view message;
};

// The row of a fault.
[[nodiscard]] const SyntaxFaultRow& syntaxFaultRow(SyntaxFault fault) noexcept;

}   // namespace oxa::check
