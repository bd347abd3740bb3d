// SPDX-License-Identifier: Apache-2.0
// CellReading: what the parsers of cells share in the innermost loop of a read, where a call would cost more than the
// work.
//
// For      EntityRead.cpp and CellRead*.cpp, inside this folder.
// Threads  one for each statement.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/Memory/List.h"
#include "Format/Ifc/Read/InstanceNumber.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "Format/Ifc/Text/TextRoom.h"
#include "Format/Ifc/Text/TextScan.h"

namespace oxa::ifc::details {

using Token = AttributeBase::StepReadInfoAttribute;

// First byte of the token.
[[nodiscard]] inline const char* pTextOf(const Token& token) noexcept {
    return token.m_pInfo->m_line.data() + token.m_iStart;
}

// Makes it the token at that place of the statement.
inline void vPlace(Token& token, const char* pBegin, const char* pEnd) noexcept {
    token.m_iStart = static_cast<std::size_t>(pBegin - token.m_pInfo->m_line.data());
    token.m_iLength = static_cast<std::size_t>(pEnd - pBegin);
}

// For what is inside of a token; its place is open.
[[nodiscard]] inline Token tokenInside(const Token& token, const def::schema::ObjectBase* pType) noexcept {
    return {token.m_pInfo, token.m_pData, token.m_pEntity, token.m_pAttribute, pType, 0, 0, token.m_iDepth + 1};
}

// Zeroed memory of the model.
[[nodiscard]] inline void* pAllocate(const Token& token, std::size_t iBytes) {
    StepReadThread* const pThread = token.m_pInfo->m_pThread;
    return pThread ? pThread->m_arena.pAllocate(iBytes) : token.m_pData->pool().pAllocate(iBytes);
}

// A list of references while it is made, in the memory of the model.
class ReferenceList {
public:
    void vAppend(const Token& token, Entity* pEntity) {
        if (!m_pHead) {
            m_pHead = static_cast<EntityList*>(pAllocate(token, sizeof(EntityList)));
            m_pHead->value = pEntity;
            m_pLast = m_pHead;
            return;
        }
        auto* const pNode = static_cast<EntityList::Node*>(pAllocate(token, sizeof(EntityList::Node)));
        pNode->value = pEntity;
        m_pLast->next = pNode;
        m_pLast = pNode;
    }
    // Null where nothing was appended.
    [[nodiscard]] EntityList* pFinished() noexcept {
        if (m_pLast != m_pHead) m_pHead->tail = m_pLast;
        return m_pHead;
    }

private:
    EntityList* m_pHead = nullptr;
    EntityList::Node* m_pLast = nullptr;
};

// The place of a number that the token names, whether its statement has been read, will be, or never comes. That the number
// was named lets the completion report the last case.
[[nodiscard]] inline Entity* pNamed(const Token& token, std::uint32_t iId) {
    StepReadInfoDataCommon& common = *token.m_pInfo->m_pCommon;
    StepReadThread* const pThread = token.m_pInfo->m_pThread;
    if (Entity* const pEntity = pThread ? pThread->pNamed(common, *token.m_pData, iId) : nullptr) return pEntity;
    EntitySlot& slot = common.slotGet(*token.m_pData, iId);
    slot.vReferencedSet(common.m_boParallel);
    return &slot.entity;
}

// A reference is "#" and a number. Null for what is none.
[[nodiscard]] inline Entity* pReferenced(const Token& token, const char* pBegin, const char* pEnd) {
    if (pEnd - pBegin < 2 || *pBegin != '#') return nullptr;
    const std::string_view line = token.m_pInfo->m_line;
    return pNamed(token, static_cast<std::uint32_t>(iReference(pBegin + 1, pEnd, line.data() + line.size())));
}

// A select's reference; false, with the cell untouched, for what is none.
[[nodiscard]] inline bool boSelectReference(AttributeSelect& cell, const Token& token, const char* pBegin,
                                            const char* pEnd) {
    Entity* const pEntity = pReferenced(token, pBegin, pEnd);
    if (!pEntity) return false;
    auto* pReference = ::new (pAllocate(token, sizeof(AttributeEntity))) AttributeEntity;
    pReference->m_value = pEntity;
    cell.m_eType = AttributeType::Entity;
    cell.m_pValue = pReference;
    return true;
}

// The text between quotes, which has something to decode.
[[nodiscard]] char* pTextDecoded(const Token& token, const char* first, std::size_t iLength);

// The text between quotes, decoded and terminated, in the memory of the model. Text without an escape, a quote or an
// 8-bit byte, as most is, is copied at once.
[[nodiscard]] inline char* pTextRead(const Token& token, const char* first, std::size_t iLength) {
    if (!boVerbatim(token.m_pInfo->m_line.data(), first, first + iLength)) return pTextDecoded(token, first, iLength);
    auto* pText = static_cast<char*>(pAllocate(token, iLength + 1));
    static_cast<void>(pCopied(pText, {first, iLength}));
    return pText;
}

// The cell of a value inside of a select, when its token is of a usual form; see EntityRead.cpp. False, with the cell
// untouched, for all else.
[[nodiscard]] bool boCellReadQuick(CellClass eClass, void* pCell, const Token& token);

}   // namespace oxa::ifc::details
