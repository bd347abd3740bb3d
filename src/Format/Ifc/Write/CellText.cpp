// SPDX-License-Identifier: Apache-2.0
// The text of cells in a STEP file (ISO 10303-21, 6.4), to the byte.
#include "Format/Ifc/Write/CellText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

#include "Format/Ifc/IfcCellVisit.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcStepStrings.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/Text/RealText.h"
#include "Format/Ifc/Text/TextScan.h"
#include "platform/Assert.h"

namespace oxa::ifc {

using details::TextRoom;

namespace {

// "%.16G" of the C locale, with a point wherever a STEP real needs one, by the library.
char* pRealByLibrary(char* p, double value) {
    constexpr std::ptrdiff_t g_iLongest = 48;
    static_assert(g_iLongest < TextRoom::g_iRoom / 2);
    char* const pEnd = std::to_chars(p, p + g_iLongest, value, std::chars_format::general, 16).ptr;
    char* pExponent = pEnd;   // of a number without a point
    bool boPoint = false;
    for (char* pDigit = p; pDigit != pEnd; ++pDigit) {
        if (*pDigit == '.') boPoint = true;
        if (*pDigit >= 'a' && *pDigit <= 'z') *pDigit = static_cast<char>(*pDigit - 'a' + 'A');
        if (*pDigit == 'E') pExponent = std::min(pExponent, pDigit);
    }
    if (boPoint) return pEnd;
    std::memmove(pExponent + 1, pExponent, static_cast<std::size_t>(pEnd - pExponent));
    *pExponent = '.';
    return pEnd + 1;
}

// The same. Whole numbers of no more than 15 digits, most of a model's coordinates in millimetres, and those of ordinary
// size, nearly all the others, without the library.
char* pReal(char* p, double value) {
    constexpr double g_largestWhole = 1e15;
    static_assert(details::g_iNumberText + 2 < TextRoom::g_iRoom / 2);
    *p = '-';
    if (value > -g_largestWhole && value < g_largestWhole) {
        const auto iWhole = static_cast<long long>(value);
        if (static_cast<double>(iWhole) == value) {
            p = details::pNumberText(p + std::signbit(value), static_cast<std::uint64_t>(std::abs(iWhole)));
            *p = '.';
            return p + 1;
        }
    }
#if defined(OXA_HAS_UNSIGNED128)
    static_assert(details::g_iRealText + 1 < TextRoom::g_iRoom / 2);
    if (char* pEnd = details::pRealText(p + (value < 0), std::fabs(value))) return pEnd;
#endif
    return pRealByLibrary(p, value);
}

}   // namespace

void CellText::vReport(const char* p, ReportKey eKey, std::string_view sArgument) const {
    m_info.m_pCommon->m_pErrors->add(nullptr, eKey, sArgument, sSoFar(p), 0);
}

// What is an error of a file that is read is a fatal one here: the fault would be of our making.
void CellText::vFatal(const char* p, Errors::Category eCategory, ReportKey eKey, const Place& place) const {
    m_info.m_pCommon->m_pErrors->add(nullptr, Errors::Fatal, eCategory, eKey, place.pAttribute->sName, sSoFar(p),
                                     m_info.m_iId);
}

// "*" or "$" where the cell has no value, with a report on a mandatory position.
char* CellText::pNull(char* p, const AttributeBase& cell, const Place& place) {
    if (cell.m_boUndefined && !cell.m_boDerived && (place.boInList || !place.pAttribute->boOptional))
        vFatal(p, Errors::Null, ReportKey::InvalidNullAttribute, place);
    *p = cell.m_boDerived ? '*' : '$';
    return p + 1;
}

char* CellText::pEncoded(char* p, std::string_view text) {
    p = m_room.pRoom(p, text.size());
    if (char* pEnd = details::pPlainCopied(p, text)) return pEnd;
    const std::string& sEncoded = sIfcStrFromText(m_info.m_encoded, text);
    return details::pCopied(m_room.pRoom(p, sEncoded.size()), sEncoded);
}

char* CellText::pText(char* p, const char* pValue) {
    *p++ = '\'';
    if (pValue && m_boPlainText) {
        const std::string_view text(pValue);
        p = details::pCopied(m_room.pRoom(p, text.size()), text);
    } else if (pValue) {
        p = pEncoded(p, pValue);
    }
    *p = '\'';
    return p + 1;
}

char* CellText::pGuid(char* p, const AttributeGuid& cell, const Place& place) {
    const Guid guid = cell.m_value;
    if (guid.boIsNull()) vFatal(p, Errors::Value, ReportKey::ExpectedValidGuidValueFor, place);
    if (m_boPlainText) return details::pCopied(p, guid.toString());
    *p = '\'';
    IfcGuid::boIfcStringFromGuid(p + 1, guid);
    p[1 + IfcGuid::Length] = '\'';
    return p + IfcGuid::Length + 2;
}

// The digit of unused bits is always 0, whatever a file once said.
char* CellText::pBinary(char* p, const AttributeBinary& cell) {
    constexpr char g_digits[] = "0123456789ABCDEF";
    const auto iCount = static_cast<std::size_t>(cell.m_iCount.load());
    const unsigned char* pBytes = cell.m_value;
    p = m_room.pRoom(p, 2 * iCount);
    *p++ = '"';
    *p++ = '0';
    for (std::size_t i = 0; i < iCount; ++i) {
        *p++ = g_digits[pBytes[i] >> 4];
        *p++ = g_digits[pBytes[i] & 0xF];
    }
    *p = '"';
    return p + 1;
}

// Nothing for null: an empty field, as it was read. After a read the text is the schema's own, and known by its address.
char* CellText::pEnumeration(char* p, const AttributeEnumeration& cell, const Place& place) {
    const char* pValue = cell.m_value;
    if (!pValue) return p;
    const def::schema::DataTypeEnum* pEnum = AttributeEnumeration::pEnumOf(place.pType, *place.pAttribute);
    const std::string* pItem = nullptr;
    if (pEnum)
        for (const std::string& sItem : pEnum->declared)
            if (sItem.data() == pValue) pItem = &sItem;
    *p++ = '.';
    p = pEncoded(p, pItem ? std::string_view(*pItem) : std::string_view(pValue));
    *p++ = '.';
    if (pEnum && !pItem && !pEnum->items.contains(std::string_view(pValue)))
        vReport(p, ReportKey::NotValidEnumerationValue, pValue);
    return p;
}

inline char* CellText::pEntity(char* p, const AttributeEntity& cell, const Place& place) {
    if (const Entity* pNamed = cell.m_value) return pReference(p, m_info.iEntityIdNamed(pNamed));
    vReport(p, ReportKey::InvalidNullAttribute, place.pAttribute->sName);
    return p;
}

char* CellText::pSelect(char* p, const AttributeSelect& cell, const Place& place) {
    const AttributeBase* pValue = cell.m_pValue;
    const def::schema::Type* pType = cell.m_pType;
    if (!pValue) return p;
    if (cell.m_eType.load() == AttributeType::Entity) {
        const DataSizeEntity::Cell value{place.pAttribute, 0, CellClass::Entity};
        return pCells(p, {&value, 1}, pValue, {place.pAttribute, pType});
    }
    if (!pType) return p;
    p = details::pCopied(m_room.pRoom(p, pType->sNameUpper.size()), pType->sNameUpper);
    *p++ = '(';
    const DataSizeEntity::Cell value{place.pAttribute, 0, AttributeBase::cellClass(pType)};
    p = m_room.pRoom(pCells(p, {&value, 1}, pValue, {place.pAttribute, pType}));
    *p = ')';
    return p + 1;
}

// One item after the other, with a comma between each two.
template <class ItemsOfOneType, class Write>
char* CellText::pEachItem(char* p, const ItemsOfOneType& items, Write&& write) {
    if (items.empty()) return p;
    for (const auto& item : items) {
        p = write(m_room.pRoom(p), item);
        *p++ = ',';
    }
    return p - 1;
}

// Two texts in one block would lose their comma: it stands before every text that is not the first item's own.
char* CellText::pTexts(char* p, const Array<char*>& items) {
    if (items.empty()) return p;
    const char* pFirst = items[0];
    for (const Unaligned<char*>& item : items) {
        p = m_room.pRoom(p);
        if (item.load() != pFirst) *p++ = ',';
        p = pText(p, item);
    }
    return p;
}

char* CellText::pEntities(char* p, const EntityList& items) {
    char* pComma = nullptr;
    for (const Entity* pEntity : items) {
        const std::size_t iId = m_info.iEntityIdNamed(pEntity);
        if (iId == 0) {
            Assert::vTell("Format/Ifc/IfcFileAttribute",
                          "oxa::ifc::AttributeListValueBase::vWrite::<lambda_7>::operator ()",
                          "Skipping invalid reference in list");
            continue;
        }
        p = pReference(m_room.pRoom(p), iId);
        pComma = p;
        *p++ = ',';
    }
    return pComma ? pComma : p;
}

// The items of a list, without its parentheses.
struct CellText::Items {
    CellText& text;
    char* p;
    const Place& place;

    char* operator()(const Array<double>* pItems) const {
        return pEach(pItems, [](char* pTo, double value) { return pReal(pTo, value); });
    }
    char* operator()(const Array<long long>* pItems) const {
        return pEach(pItems, [](char* pTo, long long iValue) { return details::pIntegerText(pTo, iValue); });
    }
    char* operator()(const Array<char*>* pItems) const { return pItems ? text.pTexts(p, *pItems) : p; }
    char* operator()(const Array<AttributeBinary>* pItems) const {
        return pEach(pItems, [this](char* pTo, const AttributeBinary& cell) {
            return cell.boHasValue() ? text.pBinary(pTo, cell) : text.pNull(pTo, cell, place);
        });
    }
    char* operator()(const Array<AttributeSelect>* pItems) const {
        return pEach(pItems, [this](char* pTo, const AttributeSelect& cell) {
            return cell.boHasValue() ? text.pSelect(pTo, cell, place) : text.pNull(pTo, cell, place);
        });
    }
    char* operator()(const Array<AttributeList>* pItems) const {
        return pEach(pItems, [this](char* pTo, const AttributeList& cell) {
            return cell.boHasValue() ? text.pList(pTo, cell, place) : text.pNull(pTo, cell, place);
        });
    }
    char* operator()(const EntityList* pItems) const { return pItems ? text.pEntities(p, *pItems) : p; }
    char* operator()(NoItems) const { return p; }

private:
    template <class ItemsOfOneType, class Write>
    char* pEach(const ItemsOfOneType* pItems, Write&& write) const {
        return pItems ? text.pEachItem(p, *pItems, write) : p;
    }
};

char* CellText::pList(char* p, const AttributeListValueBase& list, const Place& place) {
    *p++ = '(';
    const Place placeOfItems{place.pAttribute, place.pType, true};
    p = m_room.pRoom(visitItems(list, Items{*this, p, placeOfItems}));
    *p = ')';
    return p + 1;
}

// The text of a cell that has a value.
struct CellText::Cells {
    CellText& text;
    char* p;
    const Place& place;

    char* operator()(const AttributeReal& cell) const { return pReal(p, cell.m_value); }
    char* operator()(const AttributeInteger& cell) const { return details::pIntegerText(p, cell.m_value); }
    char* operator()(const AttributeBoolean& cell) const { return pLetter(cell.m_value ? 'T' : 'F'); }
    char* operator()(const AttributeLogical& cell) const {
        const LogicalValue value = cell.m_value;
        return pLetter(value == LogicalValue::False ? 'F' : value == LogicalValue::True ? 'T' : 'U');
    }
    char* operator()(const AttributeString& cell) const { return text.pText(p, cell.m_value); }
    char* operator()(const AttributeGuid& cell) const { return text.pGuid(p, cell, place); }
    char* operator()(const AttributeBinary& cell) const { return text.pBinary(p, cell); }
    char* operator()(const AttributeEnumeration& cell) const { return text.pEnumeration(p, cell, place); }
    char* operator()(const AttributeSelect& cell) const { return text.pSelect(p, cell, place); }
    char* operator()(const AttributeList& cell) const { return text.pList(p, cell, place); }
    char* operator()(const AttributeEntity& cell) const { return text.pEntity(p, cell, place); }

private:
    [[nodiscard]] char* pLetter(char c) const noexcept {
        p[0] = '.';
        p[1] = c;
        p[2] = '.';
        return p + 3;
    }
};

char* CellText::pCells(char* p, std::span<const DataSizeEntity::Cell> cells, const void* pBlock, const Place& place) {
    if (cells.empty()) return p;
    // Field by field: a copy of what was just written in parts would wait for all of them.
    Place placeOfCell{nullptr, place.pType, place.boInList};
    for (const DataSizeEntity::Cell& each : cells) {
        p = m_room.pRoom(p);
        if (each.eClass < CellClass::Unresolved) {
            const auto& cell = *reinterpret_cast<const AttributeBase*>(static_cast<const char*>(pBlock) + each.iOffset);
            placeOfCell.pAttribute = each.pAttribute;
            if (!cell.boHasValue())
                p = pNull(p, cell, placeOfCell);
            else if (each.eClass == CellClass::Entity)   // most of all, and without a jump that is hard to foresee
                p = pEntity(p, static_cast<const AttributeEntity&>(cell), placeOfCell);
            else
                p = visitCell(cell, each.eClass, Cells{*this, p, placeOfCell});
        }
        *p++ = ',';
    }
    return p - 1;
}

void AttributeBase::vWriteAttribute(StepWriteInfoAttribute& info) const {
    vWriteAttribute(info, cellClass(info.m_pAttribute->pType()));
}

void AttributeBase::vWriteAttribute(StepWriteInfoAttribute& info, CellClass eClass) const {
    std::string& line = info.m_pLine->m_line;
    const std::size_t iBegin = line.size();
    CellText text(*info.m_pLine, line, iBegin, 0, info.m_boPlainText);
    const DataSizeEntity::Cell cell{info.m_pAttribute, 0, eClass};
    const char* const pEnd =
        text.pCells(text.room().pAt(iBegin), {&cell, 1}, this, {info.m_pAttribute, info.m_pType, info.m_boInList});
    line.resize(text.room().iPlaceOf(pEnd));
}

std::string AttributeBase::sWriteLine(const def::schema::Attribute& attribute, const Data& data,
                                      bool boPlainText) const {
    io::WriteError errors;
    io::ThreadStringPool nowhere;
    StepWriteInfoCommon common(data.entityIdMap(false), errors, nowhere, true);
    StepWriteInfo info(common);
    StepWriteInfoAttribute value{&info, &attribute, nullptr, false, boPlainText};
    vWriteAttribute(value);
    return std::move(info.m_line);
}

}   // namespace oxa::ifc
