// SPDX-License-Identifier: Apache-2.0
// PatternText: regular expressions as XML Schema writes them (part 2, appendix F), said in the words of RE2.
//
// For      restrictions of requirements. All of a text has to match; "^" and "$" are letters like others.
// Lacks    names of blocks but for the first of Unicode, the category Cn, and classes subtracted from what was itself
//          subtracted: each is told.
// Threads  any number at once; no state.
#pragma once

#include <string>
#include <string_view>

namespace oxa::ids::detail {

struct PatternText {
    std::string sText;    // for RE2
    std::string sFault;   // why there is none
    std::string sNote;    // what hardly was meant
};

[[nodiscard]] PatternText patternText(std::string_view pattern);

}   // namespace oxa::ids::detail
