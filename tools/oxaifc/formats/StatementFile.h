// SPDX-License-Identifier: Apache-2.0
// StatementFile: what the exchange structure and the simple text form have in common: statements "#12=KEYWORD(...);".
//
// For      FormatStep and FormatSimple.
// Threads  one; a read and a write start and join their own.
#pragma once

#include <functional>

#include "oxaifc/formats/FormatJob.h"
#include "oxaifc/formats/ReadDiagnosis.h"

namespace oxa::tool {

// Reads by "boRead", with the progress and the order of statements. Where the read did not come to an end and its own
// records don't say why, the job gets a record that does: "begin", or what the bytes say when they are looked at once
// more.
void vStatementsRead(ReadJob& job, ReadDiagnosis begin,
                     const std::function<bool(std::istream& stream, ifc::ReadProgress progress)>& boRead);

// The statements of the root and what it reaches, or of everything, without any frame.
// Errors   Failure, for a model in which a reference to nothing would become one to an entity.
void vStatementsWrite(WriteJob& job);

}   // namespace oxa::tool
