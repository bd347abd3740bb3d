// SPDX-License-Identifier: Apache-2.0
#include "Model/ModelWrite.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "Format/Ifc/IfcMissingType.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Model/Archive.h"
#include "Model/Error.h"
#include "Model/Names.h"
#include "platform/Path.h"

namespace oxa::detail {

namespace {

struct Ending {
    const char* pEnding;
    Format format;
};
constexpr Ending g_endings[] = {
    {".ifc", Format::Step}, {".stp", Format::Step},      {".step", Format::Step},  {".p21", Format::Step},
    {".spf", Format::Step}, {".ifcxml", Format::IfcXml}, {".xml", Format::IfcXml},
};

// A model that was read from another form has none of its own.
ifc::FileHeader headerOf(ModelState& state) {
    if (const auto* pFile = dynamic_cast<const ifc::File*>(&state.file())) return pFile->header();
    ifc::FileHeader header;
    header.description.descriptions = {{}};   // ISO 10303-21, 8.2.1: one at least
    header.name.vInit({}, {}, {}, {});
    header.vSchemaNameSet(state.schema().sName);
    return header;
}

struct Writer {
    ModelState& state;
    std::ostream& out;
    const SaveOptions& options;
    std::unique_ptr<ifc::io::WriteError> pErrors = ifc::io::WriteError::pAllocate();

    void vStopCheck() const {
        if (options.stop.stop_requested()) throw Stopped("the write was stopped");
    }

    void vTell(std::uint64_t iDone) const {
        if (options.progress) options.progress({iDone, state.iSize()});
        vStopCheck();
    }

    void vStatements() {
        const ifc::WriteOptions core{.boSingleThreaded = options.threads == 1,
                                     .progress = [this](unsigned iDone) { vTell(iDone); },
                                     .eOrder = ifc::WriteOrder::Number};
        ifc::io::WriteFile::boWrite(state.data(), nullptr, out, *pErrors, core);
        vTell(state.iSize());
    }

    void vStep() {
        out << "ISO-10303-21;\n";
        headerOf(state).boWrite(out, *pErrors);
        out << "DATA;\n";
        vStatements();
        out << "ENDSEC;\nEND-ISO-10303-21;\n";
    }

    void vSimple() {
        ifc::FileHeaderSimple header;
        header.vSchemaNameSet(state.schema().sName);
        header.exportInfo = ifc::FileHeaderSimple::WholeData;
        const auto* pFile = dynamic_cast<const ifc::FileSimple*>(&state.file());
        const ifc::Entity* pRoot = pFile ? pFile->pRootEntity() : nullptr;
        if (pRoot && pRoot->pSchemaEntity()) header.exportInfo = std::uint64_t{state.iNumberOf(*pRoot)};
        header.boWrite(out, *pErrors);
        vStatements();
    }

    void vXml() {
        ifc::xml::Export document;
        if (!document.boExportHeader(headerOf(state)))
            throw FileError("ifcXML is written for IFC4 only, and the model is of " + state.schema().sName);
        if (!state.data().pProject()) throw FileError("ifcXML starts from a project, and the model has none");
        try {
            document.boExportData(state.data(), *pErrors, [this](unsigned iDone) { vTell(iDone); });
        } catch (const ifc::MissingType&) {
            throw FileError("ifcXML has no place for a reference to an instance that the model does not define");
        }
        vStopCheck();
        document.boSave(out);
    }
};

}   // namespace

Format formatOf(const std::string& sName) {
    const std::string sEnding = str::sOfPath(str::pathOf(unpackedName(sName)).extension());
    for (const Ending& ending : g_endings)
        if (boSameName(sEnding, ending.pEnding)) return ending.format;
    throw FileError(sName +
                    ": the end of the name says no form that is written (.ifc, .stp, .step, .p21, .spf, .ifczip, "
                    ".ifcxml, .xml, or .gz behind one of them); SaveOptions::format does");
}

std::string_view endOf(Format format) noexcept {
    switch (format) {
    case Format::Auto:
    case Format::Step: break;
    case Format::IfcXml: return ".ifcxml";
    case Format::Simple: return ".txt";
    }
    return ".ifc";
}

std::vector<Record> modelWrite(ModelState& state, std::ostream& out, Format format, const SaveOptions& options) {
    Writer writer{state, out, options};
    writer.vStopCheck();
    switch (format) {
    case Format::Auto:
    case Format::Step: writer.vStep(); break;
    case Format::Simple: writer.vSimple(); break;
    case Format::IfcXml: writer.vXml(); break;
    }
    std::vector<Record> records;
    for (const ifc::ErrorRecord& error : writer.pErrors->records()) {
        Record record = recordOf(error);
        if (!record.id && error.entity && error.entity->pSchemaEntity()) record.id = state.iNumberOf(*error.entity);
        state.vTypeSpell(record);
        records.push_back(std::move(record));
    }
    std::ranges::stable_sort(records, {}, &Record::id);   // threads report in any order
    return records;
}

}   // namespace oxa::detail
