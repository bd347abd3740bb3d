// SPDX-License-Identifier: Apache-2.0
// FormatJob: what a format's reader and writer get, and what they give.
//
// For      Model and ModelWrite on one side, the files FormatXxx.cpp on the other.
// Threads  one; a read or a write starts and joins its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "oxaifc/io/Input.h"

namespace oxa::tool {

class Model;
class Target;
struct WriteOptions;

// Errors   Failure, for what is no file of the format at all; all else is a record in "errors".
struct ReadJob {
    Input& input;   // at its first byte
    ifc::SchemaFromName schemas;
    ifc::io::ReadError& errors;
    bool boKeepIds;
    bool boSingleThreaded;
    bool boStatementOrder;   // note in which order statements stand
    std::string* pCopy;      // gets the bytes of a format that has statements; null: they are not asked for

    std::unique_ptr<ifc::FileBase> pFile{};
    // One of them, in *pFile.
    const ifc::FileHeader* pHeader = nullptr;
    const ifc::FileHeaderSimple* pHeaderSimple = nullptr;
    bool boOk = false;
    std::uint64_t iBytes = 0;                        // the size of the file
    std::vector<std::uint32_t> statementNumbers{};   // where that was asked for and the format has statements
    // The records of "errors" with one that says more; empty where these say all.
    std::vector<ifc::ErrorRecord> diagnosed{};
};

// Entities that a format has no place for, for one and the same reason.
struct LeftOut {
    std::string sWhy;    // "not connected with the project"
    std::string sNote;   // behind the count; may be empty
    bool boError;        // another format would hold them: exit code 1
    std::vector<const ifc::Entity*> entities{};
};

// The text goes to the target's stream, which keeps what fails.
// Errors   Failure, and no OUT, for a model that the format can't hold.
struct WriteJob {
    Model& model;
    const ifc::Entity* pRoot;   // to be written with what it reaches; null: everything
    const WriteOptions& options;
    Target& target;
    ifc::io::WriteError& errors;

    std::vector<std::size_t> written{};   // numbers of entities with a statement in OUT, ascending
    std::vector<LeftOut> leftOut{};
    std::vector<std::string> notes{};   // to be told once OUT is there
};

}   // namespace oxa::tool
