// SPDX-License-Identifier: Apache-2.0
// What asks for types and roles: TYPEOF, ROLESOF, USEDIN (ISO 10303-11, 15.20, 15.25, 15.26).
#include <algorithm>

#include "Check/Rules/Access.h"
#include "Check/Rules/Handlers.h"

namespace oxa::check::rules::run {

namespace {

using schema::DataKind;

// The base types that a value is of, from the narrowest on: each INTEGER is a REAL too, and each REAL a NUMBER.
std::vector<std::string_view> baseTypes(const Value& value) {
    const schema::DataTypeBase* pData = schema::pDataTypeOf(value.pType);
    switch (value.kind) {
    case Kind::Logical:
        if (pData ? pData->kind == DataKind::Logical : value.eLogical == Logical::Unknown) return {"LOGICAL"};
        return {"BOOLEAN", "LOGICAL"};
    case Kind::Integer: return {"INTEGER", "REAL", "NUMBER"};
    case Kind::Real: return {"REAL", "NUMBER"};
    case Kind::String: return {"STRING"};
    case Kind::Binary: return {"BINARY"};
    case Kind::Items:
    case Kind::Aggregate:
        switch (aggregateKind(value)) {
        case AggregateKind::Array: return {"ARRAY"};
        case AggregateKind::Bag: return {"BAG"};
        case AggregateKind::Set: return {"SET", "BAG"};
        case AggregateKind::List:
        case AggregateKind::Literal: return {"LIST"};
        }
        break;
    case Kind::Null:
    case Kind::Enumerator:
    case Kind::Entity:
    case Kind::Instance: break;
    }
    return {};
}

// Whether an instance, or a value of a defined type, is of what the target names.
bool boOfType(const Value& value, const TypeTarget& target) {
    if (value.boNull()) return false;
    if (!target.base.empty()) {
        const std::vector<std::string_view> names = baseTypes(value);
        return std::find(names.begin(), names.end(), target.base) != names.end();
    }
    if (!target.pObject) return false;
    if (const schema::Entity* pEntity = schema::pAsEntity(target.pObject)) return boIsOf(value, *pEntity);
    if (const schema::Entity* pType = pEntityTypeOf(value))
        return target.pSelect && target.pSelect->isCompatible(*pType);
    for (const schema::Type* pType = schema::pAsType(value.pType); pType; pType = pType->pDeclared)
        if (pType == target.pObject || (target.pSelect && target.pSelect->isCompatible(*pType))) return true;
    return false;
}

void vAdd(Evaluator& evaluator, Aggregate& result, std::string_view qualified, std::string_view name) {
    std::string sText(qualified);
    if (!sText.empty()) sText += '.';
    sText += name;
    evaluator.boAppend(result, evaluator.textOf(sText));
}

// Upper case, as all names in the results of TYPEOF and ROLESOF.
std::string sSchemaName(Evaluator& evaluator) { return schema::sUpper(evaluator.program().graph.sName); }

// The role names an attribute as 'SCHEMA.ENTITY.ATTRIBUTE', in any case.
struct RoleName {
    const schema::Entity* pEntity = nullptr;
    const schema::Attribute* pAttribute = nullptr;
};

RoleName roleOf(Evaluator& evaluator, std::string_view text) {
    const std::size_t iFirst = text.find('.');
    const std::size_t iLast = text.rfind('.');
    if (iFirst == iLast) return {};
    RoleName role;
    role.pEntity =
        schema::pAsEntity(evaluator.program().graph.pObjectFromName(text.substr(iFirst + 1, iLast - iFirst - 1)));
    if (!role.pEntity) return {};
    const std::string sAttribute = schema::sUpper(text.substr(iLast + 1));
    for (const schema::Attribute* pAttribute : role.pEntity->allAttributes())
        if (schema::sUpper(pAttribute->sName) == sAttribute) role.pAttribute = pAttribute;
    return role;
}

}   // namespace

Value typeTest(Evaluator& evaluator, const Node& node) {
    return valueOf(boOfType(evaluator.run(*node.pFirst), node.targets.front()));
}

Value typeCount(Evaluator& evaluator, const Node& node) {
    const Value value = evaluator.run(*node.pFirst);
    long long iCount = 0;
    for (const TypeTarget& target : node.targets) iCount += boOfType(value, target) ? 1 : 0;
    return valueOf(iCount);
}

// Two values have the same set of type names where the narrowest type of both is the same.
Value typeEqual(Evaluator& evaluator, const Node& node) {
    const Value left = evaluator.run(*node.pFirst);
    const Value right = evaluator.run(*node.pSecond);
    const auto pNarrowest = [](const Value& value) -> const schema::ObjectBase* {
        if (const schema::Entity* pEntity = pEntityTypeOf(value)) return pEntity;
        return schema::pAsType(value.pType);
    };
    bool boEqual = pNarrowest(left) == pNarrowest(right) && left.boNull() == right.boNull();
    if (boEqual && !pNarrowest(left)) boEqual = baseTypes(left) == baseTypes(right);
    return valueOf(boEqual != node.boSecond);
}

Value typeOf(Evaluator& evaluator, const Node& node) {
    const Value value = evaluator.run(*node.operands.front());
    Aggregate* pResult = evaluator.pMakeAggregate(AggregateKind::Set, 0);
    if (!pResult || value.boNull()) return pResult ? valueOf(pResult) : Value();
    const std::string sSchema = sSchemaName(evaluator);
    for (const Instance* pPart = value.kind == Kind::Instance ? value.pInstance->pNext : nullptr; pPart;
         pPart = pPart->pNext)
        for (const schema::Entity* p = pPart->pType; p; p = p->pParent)
            vAdd(evaluator, *pResult, sSchema, p->sNameUpper);
    for (const schema::Entity* p = pEntityTypeOf(value); p; p = p->pParent)
        vAdd(evaluator, *pResult, sSchema, p->sNameUpper);
    for (const schema::Type* p = schema::pAsType(value.pType); p && !pEntityTypeOf(value); p = p->pDeclared)
        vAdd(evaluator, *pResult, sSchema, p->sNameUpper);
    for (const std::string_view base : baseTypes(value)) vAdd(evaluator, *pResult, {}, base);
    if (!evaluator.boStep(evaluator.program().graph.objects.size() / 16)) return {};
    for (const schema::Schema::Record& record : evaluator.program().graph.objects) {
        const auto* pSelect = dynamic_cast<const schema::DataTypeSelect*>(schema::pDataTypeOf(record.pObject));
        if (pSelect && boOfType(value, {record.pObject, pSelect, {}}))
            vAdd(evaluator, *pResult, sSchema, record.pObject->sNameUpper);
    }
    return evaluator.boFailed() ? Value() : valueOf(pResult);
}

Value rolesOf(Evaluator& evaluator, const Node& node) {
    const Value value = evaluator.run(*node.operands.front());
    if (value.boNull()) return {};
    Aggregate* pResult = evaluator.pMakeAggregate(AggregateKind::Set, 0);
    if (!pResult || value.kind != Kind::Entity) return pResult ? valueOf(pResult) : Value();
    const std::vector<ModelIndex::Use>* pUses = evaluator.index().pAllUses(*value.pEntity);
    std::vector<const schema::Attribute*> roles;
    for (std::size_t i = 0; pUses && i < pUses->size(); ++i)
        if (std::find(roles.begin(), roles.end(), (*pUses)[i].pRole) == roles.end()) roles.push_back((*pUses)[i].pRole);
    for (const schema::Attribute* pRole : roles)
        vAdd(evaluator, *pResult, sSchemaName(evaluator),
             pRole->pOwner->sNameUpper + '.' + schema::sUpper(pRole->sName));
    return evaluator.boFailed() ? Value() : valueOf(pResult);
}

Value usedIn(Evaluator& evaluator, const Node& node) {
    const Value value = evaluator.run(*node.operands[0]);
    const Value role = evaluator.run(*node.operands[1]);
    if (value.boNull() || role.boNull()) return {};
    if (role.kind != Kind::String) return evaluator.fail("the role of USEDIN is no string");
    Aggregate* pResult = evaluator.pMakeAggregate(AggregateKind::Bag, 0);
    if (!pResult || value.kind != Kind::Entity) return pResult ? valueOf(pResult) : Value();
    if (role.text().empty()) {
        const std::vector<ModelIndex::Use>* pUses = evaluator.index().pAllUses(*value.pEntity);
        for (std::size_t i = 0; pUses && i < pUses->size(); ++i)
            if (!evaluator.boStep() || !evaluator.boAppend(*pResult, valueOf((*pUses)[i].pUser))) return {};
        return valueOf(pResult);
    }
    const RoleName name = roleOf(evaluator, role.text());
    if (!name.pAttribute) return evaluator.fail("USEDIN names no attribute: " + std::string(role.text()));
    const std::vector<ifc::Entity*>* pUsers = evaluator.index().pUsers(*name.pAttribute, *name.pEntity, *value.pEntity);
    for (std::size_t i = 0; pUsers && i < pUsers->size(); ++i)
        if (!evaluator.boStep() || !evaluator.boAppend(*pResult, valueOf((*pUsers)[i]))) return {};
    return valueOf(pResult);
}

}   // namespace oxa::check::rules::run
