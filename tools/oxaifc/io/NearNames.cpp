// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/io/NearNames.h"

#include <fmt/format.h>

namespace oxa::tool {

std::string sUpper(std::string_view text) {
    std::string sText(text);
    for (char& c : sText)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return sText;
}

std::string sNearText(std::string_view wanted, const std::vector<std::string_view>& names, std::string_view otherwise) {
    const std::vector<std::string_view> close = nearNames(wanted, names);
    if (!close.empty()) return fmt::format("did you mean {}?", fmt::join(close, ", "));
    return fmt::format("{}{}", otherwise, fmt::join(names, ", "));
}

}   // namespace oxa::tool
