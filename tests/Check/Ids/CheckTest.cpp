// SPDX-License-Identifier: Apache-2.0
// Models against requirements: what each facet means, what is counted, and why an instance fails.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "../../Model/ModelText.h"
#include "IdsText.h"
#include "Model/Error.h"

namespace oxa {
namespace {

using ids::Requirements;
using namespace test;

// One line for one specification.
std::string sChecked(const Model& model, const std::string& sSpecification, const ids::Options& options = {}) {
    const Requirements read = Requirements::fromBuffer(idsFile(sSpecification));
    EXPECT_TRUE(read.valid()) << sFaults(read);
    return sResult(ids::check(model, read, options).specifications.front());
}

struct CheckRow {
    const char* sRule;
    std::string sRequirement;
    const char* sResult;
};
void vHold(const Model& model, const std::string& sApplicability, const std::vector<CheckRow>& rows,
           const std::string& sSchemas = "IFC4") {
    for (const CheckRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sChecked(model, SpecificationText{.applicability = sApplicability,
                                                    .requirements = row.sRequirement,
                                                    .schemas = sSchemas}
                                      .text()),
                  row.sResult);
    }
}

TEST(IdsCheck, SpecificationsCountTheirInstances) {
    const Model model = modelOf("IFC4", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,'A',$,$,$,$,$,$);\n"
                                        "#2=IFCWALL('0eA6m4fELI9QBIhP3wiLAp',$,'B',$,$,$,$,$,$);\n"
                                        "#3=IFCWALLSTANDARDCASE('05rScmOVzMoQXOfbYdtLYj',$,'B',$,$,$,$,$,$);\n");
    const std::string sNamed = "<attribute>" + simple("name", "Name") + simple("value", "A") + "</attribute>";
    const std::string sTagged = "<attribute>" + simple("name", "Tag") + "</attribute>";
    const struct {
        const char* sRule;
        SpecificationText specification;
        const char* sResult;
        const char* sReason;
    } rows[] = {
        {"subclasses are not meant",
         {.requirements = "<attribute>" + simple("name", "Name") + "</attribute>"},
         "passed 2/2",
         "all 2 instances pass"},
        {"one fails", {.requirements = sNamed}, "failed 1/2: #2 value, Name is 'B'", "1 of 2 instances fails"},
        {"an instance fails by each requirement",
         {.requirements = sNamed + sTagged},
         "failed 0/2: #1 missing, Tag has no value; #2 value, Name is 'B'; #2 missing, Tag has no value",
         "2 of 2 instances fail"},
        {"required, and none is there",
         {.applicability = entity("IFCDOOR"), .requirements = sNamed},
         "failed 0/0",
         "no instance is applicable, and one at least is required"},
        {"optional, and none is there",
         {.applicability = entity("IFCDOOR"), .requirements = sNamed, .occurs = "minOccurs='0' maxOccurs='unbounded'"},
         "passed 0/0",
         "no instance is applicable"},
        {"prohibited, and none is there",
         {.applicability = entity("IFCDOOR"), .occurs = "minOccurs='0' maxOccurs='0'"},
         "passed 0/0",
         "no instance is applicable"},
        {"prohibited, and there",
         {.occurs = "minOccurs='0' maxOccurs='0'"},
         "failed 0/2: #1 not-allowed, it is applicable, and no instance may be; #2 not-allowed, it is applicable, and "
         "no instance may be",
         "2 instances are applicable, and none may be"},
        {"required, without requirements", {}, "passed 2/2", "all 2 instances pass"},
        {"all facets select together",
         {.applicability = entity("IFCWALL") + sNamed, .requirements = sNamed},
         "passed 1/1",
         "the one applicable instance passes"},
        {"without a class",
         {.applicability = sNamed, .requirements = sTagged},
         "failed 0/1: #1 missing, Tag has no value",
         "1 of 1 instance fails"},
        {"without a facet every instance is meant",
         {.applicability = "", .requirements = sNamed},
         "failed 1/3: #2 value, Name is 'B'; #3 value, Name is 'B'",
         "2 of 3 instances fail"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const ids::Result result = ids::check(model, Requirements::fromBuffer(idsFile(row.specification.text())));
        EXPECT_EQ(sResult(result.specifications.front()), row.sResult);
        EXPECT_EQ(result.specifications.front().reason, row.sReason);
        EXPECT_EQ(result.specifications.front().failed,
                  result.specifications.front().applicable - result.specifications.front().passed);
        EXPECT_EQ(result.verdict, result.specifications.front().status == ids::Status::Passed ? ids::Verdict::Passed
                                                                                              : ids::Verdict::Failed);
    }
    const ids::Result result = ids::check(
        model, Requirements::fromBuffer(idsFile(SpecificationText{.requirements = sNamed + sTagged}.text())));
    ASSERT_EQ(result.specifications.front().requirements.size(), 2U);
    EXPECT_EQ(result.specifications.front().requirements[0].passed, 1U);
    EXPECT_EQ(result.specifications.front().requirements[0].failed, 1U);
    EXPECT_EQ(result.specifications.front().requirements[1].failed, 2U);
    EXPECT_EQ(result.specifications.front().failures[1].requirement, 0U);
    EXPECT_EQ(result.specifications.front().failures[1].found, "B");
    EXPECT_EQ(result.specifications.front().failures[1].element.guid(), "0eA6m4fELI9QBIhP3wiLAp");
}

TEST(IdsCheck, SchemasAndFaultsDecideWhatIsChecked) {
    const Model model = modelOf("IFC4", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,'A',$,$,$,$,$,$);\n");
    const std::string sGood =
        SpecificationText{.requirements = "<attribute>" + simple("name", "Name") + "</attribute>"}.text();
    const std::string sOld = SpecificationText{.requirements = "<material/>", .schemas = "IFC2X3"}.text();
    const std::string sFaulty = SpecificationText{.applicability = entity("IFCWAL")}.text();
    const struct {
        const char* sRule;
        std::string sSpecifications;
        ids::OtherSchemas eOthers;
        const char* sStatuses;
        const char* sVerdict;
    } rows[] = {
        {"another schema beside the model's", sGood + sOld, ids::OtherSchemas::Auto, "passed other-schema", "passed"},
        {"another schema alone", sOld, ids::OtherSchemas::Auto, "failed!", "failed"},
        {"left out", sOld, ids::OtherSchemas::Skip, "other-schema", "undecided"},
        {"checked", sGood + sOld, ids::OtherSchemas::Check, "passed failed!", "failed"},
        {"a fault", sGood + sFaulty, ids::OtherSchemas::Auto, "passed faulty", "undecided"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const ids::Result result =
            ids::check(model, Requirements::fromBuffer(idsFile(row.sSpecifications)), {.otherSchemas = row.eOthers});
        std::string sStatuses;
        for (const ids::SpecificationResult& one : result.specifications)
            sStatuses +=
                (sStatuses.empty() ? "" : " ") + std::string(statusName(one.status)) + (one.otherSchema ? "!" : "");
        EXPECT_EQ(sStatuses, row.sStatuses);
        EXPECT_EQ(verdictName(result.verdict), row.sVerdict);
        EXPECT_EQ(result.schema, "IFC4");
    }
    const Model later = modelOf("IFC4X3", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,'A',$,$,$,$,$,$);\n");
    const auto read = Requirements::fromBuffer(idsFile(SpecificationText{.schemas = "IFC4X3_ADD2"}.text() + sGood));
    EXPECT_EQ(ids::check(later, read).specifications[0].status, ids::Status::Passed);
    EXPECT_EQ(ids::check(later, read).specifications[1].status, ids::Status::OtherSchema);
    EXPECT_EQ(ids::check(later, read).specifications[1].reason, "it is for IFC4, and the model is IFC4X3");
}

TEST(IdsCheck, ClassesHavePredefinedTypesByThemselvesOrByTheirType) {
    const Model model =
        modelOf("IFC4", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,$,$,$,$,$,$,.SHEAR.);\n"
                        "#2=IFCWALL('0eA6m4fELI9QBIhP3wiLAp',$,$,$,'MINE',$,$,$,.USERDEFINED.);\n"
                        "#3=IFCWALL('05rScmOVzMoQXOfbYdtLYj',$,$,$,'MINE',$,$,$,.SHEAR.);\n"
                        "#4=IFCWALL('3Agm079vPIYBL4JExVrhD5',$,$,$,$,$,$,$,.MOVABLE.);\n"
                        "#5=IFCWALLTYPE('0BbkGoC6vPvRW13UT7D8zH',$,'T',$,$,$,$,$,'TYPES',.USERDEFINED.);\n"
                        "#6=IFCRELDEFINESBYTYPE('16MocU_IDOF8_x3Iqllz0d',$,$,$,(#3),#5);\n"
                        "#7=IFCWALLTYPE('2nJrDaLQfJ1QPhdJR0o97J',$,'T',$,$,$,$,$,$,.NOTDEFINED.);\n"
                        "#8=IFCRELDEFINESBYTYPE('1xdwj8qGXK4hzoNbvMdXJW',$,$,$,(#4),#7);\n"
                        "#9=IFCTASKTYPE('0WTUhjMwvT39YBFH2pryoM',$,'T',$,$,$,$,$,'PAINT',.USERDEFINED.,$);\n");
    const auto typed = [](const char* pType) { return entity("IFCWALL", simple("predefinedType", pType)); };
    vHold(model, entity("IFCWALL"),
          {{"an enumerator", typed("SHEAR"),
            "failed 1/4: #2 predefined-type, its predefined type is USERDEFINED, MINE; #3 predefined-type, its "
            "predefined type is USERDEFINED, TYPES; #4 predefined-type, its predefined type is NOTDEFINED, MOVABLE"},
           {"a user's own", typed("MINE"),
            "failed 1/4: #1 predefined-type, its predefined type is SHEAR; #3 predefined-type, its predefined type is "
            "USERDEFINED, TYPES; #4 predefined-type, its predefined type is NOTDEFINED, MOVABLE"},
           {"another class", entity("IFCSLAB"),
            "failed 0/4: #1 class, it is IfcWall; #2 class, it is IfcWall; #3 class, it is IfcWall; #4 class, it is "
            "IfcWall"}});
    EXPECT_EQ(sChecked(model, SpecificationText{.applicability = typed("USERDEFINED")}.text()), "passed 2/2");
    EXPECT_EQ(sChecked(model, SpecificationText{.applicability = typed("TYPES")}.text()), "passed 1/1");
    EXPECT_EQ(sChecked(model, SpecificationText{.applicability = typed("MOVABLE")}.text()), "passed 1/1");
    EXPECT_EQ(
        sChecked(model,
                 SpecificationText{.applicability = entity("IFCTASKTYPE", simple("predefinedType", "PAINT"))}.text()),
        "passed 1/1");
}

TEST(IdsCheck, ClassesOfIfc2x3AreToldByTheirTypes) {
    const Model model =
        modelOf("IFC2X3", "#1=IFCFLOWTERMINAL('1hqIFTRjfV6AWq_bMtnZwI',$,$,$,$,$,$,$);\n"
                          "#2=IFCFLOWTERMINAL('0eA6m4fELI9QBIhP3wiLAp',$,$,$,$,$,$,$);\n"
                          "#3=IFCAIRTERMINALTYPE('05rScmOVzMoQXOfbYdtLYj',$,'T',$,$,$,$,$,$,.GRILLE.);\n"
                          "#4=IFCRELDEFINESBYTYPE('3Agm079vPIYBL4JExVrhD5',$,$,$,(#1),#3);\n"
                          "#5=IFCWALL('0BbkGoC6vPvRW13UT7D8zH',$,$,$,'MINE',$,$,$);\n");
    const auto all = [&](const std::string& sApplicability) {
        return sChecked(model, SpecificationText{.applicability = sApplicability, .schemas = "IFC2X3"}.text());
    };
    EXPECT_EQ(all(entity("IFCAIRTERMINAL")), "passed 1/1");
    EXPECT_EQ(all(entity("IFCFLOWTERMINAL")), "passed 2/2");
    EXPECT_EQ(all(entity("IFCAIRTERMINAL", simple("predefinedType", "GRILLE"))), "passed 1/1");
    EXPECT_EQ(all(entity("IFCAIRTERMINAL", simple("predefinedType", "ROUND"))), "failed 0/0");
    EXPECT_EQ(all("<entity>" + restricted("name", "string", "pattern=IFCAIR.*L") + "</entity>"), "passed 1/1");
    EXPECT_EQ(all(entity("IFCWALL", simple("predefinedType", "MINE"))), "passed 1/1");
}

TEST(IdsCheck, AttributesHaveValues) {
    const Model model =
        modelOf("IFC4", "#1=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n#2=IFCUNITASSIGNMENT((#1));\n"
                        "#3=IFCPROJECT('2eA6m4fELI9QBIhP3wiLAp',$,'',$,$,$,$,$,#2);\n"
                        "#4=IFCDOOR('1hqIFTRjfV6AWq_bMtnZwI',$,'D1',$,$,$,$,'7',2010.,885.,.DOOR.,$,$);\n"
                        "#5=IFCTASK('0eA6m4fELI9QBIhP3wiLAp',$,'T',$,$,$,$,$,$,.F.,42,$,$);\n"
                        "#6=IFCSURFACESTYLEREFRACTION(1.5,$);\n"
                        "#7=IFCPROPERTYSINGLEVALUE('L',$,IFCLOGICAL(.U.),$);\n");
    const auto is = [](const char* pName, const std::string& sValue, const char* pAttributes = "") {
        return "<attribute " + std::string(pAttributes) + ">" + simple("name", pName) + sValue + "</attribute>";
    };
    vHold(model, entity("IFCDOOR"),
          {{"in metres", is("OverallWidth", simple("value", "0.885")), "passed 1/1"},
           {"and not in millimetres", is("OverallWidth", simple("value", "885")),
            "failed 0/1: #4 value, OverallWidth is 885 mm (0.885 m)"},
           {"in a range", is("OverallHeight", restricted("value", "double", "minInclusive=2 maxInclusive=2.01")),
            "passed 1/1"},
           {"a text of a number is a text", is("Tag", simple("value", "7.0")), "failed 0/1: #4 value, Tag is '7'"},
           {"an enumerator", is("PredefinedType", simple("value", "DOOR")), "passed 1/1"},
           {"an instance is there", is("ObjectPlacement", ""), "failed 0/1: #4 missing, ObjectPlacement has no value"},
           {"one of several attributes has a value",
            "<attribute>" + restricted("name", "string", "enumeration=Name enumeration=Description") + "</attribute>",
            "passed 1/1"},
           {"and all that have one have this one",
            "<attribute>" + restricted("name", "string", "enumeration=Name enumeration=Tag") + simple("value", "D1") +
                "</attribute>",
            "failed 0/1: #4 value, Tag is '7'"},
           {"an optional one that is missing", is("Description", simple("value", "x"), "cardinality='optional'"),
            "passed 1/1"},
           {"an optional one that is another", is("Name", simple("value", "x"), "cardinality='optional'"),
            "failed 0/1: #4 value, Name is 'D1'"},
           {"a prohibited one", is("Name", "", "cardinality='prohibited'"), "failed 0/1: #4 prohibited, Name is 'D1'"},
           {"a prohibited one that is missing", is("Description", "", "cardinality='prohibited'"), "passed 1/1"},
           {"a prohibited value", is("Name", simple("value", "D1"), "cardinality='prohibited'"),
            "failed 0/1: #4 prohibited, Name is 'D1'"},
           {"another value than the prohibited one", is("Name", simple("value", "D2"), "cardinality='prohibited'"),
            "passed 1/1"}});
    vHold(model, entity("IFCTASK"),
          {{"false is a value", is("IsMilestone", ""), "passed 1/1"},
           {"0 is false", is("IsMilestone", simple("value", "0")), "passed 1/1"},
           {"a whole number", is("Priority", simple("value", "042")), "passed 1/1"},
           {"in whole numbers", is("Priority", restricted("value", "integer", "minExclusive=42")),
            "failed 0/1: #5 value, Priority is 42"}});
    vHold(model, entity("IFCPROJECT"),
          {{"an empty text is none", is("Name", ""), "failed 0/1: #3 missing, Name has no value"},
           {"an empty text is not nothing", is("Name", simple("value", "x"), "cardinality='optional'"),
            "failed 0/1: #3 value, Name is ''"}});
    vHold(model, entity("IFCPROPERTYSINGLEVALUE"),
          {{"unknown is none", is("NominalValue", ""), "failed 0/1: #7 missing, NominalValue has no value"}});
}

TEST(IdsCheck, NumbersAreEqualWithinTheTolerance) {
    const struct {
        const char* sNumber;
        std::string sValue;
        bool boEqual;
    } rows[] = {
        {"1.", simple("value", "1"), true},
        {"1.000002", simple("value", "1"), true},
        {"1.0000021", simple("value", "1"), false},
        {"0.", simple("value", "0.000001"), true},
        {"1000001.", simple("value", "1000000"), true},
        {"1000001.1", simple("value", "1000000"), false},
        {"1000000.", restricted("value", "double", "enumeration=5 enumeration=1000001"), true},
        {"3.", restricted("value", "double", "minInclusive=3.000004"), true},
        {"3.", restricted("value", "double", "minInclusive=3.00001"), false},
        {"3.", restricted("value", "double", "minExclusive=3"), false},
        {"3.000001", restricted("value", "double", "minExclusive=3"), false},
        {"3.00001", restricted("value", "double", "minExclusive=3"), true},
        {"3.000001", restricted("value", "double", "maxInclusive=3"), true},
        {"3.", restricted("value", "double", "maxExclusive=3.000001"), false},
        {"1.E300", restricted("value", "double", "maxInclusive=INF"), true},
        {"1.E300", restricted("value", "double", "maxInclusive=1E999"), true},
        {"-1.E300", restricted("value", "double", "maxExclusive=-1.E999"), false},
        {"0.", restricted("value", "double", "enumeration=1E-999"), true},
        {"16.", restricted("value", "double", "enumeration=+16 enumeration=.5"), true},
        {"1.", simple("value", "NaN"), false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.sNumber) + row.sValue);
        const Model model = modelOf("IFC4", "#1=IFCSURFACESTYLEREFRACTION(" + std::string(row.sNumber) + ",$);\n");
        const std::string sAll =
            sChecked(model, SpecificationText{.applicability = entity("IFCSURFACESTYLEREFRACTION"),
                                              .requirements = "<attribute>" + simple("name", "RefractionIndex") +
                                                              row.sValue + "</attribute>"}
                                .text());
        EXPECT_EQ(sAll.starts_with("passed"), row.boEqual) << sAll;
    }
}

TEST(IdsCheck, DatesAndDurationsHaveAnOrder) {
    const struct {
        const char* sBase;
        const char* sBound;
        const char* sValue;
        bool boIn;
    } rows[] = {
        {"date", "minInclusive=2024-03-01", "2024-02-29", false},
        {"date", "minInclusive=2024-02-29", "2024-03-01", true},
        {"date", "maxExclusive=2024-03-01", "2024-03-01", false},
        {"dateTime", "minInclusive=2024-03-01T12:00:00", "2024-03-01T12:00:00.5", true},
        {"dateTime", "minInclusive=2024-03-01T12:00:00Z", "2024-03-01T12:30:00+01:00", false},
        {"time", "maxInclusive=12:00:00", "11:59:59", true},
        {"duration", "maxInclusive=P1D", "PT24H", true},
        {"duration", "maxInclusive=P1D", "PT24H1S", false},
        {"duration", "maxInclusive=P1M", "P27D", true},
        {"duration", "maxInclusive=P1M", "P30D", false},   // neither less nor more
        {"duration", "minExclusive=P1Y2M", "P15M", true},
    };
    const struct {
        std::string_view base;
        const char* sType;
    } types[] = {{"date", "IFCDATE"}, {"dateTime", "IFCDATETIME"}, {"time", "IFCTIME"}, {"duration", "IFCDURATION"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.sBound) + " " + row.sValue);
        std::string sType;
        for (const auto& type : types)
            if (type.base == row.sBase) sType = type.sType;
        const Model model =
            modelOf("IFC4", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,$,$,$,$,$,$,$);\n"
                            "#2=IFCPROPERTYSINGLEVALUE('B',$," +
                                sType + "('" + row.sValue +
                                "'),$);\n"
                                "#3=IFCPROPERTYSET('0eA6m4fELI9QBIhP3wiLAp',$,'A',$,(#2));\n"
                                "#4=IFCRELDEFINESBYPROPERTIES('05rScmOVzMoQXOfbYdtLYj',$,$,$,(#1),#3);\n");
        const std::string sAll = sChecked(
            model, SpecificationText{.requirements = property("A", "B", restricted("value", row.sBase, row.sBound),
                                                              "dataType='" + sType + "'")}
                       .text());
        EXPECT_EQ(sAll.starts_with("passed"), row.boIn) << sAll;
    }
}

const char* const g_pPropertyModel =
    "#1=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n#2=IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.);\n"
    "#3=IFCUNITASSIGNMENT((#1,#2));\n#4=IFCPROJECT('2eA6m4fELI9QBIhP3wiLAp',$,'P',$,$,$,$,$,#3);\n"
    "#5=IFCSIUNIT(*,.LENGTHUNIT.,.CENTI.,.METRE.);\n"
    "#10=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,$,$,$,$,$,$,$);\n"
    "#11=IFCPROPERTYSET('0eA6m4fELI9QBIhP3wiLAp',$,'Own',$,(#12,#13,#14,#15,#16,#17,#18,#19,#20,#21,#22));\n"
    "#12=IFCPROPERTYSINGLEVALUE('Text',$,IFCLABEL('F 30'),$);\n"
    "#13=IFCPROPERTYSINGLEVALUE('Null',$,$,$);\n"
    "#14=IFCPROPERTYSINGLEVALUE('Empty',$,IFCLABEL(''),$);\n"
    "#15=IFCPROPERTYSINGLEVALUE('Width',$,IFCPOSITIVELENGTHMEASURE(240.),$);\n"
    "#16=IFCPROPERTYSINGLEVALUE('Height',$,IFCLENGTHMEASURE(240.),#5);\n"
    "#17=IFCPROPERTYENUMERATEDVALUE('Enum',$,(IFCLABEL('A'),IFCLABEL('B')),$);\n"
    "#18=IFCPROPERTYLISTVALUE('List',$,(IFCLABEL('A'),IFCINTEGER(3)),$);\n"
    "#19=IFCPROPERTYBOUNDEDVALUE('Bound',$,IFCREAL(5.),IFCREAL(1.),$,$);\n"
    "#20=IFCPROPERTYTABLEVALUE('Table',$,(IFCLENGTHMEASURE(2.)),(IFCLABEL('X')),$,#5,$,$);\n"
    "#21=IFCCOMPLEXPROPERTY('Complex',$,'U',(#12));\n"
    "#22=IFCPROPERTYREFERENCEVALUE('Ref',$,$,$);\n"
    "#30=IFCRELDEFINESBYPROPERTIES('05rScmOVzMoQXOfbYdtLYj',$,$,$,(#10),#11);\n"
    "#31=IFCWALLTYPE('3Agm079vPIYBL4JExVrhD5',$,'T',$,$,(#33),$,$,$,.SHEAR.);\n"
    "#32=IFCRELDEFINESBYTYPE('0BbkGoC6vPvRW13UT7D8zH',$,$,$,(#10),#31);\n"
    "#33=IFCPROPERTYSET('16MocU_IDOF8_x3Iqllz0d',$,'Own',$,(#34,#35));\n"
    "#34=IFCPROPERTYSINGLEVALUE('Text',$,IFCLABEL('F 90'),$);\n"
    "#35=IFCPROPERTYSINGLEVALUE('OfType',$,IFCBOOLEAN(.T.),$);\n"
    "#40=IFCELEMENTQUANTITY('2nJrDaLQfJ1QPhdJR0o97J',$,'Qto',$,$,(#41,#42));\n"
    "#41=IFCQUANTITYLENGTH('Length',$,$,5000.,$);\n#42=IFCQUANTITYCOUNT('Count',$,$,7.,$);\n"
    "#43=IFCRELDEFINESBYPROPERTIES('1xdwj8qGXK4hzoNbvMdXJW',$,$,$,(#10),#40);\n"
    "#50=IFCMATERIAL('M',$,$);\n"
    "#51=IFCMATERIALPROPERTIES('Pset_Material',$,(#52),#50);\n"
    "#52=IFCPROPERTYSINGLEVALUE('Density',$,IFCREAL(2400.),$);\n";

TEST(IdsCheck, PropertiesAreOfTheInstanceOrItsType) {
    const Model model = modelOf("IFC4", g_pPropertyModel);
    const auto label = [](const char* pName, const std::string& sValue = {}, const std::string& sMore = {}) {
        return property("Own", pName, sValue, "dataType='IFCLABEL' " + sMore);
    };
    vHold(model, entity("IFCWALL"),
          {{"there", property("Own", "Text"), "passed 1/1"},
           {"no such set", property("Other", "Text"), "failed 0/1: #10 missing, there is no property set Other"},
           {"no such property", property("Own", "Txt"), "failed 0/1: #10 missing, Own has no property Txt"},
           {"without a value", property("Own", "Null"), "failed 0/1: #10 missing, Own.Null has no value"},
           {"an empty text is none", property("Own", "Empty"), "failed 0/1: #10 missing, Own.Empty has no value"},
           {"its value", label("Text", simple("value", "F 30")), "passed 1/1"},
           {"another value, which hides that of the type", label("Text", simple("value", "F 90")),
            "failed 0/1: #10 value, Own.Text is 'F 30'"},
           {"another type", property("Own", "Text", "", "dataType='IFCTEXT'"),
            "failed 0/1: #10 data-type, Own.Text is of type IfcLabel"},
           {"of the type", property("Own", "OfType", simple("value", "true"), "dataType='IFCBOOLEAN'"), "passed 1/1"},
           {"in metres", property("Own", "Width", simple("value", "0.24"), "dataType='IFCPOSITIVELENGTHMEASURE'"),
            "passed 1/1"},
           {"in its own unit", property("Own", "Height", simple("value", "2.4"), "dataType='IFCLENGTHMEASURE'"),
            "passed 1/1"},
           {"told in both", property("Own", "Height", simple("value", "240"), "dataType='IFCLENGTHMEASURE'"),
            "failed 0/1: #10 value, Own.Height is 240 cm (2.4 m)"},
           {"one of enumerated values", label("Enum", simple("value", "B")), "passed 1/1"},
           {"none of them", label("Enum", simple("value", "C")), "failed 0/1: #10 value, Own.Enum is 'A', 'B'"},
           {"one of a list, by its type", property("Own", "List", simple("value", "3"), "dataType='IFCINTEGER'"),
            "passed 1/1"},
           {"a bound", property("Own", "Bound", simple("value", "5"), "dataType='IFCREAL'"), "passed 1/1"},
           {"and not between", property("Own", "Bound", simple("value", "3"), "dataType='IFCREAL'"),
            "failed 0/1: #10 value, Own.Bound is 1, 5"},
           {"of a table the arguments",
            property("Own", "Table", simple("value", "0.02"), "dataType='IFCLENGTHMEASURE'"), "passed 1/1"},
           {"and the values", label("Table", simple("value", "X")), "passed 1/1"},
           {"a complex one", property("Own", "Complex"),
            "failed 0/1: #10 missing, Own.Complex is an IfcComplexProperty, which has no value"},
           {"a reference", property("Own", "Ref"),
            "failed 0/1: #10 missing, Own.Ref is an IfcPropertyReferenceValue, which has no value"},
           {"a quantity", property("Qto", "Length", simple("value", "5"), "dataType='IFCLENGTHMEASURE'"), "passed 1/1"},
           {"a count", property("Qto", "Count", simple("value", "7"), "dataType='IFCCOUNTMEASURE'"), "passed 1/1"},
           {"an optional one that is missing", label("Txt", simple("value", "x"), "cardinality='optional'"),
            "passed 1/1"},
           {"an optional one of another type", label("Width", "", "cardinality='optional'"),
            "failed 0/1: #10 data-type, Own.Width is of type IfcPositiveLengthMeasure"},
           {"an optional one without a value", label("Null", "", "cardinality='optional'"),
            "failed 0/1: #10 missing, Own.Null has no value"},
           {"a prohibited one", property("Own", "Null", "", "cardinality='prohibited'"),
            "failed 0/1: #10 prohibited, Own.Null has no value"},
           {"a prohibited one that is missing", property("Own", "Txt", "", "cardinality='prohibited'"), "passed 1/1"},
           {"a prohibited value", label("Text", simple("value", "F 30"), "cardinality='prohibited'"),
            "failed 0/1: #10 prohibited, Own.Text is 'F 30'"},
           {"all properties that are meant",
            "<property dataType='IFCLABEL'>" + simple("propertySet", "Own") +
                restricted("baseName", "string", "enumeration=Text enumeration=Enum") + simple("value", "A") +
                "</property>",
            "failed 0/1: #10 value, Own.Text is 'F 30'"},
           {"in all sets that are meant",
            "<property>" + restricted("propertySet", "string", "pattern=O.* pattern=Q.*") + simple("baseName", "Text") +
                "</property>",
            "failed 0/1: #10 missing, Qto has no property Text"}});
    vHold(model, entity("IFCWALLTYPE"), {{"a type has its own", label("Text", simple("value", "F 90")), "passed 1/1"}});
    vHold(model, entity("IFCMATERIAL"),
          {{"a material has properties",
            property("Pset_Material", "Density", simple("value", "2400"), "dataType='IFCREAL'"), "passed 1/1"}});
    const auto selected = [&](const std::string& sFacet) {
        return sChecked(model, SpecificationText{.applicability = sFacet}.text());
    };
    EXPECT_EQ(selected(label("Text", simple("value", "F 90"))), "passed 1/1");   // the type
    EXPECT_EQ(selected(label("Text")), "passed 2/2");
    EXPECT_EQ(selected(property("Pset_Material", "Density")), "passed 1/1");
    EXPECT_EQ(selected("<property>" + restricted("propertySet", "string", "pattern=.*") + simple("baseName", "Length") +
                       "</property>"),
              "passed 1/1");
}

TEST(IdsCheck, MaterialsHaveNamesAndCategories) {
    const Model model = modelOf(
        "IFC4", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,$,$,$,$,$,$,$);\n"
                "#2=IFCWALL('0eA6m4fELI9QBIhP3wiLAp',$,$,$,$,$,$,$,$);\n"
                "#3=IFCWALL('05rScmOVzMoQXOfbYdtLYj',$,$,$,$,$,$,$,$);\n"
                "#4=IFCWALLTYPE('3Agm079vPIYBL4JExVrhD5',$,'T',$,$,$,$,$,$,.SHEAR.);\n"
                "#5=IFCRELDEFINESBYTYPE('0BbkGoC6vPvRW13UT7D8zH',$,$,$,(#1,#2),#4);\n"
                "#6=IFCMATERIAL('C30',$,'concrete');\n#7=IFCMATERIAL('Wool',$,$);\n"
                "#8=IFCMATERIALLAYER(#6,200.,$,'Core',$,'LoadBearing',$);\n#9=IFCMATERIALLAYER(#7,50.,$,$,$,$,$);\n"
                "#10=IFCMATERIALLAYERSET((#8,#9),'Outer',$);\n"
                "#11=IFCMATERIALLAYERSETUSAGE(#10,.AXIS2.,.POSITIVE.,0.,$);\n"
                "#12=IFCRELASSOCIATESMATERIAL('16MocU_IDOF8_x3Iqllz0d',$,$,$,(#1),#11);\n"
                "#13=IFCRELASSOCIATESMATERIAL('2nJrDaLQfJ1QPhdJR0o97J',$,$,$,(#4),#7);\n");
    const auto made = [](const char* pName, const char* pAttributes = "") {
        return "<material " + std::string(pAttributes) + ">" + simple("value", pName) + "</material>";
    };
    const char* const sOnlyOne = "failed 1/3: #2 value, its material is 'Wool'; #3 missing, it has no material";
    vHold(model, entity("IFCWALL"),
          {{"any", "<material/>", "failed 2/3: #3 missing, it has no material"},
           {"of a layer, or of the type", made("Wool"), "failed 2/3: #3 missing, it has no material"},
           {"its category", made("concrete"), sOnlyOne},
           {"the name of a layer", made("Core"), sOnlyOne},
           {"the category of a layer", made("LoadBearing"), sOnlyOne},
           {"the name of the set", made("Outer"), sOnlyOne},
           {"optional", made("C30", "cardinality='optional'"), "failed 2/3: #2 value, its material is 'Wool'"},
           {"prohibited", "<material cardinality='prohibited'/>",
            "failed 1/3: #1 prohibited, its material is 'Outer', 'Core', 'LoadBearing', 'C30', 'concrete', 'Wool'; #2 "
            "prohibited, its material is 'Wool'"},
           {"a prohibited one", made("C30", "cardinality='prohibited'"),
            "failed 2/3: #1 prohibited, its material is 'Outer', 'Core', 'LoadBearing', 'C30', 'concrete', 'Wool'"}});
    EXPECT_EQ(sChecked(model, SpecificationText{.applicability = made("Wool")}.text()), "passed 3/3");
}

TEST(IdsCheck, ClassificationsAreInSystems) {
    const Model model = modelOf(
        "IFC4", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,$,$,$,$,$,$,$);\n"
                "#2=IFCWALL('0eA6m4fELI9QBIhP3wiLAp',$,$,$,$,$,$,$,$);\n"
                "#3=IFCWALLTYPE('3Agm079vPIYBL4JExVrhD5',$,'T',$,$,$,$,$,$,.SHEAR.);\n"
                "#4=IFCRELDEFINESBYTYPE('0BbkGoC6vPvRW13UT7D8zH',$,$,$,(#1),#3);\n"
                "#5=IFCCLASSIFICATION($,$,$,'A',$,$,$);\n#6=IFCCLASSIFICATION($,$,$,'B',$,$,$);\n"
                "#7=IFCCLASSIFICATIONREFERENCE($,'1',$,#5,$,$);\n#8=IFCCLASSIFICATIONREFERENCE($,'1.1',$,#7,$,$);\n"
                "#9=IFCCLASSIFICATIONREFERENCE($,'2',$,#5,$,$);\n#10=IFCCLASSIFICATIONREFERENCE($,'3',$,#6,$,$);\n"
                "#11=IFCRELASSOCIATESCLASSIFICATION('16MocU_IDOF8_x3Iqllz0d',$,$,$,(#1),#8);\n"
                "#12=IFCRELASSOCIATESCLASSIFICATION('2nJrDaLQfJ1QPhdJR0o97J',$,$,$,(#3),#9);\n"
                "#13=IFCRELASSOCIATESCLASSIFICATION('1xdwj8qGXK4hzoNbvMdXJW',$,$,$,(#3),#10);\n"
                "#14=IFCMATERIAL('M',$,$);\n#15=IFCEXTERNALREFERENCERELATIONSHIP($,$,#7,(#14));\n");
    const auto in = [](const char* pSystem, const char* pCode = "", const char* pAttributes = "") {
        return "<classification " + std::string(pAttributes) + ">" + (*pCode ? simple("value", pCode) : std::string()) +
               simple("system", pSystem) + "</classification>";
    };
    const std::string sNone = "#2 missing, it has no classification";
    vHold(model, entity("IFCWALL"),
          {{"in a system", in("A"), "failed 1/2: #2 missing, it has no classification"},
           {"in one of the type's", in("B", "3"), "failed 1/2: #2 missing, it has no classification"},
           {"by its code", in("A", "1.1"), "failed 1/2: #2 missing, it has no classification"},
           {"by a code above", in("A", "1"), "failed 1/2: #2 missing, it has no classification"},
           {"what the type says in the same system is hidden", in("A", "2"),
            "failed 0/2: #1 value, it is classified as '1.1' in A, '3' in B; #2 missing, it has no classification"},
           {"in another system", in("C"),
            "failed 0/2: #1 system, it is classified as '1.1' in A, '3' in B; #2 missing, it has no classification"},
           {"optional in another system", in("C", "1", "cardinality='optional'"), "passed 2/2"},
           {"optional, with another code", in("A", "2", "cardinality='optional'"),
            "failed 1/2: #1 value, it is classified as '1.1' in A, '3' in B"},
           {"prohibited", in("B", "", "cardinality='prohibited'"),
            "failed 1/2: #1 prohibited, it is classified as '1.1' in A, '3' in B"}});
    vHold(model, entity("IFCMATERIAL"), {{"a material, by its reference", in("A", "1"), "passed 1/1"}});
}

TEST(IdsCheck, PartsAreOfWholesByAnyChain) {
    const Model model =
        modelOf("IFC4", "#1=IFCBUILDING('1hqIFTRjfV6AWq_bMtnZwI',$,'B',$,$,$,$,$,$,$,$,$);\n"
                        "#2=IFCBUILDINGSTOREY('0eA6m4fELI9QBIhP3wiLAp',$,'S',$,$,$,$,$,$,$);\n"
                        "#3=IFCRELAGGREGATES('05rScmOVzMoQXOfbYdtLYj',$,$,$,#1,(#2));\n"
                        "#4=IFCWALL('3Agm079vPIYBL4JExVrhD5',$,$,$,$,$,$,$,.SHEAR.);\n"
                        "#5=IFCRELCONTAINEDINSPATIALSTRUCTURE('0BbkGoC6vPvRW13UT7D8zH',$,$,$,(#4),#2);\n"
                        "#6=IFCOPENINGELEMENT('16MocU_IDOF8_x3Iqllz0d',$,$,$,$,$,$,$,.OPENING.);\n"
                        "#7=IFCRELVOIDSELEMENT('2nJrDaLQfJ1QPhdJR0o97J',$,$,$,#4,#6);\n"
                        "#8=IFCDOOR('1xdwj8qGXK4hzoNbvMdXJW',$,$,$,$,$,$,$,$,$,.DOOR.,$,$);\n"
                        "#9=IFCRELFILLSELEMENT('0WTUhjMwvT39YBFH2pryoM',$,$,$,#6,#8);\n"
                        "#10=IFCSYSTEM('1n81bO_6nGjgypJwWUVavJ',$,'Y',$,$);\n"
                        "#11=IFCRELASSIGNSTOGROUP('2jG7cjHsrIUfgKVktNgbzi',$,$,$,(#8),$,#10);\n");
    const auto part = [](const char* pClass, const char* pAttributes = "", const std::string& sRest = {}) {
        return "<partOf " + std::string(pAttributes) + ">" + entity(pClass, sRest) + "</partOf>";
    };
    vHold(model, entity("IFCDOOR"),
          {{"through the opening", part("IFCWALL", "relation='IFCRELVOIDSELEMENT IFCRELFILLSELEMENT'"), "passed 1/1"},
           {"and on to the building", part("IFCBUILDING"), "passed 1/1"},
           {"of a kind of wall", part("IFCWALL", "", simple("predefinedType", "SHEAR")), "passed 1/1"},
           {"of another kind", part("IFCWALL", "", simple("predefinedType", "SOLIDWALL")),
            "failed 0/1: #8 whole, it is part of IfcSystem #10, IfcOpeningElement #6, IfcWall #4, IfcBuildingStorey "
            "#2, IfcBuilding #1"},
           {"by one relation alone", part("IFCBUILDINGSTOREY", "relation='IFCRELCONTAINEDINSPATIALSTRUCTURE'"),
            "failed 0/1: #8 missing, it is part of nothing"},
           {"in a group", part("IFCSYSTEM", "relation='IFCRELASSIGNSTOGROUP'"), "passed 1/1"},
           {"subclasses are not meant", part("IFCGROUP"),
            "failed 0/1: #8 whole, it is part of IfcSystem #10, IfcOpeningElement #6, IfcWall #4, IfcBuildingStorey "
            "#2, IfcBuilding #1"},
           {"prohibited", part("IFCWALL", "cardinality='prohibited'"),
            "failed 0/1: #8 prohibited, it is part of IfcSystem #10, IfcOpeningElement #6, IfcWall #4, "
            "IfcBuildingStorey #2, IfcBuilding #1"}});
    EXPECT_EQ(sChecked(model, SpecificationText{.applicability = part("IFCBUILDING")}.text()), "passed 4/4");
}

TEST(IdsCheck, FaultyModelsAreTakenAsTheyAre) {
    const Model model = modelOf(
        "IFC4", "#1=IFCWALL('1hqIFTRjfV6AWq_bMtnZwI',$,5,$,$,$,$,$,.NONE.);\n"
                "#2=IFCCLASSIFICATIONREFERENCE($,'1',$,#3,$,$);\n#3=IFCCLASSIFICATIONREFERENCE($,'2',$,#2,$,$);\n"
                "#4=IFCRELASSOCIATESCLASSIFICATION('0eA6m4fELI9QBIhP3wiLAp',$,$,$,(#1),#2);\n"
                "#5=IFCRELAGGREGATES('05rScmOVzMoQXOfbYdtLYj',$,$,$,#1,(#1));\n"
                "#6=IFCRELASSOCIATESMATERIAL('3Agm079vPIYBL4JExVrhD5',$,$,$,(#1),#99);\n"
                "#7=IFCPROPERTYSET('0BbkGoC6vPvRW13UT7D8zH',$,$,$,(#8));\n#8=IFCPROPERTYSINGLEVALUE($,$,$,$);\n"
                "#9=IFCRELDEFINESBYPROPERTIES('16MocU_IDOF8_x3Iqllz0d',$,$,$,(#1),#7);\n");
    vHold(model, entity("IFCWALL"),
          {{"a name that could not be read", "<attribute>" + simple("name", "Name") + "</attribute>",
            "failed 0/1: #1 missing, Name has no value"},
           {"references in a circle", "<classification>" + simple("system", "A") + "</classification>",
            "failed 0/1: #1 system, it is classified as '1' in no system"},
           {"part of itself", "<partOf>" + entity("IFCWALL") + "</partOf>", "passed 1/1"},
           {"a material that is not there", "<material/>", "failed 0/1: #1 missing, it has no material"},
           {"a set without a name",
            "<property>" + restricted("propertySet", "string", "pattern=.*") + simple("baseName", "x") + "</property>",
            "failed 0/1: #1 missing, there is no property set a match of .*"}});
}

}   // namespace
}   // namespace oxa
