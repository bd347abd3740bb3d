// SPDX-License-Identifier: Apache-2.0
// ModelFiles: where the real files lie that these tests read, if they are there at all.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace oxa::ifc::models {

// OXAIFC_MODELS, else the folder beside the project; may not exist.
inline std::filesystem::path folder() {
    const char* sSet = std::getenv("OXAIFC_MODELS");
    return sSet ? std::filesystem::path(sSet) : std::filesystem::path(OXA_SOURCE_DIR) / ".." / "shared" / "models";
}

// Every STEP file below the folder, as relative names in order. None where there is no folder.
inline std::vector<std::string> names() {
    std::vector<std::string> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder(), error))
        if (entry.path().extension() == ".ifc")
            found.push_back(std::filesystem::relative(entry.path(), folder()).generic_string());
    std::ranges::sort(found);
    return found;
}

// The same as values for a suite of tests, where none gives one empty name.
inline std::vector<std::string> namesOrNone() {
    std::vector<std::string> found = names();
    if (found.empty()) found.emplace_back();
    return found;
}

inline std::string sTestName(const testing::TestParamInfo<std::string>& info) {
    std::string sName = info.param.empty() ? "none" : info.param;
    for (char& c : sName)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return sName;
}

inline std::string sContent(const std::string& sName) {
    std::ifstream in(folder() / sName, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}   // namespace oxa::ifc::models
