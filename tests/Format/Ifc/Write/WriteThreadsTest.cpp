// SPDX-License-Identifier: Apache-2.0
// Writes on several threads: how many there are, and what none of them may lose, double or wait for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "Format/Ifc/WrittenText.h"
#include "platform/Utilities.h"
#include "system/System.h"

namespace {

std::atomic<unsigned> g_iHardware{0};   // what the machine is said to have; 0: what it has
std::atomic<bool> g_boHardware{false};

}   // namespace

// In place of the library's: how many threads a write starts depends on the machine, and there is but one here.
unsigned std::thread::hardware_concurrency() noexcept {
    return g_boHardware ? g_iHardware.load() : oxa::test::iProcessors();
}

namespace oxa::ifc::io {
namespace {

using testing::UnorderedElementsAreArray;

class Hardware {
public:
    explicit Hardware(unsigned iThreads) {
        g_iHardware = iThreads;
        g_boHardware = true;
    }
    ~Hardware() { g_boHardware = false; }
    Hardware(const Hardware&) = delete;
    Hardware& operator=(const Hardware&) = delete;
};

// Threads beside the caller's that a write of these entities starts.
std::size_t iExtraThreadsOf(std::size_t iEntities, std::size_t iBefore, std::size_t iExpected) {
    std::string statements = g_sProject;
    for (std::size_t i = 2; i <= iEntities; ++i) statements += '#' + std::to_string(i) + "=IFCPOINT((1.));";
    const ReadFileModel model = modelOf(statements);
    const Data& data = model.file.data();
    RecordingWriter writer;
    WriteError errors;
    StepWriteInfoCommon info(data.entityIdMap(false), errors, writer, false);
    // While the queue is locked, all composing threads are there and wait for it.
    std::promise<void> locked;
    std::size_t iDuring = 0;
    std::thread helper([&] {
        const std::lock_guard lock(info.m_mutex);
        locked.set_value();
        const auto count = [&] { return test::iThreadsNow() - 1; };   // this one aside
        for (int i = 0; i < 10'000 && count() < iBefore + iExpected; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(5));   // for one too many
        iDuring = count();
        info.iEntityIdQueue(data.pProject());
        info.m_changed.notify_all();
    });
    locked.get_future().wait();
    data.vWrite(info, {});
    helper.join();
    EXPECT_EQ(writer.m_lines.size(), 1U);
    EXPECT_EQ(writer.m_iFinished, 1);
    return iDuring - iBefore;
}

TEST(WriteThreads, AreAsManyAsModelAndMachineAllow) {
    std::thread([] {}).join();   // a race detector starts a thread of its own beside the first one
    const std::size_t iBefore = test::iThreadsNow();
    if (iBefore == 0) GTEST_SKIP() << "the system does not count threads";
    const struct {
        unsigned iHardware;
        std::size_t iEntities;
        std::size_t iExtra;
    } rows[] = {
        {8, 1, 1},    {8, 5, 1},    {8, 10, 1},   {8, 11, 2}, {8, 1000, 2}, {0, 1000, 2}, {1, 1000, 2},
        {2, 1000, 2}, {3, 1000, 0}, {4, 1000, 1}, {4, 1, 1},  {5, 1000, 2}, {5, 10, 1},   {64, 1000, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.iHardware) + " threads, " + std::to_string(row.iEntities) + " entities");
        const Hardware hardware(row.iHardware);
        EXPECT_EQ(iExtraThreadsOf(row.iEntities, iBefore, row.iExtra), row.iExtra);
    }
}

TEST(WriteThreads, AreNoneInASingleThreadedWrite) {
    const Hardware hardware(8);
    std::thread([] {}).join();
    const std::size_t iBefore = test::iThreadsNow();
    const ReadFileModel model(sSmallFile(30), true, schemaIs(smallSchema()));
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number}) {
        std::size_t iCalls = 0;
        fileOf(model.file, {.boSingleThreaded = true,
                            .progress =
                                [&](unsigned) {
                                    EXPECT_EQ(test::iThreadsNow(), iBefore);
                                    ++iCalls;
                                },
                            .eOrder = eOrder});
        EXPECT_EQ(iCalls, eOrder == WriteOrder::Any ? 91U : 1U);
    }
}

// Sorting looks at the type of each entity, which is an inside fault where there is none.
TEST(WriteThreads, SortTheEntitiesWhereThereAreAny) {
    const struct {
        unsigned iHardware;
        bool boSorts;
    } rows[] = {{3, false}, {4, true}, {8, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.iHardware);
        const Hardware hardware(row.iHardware);
        ReadFileModel model = modelOf(g_sProject);
        Entity empty;
        model.file.data().entityAdd(&empty);
        if (row.boSorts)
            EXPECT_THROW(fileOf(model.file, false), oxa::exception);
        else
            EXPECT_TRUE(fileOf(model.file, false).text.ends_with(g_sProject + "\nENDSEC;\nEND-ISO-10303-21;\n"));
    }
}

// What a seed composes itself, with a context of its own, is as good as what the walk composes.
TEST(WriteSeed, LosesNothingThatItComposes) {
    const ReadFileModel model =
        modelOf("#2=IFCPOINT((2.));#3=IFCPOINT((3.));#7=IFCPROPERTY('b',#2,(),#8);#8=IFCPROPERTY('c',#3,(),$);");
    const Data& data = model.file.data();
    const auto vStatement = [&data](StepWriteInfoCommon& info) {
        StepWriteInfo own(info);
        data.pEntityFromId(7)->vWrite(own);
    };
    const auto vCell = [&data](StepWriteInfoCommon& info) {
        StepWriteInfo own(info);
        const auto [pAttribute, pCell] = data.pEntityFromId(8)->pAttributeFromIndex(1);
        AttributeBase::StepWriteInfoAttribute value{&own, pAttribute};
        pCell->vWriteAttribute(value);
        EXPECT_EQ(own.m_line, "#3");
    };
    const auto vLine = [](StepWriteInfoCommon& info) {
        StepWriteInfo own(info);
        own.m_line = "/* one */";
        own.vLineAdd();
    };
    const Lines walk = {"#7=IFCPROPERTY('b',#2,(),#8);", "#2=IFCPOINT((2.));", "#8=IFCPROPERTY('c',#3,(),$);",
                        "#3=IFCPOINT((3.));"};
    const struct {
        const char* sRule;
        WriteFile::Seed seed;
        Lines lines;
    } rows[] = {
        {"a statement: it is there, and the instance is met by the walk as well",
         vStatement,
         {walk[0], walk[0], walk[1], walk[2], walk[3]}},
        {"a cell: what it names is written", vCell, {walk[3]}},
        {"a line, and an entity",
         [&](StepWriteInfoCommon& info) {
             vLine(info);
             vCell(info);
         },
         {"/* one */", walk[3]}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.sRule);
        for (const bool boSingleThreaded : {true, false}) {
            const Written result = written([&](auto& out, auto& errors) {
                return WriteFile::boWrite(data, row.seed, out, errors, boSingleThreaded);
            });
            EXPECT_TRUE(result.boResult);
            EXPECT_THAT(linesOf(result.text), UnorderedElementsAreArray(row.lines));
        }
    }
}

// The numbers of the lines, ascending.
std::vector<unsigned> numbersOf(const Lines& lines) {
    std::vector<unsigned> numbers;
    for (const std::string& sLine : lines)
        if (sLine.starts_with('#')) numbers.push_back(static_cast<unsigned>(std::stoul(sLine.substr(1))));
    std::ranges::sort(numbers);
    return numbers;
}

std::vector<unsigned> numbersUpTo(std::size_t iCount) {
    std::vector<unsigned> numbers(iCount);
    std::iota(numbers.begin(), numbers.end(), 1U);
    return numbers;
}

// Entities without a number of a file are met through a table that all threads share.
TEST(WriteThreads, WriteEntitiesWithoutNumbersOnce) {
    const Hardware hardware(8);
    constexpr std::size_t g_iGroups = 700;
    const ReadFileModel model(sSmallFile(g_iGroups), true, schemaIs(smallSchema()), false);
    for (int i = 0; i < 20; ++i) {
        static_cast<void>(model.file.data().entityIdMap(true));
        EXPECT_EQ(numbersOf(linesOf(fileOf(model.file, false).text)), numbersUpTo(1 + 3 * g_iGroups));
        EXPECT_EQ(numbersOf(linesOf(fileOf(model.file, {.eOrder = WriteOrder::Number}).text)),
                  numbersUpTo(1 + 3 * g_iGroups));
    }
}

TEST(WriteThreads, WriteCreatedEntitiesOnce) {
    const Hardware hardware(8);
    ReadFileModel model = modelOf(g_sProject);
    Data& data = model.file.data();
    std::vector<const Entity*> points;
    for (int i = 0; i < 2000; ++i) points.push_back(data.pEntityCreate(def::schema::ObjectName("IFCPOINT")));
    data.pProject()->boListValueSet(def::schema::AttributeName("Units"), points, data);
    const Entity* pChain = nullptr;   // reached one after the other
    for (int i = 0; i < 500; ++i) {
        Entity* pProperty = data.pEntityCreate(def::schema::ObjectName("IFCPROPERTY"));
        pProperty->boValueSet(def::schema::AttributeName("Next"), pChain, data);
        pChain = pProperty;
    }
    for (int i = 0; i < 20; ++i) {
        const Written all = dataOf(data, false);
        EXPECT_EQ(numbersOf(linesOf(all.text)), numbersUpTo(2501));
        EXPECT_EQ(numbersOf(linesOf(fileOf(model.file, false).text)).size(), 2001U);
        EXPECT_EQ(linesOf(entityOf(data, pChain, false).text).size(), 500U);
    }
}

// While the others wait with their first line, the caller's thread gets work in any case.
// The work of a walk over entities that name nothing.
struct Walk {
    const std::array<Entity, 6> entities = {};
    EntityIdMap numbers{0};
    RecordingWriter writer;
    WriteError errors;
    StepWriteInfoCommon info{numbers, errors, writer, false};
    std::atomic<std::size_t> iTaken{0};

    std::int32_t iAtWork() {
        const std::lock_guard lock(info.m_mutex);
        return info.m_iActive;
    }
    // Who is not at work any more waits then.
    void vUntilAtWork(std::int32_t iThreads) {
        while (iAtWork() > iThreads) std::this_thread::yield();
    }
};

// One of its threads.
struct Taker {
    Walk& walk;
    std::vector<const Entity*> share = {};
    bool boActive = false;

    bool boTake(std::vector<const Entity*> found) {
        const bool boMore = walk.info.boTake(found, share, boActive, {});
        walk.iTaken += share.size();
        return boMore;
    }
};

// A thread that had nothing to do and has again counts as before: while it is at work the walk goes on.
TEST(WriteThreads, EndWithTheLastThatIsAtWork) {
    Walk walk;
    const auto& entities = walk.entities;
    walk.info.m_queue.push_back(&entities[0]);
    Taker own{walk};
    EXPECT_TRUE(own.boTake({}));
    std::promise<void> first, second;
    std::thread thread([&] {
        Taker other{walk};
        EXPECT_TRUE(other.boTake({}));
        first.set_value();
        EXPECT_TRUE(other.boTake({})) << "after a rest";
        const std::int32_t iAtWork = walk.iAtWork();
        second.set_value();
        walk.vUntilAtWork(iAtWork - 1);
        for (std::vector<const Entity*> found{&entities[5]}; other.boTake(std::exchange(found, {}));) {}
    });
    EXPECT_TRUE(own.boTake({&entities[1], &entities[2]}));
    first.get_future().wait();
    walk.vUntilAtWork(1);
    EXPECT_TRUE(own.boTake({&entities[3], &entities[4]}));
    second.get_future().wait();
    while (own.boTake({})) {}
    thread.join();
    EXPECT_EQ(walk.iTaken, entities.size());
}

TEST(WriteThreads, EndWhereTheyWaitWhenTheWalkIsStopped) {
    Walk walk;
    walk.info.m_queue.push_back(&walk.entities[0]);
    Taker own{walk};
    EXPECT_TRUE(own.boTake({}));
    std::promise<void> first;
    std::future<bool> last = std::async(std::launch::async, [&] {
        Taker other{walk};
        EXPECT_TRUE(other.boTake({}));
        first.set_value();
        return other.boTake({});
    });
    EXPECT_TRUE(own.boTake({&walk.entities[1], &walk.entities[2]}));
    first.get_future().wait();
    walk.vUntilAtWork(1);
    walk.info.vStop();
    EXPECT_EQ(last.wait_for(std::chrono::seconds(20)), std::future_status::ready) << "nobody woke it";
    walk.info.m_changed.notify_all();
    EXPECT_FALSE(last.get());
}

TEST(WriteThreads, EndWhenProgressThrows) {
    const Hardware hardware(8);
    struct WaitingWriter final : IfcLineWriterInterface {
        const std::thread::id m_caller = std::this_thread::get_id();
        std::promise<void> m_thrown;
        std::shared_future<void> m_future{m_thrown.get_future()};

        std::size_t iLineAdd(std::string&, unsigned) override {
            if (std::this_thread::get_id() != m_caller) m_future.wait();
            return 0;
        }
        void vFinish() override {}
    };
    const ReadFileModel model(sSmallFile(700), true, schemaIs(smallSchema()));
    const Data& data = model.file.data();
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number}) {
        WaitingWriter writer;
        if (eOrder != WriteOrder::Any) writer.m_thrown.set_value();   // lines come in turn: nobody may wait
        WriteError errors;
        StepWriteInfoCommon info(data.entityIdMap(false), errors, writer, false);
        for (const Entity* pEntity : data.entities()) info.iEntityIdGet(pEntity);
        bool boThrown = false;
        const auto progress = [&](unsigned) {
            if (eOrder == WriteOrder::Any) writer.m_thrown.set_value();
            boThrown = true;
            throw std::runtime_error("enough");
        };
        if (eOrder == WriteOrder::Any) {
            EXPECT_THROW(data.vWrite(info, progress), std::runtime_error);
        } else {
            try {
                data.vWriteWith(info, {.progress = progress, .eOrder = eOrder});
                EXPECT_FALSE(boThrown) << "the caller's thread may find nothing to do";
            } catch (const std::runtime_error&) {
                EXPECT_TRUE(boThrown);
            }
        }
    }
}

TEST(WriteThreads, CountWhatTheyTakeWithoutProgressToo) {
    const ReadFileModel model(sSmallFile(200), true, schemaIs(smallSchema()));
    const Data& data = model.file.data();
    for (const bool boSingleThreaded : {true, false}) {
        RecordingWriter writer;
        WriteError errors;
        StepWriteInfoCommon info(data.entityIdMap(false), errors, writer, boSingleThreaded);
        info.iEntityIdGet(data.pProject());
        data.vWrite(info, {});
        EXPECT_EQ(info.m_iDequeued, 601U);
        EXPECT_TRUE(info.m_boDone);
        EXPECT_TRUE(info.m_queue.empty());
    }
}

// Behind a gap in the bytes none may follow, even where the stream recovers.
TEST(WriteThreads, WriteNothingBehindAFaultOfTheStream) {
    struct Stumbling final : std::streambuf {
        bool m_boThrown = false;
        std::streamsize m_iBehind = 0;
        std::streamsize xsputn(const char*, std::streamsize iCount) override {
            if (!std::exchange(m_boThrown, true)) throw std::runtime_error("disk full for a moment");
            m_iBehind += iCount;
            return iCount;
        }
    };
    const ReadFileModel model(sSmallFile(3000), true, schemaIs(smallSchema()));
    for (const WriteOptions& options :
         {WriteOptions{}, WriteOptions{.boSingleThreaded = true}, WriteOptions{.eOrder = WriteOrder::Number},
          WriteOptions{.boSingleThreaded = true, .eOrder = WriteOrder::Number}}) {
        Stumbling bytes;
        std::ostream out(&bytes);
        out.exceptions(std::ios::badbit);
        WriteError errors;
        std::string sThrown;
        try {
            static_cast<void>(WriteFile::boWrite(model.file.data(), nullptr, out, errors, options));
        } catch (const std::runtime_error& fault) {
            sThrown = fault.what();
        }
        EXPECT_EQ(sThrown, "disk full for a moment") << "and not that the stream is bad since";
        EXPECT_EQ(bytes.m_iBehind, 0);
    }
}

// What is in a buffer until the end of the write can fail there, too.
TEST(WriteThreads, TellAFaultOfTheLastBytes) {
    struct Full final : std::streambuf {
        std::streamsize xsputn(const char*, std::streamsize) override { throw std::runtime_error("disk full"); }
    };
    const ReadFileModel model = modelOf("#1=IFCPOINT((1.));");
    for (const WriteOptions& options :
         {WriteOptions{}, WriteOptions{.boSingleThreaded = true}, WriteOptions{.eOrder = WriteOrder::Number}}) {
        Full bytes;
        std::ostream out(&bytes);
        out.exceptions(std::ios::badbit);
        WriteError errors;
        EXPECT_THROW(static_cast<void>(WriteFile::boWrite(model.file.data(), nullptr, out, errors, options)),
                     std::runtime_error);
    }
}

// A line of the frame goes out when it is written, for whoever looks at the file meanwhile.
TEST(WriteFile, FlushesEachLineOfTheFrame) {
    struct Flushed final : std::stringbuf {
        std::vector<std::string> m_texts;
        int sync() override {
            m_texts.push_back(str());
            return 0;
        }
    };
    const ReadFileModel model = modelOf(g_sProject);
    const std::string sHead = "ISO-10303-21;\n";
    const std::string sData = sHead + model.file.header().writeToString() + "DATA;\n";
    const std::string sEnd = sData + g_sProject + "\nENDSEC;\n";
    for (const WriteOptions& options :
         {WriteOptions{}, WriteOptions{.boSingleThreaded = true}, WriteOptions{.eOrder = WriteOrder::Number}}) {
        Flushed bytes;
        std::ostream out(&bytes);
        WriteError errors;
        EXPECT_TRUE(model.file.boWrite(out, errors, options));
        for (const std::string& sText : {sHead, sData, sEnd, sEnd + "END-ISO-10303-21;\n"})
            EXPECT_EQ(std::ranges::count(bytes.m_texts, sText), 1) << sText;
    }
}

}   // namespace
}   // namespace oxa::ifc::io
