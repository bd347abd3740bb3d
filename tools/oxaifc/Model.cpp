#include "oxaifc/Model.h"

#include <chrono>

#include <CLI/CLI.hpp>

#include "oxaifc/Failure.h"
#include "oxaifc/Input.h"
#include "oxaifc/Progress.h"

namespace oxa::tool {

void ModelOptions::vDeclare(CLI::App& command) {
    command.add_option("FILE", sPath, "the file to read; - for standard input")->required()->type_name("");
    command
        .add_option(
            "--schema-file", schemaPaths,
            "an EXPRESS file with a schema that files may name; if it is the only one, it serves every file")
        ->type_name("X.exp")
        ->allow_extra_args(false);
    command.add_flag("--single-threaded", boSingleThreaded, "parse on one thread");
}

Model::Model(const ModelOptions& options, bool boKeepIds)
    : m_schemas(options.schemaPaths), m_pErrors(ifc::io::ReadError::pAllocate()) {
    Input input(options.sPath);
    m_sName = input.sName();
    m_noSchema.vFinish();
    if (input.boBeginsWith("Ifc file simple"))
        m_pFile = std::make_unique<ifc::FileSimple>(m_noSchema);
    else
        m_pFile = std::make_unique<ifc::File>();

    Progress progress(input);
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
    return dynamic_cast<ifc::FileSimple&>(*m_pFile).boRead(stream, m_schemas.function(), *m_pErrors,
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
