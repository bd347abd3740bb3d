// SPDX-License-Identifier: Apache-2.0
// SchemaList: the rows of schemas/built-in, which the build and the compiler of the tables read too.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace oxa::test {

struct SchemaRow {
    std::string sName;
    std::string sText;   // the published text, in the folder of all
    std::string sBase;   // of its table; empty for one that stands alone
};

inline std::vector<SchemaRow> schemaList() {
    std::ifstream list(OXA_SOURCE_DIR "/schemas/built-in");
    std::vector<SchemaRow> rows;
    for (std::string sLine; std::getline(list, sLine);) {
        if (sLine.starts_with('#')) continue;
        SchemaRow& row = rows.emplace_back();
        std::istringstream(sLine) >> row.sName >> row.sText >> row.sBase;
        if (row.sBase == "-") row.sBase.clear();
    }
    return rows;
}

}   // namespace oxa::test
