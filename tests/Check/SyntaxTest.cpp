// SPDX-License-Identifier: Apache-2.0
// The exchange structure as ISO 10303-21 writes it: each production, and each way past it.
#include <gtest/gtest.h>

#include <string>

#include "CheckText.h"

namespace oxa {
namespace {

std::string sSyntaxFaults(const std::string& sText) { return sFailures(checked(sText, {CheckLevel::Syntax})); }

struct SyntaxRow {
    const char* sRule;
    std::string sText;
    const char* sSyntaxFaults;   // empty: none
};

// ---- Parameters: what stands between the parentheses of line 6, from column 6 on

const SyntaxRow g_parameters[] = {
    {"none", "", ""},
    {"blanks around each", " 1 , 2 ", ""},
    {"one behind each comma", "1,,2", "6:8 Syntax_Unexpected ','; a parameter"},
    {"none behind the last one", "1,", "6:8 Syntax_Unexpected ')'; a parameter"},
    {"a comma between two", "1 2", "6:8 Syntax_Unexpected '2'; , or )"},
    {"unset and derived", "$,*", ""},

    {"an integer", "0,12,-3,+4,007", ""},
    {"a sign has digits", "-", "6:6 Syntax_Number '-'; a number as 12, 1.5 or 1.5E-3"},
    {"a sign stands at its digits", "- 1",
     "6:6 Syntax_Number '-'; a number as 12, 1.5 or 1.5E-3 | 6:8 Syntax_Unexpected '1'; , or )"},
    {"a real has a point", "1.,1.5,-0.,+2.5", ""},
    {"digits in front of it", ".5", "6:6 Syntax_Number '.5'; a digit in front of the point"},
    {"an exponent behind it", "1.E5,1.5E-3,1.E+03", ""},
    {"an exponent needs the point", "1E5", "6:6 Syntax_Number '1E5'; a number as 12, 1.5 or 1.5E-3"},
    {"an exponent has digits", "1.E", "6:6 Syntax_Number '1.E'; a number as 12, 1.5 or 1.5E-3"},
    {"it is an E", "1.e5", "6:6 Syntax_Number '1.e5'; a number as 12, 1.5 or 1.5E-3"},
    {"no number is named", "1.#INF,NAN",
     "6:8 Syntax_Edition '#INF'; #1, #2 and so on | 6:8 Syntax_Unexpected '#INF'; , or )"},

    {"an enumeration value", ".T.,.NOTDEFINED.,._A1_.", ""},
    {"in upper case", ".true.", "6:6 Syntax_Enumeration '.true.'; letters in upper case between two points"},
    {"with a point behind it", ".T", "6:6 Syntax_Enumeration '.T'; letters in upper case between two points"},
    {"with a name", "..", "6:6 Syntax_Enumeration '..'; letters in upper case between two points"},

    {"an instance name", "#2,#92147483647,#0012", ""},
    {"zero is none", "#0", "6:6 Syntax_InstanceName '#0'; #1, #2 and so on"},
    {"nor with more of it", "#000", "6:6 Syntax_InstanceName '#000'; #1, #2 and so on"},
    {"no blank in it", "# 2", "6:6 Syntax_BlankInToken '# 2'; #1, #2 and so on"},
    {"a number in it", "#", "6:6 Syntax_InstanceName '#'; #1, #2 and so on"},
    {"a constant is of edition 3", "#ABC", "6:6 Syntax_Edition '#ABC'; #1, #2 and so on"},
    {"so is a value", "@12", "6:6 Syntax_Edition '@12'; a parameter"},
    {"and a resource", "<a.ifc#b>", "6:6 Syntax_Edition '<a.ifc#b>'; a parameter"},

    {"a binary", "\"0\",\"23B\",\"0FF\"", ""},
    {"with the number of unused bits", "\"4F\"",
     "6:6 Syntax_Binary '\"4F\"'; 0 to 3, then hexadecimal digits, between quotation marks"},
    {"of unused bits of a digit", "\"1\"",
     "6:6 Syntax_Binary '\"1\"'; 0 to 3, then hexadecimal digits, between quotation marks"},
    {"never empty", "\"\"", "6:6 Syntax_Binary '\"\"'; 0 to 3, then hexadecimal digits, between quotation marks"},
    {"in upper case", "\"0ff\"",
     "6:6 Syntax_Binary '\"0ff\"'; 0 to 3, then hexadecimal digits, between quotation marks"},
    {"closed", "\"0FF", "6:6 Syntax_Binary '\"0FF'; 0 to 3, then hexadecimal digits, between quotation marks"},

    {"a list", "(),(1),(1,(2,()),3)", ""},
    {"is closed", "(1", "6:9 Syntax_Unexpected ';'; , or )"},
    {"is closed once", "(1))", "6:10 Syntax_Unexpected ')'; ;"},
    {"a typed parameter", "IFCLABEL('a'),A(B(1)),!USER((1,2))", ""},
    {"holds one", "IFCLABEL()", "6:15 Syntax_Unexpected ')'; a parameter"},
    {"and one alone", "IFCLABEL(1,2)", "6:16 Syntax_Unexpected ','; )"},
    {"a keyword alone is none", "IFCLABEL", "6:14 Syntax_Unexpected ')'; ("},
    {"a keyword is in upper case", "IfcLabel('a')", "6:6 Syntax_Keyword 'IfcLabel'; letters in upper case"},
    {"no other sign stands there", "1,?", "6:8 Syntax_Unexpected '?'; a parameter"},
    {"a reverse solidus neither", "\\", "6:6 Syntax_Unexpected '\\'; a parameter or )"},
    {"but as a print control directive", "1\\N\\,\\F\\2", ""},
};

TEST(CheckSyntax, Parameters) {
    for (const SyntaxRow& row : g_parameters) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sSyntaxFaults(FileText().text("#1=A(" + row.sText + ");")), row.sSyntaxFaults) << row.sText;
    }
}

// ---- Strings: what stands between the quotes of line 6, from column 7 on

const char* const g_pNoDirective = "; \\\\ for the reverse solidus itself, or a directive";

struct StringRow {
    const char* sRule;
    std::string sText;
    std::string sSyntaxFaults;
    std::string sBehind{};   // what is told behind the expectation of a directive
};
const StringRow g_strings[] = {
    {"empty", "", ""},
    {"every graphic character", " !\"#$%&()*+,-./09:;<=>?@AZ[]^_`az{|}~", ""},
    {"a quote twice", "it''s", ""},
    {"a reverse solidus twice", "C:\\\\path", ""},
    {"alone it is none", "C:\\path", "6:9 Syntax_StringDirective '\\path'"},
    {"a character of the other half", "\\S\\D\\S\\'\\S\\\\", ""},
    {"of a page", "\\PA\\\\S\\D\\PI\\", ""},
    {"there are nine", "\\PJ\\", "6:7 Syntax_StringDirective '\\PJ\\'"},
    {"by its code", "\\X\\E4\\X\\0A", ""},
    {"which has two digits", "\\X\\E ", "6:7 Syntax_StringDirective '\\X\\'"},
    {"in upper case", "\\X\\e4", "6:7 Syntax_StringDirective '\\X\\'"},
    {"by four digits each", "\\X2\\00E400F6\\X0\\", ""},
    {"by eight", "\\X4\\0001F600\\X0\\", ""},
    {"a directive of its own for the lower case", "\\x2\\00E4\\X0\\",
     "6:7 Syntax_StringDirective '\\x2\\'; \\\\ for the reverse solidus itself, or a directive | 6:15 "
     "Syntax_StringDirective '\\X0\\'"},
    {"a line break is no character", "a\nb", "6:8 Syntax_StringControl ''; \\X\\ and its code, or nothing", "-"},
    {"told once a string", "a\r\nb\tc", "6:8 Syntax_StringControl ''; \\X\\ and its code, or nothing", "-"},
    {"a byte outside of ASCII is none", "a\xe4\xf6z", "6:8 Syntax_Byte '\xe4\xf6'; space to ~", "-"},
    {"each run is told", "\xe4 \xf6", "6:7 Syntax_Byte '\xe4'; space to ~ | 6:9 Syntax_Byte '\xf6'; space to ~", "-"},
    {"a zero byte is none", std::string("a\0z", 3), "6:8 Syntax_StringControl ''; \\X\\ and its code, or nothing", "-"},
};

TEST(CheckSyntax, Strings) {
    for (const StringRow& row : g_strings) {
        SCOPED_TRACE(row.sRule);
        const bool boDirective = row.sBehind.empty() && !row.sSyntaxFaults.empty();
        EXPECT_EQ(sSyntaxFaults(FileText().text("#1=A('" + row.sText + "');")),
                  row.sSyntaxFaults + (boDirective ? g_pNoDirective : ""))
            << row.sText;
    }
}

const SyntaxRow g_extended[] = {
    {"a group is whole", "\\X2\\00E\\X0\\",
     "6:7 Syntax_StringDirective '\\X2\\'; groups of 4 hexadecimal digits, then \\X0\\"},
    {"there is one", "\\X2\\\\X0\\",
     "6:7 Syntax_StringDirective '\\X2\\'; groups of 4 hexadecimal digits, then \\X0\\"},
    {"it is closed", "\\X2\\00E4", "6:7 Syntax_StringDirective '\\X2\\'; groups of 4 hexadecimal digits, then \\X0\\"},
    {"in upper case", "\\X2\\00e4\\X0\\",
     "6:7 Syntax_StringDirective '\\X2\\'; groups of 4 hexadecimal digits, then \\X0\\"},
    {"no code point is beyond Unicode", "\\X4\\00110000\\X0\\",
     "6:7 Syntax_StringDirective '\\X4\\'; groups of 8 hexadecimal digits, then \\X0\\"},
};

TEST(CheckSyntax, ExtendedStrings) {
    for (const SyntaxRow& row : g_extended) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sSyntaxFaults(FileText().text("#1=A('" + row.sText + "');")), row.sSyntaxFaults) << row.sText;
    }
}

// ---- Statements, from line 6 on

const SyntaxRow g_statements[] = {
    {"none", "", ""},
    {"any number in any order", "#2=A();\n#1=A();", ""},
    {"several on a line, one on several", "#1=A();#2=\nA\n(\n)\n;", ""},
    {"comments between tokens", "/**/#1/*a*/=/* #2=B(;' */A/***/(/**/)/**/;", ""},
    {"a comment nests none", "/* /* */ #1=A();", ""},
    {"and is closed", "#1=A(); /* #2=A();",
     "6:9 Syntax_CommentNotClosed '/*'; */ | 9:1 Syntax_End ''; END-ISO-10303-21; | 9:1 Syntax_SectionNotClosed ''; "
     "ENDSEC; of the data section"},
    {"a complex instance", "#1=(A()B(1)C());", ""},
    {"has a record at least", "#1=();", "6:5 Syntax_Unexpected ')'; a keyword"},
    {"without commas", "#1=(A(),B());", "6:8 Syntax_Unexpected ','; a keyword"},
    {"a user-defined keyword", "#1=!A();", ""},
    {"no digit in front", "#1=1A();",
     "6:4 Syntax_Number '1A'; a number as 12, 1.5 or 1.5E-3 | 6:4 Syntax_Unexpected '1A'; a keyword"},
    {"a keyword", "#1=();\n#2=$;", "6:5 Syntax_Unexpected ')'; a keyword | 7:4 Syntax_Unexpected '$'; a keyword"},
    {"no scope", "#1=&SCOPE #2=A(); ENDSCOPE B();",
     "6:4 Syntax_Unexpected '&'; a keyword | 6:19 Syntax_Unexpected 'ENDSCOPE'; an instance or ENDSEC;"},
    {"the equals sign", "#1 A();\n#2=A();", "6:4 Syntax_Unexpected 'A'; ="},
    {"once", "#1==A();\n#2=A();", "6:4 Syntax_Unexpected '='; a keyword"},
    {"the semicolon", "#1=A()\n#2=A();\n#3=A(,);",
     "7:1 Syntax_Unexpected '#2'; ; | 8:6 Syntax_Unexpected ','; a parameter or )"},
    {"once", "#1=A();;\n#2=A();", "6:8 Syntax_Unexpected ';'; an instance or ENDSEC;"},
    {"no number twice", "#1=A();\n#2=A();\n#01=A();\n#1=B();",
     "8:1 Syntax_InstanceDouble '#1'; one of its own | 9:1 Syntax_InstanceDouble '#1'; one of its own"},
    {"nor a large one", "#92147483647=A();\n#92147483647=A();",
     "7:1 Syntax_InstanceDouble '#92147483647'; one of its own"},
    {"a statement tells its own", "#1=A(,);\n#2=A(1;\n#3=A());",
     "6:6 Syntax_Unexpected ','; a parameter or ) | 7:7 Syntax_Unexpected ';'; , or ) | 8:7 Syntax_Unexpected ')'; ;"},
    {"a string that is not closed ends where the next begins", "#1=A('abc);\n#2=A('x');\n#3=A(,);",
     "6:6 Syntax_StringNotClosed ''abc);'; ' | 7:1 Syntax_Unexpected '#2'; , or ) | 8:6 Syntax_Unexpected ','; a "
     "parameter or )"},
    {"or where the section does", "#1=A('abc);",
     "6:6 Syntax_StringNotClosed ''abc);'; ' | 7:1 Syntax_Unexpected 'ENDSEC'; , or )"},
    {"text between statements", "#1=A();\nhello world;\n#2=A();",
     "7:1 Syntax_Keyword 'hello'; letters in upper case | 7:1 Syntax_Unexpected 'hello'; an instance or ENDSEC;"},
    {"a byte between tokens", "#1=\xe4\xf6 A();", "6:4 Syntax_Byte '\xe4\xf6'; space to ~"},
    {"a control character there", "#1=\x01\x02 A();", "6:4 Syntax_Byte '\x01\x02'; space to ~"},
    {"a byte in a comment", "/* \xc3\xa4 */#1=A();", "6:4 Syntax_Byte '\xc3\xa4'; space to ~"},
};

TEST(CheckSyntax, Statements) {
    for (const SyntaxRow& row : g_statements) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sSyntaxFaults(FileText().text(row.sText)), row.sSyntaxFaults) << row.sText;
    }
}

// ---- Sections

const char* const g_pHeader = "FILE_DESCRIPTION((''),'2;1');FILE_NAME();FILE_SCHEMA();";

const SyntaxRow g_sections[] = {
    {"the file", "ISO-10303-21;HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;", ""},
    {"each on its line", "ISO-10303-21;\r\nHEADER;\n%\nENDSEC;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\r\n", ""},
    {"blanks and comments in front", " \n/* a */ISO-10303-21;HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;", ""},
    {"no byte order mark", "\xef\xbb\xbfISO-10303-21;HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;",
     "1:1 Syntax_ByteOrderMark ''; ISO-10303-21; as the first bytes"},
    {"no blank in the words of sections", "ISO-10303-21 ;HEADER\n;%ENDSEC ;DATA ;ENDSEC;END-ISO-10303-21 ;",
     "1:1 Syntax_BlankInToken 'ISO-10303-21'; ISO-10303-21; | 1:15 Syntax_BlankInToken 'HEADER'; HEADER; | 2:57 "
     "Syntax_BlankInToken 'ENDSEC'; ENDSEC; | 2:65 Syntax_BlankInToken 'DATA'; DATA; | 2:78 Syntax_BlankInToken "
     "'END-ISO-10303-21'; END-ISO-10303-21;"},
    {"several data sections",
     "ISO-10303-21;HEADER;%ENDSEC;DATA('a',('IFC4'));ENDSEC;DATA;#1=A();ENDSEC;END-ISO-10303-21;", ""},
    {"one at least", "ISO-10303-21;HEADER;%ENDSEC;END-ISO-10303-21;", "1:83 Syntax_Section 'END-ISO-10303-21'; DATA;"},
    {"no header", "ISO-10303-21;DATA;#1=A();ENDSEC;END-ISO-10303-21;", "1:14 Syntax_Section 'DATA'; HEADER;"},
    {"its word is missing", "ISO-10303-21;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;",
     "1:14 Syntax_Section 'FILE_DESCRIPTION'; HEADER;"},
    {"its end is missing", "ISO-10303-21;HEADER;%DATA;#1=A();ENDSEC;END-ISO-10303-21;",
     "1:76 Syntax_SectionNotClosed 'DATA'; ENDSEC; of the header"},
    {"the end of the data is missing", "ISO-10303-21;HEADER;%ENDSEC;DATA;#1=A();END-ISO-10303-21;",
     "1:95 Syntax_SectionNotClosed 'END-ISO-10303-21'; ENDSEC; of the data section"},
    {"the word of the data is missing", "ISO-10303-21;HEADER;%ENDSEC;#1=A();ENDSEC;END-ISO-10303-21;",
     "1:83 Syntax_Section '#1'; DATA;"},
    {"the end of the file is missing", "ISO-10303-21;HEADER;%ENDSEC;DATA;ENDSEC;",
     "1:95 Syntax_End ''; END-ISO-10303-21;"},
    {"the begin of the file is missing", "HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;",
     "1:1 Syntax_Begin 'HEADER'; ISO-10303-21;"},
    {"another standard", "ISO-10303-28;HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;",
     "1:1 Syntax_Begin 'ISO-10303-28'; ISO-10303-21;"},
    {"another text", "solid cube",
     "1:1 Syntax_Begin 'solid'; ISO-10303-21; | 1:1 Syntax_Keyword 'solid'; letters in upper case | 1:11 Syntax_End "
     "''; "
     "END-ISO-10303-21; | 1:11 Syntax_Section 'the end of the file'; HEADER;"},
    {"no text behind the end", "ISO-10303-21;HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;\nhello there",
     "2:1 Syntax_Keyword 'hello'; letters in upper case | 2:1 Syntax_TextBehindEnd 'hello'; nothing"},
    {"no second file", "ISO-10303-21;HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;\nISO-10303-21;",
     "2:1 Syntax_TextBehindEnd 'ISO-10303-21'; nothing"},
    {"no signature before edition 3",
     "ISO-10303-21;HEADER;%ENDSEC;DATA;ENDSEC;END-ISO-10303-21;\nSIGNATURE\nMIIG+/==\nENDSEC;",
     "2:1 Syntax_TextBehindEnd 'SIGNATURE'; nothing"},
    {"no anchors", "ISO-10303-21;HEADER;%ENDSEC;ANCHOR;ENDSEC;DATA;ENDSEC;END-ISO-10303-21;",
     "1:83 Syntax_Edition 'ANCHOR'; DATA;"},
};

std::string sWithHeader(std::string sText, const std::string& sHeader) {
    if (const std::size_t i = sText.find('%'); i != std::string::npos) sText.replace(i, 1, sHeader);
    return sText;
}

TEST(CheckSyntax, Sections) {
    for (const SyntaxRow& row : g_sections) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sSyntaxFaults(sWithHeader(row.sText, g_pHeader)), row.sSyntaxFaults) << row.sText;
    }
}

const SyntaxRow g_edition3[] = {
    {"anchors, references, signatures",
     "ISO-10303-21;HEADER;%ENDSEC;\nANCHOR;\n<a>=#1;<b>=(1,(2.,$),'x'){t:5}{u:.T.};\nENDSEC;\nREFERENCE;\n#7=<b.stp#x>;"
     "@8=<c#y>;\nENDSEC;\nDATA;\n#1=A(#7,@8,#PI,<r>);\nENDSEC;\nEND-ISO-10303-21;\nSIGNATURE\nMIIG+/==\nENDSEC;\n"
     "SIGNATURE\nAA\nENDSEC;",
     ""},
    {"no data section is needed", "ISO-10303-21;HEADER;%ENDSEC;END-ISO-10303-21;", ""},
    {"letters in strings and comments",
     "ISO-10303-21;HEADER;%ENDSEC;DATA;/*\xc3\xa4*/#1=A('\xe2\x82\xac');ENDSEC;END-ISO-10303-21;", ""},
    {"in UTF-8", "ISO-10303-21;HEADER;%ENDSEC;\nDATA;#1=A('\xe4');#2=A('\xed\xa0\x80');ENDSEC;END-ISO-10303-21;",
     "2:12 Syntax_Utf8 '\xe4'; UTF-8 | 2:22 Syntax_Utf8 '\xed\xa0\x80'; UTF-8"},
    {"nowhere else", "ISO-10303-21;HEADER;%ENDSEC;\nDATA;\xc3\xa4#1=A();ENDSEC;END-ISO-10303-21;",
     "2:6 Syntax_Byte '\xc3\xa4'; space to ~"},
    {"an anchor has an item", "ISO-10303-21;HEADER;%ENDSEC;\nANCHOR;\n<a>=;\n<b>=#1;\nENDSEC;END-ISO-10303-21;",
     "3:5 Syntax_Unexpected ';'; a value"},
    {"a reference has a resource", "ISO-10303-21;HEADER;%ENDSEC;\nREFERENCE;\n#1=#2;\nENDSEC;END-ISO-10303-21;",
     "3:4 Syntax_Unexpected '#2'; a resource"},
    {"no number is given by both",
     "ISO-10303-21;HEADER;%ENDSEC;REFERENCE;#1=<a>;ENDSEC;\nDATA;#1=A();ENDSEC;END-ISO-10303-21;",
     "2:6 Syntax_InstanceDouble '#1'; one of its own"},
    {"a signature ends", "ISO-10303-21;HEADER;%ENDSEC;END-ISO-10303-21;\nSIGNATURE\nAA",
     "2:1 Syntax_SectionNotClosed 'SIGNATURE'; ENDSEC; of the signature"},
};

TEST(CheckSyntax, EditionThree) {
    for (const SyntaxRow& row : g_edition3) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sSyntaxFaults(sWithHeader(row.sText, "FILE_DESCRIPTION((''),'4;1');FILE_NAME();FILE_SCHEMA();")),
                  row.sSyntaxFaults)
            << row.sText;
    }
}

// ---- The file as a whole

TEST(CheckSyntax, BytesInFrontOfTheEditionAreToldWhenItIsKnown) {
    const std::string sText = "ISO-10303-21;HEADER;FILE_DESCRIPTION(('\xc3\xa4'),'%');FILE_NAME();FILE_SCHEMA();ENDSEC;"
                              "DATA;ENDSEC;END-ISO-10303-21;";
    EXPECT_EQ(sSyntaxFaults(sWithHeader(sText, "2;1")), "1:40 Syntax_Byte ''; space to ~");
    EXPECT_EQ(sSyntaxFaults(sWithHeader(sText, "4;1")), "");
}

// Every token of a file cut by the end of a window of bytes, and every prefix of the file.
TEST(CheckSyntax, NoWindowAndNoEndTellsOtherwise) {
    const std::string sStatements = "#1=A('a''b\\X2\\00E4\\X0\\\\S\\D',.T.,-1.5E-3,\"23B\",B(#1),(1,$,*));/*c*/\n";
    const std::string sFile = FileText().text(sStatements + "#2=A(1,,2);");
    const std::string sFault = " Syntax_Unexpected ','; a parameter";
    EXPECT_EQ(sSyntaxFaults(sFile), "7:8" + sFault);
    for (std::size_t i = 524'288 - 200; i < 524'288 + 20; ++i) {
        const std::string sText = "/*" + std::string(i, ' ') + "*/" + sFile;
        ASSERT_EQ(sSyntaxFaults(sText), "7:8" + sFault) << i;
    }
    for (std::size_t i = 0; i + 2 < sFile.size(); ++i)
        ASSERT_NE(sSyntaxFaults(sFile.substr(0, i)), "") << sFile.substr(0, i);
}

TEST(CheckSyntax, TokensOfAnyLengthPass) {
    const std::string sLong(2'000'000, 'X');
    EXPECT_EQ(sSyntaxFaults(FileText().text("/*" + sLong + "*/#1=" + sLong + "('" + sLong + "'," +
                                            std::string(2'000'000, '7') + ",\"0" + std::string(2'000'000, 'F') +
                                            "\",." + sLong + ".);\n#1=A();")),
              "7:1 Syntax_InstanceDouble '#1'; one of its own");
}

TEST(CheckSyntax, NestingIsBounded) {
    const auto sNested = [](std::size_t iDepth) {
        return FileText().text("#1=A(" + std::string(iDepth, '(') + std::string(iDepth, ')') + ");");
    };
    EXPECT_EQ(sSyntaxFaults(sNested(999)), "");
    EXPECT_EQ(sSyntaxFaults(sNested(1000)), "6:1005 Syntax_NestedTooDeep ''; 1000 levels at most");
    EXPECT_EQ(sSyntaxFaults(sNested(1'000'000)), "6:1005 Syntax_NestedTooDeep ''; 1000 levels at most");
}

TEST(CheckSyntax, AMillionMissingSemicolonsAreAMillionRecords) {
    std::string sStatements;
    for (int i = 1; i <= 100'000; ++i) sStatements += '#' + std::to_string(i) + "=A()\n";
    const CheckResult result = checked(FileText().text(sStatements), {CheckLevel::Syntax});
    ASSERT_EQ(result.groups.size(), 1U);
    EXPECT_EQ(result.groups.front().count, 100'000U);
    EXPECT_EQ(result.statements, 100'000U);
}

TEST(CheckSyntax, CountsBytesAndStatements) {
    const std::string sText = FileText().text("#1=A();\n#2=(B()C());");
    const CheckResult result = checked(sText, {CheckLevel::Syntax});
    EXPECT_EQ(result.bytes, sText.size());
    EXPECT_EQ(result.statements, 2U);
    EXPECT_EQ(result.verdict(), CheckVerdict::Valid);
}

TEST(CheckSyntax, IsNotToldWhereItIsNotAskedFor) {
    const CheckResult result = checked(FileText().text("#1=A(,);"), {CheckLevel::Header});
    EXPECT_EQ(sFailures(result), "");
    EXPECT_EQ(result.level(CheckLevel::Syntax).state, CheckLevelSummary::State::NotAsked);
}

}   // namespace
}   // namespace oxa
