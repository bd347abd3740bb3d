// SPDX-License-Identifier: Apache-2.0
// Streams of the C data interface, read by a small importer that knows the interface alone.

#include <cerrno>

#include <gtest/gtest.h>

#include "Model/HouseText.h"
#include "Tables/Arrow.h"
#include "Tables/TableText.h"
#include "platform/String.h"

namespace oxa::test {
namespace {

using Rows = std::vector<std::string>;

// What a cell shows, as tableRows() has it: JSON inside of lists.
std::string sCell(const ArrowSchema& schema, const ArrowArray& array, std::int64_t iRow, bool boInList) {
    const auto* pValid = static_cast<const std::uint8_t*>(array.buffers[0]);
    if (pValid && !(pValid[iRow / 8] >> (iRow % 8) & 1)) return boInList ? "null" : "~";
    const std::string sFormat = schema.format;
    if (sFormat == "l") return std::to_string(static_cast<const std::int64_t*>(array.buffers[1])[iRow]);
    if (sFormat == "g") return str::Manip::valueFormatDefault(static_cast<const double*>(array.buffers[1])[iRow]);
    if (sFormat == "b")
        return static_cast<const std::uint8_t*>(array.buffers[1])[iRow / 8] >> (iRow % 8) & 1 ? "true" : "false";
    const auto* pOffsets = static_cast<const std::int32_t*>(array.buffers[1]);
    if (sFormat == "u") {
        const auto* pBytes = static_cast<const char*>(array.buffers[2]);
        const std::string sText(pBytes + pOffsets[iRow], pBytes + pOffsets[iRow + 1]);
        return boInList ? "\"" + sText + "\"" : sText;
    }
    std::string sItems;
    for (std::int32_t i = pOffsets[iRow]; i < pOffsets[iRow + 1]; ++i)
        sItems += (sItems.empty() ? "" : ",") + sCell(*schema.children[0], *array.children[0], i, true);
    return "[" + sItems + "]";
}

Rows rowsOf(const ArrowSchema& schema, const ArrowArray& batch) {
    Rows rows;
    for (std::int64_t iRow = 0; iRow < batch.length; ++iRow) {
        std::string sLine;
        for (std::int64_t i = 1; i < batch.n_children; ++i)
            sLine += (i > 1 ? "|" : "") + sCell(*schema.children[i], *batch.children[i], iRow, false);
        rows.push_back(sLine);
    }
    return rows;
}

template <class Struct>
void vRelease(Struct& one) {
    if (one.release) one.release(&one);
    EXPECT_EQ(one.release, nullptr);
}

Rows streamed(const Model& model, const char* pTable, std::size_t iRows) {
    ArrowArrayStream stream{};
    tables::stream(model, {.file = "m", .path = {}}, pTable, &stream, {.rows = iRows});
    ArrowSchema schema{};
    EXPECT_EQ(stream.get_schema(&stream, &schema), 0);
    Rows rows;
    for (ArrowArray batch{}; stream.get_next(&stream, &batch) == 0 && batch.release;) {
        EXPECT_LE(batch.length, static_cast<std::int64_t>(iRows) + 20);
        const Rows some = rowsOf(schema, batch);
        rows.insert(rows.end(), some.begin(), some.end());
        vRelease(batch);
    }
    EXPECT_EQ(stream.get_last_error(&stream), nullptr);
    vRelease(schema);
    vRelease(stream);
    return rows;
}

TEST(Arrow, StreamsTheRowsOfEveryTable) {
    for (const char* pSchema : g_families) {
        const Model model = house(pSchema);
        for (const tables::Table& table : tables::tables()) {
            if (table.name == "file") continue;
            for (const std::size_t iRows : {1U, 7U, 100000U})
                EXPECT_EQ(streamed(model, table.name.c_str(), iRows), tableRows(model, table.name)) << table.name;
        }
        for (const char* pClass :
             {"IfcRoot", "IfcTypeObject", "IfcPropertySingleValue", "IfcBuildingStorey", "IfcColumn"})
            EXPECT_EQ(streamed(model, pClass, 5), tableRows(model, pClass)) << pClass;
    }
    const Model lists = modelOf("IFC4", "#1=IFCCARTESIANPOINTLIST3D(((0.,1.,2.),(3.,4.,5.)));\n"
                                        "#2=IFCCARTESIANPOINTLIST3D($);\n#3=IFCCARTESIANPOINT((1.,2.));\n");
    EXPECT_EQ(streamed(lists, "IfcCartesianPointList3D", 1),
              (Rows{"1|IfcCartesianPointList3D|[[0,1,2],[3,4,5]]", "2|IfcCartesianPointList3D|~"}));
}

std::string sTypes(const ArrowSchema& schema) {
    std::string sTold = schema.format;
    for (std::int64_t i = 0; i < schema.n_children; ++i) {
        const ArrowSchema& column = *schema.children[i];
        sTold += std::string(" ") + column.name + ":" + column.format + (column.flags & ARROW_FLAG_NULLABLE ? "?" : "");
    }
    return sTold;
}

TEST(Arrow, TellsItsTypes) {
    const Model model = house("IFC4");
    ArrowArrayStream stream = tables::stream(model, "property");
    ArrowSchema schema{};
    ASSERT_EQ(stream.get_schema(&stream, &schema), 0);
    EXPECT_EQ(sTypes(schema), "+s file:u element_id:l set_name:u name:u value_text:u? value_number:g? value_boolean:b? "
                              "value_type:u? unit:u? source:u");
    vRelease(schema);
    vRelease(stream);
}

TEST(Arrow, TellsTheTypesOfATableWithoutAModel) {
    ArrowSchema schema{};
    tables::schema(tables::tables().back(), &schema);
    EXPECT_EQ(sTypes(schema), "+s file:u severity:u category:u key:u line:l? entity_id:l? message:u");
    vRelease(schema);
    tables::schema(tables::table(Model("IFC4"), "IfcCartesianPoint"), &schema);
    EXPECT_EQ(sTypes(schema), "+s file:u id:l type:u Coordinates:+l?");
    EXPECT_STREQ(schema.children[3]->children[0]->format, "g");
    vRelease(schema);
}

TEST(Arrow, BatchesOutliveStreamAndModel) {
    auto pModel = std::make_unique<Model>(house("IFC4"));
    const Rows expected = tableRows(*pModel, "element");
    ArrowArrayStream stream{};
    tables::stream(*pModel, {.file = "m", .path = {}}, "element", &stream);
    ArrowSchema schema{};
    ArrowArray batch{};
    ASSERT_EQ(stream.get_schema(&stream, &schema), 0);
    ASSERT_EQ(stream.get_next(&stream, &batch), 0);
    vRelease(stream);
    pModel.reset();
    EXPECT_EQ(rowsOf(schema, batch), expected);
    // A column that is moved out is good when the rest is gone.
    ArrowArray names = *batch.children[5];
    batch.children[5]->release = nullptr;
    vRelease(batch);
    EXPECT_EQ(sCell(*schema.children[5], names, 0, false), "P");
    vRelease(names);
    vRelease(schema);
}

TEST(Arrow, AModelThatIsGoneIsToldOrHeld) {
    auto pModel = std::make_unique<Model>(house("IFC4"));
    ArrowArrayStream stream{};
    tables::stream(*pModel, {}, "element", &stream, {.rows = 1});
    ArrowArray batch{};
    ASSERT_EQ(stream.get_next(&stream, &batch), 0);
    vRelease(batch);
    pModel.reset();
    EXPECT_EQ(stream.get_next(&stream, &batch), EINVAL);
    EXPECT_STREQ(stream.get_last_error(&stream), "the model of this table is gone");
    vRelease(stream);

    auto pShared = std::make_shared<const Model>(house("IFC4"));
    const std::weak_ptr<const Model> life = pShared;
    tables::stream(std::move(pShared), {}, "element", &stream);
    ASSERT_EQ(stream.get_next(&stream, &batch), 0);
    EXPECT_EQ(batch.length, 14);
    vRelease(batch);
    EXPECT_FALSE(life.expired());
    vRelease(stream);
    EXPECT_TRUE(life.expired());
}

TEST(Arrow, AModelMayBeMovedMeanwhile) {
    Model model = house("IFC4");
    ArrowArrayStream stream{};
    tables::stream(model, {}, "error", &stream);
    const Model other = std::move(model);
    ArrowArray batch{};
    EXPECT_EQ(stream.get_next(&stream, &batch), 0);
    EXPECT_EQ(batch.release, nullptr);   // no errors
    vRelease(stream);
}

TEST(Arrow, UnknownTablesAreRefused) {
    const Model model = house("IFC4");
    ArrowArrayStream stream{};
    EXPECT_EQ(sThrown([&] { tables::stream(model, {}, "elemnt", &stream); }),
              "NameError: there is no table elemnt; did you mean element?");
    EXPECT_EQ(stream.release, nullptr);
}

}   // namespace
}   // namespace oxa::test
