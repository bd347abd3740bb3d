// SPDX-License-Identifier: Apache-2.0
/// @file
/// EntityFromText: the entity that a word stands for: a number as "#12", or a GlobalId.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Export.h"
#include "platform/Id.h"

namespace oxa::convert {

/// A GUID of 22 characters, as files have it, or of 32 hexadecimal digits, with or without the strokes and braces of
/// "{01234567-89ab-cdef-0123-456789abcdef}". Empty for any other text.
[[nodiscard]] OXA_CONVERT_API std::optional<Guid> guidFromText(std::string_view text);

/// The number in "#12"; the largest number there is for what has more digits than that. Empty for any other text.
[[nodiscard]] OXA_CONVERT_API std::optional<std::size_t> numberFromText(std::string_view text);

/// The entity with that GlobalId, or null. Entities of every read are found, also where it made no map of GlobalIds, as
/// those of the short text form and of ifcXML.
///
/// Cost     a look-up in the map; where that has none, a walk over all rooted entities.
/// Threads  one, the model's own.
[[nodiscard]] OXA_CONVERT_API ifc::Entity* pEntityFromGlobalId(const ifc::Data& data, const Guid& guid);

}   // namespace oxa::convert
