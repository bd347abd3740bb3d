// SPDX-License-Identifier: Apache-2.0
// The statement of an instance: "#12=IFCWALL('...',$,#3);".
#include <cstddef>
#include <string>
#include <string_view>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/Write/CellText.h"
#include "Format/Ifc/Write/EntityNamed.h"
#include "platform/Compiler.h"

namespace oxa::ifc {

namespace {

// "#12=IFCWALL(".
char* pHead(char* p, details::TextRoom& room, std::size_t iId, std::string_view keyword) {
    p = CellText::pReference(p, iId);
    *p++ = '=';
    p = details::pCopied(room.pRoom(p, keyword.size()), keyword);
    *p = '(';
    return p + 1;
}

}   // namespace

bool Entity::boCompose(StepWriteInfo& info) const {
    if (!m_pSchemaEntity) return false;   // a slot that no statement defined
    const std::size_t iId = info.iEntityIdNamed(this);
    info.m_iId = static_cast<std::uint32_t>(iId);
    const bool boInBlocks = info.boInBlocks();
    const bool boLineEnd = boInBlocks && info.m_iBlock > 0;
    const std::size_t iUsed = boInBlocks ? info.m_iBlock : 0;
    std::string& target = boInBlocks ? info.m_block : info.m_line;
    CellText text(info, target, iUsed, iUsed + boLineEnd);
    char* p = text.room().pAt(iUsed);
    if (boLineEnd) *p++ = '\n';
    p = pHead(p, text.room(), iId, m_pSchemaEntity->sNameUpper);
    if (m_pSchemaEntity->boAbstract)
        info.m_pCommon->m_pErrors->add(nullptr, Errors::Fatal, Errors::Value, ReportKey::EntityIsAbstract,
                                       text.sSoFar(p), info.m_iId);
    if (m_pAttributes) p = text.pCells(p, getDataSize(*m_pSchemaEntity).cells, m_pAttributes, {nullptr});
    // The walk goes both ways. Forward references are numbered while their text is written. A relationship is named by
    // no other statement and is reached only from its members, so what refers to this instance is queued as well. In an
    // ordered write all are met by then, as in one of all entities as they were read.
    if (m_ppAttributesInverse && info.m_boInverses)
        for (std::size_t i = 0, n = iInverseLists(*m_pSchemaEntity); i < n; ++i)
            if (const EntityList* pReferrers = pInverseEntries()[i])
                for (const Entity* pReferrer : *pReferrers) info.iEntityIdNamed(pReferrer);
    p = details::pCopied(text.room().pRoom(p), ");");
    if (boInBlocks)
        info.vBlockGrown(text.room().iPlaceOf(p));
    else
        target.resize(text.room().iPlaceOf(p));
    return true;
}

// The first values and those that follow, then the heads of inverse lists: few instances have more than three cache
// lines.
void Entity::vFetchValues() const noexcept {
    constexpr std::size_t g_iCacheLine = 64;
    if (!m_pAttributes) return;
    const auto* const pValues = static_cast<const char*>(m_pAttributes);
    platform::vFetchToRead(pValues);
    platform::vFetchToRead(pValues + g_iCacheLine);
    platform::vFetchToRead(m_ppAttributesInverse);
}

void Entity::vFetchOutside(Wanted eWanted) const noexcept {
    if (!m_pAttributes || !m_pSchemaEntity || !m_pSchemaEntity->pDataSize.boReady()) return;
    const DataSizeEntity& layout = *m_pSchemaEntity->pDataSize.value();
    const auto* const pBlock = static_cast<const char*>(m_pAttributes);
    for (const DataSizeEntity::Cell& place : layout.outside) {
        const auto* const pCell = reinterpret_cast<const AttributeBase*>(pBlock + place.iOffset);
        platform::vFetchToRead(place.eClass == CellClass::List
                                   ? static_cast<const AttributeList*>(pCell)->m_pItems.load()
                                   : static_cast<const AttributeSelect*>(pCell)->m_pValue.load());
    }
    if (eWanted != Wanted::Named)
        for (const DataSizeEntity::Cell& place : layout.texts)
            platform::vFetchToRead(reinterpret_cast<const AttributeString*>(pBlock + place.iOffset)->m_value.load());
    if (m_ppAttributesInverse && eWanted != Wanted::Text)
        for (std::uint32_t i = 0; i < layout.iInverses; ++i) platform::vFetchToRead(pInverseEntries()[i].load());
}

void Entity::vWrite(StepWriteInfo& info) const {
    if (boCompose(info) && !info.boInBlocks()) info.vLineAdd();
}

std::string Entity::sWriteLine(const Data& data) const {
    io::WriteError errors;
    io::ThreadStringPool nowhere;
    StepWriteInfoCommon common(data.entityIdMap(false), errors, nowhere, true);
    StepWriteInfo info(common);
    return boCompose(info) ? std::move(info.m_line) : std::string();
}

}   // namespace oxa::ifc
