// SPDX-License-Identifier: Apache-2.0
/// @file
/// Snapshot: what has changed in a model since it was looked at.
///
///     const oxa::convert::Snapshot before(model.core().dataBase());
///     oxa::setProperty(model, wall, "Pset_WallCommon", "FireRating", "F 90");
///     const oxa::convert::Edits edits = before.edits();
///
/// - For: whoever hands a changed model to patch() of Patch.h, or wants to know what an operation touched.
/// - Sees: every value that is another one, by whatever means it was set, and nothing that was set to what it was.
/// - Hashes of 64 bits without a key stand for values: enough against accidents, nothing against those who look for a
///   collision.
/// - Cost: one pass over all values, here and in edits(); memory for 16 bytes an entity and 8 an attribute.
/// - Threads: as Data, which must outlive it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Export.h"

namespace oxa::convert {

/// What is another in a model than it was. Nothing is owned.
struct Edits {
    /// An entity that has other values.
    struct Changed {
        /// The entity.
        const ifc::Entity* pEntity = nullptr;
        /// Positions of the attributes, ascending; all of them where the entity has another type than before.
        std::vector<unsigned> attributes;
        /// Whether it has another type than before.
        bool boType = false;
    };
    /// By number.
    std::vector<Changed> changed;
    /// New entities, by number.
    std::vector<const ifc::Entity*> added;
    /// The numbers of entities that are no longer there, ascending.
    std::vector<std::size_t> removed;

    /// Whether nothing is another.
    [[nodiscard]] bool boEmpty() const noexcept { return changed.empty() && added.empty() && removed.empty(); }
};

/// A model as it was when this was made.
class OXA_CONVERT_API Snapshot {
public:
    /// Looks at all entities of the model.
    explicit Snapshot(const ifc::Data& data);

    /// What has changed since. Looks at all entities again.
    [[nodiscard]] Edits edits() const;

private:
    struct Known {
        const ifc::Entity* pEntity;
        std::size_t iFirst;   // of its hashes
    };

    [[nodiscard]] Edits::Changed compared(const Known& known, std::size_t iEnd, std::vector<std::uint64_t>& now) const;

    const ifc::Data& m_data;
    std::vector<Known> m_known;            // by address
    std::vector<std::uint64_t> m_hashes;   // of each entity its type, then its values
};

}   // namespace oxa::convert
