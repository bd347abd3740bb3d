// SPDX-License-Identifier: Apache-2.0
// Statements against their entity types: each kind of declaration, and each way past it, on a schema made for it.
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "CheckText.h"
#include "provider/SchemaLoader.h"

namespace oxa {
namespace {

const char* const g_pSchema =
    "SCHEMA TEST;\n"
    "TYPE Label = STRING(5); END_TYPE; TYPE Code = STRING(3) FIXED; END_TYPE; TYPE Bits = BINARY(8); END_TYPE;\n"
    "TYPE Length = REAL; END_TYPE; TYPE Positive = Length; END_TYPE; TYPE Count = INTEGER; END_TYPE;\n"
    "TYPE Kind = ENUMERATION OF (SOLID, HOLLOW); END_TYPE; TYPE Points = LIST [2:3] OF Length; END_TYPE;\n"
    "TYPE Inner = SELECT (Length, Sub); END_TYPE; TYPE Outer = SELECT (Inner, Label, Points, Kind, Other); END_TYPE;\n"
    "ENTITY Root ABSTRACT SUPERTYPE; Id : Code; UNIQUE UR1 : Id; END_ENTITY;\n"
    "ENTITY Sub SUBTYPE OF (Root); Name : OPTIONAL Label; END_ENTITY;\n"
    "ENTITY SubSub SUBTYPE OF (Sub); DERIVE SELF\\Sub.Name : Label := 'x'; END_ENTITY;\n"
    "ENTITY Narrow SUBTYPE OF (Sub); SELF\\Sub.Name : Code; END_ENTITY;\n"
    "ENTITY Other; END_ENTITY;\n"
    "ENTITY R; V : REAL; END_ENTITY; ENTITY I; V : INTEGER; END_ENTITY; ENTITY N; V : NUMBER; END_ENTITY;\n"
    "ENTITY B; V : BOOLEAN; END_ENTITY; ENTITY L; V : LOGICAL; END_ENTITY; ENTITY S; V : STRING; END_ENTITY;\n"
    "ENTITY W; V : Label; END_ENTITY; ENTITY F; V : Code; END_ENTITY; ENTITY Y; V : Bits; END_ENTITY;\n"
    "ENTITY K; V : Kind; END_ENTITY; ENTITY E; V : Sub; END_ENTITY; ENTITY O; V : OPTIONAL Label; END_ENTITY;\n"
    "ENTITY C; V : Outer; END_ENTITY; ENTITY D; V : LIST [1:2] OF LIST [0:?] OF INTEGER; END_ENTITY;\n"
    "ENTITY U; V : SET OF Outer; END_ENTITY; ENTITY G; V : BAG [1:?] OF INTEGER; END_ENTITY;\n"
    "ENTITY A; V : ARRAY [1:3] OF OPTIONAL INTEGER; END_ENTITY; ENTITY Q; V : LIST OF UNIQUE REAL; END_ENTITY;\n"
    "ENTITY Owner; Parts : SET [1:?] OF Part; Main : OPTIONAL Part; Spare : OPTIONAL Part; END_ENTITY;\n"
    "ENTITY Part; INVERSE OwnedBy : Owner FOR Parts; MainOf : SET [0:1] OF Owner FOR Main;\n"
    " SpareOf : SET [0:?] OF Owner FOR Spare; END_ENTITY;\n"
    "TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE; ENTITY H; V : IfcGloballyUniqueId; END_ENTITY;\n"
    "TYPE Flags = BINARY(4) FIXED; END_TYPE; ENTITY Z; V : Flags; END_ENTITY;\n"
    "ENTITY P; V : ARRAY [-1:1] OF UNIQUE INTEGER; END_ENTITY; ENTITY T; V : SET [1:2] OF NUMBER; END_ENTITY;\n"
    "ENTITY J; V : ARRAY [1:3] OF OPTIONAL UNIQUE INTEGER; END_ENTITY; ENTITY X; V : SET OF STRING; END_ENTITY;\n"
    "ENTITY M; V : LIST OF SET [1:?] OF Sub; END_ENTITY; ENTITY V; V : BAG [0:2] OF Kind; END_ENTITY;\n"
    "ENTITY Boss SUBTYPE OF (Owner); END_ENTITY;\n"
    "ENTITY Wheel SUBTYPE OF (Part); INVERSE Bosses : SET [1:2] OF Boss FOR Spare; END_ENTITY;\n"
    "ENTITY Keyed; Code : OPTIONAL STRING; Other : OPTIONAL Sub; UNIQUE One : Code; Two : Other; END_ENTITY;\n"
    "ENTITY Pair; X : INTEGER; Y : OPTIONAL LIST OF INTEGER; UNIQUE X, Y; END_ENTITY;\n"
    "END_SCHEMA;\n";

ifc::def::SchemaPset* pSchema() {
    static const std::unique_ptr<ifc::def::SchemaPset> pLoaded = [] {
        std::vector<ifc::SchemaMessage> messages;
        auto pRead = ifc::SchemaLoader::pSchemaFromExpress(g_pSchema, messages);
        for (const ifc::SchemaMessage& message : messages)
            ADD_FAILURE() << message.iLine << ':' << message.iColumn << ' ' << message.sText;
        return pRead;
    }();
    return pLoaded.get();
}

CheckResult schemaChecked(const std::string& sStatements) {
    CheckOptions options;
    options.levels = {false, false, true, false};
    options.schema = [](const std::string&) { return pSchema(); };
    FileText file;
    file.sSchema = "('TEST')";
    std::istringstream stream(file.text(sStatements));
    return checkStream(stream, options);
}

std::string sFaults(const std::string& sStatements) { return sFailures(schemaChecked(sStatements)); }

struct SchemaRow {
    const char* sRule;
    std::string sStatements;   // from line 6 on
    const char* sFaults;       // empty: none
};

const SchemaRow g_values[] = {
    {"a REAL has a point", "#1=R(1.);#2=R(1);", "6:15 Schema_ValueType V '1'; REAL"},
    {"an INTEGER has none", "#1=I(1);#2=I(1.);", "6:14 Schema_ValueType V '1.'; INTEGER"},
    {"a NUMBER is either", "#1=N(1);#2=N(1.);#3=N('1');", "6:23 Schema_ValueType V ''1''; NUMBER"},
    {"a BOOLEAN is true or false", "#1=B(.T.);#2=B(.F.);#3=B(.U.);#4=B(1);",
     "6:26 Schema_ValueType V '.U.'; BOOLEAN | 6:36 Schema_ValueType V '1'; BOOLEAN"},
    {"a LOGICAL unknown too", "#1=L(.T.);#2=L(.F.);#3=L(.U.);#4=L(.X.);", "6:36 Schema_ValueType V '.X.'; LOGICAL"},
    {"a STRING", "#1=S('a');#3=S(1);", "6:16 Schema_ValueType V '1'; STRING"},
    {"of so many characters at most", "#1=W('12345');#2=W('123456');",
     "6:20 Schema_Width V ''123456''; Label of at most 5 characters"},
    {"as they are meant", "#1=W('''''''''''');#2=W('\\X2\\00E400E4\\X0\\\\S\\a\\X\\E4\\\\');", ""},
    {"FIXED, of as many", "#1=F('123');#2=F('12');", "6:18 Schema_Width V ''12''; Code of 3 characters"},
    {"FIXED, of as many bits", "#1=Z(\"05\");#2=Z(\"0A\");#3=Z(\"15\");#4=Z(\"0AB\");",
     "6:28 Schema_Width V '\"15\"'; Flags of 4 bits | 6:39 Schema_Width V '\"0AB\"'; Flags of 4 bits"},
    {"a BINARY of so many bits at most", "#1=Y(\"0FF\");#2=Y(\"0FFF\");",
     "6:18 Schema_Width V '\"0FFF\"'; Bits of at most 8 bits"},
    {"an enumerator of the type", "#1=K(.SOLID.);#2=K(.SOFT.);#3=K('SOLID');",
     "6:20 Schema_Enumerator V '.SOFT.'; Kind | 6:33 Schema_ValueType V ''SOLID''; Kind"},
    {"OPTIONAL may be unset", "#1=O($);", ""},
    {"others may not", "#1=W($);", "6:6 Schema_Mandatory V '$'; Label of at most 5 characters"},
    {"a star is for what is derived", "#1=W(*);#2=O(*);",
     "6:6 Schema_NotDerived V '*'; Label of at most 5 characters | 6:14 Schema_NotDerived V '*'; Label of at most 5 "
     "characters"},
    {"a type's name is for a SELECT", "#1=W(LABEL('a'));",
     "6:6 Schema_TypedValue V 'LABEL'; Label of at most 5 characters"},
};

const SchemaRow g_references[] = {
    {"an instance of the type", "#1=Sub('abc',$);#2=E(#1);", ""},
    {"or of a subtype", "#1=SubSub('abc',*);#2=E(#1);", ""},
    {"in front too", "#2=E(#1);#1=Sub('abc',$);", ""},
    {"of no other", "#1=Other();#2=E(#1);", "6:17 Schema_ReferenceType V '#1 Other'; Sub"},
    {"in front neither", "#2=E(#1);#1=Other();", "6:6 Schema_ReferenceType V '#1 Other'; Sub"},
    {"it is there", "#2=E(#1);", "6:6 Schema_ReferenceMissing V '#1'; Sub"},
    {"one of an unknown type is told once", "#1=NONE();#2=E(#1);", "6:4 Schema_UnknownType ''; an entity of TEST"},
    {"a reference is no value", "#1=E(1);#2=R(#1);",
     "6:6 Schema_ValueType V '1'; Sub | 6:14 Schema_ValueType V '#1'; REAL"},
    {"nor a list", "#1=E((#1));#2=W(('a'));",
     "6:6 Schema_ValueType V '('; Sub | 6:17 Schema_ValueType V '('; Label of at most 5 characters"},
};

const SchemaRow g_selects[] = {
    {"a value by its type's name", "#1=C(LABEL('a'));#2=C(LENGTH(1.));#3=C(KIND(.SOLID.));#4=C(POINTS((1.,2.)));", ""},
    {"a reference by none", "#1=Other();#2=Sub('abc',$);#3=C(#1);#4=C(#2);", ""},
    {"which is of a member", "#1=R(1.);#3=C(#1);", "6:15 Schema_ReferenceType V '#1 R'; Outer"},
    {"a value needs it", "#1=C('a');", "6:6 Schema_SelectUntyped V ''a''; a member of Outer"},
    {"of a member, not of what is defined by one", "#1=C(POSITIVE(1.));",
     "6:6 Schema_SelectType V 'POSITIVE'; a member of Outer"},
    {"not of the nested SELECT", "#1=C(INNER(1.));", "6:6 Schema_SelectType V 'INNER'; a member of Outer"},
    {"the value is of that type", "#1=C(LENGTH(1));#2=C(LABEL('123456'));#3=C(KIND(.SOFT.));",
     "6:13 Schema_ValueType V '1'; Length | 6:28 Schema_Width V ''123456''; Label of at most 5 characters | 6:49 "
     "Schema_Enumerator V '.SOFT.'; Kind"},
    {"and there", "#1=C(LABEL($));", "6:12 Schema_ItemUnset V '$'; Label of at most 5 characters"},
    {"with its bounds", "#1=C(POINTS((1.)));", "6:13 Schema_Bounds V '1'; Points"},
    {"a list is none", "#1=C((1.,2.));", "6:6 Schema_ValueType V '('; Outer"},
};

const SchemaRow g_aggregates[] = {
    {"bounds", "#1=D(((),(1)));#2=D(());#3=D(((),(),()));",
     "6:21 Schema_Bounds V '0'; LIST [1:2] OF LIST [0:?] OF INTEGER | 6:30 Schema_Bounds V '3'; LIST [1:2] OF LIST "
     "[0:?] OF INTEGER"},
    {"items", "#1=D(((1.),2));",
     "6:8 Schema_ValueType V '1.'; INTEGER | 6:12 Schema_ValueType V '2'; LIST [0:?] OF INTEGER"},
    {"none is unset", "#1=D(($));#2=D((($,*)));",
     "6:7 Schema_ItemUnset V '$'; LIST [0:?] OF INTEGER | 6:18 Schema_ItemUnset V '$'; INTEGER | 6:20 "
     "Schema_ItemUnset V '*'; INTEGER"},
    {"but of an ARRAY OF OPTIONAL", "#1=A((1,$,3));", ""},
    {"an ARRAY has all", "#1=A((1,2));", "6:6 Schema_Bounds V '2'; ARRAY [1:3] OF OPTIONAL INTEGER"},
    {"a SET has none twice", "#1=U((LABEL('a'),LABEL('b'),LENGTH(1.)));#2=U((LABEL('a'),LENGTH(2.),LABEL('a')));",
     "6:47 Schema_NotUnique V ''; SET OF Outer"},
    {"by type and value", "#1=U((LENGTH(1.),LENGTH(1.0E0)));#2=U((POINTS((1.,2.)),POINTS((2.,1.))));",
     "6:6 Schema_NotUnique V ''; SET OF Outer"},
    {"by the instance", "#1=Other();#2=Other();#3=U((#1,#2));#4=U((#1,#2,#01));",
     "6:42 Schema_NotUnique V ''; SET OF Outer"},
    {"a BAG may", "#1=G((1,1));", ""},
    {"a LIST may", "#1=D(((1,1),(1,1)));", ""},
    {"a LIST OF UNIQUE may not", "#1=Q((1.,2.,1.));", "6:6 Schema_NotUnique V ''; LIST OF UNIQUE REAL"},
    {"an ARRAY with a lower index below zero", "#1=P((1,2,3));#2=P((1,2));",
     "6:20 Schema_Bounds V '2'; ARRAY [-1:1] OF UNIQUE INTEGER"},
    {"an ARRAY OF UNIQUE has none twice", "#1=P((1,2,1));",
     "6:6 Schema_NotUnique V ''; ARRAY [-1:1] OF UNIQUE INTEGER"},
    {"but two items that are unset differ", "#1=J(($,$,1));#2=J(($,1,1));",
     "6:20 Schema_NotUnique V ''; ARRAY [1:3] OF OPTIONAL UNIQUE INTEGER"},
    {"numbers are the same by value", "#1=T((1,1.));#2=T((-0.,0));#3=T((1,-1));",
     "6:6 Schema_NotUnique V ''; SET [1:2] OF NUMBER | 6:19 Schema_NotUnique V ''; SET [1:2] OF NUMBER"},
    {"so are texts", "#1=X(('\\X\\E4','\\X2\\00E4\\X0\\'));\n#2=X(('a','A'));\n#3=X(('''','\\X\\27'));",
     "6:6 Schema_NotUnique V ''; SET OF STRING | 8:6 Schema_NotUnique V ''; SET OF STRING"},
    {"sets in a list are their own", "#1=SUB('abc',$);#2=M(((#1),(#1)));#3=M(((#1,#1)));#4=M((()));",
     "6:41 Schema_NotUnique V ''; SET [1:?] OF Sub | 6:57 Schema_Bounds V '0'; SET [1:?] OF Sub"},
    {"a BAG has its bounds", "#1=V(());#2=V((.SOLID.,.SOLID.,.SOLID.));",
     "6:15 Schema_Bounds V '3'; BAG [0:2] OF Kind"},
    {"too many and one twice", "#1=T((1,1,2));",
     "6:6 Schema_Bounds V '3'; SET [1:2] OF NUMBER | 6:6 Schema_NotUnique V ''; SET [1:2] OF NUMBER"},
    {"a value is no aggregate", "#1=G(1);", "6:6 Schema_ValueType V '1'; BAG [1:?] OF INTEGER"},
};

const SchemaRow g_records[] = {
    {"an entity of the schema", "#1=Nothing();", "6:4 Schema_UnknownType ''; an entity of TEST"},
    {"not a type", "#1=LABEL('a');", "6:4 Schema_UnknownType ''; an entity of TEST"},
    {"an abstract one has no instances", "#1=ROOT('abc');", "6:4 Schema_Abstract ''; a subtype"},
    {"as many parameters as attributes", "#1=SUB('abc');#2=SUB('abd',$,$);",
     "6:13 Schema_ParameterCount '1'; 2 | 6:31 Schema_ParameterCount '3'; 2"},
    {"a derived one has a star",
     "#1=SUBSUB('abc',*);#2=SUBSUB('abd','x');#3=SUBSUB('abe',$);#4=SUBSUB('abf',LABEL('x'));",
     "6:36 Schema_Derived Name ''x''; * | 6:57 Schema_Derived Name '$'; * | 6:76 Schema_Derived Name 'LABEL'; *"},
    {"a narrower one has that type, and a value", "#1=NARROW('abc','xyz');#2=NARROW('abd','x');#3=NARROW('abe',$);",
     "6:40 Schema_Width Name ''x''; Code of 3 characters | 6:61 Schema_Mandatory Name '$'; Code of 3 characters"},
    {"a complex one has its supertypes", "#1=(ROOT('abc')SUB($));#2=(OTHER()SUB($));",
     "6:1 Schema_ComplexMapping ''; one record | 6:24 Schema_ComplexSupertype ''; Root"},
    {"in the order of the alphabet", "#1=(OTHER()B(.T.));", "6:1 Schema_ComplexOrder ''; behind Other"},
    {"a record may derive what another one has a place for",
     "#1=(OTHER()ROOT('abc')SUB(*)SUBSUB());\n#2=(OTHER()ROOT('abd')SUB('x')SUBSUB());\n#3=(OTHER()ROOT('abe')SUB(*));",
     "7:27 Schema_Derived Name ''x''; * | 8:27 Schema_NotDerived Name '*'; Label of at most 5 characters"},
    {"with the parameters of each", "#1=(OTHER()ROOT('ab')SUB($,$));#2=E(#1);#3=C(#1);#4=R(1.);",
     "6:17 Schema_Width Id ''ab''; Code of 3 characters | 6:29 Schema_ParameterCount '2'; 1"},
};

const SchemaRow g_whole[] = {
    {"each part has its owner", "#1=OWNER((#2,#3),#2,$);#2=PART();#3=PART();", ""},
    {"none has two", "#1=OWNER((#2),$,$);#3=OWNER((#2),$,$);#2=PART();",
     "6:0 Schema_Inverse OwnedBy '2'; 1 by Owner.Parts"},
    {"or none", "#2=PART();", "6:0 Schema_Inverse OwnedBy '0'; 1 by Owner.Parts"},
    {"one is the main one of one", "#1=OWNER((#2),#2,#2);#3=OWNER((#4),#2,#2);#2=PART();#4=PART();",
     "6:0 Schema_Inverse MainOf '2'; 0 to 1 by Owner.Main"},
    {"an owner counts once", "#1=OWNER((#2,#2),$,$);#2=PART();", "6:10 Schema_NotUnique Parts ''; SET [1:?] OF Part"},
    {"only the subtype's count", "#1=OWNER((#2),$,#2);#2=WHEEL();",
     "6:0 Schema_Inverse Bosses '0'; 1 to 2 by Boss.Spare"},
    {"those of a supertype too",
     "#1=BOSS((#2,#3),$,#2);#4=BOSS((#5),$,#2);#6=BOSS((#7),$,#2);#2=WHEEL();#3=PART();#5=PART();#7=PART();",
     "6:0 Schema_Inverse Bosses '3'; 1 to 2 by Boss.Spare"},
    {"no instance that is not there counts", "#1=OWNER((#2),#9,$);#2=PART();",
     "6:15 Schema_ReferenceMissing Main '#9'; Part"},
    {"each UNIQUE rule by itself", "#1=SUB('abc',$);\n#2=KEYED('a',#1);\n#3=KEYED('b',#1);\n#4=KEYED('a',$);",
     "8:1 Schema_Unique Other 'as #2'; values of its own | 9:1 Schema_Unique Code 'as #2'; values of its own"},
    {"texts by what they mean", "#1=KEYED('\\X\\E4',$);\n#2=KEYED('\\X2\\00E4\\X0\\',$);",
     "7:1 Schema_Unique Code 'as #1'; values of its own"},
    {"each of several is told", "#1=KEYED('a',$);\n#2=KEYED('a',$);\n#3=KEYED('a',$);",
     "7:1 Schema_Unique Code 'as #1'; values of its own | 8:1 Schema_Unique Code 'as #1'; values of its own"},
    {"UNIQUE holds for all subtypes", "#1=SUB('abc',$);#2=SUBSUB('abd',*);\n#3=NARROW('abc','xyz');\n#4=SUB('abd',$);",
     "7:1 Schema_Unique Id 'as #1'; values of its own | 8:1 Schema_Unique Id 'as #2'; values of its own"},
    {"of several attributes together", "#1=PAIR(1,(1,2));#2=PAIR(1,(2,1));#3=PAIR(2,(1,2));\n#4=PAIR(1,(1,2));",
     "7:1 Schema_Unique X, Y 'as #1'; values of its own"},
    {"one that is unset differs", "#1=PAIR(1,$);#2=PAIR(1,$);", ""},
    {"a statement that is there twice counts once", "#1=SUB('abc',$);#1=SUB('abc',$);", ""},
};

void vExpect(const SchemaRow& row) {
    SCOPED_TRACE(row.sRule);
    EXPECT_EQ(sFaults(row.sStatements), row.sFaults) << row.sStatements;
}

TEST(CheckSchema, Values) {
    for (const SchemaRow& row : g_values) vExpect(row);
}
TEST(CheckSchema, References) {
    for (const SchemaRow& row : g_references) vExpect(row);
}
TEST(CheckSchema, Selects) {
    for (const SchemaRow& row : g_selects) vExpect(row);
}
TEST(CheckSchema, Aggregates) {
    for (const SchemaRow& row : g_aggregates) vExpect(row);
}
TEST(CheckSchema, Records) {
    for (const SchemaRow& row : g_records) vExpect(row);
}
TEST(CheckSchema, TheFileAsAWhole) {
    for (const SchemaRow& row : g_whole) vExpect(row);
}

// ---- Each sort of value in each type

// For each column of g_sorts "." where the attribute V of the entity takes it, else the letter of a key.
struct TypeRow {
    const char* sEntity;
    const char* sFits;
};
// clang-format off
const char* const g_sorts[] = {"1", "1.", "'a'", ".T.", ".U.", ".SOLID.", "\"0F\"", "#100", "$", "*", "()", "LABEL('a')", "LENGTH((1.))", "NONE(1)"};
const TypeRow g_matrix[] = {
    {"I", ".vvvvvvvmnvttt"}, {"R", "v.vvvvvvmnvttt"}, {"N", "..vvvvvvmnvttt"}, {"B", "vvv.vvvvmnvttt"},
    {"L", "vvv..vvvmnvttt"}, {"S", "vv.vvvvvmnvttt"}, {"K", "vvvee.vvmnvttt"}, {"Y", "vvvvvv.vmnvttt"},
    {"E", "vvvvvvv.mnvttt"}, {"C", "uuuuuuu.mnv.vs"}, {"G", "vvvvvvvvmnbttt"}, {"O", "vv.vvvvv.nvttt"},
};
// clang-format on

std::string sKeyOf(char c) {
    switch (c) {
    case 'v': return "Schema_ValueType";
    case 'm': return "Schema_Mandatory";
    case 'n': return "Schema_NotDerived";
    case 't': return "Schema_TypedValue";
    case 'e': return "Schema_Enumerator";
    case 'u': return "Schema_SelectUntyped";
    case 's': return "Schema_SelectType";
    case 'b': return "Schema_Bounds";
    default: return {};
    }
}

TEST(CheckSchema, EachSortOfValueInEachType) {
    for (const TypeRow& row : g_matrix)
        for (std::size_t i = 0; i < std::size(g_sorts); ++i) {
            SCOPED_TRACE(std::string(row.sEntity) + " of " + g_sorts[i]);
            const std::string sStatement = std::string("#1=") + row.sEntity + '(' + g_sorts[i] + ");";
            const CheckResult result = schemaChecked(sStatement + "#100=SUB('abc',$);");
            ASSERT_EQ(result.groups.size(), row.sFits[i] == '.' ? 0U : 1U);
            if (row.sFits[i] == '.') continue;
            EXPECT_EQ(result.groups[0].key, sKeyOf(row.sFits[i]));
            EXPECT_EQ(result.groups[0].places[0].line, 6U);
            EXPECT_EQ(result.groups[0].places[0].id, 1U);
        }
}

TEST(CheckSchema, FormOfGlobalIdsIsANote) {
    const std::string sExpected = "; 22 of 0 to 9, A to Z, a to z, _ and $, the first of them 0 to 3";
    const CheckResult fine = schemaChecked("#1=H('2CbOYFeCHBku9$oytmyQ2e');#2=H('3ZZZZZZZZZZZZZZZZZZZ_$');");
    EXPECT_EQ(sFailures(fine, true), "");
    for (const char* sId : {"'2CbOYFeCHBku9+oytmyQ2e'", "'4CbOYFeCHBku9$oytmyQ2e'", "'000000000000000000000\\X\\41'"}) {
        const CheckResult odd = schemaChecked("#1=H(" + std::string(sId) + ");");
        EXPECT_EQ(sFailures(odd, true), "6:6 Schema_GlobalIdForm V '" + std::string(sId) + '\'' + sExpected);
        EXPECT_EQ(odd.verdict(), CheckVerdict::Valid);
    }
    EXPECT_EQ(sFaults("#1=H('2CbOYF');"), "6:6 Schema_Width V ''2CbOYF''; IfcGloballyUniqueId of 22 characters");
}

TEST(CheckSchema, RecordsSayWhatTheyAreAbout) {
    const CheckResult result = schemaChecked("#7=NARROW('abc','x');");
    ASSERT_EQ(result.groups.size(), 1U);
    const CheckGroup& group = result.groups.front();
    EXPECT_EQ(group.type, "Narrow");
    EXPECT_EQ(group.attribute, "Name");
    EXPECT_EQ(group.rule, "Sub.Name");
    EXPECT_EQ(group.places.front().id, 7U);
}

TEST(CheckSchema, WhatCouldNotBeLookedAtIsNoneTheLess) {
    using LevelState = CheckLevelSummary::State;
    const CheckResult faulty = schemaChecked("#1=W('a',;");
    EXPECT_EQ(faulty.level(CheckLevel::Schema).state, LevelState::NotPossible);
    EXPECT_EQ(faulty.level(CheckLevel::Schema).reason, "1 statement is faulty in syntax and not looked at wholly");
    EXPECT_EQ(faulty.verdict(), CheckVerdict::Undecided);
    FileText file;
    file.sSchema = "('IFC99')";
    const CheckResult unknown = checked(file.text(""), {CheckLevel::Schema});
    EXPECT_EQ(unknown.level(CheckLevel::Schema).reason, "the schema IFC99 is not known");
    EXPECT_EQ(unknown.verdict(), CheckVerdict::Undecided);
    const CheckResult all = checked(FileText().text("#1=IFCPERSON('a',$,$,$,$,$,$,$);"),
                                    {CheckLevel::Syntax, CheckLevel::Header, CheckLevel::Schema, CheckLevel::Rules});
    EXPECT_NE(all.verdict(), CheckVerdict::NotValid) << sFailures(all);
}

// Numbers in any order, dense and scattered, cost no memory and no time beyond what the file is.
TEST(CheckSchema, ScatteredNumbersAreNumbersToo) {
    std::string sStatements;
    for (std::uint64_t i = 1; i <= 20'000; ++i)
        sStatements += '#' + std::to_string(i * 7'654'321'987) + "=OTHER();\n#" +
                       std::to_string(i * 7'654'321'987 + 1) + "=C(#" + std::to_string(i * 7'654'321'987) + ");\n";
    EXPECT_EQ(sFaults(sStatements), "");
}

}   // namespace
}   // namespace oxa
