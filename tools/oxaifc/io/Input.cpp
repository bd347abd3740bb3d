// SPDX-License-Identifier: Apache-2.0
// A file or standard input as a stream, packed or not, which errors of the system and of an archive do not pass as a mere
// end of the file: they become a Failure that names the file.
#include "oxaifc/io/Input.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <streambuf>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "Model/Error.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "platform/Path.h"
#include "platform/SharedBytes.h"

namespace oxa::tool {

// Large pieces straight from where they come: the users have buffers of their own.
class Input::Buffer : public std::streambuf {
public:
    Buffer() : m_pBytes(std::make_unique_for_overwrite<char[]>(g_iSize)) {}

    [[nodiscard]] std::string_view waiting() const { return {gptr(), static_cast<std::size_t>(egptr() - gptr())}; }
    [[nodiscard]] std::uint64_t iRead() const noexcept { return m_iRead; }
    // Why the bytes ended too early, with the name of the file; empty where they did not.
    [[nodiscard]] virtual std::string sFault() const = 0;

    void vReadToEnd() {
        while (underflow() != traits_type::eof()) setg(eback(), egptr(), egptr());
    }

    bool boRestart() {
        if (!boBegin()) return false;
        setg(m_pBytes.get(), m_pBytes.get(), m_pBytes.get());
        m_iRead = 0;
        m_boEnd = false;
        return true;
    }

    // Where others have read meanwhile, up to a place from which it goes on.
    void vRead(std::uint64_t iPlace) noexcept { m_iRead = iPlace; }
    void vGoOnAt(std::uint64_t iPlace) noexcept {
        m_iRead = iPlace;
        m_boEnd = false;
        setg(m_pBytes.get(), m_pBytes.get(), m_pBytes.get());
    }

protected:
    // Up to so many bytes; fewer only at the end.
    virtual std::size_t iTake(char* pTo, std::size_t iWanted) = 0;
    // Back to the first of them, where that can be.
    virtual bool boBegin() = 0;

    int_type underflow() override {
        if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
        if (m_boEnd) return traits_type::eof();
        const std::size_t iCount = iTake(m_pBytes.get(), g_iSize);
        m_boEnd = iCount < g_iSize;
        m_iRead += iCount;
        setg(m_pBytes.get(), m_pBytes.get(), m_pBytes.get() + iCount);
        return iCount ? traits_type::to_int_type(*gptr()) : traits_type::eof();
    }

    // Tells where it stands, and goes back to the first byte; nowhere else.
    pos_type seekoff(off_type iOffset, std::ios_base::seekdir eFrom, std::ios_base::openmode) override {
        const auto iHere = static_cast<off_type>(m_iRead - waiting().size());
        if (eFrom == std::ios_base::cur && iOffset == 0) return iHere;
        return eFrom == std::ios_base::beg ? seekpos(iOffset, std::ios_base::in) : pos_type(off_type(-1));
    }
    pos_type seekpos(pos_type to, std::ios_base::openmode) override {
        return to == pos_type(0) && boRestart() ? to : pos_type(off_type(-1));
    }

private:
    static constexpr std::size_t g_iSize = 256 * 1024;

    std::unique_ptr<char[]> m_pBytes;   // of g_iSize
    std::uint64_t m_iRead = 0;
    bool m_boEnd = false;
};

// The bytes of the system. Those of a regular file, whose size is known, can be shared.
class Input::FileBuffer final : public Buffer, public stream::ShareableBuffer {
public:
    FileBuffer(std::FILE* pFile, std::string sName, std::uint64_t iSize)
        : m_pFile(pFile),
          m_sName(std::move(sName)),
          m_iSize(iSize) {
        std::setvbuf(pFile, nullptr, _IONBF, 0);
        m_boSeekable = std::fgetpos(pFile, &m_begin) == 0;
    }
    ~FileBuffer() override {
        if (m_pFile != stdin) std::fclose(m_pFile);
    }
    FileBuffer(const FileBuffer&) = delete;
    FileBuffer& operator=(const FileBuffer&) = delete;

    [[nodiscard]] std::unique_ptr<stream::SharedBytes> pShare() override {
        return m_iSize ? std::make_unique<Shared>(*this) : nullptr;
    }
    [[nodiscard]] std::string sFault() const override {
        return m_iError ? fmt::format("{}: {}", m_sName, std::strerror(m_iError)) : std::string();
    }

protected:
    std::size_t iTake(char* pTo, std::size_t iWanted) override {
        const std::size_t iCount = std::fread(pTo, 1, iWanted, m_pFile);
        if (iCount < iWanted && std::ferror(m_pFile)) m_iError = errno;
        return iCount;
    }
    bool boBegin() override { return m_boSeekable && std::fsetpos(m_pFile, &m_begin) == 0; }

private:
    class Shared final : public stream::SharedBytes {
    public:
        explicit Shared(FileBuffer& buffer)
            : SharedBytes(buffer.iRead() - buffer.waiting().size(), buffer.m_iSize),
              m_buffer(buffer) {}

        std::size_t iReadAt(std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept override {
            return stream::iReadFileAt(m_buffer.m_pFile, iPlace, pTo, iWanted);
        }
        void vReached(std::uint64_t iPlace) override { m_buffer.vRead(iPlace); }
        void vGoOnAt(std::uint64_t iPlace) override {
            if (!stream::boFileMoved(m_buffer.m_pFile, iPlace)) m_buffer.m_iError = errno;
            m_buffer.vGoOnAt(iPlace);
        }

    private:
        FileBuffer& m_buffer;
    };

    std::FILE* m_pFile;
    std::string m_sName;
    std::uint64_t m_iSize;   // 0: not known
    int m_iError = 0;
    std::fpos_t m_begin{};   // standard input may come with some of it taken
    bool m_boSeekable = false;
};

// Those inside of others.
class Input::UnpackBuffer final : public Buffer {
public:
    UnpackBuffer(std::unique_ptr<Buffer> pPacked, Packing packing, const std::string& sName,
                 const std::filesystem::path& path, const UnpackLimits& limits)
        : m_pPacked(std::move(pPacked)),
          m_boGzip(packing == Packing::Gzip),
          m_unpacked(packing, *m_pPacked, sName, path, limits) {}

    [[nodiscard]] const Unpacked& unpacked() const noexcept { return m_unpacked; }
    // What the system could not read comes first.
    [[nodiscard]] std::string sFault() const override {
        if (std::string sText = m_pPacked->sFault(); !sText.empty()) return sText;
        return sPrintable(m_unpacked.fault() + (m_unpacked.beyondLimits() ? "; --unpack-all reads it" : ""));
    }

protected:
    std::size_t iTake(char* pTo, std::size_t iWanted) override {
        return static_cast<std::size_t>(m_unpacked.bytes().sgetn(pTo, static_cast<std::streamsize>(iWanted)));
    }
    // The archive of a .zip is at hand, of a file or kept.
    bool boBegin() override {
        if (m_boGzip && !m_pPacked->boRestart()) return false;
        m_unpacked.restart();
        return true;
    }

private:
    std::unique_ptr<Buffer> m_pPacked;
    bool m_boGzip;
    Unpacked m_unpacked;
};

namespace {

[[noreturn]] void vFail(const std::string& sName, std::string_view text) {
    throw Failure(fmt::format("{}: {}", sName, text));
}

std::FILE* pOpen(const std::string& sPath) {
    if (sPath == "-") return stdin;
    std::error_code error;
    if (std::filesystem::is_directory(str::pathOf(sPath), error)) vFail(sPath, "is a folder, not a file");
    std::FILE* pFile = stream::pOpenFile(str::pathOf(sPath), "rb");
    if (!pFile) vFail(sPath, errno == ENOENT ? "there is no such file" : std::strerror(errno));
    return pFile;
}

std::uint64_t iSize(const std::string& sPath) {
    std::error_code error;
    if (sPath == "-" || !std::filesystem::is_regular_file(str::pathOf(sPath), error)) return 0;
    const std::uintmax_t iBytes = std::filesystem::file_size(str::pathOf(sPath), error);
    return error ? 0 : iBytes;
}

}   // namespace

Input::Input(const std::string& sPath)
    : m_sPath(sPath),
      m_sName(sPath == "-" ? "standard input" : sPath),
      m_sInside(sPath),
      m_iExpected(iSize(sPath)),
      m_pBuffer(std::make_unique<FileBuffer>(pOpen(sPath), m_sName, m_iExpected)),
      m_stream(m_pBuffer.get()) {
    m_pBuffer->sgetc();
    vFaultCheck();
    if (m_pBuffer->waiting().empty()) vFail(m_sName, "is empty");
}

Input::~Input() = default;

void Input::vUnpack(const UnpackLimits& limits) try {
    const Packing packing = packingOf(firstBytes());
    if (packing == Packing::None) return;
    std::error_code error;
    const bool boFile = m_sPath != "-" && std::filesystem::is_regular_file(str::pathOf(m_sPath), error);
    auto pInside = std::make_unique<UnpackBuffer>(std::move(m_pBuffer), packing, m_sName,
                                                  boFile ? str::pathOf(m_sPath) : std::filesystem::path(), limits);
    m_boPacked = true;
    m_sInside = pInside->unpacked().inside();
    m_iExpected = pInside->unpacked().size().value_or(0);
    m_pBuffer = std::move(pInside);
    m_stream.rdbuf(m_pBuffer.get());
    m_pBuffer->sgetc();
    vFaultCheck();
} catch (const FileError& error) {
    throw Failure(sPrintable(error.what()));
}

void Input::vFaultCheck() const {
    if (const std::string sFault = m_pBuffer->sFault(); !sFault.empty()) throw Failure(sFault);
}

bool Input::boBeginsWith(std::string_view text) const noexcept { return m_pBuffer->waiting().starts_with(text); }

std::string_view Input::firstBytes() const noexcept { return m_pBuffer->waiting(); }

std::uint64_t Input::iBytesRead() const noexcept { return m_pBuffer->iRead(); }

std::uint64_t Input::iFinish() {
    m_pBuffer->vReadToEnd();
    vFaultCheck();
    return m_pBuffer->iRead();
}

bool Input::boRestart() {
    if (!m_pBuffer->boRestart()) return false;
    m_stream.clear();
    return true;
}

}   // namespace oxa::tool
