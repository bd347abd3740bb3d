// SPDX-License-Identifier: Apache-2.0
/// @file
/// Patch: the text of an exchange structure (ISO 10303-21), with what changed in its model and all else as it stands.
///
///     const oxa::convert::Snapshot before(data);
///     ...                                              // changes of the model that "source" was read as
///     const auto edits = before.edits();
///     const auto patched = oxa::convert::patch(source, out, data, edits);   // "source" at its begin again
///
/// - Kept byte for byte: statements that have no change, those that the read could not take and those of other
///   sections, the header with its time stamp, comments, blanks and line ends.
/// - Of a changed statement only the parameters that changed are written anew, in their places. One whose type is
///   another is written anew as a whole. New ones stand, a line each, before the ENDSEC of the DATA section; a removed
///   one goes with its line, where it has that to itself.
/// - Numbers: of the model, which must have been read with kept numbers. New entities get others where theirs stand
///   somewhere in the text already, as in a statement that could not be read: see highestNumber().
/// - Memory: a block of the text and its longest statement. The text is read once here, and once by highestNumber().
/// - Threads: one; the model's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "Convert/Snapshot.h"
#include "Format/Ifc/IfcFileDataSimple.h"
#include "platform/Export.h"

namespace oxa::convert {

/// Why a text can't be patched. What has been written by then is worth nothing.
struct PatchRefusal {
    /// What is wrong, for programs; sReason says it to people.
    enum class Why {
        NumberTwice,     ///< a changed or removed entity's number stands in two statements, iLine and iOtherLine
        NotThere,        ///< a changed or removed entity has no statement in this text
        NoEnd,           ///< there is no ENDSEC of a DATA section
        NumbersUsedUp,   ///< no number is left for a new entity
        Undefined        ///< a changed value refers to an instance that the text does not define
    };
    Why eWhy;                       ///< what is wrong
    std::size_t iNumber = 0;        ///< of the instance; 0 where it is about none
    std::uint64_t iLine = 0;        ///< from 1; 0 where there is none
    std::uint64_t iOtherLine = 0;   ///< of the second statement
    std::string sReason;            ///< one sentence in English, without a full stop
};

/// What was written.
struct Patched {
    std::size_t iChanged = 0;              ///< statements with other values
    std::size_t iAdded = 0;                ///< new statements
    std::size_t iRemoved = 0;              ///< statements that are gone
    std::optional<PatchRefusal> refusal;   ///< empty where all went well
};

/// The highest number behind a "#" in a text, of whatever section and whether or not an instance has it; 0 without one.
///
/// @param source  read to its end.
[[nodiscard]] OXA_CONVERT_API std::size_t highestNumber(std::istream& source);

/// Writes a text anew.
///
/// @param source    what "data" was read from, at its begin, opened as binary; read to its end.
/// @param out       gets the text. Its failing goes unnoticed: look at its state.
/// @param data      the model as it is now.
/// @param edits     what has changed in it since it was read.
/// @param iHighest  highestNumber() of the text, where there are new entities: they are numbered above it. 0: as they are
///                  in the model, which knows the numbers of what was read alone.
[[nodiscard]] OXA_CONVERT_API Patched patch(std::istream& source, std::ostream& out, const ifc::Data& data,
                                            const Edits& edits, std::size_t iHighest = 0);

}   // namespace oxa::convert
