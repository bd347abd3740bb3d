// SPDX-License-Identifier: Apache-2.0
// WrittenShapes: models of many shapes, and what every way to write them has to say.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <numeric>
#include <random>
#include <unordered_map>

#include "Format/Ifc/ReadResult.h"
#include "Format/Ifc/WrittenText.h"

namespace oxa::ifc::io {

// Instances name each other by a reference, a list and a select; ties lead on from one end, groups between members.
// What leads to ties and groups are inverse lists alone.
inline const def::SchemaPset& graphSchema() {
    static const std::unique_ptr<def::SchemaPset> pSchema = pSchemaOf(R"(
        TYPE IfcGloballyUniqueId = STRING(22) FIXED; END_TYPE;
        TYPE IfcLabel = STRING; END_TYPE;
        TYPE IfcColour = ENUMERATION OF (RED, GREEN); END_TYPE;
        TYPE IfcAny = SELECT (IfcLabel, IfcNode); END_TYPE;
        ENTITY IfcProject; Text : IfcLabel; Start : OPTIONAL IfcNode; END_ENTITY;
        ENTITY IfcNode; Text : IfcLabel; Next : OPTIONAL IfcNode; Others : OPTIONAL LIST OF IfcNode;
            Any : OPTIONAL IfcAny;
            INVERSE Ties : SET OF IfcTie FOR From; Groups : SET OF IfcGroup FOR Members; END_ENTITY;
        ENTITY IfcMarked SUBTYPE OF (IfcNode); Colour : OPTIONAL IfcColour; Id : OPTIONAL IfcGloballyUniqueId;
            Values : OPTIONAL LIST OF IfcAny; END_ENTITY;
        ENTITY IfcTie; Text : IfcLabel; From : IfcNode; To : IfcNode; END_ENTITY;
        ENTITY IfcGroup; Text : IfcLabel; Members : LIST OF IfcNode; END_ENTITY;
        )");
    return *pSchema;
}

// Each has its number as its first value too, so that a write with other numbers still tells what is what.
inline std::string sStatement(std::size_t iNumber, const std::string& sType, const std::string& sRest) {
    return '#' + std::to_string(iNumber) + "=IFC" + sType + "('" + std::to_string(iNumber) + "'," + sRest + ");";
}
inline std::string sNode(std::size_t iNumber, const std::string& sRest = "$,$,$") {
    return sStatement(iNumber, "NODE", sRest);
}
inline std::string sTo(std::size_t iNumber) { return '#' + std::to_string(iNumber); }
// "(#first,...,#last)", so often; "$" for none.
inline std::string sListTo(std::size_t iFirst, std::size_t iLast, int iTimes = 1) {
    std::string sText;
    for (; iTimes > 0; --iTimes)
        for (std::size_t i = iFirst; i <= iLast; ++i) sText += (sText.empty() ? "(" : ",") + sTo(i);
    return sText.empty() ? "$" : sText + ')';
}

inline std::uint32_t iNumberOf(std::string_view line) {
    std::uint32_t iNumber = 0;
    EXPECT_EQ(std::from_chars(line.data() + 1, line.data() + line.size(), iNumber).ec, std::errc()) << line;
    return iNumber;
}
inline std::string sJoined(const Lines& lines) {
    std::string sText;
    for (const std::string& sLine : lines) sText.append(sLine).push_back('\n');
    return sText;
}

struct Shape {
    const char* sRule;
    Lines reached;       // from the project
    Lines others = {};   // the rest
};

template <class Number>
Lines chain(std::size_t iNodes, Number&& iNumber) {
    Lines lines = {sStatement(1, "PROJECT", sTo(iNumber(0)))};
    for (std::size_t i = 0; i < iNodes; ++i)
        lines.push_back(sNode(iNumber(i), (i + 1 < iNodes ? sTo(iNumber(i + 1)) : "$") + ",$,$"));
    return lines;
}

inline Lines tree(std::size_t iNodes, std::size_t iChildren) {
    Lines lines = {sStatement(1, "PROJECT", "#2")};
    for (std::size_t i = 0; i < iNodes; ++i)
        lines.push_back(
            sNode(i + 2, "$," + sListTo(i * iChildren + 3, std::min((i + 1) * iChildren, iNodes - 1) + 2) + ",$"));
    return lines;
}

// Of sizes from one to nine, all on their own, and named by #2.
inline Lines rings(std::size_t iNodes) {
    Lines lines = {sStatement(1, "PROJECT", "#2"), ""};
    std::string sFirsts;
    for (std::size_t iFirst = 0, iRing = 1; iFirst < iNodes; iFirst += iRing, iRing = iRing % 9 + 1) {
        sFirsts += (sFirsts.empty() ? "(" : ",") + sTo(iFirst + 3);
        const std::size_t iCount = std::min(iRing, iNodes - iFirst);
        for (std::size_t i = 0; i < iCount; ++i)
            lines.push_back(sNode(iFirst + i + 3, sTo(iFirst + (i + 1) % iCount + 3) + ",$,$"));
    }
    lines[1] = sNode(2, "$," + sFirsts + "),$");
    return lines;
}

// Nodes from #2 on, of which the project names the first, with what leads from each to the next.
template <class Link>
Lines linked(std::size_t iNodes, Link&& sLink) {
    Lines lines = {sStatement(1, "PROJECT", "#2")};
    for (std::size_t i = 2; i < iNodes + 2; ++i) lines.push_back(sNode(i));
    for (std::size_t i = 2; i < iNodes + 1; ++i) lines.push_back(sLink(iNodes + i, i));
    return lines;
}

template <class Rest>
Lines hub(std::size_t iNodes, const std::string& sHub, Rest&& sRest) {
    Lines lines = {sStatement(1, "PROJECT", "#2"), sNode(2, sHub)};
    for (std::size_t i = 3; i < iNodes + 3; ++i) lines.push_back(sNode(i, sRest(i)));
    return lines;
}

// What nothing leads to, though it leads to what is reached.
inline Lines islands(std::size_t iNodes) {
    const std::size_t iFirst = 10 * iNodes + 10;
    Lines lines;
    for (std::size_t i = iFirst; i < iFirst + iNodes; ++i) {
        lines.push_back(sNode(i, "#2," + sListTo(i, i) + ",$"));
        lines.push_back(sStatement(i + iNodes, "TIE", sTo(i) + ",#2"));
        lines.push_back(sStatement(i + 2 * iNodes, "GROUP", sListTo(i, i)));
    }
    return lines;
}

inline std::vector<Shape> shapes(std::size_t n) {
    constexpr std::size_t g_iWidth = 30;
    const auto sPlain = [](std::size_t) { return "$,$,$"; };
    std::vector<Shape> all = {
        {"nothing but a project", {sStatement(1, "PROJECT", "$")}},
        {"a chain, numbers rising", chain(n, [](std::size_t i) { return i + 2; })},
        {"a chain, numbers falling", chain(n, [n](std::size_t i) { return n + 1 - i; })},
        {"a chain, numbers here and there", chain(n, [n](std::size_t i) { return i * 7919 % n + 2; })},
        {"a chain, numbers far apart", chain(12, [](std::size_t i) { return 1'000'000 * (12 - i); })},
        {"one names all others", hub(n, "$," + sListTo(3, n + 2) + ",$", sPlain)},
        {"one names all others three times, and they name it",
         hub(n, "$," + sListTo(3, n + 2, 3) + ",#2", [](std::size_t) { return "#2,$,$"; })},
        {"all name the last one, and it itself",
         hub(n, "$," + sListTo(3, n + 2) + ",$", [n](std::size_t) { return sTo(n + 2) + ",$,$"; })},
        {"rings", rings(n)},
        {"a tree of twos", tree(n, 2)},
        {"a tree of twenty-fives", tree(n, 25)},
        {"a select to the next but one, a reference to the next",
         hub(n, "#3,$,$",
             [n](std::size_t i) {
                 return (i < n + 2 ? sTo(i + 1) : "$") + ",$," + (i + 1 < n + 2 ? sTo(i + 2) : "$");
             })},
        {"layers, of which each instance names all of the next",
         hub(n, "$," + sListTo(3, std::min(n, g_iWidth) + 2) + ",$",
             [n](std::size_t i) {
                 const std::size_t iNext = (i - 3) / g_iWidth * g_iWidth + g_iWidth + 3;
                 return "$," + sListTo(iNext, std::min(iNext + g_iWidth - 1, n + 2)) + ",$";
             })},
        {"an inverse list to a tie, and a reference from there",
         linked(n, [](std::size_t iTie, std::size_t i) { return sStatement(iTie, "TIE", sTo(i) + ',' + sTo(i + 1)); })},
        {"inverse lists of groups that overlap",
         linked(n, [](std::size_t iGroup, std::size_t i) { return sStatement(iGroup, "GROUP", sListTo(i, i + 1)); })},
        {"one inverse list of all ties",
         linked(n, [](std::size_t iTie, std::size_t i) { return sStatement(iTie, "TIE", "#2," + sTo(i + 1)); })},
        {"one group of all", hub(n, "$,$,$", sPlain)},
        {"islands beside a chain", chain(n / 2 + 1, [](std::size_t i) { return i + 2; }), islands(n / 6 + 1)},
    };
    all[all.size() - 2].reached.push_back(sStatement(n + 3, "GROUP", sListTo(2, n + 2)));
    return all;
}

// The file has them in no order.
inline ReadFileModel graphOf(const Lines& lines, bool boKeepIds = true, bool boReadSingleThreaded = true) {
    Lines shuffled = lines;
    std::ranges::shuffle(shuffled, std::mt19937(7));   // NOLINT(cert-msc51-cpp): the same in each run
    return ReadFileModel(sFileOf(sJoined(shuffled)), boReadSingleThreaded, schemaIs(graphSchema()), boKeepIds);
}
inline Lines allOf(const Shape& shape) {
    Lines lines = shape.reached;
    lines.insert(lines.end(), shape.others.begin(), shape.others.end());
    return lines;
}

// Where a text differs from another one; empty: nowhere. For texts that are too long to be shown.
inline std::string sDifference(std::string_view text, std::string_view expected) {
    if (text == expected) return "";
    const auto [at, other] = std::ranges::mismatch(text, expected);
    const auto iAt = static_cast<std::size_t>(at - text.begin());
    return "at " + std::to_string(iAt) + " of " + std::to_string(text.size()) + ": " +
           std::string(text.substr(iAt, 60)) + " | expected: " + std::string(expected.substr(iAt, 60));
}

// What a write has to say, in any order or in one.
class Statements {
public:
    explicit Statements(const Lines& lines) {
        std::vector<std::pair<std::size_t, const std::string*>> sorted;
        for (const std::string& sLine : lines) sorted.emplace_back(iNumberOf(sLine), &sLine);
        std::ranges::sort(sorted);
        for (const auto& [iNumber, pLine] : sorted) {
            m_numbers.push_back(iNumber);
            m_lines.push_back(*pLine);
        }
        for (std::size_t i = 0; i < m_lines.size(); ++i) m_places.emplace(m_lines[i], i);
    }
    Statements(const Statements&) = delete;
    Statements& operator=(const Statements&) = delete;

    [[nodiscard]] const std::vector<std::size_t>& numbers() const { return m_numbers; }
    [[nodiscard]] std::string sByNumber() const { return sJoined(m_lines); }
    // First those of the file, then all others by number.
    [[nodiscard]] std::string sByFile(const std::vector<std::uint32_t>& file) const {
        std::vector<bool> boWritten(m_lines.size());
        std::string sText;
        const auto vWrite = [&](std::size_t i) {
            if (!boWritten[i]) sText.append(m_lines[i]).push_back('\n');
            boWritten[i] = true;
        };
        for (const std::size_t iNumber : file)
            if (const auto place = std::ranges::lower_bound(m_numbers, iNumber);
                place != m_numbers.end() && *place == iNumber)
                vWrite(static_cast<std::size_t>(place - m_numbers.begin()));
        for (std::size_t i = 0; i < m_lines.size(); ++i) vWrite(i);
        return sText;
    }
    // Two thirds of the numbers in no order, some of them again, and some that no statement has.
    [[nodiscard]] std::vector<std::uint32_t> someFile() const {
        std::vector<std::uint32_t> file(m_numbers.begin(), m_numbers.end());
        std::mt19937 random(11);   // NOLINT(cert-msc51-cpp): the same in each run
        std::ranges::shuffle(file, random);
        file.resize(file.size() - file.size() / 3);
        for (std::size_t i = 0; i < file.size(); i += 5) file.push_back(file[file.size() - 1 - i]);
        for (std::size_t i = 0; i < file.size(); i += 7) file[i] = 4'000'000'000U - static_cast<std::uint32_t>(i % 3);
        return file;
    }
    // What is wrong with a text of these lines in any order; empty: nothing. With boPart it may end too early.
    [[nodiscard]] std::string sUnlike(std::string_view text, bool boPart = false) const {
        std::vector<bool> boSeen(m_lines.size());
        while (!text.empty()) {
            const std::size_t iEnd = text.find('\n');
            const std::string_view line = text.substr(0, iEnd);
            if (iEnd == std::string_view::npos) return boPart ? "" : "no end: " + std::string(line.substr(0, 90));
            const auto place = m_places.find(line);
            if (place == m_places.end()) return "not expected: " + std::string(line.substr(0, 90));
            if (boSeen[place->second]) return "twice: " + std::string(line.substr(0, 90));
            boSeen[place->second] = true;
            text.remove_prefix(iEnd + 1);
        }
        const auto missing = std::ranges::find(boSeen, false);
        if (boPart || missing == boSeen.end()) return "";
        return "missing: " + m_lines[static_cast<std::size_t>(missing - boSeen.begin())].substr(0, 90);
    }

private:
    Lines m_lines;   // by number
    std::vector<std::size_t> m_numbers;
    std::unordered_map<std::string_view, std::size_t> m_places;
};

// The statements of a whole file.
inline Written dataPart(Written result) {
    const std::string sEnd = "ENDSEC;\nEND-ISO-10303-21;\n";
    EXPECT_TRUE(result.text.ends_with(sEnd));
    result.text = result.text.substr(result.text.find("\nDATA;\n") + 7);
    result.text.resize(result.text.size() - sEnd.size());
    return result;
}

inline const WriteOptions g_together{};   // on several threads, in any order
struct Way {
    bool boSingleThreaded;
    WriteOrder eOrder;
};
inline constexpr Way g_ways[] = {{true, WriteOrder::Any},   {false, WriteOrder::Any},    {false, WriteOrder::Any},
                                 {false, WriteOrder::Any},  {false, WriteOrder::Number}, {true, WriteOrder::Number},
                                 {false, WriteOrder::File}, {true, WriteOrder::File},    {false, WriteOrder::Number}};
inline std::string sShown(const Way& way) {
    return std::string(way.boSingleThreaded ? "one thread" : "several threads") + ", order " +
           std::to_string(static_cast<int>(way.eOrder));
}

// Every way to write gives these statements, no report, and their numbers. The order of a file is asked for where the
// numbers come from one.
template <class Write>
void vExpectWrites(Write&& write, const Statements& statements, bool boKeptNumbers = true) {
    const std::vector<std::uint32_t> file = boKeptNumbers ? statements.someFile() : std::vector<std::uint32_t>{};
    const std::string sByNumber = statements.sByNumber();
    const std::string sByFile = statements.sByFile(file);
    for (const Way& way : g_ways) {
        SCOPED_TRACE(sShown(way));
        std::vector<std::size_t> numbers{99};
        const Written result = write(WriteOptions{
            .boSingleThreaded = way.boSingleThreaded, .eOrder = way.eOrder, .fileNumbers = file, .pWritten = &numbers});
        EXPECT_TRUE(result.boResult);
        EXPECT_TRUE(result.records.empty());
        EXPECT_EQ(way.eOrder == WriteOrder::Any
                      ? statements.sUnlike(result.text)
                      : sDifference(result.text, way.eOrder == WriteOrder::File ? sByFile : sByNumber),
                  "");
        EXPECT_TRUE(numbers == statements.numbers()) << numbers.size();
    }
}
inline void vExpectFile(const File& file, const Statements& statements) {
    vExpectWrites([&](const WriteOptions& options) { return dataPart(fileOf(file, options)); }, statements);
}
inline void vExpectData(const Data& data, const Statements& statements, const Entity* pEntity = nullptr) {
    vExpectWrites([&](const WriteOptions& options) { return dataOf(data, options, pEntity); }, statements);
}
inline void vExpectShape(const Shape& shape, bool boReadSingleThreaded) {
    SCOPED_TRACE(shape.sRule);
    const ReadFileModel model = graphOf(allOf(shape), true, boReadSingleThreaded);
    ASSERT_TRUE(model.boRead);
    vExpectFile(model.file, Statements(shape.reached));
    vExpectData(model.file.data(), Statements(allOf(shape)));
}

// A text with the numbers that the first values tell in place of those that were dealt; "#?" for what has no statement.
inline std::string sRenumbered(std::string_view text) {
    std::unordered_map<std::string_view, std::string_view> labels;
    for (std::string_view rest = text; !rest.empty(); rest.remove_prefix(rest.find('\n') + 1)) {
        const std::size_t iLabel = rest.find('\'') + 1;
        EXPECT_TRUE(
            labels.emplace(rest.substr(1, rest.find('=') - 1), rest.substr(iLabel, rest.find('\'', iLabel) - iLabel))
                .second)
            << "one number for two: " << rest.substr(0, rest.find('\n'));
    }
    std::string sText;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t iNumber = text.find('#', i);
        sText += text.substr(i, iNumber - i);
        if (iNumber == std::string_view::npos) break;
        i = std::min(text.find_first_not_of("0123456789", iNumber + 1), text.size());
        const auto label = labels.find(text.substr(iNumber + 1, i - iNumber - 1));
        sText.append(1, '#').append(label == labels.end() ? "?" : label->second);
    }
    return sText;
}

// The numbers that statements have, ascending.
inline std::vector<std::size_t> numbersIn(const std::string& sText) {
    std::vector<std::size_t> numbers;
    for (const std::string& sLine : linesOf(sText)) numbers.push_back(iNumberOf(sLine));
    std::ranges::sort(numbers);
    return numbers;
}
inline std::vector<std::size_t> numbersFrom(std::size_t iFirst, std::size_t iCount) {
    std::vector<std::size_t> numbers(iCount);
    std::iota(numbers.begin(), numbers.end(), iFirst);
    return numbers;
}

}   // namespace oxa::ifc::io
