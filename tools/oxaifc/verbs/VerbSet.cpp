// SPDX-License-Identifier: Apache-2.0
// VerbSet: "oxaifc set": one attribute of one entity changed, all else written as it was read.

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/ValueText.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

struct SetOptions : WriteOptions {
    std::string sWhat;
    std::string sAttribute;
    std::string sValue;
};

int iSet(const SetOptions& options) {
    ModelWrite write(options);
    Model model(options, true);
    vAttributeSet(model, entitySelected(model, options.sWhat), options.sAttribute, options.sValue);
    write.vSameWrite(model);
    return write.iTell(model);
}

}   // namespace

VerbRun verbSet(CLI::App& command) {
    const auto pOptions = std::make_shared<SetOptions>();
    pOptions->vDeclareIn(command);
    command.add_option("WHAT", pOptions->sWhat, "a number as 12 or '#12', or a GlobalId")->required()->type_name("");
    command.add_option("ATTRIBUTE", pOptions->sAttribute, "its name, in any case")->required()->type_name("");
    command
        .add_option("VALUE", pOptions->sValue,
                    "a text, with or without single quotes; a number; true, false, unknown; an enumerator; #12; "
                    "$ for no value; IFCLABEL(value) in a select; (a,b,c) for a list")
        ->required()
        ->type_name("");
    pOptions->vDeclareOut(command);
    pOptions->vDeclareFormat(command, {FileForm::Step, FileForm::Simple, FileForm::IfcXml});
    return [pOptions](Output&) { return iSet(*pOptions); };
}

}   // namespace oxa::tool
