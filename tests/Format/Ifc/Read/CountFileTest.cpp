// SPDX-License-Identifier: Apache-2.0
// The count of a file's statements: what it counts a read would hold, and what is not plain it leaves to a read.
#include "Format/Ifc/IfcCountFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "CountCheck.h"
#include "Format/Ifc/Store/NumberSet.h"

namespace oxa::ifc {
namespace {

const std::string g_sHead = "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'2;1');\n"
                            "FILE_NAME('n','t',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n";
const std::string g_sEnd = "ENDSEC;\nEND-ISO-10303-21;\n";
const std::string g_sPoint = "#1=IFCCARTESIANPOINT((0.,0.));\n";

std::string sWall(int iNumber, std::string_view name = "'w'") {
    return "#" + std::to_string(iNumber) + "=IFCWALL('3qt5KnRY9OSu4BNT4B" + std::to_string(1000 + iNumber) + "',$," +
           std::string(name) + ",$,$,$,$,$,$);\n";
}

struct CountFileRow {
    const char* sRule;
    std::string sData;
    std::size_t iEntities;
    std::size_t iGlobalIds;
};

TEST(CountFile, CountsWhatIsPlain) {
    const CountFileRow rows[] = {
        {"nothing", "", 0, 0},
        {"a point", g_sPoint, 1, 0},
        {"two walls and a point", sWall(2) + g_sPoint + sWall(3), 3, 2},
        {"on one line", "#1=IFCDIRECTION((1.,0.));#2=IFCDIRECTION((0.,1.));", 2, 0},
        {"line ends of two bytes", "#1=IFCDIRECTION((1.,0.));\r\n#2=IFCDIRECTION((0.,1.));\r\n", 2, 0},
        {"blanks around all parts of a head and in front of the end",
         " #1 = IFCDIRECTION ( (1.,0.) ) ;\n #2= IFCDIRECTION((0.,1.)\n);\n", 2, 0},
        {"numbers of one to ten digits",
         "#0=IFCDIRECTION((1.));#7=IFCDIRECTION((1.));#1234567=IFCDIRECTION((1.));"
         "#12345678=IFCDIRECTION((1.));#2147483647=IFCDIRECTION((1.));",
         5, 0},
        {"numbers with zeros in front", "#0001=IFCDIRECTION((1.));#000000002=IFCDIRECTION((1.));", 2, 0},
        {"text that looks like statements in a string",
         sWall(1, "'; #9=IFCWALL(); ENDSEC; /* = ''#'") + "#5" + g_sPoint.substr(2), 2, 1},
        {"strings with escapes, quotes among them",
         sWall(1, R"('\S\';\X\27;\X2\00270027\X0\;\X4\00000027\X0\;\';\\')") + sWall(2, R"('C:\\a''\PA\x')"), 2, 2},
        {"comments between and in statements",
         "/* #7=IFCWALL('; */ #1=IFCDIRECTION((1.,/* ; ' = */0.));\n/**//***/#2=IFCDIRECTION((0.,1.));/*/ */\n", 2, 0},
        {"8-bit bytes and control codes in a string", sWall(1, "'\xe4\t\x01\xff'"), 1, 1},
        {"values that are wrong, and references to nothing", "#1=IFCDIRECTION((x,y));#2=IFCPOLYLINE((#8,#9),3.);", 2,
         0},
        {"a GlobalId that needs more than its bits", "#1=IFCWALL('zzzzzzzzzzzzzzzzzzzzzz',$,$,$,$,$,$,$,$);", 1, 1},
    };
    for (const CountFileRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        const std::string sText = g_sHead + row.sData + g_sEnd;
        const CountedText text(sText);
        for (const bool boSingleThreaded : {true, false}) {
            const io::FileCount count = countAsRead(text.path(), sText, {.boSingleThreaded = boSingleThreaded});
            EXPECT_EQ(count.doubt, "");
            EXPECT_EQ(count.iEntities, row.iEntities);
            EXPECT_EQ(count.iGlobalIds, row.iGlobalIds);
        }
    }
}

struct DoubtRow {
    const char* sRule;
    std::string sText;
    std::string_view doubt;
};

constexpr std::string_view g_statement = "a statement that is not #12=KEYWORD(...);";
constexpr std::string_view g_type = "a keyword that no instance of its schema has";
constexpr std::string_view g_number = "a number that stands twice or is too large";
constexpr std::string_view g_guid = "a GlobalId that stands twice or is none";
constexpr std::string_view g_byte = "a byte that no statement has outside of strings";
constexpr std::string_view g_end = "its DATA section does not end the file";
constexpr std::string_view g_header = "its header is not without fault";
constexpr std::string_view g_noData = "no DATA section near its begin";

DoubtRow inData(const char* sRule, const std::string& sData, std::string_view doubt) {
    return {sRule, g_sHead + sData + g_sEnd, doubt};
}

TEST(CountFile, LeavesToAReadWhatIsNot) {
    const std::string sWhole = g_sHead + g_sPoint + g_sEnd;
    const DoubtRow rows[] = {
        inData("a second equal sign", "#1=IFCDIRECTION((1.))\n#2=IFCDIRECTION((1.));", g_statement),
        inData("no parenthesis at the end", "#1=IFCDIRECTION((1.),$;", g_statement),
        inData("text behind the parameters", "#1=IFCDIRECTION((1.))x;", g_statement),
        inData("an empty statement", g_sPoint + ";", g_statement),
        inData("no parameters", "#1=IFCDIRECTION;" + sWall(2), g_type),
        inData("no number sign", "1=IFCDIRECTION((1.));", g_statement),
        inData("a negative number", "#-1=IFCDIRECTION((1.));", g_number),
        inData("a number beyond 32 bits", "#2147483648=IFCDIRECTION((1.));", g_number),
        inData("no number", "#=IFCDIRECTION((1.));", g_number),
        inData("a number twice", g_sPoint + g_sPoint, g_number),
        inData("a number with a blank inside", "#1 2=IFCDIRECTION((1.));", g_statement),
        inData("a keyword with a blank inside", "#1=IFC DIRECTION((1.));", g_type),
        inData("a keyword with a comment inside", "#1=IFC/**/DIRECTION((1.));", g_type),
        inData("an unknown keyword", "#1=IFCTEAPOT((1.));", g_type),
        inData("a defined type", "#1=IFCLABEL('a');", g_type),
        inData("lower case", "#1=IfcDirection((1.));", g_type),
        inData("an abstract type", "#1=IFCROOT('3qt5KnRY9OSu4BNT4B7kwi',$,$,$);", g_type),
        inData("a complex instance", "#1=(IFCDIRECTION((1.))IFCPERSON());", g_type),
        inData("a GlobalId twice", sWall(1) + "#2" + sWall(1).substr(2), g_guid),
        inData("a short GlobalId", "#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kw',$);", g_guid),
        inData("a long GlobalId", "#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kwwi',$);", g_guid),
        inData("a character outside its alphabet", "#1=IFCWALL('3qt5KnRY9OSu4BNT4B7kw-',$);", g_guid),
        inData("no GlobalId", "#1=IFCWALL($,$,$,$,$,$,$,$,$);", g_guid),
        inData("a blank in front of a GlobalId", "#1=IFCWALL( '3qt5KnRY9OSu4BNT4B7kwi',$);", g_guid),
        inData("the null GlobalId", "#1=IFCWALL('0000000000000000000000',$);", g_guid),
        inData("a backslash", "#1=IFCDIRECTION((1.\\));", g_byte),
        inData("a tab", "#1=IFCDIRECTION((1.,\t2.));", g_byte),
        inData("a byte of 8 bits", "#1=IFCDIRECTION((1.,\xe4));", g_byte),
        inData("a slash", "#1=IFCDIRECTION((1./2.));", g_byte),
        inData("a line end behind a backslash", sWall(1, "'\\\n'"), g_byte),
        inData("a string without an end", sWall(1, "'w"), g_end),
        inData("a comment without an end", g_sPoint + "/* ", g_end),
        {"no end of the section", g_sHead + g_sPoint, g_end},
        {"no end of the file", g_sHead + g_sPoint + "ENDSEC;", g_end},
        {"a second section", g_sHead + g_sPoint + "ENDSEC;\nDATA;\n" + sWall(2) + g_sEnd, g_end},
        {"a second file", sWhole + sWhole, g_end},
        {"other text behind the end", sWhole + "Yours", g_end},
        {"no file at all", "Dear Sir or Madam,\n", g_noData},
        {"nothing", "", g_noData},
        {"a section with a name", "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA('a',('IFC4'));" + g_sEnd,
         g_noData},
        {"no marker", "HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;\n" + g_sEnd, g_header},
        {"no header", "ISO-10303-21;\nDATA;\n" + g_sPoint + g_sEnd, g_header},
        {"an unknown schema", "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC9'));ENDSEC;DATA;\n" + g_sEnd, g_header},
        {"another section in front",
         "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;ANCHOR;<a>=#1;ENDSEC;DATA;\n" + g_sEnd, g_header},
        {"the word in a string of the header",
         "ISO-10303-21;HEADER;FILE_NAME(';DATA;');FILE_SCHEMA(('IFC4'));ENDSEC;DATA;\n" + g_sEnd, g_header},
        {"the word in the header", "ISO-10303-21;HEADER;DATA;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;\n" + g_sEnd, g_header},
    };
    for (const DoubtRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        const CountedText text(row.sText);
        EXPECT_EQ(countAsRead(text.path(), row.sText).doubt, row.doubt);
    }
}

TEST(CountFile, WhatIsNoFileIsADoubt) {
    EXPECT_EQ(io::CountFile::count("/no/such/file.ifc", {}).doubt, "its bytes can't be had in pieces");
    EXPECT_EQ(io::CountFile::count("/no/such/file.ifc", {}).pFile, nullptr);
}

// A bit more than two blocks, with every part of a statement at every place of a word and at the end of a block.
TEST(CountFile, NoPlaceInAWordMakesADifference) {
    const std::string sPart = sWall(1, R"('it''s \S\'; \X2\00E4\X0\ and;')").substr(2) +
                              "/* it's; */#~ = IFCCARTESIANPOINT ( ( 0., 1. ) ) ;\r\n#~=IFCDIRECTION((1.,0.));";
    std::string sData;
    int iNumber = 0;
    for (int i = 0; i < 130; ++i) {
        sData += std::string(static_cast<std::size_t>(i % 67), ' ') + "#" + std::to_string(++iNumber) + sPart;
        const std::string sGuid = std::to_string(100000 + i);
        sData.replace(sData.rfind("IFCWALL('") + 9, sGuid.size(), sGuid);
        for (std::size_t iPlace; (iPlace = sData.find('~')) != std::string::npos;)
            sData.replace(iPlace, 1, std::to_string(++iNumber));
    }
    const CountedText text;
    for (std::size_t iShift = 0; iShift < 66; ++iShift) {
        SCOPED_TRACE(iShift);
        const std::string sText = g_sHead + std::string(iShift, ' ') + sData + g_sEnd;
        text.vWrite(sText);
        EXPECT_EQ(countAsRead(text.path(), sText).doubt, "");
    }
    std::string sLong;
    for (int i = 0; i < 24; ++i)
        sLong += sWall(i + 1, "'" + std::string(24'000 + static_cast<std::size_t>(i), 'x') + "\\S\\';'");
    const std::string sText = g_sHead + sLong + g_sEnd;
    text.vWrite(sText);
    EXPECT_EQ(countAsRead(text.path(), sText).iEntities, 24U);
}

// Several megabytes, so that threads have ranges of their own. Strings as long as a range mislead the cuts.
TEST(CountFile, CutsAreProven) {
    std::string sMany;
    for (int i = 1; i <= 40'000; ++i)
        sMany += "#" + std::to_string(i * 7) + "=IFCCARTESIANPOINT((" + std::to_string(i) + ".,2.5,-17.25));\n";
    std::string sTrap;
    for (int i = 0; i < 80'000; ++i) sTrap += ";\n#99=IFCWALL(";
    const struct {
        const char* sRule;
        std::string sData;
        std::string_view doubt;
    } rows[] = {
        {"plain", sMany, ""},
        {"a cut in a string", sMany + sWall(1, "'" + sTrap + "'") + sWall(2), ""},
        {"a cut in a comment", sMany + "#1=IFCDIRECTION((/*" + sTrap + "*/1.));" + sWall(2), ""},
        {"a number twice, far apart", sMany + "#7=IFCDIRECTION((1.));\n", g_number},
        {"a fault in the middle", sMany + "#1=IFCDIRECTION((1.)x);\n#2=IFCTEAPOT();\n" + sWall(3), g_type},
        {"two faults, of which the first counts", "#1=IFCTEAPOT();\n" + sMany + "#2=IFCDIRECTION((1.,\t0.));\n",
         g_type},
        {"an end in the middle", sMany + "ENDSEC;\n" + std::string(1 << 20, ' ') + sMany, g_end},
    };
    const CountedText text;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const std::string sText = g_sHead + row.sData + g_sEnd;
        text.vWrite(sText);
        EXPECT_EQ(countAsRead(text.path(), sText).doubt, row.doubt);
        EXPECT_EQ(io::CountFile::count(text.path(), {.boSingleThreaded = true}).doubt, row.doubt);
    }
}

TEST(CountFile, TellsItsProgressAndEndsWithWhatThatThrows) {
    std::string sData;
    for (int i = 1; i <= 80'000; ++i) sData += "#" + std::to_string(i) + "=IFCCARTESIANPOINT((1.,2.5,-17.25));\n";
    const CountedText text(g_sHead + sData + g_sEnd);
    std::vector<std::uint64_t> told;
    const auto progress = [&told](std::uint64_t iBytes) { told.push_back(iBytes); };
    EXPECT_EQ(io::CountFile::count(text.path(), {.boSingleThreaded = true, .progress = progress}).doubt, "");
    EXPECT_GT(told.size(), 8U);
    EXPECT_TRUE(std::ranges::is_sorted(told));
    EXPECT_EQ(told.back(), sData.size() + g_sEnd.size() + 1);   // and the line end behind DATA
    // The last call says all of it, whichever thread was the last.
    for (int i = 0; i < 5; ++i) {
        told.clear();
        const auto late = [&told](std::uint64_t iBytes) {
            if (told.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(30));
            told.push_back(iBytes);
        };
        EXPECT_EQ(io::CountFile::count(text.path(), {.progress = late}).doubt, "");
        ASSERT_FALSE(told.empty());
        EXPECT_EQ(told.back(), sData.size() + g_sEnd.size() + 1);
    }
    const auto thrower = [](std::uint64_t) { throw std::runtime_error("enough"); };
    for (const bool boSingleThreaded : {true, false})
        EXPECT_THROW(io::CountFile::count(text.path(), {.boSingleThreaded = boSingleThreaded, .progress = thrower}),
                     std::runtime_error);
}

// Bytes of a file changed, taken out and doubled at random: a count that has no doubt is that of the read.
TEST(CountFile, ChangedBytesAreCountedAsReadOrLeft) {
    std::string sData = sWall(1, R"('it''s \S\'; \X2\00E4\X0\')") + "/* it's; */" + g_sPoint.substr(0, 1) + "2" +
                        g_sPoint.substr(2) + "#3=IFCPOLYLINE((#2,#2));\n" + sWall(4) +
                        "#5= IFCDIRECTION((1.,0.)) ;\r\n";
    const std::string sWhole = g_sHead + sData + g_sEnd;
    const std::string_view bytes = "';#=()/*\\ \n\t0X2SA,-\xe4";
    std::mt19937 random(7);
    const auto iBelow = [&random](std::size_t iEnd) { return random() % iEnd; };
    const CountedText text;
    int iCounted = 0;
    for (int i = 0; i < 1500; ++i) {
        std::string sText = sWhole;
        for (std::size_t iChanges = 1 + iBelow(2); iChanges > 0; --iChanges) {
            const std::size_t iPlace =
                iBelow(10) ? g_sHead.size() + iBelow(sText.size() - g_sHead.size()) : iBelow(sText.size());
            const char c = bytes[iBelow(bytes.size())];
            switch (iBelow(4)) {
            case 0: sText[iPlace] = c; break;
            case 1: sText.insert(iPlace, 1, c); break;
            case 2: sText.erase(iPlace, 1); break;
            default: sText.insert(iPlace, sText.substr(iPlace, iBelow(12))); break;
            }
        }
        text.vWrite(sText);
        iCounted += countAsRead(text.path(), sText, {.boSingleThreaded = true}).doubt.empty();
        ASSERT_FALSE(testing::Test::HasFailure()) << sText;
    }
    EXPECT_GT(iCounted, 150) << "of 1500";
}

TEST(NumberSet, EachNumberIsTakenOnce) {
    details::NumberSet a, b;
    for (const std::uint32_t iNumber : {0U, 63U, 64U, 32'767U, 32'768U, 2'147'483'647U, 4'294'967'295U}) {
        EXPECT_TRUE(a.boAdd(iNumber)) << iNumber;
        EXPECT_FALSE(a.boAdd(iNumber)) << iNumber;
    }
    EXPECT_TRUE(b.boAdd(1));
    EXPECT_TRUE(b.boAdd(1'000'000));
    EXPECT_TRUE(a.boMerge(b));
    EXPECT_FALSE(a.boAdd(1'000'000)) << "merged";
    details::NumberSet c;
    EXPECT_TRUE(c.boAdd(64));
    EXPECT_FALSE(a.boMerge(c)) << "both have it";
}

// What a thread keeps of a chunk is seen in the set.
TEST(NumberSet, AChunkIsMadeWhereItIsWritten) {
    details::NumberSet set;
    EXPECT_EQ(set.pChunk(2), nullptr);
    details::NumberSet::Chunk* const pMade = set.pMade(2);
    ASSERT_NE(pMade, nullptr);
    EXPECT_EQ(pMade, set.pMade(2)) << "once";
    EXPECT_EQ(pMade, set.pChunk(2));
    EXPECT_EQ(set.pChunk(1), nullptr) << "no other one";
    (*pMade)[1] |= std::uint64_t{1} << 5;
    EXPECT_FALSE(set.boAdd(2 * 32'768 + 69));
    EXPECT_TRUE(set.boAdd(2 * 32'768 + 68));
}

// 64 MiB of chunks at the most.
TEST(NumberSet, NumbersFarApartHaveNoPlace) {
    details::NumberSet set;
    std::uint32_t iTaken = 0;
    while (iTaken < 20'000 && set.boAdd(iTaken * 32'768U)) ++iTaken;
    EXPECT_EQ(iTaken, 16'384U);
}

}   // namespace
}   // namespace oxa::ifc
