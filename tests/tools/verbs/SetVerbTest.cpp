// SPDX-License-Identifier: Apache-2.0
// "oxaifc set": every kind of value, and every reason to refuse one.

#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

// One entity at least for each kind of attribute. #3 is connected with nothing.
std::string sSetModel() {
    return sExchangeFile("IFC4", "#1=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((1,2))),.F.);\n"
                                 "#2=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,0.)));\n"
                                 "#3=IFCMATERIAL('a',$,$);\n"
                                 "#4=IFCPROPERTYSINGLEVALUE('b',$,$,$);\n"
                                 "#5=IFCRELDEFINESBYPROPERTIES('0AK7ClDd1SdhQcPuZ2exkW',$,$,$,(#6),#7);\n"
                                 "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,.ELEMENT.,$,$,$);\n"
                                 "#7=IFCPROPERTYSET('25U8ymbNTHqR30wX1gEfmD',$,'x',$,(#4));\n"
                                 "#8=IFCPROPERTYLISTVALUE('c',$,(IFCLABEL('d')),$);\n"
                                 "#9=IFCBLOBTEXTURE(.T.,.F.,$,$,$,'PNG',\"0AB\");\n"
                                 "#10=IFCPIXELTEXTURE(.T.,.F.,$,$,$,1,1,3,(\"0AABBCC\"));\n"
                                 "#11=IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.)));\n"
                                 "#12=IFCBSPLINESURFACEWITHKNOTS(1,1,((#13,#13),(#13,#13)),.UNSPECIFIED.,.F.,"
                                 ".F.,.U.,(2,2),(2,2),(0.,1.),"
                                 "(0.,1.),.UNSPECIFIED.);\n"
                                 "#13=IFCCARTESIANPOINT((0.,0.));\n"
                                 "#14=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                                 "#15=IFCPERSON('e',$,$,$,$,$,$,$);\n"
                                 "#16=IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(1.,0.,0.)));\n"
                                 "#17=IFCSTYLEDITEM($,(#11),$);\n"
                                 "#18=IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.)));\n"
                                 "#19=IFCTEXTSTYLETEXTMODEL($,$,$,$,$,$,$);\n");
}

struct SetCommandRow {
    const char* pRule;
    const char* pWhat;
    const char* pAttribute;
    const char* pValue;
    const char* pStatement;   // afterwards
};
const SetCommandRow g_setCommands[] = {
    {"a text", "#3", "Name", "new", "#3=IFCMATERIAL('new',$,$);"},
    {"an attribute in any case", "#3", "nAME", "new", "#3=IFCMATERIAL('new',$,$);"},
    {"a text beyond ASCII", "#3", "Name", "Bü\xe2\x82\xac", "#3=IFCMATERIAL('B\\X\\FC\\X2\\20AC\\X0\\',$,$);"},
    {"an empty text", "#3", "Name", "", "#3=IFCMATERIAL('',$,$);"},
    {"a text with a quote", "#3", "Name", "it's", "#3=IFCMATERIAL('it''s',$,$);"},
    {"a quoted text", "#3", "Name", "'it''s'", "#3=IFCMATERIAL('it''s',$,$);"},
    {"a text that looks like no value", "#3", "Name", "'$'", "#3=IFCMATERIAL('$',$,$);"},
    {"a text that looks like an option", "#3", "Name", "'--all'", "#3=IFCMATERIAL('--all',$,$);"},
    {"no value", "#8", "ListValues", "$", "#8=IFCPROPERTYLISTVALUE('c',$,$,$);"},
    {"a value where there was none", "#8", "Description", "f", "#8=IFCPROPERTYLISTVALUE('c','f',(IFCLABEL('d')),$);"},
    {"by GlobalId", "0e_8SiFPnIEh3pPRu4cB6E", "Name", "g",
     "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,'g',$,$,$,$,$,.ELEMENT.,$,$,$);"},
    {"a GlobalId", "#6", "GlobalId", "2cp60asVrO3R4Q9IgcHKIk",
     "#6=IFCBUILDING('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,.ELEMENT.,$,$,$);"},
    {"the GlobalId that it has", "#6", "GlobalId", "0e_8SiFPnIEh3pPRu4cB6E",
     "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,.ELEMENT.,$,$,$);"},
    {"references in selects of entities", "#17", "Styles", "(#11,#18)", "#17=IFCSTYLEDITEM($,(#11,#18),$);"},
    {"a real", "#6", "ElevationOfTerrain", "2.5",
     "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,.ELEMENT.,$,2.5,$);"},
    {"a whole number for a real", "#6", "ElevationOfTerrain", "-3",
     "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,.ELEMENT.,$,-3.,$);"},
    {"a real with an exponent", "#6", "ElevationOfTerrain", "-1e-3",
     "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,.ELEMENT.,$,-0.001,$);"},
    {"an integer", "#10", "Width", "2", "#10=IFCPIXELTEXTURE(.T.,.F.,$,$,$,2,1,3,(\"0AABBCC\"));"},
    {"a boolean", "#10", "RepeatS", "false", "#10=IFCPIXELTEXTURE(.F.,.F.,$,$,$,1,1,3,(\"0AABBCC\"));"},
    {"a boolean as in a file", "#10", "RepeatT", ".T.", "#10=IFCPIXELTEXTURE(.T.,.T.,$,$,$,1,1,3,(\"0AABBCC\"));"},
    {"an enumerator", "#6", "CompositionType", "complex",
     "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,.COMPLEX.,$,$,$);"},
    {"an enumerator as in a file", "#6", "CompositionType", ".PARTIAL.",
     "#6=IFCBUILDING('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,$,$,$,$,.PARTIAL.,$,$,$);"},
    {"a reference", "#1", "Points", "#16", "#1=IFCINDEXEDPOLYCURVE(#16,(IFCLINEINDEX((1,2))),.F.);"},
    {"a binary", "#9", "RasterCode", "00ff", "#9=IFCBLOBTEXTURE(.T.,.F.,$,$,$,'PNG',\"000FF\");"},
    {"a typed text", "#4", "NominalValue", "IFCTEXT(a b)", "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCTEXT('a b'),$);"},
    {"a typed text in quotes", "#4", "NominalValue", "IfcLabel('it''s')",
     "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCLABEL('it''s'),$);"},
    {"a typed boolean", "#4", "NominalValue", "ifcboolean(true)",
     "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCBOOLEAN(.T.),$);"},
    {"a typed logical", "#4", "NominalValue", "IFCLOGICAL(unknown)",
     "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCLOGICAL(.U.),$);"},
    {"a typed integer", "#4", "NominalValue", "IFCINTEGER(-7)", "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCINTEGER(-7),$);"},
    {"a typed real", "#4", "NominalValue", "IFCLENGTHMEASURE(7)",
     "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCLENGTHMEASURE(7.),$);"},
    {"a typed list of reals", "#4", "NominalValue", "IFCCOMPLEXNUMBER((1,2))",
     "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCCOMPLEXNUMBER((1.,2.)),$);"},
    {"a typed list of integers", "#4", "NominalValue", "IFCCOMPOUNDPLANEANGLEMEASURE((1,2,3))",
     "#4=IFCPROPERTYSINGLEVALUE('b',$,IFCCOMPOUNDPLANEANGLEMEASURE((1,2,3)),$);"},
    {"a typed set of references", "#5", "RelatingPropertyDefinition", "IfcPropertySetDefinitionSet((#7))",
     "#5=IFCRELDEFINESBYPROPERTIES('0AK7ClDd1SdhQcPuZ2exkW',$,$,$,(#6),IFCPROPERTYSETDEFINITIONSET((#7)));"},
    {"a reference in a select", "#4", "Unit", "#14", "#4=IFCPROPERTYSINGLEVALUE('b',$,$,#14);"},
    {"a list of reals", "#13", "Coordinates", "(1, 2.5,-3)", "#13=IFCCARTESIANPOINT((1.,2.5,-3.));"},
    {"a shorter list", "#13", "Coordinates", "(1)", "#13=IFCCARTESIANPOINT((1.));"},
    {"a list of texts", "#15", "MiddleNames", "(a,'b,c','(')", "#15=IFCPERSON('e',$,$,('a','b,c','('),$,$,$,$);"},
    {"a set of references", "#7", "HasProperties", "(#4,#8)",
     "#7=IFCPROPERTYSET('25U8ymbNTHqR30wX1gEfmD',$,'x',$,(#4,#8));"},
    {"a list of binaries", "#10", "Pixel", "(00ff00,112233)",
     "#10=IFCPIXELTEXTURE(.T.,.F.,$,$,$,1,1,3,(\"000FF00\",\"0112233\"));"},
    {"a list of typed values", "#8", "ListValues", "(IFCLABEL(a),IFCLABEL('b,c'))",
     "#8=IFCPROPERTYLISTVALUE('c',$,(IFCLABEL('a'),IFCLABEL('b,c')),$);"},
    {"a list of typed lists", "#1", "Segments", "(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,4)))",
     "#1=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,4))),.F.);"},
    {"a list of lists of reals", "#2", "CoordList", "((1,2),(3,4),(5,6))",
     "#2=IFCCARTESIANPOINTLIST2D(((1.,2.),(3.,4.),(5.,6.)));"},
    {"a list of lists of references", "#12", "ControlPointsList", "((#13,#13),(#13,#13),(#13,#13))",
     "#12=IFCBSPLINESURFACEWITHKNOTS(1,1,((#13,#13),(#13,#13),(#13,#13)),.UNSPECIFIED.,.F.,.F.,.U.,(2,2),(2,"
     "2),(0.,1.),"
     "(0.,1.),.UNSPECIFIED.);"},
};

TEST(SetVerb, ChangesOneStatementAndNoOther) {
    for (const SetCommandRow& row : g_setCommands) {
        SCOPED_TRACE(std::string(row.pRule) + ": " + row.pValue);
        const ProgramRun run = runProgram({"set", "-", row.pWhat, row.pAttribute, row.pValue, "-"}, sSetModel());
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        std::multiset<std::string> expected = statements(sSetModel());
        const std::string sStatement = row.pStatement;
        const std::string sNumber = sStatement.substr(0, sStatement.find('=') + 1);
        const auto itOld = std::find_if(expected.begin(), expected.end(),
                                        [&](const std::string& sLine) { return sLine.starts_with(sNumber); });
        ASSERT_NE(itOld, expected.end());
        expected.erase(itOld);
        expected.insert(sStatement);
        EXPECT_EQ(statements(run.sOut), expected);
        EXPECT_EQ(runProgram({"check", "-"}, run.sOut).iCode, 0);
    }
}

struct SetRefuseRow {
    const char* pRule;
    const char* pWhat;
    const char* pAttribute;
    const char* pValue;
    const char* pError;   // the one line, behind "oxaifc: "
};
const SetRefuseRow g_setRefusals[] = {
    {"an unknown entity", "#99", "Name", "x", "IN: there is no #99"},
    {"a type", "IFCWALL", "Name", "x", "IFCWALL is no number as #12 and no GlobalId of 22 characters"},
    {"an unknown attribute", "#6", "LngName", "x", "IfcBuilding has no attribute LngName; did you mean LongName?"},
    {"an attribute that nothing comes near", "#13", "Q", "x",
     "IfcCartesianPoint has no attribute Q; there are: Coordinates"},
    {"an inverse attribute", "#6", "IsDefinedBy", "#5",
     "IfcBuilding has no attribute IsDefinedBy; there are: GlobalId, OwnerHistory, Name, Description, "
     "ObjectType, "
     "ObjectPlacement, Representation, LongName, CompositionType, ElevationOfRefHeight, ElevationOfTerrain, "
     "BuildingAddress"},
    {"no value for a mandatory one", "#3", "Name", "$", "IfcMaterial.Name is mandatory"},
    {"a derived one", "#14", "Dimensions", "#13", "IfcSIUnit.Dimensions is derived from other attributes"},
    {"no number", "#6", "ElevationOfTerrain", "high", "IfcBuilding.ElevationOfTerrain: high is no number"},
    {"a number that is none", "#6", "ElevationOfTerrain", "nan", "IfcBuilding.ElevationOfTerrain: nan is no number"},
    {"a number beyond all", "#6", "ElevationOfTerrain", "1e999", "IfcBuilding.ElevationOfTerrain: 1e999 is no number"},
    {"a real for an integer", "#10", "Width", "1.5", "IfcPixelTexture.Width: 1.5 is no whole number of 32 bits"},
    {"a large integer", "#10", "Width", "3000000000",
     "IfcPixelTexture.Width: 3000000000 is no whole number of 32 bits"},
    {"unknown for a boolean", "#10", "RepeatS", "unknown",
     "IfcPixelTexture.RepeatS: unknown is neither true nor false"},
    {"no logical", "#12", "SelfIntersect", "maybe",
     "IfcBSplineSurfaceWithKnots.SelfIntersect: maybe is none of true, false, unknown"},
    {"an unknown enumerator", "#6", "CompositionType", ".PART.",
     "IfcBuilding.CompositionType: .PART. is no enumerator of IfcElementCompositionEnum; they are: COMPLEX, "
     "ELEMENT, "
     "PARTIAL"},
    {"an enumerator with half its points", "#6", "CompositionType", "XCOMPLEX.",
     "IfcBuilding.CompositionType: XCOMPLEX. is no enumerator of IfcElementCompositionEnum; they are: COMPLEX, "
     "ELEMENT, PARTIAL"},
    {"a select of a few types", "#19", "TextIndent", "5",
     "IfcTextStyleTextModel.TextIndent: 5 has no type of IfcSizeSelect in front, as in "
     "IFCDESCRIPTIVEMEASURE(value); there are: IFCDESCRIPTIVEMEASURE, IFCLENGTHMEASURE, "
     "IFCNORMALISEDRATIOMEASURE, IFCPOSITIVELENGTHMEASURE, IFCPOSITIVERATIOMEASURE, IFCRATIOMEASURE"},
    {"no number of an entity", "#5", "OwnerHistory", "me",
     "IfcRelDefinesByProperties.OwnerHistory: me is no IfcOwnerHistory, which is named by a number as #12"},
    {"a reference to nothing", "#5", "OwnerHistory", "#99",
     "IfcRelDefinesByProperties.OwnerHistory: #99 does not exist"},
    {"a reference to another type", "#5", "OwnerHistory", "#6",
     "IfcRelDefinesByProperties.OwnerHistory: #6 is an IfcBuilding, no IfcOwnerHistory"},
    {"a reference that a select does not take", "#5", "RelatingPropertyDefinition", "#6",
     "IfcRelDefinesByProperties.RelatingPropertyDefinition: #6 is an IfcBuilding, no "
     "IfcPropertySetDefinitionSelect"},
    {"an item of another type", "#7", "HasProperties", "(#4,#6)",
     "IfcPropertySet.HasProperties: #6 is an IfcBuilding, no IfcProperty"},
    {"a select without a type", "#4", "NominalValue", "abc",
     "IfcPropertySingleValue.NominalValue: abc has no type of IfcValue in front, as in "
     "IFCABSORBEDDOSEMEASURE(value); oxaifc schema IFC4 IfcValue tells them"},
    {"a select with a misspelt type", "#4", "NominalValue", "IFCLABL(x)",
     "IfcPropertySingleValue.NominalValue: IFCLABL(x) has no type of IfcValue in front, as in "
     "IFCABSORBEDDOSEMEASURE(value); did you mean IFCLABEL?"},
    {"a type that the select does not take", "#1", "Segments", "(IFCLABEL(x))",
     "IfcIndexedPolyCurve.Segments: IFCLABEL(x) has no type of IfcSegmentIndexSelect in front, as in "
     "IFCARCINDEX(value); there are: IFCARCINDEX, IFCLINEINDEX"},
    {"a value of a select that does not fit", "#4", "NominalValue", "IFCINTEGER(x)",
     "IfcPropertySingleValue.NominalValue: x is no whole number of 32 bits"},
    {"no list", "#13", "Coordinates", "1,2",
     "IfcCartesianPoint.Coordinates: 1,2 is no LIST [1:3] OF IfcLengthMeasure, which is written (a,b,c)"},
    {"too many items", "#13", "Coordinates", "(1,2,3,4)",
     "IfcCartesianPoint.Coordinates: (1,2,3,4) has 4 items; its type is LIST [1:3] OF IfcLengthMeasure"},
    {"no items", "#13", "Coordinates", "()",
     "IfcCartesianPoint.Coordinates: () has 0 items; its type is LIST [1:3] OF IfcLengthMeasure"},
    {"an empty item", "#13", "Coordinates", "(1,)", "IfcCartesianPoint.Coordinates:  is no number"},
    {"a quote that stays open", "#15", "MiddleNames", "(a,'b)",
     "IfcPerson.MiddleNames: (a,'b) has a quote or a parenthesis without its partner"},
    {"a parenthesis that stays open", "#15", "MiddleNames", "((a)",
     "IfcPerson.MiddleNames: ((a) has a quote or a parenthesis without its partner"},
    {"half a byte", "#9", "RasterCode", "00F",
     "IfcBlobTexture.RasterCode: 00F is no row of pairs of hexadecimal digits"},
    {"no byte", "#9", "RasterCode", "0x", "IfcBlobTexture.RasterCode: 0x is no row of pairs of hexadecimal digits"},
    {"a GlobalId that is too short", "#6", "GlobalId", "abc",
     "IfcBuilding.GlobalId: abc is no GlobalId of 22 characters"},
    {"a GlobalId of more than 128 bits", "#6", "GlobalId", "$cp60asVrO3R4Q9IgcHKIk",
     "IfcBuilding.GlobalId: $cp60asVrO3R4Q9IgcHKIk is no GlobalId of 22 characters"},
    {"the GlobalId that is none", "#6", "GlobalId", "0000000000000000000000",
     "IfcBuilding.GlobalId: 0000000000000000000000 is no GlobalId of 22 characters"},
    {"the GlobalId of another", "#6", "GlobalId", "25U8ymbNTHqR30wX1gEfmD",
     "IfcBuilding.GlobalId: 25U8ymbNTHqR30wX1gEfmD is the GlobalId of #7"},
    {"bytes that are no UTF-8", "#3", "Name", "a\xff", "IfcMaterial.Name: the text is no UTF-8"},
    {"a quote inside of quotes", "#3", "Name", "'it's'",
     "IfcMaterial.Name: 'it's' has a single quote inside; write ''"},
};

TEST(SetVerb, ValueThatDoesNotFitIsOneLineAndNoFile) {
    for (const SetRefuseRow& row : g_setRefusals) {
        SCOPED_TRACE(row.pRule);
        if (!boTakesWord(row.pValue)) continue;
        const TestFolder folder;
        const std::string sIn = folder.sFile("in.ifc", sSetModel());
        std::string sError = row.pError;
        if (sError.starts_with("IN: ")) sError.replace(0, 2, sIn);
        const ProgramRun run = runProgram({"set", sIn, row.pWhat, row.pAttribute, row.pValue, sIn});
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, "oxaifc: " + sError + "\n");
        EXPECT_EQ(sContent(sIn), sSetModel());
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"in.ifc"});
    }
}

TEST(SetVerb, ChangesTheFileItself) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sSetModel());
    for (const char* pName : {"first", "a longer second", "3"}) {
        EXPECT_EQ(runProgram({"set", sIn, "#3", "Name", pName, sIn}).iCode, 0);
        EXPECT_EQ(runProgram({"show", sIn, "#3", "--json"}).json()[0]["attributes"]["Name"], pName);
    }
    EXPECT_EQ(statements(sContent(sIn)).size(), statements(sSetModel()).size());
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"in.ifc"});
}

TEST(SetVerb, SimpleFormStaysOne) {
    const std::string sSimple = "Ifc file simple;\nIFC4;\n7;\n#7=IFCPOLYLINE((#9));\n#9=IFCCARTESIANPOINT((1.,2.));\n";
    const ProgramRun run = runProgram({"set", "-", "#9", "Coordinates", "(3,4)", "-"}, sSimple);
    EXPECT_EQ(run.iCode, 0);
    EXPECT_TRUE(run.sOut.starts_with("Ifc file simple;\nIFC4;\n7;\n#")) << run.sOut;
    EXPECT_EQ(statements(run.sOut),
              (std::multiset<std::string>{"#7=IFCPOLYLINE((#9));", "#9=IFCCARTESIANPOINT((3.,4.));"}));
}

TEST(SetVerb, GlobalIdIsUniqueInTheSimpleFormToo) {
    const ProgramRun run =
        runProgram({"set", "-", "#1", "GlobalId", "2cp60asVrO3R4Q9IgcHKIk", "-"},
                   "Ifc file simple;\nIFC4;\n*;\n#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kwi',$,$,$,$,$,$,$,$);\n"
                   "#2=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,$);\n");
    EXPECT_EQ(run.iCode, 2);
    EXPECT_EQ(run.sError, "oxaifc: IfcWall.GlobalId: 2cp60asVrO3R4Q9IgcHKIk is the GlobalId of #2\n");
}

TEST(SetVerb, FileWithErrorsGoesToAnotherFileOnly) {
    const std::string sFile = sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n#2=IFCTEAPOT();\n");
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sFile);
    const std::string sOut = (folder.path() / "out.ifc").string();
    EXPECT_EQ(runProgram({"set", sIn, "#1", "Name", "b", sIn}).iCode, 2);
    EXPECT_EQ(sContent(sIn), sFile);
    const ProgramRun run = runProgram({"set", sIn, "#1", "Name", "b", sOut});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sError, "oxaifc: " + sIn + ": 1 error while reading; oxaifc check tells them\n");
    EXPECT_EQ(sContent(sOut), sExchangeFile("IFC4", "#1=IFCMATERIAL('b',$,$);\n#2=IFCTEAPOT();\n"));
}

// With assignments too, since what could not be read stays in the text.
TEST(SetVerb, FileWithErrorsIsPatchedInItsPlace) {
    const TestFolder folder;
    const std::string sIn =
        folder.sFile("in.ifc", sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n#2=IFCTEAPOT();\n"));
    const ProgramRun run = runProgram({"set", sIn, "#1", "Name=b", sIn});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sError, "oxaifc: " + sIn + ": 1 error while reading; oxaifc check tells them\n");
    EXPECT_EQ(sContent(sIn), sExchangeFile("IFC4", "#1=IFCMATERIAL('b',$,$);\n#2=IFCTEAPOT();\n"));
}

// A house of two walls with one set and a door, in a file with its own ways of writing.
std::string sSetHouse() {
    return "ISO-10303-21;\r\nHEADER;\r\nFILE_DESCRIPTION((''),'2;1');\r\n/* by hand; */\r\n"
           "FILE_NAME('h','2020-02-02T00:00:00',(''),(''),'','','');\r\nFILE_SCHEMA(('IFC4'));\r\nENDSEC;\r\nDATA;\r\n"
           "#1= IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'South',$,$,$,$,$,$);\r\n"
           "#2= IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'North',$,$,$,$,$,$);\r\n"
           "#3= IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,'D1',$,$,$,$,$,2.1E0,$,$,$,$);\r\n"
           "#4= IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#1,#2),#5);\r\n"
           "#5= IFCPROPERTYSET('1XxWclp6bOHAdQixVqmAPd',$,'Pset_WallCommon',$,(#6));\r\n"
           "#6= IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);\r\n"
           "#9= IFCTEAPOT('spout;');\r\nENDSEC;\r\nEND-ISO-10303-21;\r\n";
}

// The lines that differ: "-" those of the first, "+" those of the second, GlobalIds that are not in the first as GUID.
std::string sLinesChanged(const std::string& sOld, const std::string& sNew) {
    std::vector<std::string> lines[2];
    for (const int i : {0, 1}) {
        std::istringstream stream(i ? sNew : sOld);
        for (std::string sLine; std::getline(stream, sLine);) lines[i].push_back(sLine);
    }
    std::string sText;
    for (const int i : {0, 1})
        for (const std::string& sLine : lines[i]) {
            if (std::find(lines[1 - i].begin(), lines[1 - i].end(), sLine) != lines[1 - i].end()) continue;
            std::string sShown = sLine.substr(0, sLine.find('\r'));
            const std::size_t iGuid = sShown.find("('") + 2;
            if (i && sShown.find("',$,", iGuid) == iGuid + 22 &&
                sOld.find(sShown.substr(iGuid, 22)) == std::string::npos)
                sShown.replace(iGuid, 22, "GUID");
            sText += (i ? "+" : "-") + sShown + '\n';
        }
    return sText;
}

struct AssignRow {
    const char* pRule;
    std::vector<std::string> words;   // between IN and OUT
    const char* pLines;               // that differ
    const char* pSummary;
};
const AssignRow g_assigns[] = {
    {"an attribute of one, by number",
     {"3", "Name=D2"},
     "-#3= IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,'D1',$,$,$,$,$,2.1E0,$,$,$,$);\n"
     "+#3= IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,'D2',$,$,$,$,$,2.1E0,$,$,$,$);\n",
     "1 element: 1 statement changed"},
    {"of one that is no element",
     {"#6", "Description=x"},
     "-#6= IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);\n"
     "+#6= IFCPROPERTYSINGLEVALUE('FireRating','x',IFCLABEL('F 30'),$);\n",
     "1 element: 1 statement changed"},
    {"by GlobalId, two attributes",
     {"3X5rmEjoXQ$f8Sn8KSdx0i", "Name=NULL", "overallheight=2"},
     "-#3= IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,'D1',$,$,$,$,$,2.1E0,$,$,$,$);\n"
     "+#3= IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,$,$,$,$,$,$,2.,$,$,$,$);\n",
     "1 element: 1 statement changed"},
    {"a property of all that share it",
     {"IfcWall", "Pset_WallCommon.FireRating=F 90"},
     "-#6= IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 30'),$);\n"
     "+#6= IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 90'),$);\n",
     "2 elements: 1 statement changed"},
    {"a property of one that shares it",
     {"Name=South", "Pset_WallCommon.FireRating=F 90"},
     "-#4= IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#1,#2),#5);\n"
     "+#4= IFCRELDEFINESBYPROPERTIES('0e_8SiFPnIEh3pPRu4cB6E',$,$,$,(#2),#5);\n"
     "+#10=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('F 90'),$);\n"
     "+#11=IFCPROPERTYSET('GUID',$,'Pset_WallCommon',$,(#10));\n"
     "+#12=IFCRELDEFINESBYPROPERTIES('GUID',$,$,$,(#1),#11);\n",
     "1 element: 1 statement changed, 3 added"},
    {"a property that is not there, and an attribute",
     {"IfcDoor + IfcWall", "Mine.Checked=TRUE", "ObjectType=x"},
     "-#1= IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'South',$,$,$,$,$,$);\n"
     "-#2= IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'North',$,$,$,$,$,$);\n"
     "-#3= IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,'D1',$,$,$,$,$,2.1E0,$,$,$,$);\n"
     "+#1= IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'South',$,'x',$,$,$,$);\n"
     "+#2= IFCWALL('2cp60asVrO3R4Q9IgcHKIk',$,'North',$,'x',$,$,$,$);\n"
     "+#3= IFCDOOR('3X5rmEjoXQ$f8Sn8KSdx0i',$,'D1',$,'x',$,$,$,2.1E0,$,$,$,$);\n"
     "+#10=IFCPROPERTYSINGLEVALUE('Checked',$,IFCBOOLEAN(.T.),$);\n"
     "+#11=IFCPROPERTYSET('GUID',$,'Mine',$,(#10));\n"
     "+#12=IFCRELDEFINESBYPROPERTIES('GUID',$,$,$,(#1,#2,#3),#11);\n",
     "3 elements: 3 statements changed, 3 added"},
    {"what is there already", {"IfcWall", "Pset_WallCommon.FireRating=F 30"}, "", "2 elements: nothing to change"},
    {"no value of what is not there", {"IfcDoor", "Mine.Checked=NULL"}, "", "1 element: nothing to change"},
};

TEST(SetVerb, AssignmentsChangeTheirStatementsAlone) {
    const std::string sTold = "1 error while reading; oxaifc check tells them\n";
    for (const AssignRow& row : g_assigns) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        const std::string sIn = folder.sFile("in.ifc", sSetHouse());
        const std::string sOut = (folder.path() / "out.ifc").string();
        const auto set = [&row](const std::string& sFrom, const std::string& sTo, std::string_view input = {}) {
            std::vector<std::string> words{"set", sFrom};
            words.insert(words.end(), row.words.begin(), row.words.end());
            words.push_back(sTo);
            return runProgram(words, input);
        };
        const ProgramRun run = set(sIn, sOut);
        EXPECT_EQ(run.iCode, 1) << "the teapot";
        EXPECT_EQ(run.sOut, std::string(row.pSummary) + "\n");
        EXPECT_EQ(run.sError, "oxaifc: " + sIn + ": " + sTold);
        const std::string sChanged = sContent(sOut);
        EXPECT_EQ(sLinesChanged(sSetHouse(), sChanged), row.pLines);
        // The second time there is nothing to change, in the place of the file too.
        const ProgramRun again = set(sOut, sOut);
        EXPECT_NE(again.sOut.find("nothing to change"), std::string::npos) << again.sOut;
        EXPECT_EQ(sContent(sOut), sChanged);
        // From a pipe to a pipe.
        const ProgramRun pipe = set("-", "-", sSetHouse());
        EXPECT_EQ(sLinesChanged(sSetHouse(), pipe.sOut), row.pLines);
        EXPECT_EQ(pipe.sError, "oxaifc: " + std::string(row.pSummary) + "\noxaifc: standard input: " + sTold);
        EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"in.ifc", "out.ifc"}));
    }
}

TEST(SetVerb, DryRunTellsWhatWouldChange) {
    const TestFolder folder;
    const std::string sIn = folder.sFile("in.ifc", sSetHouse());
    const ProgramRun run =
        runProgram({"set", sIn, "IfcElement", "Pset_WallCommon.FireRating=F 90", "Name=N", sIn, "--dry-run"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, "#1 IfcWall 'South'  Pset_WallCommon.FireRating: F 30 -> F 90\n"
                        "#1 IfcWall 'South'  Name: South -> N\n"
                        "#2 IfcWall 'North'  Pset_WallCommon.FireRating: F 30 -> F 90\n"
                        "#2 IfcWall 'North'  Name: North -> N\n"
                        "#3 IfcDoor 'D1'  Pset_WallCommon.FireRating: (none) -> F 90\n"
                        "#3 IfcDoor 'D1'  Name: D1 -> N\n"
                        "3 elements: 4 statements changed, 3 added\n");
    EXPECT_EQ(sContent(sIn), sSetHouse());
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"in.ifc"});
}

// With another format, or another order, the whole file is written.
TEST(SetVerb, AssignmentsGoIntoOtherFormsToo) {
    const std::string sSimple = "Ifc file simple;\nIFC4;\n*;\n#2=IFCMATERIAL('b',$,$);\n#1=IFCMATERIAL('a',$,$);\n";
    EXPECT_EQ(runProgram({"set", "-", "class=IfcMaterial", "Category=c", "-"}, sSimple).iCode, 2) << "no element";
    EXPECT_EQ(runProgram({"set", "-", "IfcMaterial", "Category=c", "-"}, sSimple).sOut,
              "Ifc file simple;\nIFC4;\n*;\n#1=IFCMATERIAL('a',$,'c');\n#2=IFCMATERIAL('b',$,'c');\n");
    const ProgramRun ordered = runProgram({"set", "-", "IfcWall", "Tag=t", "-", "--order", "number"}, sSetHouse());
    EXPECT_TRUE(statements(ordered.sOut).contains("#1=IFCWALL('1CCJ9i1$jSdgYVC2yzHPtC',$,'South',$,$,$,$,'t',$);"))
        << ordered.sOut;
    EXPECT_EQ(ordered.sOut.find("TEAPOT"), std::string::npos);
}

struct MisuseRow {
    const char* pRule;
    std::vector<std::string> words;   // between IN and OUT
    const char* pError;               // the one line, behind "oxaifc: "
};
const MisuseRow g_misuses[] = {
    {"nothing selected", {"IfcSlab", "Name=x"}, "IN: nothing is selected by IfcSlab"},
    {"a property that nobody has",
     {"Pset_WallComon.FireRating=F 30", "Name=x"},
     "IN: nothing is selected by Pset_WallComon.FireRating=F 30; no element has a set Pset_WallComon; did you mean "
     "Pset_WallCommon?"},
    {"an unknown class",
     {"IfcWal", "Name=x"},
     "IN: column 1: IFC4 has no entity type IfcWal; did you mean IfcWall, IfcWallType, IfcWallStandardCase, "
     "IfcWallElementedCase?"},
    {"a query with a fault", {"IfcWall,", "Name=x"}, "set: QUERY, column 9: a name is expected"},
    {"a number that is not there", {"77", "Name=x"}, "IN: there is no #77"},
    {"an unknown attribute", {"IfcWall", "Nme=x"}, "IN: #1: IfcWall has no attribute Nme; did you mean Name?"},
    {"a value that does not fit",
     {"IfcDoor", "OverallHeight=high"},
     "IN: #3: IfcDoor.OverallHeight: high is no number"},
    {"a property that does not fit", {"IfcDoor", "A.B=IFCREAL(high)"}, "IN: #3: A.B: high is no number"},
    {"one that has no sets",
     {"#6", "A.B=1"},
     "IN: A.B: IfcPropertySingleValue #6 is of a type that has no property sets"},
    {"a second word without =",
     {"IfcWall", "Name=x", "Tag"},
     "set: Tag: has no = behind the name, as in Name=South or Pset_WallCommon.FireRating=F90"},
    {"three words without =",
     {"#1", "Name", "x", "y"},
     "set: Name: has no =, as in Name=South or Pset_WallCommon.FireRating=F90"},
    {"what can only be asked",
     {"IfcWall", "storey=EG"},
     "set: storey=EG: storey can be asked for and not set; what can be are "
     "attributes and properties"},
    {"a GlobalId for two",
     {"IfcWall", "GlobalId=0GBXQqFNTSPQ9PR7g3FFqm"},
     "IN: #2: IfcWall.GlobalId: 0GBXQqFNTSPQ9PR7g3FFqm is the GlobalId of #1"},
    {"a dry run of the other form",
     {"#1", "Name", "x", "--dry-run"},
     "set: --dry-run goes with ASSIGNMENT, as in Name=South"},
};

TEST(SetVerb, MisuseIsOneLineAndNoFile) {
    for (const MisuseRow& row : g_misuses) {
        SCOPED_TRACE(row.pRule);
        const TestFolder folder;
        const std::string sIn = folder.sFile("in.ifc", sSetHouse());
        std::vector<std::string> words{"set", sIn};
        words.insert(words.end(), row.words.begin(), row.words.end());
        words.push_back(sIn);
        std::string sError = row.pError;
        if (sError.starts_with("IN: ")) sError.replace(0, 2, sIn);
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, "oxaifc: " + sError + "\n");
        EXPECT_EQ(sContent(sIn), sSetHouse());
        EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"in.ifc"});
    }
}

TEST(SetVerb, FilesThatCantBePatchedAreNotWritten) {
    const TestFolder folder;
    const std::string sTwice = sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n#1=IFCMATERIAL('b',$,$);\n");
    const std::string sIn = folder.sFile("in.ifc", sTwice);
    const ProgramRun twice = runProgram({"set", sIn, "1", "Name=c", sIn});
    EXPECT_EQ(twice.iCode, 2);
    EXPECT_EQ(twice.sError, "oxaifc: " + sIn + ": #1 stands twice, in line 8 and in line 9, so it can't be changed\n");
    EXPECT_EQ(sContent(sIn), sTwice);
    const std::string sWhole = sExchangeFile("IFC4", "#1=IFCMATERIAL('a',$,$);\n");
    const std::string sCut = sWhole.substr(0, sWhole.find("ENDSEC;\nEND-ISO"));
    const std::string sPath = folder.sFile("cut.ifc", sCut);
    const ProgramRun cut = runProgram({"set", sPath, "1", "Name=c", sPath});
    EXPECT_EQ(cut.iCode, 2);
    EXPECT_EQ(cut.sError.find("oxaifc: " + sPath + ": not read to the end: "), 0U) << cut.sError;
    EXPECT_EQ(sContent(sPath), sCut);
}

}   // namespace
}   // namespace oxa::test
