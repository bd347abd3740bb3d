// SPDX-License-Identifier: Apache-2.0
// The fields of a header: their number, type, length and form.
#include <gtest/gtest.h>

#include <string>

#include "Check/Header/HeaderForms.h"
#include "CheckText.h"

namespace oxa {
namespace {

CheckResult header(const std::string& sText) { return checked(sText, {CheckLevel::Header}); }

struct HeaderRow {
    const char* sRule;
    FileText file;
    std::string sFailures;
};

const std::string g_s256(256, 'x');

const HeaderRow g_fields[] = {
    {"as they are", {}, ""},
    {"a description is a list",
     {.sDescription = "'','2;1'"},
     "2:25 Header_FieldType description ''; a list of strings"},
    {"of one at least", {.sDescription = "(),'2;1'"}, "2:25 Header_ListBound description ''; one string at least"},
    {"of strings",
     {.sDescription = "('',2,$),'2;1'"},
     "2:29 Header_FieldType description '2'; a list of strings | 2:31 Header_FieldType description '$'; a list of "
     "strings"},
    {"of 256 characters",
     {.sDescription = "('" + g_s256 + "','" + g_s256 + "x'),'2;1'"},
     "2:285 Header_StringLength description '257'; 256 characters at most"},
    {"which count once each", {.sDescription = "('" + std::string(512, '\'') + "'),'2;1'"}, ""},
    {"two fields", {.sDescription = "('')"}, "2:8 Header_FieldCount '1'; 2 fields"},
    {"and no more", {.sDescription = "(''),'2;1',$"}, "2:8 Header_FieldCount '3'; 2 fields"},
    {"a level",
     {.sDescription = "(''),'2.1'"},
     "2:30 Header_ImplementationLevel implementation_level '2.1'; a version and a conformance class, as 2;1"},
    {"six names", {.sName = "'','2024-08-30T12:34:53',(''),(''),'',''"}, "3:1 Header_FieldCount '6'; 7 fields"},
    {"no field is unset",
     {.sName = "$,'2024-08-30T12:34:53',(''),(''),'','',$"},
     "3:11 Header_FieldType name '$'; a string | 3:51 Header_FieldType authorization '$'; a string"},
    {"an author is a list",
     {.sName = "'','2024-08-30T12:34:53',$,('a','b'),'','',''"},
     "3:36 Header_FieldType author '$'; a list of strings"},
    {"a time",
     {.sName = "'','30.8.2024',(''),(''),'','',''"},
     "3:14 Header_TimeStamp time_stamp '30.8.2024'; a date and a time of ISO 8601, as 2024-08-30T12:34:53"},
    {"a schema is known",
     {.sSchema = "('IFC99')"},
     "4:14 Header_SchemaUnknown schema_identifiers 'IFC99'; a schema as IFC2X3, IFC4 or IFC4X3_ADD2"},
    {"one of them", {.sSchema = "('IFC4','IFC2X3')"}, "4:13 Header_SchemaCount schema_identifiers '2'; 1 schema"},
    {"one at least", {.sSchema = "()"}, "4:13 Header_ListBound schema_identifiers ''; one string at least"},
    {"in upper case",
     {.sSchema = "('Ifc4')"},
     "4:14 Header_SchemaForm schema_identifiers 'Ifc4'; letters in upper case"},
    {"with its identifier", {.sSchema = "('IFC4 { 1 0 10303 }')"}, ""},
    {"in a list", {.sSchema = "'IFC4'"}, "4:13 Header_FieldType schema_identifiers 'IFC4'; a list of strings"},
};

TEST(CheckHeader, Fields) {
    for (const HeaderRow& row : g_fields) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sFailures(header(row.file.text(""))), row.sFailures);
    }
}

struct EntityRow {
    const char* sRule;
    const char* sHeader;
    const char* sFailures;
};
#define D "FILE_DESCRIPTION((''),'2;1');"
#define N "FILE_NAME('','2024-08-30T12:34:53',(''),(''),'','','');"
#define S "FILE_SCHEMA(('IFC4'));"
const EntityRow g_entities[] = {
    {"three in order", D N S, ""},
    {"out of order", D S N,
     "1:50 Header_Order ''; FILE_DESCRIPTION, FILE_NAME, FILE_SCHEMA, then the others | 1:72 Header_Order ''; "
     "FILE_DESCRIPTION, FILE_NAME, FILE_SCHEMA, then the others"},
    {"one is missing", N S,
     "1:21 Header_Order ''; FILE_DESCRIPTION, FILE_NAME, FILE_SCHEMA, then the others | 1:76 Header_Order ''; "
     "FILE_DESCRIPTION, FILE_NAME, FILE_SCHEMA, then the others | 0:0 Header_Missing ''; FILE_DESCRIPTION"},
    {"one is there twice", D N S S, "1:127 Header_Double ''; once"},
    {"others of the standard",
     D N S "SECTION_LANGUAGE($,'en');SECTION_CONTEXT('a',('b'));FILE_POPULATION('IFC4','x',$);", ""},
    {"with their types", D N S "SECTION_LANGUAGE($,$);", "1:146 Header_FieldType default_language '$'; a string"},
    {"user-defined ones", D N S "!MINE(1,2);", ""},
    {"with their mark", D N S "MINE(1,2);", "1:127 Header_Entity ''; ! in front of a user-defined one"},
};
#undef D
#undef N
#undef S

TEST(CheckHeader, Entities) {
    for (const EntityRow& row : g_entities) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sFailures(header(std::string("ISO-10303-21;HEADER;") + row.sHeader +
                                   "ENDSEC;DATA;ENDSEC;END-ISO-10303-21;")),
                  row.sFailures);
    }
}

const HeaderRow g_notes[] = {
    {"none", {}, ""},
    {"a model view", {.sDescription = "(''),'2;1'"}, "2:25 Header_ViewDefinition description ''; ViewDefinition [...]"},
    {"without a blank too", {.sDescription = "('ViewDefinition[DesignTransferView]','Option [a: b]'),'2;1'"}, ""},
    {"items of a form",
     {.sDescription = "('ViewDefinition [A]','IFC 2x'),'2;1'"},
     "2:47 Header_DescriptionForm description 'IFC 2x'; ViewDefinition [...], ExchangeRequirement [...], "
     "CoordinateReference [...], Option [...] or Comment [...]"},
    {"the level of IFC",
     {.sDescription = "('ViewDefinition [A]'),'3;1'"},
     "2:48 Header_LevelOfIfc implementation_level '3;1'; 2;1"},
    {"the system that wrote it",
     {.sName = "'','2024-08-30T12:34:53',(''),(''),'','Mine 1.0',''"},
     "3:49 Header_OriginatingSystem originating_system 'Mine 1.0'; Company - Application - Version"},
    {"a schema that is a standard",
     {.sSchema = "('IFC4X3_ADD1')"},
     "4:14 Header_SchemaStatus schema_identifiers 'IFC4X3_ADD1'; IFC2X3, IFC4 or IFC4X3_ADD2"},
};

TEST(CheckHeader, NotesTakeNoValidityAway) {
    for (const HeaderRow& row : g_notes) {
        SCOPED_TRACE(row.sRule);
        const CheckResult result = header(row.file.text(""));
        EXPECT_EQ(sFailures(result, true), row.sFailures);
        EXPECT_EQ(sFailures(result), "");
        EXPECT_EQ(result.verdict(), CheckVerdict::Valid);
    }
}

struct TimeRow {
    const char* sText;
    bool boForm;
};
const TimeRow g_times[] = {
    {"2024-08-30T12:34:53", true},       {"2024-08-30T12:34:53Z", true},   {"2024-08-30T12:34:53+05:00", true},
    {"2024-08-30T12:34:53-0500", false}, {"2024-08-30T12:34:53+05", true}, {"2024-08-30T12:34:53.125", true},
    {"2024-08-30T12:34:53,5Z", true},    {"2024-08-30T12:34:53.", false},  {"2024-02-29T00:00:00", true},
    {"2023-02-29T00:00:00", false},      {"2024-13-01T00:00:00", false},   {"2024-08-30T25:00:00", false},
    {"2024-08-30T12:60:00", false},      {"2024-08-30 12:34:53", false},   {"2024-08-30", false},
    {"20240830T123453", false},          {"2024-08-30T12:34:53 ", false},  {"", false},
};

TEST(CheckHeader, TimeStamps) {
    for (const TimeRow& row : g_times) EXPECT_EQ(check::boTimeStamp(row.sText), row.boForm) << row.sText;
}

}   // namespace
}   // namespace oxa
