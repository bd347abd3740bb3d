// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcReadOptions: how a model is read, beyond what the file says.
///
/// - For: File::boRead, FileSimple::boRead.
/// - Default: the built-in schemas, new numbers, several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "schema/Schema.h"

namespace oxa::ifc {

/// From a schema name to a schema, null for an unknown one. Empty: the built-in schemas are asked.
using SchemaFromName = std::function<def::SchemaPset*(const std::string&)>;
/// Position in the stream, in bytes; for the first entity statement and for every further 1000.
using ReadProgress = std::function<void(unsigned)>;

/// What the threads of a read did with their time, for whoever looks for what a read waits for.
struct ReadTrace {
    /// One stage on one thread. Seconds of the wall clock: a thread that has no processor is as busy as it was.
    struct Row {
        const char* pStage;   ///< "scan", "parse", "collect", "numbers", "inverse lists", "order"
        std::size_t
            iThread;      ///< of the stage, from 0; the caller's scans as the first, and parses as the last of several
        double busy;      ///< at work
        double waiting;   ///< for other threads; the scanner's last wait is that for the end of all others
        std::uint64_t iBytes;   ///< of statements that went through
    };
    std::vector<Row> rows;   ///< in the order of the stages; one thread parses as it scans, and collects
};

/// What a caller may ask of a read.
struct ReadOptions {
    /// Handed to the schema loader with the name in the header.
    SchemaFromName schemaFromName{};
    /// Keep the file's instance numbers for a later write; false deals new ones. Who keeps them and adds entities calls
    /// Data::boNumbersAbove first: else these can get numbers that others have.
    bool boKeepIds = false;
    /// May be empty. Called on the caller's thread.
    ReadProgress progress{};
    /// Parse on the calling thread.
    bool boSingleThreaded = false;
    /// Where the input ends too early or has a fatal fault, settle what has come: numbers (boKeepIds), inverse lists and
    /// order, as after a whole read. Nothing is reported of numbers that are named and not defined: their statements may
    /// be those that are missing.
    bool boSettlePart = false;
    /// Where not null: gets what each thread did. Not owned; written until the read returns.
    ReadTrace* pTrace = nullptr;
};

}   // namespace oxa::ifc
