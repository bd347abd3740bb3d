// SPDX-License-Identifier: Apache-2.0
// The statement of an instance: "#12=IFCWALL('...',$,#3);".
#include <charconv>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcWriteFile.h"

namespace oxa::ifc {

bool Entity::boCompose(StepWriteInfo& info) const {
    if (!m_pSchemaEntity) return false;   // a slot that no statement defined
    const std::size_t iId = info.iEntityIdNamed(this);
    info.m_iId = static_cast<std::uint32_t>(iId);
    std::string& line = info.m_line;
    char* const pNumber = info.m_number.data();
    *pNumber = '#';
    char* const pEqual = std::to_chars(pNumber + 1, pNumber + info.m_number.size() - 1, iId).ptr;
    *pEqual = '=';
    line.assign(pNumber, pEqual + 1).append(m_pSchemaEntity->sNameUpper).push_back('(');
    if (m_pSchemaEntity->boAbstract)
        info.m_pCommon->m_pErrors->add(nullptr, Errors::Fatal, Errors::Value, ReportKey::EntityIsAbstract, line,
                                       info.m_iId);
    if (m_pAttributes) {
        bool boFirst = true;
        for (const DataSizeEntity::Cell& cell : getDataSize(*m_pSchemaEntity).cells) {
            if (!boFirst) line.push_back(',');
            boFirst = false;
            AttributeBase::StepWriteInfoAttribute value{&info, cell.pAttribute};
            reinterpret_cast<const AttributeBase*>(static_cast<const char*>(m_pAttributes) + cell.iOffset)
                ->vWriteAttribute(value, cell.eClass);
        }
    }
    // The walk goes both ways. Forward references are numbered while their text is written. A relationship is named by
    // no other statement and is reached only from its members, so what refers to this instance is queued as well. In an
    // ordered write all are met by then, and the numbers are asked for without queueing (Pass::Numbers).
    if (m_ppAttributesInverse && info.m_ePass != StepWriteInfo::Pass::Numbers)
        for (std::size_t i = 0, n = m_pSchemaEntity->allInverseAttributes().size(); i < n; ++i)
            if (const EntityList* pReferrers = pInverseEntries()[i])
                for (const Entity* pReferrer : *pReferrers) info.iEntityIdNamed(pReferrer);
    line.append(");");
    return true;
}

void Entity::vWrite(StepWriteInfo& info) const {
    if (boCompose(info)) info.vLineAdd();
}

std::string Entity::sWriteLine(const Data& data) const {
    io::WriteError errors;
    io::ThreadStringPool nowhere;
    StepWriteInfoCommon common(data.entityIdMap(false), errors, nowhere, true);
    StepWriteInfo info(common);
    return boCompose(info) ? std::move(info.m_line) : std::string();
}

}   // namespace oxa::ifc
