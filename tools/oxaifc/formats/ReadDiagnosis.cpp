// SPDX-License-Identifier: Apache-2.0
// A second look at a file whose read failed. The reader knows where it stopped; for people the place where the text
// began that never ended is of more use.
#include "oxaifc/formats/ReadDiagnosis.h"

#include <streambuf>
#include <utility>

#include <fmt/format.h>

#include "Convert/TextScan.h"
#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/io/Output.h"
#include "platform/Localization.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostSource = 200;   // bytes that are kept of a statement

// One sentence in both languages.
struct Sentence {
    std::string_view english, german;

    template <class... Args>
    [[nodiscard]] std::string sWith(const Args&... args) const {
        return fmt::format(fmt::runtime(language() == Language::German ? german : english), args...);
    }
};
constexpr Sentence g_openText{"The text that begins in line {} with a single quote has no end{}.",
                              "Der Text, der in Zeile {} mit einem Hochkomma beginnt, hat kein Ende{}."};
constexpr Sentence g_openComment{"The comment that begins in line {} has no end{}.",
                                 "Der Kommentar, der in Zeile {} beginnt, hat kein Ende{}."};
constexpr Sentence g_backslash{"A backslash stands outside of a text in line {}; reading was stopped there{}.",
                               "In Zeile {} steht ein Backslash außerhalb eines Textes; dort wurde das Lesen "
                               "abgebrochen{}."};
constexpr Sentence g_noEnd{"The end of the data section, ENDSEC, is missing in front of line {}{}.",
                           "Vor Zeile {} fehlt das Ende des Datenabschnitts, ENDSEC{}."};
constexpr Sentence g_cut{"The file is cut off in line {}{}.", "Die Datei bricht in Zeile {} ab{}."};
constexpr Sentence g_lastInstance{"; the last whole instance is #{}, which ends at byte {}",
                                  "; die letzte vollständige Instanz ist #{}, sie endet bei Byte {}"};
constexpr Sentence g_noInstance{"; there is no whole instance before that", "; davor steht keine vollständige Instanz"};
constexpr Sentence g_foreign{"The file begins with {}, not with ISO-10303-21;.",
                             "Die Datei beginnt mit {}, nicht mit ISO-10303-21;."};

// Takes a file byte by byte, as the reader does.
class Scan {
public:
    // False where the reader stops.
    bool boTake(char c) {
        ++m_iBytes;
        const unsigned iLine = m_iLine;
        if (c == '\n') ++m_iLine;
        const char before = std::exchange(m_before, c);
        switch (m_state) {
        case State::Comment:
            if (c == '/' && before == '*') vState(State::Between);
            return true;
        case State::Text: vTextTake(c); return true;
        case State::Between: break;
        }
        if (c == ' ' || c == '\n' || c == '\r') return true;
        if (before == '/' && c == '*') {
            m_sSource.pop_back();
            m_iOpened = iLine;
            vState(State::Comment);
            return true;
        }
        return boBetweenTake(c, before);
    }

    [[nodiscard]] ReadDiagnosis result() const {
        if (m_brokenText.iLine) return of(g_openText, m_brokenText.iLine, m_brokenText.sSource);
        if (m_state == State::Text) return of(g_openText, m_iOpened, m_sSource);
        if (m_state == State::Comment) return of(g_openComment, m_iOpened, m_sSource);
        if (m_boBackslash) return of(g_backslash, m_iLine, m_sSource);
        if (m_boSecondEqual) return {};   // the read tells it
        if (m_iEndLine) return of(g_noEnd, m_iEndLine, {});
        return of(g_cut, m_iLine, m_sSource);
    }

private:
    enum class State { Between, Text, Comment };
    struct BrokenText {
        unsigned iLine = 0;
        std::string sSource;
    };

    // A comment neither begins nor ends with a byte of another's begin or end.
    void vState(State state) {
        m_state = state;
        m_before = '\0';
    }
    void vKeep(char c) {
        if (m_sSource.size() < g_iMostSource) m_sSource += c;
    }

    bool boBetweenTake(char c, char before) {
        vKeep(c);
        if (c == '\'') {
            if (before != c) m_iOpened = m_iLine;   // a doubled one goes on with the text
            m_state = State::Text;
            m_eBegin = Begin::Nothing;
        }
        if (c == '=' && std::exchange(m_boEqual, true)) m_boSecondEqual = true;
        if (c == '\\') m_boBackslash = true;
        if (c == ';') vStatementEnds();
        return !m_boBackslash && !m_boSecondEqual;
    }
    void vStatementEnds() {
        const std::size_t iEqual = m_sSource.find('=');
        if (m_sSource.starts_with('#') && iEqual != std::string::npos) {
            m_sLast = m_sSource.substr(1, iEqual - 1);
            m_iLastEnd = m_iBytes;
        } else if (!m_sLast.empty() && m_sSource.starts_with("END-ISO") && !m_iEndLine) {
            m_iEndLine = m_iLine;
        }
        m_sSource.clear();
        m_boEqual = false;
    }

    void vTextTake(char c) {
        vKeep(c);
        vBeginWatch(c);
        if (m_text.boCloses(c)) m_state = State::Between;
    }

    // A line within a text that begins as an instance does, "#12 =", or as the statements of a header.
    void vBeginWatch(char c) {
        const bool boDigit = c >= '0' && c <= '9';
        if (c == '\n') {
            m_eBegin = Begin::Line;
            m_iHeaderWord = 0;
        } else if ((m_eBegin == Begin::Line || m_eBegin == Begin::Word) && c == g_sHeaderWord[m_iHeaderWord]) {
            m_eBegin = Begin::Word;
            if (++m_iHeaderWord < g_sHeaderWord.size()) return;
            m_eBegin = Begin::Nothing;
            vBroken();
        } else if (m_eBegin == Begin::Line && c == '#') {
            m_eBegin = Begin::Sign;
        } else if ((m_eBegin == Begin::Sign || m_eBegin == Begin::Digits) && boDigit) {
            m_eBegin = Begin::Digits;
        } else if (m_eBegin == Begin::Digits && c == '=') {
            vBroken();
        } else if (c != ' ') {
            m_eBegin = Begin::Nothing;
        }
    }

    void vBroken() {
        if (!m_brokenText.iLine) m_brokenText = {m_iOpened, m_sSource.substr(0, m_sSource.find('\n'))};
    }

    [[nodiscard]] ReadDiagnosis of(const Sentence& sentence, unsigned iLine, const std::string& sSource) const {
        const std::string sBefore =
            m_sLast.empty() ? g_noInstance.sWith() : g_lastInstance.sWith(sPrintable(m_sLast), m_iLastEnd);
        return {sentence.sWith(iLine, sBefore), sSource, iLine};
    }

    enum class Begin { Nothing, Line, Sign, Digits, Word };
    static constexpr std::string_view g_sHeaderWord = "FILE_";

    std::uint64_t m_iBytes = 0;
    unsigned m_iLine = 1;
    State m_state = State::Between;
    char m_before = '\0';     // 0 where it can't open or close a comment
    unsigned m_iOpened = 0;   // the line in which the text or comment began
    convert::TextScan m_text;
    Begin m_eBegin = Begin::Nothing;
    std::size_t m_iHeaderWord = 0;   // bytes of the word so far
    BrokenText m_brokenText;         // the first
    std::string m_sSource;           // of the statement, from its begin on
    bool m_boEqual = false;
    bool m_boSecondEqual = false;
    bool m_boBackslash = false;
    unsigned m_iEndLine = 0;        // of END-ISO-10303-21 behind instances
    std::string m_sLast;            // number of the last whole instance
    std::uint64_t m_iLastEnd = 0;   // bytes up to its end
};

}   // namespace

ReadDiagnosis foreignBegin(std::string_view firstBytes) {
    if (boHasStepKeyword(firstBytes)) return {};
    return {g_foreign.sWith(sFirstWords(firstBytes)), {}, 0};
}

ReadDiagnosis readDiagnosis(std::istream& stream) {
    using Traits = std::streambuf::traits_type;
    std::streambuf& bytes = *stream.rdbuf();
    Scan scan;
    for (auto iByte = bytes.sbumpc(); !Traits::eq_int_type(iByte, Traits::eof()); iByte = bytes.sbumpc())
        if (!scan.boTake(Traits::to_char_type(iByte))) break;
    return scan.result();
}

}   // namespace oxa::tool
