// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/Several.h"

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"

namespace oxa::tool {

int iForEachFile(const std::vector<std::string>& paths, const std::function<int(const std::string& sPath)>& iOne) {
    if (paths.size() == 1) return iOne(paths.front());
    int iWorst = g_iExitFine;
    for (const std::string& sPath : paths) {
        try {
            iWorst = std::max(iWorst, iOne(sPath));
        } catch (const Failure& failure) {
            std::fputs(fmt::format("oxaifc: {}\n", failure.what()).c_str(), stderr);
            iWorst = g_iExitFailure;
        }
    }
    return iWorst;
}

}   // namespace oxa::tool
