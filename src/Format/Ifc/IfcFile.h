// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcFile: a model with its header, as a caller holds it.
///
/// - File: a full exchange structure (ISO 10303-21): FileHeader and FileData. Gets its schema from its header.
/// - FileSimple: the short private text form for fragments: FileHeaderSimple and DataSimple. Born with a schema.
///
/// - Owner: the caller owns file object, streams, errors and schema; the schema must outlive the model.
/// - Threads: one thread at a time; a read returns only after every thread that it started has been joined, and calls
///   back on the caller's thread alone.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "Format/Ifc/IfcFileDataSimple.h"
#include "Format/Ifc/IfcFileHeader.h"
#include "Format/Ifc/IfcFileHeaderSimple.h"
#include "Format/Ifc/IfcReadOptions.h"
#include "Format/Ifc/IfcWriteOptions.h"
#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::ifc {

class File;
class FileSimple;
namespace io {
class IfcLineWriterInterface;
class ReadError;
class WriteError;
}   // namespace io

/// What reading and writing need of both kinds of file.
class OXA_IFC_API FileBase {
public:
    virtual ~FileBase();
    FileBase(const FileBase&) = delete;
    FileBase& operator=(const FileBase&) = delete;

    /// Names the schema in the header and sets it in the data.
    void vSchemaSet(const def::SchemaPset& schema);

    /// The data, which the file holds and which lives as long as the file.
    [[nodiscard]] Data& dataBase() noexcept { return *m_pData; }
    /// The header, which the file holds and which lives as long as the file.
    [[nodiscard]] FileHeaderBase& headerBase() noexcept { return *m_pHeader; }

protected:
    FileBase() noexcept = default;

    Data* m_pData = nullptr;               ///< embedded in the derived object, which sets it; not owned
    FileHeaderBase* m_pHeader = nullptr;   ///< likewise
};

/// The data of an exchange structure: the DATA section (ISO 10303-21, clause 11).
class OXA_IFC_API FileData final : public Data {
public:
    /// Empty data without a schema. "file" holds them and must outlive them.
    explicit FileData(File& file) : m_file(file) {}
    ~FileData() override;

    /// As Data::boWrite, whose overloads stay callable here.
    using Data::boWrite;
    ///@{
    /// The data lines of all that the project reaches. Without a project: only ends the writer, false.
    bool boWrite(io::IfcLineWriterInterface& writer, io::WriteError& errors, WriteProgress progress,
                 bool boSingleThreaded) const;
    bool boWrite(io::IfcLineWriterInterface& writer, io::WriteError& errors, const WriteOptions& options) const;
    ///@}
    /// The file that holds the data.
    [[nodiscard]] File& file() const noexcept { return m_file; }

private:
    File& m_file;
};

/// The data of the simple text form, which may be a fragment of a model.
class OXA_IFC_API DataSimple final : public Data {
public:
    /// Empty data without a schema. "file" holds them and must outlive them.
    explicit DataSimple(FileSimple& file) : m_pFile(&file) {}
    ~DataSimple() override;

    /// Finds the root entity first, so that its number counts as named.
    bool boFinished(ReadInfoCommon& info, bool boKeepIds) override;

private:
    FileSimple* m_pFile;
};

/// A file as ISO 10303-21 has it: a header and the data of one model.
class OXA_IFC_API File final : public FileBase {
public:
    File();
    ~File() override;

    ///@{
    /// The header: its fields are read and set there.
    [[nodiscard]] FileHeader& header() noexcept { return m_header; }
    [[nodiscard]] const FileHeader& header() const noexcept { return m_header; }
    ///@}
    ///@{
    /// The model: its entities are found and made there.
    [[nodiscard]] FileData& data() noexcept { return m_data; }
    [[nodiscard]] const FileData& data() const noexcept { return m_data; }
    ///@}

    /// Reads an exchange structure into the file's header and data.
    ///
    /// @param error  collects everything; whatever the result, what was read up to a fault stays in the model.
    /// @return true when the input reached a proper end and no fatal fault was met. Bad input never throws.
    bool boRead(std::istream& stream, io::ReadError& error, const ReadOptions& options);
    /// The same with the options one by one.
    bool boRead(std::istream& stream, SchemaFromName schemaFromName, io::ReadError& error, bool boKeepIds,
                ReadProgress progress, bool boSingleThreaded);

    /// Writes the file: all that the project reaches over references and inverse lists. False, with nothing written,
    /// without a project. Reports are in "errors", also fatal ones; the stream's own state tells whether it took all.
    bool boWrite(std::ostream& out, io::WriteError& errors, WriteProgress progress, bool boSingleThreaded) const;
    /// The same statements in an order, or with a check.
    bool boWrite(std::ostream& out, io::WriteError& errors, const WriteOptions& options) const;

private:
    FileHeader m_header;
    FileData m_data;
};

/// A file in the simple text form: three lines of header, and a model or what one instance leads to.
class OXA_IFC_API FileSimple final : public FileBase {
public:
    /// Empty, with the schema named in the header and set in the data; it must outlive the file.
    explicit FileSimple(const def::SchemaPset& schema);
    ~FileSimple() override;

    ///@{
    /// The header: schema name, and what the file holds.
    [[nodiscard]] FileHeaderSimple& header() noexcept { return m_header; }
    [[nodiscard]] const FileHeaderSimple& header() const noexcept { return m_header; }
    ///@}
    ///@{
    /// The model: its entities are found and made there.
    [[nodiscard]] DataSimple& data() noexcept { return m_data; }
    [[nodiscard]] const DataSimple& data() const noexcept { return m_data; }
    ///@}
    /// What the header names as root; null for whole data. May be a slot that nothing defined (no schema entity).
    [[nodiscard]] Entity* pRootEntity() const noexcept { return m_pRootEntity; }

    /// As File::boRead. A bad head gives false and no report.
    bool boRead(std::istream& stream, io::ReadError& error, const ReadOptions& options);
    /// The same with the options one by one; numbers are not kept.
    bool boRead(std::istream& stream, SchemaFromName schemaFromName, io::ReadError& error, ReadProgress progress,
                bool boSingleThreaded);

    /// Writes "pEntity" and what it reaches, or the whole data for null. False without a schema name in the header and
    /// when there is nothing to write.
    bool boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors, bool boSingleThreaded) const;
    /// The same statements in an order, or with a check.
    bool boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors, const WriteOptions& options) const;

    /// Finds the slot of the root that the header names; called when the data end.
    void vEntityRootInit(ReadInfoCommon& info);

private:
    mutable FileHeaderSimple m_header;   // a write settles what it says of its extent
    DataSimple m_data;
    Entity* m_pRootEntity = nullptr;
};

}   // namespace oxa::ifc
