// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/Texts.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include "Check/Ids/SchemaNames.h"

namespace oxa::ids {

namespace {

constexpr std::string_view g_cardinalities[] = {"required", "optional", "prohibited"};
constexpr std::string_view g_facetKinds[] = {"entity", "partOf", "classification", "attribute", "property", "material"};
constexpr std::string_view g_failureKinds[] = {"not-allowed", "class",  "predefined-type", "missing",   "value",
                                               "data-type",   "system", "whole",           "prohibited"};
constexpr std::string_view g_statuses[] = {"passed", "failed", "other-schema", "faulty"};
constexpr std::string_view g_verdicts[] = {"passed", "failed", "undecided"};

using Display = std::function<std::string(const std::string&)>;

std::string joined(const std::vector<std::string>& texts, std::string_view sBetween, const Display& display) {
    std::string sAll;
    for (const std::string& sText : texts) {
        if (!sAll.empty()) sAll += sBetween;
        sAll += display(sText);
    }
    return sAll;
}

std::string rangeText(const Condition& condition) {
    std::string sText;
    const bool boUpper = condition.maxInclusive || condition.maxExclusive;
    if (condition.minInclusive) sText = (boUpper ? "from " : "at least ") + *condition.minInclusive;
    if (condition.minExclusive) sText = "more than " + *condition.minExclusive;
    if (!boUpper) return sText;
    if (!sText.empty()) sText += condition.minInclusive && condition.maxInclusive ? " " : " and ";
    if (condition.maxInclusive) {
        const bool boTo = condition.minInclusive.has_value();
        sText += (boTo ? "to " : "at most ") + *condition.maxInclusive;
    } else {
        if (condition.minInclusive) sText = "at least " + *condition.minInclusive + " and ";
        sText += "less than " + *condition.maxExclusive;
    }
    return sText;
}

std::string lengthText(const Condition& condition) {
    const auto characters = [](const std::string& sCount) {
        return sCount + (sCount == "1" ? " character long" : " characters long");
    };
    if (condition.length) return characters(std::to_string(*condition.length));
    if (condition.minLength && condition.maxLength)
        return std::to_string(*condition.minLength) + " to " + characters(std::to_string(*condition.maxLength));
    if (condition.minLength) return "at least " + characters(std::to_string(*condition.minLength));
    return condition.maxLength ? "at most " + characters(std::to_string(*condition.maxLength)) : std::string();
}

std::string conditionText(const Condition& condition, const Display& display) {
    if (condition.simple) return display(*condition.simple);
    std::string sAll;
    const auto vAdd = [&sAll](const std::string& sText) {
        if (!sText.empty()) sAll += (sAll.empty() ? "" : " and ") + sText;
    };
    if (condition.enumeration.size() == 1) vAdd(display(condition.enumeration.front()));
    if (condition.enumeration.size() > 1) vAdd("one of " + joined(condition.enumeration, ", ", display));
    const auto itself = [](const std::string& sText) { return sText; };
    if (!condition.patterns.empty()) vAdd("a match of " + joined(condition.patterns, " or ", itself));
    vAdd(rangeText(condition));
    vAdd(lengthText(condition));
    return sAll.empty() ? "anything" : sAll;
}

}   // namespace

std::string_view cardinalityName(Cardinality cardinality) noexcept {
    return g_cardinalities[static_cast<std::size_t>(cardinality)];
}
std::string_view facetKindName(FacetKind kind) noexcept { return g_facetKinds[static_cast<std::size_t>(kind)]; }
std::string_view failureKindName(FailureKind kind) noexcept { return g_failureKinds[static_cast<std::size_t>(kind)]; }
std::string_view statusName(Status status) noexcept { return g_statuses[static_cast<std::size_t>(status)]; }
std::string_view verdictName(Verdict verdict) noexcept { return g_verdicts[static_cast<std::size_t>(verdict)]; }

std::string Condition::text() const {
    return conditionText(*this, [](const std::string& sText) { return sText; });
}

}   // namespace oxa::ids

namespace oxa::ids::detail {

namespace schema = ifc::def::schema;

std::string spelled(std::string_view upper, const std::vector<std::string>& schemas) {
    for (const std::string& sSchema : schemas) {
        const SchemaNames* pNames = SchemaNames::pOf(sSchema);
        if (!pNames) continue;
        if (const schema::ObjectBase* pObject = pNames->schema().pObjectFromName(upper)) return pObject->sName;
        if (const TypedOccurrence* pTyped = pNames->pTyped(upper)) return pTyped->sName;
    }
    return std::string(upper);
}

std::string propertyText(const Facet& facet) {
    const Condition& set = *facet.propertySet;
    const Condition& name = *facet.name;
    if (set.simple && name.simple) return *set.simple + "." + *name.simple;
    return name.text() + " of set " + set.text();
}

namespace {

// What is said of a value: "is F 90" in an applicability; in requirements what it shall be.
class Sayer {
public:
    Sayer(const Facet& facet, bool boRequirement, const std::vector<std::string>& schemas)
        : m_facet(facet),
          m_boRequirement(boRequirement),
          m_schemas(schemas) {}

    [[nodiscard]] std::string text() const {
        switch (m_facet.kind) {
        case FacetKind::Entity: return m_boRequirement ? "The class shall be " + entity() : entity();
        case FacetKind::PartOf: return partOf();
        case FacetKind::Classification: return classification();
        case FacetKind::Attribute:
            return m_boRequirement ? valued("Attribute " + m_facet.name->text())
                                   : "attribute " + held(m_facet.name->text());
        case FacetKind::Property: return property();
        case FacetKind::Material: return material();
        }
        return {};
    }

private:
    [[nodiscard]] std::string entity() const {
        std::string sText = conditionText(*m_facet.entity, [&](const std::string& s) { return spelled(s, m_schemas); });
        if (m_facet.predefinedType) sText += " of predefined type " + m_facet.predefinedType->text();
        return sText;
    }

    [[nodiscard]] std::string partOf() const {
        std::string sText = "part of " + entity();
        if (!m_facet.relation.empty()) {
            // Two relationships stand in one name, with a blank between.
            const std::size_t iBlank = m_facet.relation.find(' ');
            sText += " by " + spelled(m_facet.relation.substr(0, iBlank), m_schemas);
            if (iBlank != std::string::npos) sText += " and " + spelled(m_facet.relation.substr(iBlank + 1), m_schemas);
        }
        if (!m_boRequirement) return sText;
        return (boProhibited() ? "It shall not be " : "It shall be ") + sText;
    }

    [[nodiscard]] std::string classification() const {
        const std::string sIn = " in " + m_facet.system->text();
        if (!m_boRequirement)
            return "classified" + sIn + (m_facet.value ? " as " + m_facet.value->text() : std::string());
        if (m_facet.value) return valued("The classification" + sIn, true);
        return boProhibited() ? "There shall be no classification" + sIn : "There shall be a classification" + sIn;
    }

    [[nodiscard]] std::string material() const {
        if (!m_boRequirement) return m_facet.value ? "a material is " + m_facet.value->text() : "a material is there";
        if (!m_facet.value) return boProhibited() ? "There shall be no material" : "There shall be a material";
        if (boProhibited()) return "No material shall be " + m_facet.value->text();
        return valued("A material", true);
    }

    [[nodiscard]] std::string property() const {
        std::string sText = propertyText(m_facet);
        if (!m_facet.dataType.empty()) sText += " of type " + spelled(m_facet.dataType, m_schemas);
        if (!m_boRequirement) return "property " + held(sText);
        if (boProhibited() && !m_facet.value) return "Property " + sText + " shall not be there";
        return valued("Property " + sText);
    }

    [[nodiscard]] std::string held(const std::string& sWhat) const {
        return m_facet.value ? sWhat + " is " + m_facet.value->text() : sWhat + " has a value";
    }
    // "X shall be Y"; of a relation that may be missing, "is there" instead of "has a value".
    [[nodiscard]] std::string valued(std::string sWhat, bool boRelated = false) const {
        if (m_facet.cardinality == Cardinality::Optional)
            sWhat += boRelated ? ", where there is one," : ", where it is there,";
        if (boProhibited())
            return sWhat + (m_facet.value ? " shall not be " + m_facet.value->text() : " shall have no value");
        return sWhat + (m_facet.value ? " shall be " + m_facet.value->text() : " shall have a value");
    }
    [[nodiscard]] bool boProhibited() const noexcept { return m_facet.cardinality == Cardinality::Prohibited; }

    const Facet& m_facet;
    bool m_boRequirement;
    const std::vector<std::string>& m_schemas;
};

}   // namespace

std::string facetText(const Facet& facet, bool boRequirement, const std::vector<std::string>& schemas) {
    return Sayer(facet, boRequirement, schemas).text();
}

}   // namespace oxa::ids::detail
