// SPDX-License-Identifier: Apache-2.0
#include "Check/Syntax/Faults.h"

#include <cstddef>
#include <iterator>

namespace oxa::check {

namespace {

// clang-format off
constexpr SyntaxFaultRow g_rows[] = {
    {SyntaxFault::Begin, "Syntax_Begin", "ISO 10303-21 EXCHANGE_FILE", "the file does not begin as an exchange structure"},
    {SyntaxFault::Binary, "Syntax_Binary", "ISO 10303-21 BINARY", "not the form of a binary"},
    {SyntaxFault::BlankInToken, "Syntax_BlankInToken", "ISO 10303-21 Tokens", "a blank inside of a token"},
    {SyntaxFault::Byte, "Syntax_Byte", "ISO 10303-21 Alphabet", "a byte outside of the alphabet"},
    {SyntaxFault::ByteOrderMark, "Syntax_ByteOrderMark", "ISO 10303-21 Alphabet", "a byte order mark in front of the exchange structure"},
    {SyntaxFault::CommentNotClosed, "Syntax_CommentNotClosed", "ISO 10303-21 Comments", "a comment is not closed"},
    {SyntaxFault::Edition, "Syntax_Edition", "ISO 10303-21 FILE_DESCRIPTION", "belongs to an edition that the implementation level does not name"},
    {SyntaxFault::End, "Syntax_End", "ISO 10303-21 EXCHANGE_FILE", "the file ends inside of the exchange structure"},
    {SyntaxFault::Enumeration, "Syntax_Enumeration", "ISO 10303-21 ENUMERATION", "not the form of an enumeration value"},
    {SyntaxFault::InstanceDouble, "Syntax_InstanceDouble", "ISO 10303-21 ENTITY_INSTANCE_NAME", "an instance name is given twice"},
    {SyntaxFault::InstanceName, "Syntax_InstanceName", "ISO 10303-21 ENTITY_INSTANCE_NAME", "not the form of an instance name"},
    {SyntaxFault::Keyword, "Syntax_Keyword", "ISO 10303-21 KEYWORD", "not the form of a keyword"},
    {SyntaxFault::NestedTooDeep, "Syntax_NestedTooDeep", "ISO 10303-21 LIST", "parameters nest too deep to be checked"},
    {SyntaxFault::Number, "Syntax_Number", "ISO 10303-21 REAL, INTEGER", "not the form of a number"},
    {SyntaxFault::Resource, "Syntax_Resource", "ISO 10303-21 RESOURCE", "not the form of a resource or an anchor name"},
    {SyntaxFault::Section, "Syntax_Section", "ISO 10303-21 EXCHANGE_FILE", "a section is missing or out of order"},
    {SyntaxFault::SectionNotClosed, "Syntax_SectionNotClosed", "ISO 10303-21 EXCHANGE_FILE", "a section is not closed"},
    {SyntaxFault::StringControl, "Syntax_StringControl", "ISO 10303-21 STRING", "a control character inside of a string"},
    {SyntaxFault::StringDirective, "Syntax_StringDirective", "ISO 10303-21 CONTROL_DIRECTIVE", "a reverse solidus in a string that begins no directive"},
    {SyntaxFault::StringNotClosed, "Syntax_StringNotClosed", "ISO 10303-21 STRING", "a string is not closed"},
    {SyntaxFault::TextBehindEnd, "Syntax_TextBehindEnd", "ISO 10303-21 EXCHANGE_FILE", "text behind the end of the exchange structure"},
    {SyntaxFault::Unexpected, "Syntax_Unexpected", "ISO 10303-21 EXCHANGE_FILE", "something else is expected here"},
    {SyntaxFault::Utf8, "Syntax_Utf8", "ISO 10303-21 Alphabet", "bytes that are no UTF-8"},
};
// clang-format on

constexpr bool boInOrder() {
    for (std::size_t i = 0; i < std::size(g_rows); ++i)
        if (static_cast<std::size_t>(g_rows[i].fault) != i) return false;
    return std::size(g_rows) == static_cast<std::size_t>(SyntaxFault::Utf8) + 1;
}
static_assert(boInOrder(), "a row a fault, in the order of the enumerators");

}   // namespace

const SyntaxFaultRow& syntaxFaultRow(SyntaxFault fault) noexcept { return g_rows[static_cast<std::size_t>(fault)]; }

}   // namespace oxa::check
