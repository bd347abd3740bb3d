// SPDX-License-Identifier: Apache-2.0
/// @file
/// Extract: a part of a model: an entity and what it reaches.
#pragma once

#include <cstddef>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "platform/Export.h"

namespace oxa::convert {

/// The entity and all that it reaches over references and inverse lists, as a write that starts at it takes them: each
/// once, the entity itself first. Instances that are named and not defined are not among them.
///
/// Cost     one visit an entity, in the order of their distance; nothing recurses.
/// Threads  any number on a model that stays as it is.
[[nodiscard]] OXA_CONVERT_API std::vector<const ifc::Entity*> reached(const ifc::Entity& root);

/// What extract() made.
struct Extracted {
    /// The copies, by the numbers of the entities that they stand for. Owned by the target's model.
    std::vector<ifc::Entity*> copies;
    /// Values and references that could not be copied: what they would name is not defined in the source.
    std::size_t iLost = 0;
};

/// Copies the entity and all that it reaches into another file, which keeps the entities that it has.
///
/// @param from    the model of the entity.
/// @param root    an entity of it that is defined.
/// @param target  gets the schema of "from" if it has none; one with another schema is left as it is, and nothing is
///                copied. Its copies have numbers in the order of those in "from", and their inverse lists are built.
/// Memory   of the target's pool; nothing of it points into "from".
/// Threads  one for each of the two models.
[[nodiscard]] OXA_CONVERT_API Extracted extract(const ifc::Data& from, const ifc::Entity& root, ifc::FileBase& target);

}   // namespace oxa::convert
