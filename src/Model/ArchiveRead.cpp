// SPDX-License-Identifier: Apache-2.0
// The bytes inside of a packed file as a stream buffer, with the limits of what may come out.
#include <algorithm>
#include <array>
#include <ios>
#include <utility>

#include "Model/Archive.h"
#include "Model/Error.h"
#include "Model/PackedBytes.h"

namespace oxa {

using detail::PackedBytes;

namespace {

constexpr std::uint64_t g_iRatioFrom = std::uint64_t{64} << 20;   // a small text may well be packed small

std::string sLastPart(std::string_view path) { return std::string(path.substr(path.find_last_of("/\\") + 1)); }

}   // namespace

// Large pieces go past the buffer.
class Unpacked::Buffer final : public std::streambuf {
public:
    Buffer(std::unique_ptr<PackedBytes> pBytes, std::string sName, const UnpackLimits& limits)
        : m_pBytes(std::move(pBytes)),
          m_sName(std::move(sName)),
          m_limits(limits),
          m_sInside(m_pBytes->sInside().empty() ? sLastPart(unpackedName(m_sName)) : m_pBytes->sInside()) {
        if (m_pBytes->size().value_or(0) > m_limits.bytes)
            vBeyond("holds " + std::to_string(*m_pBytes->size()) + " bytes");
        vBegin();
    }

    // Looks at the first bytes.
    void vBegin() {
        underflow();
        if (m_boBeyond) return;
        if (!m_sFault.empty()) throw FileError(m_sFault);
        const std::string_view first(gptr(), static_cast<std::size_t>(egptr() - gptr()));
        if (first.empty()) throw FileError(m_sName + ": holds " + m_sInside + ", which is empty");
        if (packingOf(first) != Packing::None)
            throw FileError(m_sName + ": holds " + m_sInside + ", which is packed once more; unpack it");
    }

    void vRestart() {
        m_pBytes->vRestart();
        setg(nullptr, nullptr, nullptr);
        m_iDone = 0;
        m_sFault.clear();
        vBegin();
    }

    [[nodiscard]] const std::string& sInside() const noexcept { return m_sInside; }
    [[nodiscard]] std::optional<std::uint64_t> size() const { return m_pBytes->size(); }
    [[nodiscard]] const std::string& sFault() const noexcept { return m_sFault; }
    [[nodiscard]] bool boBeyond() const noexcept { return m_boBeyond; }

protected:
    int_type underflow() override {
        if (gptr() == egptr()) {
            const std::size_t iTaken = iTake(m_bytes.data(), m_bytes.size());
            setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + iTaken);
        }
        return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }
    std::streamsize xsgetn(char* pTo, std::streamsize iWanted) override {
        const std::streamsize iBuffered = std::min<std::streamsize>(iWanted, egptr() - gptr());
        std::copy_n(gptr(), iBuffered, pTo);
        gbump(static_cast<int>(iBuffered));
        if (iBuffered == iWanted) return iBuffered;
        return iBuffered +
               static_cast<std::streamsize>(iTake(pTo + iBuffered, static_cast<std::size_t>(iWanted - iBuffered)));
    }

private:
    std::size_t iTake(char* pTo, std::size_t iWanted) {
        if (!m_sFault.empty()) return 0;
        const std::size_t iTaken = m_pBytes->iTake(pTo, iWanted);
        m_iDone += iTaken;
        if (!m_pBytes->sFault().empty()) m_sFault = m_sName + ": " + m_pBytes->sFault();
        if (m_iDone > m_limits.bytes) vBeyond("holds more than " + std::to_string(m_limits.bytes) + " bytes");
        if (m_iDone > g_iRatioFrom && m_iDone / std::max<std::uint64_t>(m_limits.ratio, 1) > m_pBytes->iPacked())
            vBeyond("holds more than " + std::to_string(m_limits.ratio) + " times its bytes");
        return iTaken;
    }

    void vBeyond(const std::string& sText) {
        m_boBeyond = true;
        m_sFault = m_sName + ": " + sText + ", more than a model needs";
    }

    std::unique_ptr<PackedBytes> m_pBytes;
    std::string m_sName;
    UnpackLimits m_limits;
    std::string m_sInside;
    std::array<char, std::size_t{64} * 1024> m_bytes{};
    std::uint64_t m_iDone = 0;
    std::string m_sFault;
    bool m_boBeyond = false;
};

namespace {

std::unique_ptr<PackedBytes> pOpened(Packing packing, std::streambuf& packed, const std::string& sName,
                                     const std::filesystem::path& path) try {
    return packing == Packing::Zip ? detail::pZipBytes(packed, path) : detail::pGzipBytes(packed);
} catch (const FileError& error) {
    throw FileError(sName + ": " + error.what());
}

}   // namespace

Unpacked::Unpacked(Packing packing, std::streambuf& packed, const std::string& name, const std::filesystem::path& path,
                   const UnpackLimits& limits)
    : m_pBuffer(std::make_unique<Buffer>(pOpened(packing, packed, name, path), name, limits)) {}
Unpacked::~Unpacked() = default;

std::streambuf& Unpacked::bytes() noexcept { return *m_pBuffer; }
const std::string& Unpacked::inside() const noexcept { return m_pBuffer->sInside(); }
std::optional<std::uint64_t> Unpacked::size() const noexcept { return m_pBuffer->size(); }
const std::string& Unpacked::fault() const noexcept { return m_pBuffer->sFault(); }
bool Unpacked::beyondLimits() const noexcept { return m_pBuffer->boBeyond(); }
void Unpacked::restart() { m_pBuffer->vRestart(); }

}   // namespace oxa
