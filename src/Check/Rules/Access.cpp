// SPDX-License-Identifier: Apache-2.0
#include "Check/Rules/Access.h"

#include <charconv>
#include <cstring>
#include <utility>

#include "Format/Ifc/IfcGuid.h"

namespace oxa::check::rules {

using ifc::AttributeType;

namespace {

template <class T>
Value typed(T value, const schema::ObjectBase* pType) {
    Value result = valueOf(value);
    result.pType = pType;
    return result;
}

Value textToNul(const char* pText, Kind kind, const schema::ObjectBase* pType) {
    Value result;
    if (!pText) return result;
    result.kind = kind;
    result.pText = pText;
    result.iCount = Value::g_iToNul;
    result.pType = pType;
    return result;
}

// A text whose length is known from here on. Whatever is done with it costs as much again.
Value textOf(Evaluator& evaluator, const char* pText, const schema::ObjectBase* pType) {
    Value result = textToNul(pText, Kind::String, pType);
    if (!pText) return result;
    const std::size_t iLength = std::strlen(pText);
    if (iLength < Value::g_iToNul) result.iCount = static_cast<std::uint32_t>(iLength);
    return boStepText(evaluator, result) ? result : Value();
}

// A cell that has a value, as its class.
struct CellValue {
    Evaluator& evaluator;
    const schema::ObjectBase* pType;

    Value operator()(const ifc::AttributeReal& cell) const { return typed(cell.m_value.load(), pType); }
    Value operator()(const ifc::AttributeInteger& cell) const { return typed(cell.m_value.load(), pType); }
    Value operator()(const ifc::AttributeBoolean& cell) const { return typed(cell.m_value != 0, pType); }
    Value operator()(const ifc::AttributeLogical& cell) const {
        const LogicalValue eValue = cell.m_value;
        return typed(eValue == LogicalValue::Unknown ? Logical::Unknown
                     : eValue == LogicalValue::True  ? Logical::True
                                                     : Logical::False,
                     pType);
    }
    Value operator()(const ifc::AttributeString& cell) const { return textOf(evaluator, cell.m_value, pType); }
    Value operator()(const ifc::AttributeGuid& cell) const {
        const Guid guid = cell.m_value;
        Value text = evaluator.textOf(ifc::IfcGuid::toIfcGuid(guid));
        text.pType = pType;
        return text;
    }
    Value operator()(const ifc::AttributeBinary& cell) const {
        Value result;
        result.kind = Kind::Binary;
        result.pBytes = cell.m_value;
        result.iCount = static_cast<std::uint32_t>(cell.m_iCount.load() * 8);
        result.pType = pType;
        return result;
    }
    Value operator()(const ifc::AttributeEnumeration& cell) const {
        return textToNul(cell.m_value, Kind::Enumerator, pType);
    }
    Value operator()(const ifc::AttributeEntity& cell) const {
        ifc::Entity* pEntity = cell.m_value;
        return pEntity && pEntity->pSchemaEntity() ? valueOf(pEntity) : Value();
    }
    Value operator()(const ifc::AttributeSelect& select) const {
        const ifc::AttributeBase* pValue = select.m_pValue;
        if (!pValue) return {};
        const ifc::CellClass eClass = select.m_eType.load() == AttributeType::Entity
                                          ? ifc::CellClass::Entity
                                          : ifc::AttributeBase::cellClass(select.m_pType.load());
        return valueOfCell(evaluator, *pValue, eClass, select.m_pType.load());
    }
    Value operator()(const ifc::AttributeList& list) const { return items(list, pType); }

    static Value items(const ifc::AttributeListValueBase& list, const schema::ObjectBase* pType) {
        // Items of these types have no place in a list: whatever the file had is not known.
        const AttributeType eItems = list.m_eItemType;
        if (eItems == AttributeType::Boolean || eItems == AttributeType::Logical ||
            eItems == AttributeType::Enumeration)
            return {};
        Value result;
        result.kind = Kind::Items;
        result.pItems = &list;
        result.pType = pType;
        return result;
    }
};

// The item at a place, of a list of any kind but entities.
struct ItemValue {
    Evaluator& evaluator;
    const schema::ObjectBase* pType;
    std::size_t iItem;

    Value operator()(const ifc::Array<double>* pItems) const { return typed((*pItems)[iItem].load(), pType); }
    Value operator()(const ifc::Array<long long>* pItems) const { return typed((*pItems)[iItem].load(), pType); }
    Value operator()(const ifc::Array<char*>* pItems) const {
        return textOf(evaluator, (*pItems)[iItem].load(), pType);
    }
    Value operator()(const ifc::Array<ifc::AttributeBinary>* pItems) const { return cell((*pItems)[iItem]); }
    Value operator()(const ifc::Array<ifc::AttributeSelect>* pItems) const { return cell((*pItems)[iItem]); }
    Value operator()(const ifc::Array<ifc::AttributeList>* pItems) const { return cell((*pItems)[iItem]); }
    Value operator()(const ifc::EntityList*) const { return {}; }
    Value operator()(ifc::NoItems) const { return {}; }

private:
    template <class Cell>
    Value cell(const Cell& item) const {
        return item.boHasValue() ? CellValue{evaluator, pType}(item) : Value();
    }
};

struct ItemCount {
    std::size_t operator()(const ifc::EntityList*) const { return 0; }
    std::size_t operator()(ifc::NoItems) const { return 0; }
    template <class T>
    std::size_t operator()(const ifc::Array<T>* pItems) const {
        return pItems ? pItems->size() : 0;
    }
};

const schema::DataTypeAggregate* pAggregateType(const Value& items) noexcept {
    const schema::DataTypeBase* pData = schema::pDataTypeOf(items.pType);
    return pData && schema::boIsAggregate(pData->kind) ? static_cast<const schema::DataTypeAggregate*>(pData) : nullptr;
}

Value inverseOf(Evaluator& evaluator, const Access& access, ifc::Entity& entity) {
    auto* pEntries =
        reinterpret_cast<ifc::Unaligned<ifc::EntityList*>*>(std::as_const(entity).unsafeAttributesInverseRaw());
    const ifc::EntityList* pList = pEntries ? pEntries[access.iPosition].load() : nullptr;
    if (!access.boAggregate) return pList ? valueOf(pList->value.load()) : Value();
    Aggregate* pResult = evaluator.pMakeAggregate(AggregateKind::Set, 0);
    if (!pResult) return {};
    const Evaluator::Row row = evaluator.rowOf(pList);
    for (std::size_t i = 0; i < row.iCount; ++i) {
        // A SET: whoever refers twice is in it once (ISO 10303-11, 9.2.1.3). Its entries follow each other.
        if (i > 0 && row.pEntities[i] == row.pEntities[i - 1]) continue;
        if (row.pEntities[i]->pSchemaEntity() && !evaluator.boAppend(*pResult, valueOf(row.pEntities[i]))) break;
    }
    return valueOf(pResult);
}

}   // namespace

Value valueOfCell(Evaluator& evaluator, const ifc::AttributeBase& cell, ifc::CellClass eClass,
                  const schema::ObjectBase* pType) {
    if (eClass == ifc::CellClass::Unresolved || eClass == ifc::CellClass::Illegal || !cell.boHasValue()) return {};
    return ifc::visitCell(cell, eClass, CellValue{evaluator, pType});
}

const schema::Entity* pEntityTypeOf(const Value& value) noexcept {
    if (value.kind == Kind::Entity) return value.pEntity->pSchemaEntity();
    return value.kind == Kind::Instance ? value.pInstance->pType : nullptr;
}

bool boIsOf(const Value& value, const schema::Entity& type) noexcept {
    const auto boIs = [&type](const schema::Entity* pType) {
        return pType && pType->iTypeOrdinal >= type.iTypeOrdinal && pType->iTypeOrdinal <= type.iTypeOrdinalLast;
    };
    if (value.kind == Kind::Entity) return boIs(value.pEntity->pSchemaEntity());
    if (value.kind != Kind::Instance) return false;
    for (const Instance* pPart = value.pInstance; pPart; pPart = pPart->pNext)
        if (boIs(pPart->pType)) return true;
    return false;
}

Value valueOfAccess(Evaluator& evaluator, const Access& access, const Value& instance) {
    switch (access.way) {
    case Access::Way::None: return {};
    case Access::Way::Cell: {
        if (instance.kind == Kind::Instance) return instance.pInstance->pValues[access.iPosition];
        const auto* pBytes = static_cast<const std::byte*>(instance.pEntity->unsafeAttributesRaw());
        if (!pBytes) return {};
        return valueOfCell(evaluator, *reinterpret_cast<const ifc::AttributeBase*>(pBytes + access.iOffset),
                           access.eClass, access.pType);
    }
    case Access::Way::Inverse:
        return instance.kind == Kind::Entity ? inverseOf(evaluator, access, *instance.pEntity) : Value();
    case Access::Way::Derived: return evaluator.derived(access.iDerived, instance);
    }
    return {};
}

Value attributeOf(Evaluator& evaluator, const Value& instance, std::uint32_t iName) {
    if (instance.kind == Kind::Entity)
        return valueOfAccess(evaluator, evaluator.program().access(*instance.pEntity->pSchemaEntity(), iName),
                             instance);
    if (instance.kind != Kind::Instance) return {};
    for (Instance* pPart = instance.pInstance; pPart; pPart = pPart->pNext) {
        const Access& access = evaluator.program().access(*pPart->pType, iName);
        if (access.way != Access::Way::None) return valueOfAccess(evaluator, access, valueOf(pPart));
    }
    return {};
}

Value explicitAt(Evaluator& evaluator, const Value& instance, std::size_t iPosition) {
    const schema::Entity& type = *pEntityTypeOf(instance);
    Value value;
    if (instance.kind == Kind::Instance) {
        value = instance.pInstance->pValues[iPosition];
    } else if (const auto* pBytes = static_cast<const std::byte*>(instance.pEntity->unsafeAttributesRaw())) {
        const ifc::DataSizeEntity::Cell& place = ifc::Entity::getDataSize(type).cells[iPosition];
        value = valueOfCell(evaluator, *reinterpret_cast<const ifc::AttributeBase*>(pBytes + place.iOffset),
                            place.eClass, place.pAttribute->pType());
    }
    if (!value.boNull()) return value;
    const Program& program = evaluator.program();
    const std::uint32_t iName = program.iFindName(schema::sUpper(type.allAttributes()[iPosition]->sName));
    return iName < program.names.size() ? attributeOf(evaluator, instance, iName) : value;
}

AggregateKind aggregateKind(const Value& aggregate) noexcept {
    if (aggregate.kind == Kind::Aggregate) return aggregate.pAggregate->kind;
    const schema::DataTypeAggregate* pType = pAggregateType(aggregate);
    if (!pType || pType->kind == schema::DataKind::List) return AggregateKind::List;
    if (pType->kind == schema::DataKind::Array) return AggregateKind::Array;
    return pType->boBag ? AggregateKind::Bag : AggregateKind::Set;
}

std::size_t iItems(Evaluator& evaluator, const Value& aggregate) {
    if (aggregate.kind == Kind::Aggregate) return aggregate.pAggregate->iCount;
    if (aggregate.pItems->m_eItemType == AttributeType::Entity)
        return evaluator.rowOf(aggregate.pItems->pEntities()).iCount;
    return ifc::visitItems(*aggregate.pItems, ItemCount());
}

Value itemAt(Evaluator& evaluator, const Value& aggregate, std::size_t iItem) {
    if (aggregate.kind == Kind::Aggregate) return aggregate.pAggregate->pItems[iItem];
    if (aggregate.pItems->m_eItemType == AttributeType::Entity) {
        const ifc::EntityList* pList = aggregate.pItems->pEntities();
        ifc::Entity* pEntity = iItem == 0 ? pList->value.load() : evaluator.rowOf(pList).pEntities[iItem];
        return pEntity && pEntity->pSchemaEntity() ? valueOf(pEntity) : Value();
    }
    const schema::DataTypeAggregate* pType = pAggregateType(aggregate);
    return ifc::visitItems(*aggregate.pItems, ItemValue{evaluator, pType ? pType->pElement : nullptr, iItem});
}

Bounds boundsOf(const Value& aggregate) noexcept {
    Bounds bounds;
    if (aggregate.kind == Kind::Aggregate) {
        bounds.iLow = aggregate.pAggregate->iLow;
        bounds.iHigh = aggregate.pAggregate->iBound;
        bounds.boDeclared = bounds.iHigh >= 0;
        return bounds;
    }
    const schema::DataTypeAggregate* pType = pAggregateType(aggregate);
    if (!pType || pType->sBounds.empty()) return bounds;
    // "[1:?]"; bounds that are no numbers are none.
    const char* pEnd = pType->sBounds.data() + pType->sBounds.size();
    const auto low = std::from_chars(pType->sBounds.data() + 1, pEnd, bounds.iLow);
    bounds.boDeclared = low.ec == std::errc();
    if (bounds.boDeclared && low.ptr + 1 < pEnd && *low.ptr == ':') std::from_chars(low.ptr + 1, pEnd, bounds.iHigh);
    return bounds;
}

long long iFirstIndex(const Value& aggregate) noexcept {
    return aggregateKind(aggregate) == AggregateKind::Array ? boundsOf(aggregate).iLow : 1;
}

std::size_t iCharacters(std::string_view text) noexcept {
    std::size_t iCount = 0;
    for (const char c : text) iCount += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    return iCount;
}

std::string_view charactersOf(std::string_view text, std::size_t iFirst, std::size_t iLast) noexcept {
    std::size_t iBegin = text.size();
    std::size_t iCharacter = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80U) continue;
        if (iCharacter == iFirst) iBegin = i;
        if (iCharacter == iLast + 1) return text.substr(iBegin, i - iBegin);
        ++iCharacter;
    }
    return text.substr(iBegin);
}

}   // namespace oxa::check::rules
