// SPDX-License-Identifier: Apache-2.0
// Statements that are composed behind each other in a block: the same as each by itself, wherever the block has to grow
// and wherever it ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <streambuf>

#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {
namespace {

using testing::ElementsAreArray;

// The statements by themselves.
Lines statementsOf(const Data& data) {
    Lines lines;
    for (const Entity* pEntity : data.entities()) lines.push_back(pEntity->sWriteLine(data));
    return lines;
}

// The texts that a writer of blocks gets, on one thread.
Lines blocksOf(const Data& data, std::size_t iBlock, WriteError& errors) {
    RecordingWriter writer;
    StepWriteInfoCommon info(data.entityIdMap(false), errors, writer, true);
    info.m_iBlockSize = iBlock;
    for (const Entity* pEntity : data.entities()) info.iEntityIdQueue(pEntity);
    data.vWrite(info, {});
    Lines blocks;
    for (const auto& [sBlock, iId] : writer.m_lines) blocks.push_back(sBlock);
    return blocks;
}

std::string sProperty(std::size_t iId, const std::string& sName, const std::string& sValues) {
    return '#' + std::to_string(iId) + "=IFCPROPERTY('" + sName + "',$,(" + sValues + "),$);";
}

// Texts of every length around the room that a cell finds, plain ones and ones that are encoded; lists of every length.
std::string sGrowing() {
    std::string statements;
    std::size_t iId = 0;
    for (std::size_t i = 0; i < 300; ++i) {
        statements += sProperty(++iId, std::string(i, 'x'), "");
        statements += sProperty(++iId, std::string(i, 'y') + "''\\\\", "IFCLABEL('" + std::string(3 * i, 'z') + "')");
        std::string sList;
        for (std::size_t iItem = 0; iItem < i % 40; ++iItem)
            sList += (iItem ? ",IFCLENGTHMEASURE(-0.1234567890123456)" : "#1");
        statements += sProperty(++iId, "\\X2\\00E400E5\\X0\\", sList);
    }
    statements += sProperty(++iId, std::string(40'000, 'w') + "''", "IFCLABEL('')");
    statements += sProperty(++iId, "", "");
    return statements;
}

TEST(BlockText, IsThatOfTheStatements) {
    const ReadFileModel model = modelOf(sGrowing());
    const Data& data = model.file.data();
    const Lines expected = statementsOf(data);
    ASSERT_EQ(expected.size(), 902U);
    for (const std::size_t iBlock : {1U, 100U, 1000U, 16'384U, 10'000'000U}) {
        SCOPED_TRACE(iBlock);
        WriteError errors;
        const Lines blocks = blocksOf(data, iBlock, errors);
        Lines lines;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            const Lines each = linesOf(blocks[i]);
            lines.insert(lines.end(), each.begin(), each.end());
            if (i + 1 == blocks.size()) continue;   // the rest
            EXPECT_GE(blocks[i].size(), iBlock);
            EXPECT_LE(blocks[i].size() - each.back().size(), iBlock);
        }
        EXPECT_THAT(lines, ElementsAreArray(expected));
        EXPECT_TRUE(errors.records().empty());
    }
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number})
        for (const bool boSingleThreaded : {true, false}) {
            Lines lines = linesOf(dataOf(data, {.boSingleThreaded = boSingleThreaded, .eOrder = eOrder}).text);
            if (eOrder == WriteOrder::Any && !boSingleThreaded) {
                std::ranges::sort(lines);
                Lines sorted = expected;
                std::ranges::sort(sorted);
                EXPECT_EQ(lines, sorted);
            } else {
                EXPECT_EQ(lines, expected);
            }
        }
}

// Values inside of values end with as many parentheses as they begin with, each of which finds room.
TEST(BlockText, HasRoomForWhatEndsNestedValues) {
    for (const std::size_t iDepth : {1U, 60U, 127U, 128U, 129U, 500U}) {
        std::string sValue = "IFCLABEL('a')";
        for (std::size_t i = 0; i < iDepth; ++i) sValue = "IFCVALUE(" + sValue + ')';
        const ReadFileModel model = modelOf("#1=IFCPROPERTY('n'," + sValue + ",(" + sValue + "),$);");
        const Lines statement = {model.file.data().entities().front()->sWriteLine(model.file.data())};
        WriteError errors;
        EXPECT_THAT(blocksOf(model.file.data(), 16'384, errors), ElementsAreArray(statement));
        EXPECT_EQ(std::ranges::count(statement[0], '('), std::ranges::count(statement[0], ')'));
    }
}

// A report has its own statement, up to where it was composed, and nothing of those in front of it.
TEST(BlockText, IsToldInReportsByTheStatement) {
    const ReadFileModel model =
        modelOf("#1=IFCPOINT((1.));#2=IFCPOINT($);#3=IFCPOINT((3.));#4=IFCPROPERTY('a',$,$,$);");
    WriteError errors;
    EXPECT_THAT(
        blocksOf(model.file.data(), 16'384, errors),
        ElementsAreArray({"#1=IFCPOINT((1.));\n#2=IFCPOINT($);\n#3=IFCPOINT((3.));\n#4=IFCPROPERTY('a',$,$,$);"}));
    Lines told;
    for (const Errors::ErrorRecord& record : errors.records()) told.push_back(record.lineString.value_or("none"));
    EXPECT_THAT(told, ElementsAreArray({"#2=IFCPOINT(", "#4=IFCPROPERTY('a',$,"}));
}

// On one thread everything in front of a fault comes to the stream, and the fault to the caller.
TEST(BlockText, IsWrittenUpToAFault) {
    std::string statements;
    for (std::size_t i = 1; i <= 2000; ++i) statements += sProperty(i, "p" + std::to_string(i), "");
    const ReadFileModel model = modelOf(statements);
    const Lines expected = statementsOf(model.file.data());
    for (const std::ptrdiff_t iLast : {0, 1, 10, 1500}) {
        std::ostringstream out;
        WriteError errors;
        const WriteOptions options{.boSingleThreaded = true, .progress = [&](unsigned iCount) {
                                       if (iCount > iLast) throw std::runtime_error("enough");
                                   }};
        EXPECT_THROW(WriteFile::boWrite(model.file.data(), nullptr, out, errors, options), std::runtime_error);
        EXPECT_THAT(linesOf(out.str()), ElementsAreArray(Lines(expected.begin(), expected.begin() + iLast)));
    }
}

// A stream that takes so many bytes.
class Limited final : public std::streambuf {
public:
    explicit Limited(std::size_t iBytes) : m_iBytes(iBytes) {}
    std::string m_text;

protected:
    std::streamsize xsputn(const char* p, std::streamsize iCount) override {
        if (m_text.size() + static_cast<std::size_t>(iCount) > m_iBytes) throw std::runtime_error("full");
        m_text.append(p, static_cast<std::size_t>(iCount));
        return iCount;
    }
    int overflow(int) override { throw std::runtime_error("full"); }

private:
    std::size_t m_iBytes;
};

// What a stream has taken when it fails is the front of the text, and nothing comes twice.
TEST(BlockText, EndsWhereTheStreamDoes) {
    const ReadFileModel model(sSmallFile(700), true, schemaIs(smallSchema()));
    for (const WriteOrder eOrder : {WriteOrder::Any, WriteOrder::Number}) {
        const WriteOptions options{.boSingleThreaded = true, .eOrder = eOrder};
        const std::string sWhole = dataOf(model.file.data(), options).text;
        ASSERT_GT(sWhole.size(), 100'000U);
        for (const std::size_t iBytes : {0U, 20'000U, 90'000U}) {
            Limited limited(iBytes);
            std::ostream out(&limited);
            out.exceptions(std::ios::badbit);
            WriteError errors;
            EXPECT_THROW(WriteFile::boWrite(model.file.data(), nullptr, out, errors, options), std::runtime_error);
            EXPECT_EQ(limited.m_text, sWhole.substr(0, limited.m_text.size()));
            EXPECT_GE(limited.m_text.size() + 40'000, iBytes);
        }
    }
}

}   // namespace
}   // namespace oxa::ifc::io
