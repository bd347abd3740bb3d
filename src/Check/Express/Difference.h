// SPDX-License-Identifier: Apache-2.0
// Difference: the rules of a schema by what differs from another one's: what its table of rules holds where it has a base.
//
// For      oxa-rules-compiler, which makes tables, and BuiltInRules, which reads them.
// Table    "BASE NAME;", "DROP name, name;" where the base has declarations that the schema does not, then the declarations
//          that are other than the base's, as Printer writes them. Those of the base stand for all others; literals in
//          them that begin with its name, as 'IFC4.IFCWALL', begin with the schema's.
// Order    of declarations: that of the base, what the schema has more in front of the next name of the alphabet.
// Threads  plain functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Check/Express/Tree.h"
#include "platform/Export.h"

namespace oxa::check::express {

struct RuleDifference {
    std::string sBase;   // empty for a table that stands alone
    std::vector<std::string> dropped;
    SchemaRules rules;
};

// What makes "own" of "base", whose schema has that name.
[[nodiscard]] OXA_CHECK_API RuleDifference difference(SchemaRules own, SchemaRules base, std::string sBase);
// The way back.
OXA_CHECK_API void vApply(SchemaRules& base, RuleDifference difference);

[[nodiscard]] OXA_CHECK_API std::string sText(const RuleDifference& difference);
// The lines in front of "SCHEMA", which are taken off the text.
[[nodiscard]] OXA_CHECK_API RuleDifference differenceHead(std::string_view& text);
// A text with literals of one schema's names as those of another one.
[[nodiscard]] OXA_CHECK_API std::string sRenamed(std::string_view text, std::string_view from, std::string_view to);

}   // namespace oxa::check::express
