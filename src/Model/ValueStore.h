// SPDX-License-Identifier: Apache-2.0
// ValueStore: a caller's value into the cell of an attribute.
//
// For      ModelState, which keeps inverse lists and GlobalIds right around it.
// Errors   those of ValueCheck, with the cell as it was.
#pragma once

#include <cstddef>

#include "Model/ModelState.h"
#include "Model/NewValue.h"

namespace oxa::detail {

/// Sets the attribute at that position of an instance of the model, which need not be in the list yet.
void vValueStore(ModelState& state, ifc::Entity& entity, std::size_t iAttribute, const NewValue& value,
                 const std::string& sWhere);

/// Whether the schema derives the attribute at that position in instances of the type: "*" stands there
/// (ISO 10303-21, 10.2.4).
[[nodiscard]] bool boDerives(const ifc::def::schema::Entity& type, std::size_t iAttribute);

/// Puts "*" to all of those of a new instance.
void vDerive(ifc::Entity& entity);

}   // namespace oxa::detail
