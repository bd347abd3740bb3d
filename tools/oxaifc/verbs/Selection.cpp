// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/Selection.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcGuid.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

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

std::optional<Guid> guidFromText(const std::string& sText) {
    return sText.size() == ifc::IfcGuid::Length ? ifc::IfcGuid::fromIfcGuid(sText) : guidFromHexadecimal(sText);
}

// The entity of a number or a GlobalId; null when the word is neither. Failure when the file has none of that name.
ifc::Entity* pEntitySelected(const Model& model, const std::string& sWhat) {
    const std::optional<Guid> guid = guidFromText(sWhat);
    const bool boNumber = !guid && !sWhat.empty() && sWhat.find_first_not_of("0123456789") == std::string::npos;
    if (boNumber || sWhat.starts_with('#')) {
        const std::string sNumber = boNumber ? "#" + sWhat : sWhat;
        ifc::Entity* pEntity = pEntityFromNumber(model, sNumber);
        if (!pEntity) throw Failure(fmt::format("{}: there is no {}", model.sName(), sNumber));
        return pEntity;
    }
    if (!guid) return nullptr;
    ifc::Entity* pEntity = pEntityFromGlobalId(model, *guid);
    if (!pEntity) throw Failure(fmt::format("{}: there is no GlobalId {}", model.sName(), sWhat));
    return pEntity;
}

[[noreturn]] void vUnknownType(const schema::Schema& all, const std::string& sWhat) {
    std::vector<std::string_view> names;
    for (const schema::Schema::Record& record : all.objects)
        if (schema::pAsEntity(record.pObject)) names.push_back(record.pObject->sName);
    const std::vector<std::string_view> close = nearNames(sWhat, names);
    throw Failure(fmt::format("{} is no number as #12, no GlobalId and no entity of {}{}", sPrintable(sWhat), all.sName,
                              close.empty() ? "" : fmt::format("; did you mean {}?", fmt::join(close, ", "))));
}

}   // namespace

ifc::Entity* pEntityFromGlobalId(const Model& model, const Guid& guid) {
    const ifc::Data& data = model.data();
    if (ifc::Entity* pEntity = data.pEntityFromGuid(guid)) return pEntity;
    if (model.pHeader()) return nullptr;
    // A read of the simple form makes no map of them.
    const auto [first, last] = data.range(schema::ObjectName("IFCROOT"), true);
    const auto it = std::find_if(first, last, [&guid](const ifc::Entity* pEntity) {
        Guid other;
        return pEntity->boValueGet(schema::AttributeName("GlobalId"), other) && other == guid;
    });
    return it == last ? nullptr : *it;
}

ifc::Entity* pEntityFromNumber(const Model& model, const std::string& sNumber) {
    std::size_t iId = 0;
    const char* pLast = sNumber.data() + sNumber.size();
    const auto [pEnd, error] = std::from_chars(sNumber.data() + 1, pLast, iId);
    if (sNumber.size() < 2 || pEnd != pLast || (error != std::errc() && error != std::errc::result_out_of_range))
        throw Failure(fmt::format("{} is no number of an entity, as #12 is", sPrintable(sNumber)));
    return error == std::errc() ? model.data().pEntityFromId(iId) : nullptr;
}

std::vector<ifc::Entity*> entitiesSelected(Model& model, const std::string& sWhat, bool boSubtypes) {
    const ifc::def::SchemaPset* pSchema = model.data().pSchema();
    const schema::Entity* pType =
        pSchema ? schema::pAsEntity(pSchema->pObjectFromName(std::string_view(sWhat))) : nullptr;
    if (pType) {
        const auto [first, last] = model.data().range(schema::ObjectName(*pType), boSubtypes);
        std::vector<ifc::Entity*> found(first, last);
        std::sort(found.begin(), found.end(), [&model](const ifc::Entity* pA, const ifc::Entity* pB) {
            return model.data().iIdFromEntity(*pA) < model.data().iIdFromEntity(*pB);
        });
        return found;
    }
    if (ifc::Entity* pEntity = pEntitySelected(model, sWhat)) return {pEntity};
    if (!pSchema) throw Failure(fmt::format("{}: has no schema that is known", model.sName()));
    vUnknownType(*pSchema, sWhat);
}

ifc::Entity& entitySelected(Model& model, const std::string& sWhat) {
    ifc::Entity* pEntity = pEntitySelected(model, sWhat);
    if (!pEntity)
        throw Failure(fmt::format("{} is no number as #12 and no GlobalId of 22 characters", sPrintable(sWhat)));
    return *pEntity;
}

std::string sNumber(const Model& model, const ifc::Entity& entity) {
    return fmt::format("#{}", model.data().iIdFromEntity(entity));
}

}   // namespace oxa::tool
