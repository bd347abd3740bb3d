// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/PartFiles.h"

#include <algorithm>
#include <system_error>

#include <fmt/format.h>

#include "oxaifc/formats/Format.h"
#include "oxaifc/io/Failure.h"
#include "platform/Path.h"
#include "schema/Schema.h"

namespace oxa::tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t g_iMostNameBytes =
    100;   // of a name; systems take 255, of which the rest is for OUT and the number

// Names that Windows keeps for devices, with any end.
bool boDevice(std::string_view name) {
    const std::string sUpper = ifc::def::schema::sUpper(name.substr(0, name.find('.')));
    for (const char* pDevice : {"CON", "PRN", "AUX", "NUL"})
        if (sUpper == pDevice) return true;
    return sUpper.size() == 4 && (sUpper.starts_with("COM") || sUpper.starts_with("LPT")) && sUpper[3] >= '0' &&
           sUpper[3] <= '9';
}

// Shorter, between two characters of UTF-8.
void vShorten(std::string& sName) {
    if (sName.size() <= g_iMostNameBytes) return;
    std::size_t iEnd = g_iMostNameBytes;
    while (iEnd > 0 && (static_cast<unsigned char>(sName[iEnd]) & 0xC0U) == 0x80U) --iEnd;
    sName.resize(iEnd);
}

}   // namespace

std::string sFileName(std::string_view name, const std::string& sInstead) {
    constexpr std::string_view g_refused = "/\\:*?\"<>|";
    std::string sName;
    for (const char c : name) {
        const bool boControl = static_cast<unsigned char>(c) < ' ' || c == '\x7f';
        sName += boControl || g_refused.find(c) != std::string_view::npos ? '_' : c;
    }
    // Dots in front hide a file or lead out of its folder; blanks and dots at the end are lost on some systems.
    sName.erase(0, std::min(sName.find_first_not_of(". "), sName.size()));
    vShorten(sName);
    while (!sName.empty() && (sName.back() == '.' || sName.back() == ' ')) sName.pop_back();
    if (sName.empty()) return sInstead;
    return boDevice(sName) ? "_" + sName : sName;
}

PartFiles::PartFiles(const std::string& sOut, std::string_view end) {
    const fs::path path = str::pathOf(sOut);
    std::error_code error;
    if (fs::is_directory(path, error) || !pFormatFromName(sOut)) {
        m_folder = path;
        m_sEnd = end;
        if (!fs::is_directory(path, error) && !fs::create_directory(path, error))
            throw Failure(fmt::format("can't make the folder {}: {}", sOut,
                                      error == std::errc::no_such_file_or_directory
                                          ? "there is none to put it in"
                                          : error.default_error_condition().message()));
        return;
    }
    m_folder = path.parent_path();
    m_sBefore = str::sOfPath(path.stem()) + "-";
    m_sEnd = str::sOfPath(path.extension());
}

std::string PartFiles::sNext(std::string_view name, const std::string& sInstead) {
    const std::string sName = m_sBefore + sFileName(name, sInstead);
    std::string sTry = sName;
    for (int i = 2; !m_taken.insert(ifc::def::schema::sUpper(sTry)).second; ++i) sTry = fmt::format("{}-{}", sName, i);
    return str::sOfPath(m_folder / str::pathOf(sTry + m_sEnd));
}

}   // namespace oxa::tool
