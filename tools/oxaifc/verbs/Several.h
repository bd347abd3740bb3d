// SPDX-License-Identifier: Apache-2.0
// Several: one verb for a number of files, one after another.
//
// For      verbs that take them; a file that can't be read is told, and does not keep the others from their turn.
// Errors   of a single file as ever: its Failure passes.
// Threads  one.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace oxa::tool {

// Calls iOne for each path. The exit code of the worst.
[[nodiscard]] int iForEachFile(const std::vector<std::string>& paths,
                               const std::function<int(const std::string& sPath)>& iOne);

}   // namespace oxa::tool
