// SPDX-License-Identifier: Apache-2.0
// Replay: a fuzz target as a plain program that any compiler builds.
//
// Usage    StepFileReplay PATH...    files, and all files of folders; a path that is missing is an error
// Exit     0 when the target took all of them, 1 for a fault of the arguments; a broken promise aborts

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* pCount, char*** pArguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t iSize);

namespace {

namespace fs = std::filesystem;

bool boReplay(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string sBytes(std::istreambuf_iterator<char>(in), {});
    if (!in) {
        std::fprintf(stderr, "%s can't be read\n", path.string().c_str());
        return false;
    }
    std::fprintf(stderr, "%s\n", path.string().c_str());   // before the run: the last one is the culprit
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(sBytes.data()), sBytes.size());
    return true;
}

}   // namespace

int main(int iCount, char** pArguments) {
    LLVMFuzzerInitialize(&iCount, &pArguments);
    std::vector<fs::path> paths;
    for (int i = 1; i < iCount; ++i) {
        const fs::path path = pArguments[i];
        if (fs::is_directory(path)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(path)) paths.push_back(entry.path());
        } else {
            paths.push_back(path);
        }
    }
    std::ranges::sort(paths);
    bool boGood = !paths.empty();
    for (const fs::path& path : paths) boGood = boReplay(path) && boGood;
    return boGood ? 0 : 1;
}
