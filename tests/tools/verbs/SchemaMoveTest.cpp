// SPDX-License-Identifier: Apache-2.0
// "oxaifc convert --schema": what reaches another schema, and what is told of the rest.

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

// What IFC2X3 asks of everything with a GlobalId, as #9; the same text in both schemas.
constexpr const char* g_pOwner =
    "#9=IFCOWNERHISTORY(#10,#12,$,.ADDED.,$,$,$,0);\n#10=IFCPERSONANDORGANIZATION(#14,#13,$);\n"
    "#12=IFCAPPLICATION(#13,'1','a','a');\n#13=IFCORGANIZATION($,'o',$,$,$);\n#14=IFCPERSON($,'p',$,$,$,$,$,$"
    ");\n";

struct MoveRow {
    const char* pRule;
    const char* pFrom;
    const char* pTo;
    std::string sData;                    // beside the owner
    std::multiset<std::string> written;   // likewise
    std::string sTold;                    // all of standard error
};
std::vector<MoveRow> moveRows() {
    const std::string sSite = "'2cp60asVrO3R4Q9IgcHKIk',#9,'S',$,$,$,$,$,.ELEMENT.,(48,8,15,-1),$,120.5,$,$);";
    return {
        {"nothing but the owner", "IFC4", "IFC2X3", "", {}, ""},
        {"attributes that are new stay without a value",
         "IFC2X3",
         "IFC4",
         "#7=IFCMATERIAL('Oak');\n",
         {"#7=IFCMATERIAL('Oak',$,$);"},
         ""},
        {"attributes that are gone",
         "IFC4",
         "IFC2X3",
         "#7=IFCMATERIAL('Oak','d',$);\n#8=IFCMATERIAL('Elm','d','c');\n",
         {"#7=IFCMATERIAL('Oak');", "#8=IFCMATERIAL('Elm');"},
         "values that have no place in IFC2X3:\n           1  IFCMATERIAL.Category\n           2  "
         "IFCMATERIAL.Description\n"},
        {"every kind of value",
         "IFC2X3",
         "IFC4",
         "#1=IFCSITE(" + sSite +
             "\n#2=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
             "#3=IFCPROPERTYSINGLEVALUE('\\X2\\00DC\\X0\\',$,IFCLOGICAL(.U.),$);\n#4=IFCTABLE('t',(#7));\n"
             "#5=IFCPOLYLINE((#6,#6));\n#6=IFCCARTESIANPOINT((1.,2.5));\n#7=IFCTABLEROW((IFCBOOLEAN(.T.),"
             "IFCREAL(1.)),.F.);\n",
         {"#1=IFCSITE(" + sSite, "#2=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);",
          "#3=IFCPROPERTYSINGLEVALUE('\\X\\DC',$,IFCLOGICAL(.U.),$);", "#4=IFCTABLE('t',(#7),$);",
          "#5=IFCPOLYLINE((#6,#6));", "#6=IFCCARTESIANPOINT((1.,2.5));",
          "#7=IFCTABLEROW((IFCBOOLEAN(.T.),IFCREAL(1.)),.F.);"},
         ""},
        {"a type that is gone, and what refers to it",
         "IFC2X3",
         "IFC4",
         "#1=IFCCLASSIFICATION('s','e',#2,'n');\n#2=IFCCALENDARDATE(1,12,2018);\n",
         {"#1=IFCCLASSIFICATION('s','e',$,'n',$,$,$);"},
         "left out, of types that are not in IFC4:\n           1  IFCCALENDARDATE\n"
         "values that have no place in IFC4:\n           1  IFCCLASSIFICATION.EditionDate\n"},
        {"a type whose supertype is there",
         "IFC4",
         "IFC2X3",
         "#1=IFCWALLELEMENTEDCASE('2cp60asVrO3R4Q9IgcHKIk',#9,'W',$,$,$,$,$,.SHEAR.);\n"
         "#2=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,#1,(#1));\n",
         {"#1=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',#9,'W',$,$,$,$,$);",
          "#2=IFCRELAGGREGATES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,#1,(#1));"},
         "of another type in IFC2X3:\n           1  IFCWALLELEMENTEDCASE as IFCWALL\n"
         "values that have no place in IFC2X3:\n           1  IFCWALLELEMENTEDCASE.PredefinedType\n"},
        {"members of a set that are gone",
         "IFC4",
         "IFC2X3",
         "#4=IFCGEOMETRICSET((#5,#6,#7));\n#5=IFCCARTESIANPOINT((1.,2.));\n#6=IFCINDEXEDPOLYCURVE(#8,$,$);\n"
         "#7=IFCINDEXEDPOLYCURVE(#8,$,$);\n#8=IFCCARTESIANPOINTLIST2D(((1.,2.)));\n",
         {"#4=IFCGEOMETRICSET((#5));", "#5=IFCCARTESIANPOINT((1.,2.));"},
         "left out, of types that are not in IFC2X3:\n           1  IFCCARTESIANPOINTLIST2D\n"
         "           2  IFCINDEXEDPOLYCURVE\n"
         "values that have no place in IFC2X3:\n           2  IFCGEOMETRICSET.Elements\n"},
        {"an enumerator that is gone",
         "IFC4",
         "IFC2X3",
         "#1=IFCOWNERHISTORY(#10,#12,$,.MODIFIED.,$,$,$,0);\n#2=IFCOWNERHISTORY(#10,#12,$,.NOTDEFINED.,$,$,$,"
         "0);\n",
         {"#1=IFCOWNERHISTORY(#10,#12,$,.MODIFIED.,$,$,$,0);", "#2=IFCOWNERHISTORY(#10,#12,$,$,$,$,$,0);"},
         "values that have no place in IFC2X3:\n           1  IFCOWNERHISTORY.ChangeAction\n"
         "oxaifc: standard output: #2 IfcOwnerHistory: The mandatory attribute ChangeAction has no value.\n"},
        {"a type of a select's value that is gone",
         "IFC4",
         "IFC2X3",
         "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCDATE('2020-01-01'),$);\n#2=IFCPROPERTYSINGLEVALUE('b',$,"
         "IFCLABEL('x'),$);\n",
         {"#1=IFCPROPERTYSINGLEVALUE('a',$,$,$);", "#2=IFCPROPERTYSINGLEVALUE('b',$,IFCLABEL('x'),$);"},
         "values that have no place in IFC2X3:\n           1  IFCPROPERTYSINGLEVALUE.NominalValue\n"},
        {"items of a list of selects",
         "IFC4",
         "IFC2X3",
         "#1=IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLABEL('x'),IFCDATE('2020-01-01'),IFCREAL(1.5),IFCDATE('d'))"
         ",$);\n",
         {"#1=IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLABEL('x'),IFCREAL(1.5)),$);"},
         "values that have no place in IFC2X3:\n           2  "
         "IFCPROPERTYENUMERATEDVALUE.EnumerationValues\n"},
        {"from a select to a reference",
         "IFC4",
         "IFC2X3",
         "#1=IFCRELDEFINESBYPROPERTIES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,(#2),#3);\n"
         "#2=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',#9,$,$,$,$,$,$,$);\n"
         "#3=IFCPROPERTYSET('0e_8SiFPnIEh3pPRu4cB6E',#9,$,$,(#4));\n#4=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n",
         {"#1=IFCRELDEFINESBYPROPERTIES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,(#2),#3);",
          "#2=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',#9,$,$,$,$,$,$);",
          "#3=IFCPROPERTYSET('0e_8SiFPnIEh3pPRu4cB6E',#9,$,$,(#4));", "#4=IFCPROPERTYSINGLEVALUE('a',$,$,$);"},
         ""},
        {"from a list in a select to a reference",
         "IFC4",
         "IFC2X3",
         "#1=IFCRELDEFINESBYPROPERTIES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,(#2),IFCPROPERTYSETDEFINITIONSET((#3,#5)));\n"
         "#2=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',#9,$,$,$,$,$,$,$);\n"
         "#3=IFCPROPERTYSET('0e_8SiFPnIEh3pPRu4cB6E',#9,$,$,(#4));\n#4=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n"
         "#5=IFCPROPERTYSET('3X5rmEjoXQ$f8Sn8KSdx0i',#9,$,$,(#4));\n",
         {"#1=IFCRELDEFINESBYPROPERTIES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,(#2),$);",
          "#2=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',#9,$,$,$,$,$,$);",
          "#3=IFCPROPERTYSET('0e_8SiFPnIEh3pPRu4cB6E',#9,$,$,(#4));", "#4=IFCPROPERTYSINGLEVALUE('a',$,$,$);",
          "#5=IFCPROPERTYSET('3X5rmEjoXQ$f8Sn8KSdx0i',#9,$,$,(#4));"},
         "values that have no place in IFC2X3:\n           1  IFCRELDEFINESBYPROPERTIES.RelatingPropertyDefinition\n"
         "oxaifc: standard output: #1 IfcRelDefinesByProperties: The mandatory attribute RelatingPropertyDefinition "
         "has no "
         "value.\n"},
        {"from a reference to a select",
         "IFC2X3",
         "IFC4",
         "#1=IFCRELDEFINESBYPROPERTIES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,(#2),#3);\n"
         "#2=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',#9,$,$,$,$,$,$);\n"
         "#3=IFCPROPERTYSET('0e_8SiFPnIEh3pPRu4cB6E',#9,$,$,(#4));\n#4=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n",
         {"#1=IFCRELDEFINESBYPROPERTIES('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,(#2),#3);",
          "#2=IFCWALL('2cp60asVrO3R4Q9IgcHKIk',#9,$,$,$,$,$,$,$);",
          "#3=IFCPROPERTYSET('0e_8SiFPnIEh3pPRu4cB6E',#9,$,$,(#4));", "#4=IFCPROPERTYSINGLEVALUE('a',$,$,$);"},
         ""},
        {"from a set to a list",
         "IFC2X3",
         "IFC4",
         "#1=IFCRELNESTS('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,#2,(#3,#2));\n#2=IFCSITE(" + sSite +
             "\n#3=IFCSITE('3X5rmEjoXQ$f8Sn8KSdx0i',#9,$,$,$,$,$,$,.ELEMENT.,$,$,$,$,$);\n",
         {"#1=IFCRELNESTS('1CCJ9i1$jSdgYVC2yzHPtC',#9,$,$,#2,(#3,#2));", "#2=IFCSITE(" + sSite,
          "#3=IFCSITE('3X5rmEjoXQ$f8Sn8KSdx0i',#9,$,$,$,$,$,$,.ELEMENT.,$,$,$,$,$);"},
         ""},
        {"mandatory and without a value",
         "IFC4",
         "IFC2X3",
         "#1=IFCSITE('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,.ELEMENT.,$,$,$,$,$);\n",
         {"#1=IFCSITE('2cp60asVrO3R4Q9IgcHKIk',$,$,$,$,$,$,$,.ELEMENT.,$,$,$,$,$);"},
         "mandatory in IFC2X3 and without a value:\n           1  IFCSITE.OwnerHistory\n"
         "oxaifc: standard output: #1 IfcSite: The mandatory attribute OwnerHistory has no value.\n"},
        {"the project itself",
         "IFC4",
         "IFC4X3_ADD2",
         "#1=IFCPROJECT('0TdSR4dSbLuwdbL5HLUvM0',#9,$,$,$,$,$,$,$);\n",
         {"#1=IFCPROJECT('0TdSR4dSbLuwdbL5HLUvM0',#9,$,$,$,$,$,$,$);"},
         ""},
    };
}

// A file of one schema, moved to another; everything is written.
ProgramRun moved(const std::string& sFile, const char* pTo, const std::vector<std::string>& options = {}) {
    std::vector<std::string> words{"convert", "--all", "--single-threaded", "-", "-", "--schema", pTo};
    words.insert(words.end(), options.begin(), options.end());
    return runProgram(words, sFile);
}

TEST(SchemaMove, WhatHasAPlaceIsMovedAndTheRestIsTold) {
    for (const MoveRow& row : moveRows()) {
        SCOPED_TRACE(row.pRule);
        const ProgramRun run = moved(sExchangeFile(row.pFrom, row.sData + g_pOwner), row.pTo);
        std::multiset<std::string> expected = statements(g_pOwner);
        expected.insert(row.written.begin(), row.written.end());
        EXPECT_EQ(statements(run.sOut), expected);
        EXPECT_EQ(run.sError, row.sTold);
        EXPECT_EQ(run.iCode, row.sTold.empty() ? 0 : 1);
        EXPECT_NE(run.sOut.find("FILE_SCHEMA(('" + std::string(row.pTo) + "'));"), std::string::npos);
        // What was written reads without an error, as far as nothing mandatory is missing.
        if (row.sTold.find("mandatory") == std::string::npos) {
            EXPECT_EQ(runProgram({"check", "-"}, run.sOut).iCode, 0);
        }
    }
}

TEST(SchemaMove, WhatBothSchemasHaveComesBackAsItWas) {
    for (const MoveRow& row : moveRows()) {
        if (!row.sTold.empty()) continue;
        SCOPED_TRACE(row.pRule);
        const std::string sFile = sExchangeFile(row.pFrom, row.sData + g_pOwner);
        const ProgramRun back = moved(moved(sFile, row.pTo).sOut, row.pFrom);
        EXPECT_EQ(back.sError, "");
        const TestFolder folder;
        EXPECT_EQ(runProgram({"diff", folder.sFile("a.ifc", sFile), folder.sFile("b.ifc", back.sOut)}).sOut,
                  "no difference\n");
    }
}

TEST(SchemaMove, SampleKeepsItsEntitiesNumbersAndRelations) {
    // Without --all: every wall is reached over the inverse attributes of the new schema.
    const ProgramRun run = runProgram({"convert", sExample("house-ifc2x3.ifc"), "-", "--schema", "ifc4"});
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sError, "left out, of types that are not in IFC4:\n"
                          "           1  IFCCALENDARDATE\n"
                          "values that have no place in IFC4:\n"
                          "           1  IFCCLASSIFICATION.EditionDate\n"
                          "           3  IFCCLASSIFICATIONREFERENCE.ItemReference\n"
                          "           1  IFCORGANIZATION.Id\n"
                          "           1  IFCPERSON.Id\n"
                          "           1  IFCROOF.ShapeType\n"
                          "           2  IFCSPACE.InteriorOrExteriorSpace\n");
    EXPECT_EQ(statements(run.sOut).size(), 399U);
    EXPECT_EQ(runProgram({"check", "-"}, run.sOut).iCode, 0);
    const Json before = runProgram({"show", sExample("house-ifc2x3.ifc"), "IFCWALLSTANDARDCASE", "--json"}).json();
    const Json after = runProgram({"show", "-", "IFCWALLSTANDARDCASE", "--json"}, run.sOut).json();
    ASSERT_EQ(before.size(), after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        const std::string sOld = before[i]["statement"];
        EXPECT_EQ(after[i]["statement"], sOld.substr(0, sOld.size() - 2) + ",$);") << "one attribute more";
    }
}

// Schemas of the user's own may say anything under the names of others.
TEST(SchemaMove, NamesWithAnotherMeaningAreLost) {
    const TestFolder folder;
    const std::string sExpress = folder.sFile(
        "tiny.exp",
        "SCHEMA TINY;\nTYPE IfcIdentifier = STRING; END_TYPE;\nTYPE IfcLabel = REAL; END_TYPE;\n"
        "TYPE IfcText = STRING; END_TYPE;\nTYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;\n"
        "TYPE IfcValue = SELECT(IfcLabel, IfcText, IfcGloballyUniqueId); END_TYPE;\n"
        "TYPE IfcNullStyle = ENUMERATION OF (NULL, OTHER); END_TYPE;\n"
        "TYPE IfcPresentationStyleSelect = SELECT(IfcNullStyle); END_TYPE;\n"
        "ENTITY IfcPropertySingleValue; Name : IfcIdentifier; NominalValue : OPTIONAL IfcValue; END_ENTITY;\n"
        "ENTITY IfcPresentationStyleAssignment; Styles : SET [1:?] OF IfcPresentationStyleSelect; END_ENTITY;\n"
        "ENTITY Thing; END_ENTITY;\nENTITY IfcMaterial SUBTYPE OF (Thing); Name : IfcText; END_ENTITY;\n"
        "ENTITY IfcCartesianPoint SUBTYPE OF (Thing); Coordinates : LIST [1:3] OF REAL; END_ENTITY;\n"
        "ENTITY IfcPolyline; Points : LIST [2:?] OF Thing; END_ENTITY;\nEND_SCHEMA;\n");
    const ProgramRun run = runProgram(
        {"convert", "--all", "--single-threaded", "--schema-file", sExpress, "--schema", "IFC4", "-", "-"},
        sExchangeFile("TINY", "#1=IFCPROPERTYSINGLEVALUE('a',IFCLABEL(1.5));\n"
                              "#2=IFCPROPERTYSINGLEVALUE('b',IFCTEXT('t'));\n"
                              "#3=IFCPROPERTYSINGLEVALUE('c',IFCGLOBALLYUNIQUEID('3qt5KnRY9OSu4BNT4B7kwi'));\n"
                              "#4=IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.OTHER.),IFCNULLSTYLE(.NULL.)));\n"
                              "#5=IFCMATERIAL('m');\n#6=IFCCARTESIANPOINT((1.,2.));\n"
                              "#7=IFCPOLYLINE((#6,#5,#6));\n"));
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(statements(run.sOut),
              (std::multiset<std::string>{
                  "#1=IFCPROPERTYSINGLEVALUE('a',$,$,$);", "#2=IFCPROPERTYSINGLEVALUE('b',$,IFCTEXT('t'),$);",
                  "#3=IFCPROPERTYSINGLEVALUE('c',$,$,$);", "#4=IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.)));",
                  "#5=IFCMATERIAL('m',$,$);", "#6=IFCCARTESIANPOINT((1.,2.));", "#7=IFCPOLYLINE((#6,#6));"}));
    EXPECT_EQ(run.sError, "values that have no place in IFC4:\n           1  IFCPOLYLINE.Points\n"
                          "           1  IFCPRESENTATIONSTYLEASSIGNMENT.Styles\n"
                          "           2  IFCPROPERTYSINGLEVALUE.NominalValue\n");
}

TEST(SchemaMove, SameSchemaIsNoMove) {
    const ProgramRun plain = runProgram({"convert", "--single-threaded", sExample("house-ifc4.ifc"), "-"});
    const ProgramRun run =
        runProgram({"convert", "--single-threaded", sExample("house-ifc4.ifc"), "-", "--schema", "IFC4"});
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sError, plain.sError);
    EXPECT_EQ(run.sOut, plain.sOut);
}

TEST(SchemaMove, SimpleFormAndNewNumbers) {
    const ProgramRun run =
        runProgram({"convert", "--all", "--renumber", "--single-threaded", "-", "-", "--schema", "IFC2X3"},
                   "Ifc file simple;\nIFC4;\n7;\n#7=IFCPOLYLINE((#9));\n#9=IFCCARTESIANPOINT((1.,2.));\n");
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sError, "");
    EXPECT_EQ(statements(run.sOut).size(), 2U);
    EXPECT_NE(run.sOut.find("FILE_SCHEMA(('IFC2X3'));"), std::string::npos);
}

TEST(SchemaMove, ReferenceToNothingIsLost) {
    const ProgramRun run =
        moved(sExchangeFile("IFC2X3", "#1=IFCPOLYLINE((#98,#2,#99));\n#2=IFCCARTESIANPOINT((0.,0.));\n"), "IFC4");
    EXPECT_EQ(run.iCode, 1);
    EXPECT_TRUE(statements(run.sOut).contains("#1=IFCPOLYLINE((#2));"));
    EXPECT_TRUE(run.sError.starts_with("values that have no place in IFC4:\n           2  IFCPOLYLINE.Points\n"))
        << run.sError;
}

TEST(SchemaMove, UnknownSchemaIsToldBeforeAnythingIsWritten) {
    const TestFolder folder;
    const std::string sOut = folder.sFile("out.ifc", "old");
    const ProgramRun run = runProgram({"convert", sExample("house-ifc4.ifc"), sOut, "--schema", "IFC5"});
    EXPECT_EQ(run.iCode, 2);
    EXPECT_TRUE(run.sError.starts_with("oxaifc: ")) << run.sError;
    EXPECT_EQ(sContent(sOut), "old");
}

}   // namespace
}   // namespace oxa::test
