// SPDX-License-Identifier: Apache-2.0
// From the bytes of a file to its statements (ISO 10303-21): blanks and comments fall away, strings stay whole, and
// every ";" outside of them ends a statement.
#include "Format/Ifc/Read/StatementFinder.h"

#include <bit>
#include <cstring>

namespace oxa::ifc::io {

StatementFinder::StatementFinder(std::istream& stream, ReadError& error) : ReadFile(stream), m_pError(&error) {}

// How a statement gets its bytes. The buffer holds 16 KiB of the file, m_pText what of the present statement has
// been copied so far, and m_iStart says from where in the buffer the rest is still missing. Nothing is copied byte by
// byte: a piece ends at a blank, at a comment, at the ";" or at the end of the buffer, and goes to m_pText in one
// call. So a refill only has to save the piece that lies across the buffer's end, and afterwards the statement goes on
// at index 0. Inside of a comment there is no such piece; that is what m_boCopyOnRefill says.
void StatementFinder::vBeforeRefill(const char* pBuffer, unsigned iValid) {
    if (m_boCopyOnRefill && m_iStart < iValid) m_pText->vAppend(pBuffer + m_iStart, iValid - m_iStart);
    m_iStart = 0;
}

void StatementFinder::vBegin(std::uint64_t iPlace) {
    vMoved(iPlace);
    m_iStart = 0;
    m_pText->vClear();
    m_boCopyOnRefill = true;
    m_boHasNumberSign = m_boHasEqual = false;
}

// False where the end of the statement is uncertain.
bool StatementFinder::boByteRead(bool& boAdvanced) {
    switch (m_pBuffer[m_iPosition]) {
    case '\'': readString(boAdvanced); return true;
    case '/': readComment(boAdvanced); return true;
    case '=': vReport(ReportKey::UnexpectedEqualOperator); return false;   // the second one: usually a ";" is missing
    default: return false;                                                 // a backslash outside a string
    }
}

// The next buffer and its map. False at the end of the input.
bool StatementFinder::boRefill() {
    const bool boMore = boReadNextBuffer();
    m_map.vBuild(m_pBuffer, m_iValid);
    return boMore;
}

// What iBlankSkip does, for a space and for those behind it in the same 64 bytes, as far as nothing else stands between them
// that matters; once there was a "#". Where one follows each comma, there is a piece of some bytes between two of them. Each
// is copied without a look at its length, and the next one goes over what was too much.
unsigned StatementFinder::iSpacesTake(unsigned iSpace) {
    constexpr std::size_t g_iMostPieces = 64;   // together, in bytes; as many are written at once
    constexpr unsigned g_iShort = 16;
    vPendingTake(iSpace);
    char* pTo = m_pText->pRoom(2 * g_iMostPieces);
    const char* const pFrom = m_pBuffer + iSpace;
    std::uint64_t uMarks = m_map.uStatementFrom(iSpace);
    unsigned iStart = 1;
    while (uMarks &= uMarks - 1) {
        const auto i = static_cast<unsigned>(std::countr_zero(uMarks));
        if (pFrom[i] != ' ') break;
        std::memcpy(pTo, pFrom + iStart, g_iShort);
        if (i > iStart + g_iShort) std::memcpy(pTo + g_iShort, pFrom + iStart + g_iShort, g_iMostPieces - g_iShort);
        pTo += i - iStart;
        iStart = i + 1;
    }
    m_pText->vTaken(pTo);
    return m_iStart = iSpace + iStart;
}

// Some bytes on without looking at them, as far as there are any.
void StatementFinder::vSkip(unsigned iCount) {
    while (iCount-- && boStep()) {}
}

// Finds the closing quote. Escapes are passed over as far as a quote or a line end may stand inside of them;
// what they mean is the codec's business (ISO 10303-21, 6.4.3).
void StatementFinder::readString(bool& boAdvanced) {
    for (;;) {
        if (!boStep() || !boFindStringByte()) return;
        switch (m_pBuffer[m_iPosition]) {
        case '\n': ++m_iLine; break;
        case '\'':
            boAdvanced = true;
            if (!boStep() || m_pBuffer[m_iPosition] != '\'') return;
            break;   // doubled: the next step passes over the second one
        default: vEscapeSkip();
        }
    }
}

// Moves to the next byte that matters inside a string; false at the end of the input.
bool StatementFinder::boFindStringByte() {
    for (;;) {
        m_iPosition = m_map.iFindString(m_iPosition);
        if (m_iPosition != m_iValid) return true;
        if (!boRefill()) return false;
    }
}

// On a backslash in a string: moves to the last byte of its escape.
void StatementFinder::vEscapeSkip() {
    if (!boStep()) return;
    switch (m_pBuffer[m_iPosition]) {
    case 'S': return vSkip(2);   // \S\ and any byte, a quote included
    case 'X': break;
    case '\n':
        vReport(ReportKey::UnexpectedNewlineInString);
        ++m_iLine;
        return;
    default: return;
    }
    if (!boStep()) return;
    switch (m_pBuffer[m_iPosition]) {
    case '0':
    case '\\': return vSkip(1);
    case '2': return vSkip(5);
    case '4': return vSkip(9);
    default: return;
    }
}

void StatementFinder::readComment(bool& boAdvanced) {
    const unsigned iSlash = m_iPosition;
    if (!boStep()) return vReport(ReportKey::InvalidEndOfFile);
    if (m_pBuffer[m_iPosition] != '*') {
        boAdvanced = true;
        return;
    }
    if (m_iPosition == 0)
        m_pText->vDropLast();   // the slash ended the buffer before and went along with its bytes
    else
        vPendingTake(iSlash);
    m_boCopyOnRefill = false;
    if (!boCommentSkip()) vReport(ReportKey::EndOfCommentNotFound);
    m_boCopyOnRefill = true;
    m_iStart = m_iPosition + 1;
}

// From the "*" behind the slash to the slash that closes the comment; false at the end of the input.
bool StatementFinder::boCommentSkip() {
    bool boStar = false;
    while (boStep()) {
        const char c = m_pBuffer[m_iPosition];
        if (boStar && c == '/') return true;
        boStar = c == '*';
        if (c == '\n') ++m_iLine;
    }
    return false;
}

}   // namespace oxa::ifc::io
