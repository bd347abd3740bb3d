// SPDX-License-Identifier: Apache-2.0
// VerbHeader: "oxaifc header": the header of a file told, or changed and all else copied byte for byte.

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Format/Ifc/IfcStepStrings.h"
#include "oxaifc/formats/FileOpen.h"
#include "oxaifc/formats/Format.h"
#include "oxaifc/formats/HeaderSection.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Target.h"
#include "oxaifc/report/HeaderRows.h"
#include "oxaifc/verbs/Verb.h"
#include "platform/String.h"

namespace oxa::tool {

namespace {

struct HeaderOptions {
    std::string sPath;
    std::string sOut;
    std::string sFormat;
    std::vector<std::string> settings;   // "field=value"
    bool boJson = false;
    UnpackOption unpack;
};

std::vector<const Format*> written() { return formatsWith(&FormatHolds::boHeaderSection); }

enum class FieldKind {
    Text,
    List,
    Name,   // of a schema: in a list of its own, and written as it is
};

// The fields, with their places by ISO 10303-21, 8.2.
struct Field {
    std::string_view name;
    std::string_view keyword;
    std::size_t iParameter;
    std::size_t iParameters;
    FieldKind eKind;
};
constexpr Field g_fields[] = {
    {"description", "FILE_DESCRIPTION", 0, 2, FieldKind::List},
    {"implementationLevel", "FILE_DESCRIPTION", 1, 2, FieldKind::Text},
    {"name", "FILE_NAME", 0, 7, FieldKind::Text},
    {"timeStamp", "FILE_NAME", 1, 7, FieldKind::Text},
    {"author", "FILE_NAME", 2, 7, FieldKind::List},
    {"organization", "FILE_NAME", 3, 7, FieldKind::List},
    {"preprocessorVersion", "FILE_NAME", 4, 7, FieldKind::Text},
    {"originatingSystem", "FILE_NAME", 5, 7, FieldKind::Text},
    {"authorization", "FILE_NAME", 6, 7, FieldKind::Text},
    {"schema", "FILE_SCHEMA", 0, 1, FieldKind::Name},
};

const Field& fieldOf(std::string_view name) {
    const std::string sWanted = sUpper(name);
    const auto* const pFound = std::find_if(std::begin(g_fields), std::end(g_fields),
                                            [&](const Field& field) { return sUpper(field.name) == sWanted; });
    if (pFound != std::end(g_fields)) return *pFound;
    std::vector<std::string_view> names;
    for (const Field& field : g_fields) names.push_back(field.name);
    throw Failure(fmt::format("a header has no field {}; {}", sPrintable(name), sNearText(name, names, "there are: ")));
}

std::string sStepText(const Field& field, std::string_view value) {
    if (field.eKind == FieldKind::Name) {
        // A name with an object identifier may stand here: "IFC4 { 1 0 10303 }".
        constexpr std::string_view allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_ {}";
        if (value.empty() || value.find_first_not_of(allowed) != std::string_view::npos)
            throw Failure(fmt::format("{}: {} is no name of a schema", field.name, sPrintable(value)));
        return fmt::format("'{}'", value);
    }
    if (!str::boIsValidUtf8(value)) throw Failure(fmt::format("{}: the text is no UTF-8", field.name));
    std::string scratch;
    return fmt::format("'{}'", ifc::sIfcStrFromUtf8(scratch, value.data(), value.size()));
}

// One change a field, in the order in which they are named first.
std::vector<HeaderSection::Change> changes(const std::vector<std::string>& settings) {
    std::vector<std::pair<const Field*, std::string>> texts;   // of a list without its parentheses
    for (const std::string& sSetting : settings) {
        const std::size_t iEqual = sSetting.find('=');
        if (iEqual == std::string::npos)
            throw Failure(fmt::format("--set {}: has no =, as in author=NAME", sPrintable(sSetting)));
        const Field& field = fieldOf(std::string_view(sSetting).substr(0, iEqual));
        std::string sText = sStepText(field, std::string_view(sSetting).substr(iEqual + 1));
        const auto itBefore =
            std::find_if(texts.begin(), texts.end(), [&field](const auto& text) { return text.first == &field; });
        if (itBefore == texts.end())
            texts.emplace_back(&field, std::move(sText));
        else if (field.eKind == FieldKind::List)
            itBefore->second.append(",").append(sText);
        else
            throw Failure(fmt::format("{}: takes one value, and is set twice", field.name));
    }
    std::vector<HeaderSection::Change> result;
    for (auto& [pField, sText] : texts)
        result.push_back({pField->keyword, pField->iParameter, pField->iParameters,
                          pField->eKind == FieldKind::Text ? std::move(sText) : fmt::format("({})", sText)});
    return result;
}

// All that the header left, byte for byte.
void vCopyRest(Input& input, std::ostream& out) {
    std::vector<char> bytes(256 * 1024);
    std::streambuf& from = *input.stream().rdbuf();
    for (std::streamsize iCount = 0;
         out && (iCount = from.sgetn(bytes.data(), static_cast<std::streamsize>(bytes.size()))) > 0;)
        out.write(bytes.data(), iCount);
    input.iFinish();
}

int iExitCode(const HeaderSection& section, const std::string& sName) {
    if (section.errors().empty()) return g_iExitFine;
    std::fputs(fmt::format("oxaifc: {}: {} in the header; oxaifc check tells them\n", sName,
                           sCounted(section.errors().size(), "error"))
                   .c_str(),
               stderr);
    return g_iExitErrors;
}

int iTell(const HeaderOptions& options, Output& output) {
    const std::unique_ptr<Input> pInput = pFileOpen(options.sPath, options.unpack.limits());
    const HeaderSection section(*pInput);
    if (options.boJson) {
        Json header = headerJson(section.header());
        header["schema"] = section.header().schema.schemaName;
        output.vJson(header);
    } else {
        vHeaderWrite(section.header(), output);
    }
    return iExitCode(section, pInput->sName());
}

int iChange(const HeaderOptions& options) {
    const std::vector<HeaderSection::Change> all = changes(options.settings);
    (void)pFormatOfOutput(options.sOut, options.sFormat, written());   // refuses a name of another
    Target target(options.sOut);
    std::unique_ptr<Input> pInput = pFileOpen(options.sPath, options.unpack.limits());
    const std::string sName = pInput->sName();
    const HeaderSection section(*pInput);
    target.stream() << section.sChanged(all);
    vCopyRest(*pInput, target.stream());
    pInput.reset();   // some systems replace no file that is open
    target.vFinish();
    return iExitCode(section, sName);
}

int iHeader(const HeaderOptions& options, Output& output) {
    if (options.settings.empty() && options.sOut.empty()) return iTell(options, output);
    if (options.settings.empty()) throw Failure("header: nothing to change; name it: --set FIELD=VALUE");
    if (options.sOut.empty()) throw Failure("header: OUT is missing, the file to write");
    return iChange(options);
}

VerbRun declare(Command command) {
    const auto pOptions = std::make_shared<HeaderOptions>();
    command.option("FILE", pOptions->sPath, "the file to read; - for standard input").required().value("");
    const CommandOption set =
        command
            .option("--set", pOptions->settings,
                    "give a field a value: description, implementationLevel, name, timeStamp, author, "
                    "organization, preprocessorVersion, originatingSystem, authorization, schema; may stand "
                    "several times, and for description, author and organization with several values of one")
            .value("FIELD=VALUE")
            .oneEach();
    command.flag("--json", pOptions->boJson, "print one JSON object").excludes(set);
    command.option("OUT", pOptions->sOut, "with --set: the file to write, which may be FILE; - for standard output")
        .value("");
    vFormatDeclare(command, pOptions->sFormat, written());
    pOptions->unpack.vDeclare(command);
    command.vFooter("Without --set the header is printed. With it, all but the new values is copied byte for "
                    "byte, and OUT is "
                    "replaced as a whole or not at all. Exit code: 0 fine, 1 the header has errors (OUT is "
                    "written), 2 unreadable, "
                    "not to be written or wrong usage (OUT is as it was).");
    return [pOptions](Output& output) { return iHeader(*pOptions, output); };
}

}   // namespace

extern const Verb g_verbHeader{"header", "The header of a file, told or changed; the data stay as they are", declare};

}   // namespace oxa::tool
