// SPDX-License-Identifier: Apache-2.0
// WrittenFile: what tests of verbs with an OUT look at.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace oxa::test {

[[nodiscard]] std::string sContent(const std::filesystem::path& path);

// The lines of a text that begin with "#": the statements of what the program wrote, in no order.
[[nodiscard]] std::multiset<std::string> statements(std::string_view text);

// The names in a folder, in order.
[[nodiscard]] std::vector<std::string> filesIn(const std::filesystem::path& folder);

}   // namespace oxa::test
