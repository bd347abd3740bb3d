// SPDX-License-Identifier: Apache-2.0
// VerbInfo: "oxaifc info": what a file holds, in figures.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/formats/CountedFile.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Failure.h"
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
    bool boFull = false;
};

struct TypeCount {
    std::string sKeyword;
    std::size_t iCount;
};

// What only the read of a model tells.
struct ReadFigures {
    std::size_t iInverses = 0;   // entries of all inverse lists
    std::size_t iErrors = 0;
    std::size_t iFatal = 0;
    std::size_t iMissing = 0;   // numbers that are named and never defined
    std::size_t iLost = 0;      // statements
    std::size_t iMemory = 0;    // bytes
    bool boTellsAll = true;     // what the read passes over is counted
    bool boOk = true;
    std::string sRead;     // whether it came to the end
    std::string sReason;   // why it was read
};

// The figures of one file.
struct Figures {
    std::string sName;   // how messages call it
    std::string sSchema;
    const ifc::FileHeader* pHeader = nullptr;
    const ifc::FileHeaderSimple* pHeaderSimple = nullptr;
    std::vector<TypeCount> byType;   // most frequent first, equal ones by keyword
    std::size_t iEntities = 0;
    std::size_t iGlobalIds = 0;
    std::uint64_t iBytes = 0;
    double seconds = 0;
    std::optional<ReadFigures> read;   // none where the statements were counted
};

void vOrder(std::vector<TypeCount>& types) {
    std::sort(types.begin(), types.end(), [](const TypeCount& a, const TypeCount& b) {
        return a.iCount != b.iCount ? a.iCount > b.iCount : a.sKeyword < b.sKeyword;
    });
}

// The entities of a type stand together.
std::vector<TypeCount> byType(const std::vector<ifc::Entity*>& entities) {
    std::vector<TypeCount> result;
    for (auto first = entities.begin(); first != entities.end();) {
        const auto* pType = (*first)->pSchemaEntity();
        const auto last = std::partition_point(
            first, entities.end(), [pType](const ifc::Entity* pEntity) { return pEntity->pSchemaEntity() == pType; });
        if (pType) result.push_back({pType->sNameUpper, static_cast<std::size_t>(last - first)});
        first = last;
    }
    vOrder(result);
    return result;
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

std::string sRead(const Model& model) {
    if (model.boOk()) return model.sLost().empty() ? "to the end" : "to the end; " + model.sLost();
    for (const ifc::ErrorRecord& record : model.errors())
        if (record.severity == Errors::Fatal) return "not to the end: " + record.description;
    return "not to the end";
}

Figures figures(const Model& model, std::string_view reason) {
    const std::vector<ifc::Entity*>& entities = model.data().entities();
    ReadFigures read{.iInverses = model.data().iInverseEntries(),
                     .iLost = model.lostStatements().iCount,
                     .iMemory = model.data().pool().iBytesReserved(),
                     .boTellsAll = model.format().holds.boReadTellsAll,
                     .boOk = model.boOk(),
                     .sRead = sRead(model),
                     .sReason = std::string(reason)};
    for (const ifc::ErrorRecord& record : model.errors()) {
        ++(record.severity == Errors::Fatal ? read.iFatal : read.iErrors);
        if (record.category == Errors::Reference) ++read.iMissing;
    }
    return {.sName = model.sName(),
            .sSchema = model.sSchemaName(),
            .pHeader = model.pHeader(),
            .pHeaderSimple = model.pHeaderSimple(),
            .byType = byType(entities),
            .iEntities = entities.size(),
            .iGlobalIds = iGlobalIds(model),
            .iBytes = model.iBytes(),
            .seconds = model.seconds(),
            .read = std::move(read)};
}

Figures figures(const CountedFile& file) {
    const ifc::io::FileCount& count = file.count();
    std::vector<TypeCount> types;
    for (const auto& [pType, iCount] : count.types) types.push_back({pType->sNameUpper, iCount});
    vOrder(types);
    return {.sName = file.sName(),
            .sSchema = count.pFile->headerBase().sSchemaNameGet(),
            .pHeader = &count.pFile->header(),
            .byType = std::move(types),
            .iEntities = count.iEntities,
            .iGlobalIds = count.iGlobalIds,
            .iBytes = count.iBytes,
            .seconds = file.seconds(),
            .read = {}};
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

// What was not looked for is null.
Json figuresJson(const Figures& all, const std::string& sPath) {
    Json types = Json::object();
    for (const TypeCount& type : all.byType) types[type.sKeyword] = type.iCount;
    const auto ofRead = [&all](auto ReadFigures::*pFigure) { return all.read ? Json((*all.read).*pFigure) : Json(); };
    const ReadFigures counted;
    const ReadFigures& read = all.read ? *all.read : counted;
    return {{"file", sPath},
            {"schema", all.sSchema},
            {"header", all.pHeader ? headerJson(*all.pHeader) : rootJson(*all.pHeaderSimple)},
            {"entities", all.iEntities},
            {"byType", std::move(types)},
            {"rooted", all.iGlobalIds},
            {"inverses", ofRead(&ReadFigures::iInverses)},
            {"missingReferences", ofRead(&ReadFigures::iMissing)},
            {"errors", ofRead(&ReadFigures::iErrors)},
            {"fatal", read.iFatal},
            {"ok", read.boOk},
            {"lostStatements", read.iLost},
            {"full", all.read.has_value()},
            {"fullReason", ofRead(&ReadFigures::sReason)},
            {"seconds", all.seconds},
            {"bytes", all.iBytes},
            {"memory", {{"model", ofRead(&ReadFigures::iMemory)}, {"process", iPeakMemory()}}}};
}

void vTextWrite(const Figures& all, Output& output) {
    const auto vRow = [&output](std::string_view name, std::string_view text) {
        if (!text.empty()) output.vPrint("{:<20}  {}\n", name, sPrintable(text));
    };
    vRow("file", all.sName);
    vRow("size", sCounted(all.iBytes, "byte"));
    vRow("schema", all.sSchema);
    if (all.pHeader) {
        vHeaderWrite(*all.pHeader, output);
    } else {
        const Json root = rootJson(*all.pHeaderSimple);
        for (const auto& [sName, value] : root.items())
            vRow(sName, value.is_string() ? value.get<std::string>() : value.dump());
    }
    vRow("entities", sGrouped(all.iEntities));
    for (const TypeCount& type : all.byType) output.vPrint("{:>20}  {}\n", sGrouped(type.iCount), type.sKeyword);
    vRow("GlobalIds", sGrouped(all.iGlobalIds));
    if (all.read) {
        vRow("inverse entries", sGrouped(all.read->iInverses));
        vRow("missing references", sGrouped(all.read->iMissing));
        if (all.read->boTellsAll)
            vRow("errors", fmt::format("{}, fatal {}", sGrouped(all.read->iErrors), sGrouped(all.read->iFatal)));
        vRow("read", all.read->sRead);
        vRow("in full", all.read->sReason);
    } else {
        vRow("read", "statements counted, to the end; errors, missing references and inverse entries with --full");
    }
    vRow("time", fmt::format("{:.3f} s", all.seconds));
    constexpr double g_mebibyte = 1024.0 * 1024.0;
    std::string sMemory =
        fmt::format("{:.1f} MiB at most for the process", static_cast<double>(iPeakMemory()) / g_mebibyte);
    if (all.read)
        sMemory =
            fmt::format("{:.1f} MiB for the model, ", static_cast<double>(all.read->iMemory) / g_mebibyte) + sMemory;
    vRow("memory", sMemory);
}

int iInfo(InfoOptions& options, Output& output) {
    const bool boSeveral = options.paths.size() > 1;
    bool boFirst = true;
    const auto vTell = [&](const Figures& all, const std::string& sPath) {
        if (!options.boJson) {
            if (!std::exchange(boFirst, false)) output.vPrint("\n");
            vTextWrite(all, output);
        } else if (boSeveral) {
            output.vJsonItem(figuresJson(all, sPath));
        } else {
            output.vJson(figuresJson(all, sPath));
        }
    };
    if (options.boJson && boSeveral) output.vJsonBegin();
    const int iCode = iForEachFile(options.paths, [&](const std::string& sPath) {
        options.sPath = sPath;
        std::string sReason = "as --full asks";
        if (!options.boFull) {
            const CountedFile file(options);
            if (file.doubt().empty()) {
                vTell(figures(file), sPath);
                return g_iExitFine;
            }
            sReason = file.doubt();
        }
        const Model model(options, false);
        vTell(figures(model, sReason), sPath);
        return model.iExitCode();
    });
    if (options.boJson && boSeveral) output.vJsonEnd();
    return iCode;
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<InfoOptions>();
    pOptions->vDeclareSeveral(command, pOptions->paths);
    command.flag("--full", pOptions->boFull,
                 "read the values too: errors (exit code 1), missing references, inverse entries, memory; without it "
                 "a STEP file is only counted, unless something about it is doubtful");
    command.flag("--json", pOptions->boJson, "print one JSON object; of several files an array of them");
    return [pOptions](Output& output) { return iInfo(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbInfo{"info", "What a file holds: schema, header, entities by type", declare};

}   // namespace oxa::tool
