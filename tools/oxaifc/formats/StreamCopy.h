// SPDX-License-Identifier: Apache-2.0
// StreamCopy: a stream that hands on what another one reads, and keeps all of it.
//
// For      a pipe whose bytes are needed a second time.
// Memory   what was read, once.
// Threads  one.
#pragma once

#include <istream>
#include <streambuf>
#include <string>
#include <vector>

namespace oxa::tool {

class StreamCopy {
public:
    // Takes the other stream's bytes from now on; both must outlive this object.
    StreamCopy(std::istream& source, std::string& copy) : m_buffer(source, copy), m_stream(&m_buffer) {}

    [[nodiscard]] std::istream& stream() noexcept { return m_stream; }
    // Takes what the reader has left.
    void vFinish() {
        while (m_buffer.boFill()) {}
    }

private:
    class Buffer final : public std::streambuf {
    public:
        Buffer(std::istream& source, std::string& copy) : m_source(source), m_copy(copy), m_bytes(g_iSize) {}

        // The next bytes in place of what is in hand; false at the end.
        bool boFill() {
            const std::streamsize iCount =
                m_source.rdbuf()->sgetn(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
            setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + iCount);
            m_copy.append(m_bytes.data(), static_cast<std::size_t>(iCount));
            return iCount > 0;
        }

    protected:
        int_type underflow() override {
            if (gptr() < egptr() || boFill()) return traits_type::to_int_type(*gptr());
            return traits_type::eof();
        }

    private:
        static constexpr std::size_t g_iSize = 64 * 1024;

        std::istream& m_source;
        std::string& m_copy;
        std::vector<char> m_bytes;
    };

    Buffer m_buffer;
    std::istream m_stream;
};

}   // namespace oxa::tool
