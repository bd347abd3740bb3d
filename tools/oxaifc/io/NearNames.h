// SPDX-License-Identifier: Apache-2.0
// NearNames: what somebody may have meant who wrote a name that does not exist.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/NearNames.h"

namespace oxa::tool {

// ASCII letters only, which is all that the names of a schema have.
[[nodiscard]] std::string sUpper(std::string_view text);

using str::nearNames;

// For a message: "did you mean A, B?", or, where nothing is near, "otherwise" followed by all names.
[[nodiscard]] std::string sNearText(std::string_view wanted, const std::vector<std::string_view>& names,
                                    std::string_view otherwise);

}   // namespace oxa::tool
