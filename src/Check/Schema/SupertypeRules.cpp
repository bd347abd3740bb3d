// SPDX-License-Identifier: Apache-2.0
#include "Check/Schema/SupertypeRules.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "provider/ExpressLexer.h"

namespace oxa::check {

using namespace ifc::def::schema;
namespace lexical = ifc::def::express;

// Reads the heads of entities, and passes over all else. The text was read once before: it has no faults.
class SupertypeRules::Reader {
public:
    Reader(std::string_view text, Constraints& constraints) : m_lexer(text), m_constraints(constraints) {}

    void vRead() {
        for (vNext(); m_token.kind != lexical::TokenKind::End && m_token.kind != lexical::TokenKind::Fault; vNext()) {
            if (m_sWord == "ENTITY") vEntity();
            if (m_sWord == "SUBTYPE_CONSTRAINT") vConstraint();
        }
    }

private:
    // name [ ABSTRACT ] [ SUPERTYPE [ OF "(" expression ")" ] ]
    void vEntity() {
        vNext();
        const std::string sEntity = m_sWord;
        while (m_token.kind == lexical::TokenKind::Word && m_sWord != "SUPERTYPE" && m_sWord != "SUBTYPE") vNext();
        if (m_sWord != "SUPERTYPE") return;
        vNext();
        if (m_sWord == "OF") m_constraints[sEntity].push_back(operand(0));
    }

    // name FOR entity ";" [ ABSTRACT SUPERTYPE ";" ] [ TOTAL_OVER "(" names ")" ";" ] [ expression ";" ]
    void vConstraint() {
        while (m_token.kind == lexical::TokenKind::Word && m_sWord != "FOR") vNext();
        vNext();
        const std::string sEntity = m_sWord;
        vNext();
        while (boAt(";")) {
            Expression expression = chain(0, true);
            if (expression.sName == "END_SUBTYPE_CONSTRAINT") return;
            if (boAt(";")) m_constraints[sEntity].push_back(std::move(expression));
            while (!boAt(";") && m_token.kind != lexical::TokenKind::End && m_token.kind != lexical::TokenKind::Fault)
                vNext();
        }
    }

    static constexpr unsigned g_iMostDeep = 100;

    void vNext() {
        m_token = m_lexer.next();
        m_sWord = m_token.kind == lexical::TokenKind::Word ? sUpper(m_token.text) : std::string();
    }
    [[nodiscard]] bool boAt(std::string_view symbol) const noexcept { return m_token.text == symbol; }

    // operand { AND operand }, and the same of ANDOR.
    Expression chain(unsigned iDepth, bool boAndOr) {
        Expression result = boAndOr ? chain(iDepth, false) : operand(iDepth);
        const std::string_view word = boAndOr ? "ANDOR" : "AND";
        while (m_sWord == word) {
            Expression joined{boAndOr ? Expression::Kind::AndOr : Expression::Kind::And, {}, {}};
            joined.operands.push_back(std::move(result));
            joined.operands.push_back(boAndOr ? chain(iDepth, false) : operand(iDepth));
            result = std::move(joined);
        }
        return result;
    }

    // From the token in front of a name, of "ONEOF (...)" or of "(...)" to behind it.
    Expression operand(unsigned iDepth) {
        vNext();
        Expression result{Expression::Kind::Name, m_sWord, {}};
        if (m_sWord == "ONEOF") {
            result.kind = Expression::Kind::OneOf;
            vNext();
            while ((boAt("(") || boAt(",")) && iDepth < g_iMostDeep) result.operands.push_back(chain(iDepth + 1, true));
        } else if (boAt("(") && iDepth < g_iMostDeep) {
            result = chain(iDepth + 1, true);
        }
        vNext();
        return result;
    }

    lexical::ExpressLexer m_lexer;
    Constraints& m_constraints;
    lexical::Token m_token;
    std::string m_sWord;   // in capitals
};

SupertypeRules::SupertypeRules(const ifc::def::SchemaPset& schema) : m_boAllOneOf(schema.sExpress.empty()) {
    Reader(schema.sExpress, m_constraints).vRead();
}

bool SupertypeRules::boNames(const Expression& expression, const std::string& sName) {
    if (expression.kind == Expression::Kind::Name) return expression.sName == sName;
    return std::any_of(expression.operands.begin(), expression.operands.end(),
                       [&](const Expression& operand) { return boNames(operand, sName); });
}

// Whether an instance may be of these, all of which the expression names.
bool SupertypeRules::boHolds(const Expression& expression, const Names& names) {
    if (expression.kind == Expression::Kind::Name) return names.size() == 1 && names.front() == expression.sName;
    std::size_t iOf = 0;   // operands that name one of them
    bool boAll = true;
    for (const Expression& operand : expression.operands) {
        Names own;
        std::copy_if(names.begin(), names.end(), std::back_inserter(own),
                     [&](const std::string& sName) { return boNames(operand, sName); });
        if (own.empty()) continue;
        ++iOf;
        boAll = boAll && boHolds(operand, own);
    }
    switch (expression.kind) {
    case Expression::Kind::OneOf: return boAll && iOf == 1;
    case Expression::Kind::And: return boAll && iOf == expression.operands.size();
    case Expression::Kind::AndOr:
    case Expression::Kind::Name: break;
    }
    return boAll && iOf > 0;
}

bool SupertypeRules::boTogether(const Entity& supertype, const std::vector<const Entity*>& subtypes) const {
    if (m_boAllOneOf) return subtypes.size() <= 1;
    const auto pConstraint = m_constraints.find(supertype.sNameUpper);
    if (pConstraint == m_constraints.end()) return true;
    return std::all_of(pConstraint->second.begin(), pConstraint->second.end(), [&](const Expression& expression) {
        Names names;   // of others nothing is said: they stand beside any
        for (const Entity* pSubtype : subtypes)
            if (boNames(expression, pSubtype->sNameUpper)) names.push_back(pSubtype->sNameUpper);
        return names.empty() || boHolds(expression, names);
    });
}

}   // namespace oxa::check
