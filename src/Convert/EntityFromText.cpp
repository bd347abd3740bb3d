// SPDX-License-Identifier: Apache-2.0
// An entity as people name it: by number, or by GlobalId in any of its spellings.
#include "Convert/EntityFromText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <limits>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcGuid.h"

namespace oxa::convert {

namespace schema = ifc::def::schema;

namespace {

// A GUID of 32 hexadecimal digits, with or without the strokes and braces.
std::optional<Guid> guidFromHexadecimal(std::string_view text) {
    if (text.size() > 2 && text.front() == '{' && text.back() == '}') text = text.substr(1, text.size() - 2);
    std::array<std::uint8_t, 16> bytes{};
    std::size_t iDigits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '-' && text.size() == 36 && (i == 8 || i == 13 || i == 18 || i == 23)) continue;
        std::uint8_t iDigit = 0;
        const char* pDigit = text.data() + i;
        if (iDigits == 32 || std::from_chars(pDigit, pDigit + 1, iDigit, 16).ptr == pDigit) return std::nullopt;
        std::uint8_t& byte = bytes.at(iDigits++ / 2);
        byte = static_cast<std::uint8_t>(byte << 4 | iDigit);
    }
    if (iDigits != 32) return std::nullopt;
    Guid guid;
    const auto iOf = [&bytes](std::size_t iFirst, std::size_t iCount) {
        std::uint32_t iValue = 0;
        for (std::size_t i = iFirst; i < iFirst + iCount; ++i) iValue = iValue << 8 | bytes.at(i);
        return iValue;
    };
    guid.Data1 = iOf(0, 4);
    guid.Data2 = static_cast<std::uint16_t>(iOf(4, 2));
    guid.Data3 = static_cast<std::uint16_t>(iOf(6, 2));
    std::copy(bytes.begin() + 8, bytes.end(), guid.Data4);
    return guid;
}

}   // namespace

std::optional<Guid> guidFromText(std::string_view text) {
    return text.size() == ifc::IfcGuid::Length ? ifc::IfcGuid::fromIfcGuid(text) : guidFromHexadecimal(text);
}

// A number too large for its type still is a number, one that no entity has.
std::optional<std::size_t> numberFromText(std::string_view text) {
    if (text.size() < 2 || text.front() != '#') return std::nullopt;
    std::size_t iNumber = 0;
    const char* const pLast = text.data() + text.size();
    const auto [pEnd, error] = std::from_chars(text.data() + 1, pLast, iNumber);
    if (pEnd != pLast) return std::nullopt;
    if (error == std::errc::result_out_of_range) return std::numeric_limits<std::size_t>::max();
    return error == std::errc() ? std::optional(iNumber) : std::nullopt;
}

// The map first. It does not have a GlobalId that was given to an entity after that came into it, hence the search.
ifc::Entity* pEntityFromGlobalId(const ifc::Data& data, const Guid& guid) {
    if (ifc::Entity* pEntity = data.pEntityFromGuid(guid)) return pEntity;
    const auto [first, last] = data.range(schema::ObjectName("IFCROOT"), true);
    const auto it = std::find_if(first, last, [&guid](const ifc::Entity* pEntity) {
        Guid other;
        return pEntity->boValueGet(schema::AttributeName("GlobalId"), other) && other == guid;
    });
    return it == last ? nullptr : *it;
}

}   // namespace oxa::convert
