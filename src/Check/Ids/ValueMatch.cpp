// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/ValueMatch.h"

#include <charconv>

namespace oxa::ids::detail {

std::string shown(std::string_view text) {
    if (text.size() <= g_iMostShown) return std::string(text);
    std::size_t iEnd = g_iMostShown;   // not within a character
    while (iEnd > 0 && (static_cast<unsigned char>(text[iEnd]) & 0xC0) == 0x80) --iEnd;
    return std::string(text.substr(0, iEnd)) + "...";
}

std::string inQuotes(std::string_view text) { return "'" + shown(text) + "'"; }

void FoundList::vAdd(std::string_view text) {
    if (m_boCut) return;
    if (!m_sText.empty()) m_sText += ", ";
    m_boCut = !m_sText.empty() && m_sText.size() + text.size() > g_iMostShown;
    m_sText += m_boCut ? "..." : shown(text);
}

bool ValueMatch::boNull(const Value& value) {
    const Kind eKind = value.kind();
    return eKind == Kind::Null || eKind == Kind::Derived;
}

bool ValueMatch::boEmpty(const Value& value) {
    switch (value.kind()) {
    case Kind::Null:
    case Kind::Derived: return true;
    case Kind::Text: return value.text().value_or("").empty();
    case Kind::List: return value.size() == 0;
    case Kind::Logical: return value.logical() == LogicalValue::Unknown;
    case Kind::Number:
    case Kind::Integer:
    case Kind::Boolean:
    case Kind::Enumerator:
    case Kind::Binary:
    case Kind::Element: break;
    }
    return false;
}

const Unit* ValueMatch::pUnit(const Value& value, const Entity* pOwn) {
    if (pOwn) {
        const auto [it, boNew] = m_own.try_emplace(pOwn);
        if (boNew) it->second = oxa::unit(m_view.state().elementOf(const_cast<Entity*>(pOwn)));
        if (it->second) return &*it->second;
    }
    const std::string_view name = value.typeName();
    if (name.empty()) return nullptr;
    const auto [it, boNew] = m_byType.try_emplace(name.data());
    if (boNew) it->second = m_view.units().find(value);
    return it->second;
}

bool ValueMatch::boMatches(const Value& value, const Matcher& matcher, const Entity* pOwn) {
    switch (value.kind()) {
    case Kind::Text:
    case Kind::Enumerator: return matcher.boText(value.text().value_or(""));
    case Kind::Number: {
        const double number = value.number().value_or(0);
        const Unit* pHere = pUnit(value, pOwn);
        const std::optional<double> si = pHere ? pHere->toSi(number) : std::nullopt;
        return matcher.boNumber(si.value_or(number));
    }
    case Kind::Integer: return matcher.boInteger(value.integer().value_or(0));
    case Kind::Boolean: return matcher.boBoolean(value.boolean().value_or(false));
    case Kind::Logical: return matcher.boLogical(value.logical().value_or(LogicalValue::Unknown));
    case Kind::Null:
    case Kind::Derived:
    case Kind::Binary:
    case Kind::Element:
    case Kind::List: break;
    }
    return matcher.boAny();
}

std::string ValueMatch::text(const Value& value, const Entity* pOwn) {
    const Kind eKind = value.kind();
    if (eKind == Kind::Text) return inQuotes(value.text().value_or(""));
    std::string sText = plain(value);
    if (eKind != Kind::Number) return sText;
    const Unit* pHere = pUnit(value, pOwn);
    const std::optional<double> si = pHere ? pHere->toSi(value.number().value_or(0)) : std::nullopt;
    if (!si || pHere->symbol.empty()) return sText;
    sText += " " + pHere->symbol;
    if (pHere->symbol == pHere->siSymbol) return sText;
    char digits[32];
    const auto written = std::to_chars(digits, digits + sizeof digits, *si);
    return sText + " (" + std::string(digits, written.ptr) + " " + pHere->siSymbol + ")";
}

}   // namespace oxa::ids::detail
