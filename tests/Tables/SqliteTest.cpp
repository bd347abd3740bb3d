// SPDX-License-Identifier: Apache-2.0
// Tables as a database of SQLite: types, several models, and files that are replaced as a whole or not at all.

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include <gtest/gtest.h>

#include "Model/HouseText.h"
#include "Tables/Sqlite.h"
#include "Tables/SqliteBase.h"
#include "Tables/TableText.h"
#include "system/System.h"

namespace oxa::test {
namespace {

namespace fs = std::filesystem;
using tables::SqliteFile;

TEST(Sqlite, HoldsTheRowsOfEveryTable) {
    const Folder folder;
    const fs::path path = folder.path / "house.sqlite";
    const Model first = house("IFC4");
    const Model second = house("IFC2X3");
    {
        SqliteFile base(path);
        tables::write(first, {.file = "a", .path = {}}, base);
        tables::write(second, {.file = "b", .path = {}}, base);
        base.finish();
    }
    EXPECT_EQ(folder.files(), 1);
    const Base base(path);
    EXPECT_EQ(base.rows("PRAGMA integrity_check"), std::vector<std::string>{"ok"});
    for (const std::string& sTable : tables::usualTables()) {
        if (sTable == "quantity" || sTable == "storey" || sTable == "unit" || sTable == "property") continue;   // reals
        std::string sColumns;
        for (const tables::Column& column : tables::table(first, sTable).columns)
            if (column.name != "file") sColumns += (sColumns.empty() ? "" : ",") + column.name;
        const std::string sSelect = "SELECT " + sColumns + " FROM " + sTable + " WHERE file = ";
        if (sTable == "material") continue;   // likewise
        EXPECT_EQ(base.rows(sSelect + "'a'"), tableRows(first, sTable, {.file = "a", .path = {}})) << sTable;
        EXPECT_EQ(base.rows(sSelect + "'b'"), tableRows(second, sTable, {.file = "b", .path = {}})) << sTable;
    }
    EXPECT_EQ(base.rows("SELECT name, value, typeof(value), unit, si_value FROM quantity WHERE file='a'"),
              (std::vector<std::string>{"NetVolume|2.5|real|~|~", "Length|4000.0|real|mm|4.0",
                                        "Layers.NetVolume|2.5|real|~|~"}));
    EXPECT_EQ(base.rows("SELECT name, value_boolean, typeof(value_boolean) FROM property WHERE file='a' AND element_id "
                        "= 10 AND value_boolean IS NOT NULL"),
              (std::vector<std::string>{"IsExternal|1|integer", "LoadBearing|0|integer"}));
    EXPECT_EQ(base.rows("SELECT sql FROM sqlite_master WHERE name='storey'"),
              std::vector<std::string>{"CREATE TABLE \"storey\" (\"file\" TEXT NOT NULL, \"id\" INTEGER NOT NULL, "
                                       "\"guid\" TEXT, \"name\" TEXT, \"long_name\" TEXT, \"elevation\" REAL, "
                                       "\"building_id\" INTEGER)"});
    EXPECT_EQ(base.rows("SELECT name FROM sqlite_master WHERE type='index' ORDER BY name"),
              (std::vector<std::string>{"classification_element_id", "element_id", "material_element_id",
                                        "property_element_id", "quantity_element_id", "relation_from_id", "relation_id",
                                        "relation_to_id", "storey_id", "unit_id"}));
}

TEST(Sqlite, RealsHaveAllDigits) {
    const Folder folder;
    const fs::path path = folder.path / "points.sqlite";
    Model model("IFC4");
    const double values[] = {0.1, 1.0 / 3.0, 5e-324, std::numeric_limits<double>::max(), -0.0, 123456789.123456789};
    for (const double value : values) model.create("IfcDoor", {{"OverallWidth", value}});
    {
        SqliteFile base(path);
        const std::vector<std::string> names{"IfcDoor"};
        tables::write(model, {}, base, names);
        base.finish();
    }
    sqlite3* pBase = nullptr;
    ASSERT_EQ(sqlite3_open(path.string().c_str(), &pBase), SQLITE_OK);
    sqlite3_stmt* pStatement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(pBase, "SELECT OverallWidth FROM IfcDoor ORDER BY id", -1, &pStatement, nullptr),
              SQLITE_OK);
    for (const double value : values) {
        ASSERT_EQ(sqlite3_step(pStatement), SQLITE_ROW);
        EXPECT_EQ(sqlite3_column_double(pStatement, 0), value);
    }
    sqlite3_finalize(pStatement);
    sqlite3_close(pBase);
}

TEST(Sqlite, AnUnfinishedOneLeavesNothing) {
    const Folder folder;
    const fs::path path = folder.path / "house.sqlite";
    const Model model = house("IFC4");
    {
        SqliteFile base(path);
        tables::write(model, {}, base);
    }
    EXPECT_EQ(folder.files(), 0);
    std::ofstream(path) << "old";
    {
        SqliteFile base(path);
        tables::write(model, {}, base);
    }
    EXPECT_EQ(folder.files(), 1);
    EXPECT_EQ(fs::file_size(path), 3U);
}

TEST(Sqlite, WhatOthersHaveOpenIsRefused) {
    const Folder folder;
    const fs::path path = folder.path / "house.sqlite";
    const Model model = house("IFC4");
    const auto write = [&] {
        SqliteFile base(path);
        tables::write(model, {.file = "m", .path = {}}, base);
        base.finish();
    };
    write();
    const std::string sRefused = "FileError: " + path.string() + ": can't be written: ";
    {
        const Base other(path);
        EXPECT_TRUE(other.rows("BEGIN IMMEDIATE").empty());
        EXPECT_EQ(sThrown(write), sRefused + "the database is locked by another program");
    }
    {
        const Base other(path);
        EXPECT_EQ(other.rows("PRAGMA journal_mode=WAL"), std::vector<std::string>{"wal"});
        EXPECT_EQ(other.rows("INSERT INTO storey(file, id) VALUES ('x', 1)").size(), 0U);
        EXPECT_EQ(sThrown(write), sRefused + "the database is in use: " + path.string() + "-wal is there");
    }
    write();   // nobody has it any more
    EXPECT_EQ(Base(path).rows("SELECT count(*) FROM storey"), std::vector<std::string>{"2"});
    EXPECT_EQ(folder.files(), 1);
}

TEST(Sqlite, RefusesWhatIsNoFile) {
    const Folder folder;
    EXPECT_EQ(sThrown([&] { SqliteFile(folder.path); }),
              "FileError: " + folder.path.string() + ": can't be written: Is a directory");
    EXPECT_EQ(sThrown([&] { SqliteFile(folder.path / "a" / "b.sqlite"); }),
              "FileError: " + (folder.path / "a" / "b.sqlite").string() +
                  ": can't be written: No such file or directory");
    if (const std::string sDevice = sFullDevice(); !sDevice.empty()) {
        EXPECT_EQ(sThrown([&] { SqliteFile{sDevice}; }),
                  "FileError: " + sDevice + ": can't be written: is no regular file");
    }
}

}   // namespace
}   // namespace oxa::test
