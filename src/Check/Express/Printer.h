// SPDX-License-Identifier: Apache-2.0
// Printer: the trees of Tree.h as EXPRESS text. What is read back gives the same tree.
//
// For      the text of a rule in a record, and the tables of rules.
// Layout   one blank where it helps a reader, one line for a clause or a statement; keywords in capitals, names and
//          parentheses as the author wrote them.
// Threads  any number at once.
#pragma once

#include <string>

#include "Check/Express/Tree.h"
#include "platform/Export.h"

namespace oxa::check::express {

[[nodiscard]] OXA_CHECK_API std::string sText(const Expression& expression);
[[nodiscard]] OXA_CHECK_API std::string sText(const TypeTree& type);
[[nodiscard]] OXA_CHECK_API std::string sText(const Block& block);
// All of it, as a text that Parser::boReadSchema takes: a table of rules.
[[nodiscard]] OXA_CHECK_API std::string sText(const SchemaRules& rules);

}   // namespace oxa::check::express
