// SPDX-License-Identifier: Apache-2.0
// XmlMapping: how ifcXML writes the attributes of a schema.
//
// For      BuiltInSchemas and SchemaLoader, which hang the records on a graph that nobody else has seen yet.
// Owner    the records are constants of the program.
// Threads  one at a time for one graph.
#pragma once

#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::ifc::def::express {

// Sets pXmlDefaults, and pXml and pXmlInverse where an attribute is not written as the defaults say. Leaves a schema
// without a published ifcXML configuration as it is. False, and nothing set, when a schema of the name of one that
// has a configuration lacks an attribute of the table.
[[nodiscard]] OXA_SCHEMA_API bool boXmlMappingAttach(SchemaPset& schema);

}   // namespace oxa::ifc::def::express
