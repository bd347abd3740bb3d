#include "oxaifc/Selection.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include <fmt/format.h>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcGuid.h"
#include "oxaifc/Failure.h"
#include "oxaifc/NearNames.h"
#include "oxaifc/Output.h"

namespace oxa::tool {

namespace schema = ifc::def::schema;

namespace {

// The entity of a number or a GlobalId; null when the word is neither. Failure when the file has none of that name.
ifc::Entity* pEntitySelected(const Model& model, const std::string& sWhat) {
    if (sWhat.starts_with('#')) {
        ifc::Entity* pEntity = pEntityFromNumber(model, sWhat);
        if (!pEntity) throw Failure(fmt::format("{}: there is no {}", model.sName(), sWhat));
        return pEntity;
    }
    if (sWhat.size() != ifc::IfcGuid::Length) return nullptr;
    const std::optional<Guid> guid = ifc::IfcGuid::fromIfcGuid(sWhat);
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
    throw Failure(
        fmt::format("{} is no number as #12, no GlobalId and no entity of {}{}", sPrintable(sWhat), all.sName,
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
    if (sNumber.size() < 2 || pEnd != pLast ||
        (error != std::errc() && error != std::errc::result_out_of_range))
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
        throw Failure(
            fmt::format("{} is no number as #12 and no GlobalId of 22 characters", sPrintable(sWhat)));
    return *pEntity;
}

std::string sNumber(const Model& model, const ifc::Entity& entity) {
    return fmt::format("#{}", model.data().iIdFromEntity(entity));
}

}   // namespace oxa::tool
