// SPDX-License-Identifier: Apache-2.0
// Texts: what facets say, for people.
//
// For      the reader of requirements, and reasons of failures.
// Threads  any number at once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Check/Ids.h"

namespace oxa::ids::detail {

/// Names of the schemas that a specification is for, as they spell them: IfcWall for IFCWALL.
[[nodiscard]] std::string spelled(std::string_view upper, const std::vector<std::string>& schemas);

/// As Facet::text says; of requirements a whole sentence.
[[nodiscard]] std::string facetText(const Facet& facet, bool boRequirement, const std::vector<std::string>& schemas);

/// "Pset_WallCommon.FireRating", or the conditions of both.
[[nodiscard]] std::string propertyText(const Facet& facet);

}   // namespace oxa::ids::detail
