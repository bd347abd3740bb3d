// SPDX-License-Identifier: Apache-2.0
// The header entities by a table of their fields. A value is kept flat, with its depth: what nests deeper than a list of
// strings is a fault of type anyway.
#include "Check/Header/HeaderLevel.h"

#include <algorithm>
#include <iterator>

#include "Check/Header/HeaderForms.h"
#include "provider/SchemaLoader.h"

namespace oxa::check {

namespace {

constexpr std::size_t g_iMaxValues = 100'000;

enum class FieldType : std::uint8_t { Text, TextOrUnset, ListOfTexts, ListOrUnset };

}   // namespace

struct HeaderField {
    std::string_view name;
    FieldType type;
    std::size_t iWidth;   // characters at the most
};

struct HeaderEntity {
    std::string_view keyword;
    std::string_view rule;
    std::size_t iRequired;   // its place among those that every header has, from 1; 0 for the others
    std::span<const HeaderField> fields;
};

namespace {

// clang-format off
constexpr HeaderField g_description[] = {
    {"description", FieldType::ListOfTexts, 256},
    {"implementation_level", FieldType::Text, 256},
};
constexpr HeaderField g_name[] = {
    {"name", FieldType::Text, 256},
    {"time_stamp", FieldType::Text, 256},
    {"author", FieldType::ListOfTexts, 256},
    {"organization", FieldType::ListOfTexts, 256},
    {"preprocessor_version", FieldType::Text, 256},
    {"originating_system", FieldType::Text, 256},
    {"authorization", FieldType::Text, 256},
};
constexpr HeaderField g_schema[] = {
    {"schema_identifiers", FieldType::ListOfTexts, 1024},
};
constexpr HeaderField g_population[] = {
    {"governing_schema", FieldType::Text, 1024},
    {"determination_method", FieldType::Text, 256},
    {"governed_sections", FieldType::ListOrUnset, 256},
};
constexpr HeaderField g_language[] = {
    {"section", FieldType::TextOrUnset, 256},
    {"default_language", FieldType::Text, 256},
};
constexpr HeaderField g_context[] = {
    {"section", FieldType::TextOrUnset, 256},
    {"context_identifiers", FieldType::ListOfTexts, 256},
};
constexpr HeaderEntity g_entities[] = {
    {"FILE_DESCRIPTION", "ISO 10303-21 file_description", 1, g_description},
    {"FILE_NAME", "ISO 10303-21 file_name", 2, g_name},
    {"FILE_SCHEMA", "ISO 10303-21 file_schema", 3, g_schema},
    {"FILE_POPULATION", "ISO 10303-21 file_population", 0, g_population},
    {"SECTION_LANGUAGE", "ISO 10303-21 section_language", 0, g_language},
    {"SECTION_CONTEXT", "ISO 10303-21 section_context", 0, g_context},
};
// clang-format on

const HeaderEntity* pEntityOf(std::string_view keyword) noexcept {
    const auto* pFound = std::find_if(std::begin(g_entities), std::end(g_entities),
                                      [&](const HeaderEntity& entity) { return entity.keyword == keyword; });
    return pFound == std::end(g_entities) ? nullptr : pFound;
}

std::string_view typeText(FieldType type) noexcept {
    switch (type) {
    case FieldType::Text: return "a string";
    case FieldType::TextOrUnset: return "a string or $";
    case FieldType::ListOfTexts: return "a list of strings";
    case FieldType::ListOrUnset: return "a list of strings or $";
    }
    return {};
}

// The releases that stand as standards; others are drafts, or were replaced.
constexpr std::string_view g_official[] = {"IFC2X3", "IFC4", "IFC4X3_ADD2"};

}   // namespace

HeaderLevel::HeaderLevel(const CheckOptions& options, Collector& collector)
    : m_options(options),
      m_collector(collector),
      m_boTell(options.levels[static_cast<std::size_t>(CheckLevel::Header)]) {}

HeaderLevel::~HeaderLevel() = default;

void HeaderLevel::vTell(const Message& message, Place place, const HeaderField* pField) {
    if (!m_boTell) return;
    const HeaderEntity* pEntity = pEntityOf(m_sKeyword);
    m_collector.vAdd({.level = CheckLevel::Header,
                      .weight = message.weight,
                      .key = message.key,
                      .rule = message.weight == CheckWeight::Note ? "IFC header rules"
                              : pEntity                           ? pEntity->rule
                                                                  : "ISO 10303-21 HEADER_SECTION",
                      .type = m_sKeyword,
                      .attribute = pField ? pField->name : std::string_view(),
                      .message = message.message,
                      .expected = message.expected,
                      .line = place.iLine,
                      .column = place.iColumn,
                      .found = message.found.substr(0, g_iMostFound)});
}

// ---- Reading

void HeaderLevel::vStatement(const StatementHead& head) {
    m_place = head.place;
    m_values.clear();
    m_iDepth = 0;
    m_iParameters = 0;
}

void HeaderLevel::vRecord(const Token& keyword) { m_sKeyword = keyword.text; }

void HeaderLevel::vAdd(TokenKind kind, const Token& token) {
    if (m_iDepth == 0) ++m_iParameters;
    if (m_values.size() >= g_iMaxValues) return;
    Value& value = m_values.emplace_back();
    value.kind = kind;
    value.iDepth = m_iDepth;
    value.place = token.place;
    value.iLength = token.iLength;
    value.sText = token.text;
    if (kind == TokenKind::String && value.sText.size() > 1)
        value.sText = value.sText.substr(1, value.sText.size() - (token.boCut ? 1 : 2));
}

void HeaderLevel::vValue(const Token& value) { vAdd(value.kind, value); }
void HeaderLevel::vOpenList(const Token& open) {
    vAdd(TokenKind::Open, open);
    ++m_iDepth;
}
void HeaderLevel::vOpenTyped(const Token& keyword) {
    vAdd(TokenKind::Keyword, keyword);
    ++m_iDepth;
}
void HeaderLevel::vClose(const Token&) { --m_iDepth; }
void HeaderLevel::vRecordEnd(const Token&) {}
void HeaderLevel::vSection() {}

// What is left of a faulty statement says nothing, but which entity it is.
void HeaderLevel::vStatementEnd(bool boFine) {
    ++m_iEntities;
    const HeaderEntity* pEntity = pEntityOf(m_sKeyword);
    if (pEntity && pEntity->iRequired) {
        if (++m_counts[pEntity->iRequired - 1] > 1)
            vTell({"Header_Double", "the header entity is there already", "once"}, m_place);
        else if (m_iEntities != pEntity->iRequired)
            vTell({"Header_Order", "the header entity stands out of order",
                   "FILE_DESCRIPTION, FILE_NAME, FILE_SCHEMA, then the others"},
                  m_place);
    }
    if (boFine) vEntity();
}

void HeaderLevel::vHeaderEnd() {
    m_sKeyword.clear();
    for (const HeaderEntity& entity : g_entities)
        if (entity.iRequired && m_counts[entity.iRequired - 1] == 0)
            vTell({"Header_Missing", "a header entity is missing", entity.keyword}, {0, 0});
}

// ---- Fields

HeaderLevel::Values HeaderLevel::parameter(std::size_t iIndex) const {
    const auto boTop = [](const Value& value) { return value.iDepth == 0; };
    auto it = m_values.begin();
    for (it = std::find_if(it, m_values.end(), boTop); iIndex > 0 && it != m_values.end(); --iIndex)
        it = std::find_if(it + 1, m_values.end(), boTop);
    if (it == m_values.end()) return {};
    return {it, std::find_if(it + 1, m_values.end(), boTop)};
}

void HeaderLevel::vEntity() {
    const HeaderEntity* pEntity = pEntityOf(m_sKeyword);
    if (!pEntity) {
        if (!m_sKeyword.starts_with('!') && m_sKeyword != "SCHEMA_POPULATION")
            vTell({"Header_Entity", "no header entity of the standard", "! in front of a user-defined one"}, m_place);
        return;
    }
    vFields(*pEntity);
    if (pEntity->fields.data() == g_description) vDescription(parameter(1));
    if (pEntity->fields.data() == g_description) vDescriptionNotes(parameter(0));
    if (pEntity->fields.data() == g_name) vName(parameter(1));
    if (pEntity->fields.data() == g_schema) vSchema(parameter(0));
}

void HeaderLevel::vFields(const HeaderEntity& entity) {
    const std::size_t iWanted = entity.fields.size();
    if (m_iParameters != iWanted)
        vTell({"Header_FieldCount", "the header entity has another number of fields",
               std::to_string(iWanted) + (iWanted == 1 ? " field" : " fields"), std::to_string(m_iParameters)},
              m_place);
    // Of too few none can be told for which it is.
    if (m_iParameters < iWanted) return;
    for (std::size_t i = 0; i < iWanted; ++i) vField(entity.fields[i], parameter(i));
}

void HeaderLevel::vField(const HeaderField& field, Values values) {
    if (values.empty()) return;
    const Value& first = values.front();
    const bool boList = field.type == FieldType::ListOfTexts || field.type == FieldType::ListOrUnset;
    const bool boMayBeUnset = field.type == FieldType::TextOrUnset || field.type == FieldType::ListOrUnset;
    const auto vWrongType = [&](const Value& value) {
        vTell({"Header_FieldType", "the field is of another type", typeText(field.type), value.sText}, value.place,
              &field);
    };
    if (boMayBeUnset && first.kind == TokenKind::Omitted) return;
    if (!boList) return first.kind == TokenKind::String ? vText(field, first) : vWrongType(first);
    if (first.kind != TokenKind::Open) return vWrongType(first);
    if (values.size() == 1)
        vTell({"Header_ListBound", "the list is empty", "one string at least"}, first.place, &field);
    for (const Value& item : values.subspan(1)) {
        if (item.iDepth == 1 && item.kind == TokenKind::String)
            vText(field, item);
        else if (item.iDepth == 1)
            vWrongType(item);
    }
}

void HeaderLevel::vText(const HeaderField& field, const Value& value) {
    if (value.iLength <= field.iWidth) return;
    vTell({"Header_StringLength", "the string is too long", std::to_string(field.iWidth) + " characters at most",
           std::to_string(value.iLength)},
          value.place, &field);
}

// ---- Forms

void HeaderLevel::vDescription(Values values) {
    if (values.empty() || values.front().kind != TokenKind::String) return;
    const Value& level = values.front();
    const HeaderField& field = g_description[1];
    if (!boImplementationLevel(level.sText))
        return vTell({"Header_ImplementationLevel", "not the form of an implementation level",
                      "a version and a conformance class, as 2;1", level.sText},
                     level.place, &field);
    m_boEdition3 = level.sText[0] == '4';
    if (level.sText != "2;1")
        vTell({"Header_LevelOfIfc", "files of IFC have another implementation level", "2;1", level.sText,
               CheckWeight::Note},
              level.place, &field);
}

void HeaderLevel::vDescriptionNotes(Values values) {
    if (values.empty() || values.front().kind != TokenKind::Open) return;
    const HeaderField& field = g_description[0];
    bool boView = false;
    for (const Value& item : values.subspan(1)) {
        boView = boView || (boDescriptionItem(item.sText) && item.sText.starts_with("ViewDefinition"));
        if (item.kind == TokenKind::String && !item.sText.empty() && !boDescriptionItem(item.sText))
            vTell({"Header_DescriptionForm", "no item of a description",
                   "ViewDefinition [...], ExchangeRequirement [...], CoordinateReference [...], Option [...] or "
                   "Comment [...]",
                   item.sText, CheckWeight::Note},
                  item.place, &field);
    }
    if (!boView)
        vTell({"Header_ViewDefinition",
               "the description names no model view",
               "ViewDefinition [...]",
               {},
               CheckWeight::Note},
              values.front().place, &field);
}

void HeaderLevel::vName(Values values) {
    if (m_iParameters < std::size(g_name)) return;
    if (!values.empty() && values.front().kind == TokenKind::String && !boTimeStamp(values.front().sText))
        vTell({"Header_TimeStamp", "not the form of a time stamp",
               "a date and a time of ISO 8601, as 2024-08-30T12:34:53", values.front().sText},
              values.front().place, &g_name[1]);
    const Values system = parameter(5);
    if (!system.empty() && system.front().kind == TokenKind::String && !boOriginatingSystem(system.front().sText))
        vTell({"Header_OriginatingSystem", "not the form of an originating system", "Company - Application - Version",
               system.front().sText, CheckWeight::Note},
              system.front().place, &g_name[5]);
}

void HeaderLevel::vSchema(Values values) {
    if (values.empty() || values.front().kind != TokenKind::Open) return;
    std::size_t iNames = 0;
    for (const Value& item : values.subspan(1))
        if (item.iDepth == 1 && item.kind == TokenKind::String) vSchemaName(item, iNames++ == 0);
    if (iNames > 1)
        vTell({"Header_SchemaCount", "a file of IFC names one schema", "1 schema", std::to_string(iNames)},
              values.front().place, g_schema);
}

// The first one is that of the file.
void HeaderLevel::vSchemaName(const Value& value, bool boFirst) {
    const std::string sName(schemaNameOf(value.sText));
    if (sName.find_first_of("abcdefghijklmnopqrstuvwxyz") != std::string::npos)
        vTell({"Header_SchemaForm", "not the form of a schema's name", "letters in upper case", value.sText},
              value.place, g_schema);
    const auto* pSchema = ifc::SchemaLoader::pSchemaGet(m_options.schema, sName);
    if (boFirst && m_sSchemaName.empty()) {
        m_sSchemaName = sName;
        m_pSchema = pSchema;
    }
    if (!pSchema)
        return vTell(
            {"Header_SchemaUnknown", "the schema is not known", "a schema as IFC2X3, IFC4 or IFC4X3_ADD2", value.sText},
            value.place, g_schema);
    if (!m_options.schema && std::find(std::begin(g_official), std::end(g_official), sName) == std::end(g_official))
        vTell({"Header_SchemaStatus", "a schema that is no standard, or was replaced", "IFC2X3, IFC4 or IFC4X3_ADD2",
               value.sText, CheckWeight::Note},
              value.place, g_schema);
}

}   // namespace oxa::check
