// SPDX-License-Identifier: Apache-2.0
// Properties: properties of elements as Python sees them: wall["Pset_WallCommon", "FireRating"], and get_psets().
//
// Threads  with the interpreter's lock held.
#pragma once

#include <span>
#include <string_view>

#include "Model/Relations.h"
#include "ModelObject.h"

namespace oxa::python {

// What a property holds: a value, a tuple, a dict of what a bounded, a table or a complex one has.
[[nodiscard]] nb::object propertyToPython(const Home& home, const oxa::Property& property);

// The value of one; NotFoundError where there is none, with near names.
[[nodiscard]] nb::object propertyGet(const EntityObject& entity, std::string_view set, std::string_view name);

// Sets it for all of them. A new property gets the type that the file's other values of that name have; else one by the
// value.
void vPropertySet(ModelObject& model, std::span<const oxa::Element> elements, std::string_view set,
                  std::string_view name, const oxa::NewValue& value);

}   // namespace oxa::python
