// SPDX-License-Identifier: Apache-2.0
// FactTable: the facts of a schema as lines of text, the format of schemas/ (see the README there).
//
// For      BuiltInSchemas, which reads tables, and the program oxa-schema-compiler, which writes them.
// Threads  free functions without state.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "provider/ExpressDeclarations.h"
#include "provider/SchemaMessage.h"

namespace oxa::ifc::def::express {

// The schema that "table" gives the differences to; empty for a table that stands alone.
[[nodiscard]] OXA_SCHEMA_API std::string_view sFactTableBase(std::string_view table);

// Reads a table, in one piece or in several of whole lines, into "schema", which holds the declarations of the base when
// there is one, and else nothing. Types and entities come out in the order of their names. False with one message more at
// the first fault. The declarations are views into "table".
[[nodiscard]] OXA_SCHEMA_API bool boReadFactTable(std::string_view table, SchemaDeclaration& schema,
                                                  std::vector<SchemaMessage>& messages);
[[nodiscard]] OXA_SCHEMA_API bool boReadFactTable(std::span<const std::string_view> pieces, SchemaDeclaration& schema,
                                                  std::vector<SchemaMessage>& messages);

// The table of a schema under the name "sName"; with a base, the differences to it.
[[nodiscard]] OXA_SCHEMA_API std::string sFactTable(const schema::Schema& schema, const std::string& sName,
                                                    const schema::Schema* pBase = nullptr);

}   // namespace oxa::ifc::def::express
