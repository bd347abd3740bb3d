// SPDX-License-Identifier: Apache-2.0
// The codec of STEP strings (ISO 10303-21, 6.4.3). Reading never fails: a directive that is unknown or cut off is
// dropped, because a model with one damaged text is worth more than none. Writing gives 7-bit text only.
#include "Format/Ifc/IfcStepStrings.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

#include "Format/Ifc/IfcNumbers.h"
#include "Format/Ifc/Text/TextScan.h"
#include "platform/Assert.h"
#include "platform/String.h"

namespace oxa::ifc {

namespace {

constexpr std::string_view g_sSource = "Format/Ifc/IfcStepStrings";
constexpr std::string_view g_sReader = "oxa::ifc::vIfcStrToUtf8";

void vAssertInvalid(std::string_view sWhat, std::string_view sInput, int iLine = __builtin_LINE()) {
    if (!Assert::isEnabled()) return;
    std::string text(sWhat);
    text += ": Seems to be an invalid ifc string: '";
    text += str::Converter::to_utf8(sInput);
    text += '\'';
    Assert::vTell(g_sSource, g_sReader, text, iLine);
}

// One pass over the inside of a STEP string (ISO 10303-21, 6.4.3), with two outputs. Up to the first directive that
// names a character, text goes to m_out as it stands, which is all that most strings need. From there on characters are
// collected as code points in m_pending and converted in the end, because the groups of \X2\ are code points and no
// bytes. 8-bit bytes are no STEP and go to m_out at any time, so in a string with both they come in front of what
// follows the first directive. That order is part of the behaviour.
class StringReader {
public:
    StringReader(std::string& out, std::u32string& pending, const char* text, std::size_t length)
        : m_out(out),
          m_pending(pending),
          m_pText(text),
          m_iLength(length) {}

    void vRead();
    [[nodiscard]] bool boPlain() const { return m_boPlain; }

private:
    void vAppendRun(std::size_t iEnd);
    void vAppend(char c);
    void vReadByte8(unsigned char c);
    bool boReadDirective();
    bool boReadShift();
    bool boReadHex();
    void vReadHexBlock(std::size_t iDigits);
    bool boReadPage();
    void vAppendHex(std::size_t iDigits);

    // The byte behind the text is its closing quote, or whatever else the caller has there: it may be read.
    [[nodiscard]] char at(std::size_t i) const { return m_pText[i]; }

    std::string& m_out;
    std::u32string& m_pending;
    const char* m_pText;
    std::size_t m_iLength;
    std::size_t m_i = 0;         // the next byte; may pass the end by a few
    bool m_boPlain = true;       // no directive has named a character yet
    bool m_boRawUtf8 = false;    // 8-bit bytes are UTF-8, not Latin-1
    bool m_boReported = false;   // one assertion a string
};

void StringReader::vRead() {
    const char* const pEnd = m_pText + m_iLength;
    while (m_i < m_iLength) {
        vAppendRun(static_cast<std::size_t>(details::pFindSpecial(m_pText + m_i, pEnd) - m_pText));
        if (m_i == m_iLength) return;
        const char c = at(m_i);
        if (c == '\\') {
            if (!boReadDirective()) return;
        } else if (c == '\'') {
            vAppend(c);
            m_i += 2;   // taken to be the first half of a doubled one, whatever follows
        } else {
            vReadByte8(static_cast<unsigned char>(c));
            m_i += 1;
        }
    }
}

void StringReader::vAppendRun(std::size_t iEnd) {
    if (m_boPlain)
        m_out.append(m_pText + m_i, iEnd - m_i);
    else
        for (std::size_t i = m_i; i < iEnd; ++i) m_pending += static_cast<char32_t>(m_pText[i]);   // 7 bits each
    m_i = iEnd;
}

void StringReader::vAppend(char c) {
    if (m_boPlain)
        m_out += c;
    else
        m_pending += static_cast<char32_t>(c);
}

// 0xC3 leads the letters of western Europe in UTF-8 and is rare in Latin-1: it tells the two apart.
void StringReader::vReadByte8(unsigned char c) {
    if (m_boRawUtf8 || c == 0xC3) {
        m_out += static_cast<char>(c);
        m_boRawUtf8 = true;
    } else {
        m_out += static_cast<char>(0xC0 | c >> 6);
        m_out += static_cast<char>(0x80 | (c & 0x3F));
    }
    if (!m_boReported) vAssertInvalid("U_INVALID_CHAR_FOUND", {m_pText, m_iLength});
    m_boReported = true;
}

// Takes the backslash and what belongs to it. False where the text ends in the middle of it.
bool StringReader::boReadDirective() {
    const char cDirective = at(m_i + 1);
    m_i += 2;
    switch (cDirective) {
    case '\\': vAppend('\\'); return true;
    case 'S': return boReadShift();
    case 'X': return boReadHex();
    case 'P': return boReadPage();
    default: return true;   // unknown: dropped
    }
}

// "\S\" and a byte: the character 128 places above it.
bool StringReader::boReadShift() {
    m_boPlain = false;
    if (m_i >= m_iLength) return false;
    if (at(m_i) != '\\') {
        m_i += 1;
        return true;
    }
    // The byte may be the one behind the text: "\S\" at the end shifts the closing quote.
    m_pending += static_cast<char32_t>(static_cast<signed char>(at(m_i + 1)) + 128);
    m_i += 2;
    return true;
}

// "\X\hh", "\X2\...\X0\" and "\X4\...\X0\".
bool StringReader::boReadHex() {
    m_boPlain = false;
    if (m_i >= m_iLength) return false;
    const char c = at(m_i);
    if (c == '\\') {
        m_i += 1;
        if (m_iLength - m_i < 2) return false;
        vAppendHex(2);
    } else if ((c == '2' || c == '4') && m_i + 1 < m_iLength && at(m_i + 1) == '\\') {
        m_i += 2;
        vReadHexBlock(c == '2' ? 4 : 8);
    } else {
        m_i += 2;
    }
    return true;
}

void StringReader::vReadHexBlock(std::size_t iDigits) {
    while (m_iLength - m_i >= iDigits && at(m_i) != '\\') vAppendHex(iDigits);
    m_i += 4;   // "\X0\", unseen
}

// A group without a leading digit, or beyond 31 bits, is lost.
void StringReader::vAppendHex(std::size_t iDigits) {
    std::int32_t value = 0;
    const char* const pDigits = m_pText + m_i;
    if (details::pReadInteger(pDigits, pDigits + iDigits, 16, value) != nullptr)
        m_pending += static_cast<char32_t>(value);
    m_i += iDigits;
}

// "\PA\" to "\PI\" select a part of ISO 8859, and would change what "\S\" means. Only the letter is taken:
// the backslash behind it begins the next directive.
bool StringReader::boReadPage() {
    if (m_i >= m_iLength) return false;
    m_i += 1;
    Assert::vTell(g_sSource, g_sReader, "Codepage not implemented");
    return true;
}

constexpr std::uint8_t g_noHexDigit = 0xFF;
constexpr std::array<std::uint8_t, 256> g_hexDigitOf = [] {
    std::array<std::uint8_t, 256> table{};
    table.fill(g_noHexDigit);
    for (std::uint8_t i = 0; i < 16; ++i) {
        table[static_cast<std::uint8_t>("0123456789ABCDEF"[i])] = i;
        table[static_cast<std::uint8_t>("0123456789abcdef"[i])] = i;
    }
    return table;
}();

// The number of iDigits hexadecimal digits; beyond 16 bits where one of them is none.
std::uint32_t uHexOf(const char* pDigits, std::size_t iDigits) {
    std::uint32_t uValue = 0;
    std::uint8_t uAny = 0;
    for (std::size_t i = 0; i < iDigits; ++i) {
        const std::uint8_t uDigit = g_hexDigitOf[static_cast<std::uint8_t>(pDigits[i])];
        uValue = uValue << 4 | uDigit;
        uAny |= uDigit;
    }
    return uAny < 16 ? uValue : ~0U;
}

// The same as a StringReader for what exporters write: 7-bit text with doubled quotes and backslashes, and directives that
// are whole and name characters of 16 bits. Each of them is shorter in UTF-8, and is written at once. False for all else.
class UsualReader {
public:
    // Up to g_iBehind bytes behind those that the text becomes can be written at pOut.
    static constexpr std::size_t g_iBehind = details::ByteBlock::g_iSize;

    UsualReader(char* pOut, const char* text, std::size_t length) : m_pOut(pOut), m_p(text), m_pEnd(text + length) {}

    bool boRead() {
        while (m_p < m_pEnd) {
            if (!boSpecialReached()) continue;
            if (*m_p == '\'') {
                *m_pOut++ = '\'';
                m_p += 2;
            } else if (*m_p != '\\' || !boReadDirective()) {
                return false;
            }
        }
        return true;
    }
    // Behind the text.
    [[nodiscard]] const char* pOut() const { return m_pOut; }

private:
    // Copies what is no special byte; false at the end, or where there may be more of it.
    bool boSpecialReached() {
        if (m_pEnd - m_p >= static_cast<std::ptrdiff_t>(g_iBehind)) {
            const details::ByteBlock bytes(m_p);
            const unsigned uFound = (bytes | bytes.among('\\', '\'')).uHighBits();
            std::memcpy(m_pOut, m_p, g_iBehind);
            const auto iPlain = uFound ? static_cast<std::size_t>(std::countr_zero(uFound)) : g_iBehind;
            m_pOut += iPlain;
            m_p += iPlain;
            return uFound != 0;
        }
        while (m_p != m_pEnd && !details::boSpecial(*m_p)) *m_pOut++ = *m_p++;
        return m_p != m_pEnd;
    }

    // At a backslash.
    bool boReadDirective() {
        const std::ptrdiff_t iLeft = m_pEnd - m_p;
        if (iLeft >= 2 && m_p[1] == '\\') {
            *m_pOut++ = '\\';
            m_p += 2;
            return true;
        }
        if (iLeft >= 4 && m_p[1] == 'X' && m_p[2] == '2' && m_p[3] == '\\') {
            m_p += 4;
            for (; m_pEnd - m_p >= 4 && *m_p != '\\'; m_p += 4)
                if (!boWrite(uHexOf(m_p, 4))) return false;
            m_p += 4;   // "\X0\", unseen
            return true;
        }
        if (iLeft >= 5 && m_p[1] == 'X' && m_p[2] == '\\') {
            const bool boWritten = boWrite(uHexOf(m_p + 3, 2));
            m_p += 5;
            return boWritten;
        }
        if (iLeft >= 4 && m_p[1] == 'S' && m_p[2] == '\\' && static_cast<unsigned char>(m_p[3]) < 0x80) {
            const bool boWritten = boWrite(static_cast<unsigned char>(m_p[3]) + 0x80U);
            m_p += 4;
            return boWritten;
        }
        return false;
    }

    // False for what is no character of 16 bits.
    bool boWrite(std::uint32_t uCode) {
        if (uCode >= 0xFFFE || (uCode >= 0xD800 && uCode <= 0xDFFF)) return false;
        if (uCode < 0x80) {
            *m_pOut++ = static_cast<char>(uCode);
        } else if (uCode < 0x800) {
            *m_pOut++ = static_cast<char>(0xC0 | uCode >> 6);
            *m_pOut++ = static_cast<char>(0x80 | (uCode & 0x3F));
        } else {
            *m_pOut++ = static_cast<char>(0xE0 | uCode >> 12);
            *m_pOut++ = static_cast<char>(0x80 | (uCode >> 6 & 0x3F));
            *m_pOut++ = static_cast<char>(0x80 | (uCode & 0x3F));
        }
        return true;
    }

    char* m_pOut;
    const char* m_p;   // may pass the end by a few
    const char* m_pEnd;
};

// What is written for each code point that is not printable ASCII. A run of them shares one \X2\ or \X4\ block, which
// stays open until a printable character, or a code point that needs the wider form; \X\ with two digits is used only
// outside of a block, where it is shorter.
//
// Text grows by a pointer, where it has room: a byte of UTF-8 that is not printable becomes g_iMost bytes at the most, which
// a control code in an \X4\ block takes, and the last block has to be closed.
class HexWriter {
public:
    static constexpr std::size_t g_iMost = 8;
    static constexpr std::size_t g_iBehind = details::ByteBlock::g_iSize;   // more that can be written
    static_assert(g_iBehind >= 4, "the end of a block");

    explicit HexWriter(char* pOut) : m_pOut(pOut) {}

    void vWrite(char32_t codePoint) {
        if (codePoint > 0xFFFF)
            vOpen(8);
        else if (codePoint > 0xFF && m_iWidth == 0)
            vOpen(4);
        if (m_iWidth == 0) vAppend("\\X\\");
        for (int iShift = 4 * ((m_iWidth == 0 ? 2 : m_iWidth) - 1); iShift >= 0; iShift -= 4)
            *m_pOut++ = "0123456789ABCDEF"[codePoint >> iShift & 0xF];
    }
    // A printable character.
    void vWritePlain(char c) {
        vClose();
        if (c == '\\' || c == '\'') *m_pOut++ = c;
        *m_pOut++ = c;
    }
    // Copies the bytes in front of pEnd that are written as they stand; behind them. The first one is.
    const char* pCopied(const char* p, const char* pEnd) {
        vClose();
        for (; pEnd - p >= static_cast<std::ptrdiff_t>(g_iBehind); p += g_iBehind, m_pOut += g_iBehind) {
            const details::ByteBlock bytes(p);
            std::memcpy(m_pOut, p, g_iBehind);
            const unsigned uOther = details::uOtherThanPlain(bytes);
            if (!uOther) continue;
            m_pOut += std::countr_zero(uOther);
            return p + std::countr_zero(uOther);
        }
        while (p != pEnd && details::boPlain(*p)) *m_pOut++ = *p++;
        return p;
    }
    void vClose() {
        if (m_iWidth != 0) vAppend("\\X0\\");
        m_iWidth = 0;
    }
    // Behind the text.
    [[nodiscard]] const char* pOut() const { return m_pOut; }

private:
    void vOpen(int iWidth) {
        if (m_iWidth == iWidth) return;
        vClose();
        vAppend(iWidth == 4 ? "\\X2\\" : "\\X4\\");
        m_iWidth = iWidth;
    }
    template <std::size_t N>
    void vAppend(const char (&text)[N]) {
        std::memcpy(m_pOut, text, N - 1);
        m_pOut += N - 1;
    }

    char* m_pOut;
    int m_iWidth = 0;   // digits a code point in the open block; 0: none is open
};

constexpr bool boPrintable(char32_t codePoint) { return codePoint >= 32 && codePoint <= 126; }

// How many bytes of a text are not written as they stand.
std::size_t iOtherThanPlain(std::string_view text) {
    constexpr std::size_t iBlock = details::ByteBlock::g_iSize;
    std::size_t iOthers = 0;
    std::size_t i = 0;
    for (; text.size() - i >= iBlock; i += iBlock)
        iOthers += static_cast<std::size_t>(std::popcount(details::uOtherThanPlain(details::ByteBlock(&text[i]))));
    for (; i < text.size(); ++i) iOthers += !details::boPlain(text[i]);
    return iOthers;
}

// The code point of two or more bytes that p begins with, in front of pEnd; p is behind it then. 0 for what is no UTF-8
// for certain, with p as it was: those that are seldom and near to faults are left to who knows them all.
char32_t codePointOfSeveral(const char*& p, const char* pEnd) {
    const auto uByte = [p](std::size_t i) { return static_cast<unsigned char>(p[i]); };
    const std::size_t iSize = uByte(0) < 0xC2 ? 0 : uByte(0) < 0xE0 ? 2 : uByte(0) < 0xF0 ? 3 : uByte(0) < 0xF5 ? 4 : 0;
    if (iSize == 0 || static_cast<std::size_t>(pEnd - p) < iSize) return 0;
    char32_t codePoint = uByte(0) & (0x7FU >> iSize);
    for (std::size_t i = 1; i < iSize; ++i) {
        if ((uByte(i) & 0xC0) != 0x80) return 0;
        codePoint = codePoint << 6 | (uByte(i) & 0x3FU);
    }
    const bool boKnown =
        iSize == 2 ||
        (iSize == 3 && codePoint >= 0x800 && (codePoint < 0xD800 || codePoint >= 0xE000) && codePoint < 0xFFFE) ||
        (iSize == 4 && codePoint >= 0x10000 && codePoint < 0x110000);
    if (!boKnown) return 0;
    p += iSize;
    return codePoint;
}

// What is written for a text, where that has room; false where that is not UTF-8 for certain.
bool boEncoded(HexWriter& hex, std::string_view text) {
    const char* p = text.data();
    const char* const pEnd = p + text.size();
    while (p != pEnd) {
        if (details::boPlain(*p)) {
            p = hex.pCopied(p, pEnd);
        } else if (*p == '\\' || *p == '\'') {
            hex.vWritePlain(*p++);
        } else if (static_cast<unsigned char>(*p) < 0x80) {
            hex.vWrite(static_cast<char32_t>(*p++));
        } else {
            const char32_t codePoint = codePointOfSeveral(p, pEnd);
            if (codePoint == 0) return false;
            hex.vWrite(codePoint);
        }
    }
    hex.vClose();
    return true;
}

// The same of code points.
bool boEncoded(HexWriter& hex, const std::u32string& codePoints) {
    for (const char32_t codePoint : codePoints) {
        if (boPrintable(codePoint))
            hex.vWritePlain(static_cast<char>(codePoint));
        else
            hex.vWrite(codePoint);
    }
    hex.vClose();
    return true;
}

}   // namespace

void vIfcStrToUtf8(std::string& out, const char* text, std::size_t length) {
    out.clear();
    if (length == 0 || length == std::numeric_limits<std::size_t>::max()) return;
    if (details::pFindSpecial(text, text + length) == text + length) {   // nearly all strings of a model
        out.assign(text, length);
        return;
    }
    out.resize(length + UsualReader::g_iBehind);
    if (UsualReader usual(out.data(), text, length); usual.boRead()) {
        out.resize(static_cast<std::size_t>(usual.pOut() - out.data()));
        return;
    }
    out.clear();
    thread_local std::u32string pending;
    pending.clear();
    StringReader reader(out, pending, text, length);
    reader.vRead();
    if (reader.boPlain()) return;
    try {
        str::details::vUtfConvertImpl(out, pending.data(), pending.size());
    } catch (const str::exception& e) {
        vAssertInvalid(e.what(), {text, length});
    }
}

const std::string& sIfcStrFromUtf8(std::string& out, const char* text, std::size_t length) {
    out.clear();
    if (length == 0) return out;
    const std::size_t iOthers = iOtherThanPlain({text, length});
    const auto boWrite = [&](auto&& write) {
        out.resize(length + iOthers * (HexWriter::g_iMost - 1) + HexWriter::g_iBehind);
        HexWriter hex(out.data());
        const bool boWritten = write(hex);
        out.resize(boWritten ? static_cast<std::size_t>(hex.pOut() - out.data()) : 0);
        return boWritten;
    };
    if (boWrite([&](HexWriter& hex) { return boEncoded(hex, {text, length}); })) return out;
    std::u32string codePoints;
    str::details::vUtfConvertImpl(codePoints, text, length);
    boWrite([&](HexWriter& hex) { return boEncoded(hex, codePoints); });
    return out;
}

// As sIfcStrFromUtf8, for a text that need not be UTF-8: each byte that is none becomes the Latin-1 character of its
// value.
const std::string& sIfcStrFromText(std::string& out, std::string_view text) {
    try {
        return sIfcStrFromUtf8(out, text.data(), text.size());
    } catch (const str::exception&) {
        const std::string utf8 = str::Converter::to_utf8(text);
        return sIfcStrFromUtf8(out, utf8.data(), utf8.size());
    }
}

}   // namespace oxa::ifc
