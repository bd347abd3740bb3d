// SPDX-License-Identifier: Apache-2.0
// SetProperty: a property of an element, set as IFC wants it.
//
// For      programs that write properties, where Model::set alone would change those of other elements as well.
// Example  oxa::setProperty(model, wall, "Pset_WallCommon", "FireRating", "F 90");
// Cost     the sets of the element. In IFC2X3, whose properties do not tell in which sets they are, and for quantities, a
//          look at all sets of the model first, and again only after changes of another kind.
// Threads  a change of the model.
#pragma once

#include <span>
#include <string_view>

#include "Model/Model.h"
#include "platform/Export.h"

namespace oxa {

/// Sets a property of the element, or of a type object, and returns the instance that holds it. What other elements say
/// of themselves stays as it is:
///   - a set, or a property, that others have too is copied first, and the copy changed;
///   - a set or a property that the element has only by its type is made for the element, where it hides that of the type;
///   - what is not there at all is made: the property, the set, the relationship, with the owner history of the element.
/// The value has the type of the one that it replaces, or of the type's; typed("IfcText", "x") says another one. For a
/// new property a text is an IfcLabel, beyond 255 characters an IfcText, and numbers are IfcReal and IfcInteger. A list
/// makes a property with a list of values. No value (nullptr) leaves the property there without one.
/// A quantity that is there is set the same way; new ones are made by Model::create.
/// ValueError for what the schema does not allow, for an element that has no sets, an empty name, and a property that
/// holds more than one value or none that can be set (bounded, table, reference, complex); HandleError for an element of
/// another model. The model is as it was then.
OXA_MODEL_API Element setProperty(Model& model, const Element& element, std::string_view set, std::string_view name,
                                  const NewValue& value);

/// Sets the property of several elements, each once however often it is named, to the same value. What they share among themselves, and with nobody
/// else, is changed where it is; what is copied or made is one for all of them, as far as IFC lets it be: elements without
/// a set of that name share a new one, types have one each.
/// The errors are the same, met element by element: those before the one that is refused may have the value by then.
OXA_MODEL_API void setProperty(Model& model, std::span<const Element> elements, std::string_view set,
                               std::string_view name, const NewValue& value);

}   // namespace oxa
