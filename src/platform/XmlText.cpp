// SPDX-License-Identifier: Apache-2.0
// Names, characters and references of XML 1.0, Fifth Edition. The tables are its productions 2, 4 and 4a; the arguments
// of all functions may be any bytes.
#include "platform/XmlText.h"

#include <utf8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>

#include "platform/String.h"

namespace oxa::xml::details {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// NameStartChar, production 4.
constexpr Range g_nameStart[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},         {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},   {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
// What NameChar has besides, production 4a.
constexpr Range g_nameFurther[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

template <std::size_t N>
bool boIn(const Range (&ranges)[N], char32_t c) noexcept {
    return std::ranges::any_of(ranges, [c](const Range& range) { return range.first <= c && c <= range.last; });
}

// Char, production 2.
bool boIsChar(char32_t c) noexcept {
    if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
    return c < 0xD800 || (c > 0xDFFF && c < 0xFFFE) || (c > 0xFFFF && c <= 0x10FFFF);
}

constexpr std::string_view g_replacement = "\xEF\xBF\xBD";

// U+FFFE and U+FFFF, which UTF-8 has and XML has not.
bool boIsNonCharacter(std::string_view text) noexcept {
    return text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF");
}

struct Entity {
    std::string_view name;
    char value;
};
constexpr Entity g_entities[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

// "reference" is what stands between "&" and ";": a character by its code, one of the five names that XML has by
// itself, or another name, which is kept as it stands, since no document type is read. False where it is none of these.
bool boReferenceAppend(std::string& out, std::string_view reference) {
    if (!reference.starts_with('#')) {
        const auto* pEntity = std::ranges::find(g_entities, reference, &Entity::name);
        if (pEntity != std::end(g_entities)) {
            out += pEntity->value;
            return true;
        }
        out.append("&").append(reference).append(";");
        return boIsName(reference);
    }
    reference.remove_prefix(1);
    const int iBase = reference.starts_with('x') ? 16 : 10;
    if (iBase == 16) reference.remove_prefix(1);
    std::uint32_t uCode = 0;
    const auto [pEnd, fault] = std::from_chars(reference.data(), reference.data() + reference.size(), uCode, iBase);
    if (fault != std::errc{} || pEnd != reference.data() + reference.size() || !boIsChar(uCode)) return false;
    utf8::append(uCode, std::back_inserter(out));
    return true;
}

enum Care : std::uint8_t {
    Text = 1,        // not as it is between tags
    Attribute = 2,   // not as it is in an attribute
};

constexpr std::array<std::uint8_t, 256> g_care = [] {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t c = 0; c < 0x20; ++c) table[c] = Text | Attribute;
    // A parser turns these into blanks in an attribute, and a CR into a line end everywhere.
    table['\t'] = table['\n'] = Attribute;
    table['&'] = table['<'] = table['>'] = Text | Attribute;
    table['"'] = Attribute;
    table[0xEF] = Text | Attribute;   // perhaps U+FFFE or U+FFFF
    return table;
}();

std::string_view escapeOf(char c) noexcept {
    switch (c) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\t': return "&#9;";
    case '\n': return "&#10;";
    case '\r': return "&#13;";
    default: return g_replacement;
    }
}

}   // namespace

bool boIsName(std::string_view text) noexcept {
    if (text.empty() || !str::boIsValidUtf8(text)) return false;
    bool boFirst = true;
    for (auto place = text.begin(); place != text.end(); boFirst = false) {
        const char32_t c = utf8::unchecked::next(place);
        if (!boIn(g_nameStart, c) && (boFirst || !boIn(g_nameFurther, c))) return false;
    }
    return true;
}

// Most texts are ASCII: blocks are tested as a whole. A run of other bytes must be UTF-8 by itself, since no character has
// bytes of both sorts.
bool boIsUtf8Text(std::string_view text) noexcept {
    constexpr std::size_t g_iBlock = 64;
    std::size_t i = 0;
    while (i < text.size()) {
        if (text.size() - i >= g_iBlock) {
            std::uint8_t uAll = 0;
            for (std::size_t k = 0; k < g_iBlock; ++k) uAll |= static_cast<std::uint8_t>(text[i + k]);
            if (uAll < 0x80) {
                i += g_iBlock;
                continue;
            }
        }
        while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80) ++i;
        const std::size_t iRun = i;
        while (i < text.size() && static_cast<unsigned char>(text[i]) >= 0x80) ++i;
        const std::string_view run = text.substr(iRun, i - iRun);
        if (!str::boIsValidUtf8(run)) return false;
        for (std::size_t k = run.find('\xEF'); k != std::string_view::npos; k = run.find('\xEF', k + 1))
            if (boIsNonCharacter(run.substr(k))) return false;
    }
    return true;
}

bool boHasControls(std::string_view text) noexcept {
    std::uint8_t uAny = 0;
    for (const char c : text) {
        const auto u = static_cast<std::uint8_t>(c);
        uAny |= static_cast<std::uint8_t>((u < 0x20) & (u != '\t') & (u != '\n') & (u != '\r'));
    }
    return uAny;
}

bool boIsText(std::string_view text) noexcept { return !boHasControls(text) && boIsUtf8Text(text); }

bool boReferencesDecode(std::string& sText) {
    std::string sDecoded;
    for (std::string_view rest = sText;;) {
        const std::size_t iReference = rest.find('&');
        sDecoded.append(rest.substr(0, iReference));
        if (iReference == std::string_view::npos) break;
        rest.remove_prefix(iReference + 1);
        const std::size_t iEnd = rest.find(';');
        if (iEnd == std::string_view::npos || !boReferenceAppend(sDecoded, rest.substr(0, iEnd))) return false;
        rest.remove_prefix(iEnd + 1);
    }
    sText = std::move(sDecoded);
    return true;
}

bool boIsPlain(std::string_view text) noexcept {
    std::uint8_t uAll = 0;
    for (const char c : text)
        uAll |= static_cast<std::uint8_t>(static_cast<unsigned char>(c) |
                                          (g_care[static_cast<unsigned char>(c)] ? 0x80 : 0));
    return uAll < 0x80;
}

// Runs without a byte to escape are appended at once. A document stays well-formed whatever the text holds: what XML
// has no form for becomes U+FFFD.
void vEscape(std::string& out, std::string_view text, bool boAttribute) {
    std::string sRepaired;
    if (!str::boIsValidUtf8(text)) {
        utf8::replace_invalid(text.begin(), text.end(), std::back_inserter(sRepaired));
        text = sRepaired;
    }
    const int iCare = boAttribute ? Attribute : Text;
    std::size_t iPlain = 0;   // from here on nothing was written yet
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (!(g_care[c] & iCare) || (c == 0xEF && !boIsNonCharacter(text.substr(i)))) continue;
        out.append(text.substr(iPlain, i - iPlain)).append(escapeOf(text[i]));
        if (c == 0xEF) i += 2;
        iPlain = i + 1;
    }
    out.append(text.substr(iPlain));
}

}   // namespace oxa::xml::details
