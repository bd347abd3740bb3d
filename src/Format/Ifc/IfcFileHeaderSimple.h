// SPDX-License-Identifier: Apache-2.0
/// @file
/// FileHeaderSimple: the three lines at the top of the simple text form, which holds a fragment of a model.
///
///     Ifc file simple;
///     IFC4;               the schema name
///     12;                 the number of the root instance, or "*" for a whole model
///
/// - For: FileSimple, which sets exportInfo before a write and looks at it after a read.
/// - Not for: the HEADER section of ISO 10303-21: FileHeader.
/// - Threads: one at a time for each object.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <variant>

#include "Format/Ifc/Header/FileHeaderBase.h"
#include "platform/Export.h"

namespace oxa::ifc {

/// The head of the simple text form: the schema, and which part of a model follows.
class OXA_IFC_API FileHeaderSimple : public FileHeaderBase {
public:
    /// What the file holds: not said yet; the whole model, as a 32-bit WholeData; or what the instance of that
    /// number leads to.
    using ExportInfo = std::variant<std::monostate, std::int32_t, std::uint64_t>;
    static constexpr std::int32_t WholeData = 0;   ///< what ExportInfo holds for a whole model

    ExportInfo exportInfo;    ///< the third line; not said after construction
    std::string schemaName;   ///< the second line; empty after construction

    FileHeaderSimple();
    ~FileHeaderSimple() override;
    ///@{
    /// Takes over both fields.
    FileHeaderSimple(const FileHeaderSimple&) = default;
    FileHeaderSimple(FileHeaderSimple&&) = default;
    FileHeaderSimple& operator=(const FileHeaderSimple&) = default;
    FileHeaderSimple& operator=(FileHeaderSimple&&) = default;
    ///@}

    /// Reads the three lines, of at most 39 characters each. False where the stream is at its end or does not
    /// begin with "Ifc file simple"; nothing is added to "errors".
    bool boRead(std::istream& in, io::ReadError& errors);

    /// Takes the schema name, with or without ";". An empty line changes nothing. Always true.
    bool boReadLine(std::string&& line, io::ReadError& errors, unsigned int lineNumber) override;

    /// False, with nothing written, where there is no schema name. Without exportInfo the third line is left
    /// out and an assertion raised.
    bool boWrite(std::ostream& out, io::WriteError& errors) const override;

    /// Sets schemaName as it is given.
    void vSchemaNameSet(std::string name) override;
    /// A copy of schemaName.
    [[nodiscard]] std::string sSchemaNameGet() const override;
};

}   // namespace oxa::ifc
