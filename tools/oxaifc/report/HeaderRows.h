// SPDX-License-Identifier: Apache-2.0
// HeaderRows: the header of a file as verbs tell it: as a property grid shows it, or as JSON.
#pragma once

#include <string>
#include <vector>

#include "Format/Ifc/IfcFileHeader.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

struct HeaderRow {
    std::string sLabel;
    std::string sText;      // empty for a group, and for a field without a value
    bool boGroup = false;   // its fields follow it
};

// The rows of the tree, from above.
[[nodiscard]] std::vector<HeaderRow> headerRows(const ifc::FileHeader& header);
// The same as text: a line a row, fields set in.
void vHeaderWrite(const ifc::FileHeader& header, Output& output);

// The fields of FILE_DESCRIPTION and FILE_NAME under the names of ISO 10303-21: texts and lists of texts.
[[nodiscard]] Json headerJson(const ifc::FileHeader& header);

}   // namespace oxa::tool
