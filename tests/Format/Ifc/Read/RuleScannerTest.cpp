// SPDX-License-Identifier: Apache-2.0
// The scanner at the ends of its buffer: comments, strings, directives and faults say the same wherever it ends.
//
// The rows of the DATA section are read on the caller's thread and by workers, and once more for each of their bytes as
// the last one of the buffer, behind blanks and behind a comment.
#include <gtest/gtest.h>

#include <string>

#include "Format/Ifc/RuleModel.h"

namespace oxa::ifc {
namespace {

constexpr std::size_t g_iBuffer = 16384;

struct FileRow {
    const char* sRule;
    std::string sText;
    bool boRead;
    Texts reports = {};
    Texts model = {};
};

void vExpectFile(const FileRow& row, bool boSingleThreaded) {
    SCOPED_TRACE(std::string(row.sRule) + (boSingleThreaded ? "" : ", threads"));
    const ReadFileModel read(row.sText, boSingleThreaded, schemaIs(ruleSchema()));
    EXPECT_EQ(read.boRead, row.boRead);
    EXPECT_EQ(reports(read.errors), row.reports);
    EXPECT_EQ(statements(read.file.data()), row.model);
    EXPECT_EQ(read.errors.lostStatements().iCount, 0U);
}

std::string sUnknown(const std::string& sStatement, int iLine = 6) {
    return "Error Value " + std::to_string(iLine) + " Error_UnknownEntityType | " + sStatement;
}
const std::string g_sInvalidFile = "Fatal Syntax 0 Error_InvalidFile | ";

// ---- The DATA section.

// clang-format off
const FileRow g_data[] = {
    {"a byte above 127 stays", "#1=IFC\xE4();", true, {sUnknown("#1=IFC\xE4();")}},
    {"a NUL stays", std::string("#1=IFC\0X();", 11), true, {sUnknown(std::string("#1=IFC\0X();", 11))}},
    {"comments vanish", "/*a*/#/*b*/1/**/=IFC/* ; = # ' \\ */NONE/***/(/****/'/*c*/'/* * / **/)/*/*/;/* */", true,
     {sUnknown("#1=IFCNONE('/*c*/');")}},
    {"lines behind asterisks count", "/**\n**\n*/#1=IFCNONE();", true, {sUnknown("#1=IFCNONE();", 8)}},
    {"comment and blank in turn", "#1 /*a*/ /*b*/=/*c*/ IFC /*d*/NONE();", true, {sUnknown("#1=IFCNONE();")}},
    {"a slash in front of a comment", "#1=IFC//*a*/X();", true, {sUnknown("#1=IFC/X();")}},
    {"a slash in front of a semicolon", "#1=IFC/;", false, {"Fatal Syntax 6 Error_InvalidEntity | #1=IFC/;"}},
    {"a slash in front of a string", "#1=IFC/';'();", true, {sUnknown("#1=IFC/';'();")}},
    {"a slash in front of a blank", "#1=IFC/ *a*/();", true, {sUnknown("#1=IFC/*a*/();")}},
    {"a slash in front of an equal sign", "#1/=IFCNONE();", false,
     {"Fatal Syntax 6 Error_ExpectedLeftParenthesis | #1/=IFCNONE();"}},
    {"a slash in front of a number sign", "/#1=IFCNONE();", false,
     {"Fatal Syntax 6 Error_ExpectedNumberSign | /#1=IFCNONE();"}},
    {"doubled quotes", "#1=IFCNONE('''',';''','''\n''\n');", true, {sUnknown("#1=IFCNONE('''',';''','''\n''\n');", 8)}},
    {"lines that a directive passes over do not count", "#1=IFCNONE('\\S\\\n\\X2\\\n\n\n\n\\X0\n\\X\\\n');", true,
     {sUnknown("#1=IFCNONE('\\S\\\n\\X2\\\n\n\n\n\\X0\n\\X\\\n');")}},
    {"those right behind one do", "#1=IFCNONE('\\S\\A\n\\X4\\00000000\n\\X0\\\n\\\\\n');", true,
     {sUnknown("#1=IFCNONE('\\S\\A\n\\X4\\00000000\n\\X0\\\n\\\\\n');", 10)}},
    {"a backslash in front of CR LF is no fault", "#1=IFCNONE('a\\\r\n');", true, {sUnknown("#1=IFCNONE('a\\\r\n');", 7)}},
    {"an equal sign in a string or a comment is none", "#1=IFCITEM('=' /*=*/);", true, {}, {"#1=IFCITEM('=',$,$,$);"}},
    {"the signs of a dropped statement do not stay", "FOO=1;#1=IFCITEM();=;#2=IFCITEM();", true, {},
     {"#1=IFCITEM($,$,$,$);", "#2=IFCITEM($,$,$,$);"}},
    {"words of other sections mean nothing", "DATA;HEADER;END-ISO-10303-21;ISO-10303-21;#1=IFCITEM();", true, {},
     {"#1=IFCITEM($,$,$,$);"}},
    {"with a number sign in a comment it is an end", "ENDSEC/*#*/;#1=IFCITEM();", true},
    {"a backslash behind a report ends the read without another", "#1=IFCNONE();\\", false, {sUnknown("#1=IFCNONE();")}},
};
// clang-format on

TEST(ScannerRules, Data) {
    for (FileRow row : g_data) {
        row.sText = sRuleFile(row.sText);
        vExpectFile(row, true);
        vExpectFile(row, false);
    }
}

TEST(ScannerRules, DataAtEveryPlaceOfTheBuffersEnd) {
    for (FileRow row : g_data) {
        const std::string sData = row.sText;
        for (std::size_t i = 0; i <= sData.size() + g_sTail.size(); ++i) {
            const std::size_t iPad = g_iBuffer - g_sHead.size() - i;
            row.sText = sRuleFile(std::string(iPad, ' ') + sData);
            vExpectFile(row, true);
            row.sText = sRuleFile("/*" + std::string(iPad - 4, '*') + "*/" + sData);
            vExpectFile(row, true);
            if (testing::Test::HasFailure()) FAIL() << row.sRule << ", byte " << i;
        }
    }
}

// Of each directive the bytes that the search for the closing quote does not look at.
TEST(ScannerRules, DirectivesPassOverQuotes) {
    struct Row {
        const char* sDirective;
        std::size_t iSkipped;
    };
    const Row rows[] = {{"\\", 1},   {"\\X", 1}, {"\\X0", 1}, {"\\X2", 5}, {"\\X4", 9}, {"\\X\\", 1}, {"\\S", 2},
                        {"\\\\", 0}, {"\\P", 0}, {"\\X1", 0}, {"\\X3", 0}, {"\\X8", 0}, {"\\XA", 0},  {"\\x", 0},
                        {"\\s", 0},  {"\\N", 0}, {"\\0", 0},  {"\\2", 0},  {"\\XX", 0}, {"\\XS", 0},  {"\\SX", 1}};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < 11; ++i) {
            // A quote that is seen ends the string; the last one then opens another, which takes the rest of the file.
            const std::string sStatement = "#1=IFCNONE('" + std::string(row.sDirective) + std::string(i, 'A') + '\'' +
                                           std::string(12, 'B') + "');";
            FileRow file{
                row.sDirective, "", i < row.iSkipped, {i < row.iSkipped ? sUnknown(sStatement) : g_sInvalidFile}};
            for (std::size_t iEnd = 11; iEnd < 24; ++iEnd) {   // of the buffer, within the statement
                SCOPED_TRACE("quote behind " + std::to_string(i) + " bytes, the buffer ends at " +
                             std::to_string(iEnd));
                file.sText = sRuleFile(std::string(g_iBuffer - g_sHead.size() - iEnd, ' ') + sStatement);
                vExpectFile(file, true);
            }
        }
}

// ---- What the scanner reports: the statement as far as it is assembled, which bytes that wait in the buffer are not.

struct FaultRow {
    const char* sRule;
    const char* sData;    // without a blank or a comment in front of the fault
    std::size_t iFault;   // the byte at which the fault is seen
    const char* sReport;
};

TEST(ScannerRules, EndsOfInput) {
    const FileRow ends[] = {
        {"the input ends behind a slash",
         "#1 = IFCITEM(\n'a',/",
         false,
         {"Fatal Syntax 7 Error_InvalidEndOfFile | #1=IFCITEM('a',/"}},
        {"the same at the start", "/", false, {"Fatal Syntax 6 Error_InvalidEndOfFile | /"}},
        {"the input ends in a comment",
         "#1 =IFCITEM('a',/*\n\n",
         false,
         {"Fatal Syntax 8 Error_EndOfCommentNotFound | #1=IFCITEM('a',"}},
        {"directly behind its start", "/*", false, {"Fatal Syntax 6 Error_EndOfCommentNotFound | "}},
        {"behind an asterisk", "/* *", false, {"Fatal Syntax 6 Error_EndOfCommentNotFound | "}},
        {"a slash behind the start is no end", "/*/", false, {"Fatal Syntax 6 Error_EndOfCommentNotFound | "}},
        {"the input ends in a string", "'", false, {g_sInvalidFile}},
        {"behind its backslash", "'\\", false, {g_sInvalidFile}},
        {"behind the letter", "'\\X", false, {g_sInvalidFile}},
        {"in a skip", "'\\X4\\00", false, {g_sInvalidFile}},
        {"behind its closing quote", "''", false, {g_sInvalidFile}},
        {"behind a number sign", "#", false, {g_sInvalidFile}},
        {"behind an equal sign", "#1=", false, {g_sInvalidFile}},
        {"behind blanks", "#1= \n \r", false, {g_sInvalidFile}},
    };
    for (FileRow row : ends) {
        const std::string sData = row.sText;
        row.sText = g_sHead + sData;
        for (const bool boSingleThreaded : {true, false}) vExpectFile(row, boSingleThreaded);
        // The last byte of the input is the last one of a buffer.
        row.sText = g_sHead + std::string(g_iBuffer - g_sHead.size() - sData.size(), ' ') + sData;
        vExpectFile(row, true);
    }
}

TEST(ScannerRules, ABufferThatIsFullIsAssembled) {
    const FaultRow rows[] = {
        {"second equal sign", "#1=IFCITEM()#2=IFCITEM();", 14, "Fatal Syntax 6 Error_UnexpectedEqualOperator | "},
        {"backslash and line end", "#1=IFCITEM('a\\\nb');", 14, "Fatal Syntax 6 Error_UnexpectedNewlineInString | "},
    };
    for (const FaultRow& row : rows) {
        const std::string sData = row.sData;
        for (std::size_t i = 0; i <= sData.size(); ++i) {
            FileRow file{row.sRule,
                         sRuleFile(std::string(g_iBuffer - g_sHead.size() - i, ' ') + sData),
                         false,
                         {row.sReport + (i <= row.iFault ? sData.substr(0, i) : "")}};
            SCOPED_TRACE("the buffer ends behind " + std::to_string(i));
            vExpectFile(file, true);
        }
    }
}

}   // namespace
}   // namespace oxa::ifc
