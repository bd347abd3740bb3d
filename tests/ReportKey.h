// SPDX-License-Identifier: Apache-2.0
// ReportKey: from a finished message back to the key that it was made of.
#pragma once

#include <string>

#include "platform/Localization.h"

namespace oxa::ifc {

// The key whose text the message is, whatever stands in the place of "%1"; the message itself where there is none.
inline std::string sReportKey(const std::string& sMessage) {
    for (const std::string_view key : localizationKeys("Ifc")) {
        const std::string sText = localize("Ifc", key);
        const std::size_t iArgument = sText.find("%1");
        if (iArgument == std::string::npos
                ? sMessage == sText
                : sMessage.starts_with(sText.substr(0, iArgument)) && sMessage.ends_with(sText.substr(iArgument + 2)))
            return std::string(key);
    }
    return sMessage;
}

}   // namespace oxa::ifc
