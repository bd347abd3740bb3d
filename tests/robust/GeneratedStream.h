// SPDX-License-Identifier: Apache-2.0
// GeneratedStream: a stream of any length that nobody has to store.
//
// For      tests of huge inputs: it delivers pieces of text, each so many times.
#pragma once

#include <algorithm>
#include <cstddef>
#include <istream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

namespace oxa::ifc {

struct Repeated {
    std::string sText;
    std::size_t iTimes = 1;

    [[nodiscard]] std::size_t iBytes() const noexcept { return sText.size() * iTimes; }
};

inline std::size_t iBytesOf(const std::vector<Repeated>& parts) {
    std::size_t iBytes = 0;
    for (const Repeated& part : parts) iBytes += part.iBytes();
    return iBytes;
}

class GeneratedStream : private std::streambuf, public std::istream {
public:
    explicit GeneratedStream(std::vector<Repeated> parts)
        : std::istream(static_cast<std::streambuf*>(this)),
          m_parts(std::move(parts)) {}

private:
    using Traits = std::streambuf::traits_type;

    // A block of many repetitions at once, as far as there are that many left.
    Traits::int_type underflow() override {
        while (m_iPart < m_parts.size() && (m_parts[m_iPart].iTimes == 0 || m_parts[m_iPart].sText.empty())) ++m_iPart;
        if (m_iPart == m_parts.size()) return Traits::eof();
        Repeated& part = m_parts[m_iPart];
        const std::size_t iTimes = std::min(part.iTimes, std::max<std::size_t>(65536 / part.sText.size(), 1));
        m_block.clear();
        for (std::size_t i = 0; i < iTimes; ++i) m_block += part.sText;
        part.iTimes -= iTimes;
        setg(m_block.data(), m_block.data(), m_block.data() + m_block.size());
        return Traits::to_int_type(m_block.front());
    }

    std::vector<Repeated> m_parts;
    std::size_t m_iPart = 0;
    std::string m_block;
};

}   // namespace oxa::ifc
