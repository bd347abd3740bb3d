// SPDX-License-Identifier: Apache-2.0
/// @file
/// SchemaLoader: from a schema's name, or from EXPRESS text, to a schema graph.
///
/// For      the library, and callers that bring a schema of their own.
/// Threads  any number at once.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "provider/SchemaMessage.h"
#include "schema/Schema.h"

namespace oxa::ifc {

/// The ways to a schema; no object of it is made.
class OXA_SCHEMA_API SchemaLoader {
public:
    SchemaLoader() = delete;

    /// What "schemaFromName" answers to the name, which is that of FILE_SCHEMA; an empty function is served
    /// from the built-in schemas. Null when the name is unknown. The function stays the owner.
    static def::SchemaPset* pSchemaGet(std::function<def::SchemaPset*(const std::string&)> schemaFromName,
                                       const std::string& sName);

    /// A built-in schema by its own name or another usual spelling, as IFC2X3_TC1, in any case. Null when
    /// there is none. Decoded on first use, and kept for the life of the process.
    static def::SchemaPset* pBuiltIn(std::string_view name);

    /// The names of the built-in schemas.
    static std::vector<std::string_view> builtInNames();

    /// Reads EXPRESS long form (ISO 10303-11), with or without a UTF-8 byte order mark. Null, and at least
    /// one message more, when the text is at fault. The schema keeps a copy of the text, and nothing points into the caller's. A schema that is IFC4 by
    /// its name and has the attributes of the published ifcXML configuration gets that; others have no pXmlDefaults.
    static std::unique_ptr<def::SchemaPset> pSchemaFromExpress(std::string_view text,
                                                               std::vector<SchemaMessage>& messages);
};

}   // namespace oxa::ifc
