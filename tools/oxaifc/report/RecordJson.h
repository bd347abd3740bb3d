// SPDX-License-Identifier: Apache-2.0
// RecordJson: an error record as JSON, in one form for all verbs.
//
// Keys     key, severity, category, message; line (0 for none), entity (its number), type, attribute; text, of the file.
//          null for what is not known.
// Threads  any number at once.
#pragma once

#include <cstddef>

#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

// A longer text is cut to so many bytes, and its length told behind them.
[[nodiscard]] Json recordJson(const ifc::ErrorRecord& record, const Model& model, std::size_t iMostText);

}   // namespace oxa::tool
