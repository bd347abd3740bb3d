// SPDX-License-Identifier: Apache-2.0
/// @file
/// Merge: several models as one.
///
///     convert::Merger merger(first);
///     const convert::Merged merged = merger.add(second);
///     first.save("both.ifc");
///
/// - The project of the first model stays. Sites, buildings, storeys and other spatial elements that join are one: that
///   of the first model, with what both contain.
/// - GlobalIds stay, the numbers of the first model too; what is added gets numbers above them.
/// - Entities of one GlobalId are one where they say the same. Relationships of one GlobalId have the members of both,
///   so that a model that was split (Excerpt.h) is whole again; so do those that relate a spatial element that joined to
///   its parts and its contents, and of others members go that would have two relationships where the schema has one.
/// - Entities without GlobalId are shared where both models have them with one content and one number, as parts of one
///   model do; representation contexts, units and owner histories whatever their numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Model/Error.h"
#include "Model/Model.h"
#include "platform/Export.h"

namespace oxa::convert {

/// By what spatial elements of two models are told to be one.
enum class Join : std::uint8_t {
    Guid,   ///< their GlobalId
    Name,   ///< that, or their class and Name below a parent that joined
    None,   ///< nothing: those that differ are two, and must not have one GlobalId
};

/// What becomes of two entities that have one GlobalId and say two things.
enum class Same : std::uint8_t {
    Fail,        ///< nothing is merged
    KeepFirst,   ///< the one of the first model stays
};

/// How models are merged.
struct MergeOptions {
    Join join = Join::Guid;   ///< which spatial elements are one
    Same same = Same::Fail;   ///< of equal GlobalIds
};

/// Two entities that have one GlobalId and say two things.
struct MergeConflict {
    std::string guid;           ///< of 22 characters
    std::string type;           ///< of the one in the first model, as in IfcWall
    std::uint64_t first = 0;    ///< its number there
    std::uint64_t second = 0;   ///< the number in the other model
};

/// What a merge did.
struct Merged {
    std::size_t added = 0;                  ///< entities that are new in the first model
    std::size_t joined = 0;                 ///< spatial elements that are one, the project among them
    std::vector<MergeConflict> conflicts;   ///< by the number in the other model
    std::vector<MergeConflict> differing;   ///< of those that joined: they say two things, and the first ones stay
    bool done = false;                      ///< false: with these conflicts nothing was merged
};

/// Models that can't be one: of two schemas, or with two units for one measure. The message tells which, as in
/// "LENGTHUNIT is millimetre in the first and metre in the other".
class OXA_CONVERT_API MergeError final : public Error {
public:
    using Error::Error;
    ~MergeError() override;
};

/// Takes models into one.
///
/// Cost     some passes over each of the models, however many they are.
/// Memory   the values of what is added are copied; a hash an entity as long as this lives.
/// Threads  one, that of all models.
class OXA_CONVERT_API Merger {
public:
    /// Into that model, which nobody else must change as long as this is used.
    explicit Merger(Model& into);
    ~Merger();
    Merger(const Merger&) = delete;
    Merger& operator=(const Merger&) = delete;

    /// Takes in another model, of the same schema object; it stays as it is.
    /// MergeError, with nothing changed, for another schema and other units; ValueError where no number is left.
    Merged add(Model& from, const MergeOptions& options = {});

private:
    struct State;
    class Adder;
    std::unique_ptr<State> m_pState;
};

}   // namespace oxa::convert
