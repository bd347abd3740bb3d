// SPDX-License-Identifier: Apache-2.0
// VerbCompletion: "oxaifc completion": what a shell has to read so that it completes verbs, options and their values.

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/CommandFacts.h"
#include "oxaifc/verbs/Verb.h"

namespace oxa::tool {

namespace {

// All ways to write an option.
std::vector<std::string> spellings(const OptionFacts& option) {
    std::vector<std::string> words;
    for (const std::string& sName : option.shortNames) words.push_back("-" + sName);
    for (const std::string& sName : option.longNames) words.push_back("--" + sName);
    return words;
}

std::string sReplaced(std::string_view text, std::string_view characters, std::string_view before) {
    std::string sText;
    for (const char c : text) {
        if (characters.find(c) != std::string_view::npos) sText += before;
        sText += c;
    }
    return sText;
}

// A text in single quotes of a shell.
std::string sQuoted(std::string_view text) {
    std::string sText = "'";
    for (const char c : text) sText += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return sText + "'";
}

// Where nothing is offered, bash completes file names.
void vBash(const CommandFacts& program, const std::vector<CommandFacts>& verbs, Output& output) {
    std::string sVerbs = "help";
    for (const CommandFacts& verb : verbs) sVerbs += " " + verb.sName;
    std::string sOptions;
    for (const OptionFacts& option : program.options)
        for (const std::string& sWord : spellings(option)) sOptions += " " + sWord;
    output.vPrint("# bash completion for oxaifc, made by \"oxaifc completion bash\"\n"
                  "_oxaifc() {{\n"
                  "    local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD-1]}} words=''\n"
                  "    COMPREPLY=()\n"
                  "    if ((COMP_CWORD == 1)); then\n"
                  "        COMPREPLY=($(compgen -W '{}{}' -- \"$word\"))\n"
                  "        return\n"
                  "    fi\n"
                  "    case \"${{COMP_WORDS[1]}} $before\" in\n",
                  sVerbs, sOptions);
    output.vPrint("    'help help') COMPREPLY=($(compgen -W '{}' -- \"$word\")); return ;;\n", sVerbs);
    for (const CommandFacts& verb : verbs)
        for (const OptionFacts& option : verb.options) {
            if (option.boFlag) continue;
            std::string sPattern;
            for (const std::string& sWord : spellings(option))
                sPattern += fmt::format("{}'{} {}'", sPattern.empty() ? "" : "|", verb.sName, sWord);
            if (option.choices.empty())
                output.vPrint("    {}) return ;;\n", sPattern);
            else
                output.vPrint("    {}) COMPREPLY=($(compgen -W '{}' -- \"$word\")); return ;;\n", sPattern,
                              fmt::join(option.choices, " "));
        }
    output.vPrint("    esac\n    case \"${{COMP_WORDS[1]}}\" in\n");
    for (const CommandFacts& verb : verbs) {
        std::string sWords, sChoices;
        for (const OptionFacts& option : verb.options)
            for (const std::string& sWord : spellings(option)) sWords += (sWords.empty() ? "" : " ") + sWord;
        for (const OptionFacts& argument : verb.arguments)
            for (const std::string& sChoice : argument.choices) sChoices += (sChoices.empty() ? "" : " ") + sChoice;
        output.vPrint("    {}) if [[ $word == -* ]]; then words='{}'; else words='{}'; fi ;;\n", verb.sName, sWords,
                      sChoices);
    }
    output.vPrint("    esac\n"
                  "    [[ -z $words ]] || COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
                  "}}\n"
                  "complete -o default -o bashdefault -F _oxaifc oxaifc\n");
}

std::string sZshAction(const OptionFacts& option) {
    if (!option.choices.empty()) return fmt::format("({})", fmt::join(option.choices, " "));
    return option.boFile ? "_files" : " ";
}

// "'--lang[the language]:X:(en de)'", once for each way to write it.
std::string sZshOptions(const CommandFacts& verb) {
    std::string sText;
    for (const OptionFacts& option : verb.options)
        for (const std::string& sWord : spellings(option)) {
            std::string sSpec = fmt::format("*{}[{}]", sWord, sReplaced(option.sHelp, "[]\\", "\\"));
            if (!option.boFlag)
                sSpec += fmt::format(":{}:{}", sReplaced(option.sValue.empty() ? "value" : option.sValue, ":", "\\"),
                                     sZshAction(option));
            sText += fmt::format(" \\\n            {}", sQuoted(sSpec));
        }
    for (const OptionFacts& argument : verb.arguments)
        sText += fmt::format(" \\\n            {}", sQuoted(fmt::format("{}:{}:{}", argument.boSeveral ? "*" : "",
                                                                        argument.sArgument, sZshAction(argument))));
    return sText;
}

void vZsh(const CommandFacts&, const std::vector<CommandFacts>& verbs, Output& output) {
    output.vPrint("#compdef oxaifc\n"
                  "# zsh completion for oxaifc, made by \"oxaifc completion zsh\"\n"
                  "_oxaifc() {{\n"
                  "    local -a verbs\n"
                  "    verbs=(\n        'help:What a verb takes'\n");
    for (const CommandFacts& verb : verbs)
        output.vPrint("        {}\n", sQuoted(verb.sName + ":" + sReplaced(verb.sSummary, ":\\", "\\")));
    output.vPrint("    )\n"
                  "    if ((CURRENT == 2)); then\n"
                  "        _describe verb verbs\n"
                  "        return\n"
                  "    fi\n"
                  "    local verb=$words[2]\n"
                  "    shift words\n"
                  "    ((CURRENT--))\n"
                  "    case $verb in\n"
                  "        help) _describe verb verbs ;;\n");
    for (const CommandFacts& verb : verbs)
        output.vPrint("        {}) _arguments{} ;;\n", verb.sName, sZshOptions(verb));
    output.vPrint("    esac\n"
                  "}}\n"
                  "_oxaifc \"$@\"\n");
}

// A text in single quotes of fish, which knows two escapes in them.
std::string sFishQuoted(std::string_view text) { return "'" + sReplaced(text, "'\\", "\\") + "'"; }

void vFish(const CommandFacts&, const std::vector<CommandFacts>& verbs, Output& output) {
    output.vPrint("# fish completion for oxaifc, made by \"oxaifc completion fish\"\n"
                  "complete -c oxaifc -n __fish_use_subcommand -f -a help -d 'What a verb takes'\n");
    std::string sVerbs;
    for (const CommandFacts& verb : verbs) {
        sVerbs += " " + verb.sName;
        output.vPrint("complete -c oxaifc -n __fish_use_subcommand -f -a {} -d {}\n", verb.sName,
                      sFishQuoted(verb.sSummary));
    }
    output.vPrint("complete -c oxaifc -n '__fish_seen_subcommand_from help' -f -a '{}'\n", sVerbs.substr(1));
    for (const CommandFacts& verb : verbs) {
        const std::string sWhere = fmt::format("complete -c oxaifc -n '__fish_seen_subcommand_from {}'", verb.sName);
        for (const OptionFacts& option : verb.options) {
            std::string sLine = sWhere;
            for (const std::string& sName : option.shortNames) sLine += " -s " + sName;
            for (const std::string& sName : option.longNames) sLine += " -l " + sName;
            if (!option.choices.empty())
                sLine += fmt::format(" -x -a '{}'", fmt::join(option.choices, " "));
            else if (!option.boFlag)
                sLine += option.boFile ? " -r" : " -x";
            output.vPrint("{} -d {}\n", sLine, sFishQuoted(option.sHelp));
        }
        for (const OptionFacts& argument : verb.arguments)
            if (!argument.choices.empty()) output.vPrint("{} -f -a '{}'\n", sWhere, fmt::join(argument.choices, " "));
    }
}

struct ShellRow {
    const char* pName;
    void (*vWrite)(const CommandFacts& program, const std::vector<CommandFacts>& verbs, Output& output);
};
constexpr ShellRow g_shells[] = {{"bash", vBash}, {"zsh", vZsh}, {"fish", vFish}};

VerbRun declare(Command command) {
    const auto pShell = std::make_shared<std::string>();
    std::vector<std::string> names;
    for (const ShellRow& row : g_shells) names.emplace_back(row.pName);
    command.option("SHELL", *pShell, "bash, zsh or fish").required().oneOf(names).value("");
    command.vFooter(
        "For this shell alone: source <(oxaifc completion bash). An installation has them in their places.");
    return [pShell, command](Output& output) {
        const CLI::App& program = *command.app().get_parent();
        for (const ShellRow& row : g_shells)
            if (*pShell == row.pName) row.vWrite(commandFacts(program), verbFacts(program), output);
        return 0;
    };
}

}   // namespace

extern const Verb g_verbCompletion{"completion", "What a shell needs to complete the words of a call", declare, true};

}   // namespace oxa::tool
