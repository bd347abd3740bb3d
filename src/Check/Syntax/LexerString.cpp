// SPDX-License-Identifier: Apache-2.0
// Strings: runs of plain characters, and what is rare in them: quotes, directives, bytes that may not stand there.
//
// A fault inside of a string does not end it. Its end is a single quote, or a line break behind which a statement begins:
// otherwise one forgotten quote would turn the rest of the file around.
#include <algorithm>
#include <string_view>

#include "Check/Syntax/ByteClass.h"
#include "Check/Syntax/Lexer.h"

namespace oxa::check {

namespace {

constexpr std::size_t g_iLookBehindBreak = 64;

}   // namespace

void Lexer::vString(const char* p) {
    bool boControlTold = false;
    for (;;) {
        const std::uint64_t iRun = m_source.iOffset(p);
        p = pSkip(p, StringPlain);
        m_token.iLength += m_source.iOffset(p) - iRun;
        const char c = *p;
        if (c == '\'') {
            ++p;
            if (boAtEnd(p) || *p != '\'') return vEnd(TokenKind::String, p);
            ++p;
            ++m_token.iLength;
        } else if (c == '\\') {
            p = pDirective(p);
        } else if (boIs(c, High)) {
            p = pSkipHigh(p);
        } else if (p == m_source.pEnd()) {
            if (boMore(p)) continue;
            return vEndFaulty(TokenKind::String, p, SyntaxFault::StringNotClosed, "'");
        } else {
            if ((c == '\n' || c == '\r') && boStatementBehindBreak(p))
                return vEndFaulty(TokenKind::String, p, SyntaxFault::StringNotClosed, "'");
            if (!boControlTold) vFault(SyntaxFault::StringControl, placeOf(p), {}, "\\X\\ and its code, or nothing");
            boControlTold = true;
            if (*p == '\n') vLineAt(p);
            ++p;
        }
    }
}

// Whether the line behind the break at p begins with an instance, or ends the section.
bool Lexer::boStatementBehindBreak(const char*& p) {
    std::string_view text = ahead(p, g_iLookBehindBreak);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    if (text.starts_with("ENDSEC;")) return true;
    if (!text.starts_with('#')) return false;
    text.remove_prefix(1);
    const std::size_t iDigits = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(iDigits);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return iDigits > 0 && text.starts_with('=');
}

// "\\" | "\S\" c | "\P" A-I "\" | "\X\" hh | "\X2\" { hhhh } "\X0\" | "\X4\" { hhhhhhhh } "\X0\". Behind the directive;
// behind the reverse solidus alone where it begins none.
const char* Lexer::pDirective(const char* p) {
    const std::string_view text = ahead(p, 5);
    const auto boAt = [&text](std::size_t i, unsigned uClasses) { return i < text.size() && boIs(text[i], uClasses); };
    if (text.starts_with("\\\\")) {
        ++m_token.iLength;
        return p + 2;
    }
    if (text.starts_with("\\S\\") && boAt(3, Graphic)) {
        ++m_token.iLength;
        return p + 4;
    }
    if (text.starts_with("\\P") && text.size() > 3 && text[2] >= 'A' && text[2] <= 'I' && text[3] == '\\') return p + 4;
    if (text.starts_with("\\X\\") && boAt(3, Hex) && boAt(4, Hex)) {
        ++m_token.iLength;
        return p + 5;
    }
    if (text.starts_with("\\X2\\")) return pExtended(p, 4);
    if (text.starts_with("\\X4\\")) return pExtended(p, 8);
    // "\X\" and the like are passed as a whole.
    std::size_t iLength = 1;
    while (boAt(iLength, Upper | Lower | Digit)) ++iLength;
    vFault(SyntaxFault::StringDirective, placeOf(p),
           text.substr(0, iLength + (iLength < text.size() && text[iLength] == '\\')),
           "\\\\ for the reverse solidus itself, or a directive");
    return p + (iLength <= 3 && iLength > 1 && iLength < text.size() && text[iLength] == '\\' ? iLength + 1 : 1);
}

// From "\X2\" or "\X4\" to behind "\X0\": groups of so many digits, one at least.
const char* Lexer::pExtended(const char* p, std::size_t iDigits) {
    const Place begin = placeOf(p);
    const std::string sBegin(ahead(p, 4));
    p += 4;
    bool boForm = true;
    for (std::size_t iGroups = 0;; ++iGroups) {
        const std::string_view group = ahead(p, iDigits);
        if (group.starts_with("\\X0\\")) {
            boForm = boForm && iGroups > 0;
            p += 4;
            break;
        }
        std::size_t iHex = 0;
        while (iHex < group.size() && boIs(group[iHex], Hex)) ++iHex;
        // Beyond Unicode there is no code point.
        boForm =
            boForm && iHex == iDigits && (iDigits == 4 || group.substr(0, 3) == "000" || group.starts_with("0010"));
        p += iHex;
        m_token.iLength += iHex > 0;
        if (iHex == iDigits) continue;
        // What was meant to belong to it does, so that one fault is told once.
        p = pSkipFilling(p, Upper | Lower | Digit);
        if (ahead(p, 4) == "\\X0\\") p += 4;
        break;
    }
    if (!boForm)
        vFault(SyntaxFault::StringDirective, begin, sBegin,
               iDigits == 4 ? "groups of 4 hexadecimal digits, then \\X0\\"
                            : "groups of 8 hexadecimal digits, then \\X0\\");
    return p;
}

}   // namespace oxa::check
