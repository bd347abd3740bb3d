// SPDX-License-Identifier: Apache-2.0
// The scan of an exchange structure byte by byte, where most bytes are passed over in one tight loop each for text
// outside and inside of quotes.
#include "Convert/SourceStatements.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

namespace oxa::convert {

namespace {

constexpr std::size_t g_iBlock = 256 * 1024;

// Bytes that mean something outside of texts and comments.
constexpr std::array<bool, 256> g_boMatters = [] {
    std::array<bool, 256> table{};
    for (const char c : std::string_view("';/#")) table[static_cast<unsigned char>(c)] = true;
    return table;
}();

// Of which the reader takes no notice outside of texts.
constexpr bool boBlank(char c) noexcept { return c == ' ' || c == '\r' || c == '\n'; }

// Tells the bytes outside of comments, with whether each stands in a text, the quotes among them.
template <class Take>
void vSignificant(std::string_view text, Take&& vTake) {
    enum class State { Text, Comment, String } state = State::Text;
    TextScan textScan;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool boNext = i + 1 < text.size();
        switch (state) {
        case State::String:
            vTake(i, true);
            if (textScan.boCloses(c)) state = State::Text;
            break;
        case State::Comment:
            if (c == '*' && boNext && text[i + 1] == '/') {
                ++i;
                state = State::Text;
            }
            break;
        case State::Text:
            if (c == '/' && boNext && text[i + 1] == '*') {
                ++i;
                state = State::Comment;
            } else if (c == '\'') {
                vTake(i, true);
                state = State::String;
                textScan = {};
            } else if (!boBlank(c)) {
                vTake(i, false);
            }
        }
    }
}

// The statement as the reader sees it, without blanks and comments.
std::string sPlain(std::string_view statement) {
    std::string sText;
    vSignificant(statement, [&](std::size_t i, bool) { sText += statement[i]; });
    return sText;
}

bool boHas(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

}   // namespace

SourceStatements::SourceStatements(std::istream& stream) : m_stream(stream) {}

// More text behind what is there; what was told already goes. False at the end.
bool SourceStatements::boRefill() {
    m_text.erase(0, m_iBegin);
    m_iAt -= m_iBegin;
    m_iFirst -= std::min(m_iFirst, m_iBegin);
    m_iBegin = 0;
    const std::size_t iOld = m_text.size();
    m_text.resize(iOld + g_iBlock);
    const std::streamsize iRead = m_stream.rdbuf()->sgetn(m_text.data() + iOld, static_cast<std::streamsize>(g_iBlock));
    m_text.resize(iOld + static_cast<std::size_t>(std::max<std::streamsize>(iRead, 0)));
    return iRead > 0;
}

bool SourceStatements::boNext() {
    m_iLine += static_cast<std::uint64_t>(std::count(m_text.begin() + static_cast<std::ptrdiff_t>(m_iBegin),
                                                     m_text.begin() + static_cast<std::ptrdiff_t>(m_iAt), '\n'));
    m_iBegin = m_iFirst = m_iAt;
    m_boBegun = m_boNumberSign = false;
    m_ePlace = Place::Frame;
    for (;;) {
        if (m_iAt == m_text.size() && !boRefill()) return false;
        if (boStatementEnds(m_text[m_iAt++])) break;
    }
    if (m_sLineEnd.empty()) vLineEndFind();
    vPlaceFind();
    return true;
}

// One byte, and those behind it that mean nothing. True for the ";" that ends the statement.
bool SourceStatements::boStatementEnds(char c) {
    switch (m_state) {
    case State::String:
        if (m_textScan.boCloses(c)) m_state = State::Text;
        return false;
    case State::Comment: m_state = c == '*' ? State::Star : State::Comment; return false;
    case State::Star: m_state = c == '/' ? State::Text : c == '*' ? State::Star : State::Comment; return false;
    case State::Slash:
        m_state = State::Text;
        if (c == '*') {
            m_state = State::Comment;
            return false;
        }
        if (!m_boBegun) m_iFirst = m_iAt - 2;
        m_boBegun = true;
        vNumberEnd();
        break;
    case State::Text: break;
    }
    return boTextEnds(c);
}

bool SourceStatements::boTextEnds(char c) {
    if (c == '/') {
        m_state = State::Slash;
        return false;
    }
    if (boBlank(c)) return false;
    if (!m_boBegun) {
        m_boBegun = true;
        m_iFirst = m_iAt - 1;
    }
    if (m_boNumber) vNumberByte(c);
    switch (c) {
    case ';': return true;
    case '\'':
        m_state = State::String;
        m_textScan = {};
        return false;
    case '#':
        m_boNumberSign = m_boNumber = true;
        m_boNegative = false;
        m_iNumber = 0;
        return false;
    default: break;
    }
    if (!m_boNumber)
        while (m_iAt < m_text.size() && !g_boMatters[static_cast<unsigned char>(m_text[m_iAt])]) ++m_iAt;
    return false;
}

void SourceStatements::vNumberByte(char c) {
    if (c >= '0' && c <= '9')
        m_iNumber = std::min<std::uint64_t>(m_iNumber * 10 + static_cast<unsigned>(c - '0'),
                                            std::numeric_limits<std::uint32_t>::max());
    else if (c == '-' && m_iNumber == 0)
        m_boNegative = true;
    else
        vNumberEnd();
}

// A negative number is the large one with the same bits, as in the reader.
void SourceStatements::vNumberEnd() {
    if (!std::exchange(m_boNumber, false)) return;
    const auto iNumber = static_cast<std::uint32_t>(m_iNumber);
    m_iHighest = std::max(m_iHighest, m_boNegative ? static_cast<std::uint32_t>(-std::int64_t{iNumber}) : iNumber);
}

// In the order in which the reader looks for the words.
void SourceStatements::vPlaceFind() {
    vNumberEnd();
    if (m_section == Section::Behind) return;
    if (m_section == Section::Data && m_boNumberSign) {
        m_ePlace = Place::Instance;
        return;
    }
    const std::string sText = sPlain(bytes());
    switch (m_section) {
    case Section::Before:
        if (boHas(sText, "ISO-10303-21")) m_section = Section::Between;
        return;
    case Section::Data:
        if (!boHas(sText, "ENDSEC")) return;
        m_ePlace = Place::DataEnd;
        m_section = Section::Behind;
        return;
    case Section::Header:
        if (boHas(sText, "ENDSEC")) m_section = Section::Between;
        return;
    case Section::Between:
        if (boHas(sText, "DATA"))
            m_section = Section::Data;
        else if (boHas(sText, "HEADER"))
            m_section = Section::Header;
        else if (boHas(sText, "END-ISO-10303-21"))
            m_section = Section::Behind;
        return;
    case Section::Behind: return;
    }
}

void SourceStatements::vLineEndFind() {
    const std::string_view text = bytes();
    const std::size_t iEnd = text.find_first_of("\r\n");
    if (iEnd == std::string_view::npos) return;
    m_sLineEnd = text.substr(iEnd, text.substr(iEnd).starts_with("\r\n") ? 2 : 1);
}

// Nearly all of them stand in one piece; what has more than blanks inside is looked at without that.
std::optional<std::uint32_t> SourceStatements::number() const {
    const auto numberOf = [](std::string_view text) -> std::optional<std::uint32_t> {
        const char* const pLast = text.data() + text.size();
        std::int32_t iNumber = 0;
        if (!text.starts_with('#')) return std::nullopt;
        auto [pEnd, error] = std::from_chars(text.data() + 1, pLast, iNumber);
        while (pEnd < pLast && boBlank(*pEnd)) ++pEnd;
        if (error != std::errc() || pEnd == pLast || *pEnd != '=') return std::nullopt;
        return static_cast<std::uint32_t>(iNumber);
    };
    const std::string_view text = bytes().substr(iFirst());
    const auto number = numberOf(text);
    return number ? number : numberOf(sPlain(text));
}

std::uint64_t SourceStatements::iLine() const {
    const std::string_view text = bytes().substr(0, iFirst());
    return m_iLine + static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

ParameterPlaces parameterPlaces(std::string_view statement) {
    ParameterPlaces places;
    std::size_t iDepth = 0;
    ParameterPlaces::Span span{0, 0};   // of the parameter in hand; its end is 0 until it begins
    vSignificant(statement, [&](std::size_t i, bool boInText) {
        if (places.boRegular) return;
        const char c = boInText ? '\0' : statement[i];
        if (iDepth == 1 && (c == ',' || c == ')')) {
            places.spans.push_back(span.iEnd == 0 ? ParameterPlaces::Span{i, i} : span);
            span = {0, 0};
        } else if (iDepth > 0) {
            if (span.iEnd == 0) span.iBegin = i;
            span.iEnd = i + 1;
        }
        if (c == '(') ++iDepth;
        if (c != ')' || iDepth == 0 || --iDepth > 0) return;
        places.iClose = i;
        places.boRegular = true;
    });
    // "()" has none.
    if (places.spans.size() == 1 && places.spans.front().iBegin == places.spans.front().iEnd) places.spans.clear();
    return places;
}

}   // namespace oxa::convert
