// SPDX-License-Identifier: Apache-2.0
// Statements (ISO 10303-11, 13).
#include <utility>

#include "Check/Express/Parser.h"

namespace oxa::check::express {

using ifc::def::express::TokenKind;

bool Parser::boAtBodyEnd() const noexcept {
    constexpr Word g_ends[] = {Word::Else,        Word::End,       Word::EndAlias,     Word::EndCase,
                               Word::EndFunction, Word::EndIf,     Word::EndProcedure, Word::EndRepeat,
                               Word::EndRule,     Word::Otherwise, Word::Where};
    if (m_token.kind == TokenKind::End) return true;
    for (const Word word : g_ends)
        if (m_word == word) return true;
    return false;
}

// Statements up to the word that ends what they stand in.
bool Parser::boReadBody(Body& body) {
    while (!boAtBodyEnd()) {
        StatementPtr pStatement = pReadStatement();
        if (!pStatement) return false;
        body.push_back(std::move(pStatement));
    }
    return !m_boFault;
}

StatementPtr Parser::pReadStatement() {
    if (!boDeeper()) return nullptr;
    auto pStatement = std::make_unique<Statement>();
    pStatement->place = m_token.place;
    ++m_iDepth;
    const bool boRead = boReadStatement(*pStatement);
    --m_iDepth;
    return boRead ? std::move(pStatement) : nullptr;
}

bool Parser::boReadStatement(Statement& statement) {
    if (boTake(";")) return true;
    if (boTake(Word::Alias)) return boReadAlias(statement);
    if (boTake(Word::Begin)) return boReadCompound(statement);
    if (boTake(Word::Case)) return boReadCase(statement);
    if (boTake(Word::Escape)) return boReadSimple(statement, StatementKind::Escape);
    if (boTake(Word::If)) return boReadIf(statement);
    if (boTake(Word::Repeat)) return boReadRepeat(statement);
    if (boTake(Word::Return)) return boReadReturn(statement);
    if (boTake(Word::Skip)) return boReadSimple(statement, StatementKind::Skip);
    return boReadAssignment(statement);
}

bool Parser::boReadSimple(Statement& statement, StatementKind kind) {
    statement.kind = kind;
    return boExpect(";");
}

bool Parser::boReadAlias(Statement& statement) {
    statement.kind = StatementKind::Alias;
    if (!boReadName(statement.sText, "a variable") || !boExpect(Word::For, "FOR")) return false;
    statement.pFirst = pQualified(pPrimary());
    return statement.pFirst && boExpect(";") && boReadBody(statement.body) && boExpect(Word::EndAlias, "END_ALIAS") &&
           boExpect(";");
}

// "variable := value;", or the call of a procedure.
bool Parser::boReadAssignment(Statement& statement) {
    if (!boAtName() && !boAt(Word::Self)) return boExpected("a statement");
    statement.pFirst = pQualified(pPrimary());
    if (!statement.pFirst) return false;
    if (boTake(":=")) {
        statement.kind = StatementKind::Assign;
        statement.pSecond = pExpression();
        return statement.pSecond && boExpect(";");
    }
    statement.kind = StatementKind::Call;
    const Op op = statement.pFirst->op;
    return (op == Op::Call || op == Op::Name) ? boExpect(";") : boExpected("\":=\"");
}

bool Parser::boReadCase(Statement& statement) {
    statement.kind = StatementKind::Case;
    statement.pFirst = pExpression();
    if (!statement.pFirst || !boExpect(Word::Of, "OF")) return false;
    while (!boAtBodyEnd()) {
        CaseAction& action = statement.cases.emplace_back();
        do {
            action.labels.push_back(pExpression());
            if (!action.labels.back()) return false;
        } while (boTake(","));
        if (!boExpect(":")) return false;
        action.pAction = pReadStatement();
        if (!action.pAction) return false;
    }
    if (boTake(Word::Otherwise)) {
        statement.boAlternative = true;
        if (!boExpect(":")) return false;
        statement.alternative.push_back(pReadStatement());
        if (!statement.alternative.back()) return false;
    }
    return boExpect(Word::EndCase, "END_CASE") && boExpect(";");
}

bool Parser::boReadCompound(Statement& statement) {
    statement.kind = StatementKind::Compound;
    return boReadBody(statement.body) && boExpect(Word::End, "END") && boExpect(";");
}

bool Parser::boReadIf(Statement& statement) {
    statement.kind = StatementKind::If;
    statement.pFirst = pExpression();
    if (!statement.pFirst || !boExpect(Word::Then, "THEN") || !boReadBody(statement.body)) return false;
    if (boTake(Word::Else)) {
        statement.boAlternative = true;
        if (!boReadBody(statement.alternative)) return false;
    }
    return boExpect(Word::EndIf, "END_IF") && boExpect(";");
}

bool Parser::boReadRepeat(Statement& statement) {
    statement.kind = StatementKind::Repeat;
    const auto boRead = [this](ExpressionPtr& pPlace) {
        pPlace = pExpression();
        return pPlace != nullptr;
    };
    if (boAtName()) {
        if (!boReadName(statement.sText, "a variable") || !boExpect(":=") || !boRead(statement.pFirst)) return false;
        if (!boExpect(Word::To, "TO") || !boRead(statement.pSecond)) return false;
        if (boTake(Word::By) && !boRead(statement.pThird)) return false;
    }
    if (boTake(Word::While) && !boRead(statement.pWhile)) return false;
    if (boTake(Word::Until) && !boRead(statement.pUntil)) return false;
    return boExpect(";") && boReadBody(statement.body) && boExpect(Word::EndRepeat, "END_REPEAT") && boExpect(";");
}

bool Parser::boReadReturn(Statement& statement) {
    statement.kind = StatementKind::Return;
    if (boTake(";")) return true;
    statement.pFirst = pExpression();
    return statement.pFirst && boExpect(";");
}

}   // namespace oxa::check::express
