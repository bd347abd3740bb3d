// SPDX-License-Identifier: Apache-2.0
// Select cells from and to a caller's value, and their preparation for an import.
#include <cstdlib>
#include <cstring>
#include <new>
#include <set>
#include <type_traits>

#include "Format/Ifc/IfcCellVisit.h"
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

constexpr char g_sSelectValueSet[] = "oxa::ifc::AttributeSelect::boValueSet";

// The items of a list in a select as the caller's own.
template <class T>
std::vector<T> vectorOf(const Array<T>* pItems) {
    return pItems ? std::vector<T>(pItems->begin(), pItems->end()) : std::vector<T>();
}
std::set<Entity*> setOf(const EntityList* pHead) {
    std::set<Entity*> entities;
    if (pHead)
        for (Entity* pEntity : *pHead) entities.insert(pEntity);
    return entities;
}

}   // namespace

// The nested cell of that kind: the present one, or a new one with a fresh header that is not the select's yet. It
// becomes that once it holds its value (vCellTake): a setter that refuses the value leaves the select with its old
// cell, tag and type, which always belong together.
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

// A value was stored in the cell, and only now cell, tag and type become the select's.
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
    if (m_boGuid) return boNotImplemented(g_sSelectValueSet);
    const auto* psText = value.pValueGet<std::string>();
    const auto* ppText = value.pValueGet<const char*>();
    if (!psText && !(ppText && *ppText)) return false;
    const std::string_view text = psText ? std::string_view(*psText) : std::string_view(*ppText);
    auto& cell = cellOf<AttributeString>(AttributeType::String, pool);
    return cell.boValueSet(text.data(), text.size() + 1, pool) && boStored(cell, AttributeType::String, pType);
}

// By the kind of the value's own type, which decides the class of the nested cell. A value whose C++ type is not the
// one of that kind is refused.
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
    case DataKind::Binary: return boNotImplemented(g_sSelectValueSet);
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
        if (!pObject) return boNotImplemented(g_sSelectValueSet);
        if (const auto* pIntegers = value.pValueGet<std::vector<long long>>())
            return boStoreList(AttributeType::List, pType, pIntegers, pool);
        return boStoreList(AttributeType::List, pType, value.pValueGet<std::vector<double>>(), pool);
    case DataKind::Set: return boStoreList(AttributeType::Set, pType, value.pValueGet<std::set<Entity*>>(), pool);
    case DataKind::Select: break;   // of a type that is a select itself there is no value
    }
    return false;
}

namespace {

// The value of a select's cell as the caller's. What the items of a list become, the kind of the aggregate says.
struct ValueGet {
    IfcSelectBase& value;
    const Type* pType;   // null for a reference

    template <class T>
    bool boGive(T typedValue) const {
        value = IfcSelectBase(pType, std::move(typedValue));
        return true;
    }
    bool operator()(const AttributeReal& cell) const { return boGive(cell.m_value.load()); }
    bool operator()(const AttributeBoolean& cell) const { return boGive(cell.m_value != 0); }
    bool operator()(const AttributeInteger& cell) const { return boGive(cell.m_value.load()); }
    bool operator()(const AttributeString& cell) const {
        const char* pText = cell.m_value;
        return boGive(std::string(pText ? pText : ""));
    }
    bool operator()(const AttributeGuid& cell) const { return boGive(cell.m_value.load()); }
    bool operator()(const AttributeLogical& cell) const { return boGive(cell.m_value.load()); }
    bool operator()(const AttributeBinary& cell) const { return boGive(cell.m_value.load()); }
    bool operator()(const AttributeEnumeration& cell) const { return boGive(cell.m_value.load()); }
    bool operator()(const AttributeSelect&) const { return false; }   // can't be read this way
    bool operator()(const AttributeList& list) const {
        return visitItems(list, Overloads{
                                    [this](const Array<double>* pItems) {
                                        return pType->pDataType->kind == DataKind::Array && boGive(vectorOf(pItems));
                                    },
                                    [this](const Array<long long>* pItems) {
                                        return pType->pDataType->kind == DataKind::List && boGive(vectorOf(pItems));
                                    },
                                    [this](const EntityList* pHead) {
                                        return pType->pDataType->kind == DataKind::Set && boGive(setOf(pHead));
                                    },
                                    [](AnyItems) { return false; },
                                });
    }
    bool operator()(const AttributeEntity& cell) const {
        value.vEntitySet(cell.m_value);
        return true;
    }
};

}   // namespace

bool AttributeSelect::boValueGet(IfcSelectBase& value) const {
    const AttributeBase* pCell = m_pValue;
    return pCell && !pCell->m_boUndefined && visitSelected(*this, ValueGet{value, m_pType});
}

bool AttributeSelect::boValueGetFromCell(const AttributeBase& cell, const def::schema::Attribute& attribute,
                                         IfcSelectBase& value) {
    if (!cell.boHasValue()) return false;
    if (attribute.types.empty()) throw MissingType();
    const ObjectBase* pObject = attribute.types.front();
    const ValueGet get{value, def::schema::pAsType(pObject)};
    return visitCell(cell, cellClass(pObject),
                     Overloads{
                         [&](const AttributeEntity& reference) { return get(reference); },
                         [&](const AttributeReal& real) { return get(real); },
                         [&](const AttributeInteger& integer) { return get(integer); },
                         [&](const AttributeString& text) { return get(text); },
                         [&](const AttributeSelect& select) { return select.boValueGet(value); },
                         [](const AttributeBase&) { return false; },
                     });
}

void AttributeSelect::vTypeCreate(const std::vector<const ObjectBase*>& path, Pool& pool) {
    if (path.size() != 1 || !path.front()) return;
    if (def::schema::pAsEntity(path.front()))
        return vCellTake(cellOf<AttributeEntity>(AttributeType::Entity, pool), AttributeType::Entity, nullptr);
    const Type* pType = def::schema::pAsType(path.front());
    if (!pType || !pType->pDataType) return;
    visitCellClass(cellClass(pType), [&]<class Cell>(std::type_identity<Cell>) {
        if constexpr (!std::is_same_v<Cell, AttributeList>) {
            const bool boRefused = std::is_same_v<Cell, AttributeBinary> ||
                                   std::is_same_v<Cell, AttributeEnumeration> ||
                                   (std::is_same_v<Cell, AttributeString> && m_boGuid);
            if (boRefused) {
                boNotImplemented("oxa::ifc::AttributeSelect::vTypeCreate");
                return;
            }
            const AttributeType eType = attributeType(pType->pDataType->kind);
            vCellTake(cellOf<Cell>(eType, pool), eType, pType);
        }
    });
}

AttributeSelect::~AttributeSelect() {
    AttributeBase* pCell = m_pValue;
    if (!pCell) return;
    const auto vFree = [](auto& cell) {
        if (!cell.m_boPooled) std::free(cell.m_value.load());
    };
    visitSelected(*this, Overloads{
                             [&](AttributeString& cell) { vFree(cell); },
                             [&](AttributeBinary& cell) { vFree(cell); },
                             [](AttributeSelect& cell) { cell.~AttributeSelect(); },
                             [](AttributeList& cell) { cell.~AttributeList(); },
                             [](const AttributeBase&) {},
                         });
    if (!m_boPooled) std::free(pCell);
}

}   // namespace oxa::ifc
