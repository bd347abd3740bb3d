// SPDX-License-Identifier: Apache-2.0
// Declarations (ISO 10303-11, 9): what a schema graph holds is passed over, all else is read.
#include <utility>

#include "Check/Express/Parser.h"

namespace oxa::check::express {

using ifc::def::express::TokenKind;

namespace {

constexpr std::pair<Word, TypeForm> g_simpleTypes[] = {
    {Word::Binary, TypeForm::Binary},   {Word::Boolean, TypeForm::Boolean},
    {Word::Integer, TypeForm::Integer}, {Word::Logical, TypeForm::Logical},
    {Word::Number, TypeForm::Number},   {Word::Real, TypeForm::Real},
    {Word::String, TypeForm::String},   {Word::GenericEntity, TypeForm::GenericEntity},
};
constexpr std::pair<Word, TypeForm> g_aggregates[] = {
    {Word::Array, TypeForm::Array},
    {Word::Bag, TypeForm::Bag},
    {Word::List, TypeForm::List},
    {Word::Set, TypeForm::Set},
};

}   // namespace

bool Parser::boReadSchema(SchemaRules& rules) {
    if (!boExpect(Word::Schema, "SCHEMA") || !boReadName(rules.sName, "the schema's name")) return false;
    if (m_token.kind == TokenKind::String) vNext();   // its language version
    if (!boExpect(";")) return false;
    while (!boAt(Word::EndSchema))
        if (!boReadDeclaration(rules)) return false;
    vNext();
    return boExpect(";") && (m_token.kind == TokenKind::End || boExpected("the end"));
}

bool Parser::boReadDeclaration(SchemaRules& rules) {
    if (boAt(Word::Use) || boAt(Word::Reference)) return boSkipStatement();
    if (boAt(Word::SubtypeConstraint)) return boSkipBlock(Word::EndSubtypeConstraint, "END_SUBTYPE_CONSTRAINT");
    if (boAt(Word::Type)) return boReadType(rules);
    if (boAt(Word::Entity)) return boReadEntity(rules);
    if (boTake(Word::Constant)) return boReadConstants(rules.outer);
    if (boAt(Word::Function) || boAt(Word::Procedure) || boAt(Word::Rule))
        return boReadBlock(rules.outer.blocks.emplace_back());
    return boExpected("a declaration");
}

bool Parser::boSkipStatement() {
    while (!boTake(";")) {
        if (m_token.kind == TokenKind::End) return boExpected("\";\"");
        vNext();
    }
    return true;
}

bool Parser::boSkipBlock(Word end, const char* sEnd) {
    while (!boAt(end)) {
        if (m_token.kind == TokenKind::End) return boExpected(sEnd);
        vNext();
    }
    return boSkipStatement();
}

bool Parser::boReadType(SchemaRules& rules) {
    TypeRules type;
    type.place = m_token.place;
    vNext();
    if (!boReadName(type.sName, "a type's name") || !boSkipStatement()) return false;
    if (boTake(Word::Where) && !boReadDomainRules(type.rules)) return false;
    if (!boExpect(Word::EndType, "END_TYPE") || !boExpect(";")) return false;
    if (!type.rules.empty()) rules.types.push_back(std::move(type));
    return true;
}

bool Parser::boReadEntity(SchemaRules& rules) {
    EntityRules entity;
    entity.place = m_token.place;
    vNext();
    if (!boReadName(entity.sName, "an entity's name") || !boSkipStatement()) return false;
    while (!boAt(Word::EndEntity)) {
        bool boRead = false;
        if (boTake(Word::Derive))
            boRead = boReadDerived(entity);
        else if (boTake(Word::Unique))
            boRead = boReadUniques(entity);
        else if (boTake(Word::Where))
            boRead = boReadDomainRules(entity.rules);
        else
            boRead = (boTake(Word::Inverse) && boAt(Word::EndEntity)) || boSkipStatement();
        if (!boRead) return false;
    }
    vNext();
    if (!boExpect(";")) return false;
    if (!entity.derived.empty() || !entity.uniques.empty() || !entity.rules.empty())
        rules.entities.push_back(std::move(entity));
    return true;
}

// "name : type := value;" or "SELF\entity.name [RENAMED name] : type := value;", up to the next clause.
bool Parser::boReadDerived(EntityRules& entity) {
    while (boAtName() || boAt(Word::Self)) {
        Declaration& attribute = entity.derived.emplace_back();
        attribute.place = m_token.place;
        std::string& sName = attribute.names.emplace_back();
        if (boTake(Word::Self) && (!boExpect("\\") || !boReadName(attribute.sGroup, "an entity") || !boExpect(".")))
            return false;
        if (!boReadName(sName, "an attribute")) return false;
        if (boTake(Word::Renamed) && !boReadName(attribute.sRenamed, "an attribute")) return false;
        if (!boExpect(":") || !boReadTypeTree(attribute.type) || !boExpect(":=")) return false;
        attribute.pValue = pExpression();
        if (!attribute.pValue || !boExpect(";")) return false;
    }
    return !m_boFault;
}

bool Parser::boReadUniques(EntityRules& entity) {
    while (boAtName() || boAt(Word::Self)) {
        UniqueRule& rule = entity.uniques.emplace_back();
        rule.place = m_token.place;
        do {
            ExpressionPtr pAttribute = pQualified(pPrimary());
            if (pAttribute && rule.sLabel.empty() && rule.attributes.empty() && pAttribute->op == Op::Name &&
                boTake(":")) {
                rule.sLabel = pAttribute->sText;
                pAttribute = pQualified(pPrimary());
            }
            if (!pAttribute) return false;
            rule.attributes.push_back(std::move(pAttribute));
        } while (boTake(","));
        if (!boExpect(";")) return false;
    }
    return !m_boFault;
}

// "[label :] condition;", up to the word that ends what the clause stands in.
bool Parser::boReadDomainRules(std::vector<DomainRule>& rules) {
    while (!boAt(Word::EndType) && !boAt(Word::EndEntity) && !boAt(Word::EndRule)) {
        DomainRule& rule = rules.emplace_back();
        rule.place = m_token.place;
        rule.pCondition = pExpression();
        if (rule.pCondition && rule.pCondition->op == Op::Name && boTake(":")) {
            rule.sLabel = rule.pCondition->sText;
            rule.pCondition = pExpression();
        }
        if (!rule.pCondition || !boExpect(";")) return false;
    }
    return true;
}

bool Parser::boReadConstants(Declarations& declarations) {
    while (!boAt(Word::EndConstant)) {
        Declaration& constant = declarations.constants.emplace_back();
        constant.place = m_token.place;
        if (!boReadName(constant.names.emplace_back(), "a constant") || !boExpect(":") ||
            !boReadTypeTree(constant.type) || !boExpect(":="))
            return false;
        constant.pValue = pExpression();
        if (!constant.pValue || !boExpect(";")) return false;
    }
    vNext();
    return boExpect(";");
}

// FUNCTION, PROCEDURE or RULE, whole.
bool Parser::boReadBlock(Block& block) {
    if (!boDeeper()) return false;
    ++m_iDepth;
    block.place = m_token.place;
    block.kind = boAt(Word::Function)    ? BlockKind::Function
                 : boAt(Word::Procedure) ? BlockKind::Procedure
                                         : BlockKind::Rule;
    vNext();
    if (!boReadName(block.sName, "a name") || !boReadHead(block)) return false;
    for (bool boFound = true; boFound;)
        if (!boReadInner(block.inner, boFound)) return false;
    if (!boReadLocals(block) || !boReadBody(block.body)) return false;
    if (block.kind == BlockKind::Rule && boTake(Word::Where) && !boReadDomainRules(block.rules)) return false;
    --m_iDepth;
    if (block.kind == BlockKind::Function) return boExpect(Word::EndFunction, "END_FUNCTION") && boExpect(";");
    if (block.kind == BlockKind::Procedure) return boExpect(Word::EndProcedure, "END_PROCEDURE") && boExpect(";");
    return boExpect(Word::EndRule, "END_RULE") && boExpect(";");
}

// The line that declares what a block takes and gives.
bool Parser::boReadHead(Block& block) {
    if (block.kind == BlockKind::Rule) return boReadPopulations(block);
    if (boTake("(") && !boReadParameters(block)) return false;
    if (block.kind == BlockKind::Function && (!boExpect(":") || !boReadTypeTree(block.result))) return false;
    return boExpect(";");
}

bool Parser::boReadParameters(Block& block) {
    do {
        Declaration& parameter = block.parameters.emplace_back();
        parameter.place = m_token.place;
        parameter.boVar = boTake(Word::Var);
        do {
            if (!boReadName(parameter.names.emplace_back(), "a parameter")) return false;
        } while (boTake(","));
        if (!boExpect(":") || !boReadTypeTree(parameter.type)) return false;
    } while (boTake(";"));
    return boExpect(")");
}

bool Parser::boReadPopulations(Block& block) {
    if (!boExpect(Word::For, "FOR") || !boExpect("(")) return false;
    do {
        if (!boReadName(block.populations.emplace_back(), "an entity")) return false;
    } while (boTake(","));
    return boExpect(")") && boExpect(";");
}

// One declaration inside a block, if one follows. Entities and types of a block's own are in no graph.
bool Parser::boReadInner(Declarations& inner, bool& boFound) {
    if (boTake(Word::Constant)) return boReadConstants(inner);
    if (boAt(Word::Function) || boAt(Word::Procedure)) return boReadBlock(inner.blocks.emplace_back());
    if (boAt(Word::Entity) || boAt(Word::Type))
        return boFaultAt(m_token.place, "an entity or a type inside a function is not supported");
    boFound = false;
    return true;
}

bool Parser::boReadLocals(Block& block) {
    if (!boTake(Word::Local)) return true;
    block.boLocals = true;
    while (!boAt(Word::EndLocal)) {
        Declaration& local = block.locals.emplace_back();
        local.place = m_token.place;
        do {
            if (!boReadName(local.names.emplace_back(), "a variable")) return false;
        } while (boTake(","));
        if (!boExpect(":") || !boReadTypeTree(local.type)) return false;
        if (boTake(":=")) {
            local.pValue = pExpression();
            if (!local.pValue) return false;
        }
        if (!boExpect(";")) return false;
    }
    vNext();
    return boExpect(";");
}

bool Parser::boReadTypeTree(TypeTree& type) {
    for (const auto& [word, form] : g_aggregates)
        if (boTake(word)) return boReadAggregateType(type, form);
    if (boTake(Word::Aggregate)) return boReadAggregateType(type, TypeForm::Aggregate);
    if (boTake(Word::Generic)) {
        type.form = TypeForm::Generic;
        return boReadLabel(type);
    }
    for (const auto& [word, form] : g_simpleTypes) {
        if (!boTake(word)) continue;
        type.form = form;
        return form == TypeForm::GenericEntity ? boReadLabel(type) : boReadWidth(type);
    }
    type.form = TypeForm::Named;
    return boReadName(type.sName, "a type");
}

// ": label" of a generic type.
bool Parser::boReadLabel(TypeTree& type) { return !boTake(":") || boReadName(type.sName, "a label"); }

bool Parser::boReadAggregateType(TypeTree& type, TypeForm form) {
    if (!boDeeper()) return false;
    type.form = form;
    if (form == TypeForm::Aggregate ? !boReadLabel(type) : !boReadBounds(type)) return false;
    if (!boExpect(Word::Of, "OF")) return false;
    type.boOptional = boTake(Word::Optional);
    type.boUnique = boTake(Word::Unique);
    type.pElement = std::make_unique<TypeTree>();
    ++m_iDepth;
    const bool boRead = boReadTypeTree(*type.pElement);
    --m_iDepth;
    return boRead;
}

bool Parser::boReadBounds(TypeTree& type) {
    if (!boTake("[")) return true;
    type.pLow = pExpression();
    if (!type.pLow || !boExpect(":")) return false;
    type.pHigh = pExpression();
    return type.pHigh && boExpect("]");
}

bool Parser::boReadWidth(TypeTree& type) {
    if (boTake("(")) {
        type.pLow = pExpression();
        if (!type.pLow || !boExpect(")")) return false;
    }
    type.boFixed = boTake(Word::Fixed);
    return true;
}

}   // namespace oxa::check::express
