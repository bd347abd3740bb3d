// SPDX-License-Identifier: Apache-2.0
// FormatSimple: the simple text form, for fragments: the statements of ISO 10303-21 behind two lines of its own.

#include <utility>

#include "oxaifc/formats/Format.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/formats/StatementFile.h"
#include "oxaifc/io/Target.h"

namespace oxa::tool {

namespace {

constexpr std::string_view g_ends[] = {".txt"};

bool boBegins(std::string_view firstBytes) { return firstBytes.starts_with("Ifc file simple"); }

// What such a file is born with, until its head names another.
const ifc::def::SchemaPset& noSchema() {
    static const auto pSchema = [] {
        auto pEmpty = std::make_unique<ifc::def::SchemaPset>("");
        pEmpty->vFinish();
        return pEmpty;
    }();
    return *pSchema;
}

void vRead(ReadJob& job) {
    auto pFile = std::make_unique<ifc::FileSimple>(noSchema());
    ifc::FileSimple& file = *pFile;
    job.pHeaderSimple = &file.header();
    job.pFile = std::move(pFile);
    vStatementsRead(job, {}, [&](std::istream& stream, ifc::ReadProgress progress) {
        return file.boRead(stream, job.errors,
                           {job.schemas, job.boKeepIds, std::move(progress), job.boSingleThreaded, true});
    });
}

void vWrite(WriteJob& job) {
    ifc::FileHeaderSimple header;
    header.vSchemaNameSet(job.model.sSchemaName());
    if (job.pRoot)
        header.exportInfo = static_cast<std::uint64_t>(job.model.data().iIdFromEntity(*job.pRoot));
    else if (const ifc::FileHeaderSimple* pHeader = job.model.pHeaderSimple())
        header.exportInfo = pHeader->exportInfo;
    else
        header.exportInfo = ifc::FileHeaderSimple::WholeData;
    header.boWrite(job.target.stream(), job.errors);
    vStatementsWrite(job);
}

}   // namespace

extern const Format g_formatSimple{.word = "simple",
                                   .title = "the simple text form",
                                   .file = "the simple text form",
                                   .ends = g_ends,
                                   .holds = {.boFragment = true, .boEveryEntity = true, .boReadTellsAll = true},
                                   .boBegins = boBegins,
                                   .boNameDecides = false,
                                   .vRead = vRead,
                                   .vWrite = vWrite};

}   // namespace oxa::tool
