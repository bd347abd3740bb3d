// SPDX-License-Identifier: Apache-2.0
// TypedJson: elements and values as JSON: a text is a text, a number a number, in one form for all verbs.
//
// Values   no value: null; derived: {"derived":true}; an element: {"ref":33}; a binary: its hexadecimal digits;
//          a logical: true, false or "UNKNOWN"; a list: an array.
// Typed    a value that a select wraps: {"type":"IfcLabel","value":"F 90"}; plainJson tells "F 90" alone.
// Threads  any number at once.
#pragma once

#include "Model/Element.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

[[nodiscard]] Json typedJson(const Value& value);
[[nodiscard]] Json plainJson(const Value& value);

// null for what is not known.
[[nodiscard]] Json textJson(const std::string& sText);

// {"id":12,"type":"IfcDoor","attributes":{...}}
[[nodiscard]] Json typedJson(const Element& element);

// {"id":12,"type":"IfcDoor","name":"D1"}; null for a handle that names nothing.
[[nodiscard]] Json nameJson(const Element& element);
// Its Name; empty where it has none.
[[nodiscard]] std::string sNameOf(const Element& element);

}   // namespace oxa::tool
