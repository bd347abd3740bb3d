// SPDX-License-Identifier: Apache-2.0
// Streams in large buffers: a call of the stream for 16 KiB, not for each byte or line.
#include "platform/Stream.h"

#include <algorithm>
#include <istream>
#include <limits>
#include <ostream>
#include <utility>

namespace oxa::stream {

StreamReadBuffer::StreamReadBuffer(std::istream& stream)
    : m_pBuffer(nullptr),
      m_stream(stream),
      m_pBytes(std::make_unique<char[]>(g_iBufferSize + g_iPadding)) {
    m_pBuffer = m_pBytes.get();
}

StreamReadBuffer::~StreamReadBuffer() = default;

void StreamReadBuffer::vBeforeRefill(const char*, unsigned) {}

bool StreamReadBuffer::boReadNextBuffer() {
    vBeforeRefill(m_pBuffer, m_iValid);
    m_iLoadedBefore += m_iValid;
    m_iPosition = m_iValid = 0;
    // Not istream::read, which takes a short last buffer for a failure. A good stream has a stream buffer.
    if (m_stream.good()) {
        const std::streamsize iLoaded = m_stream.rdbuf()->sgetn(m_pBuffer, static_cast<std::streamsize>(g_iBufferSize));
        m_iValid = static_cast<unsigned>(std::max<std::streamsize>(iLoaded, 0));
    }
    std::memset(m_pBuffer + m_iValid, 0, g_iPadding);
    if (m_iValid != 0) return true;
    if (m_stream.good()) m_stream.setstate(std::ios_base::eofbit);
    return false;
}

void StreamReadBuffer::vMoved(std::uint64_t iPlace) noexcept {
    m_iLoadedBefore = iPlace;
    m_iPosition = m_iValid = 0;
    std::memset(m_pBuffer, 0, g_iPadding);
}

unsigned StreamReadBuffer::iPosInStream() const noexcept {
    constexpr std::uint64_t g_iMax = std::numeric_limits<unsigned>::max();
    return static_cast<unsigned>(std::min(iPlace(), g_iMax));
}

StreamWriteBuffer::StreamWriteBuffer(std::ostream& stream)
    : m_stream(stream),
      m_pBytes(std::make_unique<char[]>(g_iBufferSize)) {}

StreamWriteBuffer::~StreamWriteBuffer() {
    try {
        vBufferFlush();
    } catch (...) {
        // A destructor can report nothing; callers that need to know use boGood() after vBufferFlush().
    }
}

void StreamWriteBuffer::vWriteInParts(std::string_view text) {
    while (!text.empty()) {
        const std::size_t iPart = std::min(text.size(), g_iBufferSize - m_iUsed);
        std::memcpy(m_pBytes.get() + m_iUsed, text.data(), iPart);
        m_iUsed += iPart;
        text.remove_prefix(iPart);
        if (m_iUsed == g_iBufferSize) vBufferFlush();
    }
}

void StreamWriteBuffer::vBufferFlush() {
    const std::size_t iUsed = std::exchange(m_iUsed, 0);
    if (iUsed) m_stream.write(m_pBytes.get(), static_cast<std::streamsize>(iUsed));
}

bool StreamWriteBuffer::boGood() const { return m_stream.good(); }

}   // namespace oxa::stream
