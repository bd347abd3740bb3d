// SPDX-License-Identifier: Apache-2.0
// Writes on several threads, of models of every shape: the statements that the caller's thread alone would write, each
// once, in an order byte for byte; whatever the stream, the seed and the callers beside it do.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <stdexcept>

#include "Format/Ifc/AssertLog.h"
#include "Format/Ifc/OnThreads.h"
#include "Format/Ifc/ReadResult.h"
#include "Format/Ifc/Write/WrittenShapes.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;

TEST(WriteTogether, SaysTheSameOfEveryShape) {
    bool boReadSingleThreaded = false;
    for (const Shape& shape : shapes(2500)) vExpectShape(shape, boReadSingleThreaded = !boReadSingleThreaded);
}

// Around what threads may take, hand over or count at a time.
TEST(WriteTogether, SaysTheSameOfEverySize) {
    for (const std::size_t iNodes : {1U, 2U, 3U, 10U, 11U, 15U, 16U, 63U, 64U, 65U, 255U, 256U}) {
        SCOPED_TRACE(iNodes);
        for (const Shape& shape : shapes(iNodes)) vExpectShape(shape, true);
    }
}

// A line writer gets each by itself, with its number, from whatever thread.
TEST(WriteTogether, HandsEachStatementOverOnce) {
    for (const Shape& shape : shapes(600)) {
        SCOPED_TRACE(shape.sRule);
        const ReadFileModel model = graphOf(allOf(shape));
        const Statements statements(shape.reached);
        for (const Way& way : g_ways) {
            SCOPED_TRACE(sShown(way));
            RecordingWriter writer;
            WriteError errors;
            EXPECT_TRUE(model.file.data().boWrite(writer, errors,
                                                  {.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder}));
            EXPECT_EQ(writer.m_iFinished, 1);
            std::string sText;
            for (const auto& [sLine, iId] : writer.m_lines) {
                EXPECT_EQ(iNumberOf(sLine), iId);
                sText.append(sLine).push_back('\n');
            }
            EXPECT_EQ(statements.sUnlike(sText), "");
            if (way.eOrder != WriteOrder::Any) {
                EXPECT_EQ(sDifference(sText, statements.sByNumber()), "") << "a file that is not known: numbers";
            }
        }
    }
}

// Neither a reference nor an inverse list on the way may need stack.
TEST(WriteTogether, FollowsAWayOfAnyLength) {
    const Lines ways[] = {
        chain(30'000, [](std::size_t i) { return 30'001 - i; }),
        linked(15'000,
               [](std::size_t iGroup, std::size_t i) { return sStatement(iGroup, "GROUP", sListTo(i, i + 1)); }),
    };
    for (const Lines& lines : ways) {
        const Statements statements(lines);
        const ReadFileModel model = graphOf(lines);
        EXPECT_EQ(statements.sUnlike(dataPart(fileOf(model.file, g_together)).text), "");
        EXPECT_EQ(
            sDifference(dataPart(fileOf(model.file, {.eOrder = WriteOrder::Number})).text, statements.sByNumber()), "");
    }
}

TEST(WriteTogether, FollowsWhatWasDeletedAndIsStillNamed) {
    constexpr std::size_t g_iNodes = 2000;
    ReadFileModel model = graphOf([] {
        Lines lines = tree(g_iNodes, 2);
        for (std::size_t i = 10'000; i < 11'000; ++i)
            lines.push_back(sNode(i, (i < 10'999 ? sTo(i + 1) : "$") + ",$,$"));
        return lines;
    }());
    Data& data = model.file.data();
    std::vector<std::size_t> left = numbersFrom(1, g_iNodes + 1);
    std::erase_if(left, [&](std::size_t i) { return i % 3 == 0 && data.boEntityDelete(data.pEntityFromId(i)); });
    EXPECT_EQ(left.size(), g_iNodes + 1 - 667);
    for (std::size_t i = 10'000; i < 11'000; i += 2) EXPECT_TRUE(data.boEntityDelete(data.pEntityFromId(i)));
    const Lines inFile = tree(g_iNodes, 2);
    Lines inData = inFile;
    std::vector<std::size_t> allLeft = left;
    for (std::size_t i = 10'001; i < 11'000; ++i) {   // nothing names the first one
        inData.push_back(sNode(i, (i < 10'999 ? sTo(i + 1) : "$") + ",$,$"));
        if (i % 2 == 1) allLeft.push_back(i);
    }
    const Statements file(inFile);
    const Statements all(inData);
    for (const Way& way : g_ways) {
        SCOPED_TRACE(sShown(way));
        std::vector<std::size_t> numbers;
        const WriteOptions options{
            .boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder, .pWritten = &numbers};
        EXPECT_EQ(file.sUnlike(dataPart(fileOf(model.file, options)).text), "");
        EXPECT_TRUE(numbers == left) << "what is in the list";
        EXPECT_EQ(all.sUnlike(dataOf(data, options).text), "");
        EXPECT_TRUE(numbers == allLeft) << "what is in the list";
    }
}

TEST(WriteTogether, LeavesNullsOutOfListsAndTellsEachOnce) {
    constexpr std::size_t g_iNodes = 900;
    const Lines lines = tree(g_iNodes, 3);
    ReadFileModel model = graphOf(lines);
    Data& data = model.file.data();
    Lines expected = lines;
    for (std::size_t i = 0; i < g_iNodes; ++i) {
        std::vector<Entity*> others;
        data.pEntityFromId(i + 2)->boListValueGet(AttributeName("Others"), others);
        std::vector<const Entity*> withNulls = {nullptr};
        for (const Entity* pOther : others) withNulls.insert(withNulls.end(), {pOther, nullptr});
        EXPECT_TRUE(data.pEntityFromId(i + 2)->boListValueSet(AttributeName("Others"), withNulls, data));
        if (others.empty()) expected[i + 1] = sNode(i + 2, "$,(),$");
    }
    const Statements statements(expected);
    for (const Way& way : g_ways) {
        SCOPED_TRACE(sShown(way));
        const AssertLog log;
        const WriteOptions options{.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder};
        EXPECT_EQ(statements.sUnlike(dataPart(fileOf(model.file, options)).text), "");
        EXPECT_EQ(log.texts(), std::vector<std::string>(2 * g_iNodes - 1, "Skipping invalid reference in list"));
    }
}

TEST(WriteTogether, HasRoomForLargeStatements) {
    Lines lines = tree(2000, 5);
    for (const std::size_t i : {2U, 3U, 700U, 1400U, 1999U, 2001U}) {
        std::string& sLine = lines[i - 1];
        if (i % 2 == 0)   // a text of some megabytes
            sLine.replace(sLine.size() - 3, 1, "IFCLABEL('" + std::string(i * 3000, 'x') + "')");
        else   // a hundred and twenty thousand references
            sLine = sNode(i, "$," + sListTo(2, 2001, 60) + ",$");
    }
    const ReadFileModel model = graphOf(lines);
    const Statements statements(lines);
    EXPECT_GT(statements.sByNumber().size(), 7'000'000U);
    vExpectFile(model.file, statements);
}

// Every kind of fault, many times.
TEST(WriteTogether, TellsAsMuchAsOneThread) {
    constexpr std::size_t g_iNodes = 3000;
    constexpr std::size_t g_iOfEach = 500;
    std::string sText = "#1=IFCPROJECT('1',#2);\n#2=IFCNODE('2',$," + sListTo(10, g_iNodes + 9) + ",$);\n";
    for (std::size_t i = 10; i < g_iNodes + 10; ++i) {
        const std::string sFaults[] = {"$,#2,$,$,$,$,$",       "'a',$,$,$,$,$,$", "'a',$,$,$,$,$,($,IFCLABEL('b'),$)",
                                       "'a',#2,$,$,.RED.,$,$", "'a',$,$,$,$,$,$", "'a',$,$,$,$,$,$"};
        sText += sTo(i) + "=IFCMARKED(" + sFaults[i % 6] + ");\n";
    }
    ReadFileModel model(sFileOf(sText), true, schemaIs(graphSchema()));
    Data& data = model.file.data();
    for (std::size_t i = 10; i < g_iNodes + 10; ++i) {
        Entity* pNode = data.pEntityFromId(i);
        if (i % 6 == 1) {
            static_cast<AttributeEnumeration*>(pNode->pAttributeFromIndex(4).second)->m_value = "BLUE";
            pNode->pAttributeFromIndex(4).second->m_boUndefined = false;
        }
        if (i % 6 == 4) pNode->pAttributeFromIndex(1).second->m_boUndefined = false;   // a reference to nothing
        if (i % 6 == 5) pNode->pAttributeFromIndex(5).second->m_boUndefined = false;   // a null GUID
    }
    const auto reportsOf = [&](const Way& way) {
        std::ostringstream out;
        WriteError errors;
        EXPECT_TRUE(model.file.boWrite(out, errors, {.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder}));
        EXPECT_TRUE(errors.boFatal());
        std::map<std::string, std::size_t> counts;
        for (const ErrorRecord& record : errors.records())
            ++counts[(record.severity == Errors::Fatal ? "Fatal " : "Error ") + std::string(record.key.value_or("?"))];
        EXPECT_EQ(counts, (std::map<std::string, std::size_t>{{"Fatal Error_InvalidNullAttribute", 3 * g_iOfEach},
                                                              {"Error Error_InvalidNullAttribute", g_iOfEach},
                                                              {"Error Error_NotValidEnumerationValue", g_iOfEach},
                                                              {"Fatal Error_ExpectedValidGuidValueFor", g_iOfEach}}));
        std::vector<std::string> rows = rowsOf(errors);
        std::ranges::sort(rows);
        return rows;
    };
    const std::vector<std::string> expected = reportsOf(g_ways[0]);
    for (const Way& way : g_ways) EXPECT_TRUE(reportsOf(way) == expected) << sShown(way);
}

TEST(WriteTogether, CountsOnTheCallersThreadAlone) {
    for (const Shape& shape : shapes(1000)) {
        SCOPED_TRACE(shape.sRule);
        const ReadFileModel model = graphOf(shape.reached);
        for (const Way& way : g_ways) {
            SCOPED_TRACE(sShown(way));
            const auto caller = std::this_thread::get_id();
            unsigned iLast = 0;
            fileOf(model.file, {.boSingleThreaded = way.boSingleThreaded,
                                .progress =
                                    [&](unsigned iCount) {
                                        EXPECT_EQ(std::this_thread::get_id(), caller);
                                        EXPECT_GT(iCount, iLast);
                                        iLast = iCount;
                                    },
                                .eOrder = way.eOrder});
            EXPECT_LE(iLast, shape.reached.size());
            if (way.boSingleThreaded) {
                EXPECT_EQ(iLast, shape.reached.size());
            }
        }
    }
}

TEST(WriteTogether, BeginsWithWhatASeedQueues) {
    constexpr std::size_t g_iNodes = 4000;
    Lines lines = chain(g_iNodes, [](std::size_t i) { return i + 2; });
    lines.push_back(sNode(g_iNodes + 2, "#88888,$,$"));   // which has no statement
    const ReadFileModel model = graphOf(lines);
    const Data& data = model.file.data();
    Entity* pMissing = nullptr;
    EXPECT_TRUE(data.pEntityFromId(g_iNodes + 2)->boValueGet(AttributeName("Next"), pMissing));
    const auto vNulls = [](StepWriteInfoCommon& info, std::size_t iCount) {
        for (; iCount > 0; --iCount) info.m_queue.push_back(nullptr);
    };
    const struct {
        const char* sRule;
        WriteFile::Seed seed;
        std::size_t iFirst;   // of the nodes that are written, from there to the end of the chain
    } rows[] = {
        {"nulls alone", [&](auto& info) { vNulls(info, 5000); }, g_iNodes + 2},
        {"one that is not defined", [&](auto& info) { info.iEntityIdGet(pMissing); }, g_iNodes + 2},
        {"one, behind many nulls",
         [&](auto& info) {
             vNulls(info, 5000);
             info.iEntityIdGet(data.pEntityFromId(3000));
         },
         3000},
        {"one, before many nulls",
         [&](auto& info) {
             info.iEntityIdGet(data.pEntityFromId(3000));
             vNulls(info, 5000);
         },
         3000},
        {"every one twice, from the last on, nulls and missing ones between them",
         [&](auto& info) {
             for (std::size_t i = g_iNodes + 1; i > 1; --i) {
                 EXPECT_EQ(info.iEntityIdGet(data.pEntityFromId(i)), i);
                 vNulls(info, i % 3);
                 EXPECT_EQ(info.iEntityIdGet(data.pEntityFromId(i)), i);
                 info.iEntityIdGet(pMissing);
                 EXPECT_EQ(info.iEntityIdGet(nullptr), 0U);
             }
         },
         2},
        {"every tenth one",
         [&](auto& info) {
             for (std::size_t i = 12; i < g_iNodes + 2; i += 10) info.iEntityIdGet(data.pEntityFromId(i));
         },
         12},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        const Statements statements(
            Lines(lines.begin() + static_cast<std::ptrdiff_t>(row.iFirst) - 1, lines.begin() + g_iNodes + 1));
        for (const bool boSingleThreaded : {true, false, false, false, false}) {
            std::vector<std::thread::id> calls;
            const WriteFile::Seed seed = [&](StepWriteInfoCommon& info) {
                calls.push_back(std::this_thread::get_id());
                row.seed(info);
            };
            const Written result = written(
                [&](auto& out, auto& errors) { return WriteFile::boWrite(data, seed, out, errors, boSingleThreaded); });
            EXPECT_TRUE(result.boResult);
            EXPECT_EQ(statements.sUnlike(result.text), "");
            EXPECT_EQ(calls, std::vector<std::thread::id>{std::this_thread::get_id()});
        }
    }
}

// One instance and what it leads to, of which there may be all, some or nothing but itself.
TEST(WriteTogether, BeginsWithAnyInstance) {
    constexpr std::size_t g_iNodes = 3000;
    const Lines lines = chain(g_iNodes, [](std::size_t i) { return g_iNodes + 1 - i; });   // the last is #2
    const ReadFileModel model = graphOf(lines);
    for (const std::size_t iFirst : {2U, 3U, 12U, 500U, 3001U}) {
        SCOPED_TRACE(iFirst);
        vExpectData(model.file.data(),
                    Statements(Lines(lines.end() - static_cast<std::ptrdiff_t>(iFirst) + 1, lines.end())),
                    model.file.data().pEntityFromId(iFirst));
    }
}

// Takes so many bytes.
struct Disk final : std::streambuf {
    explicit Disk(std::size_t iRoom) : m_iRoom(iRoom) {}
    std::streamsize xsputn(const char* pBytes, std::streamsize iCount) override {
        const std::size_t iTaken = std::min(static_cast<std::size_t>(iCount), m_iRoom - m_text.size());
        m_text.append(pBytes, iTaken);
        if (iTaken < static_cast<std::size_t>(iCount)) throw std::runtime_error("disk full");
        return iCount;
    }
    std::size_t m_iRoom;
    std::string m_text;
};

// Up to there all is well, the caller learns of it, and the next write is whole: the model is as before.
TEST(WriteTogether, EndsWhereTheStreamThrows) {
    const Lines lines = tree(5000, 7);
    const Statements statements(lines);
    const std::string sByNumber = statements.sByNumber();
    const ReadFileModel model = graphOf(lines);
    const Data& data = model.file.data();
    for (const std::size_t iRoom :
         {std::size_t{0}, std::size_t{1}, std::size_t{16383}, std::size_t{16384}, std::size_t{16385},
          std::size_t{65535}, sByNumber.size() / 2, sByNumber.size() - 1, sByNumber.size()})
        for (const Way& way : g_ways)
            for (const bool boThrows : {true, false}) {
                SCOPED_TRACE(std::to_string(iRoom) + " bytes, " + sShown(way));
                const WriteOptions options{.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder};
                Disk disk(iRoom);
                std::ostream out(&disk);
                if (boThrows) out.exceptions(std::ios::badbit);
                WriteError errors;
                const bool boFull = iRoom < sByNumber.size();
                if (boFull && boThrows)
                    EXPECT_THROW(static_cast<void>(WriteFile::boWrite(data, nullptr, out, errors, options)),
                                 std::runtime_error);
                else
                    EXPECT_TRUE(WriteFile::boWrite(data, nullptr, out, errors, options));
                EXPECT_EQ(out.bad(), boFull);
                EXPECT_EQ(disk.m_text.size(), iRoom);
                EXPECT_EQ(statements.sUnlike(disk.m_text, boFull), "");
                if (way.eOrder != WriteOrder::Any) {
                    EXPECT_EQ(sDifference(disk.m_text, sByNumber.substr(0, iRoom)), "");
                }
            }
    vExpectData(data, statements);
}

// What was dealt before the end stays; what was not is dealt by the next write.
TEST(WriteTogether, IsWholeAfterOneThatWasBrokenOff) {
    const Lines lines = tree(3000, 4);
    const Statements statements(lines);
    const ReadFileModel model = graphOf(lines, false);
    const Data& data = model.file.data();
    const std::function<void(WriteOptions)> breaks[] = {
        [&](const WriteOptions& options) {
            Disk disk(20'000);
            std::ostream out(&disk);
            out.exceptions(std::ios::badbit);
            WriteError errors;
            EXPECT_THROW(static_cast<void>(model.file.boWrite(out, errors, options)), std::runtime_error);
        },
        [&](WriteOptions options) {
            options.progress = [](unsigned) { throw std::runtime_error("enough"); };
            try {
                fileOf(model.file, options);
            } catch (const std::runtime_error&) {   // unless the caller's thread found nothing to do
            }
        },
        [&](const WriteOptions& options) {
            const WriteFile::Seed seed = [&](StepWriteInfoCommon& info) {
                for (const Entity* pEntity : data.entities()) info.iEntityIdGet(pEntity);
                throw std::runtime_error("enough");
            };
            std::ostringstream out;
            WriteError errors;
            EXPECT_THROW(WriteFile::boWrite(data, seed, out, errors, options.boSingleThreaded), std::runtime_error);
            EXPECT_EQ(out.str(), "");
        },
    };
    for (const auto& vBreak : breaks)
        for (const Way& way : g_ways) {
            SCOPED_TRACE(sShown(way) + ", break " + std::to_string(&vBreak - breaks));
            static_cast<void>(data.entityIdMap(true));
            vBreak({.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder});
            const std::string sText = dataPart(fileOf(model.file, g_together)).text;
            EXPECT_EQ(statements.sUnlike(sRenumbered(sText)), "");
            EXPECT_TRUE(numbersIn(sText) == numbersFrom(1, lines.size()));
        }
}

// A stream that is slower than who composes, at first, at times or always.
TEST(WriteTogether, WaitsForASlowStream) {
    struct Slow final : std::stringbuf {
        explicit Slow(int iRule) : m_iRule(iRule) {}
        std::streamsize xsputn(const char* pBytes, std::streamsize iCount) override {
            if (m_iRule == 0 ? m_iCalls == 0 : m_iCalls % m_iRule == 0)
                std::this_thread::sleep_for(m_iRule == 0 ? std::chrono::milliseconds(20)
                                                         : std::chrono::milliseconds(1));
            ++m_iCalls;
            return std::stringbuf::xsputn(pBytes, iCount);
        }
        int m_iRule;
        int m_iCalls = 0;
    };
    const Lines lines = rings(2500);
    const ReadFileModel model = graphOf(lines);
    const Statements statements(lines);
    for (const int iRule : {0, 1, 3}) {
        SCOPED_TRACE(iRule);
        vExpectWrites(
            [&](const WriteOptions& options) {
                Slow bytes(iRule);
                std::ostream out(&bytes);
                WriteError errors;
                Written result;
                result.boResult = WriteFile::boWrite(model.file.data(), nullptr, out, errors, options);
                result.text = bytes.str();
                return result;
            },
            statements);
    }
}

// Models have nothing in common but the schema.
TEST(WriteTogether, KnowsNothingOfWritesBesideIt) {
    const std::vector<Shape> all = shapes(250);
    vOnThreads(4, [&all](std::size_t iThread) {
        for (std::size_t i = 0; i < all.size(); ++i)
            vExpectShape(all[(i + 4 * iThread) % all.size()], iThread % 2 == 0);
    });
}

}   // namespace
}   // namespace oxa::ifc::io
