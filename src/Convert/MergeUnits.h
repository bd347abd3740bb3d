// SPDX-License-Identifier: Apache-2.0
// MergeUnits: whether the units of two models are the same in terms of SI.
//
// For      Merge, which can't convert numbers.
// Threads  one.
#pragma once

#include <string>
#include <vector>

#include "Model/Units.h"

namespace oxa::convert {

class MergeUnits {
public:
    explicit MergeUnits(const Model& model) : m_units(model) {}

    // "LENGTHUNIT is metre in the first and foot in the other"; empty where none differs.
    [[nodiscard]] std::string sDifference(const Model& other) const;
    // Units of the other model for what this one has none for.
    [[nodiscard]] std::vector<Element> missing(const Model& other) const;

private:
    Units m_units;
};

}   // namespace oxa::convert
