// SPDX-License-Identifier: Apache-2.0
#include "Check/Schema/SchemaPlan.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace oxa::check {

namespace {

using namespace ifc::def::schema;
using ifc::def::schema::Attribute;   // not that of the model

struct Bounds {
    std::uint64_t iLow = 0;
    std::uint64_t iHigh = g_iUnbounded;
};

// "3" as a number; none for "?" and for an expression.
std::optional<std::int64_t> bound(std::string_view text) {
    std::int64_t iValue = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), iValue);
    if (error != std::errc() || pEnd != text.data() + text.size()) return std::nullopt;
    return iValue;
}

// "[1:?]". Of an ARRAY the two are its first and its last index.
Bounds boundsOf(std::string_view text, bool boArray) {
    Bounds bounds;
    const std::size_t iColon = text.find(':');
    if (text.size() < 3 || iColon == std::string_view::npos) return bounds;
    const auto low = bound(text.substr(1, iColon - 1));
    const auto high = bound(text.substr(iColon + 1, text.size() - iColon - 2));
    if (boArray) {
        if (low && high && *high >= *low) bounds.iLow = bounds.iHigh = static_cast<std::uint64_t>(*high - *low) + 1;
        return bounds;
    }
    if (low && *low > 0) bounds.iLow = static_cast<std::uint64_t>(*low);
    if (high && *high >= 0) bounds.iHigh = static_cast<std::uint64_t>(*high);
    return bounds;
}

ValueKind valueKind(DataKind kind) noexcept {
    switch (kind) {
    case DataKind::Real: return ValueKind::Real;
    case DataKind::Boolean: return ValueKind::Boolean;
    case DataKind::Integer: return ValueKind::Integer;
    case DataKind::Number: return ValueKind::Number;
    case DataKind::String: return ValueKind::String;
    case DataKind::Logical: return ValueKind::Logical;
    case DataKind::Binary: return ValueKind::Binary;
    case DataKind::Enumeration: return ValueKind::Enumeration;
    case DataKind::Select: return ValueKind::Select;
    case DataKind::Array:
    case DataKind::List:
    case DataKind::Set: return ValueKind::Aggregate;
    }
    return ValueKind::Unknown;
}

// "1 item", "1 to 3 items", "2 items or more".
std::string sCount(const Bounds& bounds) {
    const std::string sLow = std::to_string(bounds.iLow);
    if (bounds.iHigh == g_iUnbounded) return sLow + " or more";
    return bounds.iLow == bounds.iHigh ? sLow : sLow + " to " + std::to_string(bounds.iHigh);
}

// The redeclaration of an attribute that holds for an entity: the one nearest to it. Null where there is none.
const Redeclaration* pRedeclared(const Entity& entity, const Attribute& attribute) {
    for (const Entity* pEntity = &entity; pEntity && pEntity != attribute.pOwner; pEntity = pEntity->pParent)
        for (const Redeclaration& again : pEntity->redeclared)
            if (again.pAttribute == &attribute) return &again;
    return nullptr;
}

}   // namespace

SchemaPlan::SchemaPlan(const Schema& schema) : m_schema(schema) {
    std::size_t iLast = 0;
    for (const Schema::Record& record : schema.objects)
        if (const Entity* pObject = pAsEntity(record.pObject))
            iLast = std::max<std::size_t>(iLast, pObject->iTypeOrdinal);
    m_byOrdinal.resize(iLast + 1);
    for (const Schema::Record& record : schema.objects)
        if (const Entity* pObject = pAsEntity(record.pObject)) m_byOrdinal[pObject->iTypeOrdinal] = pObject;
}

const EntityPlan* SchemaPlan::pEntity(std::string_view keyword) {
    if (keyword.empty()) return nullptr;
    const std::size_t iPlace = keyword.size() * 7 + static_cast<unsigned char>(keyword.back()) +
                               std::size_t{static_cast<unsigned char>(keyword[keyword.size() / 2])} * 3;
    const Entities::value_type*& pLast = m_last[iPlace % m_last.size()];
    if (pLast && pLast->first == keyword) return &pLast->second;
    m_sUpper.assign(keyword);
    auto it = m_entities.find(m_sUpper);
    if (it == m_entities.end()) {
        // Lower case is a fault of syntax, which is told there.
        const std::string sName = sUpper(keyword);
        const Entity* pFound = m_schema.pEntityFromName(ObjectName(std::string_view(sName)));
        if (!pFound) return nullptr;
        it = m_entities.emplace(m_sUpper, compiled(*pFound, true)).first;
    }
    pLast = &*it;
    return &it->second;
}

const EntityPlan& SchemaPlan::planOf(const Entity& entity) { return *pEntity(entity.sNameUpper); }

const EntityPlan& SchemaPlan::partOf(const Entity& entity) {
    const auto it = m_parts.find(&entity);
    return it != m_parts.end() ? it->second : m_parts.emplace(&entity, compiled(entity, false)).first->second;
}

EntityPlan SchemaPlan::compiled(const Entity& entity, bool boInherited) {
    EntityPlan plan;
    plan.pEntity = &entity;
    for (const Attribute* pAttribute : entity.allAttributes())
        if (boInherited || pAttribute->pOwner == &entity) plan.parameters.push_back(parameter(entity, *pAttribute));
    if (!boInherited) return plan;
    for (const Entity* pOwner = &entity; pOwner; pOwner = pOwner->pParent) vUnique(plan, *pOwner);
    for (const AttributeInverse* pInverse : entity.allInverseAttributes()) {
        const std::uint32_t iIndex = iInverse(*pInverse);
        if (m_inverses[iIndex].iLow > 0) plan.leastInverses.push_back(iIndex);
    }
    return plan;
}

ParameterPlan SchemaPlan::parameter(const Entity& entity, const Attribute& attribute) {
    ParameterPlan plan;
    const Redeclaration* pAgain = pRedeclared(entity, attribute);
    plan.pAttribute = &attribute;
    plan.boDerived = pAgain && pAgain->boDerived;
    plan.boOptional = pAgain && !pAgain->boDerived ? pAgain->boOptional : attribute.boOptional;
    plan.pType = pType(pAgain && pAgain->pType ? pAgain->pType : attribute.pType());
    plan.sRule = attribute.pOwner->sName + '.' + attribute.sName;
    for (const AttributeInverse* pInverse : attribute.inverses) {
        const std::uint32_t iIndex = iInverse(*pInverse);
        const InversePlan& inverse = m_inverses[iIndex];
        const bool boBound = inverse.iLow > 0 || inverse.iHigh != g_iUnbounded;
        if (boBound && boIsSubtype(&entity, pInverse->pForEntity)) plan.inverses.push_back(iIndex);
    }
    return plan;
}

void SchemaPlan::vUnique(EntityPlan& plan, const Entity& entity) {
    for (const UniqueRule& rule : entity.uniqueRules) {
        if (rule.attributes.empty()) continue;
        const auto [it, boNew] = m_uniqueIndex.try_emplace(&rule, static_cast<std::uint32_t>(m_unique.size()));
        if (boNew) {
            UniquePlan& unique = m_unique.emplace_back();
            unique.pRule = &rule;
            unique.pOwner = &entity;
            unique.sRule = rule.sLabel.empty() ? entity.sName + " UNIQUE" : entity.sName + '.' + rule.sLabel;
            for (const std::string& sName : rule.names)
                unique.sAttributes.append(unique.sAttributes.empty() ? "" : ", ").append(sName);
        }
        EntityPlan::Unique& unique = plan.unique.emplace_back();
        unique.iRule = it->second;
        for (const Attribute* pAttribute : rule.attributes)
            for (std::size_t i = 0; i < plan.parameters.size(); ++i) {
                if (plan.parameters[i].pAttribute != pAttribute) continue;
                plan.parameters[i].boUnique = true;
                unique.parameters.push_back(i);
            }
    }
}

std::uint32_t SchemaPlan::iInverse(const AttributeInverse& inverse) {
    const auto [it, boNew] = m_inverseIndex.try_emplace(&inverse, static_cast<std::uint32_t>(m_inverses.size()));
    if (!boNew) return it->second;
    InversePlan& plan = m_inverses.emplace_back();
    const Bounds bounds = inverse.boAggregate ? boundsOf(inverse.sBounds, false) : Bounds{1, 1};
    plan.pInverse = &inverse;
    plan.iLow = bounds.iLow;
    plan.iHigh = bounds.iHigh;
    plan.sExpected = sCount(bounds) + " by " + inverse.pForEntity->sName + '.' + inverse.sForAttribute;
    return it->second;
}

// ---- Types

const ValueType* SchemaPlan::pType(const ObjectBase* pObject) {
    static const ValueType unknown;
    if (!pObject) return &unknown;
    const auto [it, boNew] = m_types.try_emplace(pObject);
    // Nodes of the map stay where they are, and the graph has no type that contains itself but by way of an entity.
    if (boNew) vFill(it->second, *pObject);
    return &it->second;
}

void SchemaPlan::vFill(ValueType& type, const ObjectBase& object) {
    type.sText = sTypeText(&object);
    if (const Entity* pObject = pAsEntity(&object)) {
        type.kind = ValueKind::Entity;
        type.pEntity = pObject;
        return;
    }
    const DataTypeBase* pData = pDataTypeOf(&object);
    if (!pData) return;
    type.kind = valueKind(pData->kind);
    type.boGlobalId = type.kind == ValueKind::String && object.sNameUpper == "IFCGLOBALLYUNIQUEID";
    if (const auto* pSimple = dynamic_cast<const DataTypeSimple*>(pData)) {
        type.iWidth = pSimple->iWidth;
        type.boFixed = pSimple->boFixed;
        if (type.iWidth)
            type.sText += (type.boFixed ? " of " : " of at most ") + std::to_string(type.iWidth) +
                          (type.kind == ValueKind::Binary ? " bits" : " characters");
    } else if (const auto* pAggregate = dynamic_cast<const DataTypeAggregate*>(pData)) {
        const Bounds bounds = boundsOf(pAggregate->sBounds, pAggregate->kind == DataKind::Array);
        type.iLow = bounds.iLow;
        type.iHigh = bounds.iHigh;
        type.boUnique = pAggregate->boUnique || (pAggregate->kind == DataKind::Set && !pAggregate->boBag);
        type.boOptional = pAggregate->boOptional;
        type.pItem = pType(pAggregate->pElement);
    } else if (const auto* pEnumeration = dynamic_cast<const DataTypeEnum*>(pData)) {
        type.pEnumeration = pEnumeration;
    } else if (const auto* pData2 = dynamic_cast<const DataTypeSelect*>(pData)) {
        type.pSelect = pSelect(*pData2);
    }
}

const SelectPlan* SchemaPlan::pSelect(const DataTypeSelect& select) {
    const auto [it, boNew] = m_selects.try_emplace(&select);
    SelectPlan& plan = it->second;
    if (!boNew) return &plan;
    plan.entities.resize(m_byOrdinal.size());
    // Nested selects in a list of what is still to be looked at; the graph has no select that contains itself.
    std::vector<const DataTypeSelect*> open{&select};
    while (!open.empty()) {
        const DataTypeSelect* pOpen = open.back();
        open.pop_back();
        for (const ObjectBase* pMember : pOpen->members) {
            if (const Entity* pObject = pAsEntity(pMember)) {
                for (std::size_t i = pObject->iTypeOrdinal; i <= pObject->iTypeOrdinalLast; ++i)
                    plan.entities[i] = true;
            } else if (const auto* pNested = dynamic_cast<const DataTypeSelect*>(pDataTypeOf(pMember))) {
                open.push_back(pNested);
            } else {
                plan.types.emplace(pMember->sNameUpper, pType(pMember));
            }
        }
    }
    return &plan;
}

}   // namespace oxa::check
