// SPDX-License-Identifier: Apache-2.0
// DiffText: the changes of elements between two models in words: lines for people, rows of a table, JSON, a page.
//
// For      the verb "diff".
// Threads  one.
#pragma once

#include <string>

#include "Compare/Elements.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

// A line a change, equal ones of more than three elements as one with their count unless boAll; then what no element
// tells, by entity, and how much there is of each.
void vDiffLines(const compare::ElementResult& diff, bool boAll, Output& output);
// The same by entity alone.
void vEntityLines(const compare::Result& diff, Output& output);
// A row a change: CSV (RFC 4180).
void vDiffTable(const compare::ElementResult& diff, Output& output);
// {"equal", "schema", "elements", "removed", "added", "changed"}; without elements by entity alone.
[[nodiscard]] Json diffJson(const compare::Result& diff, const compare::ElementResult* pElements);
// One file, that asks for no other: a page in HTML.
[[nodiscard]] std::string sDiffPage(const compare::ElementResult& diff, const std::string& sOld,
                                    const std::string& sNew);

// The text of DiffPage.html.
[[nodiscard]] std::string sDiffPageText();

}   // namespace oxa::tool
