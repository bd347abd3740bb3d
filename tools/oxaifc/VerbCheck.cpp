// VerbCheck: "oxaifc check": every record of the error list of a read.

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <CLI/CLI.hpp>

#include "Format/Ifc/IfcFileEntity.h"
#include "oxaifc/Model.h"
#include "oxaifc/Output.h"
#include "oxaifc/Verb.h"

namespace oxa::tool {

namespace {

using ifc::Errors;

constexpr std::size_t g_iShortText = 300;   // bytes of a source text on a terminal

struct CheckOptions : ModelOptions {
    bool boJson = false;
};

constexpr std::array<std::string_view, 2> g_severities{"error", "fatal"};
constexpr std::array<std::string_view, 9> g_categories{"syntax", "header", "value",      "null",  "reference",
                                                       "model",  "other",  "identifier", "schema"};

std::string_view severityWord(const ifc::ErrorRecord& record) { return g_severities.at(record.severity); }
std::string_view categoryWord(const ifc::ErrorRecord& record) { return g_categories.at(record.category); }

std::string_view sourceText(const ifc::ErrorRecord& record) {
    return record.lineString ? std::string_view(*record.lineString) : std::string_view();
}

// "IFCWALL #12": the number and the keyword of the statement, or what the entity itself tells of them.
std::string sEntity(const ifc::ErrorRecord& record, const Model& model) {
    constexpr std::string_view digits = "0123456789";
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    const std::string_view text = sourceText(record);
    if (text.starts_with('#')) {
        const std::size_t iNumberEnd = std::min(text.find_first_not_of(digits, 1), text.size());
        std::string sNumber(text.substr(0, iNumberEnd));
        if (iNumberEnd >= text.size() || text[iNumberEnd] != '=') return sNumber;
        const std::string_view rest = text.substr(iNumberEnd + 1);
        return std::string(rest.substr(0, rest.find_first_not_of(letters))) + " " + sNumber;
    }
    if (!record.entity || !record.entity->pSchemaEntity()) return {};
    const auto number = model.data().entityIdMap(false).find(record.entity);
    return record.entity->pSchemaEntity()->sNameUpper +
           (number ? " #" + std::to_string(*number) : std::string());
}

// In the order of the file, whatever the order in which threads met them; those without a line at the end.
std::vector<const ifc::ErrorRecord*> byLine(const std::vector<ifc::ErrorRecord>& records) {
    std::vector<const ifc::ErrorRecord*> result;
    result.reserve(records.size());
    for (const ifc::ErrorRecord& record : records) result.push_back(&record);
    const auto key = [](const ifc::ErrorRecord& record) {
        return std::tuple(record.lineNumber == 0, record.lineNumber, sourceText(record));
    };
    // Stable: what was found in one statement was found by one thread, in its order.
    std::stable_sort(result.begin(), result.end(),
                     [&key](const auto* pA, const auto* pB) { return key(*pA) < key(*pB); });
    return result;
}

Json recordJson(const ifc::ErrorRecord& record) {
    return {{"severity", severityWord(record)},
            {"category", categoryWord(record)},
            {"message", record.description},
            {"line", record.lineNumber},
            {"text", sourceText(record)}};
}

void vRecordWrite(const ifc::ErrorRecord& record, const Model& model, Output& output) {
    const std::string sOf = sEntity(record, model);
    const std::string_view text = sourceText(record);
    output.vPrint("{}", severityWord(record));
    if (record.lineNumber) output.vPrint(" line {}", record.lineNumber);
    if (!sOf.empty()) output.vPrint(" {}", sPrintable(sOf));
    output.vPrint(": {}\n", sPrintable(record.description));
    if (text.empty()) return;
    output.vPrint("    {}\n", output.boTerminal() ? sShortened(text, g_iShortText) : sPrintable(text));
}

// "3 errors: 2 value, 1 reference", a line a severity; "no errors" where there is none.
void vCountsWrite(const Model& model, Output& output) {
    std::array<std::array<std::size_t, g_categories.size()>, g_severities.size()> counts{};
    for (const ifc::ErrorRecord& record : model.errors()) ++counts.at(record.severity).at(record.category);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        std::size_t iAll = 0;
        std::string sParts;
        for (std::size_t j = 0; j < counts[i].size(); ++j) {
            if (!counts[i][j]) continue;
            iAll += counts[i][j];
            sParts +=
                fmt::format("{}{} {}", sParts.empty() ? "" : ", ", sGrouped(counts[i][j]), g_categories[j]);
        }
        const std::string_view noun = i == Errors::Fatal ? "fatal error" : "error";
        if (iAll) output.vPrint("{}: {}: {}\n", sPrintable(model.sName()), sCounted(iAll, noun), sParts);
    }
    if (model.errors().empty())
        output.vPrint("{}: {}\n", sPrintable(model.sName()),
                      model.boOk() ? "no errors" : "not read to the end");
}

int iCheck(const CheckOptions& options, Output& output) {
    const Model model(options, true);
    if (options.boJson) output.vJsonBegin();
    for (const ifc::ErrorRecord* pRecord : byLine(model.errors())) {
        if (!output.boWanted()) break;
        if (options.boJson)
            output.vJsonItem(recordJson(*pRecord));
        else
            vRecordWrite(*pRecord, model, output);
    }
    if (options.boJson)
        output.vJsonEnd();
    else
        vCountsWrite(model, output);
    return model.iExitCode();
}

}   // namespace

VerbRun verbCheck(CLI::App& command) {
    const auto pOptions = std::make_shared<CheckOptions>();
    pOptions->vDeclare(command);
    command.add_flag("--json", pOptions->boJson, "print a JSON array with one object a record");
    return [pOptions](Output& output) { return iCheck(*pOptions, output); };
}

}   // namespace oxa::tool
