// SPDX-License-Identifier: Apache-2.0
/// @file
/// Tables: a model as tables, for databases, spreadsheets and data frames.
///
///     oxa::tables::TextFiles folder("house", oxa::tables::TextForm::Csv);   // TextFiles.h; Sqlite.h and Xlsx.h have others
///     oxa::tables::write(model, folder);
///     folder.finish();
///
/// For      whoever asks a model with another engine than this library. docs/tables.md has the tables and their columns.
/// Names    of the fixed tables (element, property ...), which are the same for every schema; and of any class of the
///          schema: one row an instance, subtypes too, one column an attribute.
/// Order    rows by the number of the instance that they are of.
/// Errors   NameError for a table that there is none of, with near names; what a sink throws.
/// Threads  a model that nobody changes may be read by any number of threads, each with a Reader of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Format/Ifc/IfcFileError.h"
#include "Model/Model.h"
#include "Tables/Batch.h"
#include "platform/Export.h"

namespace oxa::tables {

/// A table: its name and its columns.
struct Table {
    std::string name;                ///< as in property; of a class as the schema spells it
    std::string description;         ///< what a row is
    std::vector<Column> columns{};   ///< in their order

    friend bool operator==(const Table&, const Table&) = default;
};

/// Where a model comes from: what the rows say of its file.
struct FileInfo {
    std::string file;                              ///< the column "file" of every table: what tells files apart
    std::string path;                              ///< of the file; empty where there is none
    std::optional<std::uint64_t> size{};           ///< in bytes
    std::function<std::string()> sha256{};         ///< may be empty; asked once, when the row of the file is made
    std::span<const ifc::ErrorRecord> records{};   ///< of a read by the core; else the model's own errors() are told
};

/// Of a file on disk, with its size, and its SHA-256 when that is asked for. "file" is the path as given.
[[nodiscard]] OXA_TABLES_API FileInfo fileInfo(const std::string& path);

/// The fixed tables in their order.
[[nodiscard]] OXA_TABLES_API std::vector<Table> tables();
/// The fixed tables, then those of the classes that the model has instances of, by name. Others are there too, without
/// rows or with those of subtypes.
[[nodiscard]] OXA_TABLES_API std::vector<Table> tables(const Model& model);
/// One of the fixed tables, or that of a class of the model's schema, in any case of letters.
[[nodiscard]] OXA_TABLES_API Table table(const Model& model, std::string_view name);

/// What takes rows. One sink may take those of several models, one after the other.
class OXA_TABLES_API TableSink {
public:
    virtual ~TableSink();
    /// Rows of this table follow. Called again for the same one for each further model.
    virtual void begin(const Table& table) = 0;
    /// Some rows of it; the batch is used again when this returns.
    virtual void rows(const Batch& batch) = 0;
};

/// All fixed tables but "reference", which is long.
[[nodiscard]] OXA_TABLES_API std::vector<std::string> usualTables();
/// Hands the tables of these names to the sink, one after the other. NameError before the first row. Rows are made on a
/// thread of their own, which also asks for the SHA-256 of the file; the sink is called on this one.
OXA_TABLES_API void write(const Model& model, const FileInfo& file, TableSink& sink,
                          std::span<const std::string> names);
/// The same with usualTables().
OXA_TABLES_API void write(const Model& model, const FileInfo& file, TableSink& sink);
/// The same, with "model" in the column "file".
OXA_TABLES_API void write(const Model& model, TableSink& sink);

/// The rows of one table, in batches.
class OXA_TABLES_API Reader {
public:
    /// The model is only looked at, and must stay as it is while there are rows to come.
    Reader(const Model& model, const FileInfo& file, std::string_view table);
    ///@{
    /// Goes on where "other" stands, which is then good for nothing but its end.
    Reader(Reader&& other) noexcept;
    Reader& operator=(Reader&& other) noexcept;
    ///@}
    ~Reader();

    /// What is read.
    [[nodiscard]] const Table& table() const noexcept;
    /// Some rows in place of those in the batch, which has the columns of the table: "rows" or a few more, fewer where
    /// texts are long. False, with none, behind the last. HandleError where the model is gone.
    [[nodiscard]] bool next(Batch& batch, std::size_t rows = 8192);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}   // namespace oxa::tables
