// SPDX-License-Identifier: Apache-2.0
/// @file
/// Path: names of files as texts in UTF-8, and files opened by them.
///
/// For      whatever is handed the name of a file as a text, or tells it. On Windows the text of a std::filesystem::path
///          is in the code page of the machine, which has not all characters; elsewhere both are the same bytes.
/// Errors   std::filesystem::filesystem_error for a text that is no UTF-8, on Windows alone.
/// Threads  any number at once; no state.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/Export.h"

namespace oxa {

namespace str {

/// The path that a text in UTF-8 names.
[[nodiscard]] OXA_PLATFORM_API std::filesystem::path pathOf(std::string_view text);
/// The text of a path, in UTF-8.
[[nodiscard]] OXA_PLATFORM_API std::string sOfPath(const std::filesystem::path& path);

}   // namespace str

namespace stream {

/// std::fopen for any path. Null, and the reason in errno, where that fails. A file opened with "rb" may be replaced
/// while it is open (ReplacedFile), on every system.
[[nodiscard]] OXA_PLATFORM_API std::FILE* pOpenFile(const std::filesystem::path& path, const char* mode);

}   // namespace stream

}   // namespace oxa
