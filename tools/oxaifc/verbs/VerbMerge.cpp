// SPDX-License-Identifier: Apache-2.0
// VerbMerge: "oxaifc merge": several models as one.

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Convert/Merge.h"
#include "Convert/SchemaMove.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

constexpr std::size_t g_iMostTold = 10;   // entities

struct MergeVerbOptions : WriteOptions {
    std::vector<std::string> words;   // the files, and behind them OUT
    convert::MergeOptions merge;
};

const std::map<std::string, convert::Join> g_joins{{"guid", convert::Join::Guid},
                                                   {"name", convert::Join::Name},
                                                   {"none", convert::Join::None}};
const std::map<std::string, convert::Same> g_sames{{"fail", convert::Same::Fail},
                                                   {"keep-first", convert::Same::KeepFirst}};

void vCheck(const Model& file) {
    file.vWholeCheck("merged");
    if (!file.data().pSchema()) throw Failure(fmt::format("{}: has no schema that is known", file.sName()));
}

void vSchemaCheck(const Model& first, Model& other) {
    const std::string sFirst = first.data().pSchema()->sName;
    const std::string sOther = other.data().pSchema()->sName;
    if (sFirst != sOther)
        throw Failure(fmt::format("{} is {}, and {} is {}; oxaifc convert --schema {} moves the second to the schema "
                                  "of the first",
                                  first.sName(), sFirst, other.sName(), sOther, sFirst));
    static_cast<void>(convert::moveToSchema(other.file(), *first.data().pSchema()));   // of a file, each read makes one
}

// "IfcWall 0AAAAAAAAAAAAAAAAAAA30 (#30, #31)", the first ones.
std::string sList(const std::vector<convert::MergeConflict>& conflicts) {
    std::string sText;
    for (std::size_t i = 0; i < std::min(conflicts.size(), g_iMostTold); ++i)
        sText += fmt::format("{}{} {} (#{}, #{})", i ? ", " : "", conflicts[i].type, conflicts[i].guid,
                             conflicts[i].first, conflicts[i].second);
    if (conflicts.size() > g_iMostTold) sText += fmt::format(" and {} more", sGrouped(conflicts.size() - g_iMostTold));
    return sText;
}

void vAdd(convert::Merger& merger, const Model& first, const Model& other, oxa::Model& model,
          const convert::MergeOptions& options) {
    convert::Merged merged;
    try {
        merged = merger.add(model, options);
    } catch (const convert::MergeError& error) {
        throw Failure(
            fmt::format("{} and {} don't go together: {}", first.sName(), other.sName(), sPrintable(error.what())));
    }
    const std::string sConflicts =
        fmt::format("{} of {} with the GlobalId of another one that says something else: {}",
                    merged.conflicts.size() == 1 ? "1 entity" : sGrouped(merged.conflicts.size()) + " entities",
                    other.sName(), sList(merged.conflicts));
    if (!merged.done) throw Failure(sConflicts + "; --same keep-first leaves them out");
    if (!merged.conflicts.empty()) vTell("left out, " + sConflicts);
    if (!merged.differing.empty())
        vTell(fmt::format("{}: {} joined, and what the first file says of {} stays: {}", other.sName(),
                          merged.differing.size() == 1
                              ? "1 entity that differs was"
                              : sGrouped(merged.differing.size()) + " entities that differ were",
                          merged.differing.size() == 1 ? "it" : "them", sList(merged.differing)));
}

int iMerge(MergeVerbOptions& options) {
    if (options.words.size() < 3) throw Failure("merge: takes two files at least, and OUT behind them");
    options.sOut = options.words.back();
    options.words.pop_back();
    if (std::ranges::count(options.words, "-") > 1) throw Failure("merge: one file at most can be standard input");
    options.sPath = options.words.front();
    ModelWrite write(options);
    Model first(options, true);
    vCheck(first);
    oxa::Model model = oxa::Model::fromCore(first.pFileTake());
    convert::Merger merger(model);
    int iCode = g_iExitFine;
    for (std::size_t i = 1; i < options.words.size(); ++i) {
        ModelOptions read = options;
        read.sPath = options.words[i];
        Model other(read, true);
        vCheck(other);
        vSchemaCheck(first, other);
        if (!other.errors().empty())
            vTell(fmt::format("{}: {} while reading; oxaifc check tells them", other.sName(),
                              sCounted(other.errors().size(), "error")));
        iCode = std::max(iCode, other.iExitCode());
        oxa::Model elements = oxa::Model::fromCore(other.pFileTake());
        vAdd(merger, first, other, elements, options.merge);
    }
    write.vWrite(first, nullptr);
    write.vLeftOutTell(first);
    return std::max(iCode, write.iTell(first));
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<MergeVerbOptions>();
    pOptions->vDeclareSeveral(command, pOptions->words);
    // FILE takes all words; this tells what the last of them is.
    pOptions->vDeclareOut(command);
    command.declared("FILE").each([out = command.declared("OUT")](const std::string&) { out.required(false); });
    pOptions->vDeclareFormat(command, formatsWith(&FormatHolds::boModel), &formatFromWord("step"));
    const auto names = [](const auto& rows) {
        std::vector<std::string> all;
        for (const auto& row : rows) all.push_back(row.first);
        return all;
    };
    command
        .option(
            "--join", [pOptions](const std::string& sWord) { pOptions->merge.join = g_joins.at(sWord); },
            "which sites, buildings and storeys are one: those of one GlobalId (without this option), those of one "
            "name "
            "too, or none that differ")
        .oneOf(names(g_joins))
        .value("X");
    command
        .option(
            "--same", [pOptions](const std::string& sWord) { pOptions->merge.same = g_sames.at(sWord); },
            "two entities with one GlobalId that say two things: fail (without this option), or keep-first")
        .oneOf(names(g_sames))
        .value("X");
    return [pOptions](Output&) { return iMerge(*pOptions); };
}

}   // namespace

extern const Verb g_verbMerge{"merge", "Writes several models as one, with one project and one spatial structure",
                              declare};

}   // namespace oxa::tool
