// SPDX-License-Identifier: Apache-2.0
// Where a verb writes a file: a temporary file beside it, renamed at the end. A fault on the way leaves the old content
// as it was, and readers never see half of the new one.
#include "oxaifc/io/Target.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>
#include <streambuf>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/System.h"

namespace oxa::tool {

namespace fs = std::filesystem;

// The bytes of a FILE in large pieces. The first error is kept, since the stream says only that there was one.
class Target::Buffer final : public std::streambuf {
public:
    explicit Buffer(std::FILE* pFile) : m_pFile(pFile), m_bytes(g_iSize) {
        std::setvbuf(pFile, nullptr, _IONBF, 0);
        vReset();
    }
    ~Buffer() override {
        if (m_pFile && m_pFile != stdout) std::fclose(m_pFile);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    // Hands the rest on, to the disk itself with boToDisk, and closes. The error number of the first fault, or 0.
    int iClose(bool boToDisk) {
        boDrain();
        if (boToDisk && !m_iError && !boFlushToDisk(m_pFile)) m_iError = errno;
        std::FILE* pFile = m_pFile;
        m_pFile = nullptr;
        if (pFile != stdout && std::fclose(pFile) != 0 && !m_iError) m_iError = errno;
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
    std::vector<char> m_bytes;
    int m_iError = 0;
};

namespace {

[[noreturn]] void vFail(const std::string& sName, int iError) {
    throw Failure(
        fmt::format("can't write {}: {}", sName, iError == ENOENT ? "there is no such folder" : std::strerror(iError)));
}

// The file that a path stands for, links followed, so that a link stays one. A link to nothing is replaced.
std::string sRealPath(const std::string& sPath) {
    std::error_code error;
    const fs::path path = fs::canonical(sPath, error);
    return error ? sPath : path.string();
}

// A new file in the folder of "path", under a name that no other has. Null, and errno, when there can't be one.
std::FILE* pTemporary(const fs::path& path, std::string& sTemporary) {
    std::random_device random;
    for (int iTry = 0; iTry < 100; ++iTry) {
        sTemporary = (path.parent_path() / fmt::format(".oxaifc-{:08x}{:08x}.tmp", random(), random())).string();
        if (std::FILE* pFile = std::fopen(sTemporary.c_str(), "wbx")) return pFile;
        if (errno != EEXIST) break;
    }
    const int iError = errno;
    sTemporary.clear();
    errno = iError;
    return nullptr;
}

// A rename asks for rights on the folder alone, so it would replace a write-protected file.
void vWritableCheck(const std::string& sName, const std::string& sPath) {
    std::FILE* pFile = std::fopen(sPath.c_str(), "r+b");
    if (!pFile) vFail(sName, errno);
    std::fclose(pFile);
}

std::FILE* pOpen(const std::string& sName, const std::string& sPath, std::string& sTemporary) {
    if (sPath.empty()) return stdout;
    std::error_code error;
    const fs::file_status status = fs::status(sPath, error);
    if (fs::is_directory(status)) vFail(sName, EISDIR);
    const bool boReplace = fs::is_regular_file(status);
    if (boReplace) vWritableCheck(sName, sPath);
    std::FILE* pFile =
        boReplace || !fs::exists(status) ? pTemporary(sPath, sTemporary) : std::fopen(sPath.c_str(), "wb");
    if (!pFile) vFail(sName, errno);
    if (!boReplace) return pFile;
    fs::permissions(sTemporary, status.permissions(), error);   // before it holds what not all may read
    if (!error) return pFile;
    std::fclose(pFile);
    std::remove(sTemporary.c_str());
    vFail(sName, error.value());
}

}   // namespace

Target::Target(const std::string& sPath)
    : m_sName(sPath == "-" ? "standard output" : sPath),
      m_sPath(sPath == "-" ? "" : sRealPath(sPath)),
      m_pBuffer(std::make_unique<Buffer>(pOpen(m_sName, m_sPath, m_sTemporary))),
      m_stream(m_pBuffer.get()) {}

Target::~Target() {
    m_pBuffer.reset();
    if (!m_sTemporary.empty()) std::remove(m_sTemporary.c_str());
}

void Target::vFinish() {
    const int iError = m_pBuffer->iClose(!m_sTemporary.empty());
    // A reader that closes the pipe early has what it wanted.
    if (iError && !(m_sPath.empty() && iError == EPIPE)) vFail(m_sName, iError);
    if (m_sTemporary.empty()) return;
    std::error_code error;
    fs::rename(m_sTemporary, m_sPath, error);
    if (error) vFail(m_sName, error.value());
    m_sTemporary.clear();
}

bool Target::boIs(const std::string& sPath) const {
    std::error_code error;
    // A shell may have made a file standard input; a system without this name returns an error.
    const fs::path path = sPath == "-" ? "/dev/stdin" : sPath;
    return !m_sPath.empty() && fs::equivalent(m_sPath, path, error) && !error;
}

}   // namespace oxa::tool
