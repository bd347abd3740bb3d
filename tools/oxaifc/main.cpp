// oxaifc: the front door for everyone who has an IFC file and a question.
//
//   oxaifc VERB ...     "oxaifc --help" tells the verbs, "oxaifc VERB --help" what each takes
//   exit code           0 fine, 1 the file has errors, 2 unreadable or wrong usage
//   standard error      one line a failure; progress when it is a terminal

#include <cstdio>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "oxaifc/Failure.h"
#include "oxaifc/NearNames.h"
#include "oxaifc/Output.h"
#include "oxaifc/System.h"
#include "oxaifc/Verb.h"

namespace oxa::tool {
namespace {

constexpr const char* g_pVersion = "oxaifc " OXA_VERSION;
constexpr const char* g_pFooter = "Exit code: 0 fine, 1 the file has errors, 2 unreadable or wrong usage.";

struct Command {
    CLI::App* pApp;
    VerbRun run;
};

std::vector<Command> declareAll(CLI::App& app) {
    app.set_version_flag("--version", g_pVersion, "print the version and exit");
    app.set_help_flag("-h,--help", "print this help and exit");
    app.footer(g_pFooter);
    app.require_subcommand(1);
    app.get_formatter()->label("SUBCOMMAND", "VERB");
    std::vector<Command> commands;
    for (const Verb& verb : verbs()) {
        CLI::App* pApp = app.add_subcommand(verb.pName, verb.pSummary);
        pApp->group("Verbs");
        pApp->set_version_flag("--version", g_pVersion, "print the version and exit");
        commands.push_back({pApp, verb.pDeclare(*pApp)});
    }
    return commands;
}

// CLI11 takes a word that is no verb for a superfluous argument; this says what is meant.
void vVerbCheck(int iCount, char** ppWords) {
    std::vector<std::string_view> names;
    for (const Verb& verb : verbs()) names.push_back(verb.pName);
    if (iCount < 2) throw Failure(fmt::format("a verb is missing; there are: {}", fmt::join(names, ", ")));
    const std::string_view word = ppWords[1];
    if (word.starts_with('-')) return;
    for (const std::string_view name : names)
        if (name == word) return;
    throw Failure(
        fmt::format("there is no verb {}; {}", sPrintable(word), sNearText(word, names, "there are: ")));
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
    throw Failure(fmt::format("{}{}", sVerb, sPrintable(error.what())));
}

int iRun(int iCount, char** ppWords, Output& output) {
    vVerbCheck(iCount, ppWords);
    CLI::App app("Reads, checks, explains and rewrites building models in IFC (ISO 16739).", "oxaifc");
    const std::vector<Command> commands = declareAll(app);
    try {
        app.parse(iCount, ppWords);
    } catch (const CLI::ParseError& error) {
        return iParseEnd(app, error, output);
    }
    for (const Command& command : commands)
        if (command.pApp->parsed()) return command.run(output);
    return g_iExitFailure;
}

int iRunAndFlush(int iCount, char** ppWords) {
    Output output;
    const int iCode = iRun(iCount, ppWords, output);
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
    try {
        return iRunAndFlush(iCount, ppWords);
    } catch (const std::bad_alloc&) {
        return iFailed("out of memory");
    } catch (const std::exception& error) {
        return iFailed(error.what());
    }
}
