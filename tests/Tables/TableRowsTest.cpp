// SPDX-License-Identifier: Apache-2.0
// The rows of the fixed tables, in all families of schemas; and that they say what the relations of elements say.

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>

#include "Model/HouseText.h"
#include "Model/Relations.h"
#include "Model/Units.h"
#include "Tables/TableText.h"
#include "platform/Path.h"

namespace oxa::test {
namespace {

using Rows = std::vector<std::string>;

// Those that begin with the text.
Rows beginning(const Rows& rows, std::string_view begin) {
    Rows found;
    std::ranges::copy_if(rows, std::back_inserter(found), [&](const std::string& s) { return s.starts_with(begin); });
    return found;
}

TEST(TableRows, ElementsAndWhereTheyStand) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Rows rows = tableRows(house(pSchema), "element");
        const auto row = [&](const char* pId) { return beginning(rows, std::string(pId) + "|").at(0); };
        EXPECT_EQ(rows.size(), 14U);
        // id, guid, type, predefined type, name, description, object type, tag, type, container, storey, parent
        EXPECT_EQ(row("1"), "1|0000000000000000000001|IfcProject|~|P|~|~|~|~|~|~|~");
        EXPECT_EQ(row("4"), "4|0000000000000000000004|IfcBuildingStorey|~|EG|~|~|~|~|3|~|3");
        EXPECT_EQ(row("6"), "6|0000000000000000000006|IfcSpace|~|Room|~|~|~|~|4|4|4");
        EXPECT_EQ(row("10"), "10|0000000000000000000010|IfcWall|~|South|~|outer|T10|20|4|4|4");
        EXPECT_EQ(row("13"), "13|0000000000000000000013|IfcDoor|~|D1|~|~|~|~|4|4|12");
        EXPECT_EQ(row("14"), "14|0000000000000000000014|IfcElementAssembly|TRUSS|Truss|~|~|~|~|5|5|5");
        EXPECT_EQ(row("15"), "15|0000000000000000000015|IfcMember|~|Bar|~|~|~|~|5|5|14");
        EXPECT_EQ(row("16"), "16|0000000000000000000016|IfcWall|~|Loose|~|~|~|~|~|~|~");
        EXPECT_EQ(row("20"), "20|0000000000000000000020|IfcWallType|STANDARD|WT|~|~|~|~|~|~|~");
        EXPECT_EQ(row("90"), "90|0000000000000000000090|IfcGroup|~|Shell|~|~|~|~|~|~|~");
    }
}

TEST(TableRows, PropertiesOfEveryKind) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        // set, name, text, number, truth, type, unit, source
        const Rows expected{
            "10|Pset_WallCommon|FireRating|F 90|~|~|IfcLabel|~|instance",
            "10|Pset_WallCommon|IsExternal|true|~|true|IfcBoolean|~|instance",
            "10|Pset_WallCommon|ThermalTransmittance|0.24|0.24|~|IfcReal|~|instance",
            "10|Pset_WallCommon|LoadBearing|false|~|false|IfcBoolean|~|type",
            "10|Kinds|Enumerated|[\"A\",\"B\"]|~|~|IfcLabel|~|type",
            "10|Kinds|Bounded|{\"lower\":1,\"upper\":5,\"value\":null}|~|~|IfcReal|mm|type",
            "10|Kinds|List|[1,2]|~|~|IfcInteger|~|type",
            "10|Kinds|Table|{\"defining\":[1],\"defined\":[\"one\"]}|~|~|IfcLabel|~|type",
            "10|Kinds|Reference|#70|~|~|IfcMaterial|~|type",
            "10|Kinds|Complex.Inner|7|7|~|IfcInteger|~|type",
            "10|Kinds|Complex.Deep.Inner|7|7|~|IfcInteger|~|type",
            "10|Kinds|Complex.Deep.Complex|~|~|~|~|~|type",
            "10|Kinds|Empty|~|~|~|~|~|type",
            "10|Panel|PanelDepth|40|40|~|IfcPositiveLengthMeasure|mm|type",
            "10|Panel|PanelOperation|SWINGING|~|~|IfcDoorPanelOperationEnum|~|type",
            "10|Panel|PanelPosition|LEFT|~|~|IfcDoorPanelPositionEnum|~|type",
        };
        const Rows rows = tableRows(house(pSchema), "property");
        EXPECT_EQ(beginning(rows, "10|"), expected);
        // A type tells its own.
        EXPECT_EQ(beginning(rows, "20|Pset_WallCommon|"),
                  (Rows{"20|Pset_WallCommon|FireRating|F 30|~|~|IfcLabel|~|instance",
                        "20|Pset_WallCommon|LoadBearing|false|~|false|IfcBoolean|~|instance"}));
    }
}

struct ValueRow {
    const char* pRule;
    const char* pValue;   // in STEP
    const char* pTold;    // text, number, truth, type, unit
};
const ValueRow g_values[] = {
    {"a text", "IFCLABEL('a\\X\\0Ab')", "a\nb|~|~|IfcLabel|~"},
    {"an empty one", "IFCLABEL('')", "|~|~|IfcLabel|~"},
    {"a number in the unit of the project", "IFCLENGTHMEASURE(12.5)", "12.5|12.5|~|IfcLengthMeasure|mm"},
    {"all digits", "IFCREAL(0.1234567890123456)", "0.1234567890123456|0.1234567890123456|~|IfcReal|~"},
    {"an integer", "IFCINTEGER(-2147483648)", "-2147483648|-2147483648|~|IfcInteger|~"},
    {"true", "IFCBOOLEAN(.T.)", "true|~|true|IfcBoolean|~"},
    {"unknown", "IFCLOGICAL(.U.)", "unknown|~|~|IfcLogical|~"},
    {"a compound angle", "IFCCOMPOUNDPLANEANGLEMEASURE((1,2,3))", "[1,2,3]|~|~|IfcCompoundPlaneAngleMeasure|~"},
    {"nothing", "$", "~|~|~|~|~"},
};

TEST(TableRows, ValuesOfProperties) {
    for (const ValueRow& row : g_values) {
        SCOPED_TRACE(row.pRule);
        const Model model =
            Model::fromBuffer(houseText("IFC4", "#1=IFCPROJECT(@,'P',$,$,$,$,$,#2);\n"
                                                "#2=IFCUNITASSIGNMENT((#7));\n"
                                                "#7=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                                                "#10=IFCWALL(@,$,$,$,$,$,$);\n"
                                                "#40=IFCPROPERTYSET(@,'S',$,(#41));\n"
                                                "#41=IFCPROPERTYSINGLEVALUE('N',$," +
                                                    std::string(row.pValue) +
                                                    ",$);\n"
                                                    "#44=IFCRELDEFINESBYPROPERTIES(@,$,$,(#10),#40);\n"));
        EXPECT_EQ(tableRows(model, "property"), Rows{"10|S|N|" + std::string(row.pTold) + "|instance"});
    }
}

TEST(TableRows, QuantitiesMaterialsClassifications) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Model model = house(pSchema);
        EXPECT_EQ(tableRows(model, "quantity"), (Rows{"10|Qto_WallBaseQuantities|NetVolume|2.5|~|~|instance",
                                                      "10|Qto_WallBaseQuantities|Length|4000|mm|4|instance",
                                                      "10|Qto_WallBaseQuantities|Layers.NetVolume|2.5|~|~|instance"}));
        EXPECT_EQ(
            tableRows(model, "material"),
            (Rows{"10|Brick|~|240|~|instance", "10|Wool|~|120|~|instance", "11|Wool|~|~|~|type", "11|Brick|~|~|~|type",
                  "13|Wool|~|~|~|instance", "20|Wool|~|~|~|instance", "20|Brick|~|~|~|instance"}));
        EXPECT_EQ(tableRows(model, "classification"),
                  (Rows{"10|Uniclass|Ss_25|Walls", "10|~|Ss_25_10|Framed walls", "11|~|Ss_25_10|Framed walls",
                        "20|~|Ss_25_10|Framed walls"}));
    }
}

TEST(TableRows, RelationsReferencesUnits) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Model model = house(pSchema);
        const Rows relations = tableRows(model, "relation");
        EXPECT_EQ(relations.size(), 21U);
        EXPECT_EQ(beginning(relations, "31|"), (Rows{"31|IfcRelAggregates|3|4", "31|IfcRelAggregates|3|5"}));
        EXPECT_EQ(beginning(relations, "21|"), (Rows{"21|IfcRelDefinesByType|20|10", "21|IfcRelDefinesByType|20|11"}));
        EXPECT_EQ(beginning(relations, "36|"), Rows{"36|IfcRelFillsElement|12|13"});
        const Rows references = tableRows(model, "reference");
        EXPECT_EQ(beginning(references, "20|"),
                  (Rows{"20|HasPropertySets|0|50", "20|HasPropertySets|1|51", "20|HasPropertySets|2|52"}));
        EXPECT_EQ(beginning(references, "2|"), Rows{"2|Units|0|7"});
        EXPECT_EQ(tableRows(model, "unit"), Rows{"7|LENGTHUNIT|millimetre|mm|m|0.001|0"});
        EXPECT_EQ(tableRows(model, "storey"),
                  (Rows{"4|0000000000000000000004|EG|~|0|3", "5|0000000000000000000005|OG|~|3|3"}));
    }
}

TEST(TableRows, TheFileAndItsErrors) {
    const Model model = modelOf("IFC4", "#1=IFCTEAPOT();\n#2=IFCMATERIAL('a',$,$);\n");
    const tables::FileInfo file{.file = "key", .path = "/a/b/house.ifc", .size = 12, .sha256 = [] { return "sum"; }};
    EXPECT_EQ(tableRows(model, "file", file), Rows{str::sOfPath(std::filesystem::absolute("/a/b/house.ifc")) +
                                                   "|IFC4|house.ifc|12|sum|~|2;1|~|2026-01-01T00:00:00|~|~|~|~|~"});
    EXPECT_EQ(tableRows(model, "error", file),
              Rows{"error|value|Error_UnknownEntityType|8|1|The schema has no entity type of this name; the statement "
                   "was skipped."});
}

// The same values as the relations of each element.
TEST(TableRows, AreWhatRelationsSay) {
    std::vector<Model> models;
    for (const char* pSchema : g_families) models.push_back(house(pSchema));
    for (const char* pExample : {"house-ifc2x3.ifc", "house-ifc4.ifc"})
        models.push_back(Model::open(std::filesystem::path(OXA_SOURCE_DIR "/examples") / pExample));
    for (const Model& model : models) {
        const Units units(model);
        Rows elements;
        Rows properties;
        const auto vSets = [&](const Element element, const std::vector<PropertySet>& sets) {
            for (const PropertySet& set : sets)
                for (const Property& one : set.properties) {
                    if (one.kind == PropertyKind::Complex) continue;
                    const auto measure = units.measure(one);
                    properties.push_back(std::to_string(element.id()) + "|" + set.name + "|" + one.name + "|" +
                                         (measure && measure->unit ? measure->unit->symbol : "~") + "|" +
                                         (one.source == Source::Type ? "type" : "instance"));
                }
        };
        const auto id = [](const Element& element) { return element ? std::to_string(element.id()) : "~"; };
        for (const Element element : model.all("IfcObjectDefinition")) {
            elements.push_back(id(element) + "|" + element.guid() + "|" + id(type(element)) + "|" +
                               id(container(element)) + "|" + id(storey(element)) + "|" + id(parent(element)));
            vSets(element, psets(element));
            vSets(element, quantities(element));
        }
        Rows told;
        for (const std::string& sRow : tableRows(model, "element")) {
            std::vector<std::string> cells{""};
            for (const char c : sRow)
                if (c == '|')
                    cells.emplace_back();
                else
                    cells.back() += c;
            told.push_back(cells[0] + "|" + cells[1] + "|" + cells[8] + "|" + cells[9] + "|" + cells[10] + "|" +
                           cells[11]);
        }
        EXPECT_EQ(told, elements);
        Rows rows;
        for (const char* pTable : {"property", "quantity"}) {
            tables::Reader reader(model, {}, pTable);
            tables::Batch some(reader.table().columns);
            const std::size_t iUnit = pTable == std::string("property") ? 8 : 5;
            while (reader.next(some))
                for (std::size_t i = 0; i < some.rows(); ++i) {
                    const auto& columns = some.columns();
                    if (columns[3].text(i).find('.') != std::string_view::npos) continue;   // of a complex one
                    const bool boBounded = columns[4].toText(i).starts_with("{\"lower\"");
                    const std::string sUnit = columns[iUnit].null(i) || boBounded ? "~" : columns[iUnit].toText(i);
                    rows.push_back(columns[1].toText(i) + "|" + columns[2].toText(i) + "|" + columns[3].toText(i) +
                                   "|" + sUnit + "|" + columns.back().toText(i));
                }
        }
        std::ranges::sort(rows);
        std::ranges::sort(properties);
        EXPECT_EQ(rows, properties);
        EXPECT_FALSE(rows.empty());
    }
}

TEST(TableRows, AModelThatIsGoneIsTold) {
    auto pModel = std::make_unique<Model>(house("IFC4"));
    tables::Reader reader(*pModel, {}, "element");
    tables::Batch batch(reader.table().columns);
    EXPECT_TRUE(reader.next(batch, 1));
    EXPECT_EQ(batch.rows(), 1U);
    pModel.reset();
    EXPECT_EQ(sThrown([&] { static_cast<void>(reader.next(batch)); }), "HandleError: the model of this table is gone");
}

TEST(TableRows, UnknownNamesAreTold) {
    const Model model = house("IFC4");
    EXPECT_EQ(sThrown([&] { static_cast<void>(tables::table(model, "elements")); }),
              "NameError: there is no table elements; did you mean element?");
    EXPECT_EQ(sThrown([&] { static_cast<void>(tables::table(model, "IfcWal")); }).substr(0, 60),
              "NameError: there is no table IfcWal; did you mean IfcWall, I");
    EXPECT_EQ(tables::table(model, "ELEMENT").name, "element");
    EXPECT_EQ(tables::table(model, "ifcwall").name, "IfcWall");
}

// A file may make a circle of wholes, and a property of its own part.
TEST(TableRows, CirclesEnd) {
    const Model model = Model::fromBuffer(houseText("IFC4", "#1=IFCWALL(@,'a',$,$,$,$,$,$);\n"
                                                            "#2=IFCWALL(@,'b',$,$,$,$,$,$);\n"
                                                            "#3=IFCRELAGGREGATES(@,$,$,#1,(#2));\n"
                                                            "#4=IFCRELAGGREGATES(@,$,$,#2,(#1));\n"
                                                            "#5=IFCPROPERTYSET(@,'S',$,(#6,#6));\n"
                                                            "#6=IFCCOMPLEXPROPERTY('C',$,'u',(#6));\n"
                                                            "#7=IFCRELDEFINESBYPROPERTIES(@,$,$,(#1),#5);\n"));
    EXPECT_EQ(tableRows(model, "element"), (Rows{"1|0000000000000000000001|IfcWall|~|a|~|~|~|~|~|~|2",
                                                 "2|0000000000000000000002|IfcWall|~|b|~|~|~|~|~|~|1"}));
    EXPECT_EQ(tableRows(model, "property"), Rows{"1|S|C.C|~|~|~|~|~|instance"});
}

TEST(TableRows, TablesOfAModel) {
    const Model model = house("IFC4");
    const std::vector<tables::Table> all = tables::tables(model);
    const std::vector<tables::Table> fixed = tables::tables();
    ASSERT_GT(all.size(), fixed.size());
    EXPECT_TRUE(std::equal(fixed.begin(), fixed.end(), all.begin()));
    const auto boHas = [&](const char* pName) {
        return std::ranges::find(all, pName, &tables::Table::name) != all.end();
    };
    EXPECT_TRUE(boHas("IfcWall"));
    EXPECT_FALSE(boHas("IfcProduct"));   // none of itself
    EXPECT_FALSE(boHas("IfcStair"));
    EXPECT_TRUE(std::is_sorted(all.begin() + static_cast<std::ptrdiff_t>(fixed.size()), all.end(),
                               [](const auto& a, const auto& b) { return a.name < b.name; }));
}

// Rows come from another thread than that of the sink.
struct ToldSink : tables::TableSink {
    std::vector<std::string> begun{};
    std::size_t iRows = 0;
    std::size_t iMost = ~std::size_t{0};
    void begin(const tables::Table& table) override { begun.push_back(table.name); }
    void rows(const tables::Batch& batch) override {
        iRows += batch.rows();
        if (iRows > iMost) throw std::range_error("full");
    }
};

TEST(TableWrite, AllTablesAreBegunInTheirOrder) {
    ToldSink sink;
    tables::write(Model("IFC4"), sink);   // few have a row
    EXPECT_EQ(sink.begun, tables::usualTables());
    ToldSink two;
    const std::vector<std::string> names{"IfcWall", "element"};
    tables::write(house("IFC4"), {.file = "m", .path = {}}, two, names);
    EXPECT_EQ(two.begun, (std::vector<std::string>{"IfcWall", "element"}));
    EXPECT_EQ(two.iRows, 3U + 14U);
}

TEST(TableWrite, FaultsOfEitherThreadPass) {
    const Model model = house("IFC4");
    ToldSink full;
    full.iMost = 1;
    EXPECT_THROW(tables::write(model, full), std::range_error);
    ToldSink sink;
    const tables::FileInfo file{
        .file = "m", .path = {}, .sha256 = []() -> std::string { throw std::domain_error("no sum"); }};
    EXPECT_THROW(tables::write(model, file, sink), std::domain_error);
    EXPECT_EQ(sink.begun, std::vector<std::string>());   // "file" is the first
    const std::vector<std::string> unknown{"element", "elemnt"};
    EXPECT_THROW(tables::write(model, file, sink, unknown), NameError);
    EXPECT_EQ(sink.begun, std::vector<std::string>());
}

}   // namespace
}   // namespace oxa::test
