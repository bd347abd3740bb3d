// SPDX-License-Identifier: Apache-2.0
// The parsing constructors of the cells that hold one plain value.
//
// They validate little, and what they leave untested is part of their contract, so that files of many exporters can be
// read.
#include <cstdlib>
#include <cstring>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/IfcStepStrings.h"
#include "Format/Ifc/Read/CellReading.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Text/RealRead.h"

namespace oxa::ifc {

namespace {

constexpr auto g_eBoolean = ReportKey::ExpectedValidBooleanValueFor;
constexpr auto g_eLogical = ReportKey::ExpectedValidLogicValueFor;

// The guard in front of ".T." compares the token's length with its offset in the statement, which have nothing to do
// with each other, in unsigned arithmetic. Only a token near the statement's front can fail it, and none that ISO
// 10303-21 allows. Kept, since it decides which damaged files are reported.
bool boLongEnough(const AttributeBase::StepReadInfoAttribute& info) noexcept {
    return static_cast<std::uint64_t>(info.m_iLength) - static_cast<std::uint64_t>(info.m_iStart) >= 3;
}

const std::string* pEnumerator(StepReadInfoData& info, const def::schema::DataTypeEnum& type, std::string_view text) {
    if (info.m_pThread) return info.m_pThread->pEnumerator(type, text);
    const auto item = type.items.find(text);
    return item == type.items.end() ? nullptr : *item;
}

// One hexadecimal digit by its code alone: what is no digit gives a number all the same.
int iHexDigit(char c) noexcept {
    const int iCode = static_cast<signed char>(c);
    if (iCode <= '9') return iCode - 0x30;
    return iCode < 'a' ? iCode - 0x37 : iCode - 0x57;
}

}   // namespace

AttributeReal::AttributeReal(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    const char* const pText = details::pTextOf(info);
    double value = 0;
    if (details::boReadReal(info.m_pInfo->m_line.data(), pText, pText + info.m_iLength, value))
        m_value = value;
    else
        vReport(info, ReportKey::ExpectedValidRealValueFor);
}

AttributeInteger::AttributeInteger(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    const char* const pText = details::pTextOf(info);
    if (const auto value = toInt(pText, pText + info.m_iLength))
        m_value = *value;
    else
        vReport(info, ReportKey::ExpectedValidIntegerValueFor);
}

AttributeBoolean::AttributeBoolean(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    if (!boLongEnough(info)) {
        vReport(info, g_eBoolean);
        return;
    }
    if (info.cAt(0) != '.') vReport(info, g_eBoolean);
    switch (info.cAt(1)) {
    case 'T': m_value = 1; break;
    case 'F': m_value = 0; break;
    default: vReport(info, g_eBoolean);
    }
    if (info.cAt(2) != '.') vReport(info, g_eBoolean);
}

AttributeLogical::AttributeLogical(StepReadInfoAttribute& info) {
    m_value = LogicalValue::Unknown;
    if (boReadNull(info)) return;
    if (!boLongEnough(info)) {
        vReport(info, g_eLogical);
        return;
    }
    if (info.cAt(0) != '.') vReport(info, g_eLogical);
    switch (info.cAt(1)) {
    case 'T': m_value = LogicalValue::True; break;
    case 'F': m_value = LogicalValue::False; break;
    case 'U': m_value = LogicalValue::Unknown; break;
    default: vReport(info, g_eLogical);
    }
    if (info.cAt(2) == '.') return;
    StepReadInfoData& line = *info.m_pInfo;
    line.m_pCommon->m_pError->add(info.m_pEntity, Errors::Error, Errors::Syntax, g_eLogical, info.m_pAttribute->sName,
                                  line.sourceText(), line.m_iLine);
}

AttributeString::AttributeString(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    const char* pText = details::pTextOf(info);
    if (info.m_iLength < 2 || pText[0] != '\'' || pText[info.m_iLength - 1] != '\'') {
        m_value = static_cast<char*>(details::pAllocate(info, 1));
        vReport(info, ReportKey::ExpectedValidStringValueFor);
        return;
    }
    m_value = details::pTextRead(info, pText + 1, info.m_iLength - 2);
}

char* details::pTextDecoded(const Token& token, const char* first, std::size_t iLength) {
    thread_local std::string t_decoded;
    vIfcStrToUtf8(t_decoded, first, iLength);
    auto* pText = static_cast<char*>(pAllocate(token, t_decoded.size() + 1));
    std::memcpy(pText, t_decoded.data(), t_decoded.size());
    return pText;
}

AttributeGuid::AttributeGuid(StepReadInfoAttribute& info) : AttributeGuid() {
    if (boReadNull(info)) return;
    Guid guid;
    // The bytes in the place of the quotes are not tested.
    if (info.m_iLength != 24 || !IfcGuid::boIfcStringToGuid(guid, details::pTextOf(info) + 1)) {
        vReport(info, ReportKey::ExpectedValidGuidValueFor);
        guid.vGenerate();   // the entity keeps an identity
    }
    m_value = guid;
}

// Behind the opening quote stands one digit, the number of unused bits, and then two digits a byte, so the token has an
// odd length. The first digit is passed over: a value is whole bytes.
AttributeBinary::AttributeBinary(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    if (info.m_iLength < 3 || info.m_iLength % 2 == 0) {
        vReport(info, ReportKey::ExpectedValidBinaryValueFor);
        return;
    }
    const std::size_t iCount = (info.m_iLength - 3) / 2;
    auto* pBytes = static_cast<unsigned char*>(details::pAllocate(info, iCount));
    const char* pDigits = details::pTextOf(info) + 2;
    for (std::size_t i = 0; i < iCount; ++i, pDigits += 2) {
        const auto uHigh = static_cast<unsigned>(iHexDigit(pDigits[0])) << 4;
        pBytes[i] = static_cast<unsigned char>(uHigh | static_cast<unsigned>(iHexDigit(pDigits[1])));
    }
    m_value = pBytes;
    m_iCount = iCount;
}

AttributeEnumeration::AttributeEnumeration(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    if (info.m_iLength < 3) {
        vReport(info, ReportKey::ExpectedValidEnumerationValueFor);
        return;
    }
    const std::string_view text(details::pTextOf(info) + 1, info.m_iLength - 2);
    const def::schema::DataTypeEnum* pEnum = pEnumOf(info.m_pType, *info.m_pAttribute);
    if (const std::string* pItem = pEnum ? pEnumerator(*info.m_pInfo, *pEnum, text) : nullptr) {
        m_value = pItem->c_str();
        return;
    }
    StepReadInfoData& line = *info.m_pInfo;
    line.m_pCommon->m_pError->add(info.m_pEntity, ReportKey::NotValidEnumerationValue, text, line.sourceText(),
                                  line.m_iLine);
}

const def::schema::DataTypeEnum* AttributeEnumeration::pEnumOf(const def::schema::ObjectBase* pType,
                                                               const def::schema::Attribute& attribute) noexcept {
    if (!pType) pType = attribute.pType();
    const def::schema::DataTypeBase* pDataType = def::schema::pDataTypeOf(pType);
    if (!pDataType || pDataType->kind != def::schema::DataKind::Enumeration) return nullptr;
    return static_cast<const def::schema::DataTypeEnum*>(pDataType);
}

AttributeEntity::AttributeEntity(StepReadInfoAttribute& info) {
    if (boReadNull(info)) return;
    const char* const pText = details::pTextOf(info);
    m_value = details::pReferenced(info, pText, pText + info.m_iLength);
    if (!m_value) vReport(info, ReportKey::ExpectedValidEntityValueFor);
}

}   // namespace oxa::ifc
