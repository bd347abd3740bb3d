// SPDX-License-Identifier: Apache-2.0
/// @file
/// SharedBytes: the bytes of a stream for several threads at once, each at a place of its own.
///
/// For      a read on several threads, where the stream allows it. A stream buffer of your own does so by deriving from
///          ShareableBuffer as well; those of the standard library for files and strings need nothing.
/// Places   are counted in bytes, from wherever the stream counts.
/// Threads  iReadAt: any number at once; the rest: the owner's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <streambuf>
#include <string_view>

#include "platform/Export.h"

namespace oxa::stream {

/// What a stream's bytes are read through while nobody reads from the stream itself. Once something was read, the stream
/// stands anywhere, until vGoOnAt.
class OXA_PLATFORM_API SharedBytes {
public:
    virtual ~SharedBytes();
    SharedBytes(const SharedBytes&) = delete;
    SharedBytes& operator=(const SharedBytes&) = delete;

    /// The place at which the stream stands.
    [[nodiscard]] std::uint64_t iBegin() const noexcept { return m_iBegin; }
    /// The place behind the last byte, as far as it is known; a file may grow or shrink.
    [[nodiscard]] std::uint64_t iEnd() const noexcept { return m_iEnd; }
    /// Copies iWanted bytes from iPlace on; fewer at the end, or where they can't be read. How many.
    virtual std::size_t iReadAt(std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept = 0;
    /// Told from time to time: the bytes before iPlace have been read. What it throws ends the read.
    virtual void vReached(std::uint64_t iPlace);
    /// The stream's next byte is the one at iPlace, between iBegin() and iEnd(). Throws std::ios_base::failure where it can't
    /// be moved.
    virtual void vGoOnAt(std::uint64_t iPlace) = 0;

protected:
    /// Between these two places.
    SharedBytes(std::uint64_t iBegin, std::uint64_t iEnd) noexcept : m_iBegin(iBegin), m_iEnd(iEnd) {}

private:
    std::uint64_t m_iBegin;
    std::uint64_t m_iEnd;
};

/// Of a stream buffer that can share its bytes.
class OXA_PLATFORM_API ShareableBuffer {
public:
    virtual ~ShareableBuffer();
    /// Null where it can't: a pipe, a device. The result must not outlive this object, and until it is moved or gone, nothing
    /// else reads from here.
    [[nodiscard]] virtual std::unique_ptr<SharedBytes> pShare() = 0;
};

/// The bytes of a text, which must outlive it, without a copy.
class OXA_PLATFORM_API MemoryBuffer final : public std::streambuf, public ShareableBuffer {
public:
    /// From its first byte on.
    explicit MemoryBuffer(std::string_view text) noexcept;
    ~MemoryBuffer() override;
    /// Never null.
    [[nodiscard]] std::unique_ptr<SharedBytes> pShare() override;

private:
    class Shared;
};

/// Of a ShareableBuffer; of a std::stringbuf; of a std::filebuf on systems that know no text mode. Else null. Nothing is read
/// yet: the stream stands where it stood.
[[nodiscard]] OXA_PLATFORM_API std::unique_ptr<SharedBytes> pShare(std::streambuf& buffer);

/// iReadAt for an open file, which is left where it stands, but for Windows, where its position is not defined afterwards.
[[nodiscard]] OXA_PLATFORM_API std::size_t iReadFileAt(std::FILE* pFile, std::uint64_t iPlace, char* pTo,
                                                       std::size_t iWanted) noexcept;

/// Moves an open file to a place, which may be behind its first 2 GiB. False where it can't be moved.
[[nodiscard]] OXA_PLATFORM_API bool boFileMoved(std::FILE* pFile, std::uint64_t iPlace) noexcept;

}   // namespace oxa::stream
