// SPDX-License-Identifier: Apache-2.0
#include "NeededMemory.h"

#include <cstring>

#include "Format/Ifc/IfcCellVisit.h"
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

// What a cell's value takes beyond the cell: the overloads for cells, and for the items of lists.
struct BytesBeyond {
    std::size_t operator()(const AttributeString& cell) const { return iTextBytes(cell.m_value); }
    std::size_t operator()(const AttributeBinary& cell) const { return static_cast<std::size_t>(cell.m_iCount.load()); }
    std::size_t operator()(const AttributeSelect& cell) const {
        std::size_t iBytes = 0;
        const AttributeSelect* pSelect = &cell;
        while (pSelect)
            pSelect = visitSelected(*pSelect, [&]<class Cell>(const Cell& value) {
                iBytes += sizeof(Cell);
                const AttributeSelect* pInside = nullptr;
                if constexpr (std::is_same_v<Cell, AttributeSelect>)
                    pInside = &value;
                else
                    iBytes += (*this)(value);
                return pInside;
            });
        return iBytes;
    }
    std::size_t operator()(const AttributeList& list) const { return visitItems(list, *this); }
    std::size_t operator()(const AttributeBase&) const { return 0; }

    std::size_t operator()(const EntityList* pItems) const {
        std::size_t iBytes = 0;
        if (pItems)
            for ([[maybe_unused]] Entity* pItem : *pItems) iBytes += iBytes ? g_iListNode : g_iListHead;
        return iBytes;
    }
    // The block of an array and what its items point to.
    template <class T>
    std::size_t operator()(const Array<T>* pItems) const {
        if (!pItems) return 0;
        std::size_t iBytes = Array<T>::iBlockSize(pItems->size());
        for (const auto& item : *pItems) {
            if constexpr (std::is_same_v<T, char*>) iBytes += iTextBytes(item);
            if constexpr (std::is_base_of_v<AttributeBase, T>) iBytes += (*this)(item);
        }
        return iBytes;
    }
    std::size_t operator()(NoItems) const { return 0; }
};

std::size_t iValueBytes(const def::schema::Attribute& attribute, const AttributeBase& cell) {
    if (!cell.boHasValue()) return 0;
    return visitCell(cell, AttributeBase::cellClass(attribute.pType()), BytesBeyond{});
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
