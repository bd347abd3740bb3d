// SPDX-License-Identifier: Apache-2.0
// HeaderSection: the HEADER section of an exchange structure (ISO 10303-21, clause 8) as it stands in a file.
//
// For      the verb "header", which reads no more of a file than this and changes no byte but those of a value.
// Errors   Failure, for a file without a HEADER section and for one that does not end within reason.
// Threads  one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcFileHeader.h"
#include "oxaifc/io/Input.h"

namespace oxa::tool {

class HeaderSection {
public:
    // Takes all up to the end of the section from the input; what follows stays in its stream.
    explicit HeaderSection(Input& input);

    // The bytes from the begin of the file to "ENDSEC;".
    [[nodiscard]] const std::string& sBytes() const noexcept { return m_sBytes; }
    [[nodiscard]] const ifc::FileHeader& header() const noexcept { return m_header; }
    // What the library reports of its statements.
    [[nodiscard]] const std::vector<ifc::ErrorRecord>& errors() const noexcept { return m_errors.records(); }

    // A parameter of a statement and what to write in its place, as STEP text.
    struct Change {
        std::string_view keyword;
        std::size_t iParameter;    // from 0
        std::size_t iParameters;   // how many the statement has by ISO 10303-21
        std::string sText;
    };
    // The bytes with the changes, each of another parameter. Failure for a statement that is missing, stands
    // twice or has not that many parameters.
    [[nodiscard]] std::string sChanged(const std::vector<Change>& changes) const;

private:
    class Scanner;

    struct Span {
        std::size_t iBegin;
        std::size_t iEnd;
    };
    struct Statement {
        std::string sKeyword;
        std::vector<Span> parameters;   // in the bytes
    };

    [[nodiscard]] const Statement& statement(const Change& change) const;

    std::string m_sName;   // how messages call the file
    std::string m_sBytes;
    std::vector<Statement> m_statements;
    ifc::FileHeader m_header;
    ifc::io::ReadError m_errors;
};

}   // namespace oxa::tool
