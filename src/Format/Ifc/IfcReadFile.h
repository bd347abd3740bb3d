// SPDX-License-Identifier: Apache-2.0
/// @file
/// IfcReadFile: the read of a file: from a byte stream to a model that is complete.
///
/// - For: File::boRead and FileSimple::boRead, and callers with a file object of their own.
/// - Behind: the scanner (Read/Scanner.h), which alone derives from this class.
/// - Threads: on the caller's thread; statements are parsed there or by IfcLineReadThreadPool.
#pragma once

#include <iosfwd>

#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileError.h"
#include "Format/Ifc/Read/ReadContext.h"
#include "platform/Export.h"
#include "platform/Stream.h"

namespace oxa::ifc::io {

/// One read of a stream, with the buffer between the two.
class OXA_IFC_API ReadFile : public stream::StreamReadBuffer {
public:
    ///@{
    /// Scans, parses and completes; see File::boRead for the arguments and the result. The head of the simple form has
    /// been read before.
    static bool boRead(FileBase& file, std::istream& stream, ReadError& error, const ReadOptions& options);
    static bool boRead(FileBase& file, std::istream& stream, SchemaFromName schemaFromName, ReadError& error,
                       bool boKeepIds, ReadProgress progress, bool boSingleThreaded);
    ///@}

    ~ReadFile() override;

protected:
    using StreamReadBuffer::StreamReadBuffer;
};

}   // namespace oxa::ifc::io
