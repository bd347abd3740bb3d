// SPDX-License-Identifier: Apache-2.0
// From the bytes of a file to its statements (ISO 10303-21): blanks and comments fall away, strings stay whole, and
// every ";" outside of them ends a statement. What a statement says is decided here only for sections and markers;
// entity statements go on to the pool of workers, or are parsed at once on one thread.
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
#include "provider/SchemaLoader.h"

namespace oxa::ifc::io {

namespace {

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
    : ReadFile(stream),
      m_pFile(&file),
      m_boSimple(dynamic_cast<FileSimple*>(&file) != nullptr),
      m_info(error),
      m_thread(file.dataBase().pool()),
      m_boMarkerSeen(m_boSimple),
      m_boInData(m_boSimple) {
    m_entities.reserve(1);
    m_info.m_pTrace = options.pTrace;
    if (options.boSingleThreaded) return;
    m_pPool = std::make_unique<IfcLineReadThreadPool>(m_info, file, false);
    m_pText = &m_pPool->buffer();
}

Scanner::~Scanner() = default;

// How a statement gets its bytes. The buffer holds 16 KiB of the file, m_pText what of the present statement has
// been copied so far, and m_iStart says from where in the buffer the rest is still missing. Nothing is copied byte by
// byte: a piece ends at a blank, at a comment, at the ";" or at the end of the buffer, and goes to m_pText in one
// call. So a refill only has to save the piece that lies across the buffer's end, and afterwards the statement goes on
// at index 0. Inside of a comment there is no such piece; that is what m_boCopyOnRefill says.
void Scanner::vBeforeRefill(const char* pBuffer, unsigned iValid) {
    if (m_boCopyOnRefill && m_iStart < iValid) m_pText->vAppend(pBuffer + m_iStart, iValid - m_iStart);
    m_iStart = 0;
}

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
    return eScan == Scan::EndOfInput ? boEndOfInput() : eScan == Scan::Finished;
}

// Turns of the loop end at a byte that boFindStatementByte() leaves over, or at the end of the buffer. readString() and
// readComment() may stand on the byte behind theirs already, which boAdvanced says; a step then would lose it.
Scanner::Scan Scanner::scan(const SchemaFromName& schemaFromName, const ReadProgress& progress) {
    for (;;) {
        if (m_iPosition >= m_iValid && !boRefill()) return Scan::EndOfInput;
        // A fault found on a worker stops the scan too.
        if (m_info.m_pError->boFatal()) return Scan::EndOfInput;
        if (!boFindStatementByte()) continue;
        Scan eScan = Scan::Continue;
        if (m_pBuffer[m_iPosition] == ';') {
            eScan = statementEnd(schemaFromName, progress);
        } else {
            bool boAdvanced = false;
            eScan = byteRead(boAdvanced);
            if (eScan == Scan::Continue && !boAdvanced) boStep();
        }
        if (eScan != Scan::Continue) return eScan;
    }
}

// Moves to the next byte that the caller has to deal with. False when the buffer holds no such byte any more.
//
// This is the loop in which a read spends its scanning time. ScanMap has found the bytes that matter already, so each
// turn is a search for the next set bit, and most turns end here: a blank run is skipped and the text in front of it
// copied, a string without escapes and line ends is skipped to its closing quote, "#" and the first "=" only set a
// flag. What is left for the caller is rare: the end of a statement, a slash, a second "=", a backslash, and any string
// that is not plain or does not end inside of this buffer, which is read byte by byte with refills in between. "#" is
// no bit of the map, since it would stop the search at every reference; it is looked for by the table until the
// statement has its first one, which mostly is its first byte.
inline bool Scanner::boFindStatementByte() {
    const char* const pBytes = m_pBuffer;
    unsigned i = m_iPosition;
    for (;;) {
        if (!m_boHasNumberSign) i = iNumberSignFind(i);
        i = m_map.iFindStatement(i);
        if (i == m_iValid) break;
        unsigned iNext = i;
        switch (pBytes[i]) {
        case '=':
            if (m_boHasEqual) break;
            m_boHasEqual = true;
            iNext = i + 1;
            // Many exporters put a blank there.
            if (pBytes[iNext] == ' ') iNext = iBlankSkip(iNext);
            break;
        case '\'': iNext = iStringSkip(i); break;
        case details::g_blankBytes[0]:
        case details::g_blankBytes[1]:
        case details::g_blankBytes[2]: iNext = iBlankSkip(i); break;
        default: break;
        }
        if (iNext == i) break;
        i = iNext;
    }
    m_iPosition = i;
    return i != m_iValid;
}

// Behind a string that ends in the buffer and holds neither escape nor line end; else where it was.
unsigned Scanner::iStringSkip(unsigned iQuote) const noexcept {
    const unsigned iEnd = m_map.iFindString(iQuote + 1);
    // A doubled quote ends one string and begins the next: the same to a scanner.
    return m_pBuffer[iEnd] == '\'' ? iEnd + 1 : iQuote;
}

// Behind a run of blanks, or behind as much of it as the buffer holds. Outside strings they never reach the
// statement, not even inside a word. A tab is none.
inline unsigned Scanner::iBlankSkip(unsigned iBlank) {
    vPendingTake(iBlank);
    const char* p = m_pBuffer + iBlank;
    // The padding behind the buffer is none.
    do {
        m_iLine += *p == '\n';
        ++p;
    } while (details::boScanBlank(*p));
    return m_iStart = static_cast<unsigned>(p - m_pBuffer);
}

// Until a statement has its "#", that counts too. It mostly is its first byte, behind the line end of the one before.
// Behind it then; else at the first byte that the caller has to deal with, or at the end of the buffer.
inline unsigned Scanner::iNumberSignFind(unsigned iFrom) {
    if (details::boScanBlank(m_pBuffer[iFrom])) iFrom = iBlankSkip(iFrom);
    // The padding behind the buffer has none.
    const char* const p = details::pFindClass(m_pBuffer + iFrom, m_pBuffer + m_iValid, details::Number);
    m_boHasNumberSign = *p == '#';
    return static_cast<unsigned>(p - m_pBuffer) + m_boHasNumberSign;
}

Scanner::Scan Scanner::byteRead(bool& boAdvanced) {
    switch (m_pBuffer[m_iPosition]) {
    case '\'': readString(boAdvanced); return Scan::Continue;
    case '/': readComment(boAdvanced); return Scan::Continue;
    case '=':                                          // the second one
        vReport(ReportKey::UnexpectedEqualOperator);   // usually a ";" is missing
        return Scan::EndOfInput;
    default: return Scan::EndOfInput;   // a backslash outside a string
    }
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

// The next buffer and its map. False at the end of the input.
bool Scanner::boRefill() {
    const bool boMore = boReadNextBuffer();
    m_map.vBuild(m_pBuffer, m_iValid);
    return boMore;
}

// One byte on. False at the end of the input.
bool Scanner::boStep() { return ++m_iPosition < m_iValid || boRefill(); }

// Some bytes on without looking at them, as far as there are any.
void Scanner::vSkip(unsigned iCount) {
    while (iCount-- && boStep()) {}
}

// Copies what is pending up to iEnd into the statement.
void Scanner::vPendingTake(unsigned iEnd) {
    if (m_iStart < iEnd) m_pText->vAppend(m_pBuffer + m_iStart, iEnd - m_iStart);
    m_iStart = iEnd;
}

// Finds the closing quote. Escapes are passed over as far as a quote or a line end may stand inside of them;
// what they mean is the codec's business (ISO 10303-21, 6.4.3).
void Scanner::readString(bool& boAdvanced) {
    for (;;) {
        if (!boStep() || !boFindStringByte()) return;
        switch (m_pBuffer[m_iPosition]) {
        case '\n': ++m_iLine; break;
        case '\'':
            boAdvanced = true;
            if (!boStep() || m_pBuffer[m_iPosition] != '\'') return;
            break;   // doubled: the next step passes over the second one
        default: vEscapeSkip();
        }
    }
}

// Moves to the next byte that matters inside a string; false at the end of the input.
bool Scanner::boFindStringByte() {
    for (;;) {
        m_iPosition = m_map.iFindString(m_iPosition);
        if (m_iPosition != m_iValid) return true;
        if (!boRefill()) return false;
    }
}

// On a backslash in a string: moves to the last byte of its escape.
void Scanner::vEscapeSkip() {
    if (!boStep()) return;
    switch (m_pBuffer[m_iPosition]) {
    case 'S': return vSkip(2);   // \S\ and any byte, a quote included
    case 'X': break;
    case '\n':
        vReport(ReportKey::UnexpectedNewlineInString);
        ++m_iLine;
        return;
    default: return;
    }
    if (!boStep()) return;
    switch (m_pBuffer[m_iPosition]) {
    case '0':
    case '\\': return vSkip(1);
    case '2': return vSkip(5);
    case '4': return vSkip(9);
    default: return;
    }
}

void Scanner::readComment(bool& boAdvanced) {
    const unsigned iSlash = m_iPosition;
    if (!boStep()) return vReport(ReportKey::InvalidEndOfFile);
    if (m_pBuffer[m_iPosition] != '*') {
        boAdvanced = true;
        return;
    }
    if (m_iPosition == 0)
        m_pText->vDropLast();   // the slash ended the buffer before and went along with its bytes
    else
        vPendingTake(iSlash);
    m_boCopyOnRefill = false;
    if (!boCommentSkip()) vReport(ReportKey::EndOfCommentNotFound);
    m_boCopyOnRefill = true;
    m_iStart = m_iPosition + 1;
}

// From the "*" behind the slash to the slash that closes the comment; false at the end of the input.
bool Scanner::boCommentSkip() {
    bool boStar = false;
    while (boStep()) {
        const char c = m_pBuffer[m_iPosition];
        if (boStar && c == '/') return true;
        boStar = c == '*';
        if (c == '\n') ++m_iLine;
    }
    return false;
}

inline Scanner::Scan Scanner::statementEnd(const SchemaFromName& schemaFromName, const ReadProgress& progress) {
    vPendingTake(m_iPosition + 1);
    Scan eScan = Scan::Continue;
    if (m_boInData && m_boHasNumberSign)
        vEntityStatement(progress);
    else
        eScan = sectionStatement(schemaFromName);
    if (eScan != Scan::Continue) return eScan;
    boStep();
    m_pText->vClear();
    m_boHasNumberSign = m_boHasEqual = false;
    return Scan::Continue;
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
    if (progress && ++m_iProgress >= g_iProgressStep) {
        progress(iPosInStream());
        m_iProgress = 0;
    }
}

void Scanner::vReport(ReportKey eKey) { m_info.m_pError->add(nullptr, eKey, std::string(m_pText->text()), m_iLine); }

}   // namespace oxa::ifc::io
