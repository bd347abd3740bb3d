// SPDX-License-Identifier: Apache-2.0
// ChangeProperty IN NAME VALUE OUT: gives every single-valued property of that name a new text, and writes the file
// back with the instance numbers that it had.
#include <fstream>
#include <iostream>
#include <string>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcTypeSelectBase.h"

using namespace oxa::ifc;
using def::schema::AttributeName;
using def::schema::ObjectName;

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "usage: ChangeProperty IN NAME VALUE OUT\n";
        return 2;
    }
    std::ifstream stream(argv[1], std::ios::binary);
    File file;
    const auto pReadError = io::ReadError::pAllocate();
    if (!file.boRead(stream, {}, *pReadError, true, {}, false)) {
        pReadError->vErrorsWrite(std::cerr);
        return 1;
    }
    Data& data = file.data();
    const def::schema::Type* pLabel = data.pSchema()->pTypeFromName(ObjectName("IFCLABEL"));
    const types::IfcSelectBase value(pLabel, std::string(argv[3]));
    int iChanged = 0;
    const auto [first, last] = data.range(ObjectName("IFCPROPERTYSINGLEVALUE"), true);
    for (auto entity = first; entity != last; ++entity) {
        std::string sName;
        if (!(*entity)->boValueGet(AttributeName("Name"), sName) || sName != argv[2]) continue;
        iChanged += (*entity)->boValueSet(AttributeName("NominalValue"), value, data);
    }
    std::cout << iChanged << " properties changed\n";

    std::ofstream out(argv[4], std::ios::binary);
    const auto pWriteError = io::WriteError::pAllocate();
    const bool boWritten = file.boWrite(out, *pWriteError, {}, false) && out.flush().good();
    pWriteError->vErrorsWrite(std::cerr);
    return boWritten ? 0 : 1;
}
