// SPDX-License-Identifier: Apache-2.0
// GuidCodec: 16 bytes as a GUID, and any bytes as the text of one.

#include <cstring>
#include <optional>
#include <string>

#include "Format/Ifc/IfcGuid.h"
#include "Fuzz.h"

namespace oxa::fuzz {

void vRun(std::string_view input) {
    Guid guid;
    static_assert(sizeof guid == 16);
    if (input.size() >= sizeof guid) {
        std::memcpy(&guid, input.data(), sizeof guid);
        const std::string sText = ifc::IfcGuid::toIfcGuid(guid);
        vExpect(sText.size() == ifc::IfcGuid::Length, "a GlobalId has 22 characters");
        vExpect(ifc::IfcGuid::fromIfcGuid(sText) == guid, "a GUID survives its text");
    }
    const ExactBytes text(input);
    const std::optional<Guid> parsed = ifc::IfcGuid::fromIfcGuid(text.text());
    if (!parsed) return;
    vExpect(input.size() >= ifc::IfcGuid::Length, "a shorter text is none");
    vExpect(ifc::IfcGuid::fromIfcGuid(ifc::IfcGuid::toIfcGuid(*parsed)) == parsed, "a GUID survives its text");
}

}   // namespace oxa::fuzz
