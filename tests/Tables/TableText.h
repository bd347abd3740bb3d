// SPDX-License-Identifier: Apache-2.0
// TableText: the rows of a table as texts, for tests that compare them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Tables/Tables.h"

namespace oxa::test {

// A row a line: the cells behind the file, with "|" between them; "~" for no value.
inline std::vector<std::string> tableRows(const Model& model, std::string_view table,
                                          const tables::FileInfo& file = {.file = "m", .path = {}}) {
    std::vector<std::string> lines;
    tables::Reader reader(model, file, table);
    tables::Batch batch(reader.table().columns);
    while (reader.next(batch, 3))
        for (std::size_t iRow = 0; iRow < batch.rows(); ++iRow) {
            std::string sLine;
            for (std::size_t i = 1; i < batch.columns().size(); ++i) {
                const tables::ColumnData& column = batch.columns()[i];
                sLine += (i > 1 ? "|" : "") + (column.null(iRow) ? "~" : column.toText(iRow));
            }
            lines.push_back(sLine);
        }
    return lines;
}

}   // namespace oxa::test
