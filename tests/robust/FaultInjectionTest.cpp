// SPDX-License-Identifier: Apache-2.0
// Memory that runs out: each allocation in turn fails, alone or with all behind it. Nothing crashes, nothing leaks, and
// no result is wrong without a word.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <vector>

#include "../Format/Ifc/AssertLog.h"
#include "../Format/Ifc/ModelText.h"
#include "AllocationFault.h"
#include "CountCheck.h"
#include "Fixtures.h"
#include "Format/Ifc/IfcFile.h"
#include "Format/Ifc/IfcFileHeader.h"
#include "Format/Ifc/IfcGuid.h"
#include "Format/Ifc/IfcLineReadThreadPool.h"
#include "Format/Ifc/IfcStepStrings.h"
#include "Format/Ifc/Xml/IfcXmlExport.h"
#include "Format/Ifc/Xml/IfcXmlImport.h"
#include "provider/SchemaLoader.h"

namespace oxa::ifc {
namespace {

// A stream into a block of fixed size: it allocates nothing.
class BlockStream : private std::streambuf, public std::ostream {
public:
    BlockStream() : std::ostream(static_cast<std::streambuf*>(this)), m_block(1U << 16, '\0') {
        setp(m_block.data(), m_block.data() + m_block.size());
    }
    [[nodiscard]] std::string sText() const { return {pbase(), pptr()}; }

private:
    std::string m_block;
};

// A piece of work whose run may be struck. What comes before and behind it is not.
class Scenario {
public:
    virtual ~Scenario() = default;
    virtual void vRun() = 0;
    // What came of it. A scenario that says a fault by itself, in a report or by false, begins its result with "!".
    [[nodiscard]] virtual std::string sResult() = 0;
};

std::string sOf(const File& file, const Errors& errors, bool boGood) {
    std::string sText = boGood && errors.records().empty() ? "" : "!";
    for (const ErrorRecord& record : errors.records()) sText += sRecordText(record) + '\n';
    std::ostringstream out;
    io::WriteError writeErrors;
    file.data().boWrite(out, writeErrors, true);
    return sText + out.str();
}

const std::string g_sFaultyFile = "ISO-10303-21;HEADER;FILE_X();FILE_SCHEMA(('IFC4'));ENDSEC;DATA;#1=IFCX();\n"
                                  "#2=IFCWALL('short',5,(6,#x),*,#70000000,.NO.,\"G\");#2=IFCROOT();ENDSEC;";

template <const std::string& sText>
class ReadScenario : public Scenario {
public:
    void vRun() override { m_boRead = m_file.boRead(m_in, {}, m_errors, true, {}, true); }
    std::string sResult() override { return sOf(m_file, m_errors, m_boRead); }

private:
    std::istringstream m_in{sText};
    File m_file;
    io::ReadError m_errors;
    bool m_boRead = false;
};

class SimpleReadScenario : public Scenario {
public:
    void vRun() override { m_boRead = m_file.boRead(m_in, {}, m_errors, {}, true); }
    std::string sResult() override {
        std::ostringstream out;
        io::WriteError writeErrors;
        m_file.boWrite(nullptr, out, writeErrors, true);
        return (m_boRead && m_errors.records().empty() ? "" : "!") + out.str();
    }

private:
    std::istringstream m_in{"Ifc file simple;\nIFC4;\n1;\n#1=IFCAXIS2PLACEMENT3D(#2,$,$);\n"
                            "#2=IFCCARTESIANPOINT((1.,2.));\n"};
    FileSimple m_file{*SchemaLoader::pBuiltIn("IFC4")};
    io::ReadError m_errors;
    bool m_boRead = false;
};

// Whatever struck the write, the model can be written again.
class WriteScenario : public Scenario {
public:
    explicit WriteScenario(WriteOptions options = {.boSingleThreaded = true})
        : m_model(g_sSmallFile, true, {}),
          m_options(std::move(options)) {}
    void vRun() override { m_boWritten = m_model.file.boWrite(m_out, m_errors, m_options); }
    std::string sResult() override {
        BlockStream again;
        io::WriteError errors;
        EXPECT_TRUE(m_model.file.boWrite(again, errors, {}, true));
        EXPECT_EQ(again.sText(), g_sAgain());
        return (m_boWritten && m_out && m_errors.records().empty() ? "" : "!") + m_out.sText();
    }

private:
    static const std::string& g_sAgain() {
        static const std::string sText = [] {
            const ReadFileModel model(g_sSmallFile, true, {});
            BlockStream out;
            io::WriteError errors;
            model.file.boWrite(out, errors, {}, true);
            return out.sText();
        }();
        return sText;
    }

    ReadFileModel m_model;
    WriteOptions m_options;
    BlockStream m_out;
    io::WriteError m_errors;
    bool m_boWritten = false;
};

// Threads beside the caller's don't change the text; one that is not to be had is not missed.
class OrderedWriteScenario : public WriteScenario {
public:
    OrderedWriteScenario() : WriteScenario({.eOrder = WriteOrder::Number}) {}
};

// Memory runs out on the caller's thread, while others work. What they did by then is open, so only survival counts.
class ThreadedScenario : public Scenario {
public:
    void vRun() override {
        m_file.boRead(m_in, {}, m_errors, true, {}, false);
        m_file.boWrite(m_out, m_writeErrors, {}, false);
    }
    std::string sResult() override { return "!" + sOf(m_file, m_errors, true); }

private:
    std::istringstream m_in{g_sSmallFile};
    File m_file;
    io::ReadError m_errors;
    BlockStream m_out;
    io::WriteError m_writeErrors;
};

class CountScenario : public Scenario {
public:
    void vRun() override { m_count = io::CountFile::count(m_text.path(), {.boSingleThreaded = true}); }
    std::string sResult() override {
        std::string sResult = m_count.pFile ? "" : "!" + std::string(m_count.doubt);
        for (const auto& [pType, iCount] : m_count.types) sResult += pType->sName + ' ' + std::to_string(iCount) + '\n';
        return sResult;
    }

private:
    CountedText m_text{g_sSmallFile};
    io::FileCount m_count;
};

class HeaderScenario : public Scenario {
public:
    void vRun() override {
        m_header = FileHeader::parseFromString(m_sText);
        if (m_header) m_sWritten = m_header->writeToString();
    }
    std::string sResult() override { return (m_header ? "" : "!") + m_sWritten; }

private:
    std::string m_sText =
        g_sSmallFile.substr(g_sSmallFile.find("FILE_DESC"), g_sSmallFile.find("DATA;") - g_sSmallFile.find("FILE_DESC"))
            .insert(0, "HEADER;\n");
    std::optional<FileHeader> m_header;
    std::string m_sWritten;
};

class SetScenario : public Scenario {
public:
    SetScenario() { m_file.vSchemaSet(*SchemaLoader::pBuiltIn("IFC4")); }
    void vRun() override {
        using def::schema::AttributeName;
        using def::schema::ObjectName;
        Data& data = m_file.data();
        Entity* const pPoint = data.pEntityCreate(ObjectName("IFCCARTESIANPOINT"));
        m_boSet &= pPoint->boListValueSet(AttributeName("Coordinates"), std::vector<double>{1, 2, 3}, data);
        data.entityAdd(pPoint);
        Entity* const pPlace = data.pEntityCreate(ObjectName("IFCAXIS2PLACEMENT3D"));
        m_boSet &= pPlace->boValueSet<const Entity*>(AttributeName("Location"), pPoint, data);
        data.entityAdd(pPlace);
        Entity* const pWall = data.pEntityCreate(ObjectName("IFCWALL"));
        m_boSet &= pWall->boValueSet(AttributeName("Name"), std::string("a name that is no short string"), data);
        data.entityAdd(pWall);
    }
    std::string sResult() override {
        std::ostringstream out;
        io::WriteError errors;
        m_file.data().boWrite(out, errors, true);
        return (m_boSet ? "" : "!") + out.str();
    }

private:
    File m_file;
    bool m_boSet = true;
};

class SchemaScenario : public Scenario {
public:
    void vRun() override { m_pSchema = SchemaLoader::pSchemaFromExpress(m_sText, m_messages); }
    std::string sResult() override {
        if (!m_pSchema) return "!";
        std::string sText;
        for (const auto& record : m_pSchema->objects)
            if (const auto* pType = def::schema::pAsEntity(record.pObject)) {
                sText += pType->sName;
                for (const auto* pAttribute : pType->allAttributes()) sText += ' ' + pAttribute->sName;
                for (const auto* pInverse : pType->allInverseAttributes()) sText += ' ' + pInverse->sName;
            }
        return sText;
    }

private:
    std::string m_sText = sFileBytes(std::filesystem::path(OXA_SOURCE_DIR) / "fuzz/seeds/ExpressText/all.exp");
    std::unique_ptr<def::SchemaPset> m_pSchema;
    std::vector<SchemaMessage> m_messages;
};

class XmlScenario : public Scenario {
public:
    void vRun() override {
        xml::Import import;
        m_boGood = import.boLoad(m_in) && import.boImportHeader(m_file, {}) && import.boImportData(m_file.data());
    }
    std::string sResult() override { return sOf(m_file, Errors(), m_boGood); }

private:
    std::istringstream m_in{sFileBytes(std::filesystem::path(OXA_SOURCE_DIR) / "fuzz/seeds/XmlDocument/whole.ifcxml")};
    File m_file;
    bool m_boGood = false;
};

class XmlExportScenario : public Scenario {
public:
    XmlExportScenario() : m_model(g_sSmallFile, true, {}) {}
    void vRun() override {
        xml::Export xmlExport;
        m_boGood = xmlExport.boExportHeader(m_model.file.header()) && xmlExport.boExportData(m_model.file.data(), {}) &&
                   xmlExport.boSave(m_out);
    }
    std::string sResult() override { return (m_boGood && m_out ? "" : "!") + m_out.sText(); }

private:
    ReadFileModel m_model;
    BlockStream m_out;
    bool m_boGood = false;
};

template <class Which>
std::unique_ptr<Scenario> pMake() {
    return std::make_unique<Which>();
}

struct ScenarioRow {
    const char* sName;
    std::unique_ptr<Scenario> (*make)();
    bool boWell = true;   // an undisturbed run has nothing to report, so that a disturbed one can be held against it
};
// Not Errors::writeReport(): the JSON library behind it leaks what it has begun when memory runs out.
const ScenarioRow g_scenarios[] = {
    {"Read", pMake<ReadScenario<g_sSmallFile>>},
    {"FaultyRead", pMake<ReadScenario<g_sFaultyFile>>, false},
    {"SimpleRead", pMake<SimpleReadScenario>},
    {"Write", pMake<WriteScenario>},
    {"OrderedWrite", pMake<OrderedWriteScenario>},
    {"Threaded", pMake<ThreadedScenario>, false},
    {"Count", pMake<CountScenario>},
    {"Header", pMake<HeaderScenario>},
    {"TypedSet", pMake<SetScenario>},
    {"Schema", pMake<SchemaScenario>},
    {"XmlImport", pMake<XmlScenario>},
    {"XmlExport", pMake<XmlExportScenario>},
};
void PrintTo(const ScenarioRow& row, std::ostream* pOut) { *pOut << row.sName; }

// The number of allocations of an undisturbed run, and what comes of it. The first run fills what is kept for good.
std::pair<std::size_t, std::string> undisturbed(const ScenarioRow& row) {
    for (int i = 0; i < 2; ++i) {
        const std::unique_ptr<Scenario> pScenario = row.make();
        pScenario->vRun();
        (void)pScenario->sResult();
    }
    const std::unique_ptr<Scenario> pScenario = row.make();
    std::size_t iAllocations = 0;
    {
        const AllocationFault fault(AllocationFault::g_iNever, false);
        pScenario->vRun();
        iAllocations = AllocationFault::iAllocations();
    }
    return {iAllocations, pScenario->sResult()};
}

// False where a result is wrong and nobody was told.
bool boRunStruck(const ScenarioRow& row, std::size_t iAllocation, bool boAllLater, const std::string& sExpected) {
    const std::unique_ptr<Scenario> pScenario = row.make();
    bool boTold = false;
    try {
        const AllocationFault fault(iAllocation, boAllLater);
        pScenario->vRun();
    } catch (const std::bad_alloc&) {
        boTold = true;
    }
    const std::string sResult = pScenario->sResult();   // whatever happened, it can be asked
    return boTold || sResult == sExpected || sResult.starts_with('!');
}

class MemoryRunsOut : public testing::TestWithParam<ScenarioRow> {};

TEST_P(MemoryRunsOut, AtEachAllocation) {
    const AssertLog log(false);
    const auto [iAllocations, sExpected] = undisturbed(GetParam());
    ASSERT_GT(iAllocations, 0U);
    ASSERT_EQ(sExpected.starts_with('!'), !GetParam().boWell) << sExpected;
    for (const bool boAllLater : {false, true}) {
        for (std::size_t i = 0; i < iAllocations; ++i) {
            ASSERT_TRUE(boRunStruck(GetParam(), i, boAllLater, sExpected)) << i << " of " << iAllocations;
            // What is kept for good is kept once; a leak grows each time.
            const std::ptrdiff_t iAlive = AllocationFault::iAlive();
            ASSERT_TRUE(boRunStruck(GetParam(), i, boAllLater, sExpected)) << i << " of " << iAllocations;
            ASSERT_LE(AllocationFault::iAlive(), iAlive) << "leak at " << i << " of " << iAllocations;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(In, MemoryRunsOut, testing::ValuesIn(g_scenarios),
                         [](const auto& test) { return test.param.sName; });

// Statements of one kind, each with a GlobalId, so that the collector has something to enter.
std::string sRooted(std::size_t iNumber) {
    const Guid guid{0x01020304U,
                    0,
                    0,
                    {1, 2, 3, 4, 5, 6, static_cast<std::uint8_t>(iNumber >> 8), static_cast<std::uint8_t>(iNumber)}};
    return '#' + std::to_string(iNumber) + "=IFCWALL('" + IfcGuid::toIfcGuid(guid) + "',$,'a name',$,$,$,$,$,$);\n";
}

// Memory that runs out on a worker or on the collector: what is not in the model is counted as lost, and the rest is
// whole. Nothing waits for a thread that has ended.
TEST(MemoryRunsOut, OnAThreadOfTheReadLosesABatchAndTells) {
    constexpr std::size_t g_iCount = 1700;
    constexpr unsigned g_iFirstLine = 3;
    std::string sText = "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;\n\n";
    for (std::size_t i = 1; i <= g_iCount; ++i) sText += sRooted(i);
    sText += "ENDSEC;END-ISO-10303-21;\n";
    const auto run = [&](std::size_t iAllocation, bool boAllLater) {
        std::istringstream in(sText);
        File file;
        io::ReadError errors;
        {
            const AllocationFaultElsewhere fault(iAllocation, boAllLater);
            EXPECT_EQ(file.boRead(in, {}, errors, true, {}, false), !errors.boFatal());
        }
        const Errors::LostStatements lost = errors.lostStatements();
        // Inside a value it is a fatal fault of the file, which ends the scan.
        if (errors.boFatal()) return lost.iCount;
        std::set<std::size_t> missing;
        for (std::size_t i = 1; i <= g_iCount; ++i) missing.insert(i);
        for (const Entity* pEntity : file.data().entities())
            EXPECT_EQ(missing.erase(file.data().iIdFromEntity(*pEntity)), 1U) << "in the model twice";
        EXPECT_EQ(lost.iCount, missing.size());
        EXPECT_EQ(lost.iFirstLine, missing.empty() ? 0U : g_iFirstLine - 1 + static_cast<unsigned>(*missing.begin()));
        for (const ErrorRecord& record : errors.records()) ADD_FAILURE() << sRecordText(record);
        EXPECT_EQ(file.data().guidEntityMap().size(), file.data().entities().size());
        return lost.iCount;
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(run(AllocationFault::g_iNever, false), 0U);
    const std::size_t iAllocations = AllocationFaultElsewhere::iAllocations();
    EXPECT_GT(iAllocations, 10U);
    std::size_t iWithLoss = 0;
    for (std::size_t i = 0; i < iAllocations && !testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE(std::to_string(i) + " of " + std::to_string(iAllocations));
        if (run(i, false) > 0) ++iWithLoss;
        run(i, true);
    }
    EXPECT_GT(iWithLoss, 0U);
    testing::internal::GetCapturedStderr();
}

// An entity is entered in the list and in the map of GUIDs, or in neither.
TEST(MemoryRunsOut, WhileAnEntityIsEntered) {
    std::string sText = "ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4'));ENDSEC;DATA;";
    for (std::size_t i = 1; i <= 100; ++i) sText += sRooted(i);
    sText += "ENDSEC;";
    const auto iRun = [&](std::size_t iAllocation) {
        std::istringstream in(sText);
        File file;
        io::ReadError errors;
        try {
            const AllocationFault fault(iAllocation, false);
            file.boRead(in, {}, errors, true, {}, true);
        } catch (const std::bad_alloc&) {}
        EXPECT_EQ(file.data().guidEntityMap().size(), file.data().entities().size());
        return AllocationFault::iAllocations();
    };
    const std::size_t iAllocations = iRun(AllocationFault::g_iNever);
    EXPECT_GT(iAllocations, 10U);
    for (std::size_t i = 0; i < iAllocations; ++i) {
        SCOPED_TRACE(std::to_string(i) + " of " + std::to_string(iAllocations));
        iRun(i);
    }
}

// Hands iCount statements to a pool while the allocation with that number fails on the scanner's thread. The caller hears
// of it; a statement that could not be handed over is not in the model, and none is there twice. Returns how many
// allocations there were.
std::size_t iQueueStruck(std::size_t iCount, std::size_t iAllocation) {
    File file;
    io::ReadError errors;
    StepReadInfoDataCommon common(errors);
    const def::SchemaPset& schema = *SchemaLoader::pBuiltIn("IFC4");
    file.vSchemaSet(schema);
    common.vUpdateSchemaCache(schema);
    std::vector<std::string> statements;
    for (std::size_t i = 1; i <= iCount; ++i) {
        statements.push_back(sRooted(i));
        statements.back().pop_back();
    }
    std::vector<bool> taken(iCount, true);
    std::size_t iAllocations = 0;
    {
        io::IfcLineReadThreadPool pool(common, file, false);
        const AllocationFault fault(iAllocation, false);
        for (std::size_t i = 0; i < iCount; ++i) {   // the first one starts the threads
            try {
                pool.addLineToQueue(statements[i], static_cast<unsigned>(i + 1));
            } catch (const std::bad_alloc&) {
                taken[i] = false;
            }
        }
        iAllocations = AllocationFault::iAllocations();
    }
    const auto iTaken = static_cast<std::size_t>(std::ranges::count(taken, true));
    // Where the scanner helped, memory for a value is a fatal fault of the file.
    if (!errors.boFatal()) {
        EXPECT_EQ(iTaken, iAllocations > iAllocation ? iCount - 1 : iCount);
    }
    EXPECT_EQ(file.data().entities().size() + errors.lostStatements().iCount, iTaken);
    file.data().boFinished(common, true);
    std::set<std::string> found;
    for (const Entity* pEntity : file.data().entities()) found.insert(pEntity->sWriteLine(file.data()));
    EXPECT_EQ(found.size(), file.data().entities().size());
    for (std::size_t i = 0; i < iCount; ++i) {
        if (!taken[i]) {
            EXPECT_FALSE(found.contains(statements[i]));
        }
        found.erase(statements[i]);
    }
    EXPECT_TRUE(errors.boFatal() || found.empty()) << *found.begin();
    return iAllocations;
}

TEST(MemoryRunsOut, WhileAStatementIsQueued) {
    testing::internal::CaptureStderr();
    // Some batches; and so many that the scanner parses too.
    for (const std::size_t iCount : {700U, 12'000U}) {
        const std::size_t iAllocations = iQueueStruck(iCount, AllocationFault::g_iNever);
        EXPECT_GT(iAllocations, 5U);
        const std::size_t iStep = 1 + iAllocations / (iCount > 1000 ? 10 : 60);
        for (std::size_t i = 0; i < iAllocations && !testing::Test::HasFailure(); i += iStep) {
            SCOPED_TRACE(std::to_string(i) + " of " + std::to_string(iAllocations));
            iQueueStruck(iCount, i);
        }
    }
    testing::internal::GetCapturedStderr();
}

// Scratch keeps its room from string to string: with room in the result, reading takes no memory at all.
TEST(Allocations, ReadingAStringTakesNothingBeyondItsResult) {
    const AssertLog log(false);
    const char* const texts[] = {"plain text of some length, longer than any object keeps within itself",
                                 "caf\\X\\E9 au lait, and quite a lot of text behind the first directive",
                                 "\\X2\\20AC\\X0\\abcd\\S\\aefgh\\X4\\0001F600\\X0\\ijkl''mnop\\\\qrst"};
    std::string out;
    for (const char* pText : texts) {
        SCOPED_TRACE(pText);
        const std::size_t iLength = std::strlen(pText);
        vIfcStrToUtf8(out, pText, iLength);
        const AllocationFault fault(AllocationFault::g_iNever, false);
        for (int i = 0; i < 3; ++i) vIfcStrToUtf8(out, pText, iLength);
        EXPECT_EQ(AllocationFault::iAllocations(), 0U);
    }
}

// The built-in schemas are kept for good once they are decoded: memory that ran out meanwhile must not be kept.
TEST(MemoryRunsOut, ABuiltInSchemaIsDecodedOnceThereIsEnough) {
    std::size_t iFailed = 0;
    for (std::size_t i = 0;; i = 2 * i + 1) {
        const AllocationFault fault(i, false);
        try {
            const def::SchemaPset* pSchema = SchemaLoader::pBuiltIn("IFC4X1");
            ASSERT_NE(pSchema, nullptr);
            ASSERT_NE(pSchema->pEntityFromName(def::schema::ObjectName("IFCALIGNMENT")), nullptr);
            break;
        } catch (const std::bad_alloc&) {
            ++iFailed;
        }
    }
    EXPECT_GT(iFailed, 5U);
}

}   // namespace
}   // namespace oxa::ifc
