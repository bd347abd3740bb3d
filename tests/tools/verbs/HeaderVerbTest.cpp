// SPDX-License-Identifier: Apache-2.0
// "oxaifc header": the header of a file, as text and as JSON, and changed in place.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"
#include "tools/WrittenFile.h"

namespace oxa::test {
namespace {

// Data that no reader would take: the verb does not look at them.
const std::string g_data = "\r\nDATA; /* '#1=A(; */ #1=NOTHING(';\xff\n\x01\n\nno end";

// A header with blanks, line ends, comments and a statement of its own kind in it.
const std::string g_oldHeader = "ISO-10303-21;/* HEADER; */\r\nHEADER ;\r\n"
                                "/* it's; */FILE_DESCRIPTION ( ( 'd;1' ,\r\n'/*d2*/' ) , '2;1' ) ;\n"
                                "FILE_NAME( 'n''(' /* name */,$,\n\t('a'),('o1','o2'),'',\n's)','\\X\\E4') ;\n"
                                "FILE_SCHEMA(('IFC4'));\nENDSEC ;";

TEST(HeaderVerb, TextHasTheThirteenRowsOfTheTree) {
    const ProgramRun run = runProgram({"header", "-"}, g_oldHeader + g_data);
    EXPECT_EQ(run.iCode, 0);
    EXPECT_EQ(run.sError, "");
    EXPECT_EQ(run.sOut, "Description\n"
                        " Description          (d;1), (/*d2*/)\n"
                        " ImplementationLevel  2;1\n"
                        "Name\n"
                        " Name                 n'(\n"
                        " TimeStamp\n"
                        " Author               a\n"
                        " Organization         (o1), (o2)\n"
                        " IfcToolbox\n"
                        " OriginatingSystem    s)\n"
                        " Authorisation        \xc3\xa4\n"
                        "Schema\n"
                        " Schema               IFC4\n");
}

TEST(HeaderVerb, JsonHasTheFields) {
    const ProgramRun run = runProgram({"header", "--json", "-"}, g_oldHeader + g_data);
    EXPECT_EQ(run.iCode, 0);
    const Json expected = {{"description", {"d;1", "/*d2*/"}},
                           {"implementationLevel", "2;1"},
                           {"name", "n'("},
                           {"timeStamp", ""},
                           {"author", Json::array({"a"})},
                           {"organization", {"o1", "o2"}},
                           {"preprocessorVersion", ""},
                           {"originatingSystem", "s)"},
                           {"authorization", "\xc3\xa4"},
                           {"schema", "IFC4"}};
    EXPECT_EQ(run.sOut, expected.dump(2) + "\n");   // in this order
}

TEST(HeaderVerb, SamplesAreToldAsInfoTellsThem) {
    for (const char* pName : {"house-ifc4.ifc", "house-ifc2x3.ifc"}) {
        SCOPED_TRACE(pName);
        const std::string sHeader = runProgram({"header", sExample(pName)}).sOut;
        EXPECT_NE(runProgram({"info", sExample(pName)}).sOut.find(sHeader), std::string::npos);
        Json header = runProgram({"header", sExample(pName), "--json"}).json();
        EXPECT_EQ(header["schema"], runProgram({"info", sExample(pName), "--json"}).json()["schema"]);
        header.erase("schema");
        EXPECT_EQ(header, runProgram({"info", sExample(pName), "--json"}).json()["header"]);
    }
}

struct SetRow {
    const char* pRule;
    std::vector<std::string> settings;
    const char* pBefore;   // in the header, and
    const char* pAfter;    // what stands there now
};
const SetRow g_sets[] = {
    {"a description", {"description=x"}, "( 'd;1' ,\r\n'/*d2*/' )", "('x')"},
    {"an implementation level", {"implementationLevel=4;3"}, "'2;1'", "'4;3'"},
    {"a name", {"name=x"}, "'n''('", "'x'"},
    {"a time stamp instead of nothing", {"timeStamp=2026-01-02T03:04:05"}, ",$,", ",'2026-01-02T03:04:05',"},
    {"an author", {"author=x"}, "('a')", "('x')"},
    {"several values of a list", {"author=x", "author=y", "author="}, "('a')", "('x','y','')"},
    {"organizations", {"organization=x", "organization=y"}, "('o1','o2')", "('x','y')"},
    {"a preprocessor", {"preprocessorVersion=x"}, "''", "'x'"},
    {"a system", {"originatingSystem=x"}, "'s)'", "'x'"},
    {"an authorization", {"authorization=x"}, "'\\X\\E4'", "'x'"},
    {"a schema", {"schema=IFC4X3_ADD2"}, "('IFC4')", "('IFC4X3_ADD2')"},
    {"a schema with its number", {"schema=IFC4 { 1 0 10303 }"}, "('IFC4')", "('IFC4 { 1 0 10303 }')"},
    {"a name in other letters", {"ORIGINATINGsystem=x"}, "'s)'", "'x'"},
    {"an empty text", {"name="}, "'n''('", "''"},
    {"a value with all that STEP escapes",
     {"name=it's = \\ \xc3\xa4 \xe2\x82\xac"},
     "'n''('",
     "'it''s = \\\\ \\X\\E4 \\X2\\20AC\\X0\\'"},
    {"a value as it stands", {"name=n'("}, "'n''('", "'n''('"},
};

TEST(HeaderVerb, SetChangesItsValueAndNoOtherByte) {
    for (const SetRow& row : g_sets) {
        SCOPED_TRACE(row.pRule);
        std::string sExpected = g_oldHeader;
        const std::size_t iPlace =
            std::string_view(row.pBefore) == "''" ? sExpected.find(",'',") + 1 : sExpected.find(row.pBefore);
        sExpected.replace(iPlace, std::string_view(row.pBefore).size(), row.pAfter);
        std::vector<std::string> words{"header", "-"};
        for (const std::string& sSetting : row.settings) words.insert(words.end(), {"--set", sSetting});
        words.push_back("-");
        const ProgramRun run = runProgram(words, g_oldHeader + g_data);
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sError, "");
        EXPECT_EQ(run.sOut, sExpected + g_data);
    }
}

TEST(HeaderVerb, SeveralFieldsAreSetAtOnce) {
    const ProgramRun run = runProgram({"header", "-", "--set", "schema=IFC2X3", "--set", "author=x", "--set", "name=y",
                                       "--set", "author=z", "--set", "implementationLevel=w", "-"},
                                      g_oldHeader + g_data);
    EXPECT_EQ(run.iCode, 0);
    EXPECT_TRUE(run.sOut.ends_with(g_data));
    const Json header = runProgram({"header", "-", "--json"}, run.sOut).json();
    EXPECT_EQ(header["schema"], "IFC2X3");
    EXPECT_EQ(header["author"], (Json{"x", "z"}));
    EXPECT_EQ(header["name"], "y");
    EXPECT_EQ(header["implementationLevel"], "w");
    EXPECT_EQ(header["organization"], (Json{"o1", "o2"}));
    EXPECT_EQ(header["authorization"], "\xc3\xa4");
}

TEST(HeaderVerb, FileMayBeItsOwnTarget) {
    const TestFolder folder;
    const std::string sData(1000000, 'x');
    const std::string sPath = folder.sFile("a.ifc", g_oldHeader + sData);
    for (const char* pName : {"first", "a much longer second", "3"}) {
        EXPECT_EQ(runProgram({"header", sPath, "--set", std::string("name=") + pName, sPath}).iCode, 0);
        EXPECT_EQ(runProgram({"header", sPath, "--json"}).json()["name"], pName);
        EXPECT_TRUE(sContent(sPath).ends_with("ENDSEC ;" + sData));
    }
    EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>{"a.ifc"});
}

TEST(HeaderVerb, ChangedSampleIsReadAsBefore) {
    const TestFolder folder;
    const std::string sOut = (folder.path() / "out.ifc").string();
    EXPECT_EQ(runProgram({"header", sExample("house-ifc4.ifc"), "--set", "author=x", sOut}).iCode, 0);
    EXPECT_EQ(runProgram({"check", sOut}).iCode, 0);
    const Json before = runProgram({"info", sExample("house-ifc4.ifc"), "--json"}).json();
    const Json after = runProgram({"info", sOut, "--json"}).json();
    EXPECT_EQ(after["entities"], before["entities"]);
    EXPECT_EQ(after["header"]["author"], Json::array({"x"}));
}

struct TornRow {
    const char* pRule;
    std::string sBefore;
    std::string sAfter;
};
const TornRow g_torn[] = {
    {"a parameter that is not there", "HEADER;FILE_NAME(,'',(''),(''),'','','');ENDSEC;",
     "HEADER;FILE_NAME('x','',(''),(''),'','','');ENDSEC;"},
    {"behind a statement that lacks its end",
     "HEADER;FILE_DESCRIPTION(('a','2;1';FILE_NAME($,,(''),(''),'','',);ENDSEC;",
     "HEADER;FILE_DESCRIPTION(('a','2;1';FILE_NAME('x',,(''),(''),'','',);ENDSEC;"},
    {"strokes", "HEADER;FILE_NAME('/'/*/'*/,'/',('/'),(''),'','','//');ENDSEC;",
     "HEADER;FILE_NAME('x'/*/'*/,'/',('/'),(''),'','','//');ENDSEC;"},
};

TEST(HeaderVerb, ValueIsSetInATornHeaderToo) {
    for (const TornRow& row : g_torn) {
        SCOPED_TRACE(row.pRule);
        const ProgramRun run = runProgram({"header", "-", "--set", "name=x", "-"}, row.sBefore);
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.sOut, row.sAfter);
    }
}

// Of what the library does not know nothing is lost, but it is told.
TEST(HeaderVerb, UnknownStatementIsKeptAndGivesOne) {
    std::string sText = g_oldHeader;
    sText.insert(sText.find("FILE_SCHEMA"), "FILE_POPULATION( 'x' );\n");
    EXPECT_EQ(runProgram({"header", "-"}, sText).iCode, 1);
    const ProgramRun run = runProgram({"header", "-", "--set", "name=n'(", "-"}, sText + g_data);
    EXPECT_EQ(run.iCode, 1);
    EXPECT_EQ(run.sOut, sText + g_data);
    EXPECT_EQ(run.sError, "oxaifc: standard input: 1 error in the header; oxaifc check tells them\n");
}

struct HeaderRefuseRow {
    const char* pRule;
    std::string sFile;
    std::vector<std::string> words;   // behind "header FILE"; OUT is a file
    const char* pError;               // behind "oxaifc: "; FILE is the file
};
const std::vector<std::string> g_setName{"--set", "name=x", "OUT"};
const HeaderRefuseRow g_headerRefusals[] = {
    {"an unknown field", g_oldHeader, {"--set", "autor=x", "OUT"}, "a header has no field autor; did you mean author?"},
    {"a field that nothing comes near",
     g_oldHeader,
     {"--set", "q=x", "OUT"},
     "a header has no field q; there are: description, implementationLevel, name, timeStamp, author, "
     "organization, "
     "preprocessorVersion, originatingSystem, authorization, schema"},
    {"no value", g_oldHeader, {"--set", "name", "OUT"}, "--set name: has no =, as in author=NAME"},
    {"two values of one text",
     g_oldHeader,
     {"--set", "name=x", "--set", "Name=y", "OUT"},
     "name: takes one value, and is set twice"},
    {"bytes outside UTF-8", g_oldHeader, {"--set", "name=\xff", "OUT"}, "name: the text is no UTF-8"},
    {"a schema that would end its string",
     g_oldHeader,
     {"--set", "schema=IFC4'", "OUT"},
     "schema: IFC4' is no name of a schema"},
    {"an empty schema", g_oldHeader, {"--set", "schema=", "OUT"}, "schema:  is no name of a schema"},
    {"no target", g_oldHeader, {"--set", "name=x"}, "header: OUT is missing, the file to write"},
    {"nothing to set", g_oldHeader, {"OUT"}, "header: nothing to change; name it: --set FIELD=VALUE"},
    {"no header", "Dear Sir or Madam,\n", {}, "FILE: has no HEADER section"},
    {"no header to change", "Dear Sir or Madam,\n", g_setName, "FILE: has no HEADER section"},
    {"the simple form", "Ifc file simple;\nIFC4;\n*;\n", {}, "FILE: has no HEADER section"},
    {"no end",
     "ISO-10303-21;HEADER;FILE_NAME('n','',(''),(''),'','','');",
     {},
     "FILE: its HEADER section does not end"},
    {"an end in an open string", "HEADER;FILE_NAME('n);ENDSEC;", {}, "FILE: its HEADER section does not end"},
    {"an end in an open comment", "HEADER;/*/ENDSEC;", {}, "FILE: its HEADER section does not end"},
    {"a header without end",
     "HEADER;" + std::string(17 << 20, ' ') + "ENDSEC;",
     {},
     "FILE: its HEADER section does not end"},
    {"no statement for the field", "HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;", g_setName, "FILE: has no FILE_NAME"},
    {"two statements for the field",
     "HEADER;FILE_SCHEMA(('IFC4'));FILE_SCHEMA(('IFC4'));ENDSEC;",
     {"--set", "schema=IFC2X3", "OUT"},
     "FILE: has FILE_SCHEMA twice"},
    {"too few parameters", "HEADER;FILE_NAME('n');ENDSEC;", g_setName, "FILE: FILE_NAME has 1 parameter instead of 7"},
    {"parameters behind the end", "HEADER;FILE_NAME('n','',(''),(''),'','',''))('q');ENDSEC;", g_setName,
     "FILE: FILE_NAME has 8 parameters instead of 7"},
    {"too many parameters",
     "HEADER;FILE_SCHEMA(('IFC4'),);ENDSEC;",
     {"--set", "schema=IFC2X3", "OUT"},
     "FILE: FILE_SCHEMA has 2 parameters instead of 1"},
};

TEST(HeaderVerb, WhatCannotBeDoneIsOneLineAndNoFile) {
    for (const HeaderRefuseRow& row : g_headerRefusals) {
        SCOPED_TRACE(row.pRule);
        if (!std::ranges::all_of(row.words, boTakesWord)) continue;
        const TestFolder folder;
        const std::string sIn = folder.sFile("in.ifc", row.sFile);
        const std::string sOut = folder.sFile("out.ifc", "before");
        std::vector<std::string> words{"header", sIn};
        for (const std::string& sWord : row.words) words.push_back(sWord == "OUT" ? sOut : sWord);
        std::string sError = row.pError;
        if (sError.starts_with("FILE: ")) sError.replace(0, 4, sIn);
        const ProgramRun run = runProgram(words);
        EXPECT_EQ(run.iCode, 2);
        EXPECT_EQ(run.sOut, "");
        EXPECT_EQ(run.sError, "oxaifc: " + sError + "\n");
        EXPECT_EQ(sContent(sOut), "before");
        EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"in.ifc", "out.ifc"}));
    }
}

// A header of a few statements, cut anywhere: whole or refused, and never a crash.
TEST(HeaderVerb, CutHeaderIsRefused) {
    for (std::size_t i = 1; i < g_oldHeader.size(); i += 7) {
        SCOPED_TRACE(i);
        EXPECT_EQ(runProgram({"header", "-"}, g_oldHeader.substr(0, i)).iCode, 2);
    }
    EXPECT_EQ(runProgram({"header", "-"}, g_oldHeader).iCode, 0);
}

TEST(HeaderVerb, OnlyTheHeaderIsRead) {
    // Data that end in the middle are the matter of others.
    EXPECT_EQ(runProgram({"header", "-"}, g_oldHeader).iCode, 0);
    EXPECT_EQ(runProgram({"header", "-", "--set", "name=x", "-"}, g_oldHeader).iCode, 0);
}

}   // namespace
}   // namespace oxa::test
