// SPDX-License-Identifier: Apache-2.0
// Results: what is handed back as a plain record of Python, as the classes of oxaifc/_results.py have it.
//
// Threads  with the interpreter's lock held.
#pragma once

#include <nanobind/nanobind.h>

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Model/Columns.h"
#include "Model/Options.h"
#include "Values.h"

namespace oxa::python {

// oxaifc._results.<pClass>, to be called with its fields.
[[nodiscard]] nb::object resultClass(const char* pClass);

// A list of what "make" gives of each.
template <class Range, class Make>
nb::list listOf(const Range& range, Make&& make) {
    nb::list list;
    for (const auto& item : range) list.append(make(item));
    return list;
}

// A tuple of texts.
[[nodiscard]] nb::tuple textsToPython(const std::vector<std::string>& texts);
// None for an empty one.
[[nodiscard]] nb::object textOrNone(std::string_view text);
[[nodiscard]] nb::object cellToPython(const oxa::Cell& cell);
// A list of oxaifc.Record.
[[nodiscard]] nb::list recordsToPython(std::span<const oxa::Record> records);
// oxaifc.Rows.
[[nodiscard]] nb::object rowsToPython(const std::vector<std::string>& columns,
                                      const std::vector<std::vector<oxa::Cell>>& rows);
// Warns, as oxaifc.Hint.
void vHint(const std::vector<std::string>& hints);

}   // namespace oxa::python
