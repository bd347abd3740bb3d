// SPDX-License-Identifier: Apache-2.0
// docs/tables.md and the tables say the same.

#include <array>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "Tables/Tables.h"

namespace oxa::test {
namespace {

using tables::Column;

std::string sDocumented(const tables::Table& table) {
    constexpr std::array<const char*, 5> types{"truth value", "integer", "number", "text", "JSON"};
    std::string sText = "### " + table.name + "\n\n" + table.description + ".\n\n| column | type | |\n|---|---|---|\n";
    for (const Column& column : table.columns)
        sText += "| `" + column.name + "` | " + types.at(static_cast<std::size_t>(column.type)) +
                 (column.nullable ? "" : ", always") + " | " + column.description + " |\n";
    return sText;
}

TEST(TableDoc, TellsEveryTableAndColumn) {
    std::ifstream file(OXA_SOURCE_DIR "/docs/tables.md");
    std::ostringstream text;
    text << file.rdbuf();
    std::size_t iAt = 0;
    for (const tables::Table& table : tables::tables()) {
        const std::size_t iFound = text.str().find(sDocumented(table), iAt);
        ASSERT_NE(iFound, std::string::npos) << sDocumented(table);
        iAt = iFound;
    }
    EXPECT_EQ(text.str().find("\n### ", iAt + 1), std::string::npos) << "a table that there is none of";
}

// What others have built on.
TEST(TableDoc, ColumnsStay) {
    const std::vector<std::string> expected{
        "file: file path schema name size sha256 description implementation_level header_name time_stamp author "
        "organization preprocessor_version originating_system authorization",
        "element: file id guid type predefined_type name description object_type tag type_id container_id storey_id "
        "parent_id",
        "property: file element_id set_name name value_text value_number value_boolean value_type unit source",
        "quantity: file element_id set_name name value unit si_value source",
        "material: file element_id name layer thickness fraction source",
        "classification: file element_id system code name",
        "relation: file id type from_id to_id",
        "storey: file id guid name long_name elevation building_id",
        "unit: file id type name symbol si_symbol si_factor si_offset",
        "reference: file from_id attribute position to_id",
        "error: file severity category key line entity_id message",
    };
    std::vector<std::string> told;
    for (const tables::Table& table : tables::tables()) {
        told.push_back(table.name + ":");
        for (const Column& column : table.columns) told.back() += " " + column.name;
    }
    EXPECT_EQ(told, expected);
}

}   // namespace
}   // namespace oxa::test
