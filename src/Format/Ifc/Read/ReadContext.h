// SPDX-License-Identifier: Apache-2.0
/// @file
/// ReadContext: what travels with a read beside the entity table: the schema cache, what a thread keeps, the statement
/// in hand.
///
/// Callers  the scanner and the line workers. Library users do not meet it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Store/EntityTable.h"
#include "platform/Id.h"
#include "schema/Schema.h"

namespace oxa::ifc {

/// ReadInfoCommon with what a STEP read knows of the schema, so that no thread searches for it.
struct StepReadInfoDataCommon : ReadInfoCommon {
    /// Reports go to "error", which is not owned.
    using ReadInfoCommon::ReadInfoCommon;

    /// Looks IFCROOT up; null where the schema has none.
    void vUpdateSchemaCache(const def::schema::Schema& schema);

    const def::schema::Entity* m_pRootSchema = nullptr;   ///< IFCROOT, the supertype of all that has a GlobalId
};

class StepReadThread;   // ReadThread.h

/// A rooted instance among the results of several statements, with its GUID: who enters it in the map so need
/// not load the instance itself, whose cache lines the worker's processor has just written.
struct RootedResult {
    std::size_t iResult;   ///< its place among the results
    Guid guid;             ///< of the instance, as the statement gives it
};

/// The rooted instances of a batch of statements, gathered until one thread enters them into the map of GUIDs.
struct RootedResults {
    std::vector<RootedResult> results;   ///< in the order of the statements
    bool boNumberReused = false;   ///< a statement filled a slot again: what was told of that slot may no longer hold

    /// Makes it fit for the next batch; its memory is kept.
    void vClear() noexcept {
        results.clear();
        boNumberReused = false;
    }
};

/// One statement while it is parsed, on the stack of the thread that does it.
struct StepReadInfoData {
    /// A statement of a read. Nothing is owned: the text, "common" and the thread's own must outlive it.
    StepReadInfoData(std::string_view line, std::uint32_t iLine, StepReadInfoDataCommon& common,
                     StepReadThread* pThread = nullptr) noexcept
        : m_line(line),
          m_iLine(iLine),
          m_pCommon(&common),
          m_pThread(pThread) {}

    std::string_view m_line;              ///< the text, ending in ";"
    std::uint32_t m_iLine;                ///< where the statement ends in the file, from 1
    StepReadInfoDataCommon* m_pCommon;    ///< what all statements of the read share
    StepReadThread* m_pThread;            ///< null: of a thread that keeps nothing
    RootedResults* m_pRooted = nullptr;   ///< where a rooted instance is told, where that is of use

    /// The text for reports, copied once however many there are.
    [[nodiscard]] const SourceText& sourceText() {
        if (!m_sourceText) m_sourceText = std::string(m_line);
        return m_sourceText;
    }

    /// The first "(" at or behind iStart, npos when none follows. Remembers the last result: select parsers ask for
    /// every item of a list, and a search of its own for each would make a long list quadratic.
    [[nodiscard]] std::size_t iParenthesisFind(std::size_t iStart) noexcept;

private:
    SourceText m_sourceText;
    std::size_t m_iSearched = std::string::npos;
    std::size_t m_iParenthesis = 0;
};

}   // namespace oxa::ifc
