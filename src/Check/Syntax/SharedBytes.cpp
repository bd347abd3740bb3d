// SPDX-License-Identifier: Apache-2.0
#include "Check/Syntax/SharedBytes.h"

#include <algorithm>
#include <utility>

#include "Model/Error.h"

namespace oxa::check {

namespace {

constexpr std::size_t g_iBlock = std::size_t{256} << 10;
constexpr std::size_t g_iMostAhead = 8;   // blocks

}   // namespace

SharedBytes::SharedBytes(std::istream& source, std::stop_token stop)
    : m_source(source),
      m_stop(std::move(stop)),
      m_readers{Reader(*this, Who::Scan), Reader(*this, Who::Model)} {}

SharedBytes::Buffer::int_type SharedBytes::Buffer::underflow() {
    m_pBlock = m_bytes.pNext(m_who);
    if (!m_pBlock) return traits_type::eof();
    auto* pFirst = const_cast<char*>(m_pBlock->data());   // streambuf wants it so; nobody writes
    setg(pFirst, pFirst, pFirst + m_pBlock->size());
    return traits_type::to_int_type(*pFirst);
}

void SharedBytes::vJoin() {
    const std::lock_guard lock(m_mutex);
    m_boJoined = true;
}

void SharedBytes::vLeave(Who who) {
    {
        const std::lock_guard lock(m_mutex);
        m_readers[index(who)].boHere = false;
        vForget();
    }
    m_changed.notify_all();
}

// Blocks that nobody will ask for.
void SharedBytes::vForget() {
    std::size_t iNeeded = m_iFirst + m_blocks.size();
    for (const Reader& reader : m_readers)
        if (reader.boHere) iNeeded = std::min(iNeeded, reader.iNext);
    for (; m_iFirst < iNeeded; ++m_iFirst) m_blocks.pop_front();
}

// Reads without the lock: the other reader may go on with what is there.
void SharedBytes::vRead(std::unique_lock<std::mutex>& lock) {
    auto pBlock = std::make_shared<std::vector<char>>(g_iBlock);
    m_boReading = true;
    lock.unlock();
    try {
        m_source.read(pBlock->data(), static_cast<std::streamsize>(g_iBlock));
    } catch (const std::exception&) {
        // A stream that was asked for exceptions throws at the end of the file too: its state tells.
    }
    pBlock->resize(static_cast<std::size_t>(m_source.gcount()));
    lock.lock();
    m_boReading = false;
    m_boBad = m_source.bad();
    m_boEnd = m_boBad || pBlock->empty();
    if (!m_boEnd) m_blocks.push_back(std::move(pBlock));
    m_changed.notify_all();
}

SharedBytes::Block SharedBytes::pNext(Who who) {
    std::unique_lock lock(m_mutex);
    Reader& own = m_readers[index(who)];
    const Reader& other = m_readers[1 - index(who)];
    for (;;) {
        if (m_stop.stop_requested()) return nullptr;
        if (own.iNext < m_iFirst + m_blocks.size()) {
            Block pBlock = m_blocks[own.iNext++ - m_iFirst];
            vForget();
            m_changed.notify_all();
            return pBlock;
        }
        if (m_boBad) throw FileError("the file can't be read on");
        if (m_boEnd) return nullptr;
        const bool boFarAhead = m_boJoined && other.boHere && own.iNext >= other.iNext + g_iMostAhead;
        if (m_boReading || boFarAhead)
            m_changed.wait(lock);
        else
            vRead(lock);
    }
}

}   // namespace oxa::check
