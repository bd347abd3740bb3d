// SPDX-License-Identifier: Apache-2.0
// The bytes of a .gz (RFC 1952): any number of members, one behind the other, and zeros behind the last.
#include <algorithm>
#include <array>
#include <ios>
#include <new>
#include <string_view>

#include <zlib.h>

#include "Model/PackedBytes.h"

namespace oxa::detail {

namespace {

constexpr int g_iGzipWindow = 16 + MAX_WBITS;   // zlib: gzip, with the largest window

class GzipBytes final : public PackedBytes {
public:
    explicit GzipBytes(std::streambuf& packed) : m_packed(packed) {
        if (inflateInit2(&m_zlib, g_iGzipWindow) != Z_OK) throw std::bad_alloc();
    }
    ~GzipBytes() override { inflateEnd(&m_zlib); }

    std::size_t iTake(char* pTo, std::size_t iWanted) override {
        // A step of zlib is at most one of its numbers long.
        constexpr std::size_t g_iMostStep = std::size_t{1} << 30;
        std::size_t iTaken = 0;
        while (iTaken < iWanted && boReady()) {
            const auto iStep = static_cast<uInt>(std::min(iWanted - iTaken, g_iMostStep));
            m_zlib.next_out = reinterpret_cast<Bytef*>(pTo + iTaken);
            m_zlib.avail_out = iStep;
            vInflate();
            iTaken += iStep - m_zlib.avail_out;
        }
        return iTaken;
    }

    [[nodiscard]] std::uint64_t iPacked() const override { return m_iRead - m_zlib.avail_in; }

    void vRestart() override {
        m_zlib.avail_in = 0;
        m_iRead = m_iMembers = 0;
        m_boOpen = true;
        m_sFault.clear();
        inflateReset2(&m_zlib, g_iGzipWindow);
    }

private:
    // Whether there is something to inflate; false at the end, and for a fault.
    bool boReady() {
        if (!m_sFault.empty()) return false;
        if (!m_boOpen) {
            while (boInput() && *m_zlib.next_in == 0) vSkipOne();
            if (!m_zlib.avail_in) return false;
            inflateReset2(&m_zlib, g_iGzipWindow);
            m_boOpen = true;
        }
        if (boInput()) return true;
        m_sFault = "is compressed with gzip and was cut: its end is missing";
        return false;
    }

    bool boInput() {
        if (m_zlib.avail_in) return true;
        const std::streamsize iRead = m_packed.sgetn(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
        if (iRead <= 0) return false;
        m_zlib.next_in = reinterpret_cast<Bytef*>(m_bytes.data());
        m_zlib.avail_in = static_cast<uInt>(iRead);
        m_iRead += static_cast<std::uint64_t>(iRead);
        return true;
    }

    void vSkipOne() {
        ++m_zlib.next_in;
        --m_zlib.avail_in;
    }

    void vInflate() {
        const bool boBegin = m_zlib.total_in == 0;
        switch (inflate(&m_zlib, Z_NO_FLUSH)) {
        case Z_OK:
        case Z_BUF_ERROR: return;   // more bytes are needed
        case Z_STREAM_END:
            m_boOpen = false;
            ++m_iMembers;
            return;
        case Z_MEM_ERROR: throw std::bad_alloc();
        default: break;
        }
        const std::string_view reason = m_zlib.msg ? m_zlib.msg : "";
        const std::string sPlace = std::to_string(iPacked());
        if (boBegin && m_iMembers)
            m_sFault = "is compressed with gzip, and what follows at byte " + sPlace + " is not";
        else if (reason == "incorrect data check" || reason == "incorrect length check")
            m_sFault = "is compressed with gzip and damaged: its check sum is that of other bytes";
        else
            m_sFault = "is compressed with gzip and damaged at byte " + sPlace;
    }

    std::streambuf& m_packed;
    z_stream m_zlib{};
    std::array<char, std::size_t{64} * 1024> m_bytes{};
    std::uint64_t m_iRead = 0;
    std::uint64_t m_iMembers = 0;
    bool m_boOpen = true;   // inside of a member
};

}   // namespace

std::unique_ptr<PackedBytes> pGzipBytes(std::streambuf& packed) { return std::make_unique<GzipBytes>(packed); }

}   // namespace oxa::detail
