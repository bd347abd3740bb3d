// SPDX-License-Identifier: Apache-2.0
/// @file
/// NearNames: what somebody may have meant who wrote a name that does not exist.
///
/// For      messages about a wrong name: "did you mean IfcWall?"
/// Threads  any number at once; no state.
#pragma once

#include <string_view>
#include <vector>

#include "platform/Export.h"

namespace oxa::str {

/// Up to five of "names" that are "wanted" with a few letters changed, or that hold it; nearest first. The case of ASCII
/// letters does not count. None for a name of more than 200 bytes. Good as long as "names".
[[nodiscard]] OXA_PLATFORM_API std::vector<std::string_view> nearNames(std::string_view wanted,
                                                                       const std::vector<std::string_view>& names);

}   // namespace oxa::str
