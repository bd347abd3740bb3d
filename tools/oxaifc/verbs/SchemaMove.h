// SPDX-License-Identifier: Apache-2.0
// SchemaMove: brings a model to another schema.
//
// Entities    become the type of the same name, else the nearest supertype that the other schema has and that is not
//             abstract; where there is none, they are taken out of the model. GlobalIds and numbers stay.
// Attributes  are moved by name. Values must be of the same kind there and fit: enumerators, members of selects, types
//             of references. A reference that was one of a select, or becomes one, is moved as well, and an aggregate
//             of another kind.
// Losses      everything else is told. No value is ever made up, so mandatory attributes can be left without one.
// Threads     one, the model's own.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFile.h"

namespace oxa::tool {

struct SchemaMove {
    // Names are those of the old schema, "missing" has those of the new one. Each list by name.
    struct Row {
        std::string sType;        // keyword
        std::string sAttribute;   // of "became" the keyword of the new type; of "removed" empty
        std::size_t iCount;
    };
    std::vector<Row> removed;   // entities without a type in the new schema
    std::vector<Row> became;    // entities of another type now
    std::vector<Row> lost;      // values, or items of lists
    std::vector<Row> missing;   // mandatory attributes without a value that had none to be moved

    [[nodiscard]] bool boLossless() const noexcept { return removed.empty() && became.empty() && lost.empty(); }
};

// The model of "file" and what its header says of the schema. "target" must outlive the model.
[[nodiscard]] SchemaMove schemaMove(ifc::FileBase& file, const ifc::def::SchemaPset& target);

}   // namespace oxa::tool
