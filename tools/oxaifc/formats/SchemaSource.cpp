// SPDX-License-Identifier: Apache-2.0
// Schemas for a read: those of the files that the user names. A single one serves every name; behind several come the
// built-in ones.
#include "oxaifc/formats/SchemaSource.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include <fmt/format.h>

#include "oxaifc/formats/FileOpen.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"
#include "provider/SchemaLoader.h"

namespace oxa::tool {

using ifc::def::SchemaPset;

std::unique_ptr<SchemaPset> pSchemaFromFile(const std::string& sPath) {
    const std::unique_ptr<Input> pInput = pFileOpen(sPath);
    const std::string sText{std::istreambuf_iterator<char>(pInput->stream()), std::istreambuf_iterator<char>()};
    pInput->iFinish();
    std::vector<ifc::SchemaMessage> messages;
    std::unique_ptr<SchemaPset> pSchema = ifc::SchemaLoader::pSchemaFromExpress(sText, messages);
    if (pSchema) return pSchema;
    if (messages.empty()) throw Failure(fmt::format("{}: is no EXPRESS schema", pInput->sName()));
    const ifc::SchemaMessage& first = messages.front();
    const std::string sMore = messages.size() > 1 ? fmt::format(" (and {} more)", messages.size() - 1) : std::string();
    throw Failure(
        fmt::format("{}:{}:{}: {}{}", pInput->sName(), first.iLine, first.iColumn, sPrintable(first.sText), sMore));
}

const SchemaPset& schemaBuiltIn(const std::string& sName) {
    if (const SchemaPset* pSchema = ifc::SchemaLoader::pBuiltIn(sName)) return *pSchema;
    const std::vector<std::string_view> names = ifc::SchemaLoader::builtInNames();
    throw Failure(
        fmt::format("there is no built-in schema {}; {}", sPrintable(sName), sNearText(sName, names, "there are: ")));
}

SchemaSource::SchemaSource(const std::vector<std::string>& paths) {
    for (const std::string& sPath : paths) m_schemas.push_back(pSchemaFromFile(sPath));
}

ifc::SchemaFromName SchemaSource::function() const {
    if (m_schemas.empty()) return {};
    return [this](const std::string& sName) -> SchemaPset* {
        const std::string sWanted = sUpper(sName);
        const auto itSchema = std::find_if(m_schemas.begin(), m_schemas.end(),
                                           [&](const auto& pSchema) { return sUpper(pSchema->sName) == sWanted; });
        if (itSchema != m_schemas.end()) return itSchema->get();
        return m_schemas.size() == 1 ? m_schemas.front().get() : ifc::SchemaLoader::pBuiltIn(sName);
    };
}

}   // namespace oxa::tool
