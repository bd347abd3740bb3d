// VerbInfo: "oxaifc info": what a file holds, in figures.

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/HeaderRows.h"
#include "oxaifc/Model.h"
#include "oxaifc/Output.h"
#include "oxaifc/System.h"
#include "oxaifc/Verb.h"

namespace oxa::tool {

namespace {

using ifc::Errors;

struct InfoOptions : ModelOptions {
    bool boJson = false;
};

struct TypeCount {
    std::string sKeyword;
    std::size_t iCount;
};

// The figures of one model.
struct Figures {
    std::vector<TypeCount> byType;   // most frequent first, equal ones by keyword
    std::size_t iEntities = 0;
    std::size_t iInverses = 0;   // entries of all inverse lists
    std::size_t iErrors = 0;
    std::size_t iFatal = 0;
    std::size_t iMissing = 0;   // numbers that are named and never defined
};

std::vector<TypeCount> byType(const std::vector<ifc::Entity*>& entities) {
    std::unordered_map<const ifc::def::schema::Entity*, std::size_t> counts;
    for (const ifc::Entity* pEntity : entities)
        if (const auto* pType = pEntity->pSchemaEntity()) ++counts[pType];
    std::vector<TypeCount> result;
    for (const auto& [pType, iCount] : counts) result.push_back({pType->sNameUpper, iCount});
    std::sort(result.begin(), result.end(), [](const TypeCount& a, const TypeCount& b) {
        return a.iCount != b.iCount ? a.iCount > b.iCount : a.sKeyword < b.sKeyword;
    });
    return result;
}

std::size_t iInverses(const std::vector<ifc::Entity*>& entities) {
    std::size_t iCount = 0;
    for (const ifc::Entity* pEntity : entities)
        pEntity->boForEachInverseAttribute([&](const auto&, const ifc::EntityList& list) {
            for (auto it = list.begin(); it != list.end(); ++it) ++iCount;
            return false;
        });
    return iCount;
}

// An import of ifcXML leaves the map to the first look-up, which enters what waits.
std::size_t iGlobalIds(const ifc::Data& data) {
    static_cast<void>(data.pEntityFromGuid(Guid{}));
    return data.guidEntityMap().size();
}

Figures figures(const Model& model) {
    const std::vector<ifc::Entity*>& entities = model.data().entities();
    Figures result;
    result.byType = byType(entities);
    result.iEntities = entities.size();
    result.iInverses = iInverses(entities);
    for (const ifc::ErrorRecord& record : model.errors()) {
        ++(record.severity == Errors::Fatal ? result.iFatal : result.iErrors);
        if (record.category == Errors::Reference) ++result.iMissing;
    }
    return result;
}

// What the simple form tells instead of a header: where it starts.
Json rootJson(const ifc::FileHeaderSimple& head) {
    Json root = Json::object();
    if (const auto* pRoot = std::get_if<std::uint64_t>(&head.exportInfo))
        root["root"] = *pRoot;
    else if (std::holds_alternative<std::int32_t>(head.exportInfo))
        root["root"] = "*";
    return root;
}

void vJsonWrite(const Model& model, const std::string& sPath, const Figures& all, Output& output) {
    Json types = Json::object();
    for (const TypeCount& type : all.byType) types[type.sKeyword] = type.iCount;
    output.vJson(
        {{"file", sPath},
         {"schema", model.sSchemaName()},
         {"header", model.pHeader() ? headerJson(*model.pHeader()) : rootJson(*model.pHeaderSimple())},
         {"entities", all.iEntities},
         {"byType", std::move(types)},
         {"rooted", iGlobalIds(model.data())},
         {"inverses", all.iInverses},
         {"errors", all.iErrors},
         {"fatal", all.iFatal},
         {"ok", model.boOk()},
         {"seconds", model.seconds()},
         {"bytes", model.iBytes()}});
}

void vTextWrite(const Model& model, const Figures& all, Output& output) {
    const auto vRow = [&output](std::string_view name, std::string_view text) {
        if (!text.empty()) output.vPrint("{:<20}  {}\n", name, sPrintable(text));
    };
    vRow("file", model.sName());
    vRow("size", sCounted(model.iBytes(), "byte"));
    vRow("schema", model.sSchemaName());
    if (model.pHeader()) {
        vHeaderWrite(*model.pHeader(), output);
    } else {
        const Json root = rootJson(*model.pHeaderSimple());
        for (const auto& [sName, value] : root.items())
            vRow(sName, value.is_string() ? value.get<std::string>() : value.dump());
    }
    vRow("entities", sGrouped(all.iEntities));
    for (const TypeCount& type : all.byType)
        output.vPrint("{:>20}  {}\n", sGrouped(type.iCount), type.sKeyword);
    vRow("GlobalIds", sGrouped(iGlobalIds(model.data())));
    vRow("inverse entries", sGrouped(all.iInverses));
    vRow("missing references", sGrouped(all.iMissing));
    // What an import of ifcXML passes over, nobody counts.
    if (!model.boXml()) vRow("errors", fmt::format("{}, fatal {}", sGrouped(all.iErrors), sGrouped(all.iFatal)));
    vRow("read", model.boOk() ? "to the end" : "not to the end");
    vRow("time", fmt::format("{:.3f} s", model.seconds()));
    constexpr double g_mebibyte = 1024.0 * 1024.0;
    vRow("memory", fmt::format("{:.1f} MiB for the model, {:.1f} MiB at most for the process",
                               static_cast<double>(model.data().pool().iBytesReserved()) / g_mebibyte,
                               static_cast<double>(iPeakMemory()) / g_mebibyte));
}

int iInfo(const InfoOptions& options, Output& output) {
    const Model model(options, false);
    const Figures all = figures(model);
    if (options.boJson)
        vJsonWrite(model, options.sPath, all, output);
    else
        vTextWrite(model, all, output);
    return model.iExitCode();
}

}   // namespace

VerbRun verbInfo(CLI::App& command) {
    const auto pOptions = std::make_shared<InfoOptions>();
    pOptions->vDeclare(command);
    command.add_flag("--json", pOptions->boJson, "print one JSON object");
    return [pOptions](Output& output) { return iInfo(*pOptions, output); };
}

}   // namespace oxa::tool
