// SPDX-License-Identifier: Apache-2.0
// ElementRows: what the relations of one element are in two models, and where they differ.
//
// For      Elements.cpp, for the elements that a changed relationship or set concerns.
// Threads  one.
#pragma once

#include <vector>

#include "Compare/ComparedModel.h"
#include "Compare/Elements.h"

namespace oxa::compare {

// Type, place, material, classification, groups, properties and quantities of one element in both models.
[[nodiscard]] std::vector<ElementDifference> rowDifferences(const ComparedModel& before, const oxa::Element& old,
                                                            const ComparedModel& after, const oxa::Element& now);

// "South" of IfcWall 'South'; empty where it has none.
[[nodiscard]] std::string sElementName(const oxa::Element& element);

}   // namespace oxa::compare
