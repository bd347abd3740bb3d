// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Read/ReadContext.h"

#include "Format/Ifc/Text/Keyword.h"

namespace oxa::ifc {

void StepReadInfoDataCommon::vUpdateSchemaCache(const def::schema::Schema& schema) {
    m_pRootSchema = schema.pEntityFromName(def::schema::ObjectName("IFCROOT"));
}

std::size_t StepReadInfoData::iParenthesisFind(std::size_t iStart) noexcept {
    if (iStart >= m_iSearched && iStart <= m_iParenthesis) return m_iParenthesis;
    m_iSearched = iStart;
    const char* const pEnd = m_line.data() + m_line.size();
    const char* const pFound = iStart < m_line.size() ? details::pFindOpening(m_line.data() + iStart, pEnd) : nullptr;
    m_iParenthesis = pFound ? static_cast<std::size_t>(pFound - m_line.data()) : std::string::npos;
    return m_iParenthesis;
}

}   // namespace oxa::ifc
