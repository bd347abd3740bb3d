// SPDX-License-Identifier: Apache-2.0
// Values: values of attributes as Python's own, and back.
//
// To       None; bool; int; float; str (of a logical "unknown" the str "UNKNOWN"); bytes; a tuple; oxaifc.Entity;
//          oxaifc.Derived for "*"; oxaifc.TypedValue for what a select wraps in a type.
// From     the same, with lists and any other iterable for tuples, and what behaves as an int or a float, as numbers of
//          NumPy. Whether the value fits, the model decides.
// Threads  with the interpreter's lock held.
#pragma once

#include <nanobind/nanobind.h>

#include <string>
#include <string_view>

#include "Model/NewValue.h"
#include "Model/Value.h"
#include "ModelObject.h"
#include "schema/Schema.h"

namespace oxa::python {

// A value with the type that a select wraps it in: oxaifc.TypedValue.
struct TypedObject {
    std::string sType;
    nb::object value;
    nb::object entity{};          // that it was taken from; null for one of its own
    std::size_t iAttribute = 0;   // of that
};

// "owner" is the entity that the value is of, for TypedValue::wrappedValue; may be null.
[[nodiscard]] nb::object valueToPython(const Home& home, const oxa::Value& value, nb::handle owner = {},
                                       std::size_t iAttribute = 0);
// "where" is for messages, as in "IfcWall: Name".
[[nodiscard]] oxa::NewValue valueFromPython(nb::handle object);

// The same for an attribute: of a logical one "UNKNOWN" is no text. By name: any, also one that the type does not have.
[[nodiscard]] oxa::NewValue attributeFromPython(const oxa::ifc::def::schema::Attribute& attribute, nb::handle object);
[[nodiscard]] oxa::NewValue attributeFromPython(const oxa::ifc::def::schema::Entity& type, std::string_view name,
                                                nb::handle object);

// UTF-8 to str; bytes that are none are replaced.
[[nodiscard]] nb::object textToPython(std::string_view text);
// A str as UTF-8; it lives as long as the object.
[[nodiscard]] std::string_view textFromPython(nb::handle object);

// What stands behind an oxaifc.TypedValue, null behind all else.
[[nodiscard]] TypedObject* typedOf(nb::handle object);

// oxaifc.Derived.
[[nodiscard]] nb::handle derivedObject();

void vBindValues(nb::module_& module);

}   // namespace oxa::python
