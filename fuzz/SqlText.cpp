// SPDX-License-Identifier: Apache-2.0
// SqlText: a line with the name of a table, and any bytes behind it as SQL, over a model of one wall.

#include <chrono>
#include <new>
#include <string>

#include "Fuzz.h"
#include "Tables/Sql.h"

namespace oxa::fuzz {

namespace {

const Model& model() {
    static const Model one =
        Model::fromBuffer("ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;"
                          "#1=IFCWALL('0000000000000000000001',$,'W',$,$,$,$,'12',$);"
                          "#2=IFCRELDEFINESBYPROPERTIES('0000000000000000000002',$,$,$,(#1),#3);"
                          "#3=IFCPROPERTYSET('0000000000000000000003',$,'S',$,(#4,#5));"
                          "#4=IFCPROPERTYSINGLEVALUE('P',$,IFCREAL(1.5),$);#5=IFCCOMPLEXPROPERTY('C',$,'u',(#4,#5));"
                          "#6=IFCCARTESIANPOINT((1.,2.));#7=IFCMATERIAL('M',$,$);"
                          "ENDSEC;END-ISO-10303-21;");
    return one;
}

constexpr std::size_t g_iMostRows = 1000;
constexpr std::chrono::milliseconds g_time(200);

}   // namespace

void vRun(std::string_view input) {
    const ExactBytes bytes(input);
    const std::string_view text = bytes.text();
    const std::string_view name = text.substr(0, text.find('\n'));
    const std::string_view statement = name.size() < text.size() ? text.substr(name.size() + 1) : std::string_view();
    tables::Sql sql;
    sql.add(model(), {.file = "f", .path = {}});
    try {
        const tables::Table table = sql.table(name);
        vExpect(!table.columns.empty() && table.columns.front().name == "file", "a table begins with its file");
        tables::Reader reader(model(), {.file = "f", .path = {}}, name);
        tables::Batch batch(table.columns);
        while (reader.next(batch)) {}
    } catch (const NameError&) {}
    sql.setTime(g_time);
    try {
        std::size_t iColumns = 0;
        std::size_t iRows = 0;
        sql.run(statement, {.begin = [&](const std::vector<std::string>& columns) { iColumns = columns.size(); },
                            .row =
                                [&](const std::vector<Cell>& row) {
                                    vExpect(row.size() == iColumns, "a row has a cell a column");
                                    return ++iRows < g_iMostRows;
                                }});
    } catch (const Error&) {   // what is no SELECT, or names what there is not
    } catch (const std::bad_alloc&) {}
    std::string sCount;
    sql.run("SELECT count(*) FROM IfcWall",
            {.begin = {}, .row = [&](const std::vector<Cell>& row) { return (sCount = toText(row[0]), true); }});
    vExpect(sCount == "1", "no statement changes what others see");
}

}   // namespace oxa::fuzz
