// SPDX-License-Identifier: Apache-2.0
// A file or standard input as a stream, which the system's errors do not pass as a mere end of the file: they become a
// Failure that names the file.
#include "oxaifc/io/Input.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <streambuf>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"

namespace oxa::tool {

// Large pieces straight from the system: the users have buffers of their own.
class Input::Buffer final : public std::streambuf {
public:
    explicit Buffer(std::FILE* pFile) : m_pFile(pFile), m_bytes(g_iSize) {
        std::setvbuf(pFile, nullptr, _IONBF, 0);
        m_boSeekable = std::fgetpos(pFile, &m_begin) == 0;
    }
    ~Buffer() override {
        if (m_pFile != stdin) std::fclose(m_pFile);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    [[nodiscard]] std::string_view waiting() const { return {gptr(), static_cast<std::size_t>(egptr() - gptr())}; }
    [[nodiscard]] std::uint64_t iRead() const noexcept { return m_iRead; }
    [[nodiscard]] int iError() const noexcept { return m_iError; }

    void vReadToEnd() {
        while (underflow() != traits_type::eof()) setg(eback(), egptr(), egptr());
    }

    bool boRestart() {
        if (!m_boSeekable || std::fsetpos(m_pFile, &m_begin) != 0) return false;
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data());
        m_iRead = 0;
        m_boEnd = false;
        return true;
    }

protected:
    int_type underflow() override {
        if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
        if (m_boEnd) return traits_type::eof();
        const std::size_t iCount = std::fread(m_bytes.data(), 1, m_bytes.size(), m_pFile);
        if (iCount < m_bytes.size()) {
            m_boEnd = true;
            if (std::ferror(m_pFile)) m_iError = errno;
        }
        m_iRead += iCount;
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + iCount);
        return iCount ? traits_type::to_int_type(*gptr()) : traits_type::eof();
    }

private:
    static constexpr std::size_t g_iSize = 256 * 1024;

    std::FILE* m_pFile;
    std::vector<char> m_bytes;
    std::uint64_t m_iRead = 0;
    int m_iError = 0;
    bool m_boEnd = false;
    std::fpos_t m_begin{};   // standard input may come with some of it taken
    bool m_boSeekable = false;
};

namespace {

[[noreturn]] void vFail(const std::string& sName, std::string_view text) {
    throw Failure(fmt::format("{}: {}", sName, text));
}

std::FILE* pOpen(const std::string& sPath) {
    if (sPath == "-") return stdin;
    std::error_code error;
    if (std::filesystem::is_directory(sPath, error)) vFail(sPath, "is a folder, not a file");
    std::FILE* pFile = std::fopen(sPath.c_str(), "rb");
    if (!pFile) vFail(sPath, errno == ENOENT ? "there is no such file" : std::strerror(errno));
    return pFile;
}

std::uint64_t iSize(const std::string& sPath) {
    std::error_code error;
    if (sPath == "-" || !std::filesystem::is_regular_file(sPath, error)) return 0;
    const std::uintmax_t iBytes = std::filesystem::file_size(sPath, error);
    return error ? 0 : iBytes;
}

}   // namespace

Input::Input(const std::string& sPath)
    : m_sName(sPath == "-" ? "standard input" : sPath),
      m_iExpected(iSize(sPath)),
      m_pBuffer(std::make_unique<Buffer>(pOpen(sPath))),
      m_stream(m_pBuffer.get()) {
    m_pBuffer->sgetc();
    if (m_pBuffer->iError()) vFail(m_sName, std::strerror(m_pBuffer->iError()));
    if (m_pBuffer->waiting().empty()) vFail(m_sName, "is empty");
}

Input::~Input() = default;

bool Input::boBeginsWith(std::string_view text) const noexcept { return m_pBuffer->waiting().starts_with(text); }

std::string_view Input::firstBytes() const noexcept { return m_pBuffer->waiting(); }

std::uint64_t Input::iBytesRead() const noexcept { return m_pBuffer->iRead(); }

std::uint64_t Input::iFinish() {
    m_pBuffer->vReadToEnd();
    if (m_pBuffer->iError()) vFail(m_sName, std::strerror(m_pBuffer->iError()));
    return m_pBuffer->iRead();
}

bool Input::boRestart() {
    if (!m_pBuffer->boRestart()) return false;
    m_stream.clear();
    return true;
}

}   // namespace oxa::tool
