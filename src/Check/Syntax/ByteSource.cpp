// SPDX-License-Identifier: Apache-2.0
#include "Check/Syntax/ByteSource.h"

#include <cstring>

#include "Check/Syntax/Token.h"
#include "Model/Error.h"

namespace oxa::check {

namespace {

// The longest token that is kept whole, and as much again to read at once.
constexpr std::size_t g_iWindow = 8 * g_iMaxTokenText;

}   // namespace

ByteSource::ByteSource(std::istream& stream, const CheckOptions& options)
    : m_stream(stream),
      m_options(options),
      m_buffer(g_iWindow + 1),
      m_pEnd(m_buffer.data()) {}

bool ByteSource::boFill(const char*& pKeep) {
    const auto iKept = static_cast<std::size_t>(m_pEnd - pKeep);
    m_iBase = iOffset(pKeep);
    if (iKept) std::memmove(m_buffer.data(), pKeep, iKept);
    pKeep = m_buffer.data();
    std::size_t iRead = 0;
    if (!m_boEnd) {
        if (m_options.stop.stop_requested()) throw Stopped("the check was stopped");
        m_stream.read(m_buffer.data() + iKept, static_cast<std::streamsize>(g_iWindow - iKept));
        if (m_stream.bad()) throw FileError("the file can't be read on");
        iRead = static_cast<std::size_t>(m_stream.gcount());
        m_boEnd = iRead == 0;
        if (m_options.progress) m_options.progress({m_iBase + iKept + iRead});
    }
    m_pEnd = m_buffer.data() + iKept + iRead;
    m_buffer[iKept + iRead] = '\0';
    return iRead > 0;
}

}   // namespace oxa::check
