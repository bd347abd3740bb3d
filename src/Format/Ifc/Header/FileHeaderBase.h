// SPDX-License-Identifier: Apache-2.0
/// @file
/// FileHeaderBase: the head of a file, of whichever form the file is.
///
/// For      FileBase and the readers and writers, which need its text and the schema name in it and no more.
/// Callers  include IfcFileHeader.h or IfcFileHeaderSimple.h, which bring this header along.
/// Threads  one at a time for each object.
#pragma once

#include <iosfwd>
#include <string>

#include "platform/Export.h"

/// Files and what they hold: header, entities, attributes, and their reading and writing.
namespace oxa::ifc {

namespace io {
class ReadError;
class WriteError;
}   // namespace io

/// What readers and writers ask of a file's head.
class OXA_IFC_API FileHeaderBase {
public:
    virtual ~FileHeaderBase();

    /// Takes one statement of the head, with its ";". False gives the file up.
    virtual bool boReadLine(std::string&& line, io::ReadError& errors, unsigned int lineNumber) = 0;

    /// Writes the whole head. What the result means is said at each implementation.
    virtual bool boWrite(std::ostream& out, io::WriteError& errors) const = 0;

    /// Sets the name that stands in FILE_SCHEMA (ISO 10303-21), as in IFC4.
    virtual void vSchemaNameSet(std::string name) = 0;

    /// A copy; empty where no schema was set.
    [[nodiscard]] virtual std::string sSchemaNameGet() const = 0;

protected:
    ///@{
    /// For derived classes: copied and moved as they are.
    FileHeaderBase() = default;
    FileHeaderBase(const FileHeaderBase&) = default;
    FileHeaderBase(FileHeaderBase&&) = default;
    FileHeaderBase& operator=(const FileHeaderBase&) = default;
    FileHeaderBase& operator=(FileHeaderBase&&) = default;
    ///@}
};

}   // namespace oxa::ifc
