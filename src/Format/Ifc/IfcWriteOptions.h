// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcWriteOptions: how a model is written, beyond what its statements say.
///
/// - For: File::boWrite, FileSimple::boWrite, Data::vWriteWith.
/// - Default: the walk from the project on, on several threads, without a further check.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace oxa::ifc {

/// Entities taken from the queue so far, or statements composed so far where an order is asked for.
using WriteProgress = std::function<void(unsigned)>;

/// The order in which statements stand. It means nothing to a reader (ISO 10303-21, 11.2), but it does to whoever
/// compares files.
enum class WriteOrder {
    Any,      ///< of the walk; on several threads whichever they find best
    Number,   ///< of instance numbers, ascending: the same bytes for any number of threads
    File,     ///< of fileNumbers, all others behind them by number: the same bytes for any number of threads
};

/// What a caller may ask of a write.
struct WriteOptions {
    /// Compose on the calling thread. False: on one thread a processor, up to eight; up to three for a line writer that
    /// takes each statement by itself.
    bool boSingleThreaded = false;
    /// May be empty. Called on the caller's thread, with rising counts. With an order, and on several threads: once for
    /// some hundred statements, and for the last.
    WriteProgress progress{};
    /// With an order the statements are the same ones, and so are numbers that entities had before. New ones are dealt
    /// in an order that the model alone decides: from the lowest number on, as statements name entities. An entity that no
    /// list of the Data has, and that was put into a cell past its setters, may come behind all others.
    WriteOrder eOrder = WriteOrder::Any;
    /// For WriteOrder::File: the numbers of a file's statements as they stand there, which mean entities that kept theirs
    /// from the file, and no dealt ones. A number may stand several times, where the first counts, and need not be one of
    /// the model. Not owned; looked at during the write.
    std::span<const std::uint32_t> fileNumbers{};
    /// Tells each number that two statements have, by Error_NumberWrittenTwice: an error of the category Identifier,
    /// with the entity that got the number later, its statement, and the number in place of the line. Files and dealt
    /// numbers alone have none; see Data::boNumbersAbove.
    bool boTellNumbersTwice = false;
    /// Where not null: gets the numbers of the entities that the write has met, as far as they are in the list of the
    /// data, ascending.
    std::vector<std::size_t>* pWritten = nullptr;
};

}   // namespace oxa::ifc
