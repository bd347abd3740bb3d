// SPDX-License-Identifier: Apache-2.0
/// @file
/// ValueFromText: from the words of a user to the value of an attribute.
///
///     text           as it is, or between quotes, '' for one of them: where it is "$" or has a "," in a list
///     number         12, -1.5, 1e3
///     true, unknown  or .T., .U.; any case
///     ELEMENT        an enumerator, or .ELEMENT.; any case
///     #12            an entity of the model, by a kept number
///     $              no value
///     IFCLABEL(x)    a value of a select, with its type
///     (a,b,c)        a list; a list of lists has rows like it
///     0A1B           a binary, in pairs of hexadecimal digits
///
/// This is not the grammar of files (ISO 10303-21): that is stricter, and the reader's.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileEntity.h"
#include "platform/Export.h"

namespace oxa::convert {

/// Why a text is no value for an attribute. Parts of one sentence: "IfcWall.Name: 12x is no number".
struct Refusal {
    /// What is wrong, for programs; sReason says it to people.
    enum class Why {
        Attribute,    ///< the type has no attribute sValue; names has those that it has
        Fixed,        ///< the attribute takes no such value at all: it is derived, or mandatory
        Number,       ///< sValue should be a number as #12, and is none
        Value,        ///< sValue does not fit
        Enumerator,   ///< sValue is none of names
        SelectType,   ///< sValue has none of the types in front that the select sType takes; names has them
    };
    Why eWhy;                           ///< what is wrong
    std::string sWhere;                 ///< "IfcWall.Name"; for Why::Attribute "IfcWall"
    std::string sValue;                 ///< the part of the text in question, as it is
    std::string sReason;                ///< the rest of the sentence, in English, without a full stop
    std::string sType{};                ///< of SelectType
    std::vector<std::string> names{};   ///< what might stand there, in the order of the schema
};

/// Sets the attribute of that name, in any case, to what the text says.
///
/// @param data    the model of the entity; its numbers must be kept ones where a text names an entity.
/// @param sName   no inverse attribute.
/// @returns empty when the value was set. Else the entity is as it was: a GlobalId that another entity has, a reference
///          to a type that does not fit and a list of another length than the schema asks for are refused, too.
/// Errors   std::bad_alloc. A text of any bytes is fine, UTF-8 or not.
/// Threads  one, the model's own.
[[nodiscard]] OXA_CONVERT_API std::optional<Refusal> setFromText(ifc::Data& data, ifc::Entity& entity,
                                                                 std::string_view sName, std::string_view text);

}   // namespace oxa::convert
