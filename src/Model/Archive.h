// SPDX-License-Identifier: Apache-2.0
/// @file
/// Archive: files that are packed: .ifczip, a ZIP archive with one model, and .gz.
///
/// For      Model::open and Model::save, which do all of it by themselves; and whoever reads or writes the bytes.
/// How      unpacked and packed as the bytes go by: neither is ever held in memory as a whole, save a ZIP archive that
///          comes from no file (its list stands at its end), which is kept packed.
/// Errors   FileError, in one line with the name of the file, for what can't be unpacked at all. What turns out to be
///          damaged on the way ends the bytes: fault() says why.
/// Threads  one for each object.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <limits>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>

#include "platform/Export.h"

namespace oxa {

/// How a file is packed.
enum class Packing : std::uint8_t {
    None,   ///< not at all
    Gzip,   ///< RFC 1952, also of several members
    Zip,    ///< a ZIP archive with one model inside
};

/// That of a file with these first bytes; four are enough.
[[nodiscard]] OXA_MODEL_API Packing packingOf(std::string_view firstBytes) noexcept;
/// That of a file to be written under this name: .gz and .ifczip, in any case of letters.
[[nodiscard]] OXA_MODEL_API Packing packingOfName(std::string_view path);
/// What is inside of a file of that name: "a.ifc" for "a.ifc.gz", and for "a.ifczip" with the end ".ifc". A name of
/// nothing packed stays as it is.
[[nodiscard]] OXA_MODEL_API std::string unpackedName(std::string_view path, std::string_view end = ".ifc");

/// What may come out of an archive. A few bytes can stand for any number of them, which then fill memory and disk.
struct UnpackLimits {
    /// Bytes at most: 32 GiB.
    std::uint64_t bytes = std::uint64_t{32} << 30;
    /// Bytes for each packed one, where there are more than 64 MiB. Models have 3 to 20.
    std::uint64_t ratio = 200;

    /// However much there is.
    [[nodiscard]] static UnpackLimits none() noexcept {
        return {(std::numeric_limits<std::uint64_t>::max)(), (std::numeric_limits<std::uint64_t>::max)()};
    }
};

/// The bytes inside of a packed file.
class OXA_MODEL_API Unpacked {
public:
    /// "packed" stands at its first byte and outlives this object; packingOf() tells how it is packed, Gzip or Zip.
    /// "name" is what messages call it. "path" names the same bytes as a file, or nothing, where they come from elsewhere.
    Unpacked(Packing packing, std::streambuf& packed, const std::string& name, const std::filesystem::path& path = {},
             const UnpackLimits& limits = {});
    ~Unpacked();
    Unpacked(const Unpacked&) = delete;              ///< One reader.
    Unpacked& operator=(const Unpacked&) = delete;   ///< One reader.

    /// Where they are read from; good as long as this object.
    [[nodiscard]] std::streambuf& bytes() noexcept;
    /// The name of what is inside, as the archive has it; of a .gz the file's own without that end.
    [[nodiscard]] const std::string& inside() const noexcept;
    /// How many they are, where the archive says it.
    [[nodiscard]] std::optional<std::uint64_t> size() const noexcept;
    /// Why they ended too early, with the name of the file; empty where they did not. To be asked at their end.
    [[nodiscard]] const std::string& fault() const noexcept;
    /// Whether that was for the limits, which is no reason for the constructor to throw.
    [[nodiscard]] bool beyondLimits() const noexcept;
    /// Back to the first byte. The packed ones of a .gz have to stand at theirs again.
    void restart();

private:
    class Buffer;

    std::unique_ptr<Buffer> m_pBuffer;
};

/// Bytes on their way into a packed file. The same bytes always make the same file.
class OXA_MODEL_API Packer {
public:
    /// "out" gets the packed bytes and outlives this object. "inside" is the name within a ZIP archive, in UTF-8.
    Packer(std::ostream& out, Packing packing, std::string_view inside);
    /// Without finish() the packed file has no end.
    ~Packer();
    Packer(const Packer&) = delete;              ///< One writer.
    Packer& operator=(const Packer&) = delete;   ///< One writer.

    /// Where the bytes go. Once "out" fails it fails too.
    [[nodiscard]] std::ostream& stream() noexcept;
    /// Writes what is left, and the end. Once, as the last call.
    void finish();

private:
    class Buffer;

    std::unique_ptr<Buffer> m_pBuffer;
    std::unique_ptr<std::ostream> m_pStream;
};

}   // namespace oxa
