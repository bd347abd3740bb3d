#include "oxaifc/Model.h"

#include <chrono>

#include <CLI/CLI.hpp>

#include "Format/Ifc/IfcReadFile.h"
#include "oxaifc/Failure.h"
#include "oxaifc/Input.h"
#include "oxaifc/Output.h"
#include "oxaifc/Progress.h"
#include "oxaifc/XmlDocument.h"
#include "provider/SchemaLoader.h"

namespace oxa::tool {

void ModelOptions::vDeclare(CLI::App& command, const char* pFileName) {
    command.add_option(pFileName, sPath, "the file to read; - for standard input")->required()->type_name("");
    command
        .add_option(
            "--schema-file", schemaPaths,
            "an EXPRESS file with a schema that files may name; if it is the only one, it serves every file")
        ->type_name("X.exp")
        ->allow_extra_args(false);
    command.add_flag("--single-threaded", boSingleThreaded, "parse on one thread");
}

Model::Model(const ModelOptions& options, bool boKeepIds)
    : m_schemas(options.schemaPaths), m_pErrors(ifc::io::ReadError::pAllocate()), m_boIdsKept(boKeepIds),
      m_boXml(false) {
    Input input(options.sPath);
    m_sName = input.sName();
    m_noSchema.vFinish();
    m_boXml = boBeginsAsXml(input.firstBytes()) || boXmlName(options.sPath);
    if (m_boXml) {
        vXmlRead(input, boKeepIds);
        return;
    }
    if (input.boBeginsWith("Ifc file simple"))
        m_pFile = std::make_unique<ifc::FileSimple>(m_noSchema);
    else
        m_pFile = std::make_unique<ifc::File>();

    // The position that the read tells ends at 4 GiB; the input's own count does not.
    Progress progress([&input](unsigned) {
        const std::uint64_t iRead = input.iBytesRead();
        const std::uint64_t iAll = input.iBytesExpected();
        return fmt::format("reading {}: {}", sPrintable(input.sName()),
                           iAll ? fmt::format("{} %", iRead * 100 / iAll) : sGrouped(iRead) + " bytes");
    });
    const auto start = std::chrono::steady_clock::now();
    m_boOk = boRead(input.stream(), boKeepIds, options.boSingleThreaded, progress.function());
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m_iBytes = input.iFinish();
}

Model::~Model() = default;

bool Model::boRead(std::istream& stream, bool boKeepIds, bool boSingleThreaded, ifc::ReadProgress progress) {
    if (auto* pFile = dynamic_cast<ifc::File*>(m_pFile.get()))
        return pFile->boRead(stream, m_schemas.function(), *m_pErrors, boKeepIds, std::move(progress),
                             boSingleThreaded);
    return boReadSimple(dynamic_cast<ifc::FileSimple&>(*m_pFile), stream, boKeepIds, boSingleThreaded,
                        std::move(progress));
}

void Model::vXmlRead(Input& input, bool boKeepIds) {
    const auto start = std::chrono::steady_clock::now();
    XmlInput document(m_sName);
    const std::string sFault = document.sLoad(input.stream());
    m_iBytes = input.iFinish();   // first: where the system could not read on, that is the reason
    if (!sFault.empty()) throw Failure(fmt::format("{}: can't be read as XML: {}", m_sName, sFault));
    auto pFile = std::make_unique<ifc::File>();
    document.vImport(*pFile, m_schemas.function(), *m_pErrors);
    ifc::FileHeader& header = pFile->header();
    if (header.description.descriptions.empty())
        header.description.descriptions = {{}};   // ISO 10303-21, 8.2.1: one at least
    if (header.name.author.empty()) header.name.author = {{}};
    if (header.name.organization.empty()) header.name.organization = {{}};
    if (!boKeepIds) static_cast<void>(pFile->data().entityIdMap(true));   // dealt anew
    m_pFile = std::move(pFile);
    m_boOk = true;
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// What FileSimple::boRead does, except that it never keeps numbers.
bool Model::boReadSimple(ifc::FileSimple& file, std::istream& stream, bool boKeepIds, bool boSingleThreaded,
                         ifc::ReadProgress progress) {
    if (!boKeepIds)
        return file.boRead(stream, m_schemas.function(), *m_pErrors, std::move(progress), boSingleThreaded);
    if (!file.header().boRead(stream, *m_pErrors)) return false;
    const std::string sSchema = file.header().sSchemaNameGet();
    const ifc::def::SchemaPset* pSchema =
        sSchema.empty() ? nullptr : ifc::SchemaLoader::pSchemaGet(m_schemas.function(), sSchema);
    if (!pSchema) {
        m_pErrors->add(nullptr, ifc::Errors::Fatal, ifc::Errors::Model, "Error_UnknownSchemaName", sSchema,
                       {}, 0);
        return false;
    }
    file.vSchemaSet(*pSchema);
    return ifc::io::ReadFile::boRead(file, stream, m_schemas.function(), *m_pErrors, boKeepIds,
                                     std::move(progress), boSingleThreaded);
}

const ifc::FileHeader* Model::pHeader() const noexcept {
    const auto* pFile = dynamic_cast<const ifc::File*>(m_pFile.get());
    return pFile ? &pFile->header() : nullptr;
}

const ifc::FileHeaderSimple* Model::pHeaderSimple() const noexcept {
    const auto* pFile = dynamic_cast<const ifc::FileSimple*>(m_pFile.get());
    return pFile ? &pFile->header() : nullptr;
}

int Model::iExitCode() const noexcept { return m_boOk && errors().empty() ? g_iExitFine : g_iExitErrors; }

}   // namespace oxa::tool
