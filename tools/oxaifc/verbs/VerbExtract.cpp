// SPDX-License-Identifier: Apache-2.0
// VerbExtract: "oxaifc extract": one entity and what it reaches, as a STEP file or in the simple text form.

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/formats/XmlDocument.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

struct ExtractOptions : WriteOptions {
    std::string sWhat;
};

int iExtract(const ExtractOptions& options) {
    if (options.sFormat.empty() && boXmlName(options.sOut))
        throw Failure("extract: writes a STEP file or the simple text form, so OUT can't be named as ifcXML; oxaifc "
                      "convert writes that");
    ModelWrite write(options);
    Model model(options, true);
    const ifc::Entity& entity = entitySelected(model, options.sWhat);
    if (write.form() == FileForm::Step)
        write.vExchangeWrite(model, &entity);
    else
        write.vSimpleWrite(model, &entity);
    return write.iTell(model);
}

}   // namespace

VerbRun verbExtract(CLI::App& command) {
    const auto pOptions = std::make_shared<ExtractOptions>();
    pOptions->vDeclareIn(command);
    command.add_option("WHAT", pOptions->sWhat, "a number as 12 or '#12', or a GlobalId")->required()->type_name("");
    pOptions->vDeclareOut(command);
    pOptions->vDeclareFormat(command, {FileForm::Step, FileForm::Simple});
    return [pOptions](Output&) { return iExtract(*pOptions); };
}

}   // namespace oxa::tool
