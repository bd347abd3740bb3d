// SPDX-License-Identifier: Apache-2.0
/// @file
/// SchemaMove: brings a model to another schema.
///
/// - Entities become the type of the same name, else the nearest supertype that the other schema has and that is not
///   abstract; where there is none, they are taken out of the model. GlobalIds and numbers stay.
/// - Attributes are moved by name. Values must be of the same kind there and fit: enumerators, members of selects,
///   types of references. A reference that was one of a select, or becomes one, is moved as well, and an aggregate of
///   another kind.
/// - Everything else is told. No value is ever made up, so mandatory attributes can be left without one.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "platform/Export.h"

/// Changes of a model as a whole, and from the words of a user to what they mean in one.
namespace oxa::convert {

/// What a move to another schema did beyond what both schemas have. Each list by name.
struct SchemaMove {
    /// How often one thing happened to entities of one type.
    struct Row {
        /// The keyword of a type: of the old schema, in "missing" of the new one.
        std::string sType;
        /// The attribute; in "became" the keyword of the new type, in "removed" empty.
        std::string sAttribute;
        /// Entities, values or items, as the list says.
        std::size_t iCount;
    };
    /// Entities without a type in the new schema, which are no longer in the model.
    std::vector<Row> removed;
    /// Entities of another type now.
    std::vector<Row> became;
    /// Values that have no place in the new schema, or items of lists.
    std::vector<Row> lost;
    /// Mandatory attributes without a value that had none to be moved.
    std::vector<Row> missing;

    /// Whether every entity kept its type and every value its place; "missing" does not count.
    [[nodiscard]] bool boLossless() const noexcept { return removed.empty() && became.empty() && lost.empty(); }
};

/// Moves the model of a file, and what its header says of the schema, in place.
///
/// @param file    its entities stay where they are in memory, those that are removed too; cells get new places.
/// @param target  must outlive the model. The schema that the model has already: nothing is done.
/// @returns what had no place. Nothing, and nothing done, for a model without a schema.
/// Threads  one, the model's own.
/// Memory   values are copied into the pool of the model, which grows by about what the values take.
[[nodiscard]] OXA_CONVERT_API SchemaMove moveToSchema(ifc::FileBase& file, const ifc::def::SchemaPset& target);

}   // namespace oxa::convert
