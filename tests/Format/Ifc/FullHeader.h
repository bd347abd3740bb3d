// SPDX-License-Identifier: Apache-2.0
// FullHeader: a header that tells its fields apart.
#pragma once

#include "Format/Ifc/IfcFileHeader.h"

namespace oxa::ifc {

// With a text of its own in every field.
inline FileHeader headerWithAll() {
    FileHeader header;
    header.description = {{"d"}, "L"};
    header.name.name = "n";
    header.name.timeStamp = "t";
    header.name.author = {"a"};
    header.name.organization = {"o"};
    header.name.preprocessorVersion = "p";
    header.name.originatingSystem = "s";
    header.name.authorization = "z";
    header.schema.schemaName = "S";
    return header;
}

}   // namespace oxa::ifc
