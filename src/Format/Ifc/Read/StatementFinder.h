// SPDX-License-Identifier: Apache-2.0
// StatementFinder: where in a byte stream a statement ends, and its text without blanks and comments.
//
// For      the scanner, and the scan in blocks.
// Knows    ";", strings, comments and blanks (ISO 10303-21, 5 and 6.4), and that a second "=" is a fault; nothing of
//          sections or of what a statement says.
// Threads  one.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcReadFile.h"
#include "Format/Ifc/Read/ScanMap.h"
#include "Format/Ifc/Read/StatementBuffer.h"

namespace oxa::ifc::io {

class StatementFinder : public ReadFile {
protected:
    // Stops where a fatal fault stands in "error", whoever found it.
    StatementFinder(std::istream& stream, ReadError& error);

    // Moves to the next ";" that ends a statement, whose whole text then stands in m_pText. False where there is none: at
    // the end of the input, or where something makes the end of a statement uncertain.
    [[nodiscard]] bool boFind();
    // Before all of that: the stream stands at iPlace, behind a ";" or at its first byte.
    void vBegin(std::uint64_t iPlace);
    // To a byte of the buffer at which a statement begins.
    void vSkipTo(unsigned iPosition) noexcept { m_iPosition = m_iStart = iPosition; }
    // Behind the ";", with nothing of the next statement seen yet; m_pText is empty, or another one.
    void vNext() {
        boStep();
        m_pText->vClear();
        m_boHasNumberSign = m_boHasEqual = false;
    }
    // The next buffer and its map. False at the end of the input.
    bool boRefill();

    // A fault of the text; what stands in m_pText is told with it.
    virtual void vReport(ReportKey eKey) = 0;

    ReadError* m_pError;
    std::uint32_t m_iLine = 1;            // line feeds so far, from 1
    StatementBuffer* m_pText = nullptr;   // what is assembled of the statement in hand
    std::uint32_t m_iStart = 0;           // first byte in the buffer that belongs to it and is not in m_pText
    bool m_boHasNumberSign = false;       // of the statement in hand

private:
    bool boByteRead(bool& boAdvanced);

    // On entry the position is on the slash, the quote. With boAdvanced set on return it already is on the next
    // byte to look at.
    void readComment(bool& boAdvanced);
    void readString(bool& boAdvanced);
    bool boCommentSkip();
    void vEscapeSkip();
    bool boFindStatementByte();
    [[nodiscard]] unsigned iStringSkip(unsigned iQuote) const noexcept;
    [[nodiscard]] unsigned iBlankSkip(unsigned iBlank);
    [[nodiscard]] unsigned iSpacesTake(unsigned iSpace);
    [[nodiscard]] unsigned iNumberSignFind(unsigned iFrom);
    bool boFindStringByte();
    // One byte on. False at the end of the input.
    bool boStep() { return ++m_iPosition < m_iValid || boRefill(); }
    void vSkip(unsigned iCount);
    void vPendingTake(unsigned iEnd);
    void vBeforeRefill(const char* pBuffer, unsigned iValid) override;

    details::ScanMap<g_iBufferSize> m_map;   // of the buffer
    bool m_boCopyOnRefill = true;            // false inside comments
    bool m_boHasEqual = false;               // of the statement in hand
};

// Turns of the loop end at a byte that boFindStatementByte() leaves over, or at the end of the buffer. readString() and
// readComment() may stand on the byte behind theirs already, which boAdvanced says; a step then would lose it.
inline bool StatementFinder::boFind() {
    for (;;) {
        if (m_iPosition >= m_iValid && !boRefill()) return false;
        // A fault found on a worker stops the scan too.
        if (m_pError->boFatal()) return false;
        if (!boFindStatementByte()) continue;
        if (m_pBuffer[m_iPosition] == ';') {
            vPendingTake(m_iPosition + 1);
            return true;
        }
        bool boAdvanced = false;
        if (!boByteRead(boAdvanced)) return false;
        if (!boAdvanced) boStep();
    }
}

// Moves to the next byte that the caller has to deal with. False when the buffer holds no such byte any more.
//
// This is the loop in which a read spends its scanning time. ScanMap has found the bytes that matter already, so each
// turn is a search for the next set bit, and most turns end here: a blank run is skipped and the text in front of it
// copied, a string without escapes and line ends is skipped to its closing quote, "#" and the first "=" only set a
// flag. What is left for the caller is rare: the end of a statement, a slash, a second "=", a backslash, and any string
// that is not plain or does not end inside of this buffer, which is read byte by byte with refills in between. "#" is
// no bit of the map, since it would stop the search at every reference; it is looked for by the table until the
// statement has its first one, which mostly is its first byte.
inline bool StatementFinder::boFindStatementByte() {
    const char* const pBytes = m_pBuffer;
    unsigned i = m_iPosition;
    for (;;) {
        if (!m_boHasNumberSign) i = iNumberSignFind(i);
        i = m_map.iFindStatement(i);
        if (i == m_iValid) break;
        unsigned iNext = i;
        switch (pBytes[i]) {
        case '=':
            if (m_boHasEqual) break;
            m_boHasEqual = true;
            iNext = i + 1;
            // Many exporters put a blank there.
            if (pBytes[iNext] == ' ') iNext = iBlankSkip(iNext);
            break;
        case '\'': iNext = iStringSkip(i); break;
        case details::g_blankBytes[0]: iNext = m_boHasNumberSign ? iSpacesTake(i) : iBlankSkip(i); break;
        case details::g_blankBytes[1]:
        case details::g_blankBytes[2]: iNext = iBlankSkip(i); break;
        default: break;
        }
        if (iNext == i) break;
        i = iNext;
    }
    m_iPosition = i;
    return i != m_iValid;
}

// Behind a string that ends in the buffer and holds neither escape nor line end; else where it was.
inline unsigned StatementFinder::iStringSkip(unsigned iQuote) const noexcept {
    const unsigned iEnd = m_map.iFindString(iQuote + 1);
    // A doubled quote ends one string and begins the next: the same to a scanner.
    return m_pBuffer[iEnd] == '\'' ? iEnd + 1 : iQuote;
}

// Behind a run of blanks, or behind as much of it as the buffer holds. Outside strings they never reach the
// statement, not even inside a word. A tab is none.
inline unsigned StatementFinder::iBlankSkip(unsigned iBlank) {
    vPendingTake(iBlank);
    const char* p = m_pBuffer + iBlank;
    // The padding behind the buffer is none.
    do {
        m_iLine += *p == '\n';
        ++p;
    } while (details::boScanBlank(*p));
    return m_iStart = static_cast<unsigned>(p - m_pBuffer);
}

// Until a statement has its "#", that counts too. It mostly is its first byte, behind the line end of the one before.
// Behind it then; else at the first byte that the caller has to deal with, or at the end of the buffer.
inline unsigned StatementFinder::iNumberSignFind(unsigned iFrom) {
    if (details::boScanBlank(m_pBuffer[iFrom])) iFrom = iBlankSkip(iFrom);
    // The padding behind the buffer has none.
    const char* const p = details::pFindClass(m_pBuffer + iFrom, m_pBuffer + m_iValid, details::Number);
    m_boHasNumberSign = *p == '#';
    return static_cast<unsigned>(p - m_pBuffer) + m_boHasNumberSign;
}

// Copies what is pending up to iEnd into the statement.
inline void StatementFinder::vPendingTake(unsigned iEnd) {
    if (m_iStart < iEnd) m_pText->vAppend(m_pBuffer + m_iStart, iEnd - m_iStart);
    m_iStart = iEnd;
}

}   // namespace oxa::ifc::io
