// SPDX-License-Identifier: Apache-2.0
// What a write puts into a stream: which statements, in which order, with which numbers, and how they get there.
#include "Format/Ifc/IfcWriteFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <numeric>
#include <thread>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAreArray;

TEST(WriteFile, WritesNothingWithoutAProject) {
    const ReadFileModel model = modelOf("#2=IFCPOINT((1.));\n");
    for (const bool boSingleThreaded : {true, false}) {
        const Written result = fileOf(model.file, boSingleThreaded);
        EXPECT_FALSE(result.boResult);
        EXPECT_EQ(result.text, "");

        RecordingWriter writer;
        WriteError errors;
        EXPECT_FALSE(model.file.data().boWrite(writer, errors, {}, boSingleThreaded));
        EXPECT_EQ(writer.m_iFinished, 1);
        EXPECT_TRUE(writer.m_lines.empty());
    }
}

TEST(WriteFile, PutsTheFrameAroundTheProject) {
    const ReadFileModel model = modelOf(g_sProject);
    for (const bool boSingleThreaded : {true, false}) {
        const Written result = fileOf(model.file, boSingleThreaded);
        EXPECT_TRUE(result.boResult);
        EXPECT_EQ(result.text, "ISO-10303-21;\n" + model.file.header().writeToString() + "DATA;\n" + g_sProject +
                                   "\nENDSEC;\nEND-ISO-10303-21;\n");
        EXPECT_TRUE(result.records.empty());
    }
}

// All entities behind a header that need not be the file's own, and told which they were.
TEST(WriteFile, TakesAHeaderOfEitherForm) {
    const ReadFileModel model = modelOf(g_sProject + "#7=IFCPOINT((1.));#5=IFCPOINT((2.));");
    const Data& data = model.file.data();
    const std::string sAll = g_sProject + "\n#5=IFCPOINT((2.));\n#7=IFCPOINT((1.));\n";
    FileHeader header;
    header.vSchemaNameSet("OTHER");
    FileHeaderSimple simple;
    simple.vSchemaNameSet("OTHER");
    simple.exportInfo = std::uint64_t{5};
    const std::string sFrame = "ISO-10303-21;\n" + header.writeToString() + "DATA;\n";
    const std::string sEnd = "ENDSEC;\nEND-ISO-10303-21;\n";
    for (const bool boSingleThreaded : {true, false}) {
        std::vector<std::size_t> numbers{99};
        const WriteOptions options{
            .boSingleThreaded = boSingleThreaded, .eOrder = WriteOrder::Number, .pWritten = &numbers};
        const auto fileWith = [&](const auto& head, const Data& written_, const Entity* pEntity) {
            return written([&](auto& out, auto& errors) {
                return WriteFile::boWrite(head, written_, pEntity, out, errors, options);
            });
        };
        EXPECT_EQ(fileWith(header, data, nullptr).text, sFrame + sAll + sEnd);
        EXPECT_THAT(numbers, ElementsAre(1, 5, 7));
        EXPECT_EQ(fileWith(header, data, data.pEntityFromId(5)).text, sFrame + "#5=IFCPOINT((2.));\n" + sEnd);
        EXPECT_THAT(numbers, ElementsAre(5));
        EXPECT_EQ(fileWith(simple, data, nullptr).text, "Ifc file simple;\nOTHER;\n5;\n" + sAll);
        const Written nothing = fileWith(header, Data(), nullptr);
        EXPECT_TRUE(nothing.boResult);
        EXPECT_EQ(nothing.text, sFrame + sEnd);
        EXPECT_FALSE(fileWith(FileHeaderSimple(), data, nullptr).boResult);
    }
}

struct ReachRow {
    const char* sRule;
    std::string statements;
    Lines lines;   // of a whole file, between DATA and ENDSEC
};

TEST(WriteFile, WritesWhatTheProjectReachesBreadthFirst) {
    const std::string g0 = sGuidOf(0);
    const std::string g1 = sGuidOf(1);
    const std::string g2 = sGuidOf(2);
    const std::string sProjectWith = "#1=IFCPROJECT('" + g0 + "',$,(#";
    const std::string sLink = "#9=IFCRELLINK('" + g1 + "',$,#1,(#8,#7));";
    const ReachRow rows[] = {
        {"what nothing leads to is left out", g_sProject + "#2=IFCPOINT((1.));", {g_sProject}},
        {"references, in the order in which they are named",
         "#4=IFCPOINT((4.));#2=IFCPOINT((2.));#3=IFCPOINT((3.));" + sProjectWith + "3,#4));",
         {sProjectWith + "3,#4));", "#3=IFCPOINT((3.));", "#4=IFCPOINT((4.));"}},
        {"what is named twice is written once",
         "#3=IFCPOINT((3.));" + sProjectWith + "3,#3));",
         {sProjectWith + "3,#3));", "#3=IFCPOINT((3.));"}},
        {"nothing but an inverse list leads to a link, and the link to elements",
         g_sProject + sLink + "#8=IFCELEMENT('" + g2 + "',$,#5,$);#7=IFCELEMENT('" + sGuidOf(3) +
             "',$,$,$);#5=IFCPOINT((5.));#6=IFCPOINT((6.));",
         {g_sProject, sLink, "#8=IFCELEMENT('" + g2 + "',$,#5,$);", "#7=IFCELEMENT('" + sGuidOf(3) + "',$,$,$);",
          "#5=IFCPOINT((5.));"}},
        {"forward references before inverse lists",
         "#2=IFCPOINT((2.));" + sLink + sProjectWith + "2));#8=IFCELEMENT('" + g2 + "',$,$,$);#7=IFCELEMENT('" +
             sGuidOf(3) + "',$,#2,$);",
         {sProjectWith + "2));", "#2=IFCPOINT((2.));", sLink, "#8=IFCELEMENT('" + g2 + "',$,$,$);",
          "#7=IFCELEMENT('" + sGuidOf(3) + "',$,#2,$);"}},
        {"a number that nothing defines is named, and gets no line",
         sProjectWith + "70));#2=IFCPOINT((1.));",
         {sProjectWith + "3));"}},
    };
    for (const ReachRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        const ReadFileModel model = modelOf(row.statements);
        ASSERT_TRUE(model.boRead);
        Lines lines = linesOf(fileOf(model.file).text);
        ASSERT_GE(lines.size(), 9U);
        EXPECT_EQ(Lines(lines.begin() + 7, lines.end() - 2), row.lines);
        lines = linesOf(fileOf(model.file, false).text);
        ASSERT_GE(lines.size(), 9U);
        EXPECT_THAT(Lines(lines.begin() + 7, lines.end() - 2), UnorderedElementsAreArray(row.lines));
    }
}

TEST(WriteFile, EndsOnACycle) {
    const ReadFileModel model = modelOf("#1=IFCPROPERTY('a',$,(),#2);#2=IFCPROPERTY('b',$,(),#3);"
                                        "#3=IFCPROPERTY('c',$,(#9),#1);#4=IFCPROPERTY('d',$,(),#4);#9=IFCPOINT((0.));");
    for (const bool boSingleThreaded : {true, false}) {
        EXPECT_THAT(linesOf(entityOf(model.file.data(), model.file.data().pEntityFromId(2), boSingleThreaded).text),
                    UnorderedElementsAreArray(Lines{"#2=IFCPROPERTY('b',$,(),#3);", "#3=IFCPROPERTY('c',$,(#9),#1);",
                                                    "#9=IFCPOINT((0.));", "#1=IFCPROPERTY('a',$,(),#2);"}));
        EXPECT_EQ(entityOf(model.file.data(), model.file.data().pEntityFromId(4), boSingleThreaded).text,
                  "#4=IFCPROPERTY('d',$,(),#4);\n");
    }
}

TEST(WriteFile, ReachesByReferenceAloneAfterAFailedRead) {
    const ReadFileModel model = modelOf("#2=IFCPOINT((2.));#3=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);#4=IFCRELLINK('" +
                                        sGuidOf(2) + "',$,#1,(#3));#1=IFCPROJECT('" + sGuidOf(0) + "',$,(#2));#x=;");
    ASSERT_FALSE(model.boRead);
    const Lines lines = linesOf(fileOf(model.file).text);
    EXPECT_EQ(Lines(lines.begin() + 7, lines.end() - 2),
              (Lines{"#1=IFCPROJECT('" + sGuidOf(0) + "',$,(#2));", "#2=IFCPOINT((2.));"}));
}

TEST(WriteData, WritesAllEntitiesSortedByType) {
    const ReadFileModel model = modelOf("#9=IFCPROPERTY('a',$,(),$);#3=IFCPOINT((3.));" + g_sProject +
                                        "#2=IFCPOINT((2.));#7=IFCPROPERTY('b',#2,(),#9);");
    Lines expected;
    for (const Entity* pEntity : model.file.data().entities())
        expected.push_back(pEntity->sWriteLine(model.file.data()));
    ASSERT_EQ(expected.size(), 5U);
    const Written result = dataOf(model.file.data());
    EXPECT_TRUE(result.boResult);
    EXPECT_EQ(linesOf(result.text), expected);
    EXPECT_THAT(linesOf(dataOf(model.file.data(), false).text), UnorderedElementsAreArray(expected));
}

TEST(WriteData, WritesOneEntityAndWhatItReaches) {
    const ReadFileModel model =
        modelOf(g_sProject + "#3=IFCPOINT((3.));#2=IFCPOINT((2.));#7=IFCPROPERTY('b',#2,(),$);");
    for (const bool boSingleThreaded : {true, false}) {
        const Written result = entityOf(model.file.data(), model.file.data().pEntityFromId(7), boSingleThreaded);
        EXPECT_TRUE(result.boResult);
        EXPECT_THAT(linesOf(result.text),
                    UnorderedElementsAreArray(Lines{"#7=IFCPROPERTY('b',#2,(),$);", "#2=IFCPOINT((2.));"}));
    }
}

TEST(WriteData, WritesWhatASeedQueues) {
    const ReadFileModel model = modelOf("#3=IFCPOINT((3.));#2=IFCPOINT((2.));#1=IFCPOINT((1.));");
    const auto& data = model.file.data();
    const WriteFile::Seed seed = [&data](StepWriteInfoCommon& info) {
        EXPECT_EQ(info.iEntityIdGet(data.pEntityFromId(3)), 3U);
        EXPECT_EQ(info.iEntityIdGet(nullptr), 0U);
        EXPECT_EQ(info.iEntityIdGet(data.pEntityFromId(1)), 1U);
        EXPECT_EQ(info.iEntityIdGet(data.pEntityFromId(3)), 3U);
    };
    for (const bool boSingleThreaded : {true, false}) {
        const Written result = written(
            [&](auto& out, auto& errors) { return WriteFile::boWrite(data, seed, out, errors, boSingleThreaded); });
        EXPECT_TRUE(result.boResult);
        EXPECT_THAT(linesOf(result.text), UnorderedElementsAreArray(Lines{"#3=IFCPOINT((3.));", "#1=IFCPOINT((1.));"}));
    }
    std::ostringstream out;
    WriteError errors;
    for (const bool boSingleThreaded : {true, false})
        EXPECT_THROW(static_cast<void>(WriteFile::boWrite(data, WriteFile::Seed{}, out, errors, boSingleThreaded)),
                     std::bad_function_call);
}

TEST(WriteData, PassesOverNullsInTheQueue) {
    const ReadFileModel model = modelOf("#2=IFCPOINT((2.));#1=IFCPOINT((1.));");
    const auto& data = model.file.data();
    const WriteFile::Seed seed = [&data](StepWriteInfoCommon& info) {
        info.m_queue.push_back(nullptr);
        info.iEntityIdGet(data.pEntityFromId(2));
        info.m_queue.push_back(nullptr);
    };
    for (const bool boSingleThreaded : {true, false}) {
        const Written result = written(
            [&](auto& out, auto& errors) { return WriteFile::boWrite(data, seed, out, errors, boSingleThreaded); });
        EXPECT_TRUE(result.boResult);
        EXPECT_EQ(result.text, "#2=IFCPOINT((2.));\n");
    }
}

// All entities may be the seed as a list that stays where it is, up to one that stands there twice; what a seed adds comes
// behind them, and so does what they lead to.
TEST(WriteData, WritesAListInItsOrderThenTheQueue) {
    ReadFileModel model = modelOf("#2=IFCPOINT((2.));#1=IFCPOINT((1.));#3=IFCPOINT((3.));#4=IFCPOINT((4.));");
    const Data& data = model.file.data();
    const auto pOf = [&data](std::size_t iId) { return data.pEntityFromId(iId); };
    const std::string p1 = "#1=IFCPOINT((1.));", p2 = "#2=IFCPOINT((2.));", p3 = "#3=IFCPOINT((3.));";
    const struct {
        const char* sRule;
        std::vector<Entity*> list;
        std::size_t iListed;
        Lines lines;
    } rows[] = {
        {"each", {pOf(2), pOf(3), pOf(1)}, 3, {p2, p3, p1}},
        {"twice", {pOf(3), pOf(2), pOf(3), pOf(1)}, 2, {p3, p2, p1}},
        {"null", {pOf(3), nullptr, pOf(1)}, 1, {p3, p1}},
        {"none", {}, 0, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        Lines lines = row.lines;
        lines.push_back("#4=IFCPOINT((4.));");
        for (const bool boSingleThreaded : {true, false}) {
            const WriteFile::Seed seed = [&](StepWriteInfoCommon& info) {
                info.vQueueAll(row.list, true);
                EXPECT_EQ(info.m_listed.size(), row.iListed);
                EXPECT_FALSE(info.boAllMet()) << "#4 is not in the list";
                info.iEntityIdQueue(pOf(4));
            };
            const Written result = written(
                [&](auto& out, auto& errors) { return WriteFile::boWrite(data, seed, out, errors, boSingleThreaded); });
            EXPECT_TRUE(result.boResult);
            EXPECT_THAT(linesOf(result.text), UnorderedElementsAreArray(lines));
            if (boSingleThreaded) {
                EXPECT_EQ(linesOf(result.text), lines);
            }
        }
    }
}

// A seed may write lines of its own, for instance comments.
TEST(WriteData, PutsNoEmptyLineBetweenStatementsOfThreads) {
    const ReadFileModel model = modelOf("#1=IFCPOINT((1.));");
    const WriteFile::Seed seed = [&model](StepWriteInfoCommon& info) {
        std::string sLine;
        info.m_pWriter->iLineAdd(sLine, 0);
        sLine = "/* a comment */";
        info.m_pWriter->iLineAdd(sLine, 0);
        info.iEntityIdGet(model.file.data().pEntityFromId(1));
    };
    const Written result = written(
        [&](auto& out, auto& errors) { return WriteFile::boWrite(model.file.data(), seed, out, errors, false); });
    EXPECT_TRUE(result.boResult);
    EXPECT_THAT(linesOf(result.text), UnorderedElementsAreArray(Lines{"/* a comment */", "#1=IFCPOINT((1.));"}));
}

// A null among the members of a relationship has no number, on whatever thread.
TEST(WriteData, LeavesNullMembersOut) {
    ReadFileModel model = modelOf(g_sProject + "#2=IFCELEMENT('" + sGuidOf(1) + "',$,$,.GREEN.);#3=IFCRELLINK('" +
                                  sGuidOf(2) + "',$,#1,(#2));");
    Data& data = model.file.data();
    Entity* pLink = data.pEntityFromId(3);
    const auto [pAttribute, pCell] = pLink->pAttributeFromIndex(3);
    const AssertLog log;
    EXPECT_TRUE(
        static_cast<AttributeList*>(pCell)->boPushBackValue(static_cast<const Entity*>(nullptr), *pAttribute, data));
    for (const bool boSingleThreaded : {true, false}) {
        const Written result = entityOf(data, pLink, boSingleThreaded);
        EXPECT_THAT(linesOf(result.text), testing::Contains("#3=IFCRELLINK('" + sGuidOf(2) + "',$,#1,(#2));"));
    }
    EXPECT_EQ(log.texts(), std::vector<std::string>(2, "Skipping invalid reference in list"));
}

TEST(WriteData, WritesNothingWhereThereIsNothing) {
    const Data empty;
    const Written all = dataOf(empty);
    EXPECT_FALSE(all.boResult);
    EXPECT_EQ(all.text, "");
    for (const bool boSingleThreaded : {true, false}) {
        const Written none = entityOf(empty, nullptr, boSingleThreaded);
        EXPECT_FALSE(none.boResult);
        EXPECT_EQ(none.text, "");
    }
    const Written seeded = written([&](auto& out, auto& errors) {
        return WriteFile::boWrite(
            empty, [](StepWriteInfoCommon&) {}, out, errors, true);
    });
    EXPECT_FALSE(seeded.boResult);
    EXPECT_EQ(seeded.text, "");
}

// The consumer is running by the time that shows, and nobody has told it to end.
TEST(WriteDataDeathTest, EndsTheProcessForNothingOnThreads) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(static_cast<void>(dataOf(Data{}, false)), "terminate");
}

TEST(WriteData, SkipsSlotsThatNothingDefined) {
    ReadFileModel model = modelOf("#1=IFCPROPERTY('a',#7,(),$);");
    Data& data = model.file.data();
    const auto [pAttribute, pCell] = data.pEntityFromId(1)->pAttributeFromIndex(1);
    const auto* pMissing =
        static_cast<const AttributeEntity*>(static_cast<const AttributeSelect*>(pCell)->m_pValue.load())
            ->m_value.load();
    ASSERT_EQ(pMissing->pSchemaEntity(), nullptr);
    EXPECT_EQ(pMissing->sWriteLine(data), "");
    for (const bool boSingleThreaded : {true, false}) {
        const Written result = entityOf(data, pMissing, boSingleThreaded);
        EXPECT_TRUE(result.boResult) << "it was queued";
        EXPECT_EQ(result.text, "");
    }
    // A number that was never defined is dealt one that is free to be another entity's: the format has no other way.
    EXPECT_EQ(linesOf(dataOf(data).text), Lines{"#1=IFCPROPERTY('a',#2,(),$);"});
}

TEST(WriteNumbers, KeepsThoseOfTheFile) {
    const ReadFileModel kept = modelOf("#70000=IFCPOINT((1.));#0=IFCPOINT((2.));#5=IFCPROPERTY('a',#70000,(),$);");
    EXPECT_THAT(linesOf(dataOf(kept.file.data()).text),
                UnorderedElementsAreArray(
                    Lines{"#70000=IFCPOINT((1.));", "#0=IFCPOINT((2.));", "#5=IFCPROPERTY('a',#70000,(),$);"}));
}

TEST(WriteNumbers, DealsThemInTheOrderOfTheWalk) {
    const ReadFileModel model = modelOf("#70=IFCPROPERTY('a',#90,(),$);#80=IFCPOINT((8.));#90=IFCPOINT((9.));", false);
    const auto& data = model.file.data();
    const Entity* pProperty = data.entities().back();
    EXPECT_EQ(entityOf(data, pProperty).text, "#1=IFCPROPERTY('a',#2,(),$);\n#2=IFCPOINT((9.));\n");
    EXPECT_THAT(linesOf(dataOf(data).text), UnorderedElementsAreArray(Lines{"#3=IFCPOINT((8.));", "#2=IFCPOINT((9.));",
                                                                            "#1=IFCPROPERTY('a',#2,(),$);"}))
        << "the next write keeps them";
    static_cast<void>(data.entityIdMap(true));
    EXPECT_EQ(dataOf(data).text, "#1=IFCPOINT((8.));\n#2=IFCPOINT((9.));\n#3=IFCPROPERTY('a',#2,(),$);\n");
}

TEST(WriteNumbers, StayWithNewEntities) {
    ReadFileModel model = modelOf("#1=IFCPOINT((1.));#2=IFCPOINT((2.));");
    Entity* pNew = model.file.data().pEntityCreate(def::schema::ObjectName("IFCPOINT"));
    ASSERT_NE(pNew, nullptr);
    for (int i = 0; i < 2; ++i) {
        const Written result = entityOf(model.file.data(), pNew);
        EXPECT_EQ(result.text, "#3=IFCPOINT($);\n");
        EXPECT_EQ(result.records.size(), 1U) << "a mandatory attribute has no value";
    }
}

TEST(WriteProgress, CountsEveryEntityOfASingleThreadedWrite) {
    const ReadFileModel model(sSmallFile(30), true, schemaIs(smallSchema()));
    std::vector<unsigned> calls;
    const Written result = fileOf(model.file, true, [&calls](unsigned iCount) { calls.push_back(iCount); });
    std::vector<unsigned> expected(1 + 3 * 30);   // project, points, elements, links; nothing reaches a property
    std::iota(expected.begin(), expected.end(), 1U);
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(linesOf(result.text).size(), expected.size() + 9);
}

TEST(WriteProgress, RisesOnTheCallersThread) {
    const ReadFileModel model(sSmallFile(300), true, schemaIs(smallSchema()));
    std::vector<unsigned> calls;
    const auto caller = std::this_thread::get_id();
    fileOf(model.file, false, [&](unsigned iCount) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_TRUE(calls.empty() || calls.back() < iCount);
        calls.push_back(iCount);
    });
    EXPECT_TRUE(calls.empty() || calls.back() <= 901U);
}

TEST(WriteThreads, GiveTheSameLines) {
    const ReadFileModel model(sSmallFile(700), true, schemaIs(smallSchema()));
    Lines expected = linesOf(fileOf(model.file).text);
    EXPECT_EQ(linesOf(fileOf(model.file).text), expected) << "a single-threaded write repeats itself";
    std::ranges::sort(expected);
    for (int i = 0; i < 10; ++i) {
        Lines lines = linesOf(fileOf(model.file, false).text);
        std::ranges::sort(lines);
        EXPECT_EQ(lines, expected);
    }
}

TEST(WriteThreads, HandLinesOverWithTheirNumbers) {
    const ReadFileModel model(sSmallFile(200), true, schemaIs(smallSchema()));
    for (const bool boSingleThreaded : {true, false}) {
        RecordingWriter writer;
        WriteError errors;
        EXPECT_TRUE(model.file.data().boWrite(writer, errors, {}, boSingleThreaded));
        EXPECT_EQ(writer.m_iFinished, 1);
        EXPECT_EQ(writer.m_lines.size(), 601U);
        for (const auto& [sLine, iId] : writer.m_lines)
            EXPECT_TRUE(sLine.starts_with('#' + std::to_string(iId) + '=') && sLine.ends_with(");")) << sLine;
        if (boSingleThreaded) {
            EXPECT_THAT(writer.m_threads, ElementsAre(std::this_thread::get_id()));
        }
    }
}

TEST(WriteThreads, ReportFromAllOfThem) {
    std::string statements;
    for (int i = 1; i <= 500; ++i) statements += '#' + std::to_string(i) + "=IFCPOINT($);";
    const ReadFileModel model = modelOf(statements);
    const Written single = dataOf(model.file.data());
    EXPECT_EQ(single.records.size(), 500U);
    const Written threaded = dataOf(model.file.data(), false);
    EXPECT_EQ(threaded.records, single.records);
    EXPECT_TRUE(threaded.boResult);
}

// Longer than the stream's buffer, and around its end.
TEST(LineWriter, LeavesLongStatementsUnbroken) {
    std::string statements;
    Lines expected;
    std::size_t iId = 0;
    for (const std::size_t iText :
         {16340U, 16350U, 16360U, 16361U, 16362U, 16363U, 16364U, 16365U, 32768U, 100'000U, 3U}) {
        expected.push_back('#' + std::to_string(++iId) + "=IFCPROPERTY('" + std::string(iText, 'x') + "',$,(),$);");
        statements += expected.back();
    }
    const ReadFileModel model = modelOf(statements);
    EXPECT_EQ(linesOf(dataOf(model.file.data()).text), expected);
    EXPECT_THAT(linesOf(dataOf(model.file.data(), false).text), UnorderedElementsAreArray(expected));
}

TEST(LineWriter, CountsItsLines) {
    std::ostringstream out;
    {
        IfcSingleThreadedLineWriter writer(out);
        std::string line = "#1=A();";
        EXPECT_EQ(writer.iLineAdd(line, 1), 1U);
        line = "#7=B();";
        EXPECT_EQ(writer.iLineAdd(line, 7), 2U);
        writer.vFinish();
        EXPECT_EQ(out.str(), "") << "in the buffer";
        writer.vBufferFlush();
        EXPECT_EQ(out.str(), "#1=A();\n#7=B();\n");
    }
    EXPECT_EQ(out.str(), "#1=A();\n#7=B();\n");
}

TEST(LineWriter, DoesNotNoticeAFailingStream) {
    const ReadFileModel model(sSmallFile(100), true, schemaIs(smallSchema()));
    for (const bool boSingleThreaded : {true, false}) {
        std::ostringstream out;
        out.setstate(std::ios::badbit);
        WriteError errors;
        EXPECT_TRUE(model.file.boWrite(out, errors, {}, boSingleThreaded));
        EXPECT_TRUE(errors.records().empty());
        EXPECT_TRUE(out.bad());
    }
}

// 8-bit bytes of a file are kept as they came, whether or not they are UTF-8; no thread may stumble over them.
TEST(WriteFile, WritesTextsThatAreNoUtf8) {
    std::string statements = g_sProject;
    for (int i = 2; i <= 3000; ++i) statements += '#' + std::to_string(i) + "=IFCPROPERTY('\xC3(\x80',$,(),$);";
    const ReadFileModel model = modelOf(statements);
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        const Lines lines = linesOf(dataOf(model.file.data(), boSingleThreaded).text);
        ASSERT_EQ(lines.size(), 3000U);
        EXPECT_EQ(std::ranges::count_if(lines,
                                        [](const std::string& sLine) {
                                            return sLine.ends_with("=IFCPROPERTY('\\X\\C3(\\X\\80',$,(),$);");
                                        }),
                  2999);
    }
}

// What the caller's own functions throw comes out of the write, once its threads are gone.
TEST(WriteFile, PassesTheCallersExceptionsOn) {
    const ReadFileModel model(sSmallFile(700), true, schemaIs(smallSchema()));
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        bool boCalled = false;   // beside others the caller's thread may find nothing to do
        try {
            fileOf(model.file, boSingleThreaded, [&boCalled](unsigned) {
                boCalled = true;
                throw std::runtime_error("enough");
            });
            EXPECT_FALSE(boCalled || boSingleThreaded);
        } catch (const std::runtime_error&) {
            EXPECT_TRUE(boCalled);
        }

        struct Full final : std::streambuf {
            std::streamsize xsputn(const char*, std::streamsize) override { throw std::runtime_error("disk full"); }
        } full;
        std::ostream out(&full);
        out.exceptions(std::ios::badbit);
        WriteError errors;
        EXPECT_THROW(static_cast<void>(model.file.data().boWrite(out, errors, boSingleThreaded)), std::runtime_error);
    }
}

TEST(ComposedStatements, ComeInBlocksWhereAskedFor) {
    const ReadFileModel model(sSmallFile(30), true, schemaIs(smallSchema()));
    Lines expected = linesOf(fileOf(model.file).text);
    expected.erase(expected.begin(), std::ranges::find(expected, "DATA;") + 1);
    expected.resize(expected.size() - 2);   // the frame's end
    struct {
        std::size_t iBlock;
        std::size_t iTextsAtLeast;
        std::size_t iTextsAtMost;
    } rows[] = {{0, 91, 91}, {1, 91, 91}, {200, 2, 90}, {1000000, 1, 1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.iBlock);
        ThreadStringPool pool;
        Lines lines;
        std::size_t iTexts = 0;
        std::thread consumer([&] {
            for (std::string sText; pool.boTakeWait(sText); ++iTexts)
                for (std::string& sLine : linesOf(sText)) lines.push_back(std::move(sLine));
        });
        WriteError errors;
        StepWriteInfoCommon info(model.file.data().entityIdMap(false), errors, pool, true);
        info.m_iBlockSize = row.iBlock;
        info.iEntityIdGet(model.file.data().pProject());
        model.file.data().vWrite(info, {});
        consumer.join();
        EXPECT_THAT(lines, UnorderedElementsAreArray(expected));
        EXPECT_GE(iTexts, row.iTextsAtLeast);
        EXPECT_LE(iTexts, row.iTextsAtMost);
    }
}

TEST(StringPool, IsAStackThatSwapsTexts) {
    ThreadStringPool pool;
    std::string text;
    EXPECT_EQ(pool.take(text), ThreadStringPool::Take::Nothing);
    for (unsigned i = 1; i <= 3; ++i) {
        text = "line " + std::to_string(i) + std::string(100, '.');
        const char* pBytes = text.data();
        EXPECT_EQ(pool.iLineAdd(text, i), i);
        EXPECT_NE(text.data(), pBytes) << "the caller gets another buffer";
    }
    pool.vFinish();
    for (unsigned i = 3; i >= 1; --i) {
        EXPECT_EQ(pool.take(text), ThreadStringPool::Take::Line) << "also after the end";
        EXPECT_EQ(text, "line " + std::to_string(i) + std::string(100, '.'));
    }
    EXPECT_EQ(pool.take(text), ThreadStringPool::Take::Finished);
}

TEST(StringPool, GivesTheOnlyTextToWhoWaits) {
    ThreadStringPool pool;
    std::string text = "one";
    EXPECT_EQ(pool.iLineAdd(text, 1), 1U);
    EXPECT_TRUE(pool.boTakeWait(text));
    EXPECT_EQ(text, "one");
    pool.vFinish();
    EXPECT_FALSE(pool.boTakeWait(text));
}

TEST(StringPool, HasAProducerWaitWhenItIsFull) {
    ThreadStringPool pool;
    std::string text;
    for (unsigned i = 1; i <= ThreadStringPool::g_iLines; ++i) {
        text = std::to_string(i);
        EXPECT_EQ(pool.iLineAdd(text, i), i);
    }
    std::atomic<bool> boAdded{false};
    std::thread producer([&] {
        std::string sLast = "last";
        EXPECT_EQ(pool.iLineAdd(sLast, 99), 15U);
        boAdded = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(boAdded);
    EXPECT_EQ(pool.take(text), ThreadStringPool::Take::Line);
    EXPECT_EQ(text, "15");
    producer.join();
    EXPECT_EQ(pool.take(text), ThreadStringPool::Take::Line);
    EXPECT_EQ(text, "last");
}

}   // namespace
}   // namespace oxa::ifc::io
