// SPDX-License-Identifier: Apache-2.0
// "oxaifc props": what it tells of one element, as text and as typed JSON.

#include <gtest/gtest.h>

#include <utility>

#include "tools/ProgramRun.h"
#include "tools/verbs/ProjectParts.h"

namespace oxa::test {
namespace {

// A wall with a type; sets of both, one of one name. The same statements in IFC2X3 and IFC4.
std::string sWallFile(std::string_view schema) {
    return sExchangeFile(
        schema,
        std::string(g_projectParts) +
            "#1=IFCPROJECT('0YvctVUKr0kugbFTf53O9L',#90,'P',$,$,$,$,(#95),#98);\n"
            "#4=IFCBUILDINGSTOREY('1XxWclp6bOHAdQixVqmAPd',#90,'EG',$,$,$,$,$,.ELEMENT.,0.);\n"
            "#5=IFCRELCONTAINEDINSPATIALSTRUCTURE('3Q2KuEDczSmQAFmYKnklVN',#90,$,$,(#10),#4);\n"
            "#10=IFCDOOR('28ORztRAzL4xGwAknWjIBd',#90,'D1',$,$,$,$,$,2010.,885.);\n"
            "#11=IFCDOORSTYLE('3Y36qJBUbPoPBLQIGDcyZl',#90,'T',$,$,(#20),$,$,.SINGLE_SWING_LEFT.,.WOOD.,.F.,.F.);\n"
            "#12=IFCRELDEFINESBYTYPE('16CQyJIiXRP8ufR_Zdcm7d',#90,$,$,(#10),#11);\n"
            "#20=IFCPROPERTYSET('0qltlX545U7f6hmhHOJBDu',#90,'Pset_DoorCommon',$,(#21,#22));\n"
            "#21=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('T 30'),$);\n"
            "#22=IFCPROPERTYENUMERATEDVALUE('Status',$,(IFCLABEL('NEW'),IFCLABEL('OLD')),$);\n"
            "#23=IFCPROPERTYSET('00MPTWCfrN7ReR2sdMzhiQ',#90,'Pset_DoorCommon',$,(#24,#25));\n"
            "#24=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('T 90'),$);\n"
            "#25=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);\n"
            "#26=IFCRELDEFINESBYPROPERTIES('2r2Ehif91MMfPf_o00luAO',#90,$,$,(#10),#23);\n"
            "#27=IFCELEMENTQUANTITY('0Pih$XE9TIYuneGjYeuegY',#90,'Qto_DoorBaseQuantities',$,$,(#28));\n"
            "#28=IFCQUANTITYLENGTH('Width',$,#99,885.);\n"
            "#29=IFCRELDEFINESBYPROPERTIES('1CDvOfo0vNLeD0CACyxo_i',#90,$,$,(#10),#27);\n"
            "#30=IFCMATERIAL('Oak');\n"
            "#31=IFCRELASSOCIATESMATERIAL('1rxtIM0wHIj9CNuzB6o6cT',#90,$,$,(#11),#30);\n"
            "#32=IFCCLASSIFICATION('BSI','2015',$,'Uniclass');\n"
            "#33=IFCCLASSIFICATIONREFERENCE($,'Ss_25','Doors',#32);\n"
            "#34=IFCRELASSOCIATESCLASSIFICATION('25z16jWc9Mugb$ziN7i5Ky',#90,$,$,(#10),#33);\n");
}

constexpr const char* g_pTypedBegin = R"({"id":10,"type":"IfcDoor","attributes":{
    "GlobalId":"28ORztRAzL4xGwAknWjIBd","OwnerHistory":{"ref":90},"Name":"D1","Description":null,"ObjectType":null,
    "ObjectPlacement":null,"Representation":null,"Tag":null,"OverallHeight":2010.0,"OverallWidth":885.0)";
constexpr const char* g_pTypedEnd = R"(},
    "psets":{"Pset_DoorCommon":{"FireRating":"T 90","IsExternal":true,"Status":["NEW","OLD"]}},
    "quantities":{"Qto_DoorBaseQuantities":{"Width":885.0}},
    "typeObject":{"id":11,"type":"IfcDoorStyle","name":"T"},
    "storey":{"id":4,"type":"IfcBuildingStorey","name":"EG"},
    "container":{"id":4,"type":"IfcBuildingStorey","name":"EG"},
    "materials":[{"name":"Oak","source":"type"}],
    "classifications":[{"system":"Uniclass","code":"Ss_25","name":"Doors","source":"instance"}]})";

TEST(PropsVerb, JsonIsTyped) {
    const std::pair<const char*, const char*> rows[] = {
        {"IFC2X3", ""}, {"IFC4", R"(,"PredefinedType":null,"OperationType":null,"UserDefinedOperationType":null)"}};
    for (const auto& [pSchema, pMore] : rows) {
        SCOPED_TRACE(pSchema);
        for (const char* pWhat : {"10", "#10", "28ORztRAzL4xGwAknWjIBd"}) {
            const ProgramRun run = runProgram({"props", "-", pWhat, "--json"}, sWallFile(pSchema));
            EXPECT_EQ(run.iCode, 0);
            EXPECT_EQ(run.json(), Json::parse(std::string(g_pTypedBegin) + pMore + g_pTypedEnd)) << run.sOut;
        }
    }
}

TEST(PropsVerb, TextTellsUnitsAndSources) {
    const ProgramRun run = runProgram({"props", "-", "10"}, sWallFile("IFC2X3"));
    EXPECT_EQ(run.sOut, "#10 IfcDoor D1\n"
                        "  GlobalId                  28ORztRAzL4xGwAknWjIBd\n"
                        "  OwnerHistory              #90\n"
                        "  Name                      D1\n"
                        "  Description\n"
                        "  ObjectType\n"
                        "  ObjectPlacement\n"
                        "  Representation\n"
                        "  Tag\n"
                        "  OverallHeight             2010 mm\n"
                        "  OverallWidth              885 mm\n"
                        "  type                      #11 IfcDoorStyle T\n"
                        "  storey                    #4 IfcBuildingStorey EG\n"
                        "  container                 #4 IfcBuildingStorey EG\n"
                        "  material                  Oak (of the type)\n"
                        "  classification            Uniclass Ss_25 Doors\n"
                        "Pset_DoorCommon\n"
                        "  FireRating                T 90\n"
                        "  IsExternal                true\n"
                        "  Status                    (NEW,OLD) (of the type)\n"
                        "Qto_DoorBaseQuantities\n"
                        "  Width                     885 mm\n");
}

struct ValueRow {
    const char* pSchema;
    const char* pStatement;   // #1
    const char* pAttributes;
};
const ValueRow g_values[] = {
    {"IFC4", "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('F 90'),#2);\n#2=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n",
     R"({"Name":"a","Description":null,"NominalValue":{"type":"IfcLabel","value":"F 90"},"Unit":{"ref":2}})"},
    {"IFC4", "#1=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n",
     R"({"Dimensions":{"derived":true},"UnitType":"LENGTHUNIT","Prefix":null,"Name":"METRE"})"},
    {"IFC4", "#1=IFCCARTESIANPOINT((0.1,-2.,3.E20));\n", R"({"Coordinates":[0.1,-2.0,3e20]})"},
    {"IFC4", "#1=IFCPROPERTYLISTVALUE('a',$,(IFCINTEGER(1),IFCLOGICAL(.U.)),$);\n",
     R"({"Name":"a","Description":null,"ListValues":[{"type":"IfcInteger","value":1},)"
     R"({"type":"IfcLogical","value":"UNKNOWN"}],"Unit":null})"},
    {"IFC2X3", "#1=IFCPROPERTYSINGLEVALUE('a','b',IFCREAL(0.5),$);\n",
     R"({"Name":"a","Description":"b","NominalValue":{"type":"IfcReal","value":0.5},"Unit":null})"},
};

TEST(PropsVerb, Values) {
    for (const ValueRow& row : g_values) {
        SCOPED_TRACE(row.pStatement);
        const ProgramRun run = runProgram({"props", "-", "1", "--json"}, sExchangeFile(row.pSchema, row.pStatement));
        EXPECT_EQ(run.json()["attributes"], Json::parse(row.pAttributes)) << run.sOut;
    }
}

TEST(PropsVerb, WrongWhatIsOneLineAndTwo) {
    const std::pair<const char*, const char*> rows[] = {
        {"990", "standard input: there is no #990"},
        {"1XxWclp6bOHAdQixVqmAP0", "standard input: there is no GlobalId 1XxWclp6bOHAdQixVqmAP0"},
        {"IfcDoor", "IfcDoor is no number as #12 and no GlobalId of 22 characters"},
    };
    for (const auto& [pWhat, pError] : rows) {
        const ProgramRun run = runProgram({"props", "-", pWhat}, sWallFile("IFC4"));
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, std::string("oxaifc: ") + pError + "\n");
    }
}

}   // namespace
}   // namespace oxa::test
