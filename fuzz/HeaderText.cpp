// SPDX-License-Identifier: Apache-2.0
// HeaderText: the HEADER section alone, as text.

#include <memory>
#include <optional>
#include <string>

#include "Format/Ifc/IfcFileHeader.h"
#include "Fuzz.h"

namespace oxa::fuzz {

void vRun(std::string_view input) {
    const ExactBytes bytes(input);
    const std::optional<ifc::FileHeader> parsed = ifc::FileHeader::parseFromString(bytes.text());
    if (!parsed) return;
    const auto pHeader = std::make_shared<ifc::FileHeader>(*parsed);
    (void)pHeader->getCreatedTimestamp();
    for (const object::PropertyId& id : pHeader->getAllProperties()) (void)pHeader->getValue(id);
    const ExactBytes written(pHeader->writeToString());
    (void)ifc::FileHeader::parseFromString(written.text());
}

}   // namespace oxa::fuzz
