// SPDX-License-Identifier: Apache-2.0
// oxaifc: the front door for everyone who has an IFC file and a question.
//
//   oxaifc VERB ...     "oxaifc help" tells the verbs, "oxaifc help VERB" what each takes
//   exit code           0 fine, 1 the file has errors, 2 unreadable or wrong usage
//   standard error      one line a failure; progress when it is a terminal

#include <algorithm>
#include <cstdio>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "oxaifc/io/CommandLine.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/System.h"
#include "oxaifc/verbs/ManPage.h"
#include "oxaifc/verbs/Verb.h"
#include "platform/Localization.h"
#include "platform/Unfinished.h"

namespace oxa::tool {
namespace {

constexpr const char* g_pVersion = "oxaifc " OXA_VERSION;
constexpr const char* g_pSummary = "Reads, checks, explains and rewrites building models in IFC (ISO 16739).";
constexpr const char* g_pFooter = "oxaifc help VERB tells what a verb takes. Exit code: 0 fine, 1 the file has errors, "
                                  "2 unreadable or wrong usage.";

struct DeclaredVerb {
    CLI::App* pApp;
    VerbRun run;
};

// In front of the verb and behind it.
void vCommonDeclare(CLI::App& app, std::string& sLanguage) {
    app.set_version_flag("--version", g_pVersion, "print the version and exit");
    app.add_option("--lang", sLanguage, "language of what is told of a file's errors")
        ->check(CLI::IsMember({"en", "de"}))
        ->type_name("X");
}

// The verb that the first word names, with the others where it is about them; all where it names none. To declare all
// takes as long as to read a small file.
std::vector<DeclaredVerb> declare(CLI::App& app, std::string& sLanguage, std::string_view sFirstWord) {
    app.allow_windows_style_options(false);   // "/a/house.ifc" is a file, whatever the system; verbs inherit it
    vCommonDeclare(app, sLanguage);
    app.set_help_flag("-h,--help", "print this help and exit");
    app.footer(g_pFooter);
    app.require_subcommand(1);
    app.get_formatter()->label("SUBCOMMAND", "VERB");
    std::vector<DeclaredVerb> commands;
    const auto named = std::ranges::find_if(verbs(), [&](const Verb* pVerb) { return sFirstWord == pVerb->pName; });
    const bool boAll = named == verbs().end() || (*named)->boAboutAll;
    for (const Verb* pVerb : verbs()) {
        if (!boAll && pVerb != *named) continue;
        CLI::App* pApp = app.add_subcommand(pVerb->pName, pVerb->pSummary);
        pApp->group("Verbs");
        vCommonDeclare(*pApp, sLanguage);
        commands.push_back({pApp, pVerb->pDeclare(Command(*pApp))});
    }
    return commands;
}

// CLI11 takes a word that is no verb for a superfluous argument; this says what is meant.
void vVerbCheck(const std::vector<std::string>& words) {
    std::vector<std::string_view> names;
    for (const Verb* pVerb : verbs()) names.push_back(pVerb->pName);
    if (words.empty()) throw Failure(fmt::format("a verb is missing; there are: {}", fmt::join(names, ", ")));
    const std::string_view word = words.front();
    if (word.starts_with('-')) return;
    for (const std::string_view name : names)
        if (name == word) return;
    throw Failure(fmt::format("there is no verb {}; {}", sPrintable(word), sNearText(word, names, "there are: ")));
}

// "help VERB" is "VERB --help", and "help" alone tells the verbs.
std::vector<std::string> wordsOf(std::vector<std::string> words) {
    if (!words.empty()) words.erase(words.begin());   // the program's name
    if (words.empty() || words.front() != "help") return words;
    words.erase(words.begin());
    if (words.size() > 1) throw Failure("help: takes one VERB at most");
    words.emplace_back("--help");
    return words;
}

// The end of a parse that is none of a run: help and version go to the output, a wrong call becomes a Failure.
int iParseEnd(const CLI::App& app, const CLI::ParseError& error, Output& output) {
    if (error.get_exit_code() == 0) {
        std::ostringstream text;
        app.exit(error, text, text);
        output.vPrint("{}", text.str());
        return g_iExitFine;
    }
    const auto parsed = app.get_subcommands();
    const std::string sVerb = parsed.empty() ? "" : parsed.front()->get_name() + ": ";
    std::string sText = sPrintable(error.what());
    // A shell hands on nothing of a line from a word that begins so.
    if (sText == "WHAT is required" || sText == "QUERY is required")
        sText += "; a shell takes # for a comment, so write 12 or '#12'";
    throw Failure(sVerb + sText);
}

// "help --man" is for the build, which installs the page.
bool boManPage(const std::vector<std::string>& words) {
    return words.size() == 3 && words[1] == "help" && words[2] == "--man";
}

int iManPage(Output& output) {
    CLI::App app(g_pSummary, "oxaifc");
    std::string sLanguage;
    (void)declare(app, sLanguage, {});
    vManPageWrite(app, g_pVersion, output);
    return g_iExitFine;
}

int iRun(const std::vector<std::string>& all, Output& output) {
    if (boManPage(all)) return iManPage(output);
    std::vector<std::string> words = wordsOf(all);
    vVerbCheck(words);
    CLI::App app(g_pSummary, "oxaifc");
    std::string sLanguage;
    const std::vector<DeclaredVerb> commands = declare(app, sLanguage, words.front());
    try {
        std::reverse(words.begin(), words.end());   // as CLI11 takes them
        app.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
        return iParseEnd(app, error, output);
    }
    if (sLanguage == "de") oxa::setLanguage(oxa::Language::German);
    for (const DeclaredVerb& command : commands)
        if (command.pApp->parsed()) return command.run(output);
    return g_iExitFailure;
}

int iRunAndFlush(const std::vector<std::string>& words) {
    Output output;
    const int iCode = iRun(words, output);
    output.vFlush();
    return iCode;
}

int iFailed(std::string_view text) {
    std::fputs(fmt::format("oxaifc: {}\n", text).c_str(), stderr);
    return g_iExitFailure;
}

}   // namespace
}   // namespace oxa::tool

int main(int iCount, char** ppWords) {
    using namespace oxa::tool;
    vIgnoreWriteSignals();
    vOnEnd(oxa::stream::removeUnfinished);
    try {
        return iRunAndFlush(wordsAtStart(iCount, ppWords));
    } catch (const std::bad_alloc&) {
        return iFailed("out of memory");
    } catch (const std::exception& error) {
        return iFailed(error.what());
    }
}
