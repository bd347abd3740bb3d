// SPDX-License-Identifier: Apache-2.0
#include "provider/SchemaLoader.h"

#include "provider/BuiltInSchemas.h"
#include "provider/ExpressParser.h"
#include "provider/GraphBuilder.h"
#include "provider/XmlMapping.h"

namespace oxa::ifc {

def::SchemaPset* SchemaLoader::pSchemaGet(std::function<def::SchemaPset*(const std::string&)> schemaFromName,
                                          const std::string& sName) {
    return schemaFromName ? schemaFromName(sName) : pBuiltIn(sName);
}

def::SchemaPset* SchemaLoader::pBuiltIn(std::string_view name) { return def::express::pBuiltInSchema(name); }

std::vector<std::string_view> SchemaLoader::builtInNames() { return def::express::builtInSchemaNames(); }

std::unique_ptr<def::SchemaPset> SchemaLoader::pSchemaFromExpress(std::string_view text,
                                                                  std::vector<SchemaMessage>& messages) {
    def::express::SchemaDeclaration declaration;
    if (!def::express::ExpressParser(text, messages).boReadSchema(declaration)) return nullptr;
    std::unique_ptr<def::SchemaPset> pSchema = def::express::GraphBuilder(declaration, messages).pBuild();
    // Only the name in common with the published schema, and it stays without; pXmlDefaults tells.
    if (pSchema) static_cast<void>(def::express::boXmlMappingAttach(*pSchema));
    if (pSchema) pSchema->sExpress = text;
    return pSchema;
}

}   // namespace oxa::ifc
