// SPDX-License-Identifier: Apache-2.0
// Copying values into the cells of other instances, of another model and another schema if need be.
//
// Every copy takes the flags along first and is done when the source has no value. What a copy refuses is told by its
// result alone; nothing is reported.
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "Format/Ifc/Cells/ItemBlock.h"
#include "Format/Ifc/IfcCellVisit.h"
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

// The items of one list into another.
struct ItemsCopy {
    const AttributeListValueBase& source;
    AttributeListValueBase& target;
    const ObjectBase* pElement;   // of the target's aggregate
    Data& data;
    const AttributeBase::MapEntity& mapEntity;
    const AttributeBase::MapType& mapType;

    // Item by item with "boCopy", which ends the copy with false. A source that has no block has nothing to copy.
    template <class T, class Copy>
    bool boEach(const Array<T>* pItems, Copy&& boCopy) const {
        if (!pItems) return false;
        const auto [items, boNew] = itemBlock<T>(target, pItems->size(), data.pool());
        if constexpr (std::is_base_of_v<AttributeBase, T>)
            if (boNew)
                for (T& cell : items) ::new (&cell) T;
        for (std::size_t i = 0; i < pItems->size(); ++i)
            if (!boCopy((*pItems)[i], items[i])) return false;
        return true;
    }
    template <class T>
    bool boNumbers(const Array<T>* pItems) const {
        return boEach(pItems, [](const Unaligned<T>& from, Unaligned<T>& to) {
            to = from;
            return true;
        });
    }

    bool operator()(const Array<double>* pItems) const { return boNumbers(pItems); }
    bool operator()(const Array<long long>* pItems) const { return boNumbers(pItems); }
    bool operator()(const Array<char*>* pItems) const {
        if (source.m_boGuid) return boRefuse("AttributeListValueBase::copyTo is not implemented for lists of guids.");
        return boEach(pItems, [this](const Unaligned<char*>& from, Unaligned<char*>& to) {
            const char* pText = from;
            const std::size_t iSize = pText ? std::strlen(pText) + 1 : 0;
            to = pText ? static_cast<char*>(std::memcpy(data.pool().pAllocate(iSize), pText, iSize)) : nullptr;
            return true;
        });
    }
    bool operator()(const Array<AttributeBinary>* pItems) const {
        return boEach(pItems, [this](const auto& from, auto& to) { return from.copyTo(to, data); }) ||
               boUndefined(target, false);
    }
    bool operator()(const Array<AttributeSelect>* pItems) const {
        return boEach(pItems, [this](const auto& from,
                                     auto& to) { return from.copyTo(to, pElement, data, mapEntity, mapType); }) ||
               boUndefined(target, false);
    }
    bool operator()(const Array<AttributeList>* pItems) const {
        return boEach(
            pItems, [this](const auto& from, auto& to) { return from.copyTo(to, pElement, data, mapEntity, mapType); });
    }
    bool operator()(const EntityList* pItems) const {
        std::vector<Entity*> entities;
        if (pItems)
            for (Entity* pEntity : *pItems)
                if (Entity* pTarget = pMapped(pEntity, mapEntity)) entities.push_back(pTarget);
        EntityList* pHead = target.pEntities();
        vListAssign(pHead, entities.begin(), entities.end(),
                    [this](std::size_t iBytes) { return data.pool().pAllocate(iBytes); });
        target.m_pItems = pHead;
        return true;
    }
    bool operator()(NoItems) const { return boRefuse("AttributeListValueBase::copyTo not implemented for this type"); }
};

}   // namespace

// By the kinds of both sides. Equal kinds copy; besides, a reference may become a select. All else is refused.
bool AttributeBase::copyTo(AttributeBase& target, const Attribute& source, const Attribute& destination, Data& data,
                           const MapEntity& mapEntity, const MapType& mapType) const {
    const ObjectBase* pSource = source.pType();
    const ObjectBase* pDestination = destination.pType();
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
    const auto as = [&target]<class Cell>(const Cell&) -> Cell& { return static_cast<Cell&>(target); };
    const auto boPlain = [&](const auto& cell) {
        if (copyBaseTo(target)) as(cell).m_value = cell.m_value;
        return true;
    };
    return visitCell(
        *this, cellClass(pSource),
        Overloads{
            [&](const AttributeReal& cell) { return boPlain(cell); },
            [&](const AttributeInteger& cell) { return boPlain(cell); },
            [&](const AttributeBoolean& cell) { return boPlain(cell); },
            [&](const AttributeLogical& cell) { return cell.copyTo(as(cell), destination, data); },
            [&](const AttributeString& cell) { return !target.m_boGuid && cell.copyTo(as(cell), data); },
            [&](const AttributeGuid& cell) { return target.m_boGuid && cell.copyTo(as(cell)); },
            [&](const AttributeBinary& cell) { return cell.copyTo(as(cell), data); },
            [&](const AttributeEnumeration& cell) { return cell.copyTo(as(cell), destination, data); },
            [&](const AttributeSelect& cell) { return cell.copyTo(as(cell), pDestination, data, mapEntity, mapType); },
            [&](const AttributeList& cell) { return cell.copyTo(as(cell), pDestination, data, mapEntity, mapType); },
            [](const AttributeEntity&) { return false; },   // came to its end above
        });
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
    if (!pEntity->boIsCompatible(def::schema::pAsEntity(destination.pType()))) return boUndefined(target, false);
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

// Lists are copied between equal item types only. A target that has no item type yet gets it from its own schema first.
bool AttributeListValueBase::copyTo(AttributeListValueBase& target, const ObjectBase* pObject, Data& data,
                                    const MapEntity& mapEntity, const MapType& mapType) const {
    if (!copyBaseTo(target)) return true;
    if (!target.m_pItems.load() && target.m_eItemType.load() == AttributeType::Unknown)
        target.boInitTypeFromAttribute(pObject);
    if (target.m_eItemType.load() != m_eItemType.load()) {
        target.m_eItemType = AttributeType::Unknown;
        return boUndefined(target, false);
    }
    return visitItems(*this, ItemsCopy{*this, target, def::schema::pElementOf(pObject), data, mapEntity, mapType});
}

}   // namespace oxa::ifc
