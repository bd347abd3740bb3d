// SPDX-License-Identifier: Apache-2.0
// StatementScan: a stream that hands on what another one reads, and notes which statements come, in which order.
//
// For      a write that is to keep the order of its IN, which the model does not know: it is sorted by type.
// Finds    numbers of instances in an exchange structure or the simple form (ISO 10303-21, 6.3 and 11.2). A file with
//          faults gives an order as well, though perhaps not that of a reader who skips other parts of it.
// Threads  one.
#pragma once

#include <cstdint>
#include <istream>
#include <streambuf>
#include <vector>

#include "Convert/TextScan.h"

namespace oxa::tool {

class StatementScan {
public:
    // Takes the other stream's bytes from now on; it must outlive this object.
    explicit StatementScan(std::istream& source) : m_buffer(source), m_stream(&m_buffer) {}

    [[nodiscard]] std::istream& stream() noexcept { return m_stream; }
    // Of the statements that have been read, as they stand.
    [[nodiscard]] std::vector<std::uint32_t>& numbers() noexcept { return m_buffer.m_numbers; }

private:
    enum class State : std::uint8_t { Start, Number, Text, String, Comment };

    class Buffer final : public std::streambuf {
    public:
        explicit Buffer(std::istream& source) : m_source(source), m_bytes(g_iSize) {}

        std::vector<std::uint32_t> m_numbers;

    protected:
        int_type underflow() override;

    private:
        static constexpr std::size_t g_iSize = 64 * 1024;

        void vByte(char c);
        void vNumberByte(char c);

        std::istream& m_source;
        std::vector<char> m_bytes;
        State m_eState = State::Start;
        State m_eBehindComment = State::Start;
        convert::TextScan m_text;
        char m_cLast = 0;
        bool m_boNegative = false;
        bool m_boDigits = false;
        std::int64_t m_iNumber = 0;
    };

    Buffer m_buffer;
    std::istream m_stream;
};

}   // namespace oxa::tool
