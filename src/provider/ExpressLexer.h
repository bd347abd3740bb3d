// SPDX-License-Identifier: Apache-2.0
// ExpressLexer: EXPRESS text as tokens (ISO 10303-11, clause 7).
//
// For      ExpressParser and, for the type of an attribute, FactTable; the rules of src/Check.
// Threads  one lexer per thread.
#pragma once

#include <string>
#include <string_view>

#include "platform/Export.h"
#include "provider/ExpressDeclarations.h"

namespace oxa::ifc::def::express {

// The reserved words that decide how a declaration is read. All other words are Keyword::None.
enum class Keyword : unsigned char {
    None,
    Abstract,
    Array,
    Bag,
    BasedOn,
    Binary,
    Boolean,
    Constant,
    Derive,
    EndConstant,
    EndEntity,
    EndFunction,
    EndProcedure,
    EndRule,
    EndSchema,
    EndSubtypeConstraint,
    EndType,
    Entity,
    Enumeration,
    Extensible,
    Fixed,
    For,
    Function,
    GenericEntity,
    Integer,
    Inverse,
    List,
    Logical,
    Number,
    Of,
    Optional,
    Procedure,
    Real,
    Reference,
    Renamed,
    Rule,
    Schema,
    Select,
    Self,
    Set,
    String,
    Subtype,
    SubtypeConstraint,
    Supertype,
    Type,
    Unique,
    Use,
    Where,
    With,
};

enum class TokenKind : unsigned char {
    Word,   // an identifier or a reserved word
    Number,
    String,   // with its quotes
    Symbol,   // of operators and punctuation, one character or more, as "<=" and ":<>:"
    End,      // of the text
    Fault,    // no token of EXPRESS; "text" says why. Only End follows
};

struct Token {
    TokenKind kind = TokenKind::End;
    Keyword keyword = Keyword::None;   // of a Word
    std::string_view text;             // a view into the source; of a Fault, a literal
    Place place;
};

// A word that is no keyword, and nothing besides.
[[nodiscard]] OXA_SCHEMA_API bool boIsName(std::string_view text) noexcept;

class OXA_SCHEMA_API ExpressLexer {
public:
    // "text" must outlive the tokens. "place" is where it begins; a UTF-8 byte order mark is passed over.
    explicit ExpressLexer(std::string_view text, Place place = {});

    [[nodiscard]] Token next();

private:
    [[nodiscard]] char cAt(std::size_t iOffset) const noexcept;
    void vAdvance(std::size_t iCount) noexcept;
    [[nodiscard]] const char* pSkipBlanks() noexcept;           // null, or why there is no next token
    [[nodiscard]] bool boSkipComment() noexcept;                // "(* ... *)", which nests
    [[nodiscard]] std::size_t iStringLength() const noexcept;   // 0 when it is not closed on its line
    [[nodiscard]] std::size_t iNumberLength() const noexcept;
    [[nodiscard]] Token fault(const char* sWhy) noexcept;

    std::string_view m_text;
    std::size_t m_iAt = 0;
    Place m_place;
};

}   // namespace oxa::ifc::def::express
