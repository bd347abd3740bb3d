// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/report/RowForm.h"

#include <fmt/format.h>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Target.h"

namespace oxa::tool {

namespace {

struct FormRow {
    const char* pWord;
    const char* pEnd;                 // of a name
    std::optional<TableForm> eForm;   // none of a workbook
};
constexpr FormRow g_forms[] = {{"table", ".txt", TableForm::Text},
                               {"csv", ".csv", TableForm::Csv},
                               {"tsv", ".tsv", TableForm::Tsv},
                               {"json", ".json", TableForm::JsonArray},
                               {"ndjson", ".ndjson", TableForm::JsonLines},
                               {"xlsx", ".xlsx", std::nullopt}};

}   // namespace

void RowOptions::vDeclare(Command command) {
    std::vector<std::string> words;
    for (const FormRow& row : g_forms) words.emplace_back(row.pWord);
    command.option("-f,--format", sForm, "what to write; default by the end of OUT, else table")
        .oneOf(words)
        .value("table|csv|tsv|json|ndjson|xlsx");
    command.option("-o,--output", sOut, "a file to write, .csv, .tsv, .json, .ndjson, .xlsx or .txt").value("OUT");
}

std::optional<TableForm> RowOptions::form(std::string_view verb) const {
    const std::string sEnd = sEndOf(sOut);
    for (const FormRow& row : g_forms) {
        if (sForm.empty() ? sEnd != row.pEnd : sForm != row.pWord) continue;
        if (!row.eForm && !boFile()) throw Failure(fmt::format("{}: a workbook goes to a file: -o OUT.xlsx", verb));
        return row.eForm;
    }
    if (!boFile()) return TableForm::Text;
    throw Failure(fmt::format("{}: {}: its end is none of .csv, .tsv, .json, .ndjson, .xlsx and .txt; -f says the form",
                              verb, sPrintable(sOut)));
}

void RowOptions::vOutCheck(const std::vector<std::string>& paths) const {
    if (!boFile()) return;
    for (const std::string& sPath : paths)
        if (boSameFile(sPath, sOut)) throw Failure(fmt::format("{}: is the file that is read", sPrintable(sOut)));
}

}   // namespace oxa::tool
