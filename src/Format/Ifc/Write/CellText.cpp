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

// A number of up to so many decimals and 15 digits. "size" is the double nearest to such a number when that number,
// made a whole one by a power of ten and divided again, gives it back.
struct Decimals {
    double scale;   // 10 to the power of iCount, exactly
    int iCount;
    double largest;   // 10 to the power of 15 - iCount

    [[nodiscard]] double scaled(double size) const noexcept { return std::nearbyint(size * scale); }
    [[nodiscard]] bool boFits(double size) const noexcept { return size < largest && scaled(size) / scale == size; }
};

// "%.16G" for numbers with few decimals, without the library, and provably the same digits.
//
//   Let v be the double, n = round(v * 10^k) with k = 9 or 13, and D = n / 10^k the decimal number that is to be
//   written. n < 10^15 and 10^k are exact doubles, so n / 10^k in double arithmetic is the double nearest to D. Where
//   that is v (boFits), D is a decimal number with at most 15 digits that v stands for. "%.16G" writes the 16-digit
//   number nearest to v. D, padded with zeros, is one of those; it is the nearest when |v - D| is less than half a
//   unit of the 16th digit. Scaled by 10^k that is |v * 10^k - n| < 0.5 * 10^(digits of n - 16). fma computes
//   v * 10^k - n with a single rounding, so the left side is as good as exact; the right side is a table, with 0.49
//   for 0.5, which more than covers the rounding of both.
//
// Fifteen digits and not sixteen: there are decimal numbers of 16 digits that share their double with another one.
bool boDecimalWritten(StepWriteInfo& info, double value) {
    constexpr Decimals g_few{1e9, 9, 1e6};
    constexpr Decimals g_many{1e13, 13, 1e2};
    constexpr int g_iDigits = 16;
    const double size = std::fabs(value);
    if (!(size >= 1e-4)) return false;   // below, an exponent is written
    const bool boFew = g_few.boFits(size);
    if (!boFew && !g_many.boFits(size)) return false;
    const Decimals& decimals = boFew ? g_few : g_many;
    const double scaled = decimals.scaled(size);
    const auto uScaled = static_cast<std::uint64_t>(scaled);
    char* const pBegin = info.m_number.data();
    char* const pEnd = std::to_chars(pBegin, pBegin + info.m_number.size(), uScaled).ptr;
    const auto iDigits = static_cast<int>(pEnd - pBegin);
    // Half of the 16th digit, measured like "scaled"; a little less, for the power of ten is a rounded one.
    constexpr std::array<double, g_iDigits> g_half = {0,       4.9e-16, 4.9e-15, 4.9e-14, 4.9e-13, 4.9e-12,
                                                      4.9e-11, 4.9e-10, 4.9e-9,  4.9e-8,  4.9e-7,  4.9e-6,
                                                      4.9e-5,  4.9e-4,  4.9e-3,  4.9e-2};
    if (std::fabs(std::fma(size, decimals.scale, -scaled)) >= g_half[static_cast<std::size_t>(iDigits)]) return false;
    std::string& line = info.m_line;
    if (value < 0) line.push_back('-');
    const int iWhole = iDigits - decimals.iCount;   // digits in front of the point
    const std::string_view digits(pBegin, static_cast<std::size_t>(iDigits));
    const std::size_t iLast = digits.find_last_not_of('0');
    if (iWhole > 0) {
        line.append(digits.substr(0, static_cast<std::size_t>(iWhole))).push_back('.');
        line.append(digits.substr(static_cast<std::size_t>(iWhole), iLast + 1 - static_cast<std::size_t>(iWhole)));
    } else {
        line.append("0.").append(static_cast<std::size_t>(-iWhole), '0').append(digits.substr(0, iLast + 1));
    }
    return true;
}

// "%.16G" of the C locale, with a point wherever a STEP real needs one.
void vWriteReal(StepWriteInfo& info, double value) {
    if (boWholeWritten(info, value) || boDecimalWritten(info, value)) return;
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
    const auto boPlain = [](char c) { return c >= ' ' && c <= '~' && c != '\'' && c != '\\'; };
    if (std::ranges::all_of(text, boPlain))
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

inline void vWriteReference(StepWriteInfo& info, std::size_t iId) {
    info.m_line.push_back('#');
    vWriteInteger(info, iId);
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
        if (!boFirst) info.m_pLine->m_line.push_back(',');
        boFirst = false;
        vWriteReference(*info.m_pLine, iId);
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
