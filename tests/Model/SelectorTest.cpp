// SPDX-License-Identifier: Apache-2.0
// Queries over a small house in three schema families, what is wrong with a query, and hints.
#include <string>

#include "Model/HouseText.h"
#include "Model/Selector.h"

namespace oxa::test {

namespace {

// "QueryError: <what>" as well.
template <class Function>
std::string sRefused(Function&& function) {
    try {
        return sThrown(function);
    } catch (const QueryError& error) {
        return std::string("QueryError: ") + error.what();
    }
}

std::string sHints(const Selection& selection) {
    std::string sText;
    for (const std::string& sHint : selection.hints) sText += sHint + "\n";
    return sText;
}

}   // namespace

TEST(Selector, SelectsByTerms) {
    const struct {
        const char* pQuery;
        const char* pIds;
    } rows[] = {
        {"IfcWall", "#10 #11 #16"},
        {" ifcWALL ", "#10 #11 #16"},
        {"IfcElement, IfcWall", "#10 #11 #16"},
        {"IfcElement, !IfcWall", "#12 #13 #14 #15"},
        {"IfcWall + IfcDoor", "#10 #11 #13 #16"},
        {"IfcWall, Name=South + IfcElement, Name=/D.*/ + IfcWall", "#10 #11 #13 #16"},
        {"0000000000000000000013", "#13"},
        {"IfcDoor, !0000000000000000000013", ""},
        {"#10", "#10"},
        {"#10, IfcDoor", ""},
        {"#15 + #10 + #15", "#10 #15"},
        {"#9", ""},
        {"IfcWall, !#10", "#11 #16"},
        {"Name=South", "#10"},
        {"naMe = South", "#10"},
        {"Name=\"South\"", "#10"},
        {"Name='South'", "#10"},
        {"Name=south", ""},
        {"Name=/[SN]o..h/", "#10 #11"},
        {"Name=/Sou/", ""},
        {"/N.*e/=South", "#10"},
        {"IfcWall, Name!=South", "#11 #16"},
        {"IfcWall, !Name=South", "#11 #16"},
        {"IfcWall, !Name!=South", "#10"},
        {"Name*=oo", "#6 #16"},
        {"IfcWall, Name!*=ou", "#11 #16"},
        {"IfcWall, Name>=North", "#10 #11"},
        {"IfcWall, Tag>12", "#11"},
        {"IfcWall, Tag<=12.5", "#11"},
        {"Tag=12.50", "#11"},
        {"Tag=12.5", ""},
        {"OverallWidth>=885", "#13"},
        {"OverallWidth=885.0000000001", "#13"},
        {"OverallWidth>885", ""},
        {"OverallHeight<2010", ""},
        {"OverallHeight*=01", "#13"},
        {"OverallHeight=/20../", "#13"},
        {"IfcWall, ObjectType=NULL", "#11 #16"},
        {"IfcElement, ObjectType!=NULL", "#10"},
        {"PredefinedType=STANDARD, IfcWallType", "#20"},
        {"Pset_WallCommon.FireRating=F 90", "#10"},
        {"Pset_WallCommon.FireRating=F 30", "#11 #20"},
        {"IfcWall, Pset_WallCommon.FireRating=NULL", "#16"},
        {"IfcWall, Pset_WallCommon.FireRating!=F 90", "#11 #16"},
        {"Pset_WallCommon.IsExternal=TRUE", "#10"},
        {"Pset_WallCommon.IsExternal=true", "#10"},
        {"Pset_WallCommon.LoadBearing=FALSE", "#10 #11 #20"},
        {"Pset_WallCommon.ThermalTransmittance<.3", "#10"},
        {"\"Pset_WallCommon\".'FireRating'=\"F 90\"", "#10"},
        {"/Pset_.*Common/.FireRating=/F .0/", "#10 #11 #20"},
        {"/Pset_.*Common/.FireRating=F 30", "#11 #20"},
        {"Pset_WallCommon./Fire.*|Load.*/=FALSE", "#10 #11 #20"},
        {"Qto_WallBaseQuantities.NetVolume=2.5", "#10"},
        {"IfcWall, Kinds.Enumerated=B", "#10 #11"},
        {"IfcWall, Kinds.Bounded>4", "#10 #11"},
        {"IfcWall, Kinds.List=2", "#10 #11"},
        {"IfcWall, Kinds.Complex.Inner=7", "#10 #11"},
        {"IfcWall, Panel.PanelDepth=40", "#10 #11"},
        {"IfcWall, Kinds.Empty=NULL", "#10 #11 #16"},
        {"type=WT", "#10 #11"},
        {"type=0000000000000000000020", "#10 #11"},
        {"type.Name=WT", "#10 #11"},
        {"IfcWall, type=NULL", "#16"},
        {"IfcWall, type!=WT", "#16"},
        {"material=Wool", "#10 #11 #13 #20"},
        {"material=W36", "#10"},
        {"material.Name=Brick", "#10 #11 #20"},
        {"classification=Ss_25", "#10"},
        {"classification=Uniclass", "#10"},
        {"classification=Framed walls", "#10 #11 #20"},
        {"classification=/Ss_25.*/", "#10 #11 #20"},
        {"location=EG", "#6 #10 #12 #13"},
        {"location=\"OG\", !IfcWall", "#14 #15"},
        {"location=House", "#4 #5 #6 #10 #11 #12 #13 #14 #15"},
        {"location=0000000000000000000004, IfcDoor", "#13"},
        {"group=Shell", "#10 #11"},
        {"parent=Truss", "#15"},
        {"parent=South", "#12 #13"},
        {"parent.Name=South", "#12"},
        {"IfcSpatialStructureElement, parent=P", "#3 #4 #5 #6"},
        {"container=EG, IfcElement", "#10 #12 #13"},
        {"storey=EG, IfcElement", "#10 #12 #13"},
        {"storey.Elevation>1", "#11 #14 #15"},
        {"building.Name=House, IfcDoor", "#13"},
        {"class=IfcMember", "#15"},
        {"id=15", "#15"},
        {"IfcElement, id>14", "#15 #16"},
        {"IfcPropertySet, Name=Kinds", "#51"},
        {"IfcProperty, Name*=r", "#41 #42 #43 #53 #54 #55 #59 #61"},
    };
    for (const char* pSchema : g_families) {
        const Model model = house(pSchema);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(pSchema) + ": " + row.pQuery);
            const Selection found = Selector(row.pQuery).select(model);
            EXPECT_EQ(sIds(found.elements), row.pIds);
            const std::string sText = Selector(row.pQuery).text();
            EXPECT_EQ(sIds(Selector(sText).select(model).elements), row.pIds) << sText;
            EXPECT_EQ(Selector(sText).text(), sText);
        }
    }
}

TEST(Selector, LeavesSubtypesOutWhereAsked) {
    EXPECT_EQ(sIds(Selector("IfcWall").select(house("IFC4"), exact).elements), "#10 #16");
    EXPECT_EQ(sIds(Selector("IfcElement").select(house("IFC4"), exact).elements), "");
    EXPECT_EQ(sIds(Selector("Name=South").select(house("IFC4"), exact).elements), "#10");
    EXPECT_EQ(sIds(Selector("Name=South, IfcWall").select(house("IFC4"), exact).elements), "#10");
}

TEST(Selector, HasOneForm) {
    const struct {
        const char* pQuery;
        const char* pText;
    } rows[] = {
        {"IfcWall ,!IfcSlab+ #12", "IfcWall, !IfcSlab + #12"},
        {"Name = a b ,Tag!='\"'", "Name=\"a b\", Tag!=\"\\\"\""},
        {"A.B>=1,!A.B<2", "A.B>=\"1\", !A.B<\"2\""},
        {"A B.C D*=x,!A.B!*=x", "\"A B\".\"C D\"*=\"x\", A.B*=\"x\""},
        {"'type'.x=NULL, \"type\"=TRUE, type=FALSE", "\"type\".x=NULL, \"type\"=TRUE, type=FALSE"},
        {"/a\\/b\\\\/./c\\d/=/e,f+g/", "/a\\/b\\\\/./c\\d/=/e,f+g/"},
        {"Name=\"NULL\"", "Name=\"NULL\""},
        {"A.b.c=1", "A.\"b.c\"=\"1\""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pQuery);
        EXPECT_EQ(Selector(row.pQuery).text(), row.pText);
        EXPECT_EQ(Selector(row.pText).text(), row.pText);
    }
}

TEST(Selector, SaysWhereAQueryIsWrong) {
    const struct {
        std::string sQuery;
        const char* pMessage;
    } rows[] = {
        {"", "column 1: a name is expected"},
        {"IfcWall,", "column 9: a name is expected"},
        {"IfcWall, + IfcDoor", "column 10: a name is expected"},
        {"!!IfcWall", "column 2: a name is expected"},
        {"IfcWall, Name=", "column 15: a value is expected; an empty text is \"\""},
        {"\xC3\x84=1, =2", "column 6: a name is expected"},
        {"Name",
         "column 1: \"Name\" is neither a class (IfcWall) nor a GlobalId; behind a name stands one of = != > >= < "
         "<= *= !*="},
        {"IfcWall, Pset.Prop , x=1",
         "column 10: \"Pset.Prop\" is neither a class (IfcWall) nor a GlobalId; behind a name "
         "stands one of = != > >= < <= *= !*="},
        {"/x/",
         "column 1: \"/x/\" is neither a class (IfcWall) nor a GlobalId; behind a name stands one of = != > >= < <= "
         "*= !*="},
        {"Name=\"x", "column 6: the quote that ends the text is missing"},
        {"'x", "column 1: the quote that ends the text is missing"},
        {"Name=/x", "column 6: the / that ends the expression is missing"},
        {"Name=/(/", "column 6: \"(\": missing ): ("},
        {"Name=/((a{900}){900}){900}/", "column 6: \"((a{900}){900}){900}\": invalid repetition size: {900}"},
        {"Name>NULL", "column 6: NULL, TRUE, FALSE and expressions stand behind = and != alone"},
        {"Name*=/x/", "column 7: NULL, TRUE, FALSE and expressions stand behind = and != alone"},
        {"#x", "column 1: a number is expected behind #"},
        {"#99999999999999999999", "column 1: a number is expected behind #"},
        {"Name=\"x\" y", "column 10: a , or a + is expected, not \"y\""},
        {"Name\x01",
         "column 1: \"Name?\" is neither a class (IfcWall) nor a GlobalId; behind a name stands one of = != > >= "
         "< <= *= !*="},
        {std::string(100'001, 'x'), "column 1: a query has at most 100000 bytes"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sQuery.substr(0, 100));
        EXPECT_EQ(sRefused([&] { Selector selector(row.sQuery); }), std::string("QueryError: ") + row.pMessage);
    }
    try {
        const Selector selector("IfcWall, =");
    } catch (const QueryError& error) {
        EXPECT_EQ(error.column(), 10U);
    }
}

TEST(Selector, IsBounded) {
    std::string sTerms = "#1";
    for (int i = 1; i < 1000; ++i) sTerms += "+#1";
    EXPECT_EQ(sIds(Selector(sTerms).select(house("IFC4")).elements), "#1");
    EXPECT_EQ(sRefused([&] { Selector selector(sTerms + ",#1"); }),
              "QueryError: column 3001: a query has at most 1000 terms");
    std::string sPatterns = "Name=/x/";
    for (int i = 1; i < 100; ++i) sPatterns += ",Name=/x/";
    const Selector most(sPatterns);
    EXPECT_EQ(sRefused([&] { Selector selector(sPatterns + ",Name=/x/"); }),
              "QueryError: column 906: a query has at most 100 expressions");
    // What takes others exponential time.
    const Model model = Model::fromBuffer(fileText("IFC4", "#1=IFCMATERIAL('" + std::string(30'000, 'a') + "!');\n"));
    EXPECT_EQ(sIds(Selector("IfcMaterial, Name=/(a*)*b/").select(model).elements), "");
}

TEST(Selector, NamesWhatASchemaDoesNotHave) {
    const Model model = house("IFC4");
    const struct {
        const char* pQuery;
        const char* pMessage;
    } rows[] = {
        {"IfcWall, IfcDoors", "NameError: column 10: IFC4 has no entity type IfcDoors; did you mean IfcDoor, "
                              "IfcDoorStyle, IfcDoorStandardCase?"},
        {"OverallWith=1",
         "NameError: column 1: no type of IFC4 has an attribute OverallWith; did you mean OverallWidth?"},
        {"IfcWall Name=1", "NameError: column 1: no type of IFC4 has an attribute IfcWall Name"},
        {"#1, !type.Nam=x", "NameError: column 6: no type of IFC4 has an attribute Nam; did you mean Name, "
                            "LongName, GivenName, UsageName, FamilyName?"},
        {"/x.y/=1", "NameError: column 1: no type of IFC4 has an attribute /x.y/"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pQuery);
        EXPECT_EQ(sThrown([&] { static_cast<void>(Selector(row.pQuery).select(model)); }), row.pMessage);
    }
}

TEST(Selector, HintsAtWhatNoElementHas) {
    const Model model = house("IFC4");
    const struct {
        const char* sRule;
        const char* pQuery;
        const char* pHints;
    } rows[] = {
        {"a set", "IfcWall, Pset_WalCommon.FireRating=F 90",
         "no element has a set Pset_WalCommon; did you mean Pset_WallCommon?\n"},
        {"a property", "IfcWall, Pset_WallCommon.FireRatng=NULL",
         "no set Pset_WallCommon has FireRatng; did you mean FireRating?\n"},
        {"nothing near", "Xyz.FireRating=F 90", "no element has a set Xyz\n"},
        {"an expression", "/Xyz.*/.FireRating=F 90", "no element has a set /Xyz.*/\n"},
        {"it is there, at others", "IfcDoor, Pset_WallCommon.FireRating=F 90", ""},
        {"it is there, with another value", "Pset_WallCommon.FireRating=F 60", ""},
        {"once", "Xyz.a=1 + Xyz.a=1", "no element has a set Xyz\n"},
        {"nothing is both", "IfcWall, IfcDoor",
         "no element is both IfcWall and IfcDoor; a + between them selects both\n"},
        {"one is the other", "IfcElement, IfcDoor, !IfcWall", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sHints(Selector(row.pQuery).select(model)), row.pHints);
    }
}

}   // namespace oxa::test
