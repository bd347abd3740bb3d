// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcGuid: the 22 characters of a GlobalId, and the GUID of 128 bits that they stand for.
///
/// - For: the attribute cells of GlobalId, the GUID map of Data, the ifcXML export, library users.
/// - Not for: a decision about the null GUID: here it is an ordinary value, 22 times "0".
/// - Threads: any number at once; the class holds no state.
/// - Terms: ISO 16739, IfcGloballyUniqueId. The alphabet is in another order than that of base64.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/Id.h"

namespace oxa::ifc {

/// Between the two forms of a GlobalId. All operations are static.
class OXA_IFC_API IfcGuid {
public:
    static constexpr std::size_t Length = 22;   ///< characters, without a terminating NUL

    /// Writes 22 characters and a NUL: "text" holds 23 bytes. Always true.
    static bool boIfcStringFromGuid(char* const text, const Guid& guid);

    /// Reads 22 bytes, all of which must be readable. False at the first character outside the alphabet, which
    /// is case-sensitive; "guid" is then untouched.
    ///
    /// - A NUL ends its group of 2 or 4 characters early; the group is then the number in front of it.
    /// - "4" to "$" at the front are no error, although 22 digits hold 4 bits more than a GUID: those are lost.
    [[nodiscard]] static bool boIfcStringToGuid(Guid& guid, const char* const text);

    /// The 22 characters of a GUID, the null one included.
    [[nodiscard]] static std::string toIfcGuid(const Guid& guid);

    /// The GUID of the first 22 characters, whatever follows. Empty for a shorter text or a foreign character.
    [[nodiscard]] static std::optional<Guid> fromIfcGuid(const std::string_view& text);
};

}   // namespace oxa::ifc
