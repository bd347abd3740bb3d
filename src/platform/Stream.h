// SPDX-License-Identifier: Apache-2.0
/// @file
/// Stream: byte streams through a buffer of 16,384 bytes.
///
/// For      the file scanner, which derives from the read buffer, and the line writers.
/// Owner    neither owns its stream, which must outlive it.
/// Threads  one at a time for each object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <memory>
#include <string_view>

#include "platform/Export.h"

/// Buffered byte streams.
namespace oxa::stream {

/// A reader derives from it and walks m_pBuffer from m_iPosition to m_iValid.
class OXA_PLATFORM_API StreamReadBuffer {
public:
    /// Bytes of a buffer, at the most.
    static constexpr std::size_t g_iBufferSize = 16384;

    /// Reads nothing yet: the buffer is empty.
    explicit StreamReadBuffer(std::istream& stream);
    virtual ~StreamReadBuffer();
    StreamReadBuffer(const StreamReadBuffer&) = delete;
    StreamReadBuffer& operator=(const StreamReadBuffer&) = delete;

    /// To be called when m_iPosition has reached m_iValid: calls the refill hook with what the buffer holds,
    /// then loads up to g_iBufferSize more bytes and sets the position to 0. False, with an empty buffer, when
    /// there is no further byte or the stream is not good.
    /// Flags    the end sets eofbit, as peek() does; a short last buffer sets none; failbit is never set
    /// Errors   what the stream's buffer throws, and at the end the stream's own exception where it was asked
    ///          for; the buffer is empty then
    bool boReadNextBuffer();

    /// Bytes read so far, those of the buffer up to the position included; the largest unsigned for more.
    [[nodiscard]] unsigned iPosInStream() const noexcept;

protected:
    /// Where the reader stands: bytes of the stream before m_iPosition, counted from where this object began.
    [[nodiscard]] std::uint64_t iPlace() const noexcept { return m_iLoadedBefore + m_iPosition; }
    /// The buffer is empty from here on, and the stream, which the caller has moved, stands iPlace bytes behind where this
    /// object began. The refill hook is not called.
    void vMoved(std::uint64_t iPlace) noexcept;
    /// What it reads.
    [[nodiscard]] std::istream& stream() noexcept { return m_stream; }

    /// Called before the buffer's bytes go. Does nothing here.
    virtual void vBeforeRefill(const char* pBuffer, unsigned iValid);

    /// Zero bytes behind the valid ones, so that a reader may look at up to this many bytes at once from any
    /// position. The first of them ends a run of any class that 0 does not belong to.
    static constexpr std::size_t g_iPadding = 64;

    /// The bytes read, and the padding behind them.
    char* m_pBuffer;
    /// The next byte of the buffer for the reader.
    unsigned m_iPosition = 0;
    /// How many bytes of the buffer were read.
    unsigned m_iValid = 0;

private:
    std::istream& m_stream;
    std::unique_ptr<char[]> m_pBytes;
    std::uint64_t m_iLoadedBefore = 0;   // bytes of all former buffers
};

/// Gathers small pieces, so that the stream gets few large ones.
class OXA_PLATFORM_API StreamWriteBuffer {
public:
    /// Bytes of the buffer.
    static constexpr std::size_t g_iBufferSize = StreamReadBuffer::g_iBufferSize;

    /// With an empty buffer.
    explicit StreamWriteBuffer(std::ostream& stream);
    ~StreamWriteBuffer();   ///< writes out the rest; what the stream throws is not heard of any more
    StreamWriteBuffer(const StreamWriteBuffer&) = delete;
    StreamWriteBuffer& operator=(const StreamWriteBuffer&) = delete;

    ///@{
    /// Copies as much as fits, and writes the buffer out each time it is exactly full.
    /// Errors   what the stream throws, where it was asked to; the bytes of that buffer are lost
    void vWrite(std::string_view text) {
        if (text.size() >= g_iBufferSize - m_iUsed) return vWriteInParts(text);
        if (text.empty()) return;
        std::memcpy(m_pBytes.get() + m_iUsed, text.data(), text.size());
        m_iUsed += text.size();
    }
    void vWrite(char c) {
        m_pBytes[m_iUsed++] = c;
        if (m_iUsed == g_iBufferSize) vBufferFlush();
    }
    ///@}

    /// Writes out what the buffer holds. The stream itself is not flushed.
    void vBufferFlush();
    /// Whether the stream has taken everything that was written out so far.
    [[nodiscard]] bool boGood() const;

private:
    void vWriteInParts(std::string_view text);

    std::ostream& m_stream;
    std::unique_ptr<char[]> m_pBytes;
    std::size_t m_iUsed = 0;   // < g_iBufferSize
};

}   // namespace oxa::stream
