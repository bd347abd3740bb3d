// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/CommandFacts.h"

#include <algorithm>
#include <string_view>

#include <CLI/CLI.hpp>

#include "provider/SchemaLoader.h"

namespace oxa::tool {

namespace {

bool boOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// CLI11 tells them behind the name of the type: "X:{en,de}".
std::vector<std::string> choicesOf(const std::string& sType) {
    std::vector<std::string> choices;
    const std::size_t iOpen = sType.find(":{");
    if (iOpen == std::string::npos) return choices;
    const std::string_view list = std::string_view(sType).substr(iOpen + 2, sType.find('}', iOpen) - iOpen - 2);
    for (std::size_t i = 0; i <= list.size();) {
        const std::size_t iEnd = std::min(list.find(',', i), list.size());
        choices.emplace_back(list.substr(i, iEnd - i));
        i = iEnd + 1;
    }
    return choices;
}

OptionFacts optionFacts(const CLI::Option& option) {
    OptionFacts facts;
    facts.shortNames = option.get_snames();
    facts.longNames = option.get_lnames();
    if (option.get_positional()) facts.sArgument = option.get_name(true);
    facts.sHelp = option.get_description();
    facts.boFlag = option.get_type_size_max() == 0;
    const std::string sType = option.get_type_name();
    facts.sValue = facts.boFlag ? std::string() : sType.substr(0, sType.find(':'));
    facts.choices = choicesOf(sType);
    facts.boRequired = option.get_required();
    facts.boSeveral = option.get_items_expected_max() > 1;
    const std::string_view what = option.get_positional() ? facts.sArgument : facts.sValue;
    if (what == "NAME")
        for (const std::string_view name : ifc::SchemaLoader::builtInNames()) facts.choices.emplace_back(name);
    facts.boFile =
        facts.choices.empty() && boOneOf(what, {"FILE", "IN", "OUT", "A", "B", "REQUIREMENTS", "X", "X.exp"});
    return facts;
}

}   // namespace

CommandFacts commandFacts(const CLI::App& command) {
    CommandFacts facts{command.get_name(), command.get_description(), command.get_footer(), {}, {}};
    for (const CLI::Option* pOption : command.get_options())
        (pOption->get_positional() ? facts.arguments : facts.options).push_back(optionFacts(*pOption));
    return facts;
}

std::vector<CommandFacts> verbFacts(const CLI::App& program) {
    std::vector<CommandFacts> facts;
    for (const CLI::App* pVerb : program.get_subcommands([](const CLI::App*) { return true; }))
        facts.push_back(commandFacts(*pVerb));
    return facts;
}

}   // namespace oxa::tool
