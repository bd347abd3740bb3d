// SPDX-License-Identifier: Apache-2.0
// FormatIfcXml: ifcXML (ISO 10303-28) of IFC4: the project and what it reaches.

#include <utility>

#include <fmt/format.h>

#include "Format/Ifc/IfcMissingType.h"
#include "oxaifc/formats/Format.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/formats/XmlDocument.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Progress.h"
#include "oxaifc/io/Target.h"

namespace oxa::tool {

namespace {

constexpr std::string_view g_ends[] = {".ifcxml", ".xml"};

bool boBegins(std::string_view firstBytes) { return boBeginsAsXml(firstBytes); }

void vRead(ReadJob& job) {
    XmlInput document(job.input.sName());
    const std::string sFault = document.sLoad(job.input.stream());
    job.iBytes = job.input.iFinish();   // first: where the system could not read on, that is the reason
    if (!sFault.empty()) throw Failure(fmt::format("{}: can't be read as XML: {}", job.input.sName(), sFault));
    auto pFile = std::make_unique<ifc::File>();
    document.vImport(*pFile, job.schemas, job.errors);
    ifc::FileHeader& header = pFile->header();
    if (header.description.descriptions.empty())
        header.description.descriptions = {{}};   // ISO 10303-21, 8.2.1: one at least
    if (header.name.author.empty()) header.name.author = {{}};
    if (header.name.organization.empty()) header.name.organization = {{}};
    if (!job.boKeepIds) static_cast<void>(pFile->data().entityIdMap(true));   // dealt anew
    job.pHeader = &header;
    job.pFile = std::move(pFile);
    job.boOk = true;
}

// Sorted by why the export left them out, which its reports tell.
void vLeftOut(WriteJob& job, const ifc::Errors& reports) {
    const struct {
        ifc::ReportKey eKey;
        LeftOut leftOut;
    } sorts[] = {
        {ifc::ReportKey::EntityNotConnected,
         {"not connected with the project", " (ifcXML has no place for them)", false}},
        {ifc::ReportKey::EntityWithoutForm,
         {"connected with the project only by values that ifcXML has no form for", "", true}},
    };
    for (const auto& sort : sorts) {
        LeftOut leftOut = sort.leftOut;
        for (const ifc::ErrorRecord& record : reports.records())
            if (record.reportKey == sort.eKey) leftOut.entities.push_back(record.entity);
        if (!leftOut.entities.empty()) job.leftOut.push_back(std::move(leftOut));
    }
}

// The whole tree stands in memory before the first byte is written.
void vWrite(WriteJob& job) {
    Model& model = job.model;
    XmlOutput document;
    if (!document.boExportHeader(model.file().headerBase()))
        throw Failure(fmt::format("{}: is of schema {}, and ifcXML is written for IFC4 only; oxaifc convert --schema "
                                  "IFC4 makes one of that",
                                  model.sName(), sPrintable(model.sSchemaName())));
    if (!model.data().pProject())
        throw Failure(fmt::format("{}: has no IFCPROJECT, where ifcXML starts from", model.sName()));
    const auto pReports = ifc::io::WriteError::pAllocate();
    try {
        Progress progress(writeProgress(job));
        document.boExportData(model.data(), *pReports, progress.function());
    } catch (const ifc::MissingType&) {
        throw Failure(fmt::format("{}: refers to an instance that it does not define or that could not be read, which "
                                  "ifcXML can't hold; {} is not written (oxaifc check tells which)",
                                  model.sName(), job.target.sName()));
    }
    vLeftOut(job, *pReports);
    document.boSave(job.target.stream());   // what fails is kept by the target
    if (const std::size_t iDepth = document.iDepth(); iDepth > XmlOutput::g_iDepthLimit)
        job.notes.push_back(fmt::format("{}: has elements nested {} deep; many readers take fewer, this one {}",
                                        sPrintable(job.target.sName()), sGrouped(iDepth),
                                        sGrouped(XmlOutput::g_iDepthLimit)));
    if (!model.data().pSchema()->pXmlDefaults)
        job.notes.push_back(fmt::format("{}: is written without the forms that are published for IFC4, whose shape "
                                        "the schema of --schema-file does not have; other readers may not take it",
                                        sPrintable(job.target.sName())));
}

}   // namespace

extern const Format g_formatIfcXml{.word = "ifcxml",
                                   .title = "ifcXML",
                                   .file = "an ifcXML document",
                                   .ends = g_ends,
                                   .holds = {.boModel = true},
                                   .boBegins = boBegins,
                                   .boNameDecides = true,
                                   .vRead = vRead,
                                   .vWrite = vWrite};

}   // namespace oxa::tool
