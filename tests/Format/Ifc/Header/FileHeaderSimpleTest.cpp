// SPDX-License-Identifier: Apache-2.0
#include "Format/Ifc/IfcFileHeaderSimple.h"

#include <cstdint>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcFileError.h"

namespace oxa::ifc {
namespace {

using ExportInfo = FileHeaderSimple::ExportInfo;

const ExportInfo g_notSet;
const ExportInfo g_whole(std::in_place_index<1>, 0);

ExportInfo rootId(std::uint64_t iId) { return ExportInfo(std::in_place_index<2>, iId); }

struct ReadRow {
    const char* sRule;
    std::string_view sText;
    bool boRead;
    std::string_view sSchemaName;
    ExportInfo exportInfo;
};
const ReadRow g_readRows[] = {
    {"root instance", "Ifc file simple;\nIFC4;\n12;\n#12=A();\n", true, "IFC4", rootId(12)},
    {"whole model", "Ifc file simple;\nIFC2X3;\n*;\n", true, "IFC2X3", g_whole},
    {"the star counts, not what follows", "Ifc file simple;\nIFC4;\n*12;\n", true, "IFC4", g_whole},
    {"no semicolons", "Ifc file simple\nIFC4\n12\n", true, "IFC4", rootId(12)},
    {"15 characters are compared", "Ifc file simpleton\nIFC4;\n12;\n", true, "IFC4", rootId(12)},
    {"no digits is 0", "Ifc file simple;\nIFC4;\nabc;\n", true, "IFC4", rootId(0)},
    {"digits as far as they go", "Ifc file simple;\nIFC4;\n 7x8;\n", true, "IFC4", rootId(7)},
    {"20 digits, the most", "Ifc file simple;\nIFC4;\n18446744073709551615;\n", true, "IFC4",
     rootId(18446744073709551615u)},
    {"39 characters of a number", "Ifc file simple;\nIFC4;\n000000000000000000000000000000000000012\n", true, "IFC4",
     rootId(12)},
    {"40 are too many, and cut", "Ifc file simple;\nIFC4;\n0000000000000000000000000000000000000123\n", true, "IFC4",
     rootId(12)},
    {"beyond 32 bits", "Ifc file simple;\nIFC4;\n4294967297;\n", true, "IFC4", rootId(4294967297)},
    {"no line end behind the third line", "Ifc file simple;\nIFC4;\n12;", true, "IFC4", rootId(12)},
    {"no third line", "Ifc file simple;\nIFC4;\n", true, "IFC4", rootId(0)},
    {"empty schema line", "Ifc file simple;\n\n*;\n", true, "", g_whole},
    {"semicolon alone", "Ifc file simple;\n;\n*;\n", true, "", g_whole},
    {"one semicolon is removed", "Ifc file simple;\nIFC4;;\n*;\n", true, "IFC4;", g_whole},
    {"39 characters",
     "Ifc file simple;\n"
     "A23456789B123456789C123456789D12345678;\n*;\n",
     true, "A23456789B123456789C123456789D12345678", g_whole},
    {"40 are too many",
     "Ifc file simple;\n"
     "A23456789B123456789C123456789D123456789;\n*;\n",
     true, "A23456789B123456789C123456789D123456789", rootId(0)},
    {"a long first line leaves the rest empty", "Ifc file simple and much more than a line may hold\nIFC4;\n*;\n", true,
     "", rootId(0)},
    {"empty stream", "", false, "", g_notSet},
    {"nothing but the first line", "Ifc file simple;", false, "", g_notSet},
    {"another first line", "ISO-10303-21;\nIFC4;\n12;\n", false, "", g_notSet},
    {"cut first line", "Ifc file simpl\nIFC4;\n12;\n", false, "", g_notSet},
    {"another case", "IFC FILE SIMPLE;\nIFC4;\n12;\n", false, "", g_notSet},
};

TEST(FileHeaderSimple, ReadsThreeLines) {
    for (const ReadRow& row : g_readRows) {
        SCOPED_TRACE(row.sRule);
        std::istringstream in{std::string(row.sText)};
        io::ReadError errors;
        FileHeaderSimple header;
        EXPECT_EQ(header.boRead(in, errors), row.boRead);
        EXPECT_EQ(header.schemaName, row.sSchemaName);
        EXPECT_EQ(header.exportInfo, row.exportInfo);
        EXPECT_TRUE(errors.records().empty());
    }
}

TEST(FileHeaderSimple, LeavesTheDataLinesToTheReader) {
    std::istringstream in("Ifc file simple;\nIFC4;\n12;\n#12=A();\n");
    io::ReadError errors;
    FileHeaderSimple header;
    ASSERT_TRUE(header.boRead(in, errors));
    std::string sNext;
    std::getline(in, sNext);
    EXPECT_EQ(sNext, "#12=A();");
}

// A header that refuses every schema name.
class RefusingHeader : public FileHeaderSimple {
public:
    std::string sLine;
    unsigned int iLine = 0;

    bool boReadLine(std::string&& line, io::ReadError&, unsigned int lineNumber) override {
        sLine = line;
        iLine = lineNumber;
        return false;
    }
};

TEST(FileHeaderSimple, SecondLineIsTakenByTheVirtualOperation) {
    std::istringstream in("Ifc file simple;\nIFC4;\n12;\n");
    io::ReadError errors;
    RefusingHeader header;
    EXPECT_FALSE(header.boRead(in, errors));
    EXPECT_EQ(header.sLine, "IFC4;");
    EXPECT_EQ(header.iLine, 2u);
    EXPECT_EQ(header.exportInfo, g_notSet);
}

struct LineRow {
    std::string sLine;
    std::string_view sSchemaName;
};
const LineRow g_lineRows[] = {{"IFC4;", "IFC4"}, {"IFC4", "IFC4"}, {"", "before"}, {";", ""}, {"IFC4; ", "IFC4; "}};

TEST(FileHeaderSimple, LineIsTheSchemaName) {
    for (const LineRow& row : g_lineRows) {
        SCOPED_TRACE(row.sLine);
        io::ReadError errors;
        FileHeaderSimple header;
        header.vSchemaNameSet("before");
        EXPECT_TRUE(header.boReadLine(std::string(row.sLine), errors, 0));
        EXPECT_EQ(header.sSchemaNameGet(), row.sSchemaName);
        EXPECT_TRUE(errors.records().empty());
    }
}

struct WriteRow {
    const char* sRule;
    std::string sSchemaName;
    ExportInfo exportInfo;
    bool boWritten;
    std::string_view sText;
    bool boAssertion;
};
const WriteRow g_writeRows[] = {
    {"root instance", "IFC4", rootId(12), true, "Ifc file simple;\nIFC4;\n12;\n", false},
    {"the largest number", "IFC4", rootId(~0ull), true, "Ifc file simple;\nIFC4;\n18446744073709551615;\n", false},
    {"number 0 is a number", "IFC4", rootId(0), true, "Ifc file simple;\nIFC4;\n0;\n", false},
    {"whole model", "IFC4", g_whole, true, "Ifc file simple;\nIFC4;\n*;\n", false},
    {"not set", "IFC4", g_notSet, true, "Ifc file simple;\nIFC4;\n", true},
    {"whole model with a number", "IFC4", ExportInfo(std::in_place_index<1>, 1), true, "Ifc file simple;\nIFC4;\n",
     true},
    {"no schema", "", rootId(12), false, "", false},
    {"no schema and not set", "", g_notSet, false, "", false},
};

TEST(FileHeaderSimple, WritesThreeLines) {
    for (const WriteRow& row : g_writeRows) {
        SCOPED_TRACE(row.sRule);
        const AssertLog log;
        FileHeaderSimple header;
        header.vSchemaNameSet(row.sSchemaName);
        header.exportInfo = row.exportInfo;
        std::ostringstream out;
        io::WriteError errors;
        EXPECT_EQ(header.boWrite(out, errors), row.boWritten);
        EXPECT_EQ(out.str(), row.sText);
        EXPECT_EQ(log.texts(), std::vector<std::string>(row.boAssertion ? 1 : 0, "Export information wasn't set."));
        EXPECT_TRUE(errors.records().empty());
    }
}

TEST(FileHeaderSimple, IsSilentWhileAssertionsAreOff) {
    const AssertLog log(false);
    FileHeaderSimple header;
    header.vSchemaNameSet("IFC4");
    std::ostringstream out;
    io::WriteError errors;
    EXPECT_TRUE(header.boWrite(out, errors));
    EXPECT_TRUE(log.texts().empty());
}

struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(FileHeaderSimple, NumberIsWrittenWithoutGrouping) {
    FileHeaderSimple header;
    header.vSchemaNameSet("IFC4");
    header.exportInfo = rootId(1234567);
    std::ostringstream out;
    out.imbue(std::locale(std::locale::classic(), new Grouping));
    io::WriteError errors;
    EXPECT_TRUE(header.boWrite(out, errors));
    EXPECT_EQ(out.str(), "Ifc file simple;\nIFC4;\n1234567;\n");
}

TEST(FileHeaderSimple, AnyBytesAreReadOrRefused) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 20'000; ++i) {
        std::string text = random() % 2 ? "Ifc file simple;\n" : "";
        for (std::size_t n = random() % 100; n-- > 0;)
            text += random() % 5 ? static_cast<char>(random()) : "\n*;9-"[random() % 5];
        std::istringstream in(text);
        io::ReadError errors;
        FileHeaderSimple header;
        const bool boRead = header.boRead(in, errors);
        ASSERT_EQ(boRead, header.exportInfo.index() != 0) << text;
        ASSERT_LE(header.schemaName.size(), 39u);
    }
}

}   // namespace
}   // namespace oxa::ifc
