// SPDX-License-Identifier: Apache-2.0
// Fuzz: what the fuzz targets share.
//
// For      the targets of this folder: each defines vRun() and nothing else. FuzzEntry.cpp hands it the inputs of
//          libFuzzer, Replay.cpp those of files.
// Threads  one at a time.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string_view>

namespace oxa::fuzz {

// The target: takes any bytes, and returns whatever they are.
void vRun(std::string_view input);

// A broken promise is a crash too: that is what fuzzers find.
inline void vExpect(bool boHolds, const char* sPromise) {
    if (boHolds) return;
    std::fprintf(stderr, "not kept: %s\n", sPromise);
    std::abort();
}

// The bytes in a heap block of exactly their number and "tail": a sanitizer sees each byte read too far.
class ExactBytes {
public:
    explicit ExactBytes(std::string_view bytes, std::string_view tail = {})
        : m_pBytes(new char[bytes.size() + tail.size()]),
          m_iSize(bytes.size()) {
        bytes.copy(m_pBytes.get(), bytes.size());
        tail.copy(m_pBytes.get() + bytes.size(), tail.size());
    }
    // Without the tail.
    [[nodiscard]] std::string_view text() const noexcept { return {m_pBytes.get(), m_iSize}; }

private:
    std::unique_ptr<char[]> m_pBytes;
    std::size_t m_iSize;
};

// A stream over such bytes, which it does not copy again.
class ExactStream : private std::streambuf, public std::istream {
public:
    explicit ExactStream(std::string_view bytes) : std::istream(static_cast<std::streambuf*>(this)), m_bytes(bytes) {
        char* const pFirst = const_cast<char*>(m_bytes.text().data());   // streambuf wants it so; nobody writes
        setg(pFirst, pFirst, pFirst + bytes.size());
    }

private:
    ExactBytes m_bytes;
};

// Takes everything and keeps nothing.
class NullStream : private std::streambuf, public std::ostream {
public:
    NullStream() : std::ostream(static_cast<std::streambuf*>(this)) {}

private:
    using Traits = std::streambuf::traits_type;

    Traits::int_type overflow(Traits::int_type c) override { return Traits::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize iCount) override { return iCount; }
};

}   // namespace oxa::fuzz
