// SPDX-License-Identifier: Apache-2.0
// ValueDiff: the differences of two entities, down to the values in which they lie.
//
// For      Compare.cpp, once it knows which entities stand for each other.
// Threads  one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Compare/Compare.h"
#include "Compare/Content.h"

namespace oxa::compare {

// An attribute of one entity.
struct Value {
    const ifc::def::schema::Attribute* pAttribute = nullptr;   // null where the entity has none of that name
    const ifc::AttributeBase* pCell = nullptr;

    Value(const ifc::Entity& entity, std::string_view name);
};

// Cuts two texts to about iMost bytes, each around the first byte in which they differ.
void vCut(std::string& a, std::string& b, std::size_t iMost);

// None for equal entities.
[[nodiscard]] std::vector<Difference> valueDifferences(const Content& before, const ifc::Entity& a,
                                                       const Content& after, const ifc::Entity& b,
                                                       const Options& options);

}   // namespace oxa::compare
