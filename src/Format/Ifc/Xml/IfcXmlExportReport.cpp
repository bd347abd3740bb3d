// SPDX-License-Identifier: Apache-2.0
// What a document lacks, instance by instance, and why.
#include <string>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlExportWalk.h"

namespace oxa::ifc::xml {

void Export::vLeftOutReport(const Data& data, Errors& report) const {
    std::vector<const Entity*> missing;
    for (const Entity* pEntity : data.entities())
        if (pEntity->pSchemaEntity() && !m_pExported->contains(pEntity)) missing.push_back(pEntity);
    if (missing.empty()) return;
    // What the project leads to: what a STEP file of the model would hold.
    WriteInfoCommon connected(data.entityIdMap(false));
    connected.iEntityIdGet(data.pProject());
    data.vMeet(connected);
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
