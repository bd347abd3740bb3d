// SPDX-License-Identifier: Apache-2.0
// SchemaSource: where the schemas of a call come from: the built-in ones, and EXPRESS files named by the user.
//
// For      Model and the verb "schema".
// Owner    owns the schemas read from files; it must outlive every model read with it.
// Errors   Failure, for a file that can't be read, a fault in its text and an unknown name.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "schema/Schema.h"

namespace oxa::tool {

// The schema of an EXPRESS file, "-" for standard input.
[[nodiscard]] std::unique_ptr<ifc::def::SchemaPset> pSchemaFromFile(const std::string& sPath);

// A built-in schema by name, in any usual spelling. The Failure for another name tells those that come near.
[[nodiscard]] const ifc::def::SchemaPset& schemaBuiltIn(const std::string& sName);

class SchemaSource {
public:
    explicit SchemaSource(const std::vector<std::string>& paths);

    // What a read asks: a file's schema by its name in any case, else the only file's, else a built-in one. It
    // must not outlive this object.
    [[nodiscard]] ifc::SchemaFromName function() const;

private:
    std::vector<std::unique_ptr<ifc::def::SchemaPset>> m_schemas;
};

}   // namespace oxa::tool
