// SPDX-License-Identifier: Apache-2.0
// A long DATA section is scanned in blocks by several threads, and nobody can tell: model, reports, progress and the
// stream are those of a single-threaded read, whatever lies across the border of two blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ios>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "Format/Ifc/SmallModel.h"
#include "Sanitized.h"
#include "platform/SharedBytes.h"

namespace oxa::ifc {
namespace {

constexpr std::size_t g_iBuffer = 16'384;
constexpr std::size_t g_iBlock = 8 * g_iBuffer - 1;   // counted from the byte behind "DATA;"

const std::string g_sAfterName = "',$,(IFCLABEL('a')),$);\n";

// The core is what is put to a place; with something in front of it, it lies in a statement, else between two.
struct Thing {
    const char* sRule;
    std::string sBefore;   // without the number
    std::string sCore;
    std::string sAfter;
    std::string sEnd = "\n";   // of the lines of the file around it
};

// A statement of so many bytes: blanks, and every fourth one coordinates, which cost more time.
std::string sPoint(std::size_t iNumber, std::size_t iSize) {
    std::string sText = '#' + std::to_string(iNumber);
    sText += "=IFCPOINT((1.";
    if (sText.size() + 3 > iSize) throw std::logic_error("no room for a statement");
    while (iNumber % 4 == 0 && sText.size() + 6 <= iSize) sText += ",1.";
    sText.append(iSize - sText.size() - 3, ' ');
    return sText += "));";
}

std::string sRepeated(const std::string& sPiece, std::size_t iSize) {
    std::string sText;
    while (sText.size() < iSize) sText += sPiece;
    return sText;
}

// A file of points with other things at exact places, which are counted as blocks are.
class BlockText {
public:
    explicit BlockText(std::string sEnd = "\n", std::size_t iLength = 300)
        : m_sEnd(std::move(sEnd)),
          m_iLength(iLength),
          m_sData(m_sEnd) {
        for (const char* sLine : {"ISO-10303-21;", "HEADER;", "FILE_DESCRIPTION((''),'2;1');",
                                  "FILE_NAME('','',(''),(''),'','','');", "FILE_SCHEMA(('CELLS'));", "ENDSEC;"})
            m_sHead.append(sLine).append(m_sEnd);
        m_sHead += "DATA;";
    }

    // Points, up to a place that is none or at least one point away.
    void vFillTo(std::size_t iPlace) {
        if (iPlace < m_sData.size()) throw std::logic_error("the place is behind");
        while (iPlace - m_sData.size() >= 2 * m_iLength) vPoint(m_iLength);
        if (iPlace != m_sData.size()) vPoint(iPlace - m_sData.size());
    }
    void vRaw(std::size_t iPlace, const std::string& sText) {
        vFillTo(iPlace);
        m_sData += sText;
    }
    void vThing(const Thing& thing, std::size_t iCorePlace) {
        vFillTo(iCorePlace - (thing.sBefore.empty() ? 0 : 7 + thing.sBefore.size()));
        vThing(thing);
    }
    void vThing(const Thing& thing) {
        if (!thing.sBefore.empty()) {
            m_sData += '#' + std::to_string(m_iThing++);   // 7 bytes
            ++m_iStatements;
        }
        m_sData.append(thing.sBefore).append(thing.sCore).append(thing.sAfter);
    }

    [[nodiscard]] std::string sOpen() const { return m_sHead + m_sData; }
    [[nodiscard]] std::string sWhole() const {
        return sOpen().append("ENDSEC;").append(m_sEnd).append("END-ISO-10303-21;").append(m_sEnd);
    }
    [[nodiscard]] std::size_t iHead() const { return m_sHead.size(); }
    [[nodiscard]] std::size_t iStatements() const { return m_iStatements; }

private:
    void vPoint(std::size_t iSize) {
        m_sData += sPoint(++m_iNumber, iSize - m_sEnd.size());
        m_sData += m_sEnd;
        ++m_iStatements;
    }

    std::string m_sEnd;
    std::size_t m_iLength;
    std::string m_sHead;
    std::string m_sData;
    std::size_t m_iNumber = 0;
    std::size_t m_iThing = 900'001;
    std::size_t m_iStatements = 0;
};

// All that a caller sees of a read.
struct Seen {
    std::unique_ptr<File> pFile = std::make_unique<File>();
    bool boRead = false;
    bool boFatal = false;
    std::multiset<std::string> records;   // of a number used again only what is told: either statement may come second
    std::multiset<std::string> told;      // line and key
    std::vector<unsigned> progress;
    bool boElsewhere = false;   // progress was told on another thread
    int iState = 0;
    std::streamoff iStands = 0;
};

Seen seenOf(std::istream& in, bool boSingleThreaded) {
    Seen seen;
    io::ReadError errors;
    const std::thread::id caller = std::this_thread::get_id();
    const auto progress = [&seen, caller](unsigned iPlace) {
        seen.progress.push_back(iPlace);
        if (std::this_thread::get_id() != caller) seen.boElsewhere = true;
    };
    seen.boRead = seen.pFile->boRead(in, errors,
                                     {.schemaFromName = schemaIs(smallSchema()),
                                      .boKeepIds = true,
                                      .progress = progress,
                                      .boSingleThreaded = boSingleThreaded});
    seen.boFatal = errors.boFatal();
    for (const Errors::ErrorRecord& record : errors.records()) {
        seen.records.insert(record.key == "Error_EntityIdReused" ? record.description : sRecordText(record));
        seen.told.insert(std::to_string(record.lineNumber) + ' ' + record.key.value_or("?"));
    }
    seen.iState = static_cast<int>(in.rdstate());
    in.clear();
    seen.iStands = std::streamoff(in.tellg());
    return seen;
}

Seen seenOf(const std::string& sText, bool boSingleThreaded) {
    std::istringstream in(sText);
    return seenOf(in, boSingleThreaded);
}

// Without the numbers that several statements define.
ModelText modelOf(const Data& data) {
    ModelText text = modelText(data);
    std::set<std::size_t> reused;
    for (const auto& [iId, instance] : text)
        if (text.count(iId) > 1) reused.insert(iId);
    std::erase_if(text, [&](const auto& instance) { return reused.contains(instance.first); });
    return text;
}

std::size_t iProjectOf(const Seen& seen) {
    const Entity* pProject = seen.pFile->data().pProject();
    return pProject ? seen.pFile->data().iIdFromEntity(*pProject) : 0;
}

// Of a fatal fault that a worker finds, the scanner hears late: then there may be more than on a single thread.
void vExpectSame(const Seen& threaded, const Seen& single, bool boWorkersFault = false) {
    ASSERT_EQ(threaded.boRead, single.boRead);
    EXPECT_EQ(threaded.boFatal, single.boFatal);
    EXPECT_FALSE(single.boElsewhere);
    EXPECT_FALSE(threaded.boElsewhere);
    const std::size_t iEntities = single.pFile->data().entities().size();
    if (boWorkersFault) {
        EXPECT_TRUE(std::ranges::includes(threaded.records, single.records));
        EXPECT_GE(threaded.pFile->data().entities().size(), iEntities);
        return;
    }
    EXPECT_EQ(threaded.records, single.records);
    EXPECT_EQ(threaded.progress, single.progress);
    EXPECT_EQ(threaded.iState, single.iState);
    EXPECT_EQ(threaded.iStands, single.iStands);
    EXPECT_EQ(threaded.pFile->data().entities().size(), iEntities);
    if (!single.boRead) return;   // numbers are not settled
    const ModelText found = modelOf(threaded.pFile->data());
    const ModelText expected = modelOf(single.pFile->data());
    const auto [place, wanted] = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
    if (place != found.end() || wanted != expected.end())
        ADD_FAILURE() << "found " << (place == found.end() ? "the end" : place->second.sStatement) << ", expected "
                      << (wanted == expected.end() ? "the end" : wanted->second.sStatement);
    EXPECT_EQ(threaded.pFile->data().guidEntityMap().size(), single.pFile->data().guidEntityMap().size());
    EXPECT_EQ(iProjectOf(threaded), iProjectOf(single));
}

// Of a text without a fault that would keep a statement out.
void vExpectWhole(const BlockText& text) {
    const std::string sText = text.sWhole();
    const Seen single = seenOf(sText, true);
    ASSERT_TRUE(single.boRead);
    ASSERT_EQ(single.pFile->data().entities().size(), text.iStatements());
    vExpectSame(seenOf(sText, false), single);
}

const std::vector<Thing>& things() {
    static const std::vector<Thing> g_things = {
        {"a string", "=IFCPROPERTY('", "a text of some words, long enough", g_sAfterName},
        {"a string with a statement in it", "=IFCPROPERTY('", "a;#7=IFCPOINT((1.));b;\n#8=c", g_sAfterName},
        {"doubled quotes", "=IFCPROPERTY('", "a''b'''';#7=''c", g_sAfterName},
        {"nothing but a doubled quote", "=IFCPROPERTY('", "''", g_sAfterName},
        {"an escape of four digits", "=IFCPROPERTY('", "a\\X2\\00E9\\X0\\b", g_sAfterName},
        {"an escape of two digits", "=IFCPROPERTY('", "a\\X\\E9b", g_sAfterName},
        {"an escape that takes a quote", "=IFCPROPERTY('", "a\\S\\'b;#7=c", g_sAfterName},
        {"a doubled backslash", "=IFCPROPERTY('", "a\\\\", g_sAfterName},
        {"a comment between statements", "", "/*;\n#7=IFCPOINT((1.));it's*/\n", ""},
        {"a comment within a statement", "=IFCPOINT((1.", "/*;\n#7=IFCPOINT((1.));it's**/", ",2.));\n"},
        {"a comment behind a number", "=/**/IFCPOINT", "/*'*//*;#7='*/", "((1.));\n"},
        {"a solidus", "=IFCPROPERTY('a',$,(IFCLABEL('/*')),$", ")/", ";\n"},
        {"blanks between statements", "", "   \n \r\n\n        \n\n  \r\n          \n ", ""},
        {"blanks within a statement", "=IFCPOINT(", "   \n \r\n\n        \n\n  \r\n          \n ", "(1.));\n"},
        {"blanks in a word", "=IFC", " \n PO  \n\n INT", "((1.));\n"},
        {"the end of a statement", "=IFCPOINT((1.,2.,3.))", ";", "\n"},
        {"the end of a statement, and a comment", "=IFCPOINT((1.,2.,3.))", ";/*';#7=*/", "\n"},
        {"CRLF line ends", "=IFCPOINT((1.,2.", "));\r\n", "\r\n", "\r\n"},
        {"no line ends", "=IFCPOINT((1.,2.", "));", "", ""},
    };
    return g_things;
}

TEST(BlockRead, FindsWhatLiesAcrossABorder) {
    for (const Thing& thing : things()) {
        SCOPED_TRACE(thing.sRule);
        // Five of the offsets -40 to 4 in each; with a sanitizer a third of them.
        for (std::size_t iText = 0; iText < 9; iText += test::g_boSanitized ? 3 : 1) {
            SCOPED_TRACE(iText);
            BlockText text(thing.sEnd);
            for (std::size_t i = 1; i <= 5; ++i) text.vThing(thing, i * g_iBlock - 40 + 5 * iText + (i - 1));
            text.vFillTo(6 * g_iBlock);
            vExpectWhole(text);
            if (HasFailure()) return;
        }
    }
}

TEST(BlockRead, FindsTheEndOfWhatIsLongerThanABlock) {
    const std::string sPiece = "a;\n#7=IFCPOINT((1.));it''s ";
    const std::string sLone = "a;\n#7=IFCPOINT((1.));it's ";
    const std::vector<Thing> longThings = {
        {"a statement, one block", "=IFCPOINT((1.", sRepeated(",2.", g_iBlock + 5000), "));\n"},
        {"a statement, three blocks", "=IFCPOINT((1.", sRepeated(",2.", 3 * g_iBlock + 5000), "));\n"},
        {"a string, two blocks", "=IFCPROPERTY('", sRepeated(sPiece, 2 * g_iBlock + 5000), g_sAfterName},
        {"a comment, two blocks", "", std::string("/*") + sRepeated(sLone, 2 * g_iBlock + 5000) + "*/\n", ""},
        {"a comment in a statement", "=IFCPOINT", std::string("/*") + sRepeated(sLone, 2 * g_iBlock) + "*/",
         "((1.));\n"},
        {"blanks, two blocks", "=IFCPOINT(", sRepeated("  \r\n\n  ", 2 * g_iBlock + 5000), "(1.));\n"},
    };
    for (const Thing& thing : longThings) {
        SCOPED_TRACE(thing.sRule);
        for (const std::size_t iBefore : {40U, 13U, 1U, 0U}) {
            SCOPED_TRACE(iBefore);
            BlockText text;
            text.vThing(thing, g_iBlock - iBefore);
            text.vFillTo(8 * g_iBlock);
            vExpectWhole(text);
        }
    }
}

TEST(BlockRead, AgreesOnAnyMixtureAroundTheBorders) {
    for (unsigned iSeed = 0; iSeed < 40; ++iSeed) {
        SCOPED_TRACE(iSeed);
        std::mt19937 random(iSeed);
        BlockText text;
        for (std::size_t i = 1; i <= 5; ++i) {
            text.vFillTo(i * g_iBlock - 400 + random() % 200);
            for (int k = 0; k < 20; ++k) text.vThing(things()[random() % things().size()]);
        }
        text.vFillTo(6 * g_iBlock);
        vExpectWhole(text);
        if (HasFailure()) return;
    }
}

// Every block begins in a comment from which it looks as if a string began, and holds more of them.
TEST(BlockRead, IsNotMisledByComments) {
    BlockText text;
    for (std::size_t i = 0; i < 8; ++i) {
        if (i > 0) text.vRaw(i * g_iBlock - 3, "/* ;#1='*/\n");
        for (std::size_t k = 1; k < 30; ++k) text.vRaw(i * g_iBlock + k * 4000, "/*;#1='*/\n");
    }
    text.vFillTo(8 * g_iBlock);
    vExpectWhole(text);
}

struct EndRow {
    const char* sRule;
    std::string sText;
    bool boRead;
    const char* sKey = "";   // what is told; "" for nothing
    bool boWorkersFault = false;
};

// In the last half of a block, at its end, and where the next one begins. boOpen: the file ends behind it.
void vExpectRow(const EndRow& row, std::size_t iBlock, bool boOpen) {
    SCOPED_TRACE(row.sRule);
    for (const std::size_t iPlace : {iBlock * g_iBlock - 65'000, iBlock * g_iBlock - 10, iBlock * g_iBlock}) {
        SCOPED_TRACE(iPlace);
        BlockText text;
        text.vRaw(iPlace, row.sText);
        if (!boOpen) text.vFillTo(7 * g_iBlock);
        const std::string sText = boOpen ? text.sOpen() : text.sWhole();
        const Seen single = seenOf(sText, true);
        EXPECT_EQ(single.boRead, row.boRead);
        ASSERT_EQ(single.told.size(), *row.sKey ? 1U : 0U);
        for (const std::string& sTold : single.told) EXPECT_EQ(sTold.substr(sTold.find(' ') + 1), row.sKey);
        vExpectSame(seenOf(sText, false), single, row.boWorkersFault);
    }
}

TEST(BlockRead, AgreesOnWhatIsNoOrdinaryStatement) {
    const std::string sName = "#900001=IFCPROPERTY('a";
    // clang-format off
    const EndRow rows[] = {
        {"the end, and a further section", "ENDSEC;\nDATA;\n", true},
        {"the end in a string", sName + "ENDSEC;" + g_sAfterName, true},
        {"no number sign", "NOTHING(1,'a;#7=');\n", true},
        {"empty statements", ";; ;\n;", true},
        {"a comment in front of the number", ";/*'*/#900001=IFCPOINT((1.));\n", true},
        {"a tab in front of the number", "\t#900001=IFCPOINT((1.));\n", false, "Error_ExpectedNumberSign", true},
        {"the number sign not in front", "A#900001=IFCPOINT((1.));\n", false, "Error_ExpectedNumberSign", true},
        {"no number", "#9x=IFCPOINT((1.));\n", false, "Error_ExpectedLeftParenthesis", true},
        {"no type", "#900001=;\n", false, "Error_InvalidEntity", true},
        {"a second equal sign", "#900001=IFCPOINT((1.))\n#900002=IFCPOINT((2.));\n", false,
         "Error_UnexpectedEqualOperator"},
        {"a backslash outside a string", "#900001=IFCPOINT((1.))\\;\n", false, "Error_InvalidFile"},
        {"a backslash before a line end", sName + "\\\nb" + g_sAfterName, false, "Error_UnexpectedNewlineInString"},
        {"a comment without end", "/* #900001=IFCPOINT((1.));\n", false, "Error_EndOfCommentNotFound"},
        {"a string without end", sName + ",$,$,$);\n", false, "Error_InvalidFile"},
        {"an unknown type", "#900001=IFCNOBODY((1.));\n", true, "Error_UnknownEntityType"},
        {"a malformed number", "#900001=IFCPOINT((1.,x,3.));\n", true, "Error_ExpectedValidRealInListFor"},
        {"a number of another block", "#5=IFCPOINT((7.));\n", true, "Error_EntityIdReused"},
    };
    // clang-format on
    for (const EndRow& row : rows) vExpectRow(row, 3, false);
}

TEST(BlockRead, AgreesOnAnEndThatIsTooEarly) {
    const EndRow rows[] = {
        {"behind a statement", "", false, "Error_InvalidFile"},
        {"amid a statement", "#900001=IFCPOI", false, "Error_InvalidFile"},
        {"in a string", "#900001=IFCPROPERTY('a''", false, "Error_InvalidFile"},
        {"in an escape", "#900001=IFCPROPERTY('a\\X2\\00", false, "Error_InvalidFile"},
        {"in a comment", "/* it's", false, "Error_EndOfCommentNotFound"},
        {"behind a solidus", "/", false, "Error_InvalidEndOfFile"},
        {"after a fault that is not fatal", "#900001=IFCNOBODY();\n", false, "Error_UnknownEntityType"},
    };
    for (const EndRow& row : rows) vExpectRow(row, 5, true);
}

// The line of every statement that has this in it, with what is told of it.
std::multiset<std::string> linesOf(const std::string& sText, const std::string& sWanted, const std::string& sKey) {
    std::multiset<std::string> lines;
    for (std::size_t i = sText.find(sWanted); i != std::string::npos; i = sText.find(sWanted, i + 1)) {
        const auto end = sText.begin() + static_cast<std::ptrdiff_t>(sText.find(';', i));
        lines.insert(std::to_string(1 + std::count(sText.begin(), end, '\n')) + ' ' + sKey);
    }
    return lines;
}

TEST(BlockRead, OfEqualGuidsTheFirstInTheFileIsKept) {
    BlockText text;
    for (const std::size_t i : {0U, 1U, 3U, 6U})
        text.vThing({"", "=IFCELEMENT('", sGuidOf(1), "',$,$,$);\n"}, i * g_iBlock + 70'000);
    text.vFillTo(7 * g_iBlock);
    std::multiset<std::string> lines = linesOf(text.sWhole(), "IFCELEMENT", "Error_DuplicateGuids");
    ASSERT_EQ(lines.size(), 4U);
    const std::string sFirst = *linesOf(text.sWhole(), "#900001=", "Error_DuplicateGuids").begin();
    ASSERT_EQ(lines.erase(sFirst), 1U);
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        const Seen seen = seenOf(text.sWhole(), boSingleThreaded);
        ASSERT_TRUE(seen.boRead);
        EXPECT_EQ(seen.told, lines);
        const Entity* pKept = seen.pFile->data().guidEntityMap().pFind(IfcGuid::fromIfcGuid(sGuidOf(1)).value());
        ASSERT_NE(pKept, nullptr);
        EXPECT_EQ(seen.pFile->data().iIdFromEntity(*pKept), 900'001U);
    }
}

// Blocks are parsed in any order, and the later ones have projects too.
TEST(BlockRead, OfSeveralProjectsTheFirstInTheFileCounts) {
    BlockText text;
    for (std::size_t i = 0; i < 7; ++i)
        text.vRaw(i * g_iBlock + 110'000 - 15'000 * i,
                  '#' + std::to_string(900'009 - i) + "=IFCPROJECT('" + sGuidOf(i) + "',$,$);\n");
    text.vFillTo(7 * g_iBlock);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(iProjectOf(seenOf(text.sWhole(), false)), 900'009U);
}

TEST(BlockRead, TellsTheLineOfAFault) {
    for (const char* sEnd : {"\n", "\r\n"}) {
        BlockText text(sEnd);
        for (const std::size_t i : {0U, 1U, 3U, 6U}) {
            if (i > 0) {   // lines that end within a string and within a comment, across a border
                text.vThing({"", "=IFCPROPERTY('", "a\n\nb\n;\n#7=\n\n", g_sAfterName}, i * g_iBlock - 3);
                text.vThing({"", "", "/*\n'\n\n;\n#7=\n*/\n\n\n", ""});
            }
            text.vThing({"", "=IFCNOBODY(", "\n\n", ");\n"}, i * g_iBlock + 60'000);
        }
        text.vFillTo(6 * g_iBlock + 90'000);
        const std::multiset<std::string> lines = linesOf(text.sWhole(), "IFCNOBODY", "Error_UnknownEntityType");
        ASSERT_EQ(lines.size(), 4U);
        EXPECT_EQ(seenOf(text.sWhole(), true).told, lines);
        EXPECT_EQ(seenOf(text.sWhole(), false).told, lines);
    }
}

TEST(BlockRead, TellsItsProgress) {
    BlockText text("\n", 40);
    text.vFillTo(8 * g_iBlock);
    const Seen single = seenOf(text.sWhole(), true);
    const Seen threaded = seenOf(text.sWhole(), false);
    EXPECT_EQ(threaded.progress.size(), (text.iStatements() - 1) / 1000 + 1);
    vExpectSame(threaded, single);
}

TEST(BlockRead, HandsOnWhatTheProgressThrows) {
    BlockText text("\n", 40);
    text.vFillTo(8 * g_iBlock);
    for (const bool boSingleThreaded : {true, false}) {
        SCOPED_TRACE(boSingleThreaded);
        int iCalls = 0;
        ReadOptions options;
        options.schemaFromName = schemaIs(smallSchema());
        options.boSingleThreaded = boSingleThreaded;
        options.progress = [&iCalls](unsigned) {
            if (++iCalls == 3) throw std::runtime_error("enough");
        };
        File file;
        io::ReadError errors;
        std::istringstream in(text.sWhole());
        EXPECT_THROW(static_cast<void>(file.boRead(in, errors, options)), std::runtime_error);
        EXPECT_EQ(iCalls, 3);
    }
}

// Buffers are counted from where the stream stood, and the last one taken is that with the end of the section.
TEST(BlockRead, LeavesTheStreamWhereASingleThreadDoes) {
    const std::size_t iHead = BlockText().iHead();
    const std::size_t iEven = 50 * g_iBuffer - 7 - iHead;   // the ";" of the end is the last byte of a buffer
    struct Row {
        const char* sRule;
        std::size_t iFront;
        std::size_t iData;
        std::size_t iBehind;
    };
    const Row rows[] = {
        {"nothing behind", 0, 6 * g_iBlock, 0},
        {"some bytes behind", 0, 6 * g_iBlock, 7},
        {"many bytes behind", 0, 6 * g_iBlock, 100'000},
        {"bytes in front", 1000, 6 * g_iBlock, 100'000},
        {"bytes in front, none behind", 1000, 6 * g_iBlock, 0},
        {"the end is the last byte of a buffer", 0, iEven, 100'000},
        {"the end is the first byte of a buffer", 0, iEven + 1, 100'000},
        {"the last byte, bytes in front", 1000, iEven, 100'000},
    };
    std::string sName = "oxa-block-read-";
    sName.append(std::to_string(std::random_device{}())).append(".ifc");
    const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / sName;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.sRule);
        BlockText text;
        text.vFillTo(row.iData);
        const std::string sText = std::string(row.iFront, '\\') + text.sWhole() + std::string(row.iBehind, '=');
        const std::size_t iEnd = text.sOpen().size() + 7;
        const auto iStands = static_cast<std::streamoff>(
            std::min(sText.size(), row.iFront + (iEnd + g_iBuffer - 1) / g_iBuffer * g_iBuffer));
        std::ofstream(path, std::ios::binary) << sText;
        const auto front = static_cast<std::streamoff>(row.iFront);
        const auto vExpectIt = [&]<class Stream>(std::type_identity<Stream>, const auto& source) {
            const auto seenFrom = [&](bool boSingleThreaded) {
                Stream in(source, std::ios::in | std::ios::binary);
                in.seekg(front);
                return seenOf(in, boSingleThreaded);
            };
            const Seen single = seenFrom(true);
            EXPECT_TRUE(single.boRead);
            EXPECT_EQ(single.iStands, iStands);
            vExpectSame(seenFrom(false), single);
        };
        vExpectIt(std::type_identity<std::istringstream>{}, sText);
        vExpectIt(std::type_identity<std::ifstream>{}, path);
    }
    std::filesystem::remove(path);
}

// A text that shares its bytes, though not those from some place on.
class OwnBuffer final : public std::streambuf, public stream::ShareableBuffer {
public:
    OwnBuffer(std::string sText, std::size_t iShared, std::function<void(std::uint64_t)> reached = {})
        : m_sText(std::move(sText)),
          m_iShared(iShared),
          m_reached(std::move(reached)) {
        vStand(0);
    }

    std::unique_ptr<stream::SharedBytes> pShare() override {
        if (!m_iShared) return nullptr;
        return std::make_unique<Bytes>(*this);
    }
    [[nodiscard]] std::size_t iReads() const { return m_iReads; }

private:
    class Bytes final : public stream::SharedBytes {
    public:
        explicit Bytes(OwnBuffer& buffer) : SharedBytes(buffer.iStands(), buffer.m_sText.size()), m_buffer(buffer) {}
        std::size_t iReadAt(std::uint64_t iPlace, char* pTo, std::size_t iWanted) noexcept override {
            ++m_buffer.m_iReads;
            if (iPlace >= m_buffer.m_iShared) return 0;
            const auto iFrom = static_cast<std::size_t>(iPlace);
            const std::size_t iCount = std::min(iWanted, m_buffer.m_iShared - iFrom);
            std::copy_n(m_buffer.m_sText.data() + iFrom, iCount, pTo);
            return iCount;
        }
        void vReached(std::uint64_t iPlace) override {
            if (m_buffer.m_reached) m_buffer.m_reached(iPlace);
        }
        void vGoOnAt(std::uint64_t iPlace) override { m_buffer.vStand(static_cast<std::size_t>(iPlace)); }

    private:
        OwnBuffer& m_buffer;
    };

    std::size_t iStands() const { return static_cast<std::size_t>(gptr() - eback()); }
    void vStand(std::size_t iPlace) {
        char* const pText = m_sText.data();
        setg(pText, pText + iPlace, pText + m_sText.size());
    }
    pos_type seekoff(off_type iOffset, std::ios_base::seekdir from, std::ios_base::openmode which) override {
        const off_type iFrom = from == std::ios_base::beg   ? 0
                               : from == std::ios_base::cur ? gptr() - eback()
                                                            : egptr() - eback();
        return seekpos(pos_type(iFrom + iOffset), which);
    }
    pos_type seekpos(pos_type place, std::ios_base::openmode) override {
        const off_type iPlace(place);
        if (iPlace < 0 || iPlace > egptr() - eback()) return pos_type(off_type(-1));
        vStand(static_cast<std::size_t>(iPlace));
        return place;
    }

    std::string m_sText;
    std::size_t m_iShared;
    std::function<void(std::uint64_t)> m_reached;
    std::atomic<std::size_t> m_iReads{0};
};

TEST(BlockRead, GoesOnWhereBytesAreNotShared) {
    BlockText text;
    for (std::size_t i = 1; i <= 6; ++i) text.vThing(things()[1], i * g_iBlock - 5);
    text.vFillTo(7 * g_iBlock);
    const std::string sText = text.sWhole();
    const std::size_t iData = text.iHead();
    const Seen single = seenOf(sText, true);
    ASSERT_TRUE(single.boRead);
    for (const std::size_t iShared :
         {std::size_t{0}, std::size_t{1}, iData + 10, iData + g_iBlock + 777, iData + 3 * g_iBlock,
          iData + 5 * g_iBlock - 1, sText.size() - 40, sText.size()}) {
        SCOPED_TRACE(iShared);
        const std::thread::id caller = std::this_thread::get_id();
        OwnBuffer buffer(sText, iShared, [&](std::uint64_t iPlace) {
            EXPECT_LE(iPlace, sText.size());
            EXPECT_EQ(std::this_thread::get_id(), caller);
        });
        std::istream in(&buffer);
        vExpectSame(seenOf(in, false), single);
        EXPECT_EQ(buffer.iReads() > 0, iShared > 0);
    }
}

TEST(BlockRead, HandsOnWhatASharedBufferThrows) {
    BlockText text;
    text.vFillTo(7 * g_iBlock);
    OwnBuffer buffer(text.sWhole(), text.sWhole().size(), [](std::uint64_t) { throw std::runtime_error("stopped"); });
    std::istream in(&buffer);
    File file;
    io::ReadError errors;
    const ReadOptions options{.schemaFromName = schemaIs(smallSchema())};
    EXPECT_THROW(static_cast<void>(file.boRead(in, errors, options)), std::runtime_error);
}

}   // namespace
}   // namespace oxa::ifc
