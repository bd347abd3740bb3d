// SPDX-License-Identifier: Apache-2.0
// The header section with the places of its parameters in the file, so that a change replaces the bytes of one value
// and leaves all others as they are.
#include "oxaifc/formats/HeaderSection.h"

#include <algorithm>
#include <streambuf>
#include <utility>

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostBytes = 16u << 20;

}   // namespace

// Takes the file byte by byte and finds where statements and their parameters stand. White space outside of
// strings, and comments, are no part of either.
class HeaderSection::Scanner {
public:
    // True at the ";" of a statement, which the caller takes before the next byte.
    bool boEnds(char c, std::size_t iAt) {
        const char before = std::exchange(m_before, c);
        if (m_state == State::Comment) {
            if (before == '*' && c == '/') vState(State::Between);
            return false;
        }
        if (m_state == State::String) {
            vTake(c, iAt);
            if (c == '\'') vState(State::Between);   // a doubled one opens the string again
            return false;
        }
        if (static_cast<unsigned char>(c) <= ' ') return false;
        if (before == '/' && c == '*') {
            m_sText.pop_back();
            vState(State::Comment);
            return false;
        }
        if (m_iDepth == 1 && (c == ',' || c == ')')) vParameterEnds(iAt);
        vTake(c, iAt);
        if (c == '\'') m_state = State::String;
        if (c == '(' && m_iDepth++ == 0) m_span = {};
        if (c == ')' && m_iDepth > 0) --m_iDepth;
        if (c == ',' && m_iDepth == 1) m_span = {};
        return c == ';';
    }

    [[nodiscard]] const std::string& sText() const noexcept { return m_sText; }

    // The statement that ended; the next one begins.
    Statement statement() {
        m_statement.sKeyword = m_sText.substr(0, m_sText.find_first_of("(;"));
        m_sText.clear();
        m_iDepth = 0;
        return std::exchange(m_statement, {});
    }

private:
    enum class State { Between, String, Comment };

    void vState(State state) {
        m_state = state;
        m_before = '\0';
    }
    // A stroke may be the begin of a comment, and is nothing else in a parameter; in a string a quote is behind it.
    void vTake(char c, std::size_t iAt) {
        m_sText += c;
        if (c == '/') return;
        if (m_span.iEnd == 0) m_span.iBegin = iAt;
        m_span.iEnd = iAt + 1;
    }
    // One that is not there stands where it would.
    void vParameterEnds(std::size_t iAt) {
        m_statement.parameters.push_back(m_span.iEnd == 0 ? Span{iAt, iAt} : m_span);
    }

    State m_state = State::Between;
    char m_before = '\0';   // 0 where it can't open or close a comment
    std::size_t m_iDepth = 0;
    Span m_span{};   // of the parameter so far; its end is 0 until it begins
    std::string m_sText;
    Statement m_statement;
};

HeaderSection::HeaderSection(Input& input) : m_sName(input.sName()) {
    using Traits = std::streambuf::traits_type;
    Scanner scanner;
    bool boInside = false;   // of the section
    std::streambuf& bytes = *input.stream().rdbuf();
    while (m_sBytes.size() < g_iMostBytes) {
        const Traits::int_type iByte = bytes.sbumpc();
        if (Traits::eq_int_type(iByte, Traits::eof())) {
            input.iFinish();   // tells what the system could not read
            break;
        }
        m_sBytes += Traits::to_char_type(iByte);
        if (!scanner.boEnds(m_sBytes.back(), m_sBytes.size() - 1)) continue;
        std::string sText = scanner.sText();
        Statement statement = scanner.statement();
        if (!boInside) {
            boInside = statement.sKeyword == "HEADER";
            continue;
        }
        if (statement.sKeyword == "ENDSEC") return;
        m_header.boReadLine(std::move(sText), m_errors, 0);   // only the count of errors is told, not their lines
        m_statements.push_back(std::move(statement));
    }
    throw Failure(
        fmt::format("{}: {}", m_sName, boInside ? "its HEADER section does not end" : "has no HEADER section"));
}

const HeaderSection::Statement& HeaderSection::statement(const Change& change) const {
    const Statement* pFound = nullptr;
    for (const Statement& statement : m_statements) {
        if (statement.sKeyword != change.keyword) continue;
        if (pFound) throw Failure(fmt::format("{}: has {} twice", m_sName, change.keyword));
        pFound = &statement;
    }
    if (!pFound) throw Failure(fmt::format("{}: has no {}", m_sName, change.keyword));
    if (pFound->parameters.size() != change.iParameters)
        throw Failure(fmt::format("{}: {} has {} instead of {}", m_sName, change.keyword,
                                  sCounted(pFound->parameters.size(), "parameter"), change.iParameters));
    return *pFound;
}

std::string HeaderSection::sChanged(const std::vector<Change>& changes) const {
    std::vector<std::pair<Span, std::string_view>> places;
    places.reserve(changes.size());
    for (const Change& change : changes)
        places.emplace_back(statement(change).parameters[change.iParameter], change.sText);
    std::sort(places.begin(), places.end(),
              [](const auto& a, const auto& b) { return a.first.iBegin < b.first.iBegin; });
    std::string sResult;
    std::size_t iTaken = 0;
    for (const auto& [span, text] : places) {
        sResult.append(m_sBytes, iTaken, span.iBegin - iTaken).append(text);
        iTaken = span.iEnd;
    }
    return sResult.append(m_sBytes, iTaken);
}

}   // namespace oxa::tool
