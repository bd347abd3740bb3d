// SPDX-License-Identifier: Apache-2.0
// Parts: changes a model, takes a part of it, moves it to another schema and compares, with nothing but the installed
// libraries.
#include <iostream>
#include <sstream>

#include "Check/Check.h"
#include "Compare/Compare.h"
#include "Convert/Extract.h"
#include "Convert/SchemaMove.h"
#include "Convert/ValueFromText.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Model/Model.h"
#include "Tables/Tables.h"
#include "Tables/TextFiles.h"
#include "provider/SchemaLoader.h"

namespace {

bool boRead(oxa::ifc::File& file) {
    std::istringstream stream("ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');"
                              "FILE_SCHEMA(('IFC4'));ENDSEC;DATA;"
                              "#1=IFCMATERIAL('Oak',$,$);"
                              "#2=IFCMATERIALLIST((#1));"
                              "ENDSEC;END-ISO-10303-21;");
    const auto pError = oxa::ifc::io::ReadError::pAllocate();
    return file.boRead(stream, {}, *pError, true, {}, true);
}

}   // namespace

int main() {
    using namespace oxa;
    ifc::File before;
    ifc::File after;
    if (!boRead(before) || !boRead(after)) return 1;
    if (convert::setFromText(after.data(), *after.data().pEntityFromId(1), "Name", "Elm")) return 2;
    const compare::Result result = compare::differences({before.data(), "IFC4"}, {after.data(), "IFC4"});
    ifc::File part;
    const convert::Extracted extracted = convert::extract(after.data(), *after.data().pEntityFromId(2), part);
    const convert::SchemaMove move = convert::moveToSchema(part, *ifc::SchemaLoader::pBuiltIn("IFC2X3"));
    std::cout << result.removed.size() << " removed, " << result.added.size() << " added, " << extracted.copies.size()
              << " copied\n";
    Model model("IFC4");
    model.create("IfcMaterial", {{"Name", "Oak"}});
    std::istringstream cut("ISO-10303-21;HEADER;");
    if (checkStream(cut).verdict() == CheckVerdict::Valid) return 4;
    std::ostringstream materials;
    tables::TextFiles csv(materials, tables::TextForm::Csv);
    tables::write(model, {.file = "m", .path = {}}, csv, std::vector<std::string>{"IfcMaterial"});
    if (materials.str().find("Oak") == std::string::npos) return 5;
    return model.size() == 1 && result.removed.size() == 1 && result.added.size() == 1 &&
                   extracted.copies.size() == 2 && move.boLossless()
               ? 0
               : 3;
}
