// The statement of an instance: "#12=IFCWALL('...',$,#3);".
#include <charconv>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcWriteFile.h"

namespace oxa::ifc {

bool Entity::boCompose(StepWriteInfo& info) const {
    if (!m_pSchemaEntity) return false;   // a slot that no statement defined
    info.m_iId = static_cast<std::uint32_t>(info.m_pCommon->iEntityIdGet(this));
    std::string& line = info.m_line;
    char* const pNumber = info.m_number.data();
    char* const pEnd = std::to_chars(pNumber, pNumber + info.m_number.size(), info.m_iId).ptr;
    line.assign(1, '#').append(pNumber, pEnd).append(1, '=');
    line.append(m_pSchemaEntity->sNameUpper).append(1, '(');
    if (m_pSchemaEntity->boAbstract)
        info.m_pCommon->m_pErrors->add(nullptr, Errors::Fatal, Errors::Value, "Error_EntityIsAbstract", line,
                                       info.m_iId);
    if (m_pAttributes) {
        bool boFirst = true;
        for (const DataSizeEntity::Cell& cell : getDataSize(*m_pSchemaEntity).cells) {
            if (!boFirst) line.push_back(',');
            boFirst = false;
            AttributeBase::StepWriteInfoAttribute value{&info, cell.pAttribute};
            reinterpret_cast<const AttributeBase*>(static_cast<const char*>(m_pAttributes) + cell.iOffset)
                ->vWriteAttribute(value);
        }
    }
    // Who refers to this instance is written too: a relationship hangs on its members by nothing else.
    if (m_ppAttributesInverse)
        for (std::size_t i = 0; i < m_pSchemaEntity->allInverseAttributes().size(); ++i)
            if (const EntityList* pReferrers = pInverseEntries()[i])
                for (const Entity* pReferrer : *pReferrers) info.m_pCommon->iEntityIdGet(pReferrer);
    line.append(");");
    return true;
}

void Entity::vWrite(StepWriteInfo& info) const {
    if (boCompose(info)) info.m_pCommon->m_pWriter->iLineAdd(info.m_line, info.m_iId);
}

std::string Entity::sWriteLine(const Data& data) const {
    io::WriteError errors;
    io::ThreadStringPool nowhere;
    StepWriteInfoCommon common(data.entityIdMap(false), errors, nowhere, true);
    StepWriteInfo info(common);
    return boCompose(info) ? std::move(info.m_line) : std::string();
}

}   // namespace oxa::ifc
