// SPDX-License-Identifier: Apache-2.0
// What is packed, by its first bytes or its name.
#include "Model/Archive.h"

#include <algorithm>

#include "Model/Names.h"

namespace oxa {

namespace {

constexpr std::string_view g_gzipEnd = ".gz";
constexpr std::string_view g_zipEnd = ".ifczip";

bool boEnds(std::string_view path, std::string_view end) {
    return path.size() > end.size() && detail::boSameName(path.substr(path.size() - end.size()), end);
}

}   // namespace

Packing packingOf(std::string_view firstBytes) noexcept {
    using namespace std::string_view_literals;
    if (firstBytes.starts_with("\x1f\x8b"sv)) return Packing::Gzip;
    // A file, the end of an archive without any, the mark of one in parts.
    for (const std::string_view begin : {"PK\x03\x04"sv, "PK\x05\x06"sv, "PK\x07\x08"sv})
        if (firstBytes.starts_with(begin)) return Packing::Zip;
    return Packing::None;
}

Packing packingOfName(std::string_view path) {
    if (boEnds(path, g_gzipEnd)) return Packing::Gzip;
    return boEnds(path, g_zipEnd) ? Packing::Zip : Packing::None;
}

std::string unpackedName(std::string_view path, std::string_view end) {
    switch (packingOfName(path)) {
    case Packing::None: break;
    case Packing::Gzip: return std::string(path.substr(0, path.size() - g_gzipEnd.size()));
    case Packing::Zip: return std::string(path.substr(0, path.size() - g_zipEnd.size())).append(end);
    }
    return std::string(path);
}

}   // namespace oxa
