// SPDX-License-Identifier: Apache-2.0
// The count of statements, 64 bytes at a time.
//
// What stands inside of a string is found without a branch: of each byte the parity of the quotes up to it, which six
// shifts give for a whole word; a doubled quote ends one string and begins the next. Semicolons outside of strings then
// are the ends of statements, one a statement, and behind each the head of the next is read as text. What a read could
// stumble over in between is a second "=" (the places of "=" outside of strings have to be those of heads), a backslash
// outside of a string, the begin of a comment: words with one of these go through a state machine instead, which knows
// the escapes and comments as Scanner.cpp does.
#include "Format/Ifc/Read/StatementCount.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "Format/Ifc/IfcFileAttribute.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/Text/ByteBlock.h"

namespace oxa::ifc::details {

namespace {

constexpr bool boBlank(char c) noexcept { return c == ' ' || c == '\n' || c == '\r'; }

// The bytes of a word that matter, a bit each.
struct CountWord {
    std::uint64_t uQuotes = 0;
    std::uint64_t uSemicolons = 0;
    std::uint64_t uEquals = 0;
    std::uint64_t uBackslashes = 0;
    std::uint64_t uOther =
        0;   // outside of strings each is looked at: a slash, and what is neither blank nor printable
};

[[nodiscard]] inline CountWord countWord(const char* p) noexcept {
    CountWord word;
    std::uint64_t uPlain = 0;
    for (unsigned i = 0; i < 64; i += ByteBlock::g_iSize) {
        const ByteBlock text(p + i);
        word.uQuotes |= std::uint64_t{text.among('\'').uHighBits()} << i;
        word.uSemicolons |= std::uint64_t{text.among(';').uHighBits()} << i;
        word.uEquals |= std::uint64_t{text.among('=').uHighBits()} << i;
        word.uBackslashes |= std::uint64_t{text.among('\\').uHighBits()} << i;
        uPlain |= std::uint64_t{(text.between(' ', '.') | text.between('0', '~') | text.among('\n', '\r')).uHighBits()}
                  << i;
    }
    word.uOther = ~uPlain;
    return word;
}
static_assert('/' == '.' + 1 && '0' == '/' + 1);

// Of each bit whether an odd number of bits is set up to it.
[[nodiscard]] constexpr std::uint64_t uParity(std::uint64_t uBits) noexcept {
    for (const unsigned iShift : {1U, 2U, 4U, 8U, 16U, 32U}) uBits ^= uBits << iShift;
    return uBits;
}

// Behind blanks and comments, or pLimit where they do not end before it.
const char* pBehindBlanks(const char* p, const char* pLimit) noexcept {
    for (;;) {
        while (p < pLimit && boBlank(*p)) ++p;
        if (p >= pLimit || *p != '/' || p[1] != '*') return p < pLimit ? p : pLimit;
        p += 2;
        const std::string_view rest(p, static_cast<std::size_t>(std::max(pLimit - p, std::ptrdiff_t{0})));
        const std::size_t iEnd = rest.find("*/");
        if (iEnd == std::string_view::npos) return pLimit;
        p += iEnd + 2;
    }
}

bool boGuidFirst(const def::schema::Entity* pRoot) {
    if (!pRoot || pRoot->allAttributes().empty()) return false;
    const def::schema::Attribute& attribute = *pRoot->allAttributes().front();
    return attribute.pType() && AttributeBase::cellClass(attribute.pType(), attribute) == CellClass::Guid;
}

}   // namespace

StatementCount::StatementCount(const def::schema::Schema& schema, const def::schema::Entity* pRoot)
    : m_schema(schema),
      m_pRoot(pRoot),
      m_boRootGuid(boGuidFirst(pRoot)),
      m_known(256),
      m_bytes(g_iBehind + g_iBlock + g_iAhead + 64),
      m_pFirst(m_bytes.data() + g_iBehind) {
    std::size_t iLargest = 0;
    for (const def::schema::Schema::Record& record : schema.objects)
        if (const def::schema::Entity* pType = def::schema::pAsEntity(record.pObject))
            iLargest = std::max<std::size_t>(iLargest, pType->iTypeOrdinal);
    m_counts.resize(iLargest + 1);
}

void StatementCount::vBegin() noexcept {
    m_pEnd = m_pFirst;
    m_boFirst = true;
    m_eDoubt = CountDoubt::None;
    m_eWhere = Where::Text;
    m_boOpen = m_boEndSection = false;
    m_uEquals = 0;
    m_iEqual = g_iNoEqual;
}

bool StatementCount::boRead(std::istream& stream, std::uint64_t iCount) {
    if (!stream.read(m_pEnd, static_cast<std::streamsize>(iCount))) return false;
    m_pEnd += iCount;
    return true;
}

// All words of the block but the last ones, which stay for the next block, so that heads have their bytes at hand. At
// the end of a range there is no next: blanks stand behind it.
bool StatementCount::boBlock(bool boEnd) {
    m_boEndOfRange = boEnd;
    if (boEnd) std::fill_n(m_pEnd, g_iAhead + 64, ' ');
    const char* p = m_pFirst;
    if (std::exchange(m_boFirst, false) && !boHead(p, p)) return false;
    const char* const pLast = boEnd ? m_pEnd : m_pEnd - g_iAhead - 64;
    for (; p < pLast && !m_boEndSection; p += 64)
        if (!boWord(p)) return false;
    if (boEnd || m_boEndSection) return true;
    std::memmove(m_pFirst - g_iBehind, p - g_iBehind, static_cast<std::size_t>(m_pEnd - p) + g_iBehind);
    m_pEnd -= p - m_pFirst;
    return true;
}

bool StatementCount::boWord(const char* p) {
    const CountWord word = countWord(p);
    std::uint64_t uInside = uParity(word.uQuotes) ^ (m_eWhere == Where::Text ? 0 : ~std::uint64_t{0});
    if (m_eWhere > Where::String || (word.uBackslashes | (word.uOther & ~uInside)) != 0) [[unlikely]]
        uInside = uInsideSlow(p);
    else
        m_eWhere = uInside >> 63 ? Where::String : Where::Text;
    if (m_eDoubt != CountDoubt::None) return false;
    for (std::uint64_t uEnds = word.uSemicolons & ~uInside; uEnds; uEnds &= uEnds - 1) {
        const auto iPlace = static_cast<unsigned>(std::countr_zero(uEnds));
        const char* pBefore = p + iPlace - 1;
        while (pBefore > p + iPlace - g_iBehind && boBlank(*pBefore)) --pBefore;
        if (!m_boOpen || *pBefore != ')') return boRefuse(CountDoubt::Statement);
        m_boOpen = false;
        if (!boHead(p + iPlace + 1, p)) return false;
        if (!m_boEndSection) continue;
        const std::uint64_t uBefore = (std::uint64_t{1} << iPlace) - 1;
        return (word.uEquals & ~uInside & uBefore) == m_uEquals || boRefuse(CountDoubt::Statement);
    }
    if ((word.uEquals & ~uInside) != m_uEquals) return boRefuse(CountDoubt::Statement);
    m_uEquals = m_iEqual < 64 ? std::uint64_t{1} << m_iEqual : 0;
    m_iEqual = m_iEqual < 64 ? g_iNoEqual : m_iEqual - 64;
    return true;
}

// Which bytes stand inside of strings and comments, byte by byte.
std::uint64_t StatementCount::uInsideSlow(const char* p) noexcept {
    std::uint64_t uInside = 0;
    for (unsigned i = 0; i < 64; ++i) {
        const char c = p[i];
        bool boInside = true;
        switch (m_eWhere) {
        case Where::Text:
            if (c == '\'')
                m_eWhere = Where::String;
            else if (c == '/' && p[i + 1] == '*')
                m_eWhere = Where::CommentBegin;
            else if (c == '/' || c == '\\' || c > '~' || (c < ' ' && c != '\n' && c != '\r'))
                boRefuse(CountDoubt::Byte);
            else
                boInside = false;
            break;
        case Where::String:
            if (c == '\'') {
                m_eWhere = Where::Text;
                boInside = false;
            } else if (c == '\\') {
                m_eWhere = Where::Escape;
            }
            break;
        case Where::Escape:
            if (c == '\n') boRefuse(CountDoubt::Byte);
            m_eWhere = c == 'S' ? Where::Skip : c == 'X' ? Where::EscapeX : Where::String;
            m_iSkip = 2;
            break;
        case Where::EscapeX:
            m_iSkip = c == '0' || c == '\\' ? 1 : c == '2' ? 5 : c == '4' ? 9 : 0;
            m_eWhere = m_iSkip ? Where::Skip : Where::String;
            break;
        case Where::Skip:
            if (--m_iSkip == 0) m_eWhere = Where::String;
            break;
        case Where::CommentBegin:
            m_eWhere = Where::Comment;
            m_boStar = false;
            break;
        case Where::Comment:
            if (m_boStar && c == '/') m_eWhere = Where::Text;
            m_boStar = c == '*';
            break;
        }
        uInside |= std::uint64_t{boInside} << i;
    }
    return uInside;
}

// What begins behind the end of a statement: the next one, the end of the section, or nothing where the range ends. All
// of it lies in front of pWord + 64 + g_iAhead.
bool StatementCount::boHead(const char* p, const char* pWord) {
    const char* const pLimit = pWord + g_iAhead - 64;
    p = pBehindBlanks(p, pLimit);
    if (m_boEndOfRange && p >= m_pEnd) return true;
    if (p == pLimit) return boRefuse(CountDoubt::Statement);
    if (*p != '#') {
        constexpr std::string_view end = "ENDSEC";
        const char* const pEnd = pBehindBlanks(p + end.size(), pLimit);
        if (!std::string_view(p, end.size()).starts_with(end) || *pEnd != ';') return boRefuse(CountDoubt::Statement);
        m_boEndSection = true;
        m_pSectionEnd = pEnd + 1;
        return true;
    }
    Digits number = digitsOf8(++p);
    if (number.iCount == 0 || number.iCount > 7) {
        std::int32_t iNumber = 0;
        const char* const pDigits = *p == '-' ? nullptr : pReadInteger(p, p + 16, 10, iNumber);
        if (!pDigits) return boRefuse(CountDoubt::Number);
        number = {static_cast<unsigned>(pDigits - p), static_cast<std::uint32_t>(iNumber)};
    }
    p += number.iCount;
    if (*p != '=') p = pBehindBlanks(p, pLimit);
    if (*p != '=') return boRefuse(CountDoubt::Statement);
    const auto iEqual = static_cast<std::size_t>(p - pWord);
    if (iEqual < 64)
        m_uEquals |= std::uint64_t{1} << iEqual;
    else
        m_iEqual = iEqual - 64;
    if (!m_numbers.boAdd(number.uValue)) return boRefuse(CountDoubt::Number);
    m_boOpen = true;
    return boKeyword(p + 1, pLimit);
}

// p is behind the "=".
bool StatementCount::boKeyword(const char* p, const char* pLimit) {
    if (boBlank(*p)) p = pBehindBlanks(p, pLimit);
    unsigned uFound = 0;
    const char* pBlock = p;
    for (; pBlock < pLimit - 64; pBlock += ByteBlock::g_iSize)
        if ((uFound = ByteBlock(pBlock).among('(').uHighBits()) != 0) break;
    if (!uFound) return boRefuse(CountDoubt::Statement);
    const char* const pOpen = pBlock + std::countr_zero(uFound);
    const char* pEnd = pOpen;
    while (pEnd != p && boBlank(pEnd[-1])) --pEnd;
    if (p == pEnd) return boRefuse(CountDoubt::Type);   // a complex instance
    const Known* pType = pKnown({p, static_cast<std::size_t>(pEnd - p)});
    if (!pType) return boRefuse(CountDoubt::Type);
    ++m_counts[pType->iOrdinal];
    return pType->eKind != Kind::Rooted || boGuid(pOpen + 1);
}

// The first parameter of a rooted instance.
bool StatementCount::boGuid(const char* p) {
    const std::optional<Guid> guid = p[0] == '\'' && p[23] == '\'' && (p[24] == ',' || p[24] == ')')
                                         ? IfcGuid::fromIfcGuid({p + 1, 22})
                                         : std::nullopt;
    if (!guid || guid->boIsNull()) return boRefuse(CountDoubt::GlobalId);
    m_guids.push_back(*guid);
    return true;
}

// As StepReadThread finds the types of a read: a place for each length and two letters, compared as a whole.
const StatementCount::Known* StatementCount::pKnown(std::string_view keyword) {
    const auto iByte = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(keyword[i])); };
    const std::size_t iPlace = keyword.size() * 7 + iByte(keyword.size() - 1) + iByte(keyword.size() / 2) * 3;
    Known& known = m_known[iPlace % m_known.size()];
    if (known.keyword == keyword) return &known;
    const def::schema::Entity* const pType = m_schema.pEntityFromName(def::schema::ObjectName(keyword));
    if (!pType || pType->boAbstract || pType->allAttributes().empty()) return nullptr;
    const bool boRooted = def::schema::boIsSubtype(pType, m_pRoot);
    if (boRooted && !m_boRootGuid) return nullptr;
    known = {pType->sNameUpper, pType->iTypeOrdinal, boRooted ? Kind::Rooted : Kind::Plain};
    return &known;
}

CountDoubt StatementCount::rangeEnd(const Range& range) noexcept {
    if (range.boLast) return m_boEndSection ? CountDoubt::None : CountDoubt::End;
    if (m_boEndSection) return CountDoubt::End;
    return m_eWhere == Where::Text && !m_boOpen ? CountDoubt::None : CountDoubt::Cut;
}

CountDoubt StatementCount::merge(StatementCount& other) {
    for (std::size_t i = 0; i < m_counts.size(); ++i) m_counts[i] += other.m_counts[i];
    m_guids.insert(m_guids.end(), other.m_guids.begin(), other.m_guids.end());
    return m_numbers.boMerge(other.m_numbers) ? CountDoubt::None : CountDoubt::Number;
}

}   // namespace oxa::ifc::details
