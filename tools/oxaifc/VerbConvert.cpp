// VerbConvert: "oxaifc convert": a model read and written again.

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/Failure.h"
#include "oxaifc/ModelWrite.h"
#include "oxaifc/Output.h"
#include "oxaifc/Verb.h"

namespace oxa::tool {

namespace {

struct ConvertOptions : WriteOptions {
    bool boRenumber = false;
    bool boAll = false;
};

// What the project does not reach, by type. It goes to standard error, since OUT may be standard output.
void vLeftOutWrite(const ModelWrite& write, const Model& model) {
    std::map<std::string, std::size_t> counts;
    std::size_t iAll = 0;
    for (const ifc::Entity* pEntity : model.data().entities()) {
        if (!pEntity->pSchemaEntity() || write.boWritten(model, *pEntity)) continue;
        ++counts[pEntity->pSchemaEntity()->sNameUpper];
        ++iAll;
    }
    if (counts.empty()) return;
    std::vector<std::pair<std::string, std::size_t>> byCount(counts.begin(), counts.end());
    std::stable_sort(byCount.begin(), byCount.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    std::string sText = fmt::format("left out, not connected with the project: {} (--all writes them)\n",
                                    iAll == 1 ? "1 entity" : sGrouped(iAll) + " entities");
    for (const auto& [sKeyword, iCount] : byCount)
        sText += fmt::format("{:>12}  {}\n", sGrouped(iCount), sKeyword);
    std::fputs(sText.c_str(), stderr);
}

int iConvert(const ConvertOptions& options) {
    ModelWrite write(options);
    Model model(options, !options.boRenumber);
    const ifc::Entity* pProject = model.data().pProject();
    if (!pProject && !options.boAll && model.boOk())
        throw Failure(
            fmt::format("{}: has no IFCPROJECT to start from; --all writes every entity", model.sName()));
    write.vExchangeWrite(model, options.boAll ? nullptr : pProject);
    vLeftOutWrite(write, model);
    return write.iTell(model);
}

}   // namespace

VerbRun verbConvert(CLI::App& command) {
    const auto pOptions = std::make_shared<ConvertOptions>();
    pOptions->vDeclareIn(command);
    pOptions->vDeclareOut(command);
    command.add_flag("--renumber", pOptions->boRenumber, "number the entities anew, from 1");
    command.add_flag("--all", pOptions->boAll, "every entity, also what is not connected with the project");
    return [pOptions](Output&) { return iConvert(*pOptions); };
}

}   // namespace oxa::tool
