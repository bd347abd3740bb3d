// SPDX-License-Identifier: Apache-2.0
// The words of EXPRESS (ISO 10303-11, 7): those of declarations as keywords, all others as plain words, operators whole.
#include "provider/ExpressLexer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace oxa::ifc::def::express {

namespace {

enum ByteClass : std::uint8_t {
    Blank = 1,   // space, tab, CR, LF, FF, VT
    Letter = 2,
    Digit = 4,
    Inner = 8,     // may stand inside a word: letters, digits, "_"
    Symbol = 16,   // the characters of operators and punctuation
};

constexpr std::array<std::uint8_t, 256> g_byteClass = [] {
    std::array<std::uint8_t, 256> table{};
    const auto vMark = [&table](std::string_view bytes, int iClasses) {
        for (const char c : bytes) table[static_cast<std::uint8_t>(c)] |= static_cast<std::uint8_t>(iClasses);
    };
    vMark(" \t\r\n\f\v", Blank);
    vMark("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", Letter | Inner);
    vMark("0123456789", Digit | Inner);
    vMark("_", Inner);
    vMark("()[]{}<>=:;,.*+-/\\|?!%&@^~#$", Symbol);
    return table;
}();

constexpr bool boIs(char c, int iClasses) noexcept {
    return (g_byteClass[static_cast<std::uint8_t>(c)] & iClasses) != 0;
}

// Those of one first letter stand together: see g_keywordsOf.
constexpr std::pair<std::string_view, Keyword> g_keywords[] = {
    {"ABSTRACT", Keyword::Abstract},
    {"ARRAY", Keyword::Array},
    {"BAG", Keyword::Bag},
    {"BASED_ON", Keyword::BasedOn},
    {"BINARY", Keyword::Binary},
    {"BOOLEAN", Keyword::Boolean},
    {"CONSTANT", Keyword::Constant},
    {"DERIVE", Keyword::Derive},
    {"END_CONSTANT", Keyword::EndConstant},
    {"END_ENTITY", Keyword::EndEntity},
    {"END_FUNCTION", Keyword::EndFunction},
    {"END_PROCEDURE", Keyword::EndProcedure},
    {"END_RULE", Keyword::EndRule},
    {"END_SCHEMA", Keyword::EndSchema},
    {"END_SUBTYPE_CONSTRAINT", Keyword::EndSubtypeConstraint},
    {"END_TYPE", Keyword::EndType},
    {"ENTITY", Keyword::Entity},
    {"ENUMERATION", Keyword::Enumeration},
    {"EXTENSIBLE", Keyword::Extensible},
    {"FIXED", Keyword::Fixed},
    {"FOR", Keyword::For},
    {"FUNCTION", Keyword::Function},
    {"GENERIC_ENTITY", Keyword::GenericEntity},
    {"INTEGER", Keyword::Integer},
    {"INVERSE", Keyword::Inverse},
    {"LIST", Keyword::List},
    {"LOGICAL", Keyword::Logical},
    {"NUMBER", Keyword::Number},
    {"OF", Keyword::Of},
    {"OPTIONAL", Keyword::Optional},
    {"PROCEDURE", Keyword::Procedure},
    {"REAL", Keyword::Real},
    {"REFERENCE", Keyword::Reference},
    {"RENAMED", Keyword::Renamed},
    {"RULE", Keyword::Rule},
    {"SCHEMA", Keyword::Schema},
    {"SELECT", Keyword::Select},
    {"SELF", Keyword::Self},
    {"SET", Keyword::Set},
    {"STRING", Keyword::String},
    {"SUBTYPE", Keyword::Subtype},
    {"SUBTYPE_CONSTRAINT", Keyword::SubtypeConstraint},
    {"SUPERTYPE", Keyword::Supertype},
    {"TYPE", Keyword::Type},
    {"UNIQUE", Keyword::Unique},
    {"USE", Keyword::Use},
    {"WHERE", Keyword::Where},
    {"WITH", Keyword::With},
};

// The rows of the keywords that begin with a letter.
struct KeywordRows {
    std::uint8_t iBegin = 0;
    std::uint8_t iEnd = 0;
};
constexpr std::array<KeywordRows, 26> g_keywordsOf = [] {
    std::array<KeywordRows, 26> table{};
    for (std::uint8_t i = 0; i < std::size(g_keywords); ++i) {
        KeywordRows& rows = table[static_cast<std::size_t>(g_keywords[i].first[0] - 'A')];
        if (rows.iEnd == 0) rows.iBegin = i;
        if (rows.iEnd != 0 && rows.iEnd != i) throw "the keywords of one letter stand apart";
        rows.iEnd = static_cast<std::uint8_t>(i + 1);
    }
    return table;
}();

// The symbols of more than one character, longer ones before those that they begin with.
constexpr std::string_view g_longSymbols[] = {":<>:", ":=:", ":=", "<>", "<=", "<*", ">=", "**", "||"};

std::size_t iSymbolLength(std::string_view text) noexcept {
    for (const std::string_view symbol : g_longSymbols)
        if (text.starts_with(symbol)) return symbol.size();
    return 1;
}

constexpr char cUpper(char c) noexcept { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// Most words are names, which differ from the few keywords of their first letter in length.
Keyword keywordOf(std::string_view word) noexcept {
    const KeywordRows rows = g_keywordsOf[static_cast<std::size_t>(cUpper(word[0]) - 'A')];
    for (std::size_t i = rows.iBegin; i < rows.iEnd; ++i) {
        const std::string_view keyword = g_keywords[i].first;
        if (keyword.size() == word.size() &&
            std::equal(word.begin(), word.end(), keyword.begin(), [](char c, char k) { return cUpper(c) == k; }))
            return g_keywords[i].second;
    }
    return Keyword::None;
}

// Of a text that begins with a letter.
std::size_t iWordLength(std::string_view text) noexcept {
    std::size_t iLength = 1;
    while (iLength < text.size() && boIs(text[iLength], Inner)) ++iLength;
    return iLength;
}

}   // namespace

bool boIsName(std::string_view text) noexcept {
    return !text.empty() && boIs(text[0], Letter) && iWordLength(text) == text.size() &&
           keywordOf(text) == Keyword::None;
}

ExpressLexer::ExpressLexer(std::string_view text, Place place) : m_text(text), m_place(place) {
    if (m_text.starts_with("\xEF\xBB\xBF")) m_text.remove_prefix(3);
}

// The byte that many further on; 0 behind the end.
char ExpressLexer::cAt(std::size_t iOffset) const noexcept {
    return iOffset < m_text.size() - m_iAt ? m_text[m_iAt + iOffset] : '\0';
}

void ExpressLexer::vAdvance(std::size_t iCount) noexcept {
    for (; iCount; --iCount, ++m_iAt) {
        if (m_text[m_iAt] == '\n') {
            ++m_place.iLine;
            m_place.iColumn = 1;
        } else {
            ++m_place.iColumn;
        }
    }
}

// Moves behind "(* ... *)", in which further ones may stand. False when the text ends first.
bool ExpressLexer::boSkipComment() noexcept {
    std::size_t iDepth = 0;
    do {
        if (m_iAt == m_text.size()) return false;
        if (cAt(0) == '(' && cAt(1) == '*') {
            ++iDepth;
            vAdvance(2);
        } else if (cAt(0) == '*' && cAt(1) == ')') {
            --iDepth;
            vAdvance(2);
        } else {
            vAdvance(1);
        }
    } while (iDepth);
    return true;
}

// Moves behind blanks and remarks of both kinds. Returns what is wrong with a remark, or null.
const char* ExpressLexer::pSkipBlanks() noexcept {
    for (;;) {
        if (boIs(cAt(0), Blank)) {
            vAdvance(1);
        } else if (cAt(0) == '-' && cAt(1) == '-') {
            vAdvance(std::min(m_text.find('\n', m_iAt), m_text.size()) - m_iAt);
        } else if (cAt(0) == '(' && cAt(1) == '*') {
            const Place start = m_place;
            if (boSkipComment()) continue;
            m_place = start;
            return "comment not closed";
        } else {
            return nullptr;
        }
    }
}

// The length with both quotes; 0 for a string that does not end on its line.
std::size_t ExpressLexer::iStringLength() const noexcept {
    const char cQuote = cAt(0);   // ' of a plain, " of an encoded string literal
    for (std::size_t i = 1; m_iAt + i < m_text.size() && cAt(i) != '\n'; ++i) {
        if (cAt(i) != cQuote) continue;
        if (cAt(i + 1) != cQuote) return i + 1;
        ++i;   // a doubled quote stands for itself
    }
    return 0;
}

// The length with all that follows without a blank, and with the sign of an exponent, as in "1.5E-3".
std::size_t ExpressLexer::iNumberLength() const noexcept {
    std::size_t iLength = 1;
    bool boPoint = false;
    for (;; ++iLength) {
        const char c = cAt(iLength);
        const char cBefore = cAt(iLength - 1);
        const bool boSign = boPoint && (c == '-' || c == '+') && (cBefore == 'E' || cBefore == 'e');
        if (!boIs(c, Inner) && c != '.' && !boSign) return iLength;
        boPoint = boPoint || c == '.';
    }
}

Token ExpressLexer::fault(const char* sWhy) noexcept {
    m_iAt = m_text.size();
    return {TokenKind::Fault, Keyword::None, sWhy, m_place};
}

Token ExpressLexer::next() {
    if (const char* sWhy = pSkipBlanks()) return fault(sWhy);
    if (m_iAt == m_text.size()) return {TokenKind::End, Keyword::None, {}, m_place};

    Token token{TokenKind::Symbol, Keyword::None, {}, m_place};
    std::size_t iLength = 1;
    const char c = cAt(0);
    if (boIs(c, Letter)) {
        token.kind = TokenKind::Word;
        iLength = iWordLength(m_text.substr(m_iAt));
    } else if (boIs(c, Digit)) {
        token.kind = TokenKind::Number;
        iLength = iNumberLength();
    } else if (c == '\'' || c == '"') {
        token.kind = TokenKind::String;
        iLength = iStringLength();
        if (iLength == 0) return fault("string not closed on its line");
    } else if (!boIs(c, Symbol)) {
        return fault("not a character of EXPRESS");
    } else {
        iLength = iSymbolLength(m_text.substr(m_iAt));
    }
    token.text = m_text.substr(m_iAt, iLength);
    if (token.kind == TokenKind::Word) token.keyword = keywordOf(token.text);
    m_iAt += iLength;   // no token goes over the end of its line
    m_place.iColumn += static_cast<unsigned>(iLength);
    return token;
}

}   // namespace oxa::ifc::def::express
