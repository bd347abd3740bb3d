// SPDX-License-Identifier: Apache-2.0
// What the two formats made of statements share: the read with its progress and its diagnosis, and the write.
#include "oxaifc/formats/StatementFile.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "Format/Ifc/IfcFileEntity.h"
#include "Format/Ifc/IfcWriteFile.h"
#include "oxaifc/formats/Model.h"
#include "oxaifc/formats/ModelWrite.h"
#include "oxaifc/formats/StatementScan.h"
#include "oxaifc/formats/StreamCopy.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/Progress.h"
#include "oxaifc/io/Target.h"

namespace oxa::tool {

namespace {

// A read that had other errors before the end says nothing at all about a missing end.
void vDiagnose(ReadJob& job, ReadDiagnosis diagnosis) {
    using ifc::ReportKey;
    const auto& records = job.errors.records();
    const auto boVague = [](const ifc::ErrorRecord& record) {
        if (record.severity != ifc::Errors::Fatal) return false;
        for (const ReportKey eKey : {ReportKey::InvalidFile, ReportKey::InvalidEndOfFile,
                                     ReportKey::EndOfCommentNotFound, ReportKey::UnexpectedEqualOperator})
            if (record.reportKey == eKey) return true;
        return false;
    };
    const auto itVague = std::find_if(records.begin(), records.end(), boVague);
    if (itVague == records.end() && job.errors.boFatal()) return;
    if (diagnosis.sText.empty() && job.input.boRestart()) diagnosis = readDiagnosis(job.input.stream());
    if (diagnosis.sText.empty()) return;
    ifc::ErrorRecord record;
    record.severity = ifc::Errors::Fatal;
    record.description = std::move(diagnosis.sText);
    if (!diagnosis.sSource.empty()) record.lineString = std::move(diagnosis.sSource);
    record.lineNumber = diagnosis.iLine;
    record.reportKey = itVague == records.end() ? ReportKey::InvalidFile : itVague->reportKey;
    record.key = std::string(ifc::reportKeyText(*record.reportKey));
    job.diagnosed.assign(records.begin(), records.end());
    if (itVague == records.end())
        job.diagnosed.push_back(std::move(record));
    else
        job.diagnosed[static_cast<std::size_t>(itVague - records.begin())] = std::move(record);
}

}   // namespace

void vStatementsRead(ReadJob& job, ReadDiagnosis begin,
                     const std::function<bool(std::istream& stream, ifc::ReadProgress progress)>& boRead) {
    Input& input = job.input;
    // The position that the read tells ends at 4 GiB; the input's own count does not.
    Progress progress([&input](unsigned) {
        const std::uint64_t iRead = input.iBytesRead();
        const std::uint64_t iAll = input.iBytesExpected();
        return fmt::format("reading {}: {}", sPrintable(input.sName()),
                           iAll ? fmt::format("{} %", iRead * 100 / iAll) : sGrouped(iRead) + " bytes");
    });
    std::optional<StreamCopy> copy;
    if (job.pCopy) copy.emplace(input.stream(), *job.pCopy);
    std::istream& stream = copy ? copy->stream() : input.stream();
    if (job.boStatementOrder) {
        StatementScan scan(stream);
        job.boOk = boRead(scan.stream(), progress.function());
        job.statementNumbers = std::move(scan.numbers());
    } else {
        job.boOk = boRead(stream, progress.function());
    }
    if (copy) copy->vFinish();
    job.iBytes = input.iFinish();
    if (!job.boOk) vDiagnose(job, std::move(begin));
}

void vStatementsWrite(WriteJob& job) {
    const ifc::Data& data = job.model.data();
    // Instances that are named and not defined get numbers in the write, which may be numbers that the file uses.
    // What it dealt lies between the numbers of two entities that are no part of the model.
    const ifc::Entity before, behind;
    const bool boGuard = job.model.boIdsKept() && !job.model.errors().empty();
    const std::size_t iBefore = boGuard ? data.iIdFromEntity(before) : 0;
    {
        Progress progress(writeProgress(job));
        ifc::io::WriteFile::boWrite(data, job.pRoot, job.target.stream(), job.errors,
                                    {.boSingleThreaded = job.options.boSingleThreaded,
                                     .progress = progress.function(),
                                     .eOrder = job.options.eOrder,
                                     .fileNumbers = job.model.statementNumbers(),
                                     .boTellNumbersTwice = true,
                                     .pWritten = &job.written});
    }
    const std::size_t iBehind = boGuard ? data.iIdFromEntity(behind) : 0;
    for (std::size_t iId = iBefore + 1; iId < iBehind; ++iId)
        if (data.pEntityFromId(iId))
            throw Failure(fmt::format("{}: a reference to an instance that is not in the file would become one to "
                                      "#{}; oxaifc convert --renumber gives all of them numbers of their own",
                                      job.model.sName(), iId));
}

}   // namespace oxa::tool
