// SPDX-License-Identifier: Apache-2.0
// ValueText: from a word of the command line to the value of an attribute.
//
//   text           as it is, or between quotes, '' for one of them: where it is "$" or has a "," in a list
//   number         12, -1.5, 1e3
//   true, unknown  or .T., .U.; any case
//   ELEMENT        an enumerator, or .ELEMENT.; any case
//   #12            an entity of the file
//   $              no value
//   IFCLABEL(x)    a value of a select, with its type
//   (a,b,c)        a list; a list of lists has rows like it
//   0A1B           a binary, in pairs of hexadecimal digits
//
// Not for  the grammar of files (ISO 10303-21): that is stricter and the library's.
// Errors   Failure, with the entity as it was.
#pragma once

#include <string>
#include <string_view>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/formats/Model.h"

namespace oxa::tool {

// Sets the attribute of that name, in any case.
void vAttributeSet(Model& model, ifc::Entity& entity, const std::string& sName, std::string_view value);

}   // namespace oxa::tool
