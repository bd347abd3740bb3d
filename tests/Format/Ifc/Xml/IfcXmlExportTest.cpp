// SPDX-License-Identifier: Apache-2.0
// The frame of a document and the walk over the model.
#include "Format/Ifc/Xml/IfcXmlExport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Format/Ifc/IfcMissingType.h"
#include "XmlModel.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;

constexpr char g_sRootTag[] = "<ifcXML xmlns=\"http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2\" "
                              "xmlns:ifc=\"http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2\" "
                              "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                              "xsi:schemaLocation=\"http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2 "
                              "http://www.buildingsmart-tech.org/ifc/IFC4/Add2/IFC4_ADD2.xsd\" id=\"ifcXML4\"";

TEST(XmlExportHeader, WritesTheFieldsInOrder) {
    FileHeader header;
    header.schema.schemaName = "IFC4";
    header.name.name = "n & m";
    header.name.timeStamp = "2020-01-02T03:04:05";
    header.name.author = {"a", "b"};
    header.name.preprocessorVersion = "p";
    header.name.originatingSystem = "o";
    header.name.authorization = "z";
    header.description.descriptions = {"d", "e f"};
    xml::Export xmlExport;
    ASSERT_TRUE(xmlExport.boExportHeader(header));
    EXPECT_EQ(sSaved(xmlExport), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") + g_sRootTag +
                                     ">\n  <header>\n"
                                     "    <name>n &amp; m</name>\n"
                                     "    <time_stamp>2020-01-02T03:04:05</time_stamp>\n"
                                     "    <author>a b</author>\n"
                                     "    <organization></organization>\n"
                                     "    <preprocessor_version>p</preprocessor_version>\n"
                                     "    <originating_system>o</originating_system>\n"
                                     "    <authorization>z</authorization>\n"
                                     "    <documentation>d e f</documentation>\n"
                                     "  </header>\n</ifcXML>\n");
}

TEST(XmlExportHeader, IsLeftOutOfAFragment) {
    FileHeaderSimple header;
    header.schemaName = "IFC4";
    xml::Export xmlExport;
    ASSERT_TRUE(xmlExport.boExportHeader(header));
    EXPECT_EQ(sSaved(xmlExport), std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") + g_sRootTag + "/>\n");
}

TEST(XmlExportHeader, KnowsOneSchemaOnly) {
    for (const char* sSchema : {"", "IFC2X3", "ifc4", "IFC4X3", "IFC4 ", "IFC4_ADD2"}) {
        SCOPED_TRACE(sSchema);
        FileHeader header;
        header.schema.schemaName = sSchema;
        xml::Export xmlExport;
        EXPECT_FALSE(xmlExport.boExportHeader(header));
        EXPECT_EQ(sSaved(xmlExport), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ifcXML/>\n");
    }
}

struct WalkRow {
    const char* sRule;
    std::vector<std::string> modes;
    const char* sStatements;
    const char* sElements;
};

// GlobalIds are left out ("IfcRoot.GlobalId=-"), which keeps the rows short.
const WalkRow g_walkRows[] = {
    {"a project alone", {}, "#1=IFCPROJECT('0000000000000000000001','p',$,$);", R"(<IfcProject id="i1" Name="p"/>)"},
    {"what nothing leads to is left out",
     {},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);#2=IFCTHING('a',$);#3=IFCTHING('b',#2);",
     R"(<IfcProject id="i1"/>)"},
    {"what is left out leads nowhere",
     {"IfcProject.Chain=-", "IfcProject.Holds=2", "IfcEverything.Things=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,#3,#2);#2=IFCTHING('a',$);"
     "#3=IFCEVERYTHING($,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,(#4),$,$,$,$);#4=IFCTHING('b',$);",
     R"(<IfcProject id="i1" Holds="i3"/><IfcEverything id="i3"/>)"},
    {"derived values are absent",
     {"IfcProject.Chain=2", "IfcProject.Holds=1"},
     "#1=IFCPROJECT('0000000000000000000001',*,#2,*);"
     "#2=IFCEVERYTHING(*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*,*);",
     R"(<IfcProject id="i1"><Holds id="i2"/></IfcProject>)"},
    {"the first place in the document has the whole",
     {"IfcProject.Holds=1", "IfcThing.Next=1"},
     "#1=IFCPROJECT('0000000000000000000001',$,#2,$);"
     "#2=IFCEVERYTHING($,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,(#4,#5),$,$,$,$);"
     "#4=IFCTHING('a',#6);#5=IFCTHING('b',#6);#6=IFCTHING('c',$);",
     R"(<IfcProject id="i1"><Holds id="i2"><Things><IfcThing id="i4" xsi:type="IfcThing" Label="a">)"
     R"(<Next id="i6" xsi:type="IfcThing" Label="c"/></IfcThing><IfcThing id="i5" xsi:type="IfcThing" Label="b">)"
     R"(<Next ref="i6" xsi:nil="true" xsi:type="IfcThing"/></IfcThing></Things></Holds></IfcProject>)"},
    {"a reference by id leads on",
     {},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#3);#2=IFCTHING('a',$);#3=IFCTHING('b',#2);",
     R"(<IfcProject id="i1" Chain="i3"/><IfcThing id="i3" Label="b" Next="i2"/><IfcThing id="i2" Label="a"/>)"},
    {"a nested reference",
     {"IfcProject.Chain=1", "IfcThing.Next=1"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#3);#2=IFCSPECIAL('a',$);#3=IFCTHING('b',#2);",
     R"(<IfcProject id="i1"><Chain id="i3" xsi:type="IfcThing" Label="b"><Next id="i2" xsi:type="IfcSpecial" Label="a"/>)"
     "</Chain></IfcProject>"},
    {"a cycle ends in a reference",
     {"IfcProject.Chain=1", "IfcThing.Next=1"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCTHING($,#3);#3=IFCTHING($,#2);",
     R"(<IfcProject id="i1"><Chain id="i2" xsi:type="IfcThing"><Next id="i3" xsi:type="IfcThing">)"
     R"(<Next ref="i2" xsi:nil="true" xsi:type="IfcThing"/></Next></Chain></IfcProject>)"},
    {"queued by id, written inside before its turn",
     {"IfcEverything.Pt=1", "IfcEverything.Th=1", "IfcProject.Holds=1", "IfcThing.Next=2"},
     "#1=IFCPROJECT('0000000000000000000001',$,#2,#4);"
     "#2=IFCEVERYTHING($,$,$,$,$,$,$,$,$,$,$,#3,$,$,$,$,$,$,$,$,$,$,$,$,$);#3=IFCTHING('a',#5);#4=IFCTHING('b',#3);"
     "#5=IFCTHING('c',$);",
     R"(<IfcProject id="i1" Chain="i4"><Holds id="i2"><Th id="i3" xsi:type="IfcThing" Label="a" Next="i5"/></Holds>)"
     R"(</IfcProject><IfcThing id="i5" Label="c"/><IfcThing id="i4" Label="b" Next="i3"/>)"},
    {"inverse relations lead on and stand at the top",
     {"IfcRelLink.Relating=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);#2=IFCWALL('0000000000000000000002',$,$,2.5);"
     "#3=IFCRELLINK('0000000000000000000003',$,#1,(#2));",
     R"(<IfcProject id="i1"/><IfcRelLink id="i3"><Related><IfcWall id="i2" Height="2.500000"/></Related></IfcRelLink>)"},
    {"an inverse attribute as one element a relation, the latest relation first",
     {"IfcProject.Links=1", "IfcRelLink.Relating=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);#3=IFCRELLINK('0000000000000000000003',$,#1,());"
     "#4=IFCRELLINK('0000000000000000000004',$,#1,());",
     R"(<IfcProject id="i1"><Links id="i4"><Related/></Links><Links id="i3"><Related/></Links></IfcProject>)"},
    {"an inverse attribute as an element around all",
     {"IfcProject.Links=2", "IfcRelLink.Relating=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);#3=IFCRELLINK('0000000000000000000003',$,#1,());"
     "#4=IFCRELLINK('0000000000000000000004',$,#1,());",
     R"(<IfcProject id="i1"><Links><IfcRelLink id="i4"><Related/></IfcRelLink><IfcRelLink id="i3"><Related/>)"
     R"(</IfcRelLink></Links></IfcProject>)"},
    {"any other mode is as that",
     {"IfcProject.Links=3", "IfcRelLink.Relating=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);#3=IFCRELLINK('0000000000000000000003',$,#1,());",
     R"(<IfcProject id="i1"><Links><IfcRelLink id="i3"><Related/></IfcRelLink></Links></IfcProject>)"},
    {"no element around no relation",
     {"IfcProject.Links=7"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);",
     R"(<IfcProject id="i1"/>)"},
    {"inverse attributes stand before the attributes of a subtype",
     {"IfcProject.Links=2", "IfcRelLink.Relating=-", "IfcElement.LinkedBy=1", "IfcElement.Place=1"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);#2=IFCWALL('0000000000000000000002',$,#5,1.);"
     "#3=IFCRELLINK('0000000000000000000003',$,#1,(#2));#5=IFCPOINT((0.,0.5));",
     R"(<IfcProject id="i1"><Links><IfcRelLink id="i3"><Related><IfcWall id="i2" Height="1.000000">)"
     R"(<Place id="i5" Coordinates="0 0.5"/><LinkedBy ref="i3" xsi:nil="true"/></IfcWall></Related></IfcRelLink>)"
     "</Links></IfcProject>"},
    {"what is named after an attribute has its type beside it, a second time too",
     {"IfcProject.Chain=1", "IfcProject.Links=1", "IfcRelLink.Relating=1"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCSPECIAL($,$);"
     "#3=IFCRELLINK('0000000000000000000003',$,#1,$);",
     R"(<IfcProject id="i1"><Chain id="i2" xsi:type="IfcSpecial"/>)"
     R"(<Links id="i3"><Relating ref="i1" xsi:nil="true"/></Links></IfcProject>)"},
};

TEST(XmlExportData, WalksFromTheProject) {
    for (const WalkRow& row : g_walkRows) {
        SCOPED_TRACE(row.sRule);
        std::vector<std::string> modes = row.modes;
        modes.emplace_back("IfcRoot.GlobalId=-");
        const MappedSchema schema(modes);
        const StepModel model(schema, row.sStatements);
        xml::Export xmlExport;
        ASSERT_TRUE(xmlExport.boExportData(model.file.data(), {}));
        EXPECT_EQ(sBody(sSaved(xmlExport)), row.sElements);
    }
}

struct ReportRow {
    const char* sRule;
    std::vector<std::string> modes;
    const char* sStatements;
    const char* sElements;
    std::vector<std::string> records;
};
const ReportRow g_reportRows[] = {
    {"all is there", {}, "#1=IFCPROJECT('0000000000000000000001','p',$,$);", R"(<IfcProject id="i1" Name="p"/>)", {}},
    {"named by what is left out",
     {"IfcProject.Chain=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCTHING('a',$);",
     R"(<IfcProject id="i1"/><IfcThing id="i2" Label="a"/>)",
     {}},
    {"and what that names",
     {"IfcProject.Chain=-", "IfcThing.Next=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#4);#4=IFCTHING('a',#2);#2=IFCTHING('b',#3);#3=IFCTHING('c',#4);",
     R"(<IfcProject id="i1"/><IfcThing id="i4" Label="a"/><IfcThing id="i2" Label="b"/><IfcThing id="i3" Label="c"/>)",
     {}},
    {"in selects and lists, each once, behind all that is reached otherwise",
     {"IfcEverything.Se=-", "IfcEverything.Things=-", "IfcEverything.ThingSelects=-", "IfcEverything.Th=2"},
     "#1=IFCPROJECT('0000000000000000000001',$,#2,$);"
     "#2=IFCEVERYTHING($,$,$,$,$,$,$,$,$,$,#3,#4,$,$,$,$,$,$,$,$,(#4,#5),$,(#6,#3),$,$);"
     "#3=IFCTHING('a',$);#4=IFCTHING('b',$);#5=IFCTHING('c',$);#6=IFCTHING('d',$);",
     R"(<IfcProject id="i1" Holds="i2"/><IfcEverything id="i2" Th="i4"/><IfcThing id="i4" Label="b"/>)"
     R"(<IfcThing id="i3" Label="a"/><IfcThing id="i5" Label="c"/><IfcThing id="i6" Label="d"/>)",
     {}},
    {"one inside of another has no element of its own",
     {"IfcEverything.Things=-", "IfcThing.Next=1"},
     "#1=IFCPROJECT('0000000000000000000001',$,#2,$);"
     "#2=IFCEVERYTHING($,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,(#4,#5,#6),$,$,$,$);"
     "#4=IFCTHING('b',#5);#5=IFCTHING('c',$);#6=IFCTHING('d',$);",
     R"(<IfcProject id="i1" Holds="i2"/><IfcEverything id="i2"/><IfcThing id="i4" Label="b">)"
     R"(<Next id="i5" xsi:type="IfcThing" Label="c"/></IfcThing><IfcThing id="i6" Label="d"/>)",
     {}},
    {"the other end leads back",
     {"IfcRelLink.Relating=-", "IfcRelLink.Related=-", "IfcElement.LinkedBy=2"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,$);#2=IFCWALL('0000000000000000000002',$,$,$);"
     "#3=IFCRELLINK('0000000000000000000003',$,#1,(#2));",
     R"(<IfcProject id="i1"/><IfcRelLink id="i3"/>)"
     R"(<IfcWall id="i2"><LinkedBy><IfcRelLink ref="i3" xsi:nil="true"/></LinkedBy></IfcWall>)",
     {}},
    {"an instance that no statement defined is none",
     {"IfcProject.Chain=-"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#2);",
     R"(<IfcProject id="i1"/>)",
     {}},
    {"nothing leads to them",
     {},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCTHING('a',$);#3=IFCTHING('b',#4);#4=IFCTHING('c',#2);",
     R"(<IfcProject id="i1" Chain="i2"/><IfcThing id="i2" Label="a"/>)",
     {"#3 Reference #3 IfcThing is not connected with the project and was left out.",
      "#4 Reference #4 IfcThing is not connected with the project and was left out."}},
    {"what leads to them has no form",
     {},
     "#1=IFCPROJECT('0000000000000000000001',$,#2,$);"
     "#2=IFCEVERYTHING($,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,$,((#3)));#3=IFCTHING('a',#4);"
     "#4=IFCSPECIAL('b',$);#5=IFCTHING('c',$);",
     R"(<IfcProject id="i1" Holds="i2"/><IfcEverything id="i2"/>)",
     {"#3 Value #3 IfcThing is connected with the project only by values that ifcXML has no form for; it was left out.",
      "#5 Reference #5 IfcThing is not connected with the project and was left out.",
      "#4 Value #4 IfcSpecial is connected with the project only by values that ifcXML has no form for; it was left "
      "out."}},
    {"a reference without a form",
     {"IfcProject.Chain=0"},
     "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCTHING('a',$);",
     R"(<IfcProject id="i1"/>)",
     {"#2 Value #2 IfcThing is connected with the project only by values that ifcXML has no form for; it was left "
      "out."}},
};

TEST(XmlExportData, TellsWhatTheDocumentLacks) {
    for (const ReportRow& row : g_reportRows) {
        SCOPED_TRACE(row.sRule);
        std::vector<std::string> modes = row.modes;
        modes.emplace_back("IfcRoot.GlobalId=-");
        const MappedSchema schema(modes);
        const StepModel model(schema, row.sStatements);
        const Data& data = model.file.data();
        xml::Export xmlExport;
        io::WriteError report;
        ASSERT_TRUE(xmlExport.boExportData(data, report, {}));
        EXPECT_EQ(sBody(sSaved(xmlExport)), row.sElements);
        std::vector<std::string> records;
        for (const ErrorRecord& record : report.records()) {
            EXPECT_EQ(record.severity, Errors::Error);
            EXPECT_EQ(record.lineString, "");
            EXPECT_EQ(record.lineNumber, 0U);
            const char* sCategory = record.category == Errors::Value       ? "Value"
                                    : record.category == Errors::Reference ? "Reference"
                                                                           : "another";
            records.push_back('#' + std::to_string(data.iIdFromEntity(*record.entity)) + ' ' + sCategory + ' ' +
                              record.description);
        }
        EXPECT_EQ(records, row.records);
    }
}

TEST(XmlExportData, TellsNothingWithoutAProject) {
    const MappedSchema schema;
    const StepModel model(schema, "#2=IFCTHING('a',$);");
    xml::Export xmlExport;
    io::WriteError report;
    EXPECT_FALSE(xmlExport.boExportData(model.file.data(), report, {}));
    EXPECT_TRUE(report.records().empty());
}

TEST(XmlExportData, CountsWhatFollowsAtTheEnd) {
    const MappedSchema schema({"IfcProject.Chain=-", "IfcThing.Next=2"});
    const StepModel model(schema, "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCTHING('a',#3);"
                                  "#3=IFCTHING('b',$);");
    std::vector<unsigned> counts;
    io::WriteError report;
    ASSERT_TRUE(
        xml::Export().boExportData(model.file.data(), report, [&](unsigned iCount) { counts.push_back(iCount); }));
    EXPECT_THAT(counts, ElementsAre(1, 2, 3));
}

// As a caller may leave it behind who keeps the inverse lists himself.
TEST(XmlExportData, PassesNullReferrersOver) {
    const struct {
        const char* sMode;
        const char* sStatements;
        const char* sElements;
    } rows[] = {
        {"IfcProject.Links=0", "#3=IFCRELLINK('0000000000000000000003',$,#1,());",
         R"(<IfcProject id="i1"/><IfcRelLink id="i3"><Related/></IfcRelLink>)"},
        {"IfcProject.Links=1", "#3=IFCRELLINK('0000000000000000000003',$,#1,());",
         R"(<IfcProject id="i1"><Links id="i3"><Related/></Links></IfcProject>)"},
        {"IfcProject.Links=2", "#3=IFCRELLINK('0000000000000000000003',$,#1,());",
         R"(<IfcProject id="i1"><Links><IfcRelLink id="i3"><Related/></IfcRelLink></Links></IfcProject>)"},
        {"IfcProject.Links=2", "", R"(<IfcProject id="i1"/>)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sElements);
        const MappedSchema schema({row.sMode, "IfcRoot.GlobalId=-", "IfcRelLink.Relating=-"});
        StepModel model(schema, std::string("#1=IFCPROJECT('0000000000000000000001',$,$,$);") + row.sStatements);
        Data& data = model.file.data();
        data.pProject()->vEntityInverseAdd(data, nullptr, def::schema::AttributeName("Links"));
        xml::Export xmlExport;
        ASSERT_TRUE(xmlExport.boExportData(data, {}));
        EXPECT_EQ(sBody(sSaved(xmlExport)), row.sElements);
    }
}

TEST(XmlExportData, NeedsAProject) {
    const MappedSchema schema;
    const StepModel model(schema, "#2=IFCTHING('a',$);");
    xml::Export xmlExport;
    EXPECT_FALSE(xmlExport.boExportData(model.file.data(), {}));
    const Data empty;
    EXPECT_FALSE(xmlExport.boExportData(empty, {}));
    EXPECT_EQ(sBody(sSaved(xmlExport)), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><ifcXML/>");
}

TEST(XmlExportData, TellsItsProgress) {
    const MappedSchema schema({"IfcProject.Chain=1"});
    const StepModel model(schema,
                          "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCTHING('a',#3);#3=IFCTHING('b',#4);"
                          "#4=IFCTHING('c',#2);");
    std::vector<unsigned> counts;
    xml::Export xmlExport;
    ASSERT_TRUE(xmlExport.boExportData(model.file.data(), [&](unsigned iCount) { counts.push_back(iCount); }));
    EXPECT_THAT(counts, ElementsAre(1, 2, 3)) << "the project, and what references by id lead to";
}

TEST(XmlExportData, WritesReferencesTheSecondTime) {
    const MappedSchema schema({"IfcRoot.GlobalId=-"});
    const StepModel model(schema, "#1=IFCPROJECT('0000000000000000000001',$,$,#2);#2=IFCTHING('a',$);");
    xml::Export xmlExport;
    ASSERT_TRUE(xmlExport.boExportData(model.file.data(), {}));
    ASSERT_TRUE(xmlExport.boExportData(model.file.data(), {}));
    EXPECT_EQ(sBody(sSaved(xmlExport)), R"(<IfcProject id="i1" Chain="i2"/><IfcThing id="i2" Label="a"/>)"
                                        R"(<IfcProject ref="i1" xsi:nil="true"/>)");
}

TEST(XmlExportData, ThrowsForAnInstanceThatNoStatementDefined) {
    for (const char* sMode : {"IfcProject.Chain=1", "IfcProject.Chain=2"}) {
        SCOPED_TRACE(sMode);
        const MappedSchema schema({sMode});
        const StepModel model(schema, "#1=IFCPROJECT('0000000000000000000001',$,$,#2);");
        xml::Export xmlExport;
        try {
            xmlExport.boExportData(model.file.data(), {});
            FAIL() << "nothing thrown";
        } catch (const MissingType& fault) {
            EXPECT_STREQ(fault.what(), "returning nullptr");
        }
    }
}

TEST(XmlExportData, GivesNewInstancesANumber) {
    const MappedSchema schema({"IfcRoot.GlobalId=-", "IfcProject.Chain=1", "IfcThing.Next=1"});
    File file;
    file.vSchemaSet(schema.schema());
    const auto pNew = [&](const char* sName) { return file.data().pEntityCreate(def::schema::ObjectName(sName)); };
    Entity* pThing = pNew("IFCTHING");
    Entity* pNext = pNew("IFCTHING");
    Entity* pProject = pNew("IFCPROJECT");
    pProject->boValueSet<const Entity*>(def::schema::AttributeName("Chain"), pThing, file.data());
    pThing->boValueSet<const Entity*>(def::schema::AttributeName("Next"), pNext, file.data());
    EXPECT_EQ(sBody(sExported(file)).substr(sBody(sExported(file)).find("<IfcProject")),
              R"(<IfcProject id="i1"><Chain id="i2" xsi:type="IfcThing"><Next id="i3" xsi:type="IfcThing"/></Chain>)"
              "</IfcProject>");
}

TEST(XmlExportData, ShowsAReferenceToNullByItsNumber) {
    const MappedSchema schema({"IfcRoot.GlobalId=-"});
    File file;
    file.vSchemaSet(schema.schema());
    Entity* pProject = file.data().pEntityCreate(def::schema::ObjectName("IFCPROJECT"));
    pProject->boValueSet<const Entity*>(def::schema::AttributeName("Chain"), nullptr, file.data());
    EXPECT_NE(sExported(file).find("<IfcProject id=\"i1\" Chain=\"i0\"/>"), std::string::npos);
}

std::string sChain(std::size_t iCount) {
    std::string sText = "#1=IFCPROJECT('0000000000000000000001',$,$,#2);";
    for (std::size_t i = 2; i < iCount + 2; ++i)
        sText += "#" + std::to_string(i) + "=IFCTHING($," + (i <= iCount ? '#' + std::to_string(i + 1) : "$") + ");";
    return sText;
}

TEST(XmlExportData, NestsAsDeepAsTheModel) {
    const MappedSchema schema({"IfcProject.Chain=1", "IfcThing.Next=1"});
    constexpr std::size_t g_iCount = 100'000;
    const StepModel model(schema, sChain(g_iCount));
    const std::string sDocument = sExported(model.file);
    std::size_t iOpen = 0;
    for (std::size_t i = sDocument.find("<Next "); i != std::string::npos; i = sDocument.find("<Next ", i + 1)) ++iOpen;
    EXPECT_EQ(iOpen, g_iCount - 1);
    EXPECT_LT(sDocument.size(), g_iCount * 250);
    std::istringstream in(sDocument);
    EXPECT_FALSE(xml::Import().boLoad(in)) << "too deep for a walk that recurses";
}

TEST(XmlExportSave, TakesAPathInUtf8) {
    const MappedSchema schema;
    const StepModel model(schema, "#1=IFCPROJECT('0000000000000000000001',$,$,$);");
    xml::Export xmlExport;
    ASSERT_TRUE(xmlExport.boExportData(model.file.data(), {}));
    const std::string sPath = testing::TempDir() + "/oxa export \xC3\x9F.ifcxml";
    EXPECT_TRUE(xmlExport.boSave(sPath));
    const std::filesystem::path path(std::u8string(sPath.begin(), sPath.end()));
    std::ifstream in(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), sSaved(xmlExport));
    in.close();
    EXPECT_TRUE(xml::Import().boLoad(sPath));
    std::filesystem::remove(path);
    EXPECT_FALSE(xmlExport.boSave(testing::TempDir() + "/no folder/\xFF\xFE no UTF-8"));
    EXPECT_FALSE(xmlExport.boSave(sPath + "/no folder"));
    std::ostringstream failed;
    failed.setstate(std::ios::failbit);
    EXPECT_FALSE(xmlExport.boSave(failed));
}

}   // namespace
}   // namespace oxa::ifc
