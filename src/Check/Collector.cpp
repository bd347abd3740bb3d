// SPDX-License-Identifier: Apache-2.0
#include "Check/Collector.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "Check/Syntax/InstanceTable.h"

namespace oxa::check {

namespace {

constexpr std::size_t index(CheckLevel level) noexcept { return static_cast<std::size_t>(level); }

// Those without a line stand behind those that have one.
auto place(const CheckPlace& place) {
    return std::tuple(place.line == 0, place.line, place.column, place.id, std::string_view(place.found));
}

bool boBefore(const CheckPlace& a, const CheckPlace& b) { return place(a) < place(b); }

CheckPlace placeOf(const Failure& failure) {
    return {failure.line, failure.column, InstanceTable::iTold(failure.id), std::string(failure.found)};
}

auto order(const CheckGroup& group) {
    const CheckPlace* pFirst = group.places.empty() ? nullptr : &group.places.front();
    return std::tuple(group.level, pFirst == nullptr || pFirst->line == 0, pFirst ? pFirst->line : 0,
                      pFirst ? pFirst->column : 0, std::string_view(group.key), std::string_view(group.rule),
                      std::string_view(group.type), std::string_view(group.attribute), std::string_view(group.message),
                      std::string_view(group.expected));
}

}   // namespace

// Texts are told apart by a byte that none of them has.
Collector::Kept& Collector::groupOf(const Failure& failure) {
    const bool boFull = m_groups.size() >= g_iMaxGroups;
    m_sKey.clear();
    m_sKey += static_cast<char>('0' + index(failure.level));
    m_sKey += failure.weight == CheckWeight::Note ? 'n' : 'f';
    const auto vAppend = [this](std::string_view text) { m_sKey.append(text) += '\0'; };
    vAppend(failure.key);
    if (!boFull) {
        for (const std::string_view text :
             {failure.rule, failure.type, failure.attribute, failure.message, failure.expected})
            vAppend(text);
    }
    const auto [it, boNew] = m_groupOf.try_emplace(m_sKey, m_groups.size());
    if (!boNew) return m_groups[it->second];
    Kept& kept = m_groups.emplace_back();
    CheckGroup& group = kept.group;
    group.level = failure.level;
    group.weight = failure.weight;
    group.key = failure.key;
    group.message = failure.message;
    group.rule = failure.rule;
    if (boFull) return kept;
    group.type = failure.type;
    group.attribute = failure.attribute;
    group.expected = failure.expected;
    return kept;
}

void Collector::vCount(const CheckGroup& group, std::uint64_t iCount) noexcept {
    (group.weight == CheckWeight::Note ? m_notes : m_failures)[index(group.level)] += iCount;
}

// Room for one place more, which is taken. A full group has room where another place is given up for it.
bool Collector::boRoom(Kept& kept) {
    if (kept.iPlaces >= m_iMostOfGroup) return false;
    if (m_iPlaces >= m_iMostPlaces) {
        ++m_iLeftOut;
        return false;
    }
    ++m_iPlaces;
    ++kept.iPlaces;
    return true;
}

// The place goes in front of the last one of a full group, which is given up; a heap finds that one.
void Collector::vReplace(CheckGroup& group, const Failure& failure) const {
    if (group.places.size() < m_iMostOfGroup) return;
    std::vector<CheckPlace>& places = group.places;
    if (group.count == m_iMostOfGroup + 1) std::make_heap(places.begin(), places.end(), boBefore);
    CheckPlace added = placeOf(failure);
    if (!boBefore(added, places.front())) return;
    std::pop_heap(places.begin(), places.end(), boBefore);
    places.back() = std::move(added);
    std::push_heap(places.begin(), places.end(), boBefore);
}

void Collector::vAdd(const Failure& failure) {
    Kept& kept = groupOf(failure);
    ++kept.group.count;
    vCount(kept.group, 1);
    if (boRoom(kept))
        kept.group.places.push_back(placeOf(failure));
    else if (m_iMostOfGroup > 0)
        vReplace(kept.group, failure);
}

bool Collector::boCount(const Failure& failure) {
    Kept& kept = groupOf(failure);
    ++kept.group.count;
    vCount(kept.group, 1);
    return boRoom(kept);
}

void Collector::vPlace(const Failure& failure) { groupOf(failure).group.places.push_back(placeOf(failure)); }

std::uint64_t Collector::iFailures(CheckLevel level) const noexcept { return m_failures[index(level)]; }
std::uint64_t Collector::iNotes(CheckLevel level) const noexcept { return m_notes[index(level)]; }

void Collector::vFinish(CheckResult& result) {
    for (Kept& kept : m_groups) {
        std::stable_sort(kept.group.places.begin(), kept.group.places.end(), boBefore);
        result.groups.push_back(std::move(kept.group));
    }
    std::sort(result.groups.begin(), result.groups.end(),
              [](const CheckGroup& a, const CheckGroup& b) { return order(a) < order(b); });
    result.placesLeftOut = m_iLeftOut;
    for (std::size_t i = 0; i < checkLevelCount; ++i) {
        result.levels[i].failures = m_failures[i];
        result.levels[i].notes = m_notes[i];
    }
    *this = Collector(m_iMostPlaces, m_iMostOfGroup);
}

}   // namespace oxa::check
