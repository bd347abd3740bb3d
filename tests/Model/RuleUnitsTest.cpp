// SPDX-License-Identifier: Apache-2.0
// Units by their rules: prefixed, conversion-based, derived, with an offset; of the project and of a property. And
// queries as programs hand them over, hostile ones too.
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Model/Columns.h"
#include "Model/Relations.h"
#include "Model/RuleThrown.h"
#include "Model/Selector.h"
#include "Model/Units.h"

namespace oxa::test {
namespace {

// ---- units ----------------------------------------------------------------------------------------------------------

std::string sUnitFile(const std::string& sSchema, const std::string& sData) {
    return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\n"
           "FILE_NAME('n','2024-05-17T09:30:00',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('" +
           sSchema + "'));\nENDSEC;\nDATA;\n" + sRuleText(sData, sSchema) + "ENDSEC;\nEND-ISO-10303-21;\n";
}

// What the units below stand on.
constexpr const char* g_pBase = "#1=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                                "#2=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                                "#3=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);\n"
                                "#4=IFCSIUNIT(*,.TIMEUNIT.,$,.SECOND.);\n"
                                "#5=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.KELVIN.);\n"
                                "#6=IFCSIUNIT(*,.POWERUNIT.,.KILO.,.WATT.);\n"
                                "#7=IFCDIMENSIONALEXPONENTS(0,0,0,0,0,0,0);\n"
                                "#8=IFCSIUNIT(*,.PLANEANGLEUNIT.,$,.RADIAN.);\n"
                                "#9=IFCSIUNIT(*,.POWERUNIT.,$,.WATT.);\n";

struct UnitRow {
    const char* pRule;
    const char* pStatements;   // the unit is #100
    const char* pType;
    double factor;
    double offset;
    const char* pSi;   // the symbol of SI; empty for none
};

// clang-format off
const UnitRow g_units[] = {
    {"metre", "#100=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);", "LENGTHUNIT", 1, 0, "m"},
    {"millimetre", "#100=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);", "LENGTHUNIT", 1e-3, 0, "m"},
    {"kilometre", "#100=IFCSIUNIT(*,.LENGTHUNIT.,.KILO.,.METRE.);", "LENGTHUNIT", 1e3, 0, "m"},
    {"decametre", "#100=IFCSIUNIT(*,.LENGTHUNIT.,.DECA.,.METRE.);", "LENGTHUNIT", 10, 0, "m"},
    {"atto", "#100=IFCSIUNIT(*,.LENGTHUNIT.,.ATTO.,.METRE.);", "LENGTHUNIT", 1e-18, 0, "m"},
    {"exa", "#100=IFCSIUNIT(*,.LENGTHUNIT.,.EXA.,.METRE.);", "LENGTHUNIT", 1e18, 0, "m"},
    {"square millimetre: the prefix is squared", "#100=IFCSIUNIT(*,.AREAUNIT.,.MILLI.,.SQUARE_METRE.);", "AREAUNIT", 1e-6, 0, "m\u00b2"},
    {"cubic centimetre: the prefix is cubed", "#100=IFCSIUNIT(*,.VOLUMEUNIT.,.CENTI.,.CUBIC_METRE.);", "VOLUMEUNIT", 1e-6, 0, "m\u00b3"},
    {"cubic metre", "#100=IFCSIUNIT(*,.VOLUMEUNIT.,$,.CUBIC_METRE.);", "VOLUMEUNIT", 1, 0, "m\u00b3"},
    {"kilogram is the SI unit", "#100=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);", "MASSUNIT", 1, 0, "kg"},
    {"gram", "#100=IFCSIUNIT(*,.MASSUNIT.,$,.GRAM.);", "MASSUNIT", 1e-3, 0, "kg"},
    {"megagram", "#100=IFCSIUNIT(*,.MASSUNIT.,.MEGA.,.GRAM.);", "MASSUNIT", 1e3, 0, "kg"},
    {"degree Celsius", "#100=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.DEGREE_CELSIUS.);", "THERMODYNAMICTEMPERATUREUNIT", 1, 273.15, "K"},
    {"kilonewton", "#100=IFCSIUNIT(*,.FORCEUNIT.,.KILO.,.NEWTON.);", "FORCEUNIT", 1e3, 0, "N"},
    {"hectopascal", "#100=IFCSIUNIT(*,.PRESSUREUNIT.,.HECTO.,.PASCAL.);", "PRESSUREUNIT", 1e2, 0, "Pa"},
    {"foot", "#101=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(0.3048),#1);\n#100=IFCCONVERSIONBASEDUNIT(#7,.LENGTHUNIT.,'FOOT',#101);", "LENGTHUNIT", 0.3048, 0, "m"},
    {"inch over a prefix", "#101=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(25.4),#2);\n#100=IFCCONVERSIONBASEDUNIT(#7,.LENGTHUNIT.,'INCH',#101);", "LENGTHUNIT", 0.0254, 0, "m"},
    {"yard over a foot", "#101=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(0.3048),#1);\n#102=IFCCONVERSIONBASEDUNIT(#7,.LENGTHUNIT.,'FOOT',#101);\n#103=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(3.),#102);\n#100=IFCCONVERSIONBASEDUNIT(#7,.LENGTHUNIT.,'YARD',#103);", "LENGTHUNIT", 0.9144, 0, "m"},
    {"degree of angle", "#101=IFCMEASUREWITHUNIT(IFCPLANEANGLEMEASURE(0.0174532925199433),#8);\n#100=IFCCONVERSIONBASEDUNIT(#7,.PLANEANGLEUNIT.,'DEGREE',#101);", "PLANEANGLEUNIT", 0.0174532925199433, 0, "rad"},
    {"an integer as the factor", "#101=IFCMEASUREWITHUNIT(IFCRATIOMEASURE(60.),#4);\n#100=IFCCONVERSIONBASEDUNIT(#7,.TIMEUNIT.,'minute',#101);", "TIMEUNIT", 60, 0, "s"},
    {"watt a square metre and kelvin", "#101=IFCDERIVEDUNITELEMENT(#9,1);\n#102=IFCDERIVEDUNITELEMENT(#1,-2);\n#103=IFCDERIVEDUNITELEMENT(#5,-1);\n#100=IFCDERIVEDUNIT((#101,#102,#103),.THERMALTRANSMITTANCEUNIT.,$);", "THERMALTRANSMITTANCEUNIT", 1, 0, nullptr},
    {"with a prefix in it", "#101=IFCDERIVEDUNITELEMENT(#6,1);\n#102=IFCDERIVEDUNITELEMENT(#2,-2);\n#100=IFCDERIVEDUNIT((#101,#102),.HEATFLUXDENSITYUNIT.,$);", "HEATFLUXDENSITYUNIT", 1e9, 0, nullptr},
    {"kilogram a cubic millimetre", "#101=IFCDERIVEDUNITELEMENT(#3,1);\n#102=IFCDERIVEDUNITELEMENT(#2,-3);\n#100=IFCDERIVEDUNIT((#101,#102),.MASSDENSITYUNIT.,$);", "MASSDENSITYUNIT", 1e9, 0, nullptr},
    {"derived from a conversion", "#104=IFCMEASUREWITHUNIT(IFCTIMEMEASURE(3600.),#4);\n#105=IFCCONVERSIONBASEDUNIT(#7,.TIMEUNIT.,'hour',#104);\n#106=IFCSIUNIT(*,.VOLUMEUNIT.,$,.CUBIC_METRE.);\n#101=IFCDERIVEDUNITELEMENT(#106,1);\n#102=IFCDERIVEDUNITELEMENT(#105,-1);\n#100=IFCDERIVEDUNIT((#101,#102),.VOLUMETRICFLOWRATEUNIT.,$);", "VOLUMETRICFLOWRATEUNIT", 1. / 3600, 0, nullptr},
    {"of the file's own", "#100=IFCCONTEXTDEPENDENTUNIT(#7,.LENGTHUNIT.,'cubit');", "LENGTHUNIT", 1, 0, ""},
    {"money", "#100=IFCMONETARYUNIT(<.EUR.|'EUR'>);", "MONETARYUNIT", 1, 0, ""},
};
// clang-format on

class RuleUnits : public testing::TestWithParam<const char*> {};

TEST_P(RuleUnits, AUnitTellsItsWayToSi) {
    for (const UnitRow& row : g_units) {
        SCOPED_TRACE(row.pRule);
        const Model model = Model::fromBuffer(sUnitFile(GetParam(), std::string(g_pBase) + row.pStatements + "\n"));
        EXPECT_TRUE(model.whole());
        const std::optional<Unit> found = unit(model.byId(100));
        ASSERT_TRUE(found);
        EXPECT_EQ(found->type, row.pType);
        if (row.pSi && !*row.pSi) {
            EXPECT_EQ(found->siSymbol, "");
            EXPECT_EQ(found->toSi(2.0), std::nullopt);
            continue;
        }
        EXPECT_NEAR(found->factor, row.factor, row.factor * 1e-12);
        EXPECT_NEAR(found->offset, row.offset, 1e-9);
        EXPECT_FALSE(found->siSymbol.empty());
        if (row.pSi) {
            EXPECT_EQ(found->siSymbol, row.pSi);
        }
        ASSERT_TRUE(found->toSi(2.0));
        EXPECT_NEAR(*found->toSi(2.0), 2 * row.factor + row.offset, (2 * row.factor + row.offset) * 1e-12);
    }
}

TEST_P(RuleUnits, AMeasureHasTheUnitOfTheProjectOrItsOwn) {
    const std::string sData = std::string(g_pBase) +
                              "#10=IFCSIUNIT(*,.AREAUNIT.,.MILLI.,.SQUARE_METRE.);\n"
                              "#11=IFCUNITASSIGNMENT((#2,#10));\n"
                              "#12=IFCPROJECT(!12,'P',$,$,$,$,$,#11);\n"
                              "#40=IFCDOOR(!40,'D',$,$,$,$,$,2010.,885.<|,$,$,$>);\n"
                              "#50=IFCPROPERTYSINGLEVALUE('L',$,IFCLENGTHMEASURE(2500.),$);\n"
                              "#51=IFCPROPERTYSINGLEVALUE('Own',$,IFCLENGTHMEASURE(2.5),#1);\n"
                              "#52=IFCPROPERTYSINGLEVALUE('T',$,IFCTHERMODYNAMICTEMPERATUREMEASURE(20.),$);\n"
                              "#53=IFCPROPERTYSINGLEVALUE('Text',$,IFCLABEL('x'),$);\n"
                              "#54=IFCPROPERTYSINGLEVALUE('Ratio',$,IFCPOSITIVERATIOMEASURE(0.5),$);\n"
                              "#55=IFCPROPERTYSET(!55,'S',$,(#50,#51,#52,#53,#54));\n"
                              "#56=IFCRELDEFINESBYPROPERTIES(!56,$,$,(#40),#55);\n"
                              "#57=IFCQUANTITYAREA('A',$,$,3000000.<|,$>);\n"
                              "#58=IFCELEMENTQUANTITY(!58,'Q',$,$,(#57));\n"
                              "#59=IFCRELDEFINESBYPROPERTIES(!59,$,$,(#40),#58);\n";
    const Model model = Model::fromBuffer(sUnitFile(GetParam(), sData));
    const Element door = model.byId(40);
    const Units units(model);
    ASSERT_EQ(units.all().size(), 2U);
    ASSERT_NE(units.find("LENGTHUNIT"), nullptr);
    EXPECT_EQ(units.find("LENGTHUNIT")->symbol, "mm");
    EXPECT_EQ(units.find("VOLUMEUNIT"), nullptr) << "none is assigned";
    EXPECT_EQ(units.find("nonsense"), nullptr);

    const std::optional<Measure> width = units.measure(door["OverallWidth"]);
    ASSERT_TRUE(width && width->unit && width->si);
    EXPECT_EQ(width->value, 885);
    EXPECT_EQ(width->unit->name, "millimetre");
    EXPECT_DOUBLE_EQ(*width->si, 0.885);
    EXPECT_FALSE(units.measure(door["Name"])) << "no number";
    EXPECT_FALSE(units.measure(door["Tag"])) << "no value";

    const struct {
        const char* pSet;
        const char* pName;
        double value;
        std::optional<double> si;
    } rows[] = {
        {"S", "L", 2500, 2.5}, {"S", "Own", 2.5, 2.5}, {"S", "T", 20, std::nullopt}, {"S", "Ratio", 0.5, std::nullopt},
        {"Q", "A", 3e6, 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pName);
        const std::optional<Measure> one = units.measure(*property(door, row.pSet, row.pName));
        ASSERT_TRUE(one);
        EXPECT_EQ(one->value, row.value);
        EXPECT_EQ(one->si.has_value(), row.si.has_value());
        if (one->si && row.si) {
            EXPECT_DOUBLE_EQ(*one->si, *row.si);
        }
    }
    EXPECT_FALSE(units.measure(*property(door, "S", "Text")));
}

TEST(RuleUnitsBounds, AUnitThatStandsOnItselfIsNone) {
    const Model model = Model::fromBuffer(
        sUnitFile("IFC4", "#7=IFCDIMENSIONALEXPONENTS(0,0,0,0,0,0,0);\n"
                          "#100=IFCCONVERSIONBASEDUNIT(#7,.LENGTHUNIT.,'a',#101);\n"
                          "#101=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(2.),#100);\n"
                          "#102=IFCDERIVEDUNIT((#103),.USERDEFINED.,'b');\n#103=IFCDERIVEDUNITELEMENT(#100,1);\n"
                          "#104=IFCCONVERSIONBASEDUNIT(#7,.LENGTHUNIT.,'c',$);\n"));
    for (const std::uint64_t uId : {100U, 102U, 104U, 7U}) {
        const std::optional<Unit> found = unit(model.byId(uId));
        EXPECT_TRUE(!found || found->siSymbol.empty()) << uId;
    }
}

TEST(RuleUnitsOffset, DegreeFahrenheit) {
    const Model model = Model::fromBuffer(
        sUnitFile("IFC4", std::string(g_pBase) +
                              "#101=IFCMEASUREWITHUNIT(IFCTHERMODYNAMICTEMPERATUREMEASURE(0.555555555555556),#5);\n"
                              "#100=IFCCONVERSIONBASEDUNITWITHOFFSET(#7,.THERMODYNAMICTEMPERATUREUNIT.,"
                              "'FAHRENHEIT',#101,255.372222222222);\n"));
    const std::optional<Unit> found = unit(model.byId(100));
    ASSERT_TRUE(found && found->toSi(32));
    EXPECT_NEAR(*found->toSi(32), 273.15, 1e-6) << "ice melts at 32 degrees";
}

INSTANTIATE_TEST_SUITE_P(Schemas, RuleUnits, testing::ValuesIn(g_ruleSchemas),
                         [](const auto& one) { return std::string(one.param); });

// ---- queries --------------------------------------------------------------------------------------------------------

TEST(RuleSelector, AHostileTextIsAnErrorWithItsColumnAtOnce) {
    const auto sMany = [](const std::string& sTerm, int iTimes) {
        std::string sText = "#1";
        for (int i = 0; i < iTimes; ++i) sText += sTerm;
        return sText;
    };
    const struct {
        const char* pRule;
        std::string query;
    } rows[] = {
        {"a NUL alone", std::string(1, '\0')},
        {"a NUL in a name", std::string("Ifc\0Wall", 8)},
        {"a NUL behind a class", std::string("IfcWall\0", 8)},
        {"a million terms", sMany(",#1", 1'000'000)},
        {"a million groups", sMany("+#1", 1'000'000)},
        {"eight megabytes", "Name=" + std::string(8'000'000, 'x')},
        {"an open quote of megabytes", "Name=\"" + std::string(5'000'000, '\\')},
        {"a million times not", std::string(1'000'000, '!')},
        {"a million parentheses in an expression", "Name=/" + std::string(1'000'000, '(') + "/"},
        {"an expression of powers", "Name=/" + std::string(500, '(') + "a" +
                                        [] {
                                            std::string sText;
                                            for (int i = 0; i < 500; ++i) sText += "{9})";
                                            return sText;
                                        }() +
                                        "/"},
        {"an open quote", "Name=\"x"},
        {"a bad expression", "Name=/[/"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pRule);
        const auto begin = std::chrono::steady_clock::now();
        try {
            const Selector selector(row.query);
            ADD_FAILURE() << "no exception";
        } catch (const QueryError& error) {
            EXPECT_GE(error.column(), 1U);
            EXPECT_EQ(std::string(error.what()).rfind("column " + std::to_string(error.column()) + ": ", 0), 0U);
            EXPECT_LT(std::string(error.what()).size(), 400U);
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        }
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    }
}

TEST(RuleSelector, ANulInAValueIsALetter) {
    const Model model = ruleHouse("IFC4");
    for (const std::string& sQuery : {std::string("Name=W1\0", 8), std::string("Name=\"W1\0\"", 10)}) {
        try {
            EXPECT_TRUE(Selector(sQuery).select(model).elements.empty());
        } catch (const QueryError&) {}
    }
}

TEST(RuleSelector, ItsTextMeansTheSame) {
    const char* const queries[] = {"IfcWall",
                                   "ifcwall,!#30",
                                   "IfcWall+IfcDoor, OverallWidth>=0.9",
                                   "Name='W1'",
                                   "Name=\"Wand+T\u00fcr \\\"a,b\\\"\"",
                                   "Pset_WallCommon.FireRating=NULL",
                                   "/Pset_.*Common/./.*Rating/!=/F.*/",
                                   "\"My set\".'a.b'=7",
                                   "location=EG, !type=WT",
                                   "material*=mm",
                                   "Name!*=W",
                                   "storey.Elevation<=-1",
                                   "Pset_WallCommon.IsExternal=TRUE"};
    const Model model = ruleHouse("IFC4");
    for (const char* pQuery : queries) {
        SCOPED_TRACE(pQuery);
        const Selector selector(pQuery);
        const Selector again(selector.text());
        EXPECT_EQ(again.text(), selector.text());
        EXPECT_EQ(sNumbers(again.select(model).elements), sNumbers(selector.select(model).elements));
        EXPECT_EQ(sNumbers(selector.select(model).elements), sNumbers(Selector(pQuery).select(model).elements));
    }
}

TEST(RuleSelector, OneQueryServesManyModels) {
    const Selector selector("IfcWall, Pset_WallCommon.FireRating=F 90");
    for (const char* pSchema : g_ruleSchemas) {
        const Model model = ruleHouse(pSchema);
        EXPECT_EQ(sNumbers(selector.select(model).elements), "30 31");
        EXPECT_EQ(sNumbers(selector.select(model, exact).elements), "30");
        EXPECT_TRUE(selector.select(model).hints.empty());
    }
}

TEST(RuleColumns, NamesAndHandlesAreChecked) {
    const Model model = ruleHouse("IFC4");
    const Model other = ruleHouse("IFC4");
    for (const char* pName : {"", "Nam", "storey.Nam", "\"x", "/Name/"})
        EXPECT_THROW(Columns(model, {pName}), NameError) << pName;
    Columns columns(model, {"Name", "OverallWidth"});
    EXPECT_THROW((void)columns.row(other.byId(40)), HandleError);
    EXPECT_THROW((void)columns.row(Element()), HandleError);
    EXPECT_EQ(columns.row(model.byId(40)), (std::vector<Cell>{std::string("D1"), 0.9}));
    EXPECT_EQ(columns.row(model.byId(41)), (std::vector<Cell>{std::string("D2"), std::monostate()}));
    EXPECT_EQ(columns.names(), (std::vector<std::string>{"Name", "OverallWidth"}));
}

}   // namespace
}   // namespace oxa::test
