// SPDX-License-Identifier: Apache-2.0
#include "Model/TargetFile.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>
#include <vector>

#include "Model/Error.h"
#include "platform/Id.h"

namespace oxa::detail {

namespace fs = std::filesystem;

// The bytes of a FILE in large pieces. The first error is kept, since the stream says only that there was one.
class TargetFile::Buffer final : public std::streambuf {
public:
    explicit Buffer(std::FILE* pFile) : m_pFile(pFile), m_bytes(g_iSize) {
        std::setvbuf(pFile, nullptr, _IONBF, 0);
        vReset();
    }
    ~Buffer() override {
        if (m_pFile) std::fclose(m_pFile);
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    // Hands the rest on and closes. The error number of the first fault, or 0.
    int iClose() {
        boDrain();
        std::FILE* pFile = std::exchange(m_pFile, nullptr);
        if (std::fclose(pFile) != 0 && !m_iError) m_iError = errno;
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

// The file that a path stands for, links followed, so that a link stays one. A link to nothing is replaced.
fs::path realPath(const fs::path& path) {
    std::error_code error;
    fs::path real = fs::canonical(path, error);
    return error ? path : real;
}

struct OpenFile {
    std::FILE* pFile = nullptr;   // null: errno says why
    fs::path temporary;
};

// Beside "path", under a name that no other has.
OpenFile temporaryFile(const fs::path& path) {
    fs::path temporary = path;
    temporary.replace_filename("." + path.filename().string() + "-" + Guid::generate().toString() + ".tmp");
    return {std::fopen(temporary.string().c_str(), "wbx"), temporary};
}

OpenFile openFile(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) {
        errno = EISDIR;
        return {};
    }
    if (!fs::exists(status)) return temporaryFile(path);
    if (!fs::is_regular_file(status)) return {std::fopen(path.string().c_str(), "wb"), {}};
    // A rename asks for rights on the folder alone, so it would replace a write-protected file.
    std::FILE* pOld = std::fopen(path.string().c_str(), "r+b");
    if (!pOld) return {};
    std::fclose(pOld);
    OpenFile file = temporaryFile(path);
    if (file.pFile) fs::permissions(file.temporary, status.permissions(), error);   // as far as the folder lets
    return file;
}

}   // namespace

TargetFile::TargetFile(const fs::path& path) : m_sName(path.string()), m_path(realPath(path)), m_stream(nullptr) {
    OpenFile file = openFile(m_path);
    if (!file.pFile) vFail(errno);
    m_temporary = std::move(file.temporary);
    m_pBuffer = std::make_unique<Buffer>(file.pFile);
    m_stream.rdbuf(m_pBuffer.get());
}

TargetFile::~TargetFile() {
    m_pBuffer.reset();
    std::error_code error;
    if (!m_temporary.empty()) fs::remove(m_temporary, error);
}

void TargetFile::vFinish() {
    if (const int iError = m_pBuffer->iClose()) vFail(iError);
    if (m_temporary.empty()) return;
    std::error_code error;
    fs::rename(m_temporary, m_path, error);
    if (error) vFail(error.value());
    m_temporary.clear();
}

void TargetFile::vFail(int iError) const {
    throw FileError(m_sName + ": can't be written: " + std::generic_category().message(iError));
}

}   // namespace oxa::detail
