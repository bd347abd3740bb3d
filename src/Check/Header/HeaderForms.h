// SPDX-License-Identifier: Apache-2.0
// HeaderForms: the forms that texts of a header have.
//
// For      HeaderLevel.
// Threads  plain functions.
#pragma once

#include <string_view>

namespace oxa::check {

// ISO 8601, extended: a calendar date, "T", a time of day, its zone if any: "2024-08-30T12:34:53+05:00". The day exists.
[[nodiscard]] bool boTimeStamp(std::string_view text) noexcept;

// ISO 10303-21, 8.2.2: "v;c", a version of the standard and a conformance class, as in "2;1".
[[nodiscard]] bool boImplementationLevel(std::string_view text) noexcept;

// The name in a schema identifier, in front of its object identifier if it has one: "IFC4 { 1 0 10303 }".
[[nodiscard]] std::string_view schemaNameOf(std::string_view identifier) noexcept;

// One of the words of a header's description with something in brackets, as in "ViewDefinition [ReferenceView]".
[[nodiscard]] bool boDescriptionItem(std::string_view text) noexcept;

// "Company - Application - Version".
[[nodiscard]] bool boOriginatingSystem(std::string_view text) noexcept;

}   // namespace oxa::check
