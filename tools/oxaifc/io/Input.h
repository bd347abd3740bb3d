// SPDX-License-Identifier: Apache-2.0
// Input: the bytes of one file, or of standard input, as a stream.
//
// For      FileOpen.h, which looks at the first bytes. Nothing is kept: any size, pipes too.
// Errors   Failure, for what is no file to be read: missing, a folder, without a byte, an archive that can't be unpacked.
// Threads  one.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <string>
#include <string_view>

#include "Model/Archive.h"

namespace oxa::tool {

class Input {
public:
    // Opens the file, "-" for standard input, and looks at its first bytes.
    explicit Input(const std::string& sPath);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    // Where the first bytes say that it is packed: from here on all of this is about what is inside. Before the stream
    // is read from.
    void vUnpack(const UnpackLimits& limits);

    [[nodiscard]] std::istream& stream() noexcept { return m_stream; }
    // How messages call it.
    [[nodiscard]] const std::string& sName() const noexcept { return m_sName; }
    // The path, or the name of what is inside of an archive.
    [[nodiscard]] const std::string& sInside() const noexcept { return m_sInside; }
    // True when the bytes begin so.
    [[nodiscard]] bool boBeginsWith(std::string_view text) const noexcept;
    // Whether vUnpack() has found it packed.
    [[nodiscard]] bool boPacked() const noexcept { return m_boPacked; }
    // The first bytes, a few hundred thousand at most, until the stream is read from.
    [[nodiscard]] std::string_view firstBytes() const noexcept;
    // Bytes taken from the file so far; a read may be some ahead of its user.
    [[nodiscard]] std::uint64_t iBytesRead() const noexcept;
    // The whole size; 0 where that is not known beforehand.
    [[nodiscard]] std::uint64_t iBytesExpected() const noexcept { return m_iExpected; }

    // Reads what the user left, and throws Failure if the system could not read on, here or before. The size.
    std::uint64_t iFinish();

    // Goes back to where it began. False, and nothing is changed, where that can't be: a pipe, a device.
    [[nodiscard]] bool boRestart();

private:
    class Buffer;
    class FileBuffer;
    class UnpackBuffer;

    void vFaultCheck() const;

    std::string m_sPath;
    std::string m_sName;
    std::string m_sInside;
    std::uint64_t m_iExpected = 0;
    bool m_boPacked = false;
    std::unique_ptr<Buffer> m_pBuffer;
    std::istream m_stream;
};

}   // namespace oxa::tool
