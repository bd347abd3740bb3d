// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcCountFile: what a STEP file holds, counted without a model of it: header, schema, instances by type, GlobalIds.
///
/// - For: a look at many files or at large ones. Some ten times as fast as a read, and the memory of the numbers alone.
/// - Rule: what it counts is what a read would hold. Where a byte leaves a doubt of that, it counts nothing and says why.
/// - Not for: faults of values and references to nothing, for which it has no eye: see File::boRead.
/// - Behind: Read/StatementCount.h, which alone looks at the bytes of the DATA section.
/// - Threads: any number of counts at once; each starts and joins its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcReadOptions.h"
#include "platform/Export.h"
#include "schema/Schema.h"

namespace oxa::ifc::io {

/// What a file holds, or why that was not counted.
struct FileCount {
    /// The instances of one type, subtypes not among them.
    struct Type {
        const def::schema::Entity* pType;   ///< never null
        std::size_t iCount;                 ///< at least 1
    };

    /// Why nothing was counted, "a number stands twice"; a read tells more. Empty where all below holds.
    std::string_view doubt;
    /// Header and schema, with data that are empty; null where there is a doubt.
    std::unique_ptr<File> pFile;
    std::vector<Type> types;      ///< in the order of the schema's type numbers
    std::size_t iEntities = 0;    ///< instances of all types
    std::size_t iGlobalIds = 0;   ///< different ones
    std::uint64_t iBytes = 0;     ///< the size of the file
};

/// What a caller may ask of a count.
struct CountOptions {
    /// As in ReadOptions. Called on the caller's thread.
    SchemaFromName schemaFromName{};
    /// Count on the calling thread.
    bool boSingleThreaded = false;
    /// May be empty. Called on the caller's thread with the bytes that have been looked at, some hundred thousand apart.
    std::function<void(std::uint64_t)> progress{};
};

/// The count of a file.
class OXA_IFC_API CountFile {
public:
    CountFile() = delete;

    /// Counts the statements of an exchange structure (ISO 10303-21) that lies in a file: not one that is packed, nor a
    /// pipe. Bad input never throws: whatever is not plain is a doubt. What "progress" throws ends the count.
    static FileCount count(const std::filesystem::path& path, const CountOptions& options);
};

}   // namespace oxa::ifc::io
