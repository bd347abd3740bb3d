// SPDX-License-Identifier: Apache-2.0
/// @file
/// Check: is a STEP file valid, by the exchange structure, by its header, by its schema and by the schema's rules.
///
/// For      programs that have to know before they take a file, or that tell its author what is wrong with it.
/// Not for  reading: Model takes what can be taken of a file and tells what it refused. A check builds no model for the
///          first three levels and forgives nothing.
/// Order    the same records in the same order for any number of threads.
/// Memory   for the first three levels a few bytes an instance, and what is wrong; never the file. For the rules the model.
/// Bounded  time and memory grow with the file, whatever is in it or in the text of its schema: what would take more is left
///          out and told, and nothing is called valid then.
/// Threads  one check a thread; results are plain values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <limits>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Options.h"
#include "platform/Export.h"

namespace oxa {

/// What a file is held to. Each level takes for granted what those before it say.
enum class CheckLevel : std::uint8_t {
    Syntax,   ///< the exchange structure as ISO 10303-21 writes it
    Header,   ///< number, form and type of the header's fields; a schema that is known
    Schema,   ///< every statement against its entity type: parameters, references, bounds, UNIQUE, inverse cardinality
    Rules,    ///< WHERE of entities and types, global RULEs
};

/// How many levels there are.
inline constexpr std::size_t checkLevelCount = 4;

/// "syntax", "header", "schema" or "rules".
[[nodiscard]] OXA_CHECK_API std::string_view checkLevelName(CheckLevel level) noexcept;

/// Whether a failure takes the file's validity away.
enum class CheckWeight : std::uint8_t {
    Failure,   ///< the file is not valid
    Note,      ///< what the schema does not forbid: the rules that were published for headers of IFC files, the form
               ///< of a GlobalId
};

/// How a file is checked.
struct CheckOptions {
    /// Which levels; indexed by CheckLevel. Header and schema need the syntax to be scanned, which is then not told.
    std::array<bool, checkLevelCount> levels{true, true, true, true};
    /// 1: all on the calling thread. Else on as many as the machine has a use for.
    unsigned threads = 0;
    /// Places of failures that are kept, of all groups together; those behind them are counted (CheckGroup::count).
    std::size_t mostPlaces = 4'000'000;
    /// The same of each group: those that stand first in the file are kept.
    std::size_t mostPlacesOfGroup = (std::numeric_limits<std::size_t>::max)();
    /// Steps that the rules may take, all evaluations together: loop turns, calls, items looked at; a thousand more for each
    /// instance, and one for each byte of the file. What would take more is not evaluated, and the verdict is at best
    /// Undecided.
    std::uint64_t ruleSteps = 200'000'000;
    /// Where it asks for the end, the check throws Stopped.
    std::stop_token stop{};
    /// May be empty. Called now and then on the caller's thread with rising counts, in bytes of the file. The rules count
    /// as much again; from the first of those calls on the whole is known. What it throws ends the check and is passed on.
    std::function<void(const Progress&)> progress{};
    /// From the name in the file to a schema, which has to outlive the check; null for an unknown one. Empty: the
    /// built-in schemas are asked.
    std::function<ifc::def::SchemaPset*(const std::string& name)> schema{};
};

/// Where something fails.
struct CheckPlace {
    std::uint64_t line = 0;     ///< from 1; 0 where it is about the file as a whole
    std::uint64_t column = 0;   ///< in bytes, from 1; 0 where it is not known
    std::uint64_t id = 0;       ///< the number of the instance; 0 where there is none, or one of more than 18 digits
    std::string found{};        ///< what stands there, or the values that made the rule fail; may be empty
};

/// What all failures that are equal but for their place have in common.
struct CheckGroup {
    CheckLevel level = CheckLevel::Syntax;       ///< whose failure it is
    CheckWeight weight = CheckWeight::Failure;   ///< whether it counts
    std::string key{};                           ///< the same in all versions, as in Schema_ReferenceType
    std::string rule{};   ///< as in "IfcRoot.UR1", "ISO 10303-21 6.4.3"; what says that it is wrong
    std::string type{};   ///< of the instance, as in IfcWall; as the file spells it where it is unknown; may be empty
    std::string attribute{};            ///< as in GlobalId; may be empty
    std::string message{};              ///< one sentence, in English, without what differs from place to place
    std::string expected{};             ///< what would be right, as in "1 to 3 items"; may be empty
    std::uint64_t count = 0;            ///< of all its places, also of those that are not kept
    std::vector<CheckPlace> places{};   ///< in the order of the file
};

/// One failure: a place of a group. Good as long as the result.
struct CheckRecord {
    const CheckGroup* group;   ///< never null
    const CheckPlace* place;   ///< never null
};

/// What became of one level.
struct CheckLevelSummary {
    /// Whether it was done.
    enum class State : std::uint8_t {
        NotAsked,      ///< CheckOptions::levels says no
        Done,          ///< all of it was looked at
        NotPossible,   ///< it could not be done, or not wholly; "reason" says why
    };

    State state = State::NotAsked;   ///< whether it was done
    std::string reason{};            ///< of NotPossible, as in "the schema IFC99 is not known"
    std::uint64_t failures = 0;      ///< of weight Failure
    std::uint64_t notes = 0;         ///< of weight Note
};

/// The rules of one schema: 0 throughout where the level was not asked for.
struct CheckRuleCounts {
    std::string schema{};              ///< its own name, as in IFC4
    std::uint64_t known = 0;           ///< rules that the schema has
    std::uint64_t evaluated = 0;       ///< those of them that were looked at wherever they hold
    std::uint64_t indeterminate = 0;   ///< those of them that were UNKNOWN for an instance, which violates nothing
    std::uint64_t notEvaluated = 0;    ///< those that were left out for an instance or for all of them
};

/// What can be said in one word.
enum class CheckVerdict : std::uint8_t {
    Valid,       ///< every level that was asked for was done, and nothing fails
    NotValid,    ///< something fails
    Undecided,   ///< nothing fails, and not all that was asked for could be done
};

/// What a check found.
struct CheckResult {
    /// Those with a lower level first, then by the place where they begin, then by key.
    std::vector<CheckGroup> groups{};
    /// Indexed by CheckLevel.
    std::array<CheckLevelSummary, checkLevelCount> levels{};
    /// One a schema of the file; empty where none is known.
    std::vector<CheckRuleCounts> rules{};
    /// Statements of the data sections, as far as the syntax shows them.
    std::uint64_t statements = 0;
    /// Size of the file.
    std::uint64_t bytes = 0;
    /// More than CheckOptions::mostPlaces were found: how many are counted in their groups and have no place there.
    std::uint64_t placesLeftOut = 0;

    /// In one word.
    [[nodiscard]] OXA_CHECK_API CheckVerdict verdict() const noexcept;
    /// All places of all groups in the order of the file, those about the file as a whole at the end.
    [[nodiscard]] OXA_CHECK_API std::vector<CheckRecord> records() const;
    /// What is to be known of one level.
    [[nodiscard]] const CheckLevelSummary& level(CheckLevel which) const noexcept {
        return levels[static_cast<std::size_t>(which)];
    }
};

/// Checks the bytes of a STEP file from where the stream stands to its end.
///
/// The stream is read once, and left at its end. The rules need a model, which is read beside; with one thread behind, and
/// the stream is read again where it can be set back, else its bytes are kept until then.
/// @throws Stopped, where the token asked for it; FileError, where the system can't read on.
[[nodiscard]] OXA_CHECK_API CheckResult checkStream(std::istream& bytes, const CheckOptions& options = {});

/// The same of a file.
/// @throws Stopped, FileError
[[nodiscard]] OXA_CHECK_API CheckResult checkFile(const std::filesystem::path& file, const CheckOptions& options = {});

}   // namespace oxa
