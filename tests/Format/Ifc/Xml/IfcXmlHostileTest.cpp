// SPDX-License-Identifier: Apache-2.0
// Documents that mean no good: whatever comes, the process goes on, and what is imported can be used.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "XmlModel.h"
#include "platform/Xml.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;

// All that a user does with a model: walk it, write it, export it again.
void vUse(const File& file) {
    std::ostringstream out;
    io::WriteError errors;
    file.data().boWrite(out, errors, true);
    xml::Export xmlExport;
    xmlExport.boExportData(file.data(), {});
    EXPECT_TRUE(xmlExport.boSave(out));
}

constexpr char g_sWhole[] =
    "<header><name>n</name><author>a</author></header>"
    "<IfcProject id='i1' GlobalId='0000000000000000000001' Name='p'><Holds id='i2' Re='1.5' Lengths='1 2' Texts='a "
    "b' "
    "En='red'><Se><IfcLabel-wrapper>x</IfcLabel-wrapper></Se><Th id='i3' xsi:type='IfcSpecial' Label='t'/>"
    "<Points><IfcPoint id='i4' Coordinates='1 2 3'/><IfcPoint ref='i4' xsi:nil='true'/></Points>"
    "<Selects><IfcThing ref='i3'/><IfcLabel-wrapper>y</IfcLabel-wrapper></Selects></Holds>"
    "<Links><IfcRelLink id='i5' GlobalId='0000000000000000000002'><Related><IfcWall id='i6' "
    "GlobalId='0000000000000000000003'/></Related></IfcRelLink></Links></IfcProject>";

TEST(XmlHostile, EveryPrefixIsRefused) {
    const MappedSchema schema;
    const std::string sDocument = sDocumentOf(g_sWhole);
    for (std::size_t i = 0; i < sDocument.size(); ++i) {
        SCOPED_TRACE(i);
        const ImportedModel imported(schema, sDocument.substr(0, i));
        EXPECT_FALSE(imported.boLoaded || imported.boHeader || imported.boData);
    }
    const AssertLog log;
    const ImportedModel imported(schema, sDocument);
    EXPECT_TRUE(imported.boLoaded && imported.boHeader && imported.boData);
    EXPECT_EQ(imported.file.data().entities().size(), 6U);
    vUse(imported.file);
}

// Each byte in turn replaced: most documents are refused, the rest is used.
TEST(XmlHostile, EveryChangedByteIsSurvived) {
    const MappedSchema schema;
    const AssertLog log;
    const std::string sDocument = sDocumentOf(g_sWhole);
    std::size_t iLoaded = 0;
    for (std::size_t i = 0; i < sDocument.size(); ++i) {
        for (const char c : {'x', '1', ' ', '<', '\'', '/'}) {
            std::string sChanged = sDocument;
            sChanged[i] = c;
            const ImportedModel imported(schema, sChanged);
            iLoaded += imported.boLoaded ? 1 : 0;
            if (imported.boHeader) vUse(imported.file);
        }
    }
    EXPECT_GT(iLoaded, sDocument.size());
}

TEST(XmlHostile, NamesAnywhereDoNoHarm) {
    const MappedSchema schema;
    const AssertLog log;
    // Every attribute and inverse attribute of the schema with every kind of content.
    const char* g_contents[] = {"",
                                "text",
                                "<IfcThing id='i9'/>",
                                "<IfcThing ref='i2'/>",
                                "<IfcThing ref='i77777'/>",
                                "<IfcWall id='i2'/>",
                                "<IfcLabel-wrapper>x</IfcLabel-wrapper>",
                                "<IfcColour-wrapper>red</IfcColour-wrapper>",
                                "<IfcBlob-wrapper>oQ==</IfcBlob-wrapper>",
                                "<IfcInner-wrapper>x</IfcInner-wrapper>",
                                "<IfcReals-wrapper>1 2</IfcReals-wrapper>",
                                "<IfcThing id='i9'/><IfcPoint id='i10'/><IfcLabel-wrapper>x</IfcLabel-wrapper>"};
    for (const def::schema::Schema::Record& record : schema.schema().objects) {
        const auto* pType = def::schema::pAsEntity(record.pObject);
        if (!pType) continue;
        std::vector<std::string> names;
        for (const auto* pAttribute : pType->allAttributes()) names.push_back(pAttribute->sName);
        for (const auto* pInverse : pType->allInverseAttributes()) names.push_back(pInverse->sName);
        for (const std::string& sName : names) {
            for (const char* sContent : g_contents) {
                SCOPED_TRACE(pType->sName + '.' + sName + ": " + sContent);
                const std::string sStart = "<IfcProject id='i1'/><" + pType->sName + " id='i2'";
                const std::string sEnd = "</" + pType->sName + '>';
                const ImportedModel element(
                    schema, sDocumentOf(sStart + "><" + sName + '>' + sContent + "</" + sName + '>' + sEnd));
                const ImportedModel numbered(
                    schema, sDocumentOf(sStart + "><" + sName + " id='i3'>" + sContent + "</" + sName + '>' + sEnd));
                const ImportedModel twice(schema, sDocumentOf(sStart + ' ' + sName + "='1 2'><" + sName + '>' +
                                                              sContent + "</" + sName + '>' + sEnd));
                for (const ImportedModel* pModel : {&element, &numbered, &twice}) {
                    EXPECT_TRUE(pModel->boData);
                    vUse(pModel->file);
                }
            }
        }
    }
}

std::string sNestedThings(std::size_t iCount) {
    std::string sText = "<IfcThing id='i1'>";
    for (std::size_t i = 2; i <= iCount; ++i) sText += "<Next id='i" + std::to_string(i) + "'>";
    for (std::size_t i = 2; i <= iCount; ++i) sText += "</Next>";
    return sText + "</IfcThing>";
}

TEST(XmlHostile, NestingIsBounded) {
    const MappedSchema schema;
    // The root element is the first level.
    const ImportedModel deepest(schema, sDocumentOf(sNestedThings(oxa::xml::File::g_iDepthLimit - 1)));
    EXPECT_TRUE(deepest.boData);
    EXPECT_EQ(deepest.file.data().entities().size(), oxa::xml::File::g_iDepthLimit - 1);
    const ImportedModel tooDeep(schema, sDocumentOf(sNestedThings(oxa::xml::File::g_iDepthLimit)));
    EXPECT_FALSE(tooDeep.boLoaded);
    const ImportedModel muchTooDeep(schema, sDocumentOf(sNestedThings(100'000)));
    EXPECT_FALSE(muchTooDeep.boLoaded);
}

struct HostileIdRow {
    const char* sId;
    std::size_t iId;
};
const HostileIdRow g_hostileIdRows[] = {
    {"i0", 0},
    {"i32768", 32768},
    {"i32768000", 32768000},
    {"i4294967295", 4294967295},
    {"i4294967296", 4294967296},
    {"i9223372036854775806", 9223372036854775806},
    {"i9223372036854775807", 9223372036854775807},
    {"i9223372036854775808", 9223372036854775807},   // the largest for what is larger
    {"i99999999999999999999", 9223372036854775807},
    {"", 0},
};

TEST(XmlHostile, EachNumberOfSixtyThreeBitsHasAPlace) {
    const MappedSchema schema;
    for (const HostileIdRow& row : g_hostileIdRows) {
        SCOPED_TRACE(row.sId);
        const AssertLog log;
        const ImportedModel imported(schema, sDocumentOf(std::string("<IfcThing id='") + row.sId + "'><Next ref='" +
                                                         row.sId + "'/></IfcThing><IfcThing ref='" + row.sId + "'/>"));
        EXPECT_TRUE(imported.boData);
        EXPECT_EQ(imported.file.data().entities().size(), 1U);
        ASSERT_NE(imported.pEntity(row.iId), nullptr);
        EXPECT_EQ(imported.file.data().iIdFromEntity(*imported.pEntity(row.iId)), row.iId);
        const std::string sNumber = '#' + std::to_string(row.iId);
        EXPECT_EQ(imported.sStatements(), sNumber + "=IFCTHING($," + sNumber + ");");
        EXPECT_EQ(log.texts(), std::vector<std::string>());
    }
}

// Numbers that agree in their lower 32 bits are two instances, for every walk.
TEST(XmlHostile, LargeNumbersAreNotTakenForSmallOnes) {
    const MappedSchema schema({"IfcRoot.GlobalId=-", "IfcProject.Chain=1", "IfcThing.Next=1"});
    const std::string sElements = R"(<IfcProject id="i1"><Chain id="i4294967297" xsi:type="IfcThing">)"
                                  R"(<Next id="i4294967298" xsi:type="IfcThing"/></Chain></IfcProject>)";
    const ImportedModel imported(schema, sDocumentOf(sElements));
    EXPECT_EQ(sBody(sExported(imported.file)).substr(sBody(sExported(imported.file)).find("<IfcProject")), sElements);
    for (const bool boSingleThreaded : {true, false}) {
        std::ostringstream out;
        io::WriteError errors;
        EXPECT_TRUE(imported.file.data().boWrite(out, errors, boSingleThreaded));
        for (const char* sStatement : {"#1=IFCPROJECT(", "#4294967297=IFCTHING(", "#4294967298=IFCTHING("})
            EXPECT_NE(out.str().find(sStatement), std::string::npos) << sStatement << '\n' << out.str();
    }
}

TEST(XmlHostile, AnInstanceWithoutANumberIsLeftOut) {
    const MappedSchema schema;
    const AssertLog log;
    const ImportedModel imported(schema, sDocumentOf("<IfcThing Label='a'/><IfcThing><Next id='i9'/></IfcThing>"));
    EXPECT_TRUE(imported.boData);
    EXPECT_TRUE(imported.file.data().entities().empty());
    EXPECT_THAT(log.texts(), ElementsAre("Should always exist", "Should always exist"));
}

TEST(XmlHostile, EntitiesOfADocumentTypeStayTexts) {
    const MappedSchema schema;
    const std::string sType = "<!DOCTYPE ifcXML [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;'>"
                              "<!ENTITY f SYSTEM 'file:///etc/passwd'>]>";
    std::string sDocument = sDocumentOf("<IfcThing id='i1' Label='&b;'/><IfcThing id='i2' Label='&f;'/>");
    sDocument.insert(sDocument.find("<ifcXML"), sType);
    const ImportedModel imported(schema, sDocument);
    EXPECT_EQ(imported.sStatements(), "#1=IFCTHING('&b;',$); #2=IFCTHING('&f;',$);");
}

TEST(XmlHostile, ManyReferrersOfOneRelationTakeTheirTime) {
    const MappedSchema schema;
    std::string sElements = "<IfcRelLink id='i1'/>";
    constexpr std::size_t g_iCount = 50'000;
    for (std::size_t i = 2; i < g_iCount + 2; ++i)
        sElements += "<IfcWall id='i" + std::to_string(i) + "'><LinkedBy ref='i1'/></IfcWall>";
    const AssertLog log;
    const ImportedModel imported(schema, sDocumentOf(sElements));
    std::vector<Entity*> related;
    ASSERT_TRUE(imported.pEntity(1)->boListValueGet(def::schema::AttributeName("Related"), related));
    EXPECT_EQ(related.size(), g_iCount);
}

}   // namespace
}   // namespace oxa::ifc
