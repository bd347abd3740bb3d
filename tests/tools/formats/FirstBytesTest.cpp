// SPDX-License-Identifier: Apache-2.0
// What the first bytes of a file say: the files that can't be read, and those that can in spite of what comes first.

#include <gtest/gtest.h>

#include "tools/ProgramRun.h"

namespace oxa::test {
namespace {

using namespace std::string_literals;

std::string sFile() { return sExchangeFile("IFC4", "#1=IFCCARTESIANPOINT((0.,0.));\n"); }

// Latin-1 text in UTF-16.
std::string sWide(const std::string& sText, bool boLittle, bool boMark) {
    std::string sWide = !boMark ? "" : boLittle ? "\xff\xfe" : "\xfe\xff";
    for (const char c : sText) sWide += boLittle ? std::string{c, '\0'} : std::string{'\0', c};
    return sWide;
}

constexpr const char* g_pLittle =
    "is text in UTF-16 (little endian), which no IFC file is in; make it UTF-8: iconv -f UTF-16LE -t UTF-8";
constexpr const char* g_pBig =
    "is text in UTF-16 (big endian), which no IFC file is in; make it UTF-8: iconv -f UTF-16BE -t UTF-8";
constexpr const char* g_pProgram = "is a program, not a text";

struct FirstBytesRefuseRow {
    const char* pRule;
    std::string sBytes;
    const char* pError;
};

TEST(FirstBytes, ForeignFormsAreToldByName) {
    // clang-format off
    const FirstBytesRefuseRow rows[] = {
        {"bzip2", "BZh91AY"s, "is compressed with bzip2; unpack it (bunzip2) and name the file that comes out"},
        {"xz", "\xfd" "7zXZ\0\0"s, "is compressed with xz; unpack it (unxz) and name the file that comes out"},
        {"zstd", "\x28\xb5\x2f\xfd\x04"s, "is compressed with zstd; unpack it (unzstd) and name the file that comes out"},
        {"7z", "7z\xbc\xaf\x27\x1c\0"s, "is a 7z archive; unpack it and name the file inside"},
        {"RAR", "Rar!\x1a\x07\x01\0"s, "is a RAR archive; unpack it and name the file inside"},
        {"a program of Linux", "\x7f" "ELF\x02\x01\x01\0"s, g_pProgram},
        {"a program of Windows", "MZ\x90\0\x03\0\0\0"s, g_pProgram},
        {"a program of macOS", "\xcf\xfa\xed\xfe\x07\0"s, g_pProgram},
        {"a PDF", "%PDF-1.7\n", "is a PDF document"},
        {"UTF-16 with a mark", sWide(sFile(), true, true), g_pLittle},
        {"the other order", sWide(sFile(), false, true), g_pBig},
        {"UTF-16 without a mark", sWide(sFile(), true, false), g_pLittle},
        {"the other order without a mark", sWide(sFile(), false, false), g_pBig},
        {"a page of the web", "<!DOCTYPE html>\n<html><body>404</body></html>", "is a page of the web (HTML)"},
        {"the same in other letters", "\n <!doctype HTML>\n<p>", "is a page of the web (HTML)"},
    };
    // clang-format on
    for (const FirstBytesRefuseRow& row : rows)
        for (const char* pVerb : {"info", "check"}) {
            SCOPED_TRACE(row.pRule);
            const ProgramRun run = runProgram({pVerb, "-"}, row.sBytes);
            EXPECT_EQ(run.iCode, 2);
            EXPECT_EQ(run.sOut, "");
            EXPECT_EQ(run.sError, std::string("oxaifc: standard input: ") + row.pError + "\n");
        }
}

TEST(FirstBytes, WhatMayStandInFrontIsPassedOver) {
    for (const std::string& sBefore :
         {"\xef\xbb\xbf"s, "\r\n\r\n"s, "From: a@b.c\nSubject: the model\n\n"s, "/* a comment */\n"s, "MZ;"s, "BZ;"s}) {
        SCOPED_TRACE(sBefore);
        const ProgramRun run = runProgram({"info", "-", "--json"}, sBefore + sFile());
        EXPECT_EQ(run.iCode, 0);
        EXPECT_EQ(run.json()["entities"], 1);
    }
}

// ifcXML in UTF-16 is read.
TEST(FirstBytes, XmlMayBeWide) {
    const std::string sXml = runProgram({"convert", "-", "-", "--format", "ifcxml"},
                                        sExchangeFile("IFC4", "#1=IFCPROJECT('25U8ymbNTHqR30wX1gEfmD',$,'x',$,$,$,$,$,"
                                                              "$);\n"))
                                 .sOut;
    std::string sUtf16 = sXml;
    sUtf16.replace(sUtf16.find("UTF-8"), 5, "UTF-16");
    for (const bool boLittle : {true, false}) {
        const ProgramRun run = runProgram({"info", "-", "--json"}, sWide(sUtf16, boLittle, true));
        EXPECT_EQ(run.iCode, 0) << run.sError;
        EXPECT_EQ(run.json()["entities"], 1);
    }
}

struct BeginRow {
    const char* pRule;
    std::string sText;
    const char* pBegin;
};

TEST(FirstBytes, TextsThatAreNoModelAreToldByTheirBegin) {
    const BeginRow rows[] = {
        {"a letter", "Dear Sir or Madam,\nthe model", "\"Dear Sir or Madam,\""},
        {"a long line", "0123456789012345678901234567890123456789\n", "\"012345678901234567890123456789\"..."},
        {"thirty characters", "012345678901234567890123456789\n", "\"012345678901234567890123456789\""},
        {"blank lines and a mark", "\xef\xbb\xbf\r\n  x\r\ny", "\"x\""},
        {"what steers a terminal", "\x1b[2Ja\n", "\"?[2Ja\""},
        {"blanks alone", " \n \n", "\"\""},
        {"the keyword is missing", sFile().substr(sFile().find("HEADER")), "\"HEADER;\""},
    };
    for (const BeginRow& row : rows) {
        SCOPED_TRACE(row.pRule);
        const ProgramRun run = runProgram({"check", "-", "--json"}, row.sText);
        EXPECT_EQ(run.iCode, 1);
        const Json value = run.json()["records"];
        ASSERT_EQ(value.size(), 1U) << run.sOut;
        EXPECT_EQ(value[0]["message"], std::string("The file begins with ") + row.pBegin + ", not with ISO-10303-21;.");
        EXPECT_EQ(value[0]["severity"], "fatal");
        EXPECT_EQ(value[0]["line"], 0);
    }
}

}   // namespace
}   // namespace oxa::test
