// SPDX-License-Identifier: Apache-2.0
// Lexer: the tokens of an exchange structure, one after another, exactly as ISO 10303-21 writes them.
//
// For      ExchangeStructure.
// Faults   inside of tokens and between them are told here; the token comes nevertheless, as what it was meant to be.
// Cost     one look at each byte. Comments, blanks and strings of any length pass through the window of ByteSource.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Check/Collector.h"
#include "Check/Syntax/ByteSource.h"
#include "Check/Syntax/Faults.h"
#include "Check/Syntax/Token.h"

namespace oxa::check {

class Lexer {
public:
    Lexer(std::istream& stream, const CheckOptions& options, Collector& collector);

    // The next token, which is current() from now on. Behind the end of the file there is only End.
    const Token& next();
    [[nodiscard]] const Token& current() const noexcept { return m_token; }

    // From "3" of an implementation level on: code points beyond ASCII in strings and comments (edition 3), or bytes
    // outside of the alphabet (before). Those that stood in front of the level are told now.
    void vEditionKnown(bool boEdition3);
    [[nodiscard]] bool boEdition3() const noexcept { return m_eAlphabet == Alphabet::Edition3; }

    // Passes over the rest of a faulty statement without telling what is wrong with it: current() is the ";" behind it, or
    // ENDSEC or END-ISO-10303-21 or the end of the file. True where that ";" is missing: current() is the "=" of the
    // next instance then, whose name is "name", without its text.
    [[nodiscard]] bool boSkipStatement(Token& name);
    // Passes over a signature, which is base64 up to "ENDSEC;". False where the file ends before.
    [[nodiscard]] bool boSkipSignature();
    // Passes over all that is left, and tells nothing of it.
    void vSkipFile();

    // The instance that following faults belong to; 0 for none.
    void vInstance(std::uint64_t iNumber) noexcept { m_iInstance = iNumber; }
    // Tells a fault, unless the level is not asked for.
    void vFault(SyntaxFault fault, Place place, std::string_view found = {}, std::string_view expected = {});
    // Whether one was told since the last call.
    [[nodiscard]] bool boTakeFault() noexcept {
        const bool boFault = m_boFault;
        m_boFault = false;
        return boFault;
    }
    // True, and moved on, where the byte behind the current token is c; no blank may stand before it.
    [[nodiscard]] bool boTakeAdjacent(char c);
    [[nodiscard]] std::uint64_t iBytes() const noexcept { return m_source.iOffset(m_p); }

private:
    enum class Alphabet : std::uint8_t { Unknown, Basic, Edition3 };

    [[nodiscard]] Place placeOf(const char* p) const noexcept {
        return {m_iLine, m_source.iOffset(p) - m_iLineStart + 1};
    }
    void vLineAt(const char* p) noexcept {
        ++m_iLine;
        m_iLineStart = m_source.iOffset(p) + 1;
    }
    // Makes the bytes behind the window visible where p stands at its end; what stands from m_pKeep on is kept.
    [[nodiscard]] bool boMore(const char*& p);
    // Whether p stands at the end of the file. Where it stood at that of the window, more is visible from it on now.
    [[nodiscard]] bool boAtEnd(const char*& p) { return p == m_source.pEnd() && !boMore(p); }
    // So many bytes from p on, as far as the file has them.
    [[nodiscard]] std::string_view ahead(const char*& p, std::size_t iCount);
    [[nodiscard]] const char* pSkipFilling(const char* p, unsigned uClasses);

    void vSkipSeparators();
    [[nodiscard]] const char* pSkipComment(const char* p);
    [[nodiscard]] const char* pSkipHigh(const char* p);
    [[nodiscard]] const char* pSkipStray(const char* p);

    // Each scans the token that begins at p, the byte in front of it at m_pKeep.
    void vWord(const char* p);
    void vName(TokenKind kind, const char* p);
    void vNumber(const char* p);
    void vEnumeration(const char* p);
    void vBinary(const char* p);
    void vResource(const char* p);
    void vString(const char* p);
    [[nodiscard]] const char* pDirective(const char* p);
    [[nodiscard]] const char* pExtended(const char* p, std::size_t iDigits);
    [[nodiscard]] bool boStatementBehindBreak(const char*& p);
    void vEnd(TokenKind kind, const char* pEnd);
    void vEndFaulty(TokenKind kind, const char* pEnd, SyntaxFault fault, std::string_view expected);

    ByteSource m_source;
    Collector& m_collector;
    bool m_boTell;
    const char* m_p;
    const char* m_pKeep;   // null, or from where on bytes have to stay
    std::uint64_t m_iLine = 1;
    std::uint64_t m_iLineStart = 0;   // offset in the file
    Token m_token;
    std::string m_sLong;   // the beginning of a long token
    std::uint64_t m_iHash = 0;
    bool m_boLong = false;
    bool m_boTagName = false;   // the token is the name of a tag, which may be in lower case
    Alphabet m_eAlphabet = Alphabet::Unknown;
    std::vector<Place> m_highBytes;   // while the edition is not known
    std::uint64_t m_iInstance = 0;
    bool m_boMuted = false;   // while the rest of a faulty statement is passed over
    bool m_boFault = false;
};

}   // namespace oxa::check
