// SPDX-License-Identifier: Apache-2.0
// Opens a file, finds its format, reads it, and keeps what the read has to tell.
#include "oxaifc/formats/Model.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sstream>
#include <utility>

#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/formats/FormatJob.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"

namespace oxa::tool {

namespace {

// Whether the bytes can be read twice; they stand at their begin afterwards.
bool boSourceAgain(Input& input) { return input.boRestart() && input.stream().peek() != std::char_traits<char>::eof(); }

}   // namespace

void ModelOptions::vDeclare(Command command, const char* pFileName) {
    command.option(pFileName, sPath, "the file to read; - for standard input").required().value("");
    vDeclareRead(command);
}

void ModelOptions::vDeclareSeveral(Command command, std::vector<std::string>& paths) {
    command.option("FILE", paths, "the files to read; - for standard input").required().value("");
    vDeclareRead(command);
}

void ModelOptions::vDeclareRead(Command command) {
    command
        .option("--schema-file", schemaPaths,
                "an EXPRESS file with a schema that files may name; if it is the only one, it serves every file")
        .value("X.exp")
        .oneEach();
    command.flag("--single-threaded", boSingleThreaded, "parse on one thread");
    unpack.vDeclare(command);
}

Model::Model(const ModelOptions& options, bool boKeepIds)
    : m_schemas(options.schemaPaths),
      m_pErrors(ifc::io::ReadError::pAllocate()),
      m_boIdsKept(boKeepIds) {
    std::unique_ptr<Input> pInput = pFileOpen(options.sPath, options.unpack.limits());
    m_sName = pInput->sName();
    if (boBeginsAsHtml(pInput->firstBytes())) throw Failure(fmt::format("{}: is a page of the web (HTML)", m_sName));
    m_pFormat = &formatOfInput(pInput->sInside(), pInput->firstBytes());
    ReadJob job{.input = *pInput,
                .schemas = m_schemas.function(),
                .errors = *m_pErrors,
                .boKeepIds = boKeepIds,
                .boSingleThreaded = options.boSingleThreaded,
                .boStatementOrder = options.boStatementOrder,
                .pCopy = options.boKeepSource && !boSourceAgain(*pInput) ? &m_sCopy : nullptr};
    const auto start = std::chrono::steady_clock::now();
    m_pFormat->vRead(job);
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m_pOwned = std::move(job.pFile);
    m_pFile = m_pOwned.get();
    m_pHeader = job.pHeader;
    m_pHeaderSimple = job.pHeaderSimple;
    m_boOk = job.boOk;
    m_iBytes = job.iBytes;
    m_statementNumbers = std::move(job.statementNumbers);
    m_diagnosed = std::move(job.diagnosed);
    if (options.boKeepSource) m_pInput = std::move(pInput);
    if (const std::string sText = sLost(); !sText.empty())
        std::fputs(fmt::format("oxaifc: {}: {}\n", sPrintable(m_sName), sText).c_str(), stderr);
}

Model::~Model() = default;

std::istream& Model::source() {
    if (m_pInput && m_sCopy.empty()) {
        if (!m_pInput->boRestart()) throw Failure(m_sName + ": can't be read a second time");
        return m_pInput->stream();
    }
    m_pCopy = std::make_unique<std::istringstream>(m_sCopy);
    return *m_pCopy;
}

std::string Model::sLost() const {
    const ifc::Errors::LostStatements lost = m_pErrors->lostStatements();
    const ifc::Errors::LostStatements passed = m_pErrors->passedOver();
    std::string sText;
    if (lost.iCount)
        sText = fmt::format("{} {} lost (the first at line {}): no memory or a fault inside",
                            sCounted(lost.iCount, "statement"), lost.iCount == 1 ? "was" : "were", lost.iFirstLine);
    if (passed.iCount)
        sText += fmt::format("{}{} passed over (the first at line {}): what is read are the fields of the header and "
                             "the statements #12=KEYWORD(...); of the first DATA section",
                             sText.empty() ? "" : "; ",
                             passed.iCount == 1 ? "1 place was" : sGrouped(passed.iCount) + " places were",
                             passed.iFirstLine);
    return sText;
}

ifc::Errors::LostStatements Model::lostStatements() const {
    const ifc::Errors::LostStatements lost = m_pErrors->lostStatements();
    const ifc::Errors::LostStatements passed = m_pErrors->passedOver();
    if (!lost.iCount || !passed.iCount) return lost.iCount ? lost : passed;
    return {lost.iCount + passed.iCount, std::min(lost.iFirstLine, passed.iFirstLine)};
}

std::string Model::sNoErrors() const {
    if (!m_pFormat->holds.boReadTellsAll)
        return fmt::format("read; what the import of {} passes over, it does not tell", m_pFormat->title);
    return m_boOk ? "read without loss" : "not read to the end";
}

int Model::iExitCode() const {
    return m_boOk && errors().empty() && lostStatements().iCount == 0 ? g_iExitFine : g_iExitErrors;
}

void Model::vWholeCheck(const char* pVerb) const {
    for (const ifc::ErrorRecord& record : errors())
        if (record.severity == ifc::Errors::Fatal)
            throw Failure(fmt::format("{}: not read to the end: {}", sName(), sPrintable(record.description)));
    if (!boOk() && errors().empty()) throw Failure(sName() + ": not read to the end");
    if (boFaultInside())
        throw Failure(fmt::format("{}: has lost statements in the read, so it can't be {}", sName(), pVerb));
}

}   // namespace oxa::tool
