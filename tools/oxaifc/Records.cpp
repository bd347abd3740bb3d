#include "oxaifc/Records.h"

#include <algorithm>
#include <tuple>

namespace oxa::tool {

namespace {

bool boBefore(const ifc::ErrorRecord& a, const ifc::ErrorRecord& b) {
    const auto place = [](const ifc::ErrorRecord& record) {
        return std::tuple(record.lineNumber == 0, record.lineNumber);
    };
    if (place(a) != place(b)) return place(a) < place(b);
    // The records of one statement share its text, which can be as long as they are many.
    const std::string_view textA = sourceText(a);
    const std::string_view textB = sourceText(b);
    return textA.data() != textB.data() && textA < textB;
}

}   // namespace

std::vector<const ifc::ErrorRecord*> recordsByLine(const std::vector<ifc::ErrorRecord>& records) {
    std::vector<const ifc::ErrorRecord*> result;
    result.reserve(records.size());
    for (const ifc::ErrorRecord& record : records) result.push_back(&record);
    // Stable: what was found in one statement was found by one thread, in its order.
    std::stable_sort(result.begin(), result.end(),
                     [](const auto* pA, const auto* pB) { return boBefore(*pA, *pB); });
    return result;
}

RecordCounts recordCounts(const std::vector<ifc::ErrorRecord>& records) {
    RecordCounts counts{};
    for (const ifc::ErrorRecord& record : records) ++counts.at(record.severity).at(record.category);
    return counts;
}

}   // namespace oxa::tool
