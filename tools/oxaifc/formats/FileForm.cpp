// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/formats/FileForm.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "oxaifc/io/Failure.h"
#include "oxaifc/io/NearNames.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

namespace {

struct FormRow {
    FileForm eForm;
    const char* pWord;   // of --format
    std::string_view title;
    std::vector<std::string_view> ends;
};

const FormRow& rowOf(FileForm eForm) {
    static const FormRow rows[] = {
        {FileForm::Step, "step", "STEP", {".ifc", ".stp", ".step", ".p21"}},
        {FileForm::Simple, "simple", "the simple text form", {".txt"}},
        {FileForm::IfcXml, "ifcxml", "ifcXML", {".ifcxml", ".xml"}},
    };
    return *std::find_if(std::begin(rows), std::end(rows), [eForm](const FormRow& row) { return row.eForm == eForm; });
}

// From the last point of the name on; empty where it has none.
std::string_view endOf(std::string_view path) {
    const std::string_view name = path.substr(path.find_last_of('/') + 1);
    const std::size_t iPoint = name.find_last_of('.');
    return iPoint == std::string_view::npos ? std::string_view() : name.substr(iPoint);
}

}   // namespace

FileForm fileForm(const std::string& sPath, const std::string& sFormat, const std::vector<FileForm>& forms) {
    const std::string_view end = endOf(sPath);
    const std::string sEnd = sUpper(end);
    std::string sForms;
    for (const FileForm eForm : forms) {
        const FormRow& row = rowOf(eForm);
        if (!sFormat.empty() && sFormat == row.pWord) return eForm;
        for (const std::string_view known : row.ends)
            if (sFormat.empty() && sEnd == sUpper(known)) return eForm;
        sForms += fmt::format("{}{} ({})", sForms.empty() ? "" : ", ", fmt::join(row.ends, ", "), row.title);
    }
    if (end.empty()) return FileForm::Open;
    throw Failure(fmt::format("can't write {}: {} is the end of no form that is written; there are: {}; --format {} "
                              "writes that under any name",
                              sPrintable(sPath), sPrintable(end), sForms, rowOf(forms.front()).pWord));
}

void vFormatDeclare(CLI::App& command, std::string& sFormat, const std::vector<FileForm>& forms) {
    std::vector<std::string> words;
    std::string sForms;
    for (const FileForm eForm : forms) {
        const FormRow& row = rowOf(eForm);
        words.emplace_back(row.pWord);
        sForms += fmt::format("{}{} for {}", sForms.empty() ? "" : ", ", row.pWord, fmt::join(row.ends, " "));
    }
    command
        .add_option("--format", sFormat,
                    fmt::format("the form of OUT; without it the end of its name decides: {}", sForms))
        ->check(CLI::IsMember(words))
        ->type_name("X");
}

}   // namespace oxa::tool
