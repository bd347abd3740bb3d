// SPDX-License-Identifier: Apache-2.0
// VerbDiff: "oxaifc diff": what one model has and says otherwise than another, by element.

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "Compare/Elements.h"
#include "Model/Selector.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Target.h"
#include "oxaifc/report/DiffText.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostTextShown = 100;   // bytes of a value; JSON has ten times as many
constexpr std::size_t g_iMostTextJson = 1000;

struct DiffOptions : ModelOptions {
    std::string sPathNew;
    std::string sOnly, sHtml;
    bool boJson = false;
    bool boCsv = false;
    bool boAll = false;
    bool boEntities = false;
};

// Errors may have cost an entity or a value: they are told.
void vCheck(const Model& model) {
    model.vWholeCheck("compared");
    if (!model.errors().empty())
        std::fputs(fmt::format("oxaifc: {}: {} while reading; what could not be read is not compared\n",
                               sPrintable(model.sName()), sCounted(model.errors().size(), "error"))
                       .c_str(),
                   stderr);
}

int iTell(const DiffOptions& options, const compare::ElementResult& diff, Target* pPage, const std::string& sOld,
          const std::string& sNew, Output& output) {
    if (pPage) {
        pPage->stream() << sDiffPage(diff, sOld, sNew);
        pPage->vFinish();
    }
    if (options.boJson)
        output.vJson(diffJson(diff.entities, &diff));
    else if (options.boCsv)
        vDiffTable(diff, output);
    else if (options.sHtml != "-")
        vDiffLines(diff, options.boAll, output);
    const bool boEqual = diff.others.boEqual() && diff.removed.empty() && diff.added.empty() && diff.changed.empty();
    return boEqual ? g_iExitFine : g_iExitErrors;
}

// A model without a schema has entities alone.
int iEntities(const DiffOptions& options, const Model& before, const Model& after, Output& output) {
    const auto side = [](const Model& model) {
        return compare::Side{model.data(), model.sSchemaName(), model.errors()};
    };
    const compare::Result diff = compare::differences(
        side(before), side(after), {.iMostText = options.boJson ? g_iMostTextJson : g_iMostTextShown});
    if (options.boJson)
        output.vJson(diffJson(diff, nullptr));
    else
        vEntityLines(diff, output);
    return diff.boEqual() ? g_iExitFine : g_iExitErrors;
}

int iDiff(const DiffOptions& options, Output& output) {
    if (options.sPath == "-" && options.sPathNew == "-") throw Failure("diff: A and B can't both be standard input");
    std::optional<Selector> only;
    if (!options.sOnly.empty()) only = selectorOf(options.sOnly, "diff: --only");
    std::optional<Target> page;
    if (!options.sHtml.empty()) page.emplace(options.sHtml);
    for (const std::string* pPath : {&options.sPath, &options.sPathNew})
        if (page && page->boIs(*pPath)) throw Failure(fmt::format("{}: is a file that is read", page->sName()));
    ModelOptions optionsNew = options;
    optionsNew.sPath = options.sPathNew;
    Model before(options, true);
    vCheck(before);
    Model after(optionsNew, true);
    vCheck(after);
    if (options.boEntities) return iEntities(options, before, after, output);
    oxa::Model elementsBefore = elementsOf(before);
    oxa::Model elementsAfter = elementsOf(after);
    compare::ElementOptions how{{.iMostText = options.boJson ? g_iMostTextJson : g_iMostTextShown}, nullptr};
    if (only) how.pOnly = &*only;
    try {
        const compare::ElementResult diff =
            compare::elementDifferences({elementsBefore, before.sSchemaName(), before.errors()},
                                        {elementsAfter, after.sSchemaName(), after.errors()}, how);
        return iTell(options, diff, page ? &*page : nullptr, before.sName(), after.sName(), output);
    } catch (const NameError& error) {
        throw Failure(fmt::format("diff: --only, {}", sPrintable(error.what())));
    }
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<DiffOptions>();
    pOptions->vDeclare(command, "A");
    command.option("B", pOptions->sPathNew, "the file to compare it with; - for standard input").required().value("");
    const CommandOption only =
        command
            .option("--only", pOptions->sOnly,
                    "of these elements alone, selected in either file, as in 'IfcWall, storey=EG'")
            .value("QUERY");
    command.flag("--all", pOptions->boAll, "a line for each element, where several have the same change");
    const CommandOption csv = command.flag("--csv", pOptions->boCsv, "print CSV (RFC 4180), a row for each change");
    const CommandOption html =
        command.option("--html", pOptions->sHtml, "write a page about the changes; - for standard output").value("OUT");
    command.flag("--json", pOptions->boJson, "print one JSON object").excludes(csv);
    command.flag("--entities", pOptions->boEntities, "tell what differs by entity instead of by element")
        .excludes(only)
        .excludes(csv)
        .excludes(html);

    command.vFooter(
        "Elements are matched by GlobalId, and what has none is compared by content, with the attribute that "
        "leads to it, or on its own. Numbers, order of statements, order within a SET, header texts and "
        "inverse attributes don't count. What differs and belongs to no element is told by entity. "
        "Exit code: 0 equal, 1 different, 2 unreadable or wrong usage.");
    return [pOptions](Output& output) { return iDiff(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbDiff{"diff", "How two models differ, by element", declare};

}   // namespace oxa::tool
