// SPDX-License-Identifier: Apache-2.0
// Numbers that a write on several threads deals, to models of every shape: each its own, and kept by every write that follows.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Format/Ifc/ReadResult.h"
#include "Format/Ifc/Write/WrittenShapes.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {
namespace {

using def::schema::AttributeName;
using def::schema::ObjectName;

// Dealt by several threads, kept by every write that follows.
template <class Write>
void vExpectDealt(const Data& data, const Statements& statements, Write&& write) {
    for (int i = 0; i < 2; ++i) {
        static_cast<void>(data.entityIdMap(true));
        const std::string sFirst = write(g_together).text;
        EXPECT_EQ(statements.sUnlike(sRenumbered(sFirst)), "");
        EXPECT_TRUE(numbersIn(sFirst) == numbersFrom(1, statements.numbers().size()));
        vExpectWrites(write, Statements(linesOf(sFirst)), false);
    }
    static_cast<void>(data.entityIdMap(true));
    const std::string sSingle = write(WriteOptions{.boSingleThreaded = true, .eOrder = WriteOrder::Number}).text;
    EXPECT_EQ(statements.sUnlike(sRenumbered(sSingle)), "");
    for (int i = 0; i < 2; ++i) {
        static_cast<void>(data.entityIdMap(true));
        EXPECT_EQ(sDifference(write(WriteOptions{.eOrder = WriteOrder::Number}).text, sSingle), "");
    }
}

TEST(WriteTogether, DealsEachInstanceANumberOfItsOwn) {
    for (const Shape& shape : shapes(300)) {
        SCOPED_TRACE(shape.sRule);
        const ReadFileModel model = graphOf(allOf(shape), false);
        const Data& data = model.file.data();
        vExpectDealt(data, Statements(shape.reached),
                     [&](const WriteOptions& options) { return dataPart(fileOf(model.file, options)); });
        vExpectDealt(data, Statements(allOf(shape)),
                     [&](const WriteOptions& options) { return dataOf(data, options); });
    }
}

TEST(WriteTogether, DealsNumbersInTheSimpleForm) {
    const Statements statements(chain(3000, [](std::size_t i) { return 3001 - i; }));
    const std::string sHead = "Ifc file simple;\nCELLS;\n*;\n";
    FileSimple file(graphSchema());
    std::istringstream in(sHead + statements.sByNumber());
    ReadError readErrors;
    ASSERT_TRUE(file.boRead(in, schemaIs(graphSchema()), readErrors, {}, true));
    vExpectDealt(file.data(), statements, [&](const WriteOptions& options) {
        Written result = written([&](auto& out, auto& errors) { return file.boWrite(nullptr, out, errors, options); });
        EXPECT_TRUE(result.text.starts_with(sHead));
        result.text.erase(0, sHead.size());
        return result;
    });
}

Entity* pNodeCreate(Data& data, const std::string& sText) {
    Entity* pNode = data.pEntityCreate(ObjectName("IFCNODE"));
    EXPECT_TRUE(pNode->boValueSet(AttributeName("Text"), sText, data));
    return pNode;
}
void vNextSet(Data& data, Entity* pNode, const Entity* pNext) {
    EXPECT_TRUE(pNode->boValueSet(AttributeName("Next"), pNext, data));
}

// A model that was never in a file; and what stands in the list three times is written once.
TEST(WriteTogether, DealsNumbersToAModelFromMemory) {
    constexpr std::size_t g_iNodes = 2000;
    File file;
    file.vSchemaSet(graphSchema());
    Data& data = file.data();
    Entity* pProject = data.pEntityCreate(ObjectName("IFCPROJECT"));
    EXPECT_TRUE(pProject->boValueSet(AttributeName("Text"), std::string("1"), data));
    std::vector<Entity*> nodes(g_iNodes + 2);   // by number
    for (std::size_t i = 2; i < nodes.size(); ++i) nodes[i] = pNodeCreate(data, std::to_string(i));
    EXPECT_TRUE(pProject->boValueSet<const Entity*>(AttributeName("Start"), nodes[2], data));
    Lines lines = {sStatement(1, "PROJECT", "#2")};
    for (std::size_t i = 2; i < nodes.size(); ++i) {   // to the next three, and far back
        std::vector<const Entity*> others;
        for (std::size_t iOther = i + 1; iOther < std::min(i + 4, nodes.size()); ++iOther)
            others.push_back(nodes[iOther]);
        EXPECT_TRUE(nodes[i]->boListValueSet(AttributeName("Others"), others, data));
        vNextSet(data, nodes[i], nodes[i / 2 + 1]);
        lines.push_back(
            sNode(i, sTo(i / 2 + 1) + ',' + (others.empty() ? "()" : sListTo(i + 1, i + others.size())) + ",$"));
    }
    const Statements statements(lines);
    vExpectDealt(data, statements, [&](const WriteOptions& options) { return dataPart(fileOf(file, options)); });
    vExpectDealt(data, statements, [&](const WriteOptions& options) { return dataOf(data, options); });
    for (std::size_t i = 2; i < nodes.size(); i += 1 + i % 2)
        for (int iTimes = 0; iTimes < 2; ++iTimes) data.entityAdd(nodes[i]);
    for (const Way& way : g_ways) {
        SCOPED_TRACE(sShown(way));
        const WriteOptions options{.boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder};
        static_cast<void>(data.entityIdMap(&way - g_ways < 5));
        EXPECT_EQ(statements.sUnlike(sRenumbered(dataOf(data, options).text)), "");
    }
}

// Each instance of the file names a new one, and that the next of the file and a new one that leads nowhere.
TEST(WriteTogether, DealsNumbersAmongThoseOfAFile) {
    constexpr std::size_t g_iNodes = 200;
    for (const bool boAbove : {true, false}) {
        SCOPED_TRACE(boAbove);
        Lines fromFile = {"#1=IFCPROJECT('1',#10);"};
        Lines expected = fromFile;
        for (std::size_t i = 10; i < 10 * g_iNodes + 10; i += 10) {
            fromFile.push_back(sNode(i));
            expected.push_back(sNode(i, sTo(i + 7) + ",$,$"));
            expected.push_back(sNode(i + 7, (i < 10 * g_iNodes ? sTo(i + 10) : "$") + ",(" + sTo(i + 8) + "),$"));
            expected.push_back(sNode(i + 8));
        }
        const Statements statements(expected);
        std::vector<std::uint32_t> backwards;   // every other one
        for (std::uint32_t i = 10 * g_iNodes; i > 0; i -= 20) backwards.push_back(i);
        std::map<WriteOrder, std::string> texts;
        for (const Way& way : g_ways) {
            SCOPED_TRACE(sShown(way));
            ReadFileModel model = graphOf(fromFile);
            Data& data = model.file.data();
            for (std::size_t i = 10; i < 10 * g_iNodes + 10; i += 10) {
                Entity* pNew = pNodeCreate(data, std::to_string(i + 7));
                vNextSet(data, data.pEntityFromId(i), pNew);
                if (i < 10 * g_iNodes) vNextSet(data, pNew, data.pEntityFromId(i + 10));
                EXPECT_TRUE(pNew->boListValueSet(AttributeName("Others"),
                                                 std::vector<const Entity*>{pNodeCreate(data, std::to_string(i + 8))},
                                                 data));
            }
            if (boAbove) {
                EXPECT_TRUE(data.boNumbersAbove());
            }
            const std::string sText = dataPart(fileOf(model.file, {.boSingleThreaded = way.boSingleThreaded,
                                                                   .eOrder = way.eOrder,
                                                                   .fileNumbers = backwards}))
                                          .text;
            if (boAbove) {
                EXPECT_EQ(statements.sUnlike(sRenumbered(sText)), "");
                std::vector<std::size_t> numbers = numbersIn(sText);
                EXPECT_TRUE(std::vector<std::size_t>(numbers.end() - 2 * g_iNodes, numbers.end()) ==
                            numbersFrom(10 * g_iNodes + 1, 2 * g_iNodes));
            }
            EXPECT_EQ(std::ranges::count(sText, '\n'), 3 * g_iNodes + 1);
            if (way.eOrder != WriteOrder::Any) {
                EXPECT_EQ(sDifference(sText, texts.try_emplace(way.eOrder, sText).first->second), "");
            }
            // Who has a number now keeps it; one that two have is told in every way alike.
            Lines lines = linesOf(sText);
            std::ranges::sort(lines);
            std::multiset<std::string> told;
            for (const Way& again : g_ways) {
                const Written next = fileOf(
                    model.file,
                    {.boSingleThreaded = again.boSingleThreaded, .eOrder = again.eOrder, .boTellNumbersTwice = true});
                Lines others = linesOf(dataPart(next).text);
                std::ranges::sort(others);
                EXPECT_TRUE(others == lines) << sShown(again);
                if (&again == g_ways) told = next.records;
                EXPECT_TRUE(next.records == told) << sShown(again) << ", " << next.records.size();
            }
            std::vector<std::size_t> numbers = numbersIn(sText);
            EXPECT_EQ(told.size(),
                      static_cast<std::size_t>(numbers.end() - std::unique(numbers.begin(), numbers.end())));
            EXPECT_EQ(boAbove, told.empty());
        }
    }
}

// Instances that are named and never defined get numbers too, each one of its own, and no statement.
TEST(WriteTogether, DealsOneNumberToWhatIsNeverDefined) {
    constexpr std::size_t g_iNodes = 3000;
    constexpr std::size_t g_iMissing = 400;
    const Lines plain = chain(g_iNodes, [](std::size_t i) { return i + 2; });
    // The lines with what two of the missing instances are called.
    const auto linesWith = [&plain](auto&& sMissing) {
        Lines lines = {plain[0]};
        for (std::size_t i = 1; i <= g_iNodes; ++i)
            lines.push_back(plain[i].substr(0, plain[i].size() - 6) + ",(" + sMissing(i * 7 % g_iMissing) + ")," +
                            sMissing(i % g_iMissing) + ");");
        return lines;
    };
    const Lines lines = linesWith([](std::size_t i) { return sTo(i + 90'000); });
    const Statements statements(linesWith([](std::size_t) { return "#?"; }));
    for (const bool boFirstSingle : {false, false, true})
        for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number}) {
            ReadFileModel model = graphOf(lines);
            EXPECT_TRUE(model.file.data().boNumbersAbove());
            const WriteOptions options{.boSingleThreaded = boFirstSingle, .eOrder = eOrder};
            const std::string sText = dataPart(fileOf(model.file, options)).text;
            EXPECT_EQ(statements.sUnlike(sRenumbered(sText)), "");
            std::vector<std::string> dealt(g_iMissing);
            for (const std::string& sLine : linesOf(sText))
                if (const std::size_t iNode = iNumberOf(sLine) - 1; iNode > 0)
                    dealt[iNode % g_iMissing] = sLine.substr(sLine.rfind('#'), sLine.size() - 2 - sLine.rfind('#'));
            EXPECT_EQ(std::set<std::string>(dealt.begin(), dealt.end()).size(), g_iMissing);
            const Statements written(linesWith([&dealt](std::size_t i) { return dealt[i]; }));
            EXPECT_EQ(written.sUnlike(sText), "");
            vExpectFile(model.file, written);
        }
}

}   // namespace
}   // namespace oxa::ifc::io
