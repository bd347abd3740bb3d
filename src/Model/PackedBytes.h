// SPDX-License-Identifier: Apache-2.0
// PackedBytes: the two ways of unpacking, behind one interface.
//
// For      Unpacked (Archive.h), which keeps the limits.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>

#include "Model/Archive.h"

namespace oxa::detail {

class PackedBytes {
public:
    PackedBytes() = default;
    virtual ~PackedBytes() = default;
    PackedBytes(const PackedBytes&) = delete;
    PackedBytes& operator=(const PackedBytes&) = delete;

    /// Up to so many unpacked bytes; fewer only at their end, or where sFault says why.
    virtual std::size_t iTake(char* pTo, std::size_t iWanted) = 0;
    /// How many packed bytes these came from.
    [[nodiscard]] virtual std::uint64_t iPacked() const = 0;
    /// Unpacked ones, where that is known.
    [[nodiscard]] virtual std::optional<std::uint64_t> size() const { return std::nullopt; }
    /// Of what is inside; empty where it has no name.
    [[nodiscard]] virtual std::string sInside() const { return {}; }
    virtual void vRestart() = 0;

    /// What is wrong, behind the name of the file; empty where nothing is.
    [[nodiscard]] const std::string& sFault() const noexcept { return m_sFault; }

protected:
    std::string m_sFault;
};

[[nodiscard]] std::unique_ptr<PackedBytes> pGzipBytes(std::streambuf& packed);
/// From the file, where there is one. Throws FileError without the name of the file, for what holds not exactly one
/// model that can be unpacked.
[[nodiscard]] std::unique_ptr<PackedBytes> pZipBytes(std::streambuf& packed, const std::filesystem::path& path);

}   // namespace oxa::detail
