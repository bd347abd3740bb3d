// SPDX-License-Identifier: Apache-2.0
// The parsing constructor of select values: "#5", or a type's keyword and a value in parentheses.
#include <cstring>
#include <new>
#include <string_view>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/Read/CellReading.h"
#include "Format/Ifc/Read/ReadContext.h"

namespace oxa::ifc {

AttributeSelect::AttributeSelect(StepReadInfoAttribute& info) {
    constexpr auto g_eReport = ReportKey::ExpectedValidSelectValueFor;
    if (boReadNull(info)) return;
    if (info.cAt(0) == '#') {
        const char* const pText = details::pTextOf(info);
        if (details::boSelectReference(*this, info, pText, pText + info.m_iLength)) return;
        m_eType = AttributeType::Entity;   // of one that is reported
        void* pCell = details::pAllocate(info, sizeof(AttributeEntity));
        m_pValue = ::new (pCell) AttributeEntity(info);
        return;
    }
    // A hostile file can nest typed values as deep as it is long, and each level is one of the stack's.
    if (info.m_iDepth >= g_iDepthLimit) {
        vReport(info, g_eReport);
        return;
    }

    // The parenthesis is looked for in the rest of the statement, not only in the token: a bare value that stands
    // before others takes all up to the next one for its name, a bare value at the end finds none.
    const std::string_view line = info.m_pInfo->m_line;
    const std::size_t iParenthesis = info.m_pInfo->iParenthesisFind(info.m_iStart);
    if (iParenthesis == std::string_view::npos) {
        m_boUndefined = true;
        vReport(info, g_eReport);
        return;
    }
    const def::schema::Schema* pSchema = info.m_pData->pSchema();
    if (!pSchema) return;
    const std::string_view name = line.substr(info.m_iStart, iParenthesis - info.m_iStart);
    const def::schema::Type* pType = nullptr;
    if (StepReadThread* pThread = info.m_pInfo->m_pThread)
        pType = pThread->pTypeFromKeyword(*pSchema, name);
    else if (name.find(',') == std::string_view::npos)   // see there
        pType = pSchema->pTypeFromName(def::schema::ObjectName(name));
    if (!pType) {
        vReport(info, g_eReport);
        return;
    }

    m_pType = pType;
    // The token's last character is left out, whatever it is.
    const std::size_t iInside = iParenthesis + 1;
    const std::size_t iEnd = info.m_iStart + info.m_iLength - (info.m_iLength ? 1 : 0);
    StepReadInfoAttribute inside = details::tokenInside(info, pType);
    inside.m_iStart = iInside;
    inside.m_iLength = iEnd > iInside ? iEnd - iInside : 0;
    AttributeType eType = AttributeType::Unknown;
    m_pValue = pAttributeNew(*pType, inside, &eType);
    m_eType = eType;
}

}   // namespace oxa::ifc
