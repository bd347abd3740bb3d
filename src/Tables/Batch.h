// SPDX-License-Identifier: Apache-2.0
/// @file
/// Batch: some rows of a table, column by column.
///
/// For      sinks, which read cells; makers of rows, which add them.
/// Layout   that of Apache Arrow's columns: a bit a row says whether there is a value, numbers and integers stand one
///          behind the other, texts in one run of bytes with the places where each begins. Arrow.h hands these very
///          buffers on.
/// Texts    are UTF-8: a byte that is none is taken as Latin-1 when it is added. They may hold a NUL.
/// Errors   std::length_error where the texts of one column of a batch would exceed 2 GiB. What is asked of a cell
///          without a value, or of another type, is not defined.
/// Threads  one at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Export.h"

/// Models as tables: for databases, spreadsheets and data frames.
namespace oxa::tables {

/// What a cell is.
enum class Type : std::uint8_t {
    Boolean,
    Integer,   ///< of 64 bits
    Number,
    Text,
    Json,   ///< a text that is a JSON value
};

/// A column of a table.
struct Column {
    std::string name;          ///< as in element_id
    Type type = Type::Text;    ///< of a cell, or of the items of a list
    unsigned lists = 0;        ///< 0: a cell is one value; 1: a list of them; 2: a list of lists
    bool nullable = true;      ///< whether a cell may be without a value
    std::string description;   ///< in a few words

    friend bool operator==(const Column&, const Column&) = default;
};

/// The cells of one column.
class OXA_TABLES_API ColumnData {
public:
    /// Empty. "lists" as in Column.
    explicit ColumnData(Type type, unsigned lists = 0);
    ///@{
    /// Takes the cells over; "other" is then good for nothing but its end.
    ColumnData(ColumnData&& other) noexcept;
    ColumnData& operator=(ColumnData&& other) noexcept;
    ///@}
    ~ColumnData();

    ///@{
    /// What the cells are.
    [[nodiscard]] Type type() const noexcept { return m_type; }
    [[nodiscard]] unsigned lists() const noexcept { return m_lists; }
    ///@}
    /// How many cells there are.
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }
    /// How many of them have no value.
    [[nodiscard]] std::size_t nulls() const noexcept { return m_nulls; }

    /// Whether a cell has no value.
    [[nodiscard]] bool null(std::size_t row) const noexcept { return !bit(m_valid, row); }
    ///@{
    /// The value of a cell by its type; a text is good until the column changes.
    [[nodiscard]] bool boolean(std::size_t row) const noexcept { return bit(m_bits, row); }
    [[nodiscard]] std::int64_t integer(std::size_t row) const noexcept { return m_integers[row]; }
    [[nodiscard]] double number(std::size_t row) const noexcept { return m_numbers[row]; }
    [[nodiscard]] std::string_view text(std::size_t row) const noexcept {
        const auto first = static_cast<std::size_t>(m_offsets[row]);
        return std::string_view(m_bytes).substr(first, static_cast<std::size_t>(m_offsets[row + 1]) - first);
    }
    ///@}
    /// Where the items of a list stand in items(): the first, and behind the last.
    [[nodiscard]] std::pair<std::size_t, std::size_t> range(std::size_t row) const noexcept {
        return {static_cast<std::size_t>(m_offsets[row]), static_cast<std::size_t>(m_offsets[row + 1])};
    }
    ///@{
    /// The items of all lists, one behind the other; only where lists() is not 0.
    [[nodiscard]] const ColumnData& items() const noexcept { return *m_items; }
    [[nodiscard]] ColumnData& items() noexcept { return *m_items; }
    ///@}
    /// The cell as one text: a list as JSON, a truth value as "true", a number with the digits that bring it back.
    [[nodiscard]] std::string toText(std::size_t row) const;
    /// The cell as a JSON value, appended. What is no number in JSON (infinity) becomes a text.
    void appendJson(std::size_t row, std::string& json) const;

    ///@{
    /// Adds a cell.
    void addNull();
    void addBoolean(bool value);
    void addInteger(std::int64_t value);
    void addNumber(double value);
    void addText(std::string_view text);
    /// Of what was added to items() since the last list.
    void addList();
    ///@}

    /// Whether anybody asks for this column. Cells that are added to one that nobody wants are counted and not kept.
    [[nodiscard]] bool wanted() const noexcept { return m_wanted; }
    /// Before the first cell.
    void setWanted(bool wanted) noexcept { m_wanted = wanted; }
    /// Without cells, with the memory for as many.
    void clear() noexcept;
    /// The bytes that texts take, those in lists too.
    [[nodiscard]] std::size_t textBytes() const noexcept {
        return m_bytes.size() + (m_items ? m_items->textBytes() : 0);
    }

    ///@{
    /// The buffers, as Arrow has them; empty for another type.
    [[nodiscard]] const std::vector<std::uint8_t>& validBits() const noexcept { return m_valid; }
    [[nodiscard]] const std::vector<std::uint8_t>& booleanBits() const noexcept { return m_bits; }
    [[nodiscard]] const std::vector<std::int64_t>& integers() const noexcept { return m_integers; }
    [[nodiscard]] const std::vector<double>& numbers() const noexcept { return m_numbers; }
    [[nodiscard]] const std::vector<std::int32_t>& offsets() const noexcept { return m_offsets; }
    [[nodiscard]] const std::string& bytes() const noexcept { return m_bytes; }
    ///@}

private:
    [[nodiscard]] static bool bit(const std::vector<std::uint8_t>& bits, std::size_t i) noexcept {
        return (bits[i / 8] >> (i % 8) & 1U) != 0;
    }
    static void vBitAdd(std::vector<std::uint8_t>& bits, std::size_t i, bool boSet);
    // Counts a cell; false where nothing is to be kept.
    bool boCellAdd(bool boValid);
    void vOffsetAdd(std::size_t iEnd);

    Type m_type;
    unsigned m_lists;
    bool m_wanted = true;
    std::size_t m_size = 0;
    std::size_t m_nulls = 0;
    std::vector<std::uint8_t> m_valid;
    std::vector<std::uint8_t> m_bits;
    std::vector<std::int64_t> m_integers;
    std::vector<double> m_numbers;
    std::vector<std::int32_t> m_offsets;   // of texts in m_bytes, of lists in m_items; one more than cells
    std::string m_bytes;
    std::unique_ptr<ColumnData> m_items;
};

/// Some rows.
class OXA_TABLES_API Batch {
public:
    /// Without rows.
    explicit Batch(const std::vector<Column>& columns);

    /// How many rows there are.
    [[nodiscard]] std::size_t rows() const noexcept { return m_columns.empty() ? 0 : m_columns.front().size(); }
    ///@{
    /// The columns in their order.
    [[nodiscard]] const std::vector<ColumnData>& columns() const noexcept { return m_columns; }
    [[nodiscard]] std::vector<ColumnData>& columns() noexcept { return m_columns; }
    ///@}
    /// Without rows, with the memory for as many.
    void clear() noexcept;
    /// The bytes that texts take in the largest column.
    [[nodiscard]] std::size_t textBytes() const noexcept;

private:
    std::vector<ColumnData> m_columns;
};

/// Appends a text to JSON, in quotes. A byte that is no UTF-8 is taken as Latin-1.
OXA_TABLES_API void appendJsonText(std::string& json, std::string_view text);

}   // namespace oxa::tables
