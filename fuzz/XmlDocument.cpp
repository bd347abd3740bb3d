// SPDX-License-Identifier: Apache-2.0
// XmlDocument: an ifcXML document is imported; the model that it gives is written and exported.

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "Fuzz.h"

namespace oxa::fuzz {

void vRun(std::string_view input) {
    ifc::File file;
    ifc::xml::Import import;
    ExactStream in(input);
    if (!import.boLoad(in) || !import.boImportHeader(file, {})) return;
    import.boImportData(file.data());
    ifc::io::WriteError errors;
    NullStream out;
    file.data().boWrite(out, errors, true);
    ifc::xml::Export xmlExport;
    xmlExport.boExportData(file.data(), {});
    (void)xmlExport.boSave(out);
}

}   // namespace oxa::fuzz
