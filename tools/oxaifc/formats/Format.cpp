// SPDX-License-Identifier: Apache-2.0
// The search in the table of formats: by word, by the end of a name, by the first bytes.
#include "oxaifc/formats/Format.h"

#include <algorithm>

#include <fmt/format.h>

#include "Model/Archive.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"
#include "platform/Path.h"

namespace oxa::tool {

namespace {

// From the last point of the name on, without a .gz; empty where it has none.
std::string endOf(std::string_view path) {
    if (packingOfName(path) == Packing::Gzip) path = path.substr(0, unpackedName(path).size());
    const std::string sName = str::sOfPath(str::pathOf(path).filename());   // behind what divides folders here
    const std::size_t iPoint = sName.find_last_of('.');
    return iPoint == std::string::npos ? std::string() : sName.substr(iPoint);
}

bool boHasEnd(const Format& format, std::string_view end) {
    const std::string sEnd = sUpper(end);
    return std::any_of(format.ends.begin(), format.ends.end(),
                       [&sEnd](std::string_view known) { return sEnd == sUpper(known); });
}

// The first of the table for which "boWanted" says so; null where there is none.
template <class Wanted>
const Format* pFirst(Wanted&& boWanted) {
    const auto all = formats();
    const auto it = std::find_if(all.begin(), all.end(), [&](const Format* pFormat) { return boWanted(*pFormat); });
    return it == all.end() ? nullptr : *it;
}

}   // namespace

const Format& formatFromWord(std::string_view word) {
    const Format* const pFound = pFirst([word](const Format& format) { return format.word == word; });
    if (!pFound) throw Failure(fmt::format("there is no format {}", word));
    return *pFound;
}

std::vector<const Format*> formatsWith(bool FormatHolds::*pHolds) {
    std::vector<const Format*> found;
    for (const Format* pFormat : formats())
        if (pFormat->holds.*pHolds) found.push_back(pFormat);
    return found;
}

const Format* pFormatFromName(std::string_view path) {
    const std::string end = endOf(path);
    return pFirst([end](const Format& format) { return boHasEnd(format, end); });
}

// The name decides only for formats that say so, since files are often misnamed; then the bytes do. STEP, which begins
// like no other, is what remains.
const Format& formatOfInput(std::string_view path, std::string_view firstBytes) {
    const Format* const pNamed = pFormatFromName(path);
    if (pNamed && pNamed->boNameDecides) return *pNamed;
    if (const Format* const pBegun =
            pFirst([firstBytes](const Format& format) { return format.boBegins && format.boBegins(firstBytes); }))
        return *pBegun;
    return *pFirst([](const Format& format) { return !format.boBegins; });
}

const Format* pFormatOfOutput(const std::string& sPath, const std::string& sFormat,
                              const std::vector<const Format*>& written) {
    const std::string end = endOf(sPath);
    std::string sForms;
    for (const Format* pFormat : written) {
        if (sFormat.empty() ? boHasEnd(*pFormat, end) : sFormat == pFormat->word) return pFormat;
        sForms += fmt::format("{}{} ({})", sForms.empty() ? "" : ", ", fmt::join(pFormat->ends, ", "), pFormat->title);
    }
    if (end.empty()) return nullptr;
    throw Failure(fmt::format("can't write {}: {} is the end of no form that is written; there are: {}; --format {} "
                              "writes that under any name",
                              sPrintable(sPath), sPrintable(end), sForms, written.front()->word));
}

void vFormatDeclare(Command command, std::string& sFormat, const std::vector<const Format*>& written) {
    std::vector<std::string> words;
    std::string sForms;
    for (const Format* pFormat : written) {
        words.emplace_back(pFormat->word);
        sForms += fmt::format("{}{} for {}", sForms.empty() ? "" : ", ", pFormat->word, fmt::join(pFormat->ends, " "));
    }
    command
        .option("--format", sFormat, fmt::format("the form of OUT; without it the end of its name decides: {}", sForms))
        .oneOf(words)
        .value("X");
}

}   // namespace oxa::tool
