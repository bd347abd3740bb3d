// SPDX-License-Identifier: Apache-2.0
// Forms: how values of the base types of XML Schema are written, what they are worth, and which base type a type of IFC
// has.
//
// For      the reader of requirements and the comparison of values.
// Threads  any number at once; no state.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "schema/Schema.h"

namespace oxa::ids::detail {

enum class Base { String, Boolean, Integer, Double, Date, DateTime, Time, Duration };

/// "xs:string" and so on.
[[nodiscard]] std::string_view baseName(Base eBase) noexcept;
/// By its name without prefix, as in "double".
[[nodiscard]] std::optional<Base> baseFromName(std::string_view name) noexcept;
/// Whether values have an order, so that there can be bounds.
[[nodiscard]] bool boOrdered(Base eBase) noexcept;

[[nodiscard]] bool boHasForm(Base eBase, std::string_view text) noexcept;
/// "a date as 2024-12-31" and so on.
[[nodiscard]] std::string_view formText(Base eBase) noexcept;

/// Empty for a text of another form.
[[nodiscard]] std::optional<double> numberOf(std::string_view text) noexcept;
[[nodiscard]] std::optional<std::int64_t> integerOf(std::string_view text) noexcept;
[[nodiscard]] std::optional<bool> booleanOf(std::string_view text) noexcept;
/// Of two dates, times or durations; unordered for texts of another form, and where neither is less whatever the month.
[[nodiscard]] std::partial_ordering compare(Base eBase, std::string_view a, std::string_view b) noexcept;

/// What values of a type are written as; empty for a list, a select, an instance and a binary.
[[nodiscard]] std::optional<Base> baseOf(const ifc::def::schema::ObjectBase* pType);

/// The parts between blanks.
[[nodiscard]] std::vector<std::string_view> words(std::string_view text);
/// Code points of a text in UTF-8.
[[nodiscard]] std::uint64_t iCharacters(std::string_view text) noexcept;

}   // namespace oxa::ids::detail
