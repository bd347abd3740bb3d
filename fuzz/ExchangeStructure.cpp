// SPDX-License-Identifier: Apache-2.0
// ExchangeStructure: any bytes as a file to be checked, at once and through a stream that gives them in small pieces.

#include <sstream>
#include <string>

#include "Check/Check.h"
#include "Fuzz.h"

namespace oxa::fuzz {

namespace {

// All that a result says, as one text.
std::string sText(const CheckResult& result) {
    std::string sAll = std::to_string(result.statements) + ' ' + std::to_string(result.bytes) + '\n';
    for (const CheckRecord& record : result.records())
        sAll += std::to_string(record.place->line) + ':' + std::to_string(record.place->column) + ' ' +
                record.group->key + ' ' + record.group->type + ' ' + record.group->attribute + ' ' +
                record.place->found + '\n';
    return sAll;
}

}   // namespace

void vRun(std::string_view input) {
    std::istringstream stream{std::string(input)};
    const CheckResult result = checkStream(stream);
    vExpect(result.bytes == input.size(), "a check reads the whole file");
    std::istringstream again{std::string(input)};
    vExpect(sText(checkStream(again)) == sText(result), "two checks of one file say the same");
    for (const CheckGroup& group : result.groups) {
        vExpect(group.count >= group.places.size() && group.count > 0, "a group has what it counts");
        for (const CheckPlace& place : group.places)
            vExpect(place.line <= result.bytes + 1 && place.column <= result.bytes + 1, "a place is in the file");
    }
}

}   // namespace oxa::fuzz
