// SPDX-License-Identifier: Apache-2.0
// Selection: the entities that a word of the command line stands for.
//
// For      verbs with a WHAT: a number as "#12" or "12", a GlobalId of 22 characters or in hexadecimal digits, and, in
//          entitiesSelected, a type; for those with a QUERY, its selector.
// Errors   Failure, with what may have been meant.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Model/Selector.h"
#include "oxaifc/formats/Model.h"

namespace oxa::tool {

// The numbers of the model must be kept ones. A type's entities come by number, none for a type that the file does
// not use; with boSubtypes those of its subtypes are among them.
[[nodiscard]] std::vector<ifc::Entity*> entitiesSelected(Model& model, const std::string& sWhat, bool boSubtypes);

// The number of the one entity that a number or a GlobalId names; empty for a word that is neither.
[[nodiscard]] std::optional<std::uint64_t> numberSelected(Model& model, const std::string& sWhat);

// One entity by number or GlobalId.
[[nodiscard]] ifc::Entity& entitySelected(Model& model, const std::string& sWhat);

// The selector that a query is. What is none ends the program, with pPlace, as "list: QUERY", in front of the reason.
[[nodiscard]] Selector selectorOf(const std::string& sQuery, const char* pPlace);

}   // namespace oxa::tool
