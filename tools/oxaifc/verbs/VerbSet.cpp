// SPDX-License-Identifier: Apache-2.0
// VerbSet: "oxaifc set": attributes and properties of the elements that a query selects, all else as it was read.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <fmt/format.h>

#include "Convert/Assignment.h"
#include "Convert/Snapshot.h"
#include "Convert/ValueFromText.h"
#include "Model/Relations.h"
#include "Model/Selector.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/report/TypedJson.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

struct SetOptions : WriteOptions {
    std::string sQuery;
    std::vector<std::string> words;   // assignments; or an attribute and its value
    bool boExact = false;
    bool boDryRun = false;
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

// "set IN WHAT ATTRIBUTE VALUE OUT": one attribute of one entity, be it an element or not.
int iSetOne(const SetOptions& options) {
    ModelWrite write(options);
    Model model(options, true);
    ifc::Entity& entity = entitySelected(model, options.sQuery);
    const convert::Snapshot before(model.data());
    if (const auto refusal = convert::setFromText(model.file().dataBase(), entity, options.words[0], options.words[1]))
        throw Failure(sRefusal(*refusal, model));
    if (write.boPatches(model)) {
        write.vLossCheck(model);   // as any other write of one entity
        static_cast<void>(write.vPatch(model, before.edits()));
    } else {
        write.vWrite(model, nullptr);
        write.vLeftOutTell(model);
    }
    return write.iTell(model);
}

std::vector<convert::Assignment> assignments(const std::vector<std::string>& words) {
    std::vector<convert::Assignment> all;
    for (const std::string& sWord : words) {
        auto parsed = convert::assignmentFromText(sWord);
        if (const auto* pWhy = std::get_if<std::string>(&parsed)) throw Failure("set: " + sPrintable(*pWhy));
        all.push_back(std::get<convert::Assignment>(std::move(parsed)));
    }
    return all;
}

// A number or a GlobalId is one entity, be it an element or not; all else is a query.
std::vector<Element> selected(const SetOptions& options, Model& file, const oxa::Model& model) {
    if (const std::optional<std::uint64_t> id = numberSelected(file, options.sQuery)) return {model.byId(*id)};
    try {
        const Selector selector = selectorOf(options.sQuery, "set: QUERY");
        const Selection selection = options.boExact ? selector.select(model, exact) : selector.select(model);
        if (selection.elements.empty())
            throw Failure(fmt::format("{}: nothing is selected by {}{}{}", file.sName(),
                                      sShortened(options.sQuery, g_iMostShown), selection.hints.empty() ? "" : "; ",
                                      sPrintable(fmt::to_string(fmt::join(selection.hints, "; ")))));
        for (const std::string& sHint : selection.hints) vTell(sHint);
        return {selection.elements.begin(), selection.elements.end()};
    } catch (const NameError& error) {
        throw Failure(fmt::format("{}: {}", file.sName(), sPrintable(error.what())));
    }
}

// What an element has there, for people.
std::string sValueThere(const Element& element, const convert::Assignment& assignment) {
    if (assignment.sSet.empty())
        return element.has(assignment.sName) ? element[assignment.sName].toString() : std::string();
    const auto found = property(element, assignment.sSet, assignment.sName);
    return found ? found->value.toString() : std::string();
}

std::string sShown(const std::string& sValue) { return sValue.empty() ? "(none)" : sShortened(sValue, g_iMostShown); }

// What the elements are called and have, to be told once they have other values.
struct Told {
    std::vector<std::string> elements;   // "#12 IfcWall 'South'"
    std::vector<std::string> values;     // of each element by assignment
};

Told told(const std::vector<Element>& elements, const std::vector<convert::Assignment>& all) {
    Told told;
    for (const Element& element : elements) {
        const std::string sName = sNameOf(element);
        told.elements.push_back(fmt::format("#{} {}{}", element.id(), element.type(),
                                            sName.empty() ? "" : " '" + sShortened(sName, g_iMostShown) + "'"));
        for (const convert::Assignment& assignment : all) told.values.push_back(sValueThere(element, assignment));
    }
    return told;
}

// Properties first: they are found over relationships, which an attribute set by its text may leave out of step.
void vAssign(oxa::Model& model, Model& file, const std::vector<Element>& elements,
             const std::vector<convert::Assignment>& all) {
    for (const bool boAttributes : {false, true})
        for (const convert::Assignment& assignment : all) {
            if (assignment.sSet.empty() != boAttributes) continue;
            try {
                if (const auto refused = convert::assign(model, elements, assignment))
                    throw Failure(fmt::format("{}: #{}: {}", file.sName(), refused->element.id(),
                                              sRefusal(refused->refusal, file)));
            } catch (const Error& error) {
                throw Failure(fmt::format("{}: {}: {}", file.sName(), sPrintable(assignment.sTarget()),
                                          sPrintable(error.what())));
            }
        }
}

// "30 elements: 1 statement changed, 3 added"
std::string sSummary(std::size_t iElements, const convert::Patched& patched) {
    std::string sText = sCounted(iElements, "element") + ": ";
    if (patched.iChanged + patched.iAdded + patched.iRemoved == 0) return sText + "nothing to change";
    const std::pair<std::size_t, const char*> parts[] = {
        {patched.iChanged, "changed"}, {patched.iAdded, "added"}, {patched.iRemoved, "removed"}};
    const char* pBetween = "";
    for (const auto& [iCount, pWhat] : parts) {
        if (iCount == 0) continue;
        sText += fmt::format("{}{} {}", pBetween, *pBetween ? sGrouped(iCount) : sCounted(iCount, "statement"), pWhat);
        pBetween = ", ";
    }
    return sText;
}

void vChangesTell(const Told& before, const Told& after, const std::vector<convert::Assignment>& all, Output& output) {
    for (std::size_t i = 0; i < after.values.size(); ++i)
        if (after.values[i] != before.values[i])
            output.vPrint("{}  {}: {} -> {}\n", before.elements[i / all.size()],
                          sPrintable(all[i % all.size()].sTarget()), sShown(before.values[i]), sShown(after.values[i]));
}

int iSet(const SetOptions& options, Output& output) {
    const std::vector<convert::Assignment> all = assignments(options.words);
    std::optional<ModelWrite> write;
    if (!options.boDryRun) write.emplace(options);
    Model file(options, true);
    vReadCheck(file, options.boDryRun ? options.sOut : write->sTarget());
    oxa::Model model = elementsOf(file);
    const std::vector<Element> elements = selected(options, file, model);
    Told before;
    if (options.boDryRun) before = told(elements, all);
    const convert::Snapshot snapshot(file.data());
    vAssign(model, file, elements, all);
    const convert::Edits edits = snapshot.edits();
    convert::Patched patched{edits.changed.size(), edits.added.size(), edits.removed.size(), {}};
    if (options.boDryRun) {
        vChangesTell(before, told(elements, all), all, output);
        output.vPrint("{}\n", sSummary(elements.size(), patched));
        return file.iExitCode();
    }
    if (write->boPatches(file)) {
        patched = write->vPatch(file, edits);
    } else {
        write->vWrite(file, nullptr);
        write->vLeftOutTell(file);
    }
    if (options.sOut == "-")
        vTell(sSummary(elements.size(), patched));
    else
        output.vPrint("{}\n", sSummary(elements.size(), patched));
    return write->iTell(file);
}

int iRun(const SetOptions& options, Output& output) {
    if (options.words.front().find('=') != std::string::npos) return iSet(options, output);
    if (options.words.size() != 2)
        throw Failure(fmt::format("set: {}: has no =, as in Name=South or Pset_WallCommon.FireRating=F90",
                                  sShortened(options.words.front(), g_iMostShown)));
    if (options.boDryRun) throw Failure("set: --dry-run goes with ASSIGNMENT, as in Name=South");
    return iSetOne(options);
}

// A positional of many words takes all there are; the last of them is OUT.
void vWordsTake(SetOptions& options, const std::vector<std::string>& words, Command command) {
    options.words = words;
    if (words.size() < 2) return;
    options.words.pop_back();
    command.declared("OUT").vGive(words.back());
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<SetOptions>();
    pOptions->boKeepSource = true;
    pOptions->vDeclareIn(command);
    command
        .option("QUERY", pOptions->sQuery,
                "which elements, as in 'IfcWall, storey=EG'; or one by a number as 12 or '#12', or by a GlobalId")
        .required()
        .value("");
    command
        .severalTo(
            "ASSIGNMENT",
            [pOptions, command](const std::vector<std::string>& words) { vWordsTake(*pOptions, words, command); },
            "Name=South for an attribute, Pset_WallCommon.FireRating=F90 for a property; behind = a text, with "
            "or without single quotes; a number; true, false; an enumerator; #12; NULL or $ for no value; "
            "IFCLABEL(value) for a type; (a,b,c) for a list. In its place ATTRIBUTE VALUE, two words, for one "
            "element")
        .required()
        .value("");
    pOptions->vDeclareOut(command, "number, as their numbers rise");
    pOptions->vDeclareFormat(command, {formats().begin(), formats().end()}, nullptr);
    command.flag("--exact", pOptions->boExact, "classes without their subtypes");
    command.flag("--dry-run", pOptions->boDryRun, "tell what would change, and write nothing");
    command.vFooter("A STEP file stays as it is byte for byte, apart from the values that change; new statements stand "
                    "at the end of its DATA section. With --order, and as another format, it is written anew. OUT is "
                    "replaced as a whole or not at all. Exit code: 0 fine, 1 the read or the write had errors (OUT is "
                    "written, and they are told), 2 nothing is selected, unreadable, not to be written or wrong usage "
                    "(OUT is as it was).");
    return [pOptions](Output& output) { return iRun(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbSet{"set", "Changes attributes and properties, and nothing else of the file", declare};

}   // namespace oxa::tool
