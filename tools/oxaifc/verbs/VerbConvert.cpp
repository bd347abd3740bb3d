// SPDX-License-Identifier: Apache-2.0
// VerbConvert: "oxaifc convert": a model read and written again.

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Convert/SchemaMove.h"
#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

struct ConvertOptions : WriteOptions {
    bool boRenumber = false;
    bool boAll = false;
    std::string sSchema;   // to move to; empty: that of the file
};

// What the project does not reach, by type. It goes to standard error, since OUT may be standard output.
void vLeftOutWrite(const ModelWrite& write, const Model& model) {
    std::map<std::string, std::size_t> counts;
    std::size_t iAll = 0;
    // Instances stand by their types.
    const ifc::def::schema::Entity* pType = nullptr;
    std::size_t* piCount = nullptr;
    write.vForEachUnwritten(model, [&](const ifc::Entity& entity) {
        if (!entity.pSchemaEntity()) return;
        if (entity.pSchemaEntity() != pType) piCount = &counts[entity.pSchemaEntity()->sNameUpper];
        pType = entity.pSchemaEntity();
        ++*piCount;
        ++iAll;
    });
    if (counts.empty()) return;
    std::vector<std::pair<std::string, std::size_t>> byCount(counts.begin(), counts.end());
    std::stable_sort(byCount.begin(), byCount.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
    std::string sText = fmt::format("left out, not connected with the project: {} (--all writes them)\n",
                                    iAll == 1 ? "1 entity" : sGrouped(iAll) + " entities");
    for (const auto& [sKeyword, iCount] : byCount) sText += fmt::format("{:>12}  {}\n", sGrouped(iCount), sKeyword);
    std::fputs(sText.c_str(), stderr);
}

// What another schema has no place for. Standard error, as above.
void vMoveTell(const convert::SchemaMove& move, const std::string& sSchema) {
    const auto vList = [](const std::vector<convert::SchemaMove::Row>& rows, const std::string& sTitle,
                          const char* pBetween) {
        if (rows.empty()) return;
        std::string sText = sTitle + '\n';
        for (const convert::SchemaMove::Row& row : rows)
            sText += fmt::format("{:>12}  {}{}{}\n", sGrouped(row.iCount), row.sType,
                                 row.sAttribute.empty() ? "" : pBetween, row.sAttribute);
        std::fputs(sText.c_str(), stderr);
    };
    vList(move.removed, "left out, of types that are not in " + sSchema + ":", "");
    vList(move.became, "of another type in " + sSchema + ":", " as ");
    vList(move.lost, "values that have no place in " + sSchema + ":", ".");
    vList(move.missing, "mandatory in " + sSchema + " and without a value:", ".");
}

int iConvert(const ConvertOptions& options) {
    const ifc::def::SchemaPset* pSchema = options.sSchema.empty() ? nullptr : &schemaBuiltIn(options.sSchema);
    ModelWrite write(options);
    const Format& format = *write.pFormat();
    if (options.boAll && !format.holds.boEveryEntity)
        throw Failure(fmt::format("convert: {0} holds what the project reaches, so --all and {0} don't go together",
                                  format.title));
    Model model(options, !options.boRenumber);
    const convert::SchemaMove move = pSchema ? convert::moveToSchema(model.file(), *pSchema) : convert::SchemaMove();
    const ifc::Entity* pProject = model.data().pProject();
    if (!pProject && !options.boAll && format.holds.boEveryEntity && model.boOk())
        throw Failure(fmt::format("{}: has no IFCPROJECT to start from; --all writes every entity", model.sName()));
    write.vWrite(model, options.boAll ? nullptr : pProject);
    if (format.holds.boEveryEntity)
        vLeftOutWrite(write, model);
    else
        write.vLeftOutTell(model);
    if (pSchema) vMoveTell(move, pSchema->sName);
    return std::max(write.iTell(model), move.boLossless() ? g_iExitFine : g_iExitErrors);
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<ConvertOptions>();
    pOptions->vDeclareIn(command);
    pOptions->vDeclareOut(command);
    pOptions->vDeclareFormat(command, formatsWith(&FormatHolds::boModel), &formatFromWord("step"));
    command.flag("--renumber", pOptions->boRenumber, "number the entities anew, from 1");
    command.flag("--all", pOptions->boAll, "every entity, also what is not connected with the project");
    command
        .option("--schema", pOptions->sSchema,
                "move the model to this built-in schema; what has no place there is told, with exit code 1")
        .value("NAME");
    return [pOptions](Output&) { return iConvert(*pOptions); };
}

}   // namespace

extern const Verb g_verbConvert{"convert", "Reads a file and writes what its project reaches", declare};

}   // namespace oxa::tool
