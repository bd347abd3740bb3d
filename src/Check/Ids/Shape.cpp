// SPDX-License-Identifier: Apache-2.0
#include "Check/Ids/Shape.h"

#include <algorithm>

#include "Check/Ids/Forms.h"

namespace oxa::ids::detail {

namespace {

using Content = ElementRule::Content;

// clang-format off
constexpr ElementRule g_text{Content::Text, {}, {}};
constexpr ElementRule g_email{Content::Text, {}, {}, Form::Email};
constexpr ElementRule g_date{Content::Text, {}, {}, Form::Date};
constexpr ElementRule g_annotation{Content::Anything, {}, {}};

constexpr ChildRule g_annotated[] = {{"annotation", &g_annotation, 0, 1, Space::Schema}};
constexpr AttributeRule g_anyValue[] = {{"value", Form::Any, true}, {"id"}};
constexpr AttributeRule g_boundValue[] = {{"value", Form::Any, true}, {"fixed"}, {"id"}};
constexpr AttributeRule g_lengthValue[] = {{"value", Form::Count, true}, {"fixed"}, {"id"}};
constexpr ElementRule g_anyFacet{Content::Mixed, g_annotated, g_anyValue};
constexpr ElementRule g_boundFacet{Content::Mixed, g_annotated, g_boundValue};
constexpr ElementRule g_lengthFacet{Content::Mixed, g_annotated, g_lengthValue};
constexpr ChildRule g_restrictionChildren[] = {
    {"annotation",     &g_annotation,  0, 1, Space::Schema},
    {"enumeration",    &g_anyFacet,    0, 0, Space::Schema},
    {"pattern",        &g_anyFacet,    0, 0, Space::Schema},
    {"minInclusive",   &g_boundFacet,  0, 1, Space::Schema},
    {"minExclusive",   &g_boundFacet,  0, 1, Space::Schema},
    {"maxInclusive",   &g_boundFacet,  0, 1, Space::Schema},
    {"maxExclusive",   &g_boundFacet,  0, 1, Space::Schema},
    {"length",         &g_lengthFacet, 0, 1, Space::Schema},
    {"minLength",      &g_lengthFacet, 0, 1, Space::Schema},
    {"maxLength",      &g_lengthFacet, 0, 1, Space::Schema},
    {"totalDigits",    &g_lengthFacet, 0, 1, Space::Schema},   // known, and not for requirements: the reader says so
    {"fractionDigits", &g_lengthFacet, 0, 1, Space::Schema},
    {"whiteSpace",     &g_boundFacet,  0, 1, Space::Schema},
};
constexpr AttributeRule g_restrictionAttributes[] = {{"base", Form::BaseType, true}, {"id"}};
constexpr ElementRule g_restriction{Content::Mixed, g_restrictionChildren, g_restrictionAttributes};

constexpr ChildRule g_valueChildren[] = {
    {"simpleValue", &g_text,        0, 1},
    {"restriction", &g_restriction, 0, 1, Space::Schema},
};
constexpr ElementRule g_value{Content::Choice, g_valueChildren, {}};

constexpr ChildRule g_entityChildren[] = {{"name", &g_value, 1}, {"predefinedType", &g_value}};
constexpr ElementRule g_entity{Content::Sequence, g_entityChildren, {}};
constexpr ChildRule g_partOfChildren[] = {{"entity", &g_entity, 1}};
constexpr ChildRule g_classificationChildren[] = {{"value", &g_value}, {"system", &g_value, 1}};
constexpr ChildRule g_attributeChildren[] = {{"name", &g_value, 1}, {"value", &g_value}};
constexpr ChildRule g_propertyChildren[] = {{"propertySet", &g_value, 1}, {"baseName", &g_value, 1}, {"value", &g_value}};
constexpr ChildRule g_materialChildren[] = {{"value", &g_value}};

// Facets that select.
constexpr AttributeRule g_partOfAttributes[] = {{"relation", Form::Relation}};
constexpr AttributeRule g_propertyAttributes[] = {{"dataType", Form::UpperName}};
constexpr ElementRule g_partOf{Content::Sequence, g_partOfChildren, g_partOfAttributes};
constexpr ElementRule g_classification{Content::Sequence, g_classificationChildren, {}};
constexpr ElementRule g_attribute{Content::Sequence, g_attributeChildren, {}};
constexpr ElementRule g_property{Content::Sequence, g_propertyChildren, g_propertyAttributes};
constexpr ElementRule g_material{Content::Sequence, g_materialChildren, {}};
constexpr ChildRule g_applicabilityChildren[] = {
    {"entity",         &g_entity,         0, 1},
    {"partOf",         &g_partOf,         0, 0},
    {"classification", &g_classification, 0, 0},
    {"attribute",      &g_attribute,      0, 0},
    {"property",       &g_property,       0, 0},
    {"material",       &g_material,       0, 0},
};
constexpr AttributeRule g_occurs[] = {{"minOccurs", Form::MinOccurs}, {"maxOccurs", Form::MaxOccurs}};
constexpr ElementRule g_applicability{Content::Sequence, g_applicabilityChildren, g_occurs};

// Facets that require.
constexpr AttributeRule g_instructions[] = {{"instructions"}};
constexpr AttributeRule g_wantedPartOfAttributes[] = {
    {"relation", Form::Relation}, {"cardinality", Form::SimpleCardinality}, {"instructions"}};
constexpr AttributeRule g_wantedAttributes[] = {{"cardinality", Form::Cardinality}, {"instructions"}};
constexpr AttributeRule g_wantedUriAttributes[] = {{"uri"}, {"cardinality", Form::Cardinality}, {"instructions"}};
constexpr AttributeRule g_wantedPropertyAttributes[] = {
    {"dataType", Form::UpperName}, {"uri"}, {"cardinality", Form::Cardinality}, {"instructions"}};
constexpr ElementRule g_wantedEntity{Content::Sequence, g_entityChildren, g_instructions};
constexpr ElementRule g_wantedPartOf{Content::Sequence, g_partOfChildren, g_wantedPartOfAttributes};
constexpr ElementRule g_wantedClassification{Content::Sequence, g_classificationChildren, g_wantedUriAttributes};
constexpr ElementRule g_wantedAttribute{Content::Sequence, g_attributeChildren, g_wantedAttributes};
constexpr ElementRule g_wantedProperty{Content::Sequence, g_propertyChildren, g_wantedPropertyAttributes};
constexpr ElementRule g_wantedMaterial{Content::Sequence, g_materialChildren, g_wantedUriAttributes};
constexpr ChildRule g_requirementsChildren[] = {
    {"entity",         &g_wantedEntity,         0, 0},
    {"partOf",         &g_wantedPartOf,         0, 0},
    {"classification", &g_wantedClassification, 0, 0},
    {"attribute",      &g_wantedAttribute,      0, 0},
    {"property",       &g_wantedProperty,       0, 0},
    {"material",       &g_wantedMaterial,       0, 0},
};
constexpr AttributeRule g_description[] = {{"description"}};
constexpr ElementRule g_requirements{Content::Mixed, g_requirementsChildren, g_description};

constexpr ChildRule g_specificationChildren[] = {{"applicability", &g_applicability, 1}, {"requirements", &g_requirements}};
constexpr AttributeRule g_specificationAttributes[] = {
    {"name", Form::Any, true}, {"ifcVersion", Form::Versions, true}, {"identifier"}, {"description"}, {"instructions"}};
constexpr ElementRule g_specification{Content::Sequence, g_specificationChildren, g_specificationAttributes};
constexpr ChildRule g_specificationsChildren[] = {{"specification", &g_specification, 1, 0}};
constexpr ElementRule g_specifications{Content::Sequence, g_specificationsChildren, {}};
constexpr ChildRule g_infoChildren[] = {
    {"title", &g_text, 1}, {"copyright", &g_text}, {"version", &g_text}, {"description", &g_text},
    {"author", &g_email}, {"date", &g_date}, {"purpose", &g_text}, {"milestone", &g_text}};
constexpr ElementRule g_info{Content::Sequence, g_infoChildren, {}};
constexpr ChildRule g_idsChildren[] = {{"info", &g_info, 1}, {"specifications", &g_specifications, 1}};
constexpr ElementRule g_ids{Content::Sequence, g_idsChildren, {}};
// clang-format on

constexpr std::string_view g_versions[] = {"IFC2X3", "IFC4", "IFC4X3_ADD2"};
constexpr std::string_view g_relations[] = {"IFCRELAGGREGATES", "IFCRELASSIGNSTOGROUP",
                                            "IFCRELCONTAINEDINSPATIALSTRUCTURE", "IFCRELNESTS",
                                            "IFCRELVOIDSELEMENT IFCRELFILLSELEMENT"};
constexpr std::string_view g_cardinalities[] = {"required", "prohibited", "optional"};

bool boOneOf(std::span<const std::string_view> texts, std::string_view text) {
    return std::ranges::find(texts, text) != texts.end();
}
bool boDigits(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}
// "[^@]+@[^\.]+\..+": the pattern of the schema; the first @ decides, and behind it the first point.
bool boEmail(std::string_view text) {
    const std::size_t iAt = text.find('@');
    if (iAt == 0 || iAt == std::string_view::npos) return false;
    const std::size_t iPoint = text.find('.', iAt + 1);
    return iPoint != std::string_view::npos && iPoint > iAt + 1 && iPoint + 1 < text.size();
}
bool boVersions(std::string_view text) {
    for (const std::string_view word : words(text))
        if (!boOneOf(g_versions, word)) return false;
    return !words(text).empty();
}

}   // namespace

const ElementRule& rootRule() noexcept { return g_ids; }

std::string_view formFault(Form eForm, std::string_view text) noexcept {
    const auto unless = [](bool boGood, std::string_view sWanted) { return boGood ? std::string_view() : sWanted; };
    switch (eForm) {
    case Form::Any:
    case Form::BaseType: break;
    case Form::Versions: return unless(boVersions(text), "one or more of IFC2X3, IFC4 and IFC4X3_ADD2");
    case Form::MinOccurs:
    case Form::Count: return unless(boDigits(text), "a number of 0 or more");
    case Form::MaxOccurs: return unless(boDigits(text) || text == "unbounded", "unbounded, or a number of 0 or more");
    case Form::UpperName:
        return unless(!text.empty() && std::ranges::all_of(text, [](char c) { return c >= 'A' && c <= 'Z'; }),
                      "the name of a type in upper case");
    case Form::Relation:
        return unless(boOneOf(g_relations, text),
                      "IFCRELAGGREGATES, IFCRELASSIGNSTOGROUP, IFCRELCONTAINEDINSPATIALSTRUCTURE, IFCRELNESTS or "
                      "\"IFCRELVOIDSELEMENT IFCRELFILLSELEMENT\"");
    case Form::SimpleCardinality:
        return unless(boOneOf(std::span(g_cardinalities).first(2), text), "required or prohibited");
    case Form::Cardinality: return unless(boOneOf(g_cardinalities, text), "required, optional or prohibited");
    case Form::Email: return unless(boEmail(text), "an address of e-mail");
    case Form::Date: return unless(boHasForm(Base::Date, text), formText(Base::Date));
    }
    return {};
}

}   // namespace oxa::ids::detail
