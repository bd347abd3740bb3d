// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/ReadLosses.h"

#include <map>

#include "Check/Rules/Access.h"

namespace oxa::check::rules {

namespace {

// Whether the record is about a value that the model lacks. What is mandatory and not there, and a GlobalId that is there
// twice, are the schema level's to tell: the rules see what the file has.
bool boLoses(const ifc::Errors::ErrorRecord& record) {
    return record.category != ifc::Errors::Null && record.category != ifc::Errors::Header &&
           record.reportKey != ifc::ReportKey::DuplicateGuids && record.reportKey != ifc::ReportKey::UnexpectedNullGuid;
}

// Names in capitals that conditions, derived attributes and the bodies of functions are made of: attributes are among them.
// Those of UNIQUE clauses are not, which are the schema level's.
class Names {
public:
    explicit Names(const express::SchemaRules& rules) {
        for (const express::TypeRules& type : rules.types) vAdd(type.rules);
        for (const express::EntityRules& entity : rules.entities) {
            vAdd(entity.derived);
            vAdd(entity.rules);
        }
        vAdd(rules.outer);
    }
    [[nodiscard]] bool boHas(std::string_view name) const { return m_names.contains(schema::sUpper(name)); }

private:
    void vAdd(const express::ExpressionPtr& pExpression) {
        if (!pExpression) return;
        if (pExpression->op == express::Op::Name || pExpression->op == express::Op::Attribute)
            m_names.insert(schema::sUpper(pExpression->sText));
        for (const express::ExpressionPtr& pOperand : pExpression->operands) vAdd(pOperand);
    }
    void vAdd(const std::vector<express::DomainRule>& rules) {
        for (const express::DomainRule& rule : rules) vAdd(rule.pCondition);
    }
    void vAdd(const std::vector<express::Declaration>& declarations) {
        for (const express::Declaration& declaration : declarations) vAdd(declaration.pValue);
    }
    void vAdd(const express::Declarations& declarations) {
        vAdd(declarations.constants);
        for (const express::Block& block : declarations.blocks) {
            vAdd(block.inner);
            vAdd(block.locals);
            vAdd(block.body);
            vAdd(block.rules);
        }
    }
    void vAdd(const express::Body& body) {
        for (const express::StatementPtr& pStatement : body) vAdd(pStatement);
    }
    void vAdd(const express::StatementPtr& pStatement) {
        if (!pStatement) return;
        for (const auto* pPart :
             {&pStatement->pFirst, &pStatement->pSecond, &pStatement->pThird, &pStatement->pWhile, &pStatement->pUntil})
            vAdd(*pPart);
        vAdd(pStatement->body);
        vAdd(pStatement->alternative);
        for (const express::CaseAction& action : pStatement->cases) {
            for (const express::ExpressionPtr& pLabel : action.labels) vAdd(pLabel);
            vAdd(action.pAction);
        }
    }

    std::set<std::string> m_names;
};

// Whether the type of the value, or of what stands in its place, has rules. True where that can't be told.
bool boTypeHasRules(Evaluator& evaluator, ifc::Entity& entity, std::string_view attribute) {
    const auto* pBytes = static_cast<const std::byte*>(entity.unsafeAttributesRaw());
    for (const ifc::DataSizeEntity::Cell& cell : ifc::Entity::getDataSize(*entity.pSchemaEntity()).cells) {
        if (!pBytes || !cell.pAttribute || cell.pAttribute->sName != attribute) continue;
        const schema::ObjectBase* pDeclared = cell.pAttribute->pType();
        evaluator.vReset();
        const Value value = valueOfCell(evaluator, *reinterpret_cast<const ifc::AttributeBase*>(pBytes + cell.iOffset),
                                        cell.eClass, pDeclared);
        const schema::DataTypeBase* pData = schema::pDataTypeOf(pDeclared);
        const bool boSelect = pData && pData->kind == schema::DataKind::Select;
        if (value.boAggregate() || (boSelect && value.boNull())) return true;
        const schema::Type* pType = schema::pAsType(boSelect ? value.pType : pDeclared);
        return pType && evaluator.program().typeRules.contains(pType);
    }
    return true;
}

}   // namespace

ReadLosses::ReadLosses(const Program& program, const ifc::Data& data, const ifc::Errors& errors) {
    std::set<const ifc::Entity*> concerned;
    for (const ifc::Errors::ErrorRecord& record : errors.records()) {
        if (!boLoses(record)) continue;
        ++m_iCount;
        if (record.category != ifc::Errors::Value || !record.entity || record.argument().empty()) continue;
        concerned.insert(record.entity);
        m_lost.emplace(record.entity, record.argument());
    }
    if (m_lost.empty()) return;
    // A record may be about an instance that the model has no more.
    std::map<const ifc::Entity*, ifc::Entity*> held;
    for (ifc::Entity* pEntity : data.entities())
        if (pEntity->pSchemaEntity() && concerned.contains(pEntity)) held.emplace(pEntity, pEntity);
    const Names names(program.trees);
    ModelIndex index(data);
    Evaluator evaluator(program, index);
    const auto boLookedAt = [&](const ifc::Errors::ErrorRecord& record) {
        const std::string_view attribute = record.argument();
        const auto it = held.find(record.entity);
        return it == held.end() || names.boHas(attribute) || boTypeHasRules(evaluator, *it->second, attribute);
    };
    for (const ifc::Errors::ErrorRecord& record : errors.records())
        if (boLoses(record) && m_lost.contains({record.entity, std::string(record.argument())}) && !boLookedAt(record))
            --m_iCount;
}

}   // namespace oxa::check::rules
