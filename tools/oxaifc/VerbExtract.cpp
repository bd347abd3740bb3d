// VerbExtract: "oxaifc extract": one entity and what it reaches, as a file of the simple text form.

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "oxaifc/Failure.h"
#include "oxaifc/ModelWrite.h"
#include "oxaifc/Selection.h"
#include "oxaifc/Verb.h"

namespace oxa::tool {

namespace {

struct ExtractOptions : WriteOptions {
    std::string sWhat;
};

int iExtract(const ExtractOptions& options) {
    ModelWrite write(options);
    if (write.boXml())
        throw Failure("extract: OUT has the simple text form, so it can't be named as ifcXML; oxaifc convert "
                      "writes that");
    Model model(options, true);
    write.vSimpleWrite(model, &entitySelected(model, options.sWhat));
    return write.iTell(model);
}

}   // namespace

VerbRun verbExtract(CLI::App& command) {
    const auto pOptions = std::make_shared<ExtractOptions>();
    pOptions->vDeclareIn(command);
    command.add_option("WHAT", pOptions->sWhat, "a number as #12, or a GlobalId")->required()->type_name("");
    pOptions->vDeclareOut(command);
    return [pOptions](Output&) { return iExtract(*pOptions); };
}

}   // namespace oxa::tool
