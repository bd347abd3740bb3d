// SPDX-License-Identifier: Apache-2.0
// Scanner: from a byte stream to statements, each sent to its consumer.
//
// Deliberately more forgiving and simpler than the grammar of ISO 10303-21: it knows statement ends, strings,
// comments and blanks, and finds sections by plain substring search in whole statements. What stands between
// the commas is nobody's business here. A "line" is a statement throughout the library.
//
// Callers  ReadFile::boRead.
// Threads  runs on the caller's thread alone; statements are parsed there or by IfcLineReadThreadPool.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <vector>

#include "Format/Ifc/Read/BlockScan.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "Format/Ifc/Read/ReadThread.h"
#include "Format/Ifc/Read/StatementBuffer.h"
#include "Format/Ifc/Read/StatementFinder.h"

namespace oxa::ifc::io {

class IfcLineReadThreadPool;

class Scanner final : public StatementFinder {
public:
    Scanner(FileBase& file, std::istream& stream, ReadError& error, const ReadOptions& options);
    ~Scanner() override;

    // False where the input has no proper end, or holds a fatal fault. Every statement is parsed then.
    bool boScan(const SchemaFromName& schemaFromName, const ReadProgress& progress);
    // Of the read, for what follows the scan.
    [[nodiscard]] StepReadInfoDataCommon& info() noexcept { return m_info; }

private:
    // What the scan found at the place where it stands.
    enum class Scan : std::uint8_t { Continue, EndOfInput, Finished, Refused };

    Scan scan(const SchemaFromName& schemaFromName, const ReadProgress& progress);
    bool boEndOfInput();
    Scan sectionStatement(const SchemaFromName& schemaFromName);
    Scan schemaResolve(const SchemaFromName& schemaFromName);
    void vEntityStatement(const ReadProgress& progress);
    void vBlocksRead(const ReadProgress& progress);
    void vReport(ReportKey eKey) override;
    void vPassOver();
    void vLookBehind();

    FileBase* m_pFile;
    StatementBuffer m_statement;   // for the statements of a single-threaded read, and behind the last one
    bool m_boSimple;
    bool m_boInBlocks;   // whether a scan in blocks may still be tried
    // Line workers look at it for each reference, and must not wait for what the scan writes around it.
    alignas(memory::g_iApart) StepReadInfoDataCommon m_info;
    StepReadThread m_thread;

    bool m_boMarkerSeen;   // "ISO-10303-21" was seen
    bool m_boInHeader = false;
    bool m_boInData;
    std::uint32_t m_iProgress = BlockPlace::g_iStep;   // entity statements since the last call; the first one calls
    std::vector<Entity*> m_entities;                   // the one result of a statement
    RootedResults m_rooted;                            // it again, where it has a GUID
    std::unique_ptr<IfcLineReadThreadPool> m_pPool;    // null in a single-threaded read; dies before what it uses
};

}   // namespace oxa::ifc::io
