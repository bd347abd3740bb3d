// SPDX-License-Identifier: Apache-2.0
// The writing side of the file objects: what a file of either form begins with, and where its walk begins.
#include <cstdint>
#include <utility>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcWriteFile.h"

namespace oxa::ifc {

namespace {

// What the head says of its extent, and the head itself.
bool boHeadWrite(FileHeaderSimple& header, const Data& data, const Entity* pEntity, std::ostream& out,
                 io::WriteError& errors) {
    if (pEntity)
        header.exportInfo = static_cast<std::uint64_t>(data.iIdFromEntity(*pEntity));
    else
        header.exportInfo = FileHeaderSimple::WholeData;
    return header.boWrite(out, errors);
}

}   // namespace

bool FileData::boWrite(io::IfcLineWriterInterface& writer, io::WriteError& errors,
                       std::function<void(unsigned)> progress, bool boSingleThreaded) const {
    return boWrite(writer, errors, {.boSingleThreaded = boSingleThreaded, .progress = std::move(progress)});
}

bool FileData::boWrite(io::IfcLineWriterInterface& writer, io::WriteError& errors, const WriteOptions& options) const {
    if (!pProject()) {
        writer.vFinish();
        return false;
    }
    StepWriteInfoCommon info(entityIdMap(false), errors, writer, options.boSingleThreaded);
    info.iEntityIdGet(pProject());
    vWriteWith(info, options);
    return true;
}

bool File::boWrite(std::ostream& out, io::WriteError& errors, WriteProgress progress, bool boSingleThreaded) const {
    return boWrite(out, errors, {.boSingleThreaded = boSingleThreaded, .progress = std::move(progress)});
}

bool File::boWrite(std::ostream& out, io::WriteError& errors, const WriteOptions& options) const {
    return m_data.pProject() && io::WriteFile::boWrite(*this, out, errors, options);
}

bool FileSimple::boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors,
                         bool boSingleThreaded) const {
    if (!boHeadWrite(m_header, m_data, pEntity, out, errors)) return false;
    return pEntity ? m_data.boWrite(pEntity, out, errors, boSingleThreaded)
                   : m_data.boWrite(out, errors, boSingleThreaded);
}

bool FileSimple::boWrite(const Entity* pEntity, std::ostream& out, io::WriteError& errors,
                         const WriteOptions& options) const {
    return boHeadWrite(m_header, m_data, pEntity, out, errors) &&
           io::WriteFile::boWrite(m_data, pEntity, out, errors, options);
}

}   // namespace oxa::ifc
