// SPDX-License-Identifier: Apache-2.0
// SharedBytes: one stream for two readers that go on side by side, each on a thread of its own: what is read once serves
// both, pipes too.
//
// For      Check.cpp: the levels that look at bytes, and the model that the rules need.
// Order    whoever needs the next block reads it from the source; the other one waits meanwhile.
// Memory   blocks that one of the two still needs: all up to vJoin, from then on as many as one may be ahead.
// Errors   FileError from a reader's buffer, where the system can't read on; an istream over it has its badbit set then.
// Threads  each reader belongs to one, and so do the other calls.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <istream>
#include <memory>
#include <mutex>
#include <stop_token>
#include <streambuf>
#include <vector>

namespace oxa::check {

class SharedBytes {
public:
    enum class Who : std::uint8_t { Scan, Model };

    // From where the source stands. Where the token asks for the end, there are no further bytes.
    SharedBytes(std::istream& source, std::stop_token stop);

    [[nodiscard]] std::istream& stream(Who who) noexcept { return m_readers[index(who)].stream; }
    // From here on both read, and one that is far ahead waits for the other.
    void vJoin();
    // It takes no further block: the other one does not wait for it, and nothing is kept for it.
    void vLeave(Who who);

private:
    using Block = std::shared_ptr<const std::vector<char>>;

    class Buffer final : public std::streambuf {
    public:
        Buffer(SharedBytes& bytes, Who who) : m_bytes(bytes), m_who(who) {}

    private:
        int_type underflow() override;

        SharedBytes& m_bytes;
        Who m_who;
        Block m_pBlock;
    };
    struct Reader {
        Reader(SharedBytes& bytes, Who who) : buffer(bytes, who), stream(&buffer) {}

        Buffer buffer;
        std::istream stream;
        std::size_t iNext = 0;   // block
        bool boHere = true;
    };

    [[nodiscard]] static std::size_t index(Who who) noexcept { return static_cast<std::size_t>(who); }
    // Null at the end.
    [[nodiscard]] Block pNext(Who who);
    void vRead(std::unique_lock<std::mutex>& lock);
    void vForget();

    std::istream& m_source;
    std::stop_token m_stop;
    std::mutex m_mutex;   // guards all below but the buffers and streams of the readers
    std::condition_variable m_changed;
    std::deque<Block> m_blocks;
    std::size_t m_iFirst = 0;   // the number of m_blocks.front()
    bool m_boJoined = false;
    bool m_boReading = false;
    bool m_boEnd = false;
    bool m_boBad = false;
    std::array<Reader, 2> m_readers;
};

}   // namespace oxa::check
