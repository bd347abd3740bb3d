// SPDX-License-Identifier: Apache-2.0
// ContentText: a value as people read it, without the numbers of a file.
//
// For      telling two models apart. Shaped like a statement of ISO 10303-21, with text as it is and real numbers as
//          short as they can be without becoming others. An entity with a GlobalId is its type and that GlobalId; any
//          other is written out in the place of its number.
// Length   what would be longer than g_iMostText bytes ends in "..." soon behind them.
#pragma once

#include <cstddef>
#include <string>

#include "Compare/Content.h"

namespace oxa::compare {

inline constexpr std::size_t g_iMostText = 64 * 1024;

[[nodiscard]] std::string sValueText(const Content& model, const ifc::AttributeBase& cell,
                                     const ifc::def::schema::Attribute& attribute);
[[nodiscard]] std::string sReferenceText(const Content& model, const ifc::Entity* pEntity);

}   // namespace oxa::compare
