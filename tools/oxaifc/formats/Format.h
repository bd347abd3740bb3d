// SPDX-License-Identifier: Apache-2.0
// Format: a row of the table of file formats: what a file of it is called and begins with, what it can hold, and how
// it is read and written.
//
// For      Model and ModelWrite, which read and write by it, and verbs, which ask the table instead of naming formats.
// A row    is defined in a file of its own, FormatXxx.cpp, and named in ../CMakeLists.txt; docs/adding.md has the steps.
// Threads  the table is constant: any number.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "oxaifc/io/CommandLine.h"

namespace oxa::tool {

struct ReadJob;
struct WriteJob;

// What a verb may want of a format.
struct FormatHolds {
    bool boModel = false;           // a model as it is, with its header
    bool boFragment = false;        // one entity and what it reaches, without a project
    bool boEveryEntity = false;     // also what no project reaches
    bool boHeaderSection = false;   // a HEADER section (ISO 10303-21, 8), which can be changed byte by byte
    bool boReadTellsAll = false;    // what a read passes over, it tells; so what is written again is what was read
};

struct Format {
    std::string_view word;    // of --format
    std::string_view title;   // "STEP"
    std::string_view file;    // "a STEP file"
    std::span<const std::string_view> ends;
    FormatHolds holds;
    // Whether a file begins like one of this format. Null for the one that is read where no other begins so.
    bool (*boBegins)(std::string_view firstBytes);
    bool boNameDecides;   // an IN whose name ends so is of this format, however it begins
    void (*vRead)(ReadJob& job);
    void (*vWrite)(WriteJob& job);
};

// In the order in which messages name them.
[[nodiscard]] std::span<const Format* const> formats();
[[nodiscard]] const Format& formatFromWord(std::string_view word);
// Those that hold what a member of FormatHolds says: formatsWith(&FormatHolds::boModel).
[[nodiscard]] std::vector<const Format*> formatsWith(bool FormatHolds::*pHolds);

// The one that the end of a name stands for, in any case; null for another end and for none.
[[nodiscard]] const Format* pFormatFromName(std::string_view path);
// The one that a file of that name and with these first bytes is read as.
[[nodiscard]] const Format& formatOfInput(std::string_view path, std::string_view firstBytes);

// The format of an OUT that sFormat says, or the end of the name where that is empty. "written" are those that the verb
// writes. Null for standard output and for a name without an end: the verb decides.
// Errors   Failure, for an end that is none of those, with all that are.
[[nodiscard]] const Format* pFormatOfOutput(const std::string& sPath, const std::string& sFormat,
                                            const std::vector<const Format*>& written);

// Adds --format with the words of these formats.
void vFormatDeclare(Command command, std::string& sFormat, const std::vector<const Format*>& written);

}   // namespace oxa::tool
