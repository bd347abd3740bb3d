// SPDX-License-Identifier: Apache-2.0
// FileForm: the form that a written file gets, by the end of its name or by --format.
//
// For      verbs with an OUT: nothing is written under a name that says otherwise.
// Errors   Failure, for an end that is none of those, with all that are.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}   // namespace CLI

namespace oxa::tool {

enum class FileForm {
    Open,     // standard output, or a name without an end: the verb decides
    Step,     // an exchange structure, ISO 10303-21
    Simple,   // the simple text form
    IfcXml,   // ISO 10303-28
};

// The form that sFormat says, or the end of the name where that is empty. "forms" are those that the verb writes.
[[nodiscard]] FileForm fileForm(const std::string& sPath, const std::string& sFormat,
                                const std::vector<FileForm>& forms);

// Adds --format with the words of these forms.
void vFormatDeclare(CLI::App& command, std::string& sFormat, const std::vector<FileForm>& forms);

}   // namespace oxa::tool
