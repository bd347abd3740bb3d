// SPDX-License-Identifier: Apache-2.0
#include "NeededMemory.h"

#include <cstring>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/Memory/List.h"

namespace oxa::bench {

using namespace oxa::ifc;

namespace {

constexpr std::size_t g_iSlot = 32;
constexpr std::size_t g_iListHead = 24;
constexpr std::size_t g_iListNode = 16;

std::size_t iTextBytes(const char* pText) { return pText ? std::strlen(pText) + 1 : 0; }

std::size_t iListBytes(const AttributeListValueBase& list, const def::schema::Attribute& attribute);

std::size_t iSelectBytes(const AttributeSelect& select, const def::schema::Attribute& attribute) {
    std::size_t iBytes = 0;
    for (const AttributeSelect* pSelect = &select; pSelect && pSelect->m_pValue.load();) {
        const AttributeBase* pValue = pSelect->m_pValue;
        if (pSelect->m_eType.load() == AttributeType::Entity) return iBytes + sizeof(AttributeEntity);
        const def::schema::Type* pType = pSelect->m_pType;
        if (!pType) return iBytes;
        iBytes += AttributeBase::iAttributeSizeFromSchemaAttribute(*pType, attribute);
        pSelect = nullptr;
        switch (AttributeBase::cellClass(pType, attribute)) {
        case CellClass::String: iBytes += iTextBytes(static_cast<const AttributeString*>(pValue)->m_value); break;
        case CellClass::Binary:
            iBytes += static_cast<std::size_t>(static_cast<const AttributeBinary*>(pValue)->m_iCount.load());
            break;
        case CellClass::List:
            iBytes += iListBytes(static_cast<const AttributeListValueBase&>(*pValue), attribute);
            break;
        case CellClass::Select: pSelect = static_cast<const AttributeSelect*>(pValue); break;
        default: break;
        }
    }
    return iBytes;
}

// The block of an array and what its items point to.
template <class T, class Beyond>
std::size_t iArrayBytes(const AttributeListValueBase& list, Beyond&& iBeyond) {
    const Array<T>* pArray = list.pArray<T>();
    if (!pArray) return 0;
    std::size_t iBytes = Array<T>::iBlockSize(pArray->size());
    for (const auto& item : *pArray) iBytes += iBeyond(item);
    return iBytes;
}

std::size_t iListBytes(const AttributeListValueBase& list, const def::schema::Attribute& attribute) {
    const auto nothing = [](const auto&) { return std::size_t{0}; };
    switch (list.m_eItemType.load()) {
    case AttributeType::Real: return iArrayBytes<double>(list, nothing);
    case AttributeType::Integer: return iArrayBytes<long long>(list, nothing);
    case AttributeType::String:
        return iArrayBytes<char*>(list, [](const Unaligned<char*>& text) { return iTextBytes(text); });
    case AttributeType::Binary:
        return iArrayBytes<AttributeBinary>(
            list, [](const AttributeBinary& cell) { return static_cast<std::size_t>(cell.m_iCount.load()); });
    case AttributeType::Select:
        return iArrayBytes<AttributeSelect>(list,
                                            [&](const AttributeSelect& item) { return iSelectBytes(item, attribute); });
    case AttributeType::List:
        return iArrayBytes<AttributeList>(list, [&](const AttributeList& row) { return iListBytes(row, attribute); });
    case AttributeType::Entity: {
        std::size_t iBytes = 0;
        if (const EntityList* pHead = list.pEntities())
            for ([[maybe_unused]] Entity* pItem : *pHead) iBytes += iBytes ? g_iListNode : g_iListHead;
        return iBytes;
    }
    default: return 0;
    }
}

std::size_t iValueBytes(const def::schema::Attribute& attribute, const AttributeBase& cell) {
    if (!cell.boHasValue()) return 0;
    switch (AttributeBase::cellClass(attribute.types.empty() ? nullptr : attribute.types.front(), attribute)) {
    case CellClass::String: return iTextBytes(static_cast<const AttributeString&>(cell).m_value);
    case CellClass::Binary: return static_cast<std::size_t>(static_cast<const AttributeBinary&>(cell).m_iCount.load());
    case CellClass::Select: return iSelectBytes(static_cast<const AttributeSelect&>(cell), attribute);
    case CellClass::List: return iListBytes(static_cast<const AttributeListValueBase&>(cell), attribute);
    default: return 0;
    }
}

}   // namespace

std::size_t iNeededBytes(const Data& data) {
    std::size_t iBytes = 0;
    for (const Entity* pEntity : data.entities()) {
        const def::schema::Entity& schema = pEntity->schemaEntity();
        iBytes += g_iSlot + Entity::getDataSize(schema).iSize + schema.allInverseAttributes().size() * sizeof(void*);
        pEntity->boForEachAttribute([&](const def::schema::Attribute& attribute, const AttributeBase& cell) {
            iBytes += iValueBytes(attribute, cell);
            return false;
        });
        pEntity->boForEachInverseAttribute([&](const def::schema::AttributeInverse&, const EntityList& referrers) {
            for ([[maybe_unused]] const Entity* pReferrer : referrers) iBytes += g_iListHead;
            return false;
        });
    }
    return iBytes;
}

}   // namespace oxa::bench
