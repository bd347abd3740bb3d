// SPDX-License-Identifier: Apache-2.0
#include "tools/WrittenFile.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "platform/Path.h"

namespace oxa::test {

std::string sContent(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::multiset<std::string> statements(std::string_view text) {
    std::multiset<std::string> result;
    std::istringstream lines{std::string(text)};
    for (std::string sLine; std::getline(lines, sLine);)
        if (sLine.starts_with('#')) result.insert(sLine);
    return result;
}

std::vector<std::string> filesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(str::sOfPath(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
}

}   // namespace oxa::test
