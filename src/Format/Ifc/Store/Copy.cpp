// SPDX-License-Identifier: Apache-2.0
// Copying values into the cells of other instances, of another model and another schema if need be.
//
// Every copy takes the flags along first and is done when the source has no value. What a copy refuses is told by its
// result alone; nothing is reported.
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using def::schema::Attribute;
using def::schema::DataKind;
using def::schema::ObjectBase;
using types::IfcSelectBase;

namespace {

constexpr char g_sListCopy[] = "oxa::ifc::AttributeListValueBase::copyTo";

bool boRefuse(const char* sText) {
    Assert::vTell("Format/Ifc/IfcFileAttribute", g_sListCopy, sText);
    return false;
}

// The target is left without a value.
bool boUndefined(AttributeBase& target, bool boResult) noexcept {
    target.m_boUndefined = true;
    return boResult;
}

const ObjectBase* pTypeOf(const Attribute& attribute) noexcept {
    return attribute.types.empty() ? nullptr : attribute.types.front();
}

// The select that a defined type names; null for everything else.
const def::schema::DataTypeSelect* pSelectOf(const ObjectBase* pObject) noexcept {
    const def::schema::Type* pType = def::schema::pAsType(pObject);
    const def::schema::DataTypeBase* pDataType = pType ? pType->pDataType : nullptr;
    return pDataType && pDataType->kind == DataKind::Select ? static_cast<const def::schema::DataTypeSelect*>(pDataType)
                                                            : nullptr;
}

// A function is asked for a null, too: it may have something to put in its place.
Entity* pMapped(Entity* pEntity, const AttributeBase::MapEntity& mapEntity) {
    return mapEntity ? mapEntity(pEntity) : pEntity;
}

bool boTakes(const def::schema::DataTypeSelect& select, const Entity& entity) {
    return entity.pSchemaEntity() && select.isCompatible(*entity.pSchemaEntity());
}

// An attribute that holds references in one schema and a select in the other.
bool boReferenceToSelect(const AttributeEntity& source, AttributeSelect& target, const ObjectBase* pObject, Pool& pool,
                         const AttributeBase::MapEntity& mapEntity) {
    const def::schema::DataTypeSelect* pSelect = pSelectOf(pObject);
    if (!pSelect) return false;
    Entity* pEntity = source.boHasValue() ? pMapped(source.m_value, mapEntity) : nullptr;
    const bool boFits = pEntity && boTakes(*pSelect, *pEntity);
    if (!boFits) {
        target.m_boDerived = false;
        return boUndefined(target, !pEntity);
    }
    if (!target.boValueSet(IfcSelectBase(pEntity), pObject, pool)) return false;
    target.vDefined();
    return true;
}

// The target's block when its count is large enough, else a new one whose cells are in their default state; with the
// new count either way.
template <class T>
Array<T>& blockFor(AttributeListValueBase& target, std::size_t iCount, Pool& pool) {
    Array<T>* pArray = target.pArray<T>();
    if (pArray && pArray->size() >= iCount) {
        pArray->vCountSet(iCount);
        return *pArray;
    }
    pArray = Array<T>::pFromBytes(pool.pAllocate(Array<T>::iBlockSize(iCount)), iCount);
    if constexpr (std::is_base_of_v<AttributeBase, T>)
        for (T& cell : *pArray) ::new (&cell) T;
    target.m_pItems = pArray;
    return *pArray;
}

// Copies item by item with "boCopy", which ends the copy with false. A source that has no block has nothing to copy.
template <class T, class Copy>
bool boItemsCopy(const AttributeListValueBase& source, AttributeListValueBase& target, Pool& pool, Copy&& boCopy) {
    const Array<T>* pItems = source.pArray<T>();
    if (!pItems) return false;
    Array<T>& items = blockFor<T>(target, pItems->size(), pool);
    for (std::size_t i = 0; i < pItems->size(); ++i)
        if (!boCopy((*pItems)[i], items[i])) return false;
    return true;
}

template <class T>
bool boNumbersCopy(const AttributeListValueBase& source, AttributeListValueBase& target, Pool& pool) {
    return boItemsCopy<T>(source, target, pool, [](const Unaligned<T>& from, Unaligned<T>& to) {
        to = from;
        return true;
    });
}

bool boTextsCopy(const AttributeListValueBase& source, AttributeListValueBase& target, Pool& pool) {
    if (source.m_boGuid) return boRefuse("AttributeListValueBase::copyTo is not implemented for lists of guids.");
    return boItemsCopy<char*>(source, target, pool, [&pool](const Unaligned<char*>& from, Unaligned<char*>& to) {
        const char* pText = from;
        const std::size_t iSize = pText ? std::strlen(pText) + 1 : 0;
        to = pText ? static_cast<char*>(std::memcpy(pool.pAllocate(iSize), pText, iSize)) : nullptr;
        return true;
    });
}

void vEntitiesCopy(const AttributeListValueBase& source, AttributeListValueBase& target, Pool& pool,
                   const AttributeBase::MapEntity& mapEntity) {
    std::vector<Entity*> entities;
    if (const EntityList* pHead = source.pEntities())
        for (Entity* pEntity : *pHead)
            if (Entity* pTarget = pMapped(pEntity, mapEntity)) entities.push_back(pTarget);
    EntityList* pHead = target.pEntities();
    vListAssign(pHead, entities.begin(), entities.end(),
                [&pool](std::size_t iBytes) { return pool.pAllocate(iBytes); });
    target.m_pItems = pHead;
}

}   // namespace

bool AttributeBase::copyTo(AttributeBase& target, const Attribute& source, const Attribute& destination, Data& data,
                           const MapEntity& mapEntity, const MapType& mapType) const {
    const ObjectBase* pSource = pTypeOf(source);
    const ObjectBase* pDestination = pTypeOf(destination);
    if (def::schema::pAsEntity(pSource)) {
        const auto& reference = static_cast<const AttributeEntity&>(*this);
        if (def::schema::pAsType(pDestination))
            return boReferenceToSelect(reference, static_cast<AttributeSelect&>(target), pDestination, data.pool(),
                                       mapEntity);
        return reference.copyTo(static_cast<AttributeEntity&>(target), destination, data, mapEntity);
    }

    const def::schema::DataTypeBase* pFrom = def::schema::pDataTypeOf(pSource);
    const def::schema::DataTypeBase* pTo = def::schema::pDataTypeOf(pDestination);
    if (!pFrom || !pTo || pFrom->kind != pTo->kind) return false;
    const auto boValue = [&]<class Cell>(std::type_identity<Cell>) {
        if (copyBaseTo(target)) static_cast<Cell&>(target).m_value = static_cast<const Cell&>(*this).m_value;
        return true;
    };
    switch (pFrom->kind) {
    case DataKind::Real:
    case DataKind::Number: return boValue(std::type_identity<AttributeReal>());
    case DataKind::Integer: return boValue(std::type_identity<AttributeInteger>());
    case DataKind::Boolean: return boValue(std::type_identity<AttributeBoolean>());
    case DataKind::Logical:
        return static_cast<const AttributeLogical&>(*this).copyTo(static_cast<AttributeLogical&>(target), destination,
                                                                  data);
    case DataKind::String:
        if (m_boGuid != target.m_boGuid) return false;
        if (m_boGuid) return static_cast<const AttributeGuid&>(*this).copyTo(static_cast<AttributeGuid&>(target));
        return static_cast<const AttributeString&>(*this).copyTo(static_cast<AttributeString&>(target), data);
    case DataKind::Binary:
        return static_cast<const AttributeBinary&>(*this).copyTo(static_cast<AttributeBinary&>(target), data);
    case DataKind::Enumeration:
        return static_cast<const AttributeEnumeration&>(*this).copyTo(static_cast<AttributeEnumeration&>(target),
                                                                      destination, data);
    case DataKind::Select:
        return static_cast<const AttributeSelect&>(*this).copyTo(static_cast<AttributeSelect&>(target), pDestination,
                                                                 data, mapEntity, mapType);
    case DataKind::Array:
    case DataKind::List:
    case DataKind::Set:
        return static_cast<const AttributeListValueBase&>(*this).copyTo(static_cast<AttributeListValueBase&>(target),
                                                                        pDestination, data, mapEntity, mapType);
    }
    return false;   // a kind outside the twelve
}

bool AttributeString::copyTo(AttributeString& target, Data& data) const {
    if (!copyBaseTo(target)) return true;
    const char* pText = m_value;
    if (!pText) return boUndefined(target, true);
    return target.boValueSet(pText, std::strlen(pText) + 1, data.pool());
}

bool AttributeBinary::copyTo(AttributeBinary& target, Data& data) const {
    if (!copyBaseTo(target)) return true;
    const unsigned char* pBytes = m_value;
    if (!pBytes) return boUndefined(target, true);
    return target.boValueSet(pBytes, static_cast<std::size_t>(m_iCount.load()), data.pool());
}

bool AttributeLogical::copyTo(AttributeLogical& target, const Attribute&, Data&) const {
    if (copyBaseTo(target)) target.m_value = m_value;
    return true;
}

bool AttributeGuid::copyTo(AttributeGuid& target) const {
    if (copyBaseTo(target)) target.m_value = m_value;
    return true;
}

bool AttributeEnumeration::copyTo(AttributeEnumeration& target, const Attribute& destination, Data& data) const {
    if (!copyBaseTo(target)) return true;
    if (!m_value.load()) return boUndefined(target, true);
    return target.boValueSet(m_value, destination, data);
}

bool AttributeEntity::copyTo(AttributeEntity& target, const Attribute& destination, Data&,
                             const MapEntity& mapEntity) const {
    if (!copyBaseTo(target)) return true;
    Entity* pEntity = pMapped(m_value, mapEntity);
    if (!pEntity) return boUndefined(target, true);
    if (!pEntity->boIsCompatible(def::schema::pAsEntity(pTypeOf(destination)))) return boUndefined(target, false);
    target.m_value = pEntity;
    return true;
}

// The mapping of types has no part in it: a typed value keeps its source Type.
bool AttributeSelect::copyTo(AttributeSelect& target, const ObjectBase* pObject, Data& data, const MapEntity& mapEntity,
                             const MapType&) const {
    if (!copyBaseTo(target)) return true;
    IfcSelectBase value;
    if (!boValueGet(value)) return boUndefined(target, true);
    const def::schema::DataTypeSelect* pSelect = pSelectOf(pObject);
    if (!pSelect) return boUndefined(target, false);
    if (mapEntity && value.pTypeInfo() && *value.pTypeInfo() == typeid(Entity)) {
        Entity* pEntity = pMapped(value.pEntityGet(), mapEntity);
        if (!pEntity || !boTakes(*pSelect, *pEntity)) return boUndefined(target, true);
        value.vEntitySet(pEntity);
    }
    return target.boValueSet(value, pObject, data.pool());
}

bool AttributeListValueBase::copyTo(AttributeListValueBase& target, const ObjectBase* pObject, Data& data,
                                    const MapEntity& mapEntity, const MapType& mapType) const {
    if (!copyBaseTo(target)) return true;
    if (!target.m_pItems.load() && target.m_eItemType.load() == AttributeType::Unknown)
        target.boInitTypeFromAttribute(pObject);
    if (target.m_eItemType.load() != m_eItemType.load()) {
        target.m_eItemType = AttributeType::Unknown;
        return boUndefined(target, false);
    }
    const def::schema::DataTypeBase* pAggregate = def::schema::pDataTypeOf(pObject);
    const ObjectBase* pElement = pAggregate ? pAggregate->pElementGet() : nullptr;
    Pool& pool = data.pool();
    switch (m_eItemType.load()) {
    case AttributeType::Real: return boNumbersCopy<double>(*this, target, pool);
    case AttributeType::Integer: return boNumbersCopy<long long>(*this, target, pool);
    case AttributeType::String: return boTextsCopy(*this, target, pool);
    case AttributeType::Binary:
        return boItemsCopy<AttributeBinary>(*this, target, pool,
                                            [&data](const auto& from, auto& to) { return from.copyTo(to, data); }) ||
               boUndefined(target, false);
    case AttributeType::Select:
        return boItemsCopy<AttributeSelect>(
                   *this, target, pool,
                   [&](const auto& from, auto& to) { return from.copyTo(to, pElement, data, mapEntity, mapType); }) ||
               boUndefined(target, false);
    case AttributeType::List:
        return boItemsCopy<AttributeList>(*this, target, pool, [&](const auto& from, auto& to) {
            return from.copyTo(to, pElement, data, mapEntity, mapType);
        });
    case AttributeType::Entity: vEntitiesCopy(*this, target, pool, mapEntity); return true;
    default: return boRefuse("AttributeListValueBase::copyTo not implemented for this type");
    }
}

}   // namespace oxa::ifc
