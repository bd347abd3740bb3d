// SPDX-License-Identifier: Apache-2.0
// What kind of values a column holds is known when all rows are there; then they go out as one batch.
#include "oxaifc/report/Sheet.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <utility>
#include <variant>

#include "Model/Error.h"
#include "oxaifc/formats/ElementModel.h"
#include "oxaifc/io/Failure.h"
#include "oxaifc/io/Output.h"
#include "oxaifc/io/System.h"
#include "platform/Path.h"

namespace oxa::tool {

namespace {

using tables::Type;

Type typeOf(const std::vector<std::vector<Cell>>& rows, std::size_t iColumn) {
    const auto boAll = [&](auto&& boFits) {
        return std::ranges::all_of(rows, [&](const std::vector<Cell>& row) {
            return std::holds_alternative<std::monostate>(row[iColumn]) || boFits(row[iColumn]);
        });
    };
    const auto boInteger = [](const Cell& cell) { return std::holds_alternative<std::int64_t>(cell); };
    const auto boNumber = [&](const Cell& cell) { return boInteger(cell) || std::holds_alternative<double>(cell); };
    if (boAll([](const Cell&) { return false; })) return Type::Text;   // no value at all
    if (boAll(boInteger)) return Type::Integer;
    if (boAll(boNumber)) return Type::Number;
    return boAll([](const Cell& cell) { return std::holds_alternative<bool>(cell); }) ? Type::Boolean : Type::Text;
}

void vAdd(const Cell& cell, tables::ColumnData& column) {
    if (std::holds_alternative<std::monostate>(cell)) return column.addNull();
    switch (column.type()) {
    case Type::Boolean: return column.addBoolean(std::get<bool>(cell));
    case Type::Integer: return column.addInteger(std::get<std::int64_t>(cell));
    case Type::Number: {
        const auto* piInteger = std::get_if<std::int64_t>(&cell);
        return column.addNumber(piInteger ? static_cast<double>(*piInteger) : std::get<double>(cell));
    }
    case Type::Text:
    case Type::Json: return column.addText(toText(cell));
    }
}

}   // namespace

void vFinish(tables::XlsxFile& file) {
    // The library behind it tells of a full disk there, in lines of its own.
    vWithoutStandardError([&file] { file.finish(); });
    for (const std::string& sNote : file.notes()) vTell(sNote);
}

Sheet::Sheet(std::string sPath, std::string sName, std::vector<std::string> columns)
    : m_sPath(std::move(sPath)),
      m_sName(std::move(sName)),
      m_columns(std::move(columns)) {}

void Sheet::vFinish() try {
    tables::Table table{.name = m_sName, .description = {}};
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        table.columns.push_back({.name = m_columns[i], .type = typeOf(m_rows, i), .description = {}});
    tables::Batch batch(table.columns);
    for (const std::vector<Cell>& row : m_rows)
        for (std::size_t i = 0; i < row.size(); ++i) vAdd(row[i], batch.columns()[i]);
    tables::XlsxFile file{str::pathOf(m_sPath)};
    file.begin(table);
    file.rows(batch);
    tool::vFinish(file);
} catch (const FileError& error) {
    throw Failure(sPrintable(error.what()));
}

}   // namespace oxa::tool
