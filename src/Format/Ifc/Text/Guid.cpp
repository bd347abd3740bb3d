// SPDX-License-Identifier: Apache-2.0
// The 22 characters of a GlobalId: the 128 bits as a number in base 64, whose first digit holds two bits only. The
// number is cut into one group of 8 bits, two digits, and five of 24 bits, four digits each, so no digit crosses a
// group.
#include "Format/Ifc/IfcGuid.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace oxa::ifc {

namespace {

constexpr std::string_view g_alphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
static_assert(g_alphabet.size() == 64);

// What a byte stands for: a digit from 0 to 63, or one of these.
constexpr std::uint8_t g_foreign = 0xFF;
constexpr std::uint8_t g_groupEnd = 0xFE;   // the NUL byte

constexpr std::array<std::uint8_t, 256> g_digitOf = [] {
    std::array<std::uint8_t, 256> table{};
    table.fill(g_foreign);
    table[0] = g_groupEnd;
    for (std::size_t i = 0; i < g_alphabet.size(); ++i)
        table[static_cast<std::uint8_t>(g_alphabet[i])] = static_cast<std::uint8_t>(i);
    return table;
}();

// The text is six numbers, the highest digit first.
constexpr std::array<std::size_t, 6> g_groupLength = {2, 4, 4, 4, 4, 4};
static_assert(2 + 5 * 4 == IfcGuid::Length);
using Groups = std::array<std::uint32_t, g_groupLength.size()>;

Groups groupsFromGuid(const Guid& guid) {
    const auto& tail = guid.Data4;
    const auto three = [](unsigned high, unsigned middle, unsigned low) {
        return static_cast<std::uint32_t>(high << 16 | middle << 8 | low);
    };
    return {
        static_cast<std::uint32_t>(guid.Data1 >> 24),
        static_cast<std::uint32_t>(guid.Data1 & 0xFFFFFFu),
        static_cast<std::uint32_t>(guid.Data2 << 8 | guid.Data3 >> 8),
        three(guid.Data3 & 0xFFu, tail[0], tail[1]),
        three(tail[2], tail[3], tail[4]),
        three(tail[5], tail[6], tail[7]),
    };
}

// What does not fit a field of the GUID is lost, which concerns the first group only.
void vGuidFromGroups(Guid& guid, const Groups& groups) {
    guid.Data1 = groups[0] << 24 | groups[1];
    guid.Data2 = static_cast<std::uint16_t>(groups[2] >> 8);
    guid.Data3 = static_cast<std::uint16_t>((groups[2] & 0xFFu) << 8 | groups[3] >> 16);
    // The last eight bytes as a number, its highest byte first.
    std::uint64_t uTail = std::uint64_t{groups[3] & 0xFFFFu} << 48 | std::uint64_t{groups[4]} << 24 | groups[5];
    for (std::size_t i = sizeof guid.Data4; i-- > 0; uTail >>= 8) guid.Data4[i] = static_cast<std::uint8_t>(uTail);
}

// For each place in a group of four what a byte there adds to the group's value. A byte that is no digit, of which there
// is none in a file as exporters write them, adds this bit.
constexpr std::uint32_t g_uNoDigit = std::uint32_t{1} << 31;
using Addends = std::array<std::uint32_t, 256>;
constexpr std::array<Addends, 4> g_addends = [] {
    std::array<Addends, 4> addends{};
    for (std::size_t iPlace = 0; iPlace < addends.size(); ++iPlace)
        for (std::size_t i = 0; i < g_digitOf.size(); ++i)
            addends[iPlace][i] =
                g_digitOf[i] < 64 ? std::uint32_t{g_digitOf[i]} << 6 * (addends.size() - 1 - iPlace) : g_uNoDigit;
    return addends;
}();

// A group of digits alone, without a look at each; of others the value has g_uNoDigit.
template <std::size_t iLength>
std::uint32_t uDigitGroup(const char* pText) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < iLength; ++i)
        value |= g_addends[g_addends.size() - iLength + i][static_cast<std::uint8_t>(pText[i])];
    return value;
}

// Two digits for each number of 12 bits, half the steps of one at a time.
constexpr auto g_digitPairs = [] {
    std::array<char, 2 * 64 * 64> pairs{};
    for (std::size_t i = 0; i < 64 * 64; ++i) {
        pairs[2 * i] = g_alphabet[i / 64];
        pairs[2 * i + 1] = g_alphabet[i % 64];
    }
    return pairs;
}();

void vWritePair(char* pText, std::uint32_t value) {
    std::memcpy(pText, &g_digitPairs[2 * std::size_t{value & 0xFFFu}], 2);
}

// A NUL ends the group early, whose value then is that of the digits before it; a foreign byte makes the whole text
// invalid.
bool boReadGroup(const char* pText, std::size_t length, std::uint32_t& value) {
    value = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const std::uint8_t digit = g_digitOf[static_cast<std::uint8_t>(pText[i])];
        if (digit == g_groupEnd) return true;
        if (digit == g_foreign) return false;
        value = value * 64 + digit;
    }
    return true;
}

}   // namespace

bool IfcGuid::boIfcStringFromGuid(char* const text, const Guid& guid) {
    const Groups groups = groupsFromGuid(guid);
    vWritePair(text, groups[0]);
    for (std::size_t i = 1; i < groups.size(); ++i) {
        vWritePair(text + 4 * i - 2, groups[i] >> 12);
        vWritePair(text + 4 * i, groups[i]);
    }
    text[Length] = '\0';
    return true;
}

bool IfcGuid::boIfcStringToGuid(Guid& guid, const char* const text) {
    Groups groups = {uDigitGroup<2>(text),      uDigitGroup<4>(text + 2),  uDigitGroup<4>(text + 6),
                     uDigitGroup<4>(text + 10), uDigitGroup<4>(text + 14), uDigitGroup<4>(text + 18)};
    if (!((groups[0] | groups[1] | groups[2] | groups[3] | groups[4] | groups[5]) & g_uNoDigit)) {
        vGuidFromGroups(guid, groups);
        return true;
    }
    const char* pText = text;
    for (std::size_t i = 0; i < groups.size(); pText += g_groupLength[i], ++i)
        if (!boReadGroup(pText, g_groupLength[i], groups[i])) return false;
    vGuidFromGroups(guid, groups);
    return true;
}

std::string IfcGuid::toIfcGuid(const Guid& guid) {
    char text[Length + 1];
    boIfcStringFromGuid(text, guid);
    return {text, Length};
}

std::optional<Guid> IfcGuid::fromIfcGuid(const std::string_view& text) {
    Guid guid{};
    if (text.size() < Length || !boIfcStringToGuid(guid, text.data())) return std::nullopt;
    return guid;
}

}   // namespace oxa::ifc
