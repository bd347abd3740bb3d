// SPDX-License-Identifier: Apache-2.0
// What is wrong with files of requirements: each kind of fault, where it is, and that all of them are told.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "IdsText.h"
#include "Model/Error.h"

namespace oxa {
namespace {

using ids::Requirements;
using namespace test;

// A specification whose only requirement is this one.
std::string requiring(const std::string& sRequirement) {
    return SpecificationText{.requirements = sRequirement}.text();
}

TEST(IdsFault, XmlThatIsNoneIsOneFault) {
    const struct {
        const char* sRule;
        const char* sText;
        const char* sFaults;
    } rows[] = {
        {"nothing", "", "0:0 Ids_Xml ''"},
        {"no XML", "ISO-10303-21;", "0:0 Ids_Xml ''"},
        {"cut in the middle", "<ids>\n <info>\n", "2:8 Ids_Xml ''"},
        {"another document", "<a/>", "1:1 Ids_Root 'a'"},
        {"another namespace", "<ids xmlns='urn:x'><info><title/></info><specifications/></ids>",
         "1:1 Ids_Namespace 'urn:x' | 1:41 Ids_MissingElement ''"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const Requirements read = Requirements::fromBuffer(row.sText);
        EXPECT_FALSE(read.valid());
        EXPECT_EQ(sFaults(read), row.sFaults);
    }
}

TEST(IdsFault, TheSchemaOfFilesIsKept) {
    const std::string sWall = entity("IFCWALL");
    const struct {
        const char* sRule;
        std::string sSpecification;
        const char* sFaults;
    } rows[] = {
        {"a good one", requiring("<material/>"), ""},
        {"prefixes are free",
         "<i:specification xmlns:i='http://standards.buildingsmart.org/IDS' name='S' ifcVersion='IFC4'><applicability "
         "maxOccurs='unbounded'>" +
             sWall +
             "</applicability><i:requirements><material/></i:requirements>"
             "</i:specification>",
         ""},
        {"an element that there is none of", requiring("<matrial/>"), "6:15 Ids_UnknownElement 'matrial'"},
        {"a prefix that nobody declares", requiring("<x:material/>"), "6:15 Ids_UnknownElement 'x:material'"},
        {"text between elements", requiring("so <material/>"), "6:1 Ids_TextBetween 'so '"},
        {"an attribute that there is none of", requiring("<material size='3'/>"),
         "6:15 Ids_UnknownXmlAttribute 'size'"},
        {"a missing attribute",
         "<specification ifcVersion='IFC4'><applicability maxOccurs='unbounded'>" + sWall +
             "</applicability><requirements><material/></requirements></specification>",
         "4:1 Ids_MissingXmlAttribute ''"},
        {"a wrong attribute", requiring("<material cardinality='often'/>"), "6:15 Ids_XmlAttribute 'often'"},
        {"a data type in lower case", requiring(property("A", "B", "", "dataType='IfcLabel'")),
         "6:15 Ids_XmlAttribute 'IfcLabel' | 6:15 Ids_UnknownDataType 'IfcLabel'"},
        {"a relation that there is none of", requiring("<partOf relation='IFCRELX'>" + sWall + "</partOf>"),
         "6:15 Ids_XmlAttribute 'IFCRELX'"},
        {"partOf is not optional", requiring("<partOf cardinality='optional'>" + sWall + "</partOf>"),
         "6:15 Ids_XmlAttribute 'optional' | 6:15 Ids_NeverFails (note) ''"},
        {"a schema that there is none of", SpecificationText{.requirements = "<material/>", .schemas = "IFC5"}.text(),
         "4:1 Ids_XmlAttribute 'IFC5'"},
        {"a missing element", requiring("<classification/>"), "6:15 Ids_MissingElement ''"},
        {"an element too many", SpecificationText{.applicability = sWall + sWall, .requirements = "<material/>"}.text(),
         "5:102 Ids_TooMany ''"},
        {"the order of elements",
         SpecificationText{.applicability = "<material/>" + sWall, .requirements = "<material/>"}.text(),
         "5:49 Ids_ElementOrder ''"},
        {"in requirements the order is free", requiring("<material/>" + sWall), ""},
        {"neither a value nor a restriction", requiring("<material><value/></material>"), "6:25 Ids_MissingElement ''"},
        {"both",
         requiring("<material><value><simpleValue>a</simpleValue><xs:restriction base='xs:string'/></value>"
                   "</material>"),
         "6:60 Ids_TooMany ''"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const Requirements read = Requirements::fromBuffer(idsFile(row.sSpecification));
        EXPECT_EQ(sFaults(read), row.sFaults);
    }
}

TEST(IdsFault, TheInfoHasItsForms) {
    const struct {
        const char* sInfo;
        const char* sFaults;
    } rows[] = {
        {"<title>a</title><author>a@b.de</author><date>2024-12-31</date>", ""},
        {"<title>a</title><author>a at b</author><date>31.12.2024</date>",
         "1:76 Ids_Text 'a at b' | 1:99 Ids_Text '31.12.2024'"},
        {"<title>a</title><date>2024-13-01</date>", "1:76 Ids_Text '2024-13-01'"},
        {"", "1:54 Ids_MissingElement ''"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sInfo);
        const std::string sText = "<ids xmlns='http://standards.buildingsmart.org/IDS'> <info>" +
                                  std::string(row.sInfo) + "</info>\n<specifications>" + requiring("<material/>") +
                                  "</specifications></ids>";
        EXPECT_EQ(sFaults(Requirements::fromBuffer(sText)), row.sFaults);
    }
}

TEST(IdsFault, NamesAreThoseOfTheSchemas) {
    const auto classed = [](const char* pName, const char* pSchemas, const std::string& sRest = {}) {
        return SpecificationText{
            .applicability = entity(pName, sRest), .requirements = "<material/>", .schemas = pSchemas}
            .text();
    };
    const auto attributed = [](const char* pClass, const char* pAttribute, const std::string& sValue = {}) {
        return SpecificationText{.applicability = entity(pClass),
                                 .requirements = "<attribute>" + simple("name", pAttribute) + sValue + "</attribute>"}
            .text();
    };
    const auto typed = [](const char* pType, const char* pSchemas) {
        return SpecificationText{.requirements = property("A", "B", "", "dataType='" + std::string(pType) + "'"),
                                 .schemas = pSchemas}
            .text();
    };
    const struct {
        const char* sRule;
        std::string sSpecification;
        const char* sFaults;
    } rows[] = {
        {"a class", classed("IFCWALL", "IFC2X3 IFC4 IFC4X3_ADD2"), ""},
        {"an unknown class", classed("IFCWAL", "IFC4"), "5:46 Ids_UnknownClass 'IFCWAL'"},
        {"unknown in one of two schemas", classed("IFCCHIMNEY", "IFC2X3 IFC4"), "5:46 Ids_UnknownClass 'IFCCHIMNEY'"},
        {"in upper case", classed("IfcWall", "IFC4"), "5:46 Ids_UnknownClass 'IfcWall'"},
        {"a type is none", classed("IFCLABEL", "IFC4"), "5:46 Ids_UnknownClass 'IFCLABEL'"},
        {"told by the type of an element in IFC2X3", classed("IFCAIRTERMINAL", "IFC2X3"), ""},
        {"no instance is of it", classed("IFCELEMENT", "IFC4"), "5:46 Ids_AbstractClass (note) 'IFCELEMENT'"},
        {"one of several is enough in each schema",
         SpecificationText{.applicability = "<entity>" +
                                            restricted("name", "string", "enumeration=IFCWALL enumeration=IFCCHIMNEY") +
                                            "</entity>",
                           .requirements = "<material/>",
                           .schemas = "IFC2X3 IFC4"}
             .text(),
         ""},
        {"each of several is one somewhere",
         SpecificationText{.applicability = "<entity>" +
                                            restricted("name", "string", "enumeration=IFCWALL enumeration=IFCX") +
                                            "</entity>",
                           .requirements = "<material/>"}
             .text(),
         "5:46 Ids_UnknownClass 'IFCX'"},
        {"a pattern of no class",
         SpecificationText{.applicability = "<entity>" + restricted("name", "string", "pattern=WALL.*") + "</entity>",
                           .requirements = "<material/>"}
             .text(),
         "5:46 Ids_UnknownClass 'a match of WALL.*'"},
        {"a predefined type", classed("IFCWALL", "IFC4", simple("predefinedType", "SHEAR")), ""},
        {"a user's own", classed("IFCWALL", "IFC4", simple("predefinedType", "MINE")), ""},
        {"and no enumerator", classed("IFCALIGNMENTCANTSEGMENT", "IFC4X3_ADD2", simple("predefinedType", "X")),
         "5:109 Ids_UnknownPredefinedType 'X'"},
        {"hardly a user's own", classed("IFCWALL", "IFC4", simple("predefinedType", "shear")),
         "5:93 Ids_PredefinedTypeCase (note) 'shear'"},
        {"of the type in IFC2X3", classed("IFCWALL", "IFC2X3", simple("predefinedType", "SHEAR")), ""},
        {"where there is none", classed("IFCGRID", "IFC2X3", simple("predefinedType", "X")),
         "5:93 Ids_NoPredefinedType 'X'"},
        {"where there is no user's own",
         classed("IFCPERMEABLECOVERINGPROPERTIES", "IFC4", simple("predefinedType", "X")),
         "5:116 Ids_NoPredefinedType 'X'"},
        {"an attribute", attributed("IFCWALL", "Name"), ""},
        {"an unknown attribute", attributed("IFCWALL", "Nam"), "6:26 Ids_UnknownAttribute 'Nam'"},
        {"in its case of letters", attributed("IFCWALL", "name"), "6:26 Ids_UnknownAttribute 'name'"},
        {"an inverse one", attributed("IFCWALL", "ContainedInStructure"),
         "6:26 Ids_UnknownAttribute 'ContainedInStructure'"},
        {"a derived one", attributed("IFCSIUNIT", "Dimensions"), "6:26 Ids_UnknownAttribute 'Dimensions'"},
        {"a list has no value", attributed("IFCCARTESIANPOINT", "Coordinates", simple("value", "1")),
         "6:77 Ids_NoValue '1'"},
        {"nor has a select", attributed("IFCSURFACESTYLERENDERING", "DiffuseColour", simple("value", "1")),
         "6:79 Ids_NoValue '1'"},
        {"nor has an instance", attributed("IFCWALL", "ObjectPlacement", simple("value", "1")), "6:81 Ids_NoValue '1'"},
        {"a truth value", attributed("IFCTASK", "IsMilestone", simple("value", "TRUE")), "6:77 Ids_ValueForm 'TRUE'"},
        {"a whole number", attributed("IFCTASK", "Priority", simple("value", "1.0")), "6:74 Ids_ValueForm '1.0'"},
        {"a number", attributed("IFCDOOR", "OverallWidth", simple("value", "1,2")), "6:78 Ids_ValueForm '1,2'"},
        {"in decimal digits", attributed("IFCDOOR", "OverallWidth", simple("value", "0x10")),
         "6:78 Ids_ValueForm '0x10'"},
        {"a date", attributed("IFCCLASSIFICATION", "EditionDate", simple("value", "1.2.24")),
         "6:77 Ids_ValueForm '1.2.24'"},
        {"a data type", typed("IFCLABEL", "IFC2X3 IFC4 IFC4X3_ADD2"), ""},
        {"of another schema", typed("IFCDATE", "IFC2X3 IFC4"), "6:15 Ids_UnknownDataType 'IFCDATE'"},
        {"an enumeration is one", typed("IFCDOORPANELOPERATIONENUM", "IFC4"), ""},
        {"a select is none", typed("IFCVALUE", "IFC4"), "6:15 Ids_UnknownDataType 'IFCVALUE'"},
        {"a list is none", typed("IFCCOMPOUNDPLANEANGLEMEASURE", "IFC4"),
         "6:15 Ids_UnknownDataType 'IFCCOMPOUNDPLANEANGLEMEASURE'"},
        {"a class is none", typed("IFCWALL", "IFC4"), "6:15 Ids_UnknownDataType 'IFCWALL'"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sFaults(Requirements::fromBuffer(idsFile(row.sSpecification))), row.sFaults);
    }
}

TEST(IdsFault, RestrictionsFitTheirBase) {
    const auto labelled = [](const std::string& sValue, const char* pType = "IFCLABEL") {
        return requiring(property("A", "B", sValue, "dataType='" + std::string(pType) + "'"));
    };
    const auto measured = [&](const char* pBase, const char* pFacets) {
        return labelled(restricted("value", pBase, pFacets), "IFCREAL");
    };
    const struct {
        const char* sRule;
        std::string sSpecification;
        const char* sKeys;
    } rows[] = {
        {"a range", measured("double", "minInclusive=1 maxExclusive=2"), ""},
        {"a base that there is none of", measured("float", "minInclusive=1"), "Ids_RestrictionBase"},
        {"another base than the type's", measured("string", "pattern=1"), "Ids_RestrictionBase"},
        {"a number for a text", labelled(restricted("value", "double", "enumeration=1")), "Ids_RestrictionBase"},
        {"a bound of another form", measured("double", "minInclusive=one"), "Ids_ValueForm"},
        {"an item of another form", measured("double", "enumeration=1 enumeration=1,5"), "Ids_ValueForm"},
        {"texts have no bounds", labelled(restricted("value", "string", "minInclusive=A")), "Ids_RestrictionFacet"},
        {"numbers have no length", measured("double", "length=2"), "Ids_RestrictionFacet"},
        {"two lower bounds", measured("double", "minInclusive=1 minExclusive=1"), "Ids_RestrictionFacet"},
        {"one bound twice", measured("double", "minInclusive=1 minInclusive=2"), "Ids_TooMany"},
        {"bounds the wrong way round", measured("double", "minInclusive=2 maxInclusive=1"), "Ids_RestrictionFacet"},
        {"hardly a range", measured("double", "minExclusive=1 maxExclusive=1.000001"), "Ids_NarrowRange"},
        {"lengths the wrong way round", labelled(restricted("value", "string", "minLength=3 maxLength=2")),
         "Ids_RestrictionFacet"},
        {"a length that is none", labelled(restricted("value", "string", "length=-1")), "Ids_XmlAttribute"},
        {"one length or two", labelled(restricted("value", "string", "length=1 maxLength=2")), "Ids_RestrictionFacet"},
        {"what requirements do not have", measured("double", "totalDigits=3"),
         "Ids_NoRestriction | Ids_RestrictionFacet"},
        {"nothing restricted", labelled(restricted("value", "string", "")), "Ids_NoRestriction"},
        {"a pattern that is none", labelled(restricted("value", "string", "pattern=(a")), "Ids_Pattern"},
        {"what hardly was meant", labelled(restricted("value", "string", "pattern=^a$")), "Ids_PatternNote"},
        {"an empty system", requiring("<classification>" + simple("system", "") + "</classification>"), "Ids_Empty"},
        {"a set by a number",
         requiring("<property>" + restricted("propertySet", "double", "enumeration=1") + simple("baseName", "B") +
                   "</property>"),
         "Ids_RestrictionBase"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        std::string sKeys;
        const Requirements read = Requirements::fromBuffer(idsFile(row.sSpecification));
        for (const ids::Fault& fault : read.faults()) sKeys += (sKeys.empty() ? "" : " | ") + fault.key;
        EXPECT_EQ(sKeys, row.sKeys);
    }
}

TEST(IdsFault, CardinalitiesMeanSomething) {
    const std::string sName = "<attribute>" + simple("name", "Name") + "</attribute>";
    const struct {
        const char* sOccurs;
        std::string sRequirements;
        const char* sKeys;
        ids::Cardinality cardinality;
    } rows[] = {
        {"minOccurs='1' maxOccurs='unbounded'", sName, "", ids::Cardinality::Required},
        {"maxOccurs='unbounded'", sName, "", ids::Cardinality::Required},
        {"minOccurs='0' maxOccurs='unbounded'", sName, "", ids::Cardinality::Optional},
        {"minOccurs='00' maxOccurs='0'", "", "", ids::Cardinality::Prohibited},
        {"", sName, "Ids_Occurs", ids::Cardinality::Required},
        {"minOccurs='2' maxOccurs='unbounded'", sName, "Ids_Occurs", ids::Cardinality::Required},
        {"minOccurs='0' maxOccurs='1'", sName, "Ids_Occurs", ids::Cardinality::Required},
        {"minOccurs='-1' maxOccurs='unbounded'", sName, "Ids_XmlAttribute | Ids_Occurs", ids::Cardinality::Required},
        {"minOccurs='0' maxOccurs='0'", sName, "Ids_ProhibitedRequirements", ids::Cardinality::Prohibited},
        {"minOccurs='0' maxOccurs='unbounded'", "", "Ids_NeverFails", ids::Cardinality::Optional},
        {"maxOccurs='unbounded'", "<attribute cardinality='optional'>" + simple("name", "Name") + "</attribute>",
         "Ids_NeverFails", ids::Cardinality::Required},
        {"maxOccurs='unbounded'", property("A", "B", simple("value", "1")), "Ids_NoDataType",
         ids::Cardinality::Required},
        {"maxOccurs='unbounded'", property("A", "B", "", "dataType='IFCLABEL' cardinality='prohibited'"),
         "Ids_ProhibitedDataType", ids::Cardinality::Required},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.sOccurs) + row.sKeys);
        const Requirements read = Requirements::fromBuffer(
            idsFile(SpecificationText{.requirements = row.sRequirements, .occurs = row.sOccurs}.text()));
        std::string sKeys;
        for (const ids::Fault& fault : read.faults()) sKeys += (sKeys.empty() ? "" : " | ") + fault.key;
        EXPECT_EQ(sKeys, row.sKeys);
        EXPECT_EQ(read.specifications().front().cardinality, row.cardinality);
    }
}

TEST(IdsFault, AllAreToldWithTheirPlaces) {
    const std::string sText = idsFile(requiring("<matrial/>") + requiring("<material/>") +
                                      SpecificationText{.applicability = entity("IFCWAL")}.text());
    const Requirements read = Requirements::fromBuffer(sText);
    ASSERT_EQ(read.faults().size(), 2U);
    EXPECT_FALSE(read.valid());
    EXPECT_EQ(read.faults()[0].path, "/ids/specifications/specification[1]/requirements/matrial");
    EXPECT_EQ(read.faults()[0].message, "requirements has no element matrial; did you mean material?");
    EXPECT_EQ(read.faults()[0].specification, 0U);
    EXPECT_EQ(read.faults()[1].path, "/ids/specifications/specification[3]/applicability/entity/name");
    EXPECT_EQ(read.faults()[1].message.substr(0, 54), "IFCWAL is no class of IFC4; did you mean IFCWALL, IFCW");
    EXPECT_EQ(read.faults()[1].specification, 2U);
    ASSERT_EQ(read.specifications().size(), 3U);
    EXPECT_FALSE(read.specifications()[0].valid);
    EXPECT_TRUE(read.specifications()[1].valid);
    EXPECT_FALSE(read.specifications()[2].valid);
}

TEST(IdsFault, AListTooManyIsNotRead) {
    const std::string sText =
        "<ids xmlns='http://standards.buildingsmart.org/IDS'><info><title/></info><specifications>" +
        requiring("<material/>") + "</specifications><specifications>" + requiring("<material/>") + requiring("<x/>") +
        "</specifications></ids>";
    const Requirements read = Requirements::fromBuffer(sText);
    EXPECT_EQ(sFaults(read), "4:18 Ids_TooMany '' | 9:15 Ids_UnknownElement 'x'");
    EXPECT_EQ(read.faults()[1].specification, std::nullopt);
    EXPECT_EQ(read.specifications().size(), 1U);
    EXPECT_TRUE(read.specifications()[0].valid);
}

TEST(IdsFault, PlacesAreThoseOfUtf8) {
    const std::string sText = idsFile(requiring("<attribute>" + simple("name", "N\xC3\xA4me") + "</attribute><x/>"));
    EXPECT_EQ(sFaults(Requirements::fromBuffer("\xEF\xBB\xBF" + sText)),
              "6:26 Ids_UnknownAttribute 'N\xC3\xA4me' | 6:83 Ids_UnknownElement 'x'");
    std::string sWide = "\xFF\xFE";   // UTF-16
    for (const char c : idsFile(requiring("<x/>"))) sWide += {c, '\0'};
    EXPECT_EQ(sFaults(Requirements::fromBuffer(sWide)), "0:0 Ids_UnknownElement 'x'");
}

TEST(IdsFault, TooMuchIsAFault) {
    const std::string sLarge(Requirements::mostBytes + 1, ' ');
    EXPECT_EQ(sFaults(Requirements::fromBuffer(sLarge)), "0:0 Ids_TooLarge ''");
    std::istringstream stream(sLarge + "more");
    EXPECT_EQ(sFaults(Requirements::open(stream)), "0:0 Ids_TooLarge ''");
    std::string sUnknown;
    for (std::size_t i = 0; i < Requirements::mostFaults + 2; ++i) sUnknown += "<x/>";
    const Requirements wrong = Requirements::fromBuffer(idsFile(requiring(sUnknown)));
    ASSERT_EQ(wrong.faults().size(), Requirements::mostFaults + 1);
    EXPECT_EQ(wrong.faults().back().message, "2 more faults and notes are not told");
    EXPECT_FALSE(wrong.specifications().front().valid);
    std::string sFacets;
    for (std::size_t i = 0; i < Requirements::mostFacets; ++i) sFacets += "<material/>";
    const Requirements many = Requirements::fromBuffer(idsFile(requiring(sFacets)));
    ASSERT_EQ(many.faults().size(), 1U);
    EXPECT_EQ(many.faults().front().key, "Ids_TooLarge");
    EXPECT_EQ(many.specifications().front().requirements.size(), Requirements::mostFacets - 1);
}

TEST(IdsFault, FilesAndStreamsSayTheSame) {
    const std::filesystem::path file = std::filesystem::path(testing::TempDir()) / "IdsFaultTest.ids";
    const std::string sText = idsFile(requiring("<x/>"));
    std::ofstream(file, std::ios::binary) << sText;
    std::istringstream stream(sText);
    EXPECT_EQ(sFaults(Requirements::open(file)), "6:15 Ids_UnknownElement 'x'");
    EXPECT_EQ(sFaults(Requirements::open(stream)), "6:15 Ids_UnknownElement 'x'");
    std::filesystem::remove(file);
    EXPECT_THROW(static_cast<void>(Requirements::open(file)), FileError);
    EXPECT_THROW(static_cast<void>(Requirements::open(std::filesystem::path(testing::TempDir()))), FileError);
}

TEST(IdsRead, AllOfAFileIsThere) {
    const std::string sText =
        "<ids xmlns='http://standards.buildingsmart.org/IDS' xmlns:x='http://www.w3.org/2001/XMLSchema'>\n"
        "<info><title>T &amp; U</title><copyright>C</copyright><version>1.0</version><description>D</description>"
        "<author>a@b.de</author><date>2024-12-31</date><purpose>P</purpose><milestone>M</milestone></info>\n"
        "<specifications><specification name='N' ifcVersion='IFC2X3 IFC4' identifier='I' description='D' "
        "instructions='do'>\n<applicability minOccurs='0' maxOccurs='unbounded'>" +
        entity("IFCWALL", simple("predefinedType", "SHEAR")) +
        "</applicability><requirements description='R'>"
        "<property dataType='IFCREAL' uri='u' cardinality='optional' instructions='how'>" +
        simple("propertySet", "S") + simple("baseName", "B") +
        "<value><x:restriction base='x:double'><x:minInclusive value='2'/><x:maxExclusive value='3'/></x:restriction>"
        "</value></property></requirements></specification></specifications></ids>";
    const Requirements read = Requirements::fromBuffer(sText);
    EXPECT_EQ(sFaults(read), "");
    EXPECT_TRUE(read.valid());
    const ids::Info& info = read.info();
    EXPECT_EQ(info.title + "|" + info.copyright + "|" + info.version + "|" + info.description + "|" + info.author +
                  "|" + info.date + "|" + info.purpose + "|" + info.milestone,
              "T & U|C|1.0|D|a@b.de|2024-12-31|P|M");
    const ids::Specification& one = read.specifications().front();
    EXPECT_EQ(one.name + "|" + one.identifier + "|" + one.description + "|" + one.instructions + "|" +
                  one.requirementsDescription,
              "N|I|D|do|R");
    EXPECT_EQ(one.schemas, (std::vector<std::string>{"IFC2X3", "IFC4"}));
    EXPECT_EQ(one.line, 3U);
    EXPECT_EQ(one.text, "IfcWall of predefined type SHEAR");
    const ids::Facet& facet = one.requirements.front();
    EXPECT_EQ(facet.kind, ids::FacetKind::Property);
    EXPECT_EQ(facet.cardinality, ids::Cardinality::Optional);
    EXPECT_EQ(facet.dataType + "|" + facet.uri + "|" + facet.instructions, "IFCREAL|u|how");
    EXPECT_EQ(facet.value->base, "xs:double");
    EXPECT_EQ(facet.text, "Property S.B of type IfcReal, where it is there, shall be at least 2 and less than 3");
}

TEST(IdsRead, FacetsAreToldInWords) {
    const std::string sAnyWall =
        "<entity>" + restricted("name", "string", "enumeration=IFCWALL enumeration=IFCSLAB") + "</entity>";
    const struct {
        std::string sFacet;
        const char* sRequired;
        const char* sSelecting;
    } rows[] = {
        {sAnyWall, "The class shall be one of IfcWall, IfcSlab", "one of IfcWall, IfcSlab"},
        {"<partOf relation='IFCRELVOIDSELEMENT IFCRELFILLSELEMENT'>" + entity("IFCWALL") + "</partOf>",
         "It shall be part of IfcWall by IfcRelVoidsElement and IfcRelFillsElement",
         "part of IfcWall by IfcRelVoidsElement and IfcRelFillsElement"},
        {"<classification>" + simple("system", "S") + "</classification>", "There shall be a classification in S",
         "classified in S"},
        {"<classification>" + simple("value", "V") + simple("system", "S") + "</classification>",
         "The classification in S shall be V", "classified in S as V"},
        {"<attribute>" + simple("name", "Name") + "</attribute>", "Attribute Name shall have a value",
         "attribute Name has a value"},
        {"<attribute>" + simple("name", "Name") + restricted("value", "string", "pattern=a pattern=b minLength=1") +
             "</attribute>",
         "Attribute Name shall be a match of a or b and at least 1 character long",
         "attribute Name is a match of a or b and at least 1 character long"},
        {property("S", "B"), "Property S.B shall have a value", "property S.B has a value"},
        {"<material/>", "There shall be a material", "a material is there"},
        {"<material>" + simple("value", "M") + "</material>", "A material shall be M", "a material is M"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRequired);
        const ids::Requirements read = Requirements::fromBuffer(
            idsFile(requiring(row.sFacet) +
                    SpecificationText{.applicability = row.sFacet, .requirements = "<material/>"}.text()));
        EXPECT_EQ(sFaults(read), "");
        EXPECT_EQ(read.specifications()[0].requirements.front().text, row.sRequired);
        EXPECT_EQ(read.specifications()[1].text, row.sSelecting);
    }
    const struct {
        std::string sFacet;
        const char* sText;
    } prohibited[] = {
        {"<partOf cardinality='prohibited'>" + entity("IFCWALL") + "</partOf>", "It shall not be part of IfcWall"},
        {"<classification cardinality='prohibited'>" + simple("system", "S") + "</classification>",
         "There shall be no classification in S"},
        {"<attribute cardinality='prohibited'>" + simple("name", "Name") + "</attribute>",
         "Attribute Name shall have no value"},
        {"<attribute cardinality='prohibited'>" + simple("name", "Name") + simple("value", "x") + "</attribute>",
         "Attribute Name shall not be x"},
        {property("S", "B", "", "cardinality='prohibited'"), "Property S.B shall not be there"},
        {"<material cardinality='prohibited'/>", "There shall be no material"},
        {"<material cardinality='prohibited'>" + simple("value", "M") + "</material>", "No material shall be M"},
        {"<material cardinality='optional'>" + simple("value", "M") + "</material>",
         "A material, where there is one, shall be M"},
    };
    for (const auto& row : prohibited)
        EXPECT_EQ(Requirements::fromBuffer(idsFile(requiring(row.sFacet))).specifications()[0].requirements[0].text,
                  row.sText);
}

TEST(IdsRead, RangesAndLengthsAreToldInWords) {
    const struct {
        const char* sFacets;
        const char* sText;
    } rows[] = {
        {"minInclusive=2", "at least 2"},
        {"minExclusive=2", "more than 2"},
        {"maxInclusive=2", "at most 2"},
        {"maxExclusive=2", "less than 2"},
        {"minInclusive=2 maxInclusive=3", "from 2 to 3"},
        {"minInclusive=2 maxExclusive=3", "at least 2 and less than 3"},
        {"minExclusive=2 maxInclusive=3", "more than 2 and at most 3"},
        {"minExclusive=2 maxExclusive=3", "more than 2 and less than 3"},
        {"length=2", "2 characters long"},
        {"minLength=2 maxLength=3", "2 to 3 characters long"},
        {"maxLength=3", "at most 3 characters long"},
    };
    for (const auto& row : rows) {
        const auto read = Requirements::fromBuffer(idsFile(requiring(
            "<material>" +
            restricted("value",
                       std::string_view(row.sFacets).find("ength") == std::string_view::npos ? "double" : "string",
                       row.sFacets) +
            "</material>")));
        EXPECT_EQ(read.specifications()[0].requirements[0].value->text(), row.sText);
    }
}

}   // namespace
}   // namespace oxa
