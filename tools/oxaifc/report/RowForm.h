// SPDX-License-Identifier: Apache-2.0
// RowForm: in which form, and where, the rows of an answer go: what -f and -o say.
//
// For      verbs that answer in rows: all of them know the same words and ends of names.
// Errors   Failure, for a name whose end says no form.
// Threads  one.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "oxaifc/io/CommandLine.h"
#include "oxaifc/report/Table.h"

namespace oxa::tool {

struct RowOptions {
    std::string sForm;   // a word; empty: by the end of sOut, else table
    std::string sOut;    // empty and "-": standard output

    void vDeclare(Command command);
    [[nodiscard]] bool boFile() const noexcept { return !sOut.empty() && sOut != "-"; }
    // None of a workbook, which goes to a file alone; "verb" begins messages.
    [[nodiscard]] std::optional<TableForm> form(std::string_view verb) const;
    // Failure where one of these files would be replaced.
    void vOutCheck(const std::vector<std::string>& paths) const;
};

}   // namespace oxa::tool
