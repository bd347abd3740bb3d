// SPDX-License-Identifier: Apache-2.0
#include "platform/Path.h"

#include "platform/System.h"

namespace oxa {

namespace str {

std::filesystem::path pathOf(std::string_view text) { return std::u8string(text.begin(), text.end()); }

std::string sOfPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}   // namespace str

namespace stream {

std::FILE* pOpenFile(const std::filesystem::path& path, const char* mode) { return platform::pOpen(path, mode); }

}   // namespace stream

}   // namespace oxa
