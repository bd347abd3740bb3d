// SPDX-License-Identifier: Apache-2.0
// What the user means by WHAT: a number, a GlobalId or a type.
#include "oxaifc/verbs/Selection.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "Convert/EntityFromText.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "Model/Error.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

namespace schema = ifc::def::schema;

namespace {

// The entity of a word like "#12"; null for another number. Failure for a word that is no number.
ifc::Entity* pEntityFromNumber(const Model& model, const std::string& sNumber) {
    const std::optional<std::size_t> number = convert::numberFromText(sNumber);
    if (!number) throw Failure(fmt::format("{} is no number of an entity, as #12 is", sPrintable(sNumber)));
    return model.data().pEntityFromId(*number);
}

// The entity of a number or a GlobalId; null when the word is neither. Failure when the file has none of that name.
ifc::Entity* pEntitySelected(const Model& model, const std::string& sWhat) {
    const std::optional<Guid> guid = convert::guidFromText(sWhat);
    const bool boNumber = !guid && !sWhat.empty() && sWhat.find_first_not_of("0123456789") == std::string::npos;
    if (boNumber || (sWhat.starts_with('#') && sWhat.find_first_of(",+") == std::string::npos)) {
        const std::string sNumber = boNumber ? "#" + sWhat : sWhat;
        ifc::Entity* pEntity = pEntityFromNumber(model, sNumber);
        if (!pEntity) throw Failure(fmt::format("{}: there is no {}", model.sName(), sNumber));
        return pEntity;
    }
    if (!guid) return nullptr;
    ifc::Entity* pEntity = convert::pEntityFromGlobalId(model.data(), *guid);
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

std::optional<std::uint64_t> numberSelected(Model& model, const std::string& sWhat) {
    const ifc::Entity* pEntity = pEntitySelected(model, sWhat);
    return pEntity ? std::optional<std::uint64_t>(model.data().iIdFromEntity(*pEntity)) : std::nullopt;
}

ifc::Entity& entitySelected(Model& model, const std::string& sWhat) {
    ifc::Entity* pEntity = pEntitySelected(model, sWhat);
    if (!pEntity)
        throw Failure(fmt::format("{} is no number as #12 and no GlobalId of 22 characters", sPrintable(sWhat)));
    return *pEntity;
}

Selector selectorOf(const std::string& sQuery, const char* pPlace) try {
    return Selector(sQuery);
} catch (const QueryError& error) {
    throw Failure(fmt::format("{}, {}", pPlace, sPrintable(error.what())));
}

}   // namespace oxa::tool
