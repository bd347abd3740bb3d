// SPDX-License-Identifier: Apache-2.0
// The parsing constructor of lists: which items an aggregate holds, and how its text becomes one block of them.
#include <array>
#include <new>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Text/Parameters.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using def::schema::DataKind;
using def::schema::ObjectBase;

// The item type of an aggregate's list; false for one that no list can have. A select whose members all are entities
// becomes a list of plain references, without a select cell and a nested cell for each item.
bool AttributeListValueBase::boInitTypeFromAttribute(const ObjectBase* pObject) noexcept {
    const def::schema::DataTypeBase* pAggregate = def::schema::pDataTypeOf(pObject);
    const ObjectBase* pElement = pAggregate ? pAggregate->pElementGet() : nullptr;
    if (!pElement) return false;
    if (def::schema::pAsEntity(pElement)) {
        m_eItemType = AttributeType::Entity;
        return true;
    }
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pElement);
    if (!pDataType) {
        Assert::vTell("Format/Ifc/IfcFileAttribute", "oxa::ifc::AttributeListValueBase::boInitTypeFromAttribute",
                      "pDataTypeBase != nullptr");
        return false;
    }
    switch (pDataType->kind) {
    case DataKind::Real:
    case DataKind::Number: m_eItemType = AttributeType::Real; return true;
    case DataKind::Integer: m_eItemType = AttributeType::Integer; return true;
    case DataKind::String: m_eItemType = AttributeType::String; return true;
    case DataKind::Binary: m_eItemType = AttributeType::Binary; return true;
    case DataKind::Select:
        m_eItemType = static_cast<const def::schema::DataTypeSelect*>(pDataType)->boAllEntities ? AttributeType::Entity
                                                                                                : AttributeType::Select;
        return true;
    case DataKind::List: m_eItemType = AttributeType::List; return true;
    case DataKind::Set: m_eItemType = AttributeType::Set; return true;
    case DataKind::Boolean:
    case DataKind::Logical:
    case DataKind::Enumeration:
    case DataKind::Array: break;   // are no items
    }
    return false;
}

// The second half of the parsing constructor: the items of one token, by item type.
struct AttributeListValueBase::Reader {
    AttributeListValueBase& list;
    StepReadInfoAttribute& info;
    const char* first;   // the range between the token's first and last character
    const char* last;

    Reader(AttributeListValueBase& listRead, StepReadInfoAttribute& infoRead) noexcept
        : list(listRead),
          info(infoRead),
          first(infoRead.pText() + 1),
          last(first) {
        if (info.m_iLength > 2) last = info.pText() + info.m_iLength - 1;
    }

    [[nodiscard]] StepReadInfoAttribute item(const char* pBegin, const char* pEnd) const noexcept {
        const char* pLine = info.m_pInfo->m_line.data();
        return info.part(static_cast<std::size_t>(pBegin - pLine), static_cast<std::size_t>(pEnd - pBegin), nullptr);
    }

    // Calls item(begin, end) for each item.
    template <class Item>
    void vEach(Item&& item) const {
        details::vForEachItem(info.m_pInfo->m_line.data(), first, last, item);
    }

    // Counts the items, makes the block and calls fill(place, begin, end) for each item.
    //
    // A block is allocated once and never grown, so the items have to be counted before they are read: two passes over
    // the text. Most lists are short (three coordinates), and for those the first pass remembers where each item
    // stands, so that the second need not cut the text again; sixteen places on the stack are enough for most.
    template <class T, class Fill>
    void vArray(Fill&& fill) {
        struct Place {
            const char* pBegin;
            const char* pEnd;
        };
        std::array<Place, 16> known;   // as far as iCount says
        std::size_t iCount = 0;
        vEach([&](const char* pBegin, const char* pEnd) {
            if (iCount < known.size()) known[iCount] = {pBegin, pEnd};
            ++iCount;
        });
        auto* pArray = Array<T>::pFromBytes(info.pAllocate(Array<T>::iBlockSize(iCount)), iCount);
        list.m_pItems = pArray;
        auto* pItem = pArray->begin();
        if (iCount <= known.size())
            for (std::size_t i = 0; i < iCount; ++i) fill(*pItem++, known[i].pBegin, known[i].pEnd);
        else
            vEach([&](const char* pBegin, const char* pEnd) { fill(*pItem++, pBegin, pEnd); });
    }

    // Numbers: one report for the list, however many items are bad; those are 0.
    template <class T, class Parse>
    void vNumbers(Parse&& parse, ReportKey eKey) {
        bool boBad = false;
        vArray<T>([&](Unaligned<T>& item, const char* pBegin, const char* pEnd) {
            if (const auto value = parse(pBegin, pEnd))
                item = *value;
            else
                boBad = true;
        });
        if (boBad) vReport(info, eKey);
    }

    // Texts: the quotes are not checked, nothing is reported, and an item too short for them is an empty text.
    void vStrings() {
        vArray<char*>([&](Unaligned<char*>& item, const char* pBegin, const char* pEnd) {
            const auto iLength = static_cast<std::size_t>(pEnd - pBegin);
            const auto iStart = static_cast<std::size_t>(pBegin - info.m_pInfo->m_line.data());
            item = AttributeString::pTextRead(info, iLength < 2 ? iStart : iStart + 1, iLength < 2 ? 0 : iLength - 2);
        });
    }

    template <class Cell>
    void vCells() {
        vArray<Cell>([&](Cell& cell, const char* pBegin, const char* pEnd) {
            StepReadInfoAttribute part = item(pBegin, pEnd);
            ::new (&cell) Cell(part);
        });
    }

    // A bad reference is reported and left out.
    void vEntities() {
        EntityList* pHead = nullptr;
        const auto allocate = [this](std::size_t iBytes) { return info.pAllocate(iBytes); };
        vEach([&](const char* pBegin, const char* pEnd) {
            if (Entity* pEntity = AttributeEntity::pEntityRead(item(pBegin, pEnd)))
                vListAppend(pHead, pEntity, allocate);
        });
        list.m_pItems = pHead;
    }

    // By item type, each from its token: there is no block yet that a visit could hand over.
    void vItems(std::type_identity<double>) {
        vNumbers<double>([](const char* pBegin, const char* pEnd) { return toDouble(pBegin, pEnd); },
                         ReportKey::ExpectedValidRealInListFor);
    }
    void vItems(std::type_identity<long long>) {
        vNumbers<long long>([](const char* pBegin, const char* pEnd) { return toInt(pBegin, pEnd); },
                            ReportKey::ExpectedValidIntegersInListFor);
    }
    void vItems(std::type_identity<char*>) { vStrings(); }
    template <class Cell>
    void vItems(std::type_identity<Cell>) {
        vCells<Cell>();
    }
    void vItems(std::type_identity<Entity*>) { vEntities(); }
    void vItems(NoItems) {}   // a list of sets stays empty

    void vRead() {
        visitItemType(list.m_eItemType, [this](auto eItem) { vItems(eItem); });
    }
};

AttributeListValueBase::AttributeListValueBase(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    const ObjectBase* pObject = info.m_pType;
    if (!pObject && info.m_iDepth < info.m_pAttribute->types.size()) pObject = info.m_pAttribute->types[info.m_iDepth];
    if (!boInitTypeFromAttribute(pObject)) {
        StepReadInfoData& line = *info.m_pInfo;
        line.m_pCommon->m_pError->add(info.m_pEntity, ReportKey::ListTypeNotImplemented, info.m_pAttribute->sName,
                                      line.sourceText(), line.m_iLine);
        return;
    }
    Reader(*this, info).vRead();
}

}   // namespace oxa::ifc
