// SPDX-License-Identifier: Apache-2.0
// ModelRead: from a stream to the files of the core, whatever its form.
//
// For      Model::open.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>

#include "Model/ModelState.h"
#include "Model/Options.h"

namespace oxa::detail {

/// "sName" is what messages call the file; "size" the bytes of it, where that is known; "path" the file itself, where
/// the stream is one. Throws FileError, Stopped.
[[nodiscard]] ReadResult modelRead(std::istream& stream, const std::string& sName, std::optional<std::uint64_t> size,
                                   const OpenOptions& options, const std::filesystem::path& path = {});

/// Of an empty model.
[[nodiscard]] ReadResult modelNew(ifc::def::SchemaPset& schema);

}   // namespace oxa::detail
