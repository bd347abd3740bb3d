// SPDX-License-Identifier: Apache-2.0
/// @file
/// Arrow: tables over the C data interface of Apache Arrow, for data frames and databases in the same process.
///
/// Form     a stream of record batches (ArrowArrayStream). Both structs are declared here as the interface has them, under
///          its guards: no library is needed, and headers of others may stand beside this one.
/// Types    bool, int64, float64, utf8 with offsets of 32 bits, and lists of these; Json is utf8. Columns that always
///          have a value are told as such.
/// Memory   the cells of a batch are the very buffers that they were put into. A batch owns them: it is good when the
///          stream, the model and this library's objects are gone; so is each column that is moved out of it.
/// Errors   the stream answers an errno and a text: ENOMEM, EOVERFLOW for texts of more than 2 GiB in one row, EINVAL once
///          the model is gone.
/// Threads  a stream belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Tables/Tables.h"
#include "platform/Export.h"

/// @cond the interface of Apache Arrow, which others declare likewise
extern "C" {

#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE

#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4

struct ArrowSchema {
    const char* format;
    const char* name;
    const char* metadata;
    std::int64_t flags;
    std::int64_t n_children;
    struct ArrowSchema** children;
    struct ArrowSchema* dictionary;
    void (*release)(struct ArrowSchema*);
    void* private_data;
};

struct ArrowArray {
    std::int64_t length;
    std::int64_t null_count;
    std::int64_t offset;
    std::int64_t n_buffers;
    std::int64_t n_children;
    const void** buffers;
    struct ArrowArray** children;
    struct ArrowArray* dictionary;
    void (*release)(struct ArrowArray*);
    void* private_data;
};

#endif   // ARROW_C_DATA_INTERFACE

#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE

struct ArrowArrayStream {
    int (*get_schema)(struct ArrowArrayStream*, struct ArrowSchema* out);
    int (*get_next)(struct ArrowArrayStream*, struct ArrowArray* out);
    const char* (*get_last_error)(struct ArrowArrayStream*);
    void (*release)(struct ArrowArrayStream*);
    void* private_data;
};

#endif   // ARROW_C_STREAM_INTERFACE
}   // extern "C"
/// @endcond

namespace oxa::tables {

/// Makes *out the schema of a table's rows, a struct of its columns, which the caller releases: as a stream of them has it.
OXA_TABLES_API void schema(const Table& table, ArrowSchema* out);

/// How a stream is cut.
struct StreamOptions {
    std::size_t rows = 65536;   ///< of a batch; a few more or fewer, as instances and long texts fall
};

///@{
/// Makes *out a stream of a table, which the caller releases. The model is only looked at, and must stay as it is while
/// there are batches to come: when it is gone, the stream says so. With a shared pointer the stream holds it alive.
/// NameError for a table that there is none of; *out is untouched then.
OXA_TABLES_API void stream(const Model& model, const FileInfo& file, std::string_view table, ArrowArrayStream* out,
                           const StreamOptions& options = {});
OXA_TABLES_API void stream(std::shared_ptr<const Model> model, const FileInfo& file, std::string_view table,
                           ArrowArrayStream* out, const StreamOptions& options = {});
/// The same, with "model" in the column "file".
[[nodiscard]] OXA_TABLES_API ArrowArrayStream stream(const Model& model, std::string_view table);
[[nodiscard]] OXA_TABLES_API ArrowArrayStream stream(std::shared_ptr<const Model> model, std::string_view table);
///@}

}   // namespace oxa::tables
