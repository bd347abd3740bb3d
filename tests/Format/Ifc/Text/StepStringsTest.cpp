// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcStepStrings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#if __has_include(<rapidcheck/gtest.h>)
#include <rapidcheck/gtest.h>
#define OXA_PROPERTIES
#endif

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/Text/TextScan.h"
#include "platform/String.h"

namespace oxa::ifc {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

// Reads "text" in a buffer that ends with the one byte behind it: a sanitizer sees every byte read outside.
std::string sRead(std::string_view text, char cBehind = '\'') {
    const std::unique_ptr<char[]> pBuffer(new char[text.size() + 1]);
    text.copy(pBuffer.get(), text.size());
    pBuffer[text.size()] = cBehind;
    std::string out = "left over";
    vIfcStrToUtf8(out, pBuffer.get(), text.size());
    return out;
}

std::string sWrite(std::string_view text) {
    const std::unique_ptr<char[]> pBuffer(new char[text.size()]);
    text.copy(pBuffer.get(), text.size());
    std::string out = "left over";
    const std::string& result = sIfcStrFromUtf8(out, pBuffer.get(), text.size());
    EXPECT_EQ(&result, &out);
    return out;
}

struct StringReadRow {
    const char* sRule;
    std::string_view sStep;
    std::string_view sText;
};
const StringReadRow g_stringReadRows[] = {
    // 7-bit text and quotes
    {"nothing", ""sv, ""sv},
    {"plain text", "abc", "abc"},
    {"controls are kept", "a\tb\n\0c\x7F"sv, "a\tb\n\0c\x7F"sv},
    {"a doubled quote is one", "it''s", "it's"},
    {"a single quote eats what follows", "it's", "it'"},
    {"a quote at the end", "it'", "it'"},
    {"quotes in a row", "''''", "''"},
    {"a quote eats a backslash", "'\\S\\a", "'S"},
    {"a doubled backslash is one", "a\\\\b", "a\\b"},
    {"doubled backslashes in a row", "\\\\\\\\", "\\\\"},
    {"long plain text", "0123456789012345678901234567890123456789", "0123456789012345678901234567890123456789"},
    {"a quote behind the first sixteen", "01234567890123456''8", "01234567890123456'8"},
    // \S\ .
    {"128 places up", "\\S\\a", "\u00E1"},
    {"text around it", "x\\S\\ay", "x\u00E1y"},
    {"the letter alone", "\\S", ""},
    {"no backslash behind the letter", "a\\Sbc", "ac"},
    {"no backslash, and the end", "a\\Sb", "a"},
    {"an 8-bit byte goes down", "\\S\\\xE1", "a"},
    {"a quote is a byte like others", "\\S\\''x", "\u00A7'"},
    // \X\hh
    {"two hexadecimal digits", "\\X\\E9", "\u00E9"},
    {"lower case too", "\\X\\e9", "\u00E9"},
    {"in a word", "caf\\X\\E9 au lait", "caf\u00E9 au lait"},
    {"below 128", "\\X\\41B", "AB"},
    {"one digit counts alone", "\\X\\4zB",
     "\x04"
     "B"},
    {"no digit: lost", "\\X\\zzB", "B"},
    {"too short: the end", "a\\X\\E", "a"},
    {"no digits: the end", "a\\X\\", "a"},
    {"a NUL", "\\X\\00", "\0"sv},
    // \X2\ and \X4\ .
    {"four digits", "\\X2\\00E9\\X0\\", "\u00E9"},
    {"eight digits", "\\X4\\000000E9\\X0\\", "\u00E9"},
    {"two groups and text", "\\X2\\00E900E9\\X0\\x", "\u00E9\u00E9x"},
    {"eight digits, two groups", "\\X4\\0001F600000020AC\\X0\\x", "\U0001F600\u20ACx"},
    {"no terminator", "\\X2\\00E9", "\u00E9"},
    {"four bytes are skipped as terminator", "\\X2\\00E9\\abcdef",
     "\u00E9"
     "def"},
    {"a short terminator", "\\X2\\00E9\\X0", "\u00E9"},
    {"a short group takes from the terminator", "\\X2\\00\\X0\\", "\0"sv},
    {"and so do those behind it", "\\X2\\00\\X0\\abcdefg", "\0\0\uCDEF"sv},
    {"a group without digits: lost", "\\X2\\zzzz00E9\\X0\\", "\u00E9"},
    {"three bytes are no group", "\\X2\\00E", ""},
    {"no group", "\\X2\\\\X0\\a", "a"},
    {"seven bytes are no group, and four are skipped", "\\X4\\00000E9", "0E9"},
    {"beyond 31 bits: lost",
     "\\X4\\80000000"
     "000000E9\\X0\\",
     "\u00E9"},
    {"blocks one after the other", "\\X2\\20AC\\X0\\\\X4\\0001F600\\X0\\", "\u20AC\U0001F600"},
    {"not closed by a backslash: dropped", "\\X2abc", "bc"},
    // \X and anything else
    {"the two bytes behind it go", "\\Xabc", "c"},
    {"one byte behind it", "\\Xa", ""},
    {"none behind it", "a\\X", "a"},
    {"\\X2 at the end", "a\\X2", "a"},
    {"a terminator alone", "\\X0\\a", "a"},
    // others
    {"unknown: both dropped", "\\Qab", "ab"},
    {"newline directive", "a\\N\\b", "a"},
    {"a backslash at the end", "abc\\", "abc"},
    // behind the first directive
    {"quotes", "\\X\\E9''x", "\u00E9'x"},
    {"a doubled backslash", "\\X\\E9\\\\x", "\u00E9\\x"},
    {"a NUL in the text", "\\X\\E9\0x"sv, "\u00E9\0x"sv},
};

TEST(StrToUtf8, ReadsDirectives) {
    const AssertLog log;
    for (const StringReadRow& row : g_stringReadRows) {
        SCOPED_TRACE(row.sRule);
        SCOPED_TRACE(row.sStep);
        EXPECT_EQ(sRead(row.sStep), row.sText);
    }
    EXPECT_EQ(log.texts(), std::vector<std::string>());
}

// ISO 10303-21, clause 6.4.3.
const StringReadRow g_isoRows[] = {
    {"apostrophe", "Don''t", "Don't"},
    {"umlauts by \\S\\", "h\\S\\vhe", "h\u00F6he"},
    {"umlaut by \\X\\", "see \\X\\A7 4.1", "see \u00A7 4.1"},
    {"Greek", "\\X2\\03B103B203B3\\X0\\", "\u03B1\u03B2\u03B3"},
};

TEST(StrToUtf8, ReadsWhatTheStandardShows) {
    for (const StringReadRow& row : g_isoRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sRead(row.sStep), row.sText);
    }
}

struct BehindRow {
    const char* sRule;
    std::string_view sStep;
    char cBehind;
    std::string_view sText;
};
const BehindRow g_behindRows[] = {
    {"the quote is shifted", "a\\S\\", '\'', "a\u00A7"},
    {"so is any other byte", "a\\S\\", 'a', "a\u00E1"},
    {"a backslash makes a pair", "a\\", '\\', "a\\"},
    {"a letter begins nothing", "a\\", 'S', "a"},
    {"nor does this", "a\\", 'X', "a"},
    {"nor this", "a\\", 'P', "a"},
    {"a block head needs its backslash inside", "a\\X2", '\\', "a"},
    {"plain text does not look at it", "a", '\\', "a"},
};

TEST(StrToUtf8, LooksAtOneByteBehindTheTextAtMost) {
    for (const BehindRow& row : g_behindRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sRead(row.sStep, row.cBehind), row.sText);
    }
}

TEST(StrToUtf8, NoLengthIsNoText) {
    std::string out = "x";
    vIfcStrToUtf8(out, nullptr, 0);
    EXPECT_EQ(out, "");
    out = "x";
    vIfcStrToUtf8(out, "abc", std::numeric_limits<std::size_t>::max());
    EXPECT_EQ(out, "");
}

const std::string g_invalid = "U_INVALID_CHAR_FOUND: Seems to be an invalid ifc string: '";

struct ByteRow {
    const char* sRule;
    std::string_view sStep;
    std::string_view sText;
};
const ByteRow g_byteRows[] = {
    {"UTF-8 behind C3 is kept", "\xC3\xA9", "\u00E9"},
    {"Latin-1 is converted", "\xE9", "\u00E9"},
    {"the first 8-bit byte", "\x80", "\u0080"},
    {"the last one", "\xFF", "\u00FF"},
    {"UTF-8 that does not begin with C3 is Latin-1", "\xD1\x8F", "\u00D1\u008F"},
    {"C2, which leads others, does not switch", "\xC2\xB0", "\u00C2\u00B0"},
    {"nor does C4", "\xC4\x80", "\u00C4\u0080"},
    {"C2 behind C3 is kept", "\xC3\xA9\xC2\xB0", "\u00E9\u00B0"},
    {"C3 switches for the rest of the string", "\xC3\xA9\xD1\x8F", "\u00E9\u044F"},
    {"but not for what was before", "\xD1\xC3\xA9", "\u00D1\u00E9"},
    {"one assertion a string", "\xE9-\xE8-\xC3\xA9", "\u00E9-\u00E8-\u00E9"},
    {"8-bit bytes come in front of directives",
     "a\\X\\E9"
     "b\xE8"
     "c",
     "a\u00E8\u00E9"
     "bc"},
    {"but behind the text before them",
     "a\xE8"
     "b\\X\\E9",
     "a\u00E8"
     "b\u00E9"},
};

TEST(StrToUtf8, Keeps8BitBytesWithOneAssertion) {
    for (const ByteRow& row : g_byteRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        EXPECT_EQ(sRead(row.sStep), row.sText);
        const std::string sShown = str::Converter::to_utf8(row.sStep);
        EXPECT_EQ(log.texts(), std::vector<std::string>{g_invalid + sShown + "'"});
    }
}

TEST(StrToUtf8, IsSilentWhileAssertionsAreOff) {
    const AssertLog log(false);
    EXPECT_EQ(sRead("\xE9"), "\u00E9");
    EXPECT_EQ(sRead("\\PA\\xa"), "a");
    EXPECT_EQ(sRead("a\\X2\\D800\\X0\\"), "a");
    EXPECT_TRUE(log.texts().empty());
}

struct PageRow {
    const char* sRule;
    std::string_view sStep;
    std::string_view sText;
    std::size_t iAssertions;
};
const PageRow g_pageRows[] = {
    {"its backslash eats the next byte", "\\PA\\xa", "a", 1},
    {"even a letter alone", "\\PA\\x", "", 1},
    {"it may make a directive", "\\PE\\S\\a", "\u00E1", 1},
    {"no letter", "a\\P", "a", 0},
    {"each one is told", "\\PA\\\\PB\\", "\\PB", 1},
    {"one behind a byte", "\\PA\\x\\PB\\x", "", 2},
    {"the meaning of \\S\\ stays", "\\PE\\x\\S\\a", "\u00E1", 1},
};

TEST(StrToUtf8, CodePagesAreNotImplemented) {
    for (const PageRow& row : g_pageRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        EXPECT_EQ(sRead(row.sStep), row.sText);
        EXPECT_EQ(log.texts(), std::vector<std::string>(row.iAssertions, "Codepage not implemented"));
    }
}

const StringReadRow g_noCodePointRows[] = {
    {"a high surrogate", "ab\\X2\\D83D\\X0\\cd", "ab"},
    {"a pair of surrogates", "ab\\X2\\D83DDE00\\X0\\cd", "ab"},
    {"beyond U+10FFFF", "ab\\X4\\00110000\\X0\\cd", "ab"},
    {"the largest number", "ab\\X4\\7FFFFFFF\\X0\\cd", "ab"},
    {"a negative number",
     "ab\\X\\-1"
     "cd",
     "ab"},
    {"valid ones go with it", "\\X\\E9\\X2\\D83D\\X0\\", ""},
};

TEST(StrToUtf8, NumbersThatAreNoCodePointCutTheString) {
    for (const StringReadRow& row : g_noCodePointRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        EXPECT_EQ(sRead(row.sStep), row.sText);
        ASSERT_EQ(log.texts().size(), 1u);
        const std::string sTail = ": Seems to be an invalid ifc string: '" + std::string(row.sStep) + "'";
        EXPECT_GT(log.texts()[0].size(), sTail.size());
        EXPECT_TRUE(log.texts()[0].ends_with(sTail)) << log.texts()[0];
        EXPECT_EQ(sRead("\\X\\E9"), "\u00E9") << "nothing stays behind for the next string";
    }
}

struct StringWriteRow {
    const char* sRule;
    std::string_view sText;
    std::string_view sStep;
};
const StringWriteRow g_stringWriteRows[] = {
    {"nothing", "", ""},
    {"plain text", "abc", "abc"},
    {"quote and backslash are doubled", "a'b\\c", "a''b\\\\c"},
    {"the first and the last printable", " ~", " ~"},
    {"one behind the printable", "\x7F", "\\X\\7F"},
    {"a control", "a\nb", "a\\X\\0Ab"},
    {"NUL", "\0"sv, "\\X\\00"},
    {"the last control", "\x1F", "\\X\\1F"},
    {"Latin-1", "\u00E9", "\\X\\E9"},
    {"Latin-1 in a row", "\u00E9\u00FF", "\\X\\E9\\X\\FF"},
    {"the first behind Latin-1", "\u0100", "\\X2\\0100\\X0\\"},
    {"four digits", "\u20AC", "\\X2\\20AC\\X0\\"},
    {"the last of four digits", "\uFFFF", "\\X2\\FFFF\\X0\\"},
    {"the first of eight", "\U00010000", "\\X4\\00010000\\X0\\"},
    {"the last of all", "\U0010FFFF", "\\X4\\0010FFFF\\X0\\"},
    {"Latin-1 in an open block", "\u20AC\u00E9", "\\X2\\20AC00E9\\X0\\"},
    {"Latin-1 in front of a block", "\u00E9\u20AC", "\\X\\E9\\X2\\20AC\\X0\\"},
    {"a control in an open block", "\u20AC\n", "\\X2\\20AC000A\\X0\\"},
    {"printable closes",
     "\u20AC"
     "a\u20AC",
     "\\X2\\20AC\\X0\\a\\X2\\20AC\\X0\\"},
    {"a quote closes", "\u20AC'", "\\X2\\20AC\\X0\\''"},
    {"four digits give way to eight", "\u20AC\U0001F600", "\\X2\\20AC\\X0\\\\X4\\0001F600\\X0\\"},
    {"eight stay",
     "\U0001F600\u20AC"
     "a",
     "\\X4\\0001F600000020AC\\X0\\a"},
    {"eight stay for eight", "\U0001F600\U00010000", "\\X4\\0001F60000010000\\X0\\"},
    {"eight stay for Latin-1 and controls", "\U0001F600\u00E9\n", "\\X4\\0001F600000000E90000000A\\X0\\"},
    {"four, eight, four", "\u20AC\U0001F600\u20AC", "\\X2\\20AC\\X0\\\\X4\\0001F600000020AC\\X0\\"},
};

TEST(StrFromUtf8, WritesOneCanonicalForm) {
    for (const StringWriteRow& row : g_stringWriteRows) {
        SCOPED_TRACE(row.sRule);
        EXPECT_EQ(sWrite(row.sText), row.sStep);
        EXPECT_EQ(sRead(row.sStep), row.sText);
    }
}

// Where UTF-8 takes a byte more, and beside what it leaves out.
TEST(StrFromUtf8, KnowsEveryLength) {
    const struct {
        std::string_view text;
        std::string_view sStep;
    } rows[] = {
        {"\x7F", "\\X\\7F"},
        {"\xC2\x80", "\\X\\80"},
        {"\xC3\xBF", "\\X\\FF"},
        {"\xC4\x80", "\\X2\\0100\\X0\\"},
        {"\xDF\xBF", "\\X2\\07FF\\X0\\"},
        {"\xE0\xA0\x80", "\\X2\\0800\\X0\\"},
        {"\xED\x9F\xBF", "\\X2\\D7FF\\X0\\"},
        {"\xEE\x80\x80", "\\X2\\E000\\X0\\"},
        {"\xEF\xBF\xBD", "\\X2\\FFFD\\X0\\"},
        {"\xEF\xBF\xBE", "\\X2\\FFFE\\X0\\"},
        {"\xEF\xBF\xBF", "\\X2\\FFFF\\X0\\"},
        {"\xF0\x90\x80\x80", "\\X4\\00010000\\X0\\"},
        {"\xF4\x8F\xBF\xBF", "\\X4\\0010FFFF\\X0\\"},
        {"a\xC3\xA4"
         "b\xE4\xB8\x80'\xF0\x90\x80\x80\\",
         "a\\X\\E4b\\X2\\4E00\\X0\\''\\X4\\00010000\\X0\\\\\\"},
    };
    for (const auto& row : rows) EXPECT_EQ(sWrite(row.text), row.sStep);
}

TEST(StrFromUtf8, ThrowsForWhatIsNoUtf8) {
    for (const std::string_view text :
         {"\xE9"sv, "a\xC3"sv, "\xC3("sv, "\x80"sv, "\xC0\x80"sv, "\xED\xA0\x80"sv, "\xF4\x90\x80\x80"sv, "\xFF"sv,
          "\xC1\xBF"sv, "\xE0\x9F\xBF"sv, "\xF0\x8F\xBF\xBF"sv, "\xE4\xB8"sv, "\xF0\x90\x80"sv, "\xE4\xB8("sv}) {
        std::string out = "left over";
        EXPECT_THROW(sIfcStrFromUtf8(out, text.data(), text.size()), str::exception);
        EXPECT_EQ(out, "");
    }
}

// Of a file with 8-bit bytes, which are kept as they came, a writer has to make something.
TEST(StrFromText, TakesWhatIsNoUtf8AsLatin1) {
    const struct {
        std::string_view text;
        std::string_view sStep;
    } rows[] = {
        {"", ""},
        {"plain", "plain"},
        {"\xC3\xA9", "\\X\\E9"},   // UTF-8 as ever
        {"\xE9", "\\X\\E9"},
        {"a\xC3(", "a\\X\\C3("},
        {"\x80", "\\X\\80"},
        {"\xD1\x8F\xFF", "\\X2\\044F00FF\\X0\\"},
        {"it's\xE4", "it''s\\X\\E4"},
    };
    for (const auto& row : rows) {
        std::string out = "left over";
        EXPECT_EQ(sIfcStrFromText(out, row.text), row.sStep) << row.sStep;
        EXPECT_EQ(out, row.sStep);
    }
}

#ifdef OXA_PROPERTIES
std::string sUtf8(const std::vector<char32_t>& codePoints) {
    std::string text;
    const auto vAdd = [&text](char32_t c) { text += static_cast<char>(c); };
    for (const char32_t c : codePoints) {
        if (c < 0x80) {
            vAdd(c);
        } else if (c < 0x800) {
            vAdd(0xC0 | c >> 6);
            vAdd(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            vAdd(0xE0 | c >> 12);
            vAdd(0x80 | (c >> 6 & 0x3F));
            vAdd(0x80 | (c & 0x3F));
        } else {
            vAdd(0xF0 | c >> 18);
            vAdd(0x80 | (c >> 12 & 0x3F));
            vAdd(0x80 | (c >> 6 & 0x3F));
            vAdd(0x80 | (c & 0x3F));
        }
    }
    return text;
}

// Code points of each length in hexadecimal, no surrogates.
rc::Gen<char32_t> genCodePoint() {
    const auto below = [](char32_t iFrom, char32_t iTo) { return rc::gen::inRange<char32_t>(iFrom, iTo); };
    return rc::gen::oneOf(below(32, 127), below(0, 256), below(0x100, 0xD800), below(0xE000, 0x10000),
                          below(0x10000, 0x110000), rc::gen::element<char32_t>('\\', '\'', 'X', 'S', '0', '2'));
}

RC_GTEST_PROP(StepStrings, ReadingInvertsWriting, ()) {
    const std::string text = sUtf8(*rc::gen::container<std::vector<char32_t>>(genCodePoint()));
    const std::string step = sWrite(text);
    for (const char c : step) RC_ASSERT(c >= 32 && c <= 126);
    RC_ASSERT(sRead(step) == text);
}
#endif

// Bytes of which directives are made, and any others.
std::string sRandomStep(std::mt19937_64& random) {
    constexpr std::string_view bytes = "\\\\\\\\\\SXP0248''DE9-\xC3\xE9\xD1";
    std::string text(random() % 40, '\0');
    for (char& c : text) c = random() % 8 == 0 ? static_cast<char>(random()) : bytes[random() % bytes.size()];
    return text;
}

// A byte of the input gives at most 2 bytes of the output, and the one behind it, 2 more.
TEST(StrToUtf8, AnyBytesAreRead) {
    const AssertLog log(false);
    std::mt19937_64 random(7);
    for (int i = 0; i < 300'000; ++i) {
        const std::string step = sRandomStep(random);
        ASSERT_LE(sRead(step, static_cast<char>(random())).size(), 2 * step.size() + 2) << step;
    }
}

TEST(StrToUtf8, EveryThreadHasItsOwnScratch) {
    const std::string sStep = "\\X2\\20AC\\X0\\ \\X\\E9 \\S\\a";
    const std::string sText = "\u20AC \u00E9 \u00E1";
    std::vector<int> failures(8, 0);
    std::vector<std::thread> threads;
    for (std::size_t iThread = 0; iThread < failures.size(); ++iThread)
        threads.emplace_back([&, iThread] {
            const std::string sMark(iThread, 'x');
            for (int i = 0; i < 3000; ++i) {
                if (sRead(sStep + sMark) != sText + sMark) ++failures[iThread];
                if (sRead(sWrite(sText + sMark)) != sText + sMark) ++failures[iThread];
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures, std::vector<int>(8, 0));
}

// The special byte at every position of every length, next to bytes that differ from one by a bit.
TEST(TextScan, FindsTheFirstSpecialByte) {
    for (const char c : {'\\', '\'', '\x80', '\xFF', '\xDC'})
        for (std::size_t iLength = 0; iLength < 70; ++iLength)
            for (std::size_t i = 0; i <= iLength; ++i) {
                const std::unique_ptr<char[]> pText(new char[iLength]);
                for (std::size_t k = 0; k < iLength; ++k) pText[k] = k < i ? "]&[\x7F\0("[k % 6] : c;
                const char* const pEnd = pText.get() + iLength;
                ASSERT_EQ(details::pFindSpecial(pText.get(), pEnd) - pText.get(), static_cast<std::ptrdiff_t>(i));
                ASSERT_EQ(details::pFindSpecialPortable(pText.get(), pEnd) - pText.get(),
                          static_cast<std::ptrdiff_t>(i));
            }
}

// A text whose bytes are searched as ends of whole blocks, in a buffer of exactly its size and that of what stands in
// front.
TEST(TextScan, VerbatimIsWhatHasNoSpecialByte) {
    for (const std::size_t iInFront : {0U, 3U, 16U, 40U})
        for (std::size_t iLength = 0; iLength < 50; ++iLength) {
            std::vector<char> text(iInFront + iLength, '\'');
            char* const pText = text.data() + iInFront;
            std::fill(pText, pText + iLength, '[');
            ASSERT_TRUE(details::boVerbatim(text.data(), pText, pText + iLength)) << iLength;
            for (std::size_t i = 0; i < iLength; ++i)
                for (int iByte = 0; iByte < 256; ++iByte) {
                    pText[i] = static_cast<char>(iByte);
                    ASSERT_EQ(details::boVerbatim(text.data(), pText, pText + iLength), !details::boSpecial(pText[i]))
                        << iByte << " at " << i << " of " << iLength;
                    pText[i] = '[';
                }
        }
}

// A directive that is unknown is dropped, and the whole text is then read by the general way.
TEST(VIfcStrToUtf8, TheUsualFormsAreReadAsByTheGeneralWay) {
    const AssertLog log;
    static const std::vector<std::string> g_pieces = {
        "a",
        "Z",
        " ",
        "''",
        "'",
        "\\\\",
        "\\",
        "\\X2\\",
        "\\X0\\",
        "00E4",
        "20AC",
        "D83D",
        "DE00",
        "FFFE",
        "0041",
        "\\X\\E9",
        "\\X\\",
        "\\S\\d",
        "\\S\\",
        "\\S",
        "\\X",
        "\\X4\\",
        "0001F600",
        "\\PB\\",
        "\\N\\",
        "x2",
        "0",
        "\xC3\xA4",
        "\xE9",
        "long run of plain text, longer than a block",
        "\\X2\\00C400D600DC\\X0\\",
        "\\X2\\4e2d6587\\X0\\",
        "\\X2\\12",
        "\\X2\\-001\\X0\\",
    };
    std::mt19937 random(3);
    std::size_t iDecoded = 0;
    for (int i = 0; i < 50'000; ++i) {
        std::string text;
        for (std::size_t n = random() % 6; n-- > 0;) {
            const std::size_t iPiece = random() % g_pieces.size();
            text += g_pieces[random() % 3 ? iPiece % 16 : iPiece];
        }
        const std::string sGeneral = sRead("\\Q" + text);
        ASSERT_EQ(sRead(text), sGeneral) << text;
        iDecoded += sGeneral != text;
    }
    EXPECT_GT(iDecoded, 20'000U);
}

}   // namespace
}   // namespace oxa::ifc
