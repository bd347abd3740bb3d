// SPDX-License-Identifier: Apache-2.0
// The scanner: which bytes become statements, where sections begin and end, and what is said of faults.
#include "Format/Ifc/IfcReadFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Format/Ifc/ReadResult.h"
#include "platform/Localization.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;

const std::string g_point = "#1=IFCCARTESIANPOINT((1.,2.));\n";
const std::string g_head = "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;";

struct ScanRow {
    const char* sRule;
    std::string sText;
    bool boRead;
    std::size_t iEntities;
    std::vector<std::string> rows;
};

// clang-format off
const ScanRow g_scanRows[] = {
    {"an empty stream", "", false, 0, {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"a text without a marker", "DATA;" + g_point + "ENDSEC;", false, 0, {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"a header alone", g_head + "END-ISO-10303-21;", true, 0, {}},
    {"no header: no schema, no entity, no word", "ISO-10303-21;DATA;" + g_point + "ENDSEC;", true, 0, {}},
    {"the end of DATA is missing", g_head + "DATA;" + g_point, false, 1, {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"the end is missing and something was reported", g_head + "DATA;#1=IFCNO();", false, 0,
     {"Error Value 1 Error_UnknownEntityType | #1=IFCNO();"}},
    {"a preface before the marker", "\xEF\xBB\xBFSubject: a = model;" + sIfc4File(g_point), true, 1, {}},
    {"a second = before the marker", "a=b=c;" + sIfc4File(g_point), false, 0,
     {"Fatal Syntax 1 Error_UnexpectedEqualOperator | "}},
    {"a backslash before the marker ends the read", "a\\b;" + sIfc4File(g_point), false, 0,
     {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"a missing semicolon", sIfc4File("#1=IFCCARTESIANPOINT((1.,2.))\n#2=IFCDIRECTION((1.,0.));\n"), false, 0,
     {"Fatal Syntax 6 Error_UnexpectedEqualOperator | #1=IFCCARTESIANPOINT((1.,2.))"}},
    {"the file ends behind a slash", g_head + "DATA;\n#1=IFCX(/", false, 0,
     {"Fatal Syntax 2 Error_InvalidEndOfFile | #1=IFCX(/"}},
    {"the file ends in a comment", g_head + "DATA;\n#1=IFCX(/* no\nend", false, 0,
     {"Fatal Syntax 3 Error_EndOfCommentNotFound | #1=IFCX("}},
    {"a line end behind a backslash in a string", sIfc4File("#1=IFCX('a\\\nb');\n"), false, 0,
     {"Fatal Syntax 5 Error_UnexpectedNewlineInString | "}},
    {"a string that never ends swallows the rest", sIfc4File("#1=IFCX('a;\n"), false, 0,
     {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"an unknown schema", "ISO-10303-21;HEADER;\nFILE_SCHEMA(('IFC99'));ENDSEC;DATA;" + g_point, false, 0,
     {"Fatal Model 2 Error_UnknownSchemaName | ENDSEC;"}},
    {"no schema name", "ISO-10303-21;HEADER;ENDSEC;DATA;" + g_point, false, 0,
     {"Fatal Model 1 Error_UnknownSchemaName | ENDSEC;"}},
    {"ENDSEC in a string ends the header", "ISO-10303-21;HEADER;FILE_DESCRIPTION(('ENDSEC'),'2;1');", false, 0,
     {"Fatal Model 1 Error_UnknownSchemaName | FILE_DESCRIPTION(('ENDSEC'),'2;1');"}},
    {"a header statement without a kind", "ISO-10303-21;HEADER;\nFOO();FILE_SCHEMA(('IFC4'));ENDSEC;DATA;ENDSEC;", true,
     0, {"Error Header 2 Error_HeaderTypeNotImplemented | FOO();"}},
    {"# not in front", sIfc4File("x#1=IFCWALL();\n"), false, 0,
     {"Fatal Syntax 5 Error_ExpectedNumberSign | x#1=IFCWALL();"}},
    {"a statement without # is dropped", sIfc4File("nothing;\n" + g_point), true, 1, {}},
    {"# in a comment is none", sIfc4File(g_point + "/* #2 */"), true, 1, {}},
    {"# before ENDSEC makes an entity statement of it", sIfc4File(g_point + "#"), false, 1,
     {"Fatal Syntax 6 Error_ExpectedEqualOperator | #ENDSEC;"}},
    {"nothing behind the DATA section is read", sIfc4File(g_point) + "a=b=c; \\ /* ", true, 1, {}},
    {"END-ISO-10303-21 outside of sections", g_head + "END-ISO-10303-21;DATA;" + g_point + "ENDSEC;", true, 0, {}},
    {"blanks vanish, inside of words too", sIfc4File("#1 = IFC CARTESIAN\r\nPOINT ( ( 1. , 2. ) ) ;\n"), true, 1, {}},
    {"a tab is no blank", sIfc4File("#1=IFCWALL\t();\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCWALL\t();"}},
    {"comments vanish anywhere", sIfc4File("#/**/1=IFC/* ;=#' */CARTESIANPOINT((1./***/,2.));\n"), true, 1, {}},
    {"/*/ does not close", sIfc4File("/*/ a=b=c; */" + g_point), true, 1, {}},
    {"a slash alone is a byte of the statement", sIfc4File("#1=IFCWALL/();\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCWALL/();"}},
    {"a statement's line is where it ends", sIfc4File("#1\n=\nIFCNO\n()\n;\n"), true, 0,
     {"Error Value 9 Error_UnknownEntityType | #1=IFCNO();"}},
    {"lines in strings and comments count", sIfc4File("/*\n\n*/#1=IFCNO('\n');\n"), true, 0,
     {"Error Value 8 Error_UnknownEntityType | #1=IFCNO('\n');"}},
    {"; = # in strings count for nothing", sIfc4File("#1=IFCNO(';=#');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO(';=#');"}},
    {"a quote behind \\S\\ ends no string", sIfc4File("#1=IFCNO('\\S\\';');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\S\\';');"}},
    {"a quote behind a backslash ends no string", sIfc4File("#1=IFCNO('\\';');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\';');"}},
    {"the marker may stand amid a statement", "xxISO-10303-21yy;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;ENDSEC;", true,
     0, {}},
    {"the end mark holds the marker", "END-ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;END-ISO-10303-21;", true, 0,
     {}},
    {"marker and end mark alone", "ISO-10303-21;END-ISO-10303-21;", true, 0, {}},
    {"the end mark in a header is a header statement", "ISO-10303-21;HEADER;END-ISO-10303-21;", false, 0,
     {"Error Header 1 Error_HeaderTypeNotImplemented | END-ISO-10303-21;"}},
    {"DATA goes before HEADER", "ISO-10303-21;HEADERDATA;nothing;ENDSEC;", true, 0, {}},
    {"section words are found in quoted text", g_head + "x('DATA');" + g_point + "x('ENDSEC');" + g_point, true, 1, {}},
    {"section words are upper case", g_head + "data;" + g_point + "END-ISO-10303-21;", true, 0, {}},
    {"blanks do not part a section word", g_head + "DA TA ;" + g_point + "END\r\nSEC ;", true, 1, {}},
    {"a tab does", g_head + "DATA;" + g_point + "END\tSEC;", false, 1, {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"a comment does not", g_head + "DA/*;*/TA;" + g_point + "END/**/SEC;", true, 1, {}},
    {"# counts for nothing outside of DATA", g_head + "#DATA;" + g_point + "ENDSEC;", true, 1, {}},
    {"line feeds count, carriage returns do not", sIfc4File("\r\r\r\n\r\n#1=IFCNO();\n"), true, 0,
     {"Error Value 7 Error_UnknownEntityType | #1=IFCNO();"}},
    {"a line feed that an escape passes over does not count", sIfc4File("#1=IFCNO('\\S\\\n\\X2\\0\n0E9\\X0\\');\n"), true,
     0, {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\S\\\n\\X2\\0\n0E9\\X0\\');"}},
    {"\\X\\ passes over one byte", sIfc4File("#1=IFCNO('\\X\\';');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\X\\';');"}},
    {"\\X2\\ passes over four", sIfc4File("#1=IFCNO('\\X2\\';';');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\X2\\';';');"}},
    {"\\X4\\ passes over eight", sIfc4File("#1=IFCNO('\\X4\\';';';';');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\X4\\';';';';');"}},
    {"\\X0\\ passes over nothing", sIfc4File("#1=IFCNO('\\X0\\');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\X0\\');"}},
    {"\\X and another byte pass over that byte", sIfc4File("#1=IFCNO('\\X';');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\X';');"}},
    {"a doubled backslash is one escape", sIfc4File("#1=IFCNO('\\\\');\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO('\\\\');"}},
    {"each line end behind a backslash is told until the string ends", sIfc4File("#1=IFCX('a\\\nb\\\nc');#2=IFCX();\n"),
     false, 0, {"Fatal Syntax 5 Error_UnexpectedNewlineInString | ", "Fatal Syntax 6 Error_UnexpectedNewlineInString | "}},
    {"a fatal fault of a statement ends the scan", sIfc4File("#1=;\n#2=;\n"), false, 0,
     {"Fatal Syntax 5 Error_InvalidEntity | #1=;"}},
    {"and nothing is completed: no word of a missing instance",
     sIfc4File("#1=IFCAXIS2PLACEMENT2D(#9,$);\n#2=;\n" + g_point), false, 1,
     {"Fatal Syntax 6 Error_InvalidEntity | #2=;"}},
    {"a slash that does not follow the star closes nothing", sIfc4File("/* a * b/ c=d=e; */" + g_point), true, 1, {}},
    {"a slash hides no end of a statement", sIfc4File("#1=IFCNO()/;\n" + g_point), true, 1,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO()/;"}},
    {"nor a quote", sIfc4File("#1=IFCNO(/';');\n"), true, 0, {"Error Value 5 Error_UnknownEntityType | #1=IFCNO(/';');"}},
    {"nor a comment", sIfc4File("#1=IFCNO//*;*/();\n"), true, 0,
     {"Error Value 5 Error_UnknownEntityType | #1=IFCNO/();"}},
    {"the marker of another part", "ISO-10303-28;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;" + g_point + "ENDSEC;",
     false, 0, {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"a marker without its first letter", "SO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;ENDSEC;", false, 0,
     {"Fatal Syntax 0 Error_InvalidFile | "}},
    {"HEADE begins no header", "ISO-10303-21;HEADE;FILE_SCHEMA(('IFC4'));HEADER;ENDSEC;", false, 0,
     {"Fatal Model 1 Error_UnknownSchemaName | ENDSEC;"}},
    {"ENDSE ends no header", "ISO-10303-21;HEADER;ENDSE;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;" + g_point + "ENDSEC;",
     true, 1, {"Error Header 1 Error_HeaderTypeNotImplemented | ENDSE;"}},
    {"DAT begins no data", g_head + "DAT;" + g_point + "DATA;ENDSEC;", true, 0, {}},
    {"ENDSE ends no data", g_head + "DATA;ENDSE;" + g_point + "ENDSEC;", true, 1, {}},
    {"END-ISO-10303-2 is no end mark", g_head + "END-ISO-10303-2;DATA;" + g_point + "ENDSEC;", true, 1, {}},
};
// clang-format on

TEST(ReadFile, ScansByTheRules) {
    for (const ScanRow& row : g_scanRows) {
        SCOPED_TRACE(row.sRule);
        const ReadResult result(row.sText);
        EXPECT_EQ(result.boRead, row.boRead);
        EXPECT_EQ(result.iEntities(), row.iEntities);
        EXPECT_EQ(result.rows(), row.rows);
    }
}

// The texts of the reports that have an argument, or none, to the byte.
TEST(ReadFile, ReportsAreTheTextsOfTheirKeys) {
    struct Row {
        std::string sText;
        const char* sKey;
        std::string sArgument;
    };
    for (const Row& row :
         {Row{"", "Error_InvalidFile", ""}, Row{"a==b;", "Error_UnexpectedEqualOperator", ""},
          Row{"/", "Error_InvalidEndOfFile", ""}, Row{"/*", "Error_EndOfCommentNotFound", ""},
          Row{"'\\\n", "Error_UnexpectedNewlineInString", ""},
          Row{"ISO-10303-21;HEADER;FILE_SCHEMA(('IFC99'));ENDSEC;", "Error_UnknownSchemaName", "IFC99"},
          Row{"ISO-10303-21;HEADER;ENDSEC;", "Error_UnknownSchemaName", ""}}) {
        SCOPED_TRACE(row.sText);
        const ReadResult result(row.sText);
        EXPECT_FALSE(result.boRead);
        std::string sExpected = localize("Ifc", row.sKey);
        const std::size_t iArgument = sExpected.find("%1");
        if (iArgument != std::string::npos) sExpected.replace(iArgument, 2, row.sArgument);
        ASSERT_EQ(result.errors.records().size(), 1U);
        EXPECT_EQ(result.errors.records()[0].description, sExpected);
        EXPECT_NE(sExpected, row.sKey);
        EXPECT_EQ(result.errors.records()[0].entity, nullptr);
    }
}

TEST(ReadFile, CompletesOnlyAfterAProperEnd) {
    const std::string sData = "#1=IFCDIRECTION((1.));#2=IFCAXIS2PLACEMENT2D(#3,#1);";
    EXPECT_THAT(ReadResult(g_head + "DATA;" + sData + "ENDSEC;").rows(),
                ElementsAre("Error Reference 0 Error_MissingEntityWithId | "));
    const ReadResult cut(g_head + "DATA;" + sData);
    EXPECT_THAT(cut.rows(), ElementsAre("Fatal Syntax 0 Error_InvalidFile | "));
    EXPECT_EQ(cut.file.data().pEntityFromId(1), nullptr);
}

// Every place where a buffer can end: the same file, moved byte by byte over the end of a buffer, reads the same.
TEST(ReadFile, DoesNotMindWhereABufferEnds) {
    const std::string sData =
        "#1 =  IFCLABEL /* a ; = # ' comment **/ ( 'it''s \\X2\\00E9\\X0\\ \\X\\E9 \\S\\' \\\\' ) ;\n"
        "#2=IFCPROPERTYSINGLEVALUE('a''b',/**/$,IFCLABEL('\\X4\\0001F600\\X0\\;'),$);\n  \r\n\n  "
        "#3=IFCCARTESIANPOINT((1.,2.));\nx/y;\n#4=IFCNO('\n');\n";
    const std::string sText = sIfc4File(sData);
    const ReadResult expected(sText);
    ASSERT_TRUE(expected.boRead);
    ASSERT_EQ(expected.rows().size(), 2U);
    const std::size_t iData = sText.find("#1 =");
    for (std::size_t iShift = 0; iShift < sData.size() + 20; ++iShift) {
        SCOPED_TRACE(iShift);
        // Blanks before the data, so that the end of the first buffer falls on each byte of them in turn.
        const std::string sPadding(stream::StreamReadBuffer::g_iBufferSize - iData - iShift + 10, ' ');
        const ReadResult moved(sText.substr(0, iData) + sPadding + sText.substr(iData));
        ASSERT_EQ(moved.boRead, true);
        ASSERT_EQ(moved.rows(), expected.rows());
        ASSERT_EQ(moved.iEntities(), expected.iEntities());
        for (const std::size_t iId : {2U, 3U})
            ASSERT_EQ(moved.file.data().pEntityFromId(iId)->sWriteLine(moved.file.data()),
                      expected.file.data().pEntityFromId(iId)->sWriteLine(expected.file.data()));
    }
}

// \\S\\, \\X\\, \\X2\\ and \\X4\\ pass over their second backslash and over one, four or eight bytes, whatever they
// are: a quote there ends no string, and the one right behind them does.
TEST(ReadFile, PassesOverAQuoteInEachPlaceOfAnEscape) {
    for (const auto& [sEscape, iSkip] :
         {std::pair("\\S", 2U), std::pair("\\X", 2U), std::pair("\\X2", 5U), std::pair("\\X4", 9U)})
        for (std::size_t i = 0; i <= iSkip; ++i) {
            std::string sPassed = "\\0000000000";
            sPassed.resize(iSkip);
            if (i < iSkip) sPassed[i] = '\'';
            // A string that ended earlier would leave the last quote to open another one, which swallows the rest.
            const std::string sStatement = "#1=IFCNO('" + (sEscape + sPassed) + "');";
            SCOPED_TRACE(sStatement);
            const ReadResult result(sIfc4File(sStatement + "\n#2=IFCDIRECTION((1.));\n"));
            EXPECT_TRUE(result.boRead);
            EXPECT_EQ(result.iEntities(), 1U);
            EXPECT_THAT(result.rows(), ElementsAre("Error Value 5 Error_UnknownEntityType | " + sStatement));
        }
}

// A digit short, and the quote that should end the string is passed over: all that follows belongs to it.
TEST(ReadFile, AnEscapeThatIsADigitShortTakesTheQuoteAlong) {
    for (const char* sEscape : {"\\X2\\00E", "\\X4\\0001F60"}) {
        SCOPED_TRACE(sEscape);
        const ReadResult result(
            sIfc4File("#1=IFCNO('" + std::string(sEscape) + "');\n#2=IFCDIRECTION((1.));\n#3=IFCDIRECTION((1.));\n"));
        EXPECT_FALSE(result.boRead);
        EXPECT_EQ(result.iEntities(), 0U);
        EXPECT_THAT(result.rows(), ElementsAre("Fatal Syntax 0 Error_InvalidFile | "));
    }
}

// Bytes that a buffer boundary has already taken along are part of the text of a report.
TEST(ReadFile, ReportsTheTextAssembledSoFar) {
    const std::string sHead = g_head + "DATA;";
    const std::string sWord(stream::StreamReadBuffer::g_iBufferSize - sHead.size() - 4, 'A');
    const ReadResult result(sHead + "#1=" + sWord + "BC=;");
    ASSERT_EQ(result.errors.records().size(), 1U);
    EXPECT_EQ(result.errors.records()[0].lineString, "#1=" + sWord + "B");
}

TEST(ReadFile, StaysAliveOnEveryPrefix) {
    const std::string sText =
        sIfc4File("#1=IFCPROPERTYSINGLEVALUE('a''b',$,IFCLABEL('\\X2\\00E9\\X0\\'),$); /* c */\n");
    const std::size_t iEnd = sText.find("ENDSEC;\nEND-ISO") + 7;
    for (std::size_t i = 0; i <= sText.size(); ++i) {
        SCOPED_TRACE(i);
        const ReadResult result(sText.substr(0, i));
        EXPECT_EQ(result.boRead, i >= iEnd);
        EXPECT_EQ(result.errors.records().empty(), i >= iEnd);
    }
}

}   // namespace
}   // namespace oxa::ifc
