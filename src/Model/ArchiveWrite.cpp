// SPDX-License-Identifier: Apache-2.0
// Packs bytes as they come. A ZIP archive is written by hand, front to back, so that it goes into a pipe as well: the
// sizes stand behind the bytes and in the list at the end, and no clock has a say.
#include <algorithm>
#include <array>
#include <new>
#include <ostream>
#include <utility>

#include <zlib.h>

#include "Model/Archive.h"

namespace oxa {

namespace {

// The numbers of a ZIP archive, the lowest byte first.
class ZipRecord {
public:
    ZipRecord& u16(std::uint64_t u) { return little(u, 2); }
    ZipRecord& u32(std::uint64_t u) { return little(u, 4); }
    ZipRecord& u64(std::uint64_t u) { return little(u, 8); }
    ZipRecord& text(std::string_view text) {
        m_sBytes += text;
        return *this;
    }
    [[nodiscard]] const std::string& sBytes() const noexcept { return m_sBytes; }

private:
    ZipRecord& little(std::uint64_t u, int iBytes) {
        for (int i = 0; i < iBytes; ++i) m_sBytes += static_cast<char>((u >> (8 * i)) & 0xff);
        return *this;
    }

    std::string m_sBytes;
};

constexpr std::uint64_t g_iLocalFile = 0x04034b50, g_iDescriptor = 0x08074b50, g_iEntry = 0x02014b50;
constexpr std::uint64_t g_iEnd = 0x06054b50, g_iEnd64 = 0x06064b50, g_iLocator64 = 0x07064b50;
constexpr std::uint64_t g_iFlags = 0x0808;        // sizes behind the bytes, names in UTF-8
constexpr std::uint64_t g_iDeflated = 8;          // the method
constexpr std::uint64_t g_iDate = 0x0021;         // 1980-01-01, 00:00: the first there is
constexpr std::uint64_t g_iUnix = 3 << 8;         // made on
constexpr std::uint64_t g_iPlainFile = 0100644;   // with these permissions
constexpr std::uint64_t g_iMost32 = 0xffffffff;

// What is known of the one file at its end.
struct Sizes {
    std::string_view inside;
    std::uint64_t iCrc;
    std::uint64_t iPacked;
    std::uint64_t iUnpacked;

    // Numbers of 32 bits are too small.
    [[nodiscard]] bool boLarge() const noexcept { return iPacked >= g_iMost32 || iUnpacked >= g_iMost32; }
};

constexpr std::uint64_t iVersion(bool boLarge) { return boLarge ? 45 : 20; }

std::string sLocalFile(std::string_view inside) {
    return ZipRecord()
        .u32(g_iLocalFile)
        .u16(iVersion(false))
        .u16(g_iFlags)
        .u16(g_iDeflated)
        .u16(0)
        .u16(g_iDate)
        .u32(0)
        .u32(0)
        .u32(0)
        .u16(inside.size())
        .u16(0)
        .text(inside)
        .sBytes();
}

std::string sDescriptor(const Sizes& sizes) {
    ZipRecord record;
    record.u32(g_iDescriptor).u32(sizes.iCrc);
    if (sizes.boLarge()) return record.u64(sizes.iPacked).u64(sizes.iUnpacked).sBytes();
    return record.u32(sizes.iPacked).u32(sizes.iUnpacked).sBytes();
}

std::string sEntry(const Sizes& sizes) {
    ZipRecord extra;
    if (sizes.boLarge()) extra.u16(1).u16(16).u64(sizes.iUnpacked).u64(sizes.iPacked);
    return ZipRecord()
        .u32(g_iEntry)
        .u16(g_iUnix | iVersion(sizes.boLarge()))
        .u16(iVersion(sizes.boLarge()))
        .u16(g_iFlags)
        .u16(g_iDeflated)
        .u16(0)
        .u16(g_iDate)
        .u32(sizes.iCrc)
        .u32(sizes.boLarge() ? g_iMost32 : sizes.iPacked)
        .u32(sizes.boLarge() ? g_iMost32 : sizes.iUnpacked)
        .u16(sizes.inside.size())
        .u16(extra.sBytes().size())
        .u16(0)
        .u16(0)
        .u16(0)
        .u32(g_iPlainFile << 16)
        .u32(0)
        .text(sizes.inside)
        .text(extra.sBytes())
        .sBytes();
}

// Behind the list of one entry of "iLength" bytes, which begins at iAt.
std::string sEnd(std::uint64_t iAt, std::uint64_t iLength) {
    ZipRecord record;
    const bool boLarge = iAt >= g_iMost32;
    if (boLarge)
        record.u32(g_iEnd64)
            .u64(44)
            .u16(g_iUnix | iVersion(true))
            .u16(iVersion(true))
            .u32(0)
            .u32(0)
            .u64(1)
            .u64(1)
            .u64(iLength)
            .u64(iAt)
            .u32(g_iLocator64)
            .u32(0)
            .u64(iAt + iLength)
            .u32(1);
    return record.u32(g_iEnd).u16(0).u16(0).u16(1).u16(1).u32(iLength).u32(boLarge ? g_iMost32 : iAt).u16(0).sBytes();
}

}   // namespace

class Packer::Buffer final : public std::streambuf {
public:
    Buffer(std::ostream& out, Packing packing, std::string_view inside)
        : m_out(out),
          m_packing(packing),
          m_sInside(inside.substr(0, 0xffff)) {
        constexpr int g_iMemory = 8;                                                 // the level of zlib's own default
        const int iWindow = packing == Packing::Zip ? -MAX_WBITS : 16 + MAX_WBITS;   // bare, or with the frame of gzip
        if (packing != Packing::None &&
            deflateInit2(&m_zlib, Z_DEFAULT_COMPRESSION, Z_DEFLATED, iWindow, g_iMemory, Z_DEFAULT_STRATEGY) != Z_OK)
            throw std::bad_alloc();
        if (packing == Packing::Gzip) {
            m_gzip.os = 255;   // unknown: the same everywhere
            deflateSetHeader(&m_zlib, &m_gzip);
        }
        if (packing == Packing::Zip) m_out << sLocalFile(m_sInside);
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    }
    ~Buffer() override {
        if (m_packing != Packing::None) deflateEnd(&m_zlib);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    void vFinish() {
        vDrain(true);
        if (m_packing != Packing::Zip) return;
        const Sizes sizes{m_sInside, m_iCrc, m_iPacked, m_iUnpacked};
        const std::string sBehind = sDescriptor(sizes);
        const std::string sList = sEntry(sizes);
        m_out << sBehind << sList << sEnd(sLocalFile(m_sInside).size() + m_iPacked + sBehind.size(), sList.size());
    }

protected:
    int_type overflow(int_type c) override {
        vDrain(false);
        if (!m_out) return traits_type::eof();
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
        return c;
    }
    // A flush in the middle would only make the file larger.
    int sync() override { return m_out ? 0 : -1; }

private:
    void vDrain(bool boLast) {
        const auto iCount = static_cast<std::size_t>(pptr() - pbase());
        setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
        if (m_packing == Packing::None) {
            m_out.write(m_bytes.data(), static_cast<std::streamsize>(iCount));
            return;
        }
        m_zlib.next_in = reinterpret_cast<Bytef*>(m_bytes.data());
        m_zlib.avail_in = static_cast<uInt>(iCount);
        m_iUnpacked += iCount;
        m_iCrc = crc32(m_iCrc, m_zlib.next_in, m_zlib.avail_in);
        int iResult = Z_OK;
        do {
            m_zlib.next_out = reinterpret_cast<Bytef*>(m_packed.data());
            m_zlib.avail_out = static_cast<uInt>(m_packed.size());
            iResult = deflate(&m_zlib, boLast ? Z_FINISH : Z_NO_FLUSH);
            const std::size_t iMade = m_packed.size() - m_zlib.avail_out;
            m_iPacked += iMade;
            m_out.write(m_packed.data(), static_cast<std::streamsize>(iMade));
        } while (m_zlib.avail_in || (boLast && iResult == Z_OK));
    }

    std::ostream& m_out;
    Packing m_packing;
    std::string m_sInside;
    z_stream m_zlib{};
    gz_header m_gzip{};
    std::array<char, std::size_t{64} * 1024> m_bytes{};
    std::array<char, std::size_t{64} * 1024> m_packed{};
    uLong m_iCrc = 0;
    std::uint64_t m_iPacked = 0;
    std::uint64_t m_iUnpacked = 0;
};

Packer::Packer(std::ostream& out, Packing packing, std::string_view inside)
    : m_pBuffer(std::make_unique<Buffer>(out, packing, inside)),
      m_pStream(std::make_unique<std::ostream>(m_pBuffer.get())) {}
Packer::~Packer() = default;

std::ostream& Packer::stream() noexcept { return *m_pStream; }
void Packer::finish() { m_pBuffer->vFinish(); }

}   // namespace oxa
