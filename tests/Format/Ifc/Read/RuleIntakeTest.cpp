// SPDX-License-Identifier: Apache-2.0
// Intake and completion against their rules written down plainly: any batch, any graph, any place of the entity table;
// and the simple form.
//
// Files are read on the caller's thread and by workers. Workers take 200 statements as a batch, or the fewer at the end:
// it is parsed as a whole and then finalised as a whole, so what a number says twice in it differs between the two ways.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "Format/Ifc/RuleModel.h"
#include "platform/Utilities.h"

namespace oxa::ifc {
namespace {

std::string sTold(int iLine, const std::string& sKey, const std::string& sText) {
    return "Error " + std::string(sKey.find("Reused") == std::string::npos ? "Value " : "Identifier ") +
           std::to_string(iLine) + " Error_" + sKey + " | " + sText;
}
std::string sTwice(int iLine, const std::string& sText) { return sTold(iLine, "DuplicateGuids", sText); }
std::string sNull(int iLine, const std::string& sText) { return sTold(iLine, "UnexpectedNullGuid", sText); }

// What becomes of a statement by the steps in which it is taken apart: the key of a report, "dropped" without one, or the
// number and type of what it makes.
std::string sTakenApart(const std::string& sStatement) {
    if (sStatement.empty() || sStatement[0] != '#') return "Error_ExpectedNumberSign";
    const std::size_t iEqual = sStatement.size() > 2 ? sStatement.find('=', 2) : std::string::npos;
    if (iEqual == std::string::npos) return "Error_ExpectedEqualOperator";
    std::int32_t iId = 0;
    const char* pEqual = sStatement.data() + iEqual;
    const auto [pEnd, error] = std::from_chars(sStatement.data() + 1, pEqual, iId);
    if (error != std::errc{} || pEnd != pEqual) return "Error_ExpectedLeftParenthesis";
    const std::size_t iOpen = sStatement.find('(', iEqual);
    if (iOpen == std::string::npos) return "Error_InvalidEntity";
    const std::string sType = sStatement.substr(iEqual + 1, iOpen - iEqual - 1);
    if (sType != "IFCITEM" && sType != "IFCWALL" && sType != "IFCROOT") return "Error_UnknownEntityType";
    const std::size_t iClose = sStatement.rfind(')');
    if (iClose == std::string::npos || iClose < iOpen) return "dropped";
    if (sType == "IFCROOT") return "Error_EntityIsAbstract";
    return '#' + std::to_string(static_cast<std::uint32_t>(iId)) + ' ' + sType;
}

// All statements of these parts, one behind the other.
TEST(IntakeRules, AnyStatement) {
    const std::vector<Texts> parts = {{"#", "", "##", " #"},
                                      {"5", "", "-1", "-0", "007", "+5", "5 ", "5x", "--5", "2147483647", "2147483648",
                                       "-2147483648", "32768000", "("},
                                      {"=", "", "==", "=5="},
                                      {"IFCITEM", "", "ifcitem", "IFCROOT", "IFCLABEL", "IFCWALL\t", "IFC)ITEM"},
                                      {"(", "", "(("},
                                      {"", "*", "')'"},
                                      {")", "", ")abc"},
                                      {";", ""}};
    std::vector<std::size_t> chosen(parts.size());
    const auto boNext = [&] {
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (++chosen[i] < parts[i].size()) return true;
            chosen[i] = 0;
        }
        return false;
    };
    std::map<std::string, std::size_t> found;   // how often
    do {
        std::string sStatement;
        for (std::size_t i = 0; i < parts.size(); ++i) sStatement += parts[i][chosen[i]];
        StatementReader reader(ruleSchema());
        const Entity* pEntity = reader.pRead(sStatement);
        const auto& records = reader.errors.records();
        const std::string sFound = pEntity ? reader.sEntity(pEntity) + ' ' + pEntity->schemaEntity().sNameUpper
                                   : records.empty() ? "dropped"
                                                     : records.front().key.value_or("?");
        ASSERT_EQ(sFound, sTakenApart(sStatement)) << sStatement;
        ASSERT_TRUE(pEntity || records.size() <= 1) << sStatement;
        ++found[sFound];
    } while (boNext());
    EXPECT_EQ(found.size(), 14U);   // four faults of form, two of the type, dropped, seven numbers
}

// A generator of its own, so that each run makes the same files.
class Dice {
public:
    explicit Dice(std::uint32_t uSeed) : m_uState(uSeed) {}
    std::size_t operator()(std::size_t iBelow) {
        m_uState = m_uState * 1664525U + 1013904223U;
        return (m_uState >> 8) % iBelow;
    }

private:
    std::uint32_t m_uState;
};

struct Statement {
    std::size_t iId;
    bool boRooted;
    std::size_t iGuid;   // 0: none
    std::string sText;
    int iLine;
};

// What reading says of a batch, written down plainly: "guids" leads to numbers.
Texts expectedOf(const std::vector<Statement>& batch, bool boInTurn, std::map<std::size_t, std::size_t>& guids) {
    Texts expected;
    std::map<std::size_t, const Statement*> slots;
    const auto vParse = [&](const Statement& statement) {
        if (slots.contains(statement.iId))
            expected.push_back(
                sTold(statement.iLine, "EntityIdReused(" + std::to_string(statement.iId) + ')', statement.sText));
        slots[statement.iId] = &statement;
    };
    const auto vFinalise = [&](const Statement& statement) {
        const Statement& now = *slots[statement.iId];
        if (!now.boRooted) return;
        if (now.iGuid == 0)
            expected.push_back(sNull(statement.iLine, statement.sText));
        else if (!guids.emplace(now.iGuid, now.iId).second)
            expected.push_back(sTwice(statement.iLine, statement.sText));
    };
    for (const Statement& statement : batch) {
        vParse(statement);
        if (boInTurn) vFinalise(statement);
    }
    if (!boInTurn) std::ranges::for_each(batch, vFinalise);
    return expected;
}

// Batches whose numbers and GUIDs come again and again, but in no other batch; every other one uses each number once.
std::vector<std::vector<Statement>> batchesOf(Dice& dice, std::size_t iBatches, std::size_t iLast) {
    std::vector<std::vector<Statement>> batches(iBatches);
    int iLine = 6;
    for (std::size_t iBatch = 0; iBatch < iBatches; ++iBatch) {
        const bool boReused = dice(2) != 0;
        const std::size_t iIds = 1 + dice(30), iGuids = 1 + dice(200);
        const std::size_t iCount = iBatch + 1 < iBatches ? 200 : iLast;
        for (std::size_t i = 0; i < iCount; ++i) {
            const std::size_t iGuid = dice(iGuids);
            Statement made{1000 * iBatch + (boReused ? dice(iIds) : i), dice(4) != 0, iGuid ? 1000 * iBatch + iGuid : 0,
                           "", iLine++};
            made.sText = '#' + std::to_string(made.iId) +
                         (made.boRooted ? dice(2) ? "=IFCWALL(" : "=IFCPROJECT(" : "=IFCITEM(") +
                         (made.iGuid ? '\'' + sGuidOf(made.iGuid) + '\'' : "*") + ");";
            batches[iBatch].push_back(std::move(made));
        }
    }
    return batches;
}

void vExpectBatches(const std::vector<std::vector<Statement>>& batches, bool boSingleThreaded) {
    SCOPED_TRACE(boSingleThreaded ? "" : "threads");
    std::string sData;
    std::size_t iStatements = 0;
    for (const auto& batch : batches)
        for (const Statement& statement : batch) {
            sData += statement.sText + '\n';
            ++iStatements;
        }
    const ReadFileModel read(sRuleFile(sData), boSingleThreaded, schemaIs(ruleSchema()));
    const Data& data = read.file.data();
    std::vector<Texts> found(batches.size());
    for (const auto& record : read.errors.records()) found.at((record.lineNumber - 6) / 200).push_back(sReport(record));
    std::map<std::size_t, std::size_t> guids;
    for (std::size_t i = 0; i < batches.size(); ++i)
        EXPECT_EQ(found[i], expectedOf(batches[i], boSingleThreaded, guids)) << "batch " << i;
    EXPECT_EQ(data.entities().size(), iStatements);
    EXPECT_EQ(data.guidEntityMap().size(), guids.size());
    for (const auto& [iGuid, iId] : guids)
        EXPECT_EQ(data.guidEntityMap().pFind(*IfcGuid::fromIfcGuid(sGuidOf(iGuid))), data.pEntityFromId(iId));
}

TEST(IntakeRules, NumbersAndGuidsThatComeAgain) {
    Dice dice(7);
    for (int iTry = 0; iTry < 80; ++iTry) {
        SCOPED_TRACE(iTry);
        const auto batches = batchesOf(dice, iTry % 8 ? 1 : 1 + dice(40), dice(iTry % 4 ? 12 : 199));
        vExpectBatches(batches, true);
        vExpectBatches(batches, false);
    }
}

// ---- Completion.

std::string sMissing(const std::string& sId) { return "Error Reference 0 Error_MissingEntityWithId(" + sId + ") | "; }

// Chunks that somebody asked for and places that statements name, in both orders and in both parts of the table.
TEST(CompletionRules, PlacesOfChunks) {
    for (const std::size_t iChunk : {0U, 1U, 999U, 1000U, 1003U})
        for (const bool boChunkFirst : {true, false}) {
            StatementReader reader(ruleSchema());
            const std::size_t iBase = iChunk << 15;
            const auto sId = [&](std::size_t i) { return std::to_string(iBase + i); };
            const auto vNamed = [&] {
                for (const std::size_t i : {0U, 127U, 128U, 20000U, 32767U})
                    reader.common.pChunkGet(reader.data, iChunk)[i].referenced = 1;
            };
            if (boChunkFirst) vNamed();
            Entity* pEntity = reader.pRead('#' + sId(300) + "=IFCITEM($,$,#" + sId(5) + ",(#" + sId(20000) + "));");
            if (!boChunkFirst) vNamed();
            reader.data.finalizeEntity(pEntity, reader.common, "", 1);
            EXPECT_FALSE(reader.data.boFinished(reader.common, true));
            Texts expected;
            for (const std::size_t i : {0U, 5U, 127U, 128U, 20000U, 32767U}) expected.push_back(sMissing(sId(i)));
            EXPECT_EQ(reports(reader.errors), expected);
            EXPECT_EQ(reader.data.pEntityFromId(iBase + 300), pEntity);
            EXPECT_EQ(reader.data.iIdFromEntity(*pEntity), iBase + 300);
        }
}

// Any graph, and a fault at any place of it: whatever stands in front of the fault is announced, the last one first.
TEST(CompletionRules, AnyGraphAndAFaultInIt) {
    Dice dice(1);
    for (int iTry = 0; iTry < 60; ++iTry) {
        SCOPED_TRACE(iTry);
        StatementReader reader(ruleSchema());
        const std::size_t iCount = 1 + dice(120), iFault = iTry % 3 ? dice(iCount + 1) : iCount + 1;
        std::vector<std::vector<std::size_t>> before(iCount), members(iCount);   // expected
        std::vector<Entity*> entities;
        Entity empty;
        for (std::size_t i = 0; i <= iCount; ++i) {
            if (i == iFault) {
                EXPECT_THROW(reader.data.finalizeEntity(&empty, reader.common, "", 1), oxa::exception);
            }
            if (i == iCount) break;
            std::string sText = '#' + std::to_string(i) + "=IFCITEM($,$,";
            const auto vName = [&](std::vector<std::vector<std::size_t>>& lists) {
                const std::size_t iTarget = dice(iCount);
                sText += '#' + std::to_string(iTarget);
                if (i < iFault) lists[iTarget].insert(lists[iTarget].begin(), i);
            };
            if (dice(4))
                vName(before);
            else
                sText += '$';
            sText += ",(";
            for (std::size_t iItems = dice(6), iItem = 0; iItem < iItems; ++iItem) {
                if (iItem) sText += ',';
                vName(members);
            }
            entities.push_back(reader.pRead(sText + "));"));
            reader.data.finalizeEntity(entities.back(), reader.common, "", 1);
        }
        if (iFault <= iCount) {
            EXPECT_THROW((void)reader.data.boFinished(reader.common, true), oxa::exception);
        } else {
            EXPECT_TRUE(reader.data.boFinished(reader.common, true));
        }
        for (std::size_t i = 0; i < iCount; ++i)
            for (const unsigned iList : {0U, 1U}) {
                std::vector<Entity*> expected;
                for (const std::size_t iFrom : (iList ? members : before)[i]) expected.push_back(entities[iFrom]);
                EXPECT_EQ(entities[i]->entitiesInverseFromIndex(iList), expected) << i << ", list " << iList;
            }
    }
}

// A read that failed leaves its instances to the next one's completion; numbers that were dealt before a read stay, and
// the file's are then none of the model's.
TEST(CompletionRules, WhatIsThereBeforeARead) {
    for (const bool boSingleThreaded : {true, false}) {
        File file;
        io::ReadError errors, second;
        const auto boRead = [&](const std::string& sText, io::ReadError& of) {
            std::istringstream in(sText);
            return file.boRead(in, schemaIs(ruleSchema()), of, true, {}, boSingleThreaded);
        };
        const auto iReferrers = [&] {
            std::size_t iFound = 0;
            for (const Entity* pEntity : file.data().entities()) iFound += pEntity->entitiesInverseFromIndex(0).size();
            return iFound;
        };
        EXPECT_FALSE(boRead(g_sHead + "#1=IFCITEM('a');#2=IFCITEM('b',$,#1);", errors));
        EXPECT_EQ(iReferrers(), 0U);
        for (const Entity* pEntity : file.data().entities()) EXPECT_LE(file.data().iIdFromEntity(*pEntity), 2U);
        EXPECT_FALSE(boRead(sRuleFile("#7=IFCITEM('c',$,#8);"), errors)) << "a fatal report is one for good";
        EXPECT_EQ(reports(errors), Texts{"Fatal Syntax 0 Error_InvalidFile | "});
        EXPECT_TRUE(boRead(sRuleFile("#7=IFCITEM('c',$,#8);"), second));
        EXPECT_EQ(reports(second), Texts{sMissing("8")});
        EXPECT_EQ(iReferrers(), 1U);
        EXPECT_EQ(file.data().entities().size(), 3U);
        EXPECT_EQ(file.data().pEntityFromId(7), nullptr);
        for (const Entity* pEntity : file.data().entities()) EXPECT_LE(file.data().iIdFromEntity(*pEntity), 3U);
    }
}

// ---- The simple form.

struct SimpleRow {
    const char* sRule;
    std::string sText;
    bool boRead;
    Texts reports = {};
    Texts model = {};         // numbered from 1 where it holds one
    std::string sRoot = "";   // type of the root, "empty" for a place that nothing defined, "" for none
};

TEST(SimpleFormRules, Files) {
    const std::string sHead = "Ifc file simple;\nR;\n*;\n", sItem = "#7=IFCITEM('a');",
                      sMadeItem = "#1=IFCITEM('a',$,$,$);";
    const auto rooted = [](const std::string& sId) { return "Ifc file simple;\nR;\n" + sId + "\n"; };
    // clang-format off
    const SimpleRow rows[] = {
        {"an empty line leaves the name of the file's schema", "Ifc file simple;\n\n*;\n" + sItem, false,
         {"Fatal Model 0 Error_UnknownSchemaName(CELLS) | "}},
        {"no marker, no header, no data", sHead + "ISO-10303-21;HEADER;DATA;" + sItem, true, {}, {sMadeItem}},
        {"lines count from behind the head", sHead + "\n#7=IFCNONE();", true,
         {"Error Value 2 Error_UnknownEntityType | #7=IFCNONE();"}},
        {"what is missing is told", sHead + "#7=IFCITEM('a',$,#8);", true, {sMissing("8")}, {"#1=IFCITEM('a',$,#2,$);"}},
        {"no GUID is looked at", sHead + "#7=IFCWALL(*);", true, {}, {"#1=IFCWALL(*,$,$);"}},
        {"the root", rooted("7;") + sItem, true, {}, {sMadeItem}, "IFCITEM"},
        {"no semicolon", rooted("7") + sItem, true, {}, {sMadeItem}, "IFCITEM"},
        {"what stands behind its digits", rooted("7x8;") + sItem, true, {}, {sMadeItem}, "IFCITEM"},
        {"no digits are 0", rooted("abc;") + "#0=IFCITEM('a');", true, {}, {sMadeItem}, "IFCITEM"},
        {"0 that nothing defines", rooted("abc;") + sItem, true, {sMissing("0")}, {sMadeItem}, "empty"},
        {"the root is missing", rooted("32768;") + sItem, true, {sMissing("32768")}, {sMadeItem}, "empty"},
        {"a root of a read that failed", rooted("7;") + sItem + "=a=", false,
         {"Fatal Syntax 1 Error_UnexpectedEqualOperator | "}, {sMadeItem}},
    };
    // clang-format on
    for (const SimpleRow& row : rows)
        for (const bool boSingleThreaded : {true, false}) {
            SCOPED_TRACE(std::string(row.sRule) + (boSingleThreaded ? "" : ", threads"));
            FileSimple file(ruleSchema());
            EXPECT_EQ(file.header().sSchemaNameGet(), ruleSchema().sName);
            std::istringstream in(row.sText);
            io::ReadError errors;
            const SchemaFromName schemaFromName = [](const std::string& sName) {
                return sName == "R" ? const_cast<def::SchemaPset*>(&ruleSchema()) : nullptr;
            };
            EXPECT_EQ(file.boRead(in, schemaFromName, errors, {}, boSingleThreaded), row.boRead);
            EXPECT_EQ(reports(errors), row.reports);
            EXPECT_EQ(statements(file.data()), row.model);
            const Entity* pRoot = file.pRootEntity();
            EXPECT_EQ(!pRoot ? "" : pRoot->pSchemaEntity() ? pRoot->pSchemaEntity()->sNameUpper : "empty", row.sRoot);
            EXPECT_TRUE(file.data().guidEntityMap().empty());
            EXPECT_EQ(file.data().pEntityFromId(7), nullptr);
        }
}

}   // namespace
}   // namespace oxa::ifc
