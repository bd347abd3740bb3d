// SPDX-License-Identifier: Apache-2.0
// VerbShow: "oxaifc show": entities with their attributes, values and referrers.

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/TypedJson.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

namespace schema = ifc::def::schema;

struct ShowOptions : ModelOptions {
    std::string sWhat;
    bool boSubtypes = false;
    bool boJson = false;
};

struct AttributeFacts {
    std::string sName, sType, sValue;
};
struct InverseFacts {
    std::string sName;
    std::vector<std::size_t> numbers;
};

std::vector<AttributeFacts> attributes(const ifc::Entity& entity, const Model& model) {
    std::vector<AttributeFacts> result;
    (void)entity.boForEachAttribute([&](const schema::Attribute& attribute, const ifc::AttributeBase& cell) {
        result.push_back(
            {attribute.sName, schema::sTypeText(attribute.pType()), cell.sWriteLine(attribute, model.data(), true)});
        return false;
    });
    return result;
}

std::vector<InverseFacts> inverses(const ifc::Entity& entity, const Model& model) {
    std::vector<InverseFacts> result;
    (void)entity.boForEachInverseAttribute([&](const schema::AttributeInverse& attribute, const ifc::EntityList& list) {
        InverseFacts& facts = result.emplace_back(InverseFacts{attribute.sName, {}});
        for (const ifc::Entity* pReferrer : list) facts.numbers.push_back(model.data().iIdFromEntity(*pReferrer));
        return false;
    });
    return result;
}

// The typed form, with who refers to the entity, by number, and its statement.
Json entityJson(const ifc::Entity& entity, const ElementModel& file, const Model& model) {
    Json json = typedJson(file.model().byId(model.data().iIdFromEntity(entity)));
    Json& lists = json["inverses"] = Json::object();
    for (InverseFacts& facts : inverses(entity, model)) {
        std::sort(facts.numbers.begin(), facts.numbers.end());
        Json& list = lists[facts.sName] = Json::array();
        for (const std::size_t iNumber : facts.numbers) list.push_back(Json{{"ref", iNumber}});
    }
    json["statement"] = entity.sWriteLine(model.data());
    return json;
}

void vEntityWrite(const ifc::Entity& entity, const Model& model, Output& output) {
    output.vPrint("{}\n", output.sTinted(Tint::Bold, sPrintable(entity.sWriteLine(model.data()))));
    for (const AttributeFacts& facts : attributes(entity, model))
        output.vPrint("  {} : {} = {}\n", facts.sName, facts.sType, sPrintable(facts.sValue));
    for (const InverseFacts& facts : inverses(entity, model))
        output.vPrint("  {} <- #{}\n", facts.sName, fmt::join(facts.numbers, ", #"));
}

// What to say of a type that the model does not use: "no IfcWall", and of which of its subtypes there are some.
std::string sNothing(Model& model, const ShowOptions& options) {
    std::string sText = fmt::format("{}: no {}", model.sName(), options.sWhat);
    if (options.boSubtypes) return sText;
    std::map<std::string, std::size_t> counts;
    for (const ifc::Entity* pEntity : entitiesSelected(model, options.sWhat, true))
        ++counts[pEntity->schemaEntity().sName];
    if (counts.empty()) return sText + "; --subtypes shows those of its subtypes too";
    std::string sTypes;
    for (const auto& [sType, iCount] : counts)
        sTypes += fmt::format("{}{} {}", sTypes.empty() ? "" : ", ", sGrouped(iCount), sType);
    return fmt::format("{}, but {}; --subtypes shows those too", sText, sTypes);
}

int iShow(const ShowOptions& options, Output& output) {
    ElementModel file(options);
    Model& model = file.file();
    const std::vector<ifc::Entity*> entities = entitiesSelected(model, options.sWhat, options.boSubtypes);
    if (options.boJson) output.vJsonBegin();
    for (const ifc::Entity* pEntity : entities) {
        if (!output.boWanted()) break;
        if (options.boJson)
            output.vJsonItem(entityJson(*pEntity, file, model));
        else
            vEntityWrite(*pEntity, model, output);
    }
    if (options.boJson) output.vJsonEnd();
    if (!entities.empty()) return model.iExitCode();
    if (options.boJson)
        vTell(sNothing(model, options));
    else
        output.vPrint("{}\n", sPrintable(sNothing(model, options)));
    return model.iExitCode();
}

constexpr const char* g_pWhatHelp =
    "a number as 12 or '#12', a GlobalId (22 characters or hexadecimal), or a type in any case";

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<ShowOptions>();
    pOptions->vDeclare(command);
    command.option("WHAT", pOptions->sWhat, g_pWhatHelp).required().value("");
    command.flag("--subtypes", pOptions->boSubtypes, "with a type: its subtypes too");
    command.flag("--json", pOptions->boJson, "print a JSON array with one object an entity");
    return [pOptions](Output& output) { return iShow(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbShow{"show", "Entities with their attributes, values and referrers", declare};

}   // namespace oxa::tool
