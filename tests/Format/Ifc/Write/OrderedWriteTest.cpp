// SPDX-License-Identifier: Apache-2.0
// Writes in an order, numbers that new entities get beside those of a file, and how a number written twice is told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/IfcTypeSelectBase.h"
#include "Format/Ifc/ReadResult.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;
using testing::ElementsAre;
using testing::UnorderedElementsAreArray;

constexpr bool g_threads[] = {true, false};   // boSingleThreaded

// The statements of a whole file.
Lines dataLines(const Written& result) {
    Lines lines = linesOf(result.text);
    lines.erase(lines.begin(), std::ranges::find(lines, "DATA;") + 1);
    lines.resize(lines.size() - 2);
    return lines;
}

struct OrderRow {
    const char* sRule;
    WriteOrder eOrder;
    std::vector<std::uint32_t> numbers;
    Lines lines;
};

TEST(WriteOrder, IsThatOfNumbersOrOfAFile) {
    const std::string sUnits = "#5=IFCPROJECT('" + sGuidOf(0) + "',$,(#70000,#3,#4));";
    const std::string p3 = "#3=IFCPOINT((3.));";
    const std::string p4 = "#4=IFCPOINT((4.));";
    const std::string p7 = "#70000=IFCPOINT((7.));";
    const std::string p6 = "#6=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);";
    const std::string sLink = "#1=IFCRELLINK('" + sGuidOf(2) + "',$,#5,(#6));";
    // Nothing leads to #2.
    const ReadFileModel model = modelOf(p7 + sUnits + p3 + "#2=IFCPOINT((2.));" + p4 + sLink + p6);
    const OrderRow rows[] = {
        {"numbers", WriteOrder::Number, {}, {sLink, p3, p4, sUnits, p6, p7}},
        {"numbers, whatever the file says", WriteOrder::Number, {5, 4, 3}, {sLink, p3, p4, sUnits, p6, p7}},
        {"a file", WriteOrder::File, {70000, 5, 3, 2, 4, 1, 6}, {p7, sUnits, p3, p4, sLink, p6}},
        {"what the file does not name stands behind it, by number",
         WriteOrder::File,
         {4, 5},
         {p4, sUnits, sLink, p3, p6, p7}},
        {"a file that is not known: numbers", WriteOrder::File, {}, {sLink, p3, p4, sUnits, p6, p7}},
        {"the first of several places counts, and unknown numbers for nothing",
         WriteOrder::File,
         {99, 3, 4, 3, 4294967295U, 4, 5, 6, 0, 6, 1},
         {p3, p4, sUnits, p6, sLink, p7}},
    };
    for (const OrderRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        for (const bool boSingleThreaded : g_threads) {
            const Written result = fileOf(
                model.file, {.boSingleThreaded = boSingleThreaded, .eOrder = row.eOrder, .fileNumbers = row.numbers});
            EXPECT_TRUE(result.boResult);
            EXPECT_TRUE(result.records.empty());
            EXPECT_EQ(
                result.text, fileOf(model.file).text.substr(0, result.text.find("DATA;\n")) + "DATA;\n" + [&] {
                    std::string sText;
                    for (const std::string& sLine : row.lines) sText += sLine + '\n';
                    return sText;
                }() + "ENDSEC;\nEND-ISO-10303-21;\n");
        }
    }
}

// A walk without text meets what the walk with text meets.
TEST(WriteOrder, KeepsTheStatementsOfTheWalk) {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcColour = ENUMERATION OF (RED, GREEN); END_TYPE;
        TYPE IfcPoints = LIST OF IfcPoint; END_TYPE;
        TYPE IfcInner = SELECT (IfcPoint, IfcLabel); END_TYPE;
        TYPE IfcValue = SELECT (IfcLabel, IfcPoints, IfcInner, IfcPoint); END_TYPE;
        ENTITY IfcProject; One : OPTIONAL IfcPoint; Many : OPTIONAL LIST OF IfcPoint;
            Grid : OPTIONAL LIST OF LIST OF IfcPoint; Value : OPTIONAL IfcValue; Values : OPTIONAL LIST OF IfcValue;
            Text : OPTIONAL IfcLabel; Size : OPTIONAL REAL; Whole : OPTIONAL INTEGER; Truth : OPTIONAL BOOLEAN;
            Logic : OPTIONAL LOGICAL; Bits : OPTIONAL BINARY; Colour : OPTIONAL IfcColour;
            Any : OPTIONAL NUMBER; Texts : OPTIONAL LIST OF IfcLabel; Reals : OPTIONAL LIST OF REAL;
            INVERSE Links : SET OF IfcLink FOR Ends; END_ENTITY;
        ENTITY IfcPoint; X : REAL; INVERSE LinkedBy : SET OF IfcLink FOR Ends; END_ENTITY;
        ENTITY IfcLink; Ends : LIST OF IfcEnd; END_ENTITY;
        TYPE IfcEnd = SELECT (IfcProject, IfcPoint); END_TYPE;
        )");
    const std::string sDollars = "$,$,$,$,$,$,$,$,$,$";
    const struct {
        const char* sRule;
        std::string sProject;
        std::size_t iLines;
    } rows[] = {
        {"nothing", "$,$,$,$,$," + sDollars, 3},   // the project, its link, and what the link names
        {"a reference", "#2,$,$,$,$," + sDollars, 4},
        {"a list", "$,(#2,#3,#2),$,$,$," + sDollars, 5},
        {"an empty list", "$,(),$,$,$," + sDollars, 3},
        {"a list of lists", "$,$,((#2),(),(#3,#4)),$,$," + sDollars, 6},
        {"a select of a reference", "$,$,$,#2,$," + sDollars, 4},
        {"a select of a value", "$,$,$,IFCLABEL('#2'),$," + sDollars, 3},
        {"a select of a list", "$,$,$,IFCPOINTS((#3,#4)),$," + sDollars, 5},
        {"a list of selects",
         "$,$,$,$,(#2,IFCLABEL('a'),$,IFCPOINTS((#4)),"
         "#3)," +
             sDollars,
         6},
        {"an instance that is missing", "#77,$,$,$,(#78,#3)," + sDollars, 4},
        {"all other kinds", "$,$,$,$,$,'#2',1.5,7,.T.,.U.,\"0FF\",.RED.,2.,('#3'),(1.,2.)", 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const std::string sFile =
            sFileOf("#1=IFCPROJECT(" + row.sProject +
                    ");#2=IFCPOINT(2.);#3=IFCPOINT(3.);#4=IFCPOINT(4.);#8=IFCLINK((#1,#9));#9=IFCPOINT(9.);"
                    "#10=IFCPOINT(10.);#11=IFCLINK((#10));");
        const ReadFileModel model(sFile, true, schemaIs(*pSchema));
        Lines expected = dataLines(fileOf(model.file));
        EXPECT_EQ(expected.size(), row.iLines);
        std::ranges::sort(expected, {}, [](const std::string& sLine) { return std::stoi(sLine.substr(1)); });
        for (const bool boSingleThreaded : g_threads)
            EXPECT_EQ(
                dataLines(fileOf(model.file, {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number})),
                expected);
    }
}

TEST(WriteOrder, FollowsNoValueThatStaysBehindItsFlag) {
    ReadFileModel model = modelOf("#1=IFCPOINT((1.));#2=IFCELEMENT('" + sGuidOf(1) + "',$,#1,$);");
    const Data& data = model.file.data();
    const Entity* pElement = data.pEntityFromId(2);
    pElement->pAttributeFromIndex(2).second->m_boUndefined = true;
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number}) {
        std::ostringstream out;
        WriteError errors;
        WriteFile::boWrite(data, pElement, out, errors, {.boSingleThreaded = true, .eOrder = eOrder});
        EXPECT_THAT(linesOf(out.str()), ElementsAre("#2=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);"));
    }
}

TEST(WriteOrder, GivesTheSameBytesForAnyNumberOfThreads) {
    const ReadFileModel model(sSmallFile(1500), true, schemaIs(smallSchema()));
    Lines expected = dataLines(fileOf(model.file));
    std::ranges::sort(expected, {}, [](const std::string& sLine) { return std::stoi(sLine.substr(1)); });
    std::vector<std::uint32_t> backwards;
    for (std::uint32_t i = 6001; i > 0; --i) backwards.push_back(i);
    for (int i = 0; i < 10; ++i)
        for (const bool boSingleThreaded : g_threads) {
            EXPECT_EQ(
                dataLines(fileOf(model.file, {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number})),
                expected);
            Lines lines = dataLines(
                fileOf(model.file,
                       {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::File, .fileNumbers = backwards}));
            std::ranges::reverse(lines);
            EXPECT_EQ(lines, expected);
        }
}

// From the lowest number on, as statements name entities.
TEST(WriteOrder, DealsNumbersAsTheModelSays) {
    const std::string statements =
        "#70=IFCPROPERTY('a',#90,(),#71);#71=IFCPROPERTY('b',#80,(),$);#80=IFCPOINT((8.));#90=IFCPOINT((9.));";
    const Lines expected = {"#1=IFCPROPERTY('a',#2,(),#3);", "#2=IFCPOINT((9.));", "#3=IFCPROPERTY('b',#4,(),$);",
                            "#4=IFCPOINT((8.));"};
    for (const bool boSingleThreaded : g_threads) {
        ReadFileModel model = modelOf(statements, false);
        const auto [first, last] = model.file.data().range(ObjectName("IFCPROPERTY"), false);
        ASSERT_EQ(last - first, 2);
        const Written result =
            dataOf(model.file.data(), {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number}, *first);
        EXPECT_EQ(linesOf(result.text), expected);
    }
    for (const bool boSingleThreaded : g_threads) {
        const ReadFileModel model(sSmallFile(800), true, schemaIs(smallSchema()), false);
        const std::string sWalk = fileOf(model.file).text;
        static_cast<void>(model.file.data().entityIdMap(true));
        EXPECT_EQ(fileOf(model.file, {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number}).text, sWalk)
            << "the walk deals numbers in their order";
    }
}

// Instances that nothing defines, and new ones, named by statements with numbers; a new one leads to what has one.
TEST(WriteOrder, NumbersTheRestBehindWhatHasNumbers) {
    for (const bool boSingleThreaded : g_threads) {
        ReadFileModel model = modelOf("#10=IFCPROPERTY('a',#77,(),#11);#11=IFCPROPERTY('b',#78,(),$);"
                                      "#12=IFCPOINT((2.));#13=IFCPROPERTY('c',#12,(),$);");
        Data& data = model.file.data();
        Entity* pNew = data.pEntityCreate(ObjectName("IFCPROPERTY"));
        pNew->boValueSet(AttributeName("Name"), std::string("new"), data);
        pNew->boListValueSet(AttributeName("Values"), std::vector<types::IfcSelectBase>{}, data);
        pNew->boValueSet<const Entity*>(AttributeName("Next"), data.pEntityFromId(13), data);
        data.pEntityFromId(11)->boValueSet<const Entity*>(AttributeName("Next"), pNew, data);
        EXPECT_TRUE(data.boNumbersAbove());
        const Written result =
            dataOf(data, {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number}, data.pEntityFromId(10));
        EXPECT_EQ(linesOf(result.text),
                  (Lines{"#10=IFCPROPERTY('a',#14,(),#11);", "#11=IFCPROPERTY('b',#15,(),#16);", "#12=IFCPOINT((2.));",
                         "#13=IFCPROPERTY('c',#12,(),$);", "#16=IFCPROPERTY('new',$,(),#13);"}));
    }
}

TEST(WriteOrder, WritesStatementByStatementWhereTheWriterWantsThat) {
    struct LateWriter final : RecordingWriter {
        std::size_t iLineAdd(std::string& line, unsigned iId) override {
            if (iId % 500 == 1) std::this_thread::sleep_for(std::chrono::milliseconds(5));   // others would overtake
            return RecordingWriter::iLineAdd(line, iId);
        }
    };
    const ReadFileModel model(sSmallFile(700), true, schemaIs(smallSchema()));
    for (const bool boSingleThreaded : g_threads) {
        LateWriter writer;
        WriteError errors;
        EXPECT_TRUE(model.file.data().boWrite(writer, errors,
                                              {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number}));
        EXPECT_EQ(writer.m_iFinished, 1);
        ASSERT_EQ(writer.m_lines.size(), 2101U);
        EXPECT_TRUE(std::ranges::is_sorted(writer.m_lines, {}, &std::pair<std::string, unsigned>::second));
        for (const auto& [sLine, iId] : writer.m_lines)
            EXPECT_TRUE(sLine.starts_with('#' + std::to_string(iId) + '=') && sLine.ends_with(");")) << sLine;
    }
}

// Who is far ahead waits for who is late: its text has no place yet.
TEST(WriteOrder, HoldsBackWhatComesTooEarly) {
    struct SlowWriter final : IfcLineWriterInterface {
        std::string m_text;
        std::size_t iLineAdd(std::string& lines, unsigned) override {
            if (m_text.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(500));
            m_text.append(lines).push_back('\n');
            return 0;
        }
        void vFinish() override {}
    };
    constexpr int g_iPoints = 256 * 160;
    std::string statements;
    for (int i = 1; i <= g_iPoints; ++i) statements += '#' + std::to_string(i) + "=IFCPOINT((1.));\n";
    const ReadFileModel model = modelOf(statements);
    for (const bool boSingleThreaded : g_threads) {
        SlowWriter writer;
        WriteError errors;
        StepWriteInfoCommon info(model.file.data().entityIdMap(false), errors, writer, boSingleThreaded);
        info.m_iBlockSize = 1000;
        for (const Entity* pEntity : model.file.data().entities()) info.iEntityIdGet(pEntity);
        model.file.data().vWriteWith(info, {.eOrder = WriteOrder::Number});
        EXPECT_TRUE(writer.m_text == statements) << writer.m_text.size() << " bytes of " << statements.size();
    }
}

TEST(WriteOrder, TellsHowFarItIs) {
    const ReadFileModel model(sSmallFile(700), true, schemaIs(smallSchema()));
    for (const bool boSingleThreaded : g_threads) {
        std::vector<unsigned> calls;
        const auto caller = std::this_thread::get_id();
        fileOf(model.file, {.boSingleThreaded = boSingleThreaded,
                            .progress =
                                [&](unsigned iCount) {
                                    std::this_thread::sleep_for(std::chrono::milliseconds(3));   // others get work, too
                                    EXPECT_EQ(std::this_thread::get_id(), caller);
                                    calls.push_back(iCount);
                                },
                            .eOrder = WriteOrder::Number});
        const std::vector<unsigned> all = {256, 512, 768, 1024, 1280, 1536, 1792, 2048, 2101};
        if (boSingleThreaded) {
            EXPECT_EQ(calls, all);
        }
        EXPECT_TRUE(std::ranges::includes(all, calls));
        ASSERT_FALSE(calls.empty());
        EXPECT_EQ(calls.back(), 2101U) << "whoever composed the last ones";
    }
}

TEST(WriteOrder, PassesFaultsOn) {
    struct Refusing final : IfcLineWriterInterface {
        std::size_t iLineAdd(std::string&, unsigned iId) override {
            if (iId >= 1000) throw std::runtime_error("full");
            return 0;
        }
        void vFinish() override {}
    };
    const ReadFileModel model(sSmallFile(700), true, schemaIs(smallSchema()));
    for (const bool boSingleThreaded : g_threads) {
        Refusing writer;
        WriteError errors;
        EXPECT_THROW(static_cast<void>(model.file.data().boWrite(
                         writer, errors, {.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number})),
                     std::runtime_error);
    }
}

TEST(WriteOrder, WritesNothingWhereThereIsNothing) {
    const Data empty;
    File file;
    for (const bool boSingleThreaded : g_threads)
        for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number, WriteOrder::File}) {
            const WriteOptions options{.boSingleThreaded = boSingleThreaded, .eOrder = eOrder};
            const Written all = dataOf(empty, options);
            EXPECT_FALSE(all.boResult);
            EXPECT_EQ(all.text, "");
            const Written none = fileOf(file, options);
            EXPECT_FALSE(none.boResult);
            EXPECT_EQ(none.text, "");
        }
    // A walk from nothing ends, where it is in an order.
    for (const bool boSingleThreaded : g_threads) {
        RecordingWriter writer;
        WriteError errors;
        StepWriteInfoCommon info(empty.entityIdMap(false), errors, writer, boSingleThreaded);
        empty.vWriteWith(info, {.eOrder = WriteOrder::Number});
        EXPECT_TRUE(writer.m_lines.empty());
        EXPECT_EQ(writer.m_iFinished, 1);
    }
}

TEST(WriteOrder, IsOneOfTheSimpleFormToo) {
    FileSimple file(smallSchema());
    std::istringstream in("Ifc file simple;\nCELLS;\n*;\n#5=IFCPROPERTY('a',#2,(),$);\n#2=IFCPOINT((2.));\n"
                          "#3=IFCPOINT((3.));\n");
    ReadError readErrors;
    ASSERT_TRUE(file.boRead(in, schemaIs(smallSchema()), readErrors, {}, true));
    const Entity* pProperty = *file.data().range(ObjectName("IFCPROPERTY"), false).first;
    for (const bool boSingleThreaded : g_threads) {
        const WriteOptions options{.boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number};
        static_cast<void>(file.data().entityIdMap(true));
        const Written all =
            written([&](auto& out, auto& errors) { return file.boWrite(nullptr, out, errors, options); });
        EXPECT_TRUE(all.boResult);
        EXPECT_EQ(all.text, "Ifc file simple;\nCELLS;\n*;\n#1=IFCPOINT((2.));\n#2=IFCPOINT((3.));\n"
                            "#3=IFCPROPERTY('a',#1,(),$);\n");
        const Written one =
            written([&](auto& out, auto& errors) { return file.boWrite(pProperty, out, errors, options); });
        EXPECT_TRUE(one.boResult);
        EXPECT_EQ(one.text, "Ifc file simple;\nCELLS;\n3;\n#1=IFCPOINT((2.));\n#3=IFCPROPERTY('a',#1,(),$);\n");
    }
}

TEST(WriteNumbers, ANewOneMayBeOneThatTheFileHas) {
    ReadFileModel model = modelOf("#1=IFCPOINT((1.));#3=IFCPOINT((3.));");
    Data& data = model.file.data();
    static_cast<void>(data.pEntityCreate(ObjectName("IFCPOINT")));
    Lines lines = linesOf(dataOf(data).text);
    EXPECT_THAT(lines, ElementsAre("#1=IFCPOINT((1.));", "#3=IFCPOINT((3.));", "#3=IFCPOINT($);"));
    constexpr std::uint32_t g_numbers[] = {1, 3};
    const Lines told = {"Error Identifier 3 Error_NumberWrittenTwice | #3=IFCPOINT($);"};
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number, WriteOrder::File})
        for (const bool boSingleThreaded : g_threads)
            for (const bool boTell : {true, false}) {
                std::ostringstream out;
                WriteError errors;
                EXPECT_TRUE(WriteFile::boWrite(data, nullptr, out, errors,
                                               {.boSingleThreaded = boSingleThreaded,
                                                .eOrder = eOrder,
                                                .fileNumbers = g_numbers,
                                                .boTellNumbersTwice = boTell}));
                if (eOrder != WriteOrder::Any) {
                    EXPECT_EQ(linesOf(out.str()), lines) << "the file's own first";
                }
                std::vector<std::string> rows = rowsOf(errors);
                EXPECT_EQ(std::erase(rows, "Fatal Null 3 Error_InvalidNullAttribute | #3=IFCPOINT("), 1U);
                EXPECT_EQ(rows, boTell ? told : Lines{});
                if (boTell) {
                    EXPECT_EQ(errors.records().back().entity, data.entities().back());
                }
            }
}

// Only what is written counts: each of the two, and neither alone.
TEST(WriteNumbers, AreToldWhereBothAreWritten) {
    ReadFileModel undefined = modelOf(g_sProject + "#3=IFCPOINT((3.));#4=IFCPROPERTY('a',#9,(),$);");
    {
        std::ostringstream out;
        WriteError errors;
        WriteFile::boWrite(undefined.file.data(), nullptr, out, errors,
                           {.eOrder = WriteOrder::Number, .boTellNumbersTwice = true});
        EXPECT_THAT(linesOf(out.str()), testing::Contains("#4=IFCPROPERTY('a',#4,(),$);"));
        EXPECT_THAT(rowsOf(errors), ElementsAre()) << "what got the number has no statement";
    }
    ReadFileModel model = modelOf(g_sProject + "#3=IFCPOINT((3.));#4=IFCPROPERTY('a',#9,(),$);");
    Data& data = model.file.data();
    Entity* pNew = data.pEntityCreate(ObjectName("IFCPOINT"));
    pNew->boListValueSet(AttributeName("Coordinates"), std::vector<double>{1.}, data);
    EXPECT_EQ(data.iIdFromEntity(*pNew), 4U);
    const auto rows = [&](const Entity* pEntity) {
        std::ostringstream out;
        WriteError errors;
        WriteFile::boWrite(data, pEntity, out, errors, {.eOrder = WriteOrder::Number, .boTellNumbersTwice = true});
        return rowsOf(errors);
    };
    EXPECT_THAT(rows(pNew), ElementsAre());
    EXPECT_THAT(rows(data.pEntityFromId(4)), ElementsAre()) << "#9 has no statement";
    EXPECT_THAT(rows(nullptr), ElementsAre("Error Identifier 4 Error_NumberWrittenTwice | #4=IFCPOINT((1.));"));
}

TEST(WriteNumbers, AreAboveThoseOfTheFileWhereThatIsAskedFor) {
    const struct {
        const char* sRule;
        std::string statements;
        bool boKeepIds;
        std::size_t iNext;
    } rows[] = {
        {"dense", "#1=IFCPOINT((1.));#2=IFCPOINT((2.));", true, 3},
        {"with gaps", "#1=IFCPOINT((1.));#90=IFCPOINT((2.));", true, 91},
        {"more than one chunk of numbers", "#32767=IFCPOINT((1.));#32768=IFCPOINT((2.));#5=IFCPOINT((2.));", true,
         32769},
        {"the end of a chunk", "#32767=IFCPOINT((1.));", true, 32768},
        {"far away, in no order", "#50000000=IFCPOINT((1.));#7=IFCPOINT((2.));", true, 50000001},
        {"0 alone", "#0=IFCPOINT((1.));", true, 1},
        {"a number that is only named", "#1=IFCPROPERTY('a',#9,(),$);", true, 2},
        {"no statement", "", true, 1},
        {"none kept", "#70=IFCPOINT((1.));#90=IFCPOINT((2.));", false, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        ReadFileModel model = modelOf(row.statements, row.boKeepIds);
        Data& data = model.file.data();
        EXPECT_TRUE(data.boNumbersAbove());
        for (std::size_t i = 0; i < 3; ++i) {
            const Entity* pNew = data.pEntityCreate(ObjectName("IFCPOINT"));
            EXPECT_EQ(data.iIdFromEntity(*pNew), row.iNext + i);
            EXPECT_EQ(data.iIdFromEntity(*pNew), row.iNext + i);
        }
        EXPECT_TRUE(data.boNumbersAbove());
        EXPECT_EQ(data.iIdFromEntity(*data.pEntityCreate(ObjectName("IFCPOINT"))), row.iNext + 3) << "dealt ones count";
    }
}

TEST(WriteNumbers, EndWhereStatementsHaveNoMore) {
    ReadFileModel last = modelOf("#-1=IFCPOINT((1.));#-2=IFCPOINT((2.));");   // 4294967295 and 4294967294
    EXPECT_FALSE(last.file.data().boNumbersAbove());
    EXPECT_EQ(last.file.data().iIdFromEntity(*last.file.data().pEntityCreate(ObjectName("IFCPOINT"))), 3U);
    ReadFileModel lastButOne = modelOf("#-2=IFCPOINT((2.));");
    EXPECT_TRUE(lastButOne.file.data().boNumbersAbove());
    EXPECT_EQ(
        linesOf(entityOf(lastButOne.file.data(), lastButOne.file.data().pEntityCreate(ObjectName("IFCPOINT"))).text),
        Lines{"#4294967295=IFCPOINT($);"});
}

// In a list 0 stands for no instance; the one that a file gave that number is left out there, but has its statement.
TEST(WriteNumbers, LeaveZeroOutOfLists) {
    const ReadFileModel model = modelOf("#1=IFCPROJECT('" + sGuidOf(0) +
                                        "',$,(#2,#0,#3,#0));#0=IFCPOINT((0.));"
                                        "#2=IFCPOINT((2.));#3=IFCPOINT((3.));");
    const Lines expected = {"#0=IFCPOINT((0.));", "#1=IFCPROJECT('" + sGuidOf(0) + "',$,(#2,#3));",
                            "#2=IFCPOINT((2.));", "#3=IFCPOINT((3.));"};
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number})
        for (const bool boSingleThreaded : g_threads) {
            const AssertLog log;
            EXPECT_THAT(dataLines(fileOf(model.file, {.boSingleThreaded = boSingleThreaded, .eOrder = eOrder})),
                        UnorderedElementsAreArray(expected));
            EXPECT_EQ(log.texts(), std::vector<std::string>(2, "Skipping invalid reference in list"));
        }
}

// An entity that was deleted is out of the list; what refers to it still leads to it, under its number.
TEST(WriteData, WritesADeletedEntityWhereSomethingRefersToIt) {
    ReadFileModel model = modelOf("#1=IFCPOINT((1.));#2=IFCPOINT((2.));#3=IFCPROPERTY('a',#2,(),$);");
    Data& data = model.file.data();
    EXPECT_TRUE(data.boEntityDelete(data.pEntityFromId(1)));
    EXPECT_TRUE(data.boEntityDelete(data.pEntityFromId(2)));
    const Lines expected = {"#2=IFCPOINT((2.));", "#3=IFCPROPERTY('a',#2,(),$);"};
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number})
        for (const bool boSingleThreaded : g_threads)
            EXPECT_THAT(linesOf(dataOf(data, {.boSingleThreaded = boSingleThreaded, .eOrder = eOrder}).text),
                        UnorderedElementsAreArray(expected));
    EXPECT_EQ(dataOf(data).text, "#3=IFCPROPERTY('a',#2,(),$);\n#2=IFCPOINT((2.));\n");
}

// An entity of another model, and what that names, are written with the one that names it, however it came there: a setter
// tells of it beforehand, a cell does not.
TEST(WriteData, WritesWhatAnotherModelHas) {
    const ReadFileModel other = modelOf("#7=IFCPROPERTY('b',$,(),#8);#8=IFCPROPERTY('c',$,(),$);");
    const Entity* pForeign = other.file.data().pEntityFromId(7);
    const std::string a = "#1=IFCPROPERTY('a',$,(),#3);";
    const std::string b = "#3=IFCPROPERTY('b',$,(),#4);";
    const std::string c = "#4=IFCPROPERTY('c',$,(),$);";
    const std::string z = "#70000=IFCPROPERTY('z',$,(),$);";
    const struct {
        const char* sWay;
        void (*vName)(Entity&, const Entity*, Data&);
        Lines byNumber;
    } rows[] = {
        {"by its setter",
         [](Entity& entity, const Entity* pNamed, Data& data) {
             EXPECT_TRUE(entity.boValueSet(AttributeName("Next"), pNamed, data));
         },
         {a, b, c, z}},
        {"in its cell",
         [](Entity& entity, const Entity* pNamed, Data&) {
             auto* pCell = static_cast<AttributeEntity*>(entity.pAttributeFromIndex(3).second);
             pCell->m_value = const_cast<Entity*>(pNamed);
             pCell->vDefined();
         },
         {a, z, b, c}},
    };
    for (const auto& row : rows)
        for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number, WriteOrder::File})
            for (const bool boSingleThreaded : g_threads) {
                SCOPED_TRACE(row.sWay);
                ReadFileModel model = modelOf("#70000=IFCPROPERTY('z',$,(),$);#1=IFCPROPERTY('a',$,(),$);");
                Data& data = model.file.data();
                row.vName(*data.pEntityFromId(1), pForeign, data);
                const Written result = dataOf(data, {.boSingleThreaded = boSingleThreaded, .eOrder = eOrder});
                EXPECT_THAT(linesOf(result.text), UnorderedElementsAreArray(row.byNumber));
                if (eOrder != WriteOrder::Any) {
                    EXPECT_EQ(linesOf(result.text), row.byNumber);
                }
                EXPECT_TRUE(result.records.empty());
            }
}

// Who asks for all may ask for others beside them, and the list may have one twice while it lacks another.
TEST(WriteData, WritesAllAndWhatASeedAdds) {
    const ReadFileModel other = modelOf(g_sProject + "#2=IFCRELLINK('" + sGuidOf(2) + "',$,#1,());");
    const Lines own = {"#1=IFCPOINT((1.));", "#2=IFCPROPERTY('a',#3,(),$);", "#3=IFCPOINT((3.));"};
    Lines both = own;
    both.push_back("#4=IFCPROJECT('" + sGuidOf(0) + "',$,$);");
    both.push_back("#5=IFCRELLINK('" + sGuidOf(2) + "',$,#4,());");
    const struct {
        const char* sRule;
        void (*vChange)(Data&);
        const Entity* pAdded;
        const Lines& lines;
    } rows[] = {
        {"all", [](Data&) {}, nullptr, own},
        {"one of another model, and who refers to it", [](Data&) {}, other.file.data().pProject(), both},
        {"as many as were read",
         [](Data& data) {
             EXPECT_TRUE(data.boEntityDelete(data.pEntityFromId(3)));
             data.entityAdd(data.pEntityFromId(1));
         },
         nullptr, own},
    };
    for (const auto& row : rows)
        for (const bool boSingleThreaded : g_threads) {
            SCOPED_TRACE(row.sRule);
            ReadFileModel model = modelOf("#1=IFCPOINT((1.));#2=IFCPROPERTY('a',#3,(),$);#3=IFCPOINT((3.));");
            const Data& data = model.file.data();
            row.vChange(model.file.data());
            const WriteFile::Seed seed = [&](StepWriteInfoCommon& info) {
                data.vQueueAll(info);
                info.iEntityIdQueue(row.pAdded);
            };
            const Written result = written(
                [&](auto& out, auto& errors) { return WriteFile::boWrite(data, seed, out, errors, boSingleThreaded); });
            EXPECT_THAT(linesOf(result.text), UnorderedElementsAreArray(row.lines));
        }
}

// Whoever takes the type from an instance hides it from every write; its values are still there, and stay untouched.
TEST(WriteData, PassesOverInstancesWhoseTypeIsHidden) {
    constexpr unsigned g_iPoints = 100;
    std::string statements;
    for (unsigned i = 1; i <= g_iPoints; ++i) statements += '#' + std::to_string(i) + "=IFCPOINT((1.));";
    ReadFileModel model = modelOf(statements);
    Data& data = model.file.data();
    Lines expected;
    for (unsigned i = 1; i <= g_iPoints; ++i)
        if (i % 3 == 0)
            expected.push_back('#' + std::to_string(i) + "=IFCPOINT((1.));");
        else
            data.pEntityFromId(i)->unsafeSetSchemaEntity(nullptr);
    for (const WriteOrder eOrder : {WriteOrder::Number, WriteOrder::File})
        for (const bool boSingleThreaded : g_threads)
            EXPECT_EQ(linesOf(dataOf(data, {.boSingleThreaded = boSingleThreaded, .eOrder = eOrder}).text), expected);
    EXPECT_EQ(linesOf(dataOf(data).text), expected);
}

}   // namespace
}   // namespace oxa::ifc::io
