// SPDX-License-Identifier: Apache-2.0
// The stream buffers of the standard library, shared under a lock.
#include "platform/SharedBytes.h"

#include <algorithm>
#include <fstream>
#include <ios>
#include <locale>
#include <mutex>
#include <sstream>
#include <streambuf>
#include <typeinfo>

#include "platform/System.h"

namespace oxa::stream {

namespace {

// One that can be moved to any place, which it is for each piece.
class MovedBytes final : public SharedBytes {
public:
    MovedBytes(std::streambuf& buffer, std::uint64_t iBegin, std::uint64_t iEnd) noexcept
        : SharedBytes(iBegin, iEnd),
          m_buffer(buffer) {}

    std::size_t iReadAt(std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept override try {
        const std::lock_guard lock(m_mutex);
        if (!boMoved(iPlace)) return 0;
        return static_cast<std::size_t>(
            std::max<std::streamsize>(0, m_buffer.sgetn(pTo, static_cast<std::streamsize>(iWanted))));
    } catch (...) {
        return 0;   // who reads there in turn meets it again
    }

    void vGoOnAt(std::uint64_t iPlace) override {
        if (!boMoved(iPlace)) throw std::ios_base::failure("a stream can't be moved");
    }

private:
    bool boMoved(std::uint64_t iPlace) {
        const std::streampos place(static_cast<std::streamoff>(iPlace));
        return m_buffer.pubseekpos(place, std::ios_base::in) == place;
    }

    std::streambuf& m_buffer;
    std::mutex m_mutex;
};

// Whose bytes are those of the file.
bool boPlainFile(const std::streambuf& buffer) {
    using Codec = std::codecvt<char, char, std::mbstate_t>;
    return platform::boTextIsPlain() && typeid(buffer) == typeid(std::filebuf) &&
           std::use_facet<Codec>(buffer.getloc()).always_noconv();
}

}   // namespace

SharedBytes::~SharedBytes() = default;
void SharedBytes::vReached(std::uint64_t) {}
ShareableBuffer::~ShareableBuffer() = default;

class MemoryBuffer::Shared final : public SharedBytes {
public:
    explicit Shared(MemoryBuffer& buffer) noexcept
        : SharedBytes(static_cast<std::uint64_t>(buffer.gptr() - buffer.eback()),
                      static_cast<std::uint64_t>(buffer.egptr() - buffer.eback())),
          m_buffer(buffer) {}

    std::size_t iReadAt(std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept override {
        if (iPlace >= iEnd()) return 0;
        const auto iCount = static_cast<std::size_t>(std::min<std::uint64_t>(iWanted, iEnd() - iPlace));
        std::copy_n(m_buffer.eback() + iPlace, iCount, pTo);
        return iCount;
    }
    void vGoOnAt(std::uint64_t iPlace) override {
        m_buffer.setg(m_buffer.eback(), m_buffer.eback() + iPlace, m_buffer.egptr());
    }

private:
    MemoryBuffer& m_buffer;
};

// A stream buffer has no other pointers than to what may be written; nothing here writes.
MemoryBuffer::MemoryBuffer(std::string_view text) noexcept {
    char* const pFirst = const_cast<char*>(text.data());
    setg(pFirst, pFirst, pFirst + text.size());
}

MemoryBuffer::~MemoryBuffer() = default;

std::unique_ptr<SharedBytes> MemoryBuffer::pShare() { return std::make_unique<Shared>(*this); }

std::unique_ptr<SharedBytes> pShare(std::streambuf& buffer) {
    if (auto* pShareable = dynamic_cast<ShareableBuffer*>(&buffer)) return pShareable->pShare();
    if (typeid(buffer) != typeid(std::stringbuf) && !boPlainFile(buffer)) return nullptr;
    const std::streampos begin = buffer.pubseekoff(0, std::ios_base::cur, std::ios_base::in);
    if (begin == std::streampos(-1)) return nullptr;
    const std::streampos end = buffer.pubseekoff(0, std::ios_base::end, std::ios_base::in);
    if (buffer.pubseekpos(begin, std::ios_base::in) != begin) throw std::ios_base::failure("a stream can't be moved");
    if (end == std::streampos(-1)) return nullptr;
    return std::make_unique<MovedBytes>(buffer, static_cast<std::uint64_t>(std::streamoff(begin)),
                                        static_cast<std::uint64_t>(std::streamoff(end)));
}

std::size_t iReadFileAt(std::FILE* pFile, std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept {
    return platform::iReadAt(pFile, iPlace, pTo, iWanted);
}

bool boFileMoved(std::FILE* pFile, std::uint64_t iPlace) noexcept { return platform::boMoved(pFile, iPlace); }

}   // namespace oxa::stream
