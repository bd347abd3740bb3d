// SPDX-License-Identifier: Apache-2.0
// The order of the statements of a file, noted while the reader takes the bytes: a filter between the stream and the
// reader, with just enough of the grammar to tell a statement's number from text.
#include "oxaifc/formats/StatementScan.h"

#include <limits>
#include <utility>

namespace oxa::tool {

namespace {

constexpr bool boBlank(char c) noexcept { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}   // namespace

std::streambuf::int_type StatementScan::Buffer::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    const std::streamsize iCount =
        m_source.rdbuf()->sgetn(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
    setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + iCount);
    for (char* p = gptr(); p != egptr(); ++p) vByte(*p);
    return iCount > 0 ? traits_type::to_int_type(*gptr()) : traits_type::eof();
}

void StatementScan::Buffer::vByte(char c) {
    const char cLast = std::exchange(m_cLast, c);
    switch (m_eState) {
    case State::String:
        if (m_text.boCloses(c)) m_eState = State::Text;
        return;
    case State::Comment:
        if (c == '/' && cLast == '*') {
            m_eState = m_eBehindComment;
            m_cLast = 0;   // begins no other comment
        }
        return;
    case State::Start:
    case State::Number:
    case State::Text: break;
    }
    if (c == '*' && cLast == '/') {
        m_eBehindComment = m_eState;
        m_eState = State::Comment;
        m_cLast = 0;   // "/*/" is no whole comment
        return;
    }
    if (boBlank(c) || c == '/') return;
    if (c == ';') {
        m_eState = State::Start;
    } else if (c == '\'') {
        m_eState = State::String;
    } else if (m_eState == State::Start && c == '#') {
        m_eState = State::Number;
        m_boNegative = m_boDigits = false;
        m_iNumber = 0;
    } else if (m_eState == State::Number) {
        vNumberByte(c);
    } else {
        m_eState = State::Text;
    }
}

// The library takes negative numbers, too, as the large one with these bits.
void StatementScan::Buffer::vNumberByte(char c) {
    constexpr std::int64_t g_iLargest = std::numeric_limits<std::uint32_t>::max();
    if (c >= '0' && c <= '9' && m_iNumber <= g_iLargest) {
        m_iNumber = m_iNumber * 10 + (c - '0');
        m_boDigits = true;
        return;
    }
    if (c == '-' && !m_boDigits && !m_boNegative) {
        m_boNegative = true;
        return;
    }
    m_eState = State::Text;
    if (c == '=' && m_boDigits && m_iNumber <= g_iLargest)
        m_numbers.push_back(static_cast<std::uint32_t>(m_boNegative ? -m_iNumber : m_iNumber));
}

}   // namespace oxa::tool
