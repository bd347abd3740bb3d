// SPDX-License-Identifier: Apache-2.0
// VerbSet: "oxaifc set": one attribute of one entity changed, all else written as it was read.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Convert/ValueFromText.h"
#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

struct SetOptions : WriteOptions {
    std::string sWhat;
    std::string sAttribute;
    std::string sValue;
};

constexpr std::size_t g_iMostShown = 100;   // bytes of a value in a message
constexpr std::size_t g_iMostNames = 20;    // types of a select in a message

// The types that may stand in front of a value of a select: a few, those that come near, or where they are told.
std::string sSelectTypes(const convert::Refusal& refusal, const Model& model) {
    const std::vector<std::string_view> names(refusal.names.begin(), refusal.names.end());
    const std::string_view type = std::string_view(refusal.sValue).substr(0, refusal.sValue.find('('));
    if (names.size() <= g_iMostNames || !nearNames(type, names).empty()) return sNearText(type, names, "there are: ");
    return fmt::format("oxaifc schema {} {} tells them", model.data().pSchema()->sName, refusal.sType);
}

std::string sRefusal(const convert::Refusal& refusal, const Model& model) {
    using Why = convert::Refusal::Why;
    const std::vector<std::string_view> names(refusal.names.begin(), refusal.names.end());
    const std::string sText =
        fmt::format("{}: {} {}", refusal.sWhere, sShortened(refusal.sValue, g_iMostShown), refusal.sReason);
    switch (refusal.eWhy) {
    case Why::Attribute:
        return fmt::format("{} has no attribute {}{}", refusal.sWhere, sPrintable(refusal.sValue),
                           names.empty() ? "" : "; " + sNearText(refusal.sValue, names, "there are: "));
    case Why::Fixed: return fmt::format("{} {}", refusal.sWhere, refusal.sReason);
    case Why::Number: return fmt::format("{} {}", sPrintable(refusal.sValue), refusal.sReason);
    case Why::Enumerator: return fmt::format("{}; they are: {}", sText, fmt::join(names, ", "));
    case Why::SelectType: return fmt::format("{}; {}", sText, sSelectTypes(refusal, model));
    case Why::Value: break;
    }
    return sText;
}

int iSet(const SetOptions& options) {
    ModelWrite write(options);
    Model model(options, true);
    ifc::Entity& entity = entitySelected(model, options.sWhat);
    if (const auto refusal = convert::setFromText(model.file().dataBase(), entity, options.sAttribute, options.sValue))
        throw Failure(sRefusal(*refusal, model));
    write.vWrite(model, nullptr);
    write.vLeftOutTell(model);
    return write.iTell(model);
}

VerbRun declare(CLI::App& command) {
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
    pOptions->vDeclareFormat(command, {formats().begin(), formats().end()}, nullptr);
    return [pOptions](Output&) { return iSet(*pOptions); };
}

}   // namespace

extern const Verb g_verbSet{"set", "Changes one attribute and writes the file again", declare};

}   // namespace oxa::tool
