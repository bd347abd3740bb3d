// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/PatternText.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace oxa::ids::detail {

namespace {

constexpr std::uint32_t g_last = 0x10FFFF;

struct Range {
    std::uint32_t uFirst;
    std::uint32_t uLast;
};

// One part of a class of characters: code points, or a category and what is not in it.
struct SetUnit {
    std::vector<Range> ranges;   // of code points; empty for a category
    std::string sCategory;       // as in "Lu"
    bool boNot = false;          // what is not in the category
};

// Characters that are in one of the units, or in none of them.
struct Set {
    std::vector<SetUnit> units;
    bool boNot = false;
};

// clang-format off
// The name characters of XML 1.0.
constexpr Range g_nameStart[] = {
    {':', ':'}, {'A', 'Z'}, {'_', '_'}, {'a', 'z'}, {0xC0, 0xD6}, {0xD8, 0xF6}, {0xF8, 0x2FF}, {0x370, 0x37D},
    {0x37F, 0x1FFF}, {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF},
    {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
constexpr Range g_nameMore[] = {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};
constexpr Range g_blanks[] = {{'\t', '\n'}, {'\r', '\r'}, {' ', ' '}};

struct BlockRow {
    std::string_view sName;
    Range range;
};
constexpr BlockRow g_blocks[] = {
    {"BasicLatin", {0, 0x7F}},                {"Latin-1Supplement", {0x80, 0xFF}},
    {"LatinExtended-A", {0x100, 0x17F}},      {"LatinExtended-B", {0x180, 0x24F}},
    {"IPAExtensions", {0x250, 0x2AF}},        {"SpacingModifierLetters", {0x2B0, 0x2FF}},
    {"CombiningDiacriticalMarks", {0x300, 0x36F}}, {"Greek", {0x370, 0x3FF}}, {"GreekandCoptic", {0x370, 0x3FF}},
    {"Cyrillic", {0x400, 0x4FF}},             {"Armenian", {0x530, 0x58F}},  {"Hebrew", {0x590, 0x5FF}},
    {"Arabic", {0x600, 0x6FF}},               {"LatinExtendedAdditional", {0x1E00, 0x1EFF}},
    {"GreekExtended", {0x1F00, 0x1FFF}},      {"GeneralPunctuation", {0x2000, 0x206F}},
    {"CurrencySymbols", {0x20A0, 0x20CF}},    {"LetterlikeSymbols", {0x2100, 0x214F}},
    {"MathematicalOperators", {0x2200, 0x22FF}}, {"Hiragana", {0x3040, 0x309F}}, {"Katakana", {0x30A0, 0x30FF}},
    {"CJKUnifiedIdeographs", {0x4E00, 0x9FFF}},  {"HangulSyllables", {0xAC00, 0xD7AF}},
};
constexpr std::string_view g_categories[] = {
    "L", "Lu", "Ll", "Lt", "Lm", "Lo", "M", "Mn", "Mc", "Me", "N", "Nd", "Nl", "No", "P", "Pc", "Pd", "Ps", "Pe", "Pi",
    "Pf", "Po", "Z", "Zs", "Zl", "Zp", "S", "Sm", "Sc", "Sk", "So", "C", "Cc", "Cf", "Co"};
// clang-format on

SetUnit unitOf(std::span<const Range> ranges) { return {{ranges.begin(), ranges.end()}, {}, false}; }
SetUnit unitOf(std::string_view category, bool boNot = false) { return {{}, std::string(category), boNot}; }

std::vector<Range> complement(std::vector<Range> ranges) {
    std::ranges::sort(ranges, {}, &Range::uFirst);
    std::vector<Range> others;
    std::uint32_t uNext = 0;
    for (const Range& range : ranges) {
        if (range.uFirst > uNext) others.push_back({uNext, range.uFirst - 1});
        uNext = std::max(uNext, range.uLast + 1);
    }
    if (uNext <= g_last) others.push_back({uNext, g_last});
    return others;
}

SetUnit opposite(const SetUnit& unit) {
    if (unit.sCategory.empty()) return {complement(unit.ranges), {}, false};
    return {{}, unit.sCategory, !unit.boNot};
}

std::string code(std::uint32_t u) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string sHex;
    do sHex.insert(sHex.begin(), digits[u % 16]);
    while (u /= 16);
    return "\\x{" + sHex + "}";
}

// What stands between the brackets.
std::string unitText(const SetUnit& unit) {
    if (!unit.sCategory.empty()) return (unit.boNot ? "\\P{" : "\\p{") + unit.sCategory + "}";
    std::string sText;
    for (const Range& range : unit.ranges)
        sText += range.uFirst == range.uLast ? code(range.uFirst) : code(range.uFirst) + "-" + code(range.uLast);
    return sText;
}

std::string setText(const Set& set) {
    std::string sUnits;
    for (const SetUnit& unit : set.units) sUnits += unitText(unit);
    if (sUnits.empty()) return set.boNot ? "[\\x{0}-\\x{10FFFF}]" : "[^\\x{0}-\\x{10FFFF}]";
    return (set.boNot ? "[^" : "[") + sUnits + "]";
}

// All code points of a set are one unit, and each category is one.
std::vector<SetUnit> gathered(const std::vector<SetUnit>& units) {
    std::vector<SetUnit> found(1);
    for (const SetUnit& unit : units) {
        if (!unit.sCategory.empty())
            found.push_back(unit);
        else
            found.front().ranges.insert(found.front().ranges.end(), unit.ranges.begin(), unit.ranges.end());
    }
    if (found.front().ranges.empty()) found.erase(found.begin());
    return found;
}

// What is in "set" and not in "without": what is in none of the opposites.
std::string differenceText(const Set& set, const Set& without) {
    const auto both = [](const std::vector<SetUnit>& inUnits, const std::vector<SetUnit>& notIn) {
        std::string sText;
        for (const SetUnit& unit : gathered(inUnits)) {
            Set outside{notIn, true};
            outside.units.push_back(opposite(unit));
            sText += (sText.empty() ? "" : "|") + setText(outside);
        }
        return sText.empty() ? setText({}) : "(?:" + sText + ")";
    };
    if (!without.boNot) {
        if (!set.boNot) return both(set.units, without.units);
        Set outside{set.units, true};
        outside.units.insert(outside.units.end(), without.units.begin(), without.units.end());
        return setText(outside);
    }
    if (set.boNot) return both(without.units, set.units);
    std::string sText;   // in a unit of each
    for (const SetUnit& a : gathered(set.units))
        for (const SetUnit& b : gathered(without.units))
            sText += (sText.empty() ? "" : "|") + setText({{opposite(a), opposite(b)}, true});
    return sText.empty() ? setText({}) : "(?:" + sText + ")";
}

// What is wrong with a pattern.
class PatternFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Translator {
public:
    explicit Translator(std::string_view pattern) : m_text(pattern) {}

    std::string text() {
        while (!boEnd()) vNext();
        if (m_iOpen > 0) throw PatternFault("a ( has no )");
        return std::move(m_sOut);
    }
    [[nodiscard]] const std::string& note() const noexcept { return m_sNote; }

private:
    [[nodiscard]] bool boEnd() const noexcept { return m_iAt == m_text.size(); }
    [[nodiscard]] char cHere() const { return m_text[m_iAt]; }
    [[nodiscard]] bool boTake(char c) {
        if (boEnd() || cHere() != c) return false;
        ++m_iAt;
        return true;
    }

    void vNext() {
        const char c = cHere();
        switch (c) {
        case '(':
            ++m_iAt;
            if (!boEnd() && cHere() == '?')
                throw PatternFault("a group begins with (?, which XML Schema does not have");
            ++m_iOpen;
            m_sOut += "(?:";
            m_boAtom = false;
            return;
        case ')':
            ++m_iAt;
            if (m_iOpen-- == 0) throw PatternFault("a ) has no (");
            m_sOut += ')';
            m_boAtom = true;
            return;
        case '|':
            ++m_iAt;
            m_sOut += '|';
            m_boAtom = false;
            return;
        case '?':
        case '*':
        case '+':
        case '{': return vQuantifier();
        case '}':
        case ']': throw PatternFault(std::string("a ") + c + " stands alone; \\" + c + " is the character");
        case '[': vAtom(classText()); return;
        case '.': ++m_iAt; return vAtom("[^\\n\\r]");
        case '\\': vAtom(setText(escape())); return;
        case '^':
        case '$':
            vNote(std::string(1, c) +
                  " is a character like others: a pattern always speaks of the whole text, and has no anchors");
            break;
        default: break;
        }
        vAtom(code(uPoint()));
    }

    void vAtom(const std::string& sAtom) {
        m_sOut += sAtom;
        m_boAtom = true;
    }
    void vNote(std::string sNote) {
        if (m_sNote.empty()) m_sNote = std::move(sNote);
    }

    void vQuantifier() {
        if (!m_boAtom) throw PatternFault(std::string("nothing stands before a ") + cHere());
        m_boAtom = false;   // none behind it, as in .*?
        if (cHere() != '{') {
            m_sOut += m_text[m_iAt++];
            return;
        }
        ++m_iAt;
        const std::size_t iLeast = iCount();
        std::size_t iMost = iLeast;
        bool boOpen = false;
        if (boTake(',')) {
            boOpen = !boEnd() && cHere() == '}';
            if (!boOpen) iMost = iCount();
        }
        if (!boTake('}')) throw PatternFault("a { has no }");
        if (!boOpen && iMost < iLeast) throw PatternFault("a quantifier ends below its begin");
        m_sOut += "{" + std::to_string(iLeast) + (boOpen ? "," : "," + std::to_string(iMost)) + "}";
    }
    std::size_t iCount() {
        constexpr std::size_t most = 1000;
        std::size_t iValue = 0;
        const std::size_t iBegin = m_iAt;
        for (; !boEnd() && cHere() >= '0' && cHere() <= '9'; ++m_iAt)
            iValue = std::min<std::size_t>(iValue * 10 + static_cast<std::size_t>(cHere() - '0'), most + 1);
        if (m_iAt == iBegin) throw PatternFault("a { has no number");
        if (iValue > most) throw PatternFault("more than 1000 repetitions can't be counted");
        return iValue;
    }

    // The code point here, which is well-formed UTF-8 or a byte of something else.
    std::uint32_t uPoint() {
        const auto uFirst = static_cast<unsigned char>(m_text[m_iAt++]);
        const int iMore = uFirst < 0xC0 ? 0 : uFirst < 0xE0 ? 1 : uFirst < 0xF0 ? 2 : 3;
        std::uint32_t u = iMore == 0 ? uFirst : uFirst & (0x3FU >> iMore);
        for (int i = 0; i < iMore && !boEnd(); ++i)
            u = (u << 6) | (static_cast<unsigned char>(m_text[m_iAt++]) & 0x3FU);
        return u;
    }

    // "\d" and so on.
    Set escape() {
        ++m_iAt;
        if (boEnd()) throw PatternFault("a \\ ends the pattern");
        const char c = m_text[m_iAt++];
        const auto named = [&](char cUpper, std::vector<SetUnit> units) { return Set{std::move(units), c == cUpper}; };
        switch (c) {
        case 'n': return single('\n');
        case 'r': return single('\r');
        case 't': return single('\t');
        case 's':
        case 'S': return named('S', {unitOf(g_blanks)});
        case 'd':
        case 'D': return named('D', {unitOf("Nd")});
        case 'i':
        case 'I': return named('I', {unitOf(g_nameStart)});
        case 'c':
        case 'C': return named('C', {unitOf(g_nameStart), unitOf(g_nameMore)});
        case 'w': return {{unitOf("L"), unitOf("M"), unitOf("N"), unitOf("S")}, false};
        case 'W': return {{unitOf("P"), unitOf("Z"), unitOf("C")}, false};
        case 'p':
        case 'P': return {{category(c == 'P')}, false};
        default: break;
        }
        const auto uByte = static_cast<unsigned char>(c);
        if (uByte >= 0x80 || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'))
            throw PatternFault(std::string("\\") + (uByte < 0x80 ? std::string(1, c) : std::string("...")) +
                               " is none of XML Schema");
        if (std::string_view("\\|.?*+(){}-[]^").find(c) == std::string_view::npos)
            vNote(std::string("\\") + c + " need not be escaped, and other readers of patterns may refuse it");
        return single(uByte);
    }
    static Set single(std::uint32_t u) {
        const Range range[] = {{u, u}};
        return {{unitOf(range)}, false};
    }

    SetUnit category(bool boNot) {
        const std::size_t iEnd = boTake('{') ? m_text.find('}', m_iAt) : std::string_view::npos;
        if (iEnd == std::string_view::npos) throw PatternFault("a \\p has no {name}");
        const std::string_view sName = m_text.substr(m_iAt, iEnd - m_iAt);
        m_iAt = iEnd + 1;
        if (std::ranges::find(g_categories, sName) != std::end(g_categories)) return unitOf(sName, boNot);
        const std::string_view sBlock = sName.starts_with("Is") ? sName.substr(2) : std::string_view();
        const auto* pRow = std::ranges::find(g_blocks, sBlock, &BlockRow::sName);
        if (pRow == std::end(g_blocks))
            throw PatternFault("the category or block " + std::string(sName) + " is not known");
        SetUnit unit{{pRow->range}, {}, false};
        return boNot ? opposite(unit) : unit;
    }

    // "[a-z-[aeiou]]", from its bracket on.
    std::string classText() {
        Set set = classSet();
        if (!m_boSubtracted) return setText(set);
        m_boSubtracted = false;
        const Set without = classSet();
        if (m_boSubtracted) throw PatternFault("a class is subtracted from a subtracted one, which can't be said");
        if (!boTake(']')) throw PatternFault("a [ has no ]");
        return differenceText(set, without);
    }

    // Up to the bracket behind it, or to that of what is subtracted from it.
    Set classSet() {
        ++m_iAt;   // the bracket
        Set set;
        set.boNot = boTake('^');
        const std::size_t iBegin = m_iAt;
        for (;;) {
            if (boEnd()) throw PatternFault("a [ has no ]");
            if (cHere() == ']') break;
            if (cHere() == '[') throw PatternFault("a [ in a class; \\[ is the character");
            if (m_text.substr(m_iAt, 2) == "-[") {
                ++m_iAt;
                m_boSubtracted = true;
                break;
            }
            vClassItem(set);
        }
        if (m_iAt == iBegin) throw PatternFault("a class has nothing in it");
        if (!m_boSubtracted) ++m_iAt;
        return set;
    }

    void vClassItem(Set& set) {
        Set first = cHere() == '\\' ? escape() : single(uPoint());
        const bool boRange = !boEnd() && cHere() == '-' && m_iAt + 1 < m_text.size() && m_text[m_iAt + 1] != ']' &&
                             m_text[m_iAt + 1] != '[';
        if (boRange && boPoint(first)) {
            ++m_iAt;
            const Set last = cHere() == '\\' ? escape() : single(uPoint());
            if (!boPoint(last)) throw PatternFault("a range ends with no character");
            Range& range = first.units.front().ranges.front();
            range.uLast = last.units.front().ranges.front().uLast;
            if (range.uLast < range.uFirst) throw PatternFault("a range ends below its begin");
        }
        if (first.boNot) {   // \S, \D, \I, \C: all that they leave out is one unit
            const std::vector<SetUnit> units = gathered(first.units);
            set.units.push_back(opposite(units.front()));
        } else {
            set.units.insert(set.units.end(), first.units.begin(), first.units.end());
        }
    }
    static bool boPoint(const Set& set) {
        return !set.boNot && set.units.size() == 1 && set.units.front().ranges.size() == 1 &&
               set.units.front().ranges.front().uFirst == set.units.front().ranges.front().uLast;
    }

    std::string_view m_text;
    std::size_t m_iAt = 0;
    std::size_t m_iOpen = 0;   // groups
    bool m_boAtom = false;     // that a quantifier may follow
    bool m_boSubtracted = false;
    std::string m_sOut;
    std::string m_sNote;
};

}   // namespace

PatternText patternText(std::string_view pattern) {
    Translator translator(pattern);
    try {
        std::string sText = translator.text();
        return {std::move(sText), {}, translator.note()};
    } catch (const PatternFault& fault) {
        return {{}, fault.what(), {}};
    }
}

}   // namespace oxa::ids::detail
