// SPDX-License-Identifier: Apache-2.0
// ReadResult: a text, read as a file, and what came of it in a form that a table row can hold.
#pragma once

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::ifc {

// "Fatal Syntax 3 Error_InvalidFile | text": severity, category, line, key, source text.
inline std::string sRow(const ErrorRecord& record) {
    static constexpr const char* g_categories[] = {"Syntax", "Header", "Value",      "Null",  "Reference",
                                                   "Model",  "?",      "Identifier", "Schema"};
    return std::string(record.severity == Errors::Fatal ? "Fatal " : "Error ") + g_categories[record.category] + ' ' +
           std::to_string(record.lineNumber) + ' ' + record.key.value_or({}) + " | " +
           record.lineString.value_or("(no text)");
}

inline std::vector<std::string> rowsOf(const Errors& errors) {
    std::vector<std::string> rows;
    for (const ErrorRecord& record : errors.records()) rows.push_back(sRow(record));
    return rows;
}

struct ReadResult {
    File file;
    io::ReadError errors;
    bool boRead = false;

    // Single-threaded, from the built-in schemas unless a function says otherwise.
    explicit ReadResult(const std::string& sText, SchemaFromName schema = {}, bool boKeepIds = true) {
        std::istringstream in(sText);
        boRead = file.boRead(in, std::move(schema), errors, boKeepIds, {}, true);
    }
    [[nodiscard]] std::vector<std::string> rows() const { return rowsOf(errors); }
    [[nodiscard]] std::size_t iEntities() const { return file.data().entities().size(); }
};

// A file of schema IFC4 with that DATA section; its first statement stands on line 5.
inline std::string sIfc4File(const std::string& sData) {
    return "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4'));ENDSEC;\nDATA;\n" + sData + "ENDSEC;\nEND-ISO-10303-21;\n";
}

}   // namespace oxa::ifc
