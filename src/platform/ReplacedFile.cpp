// SPDX-License-Identifier: Apache-2.0
// A temporary file beside the old one, renamed at the end.
#include "platform/ReplacedFile.h"

#include <cerrno>
#include <streambuf>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/Id.h"
#include "platform/System.h"

namespace oxa::stream {

namespace fs = std::filesystem;

// The bytes of a FILE in large pieces. The first error is kept, since the stream says only that there was one.
class ReplacedFile::Buffer final : public std::streambuf {
public:
    Buffer(std::FILE* pFile, bool boOwned) : m_pFile(pFile), m_boOwned(boOwned), m_bytes(g_iSize) {
        std::setvbuf(pFile, nullptr, _IONBF, 0);
        vReset();
    }
    ~Buffer() override {
        if (m_pFile && m_boOwned) std::fclose(m_pFile);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    // Hands the rest on, to the disk itself with boToDisk, and closes. The error number of the first fault, or 0.
    int iClose(bool boToDisk) {
        boDrain();
        if (boToDisk && !m_iError && !platform::boFlushToDisk(m_pFile)) m_iError = errno;
        std::FILE* pFile = std::exchange(m_pFile, nullptr);
        if (m_boOwned && std::fclose(pFile) != 0 && !m_iError) m_iError = errno;
        return m_iError;
    }

protected:
    int_type overflow(int_type c) override {
        if (!boDrain()) return traits_type::eof();
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
        return c;
    }
    // The frame of a file flushes at each of its lines; a buffer that is not full may wait.
    int sync() override { return m_iError ? -1 : 0; }

private:
    static constexpr std::size_t g_iSize = 256 * 1024;

    void vReset() { setp(m_bytes.data(), m_bytes.data() + m_bytes.size()); }
    bool boDrain() {
        const auto iCount = static_cast<std::size_t>(pptr() - pbase());
        vReset();
        if (!m_iError && std::fwrite(m_bytes.data(), 1, iCount, m_pFile) != iCount) m_iError = errno;
        return !m_iError;
    }

    std::FILE* m_pFile;
    bool m_boOwned;
    std::vector<char> m_bytes;
    int m_iError = 0;
};

namespace {

[[noreturn]] void vFail(int iError) { throw std::system_error(iError, std::generic_category()); }

// Some systems have numbers of their own.
int iErrnoOf(const std::error_code& error) { return error.default_error_condition().value(); }

std::FILE* pOpened(const fs::path& path, const char* sMode) {
    std::FILE* pFile = platform::pOpen(path, sMode);
    if (!pFile) vFail(errno);
    return pFile;
}

// The file that a path stands for. A link to nothing is replaced itself.
fs::path realPath(const fs::path& path) {
    std::error_code error;
    fs::path real = fs::canonical(path, error);
    return error ? path : real;
}

std::FILE* pOpen(const fs::path& path, fs::path& temporary, Unfinished& unfinished) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) vFail(EISDIR);
    const bool boOld = fs::is_regular_file(status);
    if (!boOld && fs::exists(status)) return pOpened(path, "wb");
    // A rename asks for rights on the folder alone, so it would replace a write-protected file.
    if (boOld) std::fclose(pOpened(path, "r+b"));
    const fs::path beside = path.parent_path() / (".oxaifc-" + Guid::generate().toString() + ".tmp");
    unfinished.vNote(beside);
    std::FILE* pFile = pOpened(beside, "wbx");
    if (boOld) fs::permissions(beside, status.permissions(), error);   // before it holds what not all may read
    if (boOld && error) {
        std::fclose(pFile);
        const int iError = iErrnoOf(error);
        fs::remove(beside, error);
        vFail(iError);
    }
    temporary = beside;
    return pFile;
}

}   // namespace

ReplacedFile::ReplacedFile(const fs::path& path)
    : m_path(realPath(path)),
      m_pBuffer(std::make_unique<Buffer>(pOpen(m_path, m_temporary, m_unfinished), true)),
      m_stream(m_pBuffer.get()) {}

ReplacedFile::ReplacedFile(std::FILE* pOpen)
    : m_pBuffer(std::make_unique<Buffer>(pOpen, false)),
      m_stream(m_pBuffer.get()) {}

ReplacedFile::~ReplacedFile() {
    m_pBuffer.reset();
    std::error_code error;
    if (!m_temporary.empty()) fs::remove(m_temporary, error);
}

void ReplacedFile::vClose() {
    if (std::exchange(m_boClosed, true)) return;
    if (const int iError = m_pBuffer->iClose(!m_temporary.empty())) vFail(iError);
}

void ReplacedFile::vFinish() {
    vClose();
    if (m_temporary.empty()) return;
    if (const int iError = platform::iReplace(m_temporary, m_path)) vFail(iError);
    m_unfinished.vForget();
    m_temporary.clear();
}

}   // namespace oxa::stream
