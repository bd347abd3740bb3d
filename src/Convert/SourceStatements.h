// SPDX-License-Identifier: Apache-2.0
// SourceStatements: the text of an exchange structure, one statement after the other, as it stands.
//
// For      Patch, which copies what it does not change. Inside this folder alone.
// Finds    statements, texts, comments and sections as the reader of files does (docs/reading.md), faults included.
// Memory   one block of the text, and a statement that is longer than that.
// Threads  one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Convert/TextScan.h"

namespace oxa::convert {

class SourceStatements {
public:
    // What a statement is to a reader.
    enum class Place {
        Frame,      // of the header, the sections, or behind the DATA section that is read
        Instance,   // in that section, with a "#"
        DataEnd     // the ENDSEC of it
    };

    // Reads the stream from where it stands; it must outlive this object.
    explicit SourceStatements(std::istream& stream);

    // Takes the next statement; false at the end. What bytes() told before is gone then.
    [[nodiscard]] bool boNext();
    // From behind the statement before to the ";"; at the end what no ";" closes.
    [[nodiscard]] std::string_view bytes() const noexcept {
        return std::string_view(m_text).substr(m_iBegin, m_iAt - m_iBegin);
    }
    // Where the statement begins in bytes(), behind blanks and comments.
    [[nodiscard]] std::size_t iFirst() const noexcept { return m_iFirst - m_iBegin; }
    [[nodiscard]] Place ePlace() const noexcept { return m_ePlace; }
    // Of an instance, as the reader takes it; empty where it takes none.
    [[nodiscard]] std::optional<std::uint32_t> number() const;
    // Of its first byte, from 1.
    [[nodiscard]] std::uint64_t iLine() const;
    // The highest number behind a "#" so far, in any section, of an instance or a reference.
    [[nodiscard]] std::uint32_t iHighest() const noexcept { return m_iHighest; }
    // The first line end of the text, or LF as long as there is none.
    [[nodiscard]] std::string_view lineEnd() const noexcept {
        return m_sLineEnd.empty() ? std::string_view("\n") : std::string_view(m_sLineEnd);
    }
    [[nodiscard]] bool boHasLineEnds() const noexcept { return !m_sLineEnd.empty(); }

private:
    enum class State { Text, Slash, Comment, Star, String };

    [[nodiscard]] bool boRefill();
    [[nodiscard]] bool boStatementEnds(char c);
    [[nodiscard]] bool boTextEnds(char c);
    void vNumberByte(char c);
    void vNumberEnd();
    void vPlaceFind();
    void vLineEndFind();

    std::istream& m_stream;
    std::string m_text;
    std::size_t m_iBegin = 0;    // of the statement, behind the one before
    std::size_t m_iFirst = 0;    // of its bytes that count
    std::size_t m_iAt = 0;       // behind what is scanned
    std::uint64_t m_iLine = 1;   // of m_iBegin
    State m_state = State::Text;
    TextScan m_textScan;
    bool m_boBegun = false;   // m_iFirst is known
    bool m_boNumberSign = false;
    bool m_boNumber = false;   // the bytes are those of a number
    bool m_boNegative = false;
    std::uint64_t m_iNumber = 0;
    std::uint32_t m_iHighest = 0;
    std::string m_sLineEnd;
    // As the reader goes through the sections.
    enum class Section { Before, Between, Header, Data, Behind } m_section = Section::Before;
    Place m_ePlace = Place::Frame;
};

// The places of the parameters of a statement "#12=KEYWORD(...);", blanks and comments around them left out.
struct ParameterPlaces {
    struct Span {
        std::size_t iBegin;
        std::size_t iEnd;
    };
    std::vector<Span> spans;
    std::size_t iClose = 0;   // the parenthesis behind them
    bool boRegular = false;   // each parenthesis has its partner
};
[[nodiscard]] ParameterPlaces parameterPlaces(std::string_view statement);

}   // namespace oxa::convert
