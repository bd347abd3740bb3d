// SPDX-License-Identifier: Apache-2.0
// TargetFile: a file that is replaced as a whole or not at all.
//
// For      Model::save.
// How      the bytes go to a new file in the same folder, which takes the place of the old one when all are there. What
//          is no regular file, as a pipe, is written to directly.
// Errors   FileError, with the old file as it was.
#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

namespace oxa::detail {

class TargetFile {
public:
    explicit TargetFile(const std::filesystem::path& path);
    ~TargetFile();   // takes the new file away, unless vFinish was there
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;

    [[nodiscard]] std::ostream& stream() noexcept { return m_stream; }
    void vFinish();

private:
    class Buffer;
    [[noreturn]] void vFail(int iError) const;

    std::string m_sName;
    std::filesystem::path m_path;        // links followed
    std::filesystem::path m_temporary;   // empty where the file itself is written
    std::unique_ptr<Buffer> m_pBuffer;
    std::ostream m_stream;
};

}   // namespace oxa::detail
