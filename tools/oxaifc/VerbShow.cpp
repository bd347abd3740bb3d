// VerbShow: "oxaifc show": entities with their attributes, values and referrers.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/Model.h"
#include "oxaifc/Output.h"
#include "oxaifc/Selection.h"
#include "oxaifc/Verb.h"

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
        result.push_back({attribute.sName,
                          schema::sTypeText(attribute.types.empty() ? nullptr : attribute.types.front()),
                          cell.sWriteLine(attribute, model.data(), true)});
        return false;
    });
    return result;
}

std::vector<InverseFacts> inverses(const ifc::Entity& entity, const Model& model) {
    std::vector<InverseFacts> result;
    (void)entity.boForEachInverseAttribute(
        [&](const schema::AttributeInverse& attribute, const ifc::EntityList& list) {
            InverseFacts& facts = result.emplace_back(InverseFacts{attribute.sName, {}});
            for (const ifc::Entity* pReferrer : list)
                facts.numbers.push_back(model.data().iIdFromEntity(*pReferrer));
            return false;
        });
    return result;
}

Json entityJson(const ifc::Entity& entity, const Model& model) {
    Json attributeArray = Json::array();
    for (const AttributeFacts& facts : attributes(entity, model))
        attributeArray.push_back({{"name", facts.sName}, {"type", facts.sType}, {"value", facts.sValue}});
    Json inverseArray = Json::array();
    for (const InverseFacts& facts : inverses(entity, model))
        inverseArray.push_back({{"name", facts.sName}, {"entities", facts.numbers}});
    return {{"id", model.data().iIdFromEntity(entity)},
            {"type", entity.schemaEntity().sNameUpper},
            {"statement", entity.sWriteLine(model.data())},
            {"attributes", std::move(attributeArray)},
            {"inverses", std::move(inverseArray)}};
}

void vEntityWrite(const ifc::Entity& entity, const Model& model, Output& output) {
    output.vPrint("{}\n", sPrintable(entity.sWriteLine(model.data())));
    for (const AttributeFacts& facts : attributes(entity, model))
        output.vPrint("  {} : {} = {}\n", facts.sName, facts.sType, sPrintable(facts.sValue));
    for (const InverseFacts& facts : inverses(entity, model))
        output.vPrint("  {} <- #{}\n", facts.sName, fmt::join(facts.numbers, ", #"));
}

int iShow(const ShowOptions& options, Output& output) {
    Model model(options, true);
    const std::vector<ifc::Entity*> entities = entitiesSelected(model, options.sWhat, options.boSubtypes);
    if (options.boJson) output.vJsonBegin();
    for (const ifc::Entity* pEntity : entities) {
        if (!output.boWanted()) break;
        if (options.boJson)
            output.vJsonItem(entityJson(*pEntity, model));
        else
            vEntityWrite(*pEntity, model, output);
    }
    if (options.boJson)
        output.vJsonEnd();
    else if (entities.empty())
        output.vPrint("{}: no {}{}\n", sPrintable(model.sName()), sPrintable(options.sWhat),
                      options.boSubtypes ? "" : "; --subtypes shows those of its subtypes too");
    return model.iExitCode();
}

}   // namespace

VerbRun verbShow(CLI::App& command) {
    const auto pOptions = std::make_shared<ShowOptions>();
    pOptions->vDeclare(command);
    command.add_option("WHAT", pOptions->sWhat, "a number as #12, a GlobalId, or a type in any case")
        ->required()
        ->type_name("");
    command.add_flag("--subtypes", pOptions->boSubtypes, "with a type: its subtypes too");
    command.add_flag("--json", pOptions->boJson, "print a JSON array with one object an entity");
    return [pOptions](Output& output) { return iShow(*pOptions, output); };
}

}   // namespace oxa::tool
