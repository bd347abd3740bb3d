// SPDX-License-Identifier: Apache-2.0
// Units of every kind with their SI values, and which unit a number has.
#include <string>

#include "Model/HouseText.h"
#include "Model/Units.h"

namespace oxa::test {

namespace {

std::string sUnit(const Unit& unit) { return unit.type + "|" + unit.name + "|" + unit.symbol + "|" + unit.siSymbol; }

}   // namespace

TEST(Units, AreWhatTheirInstancesSay) {
    const struct {
        const char* sRule;
        const char* pStatements;   // #10 is the unit
        const char* pUnit;
        double factor;
        double offset;
    } rows[] = {
        {"no prefix", "#10=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n", "LENGTHUNIT|metre|m|m", 1, 0},
        {"a prefix", "#10=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n", "LENGTHUNIT|millimetre|mm|m", 1e-3, 0},
        {"a prefix that is squared", "#10=IFCSIUNIT(*,.AREAUNIT.,.MILLI.,.SQUARE_METRE.);\n",
         "AREAUNIT|square millimetre|mm\xC2\xB2|m\xC2\xB2", 1e-6, 0},
        {"a prefix that is cubed", "#10=IFCSIUNIT(*,.VOLUMEUNIT.,.DECI.,.CUBIC_METRE.);\n",
         "VOLUMEUNIT|cubic decimetre|dm\xC2\xB3|m\xC2\xB3", 1e-3, 0},
        {"the kilogram is the unit of SI", "#10=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);\n", "MASSUNIT|kilogram|kg|kg", 1,
         0},
        {"the gram is not", "#10=IFCSIUNIT(*,.MASSUNIT.,$,.GRAM.);\n", "MASSUNIT|gram|g|kg", 1e-3, 0},
        {"a ton", "#10=IFCSIUNIT(*,.MASSUNIT.,.MEGA.,.GRAM.);\n", "MASSUNIT|megagram|Mg|kg", 1e3, 0},
        {"degrees Celsius", "#10=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.DEGREE_CELSIUS.);\n",
         "THERMODYNAMICTEMPERATUREUNIT|degree Celsius|\xC2\xB0"
         "C|K",
         1, 273.15},
        {"so many of another",
         "#10=IFCCONVERSIONBASEDUNIT(#13,.LENGTHUNIT.,'FOOT',#11);\n#11=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(304.8),#12)"
         ";\n"
         "#12=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n#13=IFCDIMENSIONALEXPONENTS(1,0,0,0,0,0,0);\n",
         "LENGTHUNIT|FOOT|ft|m", 0.3048, 0},
        {"so many of so many",
         "#10=IFCCONVERSIONBASEDUNIT($,.LENGTHUNIT.,'Rod',#11);\n#11=IFCMEASUREWITHUNIT(IFCRATIOMEASURE(16.5),#12);\n"
         "#12=IFCCONVERSIONBASEDUNIT($,.LENGTHUNIT.,'foot',#13);\n#13=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(0.3048),#14);"
         "\n"
         "#14=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n",
         "LENGTHUNIT|Rod|Rod|m", 5.0292, 0},
        {"with an offset",
         "#10=IFCCONVERSIONBASEDUNITWITHOFFSET($,.THERMODYNAMICTEMPERATUREUNIT.,'Fahrenheit',#11,255.372222);\n"
         "#11=IFCMEASUREWITHUNIT(IFCTHERMODYNAMICTEMPERATUREMEASURE(0.5555555),#12);\n"
         "#12=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.KELVIN.);\n",
         "THERMODYNAMICTEMPERATUREUNIT|Fahrenheit|\xC2\xB0"
         "F|K",
         0.5555555, 255.372222},
        {"derived",
         "#10=IFCDERIVEDUNIT((#11,#12),.VOLUMETRICFLOWRATEUNIT.,$);\n#11=IFCDERIVEDUNITELEMENT(#13,1);\n"
         "#12=IFCDERIVEDUNITELEMENT(#14,-1);\n#13=IFCSIUNIT(*,.VOLUMEUNIT.,.DECI.,.CUBIC_METRE.);\n"
         "#14=IFCSIUNIT(*,.TIMEUNIT.,$,.SECOND.);\n",
         "VOLUMETRICFLOWRATEUNIT|cubic decimetre per second|dm\xC2\xB3/s|m\xC2\xB3/s", 1e-3, 0},
        {"derived with powers",
         "#10=IFCDERIVEDUNIT((#11,#12,#13),.USERDEFINED.,'U');\n#11=IFCDERIVEDUNITELEMENT(#14,1);\n"
         "#12=IFCDERIVEDUNITELEMENT(#15,-2);\n#13=IFCDERIVEDUNITELEMENT(#16,-1);\n"
         "#14=IFCSIUNIT(*,.POWERUNIT.,.KILO.,.WATT.);\n#15=IFCSIUNIT(*,.LENGTHUNIT.,.CENTI.,.METRE.);\n"
         "#16=IFCSIUNIT(*,.THERMODYNAMICTEMPERATUREUNIT.,$,.DEGREE_CELSIUS.);\n",
         "U|kilowatt per centimetre\xC2\xB2 degree Celsius|kW/cm\xC2\xB2\xC2\xB7\xC2\xB0"
         "C|W/m\xC2\xB2\xC2\xB7K",
         1e7, 0},
        {"of the file's own", "#10=IFCCONTEXTDEPENDENTUNIT($,.USERDEFINED.,'pieces');\n", "USERDEFINED|pieces|pieces|",
         1, 0},
        {"money", "#10=IFCMONETARYUNIT('EUR');\n", "MONETARYUNIT|EUR|EUR|", 1, 0},
        {"of itself",
         "#10=IFCCONVERSIONBASEDUNIT($,.LENGTHUNIT.,'X',#11);\n#11=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(2.),#10);\n",
         "LENGTHUNIT|X|X|", 1, 0},
        {"derived of itself", "#10=IFCDERIVEDUNIT((#11,#11),.USERDEFINED.,'U');\n#11=IFCDERIVEDUNITELEMENT(#10,1);\n",
         "U|||", 1, 0},
        {"of a ratio alone", "#10=IFCCONVERSIONBASEDUNIT($,.LENGTHUNIT.,'X',$);\n", "LENGTHUNIT|X|X|", 1, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const Model model = modelOf("IFC4", row.pStatements);
        const std::optional<Unit> found = unit(model.byId(10));
        ASSERT_TRUE(found);
        EXPECT_EQ(sUnit(*found), row.pUnit);
        EXPECT_EQ(found->element, model.byId(10));
        EXPECT_DOUBLE_EQ(found->factor, row.factor);
        EXPECT_DOUBLE_EQ(found->offset, row.offset);
        EXPECT_EQ(found->toSi(2).has_value(), !found->siSymbol.empty());
    }
    const Model old =
        modelOf("IFC2X3", "#10=IFCMONETARYUNIT(.EUR.);\n#11=IFCMATERIAL('M');\n#12=IFCSIUNIT(*,.LENGTHUNIT.,$,$);\n");
    EXPECT_EQ(sUnit(unit(old.byId(10)).value()), "MONETARYUNIT|EUR|EUR|");
    EXPECT_FALSE(unit(old.byId(11)));
    EXPECT_FALSE(unit(old.byId(12)));
}

TEST(Units, OfANumberAreItsOwnElseThoseOfTheProject) {
    for (const char* pSchema : g_families) {
        SCOPED_TRACE(pSchema);
        const Model model = house(pSchema);
        const Units units(model);
        EXPECT_EQ(units.all().size(), 1U);
        const std::optional<Measure> width = units.measure(model.byId(13)["OverallWidth"]);
        ASSERT_TRUE(width && width->unit && width->si);
        EXPECT_EQ(width->value, 885);
        EXPECT_EQ(width->unit->symbol, "mm");
        EXPECT_DOUBLE_EQ(*width->si, 0.885);
        EXPECT_FALSE(units.find("AREAUNIT"));
        const std::optional<Measure> volume =
            units.measure(*property(model.byId(10), "Qto_WallBaseQuantities", "NetVolume"));
        ASSERT_TRUE(volume);
        EXPECT_EQ(volume->value, 2.5);
        EXPECT_FALSE(volume->unit || volume->si);
        const std::optional<Measure> ratio =
            units.measure(*property(model.byId(10), "Pset_WallCommon", "ThermalTransmittance"));
        EXPECT_TRUE(ratio && !ratio->unit);
        EXPECT_FALSE(units.measure(*property(model.byId(10), "Pset_WallCommon", "FireRating")));
        EXPECT_FALSE(units.measure(model.byId(10)["Name"]));
        EXPECT_FALSE(units.measure(Value()));
    }
    const Model model = Model::fromBuffer(houseText(
        "IFC4",
        "#1=IFCPROJECT(@,'P',$,$,$,$,$,#2);\n#2=IFCUNITASSIGNMENT((#3,#4));\n"
        "#3=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
        "#4=IFCDERIVEDUNIT((#8),.THERMALCONDUCTANCEUNIT.,$);\n"
        "#5=IFCCONVERSIONBASEDUNIT($,.LENGTHUNIT.,'INCH',#6);\n#6=IFCMEASUREWITHUNIT(IFCLENGTHMEASURE(25.4),#3);\n"
        "#8=IFCDERIVEDUNITELEMENT(#3,2);\n#10=IFCWALL(@,$,$,$,$,$,$,$);\n#11=IFCPROPERTYSET(@,'S',$,(#12,#13,#14));\n"
        "#12=IFCPROPERTYSINGLEVALUE('Own',$,IFCPOSITIVELENGTHMEASURE(2.),#5);\n"
        "#13=IFCPROPERTYSINGLEVALUE('Project',$,IFCPOSITIVELENGTHMEASURE(2.),$);\n"
        "#14=IFCPROPERTYSINGLEVALUE('Other',$,IFCTHERMALCONDUCTIVITYMEASURE(2.),$);\n"
        "#15=IFCRELDEFINESBYPROPERTIES(@,$,$,(#10),#11);\n#20=IFCPROJECTLIBRARY(@,'L',$,$,$,$,$,$);\n"));
    const Units units(model);
    const struct {
        const char* pName;
        const char* pSymbol;
        double si;
    } rows[] = {{"Own", "in", 0.0508}, {"Project", "mm", 0.002}, {"Other", "mm\xC2\xB2", 2e-6}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pName);
        const std::optional<Measure> measure = units.measure(*property(model.byId(10), "S", row.pName));
        ASSERT_TRUE(measure && measure->unit && measure->si);
        EXPECT_EQ(measure->unit->symbol, row.pSymbol);
        EXPECT_DOUBLE_EQ(*measure->si, row.si);
    }
    EXPECT_TRUE(Units(modelOf("IFC4", "")).all().empty());
}

}   // namespace oxa::test
