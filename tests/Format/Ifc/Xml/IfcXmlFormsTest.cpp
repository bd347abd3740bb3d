// SPDX-License-Identifier: Apache-2.0
// What each kind of value becomes in a document, and what comes back of it.
#include <gtest/gtest.h>

#include <regex>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/Xml/IfcXmlText.h"
#include "XmlModel.h"

namespace oxa::ifc {
namespace {

// One attribute of instance #2, an IfcEverything nested in the project.
struct FormRow {
    const char* sRule;
    const char* sAttribute;
    const char* sToken;   // in the STEP file; "#3" to "#5" are IfcThing 'a', IfcSpecial 'b', IfcPoint (1,2)
    const char* sMode;
    const char* sElement;   // what stands in <Holds id="i2"...>: attributes, then ">" and children where there are any
    const char* sBack;      // what was imported, in the text of a STEP file
};

const FormRow g_scalarRows[] = {
    {"boolean", "Bo", ".T.", "2", R"( Bo="true")", ".T."},
    {"boolean as element", "Bo", ".T.", "0", "><Bo><IfcFlag-wrapper>true</IfcFlag-wrapper></Bo>", ".F."},
    {"real", "Re", "1.5", "2", R"( Re="1.500000")", "1.5"},
    {"a small real", "Re", "1.E-7", "2", R"( Re="0.000000")", "0."},
    {"real as element", "Re", "1.5", "1", "><Re><IfcLengthMeasure-wrapper>1.500000</IfcLengthMeasure-wrapper></Re>",
     "$"},
    {"real without a type name, as element", "Pl", "2.", "3", "><Pl><REAL-wrapper>2.000000</REAL-wrapper></Pl>", "$"},
    {"number", "Nu", "3.", "2", R"( Nu="3.000000")", "3."},
    {"number as element", "Nu", "3.", "7", "><Nu><IfcNumeric-wrapper>3.000000</IfcNumeric-wrapper></Nu>", "0."},
    {"integer", "In", "-4", "2", R"( In="-4")", "-4"},
    {"integer as element", "In", "-4", "0", "><In><IfcCount-wrapper>-4</IfcCount-wrapper></In>", "0"},
    {"logical", "Lo", ".U.", "2", R"( Lo="unknown")", ".U."},
    {"logical as element", "Lo", ".T.", "0", "><Lo><IfcAnswer-wrapper>true</IfcAnswer-wrapper></Lo>", ".U."},
    {"string", "St", "'a <b> \"c\"'", "2", R"( St="a &lt;b&gt; &quot;c&quot;")", "'a <b> \"c\"'"},
    {"string beyond ASCII", "St", "'\\X\\DF'", "2", " St=\"\xC3\x9F\"", "'\\X\\DF'"},
    {"empty string", "St", "''", "2", R"( St="")", "''"},
    {"string as element", "St", "'a'", "0", "><St><IfcLabel-wrapper>a</IfcLabel-wrapper></St>", "''"},
    {"GUID", "Gu", "'0000000000000000000009'", "2", R"( Gu="0000000000000000000009")", "'0000000000000000000009'"},
    {"GUID as element keeps its quotes", "Gu", "'0000000000000000000009'", "0",
     "><Gu><IfcGloballyUniqueId-wrapper>'0000000000000000000009'</IfcGloballyUniqueId-wrapper></Gu>",
     "'0000000000000000000000'"},
    {"binary", "Bi", "\"0A1FF\"", "2", R"( Bi="of8=")", "\"0A1FF\""},
    {"binary as element", "Bi", "\"0A1FF\"", "0", "><Bi><IfcBlob-wrapper>of8=</IfcBlob-wrapper></Bi>", "$"},
    {"enumeration", "En", ".GREEN.", "2", R"( En="green")", ".GREEN."},
    {"enumeration as element", "En", ".GREEN.", "0", "><En><IfcColour-wrapper>green</IfcColour-wrapper></En>", "$"},
    {"null", "St", "$", "2", "", "$"},
    {"null as element", "St", "$", "0", "", "$"},
    {"derived", "St", "*", "2", "", "$"},
    {"left out", "St", "'a'", "-", "", "$"},
};

const FormRow g_referenceRows[] = {
    {"nested, type without subtypes", "Pt", "#5", "1", R"(><Pt id="i5" Coordinates="1 2"/>)", "#5"},
    {"nested, type with subtypes", "Th", "#3", "1", R"(><Th id="i3" xsi:type="IfcThing" Label="a"/>)", "#3"},
    {"nested, of a subtype", "Th", "#4", "1", R"(><Th id="i4" xsi:type="IfcSpecial" Label="b"/>)", "#4"},
    {"by id", "Th", "#3", "2", R"( Th="i3")", "$"},
    {"by id in mode 3", "Th", "#3", "3", R"( Th="i3")", "$"},
    {"other modes have none", "Th", "#3", "0", "", "$"},
    {"null", "Th", "$", "1", "", "$"},
};

const FormRow g_selectRows[] = {
    {"string", "Se", "IFCLABEL('x')", "2", "><Se><IfcLabel-wrapper>x</IfcLabel-wrapper></Se>", "IFCLABEL('x')"},
    {"the mode does not matter", "Se", "IFCLABEL('x')", "0", "><Se><IfcLabel-wrapper>x</IfcLabel-wrapper></Se>",
     "IFCLABEL('x')"},
    {"empty string", "Se", "IFCLABEL('')", "2", "><Se><IfcLabel-wrapper></IfcLabel-wrapper></Se>", "$"},
    {"real", "Se", "IFCLENGTHMEASURE(1.5)", "2",
     "><Se><IfcLengthMeasure-wrapper>1.500000</IfcLengthMeasure-wrapper></Se>", "IFCLENGTHMEASURE(1.5)"},
    {"number", "Se", "IFCNUMERIC(2.)", "2", "><Se><IfcNumeric-wrapper>2.000000</IfcNumeric-wrapper></Se>",
     "IFCNUMERIC(2.)"},
    {"integer", "Se", "IFCCOUNT(7)", "2", "><Se><IfcCount-wrapper>7</IfcCount-wrapper></Se>", "IFCCOUNT(7)"},
    {"boolean", "Se", "IFCFLAG(.T.)", "2", "><Se><IfcFlag-wrapper>true</IfcFlag-wrapper></Se>", "IFCFLAG(.T.)"},
    {"logical", "Se", "IFCANSWER(.U.)", "2", "><Se><IfcAnswer-wrapper>unknown</IfcAnswer-wrapper></Se>",
     "IFCANSWER(.U.)"},
    {"instance", "Se", "#3", "2", R"(><Se><IfcThing id="i3" Label="a"/></Se>)", "#3"},
    {"instance in mode 1", "Se", "#3", "1", R"(><Se><IfcThing id="i3" Label="a"/></Se>)", "#3"},
    {"instance in mode 3", "Se", "#4", "3", R"(><Se><IfcSpecial id="i4" Label="b"/></Se>)", "#4"},
    {"instance in other modes", "Se", "#3", "0", "><Se/>", "$"},
    {"a select inside", "Se", "IFCINNER(IFCLABEL('x'))", "2", "><Se><IfcInner-wrapper>x</IfcInner-wrapper></Se>", "$"},
    {"null", "Se", "$", "2", "", "$"},
};

// What a select can hold and documents can't, or imports can't take.
const FormRow g_selectAssertRows[] = {
    {"enumeration", "Se", "IFCCOLOUR(.RED.)", "2", "><Se><IfcColour-wrapper>red</IfcColour-wrapper></Se>", "$"},
    {"binary", "Se", "IFCBLOB(\"0A1\")", "2", "><Se><IfcBlob-wrapper>oQ==</IfcBlob-wrapper></Se>", "$"},
};

const FormRow g_listRows[] = {
    {"reals", "Lengths", "(1.,-2.5,1.E22)", "2", R"( Lengths="1 -2.5 1e+22")", "(1.,-2.5,1.E+22)"},
    {"the mode does not matter", "Lengths", "(1.,2.)", "0", R"( Lengths="1 2")", "(1.,2.)"},
    {"no reals", "Lengths", "()", "2", R"( Lengths="")", "(0.)"},
    {"reals without a type name", "Reals", "(1.,2.)", "2", R"( Reals="1 2")", "$"},
    {"numbers", "Numbers", "(1.,2.)", "2", R"( Numbers="1 2")", "$"},
    {"integers", "Integers", "(1,2)", "2", "", "$"},
    {"no integers", "Integers", "()", "2", "", "$"},
    {"strings", "Texts", "('a','b')", "2", R"( Texts="a b")", "$"},
    {"strings with blanks fall apart", "Texts", "('a b','c')", "2", R"( Texts="a b c")", "$"},
    {"empty strings", "Texts", "('','')", "2", R"( Texts=" ")", "$"},
    {"one empty string", "Texts", "('')", "2", "", "$"},
    {"no strings", "Texts", "()", "2", "", "$"},
    {"binaries", "Blobs", "(\"0A1\")", "2", "", "$"},
    {"instances", "Points", "(#5)", "2", R"(><Points><IfcPoint id="i5" Coordinates="1 2"/></Points>)", "(#5)"},
    {"instances in mode 1", "Points", "(#5)", "1", R"(><Points><IfcPoint id="i5" Coordinates="1 2"/></Points>)",
     "(#5)"},
    {"instances in mode 3", "Points", "(#5)", "3", R"(><Points><IfcPoint id="i5" Coordinates="1 2"/></Points>)",
     "(#5)"},
    {"instances in other modes", "Points", "(#5)", "0", "><Points/>", "()"},
    {"instances of a type with subtypes", "Things", "(#3,#4)", "2",
     R"(><Things><IfcThing id="i3" xsi:type="IfcThing" Label="a"/><IfcSpecial id="i4" Label="b"/></Things>)",
     "(#3,#4)"},
    {"an instance twice", "Points", "(#5,#5)", "2",
     R"(><Points><IfcPoint id="i5" Coordinates="1 2"/><IfcPoint ref="i5" xsi:nil="true"/></Points>)", "(#5,#5)"},
    {"no instances", "Points", "()", "2", "><Points/>", "()"},
    {"selects of instances only", "ThingSelects", "(#3,#5)", "2",
     R"(><ThingSelects><IfcThing id="i3" xsi:type="IfcThing" Label="a"/><IfcPoint id="i5" Coordinates="1 2"/>)"
     "</ThingSelects>",
     "(#3,#5)"},
    {"selects with instances", "Selects", "(#3,#4)", "2",
     R"(><Selects><IfcThing id="i3" Label="a"/><IfcSpecial id="i4" Label="b"/></Selects>)", "(#3,#4)"},
    {"selects with instances in other modes", "Selects", "(#3)", "0", "><Selects/>", "()"},
    {"selects with values", "Selects", "(IFCLENGTHMEASURE(1.5),IFCLABEL('x'))", "2",
     "><Selects><IfcLengthMeasure-wrapper>1.500000</IfcLengthMeasure-wrapper><IfcLabel-wrapper>x</IfcLabel-wrapper>"
     "</Selects>",
     "(,)"},
    {"no selects", "Selects", "()", "2", "><Selects/>", "()"},
    {"rows", "RealRows", "((1.),(2.))", "2", "", "$"},
    {"rows of instances", "ThingRows", "((#3))", "2", "", "$"},
};

std::string sStatements(const FormRow& row, const MappedSchema& schema) {
    std::string sText = "#1=IFCPROJECT('0000000000000000000001',$,#2,$);\n#2=IFCEVERYTHING(";
    const auto* pType = schema.schema().pEntityFromName(def::schema::ObjectName("IFCEVERYTHING"));
    for (const def::schema::Attribute* pAttribute : pType->allAttributes())
        sText.append(sText.back() == '(' ? "" : ",").append(pAttribute->sName == row.sAttribute ? row.sToken : "$");
    return sText + ");\n#3=IFCTHING('a',$);\n#4=IFCSPECIAL('b',$);\n#5=IFCPOINT((1.,2.));";
}

// The project and what follows it at the top level.
std::string sExpected(const FormRow& row) {
    const std::string sElement(row.sElement);
    return R"(<IfcProject id="i1" GlobalId="0000000000000000000001"><Holds id="i2")" +
           (sElement.find("><") == std::string::npos ? sElement + "/>" : sElement + "</Holds>") + "</IfcProject>";
}

template <std::size_t N>
void vExpectForms(const FormRow (&rows)[N], const std::vector<std::string>& asserts = {}) {
    for (const FormRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        const MappedSchema schema(
            {"IfcProject.Holds=1", std::string("IfcEverything.") + row.sAttribute + "=" + row.sMode});
        const StepModel model(schema, sStatements(row, schema));
        const AssertLog log;
        const std::string sDocument = sExported(model.file);
        EXPECT_EQ(sBody(sDocument).substr(sBody(sDocument).find("<IfcProject")).substr(0, sExpected(row).size()),
                  sExpected(row));

        const ImportedModel imported(schema, sDocument);
        ASSERT_TRUE(imported.boData);
        ASSERT_NE(imported.pEntity(2), nullptr);
        EXPECT_EQ(sValueText(*imported.pEntity(2), row.sAttribute, imported.file.data()), row.sBack);
        if (!asserts.empty()) {
            EXPECT_EQ(log.texts(), asserts);
        }
    }
}

TEST(XmlForms, OfScalars) { vExpectForms(g_scalarRows); }

TEST(XmlForms, OfReferences) { vExpectForms(g_referenceRows); }

TEST(XmlForms, OfSelects) { vExpectForms(g_selectRows); }

TEST(XmlForms, OfSelectsThatImportsCanNotTake) {
    vExpectForms(g_selectAssertRows, {"Not implemented", "Not implemented or error in format"});
}

TEST(XmlForms, OfLists) { vExpectForms(g_listRows); }

struct SilentRow {
    const char* sRule;
    const char* sToken;
    std::vector<std::string> asserts;
};
const SilentRow g_silentRows[] = {
    {"bytes of none", "IFCBLOB(\"0\")", {"Not implemented"}},
    {"an enumerator that is none", "IFCCOLOUR(.BLUE.)", {"Not implemented"}},
    {"a text that is none", "IFCLABEL($)", {}},
    {"a list", "IFCREALS((1.))", {}},
    {"an instance in a select inside", "IFCINNER(#5)", {}},
};

TEST(XmlForms, LeaveOutWhatASelectCanNotShow) {
    for (const SilentRow& row : g_silentRows) {
        SCOPED_TRACE(row.sRule);
        const FormRow form{"", "Se", row.sToken, "2", "", "$"};
        const MappedSchema schema({"IfcProject.Holds=1"});
        const StepModel model(schema, sStatements(form, schema));
        const AssertLog log;
        EXPECT_EQ(sBody(sExported(model.file)).find("<Se"), std::string::npos);
        EXPECT_EQ(log.texts(), row.asserts);
    }
}

TEST(XmlForms, KeepTheSchemasDefaults) {
    MappedSchema schema;
    schema.vDefaultsSet(0, 1);
    const StepModel model(schema, "#1=IFCPROJECT('0000000000000000000001','n',$,#3);\n#3=IFCTHING('a',$);");
    EXPECT_NE(sExported(model.file).find("<IfcProject id=\"i1\">\n    <GlobalId>\n"), std::string::npos)
        << "values become elements";
    EXPECT_NE(sExported(model.file).find("<Chain id=\"i3\" xsi:type=\"IfcThing\">"), std::string::npos)
        << "references nest";
}

struct IdRow {
    const char* sText;
    long long iId;
};
const IdRow g_idRows[] = {
    {"i123", 123},
    {"#123", 123},
    {"123", 123},
    {"abc", 0},
    {"", 0},
    {"i12x34", 12},
    {"i-5", 5},
    {"i007", 7},
    {"i4294967295", 4294967295},
    {"i9223372036854775807", 9223372036854775807},
    {"i99999999999999999999", 9223372036854775807},
};

TEST(XmlText, FindsTheNumberOfAnId) {
    for (const IdRow& row : g_idRows) EXPECT_EQ(xml::iIdOf(row.sText), row.iId) << row.sText;
}

TEST(XmlText, SplitsAsTheRegularExpressionDoes) {
    const std::regex blanks("\\s+");
    std::vector<std::string_view> items;
    for (const std::string sText : {"", " ", "  ", "1", "1 2", "1  2\t\n3", " 1", "1 ", "\v1\f\r2  ",
                                    "a\xC2\xA0"
                                    "b",
                                    "a\x85"
                                    "b"}) {
        SCOPED_TRACE(sText);
        const std::vector<std::string> expected(std::sregex_token_iterator(sText.begin(), sText.end(), blanks, -1), {});
        xml::vItemsOf(sText, items);
        EXPECT_EQ(std::vector<std::string>(items.begin(), items.end()), expected);
    }
    const std::string sFar = "1" + std::string(1'000'000, ' ') + "2";
    xml::vItemsOf(sFar, items);
    EXPECT_EQ(items.size(), 2U);
}

}   // namespace
}   // namespace oxa::ifc
