// SPDX-License-Identifier: Apache-2.0
// What becomes of the statements of a file: what one says is decided here only for sections and markers; entity statements
// go on to the pool of workers, or are parsed at once on one thread.
//
// A read is lenient: sections are recognised by a word anywhere in a statement, and what has no place is counted as
// passed over instead of ending the read. The scan itself gives up only where the end of a statement is uncertain, or
// without a schema.
#include "Format/Ifc/Read/Scanner.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <memory>
#include <utility>

#include "Format/Ifc/IfcLineReadThreadPool.h"
#include "Format/Ifc/Read/StageWatch.h"
#include "platform/SharedBytes.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc::io {

namespace {

// Bytes to come; 0 where the stream does not tell.
std::uint64_t iBytesOf(std::istream& stream) {
    if (!stream.good()) return 0;
    const std::unique_ptr<stream::SharedBytes> pBytes = stream::pShare(*stream.rdbuf());
    return pBytes && pBytes->iEnd() > pBytes->iBegin() ? pBytes->iEnd() - pBytes->iBegin() : 0;
}

// Sections and markers are found by plain substring search in a whole statement, quoted text included.
bool boContains(std::string_view statement, std::string_view sWord) {
    return statement.find(sWord) != std::string_view::npos;
}

// Blanks, comments and ends of statements taken off the front.
std::string_view behindBlanks(std::string_view text) {
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n;"), text.size()));
        if (!text.starts_with("/*")) return text;
        const std::size_t iEnd = text.find("*/", 2);
        text.remove_prefix(iEnd == std::string_view::npos ? text.size() : iEnd + 2);
    }
}

}   // namespace

ReadFile::~ReadFile() = default;

bool ReadFile::boRead(FileBase& file, std::istream& stream, SchemaFromName schemaFromName, ReadError& error,
                      bool boKeepIds, ReadProgress progress, bool boSingleThreaded) {
    return boRead(file, stream, error, {std::move(schemaFromName), boKeepIds, std::move(progress), boSingleThreaded});
}

bool ReadFile::boRead(FileBase& file, std::istream& stream, ReadError& error, const ReadOptions& options) {
    // On the heap: buffer and entity table are too large for a stack.
    if (options.pTrace) options.pTrace->rows.clear();
    file.dataBase().pool().vExpect(static_cast<std::size_t>(iBytesOf(stream)));
    const auto pScanner = std::make_unique<Scanner>(file, stream, error, options);
    if (!pScanner->boScan(options.schemaFromName, options.progress)) {
        if (options.boSettlePart) file.dataBase().vPartSettle(pScanner->info(), options.boKeepIds);
        return false;
    }
    // From here on every statement is parsed and no slot is filled any more.
    file.dataBase().boFinished(pScanner->info(), options.boKeepIds);
    return !error.boFatal();
}

Scanner::Scanner(FileBase& file, std::istream& stream, ReadError& error, const ReadOptions& options)
    : StatementFinder(stream, error),
      m_pFile(&file),
      m_boSimple(dynamic_cast<FileSimple*>(&file) != nullptr),
      m_boInBlocks(!options.boSingleThreaded),
      m_info(error),
      m_thread(file.dataBase().pool()),
      m_boMarkerSeen(m_boSimple),
      m_boInData(m_boSimple) {
    m_entities.reserve(1);
    m_pText = &m_statement;
    m_info.m_pTrace = options.pTrace;
    m_info.m_pNamed = std::make_shared<details::NumberSet>();
    if (options.boSingleThreaded) return;
    m_pPool = std::make_unique<IfcLineReadThreadPool>(m_info, file, false);
    m_pText = &m_pPool->buffer();
}

Scanner::~Scanner() = default;

bool Scanner::boScan(const SchemaFromName& schemaFromName, const ReadProgress& progress) {
    StageTime time;
    StageWatch watch(m_info.m_pTrace ? &time : nullptr);
    const Scan eScan = scan(schemaFromName, progress);
    if (m_pPool) {
        m_statement.vAppendExact(m_pText->text());   // what is left behind the last statement
        m_pText = &m_statement;
        m_pPool.reset();   // every statement handed on is parsed and finalised, whatever ended the scan
    } else if (m_info.m_pTrace) {
        watch.vWorked(iPosInStream());
        m_info.m_pTrace->rows.push_back({"scan", 0, time.busy, 0, time.iBytes});
    }
    m_thread.vNamedInto(*m_info.m_pNamed);
    return eScan == Scan::EndOfInput ? boEndOfInput() : eScan == Scan::Finished;
}

Scanner::Scan Scanner::scan(const SchemaFromName& schemaFromName, const ReadProgress& progress) {
    for (;;) {
        if (m_boInData && m_boInBlocks) vBlocksRead(progress);
        if (!boFind()) return Scan::EndOfInput;
        if (m_boInData && m_boHasNumberSign) {
            vEntityStatement(progress);
        } else {
            const Scan eScan = sectionStatement(schemaFromName);
            if (eScan != Scan::Continue) return eScan;
        }
        vNext();
    }
}

// As much of the DATA section as there is in blocks of entity statements. What is left is for the scanner: it goes on at the
// first statement that was not read so, with the buffer that it would have had there.
void Scanner::vBlocksRead(const ReadProgress& progress) {
    m_boInBlocks = false;
    if (!stream().good()) return;
    const std::unique_ptr<stream::SharedBytes> pBytes = stream::pShare(*stream().rdbuf());
    if (!pBytes) return;
    const std::uint64_t iBase = pBytes->iBegin() - (iPlace() - m_iPosition + m_iValid);
    const BlockPlace begin{.iPlace = iPlace(), .iLine = m_iLine, .iProgress = m_iProgress};
    const std::optional<BlockPlace> end = m_pPool->blocksRead(*pBytes, iBase, begin, progress);
    if (!end) return;
    const std::uint64_t iBufferPlace = end->iPlace - end->iPlace % g_iBufferSize;
    pBytes->vGoOnAt(iBase + iBufferPlace);
    m_pText = &m_pPool->buffer();
    vBegin(iBufferPlace);
    boRefill();
    vSkipTo(static_cast<unsigned>(end->iPlace - iBufferPlace));
    m_iLine = end->iLine;
    m_iProgress = end->iProgress;
}

// What the end of the input means. A STEP file has to reach the ENDSEC of its data section, and one without any report
// so far gets one; the simple form ends with its bytes.
bool Scanner::boEndOfInput() {
    if (m_boSimple) {   // which needs no ENDSEC
        if (m_info.m_pError->boFatal()) return false;
        // A statement without ";" and what stands behind a backslash are not in the model.
        if (m_iPosition < m_iValid) m_pText->vAppend(m_pBuffer + m_iPosition, 1);
        vPassOver();
        return true;
    }
    if (m_info.m_pError->records().empty()) m_info.m_pError->add(nullptr, ReportKey::InvalidFile, {}, 0);
    return false;
}

// Everything but entity statements; what no state has a use for is counted and dropped.
Scanner::Scan Scanner::sectionStatement(const SchemaFromName& schemaFromName) {
    if (!m_boMarkerSeen) {
        m_boMarkerSeen = boContains(m_pText->text(), "ISO-10303-21");
        return Scan::Continue;
    }
    if (m_boInData) {
        if (!boContains(m_pText->text(), "ENDSEC")) {
            vPassOver();
            return Scan::Continue;
        }
        if (!m_boSimple) vLookBehind();
        return Scan::Finished;
    }
    if (m_boInHeader) {
        if (boContains(m_pText->text(), "ENDSEC")) {
            m_boInHeader = false;
            return schemaResolve(schemaFromName);
        }
        m_pFile->headerBase().boReadLine(std::string(m_pText->text()), *m_info.m_pError, m_iLine);
        return Scan::Continue;
    }
    if (boContains(m_pText->text(), "DATA"))
        m_boInData = true;
    else if (boContains(m_pText->text(), "HEADER"))
        m_boInHeader = true;
    else if (boContains(m_pText->text(), "END-ISO-10303-21"))
        return Scan::Finished;
    else if (!boContains(m_pText->text(), "ENDSEC"))
        vPassOver();
    return Scan::Continue;
}

// Counts the statement as passed over, unless nothing is left of it but what a statement may be empty with.
void Scanner::vPassOver() {
    using namespace std::string_view_literals;
    if (m_pText->text().find_first_not_of("\t;\0"sv) != std::string_view::npos)
        m_info.m_pError->vPassedOverAdd(m_iLine);
}

// The read ends with the DATA section and takes no further byte. Those that it has taken tell whether another section
// follows, or another file.
void Scanner::vLookBehind() {
    static constexpr std::string_view g_sEnd = "END-ISO-10303-21";
    const std::string_view all(m_pBuffer + m_iPosition, m_iValid - m_iPosition);
    std::string_view rest = behindBlanks(all);
    if (rest.starts_with(g_sEnd)) {
        rest = behindBlanks(rest.substr(g_sEnd.size()));
        if (!rest.starts_with("ISO-10303-21")) return;
    } else if (g_sEnd.starts_with(rest)) {   // as far as the bytes go
        return;
    }
    const auto iLines = std::count(all.begin(), all.end() - static_cast<std::ptrdiff_t>(rest.size()), '\n');
    m_info.m_pError->vPassedOverAdd(m_iLine + static_cast<unsigned>(iLines));
}

// The schema is known before the first entity statement; without one there is nothing to read.
Scanner::Scan Scanner::schemaResolve(const SchemaFromName& schemaFromName) {
    const std::string sName = m_pFile->headerBase().sSchemaNameGet();
    const def::SchemaPset* pSchema = sName.empty() ? nullptr : SchemaLoader::pSchemaGet(schemaFromName, sName);
    if (!pSchema) {
        m_info.m_pError->add(nullptr, ReportKey::UnknownSchemaName, sName, std::string(m_pText->text()), m_iLine);
        return Scan::Refused;
    }
    m_info.vUpdateSchemaCache(*pSchema);
    m_pFile->vSchemaSet(*pSchema);
    return Scan::Continue;
}

void Scanner::vEntityStatement(const ReadProgress& progress) {
    if (m_pPool) {
        m_pText = &m_pPool->statementTake(m_iLine);
    } else {
        Data& data = m_pFile->dataBase();
        StepReadInfoData info(m_pText->text(), m_iLine, m_info, &m_thread);
        info.m_pRooted = &m_rooted;
        data.boReadLine(info, m_entities);
        const Guid* pGuid = m_rooted.results.empty() ? nullptr : &m_rooted.results.front().guid;
        data.vEntityEnterTold(m_entities.front(), pGuid, m_info, m_pText->text(), m_iLine);
        m_entities.clear();
        m_rooted.vClear();
    }
    if (progress && ++m_iProgress >= BlockPlace::g_iStep) {
        progress(iPosInStream());
        m_iProgress = 0;
    }
}

void Scanner::vReport(ReportKey eKey) { m_info.m_pError->add(nullptr, eKey, std::string(m_pText->text()), m_iLine); }

}   // namespace oxa::ifc::io
