// ModelFiles: where the real files lie that these tests read, if they are there at all.
#pragma once

#include <algorithm>
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

inline std::string sContent(const std::string& sName) {
    std::ifstream in(folder() / sName, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}   // namespace oxa::ifc::models
