// SPDX-License-Identifier: Apache-2.0
// StatementCount: counts the statements of a DATA section by type, without reading what stands in them.
//
// For      CountFile, inside this folder. One for each thread; each takes any number of ranges.
// Rule     a statement is counted where the reader would make one instance of it, whatever its values are: "#", a number
//          that is new, "=", a keyword of the schema that is not abstract, "(", and ");" at its end. All else is a doubt,
//          and the count of no use: the reader's rules (Scanner.h, Statement.cpp) are wider than these.
// Speed    64 bytes at once: masks of the bytes that matter, of them those inside strings by the parity of quotes. Only
//          the head of a statement and its end are looked at as text. Words with a backslash or a comment go byte by byte.
// Threads  one at a time.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <string_view>
#include <vector>

#include "Format/Ifc/Store/NumberSet.h"
#include "platform/Id.h"
#include "schema/Schema.h"

namespace oxa::ifc::details {

// Why a count can't be trusted to be that of a read.
enum class CountDoubt : std::uint8_t {
    None,
    Unreadable,   // the bytes did not come, or not all
    Header,       // the reader has something to tell of it
    Data,         // no DATA section near the begin
    Cut,          // a range ended inside of a statement
    Statement,    // another form
    Byte,         // outside of strings, one that no statement has
    Type,         // unknown, abstract, or without attributes
    Number,       // twice, or too large, or too far from the others
    GlobalId,     // twice, missing, or malformed
    End,          // something behind the section, or no end
    Stopped,      // since another range has a doubt
    Memory,
};

class StatementCount {
public:
    // The schema must outlive this. pRoot is its IFCROOT, null where it has none.
    StatementCount(const def::schema::Schema& schema, const def::schema::Entity* pRoot);

    struct Range {
        std::uint64_t iFrom;   // behind the end of a statement
        std::uint64_t iTo;
        bool boLast;   // the section ends inside of it
    };
    // Counts the statements of a range; of the last one up to the ENDSEC, behind which iEnd() is then. "more" is asked
    // between blocks, with the bytes of the last one, whether to go on.
    template <class More>
    CountDoubt count(std::istream& stream, const Range& range, More&& boMore);

    // Takes over what another one has counted. A doubt where both have a number.
    CountDoubt merge(StatementCount& other);

    // By type number.
    [[nodiscard]] const std::vector<std::size_t>& counts() const noexcept { return m_counts; }
    // Those of rooted instances, as they came; none is null.
    [[nodiscard]] const std::vector<Guid>& guids() const noexcept { return m_guids; }
    // Where the section ended, in the file.
    [[nodiscard]] std::uint64_t iEnd() const noexcept { return m_iEnd; }

private:
    enum class Where : std::uint8_t { Text, String, Escape, EscapeX, Skip, CommentBegin, Comment };
    enum class Kind : std::uint8_t { Free, Plain, Rooted };

    // A keyword that was met.
    struct Known {
        std::string_view keyword;
        std::uint16_t iOrdinal = 0;
        Kind eKind = Kind::Free;
    };

    static constexpr std::size_t g_iBehind = 64;   // bytes in front of the block that stay readable
    static constexpr std::size_t g_iAhead = 512;   // a head and the blanks in front of it fit
    static constexpr std::size_t g_iBlock = 256 * 1024;

    static constexpr std::size_t g_iNoEqual = ~std::size_t{0} / 2;   // far from every word

    void vBegin() noexcept;
    bool boRead(std::istream& stream, std::uint64_t iCount);
    bool boBlock(bool boEnd);
    bool boWord(const char* p);
    [[nodiscard]] std::uint64_t uInsideSlow(const char* p) noexcept;
    bool boHead(const char* p, const char* pWord);
    bool boKeyword(const char* p, const char* pLimit);
    bool boGuid(const char* p);
    [[nodiscard]] const Known* pKnown(std::string_view keyword);
    [[nodiscard]] CountDoubt rangeEnd(const Range& range) noexcept;
    bool boRefuse(CountDoubt eDoubt) noexcept {
        m_eDoubt = eDoubt;
        return false;
    }

    const def::schema::Schema& m_schema;
    const def::schema::Entity* m_pRoot;
    bool m_boRootGuid;   // what its first parameter is
    std::vector<Known> m_known;
    std::vector<std::size_t> m_counts;
    std::vector<Guid> m_guids;
    NumberSet m_numbers;

    std::vector<char> m_bytes;
    char* m_pFirst;                // of the block
    char* m_pEnd = nullptr;        // behind its bytes
    bool m_boFirst = true;         // block of a range
    bool m_boEndOfRange = false;   // no further byte comes behind m_pEnd

    CountDoubt m_eDoubt = CountDoubt::None;
    Where m_eWhere = Where::Text;
    unsigned m_iSkip = 0;                // bytes of an escape that are still to come
    bool m_boStar = false;               // of a comment: the last byte
    bool m_boOpen = false;               // a head has come, its end has not
    bool m_boEndSection = false;         // ENDSEC has come
    std::uint64_t m_uEquals = 0;         // places of "=" of heads, in the word in hand
    std::size_t m_iEqual = g_iNoEqual;   // of the last head, where it lies behind that word: from the end of it
    std::uint64_t m_iEnd = 0;
    const char* m_pSectionEnd = nullptr;
};

template <class More>
CountDoubt StatementCount::count(std::istream& stream, const Range& range, More&& boMore) {
    stream.clear();
    if (!stream.seekg(static_cast<std::streamoff>(range.iFrom))) return CountDoubt::Unreadable;
    vBegin();
    for (std::uint64_t iLeft = range.iTo - range.iFrom; iLeft > 0 && !m_boEndSection;) {
        const std::uint64_t iRoom = g_iBlock - static_cast<std::uint64_t>(m_pEnd - m_pFirst);
        const std::uint64_t iCount = iLeft < iRoom ? iLeft : iRoom;
        if (!boRead(stream, iCount)) return CountDoubt::Unreadable;
        iLeft -= iCount;
        if (!boBlock(iLeft == 0)) return m_eDoubt;
        if (m_boEndSection) m_iEnd = range.iTo - iLeft - static_cast<std::uint64_t>(m_pEnd - m_pSectionEnd);
        if (!boMore(iCount)) return CountDoubt::Stopped;
    }
    return rangeEnd(range);
}

}   // namespace oxa::ifc::details
