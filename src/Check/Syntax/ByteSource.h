// SPDX-License-Identifier: Apache-2.0
// ByteSource: the bytes of a stream in a window that moves over it.
//
// For      Lexer. A zero byte stands behind the window, so that a loop over a class of bytes without 0 needs no other end.
// Memory   the window alone, a few hundred kilobytes.
// Errors   FileError, where the system can't read on; Stopped.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <vector>

#include "Check/Check.h"

namespace oxa::check {

class ByteSource {
public:
    ByteSource(std::istream& stream, const CheckOptions& options);

    [[nodiscard]] const char* pBegin() const noexcept { return m_buffer.data(); }
    [[nodiscard]] const char* pEnd() const noexcept { return m_pEnd; }
    // Where the byte at p stands in the file.
    [[nodiscard]] std::uint64_t iOffset(const char* p) const noexcept {
        return m_iBase + static_cast<std::uint64_t>(p - m_buffer.data());
    }
    // Moves on: what stands before pKeep is given up, more is read. False at the end of the file. Either way pKeep is
    // where it stood, and stands at pBegin() from now on where that gave room.
    [[nodiscard]] bool boFill(const char*& pKeep);

private:
    std::istream& m_stream;
    const CheckOptions& m_options;
    std::vector<char> m_buffer;
    const char* m_pEnd;
    std::uint64_t m_iBase = 0;
    bool m_boEnd = false;
};

}   // namespace oxa::check
