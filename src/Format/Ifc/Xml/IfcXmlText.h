// SPDX-License-Identifier: Apache-2.0
// IfcXmlText: small texts of an ifcXML document taken apart.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace oxa::ifc::xml {

// The number in an "id" or "ref": from the first digit on; 0 without one, the largest for more than that.
[[nodiscard]] inline long long iIdOf(std::string_view text) {
    const std::size_t iDigit = text.find_first_of("0123456789");
    return iDigit == std::string_view::npos ? 0 : std::strtoll(std::string(text.substr(iDigit)).c_str(), nullptr, 10);
}

// The texts between runs of white space: what std::regex gives for "\s+", which takes a level of the stack for each
// character of a run. White space in front gives an empty first text, behind none; an empty text gives one.
[[nodiscard]] inline std::vector<std::string> itemsOf(std::string_view text) {
    constexpr std::string_view g_blanks = " \t\n\v\f\r";
    std::vector<std::string> items;
    for (;;) {
        const std::size_t iBlank = text.find_first_of(g_blanks);
        items.emplace_back(text.substr(0, iBlank));
        const std::size_t iNext = text.find_first_not_of(g_blanks, items.back().size());
        if (iNext == std::string_view::npos) return items;
        text.remove_prefix(iNext);
    }
}

}   // namespace oxa::ifc::xml
