// SPDX-License-Identifier: Apache-2.0
/// @file
/// Elements: how two models differ, told by element as their users think of them.
///
///     IfcWall 'South'  Pset_WallCommon.FireRating: F 90 -> F 30
///
/// - Elements: objects, spatial elements, types and the project, matched by GlobalId as in Compare.h.
/// - Told of each: its class, attributes, placement and geometry; its type, storey, container and whole; materials,
///   classifications, groups; properties and quantities, those that its type hands on too.
/// - Nothing is lost: what differences() finds and no element tells is in ElementResult::others.
/// - Cost: that of differences(), and a look at the relations of each element that something changed about.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Compare/Compare.h"
#include "Model/Model.h"
#include "Model/Selector.h"
#include "platform/Export.h"

namespace oxa::compare {

/// One of the two models.
struct ElementSide {
    /// Its elements. Nothing of it changes, except that entities without a number get one.
    oxa::Model& model;
    /// As in Side.
    std::string sSchema{};
    /// As in Side.
    std::span<const ifc::ErrorRecord> reported{};
};

/// An element as a result names it.
struct ElementName {
    std::size_t iNumber = 0;   ///< the instance number
    std::string sClass;        ///< as in IfcWall
    std::string sGlobalId;     ///< 22 characters
    std::string sName;         ///< empty where it has none
    std::string sStorey;       ///< the name of the storey above it; empty where there is none
};

/// What a difference of an element is about.
enum class About : std::uint8_t {
    Class,
    Attribute,
    Placement,
    Geometry,
    Type,
    Place,   ///< storey, container, or the whole that it is a part of
    Material,
    Classification,
    Group,
    Property,
    Quantity
};

/// One thing that is told of an element.
struct ElementDifference {
    /// What it is about.
    About eAbout = About::Attribute;
    /// "Name", "Pset_WallCommon.FireRating", "storey", "geometry".
    std::string sWhat;
    /// As people read it; empty where there was none, and where only "details" say more.
    std::optional<std::string> sOld{};
    /// The same of the other model.
    std::optional<std::string> sNew{};
    /// Where the values lie that differ, as differences() tells it.
    std::vector<Difference> details{};
};

/// An element that is in both models and not the same.
struct ElementChange {
    ElementName before;                           ///< in the old model
    ElementName after;                            ///< in the new one
    std::vector<ElementDifference> differences;   ///< one at least
};

/// What one model has and says otherwise than another.
struct ElementResult {
    Result entities;                      ///< all of it by entity
    std::vector<ElementName> removed;     ///< elements, by number
    std::vector<ElementName> added;       ///< elements, by number
    std::vector<ElementChange> changed;   ///< elements, by their old number
    Result others;                        ///< of "entities" what no element tells
};

/// How much is told, and of whom.
struct ElementOptions : Options {
    /// Null: of all. Else of elements that it selects in either model alone, and "others" has nothing.
    const Selector* pOnly = nullptr;
};

/// Compares two models, which may be one and the same.
///
/// Errors   NameError, for a selector with a name that the schema of a model does not have; Stopped.
/// Threads  one for each model.
[[nodiscard]] OXA_COMPARE_API ElementResult elementDifferences(const ElementSide& before, const ElementSide& after,
                                                               const ElementOptions& options = {});

}   // namespace oxa::compare
