// SPDX-License-Identifier: Apache-2.0
// The parsing constructor of lists: which items an aggregate holds, and how its text becomes one block of them.
#include <array>
#include <new>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/Read/CellReading.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Text/Parameters.h"
#include "Format/Ifc/Text/RealRead.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using def::schema::ObjectBase;
using details::CutItems;
using details::ItemEnds;

// False for an aggregate that no list can be of.
bool AttributeListValueBase::boInitTypeFromAttribute(const ObjectBase* pObject) noexcept {
    const AttributeType eItems = itemType(pObject);
    if (eItems != AttributeType::Unknown) {
        m_eItemType = eItems;
        return true;
    }
    const ObjectBase* pElement = def::schema::pElementOf(pObject);
    if (pElement && !def::schema::pDataTypeOf(pElement))
        Assert::vTell("Format/Ifc/IfcFileAttribute", "oxa::ifc::AttributeListValueBase::boInitTypeFromAttribute",
                      "pDataTypeBase != nullptr");
    return false;
}

// The second half of the parsing constructors: the items of one token, by item type.
struct AttributeListValueBase::Reader {
    AttributeListValueBase& list;
    StepReadInfoAttribute& info;
    const char* pLine;
    const char* first;   // the range between the token's first and last character
    const char* last;

    Reader(AttributeListValueBase& listRead, StepReadInfoAttribute& infoRead) noexcept
        : list(listRead),
          info(infoRead),
          pLine(infoRead.m_pInfo->m_line.data()),
          first(pLine + infoRead.m_iStart + 1),
          last(infoRead.m_iLength > 2 ? first + infoRead.m_iLength - 2 : first) {}

    // Calls take(begin, end, ends) for each item, of which nothing is known yet.
    template <class Take>
    void vCut(Take&& take) const {
        CutItems cut;
        details::ItemCut<> items(pLine, first, last);
        for (bool boMore = true; boMore;) {
            boMore = items.boNext(cut);
            cut.vEach(
                [&](const char* pBegin, const char* pEnd, std::size_t i) { take(pBegin, pEnd, cut.endsInside(i)); });
        }
    }

    // Calls item(begin, end) for each item.
    template <class Item>
    void vEach(const ItemEnds& ends, Item&& item) const {
        if (ends.boAllKnown()) {
            const char* pBegin = first;
            for (std::size_t i = 0; i < ends.iCount; ++i) {
                item(pBegin, ends.pEnds[i]);
                pBegin = ends.pEnds[i] + 1;
            }
        } else {
            vCut([&](const char* pBegin, const char* pEnd, const ItemEnds&) { item(pBegin, pEnd); });
        }
    }

    // The block of the list. A block is allocated once and never grown: the items have been counted.
    template <class T>
    Array<T>& block(const ItemEnds& ends) {
        auto* pArray = Array<T>::pFromBytes(details::pAllocate(info, Array<T>::iBlockSize(ends.iCount)), ends.iCount);
        list.m_pItems = pArray;
        return *pArray;
    }

    // Numbers: one report for the list, however many items are bad; those are 0.
    template <class T, class Parse>
    void vNumbers(const ItemEnds& ends, Parse&& parse, ReportKey eKey) {
        auto* pItem = block<T>(ends).begin();
        bool boBad = false;
        vEach(ends, [&](const char* pBegin, const char* pEnd) {
            T value{};
            if (parse(pBegin, pEnd, value))
                *pItem = value;
            else
                boBad = true;
            ++pItem;
        });
        if (boBad) vReport(info, eKey);
    }
    void vItems(std::type_identity<double>, const ItemEnds& ends) {
        vNumbers<double>(
            ends,
            [this](const char* pBegin, const char* pEnd, double& value) {
                return details::boReadReal(pLine, pBegin, pEnd, value);
            },
            ReportKey::ExpectedValidRealInListFor);
    }
    void vItems(std::type_identity<long long>, const ItemEnds& ends) {
        const char* const pReadable = pLine + info.m_pInfo->m_line.size();
        vNumbers<long long>(
            ends,
            [pReadable](const char* pBegin, const char* pEnd, long long& value) {
                if (pReadable - pBegin >= 8)
                    if (const details::Digits digits = details::shortNumber(pBegin);
                        digits.iCount > 0 && digits.iCount == pEnd - pBegin) {
                        value = digits.uValue;
                        return true;
                    }
                const auto number = toInt(pBegin, pEnd);
                value = number.value_or(0);
                return number.has_value();
            },
            ReportKey::ExpectedValidIntegersInListFor);
    }

    // Texts: the quotes are not checked, nothing is reported, and an item too short for them is an empty text.
    void vItems(std::type_identity<char*>, const ItemEnds& ends) {
        auto* pItem = block<char*>(ends).begin();
        vEach(ends, [&](const char* pBegin, const char* pEnd) {
            const auto iLength = static_cast<std::size_t>(pEnd - pBegin);
            *pItem++ =
                iLength < 2 ? details::pTextRead(info, pBegin, 0) : details::pTextRead(info, pBegin + 1, iLength - 2);
        });
    }

    // A bad reference is reported and left out.
    void vItems(std::type_identity<Entity*>, const ItemEnds& ends) {
        details::ReferenceList references;
        vEach(ends, [&](const char* pBegin, const char* pEnd) {
            if (Entity* const pEntity = details::pReferenced(info, pBegin, pEnd))
                references.vAppend(info, pEntity);
            else
                vReport(info, ReportKey::ExpectedValidEntityValueFor);
        });
        list.m_pItems = references.pFinished();
    }

    template <class Cell>
    void vItems(std::type_identity<Cell>, const ItemEnds& ends) {
        auto* pItem = block<Cell>(ends).begin();
        StepReadInfoAttribute item = details::tokenInside(info, nullptr);
        vEach(ends, [&](const char* pBegin, const char* pEnd) {
            details::vPlace(item, pBegin, pEnd);
            ::new (pItem++) Cell(item);
        });
    }
    // Rows, cut in passing.
    void vItems(std::type_identity<AttributeList>, const ItemEnds& ends) {
        auto* pItem = block<AttributeList>(ends).begin();
        StepReadInfoAttribute item = details::tokenInside(info, nullptr);
        const auto& types = info.m_pAttribute->types;
        const AttributeType eRowItems =
            item.m_iDepth < types.size() ? itemType(types[item.m_iDepth]) : AttributeType::Unknown;
        vCut([&](const char* pBegin, const char* pEnd, const ItemEnds& row) {
            details::vPlace(item, pBegin, pEnd);
            if (row.pEnds && eRowItems != AttributeType::Unknown)
                ::new (pItem++) AttributeList(item, eRowItems, row);
            else
                ::new (pItem++) AttributeList(item);
        });
    }
    void vItems(NoItems, const ItemEnds&) {}   // a list of sets stays empty

    // Of a token of which nothing is known yet.
    void vRead() {
        std::array<const char*, ItemEnds::g_iMost> ends;
        ItemEnds found{0, ends.data()};
        vCut([&](const char*, const char* pEnd, const ItemEnds&) {
            if (found.iCount < ends.size()) ends[found.iCount] = pEnd;
            ++found.iCount;
        });
        vRead(found);
    }

    // By item type, each from its token: there is no block yet that a visit could hand over.
    void vRead(const ItemEnds& ends) {
        visitItemType(list.m_eItemType, [&](auto eItem) { vItems(eItem, ends); });
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

AttributeListValueBase::AttributeListValueBase(StepReadInfoAttribute& info, AttributeType eItemType,
                                               const details::ItemEnds& ends) {
    m_eItemType = eItemType;
    Reader(*this, info).vRead(ends);
}

}   // namespace oxa::ifc
