// SPDX-License-Identifier: Apache-2.0
// Error records in the order and the groups in which they are told. A reference to an instance that was skipped for an
// error is a consequence of that error, and is counted with its group.
#include "oxaifc/report/Records.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "platform/Localization.h"

namespace oxa::tool {

namespace {

constexpr auto g_eMissing = ifc::ReportKey::MissingEntityWithId;

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

// The instance number at the begin of a text, if "behind" follows it; -1 is the largest, as in the library.
std::optional<std::uint32_t> number(std::string_view text, std::string_view behind) {
    std::int64_t iNumber = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), iNumber);
    if (error != std::errc()) return std::nullopt;
    if (!text.substr(static_cast<std::size_t>(pEnd - text.data())).starts_with(behind)) return std::nullopt;
    return static_cast<std::uint32_t>(iNumber);
}

std::string_view groupKey(const ifc::ErrorRecord& record) {
    return record.key ? std::string_view(*record.key) : std::string_view(record.description);
}

}   // namespace

std::string RecordGroup::sTitle() const {
    const std::string& sFirst = records.front()->description;
    const auto boSame = [&sFirst](const auto* pRecord) { return pRecord->description == sFirst; };
    if (std::all_of(records.begin(), records.end(), boSame)) return sFirst;
    std::string sText = localize("Ifc", key);
    for (std::size_t i = sText.find("%1"); i != std::string::npos; i = sText.find("%1", i + 3))
        sText.replace(i, 2, "...");
    return sText;
}

std::vector<RecordGroup> recordGroups(const std::vector<ifc::ErrorRecord>& records) {
    std::vector<RecordGroup> groups;
    std::unordered_map<std::string_view, std::size_t> groupOf;
    std::unordered_map<std::uint32_t, std::size_t> groupOfNumber;   // for statements with a record
    std::vector<const ifc::ErrorRecord*> missing;
    for (const ifc::ErrorRecord* pRecord : recordsByLine(records)) {
        if (pRecord->reportKey == g_eMissing) {
            missing.push_back(pRecord);
            continue;
        }
        const std::string_view key = groupKey(*pRecord);
        const auto [it, boNew] = groupOf.try_emplace(key, groups.size());
        if (boNew) groups.push_back({key, {}, {}});
        groups[it->second].records.push_back(pRecord);
        const std::string_view text = sourceText(*pRecord);
        if (!text.starts_with('#')) continue;
        if (const auto iNumber = number(text.substr(1), "=")) groupOfNumber.try_emplace(*iNumber, it->second);
    }
    RecordGroup rest{ifc::reportKeyText(g_eMissing), {}, {}};
    for (const ifc::ErrorRecord* pRecord : missing) {
        const auto iNumber = number(pRecord->argument(), "");
        const auto it = iNumber ? groupOfNumber.find(*iNumber) : groupOfNumber.end();
        (it == groupOfNumber.end() ? rest.records : groups[it->second].following).push_back(pRecord);
    }
    if (!rest.records.empty()) groups.push_back(std::move(rest));
    std::stable_sort(groups.begin(), groups.end(),
                     [](const RecordGroup& a, const RecordGroup& b) { return a.records.size() > b.records.size(); });
    return groups;
}

std::vector<const ifc::ErrorRecord*> recordsByLine(const std::vector<ifc::ErrorRecord>& records) {
    std::vector<const ifc::ErrorRecord*> result;
    result.reserve(records.size());
    for (const ifc::ErrorRecord& record : records) result.push_back(&record);
    return recordsByLine(std::move(result));
}

std::vector<const ifc::ErrorRecord*> recordsByLine(std::vector<const ifc::ErrorRecord*> records) {
    // Stable: what was found in one statement was found by one thread, in its order.
    std::stable_sort(records.begin(), records.end(), [](const auto* pA, const auto* pB) { return boBefore(*pA, *pB); });
    return records;
}

RecordCounts recordCounts(const std::vector<ifc::ErrorRecord>& records) {
    RecordCounts counts{};
    for (const ifc::ErrorRecord& record : records) ++counts.at(record.severity).at(record.category);
    return counts;
}

}   // namespace oxa::tool
