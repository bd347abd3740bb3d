// SPDX-License-Identifier: Apache-2.0
// What the parsers of all cells share: "$" and "*", reports, the token at hand, and the value inside a select.
#include <exception>
#include <string_view>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Read/CellReading.h"
#include "Format/Ifc/Read/ReadContext.h"

namespace oxa::ifc {

// The nested cell of a select, of whatever class its type has. Null after a report, so that the select has no value.
AttributeBase* AttributeBase::pAttributeNew(const def::schema::Type& type, StepReadInfoAttribute& info,
                                            AttributeType* pType) {
    try {
        const CellClass eClass = cellClass(&type, *info.m_pAttribute);
        void* pCell = details::pAllocate(info, iAttributeSizeFromSchemaAttribute(type, *info.m_pAttribute));
        if (details::boCellReadQuick(eClass, pCell, info))
            *pType = attributeType(def::schema::pDataTypeOf(&type)->kind);
        else
            vAttributeNew(type, *info.m_pAttribute, pCell, &info, pType);
        return static_cast<AttributeBase*>(pCell);
    } catch (const std::exception&) {
        StepReadInfoData& line = *info.m_pInfo;
        line.m_pCommon->m_pError->add(info.m_pEntity, Errors::Fatal, Errors::Value, ReportKey::UnknownAttributeType,
                                      info.m_pAttribute->sName, line.sourceText(), line.m_iLine);
        return nullptr;
    }
}

// "$" and "*" (ISO 10303-21, 6.4): true when the token is one of them, and the parser is done. A mandatory attribute
// without a value is reported and stays undefined; the instance is kept.
bool AttributeBase::boReadNull(const StepReadInfoAttribute& info) {
    if (info.m_iLength != 1) return false;
    switch (*details::pTextOf(info)) {
    case '*': m_boDerived = true; return true;
    case '$': break;
    default: return false;
    }
    m_boUndefined = true;
    if (!info.m_pAttribute->boOptional) {
        StepReadInfoData& line = *info.m_pInfo;
        line.m_pCommon->m_pError->add(info.m_pEntity, ReportKey::InvalidNullAttribute, info.m_pAttribute->sName,
                                      line.sourceText(), line.m_iLine);
    }
    return true;
}

void AttributeBase::vReport(const StepReadInfoAttribute& info, ReportKey eKey) {
    StepReadInfoData& line = *info.m_pInfo;
    line.m_pCommon->m_pError->add(info.m_pEntity, eKey, info.m_pAttribute->sName, line.sourceText(), line.m_iLine);
}

// The byte at i of the token, counted on into the rest of the statement: parsers test the byte behind a token without
// asking for its length. 0 behind the statement.
char AttributeBase::StepReadInfoAttribute::cAt(std::size_t i) const noexcept {
    const std::string_view line = m_pInfo->m_line;
    return m_iStart + i < line.size() ? line[m_iStart + i] : '\0';
}

}   // namespace oxa::ifc
