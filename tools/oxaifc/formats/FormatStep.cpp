// SPDX-License-Identifier: Apache-2.0
// FormatStep: the exchange structure (ISO 10303-21), which a file is read as that begins like no other format.

#include <utility>

#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/formats/Format.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/formats/StatementFile.h"
#include "oxaifc/io/Target.h"

namespace oxa::tool {

namespace {

constexpr std::string_view g_ends[] = {".ifc", ".stp", ".step", ".p21", ".ifczip"};

void vRead(ReadJob& job) {
    auto pFile = std::make_unique<ifc::File>();
    ifc::File& file = *pFile;
    job.pHeader = &file.header();
    job.pFile = std::move(pFile);
    vStatementsRead(job, foreignBegin(job.input.firstBytes()), [&](std::istream& stream, ifc::ReadProgress progress) {
        return file.boRead(stream, job.errors,
                           {job.schemas, job.boKeepIds, std::move(progress), job.boSingleThreaded, true});
    });
}

void vWrite(WriteJob& job) {
    ifc::FileHeader header;
    if (const ifc::FileHeader* pHeader = job.model.pHeader()) {
        header = *pHeader;
    } else {
        header.description.descriptions = {{}};   // ISO 10303-21, 8.2.1: one at least
        header.name.vInit({}, {}, {}, {});
        header.vSchemaNameSet(job.model.sSchemaName());
    }
    std::ostream& out = job.target.stream();
    out << "ISO-10303-21;\n";
    header.boWrite(out, job.errors);
    out << "DATA;\n";
    vStatementsWrite(job);
    out << "ENDSEC;\nEND-ISO-10303-21;\n";
}

}   // namespace

extern const Format g_formatStep{.word = "step",
                                 .title = "STEP",
                                 .file = "a STEP file",
                                 .ends = g_ends,
                                 .holds = {.boModel = true,
                                           .boFragment = true,
                                           .boEveryEntity = true,
                                           .boHeaderSection = true,
                                           .boReadTellsAll = true},
                                 .boBegins = nullptr,
                                 .boNameDecides = false,
                                 .vRead = vRead,
                                 .vWrite = vWrite};

}   // namespace oxa::tool
