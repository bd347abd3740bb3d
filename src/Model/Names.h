// SPDX-License-Identifier: Apache-2.0
// Names: types and attributes by name, in any case of letters, or a NameError with near names.
//
// For      the sources of this folder.
// Threads  any number at once.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::detail {

/// Whether both are the same but for the case of ASCII letters.
[[nodiscard]] OXA_MODEL_API bool boSameName(std::string_view a, std::string_view b) noexcept;

/// Those of str::nearNames, as texts of their own.
[[nodiscard]] OXA_MODEL_API std::vector<std::string> nearNames(std::string_view wanted,
                                                               const std::vector<std::string_view>& names);

/// "<message>; did you mean A, B?", or, where nothing is near, "<message>; there are: " and all names, if they are few.
[[noreturn]] OXA_MODEL_API void vThrowName(const std::string& sMessage, std::string_view wanted,
                                           const std::vector<std::string_view>& names);

[[nodiscard]] const ifc::def::schema::Entity& typeFromName(const ifc::def::schema::Schema& schema,
                                                           std::string_view name);

/// Positions among allAttributes() and allInverseAttributes(). g_iNoName: there is none.
inline constexpr std::size_t g_iNoName = static_cast<std::size_t>(-1);
[[nodiscard]] OXA_MODEL_API std::size_t iAttributeFind(const ifc::def::schema::Entity& type,
                                                       std::string_view name) noexcept;
[[nodiscard]] std::size_t iInverseFind(const ifc::def::schema::Entity& type, std::string_view name) noexcept;
[[nodiscard]] std::size_t iAttribute(const ifc::def::schema::Entity& type, std::string_view name);
[[nodiscard]] std::size_t iInverse(const ifc::def::schema::Entity& type, std::string_view name);

}   // namespace oxa::detail
