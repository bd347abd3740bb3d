// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/ConditionReader.h"

#include <algorithm>
#include <charconv>

namespace oxa::ids::detail {

namespace {

constexpr std::string_view g_prefix = "xs:";

struct BoundRow {
    std::string_view sName;
    std::optional<std::string> Condition::*pValue;
};
constexpr BoundRow g_bounds[] = {{"minInclusive", &Condition::minInclusive},
                                 {"minExclusive", &Condition::minExclusive},
                                 {"maxInclusive", &Condition::maxInclusive},
                                 {"maxExclusive", &Condition::maxExclusive}};
struct LengthRow {
    std::string_view sName;
    std::optional<std::uint64_t> Condition::*pValue;
};
constexpr LengthRow g_lengths[] = {{"length", &Condition::length},
                                   {"minLength", &Condition::minLength},
                                   {"maxLength", &Condition::maxLength}};

// A number beyond all others stays one.
std::uint64_t iCountOf(std::string_view text) {
    std::uint64_t iCount = 0;
    const auto [pEnd, eError] = std::from_chars(text.data(), text.data() + text.size(), iCount);
    return eError == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : iCount;
}

bool boBounded(const Condition& condition) {
    return std::ranges::any_of(g_bounds, [&](const BoundRow& row) { return (condition.*row.pValue).has_value(); });
}
bool boMeasured(const Condition& condition) {
    return std::ranges::any_of(g_lengths, [&](const LengthRow& row) { return (condition.*row.pValue).has_value(); });
}

std::optional<Base> baseIn(const Condition& condition) {
    return condition.base.starts_with(g_prefix) ? baseFromName(std::string_view(condition.base).substr(g_prefix.size()))
                                                : std::nullopt;
}

// The restriction below a parameter; the parameter where there is none.
const Node& restrictionOf(const Node& parameter) {
    const Node* pRestriction = parameter.pChild("restriction");
    return pRestriction ? *pRestriction : parameter;
}

}   // namespace

std::optional<Condition> ConditionReader::read(const Node& facet, std::string_view child) {
    const Node* pParameter = facet.pChild(child);
    if (!pParameter) return std::nullopt;
    Condition condition;
    if (const Node* pSimple = pParameter->pChild("simpleValue"))
        condition.simple = pSimple->sText;
    else if (const Node* pRestriction = pParameter->pChild("restriction"))
        vRestriction(*pRestriction, condition);
    return condition;
}

void ConditionReader::vRestriction(const Node& restriction, Condition& condition) {
    if (const std::string* pBase = restriction.pAttribute("base")) {
        condition.base = std::string(g_prefix) + *pBase;
        if (!baseFromName(*pBase))
            m_faults.vAdd(
                restriction, "Ids_RestrictionBase",
                "the base shall be xs:string, xs:boolean, xs:integer, xs:double, xs:date, xs:dateTime, xs:time "
                "or xs:duration, in the namespace of XML Schema",
                *pBase);
    }
    for (const auto& pFacet : restriction.children) vFacet(*pFacet, condition);
    if (const std::optional<Base> eBase = baseIn(condition)) vCheckRestriction(restriction, condition, *eBase);
}

void ConditionReader::vFacet(const Node& facet, Condition& condition) {
    const std::string* pValue = facet.pAttribute("value");
    if (!pValue) return;   // an annotation, or told already
    if (facet.sName == "enumeration") return condition.enumeration.push_back(*pValue);
    if (facet.sName == "pattern") {
        const Patterns::Answer& answer = m_patterns.compile(*pValue);
        condition.patterns.push_back(*pValue);
        if (!answer.sFault.empty())
            m_faults.vAdd(facet, "Ids_Pattern", "the pattern can't be read: " + answer.sFault, *pValue);
        if (!answer.sNote.empty()) m_faults.vNote(facet, "Ids_PatternNote", "the pattern: " + answer.sNote, *pValue);
        return;
    }
    for (const BoundRow& row : g_bounds)
        if (facet.sName == row.sName && !(condition.*row.pValue)) condition.*row.pValue = *pValue;
    for (const LengthRow& row : g_lengths)
        if (facet.sName == row.sName && !(condition.*row.pValue)) condition.*row.pValue = iCountOf(*pValue);
    if (facet.sName == "totalDigits" || facet.sName == "fractionDigits" || facet.sName == "whiteSpace")
        m_faults.vAdd(facet, "Ids_RestrictionFacet",
                      "requirements have no " + std::string(facet.sName) +
                          "; there are enumeration, pattern, bounds and lengths",
                      *pValue);
}

void ConditionReader::vCheckRestriction(const Node& restriction, const Condition& condition, Base eBase) {
    const std::string sBase(baseName(eBase));
    for (const auto& pFacet : restriction.children) {
        const Node& facet = *pFacet;
        const std::string* pValue = facet.pAttribute("value");
        const bool boBound = std::ranges::find(g_bounds, facet.sName, &BoundRow::sName) != std::end(g_bounds);
        if (!pValue || (!boBound && facet.sName != "enumeration") || boHasForm(eBase, *pValue)) continue;
        m_faults.vAdd(facet, "Ids_ValueForm",
                      "the value of " + std::string(facet.sName) + " shall be " + std::string(formText(eBase)) +
                          ", as the base " + sBase + " says",
                      *pValue);
    }
    if (boBounded(condition) && !boOrdered(eBase))
        m_faults.vAdd(restriction, "Ids_RestrictionFacet", "values of base " + sBase + " have no order, and no bounds");
    if (boMeasured(condition) && eBase != Base::String)
        m_faults.vAdd(restriction, "Ids_RestrictionFacet", "values of base " + sBase + " have no length");
    if (condition.length && (condition.minLength || condition.maxLength))
        m_faults.vAdd(restriction, "Ids_RestrictionFacet", "length stands alone, without minLength and maxLength");
    if (condition.minLength && condition.maxLength && *condition.minLength > *condition.maxLength)
        m_faults.vAdd(restriction, "Ids_RestrictionFacet", "minLength is more than maxLength");
    if (boOrdered(eBase)) vCheckRange(restriction, condition, eBase);
    if (!boBounded(condition) && !boMeasured(condition) && condition.enumeration.empty() && condition.patterns.empty())
        m_faults.vNote(restriction, "Ids_NoRestriction", "the restriction restricts nothing: any value will do");
}

void ConditionReader::vCheckRange(const Node& restriction, const Condition& condition, Base eBase) {
    if ((condition.minInclusive && condition.minExclusive) || (condition.maxInclusive && condition.maxExclusive)) {
        m_faults.vAdd(restriction, "Ids_RestrictionFacet", "a bound is inclusive or exclusive, and not both");
        return;
    }
    const auto& lower = condition.minInclusive ? condition.minInclusive : condition.minExclusive;
    const auto& upper = condition.maxInclusive ? condition.maxInclusive : condition.maxExclusive;
    if (!lower || !upper || !boHasForm(eBase, *lower) || !boHasForm(eBase, *upper)) return;
    const bool boNumbers = eBase == Base::Double || eBase == Base::Integer;
    const double from = numberOf(*lower).value_or(0);
    const double to = numberOf(*upper).value_or(0);
    const bool boEmpty = boNumbers ? from > to : compare(eBase, *lower, *upper) > 0;
    if (boEmpty)
        m_faults.vAdd(restriction, "Ids_RestrictionFacet", "the lower bound is above the upper one",
                      *lower + " to " + *upper);
    else if (eBase == Base::Double && (condition.minExclusive || condition.maxExclusive) &&
             to - from <= tolerance(from) + tolerance(to))
        m_faults.vNote(restriction, "Ids_NarrowRange",
                       "the range is narrower than the tolerance of numbers, so that no value may be in it",
                       *lower + " to " + *upper);
}

void ConditionReader::vCheckText(const Node& facet, std::string_view child, const Condition& condition) {
    const Node* pParameter = facet.pChild(child);
    if (!pParameter) return;
    const bool boEmpty = (condition.simple && condition.simple->empty()) ||
                         std::ranges::any_of(condition.enumeration, [](const std::string& s) { return s.empty(); });
    if (boEmpty) m_faults.vAdd(*pParameter, "Ids_Empty", std::string(child) + " shall not be empty");
    const std::optional<Base> eBase = baseIn(condition);
    if (eBase && *eBase != Base::String)
        m_faults.vAdd(restrictionOf(*pParameter), "Ids_RestrictionBase",
                      std::string(child) + " is a text, and the base of its restriction shall be xs:string",
                      condition.base);
}

void ConditionReader::vCheckValue(const Node& facet, const Condition& condition, std::span<const Base> bases,
                                  std::string_view what) {
    const Node* pParameter = facet.pChild("value");
    if (!pParameter || bases.empty()) return;
    const auto forms = [&](auto&& text) {
        std::string sAll;
        for (const Base eBase : bases)
            if (const std::string sOne(text(eBase)); sAll.find(sOne) == std::string::npos)
                sAll += (sAll.empty() ? "" : ", or ") + sOne;
        return sAll;
    };
    if (condition.simple) {
        if (std::ranges::none_of(bases, [&](Base eBase) { return boHasForm(eBase, *condition.simple); }))
            m_faults.vAdd(*pParameter, "Ids_ValueForm",
                          "a value of " + std::string(what) + " shall be " + forms(formText), *condition.simple);
        return;
    }
    const std::optional<Base> eBase = baseIn(condition);
    if (eBase && std::ranges::find(bases, *eBase) == bases.end())
        m_faults.vAdd(restrictionOf(*pParameter), "Ids_RestrictionBase",
                      "the base of a restriction of " + std::string(what) + " shall be " + forms(baseName),
                      condition.base);
}

}   // namespace oxa::ids::detail
