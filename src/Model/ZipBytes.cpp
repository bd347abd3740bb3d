// SPDX-License-Identifier: Apache-2.0
// The bytes of the one model in a ZIP archive. Nothing is written to a disk, so names with ".." do no harm.
#include <algorithm>
#include <ios>
#include <new>
#include <system_error>
#include <vector>

#include <zip.h>

#include "Model/Error.h"
#include "Model/Names.h"
#include "Model/PackedBytes.h"
#include "platform/Path.h"

namespace oxa::detail {

namespace {

constexpr std::size_t g_iMostKept = std::size_t{2} << 30;   // packed, of an archive that comes from no file
constexpr std::size_t g_iMostNames = 5;                     // in a message
constexpr std::size_t g_iLongestName = 80;                  // the same

struct CloseArchive {
    void operator()(zip_t* pArchive) const { zip_discard(pArchive); }
};
struct CloseFile {
    void operator()(zip_file_t* pFile) const { zip_fclose(pFile); }
};

// A name for a message, whatever it holds.
std::string sShownName(std::string_view name) {
    std::string sName(name.substr(0, g_iLongestName));
    for (char& c : sName)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return name.size() > g_iLongestName ? sName + "..." : sName;
}

// "a.ifc, b.ifc and 7 more".
std::string sNames(const std::vector<std::string>& names) {
    std::string sText;
    for (std::size_t i = 0; i < std::min(names.size(), g_iMostNames); ++i)
        sText += (i ? ", " : "") + sShownName(names[i]);
    if (names.size() > g_iMostNames) sText += " and " + std::to_string(names.size() - g_iMostNames) + " more";
    return sText;
}

[[noreturn]] void vRefuse(const std::string& sWhy) { throw FileError("is a ZIP archive " + sWhy); }

[[noreturn]] void vRefuse(const zip_error_t& error) {
    switch (zip_error_code_zip(&error)) {
    case ZIP_ER_MEMORY: throw std::bad_alloc();
    case ZIP_ER_NOZIP: vRefuse("that was cut or is damaged: the list of its files, at its end, is missing");
    case ZIP_ER_MULTIDISK: vRefuse("in several parts; unpack it and name the file inside");
    case ZIP_ER_OPEN:
    case ZIP_ER_READ:
    case ZIP_ER_SEEK:
    case ZIP_ER_TELL:
        throw FileError("can't be read: " + std::generic_category().message(zip_error_code_system(&error)));
    default: vRefuse("that was cut or is damaged: the list of its files is not whole");
    }
}

// All of it, still packed.
std::string sKept(std::streambuf& packed) {
    constexpr std::size_t g_iStep = std::size_t{1} << 20;
    std::string sBytes;
    for (std::streamsize iRead = 1; iRead > 0;) {
        const std::size_t iBefore = sBytes.size();
        if (iBefore > g_iMostKept)
            throw FileError("is a ZIP archive of more than 2 GiB, which is read from a file only");
        sBytes.resize(iBefore + g_iStep);
        iRead = packed.sgetn(sBytes.data() + iBefore, static_cast<std::streamsize>(g_iStep));
        sBytes.resize(iBefore + static_cast<std::size_t>(std::max<std::streamsize>(iRead, 0)));
    }
    return sBytes;
}

// How sure the end of a name says that it is a model: 2, 1 for what may be one, 0.
int iLikely(std::string_view name) {
    const std::size_t iPoint = name.rfind('.');
    const std::string_view end = iPoint == std::string_view::npos ? std::string_view() : name.substr(iPoint);
    for (const char* pEnd : {".ifc", ".ifcxml", ".stp", ".step", ".p21", ".spf"})
        if (boSameName(end, pEnd)) return 2;
    for (const char* pEnd : {".xml", ".txt", ".exp"})
        if (boSameName(end, pEnd)) return 1;
    return 0;
}

// A folder, or what some systems put beside a file.
bool boNoFile(std::string_view name) {
    return name.empty() || name.ends_with('/') || name.starts_with("__MACOSX/") ||
           name.substr(name.rfind('/') + 1).starts_with('.');
}

class ZipBytes final : public PackedBytes {
public:
    ZipBytes(std::streambuf& packed, const std::filesystem::path& path) {
        vOpen(packed, path);
        vChoose();
        vRestart();
    }

    std::size_t iTake(char* pTo, std::size_t iWanted) override {
        std::size_t iTaken = 0;
        while (iTaken < iWanted && m_pFile && m_sFault.empty()) {
            const zip_int64_t iRead = zip_fread(m_pFile.get(), pTo + iTaken, iWanted - iTaken);
            if (iRead == 0) {
                vEnd();
                break;
            }
            if (iRead < 0)
                vFault(*zip_file_get_error(m_pFile.get()));
            else
                iTaken += static_cast<std::size_t>(iRead);
            m_iDone += static_cast<std::uint64_t>(std::max<zip_int64_t>(iRead, 0));
        }
        return iTaken;
    }

    [[nodiscard]] std::uint64_t iPacked() const override { return m_iPacked; }
    [[nodiscard]] std::optional<std::uint64_t> size() const override { return m_size; }
    [[nodiscard]] std::string sInside() const override { return m_sName; }

    void vRestart() override {
        m_sFault.clear();
        m_iDone = 0;
        m_pFile.reset(zip_fopen_index(m_pArchive.get(), m_iEntry, 0));
        if (!m_pFile) vFault(*zip_get_error(m_pArchive.get()));
    }

private:
    void vOpen(std::streambuf& packed, const std::filesystem::path& path) {
        zip_error_t error;
        zip_error_init(&error);
        zip_source_t* pSource = nullptr;
        if (path.empty()) {
            m_sKept = sKept(packed);
            pSource = zip_source_buffer_create(m_sKept.data(), m_sKept.size(), 0, &error);
        } else {
            pSource = zip_source_file_create(str::sOfPath(path).c_str(), 0, -1, &error);
        }
        if (!pSource) vRefuse(error);
        m_pArchive.reset(zip_open_from_source(pSource, ZIP_RDONLY, &error));
        if (m_pArchive) return;
        zip_source_free(pSource);
        vRefuse(error);
    }

    // The likeliest files by their names; exactly one is it.
    void vChoose() {
        const zip_int64_t iEntries = zip_get_num_entries(m_pArchive.get(), 0);
        std::vector<std::string> names;   // of the likeliest so far
        int iBest = 0;
        for (zip_int64_t i = 0; i < iEntries; ++i) {
            const char* const pName = zip_get_name(m_pArchive.get(), static_cast<zip_uint64_t>(i), ZIP_FL_ENC_GUESS);
            if (!pName || boNoFile(pName) || iLikely(pName) < iBest) continue;
            if (iLikely(pName) > iBest) names.clear();
            iBest = iLikely(pName);
            if (names.empty()) m_iEntry = static_cast<zip_uint64_t>(i);
            names.emplace_back(pName);
        }
        if (names.empty()) vRefuse("with nothing in it");
        if (names.size() > 1 && !iBest) vRefuse("without a model; it holds " + sNames(names));
        if (names.size() > 1) vRefuse("with several models, " + sNames(names) + "; unpack it and name one");
        m_sName = names.front();
        vCheck();
    }

    // What the list of the archive says of that file.
    void vCheck() {
        zip_stat_t stat;
        zip_stat_init(&stat);
        if (zip_stat_index(m_pArchive.get(), m_iEntry, 0, &stat) != 0) vRefuse(*zip_get_error(m_pArchive.get()));
        if (stat.valid & ZIP_STAT_SIZE) m_size = stat.size;
        if (stat.valid & ZIP_STAT_COMP_SIZE) m_iPacked = stat.comp_size;
        if ((stat.valid & ZIP_STAT_ENCRYPTION_METHOD) && stat.encryption_method != ZIP_EM_NONE)
            vRefuse("whose " + sShownName(m_sName) + " is encrypted; unpack it and name the file inside");
        if ((stat.valid & ZIP_STAT_COMP_METHOD) && !zip_compression_method_supported(stat.comp_method, 0))
            vRefuse("whose " + sShownName(m_sName) + " is compressed by method " + std::to_string(stat.comp_method) +
                    ", which is not read here; unpack it and name the file inside");
    }

    [[nodiscard]] std::string sOf() const { return "is a ZIP archive whose " + sShownName(m_sName); }

    // The library compares the check sum alone where bytes were compressed.
    void vEnd() {
        if (m_size && m_iDone != *m_size)
            m_sFault = sOf() + " is damaged: it has " + std::to_string(m_iDone) + " bytes, the list says " +
                       std::to_string(*m_size);
    }

    void vFault(const zip_error_t& error) {
        const int iCode = zip_error_code_zip(&error);
        if (iCode == ZIP_ER_MEMORY) throw std::bad_alloc();
        if (iCode == ZIP_ER_CRC)
            m_sFault = sOf() + " is damaged: its check sum is that of other bytes";
        else
            m_sFault = sOf() + " was cut or is damaged";
    }

    std::string m_sKept;   // the archive, where it comes from no file
    std::unique_ptr<zip_t, CloseArchive> m_pArchive;
    zip_uint64_t m_iEntry = 0;
    std::string m_sName;
    std::optional<std::uint64_t> m_size;
    std::uint64_t m_iPacked = 0;
    std::uint64_t m_iDone = 0;                        // bytes that came out
    std::unique_ptr<zip_file_t, CloseFile> m_pFile;   // goes before the archive does
};

}   // namespace

std::unique_ptr<PackedBytes> pZipBytes(std::streambuf& packed, const std::filesystem::path& path) {
    return std::make_unique<ZipBytes>(packed, path);
}

}   // namespace oxa::detail
