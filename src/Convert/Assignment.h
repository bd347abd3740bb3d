// SPDX-License-Identifier: Apache-2.0
/// @file
/// Assignment: from "Pset_WallCommon.FireRating=F 90" or "Name=South" to a value of elements.
///
///     Name=South                            an attribute, in any case of letters; values as in ValueFromText.h
///     Pset_WallCommon.FireRating=F 90       a property or quantity: what is behind the first point is its name
///     "My set".'a.b'=1                      names with points, blanks or "=" in quotes
///     NULL, $                               no value
///
/// A property's value has the type of the one that is there, of the element or its type. Where there is none:
///
///     IFCTEXT(x)         that type, as it may be said of a value that is there, too
///     TRUE, FALSE        IfcBoolean; .T. and .F. as well
///     12, -1.5, 1e3      IfcInteger, IfcReal; not 007, nor whole numbers of more than 32 bits
///     'x', and all else  a text
///
/// Of several values, as of a list or an enumeration: (a,b,c).
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "Convert/ValueFromText.h"
#include "Model/Model.h"
#include "platform/Export.h"

namespace oxa::convert {

/// What is to be set, and to what.
struct Assignment {
    std::string sSet;     ///< the set of a property or quantity; empty for an attribute
    std::string sName;    ///< of the attribute, the property or the quantity
    std::string sValue;   ///< as it was written

    /// "Pset_WallCommon.FireRating" or "Name".
    [[nodiscard]] std::string sTarget() const { return sSet.empty() ? sName : sSet + '.' + sName; }
};

/// Takes a text apart.
///
/// @returns the assignment, or why it is none: a sentence in English without a full stop, that begins with the text.
[[nodiscard]] OXA_CONVERT_API std::variant<Assignment, std::string> assignmentFromText(std::string_view text);

/// Why an element can't have a value.
struct AssignmentRefusal {
    Element element;   ///< the first that can't
    Refusal refusal;   ///< why
};

/// Sets the attribute or property of all the elements. A property that is not there and shall have no value is not made.
///
/// @returns empty when all have the value. Else some may have it by then.
/// Errors   those of setProperty of Model/SetProperty.h; std::bad_alloc. A text of any bytes is fine.
/// Threads  a change of the model. Attributes are set as by setFromText, which leaves inverse lists as they are.
[[nodiscard]] OXA_CONVERT_API std::optional<AssignmentRefusal> assign(Model& model, std::span<const Element> elements,
                                                                      const Assignment& assignment);

}   // namespace oxa::convert
