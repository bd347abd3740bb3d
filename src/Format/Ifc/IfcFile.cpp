// SPDX-License-Identifier: Apache-2.0
// The file objects: they tie a header and a container together and hand the work to the scanner.
#include "Format/Ifc/IfcFile.h"

#include <cstdint>
#include <limits>

#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/IfcReadFile.h"
#include "Format/Ifc/Store/EntityTable.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {

FileBase::~FileBase() = default;

void FileBase::vSchemaSet(const def::SchemaPset& schema) {
    m_pHeader->vSchemaNameSet(schema.sName);
    m_pData->vSchemaSet(&schema);
}

FileData::~FileData() = default;

DataSimple::~DataSimple() = default;

bool DataSimple::boFinished(ReadInfoCommon& info, bool boKeepIds) {
    m_pFile->vEntityRootInit(info);
    return Data::boFinished(info, boKeepIds);
}

File::File() : m_data(*this) {
    m_pData = &m_data;
    m_pHeader = &m_header;
}

File::~File() = default;

bool File::boRead(std::istream& stream, SchemaFromName schemaFromName, io::ReadError& error, bool boKeepIds,
                  ReadProgress progress, bool boSingleThreaded) {
    return boRead(stream, error, {std::move(schemaFromName), boKeepIds, std::move(progress), boSingleThreaded});
}

bool File::boRead(std::istream& stream, io::ReadError& error, const ReadOptions& options) {
    return io::ReadFile::boRead(*this, stream, error, options);
}

FileSimple::FileSimple(const def::SchemaPset& schema) : m_data(*this) {
    m_pData = &m_data;
    m_pHeader = &m_header;
    vSchemaSet(schema);
}

FileSimple::~FileSimple() = default;

bool FileSimple::boRead(std::istream& stream, SchemaFromName schemaFromName, io::ReadError& error,
                        ReadProgress progress, bool boSingleThreaded) {
    return boRead(stream, error, {std::move(schemaFromName), false, std::move(progress), boSingleThreaded});
}

bool FileSimple::boRead(std::istream& stream, io::ReadError& error, const ReadOptions& options) {
    if (!m_header.boRead(stream, error)) return false;
    const std::string sName = m_header.sSchemaNameGet();
    const def::SchemaPset* pSchema = sName.empty() ? nullptr : SchemaLoader::pSchemaGet(options.schemaFromName, sName);
    if (!pSchema) {
        error.add(nullptr, ReportKey::UnknownSchemaName, sName, {}, 0);
        return false;
    }
    vSchemaSet(*pSchema);
    return io::ReadFile::boRead(*this, stream, error, options);
}

void FileSimple::vEntityRootInit(ReadInfoCommon& info) {
    const auto* piRoot = std::get_if<std::uint64_t>(&m_header.exportInfo);
    if (!piRoot) return;
    // Statements may have negative numbers, so the root may too. As with references, a number beyond 32 bits becomes
    // the largest one, so that it can't be taken for another instance.
    const auto iRoot = static_cast<std::int64_t>(*piRoot);
    const bool boFits =
        iRoot >= std::numeric_limits<std::int32_t>::min() && iRoot <= std::numeric_limits<std::uint32_t>::max();
    EntitySlot& slot = info.slotGet(m_data, boFits ? static_cast<std::uint32_t>(iRoot)
                                                   : std::uint32_t{std::numeric_limits<std::int32_t>::max()});
    slot.vReferencedSet();
    m_pRootEntity = &slot.entity;
}

}   // namespace oxa::ifc
