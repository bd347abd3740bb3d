// SPDX-License-Identifier: Apache-2.0
#include "Check/Express/Words.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace oxa::check::express {

namespace {

// Ascending, for a binary search.
constexpr std::pair<std::string_view, Word> g_words[] = {
    {"ABSTRACT", Word::Abstract},
    {"AGGREGATE", Word::Aggregate},
    {"ALIAS", Word::Alias},
    {"AND", Word::And},
    {"ANDOR", Word::AndOr},
    {"ARRAY", Word::Array},
    {"AS", Word::As},
    {"BAG", Word::Bag},
    {"BASED_ON", Word::BasedOn},
    {"BEGIN", Word::Begin},
    {"BINARY", Word::Binary},
    {"BOOLEAN", Word::Boolean},
    {"BY", Word::By},
    {"CASE", Word::Case},
    {"CONSTANT", Word::Constant},
    {"CONST_E", Word::ConstE},
    {"DERIVE", Word::Derive},
    {"DIV", Word::Div},
    {"ELSE", Word::Else},
    {"END", Word::End},
    {"END_ALIAS", Word::EndAlias},
    {"END_CASE", Word::EndCase},
    {"END_CONSTANT", Word::EndConstant},
    {"END_ENTITY", Word::EndEntity},
    {"END_FUNCTION", Word::EndFunction},
    {"END_IF", Word::EndIf},
    {"END_LOCAL", Word::EndLocal},
    {"END_PROCEDURE", Word::EndProcedure},
    {"END_REPEAT", Word::EndRepeat},
    {"END_RULE", Word::EndRule},
    {"END_SCHEMA", Word::EndSchema},
    {"END_SUBTYPE_CONSTRAINT", Word::EndSubtypeConstraint},
    {"END_TYPE", Word::EndType},
    {"ENTITY", Word::Entity},
    {"ENUMERATION", Word::Enumeration},
    {"ESCAPE", Word::Escape},
    {"EXTENSIBLE", Word::Extensible},
    {"FALSE", Word::False},
    {"FIXED", Word::Fixed},
    {"FOR", Word::For},
    {"FROM", Word::From},
    {"FUNCTION", Word::Function},
    {"GENERIC", Word::Generic},
    {"GENERIC_ENTITY", Word::GenericEntity},
    {"IF", Word::If},
    {"IN", Word::In},
    {"INTEGER", Word::Integer},
    {"INVERSE", Word::Inverse},
    {"LIKE", Word::Like},
    {"LIST", Word::List},
    {"LOCAL", Word::Local},
    {"LOGICAL", Word::Logical},
    {"MOD", Word::Mod},
    {"NOT", Word::Not},
    {"NUMBER", Word::Number},
    {"OF", Word::Of},
    {"ONEOF", Word::OneOf},
    {"OPTIONAL", Word::Optional},
    {"OR", Word::Or},
    {"OTHERWISE", Word::Otherwise},
    {"PI", Word::Pi},
    {"PROCEDURE", Word::Procedure},
    {"QUERY", Word::Query},
    {"REAL", Word::Real},
    {"REFERENCE", Word::Reference},
    {"RENAMED", Word::Renamed},
    {"REPEAT", Word::Repeat},
    {"RETURN", Word::Return},
    {"RULE", Word::Rule},
    {"SCHEMA", Word::Schema},
    {"SELECT", Word::Select},
    {"SELF", Word::Self},
    {"SET", Word::Set},
    {"SKIP", Word::Skip},
    {"STRING", Word::String},
    {"SUBTYPE", Word::Subtype},
    {"SUBTYPE_CONSTRAINT", Word::SubtypeConstraint},
    {"SUPERTYPE", Word::Supertype},
    {"THEN", Word::Then},
    {"TO", Word::To},
    {"TOTAL_OVER", Word::TotalOver},
    {"TRUE", Word::True},
    {"TYPE", Word::Type},
    {"UNIQUE", Word::Unique},
    {"UNKNOWN", Word::Unknown},
    {"UNTIL", Word::Until},
    {"USE", Word::Use},
    {"VAR", Word::Var},
    {"WHERE", Word::Where},
    {"WHILE", Word::While},
    {"WITH", Word::With},
    {"XOR", Word::Xor},
};
constexpr std::size_t g_iLongest = 22;

constexpr bool boAscending() {
    for (std::size_t i = 1; i < std::size(g_words); ++i)
        if (!(g_words[i - 1].first < g_words[i].first)) return false;
    return true;
}
static_assert(boAscending(), "wordOf searches the table by halves");

}   // namespace

Word wordOf(std::string_view text) noexcept {
    if (text.size() > g_iLongest) return Word::None;
    std::array<char, g_iLongest> buffer;
    std::transform(text.begin(), text.end(), buffer.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    const std::string_view upper(buffer.data(), text.size());
    const auto* pRow = std::lower_bound(std::begin(g_words), std::end(g_words), upper,
                                        [](const auto& row, std::string_view key) { return row.first < key; });
    return pRow != std::end(g_words) && pRow->first == upper ? pRow->second : Word::None;
}

}   // namespace oxa::check::express
