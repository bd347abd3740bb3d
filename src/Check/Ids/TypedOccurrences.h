// SPDX-License-Identifier: Apache-2.0
// TypedOccurrences: classes that IFC2X3 tells by the type of an element alone, by the names that IFC4 has for them: an
// IfcAirTerminal is an IfcFlowTerminal with an IfcAirTerminalType (the table of the standard).
//
// For      whatever asks for a class by its name.
// Threads  any number at once.
#pragma once

#include <string>
#include <vector>

#include "schema/Schema.h"

namespace oxa::ids::detail {

struct TypedOccurrence {
    std::string sName;                             // as in IfcAirTerminal
    std::string sNameUpper;                        // as in IFCAIRTERMINAL
    const ifc::def::schema::Entity* pOccurrence;   // what elements are instances of
    const ifc::def::schema::Entity* pType;         // what their type object is an instance of
};

/// Those that the schema has no class of its own for.
[[nodiscard]] std::vector<TypedOccurrence> typedOccurrences(const ifc::def::schema::Schema& schema);

}   // namespace oxa::ids::detail
