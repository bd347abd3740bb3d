// SPDX-License-Identifier: Apache-2.0
// FacetMatch: a facet asked of instances of one model.
//
// For      the run of a check. One object a thread: tests remember what they found of what many instances share, as a
//          property set of a type, a material, a reference of a classification.
// Threads  one.
#pragma once

#include <memory>
#include <string>
#include <unordered_set>

#include "Check/Ids/ModelView.h"
#include "Check/Ids/Program.h"

namespace oxa::ids::detail {

// Why an instance does not meet a requirement.
struct Finding {
    FailureKind kind = FailureKind::Missing;
    std::string reason{};
    std::string found{};
};

class FacetMatch {
public:
    FacetMatch() = default;
    FacetMatch(const FacetMatch&) = delete;
    FacetMatch& operator=(const FacetMatch&) = delete;
    virtual ~FacetMatch();

    /// False for a type of which no instance can be selected.
    [[nodiscard]] virtual bool boMaySelect(const schema::Entity& type) const = 0;
    /// Of an applicability.
    [[nodiscard]] virtual bool boSelects(Entity& entity) = 0;
    /// Of requirements, by their cardinality. What was found is told where it is false.
    [[nodiscard]] virtual bool boMeets(Entity& entity, Finding& finding) = 0;
};

// What instances are part of wholes that a facet means: one walk from the wholes down, for all threads.
using Parts = std::unordered_set<const Entity*>;

/// Null for other kinds of facets.
[[nodiscard]] std::shared_ptr<const Parts> partsOf(const ModelView& view, const FacetProgram& facet);

[[nodiscard]] std::unique_ptr<FacetMatch> facetMatch(const ModelView& view, const FacetProgram& facet,
                                                     const std::shared_ptr<const Parts>& parts);

///@{
/// Of one kind each.
[[nodiscard]] std::unique_ptr<FacetMatch> entityMatch(const ModelView& view, const FacetProgram& facet);
[[nodiscard]] std::unique_ptr<FacetMatch> attributeMatch(const ModelView& view, const FacetProgram& facet);
[[nodiscard]] std::unique_ptr<FacetMatch> propertyMatch(const ModelView& view, const FacetProgram& facet);
[[nodiscard]] std::unique_ptr<FacetMatch> materialMatch(const ModelView& view, const FacetProgram& facet);
[[nodiscard]] std::unique_ptr<FacetMatch> classificationMatch(const ModelView& view, const FacetProgram& facet);
[[nodiscard]] std::unique_ptr<FacetMatch> partOfMatch(const ModelView& view, const FacetProgram& facet,
                                                      const std::shared_ptr<const Parts>& parts);
///@}

}   // namespace oxa::ids::detail
