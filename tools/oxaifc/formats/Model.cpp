// SPDX-License-Identifier: Apache-2.0
#include "oxaifc/formats/Model.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <utility>

#include <CLI/CLI.hpp>

#include "Format/Ifc/IfcReadFile.h"
#include "oxaifc/formats/FileOpen.h"
#include "oxaifc/formats/FirstBytes.h"
#include "oxaifc/formats/ReadDiagnosis.h"
#include "oxaifc/formats/StatementScan.h"
#include "oxaifc/formats/XmlDocument.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Progress.h"
#include "provider/SchemaLoader.h"

namespace oxa::tool {

void ModelOptions::vDeclare(CLI::App& command, const char* pFileName) {
    command.add_option(pFileName, sPath, "the file to read; - for standard input")->required()->type_name("");
    vDeclareRead(command);
}

void ModelOptions::vDeclareSeveral(CLI::App& command, std::vector<std::string>& paths) {
    command.add_option("FILE", paths, "the files to read; - for standard input")->required()->type_name("");
    vDeclareRead(command);
}

void ModelOptions::vDeclareRead(CLI::App& command) {
    command
        .add_option("--schema-file", schemaPaths,
                    "an EXPRESS file with a schema that files may name; if it is the only one, it serves every file")
        ->type_name("X.exp")
        ->allow_extra_args(false);
    command.add_flag("--single-threaded", boSingleThreaded, "parse on one thread");
}

Model::Model(const ModelOptions& options, bool boKeepIds)
    : m_schemas(options.schemaPaths),
      m_pErrors(ifc::io::ReadError::pAllocate()),
      m_boIdsKept(boKeepIds),
      m_boXml(false) {
    const std::unique_ptr<Input> pInput = pFileOpen(options.sPath);
    Input& input = *pInput;
    m_sName = input.sName();
    m_noSchema.vFinish();
    if (boBeginsAsHtml(input.firstBytes())) throw Failure(fmt::format("{}: is a page of the web (HTML)", m_sName));
    m_boXml = boBeginsAsXml(input.firstBytes()) || boXmlName(options.sPath);
    if (m_boXml) {
        vXmlRead(input, boKeepIds);
        return;
    }
    const bool boSimple = input.boBeginsWith("Ifc file simple");
    if (boSimple)
        m_pFile = std::make_unique<ifc::FileSimple>(m_noSchema);
    else
        m_pFile = std::make_unique<ifc::File>();
    ReadDiagnosis diagnosis = boSimple ? ReadDiagnosis() : foreignBegin(input.firstBytes());

    // The position that the read tells ends at 4 GiB; the input's own count does not.
    Progress progress([&input](unsigned) {
        const std::uint64_t iRead = input.iBytesRead();
        const std::uint64_t iAll = input.iBytesExpected();
        return fmt::format("reading {}: {}", sPrintable(input.sName()),
                           iAll ? fmt::format("{} %", iRead * 100 / iAll) : sGrouped(iRead) + " bytes");
    });
    const auto start = std::chrono::steady_clock::now();
    if (options.boStatementOrder) {
        StatementScan scan(input.stream());
        m_boOk = boRead(scan.stream(), boKeepIds, options.boSingleThreaded, progress.function());
        m_statementNumbers = std::move(scan.numbers());
    } else {
        m_boOk = boRead(input.stream(), boKeepIds, options.boSingleThreaded, progress.function());
    }
    m_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m_iBytes = input.iFinish();
    if (!m_boOk) vDiagnose(input, std::move(diagnosis));
    if (const std::string sText = sLost(); !sText.empty())
        std::fputs(fmt::format("oxaifc: {}: {}\n", sPrintable(m_sName), sText).c_str(), stderr);
}

Model::~Model() = default;

bool Model::boRead(std::istream& stream, bool boKeepIds, bool boSingleThreaded, ifc::ReadProgress progress) {
    if (auto* pFile = dynamic_cast<ifc::File*>(m_pFile.get()))
        return pFile->boRead(stream, m_schemas.function(), *m_pErrors, boKeepIds, std::move(progress),
                             boSingleThreaded);
    return boReadSimple(dynamic_cast<ifc::FileSimple&>(*m_pFile), stream, boKeepIds, boSingleThreaded,
                        std::move(progress));
}

// A read that had other errors before the end says nothing at all about a missing end.
void Model::vDiagnose(Input& input, ReadDiagnosis diagnosis) {
    using ifc::ReportKey;
    const auto& records = m_pErrors->records();
    const auto boVague = [](const ifc::ErrorRecord& record) {
        if (record.severity != ifc::Errors::Fatal) return false;
        for (const ReportKey eKey : {ReportKey::InvalidFile, ReportKey::InvalidEndOfFile,
                                     ReportKey::EndOfCommentNotFound, ReportKey::UnexpectedEqualOperator})
            if (record.reportKey == eKey) return true;
        return false;
    };
    const auto itVague = std::find_if(records.begin(), records.end(), boVague);
    if (itVague == records.end() && m_pErrors->boFatal()) return;
    if (diagnosis.sText.empty() && input.boRestart()) diagnosis = readDiagnosis(input.stream());
    if (diagnosis.sText.empty()) return;
    ifc::ErrorRecord record;
    record.severity = ifc::Errors::Fatal;
    record.description = std::move(diagnosis.sText);
    if (!diagnosis.sSource.empty()) record.lineString = std::move(diagnosis.sSource);
    record.lineNumber = diagnosis.iLine;
    record.reportKey = itVague == records.end() ? ReportKey::InvalidFile : itVague->reportKey;
    record.key = std::string(ifc::reportKeyText(*record.reportKey));
    m_diagnosed.assign(records.begin(), records.end());
    if (itVague == records.end())
        m_diagnosed.push_back(std::move(record));
    else
        m_diagnosed[static_cast<std::size_t>(itVague - records.begin())] = std::move(record);
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
    if (!boKeepIds) return file.boRead(stream, m_schemas.function(), *m_pErrors, std::move(progress), boSingleThreaded);
    if (!file.header().boRead(stream, *m_pErrors)) return false;
    const std::string sSchema = file.header().sSchemaNameGet();
    const ifc::def::SchemaPset* pSchema =
        sSchema.empty() ? nullptr : ifc::SchemaLoader::pSchemaGet(m_schemas.function(), sSchema);
    if (!pSchema) {
        m_pErrors->add(nullptr, ifc::ReportKey::UnknownSchemaName, sSchema, {}, 0);
        return false;
    }
    file.vSchemaSet(*pSchema);
    return ifc::io::ReadFile::boRead(file, stream, m_schemas.function(), *m_pErrors, boKeepIds, std::move(progress),
                                     boSingleThreaded);
}

const ifc::FileHeader* Model::pHeader() const noexcept {
    const auto* pFile = dynamic_cast<const ifc::File*>(m_pFile.get());
    return pFile ? &pFile->header() : nullptr;
}

const ifc::FileHeaderSimple* Model::pHeaderSimple() const noexcept {
    const auto* pFile = dynamic_cast<const ifc::FileSimple*>(m_pFile.get());
    return pFile ? &pFile->header() : nullptr;
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

std::string_view Model::noErrors() const noexcept {
    if (m_boXml) return "read; what the import of ifcXML passes over, it does not tell";
    return m_boOk ? "read without loss" : "not read to the end";
}

int Model::iExitCode() const {
    return m_boOk && errors().empty() && lostStatements().iCount == 0 ? g_iExitFine : g_iExitErrors;
}

}   // namespace oxa::tool
