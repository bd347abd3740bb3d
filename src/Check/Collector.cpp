// SPDX-License-Identifier: Apache-2.0
#include "Check/Collector.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace oxa::check {

namespace {

constexpr std::size_t index(CheckLevel level) noexcept { return static_cast<std::size_t>(level); }

// Those without a line stand behind those that have one.
auto place(const CheckPlace& place) {
    return std::tuple(place.line == 0, place.line, place.column, place.id, std::string_view(place.found));
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
CheckGroup& Collector::groupOf(const Failure& failure) {
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
    CheckGroup& group = m_groups.emplace_back();
    group.level = failure.level;
    group.weight = failure.weight;
    group.key = failure.key;
    group.message = failure.message;
    group.rule = failure.rule;
    if (boFull) return group;
    group.type = failure.type;
    group.attribute = failure.attribute;
    group.expected = failure.expected;
    return group;
}

void Collector::vCount(const CheckGroup& group, std::uint64_t iCount) noexcept {
    (group.weight == CheckWeight::Note ? m_notes : m_failures)[index(group.level)] += iCount;
}

void Collector::vAdd(const Failure& failure) {
    CheckGroup& group = groupOf(failure);
    ++group.count;
    vCount(group, 1);
    if (m_iPlaces >= m_iMostPlaces) {
        ++m_iLeftOut;
        return;
    }
    ++m_iPlaces;
    group.places.push_back({failure.line, failure.column, failure.id, std::string(failure.found)});
}

void Collector::vMerge(Collector&& other) {
    for (CheckGroup& from : other.m_groups) {
        CheckGroup& group = groupOf(
            {from.level, from.weight, from.key, from.rule, from.type, from.attribute, from.message, from.expected});
        group.count += from.count;
        vCount(group, from.count);
        const std::size_t iTaken = std::min(from.places.size(), m_iMostPlaces - m_iPlaces);
        std::move(from.places.begin(), from.places.begin() + static_cast<std::ptrdiff_t>(iTaken),
                  std::back_inserter(group.places));
        m_iPlaces += iTaken;
        m_iLeftOut += from.places.size() - iTaken;
    }
    m_iLeftOut += other.m_iLeftOut;
}

std::uint64_t Collector::iFailures(CheckLevel level) const noexcept { return m_failures[index(level)]; }
std::uint64_t Collector::iNotes(CheckLevel level) const noexcept { return m_notes[index(level)]; }

void Collector::vFinish(CheckResult& result) {
    for (CheckGroup& group : m_groups)
        std::stable_sort(group.places.begin(), group.places.end(),
                         [](const CheckPlace& a, const CheckPlace& b) { return place(a) < place(b); });
    std::sort(m_groups.begin(), m_groups.end(),
              [](const CheckGroup& a, const CheckGroup& b) { return order(a) < order(b); });
    result.groups = std::move(m_groups);
    result.placesLeftOut = m_iLeftOut;
    for (std::size_t i = 0; i < checkLevelCount; ++i) {
        result.levels[i].failures = m_failures[i];
        result.levels[i].notes = m_notes[i];
    }
    *this = Collector(m_iMostPlaces);
}

}   // namespace oxa::check
