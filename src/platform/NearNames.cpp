// SPDX-License-Identifier: Apache-2.0
// Names that a misspelt one may stand for: few letters away, or with the word inside.
#include "platform/NearNames.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

namespace oxa::str {

namespace {

constexpr std::size_t g_iMost = 5;
constexpr std::size_t g_iLongest = 200;   // of a name worth comparing; the cost grows with the square

std::string sLower(std::string_view text) {
    std::string sText(text);
    for (char& c : sText)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return sText;
}

// The letters to insert, remove or replace to make one text of the other (Levenshtein).
std::size_t iDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t iDiagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t iReplaced = iDiagonal + (a[i] == b[j] ? 0 : 1);
            iDiagonal = row[j + 1];
            row[j + 1] = std::min({iReplaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}   // namespace

std::vector<std::string_view> nearNames(std::string_view wanted, const std::vector<std::string_view>& names) {
    if (wanted.empty() || wanted.size() > g_iLongest) return {};
    const std::string sWanted = sLower(wanted);
    const std::size_t iLimit = std::max<std::size_t>(1, sWanted.size() / 4);
    std::vector<std::pair<std::size_t, std::string_view>> found;
    for (const std::string_view name : names) {
        const std::string sName = sLower(name);
        const std::size_t iFar = iDistance(sWanted, sName);
        // A part of a name counts behind all misspellings, the shortest name first.
        if (iFar <= iLimit)
            found.emplace_back(iFar, name);
        else if (sWanted.size() > 2 && sName.find(sWanted) != std::string::npos)
            found.emplace_back(iLimit + iFar, name);
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string_view> result;
    for (std::size_t i = 0; i < std::min(found.size(), g_iMost); ++i) result.push_back(found[i].second);
    return result;
}

}   // namespace oxa::str
