// SPDX-License-Identifier: Apache-2.0
// A file read on several threads gives the model and the reports of a single-threaded read.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Format/Ifc/IfcLineReadThreadPool.h"
#include "Format/Ifc/SmallModel.h"

namespace oxa::ifc {
namespace {

// Numbers that more than one statement defines. Which of them wins depends on timing, and with it what refers to whom.
std::set<std::size_t> reusedNumbers(const ModelText& text) {
    std::set<std::size_t> numbers;
    for (const auto& [iId, instance] : text)
        if (text.count(iId) > 1) numbers.insert(iId);
    return numbers;
}

// The model without these, and without their references to others.
ModelText modelWithout(ModelText text, const std::set<std::size_t>& numbers) {
    std::erase_if(text, [&](const auto& instance) { return numbers.contains(instance.first); });
    for (auto& [iId, instance] : text)
        std::erase_if(instance.referrers, [&](const auto& referrer) { return numbers.contains(referrer.second); });
    return text;
}

// Of a file that uses a number again all the rest is as it was: each reuse is told, whichever statement comes second,
// and what is told of GUIDs depends on what their slots hold when they are entered.
std::multiset<std::string> recordsBesideReuse(const Errors& errors) {
    std::multiset<std::string> texts;
    for (const Errors::ErrorRecord& record : errors.records()) {
        if (record.key == "Error_EntityIdReused")
            texts.insert(record.description);
        else if (record.key != "Error_DuplicateGuids" && record.key != "Error_UnexpectedNullGuid")
            texts.insert(sRecordText(record));
    }
    return texts;
}

void vExpectTheSame(const std::string& text) {
    const ReadFileModel single(text, true, schemaIs(smallSchema()));
    const ReadFileModel threaded(text, false, schemaIs(smallSchema()));
    ASSERT_EQ(threaded.boRead, single.boRead);
    const bool boReused = boHasKey(single.errors, "Error_EntityIdReused");
    const auto expected = boReused ? recordsBesideReuse(single.errors) : comparableRecords(single.errors);
    const auto found = boReused ? recordsBesideReuse(threaded.errors) : comparableRecords(threaded.errors);
    if (single.errors.boFatal()) {
        // The scanner may be ahead of the worker that finds the fault: nothing less, but more may have been read.
        EXPECT_TRUE(threaded.errors.boFatal());
        EXPECT_TRUE(std::ranges::includes(found, expected));
        EXPECT_GE(threaded.file.data().entities().size(), single.file.data().entities().size());
        return;
    }
    EXPECT_EQ(threaded.file.data().entities().size(), single.file.data().entities().size());
    EXPECT_EQ(found, expected);
    if (!single.boRead) return;   // a read without a proper end settles no numbers
    const ModelText model = comparableModel(single);
    const std::set<std::size_t> reused = reusedNumbers(model);
    EXPECT_EQ(reused.empty(), !boReused);
    EXPECT_EQ(modelWithout(comparableModel(threaded), reused), modelWithout(model, reused));
    if (boReused) return;
    EXPECT_EQ(threaded.file.data().guidEntityMap().size(), single.file.data().guidEntityMap().size());
    const auto iProject = [](const ReadFileModel& file) {
        const Entity* pProject = file.file.data().pProject();
        return pProject ? file.file.data().iIdFromEntity(*pProject) : 0;
    };
    EXPECT_EQ(iProject(threaded), iProject(single));
}

struct FileRow {
    const char* sRule;
    std::string text;
};

TEST(ThreadedRead, GivesTheModelOfASingleThreadedRead) {
    const FileRow rows[] = {
        {"nothing at all", ""},
        {"no statement", sFileOf("")},
        {"one statement", sFileOf("#1=IFCPOINT((1.));\n")},
        {"a project alone", sSmallFile(0)},
        {"one batch, not full", sSmallFile(10)},
        {"some batches", sSmallFile(1000)},
        {"many batches", sSmallFile(6000)},
        {"a name nobody knows", sFileOf("#1=IFCPOINT((1.));\n#2=IFCNOBODY();\n#3=IFCPOINT((1.));\n")},
        {"references to nothing", sFileOf("#1=IFCPROPERTY('a',#70000,(#5,#6),#900000);\n#2=IFCPOINT((1.));\n")},
        {"faulty values", sFileOf("#1=IFCPOINT((1.,x,3.));\n#2=IFCELEMENT('short','a',1.,.PINK.);\n#3="
                                  "IFCPROPERTY($,5,(6,#x),*);\n")},
        {"equal GUIDs",
         sFileOf("#1=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);\n#2=IFCELEMENT('" + sGuidOf(1) + "',$,$,$);\n")},
        {"no GUID", sFileOf("#1=IFCELEMENT($,$,$,$);\n")},
        {"an abstract type", sFileOf("#1=IFCROOT('" + sGuidOf(1) + "',$);\n")},
        {"too few and too many parameters", sFileOf("#1=IFCPOINT();\n#2=IFCPOINT((1.),2.);\n")},
        {"a statement that is none", sFileOf("#1=IFCPOINT((1.));\n#2=;\n#3=IFCPOINT((3.));\n")},
        {"a second equal sign", sFileOf("#1=IFCPOINT((1.))\n#2=IFCPOINT((2.));\n")},
        {"a comment without end", sFileOf("#1=IFCPOINT((1.));\n/* #2=IFCPOINT((2.));\n")},
        {"no end of the section", sSmallFile(300).substr(0, sSmallFile(300).find("ENDSEC;\nEND-ISO"))},
        {"a number used again",
         sFileOf("#1=IFCELEMENT('" + sGuidOf(1) + "',$,#2,$);\n#2=IFCPOINT((1.));\n#1=IFCELEMENT('" + sGuidOf(2) +
                 "',$,#3,$);\n")},
        {"the end amid a statement", sSmallFile(300).substr(0, sSmallFile(300).size() / 2)},
    };
    for (const FileRow& row : rows) {
        SCOPED_TRACE(row.sRule);
        vExpectTheSame(row.text);
    }
}

// Bytes are changed, taken out, doubled, and pieces moved about; the random numbers are the same in every run.
std::string sMutated(std::string text, std::mt19937& random) {
    static const std::string g_bytes = "#=();,'$*.\\/ \n1E-AX\x80";
    const auto below = [&random](std::size_t iLimit) { return random() % std::max<std::size_t>(iLimit, 1); };
    for (std::size_t i = 1 + below(4); i; --i) {
        const std::size_t iPlace = below(text.size());
        const std::size_t iLength = below(40);
        switch (below(5)) {
        case 0: text[iPlace] = g_bytes[below(g_bytes.size())]; break;
        case 1: text.erase(iPlace, 1 + iLength / 8); break;
        case 2: text.insert(iPlace, 1, g_bytes[below(g_bytes.size())]); break;
        case 3: text.insert(below(text.size()), text.substr(iPlace, iLength)); break;
        default: text.replace(iPlace, iLength, text.substr(below(text.size()), iLength)); break;
        }
    }
    return text;
}

TEST(ThreadedRead, AgreesOnFaultyFiles) {
    const std::string text = sSmallFile(110);   // three batches
    const std::size_t iHead = sFileOf("").find("DATA;\n");
    for (unsigned iSeed = 0; iSeed < 400; ++iSeed) {
        SCOPED_TRACE(iSeed);
        std::mt19937 random(iSeed);
        const std::string mutated = text.substr(0, iHead) + sMutated(text.substr(iHead), random);
        vExpectTheSame(mutated);
        if (testing::Test::HasFailure()) FAIL() << mutated;
    }
}

// Batches finish in any order, and each has a project of its own.
TEST(ThreadedRead, OfSeveralProjectsTheFirstInTheFileCounts) {
    std::string sText = "ISO-10303-21;HEADER;FILE_SCHEMA(('SMALL'));ENDSEC;DATA;";
    constexpr std::size_t g_iLast = 20'000;
    for (std::size_t i = g_iLast; i > 0; --i)
        sText +=
            '#' + std::to_string(i) +
            (i % 100 == 0 ? "=IFCPROJECT('" + sGuidOf(static_cast<std::uint32_t>(i)) + "',$,$);" : "=IFCPOINT((1.));");
    sText += "ENDSEC;END-ISO-10303-21;";
    for (int i = 0; i < 5; ++i) {
        const ReadFileModel model(sText, false, schemaIs(smallSchema()));
        ASSERT_TRUE(model.boRead);
        ASSERT_NE(model.file.data().pProject(), nullptr);
        EXPECT_EQ(model.file.data().iIdFromEntity(*model.file.data().pProject()), g_iLast);
    }
}

TEST(ThreadedRead, TellsWhatItsThreadsDid) {
    std::string sText = "ISO-10303-21;HEADER;FILE_SCHEMA(('SMALL'));ENDSEC;DATA;";
    std::uint64_t iBytes = 0;
    for (int i = 1; i <= 20'000; ++i) {
        const std::string sStatement = '#' + std::to_string(i) + "=IFCPOINT((1.));";
        iBytes += sStatement.size();
        sText += sStatement;
    }
    sText += "ENDSEC;END-ISO-10303-21;";
    const std::size_t iWorkers = io::IfcLineReadThreadPool::iWorkerCount();
    std::vector<std::string> threaded{"scan 0"};
    for (std::size_t i = 0; i <= iWorkers; ++i) threaded.push_back("parse " + std::to_string(i));
    for (const char* pStage : {"collect 0", "numbers 0", "inverse lists 0", "order 0"}) threaded.emplace_back(pStage);
    struct Row {
        bool boSingleThreaded;
        std::vector<std::string> stages;
    };
    for (const Row& row : {Row{false, threaded}, Row{true, {"scan 0", "numbers 0", "inverse lists 0", "order 0"}}}) {
        SCOPED_TRACE(row.boSingleThreaded);
        File file;
        io::ReadError errors;
        ReadTrace trace;
        trace.rows.resize(3);   // of another read
        std::istringstream in(sText);
        ASSERT_TRUE(file.boRead(
            in, errors,
            {.schemaFromName = schemaIs(smallSchema()), .boSingleThreaded = row.boSingleThreaded, .pTrace = &trace}));
        std::vector<std::string> stages;
        std::map<std::string, std::uint64_t> bytes;
        for (const ReadTrace::Row& told : trace.rows) {
            stages.push_back(told.pStage + std::string(" ") + std::to_string(told.iThread));
            bytes[told.pStage] += told.iBytes;
            EXPECT_GE(told.busy, 0) << stages.back();
            EXPECT_GE(told.waiting, 0) << stages.back();
        }
        EXPECT_EQ(stages, row.stages);
        if (row.boSingleThreaded) {
            EXPECT_GE(bytes["scan"], iBytes);   // as far as the stream was read
            EXPECT_LE(bytes["scan"], sText.size());
            continue;
        }
        // A NUL stands behind each statement but the last one of a batch.
        for (const char* pStage : {"scan", "parse", "collect"})
            EXPECT_EQ(bytes[pStage], iBytes + 20'000 - 100) << pStage;
    }
}

}   // namespace
}   // namespace oxa::ifc
