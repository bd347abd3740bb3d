// SPDX-License-Identifier: Apache-2.0
// Files that are broken, huge or odd: a read ends, reports, and does not depend on where its buffers end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/PieceStream.h"
#include "Format/Ifc/ReadResult.h"
#include "platform/Stream.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;

std::string sRepeated(std::string_view text, std::size_t iTimes) {
    std::string sResult;
    sResult.reserve(text.size() * iTimes);
    while (iTimes--) sResult += text;
    return sResult;
}

// What a read says and makes, without what may differ: the text of a fatal report holds only what was assembled,
// which depends on the buffers; for a bad GUID each read makes one up.
struct Outcome {
    bool boRead = false;
    std::vector<std::string> rows;
    std::vector<std::string> statements;   // as they are written again
    bool operator==(const Outcome&) const = default;
};

Outcome outcomeOf(std::istream& in) {
    File file;
    io::ReadError errors;
    Outcome outcome;
    outcome.boRead = file.boRead(in, {}, errors, true, {}, true);
    bool boRandomGuid = false;
    for (const ErrorRecord& record : errors.records()) {
        std::string sText = sRow(record);
        if (record.severity == Errors::Fatal) sText.resize(sText.find(" | "));
        boRandomGuid |= sText.find("Error_ExpectedValidGuidValueFor") != std::string::npos;
        outcome.rows.push_back(std::move(sText));
    }
    for (const Entity* pEntity : file.data().entities()) {
        outcome.statements.push_back(boRandomGuid ? pEntity->schemaEntity().sName : pEntity->sWriteLine(file.data()));
    }
    return outcome;
}

Outcome outcomeOf(const std::string& sText) {
    std::istringstream in(sText);
    return outcomeOf(in);
}

void PrintTo(const Outcome& outcome, std::ostream* pOut) {
    *pOut << (outcome.boRead ? "read" : "not read");
    for (const auto* pTexts : {&outcome.rows, &outcome.statements})
        for (const std::string& sText : *pTexts) *pOut << "\n  " << sText;
}

const std::string g_mixedFile =
    "ISO-10303-21;\nHEADER;/* head */\nFILE_DESCRIPTION(('a;b'),'2;1');\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n"
    "#1 =  IFCPROPERTYSINGLEVALUE('it''s \\X2\\00E900FC\\X0\\ \\X\\E9 \\S\\' \\\\',$ /* ; = # ' **/ ,\n"
    "  IFCLABEL ( 'a/b' ) , $ ) ;\r\n"
    "#2=IFCPROPERTYSINGLEVALUE('''',/**/$,IFCLABEL('\\X4\\0001F600\\X0\\;'),$);\n\n"
    "#3=IFCWALL('2CND9gmL0OS2wPqFz8m2Fi',$,'\\X0\\',$,$,#5,$,'line\nend',.MOVABLE.);x/y;\n"
    "#5=IFCCARTESIANPOINT((1.,-2.E-3,3.));#6=IFCNO('\n');\n"
    "#7=IFCRELAGGREGATES('2CND9gmL0OS2wPqFz8m2Fj',$,$,$,#3,(#3,#9));/*/ = */\n"
    "ENDSEC;\nEND-ISO-10303-21;\n";

// A preface of each length in turn puts the end of the first buffer onto every byte of the file.
TEST(FaultyRead, EachByteMayBeTheLastOfABuffer) {
    const Outcome expected = outcomeOf(g_mixedFile);
    ASSERT_TRUE(expected.boRead);
    ASSERT_EQ(expected.statements.size(), 5U);
    ASSERT_EQ(expected.rows.size(), 3U) << testing::PrintToString(expected);
    for (std::size_t i = 0; i <= g_mixedFile.size(); ++i) {
        const std::string sPreface = std::string(stream::StreamReadBuffer::g_iBufferSize - i - 1, 'x') + ';';
        ASSERT_EQ(outcomeOf(sPreface + g_mixedFile), expected) << "byte " << i;
    }
}

// With buffers of one byte every search ends at once, so this also holds the fast paths against the plain ones.
TEST(FaultyRead, TheSizeOfTheBuffersDoesNotMatter) {
    const Outcome expected = outcomeOf(g_mixedFile);
    for (const std::size_t iPiece : {1U, 2U, 3U, 5U, 16U, 17U, 100U}) {
        PieceStream in(g_mixedFile, iPiece);
        ASSERT_EQ(outcomeOf(in), expected) << iPiece;
    }
}

// A few changes that mean something to the scanner or to the parsers; the same ones in every run.
std::string sChanged(std::string sText, std::mt19937& random) {
    using namespace std::string_view_literals;
    static constexpr auto g_bytes = "\0'(),;=#/*\\\n\r \t\x80\xff$.\"X0S-1"sv;
    for (std::size_t i = random() % 4 + 1; i; --i) {
        const std::size_t iPlace = random() % sText.size();
        switch (random() % 5) {
        case 0: sText.erase(iPlace, random() % 3 + 1); break;
        case 1: sText.insert(iPlace, 1, g_bytes[random() % g_bytes.size()]); break;
        case 2: sText.insert(iPlace, sText.substr(random() % sText.size(), random() % 30)); break;
        case 3: sText.insert(iPlace, std::array{"/*", "*/", "\\X2\\", "\\S\\", "''", "\\X\\"}[random() % 6]); break;
        default: sText[iPlace] = g_bytes[random() % g_bytes.size()];
        }
        if (sText.empty()) sText = ";";
    }
    return sText;
}

TEST(FaultyRead, ChangedFilesReadTheSameWhateverTheBuffers) {
    const AssertLog log(false);
    std::mt19937 random(20);
    for (int i = 0; i < 3000; ++i) {
        const std::string sText = sChanged(g_mixedFile, random);
        const Outcome expected = outcomeOf(sText);
        ASSERT_TRUE(expected.boRead || !expected.rows.empty()) << sText;
        for (const std::size_t iPiece : {std::size_t{1}, std::size_t{random() % 40} + 2}) {
            PieceStream in(sText, iPiece);
            ASSERT_EQ(outcomeOf(in), expected) << "pieces of " << iPiece << ":\n" << sText;
        }
    }
}

// Nothing but bytes that mean something, in any order.
TEST(FaultyRead, NoiseReadsTheSameWhateverTheBuffers) {
    const AssertLog log(false);
    static constexpr std::string_view g_bytes("'(),;=#/*\\\n X2S01a");
    const std::string sHead = "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;";
    std::mt19937 random(21);
    for (int i = 0; i < 4000; ++i) {
        std::string sText = sHead;
        for (std::size_t iLength = random() % 120; iLength; --iLength) {
            if (random() % 10 == 0) sText += ";#1=IFCLABEL('";
            sText += g_bytes[random() % g_bytes.size()];
        }
        const Outcome expected = outcomeOf(sText);
        for (const std::size_t iPiece : {std::size_t{1}, std::size_t{random() % 20} + 2}) {
            PieceStream in(sText, iPiece);
            ASSERT_EQ(outcomeOf(in), expected) << "pieces of " << iPiece << ":\n" << sText;
        }
    }
}

struct LongRow {
    const char* sRule;
    std::string sData;
    std::size_t iEntities;
    std::vector<std::string> keys;   // of the first and of the last report
    std::size_t iReports;
};

const std::string g_wall = "('2CND9gmL0OS2wPqFz8m2Fj',$,$,$,$,$,$,$,$);";

std::string sProperty(const std::string& sValue) { return "#1=IFCPROPERTYSINGLEVALUE('a',$," + sValue + ",$);"; }
std::string sProperties(const std::string& sItem, std::size_t iTimes) {
    return "#1=IFCPROPERTYLISTVALUE('a',$,(" + sItem + sRepeated("," + sItem, iTimes - 1) + "),$);";
}

std::vector<LongRow> longRows() {
    constexpr std::size_t g_i = 200'000;
    const auto nested = [](std::string_view open, std::string_view core, std::string_view close, std::size_t iDepth) {
        return sRepeated(open, iDepth) + std::string(core) + sRepeated(close, iDepth);
    };
    const std::string sReal = "Error_ExpectedValidRealInListFor";
    const std::string sSelect = "Error_ExpectedValidSelectValueFor";
    const std::string sString = "Error_ExpectedValidStringValueFor";
    // clang-format off
    return {
        {"open parentheses", "#1=IFCCARTESIANPOINT(" + sRepeated("(", 1'000'000) + ";", 0, {}, 0},
        {"nested parentheses in a list", "#1=IFCCARTESIANPOINT(" + nested("(", "", ")", 500'000) + ");", 1, {sReal}, 1},
        {"nested parentheses in a list of lists",
         "#1=IFCCARTESIANPOINTLIST3D(" + nested("(", "", ")", 500'000) + ");", 1, {sReal}, 1},
        {"nested parentheses in a select", sProperty("IFCLABEL" + nested("(", "'a'", ")", 500'000)), 1, {sString}, 1},
        {"nested parentheses for a select", sProperty(nested("(", "'a'", ")", 500'000)), 1, {sSelect}, 1},
        {"nested unknown types", sProperty(nested("IFCX(", "'a'", ")", 100'000)), 1, {sSelect}, 1},
        {"nested known types", sProperty(nested("IFCLABEL(", "'a'", ")", 100'000)), 1, {sString}, 1},
        {"nested selects, not closed", sProperty(sRepeated("IFCVALUE(", 100'000)), 1, {sSelect}, 1},
        {"nested lists of a type", sProperty(nested("IFCCOMPLEXNUMBER((", "1.", "))", 100'000)), 1, {sReal}, 1},
        {"many items", "#1=IFCCARTESIANPOINT((1." + sRepeated(",1.", g_i) + "));", 1, {}, 0},
        {"many lists", "#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)" + sRepeated(",(1.,2.,3.)", g_i) + "));", 1, {}, 0},
        {"many faulty lists", "#1=IFCCARTESIANPOINTLIST3D(((x)" + sRepeated(",(x)", g_i - 1) + "));", 1, {sReal, sReal},
         g_i},
        {"many selects", sProperties("IFCLABEL('a')", g_i), 1, {}, 0},
        {"many unknown selects", sProperties("IFCX('a')", g_i), 1, {sSelect, sSelect}, g_i},
        {"many selects without a type", sProperties("a", g_i), 1, {sSelect, sSelect}, g_i},
        {"many deep selects", sProperties(nested("IFCVALUE(", "'a'", ")", 100), 2000), 1, {sSelect, sSelect}, 2000},
        {"many references", "#1=IFCRELAGGREGATES('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,#2,(#2" + sRepeated(",#2", g_i) +
                                "));#2=IFCWALL" + g_wall, 2, {}, 0},
        {"many parameters too many", "#1=IFCDIRECTION((1.)" + sRepeated(",1", g_i) + ");", 1,
         {"Error_TooManyAttributesFor", "Error_TooManyAttributesFor"}, g_i},
        {"many quotes", "#1=IFCDIRECTION(" + sRepeated("'", 1'000'000) + ");", 1, {sReal}, 1},
        {"many escapes", "#1=IFCLABEL('" + sRepeated("\\X2\\00E9\\X0\\", 80'000) + "');", 0,
         {"Error_UnknownEntityType"}, 1},
        {"many stars", "/*" + sRepeated("*", 1'000'000) + "/#1=IFCDIRECTION((1.));", 1, {}, 0},
        {"many comments", "#1=IFCDIRECTION(" + sRepeated("/**/", 300'000) + "(1.));", 1, {}, 0},
        {"many blanks", "#1=IFCDIRECTION(" + sRepeated(" ", 1'000'000) + "(1.));", 1, {}, 0},
        {"many empty statements", sRepeated(";", 1'000'000), 0, {}, 0},
        {"a long keyword", "#1=" + sRepeated("A", 1'000'000) + "();", 0, {"Error_UnknownEntityType"}, 1},
        {"a long number", "#" + sRepeated("0", 1'000'000) + "1=IFCDIRECTION((1.));", 1, {}, 0},
        {"many digits", "#1=IFCDIRECTION((" + sRepeated("1", 100) + "." + sRepeated("3", 1'000'000) + "));", 1, {}, 0},
    };
    // clang-format on
}

TEST(FaultyRead, LengthAndDepthAreNoTrouble) {
    for (const LongRow& row : longRows()) {
        SCOPED_TRACE(row.sRule);
        const ReadResult result(sIfc4File(row.sData + "\n#3=IFCWALL('2CND9gmL0OS2wPqFz8m2Fk',$,$,$,$,$,$,$,$);\n"));
        EXPECT_TRUE(result.boRead);
        EXPECT_EQ(result.iEntities(), row.iEntities + 1);
        const auto& records = result.errors.records();
        ASSERT_EQ(records.size(), row.iReports);
        if (records.empty()) continue;
        EXPECT_EQ(records.front().key.value_or({}), row.keys.front());
        EXPECT_EQ(records.back().key.value_or({}), row.keys.back());
    }
}

}   // namespace
}   // namespace oxa::ifc
