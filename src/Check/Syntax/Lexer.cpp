// SPDX-License-Identifier: Apache-2.0
// Tokens but strings, and what stands between tokens.
//
// m_pKeep is the first byte of the token that is scanned: what stands from it on stays when the window moves, and
// pointers into it are to be taken anew. A token that outgrows the window is kept by its beginning and a hash.
#include "Check/Syntax/Lexer.h"

#include <algorithm>
#include <cstring>

#include "Check/Syntax/ByteClass.h"
#include "Check/Syntax/InstanceTable.h"

namespace oxa::check {

namespace {

constexpr std::size_t g_iMostPending = 100'000;
constexpr std::uint64_t g_iHashSeed = 0xCBF29CE484222325U;

std::uint64_t hashed(std::uint64_t iHash, std::string_view bytes) noexcept {
    for (const char c : bytes) iHash = (iHash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return iHash;
}

// The length of the UTF-8 sequence at the begin of the bytes; 0 where they begin otherwise. RFC 3629.
std::size_t iUtf8Length(std::string_view bytes) noexcept {
    const auto byte = [&bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char first = byte(0);
    const std::size_t iLength = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || bytes.size() < iLength) return 0;
    for (std::size_t i = 1; i < iLength; ++i)
        if ((byte(i) & 0xC0) != 0x80) return 0;
    if ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F)) return 0;
    if ((first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F)) return 0;
    return iLength;
}

}   // namespace

Lexer::Lexer(std::istream& stream, const CheckOptions& options, Collector& collector)
    : m_source(stream, options),
      m_collector(collector),
      m_boTell(options.levels[static_cast<std::size_t>(CheckLevel::Syntax)]),
      m_p(m_source.pEnd()),
      m_pKeep(nullptr) {
    constexpr std::string_view mark = "\xef\xbb\xbf";
    if (boAtEnd(m_p) || !ahead(m_p, mark.size()).starts_with(mark)) return;
    vFault(SyntaxFault::ByteOrderMark, placeOf(m_p), {}, "ISO-10303-21; as the first bytes");
    m_p += mark.size();
}

// ---- Telling

void Lexer::vFault(SyntaxFault fault, Place place, std::string_view found, std::string_view expected) {
    m_boFault = true;
    if (!m_boTell || m_boMuted) return;
    const SyntaxFaultRow& row = syntaxFaultRow(fault);
    m_collector.vAdd({.level = CheckLevel::Syntax,
                      .key = row.key,
                      .rule = row.rule,
                      .message = row.message,
                      .expected = expected,
                      .line = place.iLine,
                      .column = place.iColumn,
                      .id = m_iInstance,
                      .found = found.substr(0, g_iMostFound)});
}

void Lexer::vEditionKnown(bool boEdition3) {
    if (m_eAlphabet != Alphabet::Unknown) return;
    m_eAlphabet = boEdition3 ? Alphabet::Edition3 : Alphabet::Basic;
    if (!boEdition3)
        for (const Place& place : m_highBytes) vFault(SyntaxFault::Byte, place, {}, "space to ~");
    m_highBytes = {};
}

// ---- The window

bool Lexer::boMore(const char*& p) {
    const char* pKeep = m_pKeep ? m_pKeep : p;
    if (static_cast<std::size_t>(p - pKeep) > g_iMaxTokenText) {
        if (!m_boLong) {
            m_boLong = true;
            m_iHash = g_iHashSeed;
            m_sLong.assign(pKeep, g_iMostFound);
        }
        m_iHash = hashed(m_iHash, {pKeep, p});
        pKeep = p;
    }
    const auto iBehind = p - pKeep;
    const bool boMore = m_source.boFill(pKeep);
    if (m_pKeep) m_pKeep = pKeep;
    p = pKeep + iBehind;
    return boMore;
}

std::string_view Lexer::ahead(const char*& p, std::size_t iCount) {
    while (static_cast<std::size_t>(m_source.pEnd() - p) < iCount && boMore(p)) {}
    return {p, std::min(iCount, static_cast<std::size_t>(m_source.pEnd() - p))};
}

const char* Lexer::pSkipFilling(const char* p, unsigned uClasses) {
    for (;;) {
        p = pSkip(p, uClasses);
        if (*p != '\0' || boAtEnd(p) || !boIs(*p, uClasses)) return p;
    }
}

// ---- Between tokens

void Lexer::vSkipSeparators() {
    const char* p = m_p;
    for (;;) {
        p = pSkip(p, Blank);
        const char c = *p;
        if (boIs(c, Graphic) && c != '/' && c != '\\') break;
        if (c == '\n') {
            vLineAt(p++);
        } else if (c == '/') {
            if (ahead(p, 2) != "/*") break;
            p = pSkipComment(p + 2);
        } else if (c == '\\') {
            const std::string_view directive = ahead(p, 3);
            if (directive != "\\N\\" && directive != "\\F\\") break;
            p += 3;
        } else if (p == m_source.pEnd()) {
            if (!boMore(p)) break;
        } else {
            p = pSkipStray(p);
        }
    }
    m_p = p;
}

// From behind "/*" to behind "*/". A comment may be as long as the file: nothing of it is kept.
const char* Lexer::pSkipComment(const char* p) {
    const Place begin = {m_iLine, placeOf(p).iColumn - 2};
    for (;;) {
        while (boIs(*p, Graphic | Blank) && *p != '*') ++p;
        if (*p == '\n') {
            vLineAt(p++);
        } else if (*p == '*') {
            if (ahead(p, 2) == "*/") return p + 2;
            ++p;
        } else if (p == m_source.pEnd()) {
            if (boMore(p)) continue;
            vFault(SyntaxFault::CommentNotClosed, begin, "/*", "*/");
            return p;
        } else {
            p = boIs(*p, High) ? pSkipHigh(p) : pSkipStray(p);
        }
    }
}

// A run of bytes from 0x80 on, in a string or a comment: code points of edition 3, bytes outside of the alphabet of those
// before. Counts the characters.
const char* Lexer::pSkipHigh(const char* p) {
    const Place place = placeOf(p);
    if (m_eAlphabet == Alphabet::Unknown && m_highBytes.size() < g_iMostPending) m_highBytes.push_back(place);
    std::string sFound;
    bool boUtf8 = true;
    for (;;) {
        const std::string_view bytes = ahead(p, 4);
        if (bytes.empty() || !boIs(bytes.front(), High)) break;
        const std::size_t iLength = iUtf8Length(bytes);
        boUtf8 = boUtf8 && iLength > 0;
        if (sFound.size() < g_iMostFound) sFound.append(bytes.substr(0, std::max<std::size_t>(iLength, 1)));
        p += std::max<std::size_t>(iLength, 1);
        ++m_token.iLength;
    }
    if (m_eAlphabet == Alphabet::Basic) vFault(SyntaxFault::Byte, place, sFound, "space to ~");
    if (m_eAlphabet == Alphabet::Edition3 && !boUtf8) vFault(SyntaxFault::Utf8, place, sFound, "UTF-8");
    return p;
}

// A run of bytes that may stand nowhere but in a string or a comment, or nowhere at all.
const char* Lexer::pSkipStray(const char* p) {
    const Place place = placeOf(p);
    std::string sFound;
    while (!boIs(*p, Graphic | Blank) && *p != '\n') {
        if (p == m_source.pEnd() && !boMore(p)) break;
        if (boIs(*p, Graphic | Blank) || *p == '\n') break;
        if (sFound.size() < g_iMostFound) sFound += *p;
        ++p;
    }
    vFault(SyntaxFault::Byte, place, sFound, "space to ~");
    return p;
}

// ---- Tokens

const Token& Lexer::next() {
    vSkipSeparators();
    const char* p = m_p;
    m_boTagName = m_token.kind == TokenKind::OpenTag;
    m_token = Token{.place = placeOf(p)};
    m_boLong = false;
    m_pKeep = p;
    const char c = *p;
    switch (c) {
    case '(': vEnd(TokenKind::Open, p + 1); break;
    case ')': vEnd(TokenKind::Close, p + 1); break;
    case ',': vEnd(TokenKind::Comma, p + 1); break;
    case ';': vEnd(TokenKind::Semicolon, p + 1); break;
    case '=': vEnd(TokenKind::Equals, p + 1); break;
    case '$': vEnd(TokenKind::Omitted, p + 1); break;
    case '*': vEnd(TokenKind::Derived, p + 1); break;
    case '{': vEnd(TokenKind::OpenTag, p + 1); break;
    case '}': vEnd(TokenKind::CloseTag, p + 1); break;
    case ':': vEnd(TokenKind::Colon, p + 1); break;
    case '#': vName(TokenKind::InstanceName, p + 1); break;
    case '@': vName(TokenKind::ValueName, p + 1); break;
    case '\'': vString(p + 1); break;
    case '"': vBinary(p + 1); break;
    case '.': vEnumeration(p + 1); break;
    case '<': vResource(p + 1); break;
    case '!': vWord(p + 1); break;
    case '+':
    case '-': vNumber(p + 1); break;
    default:
        if (boIs(c, Digit))
            vNumber(p);
        else if (boIs(c, Upper | Lower))
            vWord(p);
        else if (p == m_source.pEnd())
            m_token.kind = TokenKind::End;
        else
            vEnd(TokenKind::Fault, p + 1);
    }
    m_pKeep = nullptr;
    return m_token;
}

void Lexer::vEnd(TokenKind kind, const char* pEnd) {
    m_token.kind = kind;
    m_p = pEnd;
    const std::string_view text(m_pKeep, pEnd);
    if (!m_boLong && text.size() <= g_iMaxTokenText) {
        m_token.text = text;
        return;
    }
    if (!m_boLong) m_sLong.assign(text.substr(0, g_iMostFound));
    m_token.boCut = true;
    m_token.iHash = hashed(m_boLong ? m_iHash : g_iHashSeed, text);
    m_token.text = m_sLong;
}

void Lexer::vEndFaulty(TokenKind kind, const char* pEnd, SyntaxFault fault, std::string_view expected) {
    vEnd(kind, pEnd);
    vFault(fault, m_token.place, m_token.text, expected);
}

bool Lexer::boTakeAdjacent(char c) {
    if (boAtEnd(m_p) || *m_p != c) return false;
    ++m_p;
    return true;
}

// A keyword; also ISO-10303-21 and END-ISO-10303-21, which alone have a "-" in them.
void Lexer::vWord(const char* p) {
    const bool boUser = p != m_pKeep;
    const auto boStarts = boIs(*p, Upper) || (boUser && !boAtEnd(p) && boIs(*p, Upper));
    p = pSkipFilling(p, Upper | Digit);
    const std::string_view begin(m_pKeep, p);
    if (begin == "ISO" || begin == "END") {
        const char* pWord = p;
        while (!boAtEnd(pWord) && (*pWord == '-' || boIs(*pWord, Upper | Digit))) ++pWord;
        if (std::string_view(m_pKeep, pWord).find('-') != std::string_view::npos)
            return vEnd(TokenKind::SectionWord, pWord);
        p = pWord;
    }
    if (m_boTagName) return vEnd(TokenKind::Keyword, pSkipFilling(p, Upper | Lower | Digit));
    if (!boAtEnd(p) && boIs(*p, Lower))
        return vEndFaulty(TokenKind::Keyword, pSkipFilling(p, Upper | Lower | Digit), SyntaxFault::Keyword,
                          "letters in upper case");
    if (!boStarts) return vEndFaulty(TokenKind::Keyword, p, SyntaxFault::Keyword, "a letter in upper case");
    vEnd(TokenKind::Keyword, p);
}

// "#" and digits; of edition 3 also "@", and names of constants.
void Lexer::vName(TokenKind kind, const char* p) {
    const std::string_view expected = kind == TokenKind::InstanceName ? "#1, #2 and so on" : "@1, @2 and so on";
    p = pSkipFilling(p, Digit);
    const std::string_view digits(m_pKeep + 1, p);
    if (digits.empty()) {
        const char* pName = pSkipFilling(p, Upper | Digit);
        if (pName != m_pKeep + 1) {
            vEnd(kind, pName);
            if (m_eAlphabet != Alphabet::Edition3) vFault(SyntaxFault::Edition, m_token.place, m_token.text, expected);
            return;
        }
        const char* pDigits = pSkipFilling(pName, Blank);
        const auto iBlanks = pDigits - m_pKeep;
        pDigits = pSkipFilling(pDigits, Digit);
        const std::string_view behind(m_pKeep + iBlanks, pDigits);
        if (behind.empty()) return vEndFaulty(kind, m_pKeep + 1, SyntaxFault::InstanceName, expected);
        m_token.iNumber = InstanceTable::iNumber(behind);
        return vEndFaulty(kind, pDigits, SyntaxFault::BlankInToken, expected);
    }
    m_token.iNumber = InstanceTable::iNumber(digits);
    if (m_boLong || digits.find_first_not_of('0') == std::string_view::npos)
        return vEndFaulty(kind, p, SyntaxFault::InstanceName, expected);
    vEnd(kind, p);
    if (kind == TokenKind::ValueName && m_eAlphabet != Alphabet::Edition3)
        vFault(SyntaxFault::Edition, m_token.place, m_token.text, "a parameter");
}

// [ sign ] digits [ "." { digit } [ "E" [ sign ] digits ] ]. p stands behind the sign.
void Lexer::vNumber(const char* p) {
    const std::uint64_t iDigits = m_source.iOffset(p);
    p = pSkipFilling(p, Digit);
    bool boForm = m_source.iOffset(p) > iDigits;
    bool boReal = false;
    if (!boAtEnd(p) && *p == '.') {
        boReal = true;
        p = pSkipFilling(p + 1, Digit);
        if (!boAtEnd(p) && *p == 'E') {
            ++p;
            if (!boAtEnd(p) && (*p == '+' || *p == '-')) ++p;
            const std::uint64_t iExponent = m_source.iOffset(p);
            p = pSkipFilling(p, Digit);
            boForm = boForm && m_source.iOffset(p) > iExponent;
        }
    }
    const auto kind = boReal ? TokenKind::Real : TokenKind::Integer;
    if (boForm && (boAtEnd(p) || !boIs(*p, Upper | Lower))) return vEnd(kind, p);
    while (!boAtEnd(p) && (boIs(*p, Upper | Lower | Digit) || *p == '.' || *p == '+' || *p == '-')) ++p;
    vEndFaulty(kind, p, SyntaxFault::Number, "a number as 12, 1.5 or 1.5E-3");
}

// "." letter { letter | digit } "."
void Lexer::vEnumeration(const char* p) {
    const bool boNumber = !boAtEnd(p) && boIs(*p, Digit);
    const bool boName = boIs(*p, Upper);
    p = pSkipFilling(p, Upper | Digit);
    if (boName && !boAtEnd(p) && *p == '.') return vEnd(TokenKind::Enumeration, p + 1);
    if (boNumber) {
        while (!boAtEnd(p) && (boIs(*p, Upper | Lower | Digit) || *p == '.' || *p == '+' || *p == '-')) ++p;
        return vEndFaulty(TokenKind::Real, p, SyntaxFault::Number, "a digit in front of the point");
    }
    p = pSkipFilling(p, Upper | Lower | Digit);
    if (!boAtEnd(p) && *p == '.') ++p;
    vEndFaulty(TokenKind::Enumeration, p, SyntaxFault::Enumeration, "letters in upper case between two points");
}

// """ number of unused bits { hexadecimal digit } """
void Lexer::vBinary(const char* p) {
    const bool boFirst = !boAtEnd(p) && *p >= '0' && *p <= '3';
    const std::uint64_t iUnused = boFirst ? static_cast<std::uint64_t>(*p - '0') : 0;
    const std::uint64_t iBegin = m_source.iOffset(p);
    p = pSkipFilling(p, Hex);
    const std::uint64_t iDigits = m_source.iOffset(p) - iBegin;
    const bool boForm = boFirst && (iDigits > 1 || iUnused == 0);
    if (boForm) m_token.iLength = (iDigits - 1) * 4 - iUnused;
    if (boForm && !boAtEnd(p) && *p == '"') return vEnd(TokenKind::Binary, p + 1);
    p = pSkipFilling(p, Upper | Lower | Digit | Blank);
    if (!boAtEnd(p) && *p == '"') ++p;
    vEndFaulty(TokenKind::Binary, p, SyntaxFault::Binary, "0 to 3, then hexadecimal digits, between quotation marks");
}

// "<" ... ">": a resource or the name of an anchor.
void Lexer::vResource(const char* p) {
    while (!boAtEnd(p) && boIs(*p, Graphic) && *p != '>' && *p != '<' && *p != ' ') ++p;
    if (boAtEnd(p) || *p != '>') return vEndFaulty(TokenKind::Resource, p, SyntaxFault::Resource, ">");
    vEnd(TokenKind::Resource, p + 1);
    if (m_eAlphabet != Alphabet::Edition3) vFault(SyntaxFault::Edition, m_token.place, m_token.text, "a parameter");
}

// ---- Passing over

bool Lexer::boSkipStatement(Token& name) {
    m_boMuted = true;
    bool boName = false;
    bool boFound = false;
    for (;; next()) {
        if (m_token.kind == TokenKind::End || m_token.kind == TokenKind::Semicolon ||
            m_token.kind == TokenKind::SectionWord)
            break;
        if (m_token.kind == TokenKind::Keyword && m_token.text == "ENDSEC") break;
        boFound = boName && m_token.kind == TokenKind::Equals;
        if (boFound) break;
        boName = m_token.kind == TokenKind::InstanceName;
        if (boName) {
            name = m_token;
            name.text = {};
        }
    }
    m_boMuted = false;
    return boFound;
}

bool Lexer::boSkipSignature() {
    constexpr std::string_view end = "ENDSEC;";
    for (;;) {
        if (*m_p == '\n') {
            vLineAt(m_p++);
        } else if (*m_p == end.front() && ahead(m_p, end.size()) == end) {
            m_p += end.size();
            return true;
        } else if (boIs(*m_p, Upper | Lower | Digit | Blank) || *m_p == '+' || *m_p == '/' || *m_p == '=') {
            ++m_p;
        } else if (m_p == m_source.pEnd()) {
            if (!boMore(m_p)) return false;
        } else {
            vFault(SyntaxFault::Unexpected, placeOf(m_p), {m_p, 1}, "base64 up to ENDSEC;");
            m_p += ahead(m_p, 1).size();
        }
    }
}

void Lexer::vSkipFile() {
    while (m_p != m_source.pEnd() || boMore(m_p)) m_p = m_source.pEnd();
    m_token = Token{.place = m_token.place};
}

}   // namespace oxa::check
