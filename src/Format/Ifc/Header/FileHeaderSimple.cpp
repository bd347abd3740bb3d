// SPDX-License-Identifier: Apache-2.0
// The head of the simple form: a line that names the form, a line with the schema, and a line that is "*" for a whole
// model or the number of the instance that the text was written for.
#include "Format/Ifc/IfcFileHeaderSimple.h"

#include <cstdlib>
#include <cstring>
#include <istream>
#include <ostream>
#include <string_view>
#include <utility>

#include "Format/Ifc/IfcFileError.h"
#include "platform/Assert.h"

namespace oxa::ifc {

namespace {

constexpr std::string_view g_firstLine = "Ifc file simple";

}   // namespace

FileHeaderSimple::FileHeaderSimple() = default;
FileHeaderSimple::~FileHeaderSimple() = default;

bool FileHeaderSimple::boRead(std::istream& in, io::ReadError& errors) {
    char line[40] = {};   // 39 characters and a NUL, which stands there after a failed read as well

    in.getline(line, sizeof line);
    if (in.eof()) return false;
    if (std::strncmp(line, g_firstLine.data(), g_firstLine.size()) != 0) return false;

    in.getline(line, sizeof line);
    if (!boReadLine(line, errors, 2)) return false;

    in.getline(line, sizeof line);
    // Numbers of 64 bits, as they are written. Behind the digits anything may stand.
    if (line[0] == '*')
        exportInfo = WholeData;
    else
        exportInfo.emplace<std::uint64_t>(std::strtoull(line, nullptr, 10));
    return true;
}

bool FileHeaderSimple::boReadLine(std::string&& line, io::ReadError&, unsigned int) {
    if (line.empty()) return true;
    if (line.back() == ';') line.pop_back();
    schemaName = std::move(line);
    return true;
}

bool FileHeaderSimple::boWrite(std::ostream& out, io::WriteError&) const {
    if (schemaName.empty()) return false;
    out << g_firstLine << ';' << std::endl;
    out << schemaName << ';' << std::endl;
    if (const auto* const pRootId = std::get_if<std::uint64_t>(&exportInfo)) {
        out << std::to_string(*pRootId) << ';' << std::endl;   // whatever digit grouping the stream is set to
    } else if (const auto* const pWhole = std::get_if<std::int32_t>(&exportInfo); pWhole && *pWhole == WholeData) {
        out << "*;" << std::endl;
    } else {
        Assert::vTell("Format/Ifc/IfcFileHeaderSimple", "oxa::ifc::FileHeaderSimple::boWrite",
                      "Export information wasn't set.");
    }
    return true;
}

void FileHeaderSimple::vSchemaNameSet(std::string name) { schemaName = std::move(name); }

std::string FileHeaderSimple::sSchemaNameGet() const { return schemaName; }

}   // namespace oxa::ifc
