// SPDX-License-Identifier: Apache-2.0
// SELECT over models: the rows of the tables, look-ups that find what a search finds, and what is refused.

#include <algorithm>
#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "Model/HouseText.h"
#include "Tables/Sql.h"
#include "Tables/Sqlite.h"
#include "Tables/SqliteBase.h"
#include "Tables/TableText.h"

namespace oxa::test {
namespace {

using Rows = std::vector<std::string>;
using tables::Sql;

// As tableRows() has them.
Rows asked(Sql& sql, const std::string& sStatement) {
    Rows rows;
    sql.run(sStatement, {.begin = {}, .row = [&](const std::vector<Cell>& row) {
                             std::string sLine;
                             for (std::size_t i = 0; i < row.size(); ++i)
                                 sLine += (i > 0 ? "|" : "") + (row[i].index() == 0 ? "~" : toText(row[i]));
                             rows.push_back(sLine);
                             return true;
                         }});
    return rows;
}

struct Houses {
    Model first = house("IFC4");
    Model second = house("IFC2X3");
    Sql sql;
    Houses() {
        sql.add(first, {.file = "a", .path = {}});
        sql.add(second, {.file = "b", .path = {}});
    }
};

std::string sError(Sql& sql, const std::string& sStatement) {
    try {
        asked(sql, sStatement);
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing";
}

TEST(Sql, TablesHaveTheRowsOfAllModels) {
    Houses houses;
    for (const tables::Table& table : tables::tables()) {
        if (table.name == "file") continue;
        std::string sColumns;
        for (const tables::Column& column : table.columns)
            if (column.name != "file") sColumns += (sColumns.empty() ? "\"" : ",\"") + column.name + "\"";
        Rows expected = tableRows(houses.first, table.name);
        Rows told = asked(houses.sql, "SELECT " + sColumns + " FROM " + table.name + " WHERE file='a'");
        const auto vSame = [&] {   // a truth value is 0 or 1
            for (Rows* pRows : {&expected, &told})
                for (std::string& s : *pRows)
                    for (const auto& [pFrom, pTo] : {std::pair{"|true|IfcB", "|1|IfcB"}, {"|false|IfcB", "|0|IfcB"}})
                        if (const auto i = s.find(pFrom); i != std::string::npos) s.replace(i, std::strlen(pFrom), pTo);
        };
        vSame();
        EXPECT_EQ(told, expected) << table.name;
        EXPECT_EQ(asked(houses.sql, "SELECT count(*) FROM " + table.name + " WHERE file='b'"),
                  Rows{std::to_string(tableRows(houses.second, table.name).size())});
    }
    EXPECT_EQ(asked(houses.sql, "SELECT file, schema FROM file"), (Rows{"a|IFC4", "b|IFC2X3"}));
}

// A class may have other columns in another schema.
TEST(Sql, ClassesAreTables) {
    Houses houses;
    EXPECT_EQ(asked(houses.sql, "SELECT file, id, Name, Tag, PredefinedType FROM ifcwall ORDER BY file, id"),
              (Rows{"a|10|South|T10|~", "a|11|North|12.50|~", "a|16|Loose|~|~", "b|10|South|T10|~",
                    "b|11|North|12.50|~", "b|16|Loose|~|~"}));
    EXPECT_EQ(asked(houses.sql, "SELECT file, Name, Category FROM IfcMaterial WHERE id = 70"),
              (Rows{"a|Brick|~", "b|Brick|~"}));
    // Only IFC4 has it.
    EXPECT_EQ(asked(houses.sql, "SELECT count(*) FROM IfcMaterialProfile"), Rows{"0"});
}

// What the same statement finds in a database that holds the rows.
TEST(Sql, LookUpsFindWhatASearchFinds) {
    const Model first = house("IFC4");
    const Model second = Model::fromBuffer(houseText("IFC4", "#5=IFCWALL(@,'South',$,$,$,$,$,$);\n"));
    Sql sql;
    sql.add(first, {.file = "a", .path = {}});
    sql.add(second, {.file = "b", .path = {}});
    const Folder folder;
    const auto path = folder.path / "houses.sqlite";
    {
        tables::SqliteFile base(path);
        std::vector<std::string> names = tables::usualTables();
        names.insert(names.end(), {"reference", "IfcWall"});
        tables::write(first, {.file = "a", .path = {}}, base, names);
        tables::write(second, {.file = "b", .path = {}}, base, names);
        base.finish();
    }
    const Base base(path);
    const auto sorted = [](Rows rows) {
        std::ranges::sort(rows);
        return rows;
    };
    struct Row {
        const char* pTable;
        const char* pColumn;
        std::vector<const char*> values;
    };
    const Row rows[] = {
        {"element", "id", {"10", "0", "10.5", "'10'", "'x'", "NULL", "1e300", "-1", "9223372036854775807", "99"}},
        {"element", "guid", {"'0000000000000000000010'", "'x'", "10", "NULL", "''"}},
        {"element", "type", {"'IfcWall'", "'IfcW'", "'ifcwall'", "'zzz'"}},
        {"element", "name", {"'South'", "'a'", "x'00'", "5"}},
        {"property", "element_id", {"10", "11", "20", "1"}},
        {"property", "name", {"'FireRating'", "'F'", "'Complex.Inner'"}},
        {"property", "set_name", {"'Pset_WallCommon'", "'Kinds'"}},
        {"relation", "id", {"31", "30"}},
        {"relation", "type", {"'IfcRelAggregates'", "'IfcRelV'"}},
        {"reference", "from_id", {"20", "31", "5"}},
        {"material", "name", {"'Wool'", "'C'"}},
        {"classification", "code", {"'Ss_25'", "'Ss_25_10'"}},
        {"storey", "name", {"'EG'", "'F'"}},
        {"IfcWall", "id", {"10", "11"}},
        {"IfcWall", "Name", {"'South'", "'M'"}},
        {"IfcWall", "GlobalId", {"'0000000000000000000010'"}},
        {"file", "file", {"'a'", "'c'"}},
        {"element", "file", {"'a'", "'c'", "NULL", "1"}},
    };
    for (const Row& row : rows)
        for (const char* pValue : row.values)
            for (const char* pOperator : {"=", "<", "<=", ">", ">=", "IS", "<>"}) {
                const std::string sSelect = std::string("SELECT file, \"") + row.pColumn + "\" FROM " + row.pTable +
                                            " WHERE " + row.pColumn + " " + pOperator + " " + pValue;
                EXPECT_EQ(sorted(asked(sql, sSelect)), sorted(base.rows(sSelect))) << sSelect;
            }
}

TEST(Sql, SeveralConditions) {
    Houses houses;
    EXPECT_EQ(asked(houses.sql, "SELECT id FROM element WHERE id BETWEEN 10 AND 12 AND file='a'"),
              (Rows{"10", "11", "12"}));
    EXPECT_EQ(asked(houses.sql, "SELECT id FROM element WHERE (id=10 OR name='South' OR guid='0000000000000000000010') "
                                "AND file='a'"),
              Rows{"10"});
    EXPECT_EQ(asked(houses.sql, "SELECT id FROM element WHERE id IN (10, 16, 10, 7) AND file='a'"), (Rows{"10", "16"}));
    EXPECT_EQ(asked(houses.sql, "SELECT name FROM element WHERE name = 'south' COLLATE NOCASE AND file='a'"),
              Rows{"South"});
}

TEST(Sql, JoinsAndGroups) {
    Houses houses;
    EXPECT_EQ(asked(houses.sql, "SELECT e.name, p.value_text FROM element e JOIN property p ON p.file = e.file AND "
                                "p.element_id = e.id WHERE p.name = 'FireRating' AND e.type LIKE 'IfcWall%' AND e.file "
                                "= 'a' ORDER BY 1, 2"),
              (Rows{"North|F 30", "South|F 90", "WT|F 30"}));
    EXPECT_EQ(asked(houses.sql, "SELECT s.name, count(*) FROM element e JOIN storey s ON s.file = e.file AND s.id = "
                                "e.storey_id WHERE e.file='a' GROUP BY s.name ORDER BY 1"),
              (Rows{"EG|4", "OG|3"}));
    EXPECT_EQ(asked(houses.sql, "SELECT m.name, sum(q.value) FROM quantity q JOIN material m USING (file, element_id) "
                                "WHERE q.name='NetVolume' AND q.file='b' GROUP BY m.name ORDER BY 1"),
              (Rows{"Brick|2.5", "Wool|2.5"}));
}

TEST(Sql, SeveralStatementsAndComments) {
    Houses houses;
    EXPECT_EQ(asked(houses.sql, "SELECT 1; -- one\n SELECT 2 ;; /* end */ "), (Rows{"1", "2"}));
    EXPECT_EQ(asked(houses.sql, " ; \n"), Rows{});
    EXPECT_TRUE(tables::isWholeStatement("SELECT 1;"));
    EXPECT_TRUE(tables::isWholeStatement(" \n"));
    EXPECT_FALSE(tables::isWholeStatement("SELECT ';"));
}

struct FailRow {
    const char* pRule;
    const char* pStatement;
    const char* pError;
};
const FailRow g_wrong[] = {
    {"no table", "SELECT * FROM elemnt", "there is no table elemnt; did you mean element?"},
    {"no class", "SELECT * FROM IfcWal", "there is no table IfcWal; did you mean IfcWall"},
    {"no column", "SELECT e.nam FROM element e", "there is no column e.nam; did you mean name?"},
    {"no SQL", "SELEC 1", "near \"SELEC\": syntax error"},
    {"a cut one", "SELECT (1", "incomplete input"},
    {"insert", "INSERT INTO element(id) VALUES (1)", "only SELECT is allowed"},
    {"delete", "DELETE FROM element", "table element may not be modified"},
    {"create", "CREATE TABLE x(a)", "only SELECT is allowed"},
    {"drop", "DROP TABLE element", "only SELECT is allowed"},
    {"attach", "ATTACH 'x.sqlite' AS x", "only SELECT is allowed"},
    {"pragma", "PRAGMA journal_mode", "only SELECT is allowed"},
    {"a file", "SELECT load_extension('x')", "not authorized to use function: load_extension"},
    {"a large value", "SELECT randomblob(1000000000)", "string or blob too big"},
    {"a column of the others", "SELECT value FROM property", "there is no column value; did you mean value_text"},
};

TEST(Sql, WhatIsWrongIsOneLine) {
    Houses houses;
    for (const FailRow& row : g_wrong) {
        SCOPED_TRACE(row.pRule);
        EXPECT_EQ(sError(houses.sql, row.pStatement).substr(0, std::strlen(row.pError)), row.pError);
        EXPECT_EQ(asked(houses.sql, "SELECT count(*) FROM storey"), Rows{"4"});   // and goes on
    }
    std::string sDeep = "SELECT ";
    for (int i = 0; i < 1000; ++i) sDeep += "(";
    EXPECT_NE(sError(houses.sql, sDeep + "1"), "nothing");
    EXPECT_EQ(sError(houses.sql, "SELECT '" + std::string(2000000, 'x') + "'"),
              "the statement is longer than a million characters");
    Sql none;
    EXPECT_EQ(sError(none, "SELECT 1"), "there is no model");
}

constexpr const char* g_pEndless =
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c) SELECT count(*) FROM c";

TEST(Sql, EndlessOnesEnd) {
    Houses houses;
    houses.sql.setTime(std::chrono::milliseconds(50));
    EXPECT_EQ(sError(houses.sql, g_pEndless), "takes longer than 50 ms");
    EXPECT_EQ(sError(houses.sql, "SELECT count(*) FROM reference a, reference b, reference c, reference d"),
              "takes longer than 50 ms");
    houses.sql.setTime(std::chrono::milliseconds(0));
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        houses.sql.interrupt();
    });
    EXPECT_EQ(sError(houses.sql, g_pEndless), "interrupted");
    other.join();
    EXPECT_EQ(asked(houses.sql, "SELECT 1"), Rows{"1"});
}

TEST(Sql, ARowMayEndAStatement) {
    Houses houses;
    int iRows = 0;
    houses.sql.run("SELECT * FROM element",
                   {.begin = {}, .row = [&](const std::vector<Cell>&) { return ++iRows < 3; }});
    EXPECT_EQ(iRows, 3);
}

TEST(Sql, TablesTellTheirColumns) {
    Houses houses;
    EXPECT_EQ(houses.sql.tables().size(), tables::tables().size());
    EXPECT_EQ(
        tables::createStatement(houses.sql.table("unit")),
        "CREATE TABLE \"unit\" (\n    \"file\" TEXT NOT NULL,\n    \"id\" INTEGER NOT NULL,\n    \"type\" TEXT NOT "
        "NULL,\n    \"name\" TEXT,\n    \"symbol\" TEXT,\n    \"si_symbol\" TEXT,\n    \"si_factor\" REAL,\n    "
        "\"si_offset\" REAL\n);\n");
    EXPECT_EQ(houses.sql.table("IFCWALL").name, "IfcWall");
    EXPECT_EQ(houses.sql.tables().size(), tables::tables().size() + 1);
}

}   // namespace
}   // namespace oxa::test
