// SPDX-License-Identifier: Apache-2.0
// The text of cells in a STEP file (ISO 10303-21, 6.4), to the byte.
#include <algorithm>
#include <array>
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

using Info = AttributeBase::StepWriteInfoAttribute;

namespace {

void vReport(const Info& info, ReportKey eKey, std::string_view sArgument) {
    info.m_pLine->m_pCommon->m_pErrors->add(nullptr, eKey, sArgument, info.m_pLine->m_line, 0);
}

// What is an error of a file that is read is a fatal one here: the fault would be of our making.
void vFatal(const Info& info, Errors::Category eCategory, ReportKey eKey) {
    info.m_pLine->m_pCommon->m_pErrors->add(nullptr, Errors::Fatal, eCategory, eKey, info.m_pAttribute->sName,
                                            info.m_pLine->m_line, info.m_pLine->m_iId);
}

// Writes "*" or "$" where the cell has no value, with a report on a mandatory position; true when that was all.
bool boNullWritten(const AttributeBase& cell, const Info& info) {
    if (cell.boHasValue()) return false;
    const bool boMandatory = info.m_boInList || !info.m_pAttribute->boOptional;
    if (boMandatory && cell.m_boUndefined && !cell.m_boDerived)
        vFatal(info, Errors::Null, ReportKey::InvalidNullAttribute);
    info.m_pLine->m_line.push_back(cell.m_boDerived ? '*' : '$');
    return true;
}

template <class Number>
inline void vWriteInteger(StepWriteInfo& info, Number number) {
    char* const pBegin = info.m_number.data();
    info.m_line.append(pBegin, std::to_chars(pBegin, pBegin + info.m_number.size(), number).ptr);
}

// Whole numbers of no more than 15 digits, most of a model's coordinates in millimetres.
bool boWholeWritten(StepWriteInfo& info, double value) {
    constexpr double g_largestWhole = 1e15;
    if (!(value > -g_largestWhole && value < g_largestWhole)) return false;
    const auto iWhole = static_cast<long long>(value);
    if (static_cast<double>(iWhole) != value || iWhole == 0) return false;
    vWriteInteger(info, iWhole);
    info.m_line.push_back('.');
    return true;
}

// Those of ordinary size, nearly all that are no whole numbers.
bool boOrdinaryWritten([[maybe_unused]] StepWriteInfo& info, [[maybe_unused]] double value) {
#if defined(OXA_HAS_UNSIGNED128)
    char* const pBegin = info.m_number.data();
    static_assert(std::tuple_size_v<decltype(info.m_number)> > details::g_iRealText);
    *pBegin = '-';
    const char* const pEnd = details::pRealText(pBegin + 1, std::fabs(value));
    if (!pEnd) return false;
    info.m_line.append(std::string_view(value < 0 ? pBegin : pBegin + 1, pEnd));
    return true;
#else
    return false;
#endif
}

// "%.16G" of the C locale, with a point wherever a STEP real needs one.
void vWriteReal(StepWriteInfo& info, double value) {
    if (boWholeWritten(info, value) || boOrdinaryWritten(info, value)) return;
    char* const pBegin = info.m_number.data();
    char* const pEnd = std::to_chars(pBegin, pBegin + info.m_number.size(), value, std::chars_format::general, 16).ptr;
    char* pExponent = pEnd;   // of a number without a point
    bool boPoint = false;
    for (char* p = pBegin; p != pEnd; ++p) {
        if (*p == '.') boPoint = true;
        if (*p >= 'a' && *p <= 'z') *p = static_cast<char>(*p - 'a' + 'A');
        if (*p == 'E') pExponent = std::min(pExponent, p);
    }
    std::string& line = info.m_line;
    if (boPoint)
        line.append(pBegin, pEnd);
    else
        line.append(pBegin, pExponent).append(1, '.').append(pExponent, pEnd);
}

void vWriteEncoded(StepWriteInfo& info, std::string_view text) {
    if (details::boPlainText(text))
        info.m_line.append(text);
    else
        info.m_line.append(sIfcStrFromText(info.m_encoded, text));
}

void vWriteText(const Info& info, const char* pText) {
    std::string& line = info.m_pLine->m_line;
    line.push_back('\'');
    if (pText && info.m_boPlainText)
        line.append(pText);
    else if (pText)
        vWriteEncoded(*info.m_pLine, pText);
    line.push_back('\'');
}

void vWriteGuid(const AttributeGuid& cell, const Info& info) {
    const Guid guid = cell.m_value;
    if (guid.boIsNull()) vFatal(info, Errors::Value, ReportKey::ExpectedValidGuidValueFor);
    std::string& line = info.m_pLine->m_line;
    if (info.m_boPlainText) {
        line.append(guid.toString());
        return;
    }
    char text[IfcGuid::Length + 1];
    IfcGuid::boIfcStringFromGuid(text, guid);
    line.append(1, '\'').append(text, IfcGuid::Length).append(1, '\'');
}

// The digit of unused bits is always 0, whatever a file once said.
void vWriteBinary(const AttributeBinary& cell, const Info& info) {
    constexpr char g_digits[] = "0123456789ABCDEF";
    std::string& line = info.m_pLine->m_line;
    const auto iCount = static_cast<std::size_t>(cell.m_iCount.load());
    const unsigned char* pBytes = cell.m_value;
    line.reserve(line.size() + 2 * iCount + 5);
    line.append("\"0");
    for (std::size_t i = 0; i < iCount; ++i) {
        line.push_back(g_digits[pBytes[i] >> 4]);
        line.push_back(g_digits[pBytes[i] & 0xF]);
    }
    line.push_back('"');
}

void vWriteEnumeration(const AttributeEnumeration& cell, const Info& info) {
    const char* pText = cell.m_value;
    if (!pText) return;   // an empty field, as it was read
    std::string& line = info.m_pLine->m_line;
    line.push_back('.');
    vWriteEncoded(*info.m_pLine, pText);
    line.push_back('.');
    const def::schema::DataTypeEnum* pEnum = AttributeEnumeration::pEnumOf(info.m_pType, *info.m_pAttribute);
    if (pEnum && !pEnum->items.contains(std::string_view(pText)))
        vReport(info, ReportKey::NotValidEnumerationValue, pText);
}

// Behind a comma, where it is not the first of a list.
inline void vWriteReference(StepWriteInfo& info, std::size_t iId, bool boComma = false) {
    char* const pBegin = info.m_number.data();
    pBegin[0] = ',';
    pBegin[1] = '#';
    const char* const pEnd = std::to_chars(pBegin + 2, pBegin + info.m_number.size(), iId).ptr;
    info.m_line.append(std::string_view(boComma ? pBegin : pBegin + 1, pEnd));
}

void vWriteEntity(const AttributeEntity& cell, const Info& info) {
    const Entity* pEntity = cell.m_value;
    if (!pEntity) {
        vReport(info, ReportKey::InvalidNullAttribute, info.m_pAttribute->sName);
        return;
    }
    vWriteReference(*info.m_pLine, info.m_pLine->iEntityIdNamed(pEntity));
}

// Cells whose text has the null step in front and nothing else around it.
void vWriteCell(const AttributeBase& cell, CellClass eClass, const Info& info);

void vWriteSelect(const AttributeSelect& cell, const Info& info) {
    const AttributeBase* pValue = cell.m_pValue;
    const def::schema::Type* pType = cell.m_pType;
    const Info nested{info.m_pLine, info.m_pAttribute, pType, false, info.m_boPlainText};
    if (!pValue) return;
    if (cell.m_eType.load() == AttributeType::Entity) {
        const auto& entity = static_cast<const AttributeEntity&>(*pValue);
        if (!boNullWritten(entity, nested)) vWriteEntity(entity, nested);
        return;
    }
    if (!pType) return;
    std::string& line = info.m_pLine->m_line;
    line.append(pType->sNameUpper).append(1, '(');
    vWriteCell(*pValue, AttributeBase::cellClass(pType), nested);
    line.push_back(')');
}

// One item after the other, with a comma before every one but the first.
template <class Items, class Write>
void vWriteItems(const Items* pItems, const Info& info, Write&& write) {
    if (!pItems) return;
    bool boFirst = true;
    for (const auto& item : *pItems) {
        if (!boFirst) info.m_pLine->m_line.push_back(',');
        boFirst = false;
        write(item);
    }
}

// Two texts in one block would lose their comma: it stands before every text that is not the first item's own.
void vWriteTexts(const Array<char*>* pArray, const Info& info) {
    if (!pArray || pArray->empty()) return;
    const char* pFirst = (*pArray)[0];
    for (const Unaligned<char*>& item : *pArray) {
        if (item.load() != pFirst) info.m_pLine->m_line.push_back(',');
        vWriteText(info, item);
    }
}

void vWriteEntities(const EntityList* pHead, const Info& info) {
    if (!pHead) return;
    bool boFirst = true;
    for (const Entity* pEntity : *pHead) {
        const std::size_t iId = info.m_pLine->iEntityIdNamed(pEntity);
        if (iId == 0) {
            Assert::vTell("Format/Ifc/IfcFileAttribute",
                          "oxa::ifc::AttributeListValueBase::vWrite::<lambda_7>::operator ()",
                          "Skipping invalid reference in list");
            continue;
        }
        vWriteReference(*info.m_pLine, iId, !boFirst);
        boFirst = false;
    }
}

void vWriteList(const AttributeListValueBase& list, const Info& info);

// The items of a list, without its parentheses.
struct ItemsWriter {
    const Info& info;

    void operator()(const Array<double>* pItems) const {
        vWriteItems(pItems, info, [this](double value) { vWriteReal(*info.m_pLine, value); });
    }
    void operator()(const Array<long long>* pItems) const {
        vWriteItems(pItems, info, [this](long long iValue) { vWriteInteger(*info.m_pLine, iValue); });
    }
    void operator()(const Array<char*>* pItems) const { vWriteTexts(pItems, info); }
    void operator()(const Array<AttributeBinary>* pItems) const {
        vWriteItems(pItems, info, [this](const AttributeBinary& cell) {
            if (!boNullWritten(cell, info)) vWriteBinary(cell, info);
        });
    }
    void operator()(const Array<AttributeSelect>* pItems) const {
        vWriteItems(pItems, info, [this](const AttributeSelect& cell) {
            if (!boNullWritten(cell, info)) vWriteSelect(cell, info);
        });
    }
    void operator()(const Array<AttributeList>* pItems) const {
        vWriteItems(pItems, info, [this](const AttributeList& cell) {
            if (!boNullWritten(cell, info)) vWriteList(cell, info);
        });
    }
    void operator()(const EntityList* pItems) const { vWriteEntities(pItems, info); }
    void operator()(NoItems) const {}
};

void vWriteList(const AttributeListValueBase& list, const Info& infoList) {
    Info info = infoList;
    info.m_boInList = true;
    std::string& line = info.m_pLine->m_line;
    line.push_back('(');
    visitItems(list, ItemsWriter{info});
    line.push_back(')');
}

// The text of a cell that has a value.
struct CellWriter {
    const Info& info;

    void operator()(const AttributeReal& cell) const { vWriteReal(*info.m_pLine, cell.m_value); }
    void operator()(const AttributeInteger& cell) const { vWriteInteger(*info.m_pLine, cell.m_value.load()); }
    void operator()(const AttributeBoolean& cell) const {
        info.m_pLine->m_line.append(cell.m_value ? ".T." : ".F.", 3);
    }
    void operator()(const AttributeLogical& cell) const {
        const LogicalValue value = cell.m_value;
        info.m_pLine->m_line.append(value == LogicalValue::False  ? ".F."
                                    : value == LogicalValue::True ? ".T."
                                                                  : ".U.",
                                    3);
    }
    void operator()(const AttributeString& cell) const { vWriteText(info, cell.m_value); }
    void operator()(const AttributeGuid& cell) const { vWriteGuid(cell, info); }
    void operator()(const AttributeBinary& cell) const { vWriteBinary(cell, info); }
    void operator()(const AttributeEnumeration& cell) const { vWriteEnumeration(cell, info); }
    void operator()(const AttributeSelect& cell) const { vWriteSelect(cell, info); }
    void operator()(const AttributeList& cell) const { vWriteList(cell, info); }
    void operator()(const AttributeEntity& cell) const { vWriteEntity(cell, info); }
};

void vWriteCell(const AttributeBase& cell, CellClass eClass, const Info& info) {
    if (eClass >= CellClass::Unresolved || boNullWritten(cell, info)) return;
    visitCell(cell, eClass, CellWriter{info});
}

}   // namespace

void AttributeBase::vWriteAttribute(StepWriteInfoAttribute& info) const {
    vWriteCell(*this, cellClass(info.m_pAttribute->pType()), info);
}

void AttributeBase::vWriteAttribute(StepWriteInfoAttribute& info, CellClass eClass) const {
    vWriteCell(*this, eClass, info);
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
