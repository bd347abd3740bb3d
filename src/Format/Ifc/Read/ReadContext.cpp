// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/Read/ReadContext.h"

namespace oxa::ifc {

void StepReadInfoDataCommon::vUpdateSchemaCache(const def::schema::Schema& schema) {
    m_pRootSchema = schema.pEntityFromName(def::schema::ObjectName("IFCROOT"));
}

}   // namespace oxa::ifc
