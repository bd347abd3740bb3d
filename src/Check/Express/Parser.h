// SPDX-License-Identifier: Apache-2.0
// Parser: EXPRESS long form (ISO 10303-11) to the trees of Tree.h.
//
// For      whoever checks rules: with the text of a schema, or a table of rules, which is EXPRESS without the rest.
// Not for  the declarations that make a schema graph: they are passed over here, and read in src/provider.
// Limits   g_iDepthLimit levels of nesting; time and memory grow with the length of the text only.
// Faults   one message with line and column; the first fault ends the reading.
// Threads  one parser per thread.
#pragma once

#include <string_view>
#include <vector>

#include "Check/Express/Tree.h"
#include "Check/Express/Words.h"
#include "platform/Export.h"
#include "provider/ExpressLexer.h"
#include "provider/SchemaMessage.h"

namespace oxa::check::express {

class OXA_CHECK_API Parser {
public:
    static constexpr unsigned short g_iDepthLimit = 256;

    // Both must outlive the parser.
    Parser(std::string_view text, std::vector<ifc::SchemaMessage>& messages);

    // A whole text with one schema. On false there is one message more.
    [[nodiscard]] bool boReadSchema(SchemaRules& rules);
    // A text that is one expression; null as above.
    [[nodiscard]] ExpressionPtr pReadExpression();

private:
    // Tokens. After a fault the text is at its end for everyone.
    void vNext();
    [[nodiscard]] bool boAt(Word word) const noexcept { return m_word == word; }
    [[nodiscard]] bool boAt(std::string_view symbol) const noexcept;
    [[nodiscard]] bool boAtName() const noexcept;
    [[nodiscard]] bool boTake(Word word);
    [[nodiscard]] bool boTake(std::string_view symbol);
    [[nodiscard]] bool boExpect(Word word, const char* sSpelled);
    [[nodiscard]] bool boExpect(std::string_view symbol);
    [[nodiscard]] bool boReadName(std::string& sName, const char* sWhat);
    bool boFaultAt(Place place, std::string sText);
    bool boExpected(const char* sWhat);
    [[nodiscard]] bool boDeeper();

    // Declarations (ParserDeclarations.cpp).
    [[nodiscard]] bool boReadDeclaration(SchemaRules& rules);
    [[nodiscard]] bool boSkipStatement();
    [[nodiscard]] bool boSkipBlock(Word end, const char* sEnd);
    [[nodiscard]] bool boReadType(SchemaRules& rules);
    [[nodiscard]] bool boReadEntity(SchemaRules& rules);
    [[nodiscard]] bool boReadDerived(EntityRules& entity);
    [[nodiscard]] bool boReadUniques(EntityRules& entity);
    [[nodiscard]] bool boReadDomainRules(std::vector<DomainRule>& rules);
    [[nodiscard]] bool boReadConstants(Declarations& declarations);
    [[nodiscard]] bool boReadBlock(Block& block);
    [[nodiscard]] bool boReadParameters(Block& block);
    [[nodiscard]] bool boReadPopulations(Block& block);
    [[nodiscard]] bool boReadHead(Block& block);
    [[nodiscard]] bool boReadInner(Declarations& inner, bool& boFound);
    [[nodiscard]] bool boReadLocals(Block& block);
    [[nodiscard]] bool boReadTypeTree(TypeTree& type);
    [[nodiscard]] bool boReadAggregateType(TypeTree& type, TypeForm form);
    [[nodiscard]] bool boReadLabel(TypeTree& type);
    [[nodiscard]] bool boReadBounds(TypeTree& type);
    [[nodiscard]] bool boReadWidth(TypeTree& type);

    // Statements (ParserStatements.cpp).
    [[nodiscard]] bool boReadBody(Body& body);
    [[nodiscard]] bool boAtBodyEnd() const noexcept;
    [[nodiscard]] StatementPtr pReadStatement();
    [[nodiscard]] bool boReadStatement(Statement& statement);
    [[nodiscard]] bool boReadSimple(Statement& statement, StatementKind kind);
    [[nodiscard]] bool boReadAlias(Statement& statement);
    [[nodiscard]] bool boReadAssignment(Statement& statement);
    [[nodiscard]] bool boReadCase(Statement& statement);
    [[nodiscard]] bool boReadCompound(Statement& statement);
    [[nodiscard]] bool boReadIf(Statement& statement);
    [[nodiscard]] bool boReadRepeat(Statement& statement);
    [[nodiscard]] bool boReadReturn(Statement& statement);

    // Expressions (Parser.cpp); null after a fault.
    [[nodiscard]] ExpressionPtr pExpression();
    [[nodiscard]] ExpressionPtr pBinary(int iLevel);
    [[nodiscard]] ExpressionPtr pUnary();
    [[nodiscard]] ExpressionPtr pPrimary();
    [[nodiscard]] ExpressionPtr pNamed();
    [[nodiscard]] ExpressionPtr pLiteral();
    [[nodiscard]] ExpressionPtr pParenthesized();
    [[nodiscard]] ExpressionPtr pAggregate();
    [[nodiscard]] ExpressionPtr pInterval();
    [[nodiscard]] ExpressionPtr pQuery();
    [[nodiscard]] ExpressionPtr pQualified(ExpressionPtr pBase);
    [[nodiscard]] ExpressionPtr pIndexed(ExpressionPtr pBase);
    [[nodiscard]] bool boReadOperator(int iLevel, Op& op);
    [[nodiscard]] ExpressionPtr pMake(Op op, Place place) const;
    bool boAdd(Expression& parent, ExpressionPtr pOperand);
    template <class... Operands>
    [[nodiscard]] ExpressionPtr pMakeOf(Op op, Place place, Operands... operands);

    std::vector<ifc::SchemaMessage>& m_messages;
    ifc::def::express::ExpressLexer m_lexer;
    ifc::def::express::Token m_token;
    Word m_word = Word::None;   // of m_token
    unsigned m_iDepth = 0;      // of what is being read
    bool m_boFault = false;
};

}   // namespace oxa::check::express
