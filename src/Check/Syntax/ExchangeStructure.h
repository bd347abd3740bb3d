// SPDX-License-Identifier: Apache-2.0
// ExchangeStructure: the sections and statements of a file, exactly as ISO 10303-21 writes them.
//
// For      Check.cpp: one run over the file for the levels syntax, header and schema.
// Faults   go to the collector; behind one the next statement is read, so that each statement tells its own. Statements
//          go to the sink.
// Limits   no recursion; lists nest up to g_iMaxDepth deep.
// Threads  one.
#pragma once

#include <cstdint>
#include <istream>
#include <string_view>
#include <vector>

#include "Check/Syntax/InstanceTable.h"
#include "Check/Syntax/Lexer.h"
#include "Check/Syntax/StatementSink.h"

namespace oxa::check {

inline constexpr std::size_t g_iMaxDepth = 1000;

class ExchangeStructure {
public:
    ExchangeStructure(std::istream& stream, const CheckOptions& options, Collector& collector,
                      InstanceTable& instances);

    // The file up to the end of its header, whose entities the sink gets. It says then which edition the file follows.
    void vReadHeader(StatementSink& sink);
    // The rest, whose instances the sink gets.
    void vReadData(StatementSink& sink);
    [[nodiscard]] std::uint64_t iStatements() const noexcept { return m_iStatements; }
    [[nodiscard]] std::uint64_t iBytes() const noexcept { return m_lexer.iBytes(); }

private:
    void vBegin();
    void vHeader();
    void vHeaderEntities();
    void vSections();
    void vData();
    void vInstances();
    void vInstance();
    [[nodiscard]] bool boInstanceBody();
    [[nodiscard]] bool boRecord();
    [[nodiscard]] bool boParameters();
    [[nodiscard]] bool boParameter(bool boMayClose);
    void vAnchors();
    [[nodiscard]] bool boAnchor();
    [[nodiscard]] bool boAnchorItem();
    void vReferences();
    void vBehindEnd();

    [[nodiscard]] bool boAt(TokenKind kind) const noexcept { return m_lexer.current().kind == kind; }
    [[nodiscard]] bool boAtWord(std::string_view word) const noexcept;
    // Also where an instance stands that recovery found.
    [[nodiscard]] bool boAtSectionEnd() const noexcept;
    bool boUnexpected(std::string_view expected);
    [[nodiscard]] bool boExpect(TokenKind kind, std::string_view expected);
    void vSectionSemicolon();
    void vSectionEnd(std::string_view expected);
    void vRecover();
    void vEdition3Only(std::string_view expected);

    Lexer m_lexer;
    InstanceTable& m_instances;
    StatementSink* m_pSink = nullptr;
    std::uint64_t m_iStatements = 0;
    Token m_name;             // of the instance whose "=" is current, without its text
    bool m_boNamed = false;   // the "=" of that instance is current
    enum class Frame : std::uint8_t { List, Typed };
    std::vector<Frame> m_frames;   // what is open around a parameter
};

}   // namespace oxa::check
