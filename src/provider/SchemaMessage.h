// SPDX-License-Identifier: Apache-2.0
/// @file
/// SchemaMessage: why a text gave no schema.
///
/// For      callers of SchemaLoader, and all of this folder.
#pragma once

#include <string>

namespace oxa::ifc {

/// One fault in an EXPRESS text or a fact table. Line and column count from 1, the column in bytes; a byte
/// order mark is no column. A fault of the text as a whole stands at 1, 1.
struct SchemaMessage {
    unsigned iLine = 1;     ///< from 1
    unsigned iColumn = 1;   ///< from 1, in bytes
    std::string sText;      ///< what is wrong there, in English
};

}   // namespace oxa::ifc
