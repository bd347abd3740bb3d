// SPDX-License-Identifier: Apache-2.0
#include "platform/DateTime.h"

#include <gtest/gtest.h>

#include <locale>

namespace oxa::datetime {
namespace {

DateTime fromMilliseconds(long long iMilliseconds) {
    return DateTime(DateTime::TimePoint(std::chrono::milliseconds(iMilliseconds)));
}

constexpr long long g_iStamp = 1795269839000;   // 2026-11-21T14:03:59Z

TEST(DateTime, IsNullUntilSet) {
    DateTime time;
    EXPECT_TRUE(time.boIsNull());
    EXPECT_EQ(time, DateTime::null());
    const auto before = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    time.vSetNow();
    const auto after = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    ASSERT_FALSE(time.boIsNull());
    EXPECT_LE(before, time.time());
    EXPECT_LE(time.time(), after);
}

TEST(DateTime, NullIsBeforeEveryOther) {
    EXPECT_LT(DateTime::null(), fromMilliseconds(-1));
    EXPECT_LT(fromMilliseconds(-1), fromMilliseconds(0));
    EXPECT_NE(DateTime::null(), fromMilliseconds(0));
}

struct WriteRow {
    const char* sRule;
    DateTime time;
    const char* sText;
};
const WriteRow g_writeRows[] = {
    {"date and time in UTC", fromMilliseconds(g_iStamp), "2026-11-21T14:03:59"},
    {"the second is not rounded up", fromMilliseconds(g_iStamp + 999), "2026-11-21T14:03:59"},
    {"nor towards 1970", fromMilliseconds(-1), "1969-12-31T23:59:59"},
    {"leading zeros", fromMilliseconds(-62135596800000), "0001-01-01T00:00:00"},
    {"nothing for the null time", DateTime::null(), ""},
};

TEST(DateTimeFormat, WritesToTheSecond) {
    for (const WriteRow& row : g_writeRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(DateTimeFormat(SpecialFormat::Iso).toString(row.time), row.sText);
        EXPECT_EQ(DateTimeFormat(SpecialFormat::IsoParse).toString(row.time), row.sText);
    }
}

struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};

TEST(DateTimeFormat, LooksAtNoLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    EXPECT_EQ(DateTimeFormat(SpecialFormat::Iso).toString(fromMilliseconds(g_iStamp)), "2026-11-21T14:03:59");
    EXPECT_EQ(DateTimeFormat(SpecialFormat::Iso).fromString("2026-11-21T14:03:59"), fromMilliseconds(g_iStamp));
    std::locale::global(before);
}

struct ReadRow {
    const char* sRule;
    std::string_view text;
    std::optional<DateTime> asWritten;   // SpecialFormat::Iso
    std::optional<DateTime> extended;    // SpecialFormat::IsoParse
};
constexpr std::nullopt_t g_none = std::nullopt;
const DateTime g_stamp = fromMilliseconds(g_iStamp);
const ReadRow g_readRows[] = {
    {"as written", "2026-11-21T14:03:59", g_stamp, g_stamp},
    {"before 1970", "1969-12-31T23:59:59", fromMilliseconds(-1000), fromMilliseconds(-1000)},
    {"29 February of a leap year", "2000-02-29T00:00:00", fromMilliseconds(951782400000),
     fromMilliseconds(951782400000)},
    {"Z is UTC", "2026-11-21T14:03:59Z", g_none, g_stamp},
    {"a fraction", "2026-11-21T14:03:59.25", g_none, fromMilliseconds(g_iStamp + 250)},
    {"a fraction with a comma", "2026-11-21T14:03:59,007", g_none, fromMilliseconds(g_iStamp + 7)},
    {"a fraction finer than a millisecond", "2026-11-21T14:03:59.9999999Z", g_none, fromMilliseconds(g_iStamp + 999)},
    {"a fraction before an offset", "2026-11-21T15:03:59.5+01:00", g_none, fromMilliseconds(g_iStamp + 500)},
    {"an offset to the east", "2026-11-21T15:03:59+01:00", g_none, g_stamp},
    {"an offset to the west", "2026-11-21T08:33:59-05:30", g_none, g_stamp},
    {"an offset without a colon", "2026-11-21T15:03:59+0100", g_none, g_stamp},
    {"an offset over midnight", "2026-11-22T00:03:59+10:00", g_none, g_stamp},
    {"an offset over the year", "2026-12-31T23:30:00-01:00", g_none, fromMilliseconds(1798763400000)},
    {"empty", "", g_none, g_none},
    {"a date alone", "2026-11-21", g_none, g_none},
    {"no seconds", "2026-11-21T14:03", g_none, g_none},
    {"a blank for T", "2026-11-21 14:03:59", g_none, g_none},
    {"t in lower case", "2026-11-21t14:03:59", g_none, g_none},
    {"z in lower case", "2026-11-21T14:03:59z", g_none, g_none},
    {"a blank before", " 2026-11-21T14:03:59", g_none, g_none},
    {"a blank behind", "2026-11-21T14:03:59 ", g_none, g_none},
    {"a zero byte behind", std::string_view("2026-11-21T14:03:59\0", 20), g_none, g_none},
    {"more behind Z", "2026-11-21T14:03:59ZZ", g_none, g_none},
    {"more behind an offset", "2026-11-21T14:03:59+01:000", g_none, g_none},
    {"single digits", "2026-1-1T1:2:3", g_none, g_none},
    {"a year with a sign", "-026-11-21T14:03:59", g_none, g_none},
    {"a year of five digits", "12026-11-21T14:03:59", g_none, g_none},
    {"no such month", "2026-13-01T00:00:00", g_none, g_none},
    {"month 0", "2026-00-01T00:00:00", g_none, g_none},
    {"no such day", "2026-02-29T00:00:00", g_none, g_none},
    {"day 0", "2026-11-00T00:00:00", g_none, g_none},
    {"no such hour", "2026-11-21T24:00:00", g_none, g_none},
    {"no such minute", "2026-11-21T14:60:00", g_none, g_none},
    {"no such second", "2026-11-21T14:03:60", g_none, g_none},
    {"a point without digits", "2026-11-21T14:03:59.", g_none, g_none},
    {"a point before Z", "2026-11-21T14:03:59.Z", g_none, g_none},
    {"an offset without minutes", "2026-11-21T14:03:59+01", g_none, g_none},
    {"an offset of one digit", "2026-11-21T14:03:59+1:00", g_none, g_none},
    {"an offset of a day", "2026-11-21T14:03:59+24:00", g_none, g_none},
    {"an offset of 60 minutes", "2026-11-21T14:03:59+00:60", g_none, g_none},
    {"basic format", "20261121T140359", g_none, g_none},
    {"another order", "21.11.2026 14:03:59", g_none, g_none},
};

TEST(DateTimeFormat, ReadsWholeTextsOnly) {
    for (const ReadRow& row : g_readRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(DateTimeFormat(SpecialFormat::Iso).fromString(row.text), row.asWritten);
        EXPECT_EQ(DateTimeFormat(SpecialFormat::IsoParse).fromString(row.text), row.extended);
    }
}

// Every cut of a full text that is not one of the shorter forms.
TEST(DateTimeFormat, RefusesEveryOtherPrefix) {
    constexpr std::string_view text = "2026-11-21T15:03:59.25+01:00";
    for (std::size_t iLength = 0; iLength < text.size(); ++iLength) {
        const bool boShorterForm = iLength == 19 || iLength == 21 || iLength == 22;   // second, tenth, hundredth
        SCOPED_TRACE(text.substr(0, iLength));
        const std::string sExact(text.substr(0, iLength));
        EXPECT_EQ(DateTimeFormat(SpecialFormat::IsoParse).fromString(sExact).has_value(), boShorterForm);
    }
}

TEST(DateTimeFormat, HasTheNumbersThatCallersPass) {
    EXPECT_EQ(static_cast<int>(SpecialFormat::Iso), 0);
    EXPECT_EQ(static_cast<int>(SpecialFormat::IsoParse), 2);
}

}   // namespace
}   // namespace oxa::datetime
