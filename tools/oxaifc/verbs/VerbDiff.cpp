// SPDX-License-Identifier: Apache-2.0
// VerbDiff: "oxaifc diff": what one model has and says otherwise than another.

#include <cstdio>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "Compare/Compare.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostTextShown = 100;   // bytes of a value; JSON has ten times as many
constexpr std::size_t g_iMostTextJson = 1000;

struct DiffOptions : ModelOptions {
    std::string sPathNew;
    bool boJson = false;
};

// What was not read to its end can't be compared. Other errors may have cost an entity or a value: they are told.
void vCheck(const Model& model) {
    for (const ifc::ErrorRecord& record : model.errors())
        if (record.severity == ifc::Errors::Fatal)
            throw Failure(fmt::format("{}: not read to the end: {}", model.sName(), sPrintable(record.description)));
    if (!model.boOk() && model.errors().empty()) throw Failure(model.sName() + ": not read to the end");
    // It is not known which statements were lost: a difference and none would both be guesses.
    if (model.boFaultInside())
        throw Failure(fmt::format("{}: has lost statements in the read, so it can't be compared", model.sName()));
    if (!model.errors().empty())
        std::fputs(fmt::format("oxaifc: {}: {} while reading; what could not be read is not compared\n",
                               sPrintable(model.sName()), sCounted(model.errors().size(), "error"))
                       .c_str(),
                   stderr);
}

compare::Side side(const Model& model) { return {model.data(), model.sSchemaName(), model.errors()}; }

Json entityJson(const compare::Element& entity) {
    Json value{{"number", entity.iNumber}, {"type", entity.sType}};
    if (entity.sGlobalId.empty()) {
        value["content"] = entity.sText;
    } else {
        value["globalId"] = entity.sGlobalId;
        if (!entity.sText.empty()) value["name"] = entity.sText;
    }
    return value;
}

Json listJson(const std::vector<compare::Element>& entities) {
    Json list = Json::array();
    for (const compare::Element& entity : entities) list.push_back(entityJson(entity));
    return list;
}

Json changesJson(const std::vector<compare::Change>& changes) {
    const auto text = [](const std::optional<std::string>& sText) { return sText ? Json(*sText) : Json(); };
    Json list = Json::array();
    for (const compare::Change& change : changes) {
        Json values = Json::array();
        for (const compare::Difference& value : change.differences) {
            Json row{{"attribute", value.sAttribute}, {"old", text(value.sOld)}, {"new", text(value.sNew)}};
            if (value.boMore) row["more"] = true;
            values.push_back(std::move(row));
        }
        Json entity = entityJson(change.after);
        entity["oldNumber"] = change.before.iNumber;
        entity["values"] = std::move(values);
        list.push_back(std::move(entity));
    }
    return list;
}

void vJsonWrite(const compare::Result& diff, Output& output) {
    output.vJson({{"equal", diff.boEqual()},
                  {"schema", {{"old", diff.sSchemaOld}, {"new", diff.sSchemaNew}}},
                  {"removed", listJson(diff.removed)},
                  {"added", listJson(diff.added)},
                  {"changed", changesJson(diff.changed)}});
}

std::string sEntity(const compare::Element& entity) {
    if (entity.sGlobalId.empty()) return fmt::format("#{} {}", entity.iNumber, sPrintable(entity.sText));
    return fmt::format("#{} {} {}{}{}", entity.iNumber, entity.sType, entity.sGlobalId, entity.sText.empty() ? "" : " ",
                       sPrintable(entity.sText));
}

std::string sValue(const std::optional<std::string>& sText) {
    return sText ? sPrintable(*sText) : "(no such attribute)";
}

void vTextWrite(const compare::Result& diff, Output& output) {
    if (diff.sSchemaOld != diff.sSchemaNew)
        output.vPrint("schema   {} -> {}\n", sPrintable(diff.sSchemaOld), sPrintable(diff.sSchemaNew));
    for (const compare::Element& entity : diff.removed)
        output.vPrint("{}  {}\n", output.sTinted(Tint::Red, "removed"), sEntity(entity));
    for (const compare::Element& entity : diff.added)
        output.vPrint("{}    {}\n", output.sTinted(Tint::Green, "added"), sEntity(entity));
    for (const compare::Change& change : diff.changed) {
        output.vPrint("{}  {}\n", output.sTinted(Tint::Yellow, "changed"), sEntity(change.after));
        for (const compare::Difference& value : change.differences)
            output.vPrint("         {}: {} -> {}{}\n", value.sAttribute, sValue(value.sOld), sValue(value.sNew),
                          value.boMore ? "\n         and more of this attribute" : "");
    }
    if (diff.boEqual())
        output.vPrint("no difference\n");
    else
        output.vPrint("{} removed, {} added, {} changed\n", sGrouped(diff.removed.size()), sGrouped(diff.added.size()),
                      sGrouped(diff.changed.size()));
}

int iDiff(const DiffOptions& options, Output& output) {
    if (options.sPath == "-" && options.sPathNew == "-") throw Failure("diff: A and B can't both be standard input");
    ModelOptions optionsNew = options;
    optionsNew.sPath = options.sPathNew;
    const Model before(options, true);
    vCheck(before);
    const Model after(optionsNew, true);
    vCheck(after);
    const compare::Result diff = compare::differences(
        side(before), side(after), {.iMostText = options.boJson ? g_iMostTextJson : g_iMostTextShown});
    if (options.boJson)
        vJsonWrite(diff, output);
    else
        vTextWrite(diff, output);
    return diff.boEqual() ? g_iExitFine : g_iExitErrors;
}

VerbRun declare(CLI::App& command) {
    const auto pOptions = std::make_shared<DiffOptions>();
    pOptions->vDeclare(command, "A");
    command.add_option("B", pOptions->sPathNew, "the file to compare it with; - for standard input")
        ->required()
        ->type_name("");
    command.add_flag("--json", pOptions->boJson, "print one JSON object");
    command.footer("Entities are matched by GlobalId. What has none is compared by content, with the "
                   "attribute that leads to "
                   "it, or on its own. Numbers, order of statements, order within a SET, header texts and "
                   "inverse attributes "
                   "don't count. Exit code: 0 equal, 1 different, 2 unreadable or wrong usage.");
    return [pOptions](Output& output) { return iDiff(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbDiff{"diff", "How two models differ: by GlobalId, then by content", declare};

}   // namespace oxa::tool
