// SPDX-License-Identifier: Apache-2.0
// VerbExtract: "oxaifc extract": elements by a query with all that they need, as a file of their own; a model split by
// storeys, types or classes; or one entity and what it reaches, in the simple text form.

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Convert/EntityFromText.h"
#include "Convert/Excerpt.h"
#include "Model/Relations.h"
#include "Model/Selector.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/PartFiles.h"
#include "oxaifc/verbs/Selection.h"
#include "oxaifc/verbs/Verb.h"
#include "platform/Path.h"

namespace oxa::tool {

namespace {

struct ExtractOptions : WriteOptions {
    std::string sWhat;
    std::string sSplit;
    bool boAlone = false;
    bool boExact = false;
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

// A number or a GlobalId, which names one entity.
bool boNamesOne(const std::string& sWhat) {
    return convert::guidFromText(sWhat) || sWhat.starts_with('#') ||
           (!sWhat.empty() && sWhat.find_first_not_of("0123456789") == std::string::npos);
}

std::string sPlural(std::size_t iCount) { return iCount == 1 ? "1 entity" : sGrouped(iCount) + " entities"; }

Elements selected(const ExtractOptions& options, const Selector& selector, const oxa::Model& model,
                  const std::string& sName) try {
    Selection selection = options.boExact ? selector.select(model, exact) : selector.select(model);
    if (selection.elements.empty())
        throw Failure(fmt::format("{}: {} selects nothing{}{}", sName, sPrintable(options.sWhat),
                                  selection.hints.empty() ? "" : "; ",
                                  sPrintable(fmt::format("{}", fmt::join(selection.hints, "; ")))));
    for (const std::string& sHint : selection.hints) vTell(sHint);
    return std::move(selection.elements);
} catch (const NameError& error) {
    throw Failure(fmt::format("{}: {}", sName, sPrintable(error.what())));
}

// Splitting.

struct SplitRow {
    const char* pWord;
    const char* pAll;    // what is split without a WHAT
    const char* pRest;   // the name of the file of what has none
    const char* pNone;   // of such elements: "in no storey"
};
constexpr SplitRow g_splits[] = {{"storey", "IfcBuildingStorey", "no-storey", "in no storey"},
                                 {"type", "IfcObject", "no-type", "without a type"},
                                 {"class", "IfcElement", "other", "of no such class"}};

struct Part {
    std::string sName;      // as the model has it
    std::string sInstead;   // where that makes no file name
    std::string sTitle;     // in the output
    std::vector<Element> elements;
};

// The storey that nothing but buildings is above: a part of a storey goes with the whole.
Element topStorey(const Element& element) {
    Element top = element.is("IfcBuildingStorey") ? element : storey(element);
    for (int i = 0; top && storey(top) && i < 100; ++i) top = storey(top);
    return top;
}

// The elements in groups, by the number of what they are grouped by; those of no group last, with an empty title.
std::vector<Part> partsOf(const Elements& elements, std::string_view split) {
    std::map<std::pair<std::uint64_t, std::string>, Part> parts;
    Part none;
    for (const Element element : elements) {
        const Element key = split == "storey" ? topStorey(element) : split == "type" ? type(element) : Element();
        if (split != "class" && !key) {
            none.elements.push_back(element);
            continue;
        }
        Part& part = parts[{key ? key.id() : 0, key ? "" : std::string(element.type())}];
        if (part.elements.empty()) {
            part.sName = key ? key.text("Name").value_or("") : std::string(element.type());
            part.sInstead = key ? fmt::format("{}-{}", key.type(), key.id()) : part.sName;
            part.sTitle = key ? fmt::format("{} #{}{}{}", key.type(), key.id(), part.sName.empty() ? "" : " ",
                                            sPrintable(part.sName))
                              : part.sName;
        }
        part.elements.push_back(element);
    }
    std::vector<Part> all;
    for (auto& [key, part] : parts) all.push_back(std::move(part));
    if (!none.elements.empty()) all.push_back(std::move(none));
    return all;
}

class Splitter {
public:
    Splitter(ExtractOptions options, Model& file, oxa::Model& model, Output& output)
        : m_options(std::move(options)),
          m_file(file),
          m_output(output),
          m_excerpts(model),
          m_names(
              m_options.sOut,
              (m_options.sFormat.empty() ? formatFromWord("step") : formatFromWord(m_options.sFormat)).ends.front()) {}

    // Each part with what is chosen in it. With boAll all else goes to a file too.
    int iSplit(const std::vector<Part>& parts, const SplitRow& row, const oxa::Model& model, bool boAll) {
        struct Piece {
            std::string sPath;
            std::string sTitle;
            convert::Excerpt excerpt;
        };
        std::vector<Piece> pieces;
        std::vector<convert::Excerpt> excerpts;
        for (const Part& part : parts) {
            const bool boNone = part.sTitle.empty();
            if (boNone && boAll) continue;
            pieces.push_back({m_names.sNext(boNone ? row.pRest : part.sName, part.sInstead),
                              boNone ? sRest(part.elements.size(), row) : part.sTitle,
                              m_excerpts.of(std::span<const Element>(part.elements))});
            excerpts.push_back(pieces.back().excerpt);
        }
        if (boAll) {
            convert::Excerpt rest = m_excerpts.rest(excerpts);
            if (rest.size())
                pieces.push_back(
                    {m_names.sNext(row.pRest, row.pRest), sRest(iWithout(model, row), row), std::move(rest)});
        }
        for (const Piece& piece : pieces) vRefuseInput(piece.sPath);
        int iCode = g_iExitFine;
        for (const Piece& piece : pieces) {
            iCode = std::max(iCode, iWrite(piece.sPath, piece.excerpt, &piece == &pieces.front()));
            m_output.vPrint("{}: {}, {}\n", sPrintable(piece.sPath), sPlural(piece.excerpt.size()), piece.sTitle);
        }
        return iCode;
    }

private:
    static std::string sRest(std::size_t iCount, const SplitRow& row) {
        return iCount ? fmt::format("{} {}", sCounted(iCount, "element"), row.pNone) : "what none of the others has";
    }
    static std::size_t iWithout(const oxa::Model& model, const SplitRow& row) {
        std::size_t iCount = 0;
        const std::string_view split = row.pWord;
        if (!model.knows("IfcElement") || split == "class") return iCount;
        for (const Element element : model.all("IfcElement"))
            if (!(split == "storey" ? storey(element) : type(element))) ++iCount;
        return iCount;
    }
    void vRefuseInput(const std::string& sPath) const {
        std::error_code error;
        if (m_options.sPath != "-" &&
            std::filesystem::equivalent(str::pathOf(sPath), str::pathOf(m_options.sPath), error) && !error)
            throw Failure(fmt::format("{}: is the file that is read", sPrintable(sPath)));
    }
    int iWrite(const std::string& sPath, const convert::Excerpt& excerpt, bool boFirst) {
        m_options.sOut = sPath;
        ModelWrite write(m_options);
        {
            const convert::ShownExcerpt shown = m_excerpts.show(excerpt);
            write.vWrite(m_file, nullptr);
        }
        return write.iTell(m_file, boFirst);
    }

    ExtractOptions m_options;
    Model& m_file;
    Output& m_output;
    convert::Excerpts m_excerpts;
    PartFiles m_names;
};

int iSplit(const ExtractOptions& options, Output& output) {
    if (options.boAlone) throw Failure("extract: --alone and --split-by exclude each other");
    if (options.sOut == "-") throw Failure("extract: --split-by writes several files, so OUT can't be standard output");
    const SplitRow& row = *std::ranges::find(g_splits, options.sSplit, &SplitRow::pWord);
    std::optional<Selector> selector;
    if (!options.sWhat.empty()) selector = selectorOf(options.sWhat, "extract: WHAT");
    Model file(options, true);
    oxa::Model model = elementsOf(file);
    const Elements elements = selector                ? selected(options, *selector, model, file.sName())
                              : model.knows(row.pAll) ? model.all(row.pAll)
                                                      : Elements();
    const std::vector<Part> parts = partsOf(elements, options.sSplit);
    if (parts.empty() || (parts.size() == 1 && parts.front().sTitle.empty()))
        throw Failure(fmt::format("{}: has nothing to be split by {}", file.sName(), options.sSplit));
    return Splitter(options, file, model, output).iSplit(parts, row, model, !selector);
}

// One file.

int iAlone(ModelWrite& write, Model& file, const ifc::Entity& entity) {
    write.vWrite(file, &entity);
    return write.iTell(file);
}

int iWhole(ModelWrite& write, Model& file, oxa::Model& model, const std::vector<Element>& elements) {
    const convert::Excerpts excerpts(model);
    const convert::Excerpt excerpt = excerpts.of(std::span<const Element>(elements));
    {
        const convert::ShownExcerpt shown = excerpts.show(excerpt);
        write.vWrite(file, nullptr);
    }
    return write.iTell(file);
}

int iExtract(ExtractOptions options, Output& output) {
    // With --split-by all of the model may be meant.
    if (options.sOut.empty() && !options.sSplit.empty()) options.sOut = std::exchange(options.sWhat, {});
    if (options.sOut.empty()) throw Failure("extract: OUT is required");
    vNameCheck(options);
    if (!options.sSplit.empty()) return iSplit(options, output);
    const bool boOne = boNamesOne(options.sWhat);
    if (options.boAlone && !boOne) throw Failure("extract: --alone takes a number or a GlobalId for WHAT");
    std::optional<Selector> selector;
    if (!boOne) selector = selectorOf(options.sWhat, "extract: WHAT");
    if (!boOne) options.pOpen = &formatFromWord("step");
    ModelWrite write(options);
    Model file(options, true);
    if (boOne) {
        const ifc::Entity& entity = entitySelected(file, options.sWhat);
        if (options.boAlone || write.pFormat() == &formatFromWord("simple")) return iAlone(write, file, entity);
        oxa::Model model = elementsOf(file);
        const Element element = model.byId(file.data().iIdFromEntity(entity));
        if (!model.knows("IfcObjectDefinition") || !element || !element.is("IfcObjectDefinition"))
            return iAlone(write, file, entity);
        return iWhole(write, file, model, {element});
    }
    oxa::Model model = elementsOf(file);
    const Elements elements = selected(options, *selector, model, file.sName());
    return iWhole(write, file, model, {elements.begin(), elements.end()});
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<ExtractOptions>();
    pOptions->vDeclareIn(command);
    command
        .option("WHAT", pOptions->sWhat,
                "which elements, as in 'IfcDoor, storey=EG'; a number as 12 or '#12', or a GlobalId")
        .required()
        .value("");
    pOptions->vDeclareOut(command);
    pOptions->vDeclareFormat(command, formatsWith(&FormatHolds::boFragment), &formatFromWord("simple"));
    std::vector<std::string> splits;
    for (const SplitRow& row : g_splits) splits.emplace_back(row.pWord);
    command
        .option(
            "--split-by",
            [pOptions, out = command.declared("OUT")](const std::string& sWord) {
                pOptions->sSplit = sWord;
                out.required(false);   // WHAT may be the one that is missing: the run settles it
            },
            "a file for each; OUT is a folder, or out.ifc for out-EG.ifc; without WHAT all of the model")
        .oneOf(splits)
        .value("X");
    command.flag("--exact", pOptions->boExact, "classes without their subtypes");
    command.flag("--alone", pOptions->boAlone,
                 "one entity and all that it reaches over references and inverse lists, as the simple form has it");
    return [pOptions](Output& output) { return iExtract(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbExtract{"extract", "Writes elements by a query and all that they need, or one entity", declare};

}   // namespace oxa::tool
