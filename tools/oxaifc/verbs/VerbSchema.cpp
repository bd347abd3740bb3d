// SPDX-License-Identifier: Apache-2.0
// VerbSchema: "oxaifc schema": what a schema says of its entities and types.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "oxaifc/formats/SchemaSource.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/Verb.h"
#include "provider/SchemaLoader.h"
#include "schema/Schema.h"

namespace oxa::tool {

namespace {

namespace schema = ifc::def::schema;

struct SchemaOptions {
    std::string sFirst;    // NAME; with --file ENTITY or TYPE
    std::string sSecond;   // ENTITY or TYPE
    std::string sFile;
    bool boAll = false;
    bool boJson = false;
};

std::string sAttributeType(const schema::Attribute& attribute) { return schema::sTypeText(attribute.pType()); }

std::string sDeclaredType(const schema::Type& type) {
    if (type.pDeclared) return type.pDeclared->sName;
    return type.pDataType ? schema::sTypeText(type.pDataType) : "?";
}

std::vector<std::string> memberNames(const std::vector<const schema::ObjectBase*>& members) {
    std::vector<std::string> names;
    for (const schema::ObjectBase* pMember : members) names.push_back(pMember->sName);
    return names;
}

Json entityJson(const schema::Entity& entity) {
    Json attributes = Json::array();
    for (const schema::Attribute* pAttribute : entity.allAttributes())
        attributes.push_back(
            {{"name", pAttribute->sName}, {"optional", pAttribute->boOptional}, {"type", sAttributeType(*pAttribute)}});
    Json inverses = Json::array();
    for (const schema::AttributeInverse* pInverse : entity.allInverseAttributes())
        inverses.push_back({{"name", pInverse->sName},
                            {"entity", pInverse->pForEntity ? pInverse->pForEntity->sName : std::string()},
                            {"attribute", pInverse->sForAttribute}});
    return {{"name", entity.sName},
            {"supertype", entity.pParent ? Json(entity.pParent->sName) : Json(nullptr)},
            {"abstract", entity.boAbstract},
            {"attributes", std::move(attributes)},
            {"inverses", std::move(inverses)}};
}

void vEntityWrite(const schema::Entity& entity, Output& output) {
    output.vPrint("{}: {}entity\n", entity.sName, entity.boAbstract ? "abstract " : "");
    if (entity.pParent) {
        output.vPrint("  supertypes:");
        for (const schema::Entity* p = entity.pParent; p; p = p->pParent) output.vPrint(" {}", p->sName);
        output.vPrint("\n");
    }
    if (!entity.subtypes.empty()) {
        output.vPrint("  subtypes:");
        for (const schema::Entity* pSubtype : entity.subtypes) output.vPrint(" {}", pSubtype->sName);
        output.vPrint("\n");
    }
    if (!entity.allAttributes().empty()) output.vPrint("  attributes:\n");
    std::size_t iNumber = 0;
    for (const schema::Attribute* pAttribute : entity.allAttributes()) {
        output.vPrint("  {:>4} {} : {}{}", ++iNumber, pAttribute->sName, pAttribute->boOptional ? "OPTIONAL " : "",
                      sAttributeType(*pAttribute));
        if (pAttribute->pOwner != &entity) output.vPrint("   ({})", pAttribute->pOwner->sName);
        output.vPrint("\n");
    }
    if (!entity.allInverseAttributes().empty()) output.vPrint("  inverses:\n");
    for (const schema::AttributeInverse* pInverse : entity.allInverseAttributes())
        output.vPrint("       {} : {} FOR {}\n", pInverse->sName,
                      pInverse->pForEntity ? pInverse->pForEntity->sName : "?", pInverse->sForAttribute);
}

// What a defined type is: its declared type, and the enumerators or the members behind it.
struct TypeFacts {
    std::string_view kind = "type";
    std::vector<std::string> items;

    explicit TypeFacts(const schema::Type& type) {
        if (const auto* pEnum = dynamic_cast<const schema::DataTypeEnum*>(type.pDataType)) {
            kind = "enumeration";
            items = pEnum->declared;
        } else if (const auto* pSelect = dynamic_cast<const schema::DataTypeSelect*>(type.pDataType)) {
            kind = "select";
            items = memberNames(pSelect->members);
        }
    }
    [[nodiscard]] const char* pItemsName() const { return kind == "select" ? "members" : "enumerators"; }
};

Json typeJson(const schema::Type& type) {
    const TypeFacts facts(type);
    Json result = {{"name", type.sName}, {"kind", facts.kind}};
    if (facts.kind == "type" || type.pDeclared) result["type"] = sDeclaredType(type);
    if (facts.kind != "type") result[facts.pItemsName()] = facts.items;
    return result;
}

void vTypeWrite(const schema::Type& type, Output& output) {
    const TypeFacts facts(type);
    output.vPrint("{}: {}\n", type.sName, facts.kind);
    if (facts.kind == "type" || type.pDeclared) output.vPrint("  declared as: {}\n", sDeclaredType(type));
    if (facts.kind == "type") return;
    output.vPrint("  {}:\n", facts.pItemsName());
    for (const std::string& sItem : facts.items) output.vPrint("    {}\n", sItem);
}

void vSummaryWrite(const schema::Schema& all, bool boJson, Output& output) {
    std::size_t iEntities = 0, iAbstract = 0, iTypes = 0, iEnumerations = 0, iSelects = 0;
    for (const schema::Schema::Record& record : all.objects) {
        if (const auto* pEntity = schema::pAsEntity(record.pObject)) {
            ++iEntities;
            iAbstract += pEntity->boAbstract ? 1U : 0U;
        } else if (const auto* pType = schema::pAsType(record.pObject)) {
            const TypeFacts facts(*pType);
            ++(facts.kind == "select" ? iSelects : facts.kind == "enumeration" ? iEnumerations : iTypes);
        }
    }
    if (boJson) {
        output.vJson({{"name", all.sName},
                      {"entities", iEntities},
                      {"abstract", iAbstract},
                      {"types", iTypes},
                      {"enumerations", iEnumerations},
                      {"selects", iSelects}});
        return;
    }
    output.vPrint("schema        {}\nentities      {}, abstract {}\ntypes         {}\nenumerations  {}\n"
                  "selects       {}\n",
                  all.sName, iEntities, iAbstract, iTypes, iEnumerations, iSelects);
}

// By name, which is how people look them up.
std::vector<const schema::ObjectBase*> objectsByName(const schema::Schema& all) {
    std::vector<const schema::ObjectBase*> objects;
    for (const schema::Schema::Record& record : all.objects) objects.push_back(record.pObject);
    std::sort(objects.begin(), objects.end(),
              [](const auto* pA, const auto* pB) { return pA->sNameUpper < pB->sNameUpper; });
    return objects;
}

void vAllWrite(const schema::Schema& all, bool boJson, Output& output) {
    if (boJson) output.vJsonBegin();
    for (const schema::ObjectBase* pObject : objectsByName(all)) {
        const schema::Entity* pEntity = schema::pAsEntity(pObject);
        if (!pEntity || !output.boWanted()) continue;
        if (boJson)
            output.vJsonItem(entityJson(*pEntity));
        else
            vEntityWrite(*pEntity, output);
    }
    if (boJson) output.vJsonEnd();
}

void vObjectWrite(const schema::Schema& all, const std::string& sName, bool boJson, Output& output) {
    const schema::ObjectBase* pObject = all.pObjectFromName(std::string_view(sName));
    if (const schema::Entity* pEntity = schema::pAsEntity(pObject)) {
        if (boJson)
            output.vJson(entityJson(*pEntity));
        else
            vEntityWrite(*pEntity, output);
    } else if (const schema::Type* pType = schema::pAsType(pObject)) {
        if (boJson)
            output.vJson(typeJson(*pType));
        else
            vTypeWrite(*pType, output);
    } else {
        std::vector<std::string_view> names;
        for (const schema::Schema::Record& record : all.objects) names.push_back(record.pObject->sName);
        const std::vector<std::string_view> close = nearNames(sName, names);
        throw Failure(fmt::format("{} has no entity or type {}{}", all.sName, sPrintable(sName),
                                  close.empty() ? "" : fmt::format("; did you mean {}?", fmt::join(close, ", "))));
    }
}

// The wrong calls that the parser of the command line lets pass.
void vCallCheck(const SchemaOptions& options) {
    if (options.sFile.empty() && options.sFirst.empty())
        throw Failure(fmt::format("schema: a NAME or --file is missing; built in are: {}",
                                  fmt::join(ifc::SchemaLoader::builtInNames(), ", ")));
    if (!options.sFile.empty() && !options.sSecond.empty())
        throw Failure("schema: with --file there is no NAME, only an ENTITY or TYPE");
    if (options.boAll && !(options.sFile.empty() ? options.sSecond : options.sFirst).empty())
        throw Failure("schema: --all and an ENTITY or TYPE exclude each other");
}

int iSchema(const SchemaOptions& options, Output& output) {
    vCallCheck(options);
    const std::unique_ptr<ifc::def::SchemaPset> pOwned =
        options.sFile.empty() ? nullptr : pSchemaFromFile(options.sFile);
    const schema::Schema& all = pOwned ? *pOwned : schemaBuiltIn(options.sFirst);
    const std::string& sObject = pOwned ? options.sFirst : options.sSecond;
    if (options.boAll)
        vAllWrite(all, options.boJson, output);
    else if (!sObject.empty())
        vObjectWrite(all, sObject, options.boJson, output);
    else
        vSummaryWrite(all, options.boJson, output);
    return g_iExitFine;
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<SchemaOptions>();
    command.option("NAME", pOptions->sFirst, "a built-in schema, as IFC4; left out with --file").value("");
    command.option("ENTITY", pOptions->sSecond, "an entity or type of it, in any case; without: a summary").value("");
    command.option("--file", pOptions->sFile, "read the schema from this EXPRESS file instead; - for standard input")
        .value("X.exp");
    command.flag("--all", pOptions->boAll, "all entities");
    command.flag("--json", pOptions->boJson, "print JSON");
    return [pOptions](Output& output) { return iSchema(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbSchema{"schema", "What a schema says of its entities and types", declare};

}   // namespace oxa::tool
