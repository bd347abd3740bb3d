// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/report/HeaderRows.h"

#include <any>
#include <memory>

namespace oxa::tool {

std::vector<HeaderRow> headerRows(const ifc::FileHeader& header) {
    std::vector<HeaderRow> rows;
    const auto vTake = [&rows](const fc::Property& property) {
        const std::any value = property.owner->getValue(property.id);
        const auto* const pText = std::any_cast<std::string>(&value);
        rows.push_back(
            {property.owner->getPropertyName(property.id), pText ? *pText : std::string(), property.boGroup});
    };
    // The tree needs a shared owner.
    for (const auto& pGroup : std::make_shared<ifc::FileHeader>(header)->getProperties()) {
        vTake(*pGroup);
        for (const auto& pField : pGroup->children) vTake(*pField);
    }
    return rows;
}

void vHeaderWrite(const ifc::FileHeader& header, Output& output) {
    for (const HeaderRow& row : headerRows(header)) {
        const std::string sLabel = (row.boGroup ? "" : " ") + row.sLabel;
        if (row.sText.empty())
            output.vPrint("{}\n", sLabel);
        else
            output.vPrint("{:<20}  {}\n", sLabel, sPrintable(row.sText));
    }
}

Json headerJson(const ifc::FileHeader& header) {
    return {{"description", header.description.descriptions},
            {"implementationLevel", header.description.implementationLevel},
            {"name", header.name.name},
            {"timeStamp", header.name.timeStamp},
            {"author", header.name.author},
            {"organization", header.name.organization},
            {"preprocessorVersion", header.name.preprocessorVersion},
            {"originatingSystem", header.name.originatingSystem},
            {"authorization", header.name.authorization}};
}

}   // namespace oxa::tool
