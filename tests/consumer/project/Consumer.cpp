// SPDX-License-Identifier: Apache-2.0
// Consumer: reads a model of two entities with nothing but the installed library.
#include <iostream>
#include <sstream>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"

int main() {
    std::istringstream stream("ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');FILE_NAME('','',(''),(''),'','','');"
                              "FILE_SCHEMA(('IFC4'));ENDSEC;DATA;"
                              "#1=IFCDIRECTION((0.,0.,1.));"
                              "#2=IFCCARTESIANPOINT((0.,0.,0.));"
                              "ENDSEC;END-ISO-10303-21;");
    oxa::ifc::File file;
    const auto pError = oxa::ifc::io::ReadError::pAllocate();
    const bool boRead = file.boRead(stream, {}, *pError, true, {}, true);
    const auto iCount = file.data().entities().size();
    std::cout << iCount << " entities\n";
    return boRead && iCount == 2 ? 0 : 1;
}
