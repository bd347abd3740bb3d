// SPDX-License-Identifier: Apache-2.0
// What the platform's file that is replaced as a whole says in numbers, as a Failure; and standard output beside it.
#include "oxaifc/io/Target.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/System.h"
#include "platform/Path.h"
#include "platform/ReplacedFile.h"

namespace oxa::tool {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void vFail(const std::string& sName, int iError) {
    throw Failure(
        fmt::format("can't write {}: {}", sName, iError == ENOENT ? "there is no such folder" : std::strerror(iError)));
}

std::unique_ptr<stream::ReplacedFile> pReplaced(const std::string& sPath) try {
    return sPath == "-" ? std::make_unique<stream::ReplacedFile>(stdout)
                        : std::make_unique<stream::ReplacedFile>(str::pathOf(sPath));
} catch (const std::system_error& error) {
    vFail(sPath, error.code().value());
}

}   // namespace

Target::Target(const std::string& sPath, std::string_view inside)
    : m_sName(sPath == "-" ? "standard output" : sPath),
      m_pFile(pReplaced(sPath)) {
    const Packing packing = packingOfName(sPath);
    if (packing == Packing::None) return;
    const std::string sInside = unpackedName(str::sOfPath(str::pathOf(sPath).filename()), inside);
    m_pPacker = std::make_unique<Packer>(m_pFile->stream(), packing, sInside);
}

Target::~Target() = default;

std::ostream& Target::stream() noexcept { return m_pPacker ? m_pPacker->stream() : m_pFile->stream(); }

void Target::vFinish() try {
    if (m_pPacker) m_pPacker->finish();
    m_pFile->vFinish();
} catch (const std::system_error& error) {
    // A reader that closes the pipe early has what it wanted.
    const int iError = error.code().value();
    if (!m_pFile->path().empty() || !boReaderGone(iError)) vFail(m_sName, iError);
}

bool Target::boIs(const std::string& sPath) const {
    return !m_pFile->path().empty() && boSameFile(sPath, str::sOfPath(m_pFile->path()));
}

bool boSameFile(const std::string& sPath, const std::string& sOut) {
    std::error_code error;
    if (sPath == "-") return boIsStandardInput(str::pathOf(sOut));   // a shell may have made it that
    return fs::equivalent(str::pathOf(sOut), str::pathOf(sPath), error) && !error;
}

std::string sEndOf(const std::string& sPath) {
    std::string sEnd = str::sOfPath(str::pathOf(sPath).extension());
    for (char& c : sEnd)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return sEnd;
}

}   // namespace oxa::tool
