// SPDX-License-Identifier: Apache-2.0
#include "Model/Selector.h"

#include <algorithm>
#include <cmath>

#include "Model/ElementKey.h"
#include "Model/ModelState.h"
#include "Model/Names.h"
#include "Model/SelectorParser.h"

namespace oxa {

namespace schema = ifc::def::schema;
using detail::BoundKey;
using detail::KeyKind;
using detail::Literal;
using detail::ModelState;
using detail::Operator;
using detail::Query;
using detail::RelationWalk;
using detail::Term;
using ifc::Entity;

QueryError::~QueryError() = default;

namespace {

// Numbers that files write with other last digits are the same.
bool boSameNumber(double a, double b) { return a == b || std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b)); }

template <class Value>
bool boOrdered(Operator eOperator, const Value& value, const Value& wanted, bool boEqual) {
    switch (eOperator) {
    case Operator::Greater: return !boEqual && value > wanted;
    case Operator::GreaterOrEqual: return boEqual || value > wanted;
    case Operator::Less: return !boEqual && value < wanted;
    case Operator::LessOrEqual: return boEqual || value < wanted;
    case Operator::Equal:
    case Operator::Contains: break;
    }
    return boEqual;
}

// One value of an element against what a term wants.
class CellTest {
public:
    CellTest(Operator eOperator, const Literal& literal) : m_eOperator(eOperator), m_literal(literal) {}

    bool operator()(std::monostate) const { return false; }
    bool operator()(bool boValue) const {
        switch (m_literal.eKind) {
        case Literal::Kind::True: return boValue;
        case Literal::Kind::False: return !boValue;
        case Literal::Kind::Text:
            return m_eOperator == Operator::Equal && detail::boSameName(m_literal.sText, boValue ? "true" : "false");
        case Literal::Kind::Pattern: return m_literal.pPattern->boMatches(boValue ? "true" : "false");
        case Literal::Kind::Null: break;
        }
        return false;
    }
    bool operator()(std::int64_t iValue) const { return boNumber(static_cast<double>(iValue), iValue); }
    bool operator()(double value) const { return boNumber(value, value); }
    bool operator()(const std::string& sValue) const {
        if (m_literal.pPattern) return m_literal.pPattern->boMatches(sValue);
        if (m_literal.eKind != Literal::Kind::Text) return false;
        if (m_eOperator == Operator::Equal) return sValue == m_literal.sText;
        if (m_eOperator == Operator::Contains) return sValue.find(m_literal.sText) != std::string::npos;
        if (!m_literal.number) return boOrdered(m_eOperator, sValue, m_literal.sText, sValue == m_literal.sText);
        const std::optional<double> value = detail::numberOf(sValue);   // a mark or a room number in a text
        return value && boOrdered(m_eOperator, *value, *m_literal.number, boSameNumber(*value, *m_literal.number));
    }

private:
    [[nodiscard]] bool boNumber(double value, const Cell& cell) const {
        if (m_literal.pPattern) return m_literal.pPattern->boMatches(toText(cell));
        if (m_eOperator == Operator::Contains) return toText(cell).find(m_literal.sText) != std::string::npos;
        return m_literal.number &&
               boOrdered(m_eOperator, value, *m_literal.number, boSameNumber(value, *m_literal.number));
    }

    Operator m_eOperator;
    const Literal& m_literal;
};

// What a term costs an element, as a rank: a look at its type, at its cells, at one relationship, at several of them.
int iCost(const Term& term) {
    if (term.eKind != Term::Kind::Compare) return 0;
    switch (term.key.eKind) {
    case KeyKind::Class:
    case KeyKind::Id: return 0;
    case KeyKind::Attribute: return 1;
    case KeyKind::Type: return 2;
    case KeyKind::Container:
    case KeyKind::Storey:
    case KeyKind::Building:
    case KeyKind::Parent:
    case KeyKind::Location:
    case KeyKind::Group: return 3;
    case KeyKind::Material:
    case KeyKind::Classification: return 4;
    case KeyKind::Property: break;
    }
    return 5;
}

// A term that knows a model.
class BoundTerm {
public:
    BoundTerm(const RelationWalk& walk, const Term& term, bool boExact)
        : m_term(term),
          m_boExact(boExact),
          m_state(walk.state()) {
        try {
            if (term.eKind == Term::Kind::Class) m_pType = &detail::typeFromName(m_state.schema(), term.sText);
            if (term.eKind == Term::Kind::Compare) m_pKey = std::make_unique<BoundKey>(walk, term.key, false);
        } catch (const NameError& error) {
            throw NameError("column " + std::to_string(term.iColumn) + ": " + error.what(), error.nearNames());
        }
        if (term.eKind == Term::Kind::Id) m_pEntity = m_state.pFromNumber(term.iId);
        if (term.eKind == Term::Kind::GlobalId) m_pEntity = m_state.pFromGuid(term.guid);
    }

    [[nodiscard]] bool boHolds(Entity& entity, std::vector<Cell>& values) const {
        return boHoldsPlain(entity, values) != m_term.boNot;
    }
    [[nodiscard]] const Term& term() const noexcept { return m_term; }
    [[nodiscard]] const schema::Entity* pType() const noexcept { return m_pType; }
    [[nodiscard]] Entity* pEntity() const noexcept { return m_pEntity; }
    [[nodiscard]] std::string hint() const { return m_pKey ? m_pKey->hint() : std::string(); }
    [[nodiscard]] bool boExact() const noexcept { return m_boExact; }

private:
    [[nodiscard]] bool boHoldsPlain(Entity& entity, std::vector<Cell>& values) const {
        if (m_term.eKind == Term::Kind::Class)
            return m_boExact ? entity.pSchemaEntity() == m_pType : entity.boIsCompatible(m_pType);
        if (m_term.eKind != Term::Kind::Compare) return &entity == m_pEntity;
        values.clear();
        m_pKey->vRead(entity, values);
        if (m_term.literal.eKind == Literal::Kind::Null) return values.empty();
        const CellTest test(m_term.eOperator, m_term.literal);
        return std::ranges::any_of(values, [&test](const Cell& cell) { return std::visit(test, cell); });
    }

    const Term& m_term;
    bool m_boExact;
    ModelState& m_state;
    const schema::Entity* m_pType = nullptr;   // of a class
    Entity* m_pEntity = nullptr;               // of a GlobalId or a number
    std::unique_ptr<BoundKey> m_pKey;          // of a comparison
};

class GroupSelection {
public:
    GroupSelection(const RelationWalk& walk, const std::vector<Term>& terms, bool boExact) : m_walk(walk) {
        for (const Term& term : terms) m_terms.push_back(std::make_unique<BoundTerm>(walk, term, boExact));
        std::ranges::stable_sort(m_terms, {}, [](const auto& pTerm) { return iCost(pTerm->term()); });
    }

    // An element that a term excludes no later term looks at.
    void vSelect(std::vector<Entity*>& found) {
        std::vector<Cell> values;
        for (Entity* pEntity : candidates())
            if (std::ranges::all_of(m_terms, [&](const auto& pTerm) { return pTerm->boHolds(*pEntity, values); }))
                found.push_back(pEntity);
    }

    void vHintsAdd(std::vector<std::string>& hints) const {
        for (const auto& pTerm : m_terms) vHintAdd(hints, pTerm->hint());
        const BoundTerm* pFirst = nullptr;
        for (const auto& pTerm : m_terms) {
            if (!pTerm->pType() || pTerm->term().boNot) continue;
            if (pFirst && !schema::boIsSubtype(pFirst->pType(), pTerm->pType()) &&
                !schema::boIsSubtype(pTerm->pType(), pFirst->pType()))
                vHintAdd(hints, "no element is both " + pFirst->pType()->sName + " and " + pTerm->pType()->sName +
                                    "; a + between them selects both");
            pFirst = pFirst ? pFirst : pTerm.get();
        }
    }

private:
    static void vHintAdd(std::vector<std::string>& hints, std::string sHint) {
        if (!sHint.empty() && std::ranges::find(hints, sHint) == hints.end()) hints.push_back(std::move(sHint));
    }

    // The fewest that can be told without a look at them.
    [[nodiscard]] std::vector<Entity*> candidates() const {
        const schema::Entity* pBest = nullptr;
        const auto iTypes = [](const schema::Entity& type) { return type.iTypeOrdinalLast - type.iTypeOrdinal; };
        bool boExact = false;
        for (const auto& pTerm : m_terms) {
            if (pTerm->term().boNot) continue;
            if (pTerm->term().eKind == Term::Kind::Id || pTerm->term().eKind == Term::Kind::GlobalId)
                return pTerm->pEntity() ? std::vector<Entity*>{pTerm->pEntity()} : std::vector<Entity*>();
            if (!pTerm->pType() || (pBest && iTypes(*pBest) <= iTypes(*pTerm->pType()))) continue;
            pBest = pTerm->pType();
            boExact = pTerm->boExact();
        }
        if (!pBest) pBest = m_walk.table().pClass(detail::Class::ObjectDefinition);
        return pBest ? m_walk.state().all(*pBest, !boExact) : m_walk.state().all();
    }

    const RelationWalk& m_walk;
    std::vector<std::unique_ptr<BoundTerm>> m_terms;
};

Selection selection(const Query& query, ModelState& state, bool boExact) {
    const RelationWalk walk(state);
    std::vector<std::unique_ptr<GroupSelection>> groups;   // all of them, before anything is looked at
    for (const std::vector<Term>& terms : query.groups)
        groups.push_back(std::make_unique<GroupSelection>(walk, terms, boExact));
    Selection result;
    std::vector<Entity*> found;
    for (const auto& pGroup : groups) {
        pGroup->vSelect(found);
        pGroup->vHintsAdd(result.hints);
    }
    if (groups.size() > 1) {
        state.vSortByNumber(found);
        found.erase(std::unique(found.begin(), found.end()), found.end());
    }
    result.elements = state.elementsOf(std::move(found));
    return result;
}

}   // namespace

Selector::Selector(std::string_view query) : m_pQuery(std::make_shared<const Query>(detail::queryParse(query))) {}

Selection Selector::select(const Model& model) const { return selection(*m_pQuery, ModelState::of(model), false); }
Selection Selector::select(const Model& model, Exact) const {
    return selection(*m_pQuery, ModelState::of(model), true);
}

std::string Selector::text() const { return detail::sQueryText(*m_pQuery); }

}   // namespace oxa
