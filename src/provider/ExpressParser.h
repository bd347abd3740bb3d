// SPDX-License-Identifier: Apache-2.0
// ExpressParser: EXPRESS long form (ISO 10303-11) to declarations.
//
// For      SchemaLoader; FactTable reads the type of an attribute with it.
// Not for  resolving names: GraphBuilder does. What no schema graph holds (functions, procedures, rules, constants,
//          WHERE clauses, derived attributes but the fact that they redeclare one) is passed over.
// Limits   bounded stack whatever the text; time and memory grow with its length only.
// Threads  one parser per thread.
#pragma once

#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "provider/ExpressDeclarations.h"
#include "provider/ExpressLexer.h"
#include "provider/SchemaMessage.h"

namespace oxa::ifc::def::express {

class OXA_SCHEMA_API ExpressParser {
public:
    // Both must outlive the parser, and "text" the declarations.
    ExpressParser(std::string_view text, std::vector<SchemaMessage>& messages, Place place = {});

    // A whole text with one schema. On false there is one message more: the first fault ends the reading.
    [[nodiscard]] bool boReadSchema(SchemaDeclaration& schema);
    // A text that is one type, as in "LIST [1:?] OF IfcLabel". False as above.
    [[nodiscard]] bool boReadType(TypeReference& type);

private:
    // Tokens. Each boTake... moves on when the current token is the one asked for; each boExpect... and
    // boRead... reports it when not. After a fault the text is at its end for everyone.
    void vNext();
    [[nodiscard]] bool boAt(char cSymbol) const noexcept;
    [[nodiscard]] bool boAt(Keyword keyword) const noexcept { return m_token.keyword == keyword; }
    [[nodiscard]] bool boAtName() const noexcept;
    [[nodiscard]] bool boTake(char cSymbol);
    [[nodiscard]] bool boTake(Keyword keyword);
    [[nodiscard]] bool boExpect(char cSymbol);
    [[nodiscard]] bool boExpect(Keyword keyword, const char* sSpelled);
    [[nodiscard]] bool boReadName(Name& name, const char* sWhat);
    bool boFaultAt(Place place, std::string sText);
    bool boExpected(const char* sWhat);

    // Productions.
    [[nodiscard]] bool boReadDeclaration(SchemaDeclaration& schema);
    [[nodiscard]] bool boSkipBlock(const char* sWhat, Keyword begin, Keyword end);
    [[nodiscard]] bool boSkipStatement();
    [[nodiscard]] bool boSkipParentheses();
    [[nodiscard]] bool boSkipClause(Keyword clause);

    [[nodiscard]] bool boReadTypeDeclaration(TypeDeclaration& type);
    [[nodiscard]] bool boReadUnderlyingType(TypeDeclaration& type);
    [[nodiscard]] bool boReadExtendableItems(TypeDeclaration& type, bool boExtensible);
    [[nodiscard]] bool boReadItems(TypeDeclaration& type);

    [[nodiscard]] bool boReadTypeReference(TypeReference& type);
    [[nodiscard]] bool boReadAggregate(TypeReference& type);
    [[nodiscard]] bool boReadBounds(std::string& sBounds);
    [[nodiscard]] bool boReadBaseType(TypeReference& type);
    [[nodiscard]] bool boReadWidth(TypeReference& type);

    [[nodiscard]] bool boReadEntityDeclaration(SchemaDeclaration& schema);
    [[nodiscard]] bool boReadEntityHead(EntityDeclaration& entity);
    [[nodiscard]] bool boReadSupertype(EntityDeclaration& entity);
    [[nodiscard]] bool boReadAttribute(SchemaDeclaration& schema, EntityDeclaration& entity);
    [[nodiscard]] bool boAtClauseEnd() const noexcept;
    [[nodiscard]] bool boReadQualifiedName(Name& supertype, Name& attribute);
    [[nodiscard]] bool boReadDerived(EntityDeclaration& entity);
    [[nodiscard]] bool boReadUnique(EntityDeclaration& entity);
    [[nodiscard]] bool boReadUniqueRule(UniqueDeclaration& rule);
    [[nodiscard]] bool boReadInverse(EntityDeclaration& entity);

    std::vector<SchemaMessage>& m_messages;
    ExpressLexer m_lexer;
    Token m_token;
    bool m_boFault = false;
};

}   // namespace oxa::ifc::def::express
