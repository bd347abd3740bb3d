// SPDX-License-Identifier: Apache-2.0
// The scanner's fast way and its slow one: the same text says the same, however it comes.
//
// Blanks, strings and flags of a statement are passed over by searches as long as a buffer holds them whole; at its end,
// and in front of every escape, the scanner goes byte by byte. A stream in pieces ends a buffer behind each piece, and in
// pieces of one byte the scanner has no other way.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Format/Ifc/PieceStream.h"
#include "Format/Ifc/RuleModel.h"

namespace oxa::ifc {
namespace {

struct WayOutcome {
    bool boRead;
    Texts reports;
    Texts model;
};

// In pieces of so many bytes; 0: whole. What a fatal report of the scanner has for its text is the statement as far as it
// is assembled, and that depends on where buffers end: it is not compared.
WayOutcome outcomeOf(const std::string& sText, std::size_t iPiece) {
    File file;
    io::ReadError errors;
    PieceStream in(sText, iPiece ? iPiece : sText.size());
    const bool boRead = file.boRead(in, schemaIs(ruleSchema()), errors, true, {}, true);
    WayOutcome outcome{boRead, reports(errors), statements(file.data())};
    for (std::string& sReport : outcome.reports)
        if (sReport.starts_with("Fatal")) sReport.erase(sReport.find(" | "));
    return outcome;
}

void vExpectSame(const std::string& sData) {
    const std::string sText = sRuleFile(sData);
    const WayOutcome whole = outcomeOf(sText, 0);
    for (const std::size_t iPiece : {1U, 2U, 3U, 5U, 7U, 16U, 33U}) {
        const WayOutcome pieces = outcomeOf(sText, iPiece);
        ASSERT_EQ(pieces.boRead, whole.boRead) << iPiece << ": " << sData;
        ASSERT_EQ(pieces.reports, whole.reports) << iPiece << ": " << sData;
        ASSERT_EQ(pieces.model, whole.model) << iPiece << ": " << sData;
    }
}

const char* const g_texts[] = {
    "#1=IFCITEM('a');",
    "#1=IFCITEM('');",
    "#1=IFCITEM('''');",
    "#1=IFCITEM('a''b','''','c''');",
    "#1 \r\n = IFC\nITEM ( 'a b' ) ;",
    "#1=IFCITEM('a\nb');#2=IFCNONE();",
    "#1=IFCITEM('\\S\\'');",
    "#1=IFCITEM('\\X2\\00E9\\X0\\''\\X\\E9');",
    "#1=IFCITEM('\\\\','a');",
    "#1=IFCITEM('a\\\nb''\\\nc');",
    "#1=IFCITEM('a'/*'*/,'b');",
    "#1=IFCITEM('a;#=/*');",
    "#1=IFCITEM(\t'a');",
    "#1=#2=IFCITEM('a');",
    "A B #1=IFCITEM('a');",
    "A #1 = IFCITEM('a');",
    "#1 = IFCITEM( 'a' , 7 , $ , ( #2 , #3 ) ) ;  # 2 = IFCITEM( $, * ) ;",
    "#1=IFCITEM('a')\\;",
};

TEST(ScannerWays, AgreeOnTheRules) {
    for (const char* sText : g_texts) vExpectSame(sText);
}

TEST(ScannerWays, AgreeWhateverAByteBecomes) {
    const std::string sText = "#1=IFCITEM('a''b',7,$,(#2,#3));#2=IFCITEM($,*);\n";
    for (std::size_t i = 0; i < sText.size(); ++i)
        for (const char c :
             {'\0', '\'', '(', ')', ',', ';', '=', '#', '/', '*', '\\', '\n', '\x80', '\xff', '$', '9'}) {
            std::string sChanged = sText;
            sChanged[i] = c;
            vExpectSame(sChanged);
            if (HasFatalFailure()) return;
        }
}

// Pieces of all lengths up to more than a word of the map, with spaces and now and then something else between them.
TEST(ScannerWays, AgreeOnPiecesBetweenSpaces) {
    static const char* const g_between[] = {" ", " ", " ", " ", "  ", "   ", " \n", "\n ", " /* */ ", "\t", " '' "};
    std::mt19937 random(2);
    for (int i = 0; i < 300; ++i) {
        std::string sData;
        for (int iStatement = 1; iStatement <= 4; ++iStatement) {
            sData += "# " + std::to_string(iStatement) + " = IFCITEM(";
            for (std::size_t k = random() % 20; k; --k) {
                sData += g_between[random() % std::size(g_between)];
                for (std::size_t iLength = random() % 8 ? random() % 20 : random() % 150; iLength; --iLength)
                    sData += static_cast<char>('0' + random() % 10);
            }
            sData += " );";
        }
        vExpectSame(sData);
        if (HasFatalFailure()) return;
    }
}

TEST(ScannerWays, AgreeOnGeneratedTexts) {
    static const char* const g_parts[] = {
        "'", "''", "' '", " ", "\n", "\r",   "\t", "\\",      "\\S\\'",  "\\X2\\0'", "/*", "*/", "/",      ";",     "#",
        "=", "a",  ",",   "(", ")",  "\\\n", "*",  "'a b c'", "IFCITEM", "#1=",      "$",  "12", "\\X\\'", "  \n  "};
    std::mt19937 random(1);
    for (int i = 0; i < 1500; ++i) {
        std::string sData;
        for (int iStatement = 1; iStatement <= 3; ++iStatement) {
            sData += '#' + std::to_string(iStatement) + "=IFCITEM('";
            for (std::size_t k = random() % 6; k; --k) sData += g_parts[random() % std::size(g_parts)];
            sData += "');";
        }
        vExpectSame(sData);
        if (HasFatalFailure()) return;
    }
}

}   // namespace
}   // namespace oxa::ifc
