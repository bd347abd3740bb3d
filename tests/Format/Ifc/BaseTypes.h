// SPDX-License-Identifier: Apache-2.0
// BaseTypes: the start of the small schemas that these tests write: a defined type for each base type of EXPRESS.
#pragma once

#include <string>

namespace oxa::ifc {

inline const std::string g_sBaseTypes = R"(
        TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcLengthMeasure = REAL; END_TYPE;
        TYPE IfcNumeric = NUMBER; END_TYPE;
        TYPE IfcCount = INTEGER; END_TYPE;
        TYPE IfcFlag = BOOLEAN; END_TYPE;
        TYPE IfcAnswer = LOGICAL; END_TYPE;
        TYPE IfcBlob = BINARY; END_TYPE;
)";

}   // namespace oxa::ifc
