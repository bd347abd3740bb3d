// SPDX-License-Identifier: Apache-2.0
// What a document lacks, instance by instance, and why.
#include <string>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlExportWalk.h"

namespace oxa::ifc::xml {

namespace {

class NoLines final : public io::IfcLineWriterInterface {
public:
    std::size_t iLineAdd(std::string&, unsigned) override { return 0; }
    void vFinish() override {}
};

// Meets what the project leads to: the instances that a STEP file of the model would hold, found the same way.
void vMeetConnected(StepWriteInfoCommon& common, const Data& data) {
    StepWriteInfo info(common);
    common.iEntityIdGet(data.pProject());
    while (!common.m_queue.empty()) {
        const Entity* pEntity = common.m_queue.front();
        common.m_queue.pop_front();
        pEntity->vWrite(info);
    }
}

}   // namespace

void Export::vLeftOutReport(const Data& data, Errors& report) const {
    std::vector<const Entity*> missing;
    for (const Entity* pEntity : data.entities())
        if (pEntity->pSchemaEntity() && !m_pExported->contains(pEntity)) missing.push_back(pEntity);
    if (missing.empty()) return;
    io::WriteError errors;   // of the values, which are told when a STEP file is written
    NoLines nowhere;
    StepWriteInfoCommon connected(data.entityIdMap(false), errors, nowhere, true);
    vMeetConnected(connected, data);
    for (const Entity* pEntity : missing) {
        const std::string sInstance =
            '#' + std::to_string(data.iIdFromEntity(*pEntity)) + ' ' + pEntity->schemaEntity().sName;
        if (connected.boMet(*pEntity))
            report.add(pEntity, ReportKey::EntityWithoutForm, sInstance, {}, 0);
        else
            report.add(pEntity, ReportKey::EntityNotConnected, sInstance, {}, 0);
    }
}

}   // namespace oxa::ifc::xml
