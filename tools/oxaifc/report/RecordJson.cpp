// SPDX-License-Identifier: Apache-2.0
// What a record is about is in its statement, and where that was read, in the entity.
#include "oxaifc/report/RecordJson.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/report/Records.h"

namespace oxa::tool {

namespace {

namespace schema = ifc::def::schema;

struct About {
    std::optional<std::uint64_t> iNumber;
    std::string sType;   // as the schema spells it; as the file does where it knows none
    const schema::Entity* pType = nullptr;
};

// "#12=IFCWALL(...": what stands in front of the parameters.
About aboutStatement(std::string_view text, const Model& model) {
    About about;
    std::int64_t iNumber = 0;
    const char* const pEnd = text.data() + text.size();
    if (!text.starts_with('#')) return about;
    const auto [pBehind, error] = std::from_chars(text.data() + 1, pEnd, iNumber);
    if (error != std::errc()) return about;
    // A negative one is the large one with its 32 bits, as in the library.
    about.iNumber = iNumber < 0 ? static_cast<std::uint32_t>(iNumber) : static_cast<std::uint64_t>(iNumber);
    if (pBehind == pEnd || *pBehind != '=') return about;
    const std::string_view rest(pBehind + 1, static_cast<std::size_t>(pEnd - pBehind - 1));
    about.sType = rest.substr(0, rest.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"));
    if (const ifc::def::SchemaPset* pSchema = model.data().pSchema())
        about.pType = schema::pAsEntity(pSchema->pObjectFromName(std::string_view(about.sType)));
    return about;
}

About aboutOf(const ifc::ErrorRecord& record, const Model& model) {
    About about = aboutStatement(sourceText(record), model);
    if (!about.pType && record.entity) about.pType = record.entity->pSchemaEntity();
    if (!about.iNumber && record.entity) about.iNumber = model.data().entityIdMap(false).find(record.entity);
    if (about.pType) about.sType = about.pType->sName;
    if (record.reportKey == ifc::ReportKey::MissingEntityWithId) {   // about the one that is not there
        const std::string_view number = record.argument();
        std::uint64_t iNumber = 0;
        if (std::from_chars(number.data(), number.data() + number.size(), iNumber).ec == std::errc())
            about.iNumber = iNumber;
    }
    return about;
}

// Most arguments are names of attributes.
bool boAttribute(const schema::Entity* pType, std::string_view name) {
    if (!pType || name.empty()) return false;
    const auto& attributes = pType->allAttributes();
    return std::any_of(attributes.begin(), attributes.end(),
                       [name](const schema::Attribute* pAttribute) { return pAttribute->sName == name; });
}

}   // namespace

Json recordJson(const ifc::ErrorRecord& record, const Model& model, std::size_t iMostText) {
    const About about = aboutOf(record, model);
    const std::string_view text = sourceText(record);
    const auto known = [](bool boKnown, auto value) { return boKnown ? Json(value) : Json(); };
    return {{"key", record.key.value_or({})},
            {"severity", severityWord(record)},
            {"category", categoryWord(record)},
            {"message", record.description},
            {"line", record.lineNumber},
            {"entity", known(about.iNumber.has_value(), about.iNumber.value_or(0))},
            {"type", known(!about.sType.empty(), about.sType)},
            {"attribute", known(boAttribute(about.pType, record.argument()), record.argument())},
            {"text", text.size() <= iMostText ? std::string(text) : sShortened(text, iMostText)}};
}

}   // namespace oxa::tool
