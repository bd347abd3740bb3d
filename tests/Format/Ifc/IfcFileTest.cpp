// SPDX-License-Identifier: Apache-2.0
// The file objects: what they hand on, the simple form, progress.
#include "Format/Ifc/IfcFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "ReadResult.h"
#include "platform/Localization.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string sDirections(std::size_t iCount) {
    std::string sData;
    for (std::size_t i = 1; i <= iCount; ++i) sData += "#" + std::to_string(i) + "=IFCDIRECTION((1.));\n";
    return sData;
}

TEST(File, AsksTheCallersFunctionForTheSchema) {
    std::vector<std::string> asked;
    const auto schema = [&asked](const std::string& sName) {
        asked.push_back(sName);
        return SchemaLoader::pBuiltIn("IFC2X3");
    };
    const ReadResult result("ISO-10303-21;HEADER;FILE_SCHEMA(('OURS'));ENDSEC;DATA;ENDSEC;", schema);
    EXPECT_TRUE(result.boRead);
    EXPECT_THAT(asked, ElementsAre("OURS"));
    EXPECT_EQ(result.file.data().pSchema(), SchemaLoader::pBuiltIn("IFC2X3"));
    EXPECT_EQ(result.file.header().schema.schemaName, "IFC2X3");
}

// Every way to read says the same; what the options add is kept numbers for the short form.
TEST(File, ReadsByOptionsAsByArguments) {
    const std::string sStatement = "#7=IFCDIRECTION((1.));\n";
    for (const bool boKeepIds : {true, false})
        for (const bool boSingleThreaded : {true, false}) {
            std::vector<std::string> asked;
            unsigned iCalls = 0;
            const ReadOptions options{[&](const std::string& sName) {
                                          asked.push_back(sName);
                                          return SchemaLoader::pBuiltIn(sName);
                                      },
                                      boKeepIds, [&](unsigned) { ++iCalls; }, boSingleThreaded};
            const auto vExpectRead = [&](auto& file, const std::string& sText) {
                SCOPED_TRACE(sText);
                asked.clear();
                iCalls = 0;
                std::istringstream in(sText);
                io::ReadError errors;
                EXPECT_TRUE(file.boRead(in, errors, options));
                EXPECT_THAT(errors.records(), IsEmpty());
                EXPECT_THAT(asked, ElementsAre("IFC4"));
                EXPECT_EQ(iCalls, 1U);
                ASSERT_EQ(file.data().entities().size(), 1U);
                EXPECT_EQ(file.data().pEntityFromId(7), boKeepIds ? file.data().entities().front() : nullptr);
                EXPECT_EQ(file.data().iIdFromEntity(*file.data().entities().front()), boKeepIds ? 7U : 1U);
            };
            File file;
            vExpectRead(file, sIfc4File(sStatement));
            const def::SchemaPset none("");
            FileSimple simple(none);
            vExpectRead(simple, "Ifc file simple;\nIFC4;\n*;\n" + sStatement);
        }
    const ReadOptions plain;
    EXPECT_FALSE(plain.schemaFromName || plain.boKeepIds || plain.progress || plain.boSingleThreaded);
}

// The first entity statement, then every further 1000; nothing else counts.
TEST(File, CallsProgressByEntityStatements) {
    struct Row {
        std::size_t iStatements;
        std::size_t iCalls;
    };
    for (const Row& row : {Row{0, 0}, Row{1, 1}, Row{1000, 1}, Row{1001, 2}, Row{2001, 3}}) {
        SCOPED_TRACE(row.iStatements);
        std::string sData = "dropped;";
        std::vector<unsigned> behind;   // where each statement's ";" stands
        const std::string sHead = "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;";
        for (std::size_t i = 1; i <= row.iStatements; ++i) {
            sData += "#" + std::to_string(i) + "=IFCDIRECTION((1.));";
            behind.push_back(static_cast<unsigned>(sHead.size() + sData.size() - 1));
        }
        for (const bool boSingleThreaded : {true, false}) {
            SCOPED_TRACE(boSingleThreaded);
            File file;
            io::ReadError errors;
            std::vector<unsigned> positions;
            const auto progress = [&, caller = std::this_thread::get_id()](unsigned iPosition) {
                EXPECT_EQ(std::this_thread::get_id(), caller);
                positions.push_back(iPosition);
            };
            std::istringstream in(sHead + sData + "ENDSEC;");
            EXPECT_TRUE(file.boRead(in, {}, errors, true, progress, boSingleThreaded));
            ASSERT_EQ(positions.size(), row.iCalls);
            for (std::size_t i = 0; i < positions.size(); ++i) EXPECT_EQ(positions[i], behind[i * 1000]);
        }
    }
}

// What is not about the text passes through, and a threaded read has ended its threads by then.
TEST(File, ExceptionsOfTheCallerPassThrough) {
    struct Stop : std::exception {};
    const std::string sText = sIfc4File(sDirections(3000));
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        File file;
        io::ReadError errors;
        std::istringstream in(sText);
        int iCalls = 0;
        const auto progress = [&iCalls](unsigned) {
            if (++iCalls == 3) throw Stop();
        };
        EXPECT_THROW(file.boRead(in, {}, errors, true, progress, boSingleThreaded), Stop);
        EXPECT_EQ(file.data().entities().size(), 2001U);

        File other;
        std::istringstream again(sText);
        const auto schema = [](const std::string&) -> def::SchemaPset* { throw Stop(); };
        EXPECT_THROW(other.boRead(again, schema, errors, true, {}, boSingleThreaded), Stop);
        EXPECT_TRUE(rowsOf(errors).empty());
    }
}

class BrokenBuffer : public std::stringbuf {
public:
    explicit BrokenBuffer(const std::string& sText) : std::stringbuf(sText) {}

private:
    std::streamsize xsgetn(char* pBytes, std::streamsize iWanted) override {
        if (in_avail() == 0) throw std::ios_base::failure("the disk is gone");
        return std::stringbuf::xsgetn(pBytes, iWanted);
    }
};

TEST(File, ExceptionsOfTheStreamPassThrough) {
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        BrokenBuffer buffer("ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;" + sDirections(2000));
        std::istream in(&buffer);
        File file;
        io::ReadError errors;
        EXPECT_THROW(file.boRead(in, {}, errors, true, {}, boSingleThreaded), std::ios_base::failure);
        EXPECT_EQ(file.data().entities().size(), 2000U);
    }
}

// A stream that fails without a word ends as a text that ends too early.
TEST(File, AStreamThatIsNotGoodIsEmpty) {
    File file;
    io::ReadError errors;
    std::istringstream in(sIfc4File(""));
    in.setstate(std::ios_base::failbit);
    EXPECT_FALSE(file.boRead(in, {}, errors, true, {}, true));
    EXPECT_THAT(rowsOf(errors), ElementsAre("Fatal Syntax 0 Error_InvalidFile | "));
}

TEST(File, ASecondReadMayDropTheNumbersOfTheFirst) {
    ReadResult result(sIfc4File("#7=IFCDIRECTION((1.));"));
    EXPECT_NE(result.file.data().pEntityFromId(7), nullptr);
    std::istringstream in(sIfc4File("#8=IFCDIRECTION((1.));"));
    EXPECT_TRUE(result.file.boRead(in, {}, result.errors, false, {}, true));
    EXPECT_EQ(result.file.data().pEntityFromId(7), nullptr);
    EXPECT_EQ(result.file.data().pEntityFromId(8), nullptr);
}

// Before it has a schema, a read changes nothing.
TEST(File, ARefusedReadLeavesTheNumbersOfTheFormer) {
    ReadResult result(sIfc4File("#7=IFCDIRECTION((1.));"));
    std::istringstream in("ISO-10303-21;HEADER;FILE_SCHEMA(('IFC99'));ENDSEC;DATA;ENDSEC;");
    EXPECT_FALSE(result.file.boRead(in, {}, result.errors, false, {}, true));
    EXPECT_NE(result.file.data().pEntityFromId(7), nullptr);
}

TEST(File, ASecondReadGoesOnFillingTheSameData) {
    ReadResult result(sIfc4File("#1=IFCDIRECTION((1.));"));
    std::istringstream in(sIfc4File("#2=IFCDIRECTION((1.));"));
    EXPECT_TRUE(result.file.boRead(in, {}, result.errors, true, {}, true));
    EXPECT_EQ(result.iEntities(), 2U);
    // The numbers kept are those of the first read.
    EXPECT_NE(result.file.data().pEntityFromId(1), nullptr);
    EXPECT_EQ(result.file.data().pEntityFromId(2), nullptr);
    // One of the second gets the next when asked: it may be one that the file has.
    for (const Entity* pEntity : result.file.data().entities())
        if (pEntity != result.file.data().pEntityFromId(1)) {
            EXPECT_EQ(result.file.data().iIdFromEntity(*pEntity), 2U);
        }
}

// Two runs of one type, one of each read, are one.
TEST(File, ASecondReadIsInTheOrderOfTypesToo) {
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        const std::string sText = sIfc4File("#1=IFCDIRECTION((1.));#2=IFCCARTESIANPOINT((1.));#3=IFCDIRECTION((1.));");
        File file;
        io::ReadError errors;
        for (const std::ptrdiff_t iRead : {1, 2, 3}) {
            std::istringstream in(sText);
            EXPECT_TRUE(file.boRead(in, {}, errors, true, {}, boSingleThreaded));
            const auto [first, last] = file.data().range(def::schema::ObjectName("IFCDIRECTION"), false);
            EXPECT_EQ(last - first, 2 * iRead);
        }
    }
}

struct SimpleRow {
    const char* sRule;
    const char* sText;
    bool boRead;
    std::size_t iEntities;
    std::vector<std::string> rows;
};

// clang-format off
const SimpleRow g_simpleRows[] = {
    {"a bad head says nothing", "ISO-10303-21;", false, 0, {}},
    {"an empty stream says nothing", "", false, 0, {}},
    {"an unknown schema", "Ifc file simple;\nIFC99;\n*;\n", false, 0, {"Fatal Model 0 Error_UnknownSchemaName | "}},
    {"no schema", "Ifc file simple;\n;\n*;\n", false, 0, {"Fatal Model 0 Error_UnknownSchemaName | "}},
    {"no ENDSEC is needed", "Ifc file simple;\nIFC4;\n*;\n#1=IFCDIRECTION((1.));\n", true, 1, {}},
    {"ENDSEC ends it", "Ifc file simple;\nIFC4;\n*;\n#1=IFCDIRECTION((1.));ENDSEC;a=b=c;", true, 1, {}},
    {"a backslash ends it as a success", "Ifc file simple;\nIFC4;\n*;\n#1=IFCDIRECTION((1.));\\#2=IFCX();", true, 1, {}},
    {"a second = does not", "Ifc file simple;\nIFC4;\n*;\n#1=IFCDIRECTION((1.));#2==();", false, 1,
     {"Fatal Syntax 1 Error_UnexpectedEqualOperator | "}},
    {"a fatal fault, and nothing is completed: no word of a missing instance",
     "Ifc file simple;\nIFC4;\n*;\n#1=IFCAXIS2PLACEMENT2D(#9,$);#2==();", false, 1,
     {"Fatal Syntax 1 Error_UnexpectedEqualOperator | "}},
    {"a slash at the end", "Ifc file simple;\nIFC4;\n*;\n#1=IFCDIRECTION((1.));/", false, 1,
     {"Fatal Syntax 1 Error_InvalidEndOfFile | /"}},
    {"a comment without end", "Ifc file simple;\nIFC4;\n*;\n#1=IFCDIRECTION((1.));/*", false, 1,
     {"Fatal Syntax 1 Error_EndOfCommentNotFound | "}},
    {"a fault that is not fatal", "Ifc file simple;\nIFC4;\n*;\n#1=IFCNO();\n", true, 0,
     {"Error Value 1 Error_UnknownEntityType | #1=IFCNO();"}},
    {"a statement that does not end is none", "Ifc file simple;\nIFC4;\n*;\n#1=IFCDIRECTION((1.))", true, 0, {}},
    {"no statement", "Ifc file simple;\nIFC4;\n*;\n", true, 0, {}},
};
// clang-format on

TEST(FileSimple, ReadsTheShortForm) {
    for (const SimpleRow& row : g_simpleRows) {
        SCOPED_TRACE(row.sRule);
        FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
        io::ReadError errors;
        std::istringstream in(row.sText);
        EXPECT_EQ(file.boRead(in, {}, errors, {}, true), row.boRead);
        EXPECT_EQ(file.data().entities().size(), row.iEntities);
        EXPECT_EQ(rowsOf(errors), row.rows);
        EXPECT_EQ(file.data().pEntityFromId(1), nullptr) << "numbers are never kept";
    }
}

TEST(FileSimple, NamesTheSchemaThatItDoesNotKnow) {
    FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
    io::ReadError errors;
    std::istringstream in("Ifc file simple;\nIFC99;\n*;\n");
    EXPECT_FALSE(file.boRead(in, {}, errors, {}, true));
    std::string sExpected = localize("Ifc", "Error_UnknownSchemaName");
    sExpected.replace(sExpected.find("%1"), 2, "IFC99");
    ASSERT_EQ(errors.records().size(), 1U);
    EXPECT_EQ(errors.records()[0].description, sExpected);
}

TEST(FileSimple, IsBornWithItsSchema) {
    FileSimple file(*SchemaLoader::pBuiltIn("IFC2X3"));
    EXPECT_EQ(file.header().sSchemaNameGet(), "IFC2X3");
    EXPECT_EQ(file.data().pSchema(), SchemaLoader::pBuiltIn("IFC2X3"));
    EXPECT_EQ(file.pRootEntity(), nullptr);
    // A read brings its own, under its own name.
    io::ReadError errors;
    std::istringstream in("Ifc file simple;\nOURS;\n*;\n");
    EXPECT_TRUE(file.boRead(
        in, [](const std::string&) { return SchemaLoader::pBuiltIn("IFC4"); }, errors, {}, true));
    EXPECT_EQ(file.data().pSchema(), SchemaLoader::pBuiltIn("IFC4"));
    EXPECT_EQ(file.header().sSchemaNameGet(), "IFC4");
}

TEST(FileSimple, CallsProgressWithThePositionInItsStatements) {
    FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
    io::ReadError errors;
    std::vector<unsigned> positions;
    const std::string sFirst = "#1=IFCDIRECTION((1.));";
    std::istringstream in("Ifc file simple;\nIFC4;\n*;\n" + sFirst + "#2=IFCDIRECTION((1.));");
    EXPECT_TRUE(file.boRead(
        in, {}, errors, [&](unsigned iPosition) { positions.push_back(iPosition); }, true));
    EXPECT_THAT(positions, ElementsAre(sFirst.size() - 1));
}

TEST(FileSimple, NoEntityCountsAsRooted) {
    FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
    io::ReadError errors;
    std::istringstream in("Ifc file simple;\nIFC4;\n*;\n#1=IFCWALL('0000000000000000000000',$,$,$,$,$,$,$,$);"
                          "#2=IFCWALL('2CND9gmL0OS2wPqFz8m2Fi',$,$,$,$,$,$,$,$);");
    EXPECT_TRUE(file.boRead(in, {}, errors, {}, true));
    EXPECT_THAT(rowsOf(errors), IsEmpty());
    EXPECT_TRUE(file.data().guidEntityMap().empty());
}

TEST(FileSimple, FindsItsRoot) {
    struct Row {
        const char* sRoot;
        bool boRoot;
        bool boDefined;
        std::vector<std::string> rows;
        const char* sMissing = "";
    };
    const Row g_rows[] = {
        {"*;", false, false, {}},
        {"7;", true, true, {}},
        {"8;", true, false, {"Error Reference 0 Error_MissingEntityWithId | "}, "8"},
        {"-3;", true, true, {}},
        // 7 in the lower 32 bits
        {"4294967303;", true, false, {"Error Reference 0 Error_MissingEntityWithId | "}, "2147483647"},
        {"4294967293;", true, true, {}},    // -3, as a number without sign
        {"2147483648;", true, true, {}},    // the smallest number with a sign
        {"-2147483648;", true, true, {}},   // the same
        {"2147483646;", true, true, {}},
        {"2147483647;", true, false, {"Error Reference 0 Error_MissingEntityWithId | "}, "2147483647"},
        {"-2147483649;", true, false, {"Error Reference 0 Error_MissingEntityWithId | "}, "2147483647"},
        {"4294967295;", true, false, {"Error Reference 0 Error_MissingEntityWithId | "}, "4294967295"},
        {"4294967296;", true, false, {"Error Reference 0 Error_MissingEntityWithId | "}, "2147483647"},
    };
    for (const Row& row : g_rows) {
        SCOPED_TRACE(row.sRoot);
        FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
        io::ReadError errors;
        std::istringstream in("Ifc file simple;\nIFC4;\n" + std::string(row.sRoot) +
                              "\n#7=IFCDIRECTION((1.));#-3=IFCDIRECTION((1.));#2147483646=IFCDIRECTION((1.));"
                              "#-2147483648=IFCDIRECTION((1.));");
        EXPECT_TRUE(file.boRead(in, {}, errors, {}, true));
        EXPECT_EQ(rowsOf(errors), row.rows);
        // Beyond 32 bits the largest signed number stands for it.
        if (!row.rows.empty()) {
            EXPECT_EQ(errors.records()[0].argument(), row.sMissing);
        }
        ASSERT_EQ(file.pRootEntity() != nullptr, row.boRoot);
        if (row.boRoot) {
            EXPECT_EQ(file.pRootEntity()->pSchemaEntity() != nullptr, row.boDefined);
        }
    }
}

TEST(FileSimple, WritesTheShortForm) {
    FileSimple file(*SchemaLoader::pBuiltIn("IFC4"));
    const auto sWritten = [&file](const Entity* pEntity) {
        std::ostringstream out;
        io::WriteError errors;
        const bool boWritten = file.boWrite(pEntity, out, errors, true);
        return (boWritten ? "yes: " : "no: ") + out.str();
    };
    const std::string sHead = "Ifc file simple;\nIFC4;\n";
    EXPECT_EQ(sWritten(nullptr), "no: " + sHead + "*;\n") << "nothing there";

    io::ReadError errors;
    std::istringstream in(sHead + "*;\n#7=IFCAXIS2PLACEMENT2D(#8,$);#8=IFCCARTESIANPOINT((1.,2.));");
    ASSERT_TRUE(file.boRead(in, {}, errors, {}, true));
    const std::string sPoint = "#2=IFCCARTESIANPOINT((1.,2.));\n";
    EXPECT_EQ(sWritten(nullptr), "yes: " + sHead + "*;\n#1=IFCAXIS2PLACEMENT2D(#2,$);\n" + sPoint);
    EXPECT_EQ(sWritten(file.data().entities().back()), "yes: " + sHead + "2;\n" + sPoint) << "what the root reaches";

    file.headerBase().vSchemaNameSet("");
    EXPECT_EQ(sWritten(nullptr), "no: ") << "without the name of a schema";
}

}   // namespace
}   // namespace oxa::ifc
