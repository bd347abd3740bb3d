// SPDX-License-Identifier: Apache-2.0
// SimpleForm: the simple text form of a fragment is read and written.

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Fuzz.h"
#include "provider/SchemaLoader.h"

namespace oxa::fuzz {

void vRun(std::string_view input) {
    static const ifc::def::SchemaPset& schema = *ifc::SchemaLoader::pBuiltIn("IFC4");
    ifc::FileSimple file(schema);
    ifc::io::ReadError errors;
    ExactStream in(input);
    file.boRead(in, {}, errors, {}, true);
    ifc::io::WriteError writeErrors;
    NullStream out;
    file.boWrite(nullptr, out, writeErrors, true);
    const ifc::Entity* pRoot = file.pRootEntity();
    if (pRoot && pRoot->pSchemaEntity()) file.boWrite(pRoot, out, writeErrors, true);
}

}   // namespace oxa::fuzz
