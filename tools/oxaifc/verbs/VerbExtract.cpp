// SPDX-License-Identifier: Apache-2.0
// VerbExtract: "oxaifc extract": one entity and what it reaches, as a STEP file or in the simple text form.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

struct ExtractOptions : WriteOptions {
    std::string sWhat;
};

// An OUT that is named as a file of a format that holds no part of a model.
void vNameCheck(const ExtractOptions& options) {
    const Format* const pNamed = options.sFormat.empty() ? pFormatFromName(options.sOut) : nullptr;
    if (!pNamed || pNamed->holds.boFragment) return;
    std::vector<std::string_view> files;
    for (const Format* pFormat : options.formats) files.push_back(pFormat->file);
    throw Failure(fmt::format("extract: writes {}, so OUT can't be named as {}; oxaifc convert writes that",
                              fmt::join(files, " or "), pNamed->title));
}

int iExtract(const ExtractOptions& options) {
    vNameCheck(options);
    ModelWrite write(options);
    Model model(options, true);
    const ifc::Entity& entity = entitySelected(model, options.sWhat);
    write.vWrite(model, &entity);
    return write.iTell(model);
}

VerbRun declare(CLI::App& command) {
    const auto pOptions = std::make_shared<ExtractOptions>();
    pOptions->vDeclareIn(command);
    command.add_option("WHAT", pOptions->sWhat, "a number as 12 or '#12', or a GlobalId")->required()->type_name("");
    pOptions->vDeclareOut(command);
    pOptions->vDeclareFormat(command, formatsWith(&FormatHolds::boFragment), &formatFromWord("simple"));
    return [pOptions](Output&) { return iExtract(*pOptions); };
}

}   // namespace

extern const Verb g_verbExtract{"extract", "Writes one entity and what it reaches", declare};

}   // namespace oxa::tool
