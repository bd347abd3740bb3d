// SPDX-License-Identifier: Apache-2.0
// The count of a file: its head is read by the reader itself, up to the word DATA; what follows is cut into ranges, which
// threads count; at its end stands what ends an exchange structure, and nothing else.
//
// A cut is guessed: behind a ";" that a "#" and a digit follow. It is proven by the range in front of it, which has to end
// there with a whole statement. A guess that a string or a comment has misled is no doubt of the file: then it is counted
// once more as one range.
#include "Format/Ifc/IfcCountFile.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Core/Utilities/Threads/OnAllThreads.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Read/StatementCount.h"
#include "Format/Ifc/Store/GuidMap.h"

namespace oxa::ifc::io {

namespace {

using details::CountDoubt;
using details::StatementCount;
using Progress = std::function<void(std::uint64_t)>;

constexpr std::size_t g_iHead = 64 * 1024;     // bytes in which the DATA section has to begin
constexpr std::size_t g_iTail = 4096;          // bytes behind it, at the most
constexpr std::size_t g_iCut = 64 * 1024;      // bytes in which a cut is looked for
constexpr std::uint64_t g_iLeast = 1U << 20;   // of a range
constexpr std::uint64_t g_iMost = 16U << 20;

constexpr bool boBlank(char c) noexcept { return c == ' ' || c == '\n' || c == '\r'; }

constexpr std::string_view doubtText(CountDoubt eDoubt) noexcept {
    switch (eDoubt) {
    case CountDoubt::None: return {};
    case CountDoubt::Unreadable: return "its bytes can't be had in pieces";
    case CountDoubt::Header: return "its header is not without fault";
    case CountDoubt::Data: return "no DATA section near its begin";
    case CountDoubt::Cut:
    case CountDoubt::Statement: return "a statement that is not #12=KEYWORD(...);";
    case CountDoubt::Byte: return "a byte that no statement has outside of strings";
    case CountDoubt::Type: return "a keyword that no instance of its schema has";
    case CountDoubt::Number: return "a number that stands twice or is too large";
    case CountDoubt::GlobalId: return "a GlobalId that stands twice or is none";
    case CountDoubt::End: return "its DATA section does not end the file";
    case CountDoubt::Stopped:
    case CountDoubt::Memory: return "too little memory";
    }
    return {};
}

// Its bytes come straight to their user.
class Bytes {
public:
    explicit Bytes(const std::filesystem::path& path) {
        m_stream.rdbuf()->pubsetbuf(nullptr, 0);
        m_stream.open(path, std::ios::binary);
    }
    [[nodiscard]] std::ifstream& stream() noexcept { return m_stream; }

    // Up to so many bytes from there on.
    std::string sAt(std::uint64_t iFrom, std::size_t iCount) {
        std::string sText(iCount, '\0');
        m_stream.clear();
        m_stream.seekg(static_cast<std::streamoff>(iFrom));
        m_stream.read(sText.data(), static_cast<std::streamsize>(iCount));
        sText.resize(static_cast<std::size_t>(m_stream.gcount()));
        return sText;
    }

private:
    std::ifstream m_stream;
};

// Behind the statement "DATA;" that comes first, if it is one; npos without.
std::size_t iBehindData(std::string_view text) {
    constexpr std::string_view word = "DATA";
    for (std::size_t i = text.find(word); i != std::string_view::npos; i = text.find(word, i + 1)) {
        std::size_t iBefore = i;
        while (iBefore > 0 && boBlank(text[iBefore - 1])) --iBefore;
        std::size_t iBehind = i + word.size();
        while (iBehind < text.size() && boBlank(text[iBehind])) ++iBehind;
        if (iBefore > 0 && text[iBefore - 1] == ';' && iBehind < text.size() && text[iBehind] == ';')
            return iBehind + 1;
    }
    return std::string_view::npos;
}

// Behind the first end of a statement that another seems to follow; npos without.
std::size_t iGuessedCut(std::string_view text) {
    for (std::size_t i = text.find(';'); i != std::string_view::npos; i = text.find(';', i + 1)) {
        std::size_t iNext = i + 1;
        while (iNext < text.size() && boBlank(text[iNext])) ++iNext;
        if (iNext + 1 < text.size() && text[iNext] == '#' && text[iNext + 1] >= '0' && text[iNext + 1] <= '9')
            return i + 1;
    }
    return std::string_view::npos;
}

// Whether it is "END-ISO-10303-21;" and blanks.
bool boEndOfFile(std::string_view text) {
    constexpr std::string_view end = "END-ISO-10303-21;";
    while (!text.empty() && boBlank(text.front())) text.remove_prefix(1);
    return text.starts_with(end) && std::ranges::all_of(text.substr(end.size()), boBlank);
}

class Count {
public:
    Count(const std::filesystem::path& path, const CountOptions& options)
        : m_path(path),
          m_options(options),
          m_bytes(path) {}

    CountDoubt run(FileCount& result) {
        std::error_code error;
        m_iSize = std::filesystem::file_size(m_path, error);
        if (error || !m_bytes.stream()) return CountDoubt::Unreadable;
        if (const CountDoubt eDoubt = headRead(result); eDoubt != CountDoubt::None) return eDoubt;
        vCut();
        CountDoubt eDoubt = rangesCount();
        if (eDoubt == CountDoubt::Cut && m_ranges.size() > 1) {
            m_ranges = {{m_ranges.front().iFrom, m_ranges.back().iTo, true}};
            eDoubt = rangesCount();
        }
        return eDoubt == CountDoubt::None ? resultMake(result) : eDoubt;
    }

private:
    // What the reader makes of the bytes up to the DATA section and of an empty one. It ends only where it has come to the
    // section: ENDSEC inside of the header, of a string or of a comment is no end.
    CountDoubt headRead(FileCount& result) {
        std::string sHead = m_bytes.sAt(0, g_iHead);
        const std::size_t iData = iBehindData(sHead);
        if (iData == std::string::npos) return CountDoubt::Data;
        sHead.resize(iData);
        m_iData = iData;
        std::istringstream head(sHead + "ENDSEC;");
        ReadError errors;
        result.pFile = std::make_unique<File>();
        const bool boRead =
            result.pFile->boRead(head, errors, {.schemaFromName = m_options.schemaFromName, .boSingleThreaded = true});
        if (!boRead || !errors.records().empty() || errors.passedOver().iCount || errors.lostStatements().iCount ||
            !result.pFile->data().entities().empty())
            return CountDoubt::Header;
        m_pSchema = result.pFile->data().pSchema();
        return m_pSchema ? CountDoubt::None : CountDoubt::Header;
    }

    void vCut() {
        const unsigned iCores = std::max(1U, std::thread::hardware_concurrency());
        m_iThreads = m_options.boSingleThreaded ? 1 : iCores;
        const std::uint64_t iPiece = std::clamp((m_iSize - m_iData) / (m_iThreads * 4), g_iLeast, g_iMost);
        m_ranges = {{m_iData, m_iSize, true}};
        if (m_iThreads == 1) return;
        for (std::uint64_t iNext = m_iData + iPiece; iNext + iPiece / 2 < m_iSize; iNext += iPiece) {
            const std::size_t iCut = iGuessedCut(m_bytes.sAt(iNext, g_iCut));
            if (iCut == std::string::npos) continue;
            m_ranges.back() = {m_ranges.back().iFrom, iNext + iCut, false};
            m_ranges.push_back({iNext + iCut, m_iSize, true});
        }
        m_iThreads = static_cast<unsigned>(std::min<std::size_t>(m_iThreads, m_ranges.size()));
    }

    // On all threads. Of several doubts the one that stands first in the file counts: all in front of it is proven then.
    CountDoubt rangesCount() {
        m_iNext = 0;
        m_iDone = 0;
        m_iDoubtful = m_ranges.size();
        m_doubts.assign(m_ranges.size(), CountDoubt::None);
        const def::schema::Entity* const pRoot = m_pSchema->pEntityFromName(def::schema::ObjectName("IFCROOT"));
        m_counts.clear();
        for (unsigned i = 0; i < m_iThreads; ++i)
            m_counts.push_back(std::make_unique<StatementCount>(*m_pSchema, pRoot));
        util::vOnAllThreads(
            m_iThreads - 1,
            [this](std::size_t i) { vTakeRanges(*m_counts[i], i == 0 ? m_options.progress : Progress()); },
            [this] { m_iDoubtful = 0; });                      // no range is counted to its end
        if (m_options.progress) m_options.progress(m_iDone);   // the other threads may have taken every range
        return m_iDoubtful < m_ranges.size() ? m_doubts[m_iDoubtful] : CountDoubt::None;
    }

    void vTakeRanges(StatementCount& count, const Progress& progress) {
        std::optional<Bytes> own;
        for (std::size_t i = 0; (i = m_iNext++) < m_ranges.size();) {
            const auto boMore = [&](std::uint64_t iCount) {
                const std::uint64_t iDone = m_iDone += iCount;
                if (progress) progress(iDone);
                return m_iDoubtful > i;
            };
            CountDoubt eDoubt = CountDoubt::Memory;
            try {
                if (&count != m_counts[0].get() && !own) own.emplace(m_path);
                eDoubt = count.count(own ? own->stream() : m_bytes.stream(), m_ranges[i], boMore);
            } catch (const std::bad_alloc&) {}
            if (eDoubt == CountDoubt::None && m_ranges[i].boLast) m_iEnd = count.iEnd();
            if (eDoubt != CountDoubt::None) return vDoubt(i, eDoubt);
        }
    }

    // Ranges in front of it go on.
    void vDoubt(std::size_t iRange, CountDoubt eDoubt) {
        m_doubts[iRange] = eDoubt;
        std::size_t iFirst = m_iDoubtful;
        while (iRange < iFirst && !m_iDoubtful.compare_exchange_weak(iFirst, iRange)) {}
    }

    CountDoubt resultMake(FileCount& result) {
        if (m_iSize - m_iEnd > g_iTail || !boEndOfFile(m_bytes.sAt(m_iEnd, g_iTail))) return CountDoubt::End;
        StatementCount& all = *m_counts.front();
        for (std::size_t i = 1; i < m_counts.size(); ++i)
            if (const CountDoubt eDoubt = all.merge(*m_counts[i]); eDoubt != CountDoubt::None) return eDoubt;
        GuidMap guids;
        Entity some;
        for (const Guid& guid : all.guids())
            if (!guids.boInsert(guid, &some)) return CountDoubt::GlobalId;
        for (const def::schema::Schema::Record& record : m_pSchema->objects) {
            const def::schema::Entity* const pType = def::schema::pAsEntity(record.pObject);
            const std::size_t iCount = pType ? all.counts()[pType->iTypeOrdinal] : 0;
            if (iCount) result.types.push_back({pType, iCount});
            result.iEntities += iCount;
        }
        std::ranges::sort(result.types, {}, [](const FileCount::Type& type) { return type.pType->iTypeOrdinal; });
        result.iGlobalIds = guids.size();
        result.iBytes = m_iSize;
        return CountDoubt::None;
    }

    const std::filesystem::path& m_path;
    const CountOptions& m_options;
    Bytes m_bytes;
    std::uint64_t m_iSize = 0;
    std::uint64_t m_iData = 0;   // behind "DATA;"
    const def::SchemaPset* m_pSchema = nullptr;
    std::vector<StatementCount::Range> m_ranges;
    unsigned m_iThreads = 1;
    std::vector<std::unique_ptr<StatementCount>> m_counts;   // of the threads; the caller's first
    std::atomic<std::size_t> m_iNext{0};                     // range to be taken
    std::atomic<std::size_t> m_iDoubtful{0};                 // the first range with a doubt; their number without
    std::vector<CountDoubt> m_doubts;                        // of each range; written by the thread that has it
    std::atomic<std::uint64_t> m_iDone{0};                   // bytes, for the progress
    std::uint64_t m_iEnd = 0;   // behind the ENDSEC; written by the thread of the last range
};

}   // namespace

FileCount CountFile::count(const std::filesystem::path& path, const CountOptions& options) {
    FileCount result;
    const CountDoubt eDoubt = Count(path, options).run(result);
    if (eDoubt == CountDoubt::None) return result;
    FileCount nothing;
    nothing.doubt = doubtText(eDoubt);
    return nothing;
}

}   // namespace oxa::ifc::io
