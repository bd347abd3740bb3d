// SPDX-License-Identifier: Apache-2.0
// IfcXmlText: small texts of an ifcXML document taken apart.
#pragma once

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <vector>

namespace oxa::ifc::xml {

// The number in an "id" or "ref": from the first digit on; 0 without one, the largest for more than that.
[[nodiscard]] inline long long iIdOf(std::string_view text) {
    const std::size_t iDigit = std::min(text.find_first_of("0123456789"), text.size());
    long long iId = 0;
    const auto result = std::from_chars(text.data() + iDigit, text.data() + text.size(), iId);
    return result.ec == std::errc::result_out_of_range ? std::numeric_limits<long long>::max() : iId;
}

// The texts between runs of white space: what std::regex gives for "\s+", which takes a level of the stack for each
// character of a run. White space in front gives an empty first text, behind none; an empty text gives one.
inline void vItemsOf(std::string_view text, std::vector<std::string_view>& items) {
    constexpr std::string_view g_blanks = " \t\n\v\f\r";
    items.clear();
    for (;;) {
        items.push_back(text.substr(0, text.find_first_of(g_blanks)));
        const std::size_t iNext = text.find_first_not_of(g_blanks, items.back().size());
        if (iNext == std::string_view::npos) return;
        text.remove_prefix(iNext);
    }
}

}   // namespace oxa::ifc::xml
