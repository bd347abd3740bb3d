// SPDX-License-Identifier: Apache-2.0
// ModelGenerator: models of any size for the benchmarks, the same ones on every machine.
//
// Shape    an IFC4 exchange structure: project, units, a storey, then elements until the size is reached. What an
//          element brings along is taken from the mix of types and values in exporters' files: long lists of points
//          and faces with up to six decimals, property sets with short texts, now and then a character outside ASCII.
#pragma once

#include <cstddef>
#include <string>

namespace oxa::bench {

enum class Mix { Geometry, Properties, Both };

// At least that many bytes, and no more than one element above them.
[[nodiscard]] std::string sGeneratedModel(Mix mix, std::size_t iBytes);

}   // namespace oxa::bench
