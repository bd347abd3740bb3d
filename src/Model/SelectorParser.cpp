// SPDX-License-Identifier: Apache-2.0
#include "Model/SelectorParser.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <utility>

#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcNumbers.h"
#include "Model/Error.h"
#include "Model/Names.h"
#include "Model/Selector.h"

namespace oxa::detail {

namespace {

constexpr std::string_view g_blanks = " \t\r\n";
constexpr std::string_view g_nameEnds = ",+=!<>*\"'";   // of a word; the first of two ends at a point too

struct OperatorRow {
    std::string_view text;
    Operator eOperator;
    bool boNot;
};
// A longer one before what it begins with.
constexpr OperatorRow g_operators[] = {
    {"!*=", Operator::Contains, true},       {"!=", Operator::Equal, true},        {"*=", Operator::Contains, false},
    {">=", Operator::GreaterOrEqual, false}, {"<=", Operator::LessOrEqual, false}, {"=", Operator::Equal, false},
    {">", Operator::Greater, false},         {"<", Operator::Less, false},
};

struct LiteralRow {
    std::string_view word;
    Literal::Kind eKind;
};
constexpr LiteralRow g_literals[] = {{"NULL", Literal::Kind::Null},
                                     {"TRUE", Literal::Kind::True},
                                     {"FALSE", Literal::Kind::False}};

bool boBlank(char c) noexcept { return g_blanks.find(c) != std::string_view::npos; }
bool boDigit(char c) noexcept { return c >= '0' && c <= '9'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && boBlank(text.back())) text.remove_suffix(1);
    while (!text.empty() && boBlank(text.front())) text.remove_prefix(1);
    return text;
}

// A piece of the query for a message: whatever it holds.
std::string sShown(std::string_view text) {
    constexpr std::size_t iMost = 60;
    std::string sText(text.substr(0, iMost));
    for (char& c : sText)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    return "\"" + sText + (text.size() > iMost ? "...\"" : "\"");
}

class Parser {
public:
    explicit Parser(std::string_view text) : m_text(text) {}

    [[nodiscard]] Query query() {
        if (m_text.size() > Selector::g_iMostBytes) vRefuse(0, "a query has at most 100000 bytes");
        Query query;
        query.groups.emplace_back();
        for (std::size_t iTerms = 1;; ++iTerms) {
            if (iTerms > Selector::g_iMostTerms) vRefuse(m_iAt, "a query has at most 1000 terms");
            query.groups.back().push_back(term());
            vBlanksSkip();
            if (boTake("+"))
                query.groups.emplace_back();
            else if (!boTake(","))
                break;
        }
        if (m_iAt < m_text.size()) vRefuse(m_iAt, "a , or a + is expected, not " + sShown(m_text.substr(m_iAt)));
        return query;
    }

    // The name that is all of the text.
    [[nodiscard]] Key column() {
        const Name name = nameRead(std::string_view());
        vBlanksSkip();
        if (m_iAt < m_text.size()) vRefuse(m_iAt, sShown(m_text.substr(m_iAt)) + " is not expected");
        if (name.first.pPattern || name.second.pPattern) vRefuse(0, "a column has one name, no expression");
        return keyFromParts(name.first, name.boFirstQuoted, name.second, name.boTwo);
    }

private:
    struct Name {
        KeyName first;
        KeyName second;
        bool boFirstQuoted = false;
        bool boTwo = false;
    };

    [[noreturn]] void vRefuse(std::size_t iAt, const std::string& sMessage) const {
        throw QueryError(1 + iCharacters(m_text.substr(0, iAt)), sMessage);
    }
    [[nodiscard]] static std::size_t iCharacters(std::string_view text) {
        return static_cast<std::size_t>(
            std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
    }

    [[nodiscard]] std::string_view rest() const { return m_text.substr(m_iAt); }
    [[nodiscard]] bool boAt(char c) const { return rest().starts_with(c); }
    bool boTake(std::string_view token) {
        if (!rest().starts_with(token)) return false;
        m_iAt += token.size();
        return true;
    }
    void vBlanksSkip() {
        while (m_iAt < m_text.size() && boBlank(m_text[m_iAt])) ++m_iAt;
    }

    // What stands up to the next of some characters, without blanks around it.
    std::string_view wordRead(std::string_view ends) {
        const std::size_t iLength = std::min(rest().find_first_of(ends), rest().size());
        const std::string_view word = rest().substr(0, iLength);
        m_iAt += iLength;
        return trimmed(word);
    }

    // Behind its first delimiter, up to the next without a "\" before it.
    std::string delimitedRead(char cEnd, bool boPattern) {
        const std::size_t iStart = m_iAt++;
        std::string sText;
        for (; m_iAt < m_text.size(); ++m_iAt) {
            char c = m_text[m_iAt];
            if (c == cEnd) {
                ++m_iAt;
                return sText;
            }
            if (c == '\\' && m_iAt + 1 < m_text.size()) {
                const char cNext = m_text[++m_iAt];
                if (boPattern && cNext != cEnd) sText += c;   // for the expression to read
                c = cNext;
            }
            sText += c;
        }
        vRefuse(iStart,
                boPattern ? "the / that ends the expression is missing" : "the quote that ends the text is missing");
    }

    std::shared_ptr<const Pattern> patternRead() {
        const std::size_t iStart = m_iAt;
        const std::string sText = delimitedRead('/', true);
        if (++m_iPatterns > Selector::g_iMostPatterns) vRefuse(iStart, "a query has at most 100 expressions");
        auto pPattern = std::make_shared<const Pattern>(sText);
        if (!pPattern->error().empty()) vRefuse(iStart, sShown(sText) + ": " + pPattern->error());
        return pPattern;
    }

    KeyName partRead(std::string_view ends, bool& boQuoted) {
        vBlanksSkip();
        const std::size_t iStart = m_iAt;
        KeyName part;
        boQuoted = boAt('"') || boAt('\'');
        if (boQuoted)
            part.sText = delimitedRead(m_text[m_iAt], false);
        else if (boAt('/')) {
            part.pPattern = patternRead();
            part.sText = part.pPattern->text();
        } else
            part.sText = wordRead(ends);
        if (part.sText.empty()) vRefuse(iStart, "a name is expected");
        vBlanksSkip();
        return part;
    }

    Name nameRead(std::string_view ends) {
        Name name;
        name.first = partRead(std::string(ends) + ".", name.boFirstQuoted);
        name.boTwo = boTake(".");
        bool boQuoted = false;
        if (name.boTwo) name.second = partRead(ends, boQuoted);
        return name;
    }

    Term term() {
        vBlanksSkip();
        Term term;
        if (boTake("!")) term.boNot = true;
        vBlanksSkip();
        const std::size_t iStart = m_iAt;
        m_iColumn += iCharacters(m_text.substr(m_iCounted, iStart - m_iCounted));
        m_iCounted = iStart;
        term.iColumn = m_iColumn;
        if (boAt('#')) {
            vNumberRead(term);
            return term;
        }
        Name name = nameRead(g_nameEnds);
        for (const OperatorRow& row : g_operators) {
            if (!boTake(row.text)) continue;
            term.eKind = Term::Kind::Compare;
            term.eOperator = row.eOperator;
            term.boNot = term.boNot != row.boNot;
            term.key = keyFromParts(std::move(name.first), name.boFirstQuoted, std::move(name.second), name.boTwo);
            vLiteralRead(term);
            return term;
        }
        vWordTake(term, name, iStart);
        return term;
    }

    void vNumberRead(Term& term) {
        const std::size_t iStart = m_iAt++;
        const auto [pEnd, error] = std::from_chars(rest().data(), rest().data() + rest().size(), term.iId);
        if (error != std::errc()) vRefuse(iStart, "a number is expected behind #");
        m_iAt = static_cast<std::size_t>(pEnd - m_text.data());
        term.eKind = Term::Kind::Id;
    }

    // A word on its own: a class or a GlobalId.
    void vWordTake(Term& term, const Name& name, std::size_t iStart) {
        const std::string& sWord = name.first.sText;
        const bool boPlain = !name.boTwo && !name.boFirstQuoted && !name.first.pPattern;
        const auto guid = sWord.size() == ifc::IfcGuid::Length ? ifc::IfcGuid::fromIfcGuid(sWord) : std::nullopt;
        term.sText = sWord;
        if (boPlain && sWord.size() > 3 && boSameName(std::string_view(sWord).substr(0, 3), "Ifc") &&
            std::ranges::all_of(sWord, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }))
            return;
        if (!boPlain || !guid)
            vRefuse(iStart, sShown(trimmed(m_text.substr(iStart, m_iAt - iStart))) +
                                " is neither a class (IfcWall) nor a GlobalId; behind a name stands one of "
                                "= != > >= < <= *= !*=");
        term.eKind = Term::Kind::GlobalId;
        term.guid = *guid;
    }

    void vLiteralRead(Term& term) {
        vBlanksSkip();
        const std::size_t iStart = m_iAt;
        Literal& literal = term.literal;
        if (boAt('"') || boAt('\'')) {
            literal.sText = delimitedRead(m_text[m_iAt], false);
        } else if (boAt('/')) {
            literal.pPattern = patternRead();
            literal.eKind = Literal::Kind::Pattern;
            literal.sText = literal.pPattern->text();
        } else {
            literal.sText = wordRead(",+");
            if (literal.sText.empty()) vRefuse(iStart, "a value is expected; an empty text is \"\"");
            for (const LiteralRow& row : g_literals)
                if (literal.sText == row.word) literal.eKind = row.eKind;
        }
        if (literal.eKind == Literal::Kind::Text) literal.number = numberOf(literal.sText);
        if (literal.eKind != Literal::Kind::Text && term.eOperator != Operator::Equal)
            vRefuse(iStart, "NULL, TRUE, FALSE and expressions stand behind = and != alone");
    }

    std::string_view m_text;
    std::size_t m_iAt = 0;
    std::size_t m_iCounted = 0;   // up to here m_iColumn is counted
    std::size_t m_iColumn = 1;
    std::size_t m_iPatterns = 0;
};

std::string sLiteral(std::string_view text) {
    std::string sText = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') sText += '\\';
        sText += c;
    }
    return sText + "\"";
}

std::string sPattern(std::string_view text) {
    std::string sText = "/";
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size())
            sText += text[i++];
        else if (text[i] == '/')
            sText += '\\';
        sText += text[i];
    }
    return sText + "/";
}

std::string sPart(const KeyName& name) {
    if (name.pPattern) return sPattern(name.sText);
    const auto boWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    const bool boPlain = std::ranges::all_of(name.sText, boWord) && keyKindFromWord(name.sText) == KeyKind::Attribute;
    return boPlain ? name.sText : sLiteral(name.sText);
}

std::string sKey(const Key& key) {
    if (key.eKind == KeyKind::Attribute) return sPart(key.name);
    if (key.eKind == KeyKind::Property) return sPart(key.set) + "." + sPart(key.name);
    const std::string sWord(wordOf(key.eKind));
    return key.name.sText.empty() ? sWord : sWord + "." + sPart(key.name);
}

std::string sTerm(const Term& term) {
    switch (term.eKind) {
    case Term::Kind::Class:
    case Term::Kind::GlobalId: return (term.boNot ? "!" : "") + term.sText;
    case Term::Kind::Id: return (term.boNot ? "!#" : "#") + std::to_string(term.iId);
    case Term::Kind::Compare: break;
    }
    constexpr std::string_view plain[] = {"=", ">", ">=", "<", "<=", "*="};
    std::string sOperator(plain[static_cast<std::size_t>(term.eOperator)]);
    const bool boTurned = term.eOperator == Operator::Equal || term.eOperator == Operator::Contains;
    if (term.boNot && boTurned) sOperator.insert(0, "!");
    const std::string sText = (term.boNot && !boTurned ? "!" : "") + sKey(term.key) + sOperator;
    if (term.literal.eKind == Literal::Kind::Text) return sText + sLiteral(term.literal.sText);
    return sText + (term.literal.pPattern ? sPattern(term.literal.sText) : term.literal.sText);
}

}   // namespace

// Digits, as people write them: no name for infinity, and no blank.
std::optional<double> numberOf(std::string_view text) noexcept {
    const std::string_view digits = text.substr(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    if (digits.empty() || (!boDigit(digits.front()) && digits.front() != '.')) return std::nullopt;
    const auto value = ifc::toDouble(digits.data(), digits.data() + digits.size());
    if (!value || !std::isfinite(*value)) return std::nullopt;
    return text.starts_with('-') ? -*value : *value;
}

Query queryParse(std::string_view text) { return Parser(text).query(); }

std::string sQueryText(const Query& query) {
    std::string sText;
    for (const std::vector<Term>& group : query.groups) {
        if (!sText.empty()) sText += " + ";
        for (const Term& term : group) sText += (&term == &group.front() ? "" : ", ") + sTerm(term);
    }
    return sText;
}

Key columnParse(std::string_view text) {
    try {
        return Parser(text).column();
    } catch (const QueryError& error) {
        throw NameError(sShown(text) + " is no name of a column: " + error.what());
    }
}

}   // namespace oxa::detail
