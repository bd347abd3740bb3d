// SPDX-License-Identifier: Apache-2.0
// Select cells from and to a caller's value, and their preparation for an import.
#include <cstdlib>
#include <cstring>
#include <new>
#include <set>
#include <type_traits>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using def::schema::DataKind;
using def::schema::ObjectBase;
using def::schema::Type;
using types::IfcSelectBase;

namespace {

bool boNotImplemented(const char* sFunction) {
    Assert::vTell("Format/Ifc/IfcFileAttribute", sFunction, "Not implemented");
    return false;
}

constexpr char g_sValueSet[] = "oxa::ifc::AttributeSelect::boValueSet";

// The value of a list cell of numbers as the caller's vector.
template <class T>
std::vector<T> vectorOf(const AttributeListValueBase& list) {
    std::vector<T> values;
    if (const Array<T>* pArray = list.pArray<T>()) values.assign(pArray->begin(), pArray->end());
    return values;
}

}   // namespace

// The nested cell of that kind: the present one, or a new one with a fresh header that is not the select's yet.
template <class Cell>
Cell& AttributeSelect::cellOf(AttributeType eType, Pool& pool) const {
    AttributeBase* pCell = m_pValue;
    if (m_eType.load() != eType || !pCell) pCell = ::new (pool.pAllocate(sizeof(Cell))) Cell;
    return *static_cast<Cell*>(pCell);
}

void AttributeSelect::vCellTake(AttributeBase& cell, AttributeType eType, const Type* pType) noexcept {
    m_pValue = &cell;
    m_eType = eType;
    m_pType = pType;
}

// A value was stored in the cell, and only now cell, tag and type become the select's: what is refused leaves it as it
// was, and readers never take a cell for one of another class.
bool AttributeSelect::boStored(AttributeBase& cell, AttributeType eType, const Type* pType) noexcept {
    vCellTake(cell, eType, pType);
    cell.vDefined();
    return true;
}

template <class Cell, class Value>
bool AttributeSelect::boStore(AttributeType eType, const Type* pType, const Value* pValue, Pool& pool) {
    if (!pValue) return false;
    Cell& cell = cellOf<Cell>(eType, pool);
    cell.m_value = *pValue;
    return boStored(cell, eType, pType);
}

// What the items are, the value's own type says: the object in hand is the select's.
template <class Value>
bool AttributeSelect::boStoreList(AttributeType eType, const Type* pType, const Value* pValue, Pool& pool) {
    if (!pValue) return false;
    auto& list = cellOf<AttributeList>(eType, pool);
    return list.boValueSet(*pValue, pType, pool) && boStored(list, eType, pType);
}

bool AttributeSelect::boStoreText(const Type* pType, const IfcSelectBase& value, Pool& pool) {
    if (m_boGuid) return boNotImplemented(g_sValueSet);
    const auto* psText = value.pValueGet<std::string>();
    const auto* ppText = value.pValueGet<const char*>();
    if (!psText && !(ppText && *ppText)) return false;
    const std::string_view text = psText ? std::string_view(*psText) : std::string_view(*ppText);
    auto& cell = cellOf<AttributeString>(AttributeType::String, pool);
    return cell.boValueSet(text.data(), text.size() + 1, pool) && boStored(cell, AttributeType::String, pType);
}

bool AttributeSelect::boValueSet(const IfcSelectBase& value, const ObjectBase* pObject, Pool& pool) {
    if (Entity* pEntity = value.pEntityGet())
        return boStore<AttributeEntity>(AttributeType::Entity, nullptr, &pEntity, pool);
    const IfcSelectBase::TypeDataBase* pData = value.pTypeDataGet();
    const Type* pType = pData ? pData->pTypeGet() : nullptr;
    if (!pType || !pType->pDataType) return false;
    switch (pType->pDataType->kind) {
    case DataKind::Real: return boStore<AttributeReal>(AttributeType::Real, pType, value.pValueGet<double>(), pool);
    case DataKind::Number:
        return boStore<AttributeNumber>(AttributeType::Number, pType, value.pValueGet<double>(), pool);
    case DataKind::Boolean:
        return boStore<AttributeBoolean>(AttributeType::Boolean, pType, value.pValueGet<bool>(), pool);
    case DataKind::Integer:
        return boStore<AttributeInteger>(AttributeType::Integer, pType, value.pValueGet<long long>(), pool);
    case DataKind::Logical:
        return boStore<AttributeLogical>(AttributeType::Logical, pType, value.pValueGet<LogicalValue>(), pool);
    case DataKind::String: return boStoreText(pType, value, pool);
    case DataKind::Binary: return boNotImplemented(g_sValueSet);
    case DataKind::Enumeration: {
        const auto* ppText = value.pValueGet<const char*>();
        if (!ppText) return false;
        auto& cell = cellOf<AttributeEnumeration>(AttributeType::Enumeration, pool);
        const auto& type = static_cast<const def::schema::DataTypeEnum&>(*pType->pDataType);
        return cell.boValueSet(*ppText, type, pool) && boStored(cell, AttributeType::Enumeration, pType);
    }
    case DataKind::Array:
        return pObject && boStoreList(AttributeType::Array, pType, value.pValueGet<std::vector<double>>(), pool);
    case DataKind::List:
        if (!pObject) return boNotImplemented(g_sValueSet);
        if (const auto* pIntegers = value.pValueGet<std::vector<long long>>())
            return boStoreList(AttributeType::List, pType, pIntegers, pool);
        return boStoreList(AttributeType::List, pType, value.pValueGet<std::vector<double>>(), pool);
    case DataKind::Set: return boStoreList(AttributeType::Set, pType, value.pValueGet<std::set<Entity*>>(), pool);
    default: return false;
    }
}

bool AttributeSelect::boValueGet(IfcSelectBase& value) const {
    const AttributeBase* pCell = m_pValue;
    if (!pCell || pCell->m_boUndefined) return false;
    if (m_eType.load() == AttributeType::Entity) {
        value.vEntitySet(static_cast<const AttributeEntity*>(pCell)->m_value);
        return true;
    }
    const Type* pType = m_pType;
    if (!pType || !pType->pDataType) return false;
    const auto give = [&](auto typedValue) {
        value = IfcSelectBase(pType, std::move(typedValue));
        return true;
    };
    const auto& list = *static_cast<const AttributeListValueBase*>(pCell);
    switch (pType->pDataType->kind) {
    case DataKind::Real:
    case DataKind::Number: return give(static_cast<const AttributeReal*>(pCell)->m_value.load());
    case DataKind::Boolean: return give(static_cast<const AttributeBoolean*>(pCell)->m_value != 0);
    case DataKind::Integer: return give(static_cast<const AttributeInteger*>(pCell)->m_value.load());
    case DataKind::String: {
        if (pCell->m_boGuid) return give(static_cast<const AttributeGuid*>(pCell)->m_value.load());
        const char* pText = static_cast<const AttributeString*>(pCell)->m_value;
        return give(std::string(pText ? pText : ""));
    }
    case DataKind::Logical: return give(static_cast<const AttributeLogical*>(pCell)->m_value.load());
    case DataKind::Binary: return give(static_cast<const AttributeBinary*>(pCell)->m_value.load());
    case DataKind::Enumeration: return give(static_cast<const AttributeEnumeration*>(pCell)->m_value.load());
    case DataKind::Array: return list.m_eItemType.load() == AttributeType::Real && give(vectorOf<double>(list));
    case DataKind::List: return list.m_eItemType.load() == AttributeType::Integer && give(vectorOf<long long>(list));
    case DataKind::Set: {
        if (list.m_eItemType.load() != AttributeType::Entity) return false;
        std::set<Entity*> entities;
        if (const EntityList* pHead = list.pEntities())
            for (Entity* pEntity : *pHead) entities.insert(pEntity);
        return give(std::move(entities));
    }
    default: return false;   // a select inside of a select can't be read this way
    }
}

bool AttributeSelect::boValueGetFromCell(const AttributeBase& cell, const def::schema::Attribute& attribute,
                                         IfcSelectBase& value) {
    if (!cell.boHasValue()) return false;
    if (attribute.types.empty()) throw MissingType();
    const ObjectBase* pObject = attribute.types.front();
    const Type* pType = def::schema::pAsType(pObject);
    switch (cellClass(pObject, attribute)) {
    case CellClass::Entity: value.vEntitySet(static_cast<const AttributeEntity&>(cell).m_value); return true;
    case CellClass::Real:
    case CellClass::Number:
        value = IfcSelectBase(pType, static_cast<const AttributeReal&>(cell).m_value.load());
        return true;
    case CellClass::Integer:
        value = IfcSelectBase(pType, static_cast<const AttributeInteger&>(cell).m_value.load());
        return true;
    case CellClass::String: {
        const char* pText = static_cast<const AttributeString&>(cell).m_value;
        value = IfcSelectBase(pType, std::string(pText ? pText : ""));
        return true;
    }
    case CellClass::Select: return static_cast<const AttributeSelect&>(cell).boValueGet(value);
    default: return false;
    }
}

void AttributeSelect::vTypeCreate(const std::vector<const ObjectBase*>& path, Pool& pool) {
    if (path.size() != 1 || !path.front()) return;
    if (def::schema::pAsEntity(path.front()))
        return vCellTake(cellOf<AttributeEntity>(AttributeType::Entity, pool), AttributeType::Entity, nullptr);
    const Type* pType = def::schema::pAsType(path.front());
    if (!pType || !pType->pDataType) return;
    const auto vPrepare = [&]<class Cell>(AttributeType eType, std::type_identity<Cell>) {
        vCellTake(cellOf<Cell>(eType, pool), eType, pType);
    };
    const auto vRefuse = [] { boNotImplemented("oxa::ifc::AttributeSelect::vTypeCreate"); };
    switch (pType->pDataType->kind) {
    case DataKind::Real: return vPrepare(AttributeType::Real, std::type_identity<AttributeReal>());
    case DataKind::Boolean: return vPrepare(AttributeType::Boolean, std::type_identity<AttributeBoolean>());
    case DataKind::Integer: return vPrepare(AttributeType::Integer, std::type_identity<AttributeInteger>());
    case DataKind::Number: return vPrepare(AttributeType::Number, std::type_identity<AttributeNumber>());
    case DataKind::Logical: return vPrepare(AttributeType::Logical, std::type_identity<AttributeLogical>());
    case DataKind::Select: return vPrepare(AttributeType::Select, std::type_identity<AttributeSelect>());
    case DataKind::String:
        if (m_boGuid) return vRefuse();
        return vPrepare(AttributeType::String, std::type_identity<AttributeString>());
    case DataKind::Binary:
    case DataKind::Enumeration: return vRefuse();
    default: return;
    }
}

AttributeSelect::~AttributeSelect() {
    AttributeBase* pCell = m_pValue;
    if (!pCell) return;
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(m_pType.load());
    if (m_eType.load() != AttributeType::Entity && pDataType) {
        switch (pDataType->kind) {
        case DataKind::String:
            if (!pCell->m_boGuid && !pCell->m_boPooled) std::free(static_cast<AttributeString*>(pCell)->m_value.load());
            break;
        case DataKind::Binary:
            if (!pCell->m_boPooled) std::free(static_cast<AttributeBinary*>(pCell)->m_value.load());
            break;
        case DataKind::Select: static_cast<AttributeSelect*>(pCell)->~AttributeSelect(); break;
        case DataKind::Array:
        case DataKind::List:
        case DataKind::Set: static_cast<AttributeList*>(pCell)->~AttributeList(); break;
        default: break;
        }
    }
    if (!m_boPooled) std::free(pCell);
}

}   // namespace oxa::ifc
