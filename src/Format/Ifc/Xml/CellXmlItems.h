// SPDX-License-Identifier: Apache-2.0
// CellXmlItems: the texts of a list's items, as the import has them: views into a document.
//
// For      IfcXmlImportValues.cpp; AttributeBase::boValueAsXmlStringsSet is the same for callers with strings.
// Threads  as the cell.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileAttribute.h"

namespace oxa::ifc {

// False, with the flags as they were, where the texts can't be taken. "object" is the type of the list, "path" what its
// items are.
bool boItemTextsSet(AttributeList& list, const def::schema::ObjectBase& object, std::span<const std::string_view> texts,
                    const def::schema::Attribute& attribute, Data& data,
                    const std::vector<const def::schema::ObjectBase*>& path);

}   // namespace oxa::ifc
