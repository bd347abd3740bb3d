// SPDX-License-Identifier: Apache-2.0
/// @file
/// Compare: how two models differ, in terms of what they say and not of their numbers.
///
/// - Matching: entities with a GlobalId by that; where several have the same one, those of equal content first, then
///   those of one type, in the order of their numbers.
/// - Entities without GlobalId: what an entity with one leads to belongs to that entity's attribute. The rest is
///   compared by content, as a multiset, save what is part of the content of others. If it only differs by what
///   entities with a GlobalId lead to as well, the change is told there alone.
/// - Equality: types, attribute names and values, references followed; an attribute without a value is as one that a
///   type does not have. Items of a SET count in any order, -0 is 0, and a NaN is a NaN; texts and real numbers count
///   exactly. Neither the headers' texts, nor numbers, nor inverse attributes count. The models may be of two schemas.
/// - Hashes of 128 bits without a key stand for contents: enough against accidents, nothing against those who look for
///   a collision.
/// - Cost: a few passes over both models; memory for a number a reference. Nothing recurses along references.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileError.h"
#include "platform/Export.h"

/// Comparison of two models by element.
namespace oxa::compare {

/// One of the two models. Nothing is owned; all of it must stay as it is while differences() runs.
struct Side {
    /// The entities and the schema.
    const ifc::Data& data;
    /// As the header names it, for Result::boEqual: models of two schemas are not equal.
    std::string sSchema{};
    /// What its read reported: an entity whose GlobalId could not be read was given one by chance, which is none here.
    std::span<const ifc::ErrorRecord> reported{};
};

/// An entity as a result names it.
struct Element {
    /// The number by Data::iIdFromEntity: that of the file where the read kept numbers.
    std::size_t iNumber = 0;
    /// The keyword of its type, in upper case.
    std::string sType;
    /// 22 characters; empty where it has none.
    std::string sGlobalId;
    /// With a GlobalId the value of its Name, empty if that has none; else its content.
    std::string sText;
};

/// One value that is not the same in both models.
///
/// Texts are shaped like the parameters of a statement of ISO 10303-21, with letters as they are and real numbers as
/// short as they can be without becoming others. An entity with a GlobalId is its type and that GlobalId; any other is
/// written out in the place of its number.
struct Difference {
    /// The attribute's name; where entities without GlobalId stand between, the way to the value, as in
    /// "Representation.Representations[1].Items[2].Depth"; "[]" is a member of a SET. "type": the entity's own.
    std::string sAttribute;
    /// Of a SET of entities only the members that differ. Empty where a type has no such attribute.
    std::optional<std::string> sOld;
    /// The same of the other model, in the same form.
    std::optional<std::string> sNew;
    /// The attribute has more differences, which are not listed.
    bool boMore = false;
};

/// An entity that is in both models and not the same.
struct Change {
    /// The entity in the old model.
    Element before;
    /// The same entity in the new model; its number and type may be others.
    Element after;
    /// One at least, in the order of the type's attributes.
    std::vector<Difference> differences;
};

/// What one model has and says otherwise than another. Each list by number, of changed the old one.
struct Result {
    /// Side::sSchema of the first model.
    std::string sSchemaOld;
    /// Side::sSchema of the second model.
    std::string sSchemaNew;
    /// Entities that only the old model has.
    std::vector<Element> removed;
    /// Entities that only the new model has.
    std::vector<Element> added;
    /// Entities that both have, with other values.
    std::vector<Change> changed;

    /// Whether both models say the same: one schema, and all three lists are empty.
    [[nodiscard]] bool boEqual() const noexcept {
        return sSchemaOld == sSchemaNew && removed.empty() && added.empty() && changed.empty();
    }
};

/// How much of the differences is told; what is compared does not depend on it.
struct Options {
    /// Bytes of a text: longer ones are cut to about that, around the first difference, with "..." where they go on.
    std::size_t iMostText = 64 * 1024;
    /// Differences listed of one attribute of one entity, the way down taken together.
    std::size_t iMostDifferences = 100;
    /// Where it asks for the end, the comparison throws oxa::Stopped, soon.
    std::stop_token stop{};
};

/// Compares two models, which may be one and the same.
///
/// @param before,after  numbers are dealt to entities that have none yet; nothing else of the models changes.
/// Threads  one for each model; a model may be compared while nobody else uses it.
/// Errors   Stopped (Options::stop); else none: any two models can be compared. An instance that is named and not defined is equal to any other.
[[nodiscard]] OXA_COMPARE_API Result differences(const Side& before, const Side& after, const Options& options = {});

}   // namespace oxa::compare
