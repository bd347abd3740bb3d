// SPDX-License-Identifier: Apache-2.0
/// @file
/// ReplacedFile: a file that is replaced as a whole or not at all.
///
/// For      whatever writes a file that somebody may be reading, or that may have been its own input.
/// How      the bytes go to a new file in the same folder, which takes the name of the old one when all of them are on
///          the disk: whoever looks sees the old content or the new one. What is no regular file, as a pipe or a device,
///          is written as it comes.
/// Errors   std::system_error with the system's number (errno), with an existing file as it was and no other behind.
/// Ended    a process that a signal ends calls removeUnfinished() (Unfinished.h), which knows the new files.
/// Threads  one at a time.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <ostream>

#include "platform/Export.h"
#include "platform/Unfinished.h"

namespace oxa::stream {

/// One file on its way.
class OXA_PLATFORM_API ReplacedFile {
public:
    /// Opens it. Links are followed, so that a link stays one. A write-protected file, and one whose permissions the new
    /// one can't have, is refused.
    explicit ReplacedFile(const std::filesystem::path& path);
    /// A file that is open already, as standard output: written as it comes, and not closed here.
    explicit ReplacedFile(std::FILE* pOpen);
    /// Removes what was written, unless vFinish took it over.
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    /// Where the bytes go. Once it fails it stays so and drops what follows; vFinish tells why.
    [[nodiscard]] std::ostream& stream() noexcept { return m_stream; }
    /// The new file in the same folder, empty, for a library that writes by path instead of into stream(); empty text for
    /// what is written as it comes. It must be closed again before vFinish.
    [[nodiscard]] const std::filesystem::path& temporaryPath() const noexcept { return m_temporary; }
    /// Hands all bytes to the disk, so that nothing but the renaming is left to vFinish. For whoever replaces several files,
    /// all of them or none.
    void vClose();
    /// Puts the new file in the place of the old one, with the permissions of that. Once, as the last call.
    void vFinish();
    /// The file that is replaced, links followed; empty for one that was open already.
    [[nodiscard]] const std::filesystem::path& path() const noexcept { return m_path; }

private:
    class Buffer;

    std::filesystem::path m_path;
    std::filesystem::path m_temporary;   // empty where nothing is to be renamed
    Unfinished m_unfinished;             // the same
    bool m_boClosed = false;
    std::unique_ptr<Buffer> m_pBuffer;
    std::ostream m_stream;
};

}   // namespace oxa::stream
