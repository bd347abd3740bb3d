// SPDX-License-Identifier: Apache-2.0
// ModelDiff: how two models differ, in terms of what they say and not of their numbers.
//
// Matching    entities with a GlobalId by that; where several have the same one, those of equal content first, then
//             those of one type, in the order of their numbers.
// Without     GlobalId: what an entity with one leads to belongs to that entity's attribute. The rest is compared by
//             content, as a multiset, save what is part of the content of others. If it only differs by what entities
//             with a GlobalId lead to as well, the change is told there alone.
// Equality    that of ModelContent. Neither the headers' texts, nor numbers, nor inverse attributes count.
// Cost        a few passes over both models.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "oxaifc/formats/Model.h"

namespace oxa::tool {

struct DiffEntity {
    std::size_t iNumber = 0;
    std::string sType;       // keyword
    std::string sGlobalId;   // empty where it has none
    std::string sText;       // with a GlobalId the value of its Name, if it has one; else the content
};

struct DiffValue {
    // The attribute's name; where entities without GlobalId stand between, the way to the value, as in
    // "Representation.Representations[1].Items[2].Depth". "type": the entity's own.
    std::string sAttribute;
    // Of a SET of entities only the members that differ. Empty where a type has no such attribute.
    std::optional<std::string> sOld;
    std::optional<std::string> sNew;
    bool boMore = false;   // the attribute has more differences, which are not listed
};

struct DiffChange {
    DiffEntity before;
    DiffEntity after;
    std::vector<DiffValue> values;   // one at least
};

struct ModelDiff {
    std::string sSchemaOld;
    std::string sSchemaNew;
    std::vector<DiffEntity> removed;   // each list by number
    std::vector<DiffEntity> added;
    std::vector<DiffChange> changed;

    [[nodiscard]] bool boEqual() const noexcept {
        return sSchemaOld == sSchemaNew && removed.empty() && added.empty() && changed.empty();
    }
};

// Differences listed of one attribute of one entity, the way down taken together.
inline constexpr std::size_t g_iMostValues = 100;

// Both models with kept numbers. Texts of more than iMostText bytes are cut to about that around the first difference.
[[nodiscard]] ModelDiff modelDiff(const Model& before, const Model& after, std::size_t iMostText);

}   // namespace oxa::tool
