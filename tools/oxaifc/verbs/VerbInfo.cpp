// SPDX-License-Identifier: Apache-2.0
// VerbInfo: "oxaifc info": what a file holds, in figures.

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/System.h"
#include "oxaifc/report/HeaderRows.h"
#include "oxaifc/verbs/Several.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

using ifc::Errors;

struct InfoOptions : ModelOptions {
    std::vector<std::string> paths;
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
    std::size_t iGlobalIds = 0;
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

// An import of ifcXML and a read of the simple form make no map of them.
std::size_t iGlobalIds(const Model& model) {
    if (const std::size_t iCount = model.data().guidEntityMap().size()) return iCount;
    std::set<Guid> guids;
    const auto [first, last] = model.data().range(ifc::def::schema::ObjectName("IFCROOT"), true);
    for (auto it = first; it != last; ++it) {
        Guid guid;
        if ((*it)->boValueGet(ifc::def::schema::AttributeName("GlobalId"), guid) && !guid.boIsNull())
            guids.insert(guid);
    }
    return guids.size();
}

Figures figures(const Model& model) {
    const std::vector<ifc::Entity*>& entities = model.data().entities();
    Figures result;
    result.byType = byType(entities);
    result.iEntities = entities.size();
    result.iInverses = iInverses(entities);
    result.iGlobalIds = iGlobalIds(model);
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

Json figuresJson(const Model& model, const std::string& sPath, const Figures& all) {
    Json types = Json::object();
    for (const TypeCount& type : all.byType) types[type.sKeyword] = type.iCount;
    return {{"file", sPath},
            {"schema", model.sSchemaName()},
            {"header", model.pHeader() ? headerJson(*model.pHeader()) : rootJson(*model.pHeaderSimple())},
            {"entities", all.iEntities},
            {"byType", std::move(types)},
            {"rooted", all.iGlobalIds},
            {"inverses", all.iInverses},
            {"missingReferences", all.iMissing},
            {"errors", all.iErrors},
            {"fatal", all.iFatal},
            {"ok", model.boOk()},
            {"lostStatements", model.lostStatements().iCount},
            {"seconds", model.seconds()},
            {"bytes", model.iBytes()},
            {"memory", {{"model", model.data().pool().iBytesReserved()}, {"process", iPeakMemory()}}}};
}

std::string sRead(const Model& model) {
    if (model.boOk()) return model.sLost().empty() ? "to the end" : "to the end; " + model.sLost();
    for (const ifc::ErrorRecord& record : model.errors())
        if (record.severity == Errors::Fatal) return "not to the end: " + record.description;
    return "not to the end";
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
    for (const TypeCount& type : all.byType) output.vPrint("{:>20}  {}\n", sGrouped(type.iCount), type.sKeyword);
    vRow("GlobalIds", sGrouped(all.iGlobalIds));
    vRow("inverse entries", sGrouped(all.iInverses));
    vRow("missing references", sGrouped(all.iMissing));
    // What a read passes over without a report is not counted.
    if (model.format().holds.boReadTellsAll)
        vRow("errors", fmt::format("{}, fatal {}", sGrouped(all.iErrors), sGrouped(all.iFatal)));
    vRow("read", sRead(model));
    vRow("time", fmt::format("{:.3f} s", model.seconds()));
    constexpr double g_mebibyte = 1024.0 * 1024.0;
    vRow("memory", fmt::format("{:.1f} MiB for the model, {:.1f} MiB at most for the process",
                               static_cast<double>(model.data().pool().iBytesReserved()) / g_mebibyte,
                               static_cast<double>(iPeakMemory()) / g_mebibyte));
}

int iInfo(InfoOptions& options, Output& output) {
    const bool boSeveral = options.paths.size() > 1;
    bool boFirst = true;
    if (options.boJson && boSeveral) output.vJsonBegin();
    const int iCode = iForEachFile(options.paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        const Model model(options, false);
        const Figures all = figures(model);
        if (!options.boJson) {
            if (!std::exchange(boFirst, false)) output.vPrint("\n");
            vTextWrite(model, all, output);
        } else if (boSeveral) {
            output.vJsonItem(figuresJson(model, sPath, all));
        } else {
            output.vJson(figuresJson(model, sPath, all));
        }
        return model.iExitCode();
    });
    if (options.boJson && boSeveral) output.vJsonEnd();
    return iCode;
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<InfoOptions>();
    pOptions->vDeclareSeveral(command, pOptions->paths);
    command.flag("--json", pOptions->boJson, "print one JSON object; of several files an array of them");
    return [pOptions](Output& output) { return iInfo(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbInfo{"info", "What a file holds: schema, header, entities by type, memory", declare};

}   // namespace oxa::tool
