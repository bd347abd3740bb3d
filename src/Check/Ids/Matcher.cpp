// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/Matcher.h"

#include <algorithm>
#include <cmath>

#include "Check/Ids/PatternText.h"
#include "Format/Ifc/IfcFileAttribute.h"
#include "Model/Names.h"

namespace oxa::ids::detail {

using oxa::detail::Pattern;

namespace {

struct LogicalTexts {
    std::string_view sLower;
    std::string_view sUpper;
};
constexpr std::array<LogicalTexts, 3> g_logicals{{{"false", "FALSE"}, {"true", "TRUE"}, {"unknown", "UNKNOWN"}}};

}   // namespace

const Patterns::Answer& Patterns::compile(const std::string& sText) {
    const auto [it, boNew] = m_answers.try_emplace(sText);
    Answer& answer = it->second;
    if (!boNew) return answer;
    if (sText.size() > g_iMostLength) {
        answer.sFault = "it has more than " + std::to_string(g_iMostLength) + " bytes";
        return answer;
    }
    PatternText translated = patternText(sText);
    answer.sNote = std::move(translated.sNote);
    answer.sFault = std::move(translated.sFault);
    if (!answer.sFault.empty()) return answer;
    // Most need little; what an expression may take is held free for it.
    for (const std::int64_t iBytes : {std::int64_t{1} << 18, Pattern::g_iMostBytes, Pattern::g_iMostBytes * 16}) {
        if (m_iBytes + iBytes > g_iMostBytes || m_iTried + iBytes > g_iMostTried) {
            answer.sFault = "all patterns of the file together need too much memory";
            return answer;
        }
        m_iTried += iBytes;
        auto pPattern = std::make_shared<const Pattern>(translated.sText, iBytes);
        if (pPattern->boTooLarge()) continue;
        if (!pPattern->error().empty()) {
            answer.sFault = pPattern->error();
        } else {
            m_iBytes += iBytes;
            answer.pPattern = std::move(pPattern);
        }
        return answer;
    }
    answer.sFault = "it needs too much memory";
    return answer;
}

double tolerance(double wanted) noexcept {
    constexpr double epsilon = 1e-6;
    constexpr double rounding = 1 + 1e-9;   // what stands at the very end is in
    return (std::abs(wanted) * epsilon + epsilon) * rounding;
}

Matcher::Matcher(const Condition& condition, Patterns& patterns)
    : m_pCondition(&condition),
      m_eBase(baseFromName(std::string_view(condition.base).substr(condition.base.starts_with("xs:") ? 3 : 0))
                  .value_or(Base::String)),
      m_boListed(condition.simple || !condition.enumeration.empty()),
      m_boLengths(condition.length || condition.minLength || condition.maxLength) {
    const auto vListed = [&](const std::string& sText) {
        m_texts.insert(sText);
        if (const auto boValue = booleanOf(sText)) m_booleans[*boValue] = true;
        for (std::size_t i = 0; i < g_logicals.size(); ++i)
            m_logicals[i] = m_logicals[i] || oxa::detail::boSameName(sText, g_logicals[i].sLower);
        if (const auto number = numberOf(sText)) m_numbers.push_back(*number);
        if (const auto integer = integerOf(sText)) m_integers.push_back(*integer);
    };
    if (condition.simple) vListed(*condition.simple);
    for (const std::string& sText : condition.enumeration) vListed(sText);
    std::ranges::sort(m_integers);
    std::erase_if(m_numbers, [](double number) { return std::isnan(number); });
    std::ranges::sort(m_numbers);
    const auto vBound = [&](const std::optional<std::string>& sText, bool boLower, bool boInclusive) {
        if (sText) m_bounds.push_back({sText, numberOf(*sText), boInclusive, boLower});
    };
    vBound(condition.minInclusive, true, true);
    vBound(condition.minExclusive, true, false);
    vBound(condition.maxInclusive, false, true);
    vBound(condition.maxExclusive, false, false);
    for (const std::string& sText : condition.patterns) m_patterns.push_back(patterns.compile(sText).pPattern);
    std::ranges::sort(m_patterns);
    m_patterns.erase(std::unique(m_patterns.begin(), m_patterns.end()), m_patterns.end());
}

bool Matcher::boLength(std::string_view text) const {
    if (!m_boLengths) return true;
    const std::uint64_t iCount = iCharacters(text);
    return (!m_pCondition->length || iCount == *m_pCondition->length) &&
           (!m_pCondition->minLength || iCount >= *m_pCondition->minLength) &&
           (!m_pCondition->maxLength || iCount <= *m_pCondition->maxLength);
}

bool Matcher::boPatterns(std::string_view text) const {
    return m_patterns.empty() ||
           std::ranges::any_of(m_patterns, [&](const auto& pPattern) { return pPattern && pPattern->boMatches(text); });
}

bool Matcher::boBounds(std::string_view text) const {
    return std::ranges::all_of(m_bounds, [&](const Bound& bound) {
        if (!boOrdered(m_eBase) || m_eBase == Base::Double || m_eBase == Base::Integer) return false;
        const std::partial_ordering order = compare(m_eBase, text, *bound.sText);
        return (bound.boInclusive && order == 0) || (bound.boLower ? order > 0 : order < 0);
    });
}

bool Matcher::boText(std::string_view text) const {
    if (boAny()) return true;
    if (m_pCondition->simple) return text == *m_pCondition->simple;
    if (m_boListed && !m_texts.contains(text)) return false;
    return boLength(text) && boPatterns(text) && boBounds(text);
}

bool Matcher::boNumber(double value) const {
    if (boAny()) return true;
    if (!boPlainOnly()) return false;   // those speak of texts
    const auto boEqual = [&](double wanted) {
        if (value == wanted) return true;   // infinite ones
        const double most = tolerance(wanted);
        return wanted - most <= value && value <= wanted + most;
    };
    if (m_boListed) {
        // The tolerance is a millionth of the wanted number: candidates are some around the value.
        const double reach = 2 * tolerance(value);
        auto it = std::ranges::lower_bound(m_numbers, value - reach);
        for (; it != m_numbers.end() && *it <= value + reach; ++it)
            if (boEqual(*it)) break;
        if (it == m_numbers.end() || *it > value + reach) return false;
    }
    return std::ranges::all_of(m_bounds, [&](const Bound& bound) {
        if (!bound.number || std::isnan(*bound.number)) return false;
        const double wanted = *bound.number;
        if (std::isinf(wanted))
            return bound.boLower ? value > wanted || (bound.boInclusive && value == wanted)
                                 : value < wanted || (bound.boInclusive && value == wanted);
        const double most = tolerance(wanted);
        if (bound.boLower) return bound.boInclusive ? value >= wanted - most : value > wanted + most;
        return bound.boInclusive ? value <= wanted + most : value < wanted - most;
    });
}

bool Matcher::boInteger(std::int64_t iValue) const {
    if (boAny()) return true;
    if (!boPlainOnly()) return false;
    if (m_boListed && !std::ranges::binary_search(m_integers, iValue)) return false;
    const auto value = static_cast<double>(iValue);
    return std::ranges::all_of(m_bounds, [&](const Bound& bound) {
        if (!bound.number) return false;
        if (bound.boInclusive && value == *bound.number) return true;
        return bound.boLower ? value > *bound.number : value < *bound.number;
    });
}

bool Matcher::boBoolean(bool boValue) const {
    if (boAny()) return true;
    if (m_boLengths || !m_bounds.empty() || (m_boListed && !m_booleans[boValue])) return false;
    return boPatterns(boValue ? "true" : "false");
}

// As texts, in any case of letters: the standard names none for them.
bool Matcher::boLogical(LogicalValue value) const {
    if (boAny()) return true;
    const std::size_t iValue = value == LogicalValue::True ? 1 : value == LogicalValue::False ? 0 : 2;
    if (!m_bounds.empty() || (m_boListed && !m_logicals[iValue])) return false;
    const LogicalTexts& texts = g_logicals[iValue];
    return boLength(texts.sLower) && (boPatterns(texts.sLower) || boPatterns(texts.sUpper));
}

}   // namespace oxa::ids::detail
