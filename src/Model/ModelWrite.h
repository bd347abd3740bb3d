// SPDX-License-Identifier: Apache-2.0
// ModelWrite: a whole model to a stream, in a form.
//
// For      Model::save.
#pragma once

#include <iosfwd>
#include <string_view>
#include <vector>

#include "Model/ModelState.h"
#include "Model/Options.h"

namespace oxa::detail {

/// The form that the end of a name says; FileError where it says none.
[[nodiscard]] Format formatOf(const std::string& sName);

/// The end of names of that form.
[[nodiscard]] std::string_view endOf(Format format) noexcept;

/// Statements stand by their numbers. What the write has to tell, by number. Throws Stopped, and FileError for a model
/// that has no place in the form; whether the stream took all, it says itself.
[[nodiscard]] std::vector<Record> modelWrite(ModelState& state, std::ostream& out, Format format,
                                             const SaveOptions& options);

}   // namespace oxa::detail
