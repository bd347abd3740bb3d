// SPDX-License-Identifier: Apache-2.0
// From documents to models: the frame, the elements, the numbers.
#include "Format/Ifc/Xml/IfcXmlImport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "XmlModel.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;

// The ids of other tests of this process are known too; those here begin at 1000, a hundred for each test.

struct LoadRow {
    const char* sRule;
    const char* sText;
    bool boLoaded;
};
const LoadRow g_loadRows[] = {
    {"well-formed", "<ifcXML/>", true}, {"any root", "<a/>", true},         {"nothing", "", false},
    {"cut", "<ifcXML>", false},         {"no XML", "ISO-10303-21;", false},
};

TEST(XmlImportLoad, TakesWellFormedXml) {
    for (const LoadRow& row : g_loadRows) {
        SCOPED_TRACE(row.sRule);
        std::istringstream in(row.sText);
        EXPECT_EQ(xml::Import().boLoad(in), row.boLoaded);
    }
    EXPECT_FALSE(xml::Import().boLoad(testing::TempDir() + "/no such file"));
    EXPECT_FALSE(xml::Import().boLoad(std::string("\xFF\xFE no UTF-8")));
}

struct NamespaceRow {
    const char* sRule;
    const char* sDocument;
    bool boHeader;
    std::vector<std::string> words;   // what the schema function was asked
};
const NamespaceRow g_namespaceRows[] = {
    {"as it is exported", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2'/>", true, {"IFC4"}},
    {"any root element", "<a xmlns='http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2'/>", true, {"IFC4"}},
    {"another release", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML/IFC4/final'/>", true, {"IFC4"}},
    {"nothing behind the word", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML/IFC4/'/>", true, {"IFC4"}},
    {"an unknown word", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML/IFC5/Add2'/>", false, {"IFC5"}},
    {"an empty word", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML//'/>", false, {""}},
    {"no slash behind the word", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML/IFC4'/>", false, {}},
    {"the base alone", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML/'/>", false, {}},
    {"less than the base", "<ifcXML xmlns='http://www.buildingsmart-tech.org/ifcXML'/>", false, {}},
    {"another namespace", "<ifcXML xmlns='http://www.iai-tech.org/ifcXML/IFC2x3/FINAL/and/more/of/it'/>", false, {}},
    {"a blank in front", "<ifcXML xmlns=' http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2'/>", false, {}},
    {"an empty namespace", "<ifcXML xmlns=''/>", false, {}},
    {"no namespace", "<ifcXML/>", false, {}},
    {"only one with a prefix", "<ifcXML xmlns:ifc='http://www.buildingsmart-tech.org/ifcXML/IFC4/Add2'/>", false, {}},
};

TEST(XmlImportHeader, FindsTheSchemaByTheNamespace) {
    const MappedSchema schema;
    for (const NamespaceRow& row : g_namespaceRows) {
        SCOPED_TRACE(row.sRule);
        std::istringstream in(row.sDocument);
        xml::Import xmlImport;
        ASSERT_TRUE(xmlImport.boLoad(in));
        File file;
        std::vector<std::string> words;
        EXPECT_EQ(xmlImport.boImportHeader(file,
                                           [&](const std::string& sWord) {
                                               words.push_back(sWord);
                                               return schema.function()(sWord);
                                           }),
                  row.boHeader);
        EXPECT_EQ(words, row.words);
        EXPECT_EQ(file.header().schema.schemaName, row.boHeader ? "IFC4" : "");
        EXPECT_EQ(file.data().pSchema(), row.boHeader ? &schema.schema() : nullptr);
    }
}

TEST(XmlImportHeader, IsServedFromTheBuiltInSchemas) {
    std::istringstream in(sDocumentOf(""));
    xml::Import xmlImport;
    ASSERT_TRUE(xmlImport.boLoad(in));
    File file;
    EXPECT_TRUE(xmlImport.boImportHeader(file, {}));
    EXPECT_EQ(file.data().pSchema(), SchemaLoader::pBuiltIn("IFC4"));
}

TEST(XmlImportHeader, NeedsADocumentAndASchemaWithAName) {
    File file;
    EXPECT_FALSE(xml::Import().boImportHeader(file, {}));
    def::SchemaPset nameless("");
    std::istringstream in(sDocumentOf(""));
    xml::Import xmlImport;
    ASSERT_TRUE(xmlImport.boLoad(in));
    EXPECT_FALSE(xmlImport.boImportHeader(file, [&](const std::string&) { return &nameless; }));
}

constexpr char g_sHeader[] =
    "<header><name>n</name><time_stamp>t</time_stamp><author>a b</author><organization/>"
    "<preprocessor_version>p</preprocessor_version><originating_system><![CDATA[<o>]]></originating_system>"
    "<authorization><b/>z</authorization><documentation> d "
    "</documentation><implementationLevel>9</implementationLevel>"
    "</header>";

TEST(XmlImportHeader, FillsTheFields) {
    const MappedSchema schema;
    std::istringstream in(sDocumentOf(g_sHeader));
    xml::Import xmlImport;
    ASSERT_TRUE(xmlImport.boLoad(in));
    File file;
    file.header().name.author = {"x", "y"};
    file.header().name.organization = {"o"};
    file.header().name.authorization = "before";
    file.header().description.descriptions = {"before", "that"};
    ASSERT_TRUE(xmlImport.boImportHeader(file, schema.function()));
    const FileHeader::Name& name = file.header().name;
    EXPECT_EQ(name.name, "n");
    EXPECT_EQ(name.timeStamp, "t");
    EXPECT_THAT(name.author, ElementsAre("a b"));
    EXPECT_THAT(name.organization, ElementsAre("")) << "an empty element is an empty text";
    EXPECT_EQ(name.preprocessorVersion, "p");
    EXPECT_EQ(name.originatingSystem, "<o>");
    EXPECT_EQ(name.authorization, "") << "the first child is no text";
    EXPECT_THAT(file.header().description.descriptions, ElementsAre(" d "));
    EXPECT_EQ(file.header().description.implementationLevel, "2;1");
}

TEST(XmlImportHeader, KeepsTheFieldsThatTheDocumentLacks) {
    const MappedSchema schema;
    for (const char* sElements : {"", "<header/>", "<header>text<other>x</other></header>"}) {
        SCOPED_TRACE(sElements);
        std::istringstream in(sDocumentOf(sElements));
        xml::Import xmlImport;
        ASSERT_TRUE(xmlImport.boLoad(in));
        File file;
        file.header().name.name = "kept";
        EXPECT_TRUE(xmlImport.boImportHeader(file, schema.function()));
        EXPECT_EQ(file.header().name.name, "kept");
    }
}

TEST(XmlImportHeader, OfAFragmentHasOnlyTheSchema) {
    const MappedSchema schema;
    std::istringstream in(sDocumentOf(g_sHeader));
    xml::Import xmlImport;
    ASSERT_TRUE(xmlImport.boLoad(in));
    FileSimple file(schema.schema());
    file.header().schemaName.clear();
    EXPECT_TRUE(xmlImport.boImportHeader(file, schema.function()));
    EXPECT_EQ(file.header().schemaName, "IFC4");
}

TEST(XmlImportHeader, JoinsWhatTheExportJoined) {
    const MappedSchema schema;
    StepModel model(schema, "#1=IFCPROJECT('0000000000000000000001',$,$,$);");
    model.file.header().name.author = {"a", "b"};
    const ImportedModel imported(schema, sExported(model.file));
    EXPECT_THAT(imported.file.header().name.author, ElementsAre("a b"));
}

struct DataRow {
    const char* sRule;
    const char* sElements;
    const char* sStatements;   // in the order of the numbers
};
const DataRow g_dataRows[] = {
    {"nothing", "", ""},
    {"an instance", "<IfcThing id='i1001' Label='a'/>", "#1001=IFCTHING('a',$);"},
    {"number without a letter", "<IfcThing id='1001'/>", "#1001=IFCTHING($,$);"},
    {"number 0 for no digit", "<IfcThing id='i'/>", "#0=IFCTHING($,$);"},
    {"a name of any case", "<IfcTHING id='i1001'/>", "#1001=IFCTHING($,$);"},
    {"a name with other letters in front", "<ifcThing id='i1001'/>", ""},
    {"a name of the schema with other letters in front", "<Ifelse id='i1001'/>", ""},
    {"an attribute that a supertype has too, of another type", "<IfcTwice id='i1001' Label='1.5'/>",
     "#1001=IFCTWICE($,$,$);"},
    {"a header", "<header><IfcThing id='i1001'/></header>", ""},
    {"a container", "<uos><IfcThing id='i1001'/></uos>", ""},
    {"an unknown type", "<IfcUnknown id='i1001'/>", ""},
    {"a type that is no entity", "<IfcLabel id='i1001'/>", ""},
    {"a name of three letters", "<Ifc id='i1001'/>", ""},
    {"text between instances", "text<IfcThing id='i1001'/>more<IfcThing id='i1002'/>",
     "#1001=IFCTHING($,$); #1002=IFCTHING($,$);"},
    {"an abstract type", "<IfcRoot id='i1001' Name='a'/>", "#1001=IFCROOT($,'a');"},
    {"a reference alone", "<IfcThing ref='i1001' xsi:nil='true'/>", ""},
    {"a reference goes before an id", "<IfcThing id='i1001' ref='i1002'/>", ""},
    {"unknown names",
     "<IfcThing id='i1001' Other='1' xsi:type='IfcSpecial' xsi:nil='true'><Other2 id='i7'/></IfcThing>",
     "#1001=IFCTHING($,$);"},
    {"the same number again overwrites", "<IfcThing id='i1001' Label='a'/><IfcPoint id='i1001'/>",
     "#1001=IFCPOINT($); #1001=IFCPOINT($);"},
    {"an instance that nests its own number", "<IfcThing id='i1001' Label='a'><Next id='i1001' Label='b'/></IfcThing>",
     "#1001=IFCTHING('b',#1001); #1001=IFCTHING('b',#1001);"},
    {"an instance that nests its own number as another type",
     "<IfcThing id='i1001' Label='a'><Next id='i1001' xsi:type='IfcPoint' Coordinates='1'/></IfcThing>",
     "#1001=IFCPOINT((1.)); #1001=IFCPOINT((1.));"},
    {"a reference to a later instance is null, and stays so",
     "<IfcThing id='i1001'><Next ref='i1099'/></IfcThing><IfcThing id='i1099'/>",
     "#1001=IFCTHING($,); #1099=IFCTHING($,$);"},
    {"a reference to itself", "<IfcThing id='i1001'><Next ref='i1001'/></IfcThing>", "#1001=IFCTHING($,#1001);"},
    {"a reference by a type that the schema lacks",
     "<IfcThing id='i1001'><Next xsi:type='IfcNo' ref='i1001'/></IfcThing>", "#1001=IFCTHING($,);"},
    {"a type with a prefix", "<IfcThing id='i1001'><Next xsi:type='ifc:IfcThing' id='i1002'/></IfcThing>",
     "#1001=IFCTHING($,);"},
    {"a nested instance without a number", "<IfcThing id='i1001'><Next Label='a'/></IfcThing>", "#1001=IFCTHING($,);"},
    {"a reference as an XML attribute", "<IfcThing id='i1002'/><IfcThing id='i1001' Next='i1002'/>",
     "#1001=IFCTHING($,$); #1002=IFCTHING($,$);"},
    {"later wins between XML attribute and element", "<IfcThing id='i1001' Label='a'><Label>b</Label></IfcThing>",
     "#1001=IFCTHING('',$);"},
};

TEST(XmlImportData, BuildsInstances) {
    const MappedSchema schema;
    for (const DataRow& row : g_dataRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        const ImportedModel imported(schema, sDocumentOf(row.sElements));
        EXPECT_TRUE(imported.boHeader);
        EXPECT_TRUE(imported.boData);
        EXPECT_EQ(imported.sStatements(), row.sStatements);
    }
}

struct ValueRow {
    const char* sRule;
    const char* sElement;   // inside <IfcEverything id='i1001' ...>: attributes, ">" and children
    const char* sAttribute;
    const char* sValue;
    std::vector<std::string> asserts = {};
};
const ValueRow g_valueRows[] = {
    {"several blanks between numbers", " Lengths='1  2   3'/>", "Lengths", "(1.,2.,3.)"},
    {"a line end between numbers", " Lengths='1\n2'/>", "Lengths", "(1.,2.)"},
    {"a blank in front is one number more", " Lengths=' 1 2'/>", "Lengths", "(0.,1.,2.)"},
    {"a blank behind is none", " Lengths='1 2 '/>", "Lengths", "(1.,2.)"},
    {"a list in both forms", " Lengths='1'><Lengths/></IfcEverything>", "Lengths", "(1.)"},
    {"an instance by text", " Points='i5'/>", "Points", "$", {"Not implemented"}},
    {"a word in front of a wrapper", "><Se><a-wrapper-IfcLabel>x</a-wrapper-IfcLabel></Se></IfcEverything>", "Se", "$"},
    {"the last eight characters are cut, whatever they are",
     "><Se><IfcLabel-wrapperX>x</IfcLabel-wrapperX></Se></IfcEverything>", "Se", "$"},
    {"eight characters behind the type", "><Se><IfcLabel-wrapper>x</IfcLabel-wrapper></Se></IfcEverything>", "Se",
     "IFCLABEL('x')"},
    {"a wrapper without a type", "><Se><x-wrapper>x</x-wrapper></Se></IfcEverything>", "Se", "$"},
    {"a wrapper of an entity", "><Se><IfcThing-wrapper>x</IfcThing-wrapper></Se></IfcEverything>", "Se", "$"},
    {"a wrapper that is empty", "><Se><IfcLabel-wrapper/></Se></IfcEverything>", "Se", "$"},
    {"a wrapper with an element in it", "><Se><IfcLabel-wrapper><a>x</a></IfcLabel-wrapper></Se></IfcEverything>", "Se",
     "IFCLABEL('')"},
    {"a wrapper whose text is no real",
     "><Se><IfcLengthMeasure-wrapper>x</IfcLengthMeasure-wrapper></Se></IfcEverything>",
     "Se",
     "$",
     {"Not implemented or error in format"}},
    {"a wrapper of a list",
     "><Se><IfcReals-wrapper>1 2</IfcReals-wrapper></Se></IfcEverything>",
     "Se",
     "$",
     {"Not implemented or error in format"}},
    {"a wrapper of a select, which is no value",
     "><Se><IfcValue-wrapper>x</IfcValue-wrapper></Se></IfcEverything>",
     "Se",
     "$",
     {"Not implemented or error in format"}},
    {"a select as an XML attribute", " Se='x'/>", "Se", "$"},
    {"a select with text in front", "><Se>text<IfcLabel-wrapper>x</IfcLabel-wrapper></Se></IfcEverything>", "Se", "$"},
    {"a select without a child", "><Se/></IfcEverything>", "Se", "$"},
    {"a select with an unknown reference", "><Se><IfcThing ref='i1099'/></Se></IfcEverything>", "Se", "$"},
    {"only the first child of a select",
     "><Se><IfcLabel-wrapper>x</IfcLabel-wrapper><IfcLabel-wrapper>y</IfcLabel-wrapper></Se></IfcEverything>", "Se",
     "IFCLABEL('x')"},
    {"selects of instances, unknown ones as null",
     "><ThingSelects><IfcThing id='i1002'/><IfcThing ref='i1099'/></ThingSelects></IfcEverything>",
     "ThingSelects",
     "(#1002)",
     {"Skipping invalid reference in list"}},
    {"selects, unknown ones as null",
     "><Selects><IfcThing id='i1002'/><IfcThing ref='i1099'/></Selects></IfcEverything>", "Selects", "(#1002,)"},
    {"an unknown one in front", "><Selects><IfcThing ref='i1099'/><IfcThing id='i1002'/></Selects></IfcEverything>",
     "Selects", "(,#1002)"},
    {"values in a list of selects, which are no instances",
     "><Selects><IfcLabel-wrapper>x</IfcLabel-wrapper><IfcLabel-wrapper>y</IfcLabel-wrapper></Selects></IfcEverything>",
     "Selects", "(,)"},
    {"instances, unknown ones as null",
     "><Points><IfcPoint id='i1002'/>text<IfcPoint ref='i1099'/></Points></IfcEverything>",
     "Points",
     "(#1002)",
     {"Skipping invalid reference in list"}},
    {"instances into a list of reals", "><Lengths><IfcPoint id='i1002'/></Lengths></IfcEverything>", "Lengths", "$"},
    {"no instance into a list of reals", "><Lengths/></IfcEverything>", "Lengths", "$"},
    {"instances into rows", "><ThingRows><IfcThing id='i1002'/></ThingRows></IfcEverything>", "ThingRows", "$"},
    {"an element where an enumerator should be", "><En>red</En></IfcEverything>", "En", "$"},
    {"an enumerator of any case", " En='rEd'/>", "En", ".RED."},
    {"an enumerator that is none", " En='blue'/>", "En", "$"},
    {"a number with text behind it", " Re='1.5m'/>", "Re", "1.5"},
    {"text where a number should be", " Re='m'/>", "Re", "$"},
};

TEST(XmlImportData, ReadsValuesByTheirForm) {
    const MappedSchema schema;
    for (const ValueRow& row : g_valueRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        const std::string sElement = row.sElement;
        const ImportedModel imported(schema, sDocumentOf("<IfcEverything id='i1001'" + sElement));
        ASSERT_TRUE(imported.boData);
        ASSERT_NE(imported.pEntity(1001), nullptr);
        EXPECT_EQ(sValueText(*imported.pEntity(1001), row.sAttribute, imported.file.data()), row.sValue);
        EXPECT_EQ(log.texts(), row.asserts);
    }
}

const DataRow g_inverseRows[] = {
    {"one relation, as an element with its number",
     "<IfcProject id='i1'><Links id='i1003'><Related><IfcWall id='i1002'/></Related></Links></IfcProject>",
     "#1=IFCPROJECT($,$,$,$); #1002=IFCWALL($,$,$,$); "
     "#1003=IFCRELLINK($,$,#1,(#1002));"},
    {"relations in an element",
     "<IfcProject id='i1'><Links><IfcRelLink id='i1003'/><IfcRelLink id='i1004'/></Links></IfcProject>",
     "#1=IFCPROJECT($,$,$,$); #1003=IFCRELLINK($,$,#1,$); "
     "#1004=IFCRELLINK($,$,#1,$);"},
    {"one relation to many",
     "<IfcRelLink id='i1003'/><IfcWall id='i1001'><LinkedBy><IfcRelLink ref='i1003'/></LinkedBy></IfcWall>"
     "<IfcWall id='i1002'><LinkedBy ref='i1003'/></IfcWall>",
     "#1001=IFCWALL($,$,$,$); #1002=IFCWALL($,$,$,$); "
     "#1003=IFCRELLINK($,$,$,(#1001,#1002));"},
    {"named twice is there twice",
     "<IfcRelLink id='i1003'/><IfcWall id='i1001'><LinkedBy ref='i1003'/><LinkedBy><IfcRelLink "
     "ref='i1003'/></LinkedBy>"
     "</IfcWall>",
     "#1001=IFCWALL($,$,$,$); #1003=IFCRELLINK($,$,$,(#1001,#1001));"},
    {"one by one: each is related before the next one is read",
     "<IfcRelLink id='i1003'/><IfcWall id='i1001'><LinkedBy><IfcRelLink ref='i1003'/><IfcRelLink id='i1004'><Related>"
     "<IfcWall id='i1002'><LinkedBy ref='i1003'/></IfcWall></Related></IfcRelLink></LinkedBy></IfcWall>",
     "#1001=IFCWALL($,$,$,$); #1002=IFCWALL($,$,$,$); #1003=IFCRELLINK($,$,$,(#1001,#1002)); "
     "#1004=IFCRELLINK($,$,$,(#1002,#1001));"},
    {"one by one: what an element nests may give the relation its value",
     "<IfcWall id='i1001'><LinkedBy><IfcRelLink id='i1003'/><IfcRelLink id='i1003'/></LinkedBy></IfcWall>",
     "#1001=IFCWALL($,$,$,$); #1003=IFCRELLINK($,$,$,(#1001)); #1003=IFCRELLINK($,$,$,(#1001));"},
    {"by the name of the forward attribute",
     "<IfcProject id='i1'><Relating><IfcRelLink id='i1003'/></Relating></IfcProject>",
     "#1=IFCPROJECT($,$,$,$); #1003=IFCRELLINK($,$,#1,$);"},
    {"not by that of a supertype's", "<IfcWall id='i1001'><Related><IfcRelLink id='i1003'/></Related></IfcWall>",
     "#1001=IFCWALL($,$,$,$);"},
    {"to a number that nobody knows", "<IfcWall id='i1001'><LinkedBy ref='i1099'/></IfcWall>",
     "#1001=IFCWALL($,$,$,$);"},
    {"without a number", "<IfcWall id='i1001'><LinkedBy/></IfcWall>", "#1001=IFCWALL($,$,$,$);"},
    {"as an XML attribute", "<IfcRelLink id='i1003'/><IfcWall id='i1001' LinkedBy='i1003'/>",
     "#1001=IFCWALL($,$,$,$); #1003=IFCRELLINK($,$,$,$);"},
    {"to an instance of another type",
     "<IfcWall id='i1001'><LinkedBy><IfcThing id='i1003'/><IfcWall id='i1004'/></LinkedBy></IfcWall>",
     "#1001=IFCWALL($,$,$,$); #1003=IFCTHING($,$); "
     "#1004=IFCWALL($,$,$,$);"},
    {"to itself", "<IfcRelLink id='i1003'/><IfcWall id='i1001'><LinkedBy><IfcWall ref='i1001'/></LinkedBy></IfcWall>",
     "#1001=IFCWALL($,$,$,$); #1003=IFCRELLINK($,$,$,$);"},
    {"whose forward attribute is a select",
     "<IfcWall id='i1001'><TaggedBy><IfcRelTag id='i1003'/></TaggedBy></IfcWall>",
     "#1001=IFCWALL($,$,$,$); #1003=IFCRELTAG(#1001,$);"},
};

TEST(XmlImportData, StoresRelationsAtTheirOtherEnd) {
    const MappedSchema schema;
    for (const DataRow& row : g_inverseRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        const ImportedModel imported(schema, sDocumentOf(row.sElements));
        EXPECT_TRUE(imported.boData);
        EXPECT_EQ(imported.sStatements(), row.sStatements);
    }
}

TEST(XmlImportData, CompletesTheModel) {
    const MappedSchema schema;
    const ImportedModel imported(
        schema, sDocumentOf("<IfcProject id='i7' GlobalId='0000000000000000000001'><Links id='i1003'/></IfcProject>"));
    Entity* pProject = imported.pEntity(7);
    ASSERT_NE(pProject, nullptr);
    EXPECT_EQ(imported.file.data().pProject(), pProject);
    EXPECT_EQ(imported.file.data().iIdFromEntity(*pProject), 7U) << "numbers are kept";
    EXPECT_THAT(pProject->entitiesInverseFromIndex(0), ElementsAre(imported.pEntity(1003)));
    Guid guid;
    ASSERT_TRUE(pProject->boValueGet(def::schema::AttributeName("GlobalId"), guid));
    EXPECT_EQ(imported.file.data().pEntityFromGuid(guid), pProject);
}

TEST(XmlImportData, NeedsADocumentAndASchema) {
    File file;
    xml::Import xmlImport;
    EXPECT_FALSE(xmlImport.boImportData(file.data()));
    std::istringstream in(sDocumentOf("<IfcThing id='i1'/>"));
    ASSERT_TRUE(xmlImport.boLoad(in));
    EXPECT_TRUE(xmlImport.boImportData(file.data())) << "a document, and nothing in it that is known";
    EXPECT_TRUE(file.data().entities().empty());
}

TEST(XmlImportData, BuildsAllAnewTheSecondTime) {
    const MappedSchema schema;
    std::istringstream in(sDocumentOf("<IfcThing id='i1001' Label='a'/>"));
    xml::Import xmlImport;
    File file;
    ASSERT_TRUE(xmlImport.boLoad(in) && xmlImport.boImportHeader(file, schema.function()));
    ASSERT_TRUE(xmlImport.boImportData(file.data()));
    ASSERT_TRUE(xmlImport.boImportData(file.data()));
    ASSERT_EQ(file.data().entities().size(), 2U);
    EXPECT_NE(file.data().entities()[0], file.data().entities()[1]);
}

TEST(XmlImportNumbers, AreKnownToLaterImports) {
    const MappedSchema schema;
    const ImportedModel first(schema, sDocumentOf("<IfcThing id='i1101' Label='first'/>"));
    const ImportedModel second(schema, sDocumentOf("<IfcThing id='i1102'><Next ref='i1101'/></IfcThing>"));
    Entity* pNext = nullptr;
    ASSERT_TRUE(second.pEntity(1102)->boValueGet(def::schema::AttributeName("Next"), pNext));
    EXPECT_EQ(pNext, first.pEntity(1101));
}

TEST(XmlImportNumbers, AreForgottenWithTheirModel) {
    const MappedSchema schema;
    const std::string sSecond = sDocumentOf(
        "<IfcThing id='i1202'><Next ref='i1201'/></IfcThing><IfcWall id='i1203'><LinkedBy ref='i1204'/></IfcWall>");
    {
        const ImportedModel first(schema, sDocumentOf("<IfcThing id='i1201'/><IfcRelLink id='i1204'/>"));
        ASSERT_NE(first.pEntity(1201), nullptr);
    }
    const AssertLog log;
    const ImportedModel second(schema, sSecond);
    Entity* pNext = second.pEntity(1202);
    EXPECT_TRUE(second.pEntity(1202)->boValueGet(def::schema::AttributeName("Next"), pNext));
    EXPECT_EQ(pNext, nullptr);
}

// Models come and go; a number is that of the last document that had it, however many there were since.
TEST(XmlImportNumbers, AreThoseOfTheLastDocument) {
    const MappedSchema schema;
    const auto things = [](int iFirst, int iLast) {
        std::string sThings;
        for (int i = iFirst; i <= iLast; ++i) sThings += "<IfcThing id='i" + std::to_string(i) + "'/>";
        return sDocumentOf(sThings);
    };
    const ImportedModel first(schema, things(1401, 1500));
    const ImportedModel second(schema, things(1451, 1550));
    { const ImportedModel gone(schema, things(1476, 5000)); }
    { const ImportedModel gone(schema, things(1540, 9000)); }
    for (int iRound = 0; iRound < 3; ++iRound) {
        const struct {
            int iId;
            const ImportedModel* pOwner;
        } rows[] = {{1401, &first},  {1450, &first},  {1451, &second}, {1475, &second},
                    {1476, nullptr}, {1550, nullptr}, {1400, nullptr}, {9001, nullptr}};
        for (const auto& row : rows) {
            SCOPED_TRACE(row.iId);
            const std::string sNumber = std::to_string(row.iId);
            const ImportedModel later(schema,
                                      sDocumentOf("<IfcThing id='i99'><Next ref='i" + sNumber + "'/></IfcThing>"));
            Entity* pNext = nullptr;
            ASSERT_TRUE(later.pEntity(99)->boValueGet(def::schema::AttributeName("Next"), pNext));
            EXPECT_EQ(pNext, row.pOwner ? row.pOwner->pEntity(static_cast<std::size_t>(row.iId)) : nullptr);
        }
    }
}

TEST(XmlImportNumbers, FollowAModelThatMoves) {
    const MappedSchema schema;
    auto pFirst = std::make_unique<ImportedModel>(schema, sDocumentOf("<IfcThing id='i1301'/>"));
    Entity* pThing = pFirst->pEntity(1301);
    const Data moved(std::move(static_cast<Data&>(pFirst->file.data())));
    pFirst.reset();
    const ImportedModel second(schema, sDocumentOf("<IfcThing id='i1302'><Next ref='i1301'/></IfcThing>"));
    Entity* pNext = nullptr;
    ASSERT_TRUE(second.pEntity(1302)->boValueGet(def::schema::AttributeName("Next"), pNext));
    EXPECT_EQ(pNext, pThing);
}

}   // namespace
}   // namespace oxa::ifc
