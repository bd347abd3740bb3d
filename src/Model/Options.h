// SPDX-License-Identifier: Apache-2.0
/// @file
/// Options: how a model is opened and saved, and what was found on the way.
///
/// Threads  functions are called on the thread of the caller.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "Model/Archive.h"
#include "platform/Export.h"

namespace oxa::ifc::def {
class SchemaPset;
}   // namespace oxa::ifc::def

namespace oxa {

/// How far a read is, in bytes, or a write, in elements.
struct Progress {
    std::uint64_t done = 0;                 ///< so far
    std::optional<std::uint64_t> total{};   ///< where it is known
};

/// How a model is read.
struct OpenOptions {
    /// 1: all on the calling thread. Else on as many as the machine has a use for.
    unsigned threads = 0;
    /// Elements have the numbers of the file, and save() writes them so. False: 1, 2, 3 and so on, in the order of
    /// those of the file.
    bool keepNumbers = true;
    /// Where it asks for the end, open() throws Stopped.
    std::stop_token stop{};
    /// May be empty. Called now and then, with rising counts. What it throws ends the read, and open() throws it.
    std::function<void(const Progress&)> progress{};
    /// From the name in the file to a schema, which has to outlive the model; null for an unknown one. Empty: the
    /// built-in schemas are asked.
    std::function<ifc::def::SchemaPset*(const std::string& name)> schema{};
    /// What may come out of a file that is packed; more of it is a FileError.
    UnpackLimits unpack{};
};

/// What a file is, on disk.
enum class Format : std::uint8_t {
    Auto,     ///< to be told by the end of the name: .ifc, .stp, .step, .p21; .ifcxml, .xml; .ifczip holds STEP
    Step,     ///< ISO 10303-21
    IfcXml,   ///< ISO 10303-28, for IFC4 alone; docs/ifcxml.md tells what it has no place for
    Simple,   ///< the short text form, for fragments
};

/// How a model is written.
struct SaveOptions {
    /// Auto: by the name of the file.
    Format format = Format::Auto;
    unsigned threads = 0;   ///< as in OpenOptions
    /// Replace the file that the model was read from even where not all of it is in the model (Model::whole), which
    /// loses the rest. Otherwise that is a FileError.
    bool replaceIncomplete = false;
    /// Where it asks for the end, save() throws Stopped, and the file is as it was.
    std::stop_token stop{};
    /// May be empty. Called now and then, with rising counts. What it throws ends the write, and save() throws it; the
    /// file is as it was.
    std::function<void(const Progress&)> progress{};
};

/// One thing that was wrong with a file.
struct Record {
    /// Error: reading or writing went on. Fatal: the file was given up.
    enum class Severity : std::uint8_t { Error, Fatal };

    std::string key;                       ///< the same in all languages, as in Error_UnknownEntityType
    Severity severity = Severity::Error;   ///< whether the work went on
    std::string category;                  ///< syntax, header, value, null, reference, model, identifier or schema
    std::string message;                   ///< for people, in the language that is set (platform/Localization.h)
    std::uint64_t line = 0;                ///< from 1; 0 where there is none
    std::optional<std::uint64_t> id{};     ///< of the instance
    std::string type;   ///< of the instance, as in IfcWall; as the file spells it where none is known
    std::string text;   ///< of the file, that it is about
};

}   // namespace oxa
