// SPDX-License-Identifier: Apache-2.0
// What a check keeps of a file has bounds: bytes of a record, values of a header, faults that wait.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "CheckText.h"

namespace oxa {
namespace {

struct LongRow {
    const char* sRule;
    CheckLevel level;
    FileText file;
    std::string sStatements;
    const char* pKey;
    std::string sFound;   // ~ stands for as many bytes as are missing
    char cFill;
    bool boType;   // it is told as the type, not as what stands there
};

const CheckGroup& groupOf(const CheckResult& result, std::string_view key) {
    static const CheckGroup g_none{};
    const auto group = std::ranges::find(result.groups, key, &CheckGroup::key);
    return group == result.groups.end() ? g_none : *group;
}

std::string sFilled(std::string sText, std::size_t iCount, char cFill) {
    const std::size_t iPlace = sText.find('~');
    return iPlace == std::string::npos ? sText : sText.replace(iPlace, 1, std::string(iCount, cFill));
}

TEST(CheckBounds, OfTheFileEightyBytesAreTold) {
    // clang-format off
    const LongRow rows[] = {
        {"a field of the header", CheckLevel::Header, {.sName = "'','~',(''),(''),'','A - B - 1',''"}, "#1=A();",
         "Header_TimeStamp", "~", 'x', false},
        {"a value", CheckLevel::Schema, {}, "#1=IFCSIUNIT(*,.~.,$,.METRE.);", "Schema_Enumerator", ".~.", 'X', false},
        {"a type that no schema has", CheckLevel::Schema, {}, "#1=~();", "Schema_UnknownType", "~", 'X', true},
        {"a faulty token", CheckLevel::Syntax, {}, "#1=A(.~.);", "Syntax_Enumeration", ".~.", 'x', false},
        {"bytes that may stand nowhere", CheckLevel::Syntax, {}, "#1=A(~);", "Syntax_Byte", "~", '\x01', false},
    };
    // clang-format on
    for (const LongRow& row : rows)
        for (const std::size_t iSize : {79U, 80U, 81U, 70'000U}) {
            SCOPED_TRACE(std::string(row.sRule) + ", " + std::to_string(iSize) + " bytes");
            // What is longer than 64 KiB is kept with its quote.
            const std::size_t iMost = row.level == CheckLevel::Header && iSize > 65'536 ? 79 : 80;
            const std::size_t iFill = iSize - (row.sFound.size() - 1);
            FileText file = row.file;
            file.sName = sFilled(file.sName, iFill, row.cFill);
            const CheckResult result = checked(file.text(sFilled(row.sStatements, iFill, row.cFill)), {row.level});
            const CheckGroup& group = groupOf(result, row.pKey);
            ASSERT_FALSE(group.places.empty());
            EXPECT_EQ(row.boType ? group.type : group.places.front().found,
                      sFilled(row.sFound, iFill, row.cFill).substr(0, iMost));
        }
}

// A number is kept digit by digit up to 18 of them. What is longer is told from others, and by its line.
TEST(CheckBounds, NumbersOfEighteenDigitsAreTold) {
    struct NumberRow {
        std::string sNumber;
        std::uint64_t iTold;
        const char* sName;
    };
    const NumberRow rows[] = {{"999999999999999999", 999'999'999'999'999'999, "#999999999999999999"},
                              {"000999999999999999999", 999'999'999'999'999'999, "#999999999999999999"},
                              {"1000000000000000000", 0, "an instance of more than 18 digits"},
                              {"9223372036854775809", 0, "an instance of more than 18 digits"}};
    for (const NumberRow& row : rows) {
        SCOPED_TRACE(row.sNumber);
        const std::string sTwo = '#' + row.sNumber + "=IFCPERSON(,$,$,$,$,$,$,$);\n#" + row.sNumber + "=IFCPERSON();";
        const CheckResult syntax =
            checked(FileText().text(sTwo + "\n#" + row.sNumber + "1=A();"), {CheckLevel::Syntax});
        EXPECT_EQ(sFailures(syntax), "6:" + std::to_string(13 + row.sNumber.size()) +
                                         " Syntax_Unexpected ','; a parameter or ) | 7:1 Syntax_InstanceDouble '" +
                                         row.sName + "'; one of its own");
        ASSERT_EQ(syntax.records().size(), 2U);
        EXPECT_EQ(syntax.records().front().place->id, row.iTold);
    }
}

// Behind a line end in a string 64 bytes are looked at: a statement that begins there shows that the quote is missing.
TEST(CheckBounds, AnOpenStringEndsWhereAStatementBegins) {
    struct OpenRow {
        std::size_t iBlanks;
        std::uint64_t iStatements;
    };
    for (const OpenRow& row : {OpenRow{0, 3}, OpenRow{60, 3}, OpenRow{61, 2}, OpenRow{1000, 2}}) {
        SCOPED_TRACE(row.iBlanks);
        const CheckResult result = checked(
            FileText().text("#1=A('a\n" + std::string(row.iBlanks, ' ') + "#2=A();\n#3=A();"), {CheckLevel::Syntax});
        EXPECT_EQ(result.statements, row.iStatements);
        EXPECT_EQ(result.groups.at(0).key, "Syntax_StringNotClosed");
    }
}

// Of a list that has no end in sight the first hundred thousand values are looked at, the list itself among them.
TEST(CheckBounds, OfAHeaderAHundredThousandValuesAreLookedAt) {
    std::string sItems = "$";
    for (int i = 1; i < 100'100; ++i) sItems += ",$";
    const CheckResult result =
        checked(FileText{.sDescription = "(" + sItems + "),'2;1'"}.text("#1=A();"), {CheckLevel::Header});
    EXPECT_EQ(groupOf(result, "Header_FieldType").count, 99'999U);
}

// Whether a byte is one of the alphabet is known when the header has told the edition; so many wait for that.
TEST(CheckBounds, AHundredThousandBytesWaitForTheirAlphabet) {
    for (const std::size_t iBytes : {99'999U, 100'000U, 100'001U, 100'100U}) {
        std::string sComment = "/*";
        for (std::size_t i = 0; i < iBytes; ++i) sComment += "\xe4 ";
        const CheckResult result = checked(sComment + "*/" + FileText().text("#1=A();"), {CheckLevel::Syntax});
        EXPECT_EQ(groupOf(result, "Syntax_Byte").count, std::min<std::size_t>(iBytes, 100'000U));
    }
}

}   // namespace
}   // namespace oxa
