// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/verbs/ManPage.h"

#include <string>
#include <utility>

#include "oxaifc/io/Output.h"
#include "oxaifc/verbs/CommandFacts.h"

namespace oxa::tool {

namespace {

// A text for roff: a stroke is no hyphen, and no line is taken for a request.
std::string sRoff(std::string_view text) {
    std::string sText;
    for (const char c : text) {
        if (c == '\\')
            sText += "\\e";
        else if (c == '-')
            sText += "\\-";
        else if ((c == '.' || c == '\'') && (sText.empty() || sText.back() == '\n'))
            sText += std::string("\\&") + c;
        else
            sText += c;
    }
    return sText;
}

std::string sItalic(std::string_view text) { return text.empty() ? "" : "\\fI" + sRoff(text) + "\\fR"; }
std::string sBold(std::string_view text) { return "\\fB" + sRoff(text) + "\\fR"; }

std::string sHead(const OptionFacts& option) {
    std::string sText;
    for (const auto& [pNames, pStrokes] : {std::pair{&option.shortNames, "-"}, {&option.longNames, "--"}})
        for (const std::string& sName : *pNames) sText += (sText.empty() ? "" : ", ") + sBold(pStrokes + sName);
    if (sText.empty()) return sItalic(option.sArgument) + (option.boSeveral ? " ..." : "");
    return option.sValue.empty() ? sText : sText + " " + sItalic(option.sValue);
}

// [FILE...], as help tells it.
std::string sArgument(const OptionFacts& argument) {
    const std::string sText = sItalic(argument.sArgument) + (argument.boSeveral ? "..." : "");
    return argument.boRequired ? sText : "[" + sText + "]";
}

void vOption(const OptionFacts& option, Output& output) {
    output.vPrint(".TP\n{}\n{}", sHead(option), sRoff(option.sHelp));
    // Those of a schema are many, and "oxaifc schema" tells them.
    if (!option.choices.empty() && option.sValue != "NAME" && option.sArgument != "NAME")
        output.vPrint(": {}", sRoff(fmt::format("{}", fmt::join(option.choices, ", "))));
    output.vPrint("\n");
}

}   // namespace

void vManPageWrite(const CLI::App& program, std::string_view version, Output& output) {
    const CommandFacts all = commandFacts(program);
    output.vPrint(".TH OXAIFC 1 \"\" \"{}\" \"User Commands\"\n"
                  ".SH NAME\noxaifc \\- {}\n"
                  ".SH SYNOPSIS\n.B oxaifc\n[\\fIOPTIONS\\fR] \\fIVERB\\fR ...\n"
                  ".SH OPTIONS\n",
                  sRoff(version), sRoff(all.sSummary));
    for (const OptionFacts& option : all.options) vOption(option, output);
    output.vPrint(".SH VERBS\n");
    for (const CommandFacts& verb : verbFacts(program)) {
        output.vPrint(".SS {}\n{} [\\fIOPTIONS\\fR]", sBold(verb.sName), sBold("oxaifc " + verb.sName));
        for (const OptionFacts& argument : verb.arguments) output.vPrint(" {}", sArgument(argument));
        output.vPrint("\n.PP\n{}.\n", sRoff(verb.sSummary));
        for (const OptionFacts& argument : verb.arguments) vOption(argument, output);
        for (const OptionFacts& option : verb.options) vOption(option, output);
        if (!verb.sFooter.empty() && verb.sFooter != all.sFooter) output.vPrint(".PP\n{}\n", sRoff(verb.sFooter));
    }
    output.vPrint(".SH EXIT STATUS\n"
                  ".TP\n0\nfine\n.TP\n1\nthe file has errors\n.TP\n2\nunreadable or wrong usage\n"
                  ".SH ENVIRONMENT\n.TP\n{}\nno colours on a terminal\n",
                  sBold("NO_COLOR"));
}

}   // namespace oxa::tool
