// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcFileHeader.h"

#include <chrono>
#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#if __has_include(<rapidcheck/gtest.h>)
#include <rapidcheck/gtest.h>
#define OXA_PROPERTIES
#endif

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/FullHeader.h"
#include "Format/Ifc/IfcFileError.h"
#include "platform/DateTime.h"
#include "platform/Localization.h"

namespace oxa::ifc {
namespace {

using Texts = std::vector<std::string>;

const std::string g_defaultText = "HEADER;\n"
                                  "FILE_DESCRIPTION((),'2;1');\n"
                                  "FILE_NAME('','',(),(),'','','');\n"
                                  "FILE_SCHEMA((''));\n"
                                  "ENDSEC;\n";

// The fields as one text, to compare headers by: lists in brackets, fields parted by "|".
std::string sFields(const FileHeader& header) {
    std::string all;
    const auto vText = [&all](const std::string& text) { all += text + "|"; };
    const auto vList = [&all](const Texts& list) {
        for (const std::string& text : list) all += "[" + text + "]";
        all += "|";
    };
    vList(header.description.descriptions);
    vText(header.description.implementationLevel);
    vText(header.name.name);
    vText(header.name.timeStamp);
    vList(header.name.author);
    vList(header.name.organization);
    vText(header.name.preprocessorVersion);
    vText(header.name.originatingSystem);
    vText(header.name.authorization);
    return all + header.schema.schemaName;
}

const std::string g_allFields = "[d]|L|n|t|[a]|[o]|p|s|z|S";

struct HeaderLineRow {
    const char* sRule;
    std::string_view sLine;
    std::string sFields;   // of the header above, once the line was read
};
const HeaderLineRow g_headerLineRows[] = {
    // FILE_DESCRIPTION
    {"description", "FILE_DESCRIPTION(('x','y'),'2;2');", "[d][x][y]|2;2|n|t|[a]|[o]|p|s|z|S"},
    {"an empty level changes nothing", "FILE_DESCRIPTION(('x'),'');", "[d][x]|L|n|t|[a]|[o]|p|s|z|S"},
    {"nor does $", "FILE_DESCRIPTION($,$);", g_allFields},
    {"an empty list", "FILE_DESCRIPTION((),'2;1');", "[d]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"an empty item", "FILE_DESCRIPTION((''),'2;1');", "[d][]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"an item without characters", "FILE_DESCRIPTION(('x',,'y'),'2;1');", "[d][x][][y]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"an item of one character", "FILE_DESCRIPTION(('x',$),'2;1');", "[d][x][]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"nothing behind the last comma", "FILE_DESCRIPTION(('x',),'2;1',);", "[d][x]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"further fields are ignored", "FILE_DESCRIPTION(('x'),'2;1','y',(3));", "[d][x]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"missing ones keep their value", "FILE_DESCRIPTION(('x'));", "[d][x]|L|n|t|[a]|[o]|p|s|z|S"},
    {"no parameters", "FILE_DESCRIPTION();", g_allFields},
    {"no parentheses", "FILE_DESCRIPTION;", g_allFields},
    {"whatever encloses is skipped", "FILE_DESCRIPTION[<'x'>,\"2;1\"];", "[d][x]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"a comma in a string", "FILE_DESCRIPTION(('x,y'),'2,1');", "[d][x,y]|2,1|n|t|[a]|[o]|p|s|z|S"},
    {"a parenthesis in a string", "FILE_DESCRIPTION(('x)','(y'),'2(1');", "[d][x)][(y]|2(1|n|t|[a]|[o]|p|s|z|S"},
    {"a doubled quote toggles twice", "FILE_DESCRIPTION(('it''s','y'),'2;1');", "[d][it's][y]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"a directive", "FILE_DESCRIPTION(('\\X\\E9'),'2;1');", "[d][\u00E9]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"the last semicolon ends it", "FILE_DESCRIPTION(('x;y'),'2;1');", "[d][x;y]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"a keyword anywhere in the line", "#1=FILE_DESCRIPTION(('x'),'2;1');", "[d][x]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"the first keyword of two", "FILE_DESCRIPTION(('FILE_DESCRIPTION'),'2;1');",
     "[d][FILE_DESCRIPTION]|2;1|n|t|[a]|[o]|p|s|z|S"},
    {"a semicolon in front of it", ";FILE_DESCRIPTION(('x'),'21')", g_allFields},
    {"a semicolon inside of it", "FILE;FILE_DESCRIPTION", g_allFields},
    // FILE_NAME
    {"name", "FILE_NAME('N','T',('A','B'),('O'),'P','S','Z');", "[d]|L|N|T|[a][A][B]|[o][O]|P|S|Z|S"},
    {"an empty text changes the fifth only", "FILE_NAME('','',(''),(),'','','');", "[d]|L|n|t|[a][]|[o]||s|z|S"},
    {"$ is nothing", "FILE_NAME($,$,$,$,'P',$,$);", "[d]|L|n|t|[a]|[o]|P|s|z|S"},
    {"$ empties the fifth", "FILE_NAME('N','T',(),(),$,'S','Z');", "[d]|L|N|T|[a]|[o]||S|Z|S"},
    {"no character empties the fifth", "FILE_NAME('N','T',(),(),,'S','Z');", "[d]|L|N|T|[a]|[o]||S|Z|S"},
    {"a missing fifth stays", "FILE_NAME('N','T',('A'),('O'));", "[d]|L|N|T|[a][A]|[o][O]|p|s|z|S"},
    {"further fields", "FILE_NAME('N','T',(),(),'P','S','Z','?',('?'));", "[d]|L|N|T|[a]|[o]|P|S|Z|S"},
    {"a list is no text", "FILE_NAME(('N'),'T',(),(),'P','S','Z');", "[d]|L|''|T|[a]|[o]|P|S|Z|S"},
    {"description wins where both stand", "FILE_NAME('FILE_DESCRIPTION','T');", "[d]|T|n|t|[a]|[o]|p|s|z|S"},
    // FILE_SCHEMA
    {"schema", "FILE_SCHEMA(('IFC4'));", "[d]|L|n|t|[a]|[o]|p|s|z|IFC4"},
    {"several names are one", "FILE_SCHEMA(('A','B'));", "[d]|L|n|t|[a]|[o]|p|s|z|A','B"},
    {"one character", "FILE_SCHEMA(('A'));", "[d]|L|n|t|[a]|[o]|p|s|z|A"},
    {"no name", "FILE_SCHEMA(());", g_allFields},
    {"an empty name", "FILE_SCHEMA((''));", g_allFields},
    {"a name without parentheses loses two", "FILE_SCHEMA('IFC4X3');", "[d]|L|n|t|[a]|[o]|p|s|z|FC4X"},
    {"no comma behind a stray parenthesis parts fields", "FILE_SCHEMA(('A')),('B'));",
     "[d]|L|n|t|[a]|[o]|p|s|z|A')),('B"},
    {"further fields are ignored", "FILE_SCHEMA(('IFC4'),('IFC2X3'));", "[d]|L|n|t|[a]|[o]|p|s|z|IFC4"},
    {"nothing is decoded", "FILE_SCHEMA(('\\X\\E9''x'));", "[d]|L|n|t|[a]|[o]|p|s|z|\\X\\E9''x"},
};

TEST(FileHeader, LineSetsFields) {
    for (const HeaderLineRow& row : g_headerLineRows) {
        SCOPED_TRACE(row.sRule);
        SCOPED_TRACE(row.sLine);
        FileHeader header = headerWithAll();
        io::ReadError errors;
        EXPECT_TRUE(header.boReadLine(std::string(row.sLine), errors, 3));
        EXPECT_EQ(sFields(header), row.sFields);
        EXPECT_TRUE(errors.records().empty());
    }
}

struct ReportRow {
    std::string_view sLine;
    std::string_view sKey;
    Errors::Category category;
};
const ReportRow g_reportRows[] = {
    {"", "Error_MissingSemicolon", Errors::Syntax},
    {"FILE_NAME('N','T')", "Error_MissingSemicolon", Errors::Syntax},
    {"FILE_POPULATION('x')", "Error_MissingSemicolon", Errors::Syntax},
    {"FILE_POPULATION('x');", "Error_HeaderTypeNotImplemented", Errors::Header},
    {"file_name('N');", "Error_HeaderTypeNotImplemented", Errors::Header},
    {";", "Error_HeaderTypeNotImplemented", Errors::Header},
};

TEST(FileHeader, ReportsWhatItDoesNotRead) {
    for (const ReportRow& row : g_reportRows) {
        SCOPED_TRACE(row.sLine);
        FileHeader header = headerWithAll();
        io::ReadError errors;
        EXPECT_TRUE(header.boReadLine(std::string(row.sLine), errors, 17));
        EXPECT_EQ(sFields(header), g_allFields);
        EXPECT_FALSE(errors.boFatal());
        ASSERT_EQ(errors.records().size(), 1u);
        const ErrorRecord& record = errors.records()[0];
        EXPECT_EQ(record.entity, nullptr);
        EXPECT_EQ(record.severity, Errors::Error);
        EXPECT_EQ(record.category, row.category);
        EXPECT_EQ(record.description, localize("Ifc", row.sKey));
        EXPECT_EQ(record.lineString, row.sLine);
        EXPECT_EQ(record.lineNumber, 17u);
    }
}

TEST(FileHeader, ListsGrowWithEveryStatement) {
    FileHeader header;
    io::ReadError errors;
    for (int i = 0; i < 2; ++i) header.boReadLine("FILE_DESCRIPTION(('a','b'),'2;1');", errors, 1);
    EXPECT_EQ(header.description.descriptions, (Texts{"a", "b", "a", "b"}));
}

struct RangeRow {
    unsigned long long iStart;
    unsigned long long iLength;
    std::string_view sSchemaName;
};
constexpr unsigned long long g_largest = std::numeric_limits<unsigned long long>::max();
const RangeRow g_rangeRows[] = {
    {0, 10, "IFC4"},      {0, 11, "IFC4"},     {0, g_largest, "IFC4"},
    {0, 9, "IFC"},        {0, 7, "I"},         {0, 6, "S"},
    {0, 2, "S"},          {0, 1, "S"},         {0, 0, "S"},
    {9, 10, "S"},         {10, 5, "S"},        {11, 5, "S"},
    {11, g_largest, "S"}, {g_largest, 3, "S"}, {g_largest, g_largest, "S"},
};

TEST(FileHeader, RangeEndsWithTheLine) {
    for (const RangeRow& row : g_rangeRows) {
        SCOPED_TRACE(std::to_string(row.iStart) + ", " + std::to_string(row.iLength));
        FileHeader::Schema schema{"S"};
        EXPECT_TRUE(schema.boInit("(('IFC4'))", row.iStart, row.iLength));
        EXPECT_EQ(schema.schemaName, row.sSchemaName);
    }
}

TEST(FileHeader, DefaultIsWrittenInFull) {
    const FileHeader header;
    EXPECT_EQ(header.writeToString(), g_defaultText);
    EXPECT_EQ(sFields(header), "|2;1||||||||");
    EXPECT_FALSE(header.boMarked);
}

TEST(FileHeader, WritesAllFields) {
    FileHeader header = headerWithAll();
    header.description.descriptions = {"it's", "a\\b", "\u00E9\u20AC"};
    header.name.author = {"", "b"};
    header.schema.schemaName = "IFC4'\\\u00E9";   // as it is
    const std::string text = "HEADER;\n"
                             "FILE_DESCRIPTION(('it''s','a\\\\b','\\X\\E9\\X2\\20AC\\X0\\'),'L');\n"
                             "FILE_NAME('n','t',('','b'),('o'),'p','s','z');\n"
                             "FILE_SCHEMA(('IFC4'\\\u00E9'));\n"
                             "ENDSEC;\n";
    EXPECT_EQ(header.writeToString(), text);
    EXPECT_EQ(header.writeToString(), text) << "twice the same";
}

TEST(FileHeader, WriteAnswersFalse) {
    std::ostringstream out;
    io::WriteError errors;
    EXPECT_FALSE(FileHeader().boWrite(out, errors));
    EXPECT_EQ(out.str(), g_defaultText);
    EXPECT_TRUE(errors.records().empty());
}

struct ParseRow {
    const char* sRule;
    std::string_view sText;
    bool boParsed;
    std::string sFields;
};
const std::string g_defaultFields = "|2;1||||||||";
const ParseRow g_parseRows[] = {
    {"an empty text has all defaults", "", true, g_defaultFields},
    {"no ENDSEC", "HEADER;\n", true, g_defaultFields},
    {"no line feed", "HEADER;", false, ""},
    {"the end alone", "ENDSEC;", true, g_defaultFields},
    {"the end alone, on a line", "ENDSEC;\n", false, ""},
    {"another begin", "HEADERS;\n", false, ""},
    {"an envelope", "ISO-10303-21;\nHEADER;\nENDSEC;\n", false, ""},
    {"an empty line in front", "\nHEADER;\nENDSEC;\n", false, ""},
    {"blanks around the begin", " \tHEADER ;\v\f\r\nENDSEC;", true, g_defaultFields},
    {"no line feed behind the end", "HEADER;\nFILE_SCHEMA(('A'));\nENDSEC;", true, g_defaultFields + "A"},
    {"a statement without line feed at the end", "HEADER;\nFILE_SCHEMA(('A'));", false, ""},
    {"a statement with it", "HEADER;\nFILE_SCHEMA(('A'));\n", true, g_defaultFields + "A"},
    {"nothing is read behind the end", "HEADER;\nENDSEC;\nFILE_SCHEMA(('A'));\nno statement", true, g_defaultFields},
    {"empty lines between statements", "HEADER;\n\n\nFILE_SCHEMA(('A'));\n\nENDSEC;\n", true, g_defaultFields + "A"},
    {"an unknown statement", "HEADER;\nFILE_POPULATION('x');\nFILE_SCHEMA(('A'));\nENDSEC;\n", true,
     g_defaultFields + "A"},
    {"a statement without semicolon", "HEADER;\nFILE_SCHEMA(('B'))\nFILE_SCHEMA(('A'));\nENDSEC;\n", true,
     g_defaultFields + "A"},
    {"lines inside of parentheses",
     "HEADER;\r\nFILE_DESCRIPTION (\r\n ( 'x' ,\r\n\t'y' ) ,\r\n '2;1' ) ;\r\nENDSEC;\r\n", true, "[x][y]|2;1||||||||"},
    {"white space in strings is kept", "HEADER;\nFILE_DESCRIPTION((' x\ty '),' ');\nENDSEC;\n", true,
     "[ x\ty ]| ||||||||"},
    {"a line feed in a string is kept, a carriage return not",
     "HEADER;\nFILE_DESCRIPTION(('x\r\ny'),'2;1');\nENDSEC;\n", true, "[x\ny]|2;1||||||||"},
    {"a stray parenthesis is no depth", "HEADER;\n)FILE_SCHEMA(('A'));\nENDSEC;\n", true, g_defaultFields + "A"},
    {"parentheses in strings do not count", "HEADER;\nFILE_DESCRIPTION(('(('),'2;1');\nENDSEC;\n", true,
     "[((]|2;1||||||||"},
    {"an escaped quote does not end a string", "HEADER;\nFILE_SCHEMA(('\\S\\'\nB'));\nENDSEC;\n", true,
     g_defaultFields + "\\S\\'\nB"},
    {"nor does the quote behind a directive", "HEADER;\nFILE_DESCRIPTION(('\\X2\\20AC\\X0\\'),'2;1');\nENDSEC;\n",
     false, ""},
    {"a pair of backslashes escapes as well", "HEADER;\nFILE_DESCRIPTION(('x\\\\'),'2;1');\nENDSEC;\n", false, ""},
    {"a carriage return ends the escape", "HEADER;\nFILE_DESCRIPTION(('x\\\\\r'),'2;1');\nENDSEC;\n", true,
     "[x\\]|2;1||||||||"},
    {"a backslash outside strings escapes nothing", "HEADER;\nFILE_DESCRIPTION((\\'x'),'2;1');\nENDSEC;\n", true,
     "[']|2;1||||||||"},
    {"parentheses left open", "HEADER;\nFILE_SCHEMA((('A');\nENDSEC;\n", false, ""},
    {"a string left open", "HEADER;\nFILE_SCHEMA(('A));\nENDSEC;\n", false, ""},
};

TEST(FileHeader, ParsesAText) {
    for (const ParseRow& row : g_parseRows) {
        SCOPED_TRACE(row.sRule);
        const auto header = FileHeader::parseFromString(row.sText);
        ASSERT_EQ(header.has_value(), row.boParsed);
        if (header) {
            EXPECT_EQ(sFields(*header), row.sFields);
        }
    }
}

// With texts that hold all that means something to the reader.
FileHeader headerWithSpecials(std::string_view sLast) {
    FileHeader header = headerWithAll();
    header.description.descriptions = {"ViewDefinition [CoordinationView]", "(,)", "it's", "\U0001F600\u20AC"};
    header.description.descriptions.back() += sLast;
    header.name.organization.clear();
    header.name.author = {"", "\u00E9"};
    return header;
}

TEST(FileHeader, ReadsBackWhatItWrote) {
    const FileHeader header = headerWithSpecials("\n.");
    const auto back = FileHeader::parseFromString(header.writeToString());
    ASSERT_TRUE(back);
    EXPECT_EQ(sFields(*back), sFields(header));
}

// A text that ends in "\X0\" is no matter here: the statements are cut by the scanner of the file.
TEST(FileHeader, StatementsReadBackWhatItWrote) {
    const FileHeader header = headerWithSpecials("");
    std::istringstream in(header.writeToString());
    FileHeader back;
    io::ReadError errors;
    for (std::string line; std::getline(in, line);)
        if (line.starts_with("FILE_")) back.boReadLine(std::move(line), errors, 1);
    EXPECT_EQ(sFields(back), sFields(header));
    EXPECT_TRUE(errors.records().empty());
}

#ifdef OXA_PROPERTIES
// Empty texts do not replace a default, and a backslash in front of the closing quote keeps a string open.
std::string sPlainText() {
    return *rc::gen::nonEmpty(
        rc::gen::container<std::string>(rc::gen::element('a', 'Z', '\'', '(', ')', ',', ';', ' ', '\n')));
}

RC_GTEST_PROP(FileHeaderProperties, ReadingInvertsWriting, ()) {
    FileHeader header;
    header.description = {{sPlainText(), sPlainText()}, sPlainText()};
    header.name = {sPlainText(), sPlainText(), {sPlainText()}, {}, sPlainText(), sPlainText(), sPlainText()};
    header.schema.schemaName = "IFC4";
    const auto back = FileHeader::parseFromString(header.writeToString());
    RC_ASSERT(back.has_value());
    RC_ASSERT(sFields(*back) == sFields(header));
}
#endif

struct ViewRow {
    const char* sRule;
    Texts before;
    std::string sView;
    Texts after;
};
const ViewRow g_viewRows[] = {
    {"into an empty list", {}, "X", {"ViewDefinition [X]"}},
    {"instead of another", {"ViewDefinition [Y]", "z"}, "X", {"ViewDefinition [X]", "z"}},
    {"to the front", {"z", "ViewDefinition [Y]", "y"}, "X", {"ViewDefinition [X]", "z", "y"}},
    {"of all that begin so", {"ViewDefinitionFoo", "a", "ViewDefinition"}, "X", {"ViewDefinition [X]", "a"}},
    {"but no others",
     {"viewDefinition", "ViewDefinitio", " ViewDefinition"},
     "X",
     {"ViewDefinition [X]", "viewDefinition", "ViewDefinitio", " ViewDefinition"}},
    {"an empty name", {}, "", {"ViewDefinition []"}},
};

TEST(FileHeader, ViewDefinitionStandsFirstAndOnce) {
    for (const ViewRow& row : g_viewRows) {
        SCOPED_TRACE(row.sRule);
        FileHeader::Description description(row.before, "2;1");
        for (int i = 0; i < 2; ++i) {
            description.setViewDefinitionName(row.sView);
            EXPECT_EQ(description.descriptions, row.after);
        }
    }
}

TEST(FileHeader, NewFileHasTimeAndNames) {
    const AssertLog log;
    FileHeader header;
    header.name.timeStamp = "2001-01-01T00:00:00";
    const auto secondsNow = [] { return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()); };
    const auto before = secondsNow();
    header.name.vInit("house.ifc", "Jo", "Office", "Modeller");
    const auto after = secondsNow();
    const auto created = header.getCreatedTimestamp();
    ASSERT_FALSE(created.boIsNull()) << header.name.timeStamp;
    EXPECT_GE(created.time(), before);
    EXPECT_LE(created.time(), after);
    EXPECT_EQ(header.name.name, "house.ifc");
    EXPECT_EQ(header.name.author, Texts{"Jo"});
    EXPECT_EQ(header.name.organization, Texts{"Office"});
    EXPECT_EQ(header.name.preprocessorVersion, "OXA_IFC v3.0");
    EXPECT_EQ(header.name.originatingSystem, "Modeller");
    EXPECT_EQ(header.name.authorization, "OXA");
    EXPECT_FALSE(header.getCreatedTimestamp() == datetime::DateTime::null()) << header.name.timeStamp;
    EXPECT_TRUE(log.texts().empty());

    header.name.vInit("h", "Al", "Other", "M");
    EXPECT_EQ(header.name.author, (Texts{"Jo", "Al"}));
    EXPECT_EQ(header.name.organization, (Texts{"Office", "Other"}));
}

TEST(FileHeader, TimeStampIsIso8601) {
    const AssertLog log;
    FileHeader header;
    header.name.timeStamp = "2024-02-29T12:34:56";
    const auto created = header.getCreatedTimestamp();
    EXPECT_FALSE(created == datetime::DateTime::null());
    header.name.timeStamp = "2024-02-29T12:34:57";
    EXPECT_FALSE(header.getCreatedTimestamp() == created);
    EXPECT_TRUE(log.texts().empty());
}

TEST(FileHeader, TimeStampThatIsNoneIsTheNullDate) {
    for (const char* sTimeStamp : {"", "yesterday", "2024-02-30T12:34:56"}) {
        SCOPED_TRACE(sTimeStamp);
        const AssertLog log;
        FileHeader header;
        header.name.timeStamp = sTimeStamp;
        EXPECT_TRUE(header.getCreatedTimestamp() == datetime::DateTime::null());
        EXPECT_EQ(log.texts(), Texts{"Not able to read timestamp from ifc file header"});
    }
}

TEST(FileHeader, IsCopiedMovedAndShared) {
    FileHeader header = headerWithAll();
    header.boMarked = true;
    const FileHeader copy = header;
    EXPECT_EQ(sFields(copy), g_allFields);
    FileHeader target;
    target = std::move(header);
    EXPECT_EQ(sFields(target), g_allFields);
    EXPECT_TRUE(copy.boMarked && target.boMarked);

    const auto pShared = std::make_shared<FileHeader>(target);
    EXPECT_EQ(pShared->shared_from_this(), pShared);
    static_assert(std::is_nothrow_move_constructible_v<FileHeader>);
}

TEST(FileHeader, BaseSetsAndGetsTheSchemaName) {
    FileHeader header;
    FileHeaderBase& base = header;
    EXPECT_EQ(base.sSchemaNameGet(), "");
    base.vSchemaNameSet("IFC4");
    EXPECT_EQ(base.sSchemaNameGet(), "IFC4");
    EXPECT_EQ(header.schema.schemaName, "IFC4");
}

// Statements of pieces that mean something to the reader, and of any bytes.
std::string sRandomLine(std::mt19937_64& random) {
    constexpr std::string_view pieces[] = {
        "FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA", "(",  ")",  "((", "))", "'", "','", ",", ",,", ";", "\\",
        "\\X2\\",           "\\S\\",     "$",           "\n", "\r", "a"};
    std::string line;
    for (std::size_t n = random() % 30; n-- > 0;) {
        if (random() % 6 == 0)
            line += static_cast<char>(random());
        else
            line += pieces[random() % std::size(pieces)];
    }
    return line;
}

TEST(FileHeader, AnyBytesAreReadOrReported) {
    const AssertLog log(false);
    std::mt19937_64 random(11);
    for (int i = 0; i < 100'000; ++i) {
        const std::string line = sRandomLine(random);
        FileHeader header;
        io::ReadError errors;
        ASSERT_TRUE(header.boReadLine(std::string(line), errors, 1));
        ASSERT_LE(errors.records().size(), 1u);
        static_cast<void>(FileHeader::parseFromString("HEADER;\n" + line));
    }
}

// Every prefix, in a buffer of its exact size.
TEST(FileHeader, CutTextIsParsedOrRefused) {
    const std::string text = headerWithAll().writeToString();
    for (std::size_t iLength = 0; iLength <= text.size(); ++iLength) {
        const std::unique_ptr<char[]> pText(new char[iLength]);
        text.copy(pText.get(), iLength);
        const auto header = FileHeader::parseFromString({pText.get(), iLength});
        const bool boAtStatementEnd =
            iLength == 0 || (iLength > 0 && text[iLength - 1] == '\n') || iLength + 1 == text.size();
        EXPECT_EQ(header.has_value(), boAtStatementEnd) << iLength;
    }
}

}   // namespace
}   // namespace oxa::ifc
